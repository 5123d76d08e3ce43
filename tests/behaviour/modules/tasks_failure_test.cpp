// Each failure in a run of the tasks', of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_task_store.h"
#include "tests/support/task_records.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedTaskStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) store->Add(1, id);
  store->Add(0, 1, 1, StoreTask());
  store->Add(0, 2, 2);
  return store;
}

Bytes SentTasks() {
  Bytes tasks = ExchangeTask();
  Append(tasks, PlainTask(2, 50));
  return tasks;
}

SweptModule SweptTasks() {
  return {.id = 3,
          .anchor_key = "TASK",
          .tables = {{.file = kTasks,
                      .snapshot_log = kTaskLog,
                      .sent = SentTasks(),
                      .exported = kMainTableExported,
                      .export_begin = LooksUp(u"TD_Sync_GetAllRecNum")},
                     {.file = kTaskGroups,
                      .snapshot_log = kTaskGroupLog,
                      .sent = TaskGroup(50),
                      .exported = kGroupTableExported,
                      .export_begin = LooksUp(u"TD_Sync_GetAllRecNum", 2),
                      .inserted = kGroupTableApplied}},
          .change_list = kTaskChanges,
          .changes = Words({0, kTaskId, 1, 0, 2, 2, 0, 1, 3, 1, 50, 1, 1, 5, 3}),
          .id_map = kTaskIdMap,
          .delete_all = u"TD_Sync_DelAll",
          .make_store = MakeStore,
          .goes_on = true,
          .more_export_steps = {{Opens(kTaskChanges), kChangeListApplied, {3}}}};
}

INSTANTIATE_TEST_SUITE_P(Tasks, FaultSweepTest, testing::ValuesIn(ScriptsOf(SweptTasks())), NameOfScript);

}  // namespace
}  // namespace qv_test
