// Module 10, the quick dial: the numbers behind the keys, kept by SpeedDialStore.dll.
#ifndef QV_MODULES_TELEPHONY_QUICK_DIAL_H
#define QV_MODULES_TELEPHONY_QUICK_DIAL_H

#include "modules/telephony/quick_dial_layout.h"
#include "sync/procedure.h"

namespace qv::quick_dial {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"Quickinfo.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\quickinfo.log", .layout = &kEntryLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"SpeedDialStore.dll",
    .anchor_key = u"QUCIKDAIL",  // Anchor files in use spell it so.
    .change_list = u"Quickcmd.tbl",
    .id_map = u"Quickmap.tbl",
    .tables = kTables,
};

inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = {.count = {u"Sync_GetAllRecNum", {}},
              .list = {u"Sync_GetAllidTime", {Argument::kCountPlace, Argument::kEntries}},
              .read = {u"Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"Sync_Insert", {Argument::kRecords, Argument::kNewId}},
              .update = {u"Sync_Update", {Argument::kRecords}}},
    .sync_info = {20, 4, SyncInfoForm::Time::kSystemTime},
    .created = TableCreated::kWithRecords,
    .incoming_id = kEntryId,
    .written = StepFlag::kTable0Exported,
    .inserted = kTableApplied,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"Sync_Del", {Argument::kCount, Argument::kIds}},
    .erase_all = {u"Sync_DelAll", {}},
    .emptied_by = EmptiedBy::kAllButAdding,
    .deletes_table_first = true,
    .tables_of_changes = TablesOfChanges::kOnlyOneToDelete,
};

}  // namespace qv::quick_dial

#endif  // QV_MODULES_TELEPHONY_QUICK_DIAL_H
