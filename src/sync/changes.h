// What changed in a store table since its snapshot was taken: the heart of an incremental export.
#ifndef QV_SYNC_CHANGES_H
#define QV_SYNC_CHANGES_H

#include <algorithm>
#include <cstdint>
#include <span>

#include "platform/file.h"
#include "platform/memory.h"
#include "sync/entry_file.h"
#include "sync/file_forms.h"
#include "sync/result.h"

namespace qv {

/// A store table's records as the store lists them, and then, in the same memory, the ids of those to export: of
/// 100,000 records neither list needs room of its own.
class SyncInfoList {
 public:
  /// Room for `count` entries, which are zero: a store may claim more than it fills. False without memory, and for a
  /// count that no handset holds.
  [[nodiscard]] bool Resize(std::uint32_t count) {
    if (!entries_.Resize(count)) return false;
    std::fill(entries_.begin(), entries_.end(), SyncInfoEntry{});
    return true;
  }
  /// A store may list fewer records than it counted.
  void Shrink(std::uint32_t count) { (void)entries_.Resize(count < entries_.size() ? count : entries_.size()); }

  SyncInfoEntry* data() { return entries_.data(); }
  std::uint32_t size() const { return static_cast<std::uint32_t>(entries_.size()); }
  std::span<const SyncInfoEntry> entries() const { return {entries_.data(), entries_.size()}; }

  /// Queues the id of entry `position`, which must not be looked at again; positions are given in ascending order.
  void QueueId(std::size_t position) { Words()[queued_++] = entries_[position].id; }
  void QueueAll() {
    for (std::size_t i = 0; i < entries_.size(); ++i) QueueId(i);
  }
  std::span<const std::uint32_t> QueuedIds() { return {Words(), queued_}; }

 private:
  std::uint32_t* Words() { return reinterpret_cast<std::uint32_t*>(entries_.data()); }

  List<SyncInfoEntry> entries_;
  std::size_t queued_ = 0;
};

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

 private:
  friend Result CompareWithSnapshot(std::uint32_t table, SyncInfoList& current, const Snapshot& snapshot,
                                    EntryWriter<ChangeRecord>& changes);
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
