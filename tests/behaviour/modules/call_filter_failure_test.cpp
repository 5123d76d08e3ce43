// Each failure in a run of the call filter's, of the platform and of the store.
#include "tests/support/call_filter_records.h"
#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_call_filter_store.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedCallFilterStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) store->Add(0, id);
  for (const std::uint32_t id : {5u, 7u}) store->Add(1, id);
  store->config = StoreFilterConfig();
  return store;
}

Bytes SentEntries() {
  Bytes entries = ExchangeFilterEntry();
  Append(entries, PlainFilterEntry(2, 50));
  return entries;
}

SweptModule CallFilter() {
  return {.id = 11,
          .anchor_key = "REDBLIST",
          .tables = {{.file = kFilterEntries,
                      .snapshot_log = kFilterEntryLog,
                      .sent = SentEntries(),
                      .exported = kMainTableExported,
                      .export_begin = LooksUp(u"Sync_GetAllRecNum")},
                     {.file = kFilterGroups,
                      .snapshot_log = kFilterGroupLog,
                      .sent = PlainFilterGroups({50, 7}),
                      .exported = kGroupTableExported,
                      .export_begin = LooksUp(u"Sync_GetAllRecNum", 2),
                      .inserted = kGroupTableApplied}},
          .change_list = kFilterChanges,
          .changes = Words({0, kFilterEntryId, 1, 0, 2, 2, 0, 1, 3, 1, 50, 1, 1, 7, 2, 1, 5, 3}),
          .id_map = kFilterIdMap,
          .config_file = kFilterConfig,
          .config = ExchangeFilterConfig(),
          .delete_all = u"Sync_DelAll",
          .make_store = MakeStore,
          .more_export_steps = {{LooksUp(u"Sync_rbc_ReadConfig"), kMainTableExported}},
          // An incremental recover goes without the entries' table.
          .more_recover_steps =
              {{Opens(kFilterEntries), kUnreported, {3}},
               {.call = Opens(kFilterConfig), .flag = kMainTableApplied, .modes = {3}, .is_behind_changes = true}},
          .store_codes = {{"Update", 8}, {"ReadConfig", 6}, {"WriteConfig", 8}, {"DelConfig", 3}, {"DelAll", 3}}};
}

INSTANTIATE_TEST_SUITE_P(CallFilter, FaultSweepTest, testing::ValuesIn(ScriptsOf(CallFilter())), NameOfScript);

}  // namespace
}  // namespace qv_test
