// What the tasks' store is.
#include "tests/support/scripted_task_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"TodoStore.dll",
    .tables = {{.record_size = ScriptedTaskStore::kTaskSize},
               {.record_size = ScriptedTaskStore::kGroupSize, .id_offset = 0}},
    .list = kFileTimeIn16Bytes,
    .entry_points =
        {
            {u"TD_Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {kTable}},
            {u"TD_Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kTable, kCountPlace, kListEntries}},
            {u"TD_Sync_Read", "Read", StoreRole::kRead, {kTable, kCount, kIds, kRecords}},
            {u"Td_Sync_Insert", "Insert", StoreRole::kInsert, {kTable, kRecords, kNewId, kGroup}},
            {u"TD_Sync_Update", "Update", StoreRole::kUpdate, {kTable, kId, kRecords, kGroup}},
            {u"TD_Sync_Del", "Del", StoreRole::kDelete, {kTable, kCount, kIds}},
            {u"TD_Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

}  // namespace

ScriptedTaskStore::ScriptedTaskStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedRecordStore(kFacts, missing, missing_address) {}

}  // namespace qv_test
