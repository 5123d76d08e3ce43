// The steps on one table, by its facts.
#include "sync/record_table.h"

#include <algorithm>

namespace qv {

bool RecordTable::LookUp(Use use) {
  if (!count_.LookUp(store_, facts_.count) || !list_.LookUp(store_, facts_.list)) return false;
  return use == Use::kList || read_.LookUp(store_, facts_.read);
}

Result RecordTable::Count(std::uint32_t* count) {
  *count = count_({.table = number()});
  return Result::kOk;
}

Result RecordTable::GetSyncInfo(std::uint32_t* count, void* entries) {
  const bool listed = list_({.table = number(), .count_place = count, .entries = entries}) == 0;
  return listed ? Result::kOk : Result::kSyncInfoFailed;
}

bool RecordTable::Read(std::span<const std::uint32_t> ids, void* records) const {
  const auto count = static_cast<std::uint32_t>(ids.size());
  return read_({.table = number(), .count = count, .ids = ids.data(), .records = records}) == 0;
}

Result RecordTable::ExportRecords(std::span<const std::uint32_t> ids, const char16_t* path, File& exchange_table) {
  const layout::RecordLayout& layout = *names().layout;
  const std::size_t batch = facts_.read_batch != 0 ? facts_.read_batch : ids.size();
  List<std::uint8_t> records;
  if (!records.Resize(std::max<std::size_t>(batch, facts_.read_room), layout.store_size)) return Result::kNoMemory;
  std::fill(records.begin(), records.end(), std::uint8_t{0});
  if (!exchange_record_.Resize(layout.exchange_size)) return Result::kNoMemory;
  return ForEachBatch(ids, batch, [&](std::span<const std::uint32_t> run) {
    if (!Read(run, records.data())) return Result::kReadFailed;
    if (!exchange_table.IsOpen()) exchange_table = File::CreateAlways(path);
    if (!exchange_table.IsOpen()) return Result::kFileFailed | facts_.table_written;
    for (std::size_t i = 0; i < run.size(); ++i) {
      const std::uint8_t* const record = records.data() + i * layout.store_size;
      if (!WriteRecord(exchange_table, run[i], record)) return Result::kFileFailed | facts_.table_written;
    }
    return Result::kOk;
  });
}

bool RecordTable::WriteRecord(File& exchange_table, std::uint32_t id, const std::uint8_t* record) {
  const layout::RecordLayout& layout = *names().layout;
  std::uint8_t* const exchange = exchange_record_.data();
  if (facts_.to_exchange != nullptr) {
    facts_.to_exchange(record, exchange);
  } else {
    layout::ToExchange(layout, record, exchange);
  }
  if (facts_.listed_id.form != layout::Form::kNone) layout::StoreSlot(facts_.listed_id, exchange, id);
  return exchange_table.Write(exchange, layout.exchange_size) && WriteItems(exchange_table, layout, exchange, record);
}

bool RecordTable::LookUpForApplying(ApplyForm form) {
  return insert_.LookUp(store_, facts_.insert) &&
         (form == ApplyForm::kInsertOnly || update_.LookUp(store_, facts_.update));
}

Result RecordTable::ApplyRecord(File& exchange_table, const Applying& applying, bool& more) {
  const layout::RecordLayout& layout = *names().layout;
  // Of each request that an incremental recover reads only the first record is applied. Desktops lay such a table out
  // so.
  const bool strides = applying.form == ApplyForm::kInsertOrUpdate && names().incremental_stride != 0;
  const std::size_t request = strides ? names().incremental_stride : layout.exchange_size;
  more = false;
  if (!exchange_record_.Resize(request) || !store_record_.Resize(layout.store_size)) return Result::kNoMemory;
  std::uint8_t* const exchange = exchange_record_.data();
  std::uint8_t* const record = store_record_.data();
  const Result read = ReadRecord(exchange_table, exchange, layout.exchange_size, request, more);
  if (!more) return read;
  if (facts_.to_store != nullptr) {
    facts_.to_store(exchange, record);
  } else {
    layout::ToStore(layout, exchange, record);
  }
  if (const Result items = ReadItems(exchange_table, layout, exchange, record); IsFailure(items)) return items;
  Repoint(record, applying.id_map);
  const std::uint32_t group = facts_.group.form != layout::Form::kNone ? layout::LoadSlot(facts_.group, record) : 0;
  return Put(applying, layout::LoadSlot(facts_.incoming_id, exchange), record, group);
}

Result RecordTable::Put(const Applying& applying, std::uint32_t id, const void* record, std::uint32_t group) {
  switch (WantedOperation(applying.form, applying.changes, number(), id)) {
    case Operation::kNew: {
      std::uint32_t new_id = 0;
      if (insert_({.table = number(), .records = record, .new_id = &new_id, .group = group}) != 0) {
        return Result::kInsertFailed;
      }
      return applying.id_map.Append(number(), new_id, id) ? Result::kOk : Result::kNoMemory;
    }
    case Operation::kModified: {
      const bool updated = update_({.table = number(), .id = id, .records = record, .group = group}) == 0;
      return updated ? Result::kOk : Result::kUpdateFailed;
    }
    default: return Result::kOk;
  }
}

Result ExportListed(RecordTable& table, const ExchangeDirectory& directory, File* change_list) {
  const ExchangeDirectory::Path path = directory / table.names().exchange_file;
  File exchange_table = File::CreateAlways(path);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  if (!table.KeepsTableOpen()) exchange_table.Close();
  SyncInfoList info;
  if (const Result listed = ListRecords(table, info); listed != Result::kOk) return listed;
  if (const Result queued = QueueRecords(table, change_list, info); IsFailure(queued)) return queued;
  return info.QueuedIds().empty() ? Result::kOk : table.ExportRecords(info.QueuedIds(), path, exchange_table);
}

Result ExportTable(RecordTable& table, const ExchangeDirectory& directory, File* change_list) {
  if (!table.LookUp(StoreTable::Use::kListAndRead)) return Result::kEntryPointMissing;
  return ExportListed(table, directory, change_list);
}

Result DeleteRecords(const Library& store, const EntryPoint& erase, std::span<const List<std::uint32_t>> deletions) {
  StoreFunction function;
  if (!function.LookUp(store, erase)) return Result::kEntryPointMissing;
  for (std::size_t table = 0; table < deletions.size(); ++table) {
    const List<std::uint32_t>& ids = deletions[table];
    if (ids.empty()) continue;
    const Arguments arguments = {
        .table = static_cast<std::uint32_t>(table), .count = static_cast<std::uint32_t>(ids.size()), .ids = ids.data()};
    if (function(arguments) != 0) return Result::kDeleteFailed;
  }
  return Result::kOk;
}

Result EmptyStore(const Library& store, const EntryPoint& erase_all) {
  StoreFunction function;
  if (!function.LookUp(store, erase_all)) return Result::kEntryPointMissing;
  return function({}) == 0 ? Result::kOk : Result::kWipeFailed;
}

Result ApplyTable(RecordTable& table, const ExchangeDirectory& directory, const Applying& applying) {
  const bool looks_up_first = table.LooksUpFirst(applying.form);
  if (looks_up_first && !table.LookUpForApplying(applying.form)) return Result::kEntryPointMissing;
  File exchange_table = File::OpenExisting(directory / table.names().exchange_file);
  if (!exchange_table.IsOpen()) return Result::kFileFailed;
  if (!looks_up_first && !table.LookUpForApplying(applying.form)) return Result::kEntryPointMissing;
  for (bool more = true; more;) {
    if (const Result applied = table.ApplyRecord(exchange_table, applying, more); IsFailure(applied)) return applied;
  }
  return Result::kOk;
}

}  // namespace qv
