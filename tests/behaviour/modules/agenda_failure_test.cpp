// Each failure in a run of the agenda's, of the platform and of the store.
#include "tests/support/agenda_records.h"
#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_agenda_store.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedAgendaStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) store->Add(1, id);
  store->Add(0, 1, 1, StoreAgendaEntry());
  store->areas[1] = StoreAgendaArea();
  for (const std::uint32_t id : {2u, 3u}) store->Add(0, id, 2);
  return store;
}

Bytes SentEntries() {
  Bytes entries = ExchangeAgendaEntry();
  Append(entries, PlainAgendaEntry(2, 50));
  return entries;
}

SweptModule SweptAgenda() {
  return {.id = 4,
          .anchor_key = "AGENDA",
          .tables = {{.file = kAgenda,
                      .snapshot_log = kAgendaLog,
                      .sent = SentEntries(),
                      .exported = kMainTableExported,
                      .export_begin = LooksUp(u"AGD_Sync_GetAllRecNum")},
                     {.file = kAgendaGroups,
                      .snapshot_log = kAgendaGroupLog,
                      .sent = AgendaGroup(50),
                      .exported = kGroupTableExported,
                      .export_begin = LooksUp(u"AGD_Sync_GetAllRecNum", 2),
                      .inserted = kGroupTableApplied}},
          .change_list = kAgendaChanges,
          .changes = Words({0, kAgendaId, 1, 0, 2, 2, 0, 1, 3, 1, 50, 1, 1, 5, 3}),
          .id_map = kAgendaIdMap,
          .delete_all = u"AGD_Sync_DelAll",
          .make_store = MakeStore,
          // The tables are created each in its own step.
          .more_export_steps = {{Opens(kAgendaChanges), 0, {3}}, {Opens(kAgenda), kMainTableExported}}};
}

INSTANTIATE_TEST_SUITE_P(Agenda, FaultSweepTest, testing::ValuesIn(ScriptsOf(SweptAgenda())), NameOfScript);

}  // namespace
}  // namespace qv_test
