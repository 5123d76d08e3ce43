// What the call log's store is.
#include "tests/support/scripted_call_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"CallLogStore.dll",
    .tables = {{.record_size = ScriptedCallStore::kRecordSize, .id_offset = 160}},
    .list = kFileTimeIn16Bytes,
    .entry_points =
        {
            {u"EXPCALLHISTORY_Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {}},
            {u"EXPCALLHISTORY_Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kCountPlace, kListEntries}},
            {u"EXPCALLHISTORY_Sync_Read", "Read", StoreRole::kRead, {kCount, kIds, kRecords}},
            {u"EXPCALLHISTORY_Sync_Insert", "Insert", StoreRole::kInsert, {kRecords, kNewId}},
            {u"EXPCALLHISTORY_Sync_Update", "Update", StoreRole::kUpdate, {kId, kRecords}},
            {u"EXPCALLHISTORY_Sync_Del", "Del", StoreRole::kDelete, {kCount, kIds}},
            {u"EXPCALLHISTORY_Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

}  // namespace

ScriptedCallStore::ScriptedCallStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedTableStore(kFacts, missing, missing_address) {}

}  // namespace qv_test
