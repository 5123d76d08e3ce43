// SketchStore.dll as a scripted store.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_MEMO_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_MEMO_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "DrawInfo_" and "Sync_", with the table that they name.
class ScriptedMemoStore final : public ScriptedTableStore {
 public:
  explicit ScriptedMemoStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_MEMO_STORE_H
