// Prepared statements on SQLite's C interface.
#include "host/stores/statement.h"

#include <sqlite3.h>

namespace stores {

std::span<const std::uint8_t> BytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void ThrowLastError(sqlite3* connection) {
  throw StoreError(sqlite3_errmsg(connection));
}

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* connection, const std::string& sql) {
  sqlite3_stmt* handle = nullptr;
  if (sqlite3_prepare_v3(connection, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &handle, nullptr) != SQLITE_OK) {
    ThrowLastError(connection);
  }
  handle_.reset(handle);
}

Query::~Query() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

void Query::Check(int result) const {
  if (result != SQLITE_OK) ThrowLastError(sqlite3_db_handle(statement_));
}

void Query::Bind(int parameter, std::int64_t value) {
  Check(sqlite3_bind_int64(statement_, parameter, value));
}

void Query::Bind(int parameter, std::string_view text) {
  Check(sqlite3_bind_text64(statement_, parameter, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Query::Bind(int parameter, std::span<const std::uint8_t> bytes) {
  // A null address would bind NULL instead of no bytes.
  static constexpr std::uint8_t kNoBytes = 0;
  const std::uint8_t* const data = bytes.empty() ? &kNoBytes : bytes.data();
  Check(sqlite3_bind_blob64(statement_, parameter, data, bytes.size(), SQLITE_TRANSIENT));
}

void Query::BindText(int parameter, std::string_view utf8, bool gives_back, std::span<const std::uint8_t> bytes) {
  gives_back ? Bind(parameter, utf8) : Bind(parameter, bytes);
}

bool Query::Step() {
  const int result = sqlite3_step(statement_);
  if (result == SQLITE_ROW) return true;
  if (result != SQLITE_DONE) ThrowLastError(sqlite3_db_handle(statement_));
  return false;
}

std::int64_t Query::Number(int column) const {
  return sqlite3_column_int64(statement_, column);
}

bool Query::IsBlob(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_BLOB;
}

std::string_view Query::Text(int column) const {
  const unsigned char* const text = sqlite3_column_text(statement_, column);
  if (text == nullptr) return {};
  return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::span<const std::uint8_t> Query::Blob(int column) const {
  const auto* const bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

}  // namespace stores
