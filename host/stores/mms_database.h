// All that belongs to multimedia messages, in the database: the messages, of any length, and the configuration, which
// is one block. MmsStore.dll is a thin caller of it, and so are tools that create data.
#ifndef QV_HOST_STORES_MMS_DATABASE_H
#define QV_HOST_STORES_MMS_DATABASE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/stores/database.h"
#include "host/stores/message_kinds.h"

#pragma GCC visibility push(default)

namespace stores {

struct MmsMessage {
  std::uint32_t value = 0;
  std::string text = {};  ///< 8 bits, in whatever code page.
  std::vector<std::uint8_t> data = {};
};

/// Each call is one transaction; one that throws has done nothing.
class MmsDatabase {
 public:
  /// Makes the tables when there are none. The database must outlive this.
  explicit MmsDatabase(Database& database);

  /// To count, list and delete them.
  RecordStore& Messages() { return messages_; }
  /// As of a store library.
  std::span<RecordStore> Tables() { return {&messages_, 1}; }

  /// Throws UnknownId.
  MmsMessage Read(std::uint32_t id) const;
  /// Returns the new message's id. Without `modified` it is as of now.
  std::uint32_t Insert(const MmsMessage& message, std::optional<FileTime> modified = std::nullopt);
  /// Throws UnknownId.
  void Update(std::uint32_t id, const MmsMessage& message);

  /// Empty until one is set.
  std::vector<std::uint8_t> Config() const;
  void SetConfig(std::span<const std::uint8_t> block);

 private:
  RecordStore messages_;
  Database& database_;
  Statement read_, insert_, update_, read_config_, write_config_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_MMS_DATABASE_H
