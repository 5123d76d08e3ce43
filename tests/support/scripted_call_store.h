// CallLogStore.dll as a scripted store.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_CALL_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_CALL_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "EXPCALLHISTORY_Sync_".
class ScriptedCallStore final : public ScriptedTableStore {
 public:
  static constexpr std::size_t kRecordSize = 180;

  explicit ScriptedCallStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_CALL_STORE_H
