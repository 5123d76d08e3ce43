// Each failure in a run of the multimedia messages', of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/mms_records.h"
#include "tests/support/scripted_mms_store.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedMmsStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) store->Add(id, id, "text", Bytes{1, 2, 3});
  store->config = Bytes{1, 2, 3};
  return store;
}

Bytes SentMessages() {
  Bytes table = MmsRecord(51, "new", {1, 2, 3});
  Append(table, MmsRecord(2, "modified", {4, 5}));
  return table;
}

SweptModule Mms() {
  return {.id = 12,
          .anchor_key = "MMS",
          .tables = {{.file = kMmsTable, .snapshot_log = kMmsLog, .sent = SentMessages()}},
          .change_list = kMmsChanges,
          .changes = Words({0, 51, 1, 0, 2, 2, 0, 1, 3, 1, 5, 3}),
          .id_map = kMmsIdMap,
          .config_file = kMmsConfig,
          .config = {1, 2, 3},
          .delete_all = u"mms_Sync_DelAll",
          .make_store = MakeStore,
          .more_export_steps = {{LooksUp(u"mms_Sync_GetConfig"), 0}},
          .more_recover_steps = {{Opens(kMmsConfig), 0}, {Deletes(kMmsConfig), kNoStep}},
          .store_codes = {{"GetConfig", 6}, {"SetConfig", 7}}};
}

INSTANTIATE_TEST_SUITE_P(Mms, FaultSweepTest, testing::ValuesIn(ScriptsOf(Mms())), NameOfScript);

}  // namespace
}  // namespace qv_test
