// Each failure in a run of the call history's, of the platform and of the store.
#include "tests/support/call_records.h"
#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_call_store.h"

namespace qv_test {
namespace {

SweptModule CallHistory() {
  return {.id = 9,
          .anchor_key = "RECORDCALL",
          .tables = {{.file = kCallTable, .snapshot_log = kCallLog, .sent = PlainCalls({51, 2, 3})}},
          .change_list = kCallChanges,
          .changes = Words({0, 51, 1, 0, 2, 2, 0, 1, 3, 1, 5, 3}),
          .id_map = kCallIdMap,
          .delete_all = u"EXPCALLHISTORY_Sync_DelAll",
          .make_store = FilledStore<ScriptedCallStore>};
}

INSTANTIATE_TEST_SUITE_P(CallHistory, FaultSweepTest, testing::ValuesIn(ScriptsOf(CallHistory())), NameOfScript);

}  // namespace
}  // namespace qv_test
