// Reads and writes records by their forms.
#include "sync/exchange_table.h"

#include <algorithm>

namespace qv {

Result ReadRecord(File& exchange_table, std::uint8_t* record, std::size_t record_size, std::size_t request,
                  bool& more) {
  std::fill_n(record, record_size, std::uint8_t{0});
  more = false;
  std::size_t got = 0;
  if (!exchange_table.Read(record, request, got)) return Result::kFileUnreadable;
  more = got != 0;
  return Result::kOk;
}

Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    if (ItemCount(run, exchange) > run.slots) return Result::kFileUnreadable;
  }
  for (const layout::ItemRun& run : layout.items) {
    const std::size_t size = ItemCount(run, exchange) * std::size_t{run.item.size};
    std::size_t got = 0;
    if (!exchange_table.Read(store + run.store_offset, size, got) || got < size) return Result::kFileUnreadable;
  }
  return Result::kOk;
}

bool WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                const std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    const std::size_t size = ItemCount(run, exchange) * std::size_t{run.item.size};
    if (!exchange_table.Write(store + run.store_offset, size)) return false;
  }
  return true;
}

}  // namespace qv
