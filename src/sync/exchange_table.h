// The records of an exchange table, one after another: a fixed part each, and the items that it counts.
#ifndef QV_SYNC_EXCHANGE_TABLE_H
#define QV_SYNC_EXCHANGE_TABLE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "layout/record_layout.h"
#include "platform/file.h"
#include "sync/result.h"

namespace qv {

/// Reads the fixed part of the next record: the first bytes of a request of `request` bytes, at least record_size, for
/// which `record` has room. What the end of the file cuts off of the record reads as zero. `more` is false at the end,
/// and after a failure: kFileUnreadable.
Result ReadRecord(File& exchange_table, std::uint8_t* record, std::size_t record_size, std::size_t request, bool& more);

/// Reads a part of a record. `is_whole` is false when the file ends before `size` bytes, and after a failure:
/// kFileUnreadable.
Result ReadPart(File& exchange_table, void* part, std::size_t size, bool& is_whole);

/// The same of a part that the file must hold: all of it, or kFileUnreadable.
Result ReadWhole(File& exchange_table, void* part, std::size_t size);

/// Reads the items that follow a fixed part into the slots of its store record; those that lie elsewhere are the
/// caller's to read. kFileUnreadable also when the counts exceed the slots. `is_whole` is false after a failure, and
/// when the file ends before the last item: nothing of such a record may be applied.
Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store, bool& is_whole);

/// Writes the same items of a record whose fixed part was written: one write for each run that has any, or for each
/// item that is converted. False when the file cannot take them.
[[nodiscard]] bool WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                              const std::uint8_t* store);

/// How much of a file is not read yet: a part that is said to be longer is refused before there is room made for it.
class FileRest {
 public:
  /// The first time the file, unread, is asked. False when it cannot tell.
  [[nodiscard]] bool Learn(File& file) {
    is_known_ = is_known_ || file.Size(rest_);
    return is_known_;
  }
  /// So much was read, or less at the end of the file.
  void Take(std::uint32_t size) { rest_ -= std::min(rest_, size); }
  bool Holds(std::uint64_t size) const { return size <= rest_; }

 private:
  bool is_known_ = false;
  std::uint32_t rest_ = 0;  ///< In bytes.
};

}  // namespace qv

#endif  // QV_SYNC_EXCHANGE_TABLE_H
