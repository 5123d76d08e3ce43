// The steps that record modules share. A module's Export and Recover compose them, and name their own files, flags and
// departures where they happen.
#ifndef QV_SYNC_PROCEDURE_H
#define QV_SYNC_PROCEDURE_H

#include <algorithm>
#include <cstdint>
#include <span>

#include "platform/file.h"
#include "platform/library.h"
#include "sync/changes.h"
#include "sync/entry_file.h"
#include "sync/exchange_directory.h"
#include "sync/file_forms.h"
#include "sync/module_names.h"
#include "sync/result.h"
#include "sync/sync_mode.h"

namespace qv {

/// One table of a module's store, as the steps that list it see it.
class StoreTable {
 public:
  enum class Use : std::uint8_t { kList, kListAndRead };

  StoreTable(std::uint32_t number, const TableNames& names, const SyncInfoForm& form)
      : number_(number), names_(names), form_(form) {}

  std::uint32_t number() const { return number_; }
  const TableNames& names() const { return names_; }
  const SyncInfoForm& form() const { return form_; }
  /// What an empty table is answered with.
  Result EmptyResult() const { return number_ == kMainTable ? Result::kTable0Empty : Result::kTable1Empty; }

  /// Looks up the entry points that the step about to begin needs: those that count and list records, and for an export
  /// the one that reads them. False when one is missing.
  [[nodiscard]] virtual bool LookUp(Use use) = 0;
  /// Sets *count to the records that the list must have room for, 0 for an empty table. kCountFailed.
  virtual Result Count(std::uint32_t* count) = 0;
  /// Fills `entries`, which has room for *count of them, and sets *count to the records there are. kSyncInfoFailed;
  /// EmptyResult from a store for which a list of none is an empty table.
  virtual Result GetSyncInfo(std::uint32_t* count, void* entries) = 0;

 protected:
  ~StoreTable() = default;

 private:
  std::uint32_t number_;
  const TableNames& names_;
  const SyncInfoForm& form_;
};

/// What an export begins with: the module's tables, created empty so that a run that fails later leaves none of an
/// earlier one, and in an incremental run its change list.
class ExportFiles {
 public:
  /// kFileFailed.
  Result Create(const ExchangeDirectory& directory, const ModuleNames& names, SyncMode mode);
  /// Null in a run that is not incremental.
  File* ChangeList() { return change_list_.IsOpen() ? &change_list_ : nullptr; }

 private:
  File change_list_;
};

/// Lists a table that was looked up. EmptyResult, kCountFailed, kNoMemory, kSyncInfoFailed.
Result ListRecords(StoreTable& table, SyncInfoList& info);

/// Queues the ids to export: all of them without a change list; otherwise those of the records that are new or changed
/// since the table's snapshot, and appends the changes to the list. kFileFailed when it cannot be written, kNoMemory; a
/// snapshot that cannot be loaded is flagged StepFlag::kSnapshotRead.
Result QueueRecords(StoreTable& table, File* change_list, SyncInfoList& info);

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

/// Rewrites the table's snapshot log from the store. EmptyResult, and an empty log, for an empty table;
/// kEntryPointMissing, kFileFailed, or as ListRecords.
Result WriteSnapshot(StoreTable& table);

/// Hands each entry of a change list to `take`, until one fails. kFileFailed when there is no list, kFileUnreadable, or
/// what `take` answers.
template <typename Take>
Result ForEachChange(const char16_t* path, Take take) {
  using Reader = EntryReader<ChangeRecord>;
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  Reader reader(file);
  ChangeRecord change;
  Reader::Outcome outcome;
  while ((outcome = reader.Next(change)) == Reader::Outcome::kEntry) {
    if (const Result taken = take(change); IsFailure(taken)) return taken;
  }
  return outcome == Reader::Outcome::kEnd ? Result::kOk : Result::kFileUnreadable;
}

/// Record ids to delete, by table.
using Deletions = List<std::uint32_t>[2];

/// Reads a change list: deletions of the two tables go to `deletions`, all that is not a deletion to `changes`.
/// kFileFailed when there is none, kFileUnreadable, kNoMemory.
Result ReadChangeList(const char16_t* path, ChangeList& changes, Deletions& deletions);

/// How a table from the desktop is applied.
enum class ApplyForm : std::uint8_t { kInsertOnly, kInsertOrUpdate };

/// What is to be done with a record of an exchange table: kNew, kModified, or anything else to pass it over.
inline Operation WantedOperation(ApplyForm form, const ChangeList& changes, std::uint32_t table, std::uint32_t id) {
  return form == ApplyForm::kInsertOnly ? Operation::kNew : changes.Lookup(table, id);
}

/// Reads the fixed part of the next record: the first bytes of a request of `request` bytes, at least record_size. What
/// the end of the file cuts off reads as zero. `more` is false at the end, and after a failure: kFileUnreadable.
Result ReadRecord(File& exchange_table, std::uint8_t* record, std::size_t record_size, std::size_t request, bool& more);

/// Reads the next records of a table whose records are all fixed parts: as many as `records` has room for, which
/// receives them; what the end of the file cuts off reads as zero. `count` is 0 at the end. kFileUnreadable.
Result ReadChunk(File& exchange_table, std::size_t record_size, List<std::uint8_t>& records, std::size_t& count);

/// Reads the items that follow a fixed part into the slots of its store record. kFileUnreadable also when the counts
/// exceed the slots or the file ends before the last item: nothing of such a record may be applied.
Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store);

/// Writes the items of a record whose fixed part was written, one write for each run. False when the file cannot take
/// them.
[[nodiscard]] bool WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                              const std::uint8_t* store);

/// Writes the id map file. kFileFailed.
Result WriteIdMap(const char16_t* path, const IdMap& map);

}  // namespace qv

#endif  // QV_SYNC_PROCEDURE_H
