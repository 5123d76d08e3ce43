// Module 4, the agenda: entries in groups, kept by AgendaStore.dll. An entry has short items in its record and long
// ones in an area that the caller of the store provides.
#ifndef QV_MODULES_CALENDAR_AGENDA_H
#define QV_MODULES_CALENDAR_AGENDA_H

#include "modules/calendar/agenda_layout.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

namespace qv::agenda {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"agenda.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\ageninfo.log", .layout = &kEntryLayout},
    {.exchange_file = u"agendagroup.tbl",
     .snapshot_log = u"\\dbdata\\sysconfig\\agengroup.log",
     .layout = &kGroupLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"AgendaStore.dll",
    .anchor_key = u"AGENDA",
    .change_list = u"agendacmd.tbl",
    .id_map = u"agendamap.tbl",
    .tables = kTables,
};

/// In every mode, unlike the schedule's.
inline constexpr StepFlag kEntriesApplied{0x3000000};
inline constexpr StepFlag kGroupsApplied{0x4000000};

inline constexpr TableCalls kCalls = {
    .count = {u"AGD_Sync_GetAllRecNum", {Argument::kTable}},
    .list = {u"AGD_Sync_GetAllidTime", {Argument::kTable, Argument::kCountPlace, Argument::kEntries}},
    .read = {u"AGD_Sync_Read", {Argument::kTable, Argument::kCount, Argument::kIds, Argument::kRecords}},
    .insert = {u"AGD_Sync_Insert", {Argument::kTable, Argument::kRecords, Argument::kNewId}},
    .update = {u"AGD_Sync_Update", {Argument::kTable, Argument::kId, Argument::kRecords}},
};

inline constexpr RecordTableFacts kTableFacts[] = {
    {.calls = kCalls,
     .counts_are_signed = true,
     .read_batch = 2,
     .listed_id = kExchangeEntryId,
     .group_reference = kStoreGroupId,
     .exported = StepFlag::kTable0Exported,
     .applied = kEntriesApplied},
    {.calls = kCalls,
     .counts_are_signed = true,
     .read_batch = 50,
     .exported = StepFlag::kTable1Exported,
     .applied = kGroupsApplied},
};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"AGD_Sync_Del", {Argument::kTable, Argument::kCount, Argument::kIds}},
    .erase_all = {u"AGD_Sync_DelAll", {}},
    .emptied_by = EmptiedBy::kAllButAdding,
    .local_recover_applies_changes = true,
    .tables_of_changes = TablesOfChanges::kLowByteToDelete,
};

inline constexpr StepWords kStepWords[] = {
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the table's snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "exporting the entries"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable1Exported, "exporting the groups"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
    // Also of a local recover.
    {Direction::kRecover, Modes::kAny, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kAny, kGroupsApplied, "applying the groups"},
    {Direction::kRecover, Modes::kAny, kEntriesApplied, "applying the entries"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
};

inline constexpr RuleWords kRules[] = {
    {&kEntryLayout,
     "Behind the items stands the number of long items, 4 bytes, and behind that the long items. In the store each has "
     "5128 bytes, and an exchange table has what they begin with; a recover fills them up with zeros. The store's "
     "record says where they lie at 4364, and how many they are at 4368."},
    {&kEntryLayout, "An entry that the end of the file cuts off ends a recover of the entries, without a failure."},
};

/// An entry's long items lie in an area of its own, which the caller of the store provides.
class EntryTable final : public RecordTable {
 public:
  using RecordTable::RecordTable;

 private:
  Result ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table) override;
  Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more) override;

  /// Room for so many store records and their areas. False without memory.
  [[nodiscard]] bool MakeRoom(std::size_t count);
  /// Says in the records where their areas are.
  void PointAtAreas();
  std::uint8_t* Record(std::size_t position) { return records_.data() + position * kEntryStoreSize; }
  std::uint8_t* Area(std::size_t position) { return areas_.data() + position * kAreaSize; }

  List<std::uint8_t> records_;
  List<std::uint8_t> areas_;
};

}  // namespace qv::agenda

#endif  // QV_MODULES_CALENDAR_AGENDA_H
