// Files that are a run of entries of one size: snapshots, change lists, id maps. Entries pass through a small buffer,
// so that a list of any length costs few calls and little memory.
#ifndef QV_SYNC_ENTRY_FILE_H
#define QV_SYNC_ENTRY_FILE_H

#include <array>
#include <cstddef>
#include <iterator>
#include <type_traits>

#include "platform/file.h"
#include "sync/result.h"

namespace qv {

/// Entries that pass in one call.
template <typename Entry>
requires std::is_trivially_copyable_v<Entry>  // They lie in files as they lie in memory.
using EntryBuffer = std::array<Entry, 64>;

template <typename Entry>
class EntryWriter {
 public:
  explicit EntryWriter(File& file) : file_(file) {}

  /// False when the file could not take what was written so far.
  [[nodiscard]] bool Append(const Entry& entry) {
    entries_[count_++] = entry;
    return count_ < entries_.size() || Flush();
  }

  /// Must be called after the last Append: until then entries wait in the buffer.
  [[nodiscard]] bool Flush() {
    const std::size_t bytes = count_ * sizeof(Entry);
    count_ = 0;
    return bytes == 0 || file_.Write(entries_.data(), bytes);
  }

 private:
  File& file_;
  EntryBuffer<Entry> entries_;
  std::size_t count_ = 0;
};

/// Hands each whole entry of a file to `take`, which answers a Result, until one fails; a torn one at the end of the
/// file is passed over. kFileFailed when there is no file, kFileUnreadable, or what `take` answers.
template <typename Entry, typename Take>
Result ForEachEntry(const char16_t* path, Take take) {
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  for (;;) {
    EntryBuffer<Entry> entries;
    std::size_t got = 0;
    if (!file.Read(entries.data(), sizeof(entries), got)) return Result::kFileUnreadable;
    const std::size_t count = got / sizeof(Entry);
    if (count == 0) return Result::kOk;
    for (std::size_t i = 0; i < count; ++i) {
      if (const Result taken = take(entries[i]); IsFailure(taken)) return taken;
    }
  }
}

/// Writes a file of these entries. kFileFailed.
template <typename Entries>
Result WriteEntries(File& file, const Entries& entries) {
  EntryWriter<std::remove_cvref_t<decltype(*std::begin(entries))>> writer(file);
  for (const auto& entry : entries) {
    if (!writer.Append(entry)) return Result::kFileFailed;
  }
  return writer.Flush() ? Result::kOk : Result::kFileFailed;
}

}  // namespace qv

#endif  // QV_SYNC_ENTRY_FILE_H
