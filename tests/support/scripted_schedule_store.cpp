// What the schedule's store is.
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"SchedStore.dll",
    .tables = {{.record_size = ScriptedScheduleStore::kEntrySize},
               {.record_size = ScriptedScheduleStore::kGroupSize, .id_offset = 0}},
    .list = kFileTimeIn16Bytes,
    .entry_points =
        {
            {u"SC_Sync_GetTotalNum", "GetTotalNum", StoreRole::kCount, {kTable}},
            {u"SC_Sync_GetAllSyncInfo", "GetAllSyncInfo", StoreRole::kList, {kTable, kCountPlace, kListEntries}},
            {u"SC_Sync_Read", "Read", StoreRole::kRead, {kTable, kCount, kIds, kRecords}},
            {u"SC_Sync_Insert", "Insert", StoreRole::kInsert, {kTable, kRecords, kNewId, kGroup}},
            {u"SC_Sync_Update", "Update", StoreRole::kUpdate, {kTable, kId, kRecords, kGroup}},
            {u"SC_Sync_Del", "Del", StoreRole::kDelete, {kTable, kCount, kIds}},
            {u"SC_Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

}  // namespace

ScriptedScheduleStore::ScriptedScheduleStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedRecordStore(kFacts, missing, missing_address) {}

}  // namespace qv_test
