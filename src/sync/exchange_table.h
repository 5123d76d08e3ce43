// The records of an exchange table, one after another: a fixed part each, and the items that it counts.
#ifndef QV_SYNC_EXCHANGE_TABLE_H
#define QV_SYNC_EXCHANGE_TABLE_H

#include <cstddef>
#include <cstdint>

#include "layout/record_layout.h"
#include "platform/file.h"
#include "platform/memory.h"
#include "sync/result.h"

namespace qv {

/// Reads the fixed part of the next record: the first bytes of a request of `request` bytes, at least record_size. What
/// the end of the file cuts off reads as zero. `more` is false at the end, and after a failure: kFileUnreadable.
Result ReadRecord(File& exchange_table, std::uint8_t* record, std::size_t record_size, std::size_t request, bool& more);

/// Reads the next records of a table whose records are all fixed parts: as many as `records` has room for, which
/// receives them; what the end of the file cuts off reads as zero. `count` is 0 at the end. kFileUnreadable.
Result ReadChunk(File& exchange_table, std::size_t record_size, List<std::uint8_t>& records, std::size_t& count);

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
