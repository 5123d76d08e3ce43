// What all store libraries have in common: tables of records by number, callers who may be wrong, and numbers instead
// of exceptions. What a library adds is its tables, the names of its entry points, and its oddities.
#ifndef QV_HOST_STORES_STORE_LIBRARY_H
#define QV_HOST_STORES_STORE_LIBRARY_H

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "host/stores/record_store.h"

/// What a store library exports.
#define STORE_ENTRY_POINT extern "C" __attribute__((visibility("default")))

#pragma GCC visibility push(default)

namespace stores {

/// What entry points return, in libraries whose success is 0. The agent only asks whether it is success.
enum Status : std::uint32_t {
  kDone = 0,
  kNullPointer = 1,  ///< A null pointer where the call needs something.
  kUnknownTable = 2,
  kUnknownRecord = 3,   ///< No record has this id, or one of these ids.
  kDatabaseFailed = 4,  ///< The database cannot be opened, read or written.
  kNoSession = 5,       ///< The library wants to be initialised first.
  kOutOfBounds = 6,     ///< A count or length that is negative, or more than there can be; no 0 where one must be.
  kNoMemory = 7,        ///< No room for what the call would hand out.
};

/// Runs `call` and says how it ended: kDone, or what it threw.
Status StatusOf(const std::function<void()>& call) noexcept;

// How a call ends itself: by what these throw, which is StatusOf's to catch.

[[noreturn]] void Refuse(Status status);
/// Refuses null pointers.
void Expect(std::initializer_list<const void*> pointers);
/// The same for a call on so many records, whose pointers do not matter when there is none. A count from a signed
/// number below 0 is more than there can be.
void ExpectList(std::uint32_t count, std::initializer_list<const void*> pointers);
/// A copy in a block that the caller frees; null for nothing. Refuses without memory.
void* HandOut(const void* bytes, std::size_t size);

struct LibraryFacts {
  /// What entry points answer for success. Where it is not 0 they answer a failure as its number below 0, so that it
  /// is not taken for another success.
  std::uint32_t success = kDone;
  /// Calls are refused but between Begin and End. Otherwise the first call opens the database.
  bool has_session = false;
};

/// A store library: a static object of it, so that the database is closed when the library is freed. Each call is one
/// transaction; one that fails has changed nothing in the database. What calls return is for the entry point to return:
/// success is what the facts say.
class StoreLibrary {
 public:
  /// Of a session. It does not matter whether there is one.
  Status Begin() noexcept;
  Status End() noexcept;

  /// 0 also when it cannot be told.
  std::uint32_t Count(std::uint32_t table) noexcept;
  Status Count(std::uint32_t table, std::uint32_t* count) noexcept;
  /// *count: in, the room in `entries`, which have the table's form; out, how many are there.
  Status List(std::uint32_t table, std::uint32_t* count, void* entries) noexcept;
  Status Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids, void* records) noexcept;
  /// `argument` goes to the place in the record that the kind gives it, if any.
  Status Insert(std::uint32_t table, const void* record, std::uint32_t* new_id, std::uint32_t argument = 0) noexcept;
  Status InsertBatch(std::uint32_t table, std::uint32_t count, const void* records, std::uint32_t* new_ids) noexcept;
  Status Update(std::uint32_t table, std::uint32_t id, const void* record, std::uint32_t argument = 0) noexcept;
  /// Of the id that the record itself says.
  Status Update(std::uint32_t table, const void* record) noexcept;
  Status UpdateBatch(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids, const void* records) noexcept;
  Status Delete(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) noexcept;
  /// Of one table.
  Status DeleteAll(std::uint32_t table) noexcept;
  /// Of all tables.
  Status DeleteAll() noexcept;

  /// How an entry point says this status.
  Status Answer(Status status) const;

  /// For a call: refuses it with the status that this setting holds, if it is there and not 0.
  void RefuseIfSet(std::string_view setting) const;

 protected:
  struct Opened {
    virtual ~Opened();
    virtual std::span<RecordStore> Tables() = 0;

    Database database;
  };

  explicit StoreLibrary(const LibraryFacts& facts) : facts_(facts) {}
  virtual ~StoreLibrary();

  /// Runs `call`, whose changes count when it does not throw.
  Status Run(const std::function<void(Opened&)>& call) noexcept;

 private:
  virtual std::unique_ptr<Opened> Open() const = 0;

  Status OnTable(std::uint32_t table, const std::function<void(RecordStore&)>& call) noexcept;
  void InsertRecords(RecordStore& store, std::uint32_t count, const void* records, std::uint32_t* new_ids,
                     std::uint32_t argument) const;

  const LibraryFacts facts_;
  std::unique_ptr<Opened> opened_;
};

/// The library of what is kept in `Contents`, which are made on the database and give Tables() by number.
template <typename Contents>
class LibraryOf final : public StoreLibrary {
 public:
  explicit LibraryOf(const LibraryFacts& facts = {}) : StoreLibrary(facts) {}

  /// For the calls that are a library's own.
  Status Call(const std::function<void(Contents&)>& call) noexcept {
    return Run([&](Opened& opened) { call(static_cast<OpenedContents&>(opened).contents); });
  }

 private:
  struct OpenedContents final : Opened {
    std::span<RecordStore> Tables() override { return contents.Tables(); }

    Contents contents{database};
  };
  std::unique_ptr<Opened> Open() const override { return std::make_unique<OpenedContents>(); }
};

/// The contents of a library that is tables of records and nothing else.
template <const auto& kKinds>
class RecordTables {
 public:
  explicit RecordTables(Database& database) {
    for (const KindDescription& kind : kKinds) tables_.emplace_back(database, kind);
  }
  std::span<RecordStore> Tables() { return tables_; }

 private:
  std::vector<RecordStore> tables_;
};

/// The number of a table that is its library's only one.
inline constexpr std::uint32_t kOnlyTable = 0;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_STORE_LIBRARY_H
