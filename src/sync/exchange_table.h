// The records of an exchange table, one after another: a fixed part each, and the items that it counts.
#ifndef QV_SYNC_EXCHANGE_TABLE_H
#define QV_SYNC_EXCHANGE_TABLE_H

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

/// Reads the items that follow a fixed part into the slots of its store record. kFileUnreadable also when the counts
/// exceed the slots or the file ends before the last item: nothing of such a record may be applied.
Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store);

/// Writes the items of a record whose fixed part was written, one write for each run. False when the file cannot take
/// them.
[[nodiscard]] bool WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                              const std::uint8_t* store);

}  // namespace qv

#endif  // QV_SYNC_EXCHANGE_TABLE_H
