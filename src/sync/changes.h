// What changed in a store table since its snapshot was taken: the heart of an incremental export.
#ifndef QV_SYNC_CHANGES_H
#define QV_SYNC_CHANGES_H

#include <cstdint>

#include "platform/file.h"
#include "sync/entry_file.h"
#include "sync/file_forms.h"
#include "sync/result.h"
#include "sync/sync_info.h"

namespace qv {

/// A snapshot log in memory.
class Snapshot {
 public:
  /// kFileFailed when there is no log, kFileUnreadable when it cannot be read, kNoMemory.
  Result Load(const char16_t* path);
  /// False without memory.
  [[nodiscard]] bool Append(const SnapshotEntry& entry) { return entries_.Append(entry); }

  struct IdKey {
    std::uint32_t id;
    bool operator==(const IdKey&) const = default;
    constexpr std::uint32_t Hash() const { return HashWord(id); }
  };
  /// Found by their ids.
  const auto& entries() const { return entries_; }

 private:
  static IdKey KeyOf(const SnapshotEntry& entry) { return {entry.id}; }
  IndexedList<SnapshotEntry, IdKey, KeyOf> entries_;
};

/// Writes the differences as change records: new and modified records in the store's order, then the deleted ones in
/// the snapshot's. A time that moved back counts as a modification. Queues the ids of new and modified records in
/// `current`. kFileFailed when the change list cannot be written, kNoMemory.
Result CompareWithSnapshot(std::uint32_t table, SyncInfoList& current, const Snapshot& snapshot,
                           EntryWriter<ChangeRecord>& changes);

}  // namespace qv

#endif  // QV_SYNC_CHANGES_H
