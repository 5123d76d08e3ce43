// What the agenda's store is, and what it does with the areas of its entries.
#include "tests/support/scripted_agenda_store.h"

namespace qv_test {
namespace {

using enum Argument;
using Store = ScriptedAgendaStore;

const ScriptedStoreFacts kFacts = {
    .library = u"AgendaStore.dll",
    .tables = {{.record_size = Store::kEntrySize}, {.record_size = Store::kGroupSize, .id_offset = 0}},
    .list = kFileTimeIn16Bytes,
    .entry_points =
        {
            {u"AGD_Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {kTable}},
            {u"AGD_Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kTable, kCountPlace, kListEntries}},
            {u"AGD_Sync_Read", "Read", StoreRole::kRead, {kTable, kCount, kIds, kRecords}},
            {u"AGD_Sync_Insert", "Insert", StoreRole::kInsert, {kTable, kRecords, kNewId}},
            {u"AGD_Sync_Update", "Update", StoreRole::kUpdate, {kTable, kId, kRecords}},
            {u"AGD_Sync_Del", "Del", StoreRole::kDelete, {kTable, kCount, kIds}},
            {u"AGD_Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

std::uint32_t WordAt(const std::uint8_t* bytes) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

/// Null when there is none.
std::uint8_t* AreaOf(const std::uint8_t* entry) {
  auto* const area = reinterpret_cast<std::uint8_t*>(std::uintptr_t{WordAt(entry + Store::kAreaPlace)});
  EXPECT_NE(area, nullptr) << "an entry without an area";
  ExpectAligned("an area", area);
  return area;
}

bool IsZero(const std::uint8_t* bytes, std::size_t size) {
  return size == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

}  // namespace

ScriptedAgendaStore::ScriptedAgendaStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedRecordStore(kFacts, missing, missing_address) {}

void ScriptedAgendaStore::HandOut(const Record& record, std::uint32_t table, std::uint8_t* place) {
  if (table != 0) return ScriptedRecordStore::HandOut(record, table, place);
  std::uint8_t* const area = AreaOf(place);
  if (area == nullptr) return;
  EXPECT_TRUE(IsZero(place, kAreaPlace)) << "what an entry is preset to";
  EXPECT_TRUE(IsZero(area, kAreaSize)) << "what an area is preset to";
  std::copy_n(record.bytes.begin(), kAreaPlace, place);
  std::copy(record.bytes.begin() + kLongItemCount, record.bytes.end(), place + kLongItemCount);
  if (const auto filled = areas.find(record.id); filled != areas.end()) std::ranges::copy(filled->second, area);
}

void ScriptedAgendaStore::TakeIn(Record& record, std::uint32_t table, const std::uint8_t* place) {
  ScriptedRecordStore::TakeIn(record, table, place);
  if (table != 0) return;
  const std::uint8_t* const area = AreaOf(place);
  const std::size_t used = std::size_t{WordAt(place + kLongItemCount)} * kLongItemSize;
  Put32(record.bytes, kAreaPlace, 0);
  if (area == nullptr) return;
  ASSERT_LE(used, kAreaSize) << "more items than the area has room for";
  EXPECT_TRUE(IsZero(area + used, kAreaSize - used)) << "what lies in an area behind its items";
  areas[record.id].assign(area, area + used);
}

}  // namespace qv_test
