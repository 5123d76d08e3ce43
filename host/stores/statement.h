// SQLite's prepared statements as values: one that closes itself, and one use of it that cleans up behind itself.
#ifndef QV_HOST_STORES_STATEMENT_H
#define QV_HOST_STORES_STATEMENT_H

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

#pragma GCC visibility push(default)

namespace stores {

/// The database would not do what was asked of it; what() says why.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::span<const std::uint8_t> BytesOf(std::string_view text);

/// Throws StoreError with SQLite's last message about `connection`.
[[noreturn]] void ThrowLastError(sqlite3* connection);

class Statement {
 public:
  Statement(sqlite3* connection, const std::string& sql);

 private:
  friend class Query;
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> handle_;
};

/// One use of a statement, which has at most one at a time. Parameters count from 1, columns from 0.
class Query {
 public:
  explicit Query(const Statement& statement) : statement_(statement.handle_.get()) {}
  ~Query();
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  // A parameter that is not bound is NULL. The bytes are copied.
  void Bind(int parameter, std::int64_t value);
  void Bind(int parameter, std::string_view text);
  void Bind(int parameter, std::span<const std::uint8_t> bytes);
  /// A handset's text as UTF-8, for those who look at the database, but as its bytes when UTF-8 does not give them
  /// back.
  void BindText(int parameter, std::string_view utf8, bool gives_back, std::span<const std::uint8_t> bytes);

  /// True: there is a row to read. False: the statement is done.
  bool Step();
  /// For a statement without rows.
  void Run() { Step(); }

  std::int64_t Number(int column) const;
  bool IsBlob(int column) const;
  /// Valid until the next step or conversion; a number reads as its digits.
  std::string_view Text(int column) const;
  std::span<const std::uint8_t> Blob(int column) const;

 private:
  void Check(int result) const;

  sqlite3_stmt* statement_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_STATEMENT_H
