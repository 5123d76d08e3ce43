// All that belongs to e-mail, in the database and beside it: accounts and what is theirs, messages, and the files that
// the messages lie in. MailStore.dll is a thin caller of it, and so are tools that create data.
#ifndef QV_HOST_STORES_MAIL_DATABASE_H
#define QV_HOST_STORES_MAIL_DATABASE_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/database.h"
#include "host/stores/mail_kinds.h"

namespace stores {

/// A setting by which a person or a test has the next new account get this id, as long as no account has it.
inline constexpr std::string_view kNextMailAccount = "next_mail_account_id";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// The records of a table that have the same as another one in some columns, which are indexed for it.
class RecordsWithSame {
 public:
  /// The table must be there; the database must outlive this.
  RecordsWithSame(Database& database, const KindDescription& kind, std::initializer_list<std::string_view> columns);

  /// In ascending order.
  std::vector<std::uint32_t> IdsFor(const std::uint8_t* record) const;
  /// The lowest.
  std::optional<std::uint32_t> FirstFor(const std::uint8_t* record) const;

 private:
  std::vector<Column> columns_;
  Statement find_;
};

/// The eight tables are RecordStores. Rows go with the row that they belong to: filters, folders and so on with their
/// account, messages and filters with their folder, contacts with their filter, addresses with their message. Triggers
/// see to that, so it holds in the sqlite3 shell too; only a message's file stays.
///
/// Records are nodes whose last four bytes do not matter. The ids of accounts, filters and folders are 1 to 255; one
/// that comes keeps its own when that is free and gets the lowest free one otherwise. Each call is one transaction; one
/// that throws has done nothing. UnknownId: an account or folder is not there.
class MailDatabase {
 public:
  using Records = std::span<const std::uint8_t* const>;

  /// Makes the tables when there are none. The database must outlive this.
  explicit MailDatabase(Database& database);

  /// By table number.
  std::span<RecordStore> Tables() { return tables_; }

  /// Stores an account and returns its id. One with the same first two texts is taken for the same account: it keeps
  /// its id and becomes as this one says. A configuration of no account (0) is none, and then an old one stays.
  std::uint32_t PutAccount(const std::uint8_t* account, const std::uint8_t* config);

  /// Stores an account's UIDLs, but those that it has. Throws UnknownId.
  void AddUidls(std::uint32_t account, Records uidls);

  /// Stores an account's filter with its contacts. It takes the place of one of the same first text for the same
  /// folder. Throws UnknownId.
  void PutFilter(std::uint32_t account, const std::uint8_t* filter, Records contacts);

  /// Stores an account's folder and returns its id. One of the same name takes the record and keeps its id. Throws
  /// UnknownId.
  std::uint32_t PutFolder(std::uint32_t account, const std::uint8_t* folder);

  /// Stores a message of the account that its folder belongs to, with its addresses and its file, if any, and returns
  /// its id: its own when that is free, else one that none had yet. Throws UnknownId.
  std::uint32_t AddMessage(const std::uint8_t* header, Records addresses,
                           std::optional<std::span<const std::uint8_t>> file);

  /// Throws UnknownId.
  std::vector<std::uint32_t> MessagesOf(std::uint32_t account) const;

  /// Where the message's file lies on the handset.
  static std::u16string MessagePath(const std::uint8_t* header);

 private:
  void Expect(std::size_t table, std::uint32_t id) const;
  std::uint32_t InsertWithByteId(std::size_t table, const std::uint8_t* record, std::optional<std::int64_t> wanted);
  void InsertOwned(std::size_t table, const qv::layout::Slot& owner, std::uint32_t id, Records records);

  Database& database_;
  std::vector<RecordStore> tables_;
  RecordsWithSame same_account_, configs_of_account_, same_uidl_, same_filter_, contacts_of_filter_, same_folder_,
      messages_of_account_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_MAIL_DATABASE_H
