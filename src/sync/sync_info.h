// What a store says of its records when it lists them: who they are, and when they changed. Stores say so in several
// forms; everything behind this file knows one.
#ifndef QV_SYNC_SYNC_INFO_H
#define QV_SYNC_SYNC_INFO_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/memory.h"
#include "sync/file_forms.h"

namespace qv {

/// How the entries of a store's list lie: the id at 0, and behind it a time.
struct SyncInfoForm {
  enum class Time : std::uint8_t {
    kFileTime,    ///< Two words, the low one first.
    kSystemTime,  ///< A SYSTEMTIME, of which day of the week and milliseconds do not count.
    kSixWords,    ///< Year, month, day, hour, minute and second in 16 bits each.
    kText,        ///< UTF-16, 14 digits of the same.
  };
  std::uint16_t entry_size;  ///< As long as a SnapshotEntry or longer: see HasRoom.
  std::uint16_t time_offset;
  Time time;
};

/// Whether SyncInfoList can make snapshot entries of these in their own memory: none is overwritten before it is read.
constexpr bool HasRoom(const SyncInfoForm& form) {
  return form.entry_size >= sizeof(SnapshotEntry);
}

/// As SyncInfoEntry says.
inline constexpr SyncInfoForm kFileTimeIn16Bytes = {sizeof(SyncInfoEntry), offsetof(SyncInfoEntry, time_low),
                                                    SyncInfoForm::Time::kFileTime};
/// As the snapshot log has it.
inline constexpr SyncInfoForm kFileTimeIn12Bytes = {sizeof(SnapshotEntry), offsetof(SnapshotEntry, time_low),
                                                    SyncInfoForm::Time::kFileTime};

/// A store table's records as the store lists them, and then, in the same memory, the ids of those to export: of
/// 100,000 records neither list needs room of its own.
class SyncInfoList {
 public:
  /// Room for `count` entries of this form, which are zero: a store may claim more than it fills. False without memory,
  /// and for a count that no handset holds.
  [[nodiscard]] bool Resize(std::uint32_t count, const SyncInfoForm& form);
  void* data() { return bytes_.data(); }
  /// Takes the first `count` entries, or as many as there is room for, for what the store listed. A time that does not
  /// exist becomes the FILETIME 0.
  void Take(std::uint32_t count);

  std::span<const SnapshotEntry> entries() const {
    return {reinterpret_cast<const SnapshotEntry*>(bytes_.data()), count_};
  }

  /// Queues the id of entry `position`, which must not be looked at again; positions are given in ascending order.
  void QueueId(std::size_t position) { Words()[queued_++] = entries()[position].id; }
  void QueueAll() {
    for (std::size_t i = 0; i < count_; ++i) QueueId(i);
  }
  std::span<const std::uint32_t> QueuedIds() { return {Words(), queued_}; }

 private:
  std::uint32_t* Words() { return reinterpret_cast<std::uint32_t*>(bytes_.data()); }

  List<std::uint8_t> bytes_;
  SyncInfoForm form_ = kFileTimeIn16Bytes;
  std::size_t count_ = 0;
  std::size_t queued_ = 0;
};

}  // namespace qv

#endif  // QV_SYNC_SYNC_INFO_H
