// Export and recover, step by step.
#include "sync/procedure.h"

#include "sync/entry_file.h"

namespace qv {
namespace {

/// The change as it counts, its table put right.
ChangeRecord AsItCounts(ChangeRecord change, TablesOfChanges tables) {
  const bool deletes = change.operation == Operation::kDeleted;
  switch (tables) {
    case TablesOfChanges::kIgnored: change.table = kMainTable; break;
    case TablesOfChanges::kIgnoredToDelete:
      if (deletes) change.table = kMainTable;
      break;
    case TablesOfChanges::kLowByteToDelete:
      if (deletes) change.table = (change.table & 0xFF) == 0 ? kMainTable : kGroupTable;
      break;
    case TablesOfChanges::kNamed: break;
  }
  return change;
}

}  // namespace

void Procedure::BeginExport(SyncMode& mode, char16_t* anchor) {
  call_.CheckAndMoveAnchor(mode, anchor);
  if (facts_.deletes_table_first) call_.Delete(main_.names().exchange_file);
}

Result Procedure::Export(SyncMode mode) {
  if (const Result exported = ExportTables(mode); IsFailure(exported)) return exported;
  return WriteSnapshots(mode);
}

Result Procedure::CreateFiles(SyncMode mode, File& change_list) {
  if (facts_.creates_tables_first) {
    for (const TableNames& table : facts_.names.tables) {
      if (table.exchange_file == nullptr) continue;
      const bool created = File::CreateAlways(call_.PathOf(table.exchange_file)).IsOpen();
      if (!created && !facts_.never_fails) return Result::kFileFailed;
    }
  }
  if (facts_.looks_up_before_change_list && !LookUpTables()) return Result::kEntryPointMissing;
  if (mode != SyncMode::kIncremental) return Result::kOk;
  change_list = File::CreateAlways(call_.PathOf(facts_.names.change_list));
  return change_list.IsOpen() ? Result::kOk : Result::kFileFailed;
}

bool Procedure::LookUpTables() {
  constexpr RecordTable::Use kUse = RecordTable::Use::kListAndRead;
  return main_.LookUp(kUse) && (groups_ == nullptr || groups_->LookUp(kUse));
}

template <typename Step>
Result Procedure::ForEach(std::initializer_list<RecordTable*> tables, Step step) {
  for (RecordTable* const table : tables) {
    if (table == nullptr) continue;
    if (const Result done = Told(step(*table)); IsFailure(done)) return done;
  }
  return Result::kOk;
}

Result Procedure::ExportTables(SyncMode mode) {
  File change_list;
  if (const Result created = CreateFiles(mode, change_list); IsFailure(created)) return Told(created);
  File* const changes = change_list.IsOpen() ? &change_list : nullptr;
  return ForEach({&main_, groups_}, [&](RecordTable& table) { return ExportFlagged(table, changes); });
}

Result Procedure::ExportFlagged(RecordTable& table, File* change_list) {
  const bool found = facts_.looks_up_before_change_list || table.LookUp(RecordTable::Use::kListAndRead);
  const Result exported = found ? table.Export(change_list) : Result::kEntryPointMissing;
  return IsFailure(exported) ? exported | table.facts().exported : Result::kOk;
}

Result Procedure::WriteSnapshots(SyncMode mode) {
  if (!IsRemembered(mode)) return Result::kOk;
  return ForEach({&main_, groups_}, [](RecordTable& table) {
    const Result written = table.WriteSnapshot();
    return IsFailure(written) ? written | StepFlag::kSnapshotWritten : Result::kOk;
  });
}

void Procedure::BeginRecover(SyncMode mode, char16_t* anchor) const {
  call_.MoveAnchor(mode, anchor);
}

Result Procedure::Recover(SyncMode mode) {
  const Result emptied = EmptyStore(mode);
  if (IsFailure(Told(emptied))) return emptied;
  // Of a run that never fails: what is said to replace all must not come beside it.
  if (emptied != Result::kEntryPointMissing) {
    if (const Result applied = ApplyTables(mode); IsFailure(applied)) return applied;
  }
  return Finish(mode);
}

Result Procedure::EmptyStore(SyncMode mode) {
  if (!IsEmptied(facts_.emptied_by, mode)) return Result::kOk;
  StoreFunction erase_all;
  if (!erase_all.LookUp(call_.store(), facts_.erase_all)) return Result::kEntryPointMissing;
  return erase_all({}) ? Result::kOk : Result::kWipeFailed;
}

Result Procedure::ApplyTables(SyncMode mode) {
  if (!AppliesChanges(facts_, mode)) return ApplyEach(false);
  const Result applied = Told(ApplyChanges());
  if (!IsFailure(applied)) call_.Delete(facts_.consumed_change_list);
  return applied;
}

Result Procedure::ApplyChanges() {
  Deletions deletions;
  if (const Result read = ReadChangeList(deletions); IsFailure(read)) return read | StepFlag::kChangeListApplied;
  const Result deleted = Told(DeleteRecords(deletions));
  return IsFailure(deleted) ? deleted | StepFlag::kChangeListApplied : ApplyEach(true);
}

Result Procedure::ReadChangeList(Deletions& deletions) {
  if (!changes_.Create()) return Result::kNoChangeList;
  return ForEachEntry<ChangeRecord>(call_.PathOf(facts_.names.change_list), [&](const ChangeRecord& read) {
    const ChangeRecord change = AsItCounts(read, facts_.tables_of_changes);
    if (change.operation != Operation::kDeleted) {
      const bool passed_over = facts_.passes_over_operation_0 && change.operation == Operation::kNone;
      return passed_over || changes_.Append(change) ? Result::kOk : Result::kNoMemory;
    }
    if (change.table >= facts_.tables.size()) return Result::kOk;
    return deletions[change.table].Append(change.id) ? Result::kOk : Result::kNoMemory;
  });
}

/// Each table's in one call, which is not made for none.
Result Procedure::DeleteRecords(const Deletions& deletions) const {
  StoreFunction erase;
  if (!erase.LookUp(call_.store(), facts_.erase)) return Result::kEntryPointMissing;
  std::uint32_t table = 0;
  for (const List<std::uint32_t>& ids : deletions) {
    const auto count = static_cast<std::uint32_t>(ids.size());
    const bool deleted = count == 0 || erase({.table = table, .count = count, .ids = ids.data()});
    if (!deleted && !facts_.never_fails) return Result::kDeleteFailed;
    ++table;
  }
  return Result::kOk;
}

Result Procedure::ApplyEach(bool incremental) {
  const Applying applying = {incremental, changes_, id_map_};
  return ForEach({groups_, &main_}, [&](RecordTable& table) { return ApplyFlagged(table, applying); });
}

Result Procedure::ApplyFlagged(RecordTable& table, const Applying& applying) {
  if (table.names().exchange_file == nullptr) return Result::kOk;
  const Result applied = table.Apply(applying);
  if (!IsFailure(applied)) return Result::kOk;
  return applied | (applying.incremental ? table.facts().applied_incrementally : table.facts().applied);
}

Result Procedure::Finish(SyncMode mode) {
  for (const TableNames& table : facts_.names.tables) {
    if (table.exchange_file != nullptr) call_.Delete(table.exchange_file);
  }
  return Remember(mode);
}

Result Procedure::Remember(SyncMode mode) {
  if (!IsRemembered(mode)) return Result::kOk;
  if (const Result written = WriteSnapshots(mode); IsFailure(written)) return written;
  File file = File::CreateAlways(call_.PathOf(facts_.names.id_map));
  const Result mapped = file.IsOpen() ? WriteEntries(file, id_map_) : Result::kFileFailed;
  return IsFailure(mapped) && facts_.id_map_written != kNoFlag ? mapped | facts_.id_map_written : Result::kOk;
}

}  // namespace qv
