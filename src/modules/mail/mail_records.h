// An e-mail table that a recover holds in memory: its records, found by the ids of what they belong to.
#ifndef QV_MODULES_MAIL_MAIL_RECORDS_H
#define QV_MODULES_MAIL_MAIL_RECORDS_H

#include <cstddef>
#include <cstdint>

#include "layout/record_layout.h"
#include "platform/memory.h"
#include "sync/indexed_list.h"

namespace qv::mail {

/// Ids are one byte wide wherever records are looked for: those of a larger one cannot be found.
inline constexpr std::uint32_t kLargestId = 0xFF;

/// What records belong to: an account, a filter or a message, or a folder of an account.
struct Owner {
  std::uint32_t id;
  std::uint32_t folder = 0;  ///< 0: none, but the account as a whole.

  bool operator==(const Owner&) const = default;
  constexpr std::uint32_t Hash() const { return HashWord(id ^ HashWord(folder)); }
};

class MailRecords {
 public:
  /// Where the records tell their owner; `folder` is {} for those that name no folder.
  struct OwnerSlots {
    layout::Slot id;
    layout::Slot folder = {};
  };

  MailRecords(const layout::RecordLayout& form, OwnerSlots owner) : form_(form), owner_(owner) {}

  enum class LastRecord : std::uint8_t { kMayBeCut, kMustBeWhole };

  /// Takes the whole table. What the end of the file cuts off of the last record reads as zero, or the record does not
  /// count. False when the file is not there, cannot be read or is more than memory holds: then these are of no use.
  [[nodiscard]] bool Load(const char16_t* path, LastRecord last_record);

  /// All records were taken, or there never were any.
  bool AllTaken() const { return taken_ == records_.size(); }
  /// The owner's first record that was not taken before, or null.
  const std::uint8_t* Take(Owner owner);

  // The owner's records in the order of the file, taken or not; null at the end.
  const std::uint8_t* First(Owner owner) const;
  const std::uint8_t* Next(const std::uint8_t* record) const;

 private:
  static constexpr std::uint32_t kNone = std::uint32_t(-1);

  struct Record {
    Owner owner;
    std::uint32_t next = kNone;  ///< The owner's next record.
    // Of an owner's first record only.
    std::uint32_t last = kNone;
    std::uint32_t next_to_take = kNone;
  };
  static Owner OwnerOf(const Record& record) { return record.owner; }

  [[nodiscard]] bool Append(const std::uint8_t* bytes);
  const std::uint8_t* BytesOf(std::size_t position) const { return bytes_.data() + position * form_.exchange_size; }
  Record& At(std::size_t position) { return records_.begin()[position]; }

  const layout::RecordLayout& form_;
  const OwnerSlots owner_;
  List<std::uint8_t> bytes_;
  IndexedList<Record, Owner, OwnerOf> records_;
  std::size_t taken_ = 0;
};

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_MAIL_RECORDS_H
