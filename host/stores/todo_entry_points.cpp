// TodoStore.dll, the tasks' store library: table 0 holds the tasks, table 1 the groups. For a task the last argument of
// insert and update is its group's id, for a group it is the group's 16-bit value. One name is spelled unlike the
// others.
#include "host/stores/store_library.h"
#include "host/stores/task_kinds.h"

namespace {

stores::LibraryOf<stores::RecordTables<stores::kTaskKinds>> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t TD_Sync_GetAllRecNum(std::uint32_t table) {
  return library.Count(table);
}

STORE_ENTRY_POINT std::uint32_t TD_Sync_GetAllidTime(std::uint32_t table, std::uint32_t* count, void* entries) {
  return library.List(table, count, entries);
}

STORE_ENTRY_POINT std::uint32_t TD_Sync_Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                                             void* records) {
  return library.Read(table, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t Td_Sync_Insert(std::uint32_t table, const void* record, std::uint32_t* new_id,
                                               std::uint32_t argument) {
  return library.Insert(table, record, new_id, argument);
}

STORE_ENTRY_POINT std::uint32_t TD_Sync_Update(std::uint32_t table, std::uint32_t id, const void* record,
                                               std::uint32_t argument) {
  return library.Update(table, id, record, argument);
}

STORE_ENTRY_POINT std::uint32_t TD_Sync_Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t TD_Sync_DelAll() {
  return library.DeleteAll();
}
