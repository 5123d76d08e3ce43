// The tables beside the records, the triggers that hold all four together, and the statements on them.
#include "host/stores/contact_database.h"

#include <algorithm>
#include <string>

#include "host/stores/columns.h"
#include "modules/contacts/contacts_layout.h"

namespace stores {
namespace {

using qv::contacts::kStoreName;

const std::string& Contacts() {
  static const std::string name = kContactKinds[kContacts].table;
  return name;
}

const std::string& Groups() {
  static const std::string name = kContactKinds[kContactGroups].table;
  return name;
}

std::string MembershipsSql() {
  const std::string touch_old = TouchSql(kContactKinds[kContacts], "OLD.contact_id");
  const std::string touch_new = TouchSql(kContactKinds[kContacts], "NEW.contact_id");
  return "CREATE TABLE IF NOT EXISTS memberships (contact_id INTEGER NOT NULL, group_id INTEGER NOT NULL,\n"
         "  PRIMARY KEY (contact_id, group_id)) WITHOUT ROWID;" +
         TriggerSql(Contacts() + "_delete", "DELETE", Contacts(), "DELETE FROM memberships WHERE contact_id = OLD.id") +
         TriggerSql(Groups() + "_delete", "DELETE", Groups(), "DELETE FROM memberships WHERE group_id = OLD.id") +
         TriggerSql("memberships_insert", "INSERT", "memberships", touch_new) +
         TriggerSql("memberships_delete", "DELETE", "memberships", touch_old) +
         TriggerSql("memberships_update", "UPDATE", "memberships", touch_old + ";\n  " + touch_new);
}

std::string PicturesSql() {
  return "CREATE TABLE IF NOT EXISTS pictures (\n"
         "  id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id BETWEEN 1 AND 4294967295),\n"
         "  data BLOB NOT NULL CHECK (typeof(data) = 'blob' AND length(data) <= " +
         std::to_string(qv::contacts::kMostPictureBytes) + "));";
}

std::string NameIndexSql(const std::string& table) {
  return "CREATE INDEX IF NOT EXISTS " + table + "_name ON " + table + " (name);";
}

/// Makes what stands beside the tables of records, which must be there; returns the database.
Database& WithTheRest(Database& database) {
  Transaction transaction(database);
  database.Execute(MembershipsSql() + PicturesSql() + NameIndexSql(Contacts()) + NameIndexSql(Groups()));
  transaction.Commit();
  return database;
}

std::string FindByNameSql(const std::string& table) {
  return "SELECT id FROM " + table + " WHERE name = ? ORDER BY id LIMIT 1";
}

}  // namespace

ContactDatabase::ContactDatabase(Database& database)
    : tables_{{database, kContactKinds[kContacts]}, {database, kContactKinds[kContactGroups]}},
      database_(WithTheRest(database)),
      find_by_name_{database.Prepare(FindByNameSql(Contacts())), database.Prepare(FindByNameSql(Groups()))},
      find_contact_(database.Prepare("SELECT 1 FROM " + Contacts() + " WHERE id = ?")),
      groups_of_(database.Prepare("SELECT group_id FROM memberships WHERE contact_id = ? ORDER BY group_id")),
      add_to_group_(
          database.Prepare("INSERT OR IGNORE INTO memberships SELECT ?1, id FROM " + Groups() + " WHERE id = ?2")),
      leave_groups_(database.Prepare("DELETE FROM memberships WHERE contact_id = ?")),
      count_pictures_(database.Prepare("SELECT count(*) FROM pictures")),
      read_picture_(database.Prepare("SELECT data FROM pictures WHERE id = ?")),
      insert_picture_(database.Prepare("INSERT INTO pictures (data) VALUES (?)")),
      delete_picture_(database.Prepare("DELETE FROM pictures WHERE id = ?")) {}

std::optional<std::uint32_t> ContactDatabase::FindByName(std::size_t table, const char16_t* name) const {
  // As a record would have it: the column's value depends on the slot.
  std::vector<std::uint8_t> record(kStoreName.offset + kStoreName.size);
  const auto* from = reinterpret_cast<const std::uint8_t*>(name);
  for (auto to = record.begin() + kStoreName.offset; to != record.end() && (from[0] != 0 || from[1] != 0); from += 2) {
    to = std::copy_n(from, sizeof(char16_t), to);
  }
  Query query(find_by_name_[table]);
  BindColumn(kStoreName, record.data(), query, 1);
  if (!query.Step()) return std::nullopt;
  return static_cast<std::uint32_t>(query.Number(0));
}

void ContactDatabase::ExpectContact(std::uint32_t id) const {
  Query query(find_contact_);
  query.Bind(1, std::int64_t{id});
  if (!query.Step()) throw UnknownId(id);
}

std::vector<std::uint32_t> ContactDatabase::GroupsOf(std::uint32_t contact) const {
  const ReadTransaction transaction(database_);
  ExpectContact(contact);
  Query query(groups_of_);
  query.Bind(1, std::int64_t{contact});
  std::vector<std::uint32_t> groups;
  while (query.Step()) groups.push_back(static_cast<std::uint32_t>(query.Number(0)));
  return groups;
}

void ContactDatabase::AddToGroups(std::uint32_t contact, std::span<const std::uint32_t> groups) {
  Transaction transaction(database_);
  ExpectContact(contact);
  for (const std::uint32_t group : groups) {
    Query query(add_to_group_);
    query.Bind(1, std::int64_t{contact});
    query.Bind(2, std::int64_t{group});
    query.Run();
  }
  transaction.Commit();
}

void ContactDatabase::ReplaceGroups(std::uint32_t contact, std::span<const std::uint32_t> groups) {
  Transaction transaction(database_);
  {
    Query query(leave_groups_);
    query.Bind(1, std::int64_t{contact});
    query.Run();
  }
  AddToGroups(contact, groups);
  transaction.Commit();
}

bool ContactDatabase::HasRoomForPicture() const {
  const std::optional<std::int64_t> most = database_.Setting(kMostPictures);
  Query query(count_pictures_);
  query.Step();
  return !most || query.Number(0) < *most;
}

std::vector<std::uint8_t> ContactDatabase::ReadPicture(std::uint32_t id) const {
  Query query(read_picture_);
  query.Bind(1, std::int64_t{id});
  if (!query.Step()) throw UnknownId(id);
  const std::span<const std::uint8_t> data = query.Blob(0);
  return {data.begin(), data.end()};
}

std::uint32_t ContactDatabase::InsertPicture(std::span<const std::uint8_t> data) {
  Query query(insert_picture_);
  query.Bind(1, data);
  query.Run();
  return static_cast<std::uint32_t>(database_.LastInsertedId());
}

void ContactDatabase::DeletePicture(std::uint32_t id) {
  Query query(delete_picture_);
  query.Bind(1, std::int64_t{id});
  query.Run();
  if (database_.ChangedRows() == 0) throw UnknownId(id);
}

}  // namespace stores
