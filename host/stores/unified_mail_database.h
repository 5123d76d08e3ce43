// All that belongs to the unified mail, in the database: mails received and sent with their items and texts, folders,
// and rules. UniMailStore.dll is a thin caller of it, and so are tools that create data.
#ifndef QV_HOST_STORES_UNIFIED_MAIL_DATABASE_H
#define QV_HOST_STORES_UNIFIED_MAIL_DATABASE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/database.h"
#include "host/stores/item_store.h"
#include "host/stores/message_kinds.h"
#include "modules/messaging/unified_mail_layout.h"

namespace stores {

/// An item of 182 bytes as the database has it: its node and, behind that, the kind that tells its chain.
inline constexpr qv::layout::Slot kKindOfItem = qv::layout::U16(qv::unified_mail::kItem182NodeSize);
inline constexpr std::size_t kKindItemSize = kKindOfItem.offset + kKindOfItem.size;

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// The items lie back to back. What record and nodes say of where anything lies does not matter.
struct UnifiedMail {
  std::vector<std::uint8_t> record;     ///< kMailStoreSize bytes.
  std::vector<std::uint8_t> items_182;  ///< kKindItemSize each.
  std::vector<std::uint8_t> items_308;  ///< kItem308NodeSize each.
  std::string text = {};                ///< In the handset's code page.
};

/// A text as a mail has it, as far as the code page has its characters.
std::string InCodePage(std::string_view utf8);

/// Items are rows of `…_items_182` and `…_items_308`, which are their mail's (ItemStore). Each call is one transaction;
/// one that throws has done nothing.
class UnifiedMailDatabase {
 public:
  /// Makes the tables when there are none. The database must outlive this.
  explicit UnifiedMailDatabase(Database& database);

  /// By table number: the mails as far as they are records, to count, list and delete them.
  std::span<RecordStore> Tables() { return mails_; }
  /// By their kinds' numbers: folders and rules.
  RecordStore& List(std::size_t list) { return lists_[list]; }

  /// Throws UnknownId.
  UnifiedMail Read(std::size_t table, std::uint32_t id) const;
  /// Returns the new mail's id. Without `modified` it is as of now.
  std::uint32_t Insert(std::size_t table, const UnifiedMail& mail, std::optional<FileTime> modified = std::nullopt);
  /// Throws UnknownId.
  void Update(std::size_t table, std::uint32_t id, const UnifiedMail& mail);

 private:
  /// What belongs to the mails of a table beside their records.
  struct Parts {
    Parts(Database& database, const KindDescription& mails);

    ItemStore items_182, items_308;
    Statement read_text, write_text;
  };
  void WriteParts(std::size_t table, std::uint32_t id, const UnifiedMail& mail);

  Database& database_;
  std::vector<RecordStore> mails_, lists_;
  std::vector<Parts> parts_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_UNIFIED_MAIL_DATABASE_H
