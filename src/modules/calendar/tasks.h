// Module 3, the tasks: tasks in groups, kept by TodoStore.dll. Nobody is told what came of a run, and no failure ends
// one.
#ifndef QV_MODULES_CALENDAR_TASKS_H
#define QV_MODULES_CALENDAR_TASKS_H

#include "modules/calendar/tasks_layout.h"
#include "sync/procedure.h"

namespace qv::tasks {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"taskinfo.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\taskinfo.log", .layout = &kTaskLayout},
    {.exchange_file = u"taskgroup.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\taskgroup.log", .layout = &kGroupLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"TodoStore.dll",
    .anchor_key = u"TASK",
    .change_list = u"taskcmd.tbl",
    .id_map = u"taskmap.tbl",
    .tables = kTables,
};

/// The last argument of an insert and an update is a task's group, and of a group a value of its own. The store spells
/// the insert's name so.
inline constexpr TableCalls kCalls = {
    .count = {u"TD_Sync_GetAllRecNum", {Argument::kTable}},
    .list = {u"TD_Sync_GetAllidTime", {Argument::kTable, Argument::kCountPlace, Argument::kEntries}},
    .read = {u"TD_Sync_Read", {Argument::kTable, Argument::kCount, Argument::kIds, Argument::kRecords}},
    .insert = {u"Td_Sync_Insert", {Argument::kTable, Argument::kRecords, Argument::kNewId, Argument::kGroup}},
    .update = {u"TD_Sync_Update", {Argument::kTable, Argument::kId, Argument::kRecords, Argument::kGroup}},
};

inline constexpr RecordTableFacts kTableFacts[] = {
    {.calls = kCalls,
     .read_batch = 50,
     .listed_id = kTaskId,
     .group_reference = kTaskGroupId,
     .group_argument = kTaskGroupId},
    {.calls = kCalls, .read_batch = 50, .group_argument = kGroupValue},
};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"TD_Sync_Del", {Argument::kTable, Argument::kCount, Argument::kIds}},
    .erase_all = {u"TD_Sync_DelAll", {}},
    .emptied_by = EmptiedBy::kAllButAdding,
    .local_recover_applies_changes = true,
    .never_fails = true,
    .creates_tables_first = true,
};

}  // namespace qv::tasks

#endif  // QV_MODULES_CALENDAR_TASKS_H
