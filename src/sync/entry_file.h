// Files that are a run of entries of one size: snapshots, change lists, id maps. Entries pass through a small buffer,
// so that a list of any length costs few calls and little memory.
#ifndef QV_SYNC_ENTRY_FILE_H
#define QV_SYNC_ENTRY_FILE_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "platform/file.h"

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

}  // namespace qv

#endif  // QV_SYNC_ENTRY_FILE_H
