// Module 9, the call history: calls made, received and missed, kept by CallLogStore.dll. The plainest module there is.
#ifndef QV_MODULES_MESSAGING_CALL_HISTORY_H
#define QV_MODULES_MESSAGING_CALL_HISTORY_H

#include "modules/messaging/call_history_layout.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

namespace qv::call_history {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"callinfo.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\recordcall.log", .layout = &kCallLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"CallLogStore.dll",
    .anchor_key = u"RECORDCALL",
    .change_list = u"callcmd.tbl",
    .id_map = u"callmap.tbl",
    .tables = kTables,
};

inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = {.count = {u"EXPCALLHISTORY_Sync_GetAllRecNum", {}},
              .list = {u"EXPCALLHISTORY_Sync_GetAllidTime", {Argument::kCountPlace, Argument::kEntries}},
              .read = {u"EXPCALLHISTORY_Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"EXPCALLHISTORY_Sync_Insert", {Argument::kRecords, Argument::kNewId}},
              .update = {u"EXPCALLHISTORY_Sync_Update", {Argument::kId, Argument::kRecords}}},
    .read_batch = 50,
    .read_room = 100,
    .to_exchange = CallToExchange,
    .to_store = CallToStore,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"EXPCALLHISTORY_Sync_Del", {Argument::kCount, Argument::kIds}},
    .erase_all = {u"EXPCALLHISTORY_Sync_DelAll", {}},
    .creates_tables_first = true,
};

inline constexpr RuleWords kRules[] = {
    {&kCallLayout, "type: the store's types count from 46000 on; an export writes what is above that, as one byte."},
};

}  // namespace qv::call_history

#endif  // QV_MODULES_MESSAGING_CALL_HISTORY_H
