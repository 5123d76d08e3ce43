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
#include "sync/exchange_directory.h"
#include "sync/file_forms.h"
#include "sync/module_names.h"
#include "sync/result.h"

namespace qv {

/// One table of a module's store, as the export steps see it.
class StoreTable {
 public:
  enum class Use : std::uint8_t { kList, kListAndRead };

  StoreTable(std::uint32_t number, const TableNames& names) : number_(number), names_(names) {}

  std::uint32_t number() const { return number_; }
  const TableNames& names() const { return names_; }
  /// What an empty table is answered with.
  Result EmptyResult() const { return number_ == kMainTable ? Result::kTable0Empty : Result::kTable1Empty; }

  /// Looks up the entry points that the step about to begin needs: those that count and list records, and for an export
  /// the one that reads them. False when one is missing.
  [[nodiscard]] virtual bool LookUp(Use use) = 0;
  virtual std::uint32_t Count() = 0;
  /// Fills `entries`, which has room for *count, and sets *count to the records there are. False when the store fails.
  [[nodiscard]] virtual bool GetSyncInfo(std::uint32_t* count, SyncInfoEntry* entries) = 0;
  /// Reads the records of these ids and appends them to the exchange table.
  virtual Result ExportRecords(std::span<const std::uint32_t> ids, File& exchange_table) = 0;

 protected:
  ~StoreTable() = default;

 private:
  std::uint32_t number_;
  const TableNames& names_;
};

/// Creates a file empty, so that a run that fails later leaves no table of an earlier one. kFileFailed.
Result CreateEmpty(const char16_t* path);

/// Writes all records of a table. EmptyResult for an empty table; kEntryPointMissing, kFileFailed, kNoMemory,
/// kSyncInfoFailed, or what ExportRecords answers.
Result ExportTable(StoreTable& table, const ExchangeDirectory& directory);

/// Appends the table's changes to the change list and writes the new and modified records. As ExportTable; a snapshot
/// that cannot be loaded is flagged StepFlag::kSnapshotRead.
Result ComputeChanges(StoreTable& table, const ExchangeDirectory& directory, File& change_list);

/// Reads records from a store in batches of at most `batch` ids, in the order of `ids`, into a buffer with room for
/// `room` of them, and hands each to `write` with its id. `read` (count, ids, records) is true when the store answered.
/// kNoMemory, kReadFailed, or what `write` answers.
template <typename Read, typename Write>
Result ForEachRecord(std::span<const std::uint32_t> ids, std::uint32_t batch, std::uint32_t room,
                     std::uint32_t record_size, Read read, Write write) {
  List<std::uint8_t> records;
  if (!records.Resize(std::size_t{room} * record_size)) return Result::kNoMemory;
  std::fill(records.begin(), records.end(), std::uint8_t{0});
  while (!ids.empty()) {
    const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(ids.size(), batch));
    if (!read(count, ids.data(), records.data())) return Result::kReadFailed;
    for (std::uint32_t i = 0; i < count; ++i) {
      if (const Result written = write(ids[i], records.data() + i * record_size); IsFailure(written)) return written;
    }
    ids = {ids.data() + count, ids.size() - count};
  }
  return Result::kOk;
}

/// Rewrites the table's snapshot log from the store. EmptyResult, and an empty log, for an empty table;
/// kEntryPointMissing, kFileFailed, kNoMemory, kSyncInfoFailed.
Result WriteSnapshot(StoreTable& table);

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

/// Reads the items that follow a fixed part into the slots of its store record. kFileUnreadable also when the counts
/// exceed the slots or the file ends before the last item: nothing of such a record may be applied.
Result ReadItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                 std::uint8_t* store);

/// Writes the items of a record whose fixed part was written, one write for each run.
Result WriteItems(File& exchange_table, const layout::RecordLayout& layout, const std::uint8_t* exchange,
                  const std::uint8_t* store);

/// Writes the id map file. A file that cannot be written is not reported: the desktop then asks for a full export.
void WriteIdMap(const char16_t* path, const IdMap& map);

}  // namespace qv

#endif  // QV_SYNC_PROCEDURE_H
