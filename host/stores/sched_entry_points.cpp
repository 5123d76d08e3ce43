// SchedStore.dll, the schedule's store library: table 0 holds the entries, table 1 the groups. For an entry the last
// argument of insert and update is its group's id, for a group it is the group's 16-bit value.
#include "host/stores/schedule_kinds.h"
#include "host/stores/store_library.h"

namespace {

stores::LibraryOf<stores::RecordTables<stores::kScheduleKinds>> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t SC_Sync_GetTotalNum(std::uint32_t table) {
  return library.Count(table);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_GetAllSyncInfo(std::uint32_t table, std::uint32_t* count, void* entries) {
  return library.List(table, count, entries);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                                             void* records) {
  return library.Read(table, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_Insert(std::uint32_t table, const void* record, std::uint32_t* new_id,
                                               std::uint32_t argument) {
  return library.Insert(table, record, new_id, argument);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_Update(std::uint32_t table, std::uint32_t id, const void* record,
                                               std::uint32_t argument) {
  return library.Update(table, id, record, argument);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_DelAll() {
  return library.DeleteAll();
}
