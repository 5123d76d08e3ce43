// The entries that every module's bookkeeping files are made of, and what a store lists its records as. They lie in
// files as they lie in memory; the tables describe them to those who dump or document files. A recover holds a change
// list and an id map in the containers at the end, found by table and id.
#ifndef QV_SYNC_FILE_FORMS_H
#define QV_SYNC_FILE_FORMS_H

#include <cstddef>
#include <cstdint>

#include "layout/record_layout.h"
#include "sync/indexed_list.h"

namespace qv {

/// What a store's sync-info entry point says of one record.
struct SyncInfoEntry {
  std::uint32_t id;
  std::uint32_t unused;
  std::uint32_t time_low;  ///< Last modification, a FILETIME in two words.
  std::uint32_t time_high;
};

/// One record as the snapshot log of its table remembers it.
struct SnapshotEntry {
  std::uint32_t id;
  std::uint32_t time_low;
  std::uint32_t time_high;
};

enum class Operation : std::uint32_t { kNone = 0, kNew = 1, kModified = 2, kDeleted = 3 };

/// One entry of a change list.
struct ChangeRecord {
  std::uint32_t table;
  std::uint32_t id;
  Operation operation;
};

/// One entry of an id map: the record that came as `incoming_id` lives on the handset as `new_id`.
struct IdMapEntry {
  std::uint32_t table;
  std::uint32_t new_id;
  std::uint32_t incoming_id;
};

static_assert(sizeof(SyncInfoEntry) == 16 && sizeof(SnapshotEntry) == 12);
static_assert(sizeof(ChangeRecord) == 12 && sizeof(IdMapEntry) == 12);

inline constexpr layout::Field kSnapshotFields[] = {
    layout::FileOnly("id", layout::U32(offsetof(SnapshotEntry, id))),
    layout::FileOnly("time_low", layout::U32(offsetof(SnapshotEntry, time_low))),
    layout::FileOnly("time_high", layout::U32(offsetof(SnapshotEntry, time_high))),
};
inline constexpr layout::Field kChangeFields[] = {
    layout::FileOnly("table", layout::U32(offsetof(ChangeRecord, table))),
    layout::FileOnly("id", layout::U32(offsetof(ChangeRecord, id))),
    layout::FileOnly("operation", layout::U32(offsetof(ChangeRecord, operation))),
};
inline constexpr layout::Field kIdMapFields[] = {
    layout::FileOnly("table", layout::U32(offsetof(IdMapEntry, table))),
    layout::FileOnly("new_id", layout::U32(offsetof(IdMapEntry, new_id))),
    layout::FileOnly("incoming_id", layout::U32(offsetof(IdMapEntry, incoming_id))),
};

inline constexpr layout::RecordLayout kSnapshotLayout =
    layout::TiledLayout<0, sizeof(SnapshotEntry)>("snapshot entry", kSnapshotFields);
inline constexpr layout::RecordLayout kChangeLayout =
    layout::TiledLayout<0, sizeof(ChangeRecord)>("change record", kChangeFields);
inline constexpr layout::RecordLayout kIdMapLayout =
    layout::TiledLayout<0, sizeof(IdMapEntry)>("id map entry", kIdMapFields);

/// The change list of an incremental recover: what the desktop wants done with each record of the tables but those it
/// deletes.
class ChangeList {
 public:
  /// Room for a first entry. Without it there is no change list, which is a result of its own.
  [[nodiscard]] bool Create() { return entries_.Reserve(1); }
  [[nodiscard]] bool Append(const ChangeRecord& record) { return entries_.Append(record); }

  /// What the first entry for this record says; kNone when there is none.
  Operation Lookup(std::uint32_t table, std::uint32_t id) const {
    const std::size_t position = entries_.Find({table, id});
    return position == entries_.kAbsent ? Operation::kNone : entries_[position].operation;
  }

 private:
  static RecordKey KeyOf(const ChangeRecord& record) { return {record.table, record.id}; }
  IndexedList<ChangeRecord, RecordKey, KeyOf> entries_;
};

/// Which handset id each inserted record received.
class IdMap {
 public:
  [[nodiscard]] bool Append(std::uint32_t table, std::uint32_t new_id, std::uint32_t incoming_id) {
    return entries_.Append({table, new_id, incoming_id});
  }

  /// The handset id that a reference to a record of `table` now means: that of the first such record that came under
  /// `incoming_id`, or the reference itself when none did.
  std::uint32_t Translate(std::uint32_t table, std::uint32_t incoming_id) const {
    const std::size_t position = entries_.Find({table, incoming_id});
    return position == entries_.kAbsent ? incoming_id : entries_[position].new_id;
  }

  const IdMapEntry* begin() const { return entries_.begin(); }
  const IdMapEntry* end() const { return entries_.end(); }

 private:
  static RecordKey KeyOf(const IdMapEntry& entry) { return {entry.table, entry.incoming_id}; }
  IndexedList<IdMapEntry, RecordKey, KeyOf> entries_;
};

}  // namespace qv

#endif  // QV_SYNC_FILE_FORMS_H
