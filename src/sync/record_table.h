// One table of a store whose records pass through one form and one set of entry points, told as facts. What such a
// table does differently from others stands in its facts, or in a class of its module's that overrides the step.
#ifndef QV_SYNC_RECORD_TABLE_H
#define QV_SYNC_RECORD_TABLE_H

#include <cstdint>
#include <span>

#include "platform/file.h"
#include "platform/library.h"
#include "sync/file_forms.h"
#include "sync/procedure.h"
#include "sync/store_function.h"

namespace qv {

struct RecordTableFacts {
  // Of these only `count` does not answer a status: it answers the number of records.
  EntryPoint count;
  EntryPoint list;
  EntryPoint read;
  EntryPoint insert;
  EntryPoint update;

  SyncInfoForm sync_info = kFileTimeForm;
  std::uint32_t read_batch = 0;  ///< Records asked for in one call; 0: all of them.
  std::uint32_t read_room = 0;   ///< Records that one call has room for, if more: the store may use what lies behind.

  /// Conversions of a whole record, for forms with fields that the module works out; otherwise the form's own.
  void (*to_exchange)(const std::uint8_t* store, std::uint8_t* exchange) = nullptr;
  void (*to_store)(const std::uint8_t* exchange, std::uint8_t* store) = nullptr;

  /// What an exchange table that cannot be written is flagged with.
  StepFlag table_written = kNoFlag;
  /// An export keeps the exchange table open from before the store lists its records; otherwise it creates it empty
  /// then, and anew when there are records to write.
  bool keeps_table_open = false;
  /// In an incremental recover the entry points are looked up before the table is opened, not after.
  bool looks_up_first = false;

  layout::Slot incoming_id = layout::U32(0);  ///< Where a record of the exchange table says who it is.
  /// Where an exported record is given the id that it was listed under; nowhere: the record itself says who it is.
  layout::Slot listed_id = {};
  layout::Slot group = {};  ///< What Argument::kGroup is, in the store record.
};

/// What is known while a desktop's records are applied.
struct Applying {
  ApplyForm form;
  const ChangeList& changes;
  IdMap& id_map;
};

class RecordTable : public StoreTable {
 public:
  /// `names` and `facts` must outlive the table.
  RecordTable(const Library& store, std::uint32_t number, const TableNames& names, const RecordTableFacts& facts)
      : StoreTable(number, names, facts.sync_info), store_(store), facts_(facts) {}

  bool LookUp(Use use) override;
  Result Count(std::uint32_t* count) override;
  Result GetSyncInfo(std::uint32_t* count, void* entries) override;

  bool KeepsTableOpen() const { return facts_.keeps_table_open; }
  /// Reads the records of these ids and writes them to the exchange table. When it is not open it is created anew as
  /// soon as the first records are there. kNoMemory, kReadFailed, kFileFailed.
  virtual Result ExportRecords(std::span<const std::uint32_t> ids, const char16_t* path, File& exchange_table);

  bool LooksUpFirst(ApplyForm form) const { return facts_.looks_up_first && form == ApplyForm::kInsertOrUpdate; }
  /// Looks up what the form needs.
  [[nodiscard]] bool LookUpForApplying(ApplyForm form);
  /// Reads the next record and inserts, updates or passes over it. `more` is false at the end of the table, and after a
  /// failure: kFileUnreadable, kNoMemory, kInsertFailed, kUpdateFailed.
  virtual Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more);

 protected:
  ~RecordTable() = default;

  /// Points a record at what its references now mean, before it goes to the store.
  virtual void Repoint(std::uint8_t* /*store_record*/, const IdMap& /*id_map*/) const {}

  /// False when the store fails.
  [[nodiscard]] bool Read(std::span<const std::uint32_t> ids, void* records) const;
  /// Inserts, updates or passes over the record that came as `id`.
  Result Put(const Applying& applying, std::uint32_t id, const void* record, std::uint32_t group);

 private:
  bool WriteRecord(File& exchange_table, std::uint32_t id, const std::uint8_t* record);

  const Library& store_;
  const RecordTableFacts& facts_;
  StoreFunction count_;
  StoreFunction list_;
  StoreFunction read_;
  StoreFunction insert_;
  StoreFunction update_;
  List<std::uint8_t> exchange_record_;
  List<std::uint8_t> store_record_;
};

/// Lists a table that was looked up, and exports its records: all, or with a change list those that changed.
/// kFileFailed, EmptyResult, or as ListRecords, QueueRecords and ExportRecords.
Result ExportListed(RecordTable& table, const ExchangeDirectory& directory, File* change_list);

/// As ExportListed for a table that is looked up first. kEntryPointMissing.
Result ExportTable(RecordTable& table, const ExchangeDirectory& directory, File* change_list);

/// Deletes records, by table number, each table's in one call, which is not made for none. kEntryPointMissing,
/// kDeleteFailed.
Result DeleteRecords(const Library& store, const EntryPoint& erase, std::span<const List<std::uint32_t>> deletions);

/// Deletes all that a store holds. kEntryPointMissing, kWipeFailed.
Result EmptyStore(const Library& store, const EntryPoint& erase_all);

/// Applies an exchange table. kFileFailed when there is none, kEntryPointMissing, or as ApplyRecord.
Result ApplyTable(RecordTable& table, const ExchangeDirectory& directory, const Applying& applying);

}  // namespace qv

#endif  // QV_SYNC_RECORD_TABLE_H
