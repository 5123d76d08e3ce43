// GetLastError and what stands behind it. The handset keeps one number for the process, because its calls come from one
// thread.
#include "host/handset/errors.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "host/handset/faults.h"

namespace handset {
namespace {

Error last_error = Error::kNone;
unsigned bad_handle_uses = 0;

}  // namespace

void SetLastError(Error error) {
  last_error = error;
  if (error == Error::kInvalidHandle) ++bad_handle_uses;
}

void ResetErrors() {
  last_error = Error::kNone;
  bad_handle_uses = 0;
}

unsigned BadHandleUses() {
  return bad_handle_uses;
}

Error ErrorFromErrno() {
  switch (errno) {
    case ENOENT: return Error::kFileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG: return Error::kPathNotFound;
    case EMFILE:
    case ENFILE: return Error::kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS: return Error::kAccessDenied;
    case ENOMEM: return Error::kNotEnoughMemory;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return Error::kDiskFull;
    default: return Error::kGeneralFailure;
  }
}

void Die(std::string_view message) {
  std::fprintf(stderr, "handset: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

}  // namespace handset

coredll::DWORD coredll::GetLastError() {
  handset::Watch({"GetLastError", {}, 0});
  return static_cast<DWORD>(handset::last_error);
}
