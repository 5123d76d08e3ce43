// The statements on messages whole, and on the configuration.
#include "host/stores/mms_database.h"

#include "host/handset/unicode.h"

namespace stores {
namespace {

const std::string& MessageTable() {
  static const std::string name = kMmsKind.table;
  return name;
}

/// Makes what stands beside the messages; returns the database.
Database& WithTheConfig(Database& database) {
  database.Execute(
      "CREATE TABLE IF NOT EXISTS mms_config (id INTEGER PRIMARY KEY CHECK (id = 1), block BLOB NOT NULL)");
  return database;
}

/// Value, text and data from `first` on.
void BindMessage(const MmsMessage& message, Query& query, int first) {
  query.Bind(first, std::int64_t{message.value});
  const bool is_utf8 = handset::Utf8(handset::Utf16(message.text)) == message.text;
  query.BindText(first + 1, message.text, is_utf8, BytesOf(message.text));
  query.Bind(first + 2, message.data);
}

}  // namespace

MmsDatabase::MmsDatabase(Database& database)
    : messages_(database, kMmsKind),
      database_(WithTheConfig(database)),
      read_(database.Prepare("SELECT value_12, text, data FROM " + MessageTable() + " WHERE id = ?")),
      insert_(
          database.Prepare("INSERT INTO " + MessageTable() + " (modified, value_12, text, data) VALUES (?, ?, ?, ?)")),
      update_(database.Prepare("UPDATE " + MessageTable() + " SET value_12 = ?2, text = ?3, data = ?4 WHERE id = ?1")),
      read_config_(database.Prepare("SELECT block FROM mms_config")),
      write_config_(database.Prepare("INSERT OR REPLACE INTO mms_config (id, block) VALUES (1, ?)")) {}

MmsMessage MmsDatabase::Read(std::uint32_t id) const {
  Query query(read_);
  query.Bind(1, std::int64_t{id});
  if (!query.Step()) throw UnknownId(id);
  const std::span<const std::uint8_t> text = query.Blob(1);
  const std::span<const std::uint8_t> data = query.Blob(2);
  return {.value = static_cast<std::uint32_t>(query.Number(0)),
          .text = {text.begin(), text.end()},
          .data = {data.begin(), data.end()}};
}

std::uint32_t MmsDatabase::Insert(const MmsMessage& message, std::optional<FileTime> modified) {
  Query query(insert_);
  if (modified) query.Bind(1, *modified);
  BindMessage(message, query, 2);
  query.Run();
  return static_cast<std::uint32_t>(database_.LastInsertedId());
}

void MmsDatabase::Update(std::uint32_t id, const MmsMessage& message) {
  Query query(update_);
  query.Bind(1, std::int64_t{id});
  BindMessage(message, query, 2);
  query.Run();
  if (database_.ChangedRows() == 0) throw UnknownId(id);
}

std::vector<std::uint8_t> MmsDatabase::Config() const {
  Query query(read_config_);
  if (!query.Step()) return {};
  const std::span<const std::uint8_t> block = query.Blob(0);
  return {block.begin(), block.end()};
}

void MmsDatabase::SetConfig(std::span<const std::uint8_t> block) {
  Query query(write_config_);
  query.Bind(1, block);
  query.Run();
}

}  // namespace stores
