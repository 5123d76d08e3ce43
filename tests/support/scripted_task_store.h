// TodoStore.dll as a scripted store: tasks in table 0, groups in table 1.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_TASK_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_TASK_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "TD_Sync_" and "Td_Sync_".
class ScriptedTaskStore final : public ScriptedRecordStore {
 public:
  static constexpr std::size_t kTaskSize = 34696;
  static constexpr std::size_t kGroupSize = 288;

  explicit ScriptedTaskStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_TASK_STORE_H
