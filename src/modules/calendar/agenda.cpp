// Entries with their long items, in and out.
#include "modules/calendar/agenda.h"

#include <algorithm>

#include "layout/bytes.h"
#include "sync/exchange_table.h"

namespace qv::agenda {
namespace {

constexpr std::size_t kAreaSize = kMostLongItems * kLongItemStoreSize;

/// Points a store record at its area.
void SetArea(std::uint8_t* record, std::uint8_t* area) {
  layout::StoreSlot(kArea, record, static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(area)));
}

/// An area holds no more items than it has room for, whatever the record says.
bool WriteLongItems(File& exchange_table, const std::uint8_t* record, const std::uint8_t* area) {
  const std::uint32_t count = std::min(layout::LoadSlot(kLongItemCount, record), kMostLongItems);
  std::uint8_t number[4];
  layout::StoreNumber(number, sizeof(number), count);
  if (!exchange_table.Write(number, sizeof(number))) return false;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!exchange_table.Write(area + i * kLongItemStoreSize, kLongItemExchangeSize)) return false;
  }
  return true;
}

}  // namespace

// ... TO DO next: ExportRecords, ApplyRecord (an entry that the file's end cuts off ends the table), Export, Recover.

}  // namespace qv::agenda
