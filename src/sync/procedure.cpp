// The shared steps of export and recover.
#include "sync/procedure.h"

namespace qv {

Result ExportFiles::Create(const ExchangeDirectory& directory, const ModuleNames& names, SyncMode mode) {
  for (const TableNames& table : names.tables) {
    if (!File::CreateAlways(directory / table.exchange_file).IsOpen()) return Result::kFileFailed;
  }
  if (mode != SyncMode::kIncremental) return Result::kOk;
  change_list_ = File::CreateAlways(directory / names.change_list);
  return change_list_.IsOpen() ? Result::kOk : Result::kFileFailed;
}

Result ListRecords(StoreTable& table, SyncInfoList& info) {
  std::uint32_t count = 0;
  if (const Result counted = table.Count(&count); counted != Result::kOk) return counted;
  if (count == 0) return table.EmptyResult();
  if (!info.Resize(count, table.form())) return Result::kNoMemory;
  if (const Result listed = table.GetSyncInfo(&count, info.data()); listed != Result::kOk) return listed;
  info.Take(count);
  return Result::kOk;
}

Result QueueRecords(StoreTable& table, File* change_list, SyncInfoList& info) {
  if (change_list == nullptr) {
    info.QueueAll();
    return Result::kOk;
  }
  Snapshot snapshot;
  const Result loaded = snapshot.Load(table.names().snapshot_log);
  if (IsFailure(loaded)) return loaded | StepFlag::kSnapshotRead;
  EntryWriter<ChangeRecord> changes(*change_list);
  return CompareWithSnapshot(table.number(), info, snapshot, changes);
}

Result WriteSnapshot(StoreTable& table) {
  File log = File::CreateAlways(table.names().snapshot_log);
  if (!log.IsOpen()) return Result::kFileFailed;
  if (!table.LookUp(StoreTable::Use::kList)) return Result::kEntryPointMissing;
  SyncInfoList info;
  if (const Result listed = ListRecords(table, info); listed != Result::kOk) return listed;
  EntryWriter<SnapshotEntry> writer(log);
  for (const SnapshotEntry& entry : info.entries()) {
    if (!writer.Append(entry)) return Result::kFileFailed;
  }
  return writer.Flush() ? Result::kOk : Result::kFileFailed;
}

Result ReadChangeList(const char16_t* path, ChangeList& changes, Deletions& deletions) {
  return ForEachChange(path, [&](const ChangeRecord& change) {
    if (change.operation != Operation::kDeleted) return changes.Append(change) ? Result::kOk : Result::kNoMemory;
    if (change.table >= std::size(deletions)) return Result::kOk;
    return deletions[change.table].Append(change.id) ? Result::kOk : Result::kNoMemory;
  });
}

Result ReadRecord(File& exchange_table, std::uint8_t* record, std::size_t record_size, std::size_t request,
                  bool& more) {
  std::fill_n(record, record_size, std::uint8_t{0});
  more = false;
  std::size_t got = 0;
  if (!exchange_table.Read(record, request, got)) return Result::kFileUnreadable;
  more = got != 0;
  return Result::kOk;
}

Result ReadChunk(File& exchange_table, std::size_t record_size, List<std::uint8_t>& records, std::size_t& count) {
  count = 0;
  std::size_t got = 0;
  if (!exchange_table.Read(records.data(), records.size(), got)) return Result::kFileUnreadable;
  std::fill(records.begin() + got, records.end(), std::uint8_t{0});
  count = (got + record_size - 1) / record_size;
  return Result::kOk;
}

Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    if (ItemCount(run, exchange) > run.slots) return Result::kFileUnreadable;
  }
  for (const layout::ItemRun& run : layout.items) {
    const std::size_t size = ItemCount(run, exchange) * std::size_t{run.item.size};
    std::size_t got = 0;
    if (!exchange_table.Read(store + run.store_offset, size, got) || got < size) return Result::kFileUnreadable;
  }
  return Result::kOk;
}

bool WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                const std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    const std::size_t size = ItemCount(run, exchange) * std::size_t{run.item.size};
    if (!exchange_table.Write(store + run.store_offset, size)) return false;
  }
  return true;
}

Result WriteIdMap(const char16_t* path, const IdMap& map) {
  File file = File::CreateAlways(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  EntryWriter<IdMapEntry> writer(file);
  for (const IdMapEntry& entry : map) {
    if (!writer.Append(entry)) return Result::kFileFailed;
  }
  return writer.Flush() ? Result::kOk : Result::kFileFailed;
}

}  // namespace qv
