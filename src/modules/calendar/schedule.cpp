// The schedule's export and recover, step by step.
#include "modules/calendar/schedule.h"

#include "sync/anchor_file.h"
#include "sync/record_table.h"

namespace qv::schedule {
namespace {

using enum Argument;

/// SchedStore.dll, whose two tables share their entry points. A group takes the place of an entry's group by a value of
/// its own.
constexpr RecordTableFacts FactsOf(layout::Slot listed_id, layout::Slot group) {
  return {
      .count = {u"SC_Sync_GetTotalNum", {kTable}},
      .list = {u"SC_Sync_GetAllSyncInfo", {kTable, kCountPlace, kEntries}},
      .read = {u"SC_Sync_Read", {kTable, kCount, kIds, kRecords}},
      .insert = {u"SC_Sync_Insert", {kTable, kRecords, kNewId, kGroup}},
      .update = {u"SC_Sync_Update", {kTable, kId, kRecords, kGroup}},
      .read_batch = 50,
      .read_room = 100,
      .keeps_table_open = true,
      .listed_id = listed_id,
      .group = group,
  };
}
/// An entry goes by the id it was listed under; what its record says of it is the store's own affair.
constexpr RecordTableFacts kEntryFacts = FactsOf(kEntryId, kEntryGroupId);
constexpr RecordTableFacts kGroupFacts = FactsOf({}, kGroupValue);
constexpr EntryPoint kErase = {u"SC_Sync_Del", {kTable, kCount, kIds}};
constexpr EntryPoint kEraseAll = {u"SC_Sync_DelAll", {}};

class EntryTable final : public RecordTable {
 public:
  explicit EntryTable(const Library& store) : RecordTable(store, kMainTable, kTables[kMainTable], kEntryFacts) {}

 private:
  void Repoint(std::uint8_t* entry, const IdMap& id_map) const override {
    const std::uint32_t group = layout::LoadSlot(kEntryGroupId, entry);
    layout::StoreSlot(kEntryGroupId, entry, id_map.Translate(kGroupTable, group));
  }
};

class GroupTable final : public RecordTable {
 public:
  explicit GroupTable(const Library& store) : RecordTable(store, kGroupTable, kTables[kGroupTable], kGroupFacts) {}
};

}  // namespace

Result ScheduleHandler::Export(SyncMode& mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  CheckAnchor(mode, kNames.anchor_key, anchor);
  MoveAnchor(mode, kNames.anchor_key, anchor);

  if (const Result exported = ExportTables(mode); IsFailure(exported)) return exported;
  return IsRemembered(mode) ? WriteSnapshots() : Result::kOk;
}

Result ScheduleHandler::ExportTables(SyncMode mode) {
  ExportFiles files;
  if (const Result created = files.Create(directory_, kNames, mode); IsFailure(created)) return created;
  EntryTable entries(store_);
  const Result entries_done = ExportTable(entries, directory_, files.ChangeList());
  if (IsFailure(entries_done)) return entries_done | StepFlag::kTable0Exported;
  GroupTable groups(store_);
  const Result groups_done = ExportTable(groups, directory_, files.ChangeList());
  return IsFailure(groups_done) ? groups_done | StepFlag::kTable1Exported : Result::kOk;
}

Result ScheduleHandler::Recover(SyncMode mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  MoveAnchor(mode, kNames.anchor_key, anchor);

  if (mode == SyncMode::kReplace) {
    if (const Result emptied = EmptyStore(store_, kEraseAll); IsFailure(emptied)) return emptied;
  }
  const Result applied = mode == SyncMode::kIncremental ? ApplyChanges() : InsertTables();
  if (IsFailure(applied)) return applied;
  for (const TableNames& table : kNames.tables) coredll::DeleteFileW(directory_ / table.exchange_file);

  if (!IsRemembered(mode)) return Result::kOk;
  if (const Result written = WriteSnapshots(); IsFailure(written)) return written;
  // The map is a kindness: without it the desktop asks for a full export.
  (void)WriteIdMap(directory_ / kNames.id_map, id_map_);
  return Result::kOk;
}

Result ScheduleHandler::WriteSnapshots() {
  EntryTable entries(store_);
  GroupTable groups(store_);
  for (RecordTable* const table : {static_cast<RecordTable*>(&entries), static_cast<RecordTable*>(&groups)}) {
    if (const Result written = WriteSnapshot(*table); IsFailure(written)) return written | StepFlag::kSnapshotWritten;
  }
  return Result::kOk;
}

// Groups come first in both forms, so that entries can be pointed at the ids that the groups received.

Result ScheduleHandler::InsertTables() {
  const Applying applying = {ApplyForm::kInsertOnly, changes_, id_map_};
  GroupTable groups(store_);
  const Result groups_done = ApplyTable(groups, directory_, applying);
  if (IsFailure(groups_done)) return groups_done | kGroupsInserted;
  EntryTable entries(store_);
  const Result entries_done = ApplyTable(entries, directory_, applying);
  return IsFailure(entries_done) ? entries_done | kEntriesInserted : Result::kOk;
}

Result ScheduleHandler::ApplyChanges() {
  const Result deletions = ApplyChangeList();
  if (IsFailure(deletions)) return deletions | StepFlag::kChangeListApplied;
  const Applying applying = {ApplyForm::kInsertOrUpdate, changes_, id_map_};
  GroupTable groups(store_);
  const Result groups_done = ApplyTable(groups, directory_, applying);
  if (IsFailure(groups_done)) return groups_done | kGroupsApplied;
  EntryTable entries(store_);
  const Result entries_done = ApplyTable(entries, directory_, applying);
  if (IsFailure(entries_done)) return entries_done | kEntriesApplied;
  coredll::DeleteFileW(directory_ / kNames.change_list);
  return Result::kOk;
}

Result ScheduleHandler::ApplyChangeList() {
  Deletions deletions;
  if (!changes_.Create()) return Result::kNoChangeList;
  const Result read = ReadChangeList(directory_ / kNames.change_list, changes_, deletions);
  if (IsFailure(read)) return read;
  return DeleteRecords(store_, kErase, deletions);
}

}  // namespace qv::schedule
