// Module 10, the quick dial: the numbers behind the keys, kept by SpeedDialStore.dll.
#ifndef QV_MODULES_TELEPHONY_QUICK_DIAL_H
#define QV_MODULES_TELEPHONY_QUICK_DIAL_H

#include "modules/telephony/quick_dial_layout.h"
#include "sync/procedure.h"
#include "sync/sync_calls.h"

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

/// An update is not told the id: the record says it.
inline constexpr TableCalls kCalls = {.count = kSyncCalls.count,
                                      .list = kSyncCalls.list,
                                      .read = kSyncCalls.read,
                                      .insert = kSyncCalls.insert,
                                      .update = {kSyncCalls.update.name, {Argument::kRecords}}};

inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = kCalls,
    .sync_info = {20, 4, SyncInfoForm::Time::kSystemTime},
    .created = TableCreated::kWithRecords,
    .incoming_id = kEntryId,
    .written = StepFlag::kTable0Exported,
}};

/// An export begins without a table, and makes one when it knows what goes in.
inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = kSyncErase,
    .erase_all = kSyncEraseAll,
    .emptied_by = EmptiedBy::kAllButAdding,
    .deletes_table_first = true,
    .tables_of_changes = TablesOfChanges::kIgnoredToDelete,
};

}  // namespace qv::quick_dial

#endif  // QV_MODULES_TELEPHONY_QUICK_DIAL_H
