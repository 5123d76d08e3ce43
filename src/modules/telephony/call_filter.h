// Module 11, the call filter: the callers that the telephone lets through or turns away, in groups with times of their
// own, and a configuration; kept by CallFilterStore.dll. In files and anchors it is the "redblist", of black and red
// callers.
#ifndef QV_MODULES_TELEPHONY_CALL_FILTER_H
#define QV_MODULES_TELEPHONY_CALL_FILTER_H

#include "modules/telephony/call_filter_layout.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

namespace qv::call_filter {

inline constexpr char16_t kConfigFile[] = u"redblistconfig.tbl";

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"redblistinfo.tbl",
     .snapshot_log = u"\\dbdata\\sysconfig\\redblist.log",
     .layout = &kEntryLayout},
    {.exchange_file = u"redblistgroup.tbl",
     .snapshot_log = u"\\dbdata\\sysconfig\\redblistgroup.log",
     .layout = &kGroupLayout},
    {.exchange_file = kConfigFile, .layout = &kConfigLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"CallFilterStore.dll",
    .anchor_key = u"REDBLIST",
    .change_list = u"redblistcmd.tbl",
    .id_map = u"redblistmap.tbl",
    .tables = kTables,
};

/// In every mode, unlike the schedule's. The configuration shares the flags of the entries.
inline constexpr StepFlag kEntriesApplied{0x3000000};
inline constexpr StepFlag kGroupsApplied{0x4000000};

inline constexpr StepWords kStepWords[] = {
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the table's snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "exporting the entries or the configuration"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable1Exported, "exporting the groups"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
    {Direction::kRecover, Modes::kIncremental, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kAny, kGroupsApplied, "applying the groups"},
    {Direction::kRecover, Modes::kAny, kEntriesApplied, "applying the entries or the configuration"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
};

inline constexpr RuleWords kRules[] = {
    {&kGroupLayout,
     "days: an export writes the store's bit 0 into each of the seven bytes; a recover makes a number of the lowest "
     "bits "
     "of the seven, the first byte's being bit 6."},
    {&kGroupLayout,
     "A recover that is not incremental takes the first 9 groups only, and updates group 7 in place if the handset has "
     "it."},
    {&kConfigLayout,
     "One record. Of the eight numbers with their values and short texts only the first `count` are carried."},
    {&kConfigLayout, "The store record also numbers them, from 0 to 7."},
};

inline constexpr TableCalls kCalls = {
    .count = {u"Sync_GetAllRecNum", {Argument::kTable}},
    .list = {u"Sync_GetAllidTime", {Argument::kTable, Argument::kCountPlace, Argument::kEntries}},
    .read = {u"Sync_Read", {Argument::kTable, Argument::kCount, Argument::kIds, Argument::kRecords}},
    .insert = {u"Sync_insert", {Argument::kTable, Argument::kRecords, Argument::kNewId}},
    .update = {u"Sync_Update", {Argument::kTable, Argument::kId, Argument::kRecords}},
};

/// An incremental recover goes without a store that lacks this, although it deletes by kFacts.erase.
inline constexpr char16_t kAlsoNeededForChanges[] = u"Sync_Del";

inline constexpr RecordTableFacts kTableFacts[] = {
    {.calls = kCalls,
     .sync_info = kFileTimeIn12Bytes,
     .read_batch = 200,
     .read_batch_incrementally = 50,
     .read_room = 100,
     .group_reference = kEntryGroupId,
     .insert_chunk = 200,
     .may_be_missing_incrementally = true,
     .also_needed_for_changes = kAlsoNeededForChanges,
     .exported = StepFlag::kTable0Exported,
     .applied = kEntriesApplied},
    {.calls = kCalls,
     .sync_info = kFileTimeIn12Bytes,
     .read_batch_incrementally = 50,
     .read_room = 100,
     .to_exchange = GroupToExchange,
     .to_store = GroupToStore,
     .insert_chunk = 9,
     .inserts_one_chunk = true,
     .also_needed_for_changes = kAlsoNeededForChanges,
     .exported = StepFlag::kTable1Exported,
     .applied = kGroupsApplied},
};

inline constexpr SuccessNumbers kEmptied = {0, 2};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    // The schedule store's name: this store has it too.
    .erase = {u"SC_Sync_Del", {Argument::kTable, Argument::kCount, Argument::kIds}},
    .erase_all = {u"Sync_DelAll", {Argument::kTable}, kEmptied},
    .creates_tables_first = true,
    .tables_of_changes = TablesOfChanges::kLowByteToDelete,
    .passes_over_operation_0 = true,
};

/// Results as the procedure's; the configuration's with the entries' flags.
class CallFilterHandler {
 public:
  CallFilterHandler(const ModuleFacts& facts, const ModuleCall& call)
      : call_(call), procedure_(facts, call, entries_, &groups_) {}

  Result Export(SyncMode& mode, char16_t* anchor);
  Result Recover(SyncMode mode, char16_t* anchor);

 private:
  /// Every handset has a group 7: a recover that inserts updates it in place. In the id map its id is then 0, where
  /// its entries follow it.
  class GroupTable final : public RecordTable {
   public:
    using RecordTable::RecordTable;

   private:
    [[nodiscard]] bool LookUpForApplying(bool incremental) override;
    Result Insert(const Applying& applying, Arguments arguments) override;
  };

  Result ExportConfig();
  Result EmptyStore();
  Result ApplyConfig();

  const ModuleCall& call_;
  PlainTable entries_{call_, kMainTable, kTableFacts[kMainTable]};
  GroupTable groups_{call_, kGroupTable, kTableFacts[kGroupTable]};
  Procedure procedure_;
};

}  // namespace qv::call_filter

#endif  // QV_MODULES_TELEPHONY_CALL_FILTER_H
