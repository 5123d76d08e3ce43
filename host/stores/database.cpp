// The connection: how the file is opened, and transactions on it.
#include "host/stores/database.h"

#include <sqlite3.h>

#include "host/handset/handset.h"

namespace stores {
namespace {

/// How long to wait for another program, say a sqlite3 shell in the middle of a transaction.
constexpr int kBusyMilliseconds = 5000;

sqlite3* Open(const std::filesystem::path& file) {
  std::filesystem::create_directories(file.parent_path());
  sqlite3* connection = nullptr;
  const int result = sqlite3_open(file.c_str(), &connection);
  if (result != SQLITE_OK) {
    sqlite3_close(connection);
    throw StoreError(file.string() + ": " + sqlite3_errstr(result));
  }
  return connection;
}

}  // namespace

void Database::Closer::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

Database::Database() : connection_(Open(handset::HostPath(kDatabasePath))) {
  sqlite3_busy_timeout(connection_.get(), kBusyMilliseconds);
  Execute(
      "PRAGMA journal_mode = WAL;"
      "PRAGMA synchronous = NORMAL;"
      "CREATE TABLE IF NOT EXISTS settings (name TEXT PRIMARY KEY, value);");
}

std::optional<std::int64_t> Database::Setting(std::string_view name) const {
  const Statement statement = Prepare("SELECT value FROM settings WHERE name = ?");
  Query query(statement);
  query.Bind(1, name);
  if (!query.Step()) return std::nullopt;
  return query.Number(0);
}

void Database::SetSetting(std::string_view name, std::int64_t value) {
  const Statement statement = Prepare("INSERT OR REPLACE INTO settings (name, value) VALUES (?, ?)");
  Query query(statement);
  query.Bind(1, name);
  query.Bind(2, value);
  query.Run();
}

bool Database::IsIntact() const {
  const Statement statement = Prepare("PRAGMA integrity_check");
  Query query(statement);
  return query.Step() && query.Text(0) == "ok";
}

void Database::Execute(const std::string& sql) {
  if (sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    ThrowLastError(connection_.get());
  }
}

std::int64_t Database::LastInsertedId() const {
  return sqlite3_last_insert_rowid(connection_.get());
}

std::int64_t Database::ChangedRows() const {
  return sqlite3_changes64(connection_.get());
}

bool Database::InTransaction() const {
  return sqlite3_get_autocommit(connection_.get()) == 0;
}

Transaction::Transaction(Database& database) : database_(database), nested_(database.InTransaction()) {
  database_.Execute(nested_ ? "SAVEPOINT call" : "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!open_) return;
  try {
    database_.Execute(nested_ ? "ROLLBACK TO call; RELEASE call" : "ROLLBACK");
  } catch (const StoreError&) {
    // SQLite has rolled the transaction back itself, as it does after some failures.
  }
}

void Transaction::Commit() {
  database_.Execute(nested_ ? "RELEASE call" : "COMMIT");
  open_ = false;
}

}  // namespace stores
