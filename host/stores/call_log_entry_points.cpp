// CallLogStore.dll, the call history's store library: one table of calls.
#include "host/stores/message_kinds.h"
#include "host/stores/store_library.h"

namespace {

using stores::kOnlyTable;

stores::LibraryOf<stores::RecordTables<stores::kCallKinds>> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_GetAllRecNum() {
  return library.Count(kOnlyTable);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_GetAllidTime(std::uint32_t* count, void* entries) {
  return library.List(kOnlyTable, count, entries);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Read(std::uint32_t count, const std::uint32_t* ids, void* records) {
  return library.Read(kOnlyTable, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Insert(const void* record, std::uint32_t* new_id) {
  return library.Insert(kOnlyTable, record, new_id);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Update(std::uint32_t id, const void* record) {
  return library.Update(kOnlyTable, id, record);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(kOnlyTable, count, ids);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_DelAll() {
  return library.DeleteAll();
}
