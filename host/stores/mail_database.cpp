// Which record is which when it comes a second time, under which ids new ones go, and the messages' files.
#include "host/stores/mail_database.h"

#include <algorithm>
#include <filesystem>

#include "host/handset/handset.h"
#include "modules/mail/mail.h"
#include "modules/mail/message_file.h"
#include "platform/file.h"

namespace stores {
namespace {

using qv::layout::LoadSlot;
using qv::layout::Slot;
using qv::layout::StoreSlot;

/// Ids of accounts, filters and folders are bytes in the records.
constexpr std::int64_t kMostByteId = 255;

const Slot& SlotOf(const qv::layout::RecordLayout& layout, std::string_view name) {
  return std::ranges::find(layout.fields, name, &qv::layout::Field::name)->store;
}

// Where records name what they belong to.
const Slot kConfigAccount = SlotOf(qv::mail::kConfigLayout, "account_id");
const Slot kUidlAccount = SlotOf(qv::mail::kUidlLayout, "account_id");
const Slot kFilterAccount = SlotOf(qv::mail::kFilterLayout, "account_id");
const Slot kContactFilter = SlotOf(qv::mail::kContactLayout, "filter_id");
const Slot kAddressMessage = SlotOf(qv::mail::kAddressLayout, "message_id");

/// A record that may be changed.
std::vector<std::uint8_t> CopyOf(const std::uint8_t* record, std::size_t table) {
  return {record, record + kMailKinds[table].layout.store_size};
}

std::vector<std::uint8_t> CopyWith(const std::uint8_t* record, std::size_t table, const Slot& slot,
                                   std::uint32_t value) {
  std::vector<std::uint8_t> copy = CopyOf(record, table);
  StoreSlot(slot, copy.data(), value);
  return copy;
}

/// As much of a record as says whom it belongs to.
std::vector<std::uint8_t> OwnedBy(std::size_t table, const Slot& slot, std::uint32_t owner) {
  std::vector<std::uint8_t> record(kMailKinds[table].layout.store_size);
  StoreSlot(slot, record.data(), owner);
  return record;
}

/// Rows of `table` go with the row of `owner` that they name, of which a table may have more than one.
std::string GoWithSql(std::size_t table, std::size_t owner, const std::string& column) {
  const std::string of = kMailKinds[owner].table;
  const std::string what = kMailKinds[table].table;
  return TriggerSql(what + "_go_with_" + of, "DELETE", of, "DELETE FROM " + what + " WHERE " + column + " = OLD.id");
}

std::vector<RecordStore> MakeTables(Database& database) {
  Transaction transaction(database);
  std::vector<RecordStore> tables;
  for (const KindDescription& kind : kMailKinds) tables.emplace_back(database, kind);
  database.Execute(
      GoWithSql(kMailConfigs, kMailAccounts, "account_id") + GoWithSql(kMailFilters, kMailAccounts, "account_id") +
      GoWithSql(kMailFolders, kMailAccounts, "account_id") + GoWithSql(kMailUidls, kMailAccounts, "account_id") +
      GoWithSql(kMailFilters, kMailFolders, "folder_id") + GoWithSql(kMailFilterContacts, kMailFilters, "filter_id") +
      GoWithSql(kMailMessages, kMailFolders, "folder_id") + GoWithSql(kMailAddresses, kMailMessages, "message_id"));
  transaction.Commit();
  return tables;
}

std::vector<Column> ColumnsNamed(const KindDescription& kind, std::initializer_list<std::string_view> names) {
  std::vector<Column> columns;
  for (const std::string_view name : names) columns.push_back({std::string(name), SlotOf(kind.layout, name)});
  return columns;
}

std::string FindSql(Database& database, const std::string& table, const std::vector<Column>& columns) {
  std::string names, conditions;
  for (const Column& column : columns) {
    names += (names.empty() ? "" : ", ") + column.name;
    conditions += (conditions.empty() ? "" : " AND ") + column.name + " = ?";
  }
  database.Execute("CREATE INDEX IF NOT EXISTS " + table + "_by_" + columns.back().name + " ON " + table + " (" +
                   names + ")");
  return "SELECT id FROM " + table + " WHERE " + conditions + " ORDER BY id";
}

/// Makes the file, and its directory, or sees to it that there is none: one may be left of a message that is gone.
void PutFile(const std::u16string& path, std::optional<std::span<const std::uint8_t>> bytes) {
  if (bytes) {
    std::filesystem::create_directories(handset::HostPath(path).parent_path());
    qv::File file = qv::File::CreateAlways(path.c_str());
    if (file.IsOpen() && file.Write(bytes->data(), bytes->size())) return;
  }
  coredll::DeleteFileW(path.c_str());
  if (bytes) throw StoreError("a message's file cannot be written");
}

}  // namespace

RecordsWithSame::RecordsWithSame(Database& database, const KindDescription& kind,
                                 std::initializer_list<std::string_view> columns)
    : columns_(ColumnsNamed(kind, columns)), find_(database.Prepare(FindSql(database, kind.table, columns_))) {}

std::vector<std::uint32_t> RecordsWithSame::IdsFor(const std::uint8_t* record) const {
  Query query(find_);
  int parameter = 1;
  for (const Column& column : columns_) BindColumn(column.slot, record, query, parameter++);
  std::vector<std::uint32_t> ids;
  while (query.Step()) ids.push_back(static_cast<std::uint32_t>(query.Number(0)));
  return ids;
}

std::optional<std::uint32_t> RecordsWithSame::FirstFor(const std::uint8_t* record) const {
  const std::vector<std::uint32_t> ids = IdsFor(record);
  return ids.empty() ? std::nullopt : std::optional(ids.front());
}

MailDatabase::MailDatabase(Database& database)
    : database_(database),
      tables_(MakeTables(database)),
      same_account_(database, kMailKinds[kMailAccounts], {"text_1", "text_2"}),
      configs_of_account_(database, kMailKinds[kMailConfigs], {"account_id"}),
      same_uidl_(database, kMailKinds[kMailUidls], {"account_id", "uidl"}),
      same_filter_(database, kMailKinds[kMailFilters], {"account_id", "folder_id", "text_1"}),
      contacts_of_filter_(database, kMailKinds[kMailFilterContacts], {"filter_id"}),
      same_folder_(database, kMailKinds[kMailFolders], {"account_id", "name"}),
      messages_of_account_(database, kMailKinds[kMailMessages], {"account_id"}) {}

void MailDatabase::Expect(std::size_t table, std::uint32_t id) const {
  if (!tables_[table].Has(id)) throw UnknownId(id);
}

std::uint32_t MailDatabase::InsertWithByteId(std::size_t table, const std::uint8_t* record,
                                             std::optional<std::int64_t> wanted) {
  RecordStore& store = tables_[table];
  const auto is_free = [&](std::int64_t id) {
    return id >= 1 && id <= kMostByteId && !store.Has(static_cast<std::uint32_t>(id));
  };
  std::int64_t id = wanted.value_or(0);
  if (!is_free(id)) id = LoadSlot(IdSlotOf(store.Kind().layout), record);
  if (!is_free(id)) {
    for (id = 1; id <= kMostByteId && !is_free(id);) ++id;
  }
  if (id > kMostByteId) throw StoreError("there is no id left");
  return store.Insert(record, std::nullopt, static_cast<std::uint32_t>(id));
}

void MailDatabase::InsertOwned(std::size_t table, const Slot& owner, std::uint32_t id, Records records) {
  for (const std::uint8_t* const record : records) {
    tables_[table].Insert(CopyWith(record, table, owner, id).data());
  }
}

std::uint32_t MailDatabase::PutAccount(const std::uint8_t* account, const std::uint8_t* config) {
  Transaction transaction(database_);
  std::optional<std::uint32_t> id = same_account_.FirstFor(account);
  if (id) {
    tables_[kMailAccounts].Update(*id, account);
  } else {
    id = InsertWithByteId(kMailAccounts, account, database_.Setting(kNextMailAccount));
  }
  if (LoadSlot(kConfigAccount, config) != 0) {
    tables_[kMailConfigs].Delete(configs_of_account_.IdsFor(OwnedBy(kMailConfigs, kConfigAccount, *id).data()));
    InsertOwned(kMailConfigs, kConfigAccount, *id, {&config, 1});
  }
  transaction.Commit();
  return *id;
}

void MailDatabase::AddUidls(std::uint32_t account, Records uidls) {
  Transaction transaction(database_);
  Expect(kMailAccounts, account);
  for (const std::uint8_t* const uidl : uidls) {
    const std::vector<std::uint8_t> owned = CopyWith(uidl, kMailUidls, kUidlAccount, account);
    if (!same_uidl_.FirstFor(owned.data())) tables_[kMailUidls].Insert(owned.data());
  }
  transaction.Commit();
}

void MailDatabase::PutFilter(std::uint32_t account, const std::uint8_t* filter, Records contacts) {
  Transaction transaction(database_);
  Expect(kMailAccounts, account);
  if (const std::uint32_t folder = LoadSlot(qv::mail::kFilterFolder, filter); folder != 0) {
    Expect(kMailFolders, folder);
  }
  const std::vector<std::uint8_t> owned = CopyWith(filter, kMailFilters, kFilterAccount, account);
  std::optional<std::uint32_t> id = same_filter_.FirstFor(owned.data());
  if (id) {
    tables_[kMailFilters].Update(*id, owned.data());
    const std::vector<std::uint8_t> any = OwnedBy(kMailFilterContacts, kContactFilter, *id);
    tables_[kMailFilterContacts].Delete(contacts_of_filter_.IdsFor(any.data()));
  } else {
    id = InsertWithByteId(kMailFilters, owned.data(), std::nullopt);
  }
  InsertOwned(kMailFilterContacts, kContactFilter, *id, contacts);
  transaction.Commit();
}

std::uint32_t MailDatabase::PutFolder(std::uint32_t account, const std::uint8_t* folder) {
  Transaction transaction(database_);
  Expect(kMailAccounts, account);
  const std::vector<std::uint8_t> owned = CopyWith(folder, kMailFolders, qv::mail::kFolderAccount, account);
  std::optional<std::uint32_t> id = same_folder_.FirstFor(owned.data());
  if (id) {
    tables_[kMailFolders].Update(*id, owned.data());
  } else {
    id = InsertWithByteId(kMailFolders, owned.data(), std::nullopt);
  }
  transaction.Commit();
  return *id;
}

std::uint32_t MailDatabase::AddMessage(const std::uint8_t* header, Records addresses,
                                       std::optional<std::span<const std::uint8_t>> file) {
  Transaction transaction(database_);
  RecordStore& messages = tables_[kMailMessages];
  const std::uint32_t folder_id = LoadSlot(qv::mail::kMessageFolder, header);
  std::vector<std::uint8_t> folder(kMailKinds[kMailFolders].layout.store_size);
  tables_[kMailFolders].Read({&folder_id, 1}, folder.data());
  std::vector<std::uint8_t> owned =
      CopyWith(header, kMailMessages, qv::mail::kMessageAccount, LoadSlot(qv::mail::kFolderAccount, folder.data()));
  const std::uint32_t wanted = LoadSlot(qv::mail::kMessageId, header);
  const bool is_free = wanted != 0 && !messages.Has(wanted);
  const std::uint32_t id = messages.Insert(owned.data(), std::nullopt, is_free ? std::optional(wanted) : std::nullopt);
  InsertOwned(kMailAddresses, kAddressMessage, id, addresses);
  StoreSlot(qv::mail::kMessageId, owned.data(), id);
  PutFile(MessagePath(owned.data()), file);
  transaction.Commit();
  return id;
}

std::vector<std::uint32_t> MailDatabase::MessagesOf(std::uint32_t account) const {
  const ReadTransaction transaction(database_);
  Expect(kMailAccounts, account);
  return messages_of_account_.IdsFor(OwnedBy(kMailMessages, qv::mail::kMessageAccount, account).data());
}

std::u16string MailDatabase::MessagePath(const std::uint8_t* header) {
  const bool on_card = LoadSlot(qv::mail::kMessageOnCard, header) != 0;
  const char16_t* const format = on_card ? qv::mail::kMessagePathOnCard : qv::mail::kMessagePath;
  return static_cast<const char16_t*>(qv::mail::MessageFile(format, LoadSlot(qv::mail::kMessageId, header)));
}

}  // namespace stores
