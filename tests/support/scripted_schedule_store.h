// SchedStore.dll as a scripted store: entries in table 0, groups in table 1.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_SCHEDULE_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_SCHEDULE_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "SC_Sync_".
class ScriptedScheduleStore final : public ScriptedRecordStore {
 public:
  static constexpr std::size_t kEntrySize = 8680;
  static constexpr std::size_t kGroupSize = 264;

  explicit ScriptedScheduleStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_SCHEDULE_STORE_H
