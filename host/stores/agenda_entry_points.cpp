// AgendaStore.dll, the agenda's store library: table 0 holds the entries, table 1 the groups. An entry's long items
// pass through an area that the caller provides and the record points at.
#include <algorithm>
#include <bit>

#include "host/stores/agenda_database.h"
#include "host/stores/store_library.h"
#include "modules/calendar/agenda_layout.h"

namespace {

using namespace qv::agenda;
using qv::layout::LoadSlot;
using qv::layout::StoreSlot;
using stores::AgendaDatabase;
using stores::AgendaEntry;
using stores::kAgendaEntries;

stores::LibraryOf<AgendaDatabase> library;

std::uint8_t* AreaOf(const std::uint8_t* record) {
  return std::bit_cast<std::uint8_t*>(LoadSlot(kArea, record));
}

AgendaEntry Take(const void* from) {
  stores::Expect({from});
  const auto* const record = static_cast<const std::uint8_t*>(from);
  const std::uint32_t count = LoadSlot(kLongItemCount, record);
  if (count > kMostLongItems) stores::Refuse(stores::kOutOfBounds);
  const std::uint8_t* const area = AreaOf(record);
  stores::ExpectList(count, {area});
  return {.record = {record, record + kEntryStoreSize}, .long_items = {area, area + count * kLongItemStoreSize}};
}

/// The record goes on pointing at its area. Of long items that were added by hand there may be more than fit.
void FillIn(const AgendaEntry& entry, std::uint8_t* record) {
  std::uint8_t* const area = AreaOf(record);
  const std::size_t size = std::min(entry.long_items.size(), kAreaSize);
  const std::uint32_t count = size / kLongItemStoreSize;
  stores::ExpectList(count, {area});
  std::ranges::copy(entry.record, record);
  StoreSlot(kArea, record, std::bit_cast<std::uint32_t>(area));
  StoreSlot(kLongItemCount, record, count);
  std::copy_n(entry.long_items.data(), size, area);
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t AGD_Sync_GetAllRecNum(std::uint32_t table) {
  return library.Count(table);
}

STORE_ENTRY_POINT std::uint32_t AGD_Sync_GetAllidTime(std::uint32_t table, std::uint32_t* count, void* entries) {
  return library.List(table, count, entries);
}

STORE_ENTRY_POINT std::uint32_t AGD_Sync_Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                                              void* records) {
  if (table != kAgendaEntries) return library.Read(table, count, ids, records);
  return library.Call([&](const AgendaDatabase& agenda) {
    stores::ExpectList(count, {ids, records});
    auto* const bytes = static_cast<std::uint8_t*>(records);
    for (std::uint32_t i = 0; i < count; ++i) FillIn(agenda.Read(ids[i]), bytes + i * kEntryStoreSize);
  });
}

STORE_ENTRY_POINT std::uint32_t AGD_Sync_Insert(std::uint32_t table, const void* record, std::uint32_t* new_id) {
  if (table != kAgendaEntries) return library.Insert(table, record, new_id);
  return library.Call([&](AgendaDatabase& agenda) {
    stores::Expect({new_id});
    library.RefuseIfSet(stores::kAgendaAddRefusal);
    *new_id = agenda.Insert(Take(record));
  });
}

STORE_ENTRY_POINT std::uint32_t AGD_Sync_Update(std::uint32_t table, std::uint32_t id, const void* record) {
  if (table != kAgendaEntries) return library.Update(table, id, record);
  return library.Call([&](AgendaDatabase& agenda) { agenda.Update(id, Take(record)); });
}

STORE_ENTRY_POINT std::uint32_t AGD_Sync_Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t AGD_Sync_DelAll() {
  return library.DeleteAll();
}
