// What a module answers: the code of what went wrong, and the flag of the step in which it did.
#ifndef QV_SYNC_RESULT_H
#define QV_SYNC_RESULT_H

#include <cstdint>

namespace qv {

/// A step's code, or a code with a StepFlag.
enum class [[nodiscard]] Result : std::uint32_t{
    kOk = 0,
    kStoreNotLoaded = 1,
    kEntryPointMissing = 2,
    kWipeFailed = 3,
    kCountFailed = 4,
    kSyncInfoFailed = 5,
    kReadFailed = 6,
    kInsertFailed = 7,
    kUpdateFailed = 8,
    kDeleteFailed = 9,
    kRefused502 = 10,
    kRefused503 = 11,
    kNoMemory = 16,
    kNoChangeList = 32,
    kFileFailed = 256,
    kFileUnreadable = 512,
    kTable0Empty = 4096,
    kTable1Empty = 8192,
};

/// Names the step that failed. The flags from 0x1000000 up are an enumeration, not bits, and modules give them
/// different steps; these are the ones that most modules share.
enum class StepFlag : std::uint32_t {
  kSnapshotRead = 0x100000,
  kChangeListApplied = 0x200000,
  kTable0Exported = 0x1000000,
  kTable1Exported = 0x2000000,
  kSnapshotWritten = 0x5000000,
};

/// Of a step that has none.
inline constexpr StepFlag kNoFlag{0};

constexpr Result operator|(Result result, StepFlag flag) {
  return Result{static_cast<std::uint32_t>(result) | static_cast<std::uint32_t>(flag)};
}

/// An empty store table is worth telling between steps, but it is not a failure.
constexpr bool IsFailure(Result result) {
  return result != Result::kOk && result != Result::kTable0Empty && result != Result::kTable1Empty;
}

}  // namespace qv

#endif  // QV_SYNC_RESULT_H
