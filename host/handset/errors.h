// The numbers that GetLastError answers, and the one place where they are set: the agent tells failures apart by them.
// They are the handset system's own numbers.
#ifndef QV_HOST_HANDSET_ERRORS_H
#define QV_HOST_HANDSET_ERRORS_H

#include <string_view>

#include "platform/coredll.h"

namespace handset {

enum class Error : coredll::DWORD {
  kNone = 0,
  kFileNotFound = coredll::ERROR_FILE_NOT_FOUND,
  kPathNotFound = coredll::ERROR_PATH_NOT_FOUND,
  kTooManyOpenFiles = 4,
  kAccessDenied = 5,
  kInvalidHandle = 6,
  kNotEnoughMemory = 8,
  kNoMoreFiles = 18,
  kGeneralFailure = 31,
  kSharingViolation = 32,
  kFileExists = 80,
  kInvalidParameter = 87,
  kDiskFull = 112,
  kInvalidName = 123,
  kLibraryNotFound = 126,
  kEntryPointNotFound = 127,
  kAlreadyExists = coredll::ERROR_ALREADY_EXISTS,
  kNotALibrary = 193,
};

/// Counts what BadHandleUses tells.
void SetLastError(Error error);
void ResetErrors();

/// The number for what the host's errno says.
Error ErrorFromErrno();

/// Sets the last error and gives the value that says so: `return Fail(Error::kInvalidHandle, kFalse);`
template <typename Result>
Result Fail(Error error, Result failure) {
  SetLastError(error);
  return failure;
}

/// Ends the process: the handset's user did what would corrupt a real one.
[[noreturn]] void Die(std::string_view message);

}  // namespace handset

#endif  // QV_HOST_HANDSET_ERRORS_H
