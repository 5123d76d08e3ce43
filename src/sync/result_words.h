// The results in words, for those who read them: the desktop's tool and docs/RESULTS. The agent itself says numbers
// only.
#ifndef QV_SYNC_RESULT_WORDS_H
#define QV_SYNC_RESULT_WORDS_H

#include <cstdint>

#include "sync/result.h"

namespace qv {

/// Which runs a code can come from.
enum class Directions : std::uint8_t { kBoth, kExport, kRecover, kNone };

struct CodeWords {
  Result code;
  Directions directions;  ///< kNone: told between steps, never reported.
  const char* what;       ///< What went wrong.
  const char* advice;     ///< What to look at.
};

inline constexpr CodeWords kCodeWords[] = {
    {Result::kOk, Directions::kBoth, "success", ""},
    {Result::kStoreNotLoaded, Directions::kBoth, "the store library could not be loaded",
     "check that the store's DLL is on the handset"},
    {Result::kEntryPointMissing, Directions::kBoth, "the store library lacks an entry point that the step needs",
     "the store's DLL is of another version"},
    {Result::kWipeFailed, Directions::kRecover, "the store refused to delete all its records",
     "some of its records may be gone, and no record was applied yet; try again"},
    {Result::kCountFailed, Directions::kBoth, "the store could not count its records",
     "the store's database may be damaged"},
    {Result::kSyncInfoFailed, Directions::kBoth, "the store could not list its record ids and times",
     "the store's database may be damaged"},
    {Result::kReadFailed, Directions::kBoth, "the store could not read a record, or look one up by its name",
     "the store's database may be damaged, or the desktop names a record that is gone"},
    {Result::kInsertFailed, Directions::kRecover, "the store refused to insert a record, or its configuration",
     "deletions and records before it were applied, without an id map; the exchange files are kept"},
    {Result::kUpdateFailed, Directions::kRecover,
     "the store refused to update a record, its configuration or the clock",
     "the exchange files are kept; in a module of records: the desktop may name one that is gone, and deletions and "
     "what came before it were applied, without an id map"},
    {Result::kDeleteFailed, Directions::kRecover, "the store refused to delete records",
     "other deletions may have been applied, but no record; the exchange files are kept"},
    {Result::kRefused502, Directions::kRecover, "the store refused to insert records, for its reason -502",
     "records before them were applied; the exchange files are kept"},
    {Result::kRefused503, Directions::kRecover, "the store refused to insert records, for its reason -503",
     "records before them were applied; the exchange files are kept"},
    {Result::kNoMemory, Directions::kBoth, "not enough memory", "close programs on the handset and try again"},
    {Result::kNoChangeList, Directions::kBoth,
     "there was no memory for the change list, or for the records it tells of",
     "close programs on the handset and try again"},
    {Result::kFileFailed, Directions::kBoth, "a file could not be opened, created or written whole",
     "check that the directory exists, that its path has at most 259 characters, and that there is free space"},
    {Result::kFileUnreadable, Directions::kBoth,
     "a file could not be read, or holds a count or an index that cannot be",
     "the file or its medium is damaged; it was kept"},
    {Result::kTable0Empty, Directions::kNone, "table 0 of the store is empty", "not a failure"},
    {Result::kTable1Empty, Directions::kNone, "table 1 of the store is empty", "not a failure"},
};

/// Which runs a step's flag belongs to.
enum class Direction : std::uint8_t { kExport, kRecover };
enum class Modes : std::uint8_t { kAny, kIncremental, kOtherThanIncremental };

struct StepWords {
  Direction direction;
  Modes modes;
  StepFlag flag;
  const char* step;  ///< Completes "failed while ...".
};

}  // namespace qv

#endif  // QV_SYNC_RESULT_WORDS_H
