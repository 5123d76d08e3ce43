// The steps on one table, by its facts.
#include "sync/record_table.h"

#include "sync/changes.h"
#include "sync/entry_file.h"
#include "sync/exchange_table.h"

namespace qv {
namespace {

bool Exists(const layout::Slot& slot) {
  return slot.form != layout::Form::kNone;
}

}  // namespace

bool RecordTable::LookUp(Use use) {
  if (IsCounted() && !count_.LookUp(store(), facts_.calls.count)) return false;
  if (!list_.LookUp(store(), facts_.calls.list)) return false;
  return use == Use::kList || read_.LookUp(store(), facts_.calls.read);
}

Result RecordTable::Count(std::uint32_t& count) const {
  if (!IsCounted()) {
    count = facts_.uncounted_room;
  } else if (!facts_.calls.count.Takes(Argument::kCountPlace)) {
    count = count_.Answer({.table = number_});
  } else {
    count = 0;
    if (!count_({.table = number_, .count_place = &count})) return Result::kCountFailed;
  }
  return Result::kOk;
}

Result RecordTable::ListRecords(SyncInfoList& info) {
  const auto is_none = [&](std::uint32_t number) {
    return number == 0 || (facts_.counts_are_signed && static_cast<std::int32_t>(number) < 0);
  };
  std::uint32_t count = 0;
  if (const Result counted = Count(count); counted != Result::kOk) return counted;
  if (is_none(count)) return EmptyResult();
  if (!info.Resize(count, facts_.sync_info)) return Result::kNoMemory;
  if (!list_({.table = number_, .count_place = &count, .entries = info.data()})) return Result::kSyncInfoFailed;
  const bool listed_none = is_none(count);
  info.Take(listed_none ? 0 : count);
  return listed_none && facts_.lists_none_when_empty ? EmptyResult() : Result::kOk;
}

bool RecordTable::Read(std::span<const std::uint32_t> ids, void* records) const {
  const auto count = static_cast<std::uint32_t>(ids.size());
  return read_({.table = number_, .count = count, .id = ids.front(), .ids = ids.data(), .records = records});
}

Result RecordTable::QueueRecords(File* change_list, SyncInfoList& info) const {
  if (change_list == nullptr) {
    info.QueueAll();
    return Result::kOk;
  }
  Snapshot snapshot;
  const Result loaded = snapshot.Load(names().snapshot_log);
  if (IsFailure(loaded)) return loaded | StepFlag::kSnapshotRead;
  EntryWriter<ChangeRecord> changes(*change_list);
  return CompareWithSnapshot(number_, info, snapshot, changes);
}

Result RecordTable::Export(File* change_list) {
  const TableCreated created = change_list != nullptr ? facts_.created_incrementally : facts_.created;
  File exchange_table;
  if (created == TableCreated::kFirst || created == TableCreated::kFirstAndAnew) {
    exchange_table = CreateExchangeTable();
    if (!exchange_table.IsOpen()) return Result::kFileFailed;
    if (created == TableCreated::kFirstAndAnew) exchange_table.Close();
  }
  const auto leave_empty = [&](Result result) {
    const bool is_late = created == TableCreated::kWithRecords || created == TableCreated::kUnlessEmpty;
    return !is_late || CreateExchangeTable().IsOpen() ? result : Result::kFileFailed;
  };
  SyncInfoList info;
  if (const Result listed = ListRecords(info); listed != Result::kOk) {
    return IsFailure(listed) || created == TableCreated::kUnlessEmpty ? listed : leave_empty(listed);
  }
  if (const Result queued = QueueRecords(change_list, info); IsFailure(queued)) return queued;
  if (info.QueuedIds().empty()) return leave_empty(Result::kOk);
  const std::size_t most = change_list != nullptr ? facts_.read_batch_incrementally : facts_.read_batch;
  const std::size_t batch = most != 0 ? most : info.QueuedIds().size();
  const Result exported = ExportRecords(info.QueuedIds(), batch, exchange_table);
  const bool lacks_memory = change_list != nullptr && exported == Result::kNoMemory;
  return lacks_memory ? facts_.no_memory_for_changed_records : exported;
}

Result RecordTable::ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table) {
  const layout::RecordLayout& layout = *names().layout;
  List<std::uint8_t> records;
  const std::size_t room = std::max<std::size_t>(std::min(batch, ids.size()), facts_.read_room);
  if (!records.Resize(room, layout.store_size)) return Result::kNoMemory;
  if (!MakeRoomToWrite()) return Result::kNoMemory;
  return ForEachBatch(ids, batch, [&](std::span<const std::uint32_t> run) {
    records.Zero();
    if (!Read(run, records.data())) return Result::kReadFailed;
    if (!exchange_table.IsOpen()) exchange_table = CreateExchangeTable();
    if (!exchange_table.IsOpen()) return Result::kFileFailed | facts_.written;
    for (std::size_t i = 0; i < run.size(); ++i) {
      const std::uint8_t* const record = records.data() + i * layout.store_size;
      if (!WriteRecord(exchange_table, run[i], record)) return Result::kFileFailed | facts_.written;
    }
    return Result::kOk;
  });
}

bool RecordTable::WriteRecord(File& exchange_table, std::uint32_t id, const std::uint8_t* record) {
  const layout::RecordLayout& layout = *names().layout;
  std::uint8_t* const exchange = exchange_records_.data();
  if (facts_.to_exchange != nullptr) {
    facts_.to_exchange(record, exchange);
  } else {
    layout::ToExchange(layout, record, exchange);
  }
  if (Exists(facts_.listed_id)) layout::StoreSlot(facts_.listed_id, exchange, id);
  return exchange_table.Write(exchange, layout.exchange_size) && WriteItems(exchange_table, layout, exchange, record);
}

Result RecordTable::WriteSnapshot() {
  File log = File::CreateAlways(names().snapshot_log);
  if (!log.IsOpen()) return Result::kFileFailed;
  if (!LookUp(Use::kList)) return Result::kEntryPointMissing;
  SyncInfoList info;
  if (const Result listed = ListRecords(info); listed != Result::kOk) return listed;
  return WriteEntries(log, info.entries());
}

bool RecordTable::LookUpForApplying(bool incremental) {
  if (!insert_.LookUp(store(), facts_.calls.insert)) return false;
  if (!incremental) return true;
  const char16_t* const also_needed = facts_.also_needed_for_changes;
  return LookUpUpdate() && (also_needed == nullptr || store().Resolve<void()>(also_needed) != nullptr);
}

Result RecordTable::Apply(const Applying& applying) {
  const bool looks_up_before = facts_.looks_up_before_table && applying.incremental;
  if (looks_up_before && !LookUpForApplying(applying.incremental)) return Result::kEntryPointMissing;
  File exchange_table = OpenExchangeTable();
  if (!exchange_table.IsOpen()) {
    const bool may_be_missing = facts_.may_be_missing_incrementally && applying.incremental;
    return may_be_missing ? Result::kOk : Result::kFileFailed;
  }
  if (!looks_up_before && !LookUpForApplying(applying.incremental)) return Result::kEntryPointMissing;
  for (bool more = true; more;) {
    if (const Result applied = ApplyRecord(exchange_table, applying, more); IsFailure(applied)) return applied;
  }
  return Result::kOk;
}

Result RecordTable::NextRecord(File& exchange_table, bool incremental, const std::uint8_t*& record) {
  if (!incremental && facts_.insert_chunk != 0) return NextOfChunk(exchange_table, record);
  // Of each request that an incremental recover reads only the first record is applied. Desktops lay such a table out
  // so.
  const std::size_t size = names().layout->exchange_size;
  const bool strides = incremental && names().incremental_stride != 0;
  const std::size_t request = strides ? names().incremental_stride : size;
  if (!exchange_records_.Resize(request)) return Result::kNoMemory;
  bool more = false;
  const Result read = ReadRecord(exchange_table, exchange_records_.data(), size, request, more);
  record = more ? exchange_records_.data() : nullptr;
  return read;
}

Result RecordTable::NextOfChunk(File& exchange_table, const std::uint8_t*& record) {
  const std::size_t size = names().layout->exchange_size;
  record = nullptr;
  if (next_of_chunk_ == exchange_records_.size()) {
    if (has_read_chunk_ && facts_.inserts_one_chunk) return Result::kOk;
    if (!exchange_records_.Resize(facts_.insert_chunk * size)) return Result::kNoMemory;
    std::size_t got = 0;
    if (!exchange_table.Read(exchange_records_.data(), exchange_records_.size(), got)) return Result::kFileUnreadable;
    (void)exchange_records_.Resize(got - got % size);
    has_read_chunk_ = true;
    next_of_chunk_ = 0;
    if (exchange_records_.empty()) return Result::kOk;
  }
  record = exchange_records_.data() + next_of_chunk_;
  next_of_chunk_ += size;
  return Result::kOk;
}

Result RecordTable::ApplyRecord(File& exchange_table, const Applying& applying, bool& more) {
  const layout::RecordLayout& layout = *names().layout;
  const std::uint8_t* exchange = nullptr;
  const Result read = NextRecord(exchange_table, applying.incremental, exchange);
  more = exchange != nullptr;
  if (!more) return read;
  if (!store_record_.Resize(layout.store_size)) return Result::kNoMemory;
  std::uint8_t* const record = store_record_.data();
  if (facts_.to_store != nullptr) {
    facts_.to_store(exchange, record);
  } else {
    layout::ToStore(layout, exchange, record);
  }
  bool is_whole = false;
  if (const Result items = ReadItems(exchange_table, layout, exchange, record, is_whole); IsFailure(items))
    return items;
  if (!is_whole) return Result::kFileUnreadable;
  Repoint(record, applying.id_map);
  const std::uint32_t group = Exists(facts_.group_argument) ? layout::LoadSlot(facts_.group_argument, record) : 0;
  const std::uint32_t id = layout::LoadSlot(facts_.incoming_id, exchange);
  return Put(applying, {.table = number_, .id = id, .records = record, .group = group});
}

void RecordTable::Repoint(std::uint8_t* store_record, const IdMap& id_map) const {
  if (!Exists(facts_.group_reference)) return;
  const std::uint32_t group = layout::LoadSlot(facts_.group_reference, store_record);
  layout::StoreSlot(facts_.group_reference, store_record, id_map.Translate(kGroupTable, group));
}

Result RecordTable::Put(const Applying& applying, const Arguments& arguments) {
  switch (applying.Wanted(arguments.table, arguments.id)) {
    case Operation::kNew: return Insert(applying, arguments);
    case Operation::kModified: return update_(arguments) ? Result::kOk : Result::kUpdateFailed;
    default: return Result::kOk;
  }
}

Result RecordTable::Insert(const Applying& applying, Arguments arguments) {
  std::uint32_t new_id = 0;
  arguments.new_id = &new_id;
  if (!insert_(arguments)) return Result::kInsertFailed;
  return applying.id_map.Append(arguments.table, new_id, arguments.id) ? Result::kOk : Result::kNoMemory;
}

}  // namespace qv
