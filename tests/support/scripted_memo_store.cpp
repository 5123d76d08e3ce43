// What the graphic memos' store is.
#include "tests/support/scripted_memo_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"SketchStore.dll",
    .tables = {{.record_size = 1148, .id_offset = 0}},
    .list = kFileTimeIn12Bytes,
    .entry_points =
        {
            {u"DrawInfo_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {kTable}},
            {u"DrawInfo_GetAllidTime", "GetAllidTime", StoreRole::kList, {kTable, kCountPlace, kListEntries}},
            {u"DrawInfo_Read", "Read", StoreRole::kRead, {kTable, kCount, kIds, kRecords}},
            {u"DrawInfo_Insert", "Insert", StoreRole::kInsert, {kTable, kRecords, kNewId}},
            {u"DrawInfo_Update", "Update", StoreRole::kUpdate, {kTable, kId, kRecords}},
            {u"DrawInfo_Sync_Del", "Del", StoreRole::kDelete, {kTable, kCount, kIds}},
            {u"DrawInfo_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

}  // namespace

ScriptedMemoStore::ScriptedMemoStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedTableStore(kFacts, missing, missing_address) {}

}  // namespace qv_test
