// The order of a contacts export and of a recover.
#include "modules/contacts/contacts.h"

#include "sync/anchor_file.h"

namespace qv::contacts {

Result ContactsHandler::Export(SyncMode& mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  CheckAnchor(mode, kNames.anchor_key, anchor);
  MoveAnchor(mode, kNames.anchor_key, anchor);

  if (const Result exported = ExportTables(mode); IsFailure(exported)) return exported;
  return IsRemembered(mode) ? WriteSnapshots() : Result::kOk;
}

Result ContactsHandler::Recover(SyncMode mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  MoveAnchor(mode, kNames.anchor_key, anchor);

  const bool incremental = mode == SyncMode::kIncremental;
  if (incremental) {
    const Result deletions = ApplyChangeList();
    if (IsFailure(deletions)) return deletions | StepFlag::kChangeListApplied;
  } else if (mode != SyncMode::kLocalRecover) {
    if (const Result emptied = EmptyStore(); IsFailure(emptied)) return emptied;
  }
  const Result applied = ApplyTables(incremental ? ApplyForm::kInsertOrUpdate : ApplyForm::kInsertOnly);
  if (IsFailure(applied)) return applied;
  if (incremental) coredll::DeleteFileW(directory_ / kNames.change_list);
  for (const TableNames& table : kNames.tables) coredll::DeleteFileW(directory_ / table.exchange_file);

  if (!IsRemembered(mode)) return Result::kOk;
  if (const Result written = WriteSnapshots(); IsFailure(written)) return written;
  // The desktop must learn which contacts were refused, and which were merged with others.
  const Result mapped = WriteIdMap(directory_ / kNames.id_map, id_map_);
  return IsFailure(mapped) ? mapped | kIdMapWritten : Result::kOk;
}

Result ContactsHandler::WriteSnapshots() {
  for (const std::uint32_t number : {kMainTable, kGroupTable}) {
    ContactTable table(store_, number, kTables[number]);
    if (const Result written = WriteSnapshot(table); IsFailure(written)) return written | StepFlag::kSnapshotWritten;
  }
  return Result::kOk;
}

}  // namespace qv::contacts
