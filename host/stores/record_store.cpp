// The table of a kind and the statements on it, all made from the record form.
#include "host/stores/record_store.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace stores {
namespace {

/// The present as a FileTime: days since the Julian date of 1601-01-01, in units of 100 ns.
constexpr const char* kNow = "CAST((julianday('now') - 2305813.5) * 864000000000 AS INTEGER)";

/// A row that gives no time of its own, or NULL, is as of now. An id must fit a record, which has 32 bits for it.
std::string TableSql(const KindDescription& kind, const std::vector<Column>& columns) {
  return std::string("CREATE TABLE IF NOT EXISTS ") + kind.table +
         " (\n  id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN " + std::to_string(kind.first_id) +
         " AND 4294967295),\n  modified INTEGER NOT NULL ON CONFLICT REPLACE DEFAULT (" + kNow + ")" +
         Defined(columns) + kind.more_columns + ")";
}

/// Of times in lists, callers see parts of a second in a FILETIME only.
FileTime ResolutionOf(const qv::SyncInfoForm& list) {
  return list.time == qv::SyncInfoForm::Time::kFileTime ? 1 : kSecond;
}

/// A change moves the time even when the clock has not moved since the last one, or stands before it.
std::string ModifiedTriggerSql(const std::string& table, FileTime resolution) {
  return "CREATE TRIGGER IF NOT EXISTS " + table + "_modified AFTER UPDATE ON " + table +
         " WHEN NEW.modified = OLD.modified BEGIN\n  UPDATE " + table + " SET modified = max(OLD.modified + " +
         std::to_string(resolution) + ", " + kNow + ") WHERE id = NEW.id;\nEND";
}

bool LiesIn(const qv::layout::Slot& outer, const qv::layout::Slot& slot) {
  return slot.offset >= outer.offset && slot.offset + slot.size <= outer.offset + outer.size;
}

std::vector<Column> CreateTable(Database& database, const KindDescription& kind) {
  std::vector<Column> columns = ColumnsOf(kind.layout);
  if (kind.says_id) columns.erase(columns.begin());
  std::erase_if(columns, [&](const Column& column) { return LiesIn(kind.time, column.slot); });
  Transaction transaction(database);
  database.Execute(TableSql(kind, columns));
  database.Execute(ModifiedTriggerSql(kind.table, ResolutionOf(kind.list)));
  transaction.Commit();
  return columns;
}

/// The record's columns are the parameters from the second on, and the last is the id.
std::string InsertSql(const std::string& table, const std::vector<Column>& columns) {
  return "INSERT INTO " + table + " (modified" + Listed(columns) + ", id) VALUES (?" +
         Placeholders(columns.size() + 1) + ")";
}

/// The record's columns are the parameters from the second on, as in the insert.
std::string UpdateSql(const std::string& table, const std::vector<Column>& columns) {
  return "UPDATE " + table + " SET id = ?1" + Listed(columns, " = ?") + " WHERE id = ?1";
}

qv::SyncInfoEntry SyncInfoOf(const Query& row) {
  const auto modified = static_cast<std::uint64_t>(row.Number(1));
  return {.id = static_cast<std::uint32_t>(row.Number(0)),
          .unused = 0,
          .time_low = static_cast<std::uint32_t>(modified),
          .time_high = static_cast<std::uint32_t>(modified >> 32)};
}

void PutTime(FileTime time, const qv::layout::Slot& slot, std::uint8_t* record) {
  const auto put = [&](const auto& value) { std::memcpy(record + slot.offset, &value, sizeof(value)); };
  slot.form == qv::layout::Form::kFileTime ? put(time) : put(CalendarTimeOf(time));
}

}  // namespace

/// A change of a row that leaves all its columns moves its time: by the trigger that every table of records has.
std::string TouchSql(const KindDescription& kind, const std::string& id) {
  return std::string("UPDATE ") + kind.table + " SET modified = modified WHERE id = " + id;
}

std::string TriggerSql(const std::string& name, const std::string& event, const std::string& table,
                       const std::string& body) {
  return "CREATE TRIGGER IF NOT EXISTS " + name + " AFTER " + event + " ON " + table + " BEGIN\n  " + body + ";\nEND;";
}

UnknownId::UnknownId(std::uint32_t id) : StoreError("there is no record " + std::to_string(id)) {}

RecordStore::RecordStore(Database& database, const KindDescription& kind)
    : database_(database),
      kind_(kind),
      columns_(CreateTable(database, kind)),
      count_(database.Prepare(std::string("SELECT count(*) FROM ") + kind.table)),
      sync_info_(database.Prepare(std::string("SELECT id, modified FROM ") + kind.table + " ORDER BY id LIMIT ?")),
      read_(database.Prepare("SELECT modified" + Listed(columns_) + " FROM " + kind.table + " WHERE id = ?")),
      insert_(database.Prepare(InsertSql(kind.table, columns_))),
      update_(database.Prepare(UpdateSql(kind.table, columns_))),
      set_modified_(database.Prepare(std::string("UPDATE ") + kind.table + " SET modified = ?2 WHERE id = ?1")),
      delete_(database.Prepare(std::string("DELETE FROM ") + kind.table + " WHERE id = ?")),
      delete_all_(database.Prepare(std::string("DELETE FROM ") + kind.table)) {}

std::uint32_t RecordStore::Count() const {
  Query query(count_);
  query.Step();
  return static_cast<std::uint32_t>(query.Number(0));
}

std::uint32_t RecordStore::SyncInfo(std::span<qv::SyncInfoEntry> entries) const {
  Query query(sync_info_);
  query.Bind(1, static_cast<std::int64_t>(entries.size()));
  std::uint32_t filled = 0;
  while (query.Step()) entries[filled++] = SyncInfoOf(query);
  return filled;
}

bool RecordStore::Has(std::uint32_t id) const {
  Query query(read_);
  query.Bind(1, std::int64_t{id});
  return query.Step();
}

void RecordStore::Read(std::span<const std::uint32_t> ids, std::uint8_t* records) const {
  const ReadTransaction transaction(database_);
  for (const std::uint32_t id : ids) {
    Query query(read_);
    query.Bind(1, std::int64_t{id});
    if (!query.Step()) throw UnknownId(id);
    std::fill_n(records, kind_.layout.store_size, std::uint8_t{0});
    if (kind_.says_id) qv::layout::StoreSlot(IdSlotOf(kind_.layout), records, id);
    if (kind_.time.size != 0) PutTime(query.Number(0), kind_.time, records);
    ReadColumns(query, 1, columns_, records);
    records += kind_.layout.store_size;
  }
}

std::vector<std::uint8_t> RecordStore::ReadAll() const {
  const ReadTransaction transaction(database_);
  std::vector<qv::SyncInfoEntry> entries(Count());
  entries.resize(SyncInfo(entries));
  std::vector<std::uint32_t> ids;
  for (const qv::SyncInfoEntry& entry : entries) ids.push_back(entry.id);
  std::vector<std::uint8_t> records(ids.size() * kind_.layout.store_size);
  Read(ids, records.data());
  return records;
}

std::uint32_t RecordStore::Insert(const std::uint8_t* record, std::optional<FileTime> modified,
                                  std::optional<std::uint32_t> id) {
  Query query(insert_);
  if (modified) query.Bind(1, *modified);
  BindColumns(columns_, record, query, 2);
  if (id) query.Bind(static_cast<int>(columns_.size()) + 2, std::int64_t{*id});
  query.Run();
  return static_cast<std::uint32_t>(database_.LastInsertedId());
}

void RecordStore::Update(std::uint32_t id, const std::uint8_t* record) {
  Query query(update_);
  query.Bind(1, std::int64_t{id});
  BindColumns(columns_, record, query, 2);
  query.Run();
  if (database_.ChangedRows() == 0) throw UnknownId(id);
}

void RecordStore::SetModified(std::uint32_t id, FileTime modified) {
  Query query(set_modified_);
  query.Bind(1, std::int64_t{id});
  query.Bind(2, modified);
  query.Run();
}

void RecordStore::Delete(std::span<const std::uint32_t> ids) {
  Transaction transaction(database_);
  for (const std::uint32_t id : ids) {
    Query query(delete_);
    query.Bind(1, std::int64_t{id});
    query.Run();
    if (database_.ChangedRows() == 0) throw UnknownId(id);
  }
  transaction.Commit();
}

void RecordStore::DeleteAll() {
  Query(delete_all_).Run();
}

void RecordStore::ReplaceAll(std::span<const std::uint8_t> records) {
  Transaction transaction(database_);
  DeleteAll();
  const std::size_t size = kind_.layout.store_size;
  for (; records.size() >= size; records = records.subspan(size)) Insert(records.data());
  transaction.Commit();
}

}  // namespace stores
