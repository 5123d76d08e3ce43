// The schedule's export and recover, step by step.
#include "modules/calendar/schedule.h"

#include "sync/anchor_file.h"

namespace qv::schedule {
namespace {

// SchedStore.dll. Every entry point but the count answers 0 for success.
using GetTotalNum = std::uint32_t(std::uint32_t table);
using GetAllSyncInfo = std::uint32_t(std::uint32_t table, std::uint32_t* count, SyncInfoEntry* entries);
using Read = std::uint32_t(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids, void* records);
using Insert = std::uint32_t(std::uint32_t table, const void* record, std::uint32_t* new_id, std::uint32_t group);
using Update = std::uint32_t(std::uint32_t table, std::uint32_t id, const void* record, std::uint32_t group);
using Del = std::uint32_t(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids);
using DelAll = std::uint32_t();

/// Records asked for in one read, and the room offered for them: the store may use what lies behind the last one.
constexpr std::uint32_t kReadBatch = 50;
constexpr std::uint32_t kReadRoom = 100;

class ScheduleTable final : public ExportedTable {
 public:
  ScheduleTable(const Library& store, std::uint32_t number)
      : ExportedTable(number, kNames.tables[number]), store_(store) {}

  bool LookUp(Use use) override {
    get_total_num_ = store_.Resolve<GetTotalNum>(u"SC_Sync_GetTotalNum");
    get_all_sync_info_ = store_.Resolve<GetAllSyncInfo>(u"SC_Sync_GetAllSyncInfo");
    if (get_total_num_ == nullptr || get_all_sync_info_ == nullptr) return false;
    if (use == Use::kList) return true;
    read_ = store_.Resolve<Read>(u"SC_Sync_Read");
    return read_ != nullptr;
  }

  Result Count(std::uint32_t* count) override {
    *count = get_total_num_(number());
    return Result::kOk;
  }

  Result GetSyncInfo(std::uint32_t* count, SyncInfoEntry* entries) override {
    return get_all_sync_info_(number(), count, entries) == 0 ? Result::kOk : Result::kSyncInfoFailed;
  }

  Result ExportRecords(std::span<const std::uint32_t> ids, File& exchange_table) override {
    const layout::RecordLayout& layout = *names().layout;
    return ForEachRecord(
        ids, kReadBatch, kReadRoom, layout.store_size,
        [&](std::uint32_t count, const std::uint32_t* batch, std::uint8_t* records) {
          return read_(number(), count, batch, records) == 0;
        },
        [&](std::uint32_t id, const std::uint8_t* record) {
          std::uint8_t exchange[kEntryExchangeSize];
          static_assert(kGroupExchangeSize <= kEntryExchangeSize);
          layout::ToExchange(layout, record, exchange);
          // An entry goes by the id it was listed under; what its record says of it is the store's own affair.
          if (number() == kMainTable) layout::StoreSlot(kEntryId, exchange, id);
          if (!exchange_table.Write(exchange, layout.exchange_size)) return Result::kFileFailed;
          return WriteItems(exchange_table, layout, exchange, record);
        });
  }

 private:
  const Library& store_;
  GetTotalNum* get_total_num_ = nullptr;
  GetAllSyncInfo* get_all_sync_info_ = nullptr;
  Read* read_ = nullptr;
};

/// The entry points that put records into the store.
class Writer {
 public:
  Writer(const Library& store, ApplyForm form, const ChangeList& changes, IdMap& id_map)
      : form_(form),
        changes_(changes),
        id_map_(id_map),
        insert_(store.Resolve<Insert>(u"SC_Sync_Insert")),
        update_(form == ApplyForm::kInsertOrUpdate ? store.Resolve<Update>(u"SC_Sync_Update") : nullptr) {}

  bool IsComplete() const { return insert_ != nullptr && (form_ == ApplyForm::kInsertOnly || update_ != nullptr); }

  /// Inserts, updates or passes over the record that came as `id`.
  Result Apply(std::uint32_t table, std::uint32_t id, const void* record, std::uint32_t group) {
    switch (WantedOperation(form_, changes_, table, id)) {
      case Operation::kNew: {
        std::uint32_t new_id = 0;
        if (insert_(table, record, &new_id, group) != 0) return Result::kInsertFailed;
        return id_map_.Append(table, new_id, id) ? Result::kOk : Result::kNoMemory;
      }
      case Operation::kModified: return update_(table, id, record, group) == 0 ? Result::kOk : Result::kUpdateFailed;
      default: return Result::kOk;
    }
  }

 private:
  ApplyForm form_;
  const ChangeList& changes_;
  IdMap& id_map_;
  Insert* insert_;
  Update* update_;
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
  ScheduleTable entries(store_, kMainTable);
  const Result entries_done = ExportTable(entries, directory_, files.ChangeList());
  if (IsFailure(entries_done)) return entries_done | StepFlag::kTable0Exported;
  ScheduleTable groups(store_, kGroupTable);
  const Result groups_done = ExportTable(groups, directory_, files.ChangeList());
  return IsFailure(groups_done) ? groups_done | StepFlag::kTable1Exported : Result::kOk;
}

Result ScheduleHandler::Recover(SyncMode mode, char16_t* anchor, const void* directory) {
  if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
  if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
  MoveAnchor(mode, kNames.anchor_key, anchor);

  if (mode == SyncMode::kReplace) {
    if (const Result emptied = EmptyStore(); IsFailure(emptied)) return emptied;
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
  for (const std::uint32_t number : {kMainTable, kGroupTable}) {
    ScheduleTable table(store_, number);
    if (const Result written = WriteSnapshot(table); IsFailure(written)) return written | StepFlag::kSnapshotWritten;
  }
  return Result::kOk;
}

Result ScheduleHandler::EmptyStore() {
  auto* const delete_all = store_.Resolve<DelAll>(u"SC_Sync_DelAll");
  if (delete_all == nullptr) return Result::kEntryPointMissing;
  return delete_all() == 0 ? Result::kOk : Result::kWipeFailed;
}

// Groups come first in both forms, so that entries can be pointed at the ids that the groups received.

Result ScheduleHandler::InsertTables() {
  const Result groups = ApplyGroups(ApplyForm::kInsertOnly);
  if (IsFailure(groups)) return groups | kGroupsInserted;
  const Result entries = ApplyEntries(ApplyForm::kInsertOnly);
  return IsFailure(entries) ? entries | kEntriesInserted : Result::kOk;
}

Result ScheduleHandler::ApplyChanges() {
  const Result deletions = ApplyChangeList();
  if (IsFailure(deletions)) return deletions | StepFlag::kChangeListApplied;
  const Result groups = ApplyGroups(ApplyForm::kInsertOrUpdate);
  if (IsFailure(groups)) return groups | kGroupsApplied;
  const Result entries = ApplyEntries(ApplyForm::kInsertOrUpdate);
  if (IsFailure(entries)) return entries | kEntriesApplied;
  coredll::DeleteFileW(directory_ / kNames.change_list);
  return Result::kOk;
}

Result ScheduleHandler::ApplyChangeList() {
  Deletions deletions;
  if (!changes_.Create()) return Result::kNoChangeList;
  const Result read = ReadChangeList(directory_ / kNames.change_list, changes_, deletions);
  if (IsFailure(read)) return read;
  auto* const del = store_.Resolve<Del>(u"SC_Sync_Del");
  if (del == nullptr) return Result::kEntryPointMissing;
  for (const std::uint32_t table : {kMainTable, kGroupTable}) {
    const List<std::uint32_t>& ids = deletions[table];
    if (ids.empty()) continue;
    if (del(table, static_cast<std::uint32_t>(ids.size()), ids.data()) != 0) return Result::kDeleteFailed;
  }
  return Result::kOk;
}

Result ScheduleHandler::ApplyGroups(ApplyForm form) {
  const TableNames& names = kNames.tables[kGroupTable];
  File table = File::OpenExisting(directory_ / names.exchange_file);
  if (!table.IsOpen()) return Result::kFileFailed;
  Writer writer(store_, form, changes_, id_map_);
  if (!writer.IsComplete()) return Result::kEntryPointMissing;
  // Of each request that an incremental recover reads only the first record is applied. Desktops lay the table out so.
  const std::size_t request = form == ApplyForm::kInsertOnly ? kGroupExchangeSize : names.incremental_stride;
  List<std::uint8_t> exchange;
  if (!exchange.Resize(request)) return Result::kNoMemory;

  for (;;) {
    bool more = false;
    const Result read = ReadRecord(table, exchange.data(), kGroupExchangeSize, request, more);
    if (!more) return read;
    std::uint8_t record[kGroupStoreSize];
    layout::ToStore(kGroupLayout, exchange.data(), record);
    const Result applied =
        writer.Apply(kGroupTable, layout::LoadSlot(kGroupId, record), record, layout::LoadSlot(kGroupValue, record));
    if (IsFailure(applied)) return applied;
  }
}

Result ScheduleHandler::ApplyEntries(ApplyForm form) {
  File table = File::OpenExisting(directory_ / kNames.tables[kMainTable].exchange_file);
  if (!table.IsOpen()) return Result::kFileFailed;
  Writer writer(store_, form, changes_, id_map_);
  if (!writer.IsComplete()) return Result::kEntryPointMissing;
  List<std::uint8_t> record;
  if (!record.Resize(kEntryStoreSize)) return Result::kNoMemory;

  for (;;) {
    std::uint8_t exchange[kEntryExchangeSize];
    bool more = false;
    const Result read = ReadRecord(table, exchange, kEntryExchangeSize, kEntryExchangeSize, more);
    if (!more) return read;
    layout::ToStore(kEntryLayout, exchange, record.data());
    const Result items = ReadItems(table, kEntryLayout, exchange, record.data());
    if (IsFailure(items)) return items;
    const std::uint32_t group = id_map_.Translate(kGroupTable, layout::LoadSlot(kEntryGroupId, exchange));
    layout::StoreSlot(kEntryGroupId, record.data(), group);
    const Result applied = writer.Apply(kMainTable, layout::LoadSlot(kEntryId, exchange), record.data(), group);
    if (IsFailure(applied)) return applied;
  }
}

}  // namespace qv::schedule
