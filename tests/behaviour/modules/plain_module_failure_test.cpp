// Each failure in a run of a plain module's, of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/plain_module.h"

namespace qv_test {
namespace {

SweptModule Swept(const PlainModule& module, std::u16string_view delete_all) {
  const auto make_store = [make = module.make_store]() -> std::unique_ptr<ScriptedStore> {
    auto store = make({}, 0);
    for (std::uint32_t id = 1; id <= 70; ++id) store->Add(id);
    return store;
  };
  return {.id = module.id,
          .anchor_key = module.anchor_key,
          .tables = {{.file = module.table, .snapshot_log = module.log, .sent = TableOf(module.plain, {51, 2, 3})}},
          .change_list = module.changes,
          .changes = Words({0, 51, 1, 0, 2, 2, 0, 1, 3, 1, 5, 3}),
          .id_map = module.id_map,
          .delete_all = std::u16string(delete_all),
          .make_store = make_store};
}

/// Of modules whose table is made with its first records.
SweptModule SweptWithLateTable(const PlainModule& module, std::u16string_view delete_all, std::u16string_view count) {
  SweptModule swept = Swept(module, delete_all);
  swept.tables.front().exported = kMainTableExported;
  swept.tables.front().export_begin = Opens(module.table);
  swept.more_export_steps = {{LooksUp(count), 0}};
  return swept;
}

SweptModule SweptCardReader() {
  SweptModule swept = SweptWithLateTable(CardReader(), u"CR_Sync_DeleteAllCardRecord", u"CR_Sync_GetAllRecNum");
  swept.unreported = {u"CR_Initialize", u"CR_UnInitialize"};
  return swept;
}

SweptModule SweptGraphicMemo() {
  const PlainModule module = GraphicMemo();
  SweptModule swept = Swept(module, u"DrawInfo_DelAll");
  swept.more_export_steps = {
      {Opens(module.changes), 0, {3}},
      // The memory for the records comes behind the first write of the change list, all other before.
      {{"WriteFile", u"gmemocmd.tbl"}, 0, {3}, 32},
      {Opens(module.table), kMainTableExported, {3}},
      {Opens(module.table, 2), kMainTableExported, {1, 2, 4, 5}},
  };
  return swept;
}

INSTANTIATE_TEST_SUITE_P(CallHistory, FaultSweepTest,
                         testing::ValuesIn(ScriptsOf(Swept(CallHistory(), u"EXPCALLHISTORY_Sync_DelAll"))),
                         NameOfScript);
INSTANTIATE_TEST_SUITE_P(CardReader, FaultSweepTest, testing::ValuesIn(ScriptsOf(SweptCardReader())), NameOfScript);
INSTANTIATE_TEST_SUITE_P(
    QuickDial, FaultSweepTest,
    testing::ValuesIn(ScriptsOf(SweptWithLateTable(QuickDial(), u"Sync_DelAll", u"Sync_GetAllRecNum"))), NameOfScript);
INSTANTIATE_TEST_SUITE_P(GraphicMemo, FaultSweepTest, testing::ValuesIn(ScriptsOf(SweptGraphicMemo())), NameOfScript);

}  // namespace
}  // namespace qv_test
