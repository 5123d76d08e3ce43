// The one database file that all stand-in stores of a handset share, so that a backup, a look or an edit by hand needs
// one file and a call on two tables is one transaction.
#ifndef QV_HOST_STORES_DATABASE_H
#define QV_HOST_STORES_DATABASE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/stores/statement.h"

namespace stores {

/// Where the database lies on the handset.
inline constexpr std::u16string_view kDatabasePath = u"\\Windows\\handset.db";

/// Settings are numbers by name.
inline constexpr std::string_view kSystemMailId = "system_mail_id";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// A connection to the database. Everything here throws StoreError when SQLite fails.
///
/// The journal is a write-ahead log (journal_mode=WAL) with synchronous=NORMAL: a transaction counts from the one write
/// of its commit frame on, so a process that is killed leaves each call done or not begun, and commits need not wait
/// for the disk. A file handset.db-wal left by a killed process belongs to the database; the next opening takes it in.
class Database {
 public:
  /// Opens the database of the running handset, which is made when there is none.
  Database();

  std::optional<std::int64_t> Setting(std::string_view name) const;
  void SetSetting(std::string_view name, std::int64_t value);

  /// SQLite's own check of the whole file.
  bool IsIntact() const;

  // For what is built on it: record_store.h.
  Statement Prepare(const std::string& sql) const { return {connection_.get(), sql}; }
  void Execute(const std::string& sql);
  std::int64_t LastInsertedId() const;
  /// Rows that the last statement inserted, changed or deleted, less what its triggers did.
  std::int64_t ChangedRows() const;
  bool InTransaction() const;

 private:
  struct Closer {
    void operator()(sqlite3* connection) const;
  };
  std::unique_ptr<sqlite3, Closer> connection_;
};

/// All or nothing: what is done to the database while this lives is undone at its end unless Commit was called. Every
/// call of a store library makes one; a single statement needs none, being all or nothing by itself. They nest: an
/// outer one turns many calls into one, which is how to make many records fast.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Database& database_;
  const bool nested_;
  bool open_ = true;
};

/// What is read while this lives is of one moment. It ends without a commit: there is nothing to keep.
class ReadTransaction {
 public:
  explicit ReadTransaction(Database& database) : holds_rows_still_(database) {}

 private:
  const Transaction holds_rows_still_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_DATABASE_H
