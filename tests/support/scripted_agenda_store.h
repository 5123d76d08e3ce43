// AgendaStore.dll as a scripted store: entries in table 0, groups in table 1. An entry's long items lie in an area that
// its record points at, and that the caller provides.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_AGENDA_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_AGENDA_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "AGD_Sync_".
class ScriptedAgendaStore final : public ScriptedRecordStore {
 public:
  static constexpr std::size_t kEntrySize = 4372;
  static constexpr std::size_t kGroupSize = 288;
  static constexpr std::size_t kLongItemSize = 5128;
  static constexpr std::size_t kMostLongItems = 50;
  static constexpr std::size_t kAreaSize = kMostLongItems * kLongItemSize;
  // In an entry.
  static constexpr std::size_t kAreaPlace = 4364;
  static constexpr std::size_t kLongItemCount = 4368;

  explicit ScriptedAgendaStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);

  /// What lies in the area of each entry. How many items that are is said in the entry's bytes, in which the area's
  /// address is 0.
  std::map<std::uint32_t, Bytes> areas;

 private:
  // The test fails unless there is an area, and that is zero where the caller has nothing to say.
  void HandOut(const Record& record, std::uint32_t table, std::uint8_t* place) override;
  void TakeIn(Record& record, std::uint32_t table, const std::uint8_t* place) override;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_AGENDA_STORE_H
