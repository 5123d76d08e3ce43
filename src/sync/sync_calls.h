// The calls of stores that have one table and name nothing after themselves: more than one store names them so.
#ifndef QV_SYNC_SYNC_CALLS_H
#define QV_SYNC_SYNC_CALLS_H

#include "sync/record_table.h"
#include "sync/store_function.h"

namespace qv {

inline constexpr TableCalls kSyncCalls = {
    .count = {u"Sync_GetAllRecNum", {}},
    .list = {u"Sync_GetAllidTime", {Argument::kCountPlace, Argument::kEntries}},
    .read = {u"Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
    .insert = {u"Sync_Insert", {Argument::kRecords, Argument::kNewId}},
    .update = {u"Sync_Update", {Argument::kId, Argument::kRecords}},
};
inline constexpr EntryPoint kSyncErase = {u"Sync_Del", {Argument::kCount, Argument::kIds}};
inline constexpr EntryPoint kSyncEraseAll = {u"Sync_DelAll", {}};

}  // namespace qv

#endif  // QV_SYNC_SYNC_CALLS_H
