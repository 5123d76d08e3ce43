// Module 2, the schedule: entries in groups, kept by SchedStore.dll. The plainest of the record modules, and the one to
// read first.
#ifndef QV_MODULES_CALENDAR_SCHEDULE_H
#define QV_MODULES_CALENDAR_SCHEDULE_H

#include "modules/calendar/schedule_layout.h"
#include "platform/library.h"
#include "sync/procedure.h"
#include "sync/result_words.h"
#include "sync/sync_mode.h"

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

/// A recover flags a failing table by its place in the order, and the incremental one counts the other way round.
/// Desktops read the flags so.
inline constexpr StepFlag kEntriesInserted{0x3000000};
inline constexpr StepFlag kGroupsInserted{0x4000000};
inline constexpr StepFlag kGroupsApplied{0x3000000};
inline constexpr StepFlag kEntriesApplied{0x4000000};

inline constexpr StepWords kStepWords[] = {
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the table's snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "exporting the entries"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable1Exported, "exporting the groups"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
    {Direction::kRecover, Modes::kIncremental, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kOtherThanIncremental, kEntriesInserted, "inserting the entries"},
    {Direction::kRecover, Modes::kOtherThanIncremental, kGroupsInserted, "inserting the groups"},
    {Direction::kRecover, Modes::kIncremental, kGroupsApplied, "inserting and updating the groups"},
    {Direction::kRecover, Modes::kIncremental, kEntriesApplied, "inserting and updating the entries"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
};

/// Serves one call: loads the store when it is made, unloads it when it goes.
class ScheduleHandler {
 public:
  /// Writes the tables into `directory` (UTF-16LE, any alignment). `mode` becomes kFull when an incremental export
  /// cannot be honoured; `anchor` (kAnchorCapacity characters; null in a plain copy) receives the new anchor. Results
  /// as in kStepWords; kFileFailed without a flag when a file cannot be created.
  Result Export(SyncMode& mode, char16_t* anchor, const void* directory);

  /// Applies the tables in `directory`, and deletes them when all went well. Results as in kStepWords; without a flag
  /// kEntryPointMissing and kWipeFailed when the store could not be emptied.
  Result Recover(SyncMode mode, char16_t* anchor, const void* directory);

 private:
  Result ExportTables(SyncMode mode);
  Result WriteSnapshots();
  Result InsertTables();
  Result ApplyChanges();
  Result ApplyChangeList();

  Library store_{kNames.store_library};
  ExchangeDirectory directory_;
  ChangeList changes_;
  IdMap id_map_;
};

}  // namespace qv::schedule

#endif  // QV_MODULES_CALENDAR_SCHEDULE_H
