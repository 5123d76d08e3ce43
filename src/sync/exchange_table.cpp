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

Result ReadPart(File& exchange_table, void* part, std::size_t size, bool& is_whole) {
  std::size_t got = 0;
  const bool read = exchange_table.Read(part, size, got);
  is_whole = read && got == size;
  return read ? Result::kOk : Result::kFileUnreadable;
}

Result ReadWhole(File& exchange_table, void* part, std::size_t size) {
  bool is_whole = false;
  (void)ReadPart(exchange_table, part, size, is_whole);
  return is_whole ? Result::kOk : Result::kFileUnreadable;
}

Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store, bool& is_whole) {
  is_whole = false;
  for (const layout::ItemRun& run : layout.items) {
    if (LiesInRecord(run) && ItemCount(run, exchange) > run.slots) return Result::kFileUnreadable;
  }
  is_whole = true;
  for (const layout::ItemRun& run : layout.items) {
    if (!LiesInRecord(run)) continue;
    const std::uint32_t count = ItemCount(run, exchange);
    std::uint8_t* slot = store + run.store_offset;
    if (run.layout == nullptr) {
      const Result read = ReadPart(exchange_table, slot, count * std::size_t{run.item.size}, is_whole);
      if (!is_whole) return read;
      continue;
    }
    for (std::uint32_t i = 0; i < count; ++i, slot += StoreItemSize(run)) {
      std::uint8_t item[layout::kMostItemSize];
      const Result read = ReadPart(exchange_table, item, run.item.size, is_whole);
      if (!is_whole) return read;
      layout::ToStore(*run.layout, item, slot);
    }
  }
  return Result::kOk;
}

bool WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                const std::uint8_t* store) {
  for (const layout::ItemRun& run : layout.items) {
    if (!LiesInRecord(run)) continue;
    const std::uint32_t count = ItemCount(run, exchange);
    const std::uint8_t* slot = store + run.store_offset;
    if (run.layout == nullptr) {
      if (count != 0 && !exchange_table.Write(slot, count * std::size_t{run.item.size})) return false;
      continue;
    }
    for (std::uint32_t i = 0; i < count; ++i, slot += StoreItemSize(run)) {
      std::uint8_t item[layout::kMostItemSize];
      layout::ToExchange(*run.layout, slot, item);
      if (!exchange_table.Write(item, run.item.size)) return false;
    }
  }
  return true;
}

}  // namespace qv
