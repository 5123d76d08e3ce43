// Records of one kind in the database. The stand-in store libraries are thin callers of it, and so are tools that
// create data: open a Database on the running handset, a RecordStore on that, and insert.
#ifndef QV_HOST_STORES_RECORD_STORE_H
#define QV_HOST_STORES_RECORD_STORE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/columns.h"
#include "host/stores/database.h"
#include "host/stores/file_time.h"
#include "layout/record_layout.h"
#include "sync/file_forms.h"
#include "sync/sync_info.h"

#pragma GCC visibility push(default)

namespace stores {

struct KindDescription {
  const char* table;                       ///< In the database.
  const qv::layout::RecordLayout& layout;  ///< Its first named row is the record's id, if it says one.
  qv::layout::Slot argument = {};          ///< Where the last argument of the store's insert and update goes.
  qv::layout::Slot time = {};              ///< Where a record tells `modified`: a FILETIME, or bytes of a CalendarTime.
                                           ///< It is no column of its own.
  qv::SyncInfoForm list = qv::kFileTimeIn16Bytes;  ///< How the store lists the records.
  std::string_view insert_refusal = {};            ///< A setting that the store's insert refuses by (RefuseIfSet).
  bool says_id = true;            ///< Otherwise only the row has an id, and all of the record's are columns.
  const char* more_columns = "";  ///< In SQL, each after a comma: for those who read and write them themselves.
  std::uint32_t first_id = 1;     ///< No row has a lower one.
};

/// A call named a record that is not there.
class UnknownId : public StoreError {
 public:
  explicit UnknownId(std::uint32_t id);
};

// SQL for what belongs to records. Foreign keys would not do: the sqlite3 shell does not heed them unless told.

/// Makes a change of it one of the record: `id` is an expression.
std::string TouchSql(const KindDescription& kind, const std::string& id);
/// Has `body` done after each `event`, "DELETE" say, on the table.
std::string TriggerSql(const std::string& name, const std::string& event, const std::string& table,
                       const std::string& body);

/// One table: `id`, 32 bits, which is never given out twice unless a caller asks for it; `modified`, a FileTime; and
/// the columns of the record form (columns.h). A change of a row moves `modified` by a trigger, so that an edit in the
/// sqlite3 shell counts as one on the handset, and a row inserted there gets the present time. It moves by what the
/// store's list can tell at least.
///
/// A record is `layout.store_size` bytes. What is read is what was inserted, but for the record's own id and time,
/// which are the row's, and bytes that no row names, which are zero. Each call is one transaction; one that throws has
/// done nothing.
class RecordStore {
 public:
  /// Makes the table when there is none. The database must outlive the store.
  RecordStore(Database& database, const KindDescription& kind);

  const KindDescription& Kind() const { return kind_; }

  std::uint32_t Count() const;
  bool Has(std::uint32_t id) const;

  /// Fills `entries` in the order of their ids as far as there is room; returns how many were filled.
  std::uint32_t SyncInfo(std::span<qv::SyncInfoEntry> entries) const;

  /// Puts the records back to back in the order of `ids`. Throws UnknownId.
  void Read(std::span<const std::uint32_t> ids, std::uint8_t* records) const;

  /// All records back to back, in the order of their ids.
  std::vector<std::uint8_t> ReadAll() const;

  /// Returns the new record's id. Without `modified` it is as of now, without `id` it gets the next one.
  std::uint32_t Insert(const std::uint8_t* record, std::optional<FileTime> modified = std::nullopt,
                       std::optional<std::uint32_t> id = std::nullopt);

  /// Throws UnknownId.
  void Update(std::uint32_t id, const std::uint8_t* record);

  /// Of a record that is there, after changes that count as none.
  void SetModified(std::uint32_t id, FileTime modified);

  /// Throws UnknownId, also for the second of two equal ids.
  void Delete(std::span<const std::uint32_t> ids);
  void DeleteAll();

  /// By records back to back, which get new ids.
  void ReplaceAll(std::span<const std::uint8_t> records);

 private:
  Database& database_;
  const KindDescription& kind_;
  std::vector<Column> columns_;
  Statement count_, sync_info_, read_, insert_, update_, set_modified_, delete_, delete_all_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_RECORD_STORE_H
