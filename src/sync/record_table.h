// One table of a store, told as facts: what it is asked through, how its records lie, and where its steps depart from
// those of other tables. A departure that is more than a fact is a class of its module's that overrides the step.
#ifndef QV_SYNC_RECORD_TABLE_H
#define QV_SYNC_RECORD_TABLE_H

#include <algorithm>
#include <cstdint>
#include <span>

#include "platform/file.h"
#include "platform/library.h"
#include "platform/memory.h"
#include "sync/file_forms.h"
#include "sync/module_call.h"
#include "sync/module_names.h"
#include "sync/result.h"
#include "sync/store_function.h"
#include "sync/sync_info.h"

namespace qv {

/// When an export creates the exchange table, beside ModuleFacts::creates_tables_first: what is there when the store
/// fails, and which failure is told of several, is part of what desktops know.
enum class TableCreated : std::uint8_t {
  kFirst,         ///< Before the store lists its records, and kept open.
  kFirstAndAnew,  ///< Before that, empty; and anew with the first records.
  kWithRecords,   ///< With the first records; empty when there are none to write.
  kUnlessEmpty,   ///< As kWithRecords, but not at all when the store has none.
  kByModule,      ///< Not by the table's export: the module has it open, for several tables.
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

  SyncInfoForm sync_info = kFileTimeIn16Bytes;
  std::uint32_t uncounted_room = 0;  ///< The room that the list always has; 0: the records are counted before.
  bool counts_are_signed = false;    ///< A count below 0 is none. Usually it is more than there can be.
  /// A list of none is an empty table, and ends the step. Usually all records of the snapshot then count as deleted.
  bool lists_none_when_empty = false;

  std::uint32_t read_batch = 0;  ///< Records asked for in one call; 0: all of them.
  std::uint32_t read_batch_incrementally = read_batch;
  /// Records that one call has room for, if more than read_batch: the store may use what lies behind.
  std::uint32_t read_room = 0;
  TableCreated created = TableCreated::kFirst;
  TableCreated created_incrementally = created;
  /// What an incremental export answers without memory for the records.
  Result no_memory_for_changed_records = Result::kNoMemory;

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
  bool inserts_one_chunk = false;  ///< The first; records behind it are passed over.

  // Of an incremental recover:
  bool looks_up_before_table = false;         ///< The entry points are looked up before the table is opened, not after.
  bool may_be_missing_incrementally = false;  ///< Without the exchange table there is nothing to apply.
  /// An entry point that must be there when the table is applied, although it is not called.
  const char16_t* also_needed_for_changes = nullptr;

  // What a failing step on the table is flagged with.
  StepFlag exported = kNoFlag;
  StepFlag written = kNoFlag;   ///< Joined to `exported` while the records are written.
  StepFlag applied{0x3000000};  ///< By a recover; the default is that of modules with one table.
  StepFlag applied_incrementally = applied;
};

/// What is known while a desktop's records are applied.
struct Applying {
  bool incremental;  ///< Records are inserted, updated or passed over as the change list says; otherwise all inserted.
  const ChangeList& changes;
  IdMap& id_map;

  /// What is to be done with a record: kNew, kModified, or anything else to pass it over.
  Operation Wanted(std::uint32_t table, std::uint32_t id) const {
    return incremental ? changes.Lookup(table, id) : Operation::kNew;
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
  /// The table of this number in the call's names. `call` and `facts` must outlive it.
  RecordTable(const ModuleCall& call, std::uint32_t number, const RecordTableFacts& facts)
      : call_(call), number_(number), facts_(facts) {}
  RecordTable(const RecordTable&) = delete;
  RecordTable& operator=(const RecordTable&) = delete;

  std::uint32_t number() const { return number_; }
  const TableNames& names() const { return call_.names().tables[number_]; }
  const RecordTableFacts& facts() const { return facts_; }

  /// What the step about to begin needs: what counts and lists records, and for an export what reads them.
  enum class Use : std::uint8_t { kList, kListAndRead };
  /// Looks the entry points up. False when one is missing.
  [[nodiscard]] bool LookUp(Use use);

  // Of an export, once the table was looked up:

  /// All steps: lists the records, queues all of them or with a change list those that changed, and writes them.
  /// kFileFailed, or as the steps.
  Result Export(File* change_list);
  /// Lists the records. kTable0Empty or kTable1Empty when there are none; kCountFailed, kNoMemory, kSyncInfoFailed.
  Result ListRecords(SyncInfoList& info);
  /// Queues the ids to export: all of them without a change list; otherwise those of the records that are new or
  /// changed since the table's snapshot, and appends the changes to the list. kFileFailed when it cannot be written,
  /// kNoMemory; kFileFailed, kFileUnreadable and kNoMemory with StepFlag::kSnapshotRead for a snapshot that cannot be
  /// loaded.
  Result QueueRecords(File* change_list, SyncInfoList& info) const;
  /// Fills cleared records; a store that takes an id instead is asked for one at a time. False when the store fails.
  [[nodiscard]] bool Read(std::span<const std::uint32_t> ids, void* records) const;
  File CreateExchangeTable() const { return File::CreateAlways(call_.PathOf(names().exchange_file)); }

  /// Rewrites the table's snapshot log from the store. An empty log for an empty table, which is told; kFileFailed,
  /// kEntryPointMissing, or as ListRecords.
  Result WriteSnapshot();

  File OpenExchangeTable() const { return File::OpenExisting(call_.PathOf(names().exchange_file)); }
  /// Applies the exchange table. kFileFailed when there is none, kEntryPointMissing, kFileUnreadable, kNoMemory,
  /// kInsertFailed, kUpdateFailed.
  Result Apply(const Applying& applying);

 protected:
  ~RecordTable() = default;

  const Library& store() const { return call_.store(); }

  /// Reads the records of these ids, `batch` in one call, and writes them to the exchange table. When it is not open it
  /// is created as soon as the first records are there. kNoMemory, kReadFailed; kFileFailed with facts().written.
  virtual Result ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table);

  /// False when an entry point is missing.
  [[nodiscard]] virtual bool LookUpForApplying(bool incremental);
  [[nodiscard]] bool LookUpUpdate() { return update_.LookUp(store(), facts_.calls.update); }
  const StoreFunction& update() const { return update_; }

  /// Reads the next record and inserts, updates or passes over it. `more` is false at the end of the table.
  virtual Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more);
  /// Points a record at what its references now mean, before it goes to the store.
  virtual void Repoint(std::uint8_t* store_record, const IdMap& id_map) const;
  /// Inserts, updates or passes over the record of arguments.table that came as arguments.id.
  Result Put(const Applying& applying, const Arguments& arguments);
  /// Inserts such a record, and maps it. kInsertFailed, kNoMemory.
  virtual Result Insert(const Applying& applying, Arguments arguments);

  /// For WriteRecord. False without memory.
  [[nodiscard]] bool MakeRoomToWrite() { return exchange_records_.Resize(names().layout->exchange_size); }
  /// Writes a record as the one that was listed under this id.
  [[nodiscard]] bool WriteRecord(File& exchange_table, std::uint32_t id, const std::uint8_t* record);

 private:
  bool IsCounted() const { return facts_.uncounted_room == 0; }
  Result Count(std::uint32_t& count) const;
  Result EmptyResult() const { return number_ == kMainTable ? Result::kTable0Empty : Result::kTable1Empty; }
  /// The next record's fixed part; null at the end. kNoMemory, kFileUnreadable.
  Result NextRecord(File& exchange_table, bool incremental, const std::uint8_t*& record);
  Result NextOfChunk(File& exchange_table, const std::uint8_t*& record);

  const ModuleCall& call_;
  const std::uint32_t number_;
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

}  // namespace qv

#endif  // QV_SYNC_RECORD_TABLE_H
