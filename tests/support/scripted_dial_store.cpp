// What the quick dial's store is.
#include "tests/support/scripted_dial_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"SpeedDialStore.dll",
    .tables = {{.record_size = 184, .id_offset = 140}},
    .list = kSystemTimeIn20Bytes,
    .entry_points =
        {
            {u"Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {}},
            {u"Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kCountPlace, kListEntries}},
            {u"Sync_Read", "Read", StoreRole::kRead, {kCount, kIds, kRecords}},
            {u"Sync_Insert", "Insert", StoreRole::kInsert, {kRecords, kNewId}},
            {u"Sync_Update", "Update", StoreRole::kUpdate, {kRecords}},
            {u"Sync_Del", "Del", StoreRole::kDelete, {kCount, kIds}},
            {u"Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

}  // namespace

ScriptedDialStore::ScriptedDialStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedTableStore(kFacts, missing, missing_address) {}

}  // namespace qv_test
