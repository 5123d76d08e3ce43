// SketchStore.dll, the graphic memo's store library: table 0, the only one, holds the memos.
#include "host/stores/organizer_kinds.h"
#include "host/stores/store_library.h"

namespace {

stores::LibraryOf<stores::RecordTables<stores::kMemoKinds>> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t DrawInfo_GetAllRecNum(std::uint32_t table) {
  return library.Count(table);
}

STORE_ENTRY_POINT std::uint32_t DrawInfo_GetAllidTime(std::uint32_t table, std::uint32_t* count, void* entries) {
  return library.List(table, count, entries);
}

STORE_ENTRY_POINT std::uint32_t DrawInfo_Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                                              void* records) {
  return library.Read(table, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t DrawInfo_Insert(std::uint32_t table, const void* record, std::uint32_t* new_id) {
  return library.Insert(table, record, new_id);
}

STORE_ENTRY_POINT std::uint32_t DrawInfo_Update(std::uint32_t table, std::uint32_t id, const void* record) {
  return library.Update(table, id, record);
}

STORE_ENTRY_POINT std::uint32_t DrawInfo_Sync_Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t DrawInfo_DelAll() {
  return library.DeleteAll();
}
