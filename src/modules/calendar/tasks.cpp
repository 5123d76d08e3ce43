// The tasks' runs, whose steps go on whatever came of those before.
#include "modules/calendar/tasks.h"

namespace qv::tasks {

Result TasksHandler::Export(SyncMode& mode, char16_t* anchor) {
  procedure_.BeginExport(mode, anchor);
  ExportTables(mode);
  WriteSnapshots(mode);
  return Result::kOk;
}

Result TasksHandler::Recover(SyncMode mode, char16_t* anchor) {
  procedure_.BeginRecover(mode, anchor);
  if (IsEmptied(kFacts.emptied_by, mode)) {
    ReplaceAll();
  } else {
    ApplyChanges();
  }
  for (const TableNames& table : kTables) call_.Delete(table.exchange_file);
  WriteSnapshots(mode);
  if (IsRemembered(mode)) (void)procedure_.WriteIdMap();
  return Result::kOk;
}

void TasksHandler::ExportTables(SyncMode mode) {
  for (const PlainTable* const table : {&tasks_, &groups_}) (void)table->CreateExchangeTable();
  const bool incremental = mode == SyncMode::kIncremental;
  File change_list;
  if (incremental) change_list = File::CreateAlways(call_.PathOf(kNames.change_list));
  if (incremental && !change_list.IsOpen()) return;
  for (PlainTable* const table : {&tasks_, &groups_}) {
    if (table->LookUp(RecordTable::Use::kListAndRead)) (void)table->Export(incremental ? &change_list : nullptr);
  }
}

void TasksHandler::WriteSnapshots(SyncMode mode) {
  if (!IsRemembered(mode)) return;
  for (PlainTable* const table : {&tasks_, &groups_}) (void)table->WriteSnapshot();
}

void TasksHandler::ApplyChanges() {
  if (!IsFailure(procedure_.ReadChangeList())) {
    (void)procedure_.DeleteListed();
    ApplyTables(true);
  }
  call_.Delete(kNames.change_list);
}

/// A store that cannot be emptied gets nothing.
void TasksHandler::ReplaceAll() {
  StoreFunction erase_all;
  if (!erase_all.LookUp(call_.store(), kFacts.erase_all)) return;
  (void)erase_all({});
  ApplyTables(false);
}

void TasksHandler::ApplyTables(bool incremental) {
  const Applying applying = procedure_.Applied(incremental);
  (void)groups_.Apply(applying);
  (void)tasks_.Apply(applying);
}

}  // namespace qv::tasks
