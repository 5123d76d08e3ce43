// The procedure of the record modules, for one table or two: export and recover as named steps, which a module's facts
// steer. A module with steps of its own composes these around them; a module without any is its facts.
#ifndef QV_SYNC_PROCEDURE_H
#define QV_SYNC_PROCEDURE_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>

#include "sync/file_forms.h"
#include "sync/module_call.h"
#include "sync/module_names.h"
#include "sync/record_table.h"
#include "sync/result.h"
#include "sync/result_words.h"
#include "sync/store_function.h"
#include "sync/sync_mode.h"

namespace qv {

/// Which recovers empty the store before they apply the tables.
enum class EmptiedBy : std::uint8_t {
  kReplace,       ///< SyncMode::kReplace.
  kAllButAdding,  ///< All but kIncremental and kLocalRecover.
};

constexpr bool IsEmptied(EmptiedBy emptied_by, SyncMode mode) {
  const bool adds = mode == SyncMode::kIncremental || mode == SyncMode::kLocalRecover;
  return emptied_by == EmptiedBy::kReplace ? mode == SyncMode::kReplace : !adds;
}

/// What the table that an entry of a change list names is good for.
enum class TablesOfChanges : std::uint8_t {
  kNamed,            ///< It is the entry's table, usually; a deletion from another than the module's is passed over.
  kIgnored,          ///< Nothing: all entries are about the main table.
  kIgnoredToDelete,  ///< The same for deletions; other entries are about the table that they name.
  kLowByteToDelete,  ///< Of a deletion the low byte counts: 0 is the main table, anything else the groups.
};

struct ModuleFacts {
  const ModuleNames& names;
  std::span<const RecordTableFacts> tables;  ///< Of the first tables in `names`: the main table, and the groups if any.
  EntryPoint erase;                          ///< Deletes records.
  EntryPoint erase_all;                      ///< Empties the store.
  EmptiedBy emptied_by = EmptiedBy::kReplace;
  /// A recover asked for on the handset itself applies a change list, as an incremental one does. Usually it inserts.
  bool local_recover_applies_changes = false;
  /// No run fails: what goes wrong ends its own step, for its own table, and is not told. A change list that cannot be
  /// read ends applying, and a store that lacks what empties it gets nothing (the unified mail, which empties by
  /// itself, is added to); what came in is deleted all the same.
  bool never_fails = false;

  /// An export begins by deleting the main exchange table: one that fails early leaves none.
  bool deletes_table_first = false;
  /// An export creates all its tables empty before it looks at the store: one that fails later leaves none of an
  /// earlier run.
  bool creates_tables_first = false;
  /// An export looks the entry points up before it creates the change list.
  bool looks_up_before_change_list = false;

  TablesOfChanges tables_of_changes = TablesOfChanges::kNamed;
  /// An entry of a change list with operation 0 is as good as none. Usually it hides later ones of the same record.
  bool passes_over_operation_0 = false;
  const char16_t* consumed_change_list = names.change_list;  ///< What an incremental recover deletes at its end.
  /// What an id map that cannot be written is flagged with; kNoFlag: that is not reported, because without a map the
  /// desktop asks for a full export.
  StepFlag id_map_written = kNoFlag;
};

/// Whether a recover applies a change list.
constexpr bool AppliesChanges(const ModuleFacts& facts, SyncMode mode) {
  return mode == SyncMode::kIncremental || (mode == SyncMode::kLocalRecover && facts.local_recover_applies_changes);
}

/// Whether the facts name all that the procedure calls, and lists that it can take.
constexpr bool IsComplete(const ModuleFacts& facts) {
  for (const RecordTableFacts& table : facts.tables) {
    if (!HasRoom(table.sync_info)) return false;
    for (const EntryPoint& call : {table.calls.count, table.calls.list, table.calls.read, table.calls.insert,
                                   table.calls.update, facts.erase, facts.erase_all}) {
      if (call.name == nullptr) return false;
    }
  }
  return !facts.tables.empty() && facts.tables.size() <= facts.names.tables.size();
}

/// One run over a module's tables.
class Procedure {
 public:
  /// All must outlive the procedure. `groups` is null for a module with one table.
  Procedure(const ModuleFacts& facts, const ModuleCall& call, RecordTable& main, RecordTable* groups = nullptr)
      : facts_(facts), call_(call), main_(main), groups_(groups) {}

  /// Checks and moves the anchor; see ModuleCall.
  void BeginExport(SyncMode& mode, char16_t* anchor);
  /// What follows on that, of a module without steps in between.
  Result Export(SyncMode mode);
  /// Creates what the facts say comes first, and in an incremental run the change list, which stays open. kFileFailed,
  /// and with looks_up_before_change_list kEntryPointMissing.
  Result CreateFiles(SyncMode mode, File& change_list);
  /// CreateFiles, and writes the tables and the change list. The tables' flags.
  Result ExportTables(SyncMode mode);
  /// Rewrites the snapshot logs in a run that is remembered. StepFlag::kSnapshotWritten.
  Result WriteSnapshots(SyncMode mode);

  /// Moves the anchor.
  void BeginRecover(SyncMode mode, char16_t* anchor) const;
  /// What follows on that, of a module without steps in between.
  Result Recover(SyncMode mode);
  /// Deletes all that the store holds, in the modes that begin so. kEntryPointMissing, kWipeFailed.
  Result EmptyStore(SyncMode mode);
  /// Applies the tables, groups first: the main records are pointed at the ids that these receive. A run with a change
  /// list applies its deletions before and deletes the facts' consumed list behind.
  /// StepFlag::kChangeListApplied, and the tables' flags.
  Result ApplyTables(SyncMode mode);

  /// Which handset id each record received so far.
  IdMap& id_map() { return id_map_; }
  /// Deletes the exchange tables; in a run that is remembered also rewrites the snapshot logs and writes the id map.
  /// StepFlag::kSnapshotWritten, and the id map's flag.
  Result Finish(SyncMode mode);
  /// What follows on the deletion, of a module that deletes in between.
  Result Remember(SyncMode mode);

 private:
  /// Record ids to delete, by table.
  using Deletions = List<std::uint32_t>[2];

  /// What a step's result means to the run.
  Result Told(Result result) const { return facts_.never_fails ? Result::kOk : result; }
  /// Takes a step on both tables, in this order.
  template <typename Step>
  Result ForEach(std::initializer_list<RecordTable*> tables, Step step);

  [[nodiscard]] bool LookUpTables();
  Result ExportFlagged(RecordTable& table, File* change_list);
  Result ApplyChanges();
  Result ReadChangeList(Deletions& deletions);
  Result DeleteRecords(const Deletions& deletions) const;
  Result ApplyEach(bool incremental);
  Result ApplyFlagged(RecordTable& table, const Applying& applying);

  const ModuleFacts& facts_;
  const ModuleCall& call_;
  RecordTable& main_;
  RecordTable* groups_;
  ChangeList changes_;
  IdMap id_map_;
};

/// The handler of a module that is its facts, but for what its main table does in its own way.
template <typename MainTable>
class TableHandler {
 public:
  TableHandler(const ModuleFacts& facts, const ModuleCall& call)
      : main_(call, kMainTable, facts.tables[kMainTable]), procedure_(facts, call, main_, MakeGroups(facts, call)) {}

  // As every module's, within a call that has begun (entry/dispatch.cpp). Results carry the flags of the facts, and are
  // told in words in the module's StepWords. Without a flag are kFileFailed of an export, whatever else fails in
  // exporting a table whose facts give it none, and kEntryPointMissing and kWipeFailed of a recover.
  Result Export(SyncMode& mode, char16_t* anchor) {
    procedure_.BeginExport(mode, anchor);
    return procedure_.Export(mode);
  }
  Result Recover(SyncMode mode, char16_t* anchor) {
    procedure_.BeginRecover(mode, anchor);
    return procedure_.Recover(mode);
  }

 private:
  /// Null for a module with one table.
  RecordTable* MakeGroups(const ModuleFacts& facts, const ModuleCall& call) {
    return facts.tables.size() > kGroupTable ? &groups_.emplace(call, kGroupTable, facts.tables[kGroupTable]) : nullptr;
  }

  MainTable main_;
  std::optional<PlainTable> groups_;
  Procedure procedure_;
};

using PlainHandler = TableHandler<PlainTable>;

// The steps of a module with one table, in words.

inline constexpr StepWords kOneTableStepWords[] = {
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "writing the records"},
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot log"},
    {Direction::kRecover, Modes::kIncremental, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kAny, RecordTableFacts{}.applied, "applying the records"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot log"},
};

/// A table may be written without a flag.
constexpr std::span<const StepWords> OneTableStepWords(const ModuleFacts& facts) {
  return std::span<const StepWords>(kOneTableStepWords).subspan(facts.tables.front().written == kNoFlag ? 1 : 0);
}

}  // namespace qv

#endif  // QV_SYNC_PROCEDURE_H
