// GetLastError and what stands behind it. The handset keeps one number for the process, because its calls come from one
// thread.
#include "host/handset/errors.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "host/handset/faults.h"

namespace handset {
namespace {

Error last_error = Error::none;
unsigned bad_handle_uses = 0;

}  // namespace

void SetLastError(Error error) {
  last_error = error;
  if (error == Error::invalid_handle) ++bad_handle_uses;
}

void ResetErrors() {
  last_error = Error::none;
  bad_handle_uses = 0;
}

unsigned BadHandleUses() {
  return bad_handle_uses;
}

Error ErrorFromErrno() {
  switch (errno) {
    case ENOENT: return Error::file_not_found;
    case ENOTDIR:
    case ENAMETOOLONG: return Error::path_not_found;
    case EMFILE:
    case ENFILE: return Error::too_many_open_files;
    case EACCES:
    case EPERM:
    case EISDIR:
    case EROFS: return Error::access_denied;
    case ENOMEM: return Error::not_enough_memory;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return Error::disk_full;
    default: return Error::general_failure;
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
