// SpeedDialStore.dll, the quick dial's store library: one table of entries. An update goes by the id that the record
// says.
#include "host/stores/store_library.h"
#include "host/stores/telephony_kinds.h"

namespace {

using stores::kOnlyTable;

stores::LibraryOf<stores::RecordTables<stores::kQuickDialKinds>> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t Sync_GetAllRecNum() {
  return library.Count(kOnlyTable);
}

STORE_ENTRY_POINT std::uint32_t Sync_GetAllidTime(std::uint32_t* count, void* entries) {
  return library.List(kOnlyTable, count, entries);
}

STORE_ENTRY_POINT std::uint32_t Sync_Read(std::uint32_t count, const std::uint32_t* ids, void* records) {
  return library.Read(kOnlyTable, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t Sync_Insert(const void* record, std::uint32_t* new_id) {
  return library.Insert(kOnlyTable, record, new_id);
}

STORE_ENTRY_POINT std::uint32_t Sync_Update(const void* record) {
  return library.Update(kOnlyTable, record);
}

STORE_ENTRY_POINT std::uint32_t Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(kOnlyTable, count, ids);
}

STORE_ENTRY_POINT std::uint32_t Sync_DelAll() {
  return library.DeleteAll();
}
