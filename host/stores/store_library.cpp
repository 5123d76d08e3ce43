// The calls that all libraries have, with the checks of their callers' arguments, and the frame that every call runs
// in.
#include "host/stores/store_library.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

#include "host/stores/sync_info_list.h"
#include "platform/coredll.h"

namespace stores {
namespace {

/// Callers with signed numbers mean one below 0 by what is more.
constexpr std::uint32_t kMostRecords = std::numeric_limits<std::int32_t>::max();

struct Refusal : std::exception {
  explicit Refusal(Status with) : status(with) {}
  const Status status;
};

/// Calls `take` with the position and a copy of each of the caller's records, the argument in its place.
void ForEachRecord(const KindDescription& kind, std::uint32_t count, const void* records, std::uint32_t argument,
                   auto&& take) {
  const auto* from = static_cast<const std::uint8_t*>(records);
  for (std::uint32_t i = 0; i < count; ++i, from += kind.layout.store_size) {
    std::vector<std::uint8_t> record(from, from + kind.layout.store_size);
    if (kind.argument.form != qv::layout::Form::kNone) qv::layout::StoreSlot(kind.argument, record.data(), argument);
    take(i, record.data());
  }
}

void UpdateRecords(RecordStore& store, std::uint32_t count, const std::uint32_t* ids, const void* records,
                   std::uint32_t argument) {
  ExpectList(count, {ids, records});
  ForEachRecord(store.Kind(), count, records, argument,
                [&](std::uint32_t i, const std::uint8_t* record) { store.Update(ids[i], record); });
}

}  // namespace

Status StatusOf(const std::function<void()>& call) noexcept {
  try {
    call();
    return kDone;
  } catch (const Refusal& refusal) {
    return refusal.status;
  } catch (const UnknownId&) {
    return kUnknownRecord;
  } catch (const std::exception&) {
    return kDatabaseFailed;
  }
}

void Refuse(Status status) {
  throw Refusal(status);
}

void Expect(std::initializer_list<const void*> pointers) {
  if (std::ranges::find(pointers, nullptr) != pointers.end()) Refuse(kNullPointer);
}

void ExpectList(std::uint32_t count, std::initializer_list<const void*> pointers) {
  if (count > kMostRecords) Refuse(kOutOfBounds);
  if (count != 0) Expect(pointers);
}

void* HandOut(const void* bytes, std::size_t size) {
  if (size == 0) return nullptr;
  void* const block = coredll::malloc(size);
  if (block == nullptr) Refuse(kNoMemory);
  return std::memcpy(block, bytes, size);
}

StoreLibrary::Opened::~Opened() = default;

StoreLibrary::~StoreLibrary() = default;

Status StoreLibrary::Begin() noexcept {
  return Answer(StatusOf([&] {
    if (!opened_) opened_ = Open();
  }));
}

Status StoreLibrary::End() noexcept {
  opened_.reset();
  return Answer(kDone);
}

Status StoreLibrary::Answer(Status status) const {
  if (status == kDone) return static_cast<Status>(facts_.success);
  return facts_.success == kDone ? status : static_cast<Status>(0u - status);
}

Status StoreLibrary::Run(const std::function<void(Opened&)>& call) noexcept {
  return Answer(StatusOf([&] {
    if (!opened_ && facts_.has_session) Refuse(kNoSession);
    if (!opened_) opened_ = Open();
    Transaction transaction(opened_->database);
    call(*opened_);
    transaction.Commit();
  }));
}

Status StoreLibrary::OnTable(std::uint32_t table, const std::function<void(RecordStore&)>& call) noexcept {
  return Run([&](Opened& opened) {
    const std::span<RecordStore> tables = opened.Tables();
    if (table >= tables.size()) Refuse(kUnknownTable);
    call(tables[table]);
  });
}

void StoreLibrary::RefuseIfSet(std::string_view setting) const {
  const std::int64_t status = opened_->database.Setting(setting).value_or(kDone);
  if (status != kDone) Refuse(static_cast<Status>(static_cast<std::uint32_t>(status)));
}

std::uint32_t StoreLibrary::Count(std::uint32_t table) noexcept {
  std::uint32_t count = 0;
  Count(table, &count);
  return count;
}

Status StoreLibrary::Count(std::uint32_t table, std::uint32_t* count) noexcept {
  return OnTable(table, [&](const RecordStore& store) {
    Expect({count});
    *count = store.Count();
  });
}

Status StoreLibrary::List(std::uint32_t table, std::uint32_t* count, void* entries) noexcept {
  return OnTable(table, [&](const RecordStore& store) {
    Expect({count});
    ExpectList(*count, {entries});
    std::vector<qv::SyncInfoEntry> info(std::min(*count, store.Count()));
    *count = store.SyncInfo(info);
    PutSyncInfoList(info, store.Kind().list, static_cast<std::uint8_t*>(entries));
  });
}

Status StoreLibrary::Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids, void* records) noexcept {
  return OnTable(table, [&](const RecordStore& store) {
    ExpectList(count, {ids, records});
    store.Read({ids, count}, static_cast<std::uint8_t*>(records));
  });
}

void StoreLibrary::InsertRecords(RecordStore& store, std::uint32_t count, const void* records, std::uint32_t* new_ids,
                                 std::uint32_t argument) const {
  ExpectList(count, {records, new_ids});
  if (const std::string_view setting = store.Kind().insert_refusal; !setting.empty()) RefuseIfSet(setting);
  ForEachRecord(store.Kind(), count, records, argument,
                [&](std::uint32_t i, const std::uint8_t* record) { new_ids[i] = store.Insert(record); });
}

Status StoreLibrary::Insert(std::uint32_t table, const void* record, std::uint32_t* new_id,
                            std::uint32_t argument) noexcept {
  return OnTable(table, [&](RecordStore& store) { InsertRecords(store, 1, record, new_id, argument); });
}

Status StoreLibrary::InsertBatch(std::uint32_t table, std::uint32_t count, const void* records,
                                 std::uint32_t* new_ids) noexcept {
  return OnTable(table, [&](RecordStore& store) { InsertRecords(store, count, records, new_ids, 0); });
}

Status StoreLibrary::Update(std::uint32_t table, std::uint32_t id, const void* record,
                            std::uint32_t argument) noexcept {
  return OnTable(table, [&](RecordStore& store) { UpdateRecords(store, 1, &id, record, argument); });
}

Status StoreLibrary::Update(std::uint32_t table, const void* record) noexcept {
  return OnTable(table, [&](RecordStore& store) {
    Expect({record});
    const auto* const bytes = static_cast<const std::uint8_t*>(record);
    const std::uint32_t id = qv::layout::LoadSlot(IdSlotOf(store.Kind().layout), bytes);
    UpdateRecords(store, 1, &id, record, 0);
  });
}

Status StoreLibrary::UpdateBatch(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                                 const void* records) noexcept {
  return OnTable(table, [&](RecordStore& store) { UpdateRecords(store, count, ids, records, 0); });
}

Status StoreLibrary::Delete(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) noexcept {
  return OnTable(table, [&](RecordStore& store) {
    ExpectList(count, {ids});
    store.Delete({ids, count});
  });
}

Status StoreLibrary::DeleteAll(std::uint32_t table) noexcept {
  return OnTable(table, [&](RecordStore& store) { store.DeleteAll(); });
}

Status StoreLibrary::DeleteAll() noexcept {
  return Run([](Opened& opened) {
    for (RecordStore& store : opened.Tables()) store.DeleteAll();
  });
}

}  // namespace stores
