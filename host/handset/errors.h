// The numbers that GetLastError answers, and the one place where they are set: the agent tells failures apart by them.
// They are the handset system's own numbers, so a test reads as its reference manual does.
#ifndef QV_HOST_HANDSET_ERRORS_H
#define QV_HOST_HANDSET_ERRORS_H

#include <string_view>

#include "platform/coredll.h"

namespace handset {

enum class Error : coredll::DWORD {
  none = 0,
  file_not_found = 2,
  path_not_found = 3,
  too_many_open_files = 4,
  access_denied = 5,
  invalid_handle = 6,
  not_enough_memory = 8,
  no_more_files = 18,
  general_failure = 31,
  sharing_violation = 32,
  invalid_parameter = 87,
  disk_full = 112,
  invalid_name = 123,
  library_not_found = 126,
  entry_point_not_found = 127,
  already_exists = coredll::ERROR_ALREADY_EXISTS,
  not_a_library = 193,
};

/// Counts what BadHandleUses tells.
void SetLastError(Error error);
void ResetErrors();

/// The number for what the host's errno says.
Error ErrorFromErrno();

/// Sets the last error and gives the value that says so: `return Fail(Error::invalid_handle, kFalse);`
template <typename Result>
Result Fail(Error error, Result failure) {
  SetLastError(error);
  return failure;
}

/// Ends the process: the handset's user did what would corrupt a real one.
[[noreturn]] void Die(std::string_view message);

}  // namespace handset

#endif  // QV_HOST_HANDSET_ERRORS_H
