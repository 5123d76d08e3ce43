// One table's export and recover as a sequence of the shared steps.
#include "sync/one_table.h"

namespace qv {

Result OneTableRun::Export(SyncMode mode) {
  if (const Result exported = ExportTable(mode); IsFailure(exported)) return exported;
  return IsRemembered(mode) ? WriteSnapshot() : Result::kOk;
}

Result OneTableRun::ExportTable(SyncMode mode) {
  if (facts_.creates_files_first) {
    ExportFiles files;
    if (const Result created = files.Create(directory_, facts_.names, mode); IsFailure(created)) return created;
    return qv::ExportTable(table_, directory_, files.ChangeList());
  }
  if (!table_.LookUp(StoreTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  File change_list;
  const bool incremental = mode == SyncMode::kIncremental;
  if (incremental) {
    change_list = File::CreateAlways(directory_ / facts_.names.change_list);
    if (!change_list.IsOpen()) return Result::kFileFailed;
  }
  return ExportListed(table_, directory_, incremental ? &change_list : nullptr);
}

Result OneTableRun::Recover(SyncMode mode) {
  if (mode == SyncMode::kIncremental) {
    if (const Result applied = ApplyChanges(); IsFailure(applied)) return applied;
  } else {
    if (mode == SyncMode::kReplace) {
      if (const Result emptied = EmptyStore(store_, facts_.erase_all); IsFailure(emptied)) return emptied;
    }
    const Result inserted = ApplyTable(table_, directory_, {ApplyForm::kInsertOnly, changes_, id_map_});
    if (IsFailure(inserted)) return inserted | kTableApplied;
  }
  coredll::DeleteFileW(directory_ / table_.names().exchange_file);
  if (!IsRemembered(mode)) return Result::kOk;
  if (const Result written = WriteSnapshot(); IsFailure(written)) return written;
  // The map is a kindness: without it the desktop asks for a full export.
  (void)WriteIdMap(directory_ / facts_.names.id_map, id_map_);
  return Result::kOk;
}

Result OneTableRun::ApplyChanges() {
  if (const Result applied = ApplyChangeList(); IsFailure(applied)) return applied | StepFlag::kChangeListApplied;
  const Result applied = ApplyTable(table_, directory_, {ApplyForm::kInsertOrUpdate, changes_, id_map_});
  if (IsFailure(applied)) return applied | kTableApplied;
  coredll::DeleteFileW(directory_ / facts_.consumed_change_list);
  return Result::kOk;
}

Result OneTableRun::ApplyChangeList() {
  List<std::uint32_t> deletions[1];
  if (!changes_.Create()) return Result::kNoChangeList;
  const Result read = ForEachChange(directory_ / facts_.names.change_list, [&](ChangeRecord change) {
    if (facts_.ignores_tables_of_changes) change.table = table_.number();
    if (change.operation != Operation::kDeleted) return changes_.Append(change) ? Result::kOk : Result::kNoMemory;
    if (change.table != table_.number()) return Result::kOk;
    return deletions[0].Append(change.id) ? Result::kOk : Result::kNoMemory;
  });
  return IsFailure(read) ? read : DeleteRecords(store_, facts_.erase, deletions);
}

Result OneTableRun::WriteSnapshot() {
  const Result written = qv::WriteSnapshot(table_);
  return IsFailure(written) ? written | StepFlag::kSnapshotWritten : Result::kOk;
}

}  // namespace qv
