// Files that are a run of entries of one size: snapshots, change lists, id maps. Entries pass through a small buffer,
// so that a list of any length costs few calls and little memory.
#ifndef QV_SYNC_ENTRY_FILE_H
#define QV_SYNC_ENTRY_FILE_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "platform/file.h"
#include "sync/result.h"

namespace qv {

template <typename Entry>
class EntryBuffer {
  static_assert(std::is_trivially_copyable_v<Entry>, "entries lie in files as they lie in memory");

 protected:
  static constexpr std::size_t kRoom = 64;
  Entry entries_[kRoom];
};

template <typename Entry>
class EntryWriter : EntryBuffer<Entry> {
 public:
  explicit EntryWriter(File& file) : file_(file) {}

  /// False when the file could not take what was written so far.
  [[nodiscard]] bool Append(const Entry& entry) {
    this->entries_[count_++] = entry;
    return count_ < this->kRoom || Flush();
  }

  /// Must be called after the last Append: until then entries wait in the buffer.
  [[nodiscard]] bool Flush() {
    const std::size_t bytes = count_ * sizeof(Entry);
    count_ = 0;
    return bytes == 0 || file_.Write(this->entries_, bytes);
  }

 private:
  File& file_;
  std::size_t count_ = 0;
};

template <typename Entry>
class EntryReader : EntryBuffer<Entry> {
 public:
  enum class Outcome : std::uint8_t { kEntry, kEnd, kFailed };

  explicit EntryReader(File& file) : file_(file) {}

  /// The next whole entry; a torn one at the end of the file is passed over.
  Outcome Next(Entry& entry) {
    if (next_ == count_) {
      std::size_t got = 0;
      if (!file_.Read(this->entries_, sizeof(this->entries_), got)) return Outcome::kFailed;
      count_ = got / sizeof(Entry);
      next_ = 0;
      if (count_ == 0) return Outcome::kEnd;
    }
    entry = this->entries_[next_++];
    return Outcome::kEntry;
  }

 private:
  File& file_;
  std::size_t count_ = 0;
  std::size_t next_ = 0;
};

/// Hands each entry of a file to `take`, which answers a Result, until one fails. kFileFailed when there is no file,
/// kFileUnreadable, or what `take` answers.
template <typename Entry, typename Take>
Result ForEachEntry(const char16_t* path, Take take) {
  using Reader = EntryReader<Entry>;
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  Reader reader(file);
  Entry entry;
  typename Reader::Outcome outcome;
  while ((outcome = reader.Next(entry)) == Reader::Outcome::kEntry) {
    if (const Result taken = take(entry); IsFailure(taken)) return taken;
  }
  return outcome == Reader::Outcome::kEnd ? Result::kOk : Result::kFileUnreadable;
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
