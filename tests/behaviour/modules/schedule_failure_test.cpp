// Each failure in a run of the schedule's, of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/schedule_records.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedScheduleStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) store->Add(1, id);
  store->Add(0, 1, 1, StoreEntry());
  store->Add(0, 2, 2);
  return store;
}

Bytes SentEntries() {
  Bytes entries = ExchangeEntry();
  Append(entries, PlainEntry(2, 50));
  return entries;
}

SweptModule Schedule() {
  return {.id = 2,
          .anchor_key = "SCHEDULE",
          .tables = {{.file = kEntries,
                      .snapshot_log = kEntryLog,
                      .sent = SentEntries(),
                      .exported = kMainTableExported,
                      .export_begin = LooksUp(u"SC_Sync_GetTotalNum"),
                      .applied = 0x4000000},  // An incremental recover counts in the order in which it applies them.
                     {.file = kGroups,
                      .snapshot_log = kGroupLog,
                      .sent = ExchangeGroup(50),
                      .exported = kGroupTableExported,
                      .export_begin = LooksUp(u"SC_Sync_GetTotalNum", 2),
                      .inserted = kGroupTableApplied,
                      .applied = 0x3000000}},
          .change_list = kChangeList,
          .changes = Words({0, kEntryId, 1, 0, 2, 2, 0, 1, 3, 1, 50, 1, 1, 5, 3}),
          .id_map = kIdMap,
          .delete_all = u"SC_Sync_DelAll",
          .make_store = MakeStore};
}

INSTANTIATE_TEST_SUITE_P(Schedule, FaultSweepTest, testing::ValuesIn(ScriptsOf(Schedule())), NameOfScript);

}  // namespace
}  // namespace qv_test
