// CallLogStore.dll, the call history's store library: one table of calls.
#include "host/stores/message_kinds.h"
#include "host/stores/store_library.h"

namespace {

constexpr std::uint32_t kCalls = 0;

stores::StoreLibrary library(stores::kCallKinds);

}  // namespace

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_GetAllRecNum() {
  return library.Count(kCalls);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_GetAllidTime(std::uint32_t* count, qv::SyncInfoEntry* entries) {
  return library.SyncInfo(kCalls, count, entries);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Read(std::uint32_t count, const std::uint32_t* ids, void* records) {
  return library.Read(kCalls, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Insert(const void* record, std::uint32_t* new_id) {
  return library.Insert(kCalls, record, new_id);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Update(std::uint32_t id, const void* record) {
  return library.Update(kCalls, id, record);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(kCalls, count, ids);
}

STORE_ENTRY_POINT std::uint32_t EXPCALLHISTORY_Sync_DelAll() {
  return library.DeleteAll();
}
