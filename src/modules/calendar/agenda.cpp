// The agenda's entries with their long items, out and in.
#include "modules/calendar/agenda.h"

#include <algorithm>

#include "layout/bytes.h"
#include "sync/exchange_table.h"

namespace qv::agenda {
namespace {

/// In front of an entry's long items.
constexpr std::size_t kLongItemCountSize = 4;

/// An area holds no more items than it has room for, whatever the record says.
bool WriteLongItems(File& exchange_table, const std::uint8_t* record, const std::uint8_t* area) {
  const std::uint32_t count = std::min(layout::LoadSlot(kLongItemCount, record), kMostLongItems);
  std::uint8_t number[kLongItemCountSize];
  layout::StoreNumber(number, sizeof(number), count);
  if (!exchange_table.Write(number, sizeof(number))) return false;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!exchange_table.Write(area + i * kLongItemStoreSize, kLongItemExchangeSize)) return false;
  }
  return true;
}

/// Reads the items into the area, which is zero, and their number into the record. `is_whole` is false when the file
/// ends before the last, and after a failure: kFileUnreadable.
Result ReadLongItems(File& exchange_table, std::uint8_t* record, std::uint8_t* area, bool& is_whole) {
  std::uint8_t number[kLongItemCountSize];
  if (const Result read = ReadPart(exchange_table, number, sizeof(number), is_whole); !is_whole) return read;
  const std::uint32_t count = layout::LoadNumber(number, sizeof(number));
  is_whole = count <= kMostLongItems;
  if (!is_whole) return Result::kFileUnreadable;
  layout::StoreSlot(kLongItemCount, record, count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Result read = ReadPart(exchange_table, area + i * kLongItemStoreSize, kLongItemExchangeSize, is_whole);
    if (!is_whole) return read;
  }
  return Result::kOk;
}

/// Reads an entry. `is_whole` is false when the file ends before its end, and after a failure: kFileUnreadable.
Result ReadEntry(File& exchange_table, std::uint8_t* exchange, std::uint8_t* record, std::uint8_t* area,
                 bool& is_whole) {
  if (const Result read = ReadPart(exchange_table, exchange, kEntryExchangeSize, is_whole); !is_whole) return read;
  layout::ToStore(kEntryLayout, exchange, record);
  if (const Result read = ReadItems(exchange_table, kEntryLayout, exchange, record, is_whole); !is_whole) return read;
  return ReadLongItems(exchange_table, record, area, is_whole);
}

}  // namespace

bool EntryTable::MakeRoom(std::size_t count) {
  return records_.Resize(count, kEntryStoreSize) && areas_.Resize(count, kAreaSize);
}

void EntryTable::PointAtAreas() {
  for (std::size_t i = 0; i < records_.size() / kEntryStoreSize; ++i) {
    layout::StoreSlot(kArea, Record(i), layout::AddressOf(Area(i)));
  }
}

Result EntryTable::ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table) {
  if (!MakeRoom(std::min(batch, ids.size())) || !MakeRoomToWrite()) return Result::kNoMemory;
  return ForEachBatch(ids, batch, [&](std::span<const std::uint32_t> run) {
    records_.Zero();
    areas_.Zero();
    PointAtAreas();
    if (!Read(run, records_.data())) return Result::kReadFailed;
    for (std::size_t i = 0; i < run.size(); ++i) {
      const bool written =
          WriteRecord(exchange_table, run[i], Record(i)) && WriteLongItems(exchange_table, Record(i), Area(i));
      if (!written) return Result::kFileFailed;
    }
    return Result::kOk;
  });
}

Result EntryTable::ApplyRecord(File& exchange_table, const Applying& applying, bool& more) {
  more = false;
  if (!MakeRoom(1)) return Result::kNoMemory;
  areas_.Zero();
  std::uint8_t exchange[kEntryExchangeSize];
  if (const Result read = ReadEntry(exchange_table, exchange, Record(0), Area(0), more); !more) return read;
  PointAtAreas();
  Repoint(Record(0), applying.id_map);
  return Put(applying, {.table = kMainTable, .id = layout::LoadSlot(kExchangeEntryId, exchange), .records = Record(0)});
}

}  // namespace qv::agenda
