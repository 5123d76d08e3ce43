// All that belongs to short messages, in the database: the messages, and the five sections of their configuration, the
// folders among them. SmsStore.dll is a thin caller of it, and so are tools that create data.
#ifndef QV_HOST_STORES_SMS_DATABASE_H
#define QV_HOST_STORES_SMS_DATABASE_H

#include <cstdint>
#include <span>
#include <vector>

#include "host/stores/database.h"
#include "host/stores/message_kinds.h"

#pragma GCC visibility push(default)

namespace stores {

/// Messages name their folder's id in `folder_id`. Each call is one transaction; one that throws has done nothing.
class SmsDatabase {
 public:
  /// Makes the tables when there are none. The database must outlive this.
  explicit SmsDatabase(Database& database);

  RecordStore& Messages() { return messages_; }
  /// As of a store library: the messages alone.
  std::span<RecordStore> Tables() { return {&messages_, 1}; }

  /// The section's store records back to back, in the order of their ids.
  std::vector<std::uint8_t> Section(std::size_t section) const;
  /// Replaces the section's records. A folder keeps its id when one of its name comes, so that messages stay in it; the
  /// ids that come are not looked at.
  void ReplaceSection(std::size_t section, std::span<const std::uint8_t> records);

 private:
  void ReplaceFolders(std::span<const std::uint8_t> records);

  Database& database_;
  RecordStore messages_;
  std::vector<RecordStore> sections_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_SMS_DATABASE_H
