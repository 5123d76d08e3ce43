// What all store libraries have in common: tables by number, records through pointers of callers who may be wrong, and
// status numbers instead of exceptions.
#ifndef QV_HOST_STORES_STORE_LIBRARY_H
#define QV_HOST_STORES_STORE_LIBRARY_H

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "host/stores/record_store.h"

/// What a store library exports.
#define STORE_ENTRY_POINT extern "C" __attribute__((visibility("default")))

#pragma GCC visibility push(default)

namespace stores {

/// What entry points return. The agent only asks whether it is 0.
enum Status : std::uint32_t {
  kDone = 0,
  kNullPointer = 1,  ///< A null pointer where the call needs something.
  kUnknownTable = 2,
  kUnknownRecord = 3,   ///< No record has this id, or one of these ids.
  kDatabaseFailed = 4,  ///< The database cannot be opened, read or written.
  kNoSession = 5,       ///< The library wants to be initialised first.
  kOutOfBounds = 6,     ///< A count or length that is negative, or more than there can be.
  kNoMemory = 7,        ///< No room for what the call would hand out.
};

/// Runs `call`, which may return any status, and turns what it throws into one.
Status StatusOf(const std::function<Status()>& call) noexcept;

/// The tables of one store library: a static object of it, so that the database, which the first call opens, is closed
/// when the library is freed. Each call is one transaction; one that fails has changed nothing in the database.
class StoreLibrary {
 public:
  /// `kinds` by table number; it must outlive the library.
  explicit StoreLibrary(std::span<const KindDescription> kinds);
  ~StoreLibrary();

  /// 0 also when it cannot be told.
  std::uint32_t Count(std::uint32_t table) noexcept;
  /// *count: in, the room in `entries`; out, how many are there.
  Status SyncInfo(std::uint32_t table, std::uint32_t* count, qv::SyncInfoEntry* entries) noexcept;
  Status Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids, void* records) noexcept;
  /// `argument` goes to the place in the record that the kind gives it, if any.
  Status Insert(std::uint32_t table, const void* record, std::uint32_t* new_id, std::uint32_t argument = 0) noexcept;
  Status Update(std::uint32_t table, std::uint32_t id, const void* record, std::uint32_t argument = 0) noexcept;
  Status Delete(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) noexcept;
  /// Of all tables.
  Status DeleteAll() noexcept;

 private:
  struct Opened;

  Opened& Open();
  /// Runs `call` on the store of a table, opening the database if need be.
  Status OnTable(std::uint32_t table, const std::function<Status(RecordStore&)>& call) noexcept;

  std::span<const KindDescription> kinds_;
  std::unique_ptr<Opened> opened_;
};

/// The same for a library that is more than tables of records: `Contents` are made on the database.
template <typename Contents>
class LibraryOf {
 public:
  /// Runs `call`, whose changes count when it answers kDone.
  Status Call(const std::function<Status(Contents&)>& call) noexcept {
    return StatusOf([&] {
      if (!opened_) opened_ = std::make_unique<Opened>();
      Transaction transaction(opened_->database);
      const Status status = call(opened_->contents);
      if (status == kDone) transaction.Commit();
      return status;
    });
  }

 private:
  struct Opened {
    Database database;
    Contents contents{database};
  };
  std::unique_ptr<Opened> opened_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_STORE_LIBRARY_H
