// SpeedDialStore.dll as a scripted store.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_DIAL_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_DIAL_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "Sync_".
class ScriptedDialStore final : public ScriptedTableStore {
 public:
  explicit ScriptedDialStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_DIAL_STORE_H
