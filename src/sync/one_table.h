// The procedure of the modules that have one table and no groups: export and recover from the table to the snapshot. A
// module's own steps stand before and after it, in the module.
#ifndef QV_SYNC_ONE_TABLE_H
#define QV_SYNC_ONE_TABLE_H

#include "platform/library.h"
#include "sync/anchor_file.h"
#include "sync/exchange_directory.h"
#include "sync/file_forms.h"
#include "sync/module_names.h"
#include "sync/record_table.h"
#include "sync/result.h"
#include "sync/result_words.h"
#include "sync/store_function.h"
#include "sync/sync_mode.h"

namespace qv {

/// A recover applies the one table under this flag in every mode.
inline constexpr StepFlag kTableApplied{0x3000000};

struct OneTableFacts {
  const ModuleNames& names;
  RecordTableFacts table;
  EntryPoint erase;
  EntryPoint erase_all;
  /// An export creates its files before it looks at the store, as the modules with groups do; otherwise once the entry
  /// points are there.
  bool creates_files_first = false;
  /// The store has one table, so the table that an entry of a change list names is not looked at.
  bool ignores_tables_of_changes = false;
  /// What an incremental recover deletes at its end.
  const char16_t* consumed_change_list = names.change_list;
};

inline constexpr StepWords kFlaggedTableStepWords[] = {
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "writing the records"},
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot log"},
    {Direction::kRecover, Modes::kIncremental, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kAny, kTableApplied, "applying the records"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot log"},
};

/// Of a module whose tables are written without a flag.
inline constexpr std::span<const StepWords> kUnflaggedTableStepWords =
    std::span<const StepWords>(kFlaggedTableStepWords).subspan(1);

/// One run over a module's table.
class OneTableRun {
 public:
  OneTableRun(const OneTableFacts& facts, const Library& store, const ExchangeDirectory& directory, RecordTable& table)
      : facts_(facts), store_(store), directory_(directory), table_(table) {}

  /// From the change list to the snapshot. Unflagged what goes wrong before the table is written, with the snapshot
  /// log's flag what goes wrong there.
  Result Export(SyncMode mode);

  /// From the wipe to the id map: kEntryPointMissing and kWipeFailed without a flag, all else with its step's.
  Result Recover(SyncMode mode);

 private:
  Result ExportTable(SyncMode mode);
  Result ApplyChanges();
  Result ApplyChangeList();
  Result WriteSnapshot();

  const OneTableFacts& facts_;
  const Library& store_;
  const ExchangeDirectory& directory_;
  RecordTable& table_;
  ChangeList changes_;
  IdMap id_map_;
};

/// The handler of a module that is its facts and nothing else.
template <const OneTableFacts& facts>
class OneTableHandler {
 public:
  /// As the modules with two tables; results as OneTableRun's, and without a flag kStoreNotLoaded and, for a directory
  /// that is too long, kFileFailed.
  Result Export(SyncMode& mode, char16_t* anchor, const void* directory) {
    if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
    if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
    CheckAnchor(mode, facts.names.anchor_key, anchor);
    MoveAnchor(mode, facts.names.anchor_key, anchor);
    return run_.Export(mode);
  }

  Result Recover(SyncMode mode, char16_t* anchor, const void* directory) {
    if (!store_.IsLoaded()) return Result::kStoreNotLoaded;
    if (const Result taken = directory_.Assign(directory); IsFailure(taken)) return taken;
    MoveAnchor(mode, facts.names.anchor_key, anchor);
    return run_.Recover(mode);
  }

 private:
  class Table final : public RecordTable {
   public:
    explicit Table(const Library& store)
        : RecordTable(store, kMainTable, facts.names.tables[kMainTable], facts.table) {}
  };

  Library store_{facts.names.store_library};
  ExchangeDirectory directory_;
  Table table_{store_};
  OneTableRun run_{facts, store_, directory_, table_};
};

}  // namespace qv

#endif  // QV_SYNC_ONE_TABLE_H
