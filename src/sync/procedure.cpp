// The shared steps of export and recover.
#include "sync/procedure.h"

namespace qv {
namespace {

/// Lists the table. EmptyResult, kNoMemory, kSyncInfoFailed.
Result ListRecords(StoreTable& table, SyncInfoList& info) {
  std::uint32_t count = table.Count();
  if (count == 0) return table.EmptyResult();
  if (!info.Resize(count)) return Result::kNoMemory;
  if (!table.GetSyncInfo(&count, info.data())) return Result::kSyncInfoFailed;
  info.Shrink(count);
  return Result::kOk;
}

}  // namespace

Result CreateEmpty(const char16_t* path) {
  return File::CreateAlways(path).IsOpen() ? Result::kOk : Result::kFileFailed;
}

Result ExportTable(StoreTable& table, const ExchangeDirectory& directory) {
  if (!table.LookUp(StoreTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  File exchange_table = File::CreateAlways(directory / table.names().exchange_file);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  SyncInfoList info;
  if (const Result listed = ListRecords(table, info); listed != Result::kOk) return listed;
  for (std::size_t i = 0; i < info.size(); ++i) info.QueueId(i);
  return table.ExportRecords(info.QueuedIds(), exchange_table);
}

Result ComputeChanges(StoreTable& table, const ExchangeDirectory& directory, File& change_list) {
  if (!table.LookUp(StoreTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  File exchange_table = File::CreateAlways(directory / table.names().exchange_file);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  SyncInfoList info;
  if (const Result listed = ListRecords(table, info); listed != Result::kOk) return listed;
  {
    Snapshot snapshot;
    const Result loaded = snapshot.Load(table.names().snapshot_log);
    if (IsFailure(loaded)) return loaded | StepFlag::kSnapshotRead;
    EntryWriter<ChangeRecord> changes(change_list);
    const Result compared = CompareWithSnapshot(table.number(), info, snapshot, changes);
    if (IsFailure(compared)) return compared;
  }
  return info.QueuedIds().empty() ? Result::kOk : table.ExportRecords(info.QueuedIds(), exchange_table);
}

Result WriteSnapshot(StoreTable& table) {
  File log = File::CreateAlways(table.names().snapshot_log);
  if (!log.IsOpen()) return Result::kFileFailed;
  if (!table.LookUp(StoreTable::Use::kList)) return Result::kEntryPointMissing;
  SyncInfoList info;
  if (const Result listed = ListRecords(table, info); listed != Result::kOk) return listed;
  EntryWriter<SnapshotEntry> writer(log);
  for (const SyncInfoEntry& entry : info.entries()) {
    if (!writer.Append({entry.id, entry.time_low, entry.time_high})) return Result::kFileFailed;
  }
  return writer.Flush() ? Result::kOk : Result::kFileFailed;
}

Result ReadChangeList(const char16_t* path, ChangeList& changes, Deletions& deletions) {
  using Reader = EntryReader<ChangeRecord>;
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  Reader reader(file);
  ChangeRecord record;
  Reader::Outcome outcome;
  while ((outcome = reader.Next(record)) == Reader::Outcome::kEntry) {
    if (record.operation != Operation::kDeleted) {
      if (!changes.Append(record)) return Result::kNoMemory;
    } else if (record.table < std::size(deletions) && !deletions[record.table].Append(record.id)) {
      return Result::kNoMemory;
    }
  }
  return outcome == Reader::Outcome::kEnd ? Result::kOk : Result::kFileUnreadable;
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

Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    if (ItemCount(run, exchange) > run.slots) return Result::kFileUnreadable;
  }
  for (const layout::ItemRun& run : layout.items) {
    const std::size_t size = ItemCount(run, exchange) * std::size_t{run.item_size};
    std::size_t got = 0;
    if (!exchange_table.Read(store + run.store_offset, size, got) || got < size) return Result::kFileUnreadable;
  }
  return Result::kOk;
}

Result WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                  const std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    const std::size_t size = ItemCount(run, exchange) * std::size_t{run.item_size};
    if (!exchange_table.Write(store + run.store_offset, size)) return Result::kFileFailed;
  }
  return Result::kOk;
}

void WriteIdMap(const char16_t* path, const IdMap& map) {
  File file = File::CreateAlways(path);
  if (!file.IsOpen()) return;
  EntryWriter<IdMapEntry> writer(file);
  for (const IdMapEntry& entry : map) {
    if (!writer.Append(entry)) return;
  }
  (void)writer.Flush();
}

}  // namespace qv
