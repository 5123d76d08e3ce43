// Checks of the callers' arguments around the record stores of a library.
#include "host/stores/store_library.h"

#include <exception>
#include <vector>

namespace stores {
namespace {

/// A copy of the caller's record with the argument in its place.
std::vector<std::uint8_t> WithArgument(const KindDescription& kind, const void* record, std::uint32_t argument) {
  const auto* const bytes = static_cast<const std::uint8_t*>(record);
  std::vector<std::uint8_t> copy(bytes, bytes + kind.layout.store_size);
  if (kind.argument.form != qv::layout::Form::kNone) {
    qv::layout::StoreSlot(kind.argument, copy.data(), argument);
  }
  return copy;
}

}  // namespace

Status StatusOf(const std::function<Status()>& call) noexcept {
  try {
    return call();
  } catch (const UnknownId&) {
    return kUnknownRecord;
  } catch (const std::exception&) {
    return kDatabaseFailed;
  }
}

struct StoreLibrary::Opened {
  explicit Opened(std::span<const KindDescription> kinds) {
    for (const KindDescription& kind : kinds) tables.emplace_back(database, kind);
  }

  Database database;
  std::vector<RecordStore> tables;
};

StoreLibrary::StoreLibrary(std::span<const KindDescription> kinds) : kinds_(kinds) {}

StoreLibrary::~StoreLibrary() = default;

StoreLibrary::Opened& StoreLibrary::Open() {
  if (!opened_) opened_ = std::make_unique<Opened>(kinds_);
  return *opened_;
}

Status StoreLibrary::OnTable(std::uint32_t table, const std::function<Status(RecordStore&)>& call) noexcept {
  if (table >= kinds_.size()) return kUnknownTable;
  return StatusOf([&] { return call(Open().tables[table]); });
}

std::uint32_t StoreLibrary::Count(std::uint32_t table) noexcept {
  std::uint32_t count = 0;
  OnTable(table, [&](const RecordStore& store) {
    count = store.Count();
    return kDone;
  });
  return count;
}

Status StoreLibrary::SyncInfo(std::uint32_t table, std::uint32_t* count, qv::SyncInfoEntry* entries) noexcept {
  return OnTable(table, [&](const RecordStore& store) {
    if (count == nullptr || (entries == nullptr && *count != 0)) return kNullPointer;
    *count = store.SyncInfo({entries, *count});
    return kDone;
  });
}

Status StoreLibrary::Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids, void* records) noexcept {
  return OnTable(table, [&](const RecordStore& store) {
    if (count != 0 && (ids == nullptr || records == nullptr)) return kNullPointer;
    store.Read({ids, count}, static_cast<std::uint8_t*>(records));
    return kDone;
  });
}

Status StoreLibrary::Insert(std::uint32_t table, const void* record, std::uint32_t* new_id,
                            std::uint32_t argument) noexcept {
  return OnTable(table, [&](RecordStore& store) {
    if (record == nullptr || new_id == nullptr) return kNullPointer;
    *new_id = store.Insert(WithArgument(store.Kind(), record, argument).data());
    return kDone;
  });
}

Status StoreLibrary::Update(std::uint32_t table, std::uint32_t id, const void* record,
                            std::uint32_t argument) noexcept {
  return OnTable(table, [&](RecordStore& store) {
    if (record == nullptr) return kNullPointer;
    store.Update(id, WithArgument(store.Kind(), record, argument).data());
    return kDone;
  });
}

Status StoreLibrary::Delete(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) noexcept {
  return OnTable(table, [&](RecordStore& store) {
    if (count != 0 && ids == nullptr) return kNullPointer;
    store.Delete({ids, count});
    return kDone;
  });
}

Status StoreLibrary::DeleteAll() noexcept {
  return StatusOf([&] {
    Opened& opened = Open();
    Transaction transaction(opened.database);
    for (RecordStore& store : opened.tables) store.DeleteAll();
    transaction.Commit();
    return kDone;
  });
}

}  // namespace stores
