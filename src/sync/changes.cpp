// Compares a store's list with its snapshot in one pass over each.
#include "sync/changes.h"

#include <algorithm>

namespace qv {

Result Snapshot::Load(const char16_t* path) {
  return ForEachEntry<SnapshotEntry>(
      path, [&](const SnapshotEntry& entry) { return Append(entry) ? Result::kOk : Result::kNoMemory; });
}

Result CompareWithSnapshot(std::uint32_t table, SyncInfoList& current, const Snapshot& snapshot,
                           EntryWriter<ChangeRecord>& changes) {
  const auto& known = snapshot.entries();
  List<bool> still_there;  // Of each id's first snapshot entry.
  if (!still_there.Resize(known.size())) return Result::kNoMemory;
  std::fill(still_there.begin(), still_there.end(), false);

  for (std::size_t i = 0; i < current.entries().size(); ++i) {
    const SnapshotEntry entry = current.entries()[i];
    const std::size_t position = known.Find({entry.id});
    const bool is_new = position == known.kAbsent;
    if (!is_new) {
      still_there[position] = true;
      const SnapshotEntry& before = known[position];
      if (before.time_low == entry.time_low && before.time_high == entry.time_high) continue;
    }
    if (!changes.Append({table, entry.id, is_new ? Operation::kNew : Operation::kModified})) return Result::kFileFailed;
    current.QueueId(i);
  }
  for (std::size_t i = 0; i < known.size(); ++i) {
    if (still_there[i] || still_there[known.Find({known[i].id})]) continue;
    if (!changes.Append({table, known[i].id, Operation::kDeleted})) return Result::kFileFailed;
  }
  return changes.Flush() ? Result::kOk : Result::kFileFailed;
}

}  // namespace qv
