// One table of a store, told as facts: what it is asked through, how its records lie, and where its steps depart from
// those of other tables. A departure that is more than a fact is a class of its module's that overrides the step.
#ifndef QV_SYNC_RECORD_TABLE_H
#define QV_SYNC_RECORD_TABLE_H

#include <algorithm>
#include <cstdint>
#include <span>

#include "platform/file.h"
#include "platform/library.h"
#include "sync/file_forms.h"
#include "sync/module_names.h"
#include "sync/result.h"
#include "sync/store_function.h"
#include "sync/sync_info.h"

namespace qv {

/// When an export creates the exchange table: what is there when the store fails, and which failure is told of several,
/// is part of what desktops know.
enum class TableCreated : std::uint8_t {
  kFirst,         ///< Before the store lists its records, and kept open.
  kFirstAndAnew,  ///< Before that, empty; and anew with the first records.
  kWithRecords,   ///< With the first records; empty when there are none to write.
  kUnlessEmpty,   ///< As kWithRecords, but not at all when the store has none.
};

/// What a table is asked through. Tables that a store tells apart by their number share these.
struct TableCalls {
  EntryPoint count;  ///< Answers the number of records; one that takes a kCountPlace, a status.
  EntryPoint list;
  EntryPoint read;
  EntryPoint insert;
  EntryPoint update;
};

struct RecordTableFacts {
  TableCalls calls;

  SyncInfoForm sync_info = kFileTimeForm;
  std::uint32_t uncounted_room = 0;     ///< The room that the list always has; 0: the records are counted before.
  bool counts_are_signed = false;       ///< A count below 0 is none; otherwise it is more than there can be.
  bool is_empty_when_unlisted = false;  ///< A list of none is an empty table; otherwise all its records are gone.

  std::uint32_t read_batch = 0;  ///< Records asked for in one call; 0: all of them.
  std::uint32_t read_room = 0;   ///< Records that one call has room for, if more: the store may use what lies behind.
  TableCreated created = TableCreated::kFirst;
  TableCreated created_incrementally = created;
  /// What an incremental export answers without memory for the records.
  Result no_memory_for_changes = Result::kNoMemory;

  /// Conversions of a whole record, for forms with fields that the module works out; otherwise the form's own.
  void (*to_exchange)(const std::uint8_t* store, std::uint8_t* exchange) = nullptr;
  void (*to_store)(const std::uint8_t* exchange, std::uint8_t* store) = nullptr;

  layout::Slot incoming_id = layout::U32(0);  ///< Where a record of the exchange table says who it is.
  /// Where an exported record is given the id that it was listed under; nowhere: the record itself says who it is.
  layout::Slot listed_id = {};
  /// Where a store record refers to a group: a recover points it at the id that the group received.
  layout::Slot group_reference = {};
  layout::Slot group_argument = {};  ///< What Argument::kGroup is, in the store record.
  /// A recover that inserts reads so many records at once and passes over one that is cut off; 0: one by one, and one
  /// that is cut off counts.
  std::uint32_t insert_chunk = 0;
  bool inserts_one_chunk = false;  ///< And no more.

  // Of an incremental recover:
  bool looks_up_first = false;                   ///< The entry points, before the table is opened, not after.
  bool may_be_missing_incrementally = false;     ///< The table: then there is nothing to apply.
  const char16_t* needed_for_changes = nullptr;  ///< An entry point that must be there, although it is not called.

  // What a failing step on the table is flagged with.
  StepFlag exported = kNoFlag;
  StepFlag written = kNoFlag;  ///< Only the writing of the records.
  StepFlag inserted = kNoFlag;
  StepFlag applied = inserted;  ///< In an incremental recover.
};

/// How a table from the desktop is applied.
enum class ApplyForm : std::uint8_t { kInsertOnly, kInsertOrUpdate };

/// What is known while a desktop's records are applied.
struct Applying {
  ApplyForm form;
  const ChangeList& changes;
  IdMap& id_map;

  /// What is to be done with a record: kNew, kModified, or anything else to pass it over.
  Operation Wanted(std::uint32_t table, std::uint32_t id) const {
    return form == ApplyForm::kInsertOnly ? Operation::kNew : changes.Lookup(table, id);
  }
};

/// Takes ids in runs of at most `batch`, in their order. `step` is called with each run; the first failure ends it.
template <typename Step>
Result ForEachBatch(std::span<const std::uint32_t> ids, std::size_t batch, Step step) {
  while (!ids.empty()) {
    const std::size_t count = std::min(ids.size(), batch);
    if (const Result done = step(std::span(ids.data(), count)); IsFailure(done)) return done;
    ids = {ids.data() + count, ids.size() - count};
  }
  return Result::kOk;
}

class RecordTable {
 public:
  /// `names` and `facts` must outlive the table.
  RecordTable(const Library& store, std::uint32_t number, const TableNames& names, const RecordTableFacts& facts)
      : store_(store), number_(number), names_(names), facts_(facts) {}
  RecordTable(const RecordTable&) = delete;
  RecordTable& operator=(const RecordTable&) = delete;

  std::uint32_t number() const { return number_; }
  const TableNames& names() const { return names_; }
  const RecordTableFacts& facts() const { return facts_; }

  /// What the step about to begin needs: what counts and lists records, and for an export what reads them.
  enum class Use : std::uint8_t { kList, kListAndRead };
  /// Looks the entry points up. False when one is missing.
  [[nodiscard]] bool LookUp(Use use);
  [[nodiscard]] virtual bool LookUpForApplying(ApplyForm form);

  /// Lists the records. kTable0Empty or kTable1Empty when there are none; kCountFailed, kNoMemory, kSyncInfoFailed.
  Result ListRecords(SyncInfoList& info);
  /// Fills cleared records. False when the store fails.
  [[nodiscard]] bool Read(std::span<const std::uint32_t> ids, void* records) const;

  /// Reads the records of these ids and writes them to the exchange table. When it is not open it is created as soon as
  /// the first records are there. kNoMemory, kReadFailed, kFileFailed.
  virtual Result ExportRecords(std::span<const std::uint32_t> ids, const char16_t* path, File& exchange_table);

  /// Reads the next record and inserts, updates or passes over it. `more` is false at the end of the table.
  /// kFileUnreadable, kNoMemory, kInsertFailed, kUpdateFailed.
  virtual Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more);

 protected:
  ~RecordTable() = default;

  /// For tables that update where others insert.
  [[nodiscard]] bool LookUpUpdate() { return update_.LookUp(store_, facts_.calls.update); }
  const StoreFunction& update() const { return update_; }

  /// Points a record at what its references now mean, before it goes to the store.
  virtual void Repoint(std::uint8_t* store_record, const IdMap& id_map) const;
  /// Inserts, updates or passes over the record that came as `id`.
  Result Put(const Applying& applying, std::uint32_t id, const void* record, std::uint32_t group = 0);
  /// Inserts the record that came as arguments.id. kInsertFailed, kNoMemory.
  virtual Result Insert(const Applying& applying, Arguments arguments);

 private:
  /// The next record's fixed part; null at the end. kNoMemory, kFileUnreadable.
  Result NextRecord(File& exchange_table, ApplyForm form, const std::uint8_t*& record);
  Result NextOfChunk(File& exchange_table, const std::uint8_t*& record);
  bool IsCounted() const { return facts_.uncounted_room == 0; }
  Result Count(std::uint32_t& count) const;
  Result EmptyResult() const { return number_ == kMainTable ? Result::kTable0Empty : Result::kTable1Empty; }
  bool WriteRecord(File& exchange_table, std::uint32_t id, const std::uint8_t* record);

  const Library& store_;
  const std::uint32_t number_;
  const TableNames& names_;
  const RecordTableFacts& facts_;
  StoreFunction count_;
  StoreFunction list_;
  StoreFunction read_;
  StoreFunction insert_;
  StoreFunction update_;
  List<std::uint8_t> exchange_records_;  ///< One, or a chunk.
  std::size_t next_of_chunk_ = 0;        ///< In bytes.
  bool has_read_chunk_ = false;
  List<std::uint8_t> store_record_;
};

/// A table that is its facts and nothing else.
class PlainTable final : public RecordTable {
 public:
  using RecordTable::RecordTable;
};

/// Queues the ids to export: all of them without a change list; otherwise those of the records that are new or changed
/// since the table's snapshot, and appends the changes to the list. kFileFailed when it cannot be written, kNoMemory; a
/// snapshot that cannot be loaded is flagged StepFlag::kSnapshotRead.
Result QueueRecords(const RecordTable& table, File* change_list, SyncInfoList& info);

/// Exports a table that was looked up: all its records, or with a change list those that changed. kFileFailed, or as
/// ListRecords, QueueRecords and ExportRecords.
Result ExportTable(RecordTable& table, const char16_t* path, File* change_list);

/// Applies an exchange table. kFileFailed when there is none, kEntryPointMissing, or as ApplyRecord.
Result ApplyTable(RecordTable& table, const char16_t* path, const Applying& applying);

/// Rewrites the table's snapshot log from the store. An empty log for an empty table, which is told; kFileFailed,
/// kEntryPointMissing, or as ListRecords.
Result WriteSnapshot(RecordTable& table);

}  // namespace qv

#endif  // QV_SYNC_RECORD_TABLE_H
