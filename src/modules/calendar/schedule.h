// Module 2, the schedule: entries in groups, kept by SchedStore.dll. The plainest of the record modules, and the one to
// read first.
#ifndef QV_MODULES_CALENDAR_SCHEDULE_H
#define QV_MODULES_CALENDAR_SCHEDULE_H

#include "modules/calendar/schedule_layout.h"
#include "sync/procedure.h"

namespace qv::schedule {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"schedule.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\schedule.log", .layout = &kEntryLayout},
    {.exchange_file = u"schedulegroup.tbl",
     .snapshot_log = u"\\dbdata\\sysconfig\\schegroup.log",
     .layout = &kGroupLayout,
     .incremental_stride = 10332},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"SchedStore.dll",
    .anchor_key = u"SCHEDULE",
    .change_list = u"schedcmd.tbl",
    .id_map = u"schedmap.tbl",
    .tables = kTables,
};

/// Groups are applied first in every mode. An incremental recover flags a failing table by that order, any other by the
/// table's number. Desktops read the flags so.
inline constexpr StepFlag kEntriesApplied{0x3000000};
inline constexpr StepFlag kGroupsApplied{0x4000000};
inline constexpr StepFlag kGroupsAppliedIncrementally{0x3000000};
inline constexpr StepFlag kEntriesAppliedIncrementally{0x4000000};

/// The last argument of an insert and an update is an entry's group, and of a group a value of its own.
inline constexpr TableCalls kCalls = {
    .count = {u"SC_Sync_GetTotalNum", {Argument::kTable}},
    .list = {u"SC_Sync_GetAllSyncInfo", {Argument::kTable, Argument::kCountPlace, Argument::kEntries}},
    .read = {u"SC_Sync_Read", {Argument::kTable, Argument::kCount, Argument::kIds, Argument::kRecords}},
    .insert = {u"SC_Sync_Insert", {Argument::kTable, Argument::kRecords, Argument::kNewId, Argument::kGroup}},
    .update = {u"SC_Sync_Update", {Argument::kTable, Argument::kId, Argument::kRecords, Argument::kGroup}},
};

inline constexpr RecordTableFacts kTableFacts[] = {
    {.calls = kCalls,
     .read_batch = 50,
     .read_room = 100,
     // An entry goes by the id it was listed under; what its record says of it is the store's own affair.
     .listed_id = kEntryId,
     .group_reference = kEntryGroupId,
     .group_argument = kEntryGroupId,
     .exported = StepFlag::kTable0Exported,
     .applied = kEntriesApplied,
     .applied_incrementally = kEntriesAppliedIncrementally},
    {.calls = kCalls,
     .read_batch = 50,
     .read_room = 100,
     .group_argument = kGroupValue,
     .exported = StepFlag::kTable1Exported,
     .applied = kGroupsApplied,
     .applied_incrementally = kGroupsAppliedIncrementally},
};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"SC_Sync_Del", {Argument::kTable, Argument::kCount, Argument::kIds}},
    .erase_all = {u"SC_Sync_DelAll", {}},
    .creates_tables_first = true,
};

inline constexpr StepWords kStepWords[] = {
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the table's snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "exporting the entries"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable1Exported, "exporting the groups"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
    {Direction::kRecover, Modes::kIncremental, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kOtherThanIncremental, kEntriesApplied, "inserting the entries"},
    {Direction::kRecover, Modes::kOtherThanIncremental, kGroupsApplied, "inserting the groups"},
    {Direction::kRecover, Modes::kIncremental, kGroupsAppliedIncrementally, "inserting and updating the groups"},
    {Direction::kRecover, Modes::kIncremental, kEntriesAppliedIncrementally, "inserting and updating the entries"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
};

}  // namespace qv::schedule

#endif  // QV_MODULES_CALENDAR_SCHEDULE_H
