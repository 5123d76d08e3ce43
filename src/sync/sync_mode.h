// The modes of a synchronisation, and what follows from each.
#ifndef QV_SYNC_SYNC_MODE_H
#define QV_SYNC_SYNC_MODE_H

#include <cstdint>

namespace qv {

/// Any number can come from the desktop; comparisons are signed, so that a negative mode behaves like kFull.
enum class SyncMode : std::int32_t {
  kFull = 1,          ///< All records.
  kReplace = 2,       ///< As kFull; a recover empties the store first. Some modules empty it in further modes.
  kIncremental = 3,   ///< Only what changed.
  kPlainCopy = 4,     ///< This and above: all records, and nothing remembered.
  kLocalRecover = 5,  ///< What recovers asked for on the handset itself run with.
};

/// Whether the run leaves an anchor, snapshots and, after a recover, an id map file.
constexpr bool IsRemembered(SyncMode mode) {
  return mode < SyncMode::kPlainCopy;
}

}  // namespace qv

#endif  // QV_SYNC_SYNC_MODE_H
