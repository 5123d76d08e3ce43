// CardScanStore.dll, the card reader's store library: one table of cards. It has a session, answers 1 for success, and
// some of its calls have a last argument that must be 0.
#include "host/stores/organizer_kinds.h"
#include "host/stores/store_library.h"

namespace {

using stores::kOnlyTable;

stores::LibraryOf<stores::RecordTables<stores::kCardKinds>> library({.success = 1, .has_session = true});

/// What `call` answers, if `reserved` is the 0 that it must be.
std::uint32_t WithZero(std::uint32_t reserved, auto&& call) {
  return reserved == 0 ? call() : library.Answer(stores::kOutOfBounds);
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t CR_Initialize(std::uint32_t reserved) {
  return WithZero(reserved, [] { return library.Begin(); });
}

STORE_ENTRY_POINT std::uint32_t CR_UnInitialize() {
  return library.End();
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_GetAllRecNum() {
  return library.Count(kOnlyTable);
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_GetAllidTime(std::uint32_t* count, void* entries, std::uint32_t reserved) {
  return WithZero(reserved, [&] { return library.List(kOnlyTable, count, entries); });
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_Read(std::uint32_t count, const std::uint32_t* ids, void* records,
                                             std::uint32_t reserved) {
  return WithZero(reserved, [&] { return library.Read(kOnlyTable, count, ids, records); });
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_Insert(const void* record, std::uint32_t* new_id, std::uint32_t reserved) {
  return WithZero(reserved, [&] { return library.Insert(kOnlyTable, record, new_id); });
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_Update(const void* record) {
  return library.Update(kOnlyTable, record);
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_Del(std::uint32_t count, const std::uint32_t* ids, std::uint32_t reserved) {
  return WithZero(reserved, [&] { return library.Delete(kOnlyTable, count, ids); });
}

STORE_ENTRY_POINT std::uint32_t CR_Sync_DeleteAllCardRecord() {
  return library.DeleteAll();
}
