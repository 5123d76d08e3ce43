// Files: a file of the handset is a file below its root. Reading and writing are the host's unbuffered calls of the
// sizes asked for, so that what is measured here is what the agent does.
#include "host/handset/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <vector>

#include "host/handset/faults.h"
#include "host/handset/objects.h"
#include "host/handset/paths.h"
#include "host/handset/storage.h"

namespace handset {
namespace {

using coredll::BOOL;
using coredll::DWORD;

// What a file is opened for, in the bits by which a share mode allows it to others.
constexpr DWORD kReading = coredll::FILE_SHARE_READ;
constexpr DWORD kWriting = 2;

DWORD UseOf(DWORD access) {
  return ((access & coredll::GENERIC_READ) != 0 ? kReading : 0) |
         ((access & coredll::GENERIC_WRITE) != 0 ? kWriting : 0);
}

class File;
std::vector<const File*> open_files;

class File : public Object {
 public:
  File(std::u16string_view name, const std::filesystem::path& path, DWORD use, DWORD share)
      : Object(name), path_(path), use_(use), share_(share) {
    open_files.push_back(this);
  }
  ~File() override {
    std::erase(open_files, this);
    if (descriptor_ >= 0) close(descriptor_);
  }

  bool Open(int flags) {
    constexpr int kFlagsOfUse[] = {O_RDONLY, O_RDONLY, O_WRONLY, O_RDWR};
    descriptor_ = open(path_.c_str(), kFlagsOfUse[use_] | flags | O_CLOEXEC, 0666);
    return descriptor_ >= 0;
  }
  int Descriptor() const { return descriptor_; }
  bool IsFor(DWORD use) const { return (use_ & use) != 0; }
  bool IsAt(const std::filesystem::path& path) const { return path_ == path; }
  bool Shares(DWORD use, DWORD share) const { return (use & ~share_) == 0 && (use_ & ~share) == 0; }

 private:
  std::filesystem::path path_;
  DWORD use_, share_;
  int descriptor_ = -1;
};

// The open file, or null with the last error set when it is not open or not open for this.
File* FileFor(coredll::HANDLE handle, DWORD use) {
  auto* file = ObjectOf<File>(handle);
  return file != nullptr && !file->IsFor(use) ? Fail<File*>(Error::kAccessDenied, nullptr) : file;
}

// Why a path cannot be opened as this disposition asks; Error::kNone when it can.
Error Obstacle(const std::filesystem::path& path, DWORD disposition) {
  if (disposition != coredll::CREATE_ALWAYS && disposition != coredll::OPEN_EXISTING) return Error::kInvalidParameter;
  if (IsDirectory(path)) return Error::kAccessDenied;
  if (!IsDirectory(path.parent_path())) return Error::kPathNotFound;
  return disposition == coredll::OPEN_EXISTING && !IsFile(path) ? Error::kFileNotFound : Error::kNone;
}

bool IsOpenAgainst(const std::filesystem::path& path, DWORD use, DWORD share) {
  return std::ranges::any_of(open_files,
                             [&](const File* file) { return file->IsAt(path) && !file->Shares(use, share); });
}

std::uint64_t SizeOf(const std::filesystem::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

// Null, with the last error set, when it cannot be opened.
std::unique_ptr<File> Open(std::u16string_view name, DWORD use, DWORD share, DWORD disposition) {
  const auto refuse = [](Error error) { return Fail(error, std::unique_ptr<File>()); };
  // No file of the handset can have such a name, though the host's could.
  if (name.find_first_of(u"*?<>|\":") != std::u16string_view::npos) return refuse(Error::kInvalidName);
  const std::filesystem::path path = HostPath(name);
  if (const Error obstacle = Obstacle(path, disposition); obstacle != Error::kNone) return refuse(obstacle);
  if (IsOpenAgainst(path, use, share)) return refuse(Error::kSharingViolation);

  const bool creates = disposition == coredll::CREATE_ALWAYS;
  const bool existed = creates && IsFile(path);
  const std::uint64_t truncated = creates ? SizeOf(path) : 0;
  auto file = std::make_unique<File>(name, path, use, share);
  if (!file->Open(creates ? O_CREAT | O_TRUNC : 0)) return refuse(ErrorFromErrno());
  GiveBackRoom(truncated);
  SetLastError(existed ? Error::kAlreadyExists : Error::kNone);
  return file;
}

BOOL Delete(std::u16string_view name) {
  const std::filesystem::path path = HostPath(name);
  if (const Error obstacle = Obstacle(path, coredll::OPEN_EXISTING); obstacle != Error::kNone) {
    return Fail(obstacle, kFalse);
  }
  const auto is_open = std::ranges::any_of(open_files, [&](const File* file) { return file->IsAt(path); });
  if (is_open) return Fail(Error::kSharingViolation, kFalse);
  const std::uint64_t size = SizeOf(path);
  if (unlink(path.c_str()) != 0) return Fail(ErrorFromErrno(), kFalse);
  GiveBackRoom(size);
  return kTrue;
}

BOOL Write(const File& file, const void* buffer, DWORD size, DWORD& written) {
  const DWORD fitting = TakeRoom(file.Descriptor(), size);
  const ssize_t done = write(file.Descriptor(), buffer, fitting);
  const Error error = done < 0 ? ErrorFromErrno() : Error::kDiskFull;
  if (done < 0 && error != Error::kDiskFull) return Fail(error, kFalse);
  written = done < 0 ? 0 : static_cast<DWORD>(done);
  // A full disk is no failure to this system: the call succeeds, and only the count tells.
  if (written < size) SetLastError(Error::kDiskFull);
  return kTrue;
}

// False, with the last error set, when the file cannot be read to its end or the other not hold it.
bool CopyContents(const File& from, const File& to) {
  std::vector<char> buffer(1 << 16);
  for (;;) {
    const ssize_t got = read(from.Descriptor(), buffer.data(), buffer.size());
    if (got < 0) return Fail(ErrorFromErrno(), false);
    if (got == 0) return true;
    DWORD written = 0;
    if (Write(to, buffer.data(), static_cast<DWORD>(got), written) == kFalse) return false;
    if (written < static_cast<DWORD>(got)) return Fail(Error::kDiskFull, false);
  }
}

// What could not be copied whole is taken away again.
BOOL Copy(std::u16string_view from, std::u16string_view to, bool replace) {
  const auto source = Open(from, kReading, kReading, coredll::OPEN_EXISTING);
  if (source == nullptr) return kFalse;
  if (!replace && IsFile(HostPath(to))) return Fail(Error::kFileExists, kFalse);
  auto target = Open(to, kWriting, 0, coredll::CREATE_ALWAYS);
  if (target == nullptr) return kFalse;
  if (CopyContents(*source, *target)) return kTrue;
  target.reset();
  const auto error = static_cast<Error>(coredll::GetLastError());
  Delete(to);
  return Fail(error, kFalse);
}

}  // namespace

unsigned CountOpenFiles() {
  return static_cast<unsigned>(open_files.size());
}

}  // namespace handset

namespace coredll {

using namespace handset;

HANDLE CreateFileW(const char16_t* name, DWORD access, DWORD share, void*, DWORD disposition, DWORD, HANDLE) {
  return PlatformCall({"CreateFileW", View(name), 0, {access, share, disposition}}, INVALID_HANDLE_VALUE, [&] {
    auto file = Open(View(name), UseOf(access), share, disposition);
    return file == nullptr ? INVALID_HANDLE_VALUE : AddObject(std::move(file));
  });
}

BOOL ReadFile(HANDLE handle, void* buffer, DWORD size, DWORD* read, void*) {
  *read = 0;
  const auto read_some = [&] {
    const File* file = FileFor(handle, kReading);
    if (file == nullptr) return kFalse;
    const ssize_t done = ::read(file->Descriptor(), buffer, size);
    if (done < 0) return Fail(ErrorFromErrno(), kFalse);
    *read = static_cast<DWORD>(done);
    return kTrue;
  };
  return PlatformCall({"ReadFile", ObjectName(handle), size}, kFalse, read_some, &size);
}

BOOL WriteFile(HANDLE handle, const void* buffer, DWORD size, DWORD* written, void*) {
  *written = 0;
  const auto write = [&] {
    const File* file = FileFor(handle, kWriting);
    return file == nullptr ? kFalse : Write(*file, buffer, size, *written);
  };
  return PlatformCall({"WriteFile", ObjectName(handle), size}, kFalse, write, &size);
}

DWORD GetFileSize(HANDLE handle, DWORD* high) {
  return PlatformCall({"GetFileSize", ObjectName(handle), 0}, INVALID_FILE_SIZE, [&]() -> DWORD {
    const auto* file = ObjectOf<File>(handle);
    struct stat status {};
    if (file == nullptr) return INVALID_FILE_SIZE;
    if (fstat(file->Descriptor(), &status) != 0) return Fail(ErrorFromErrno(), INVALID_FILE_SIZE);
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (high != nullptr) *high = static_cast<DWORD>(size >> 32);
    return static_cast<DWORD>(size);
  });
}

BOOL CopyFileW(const char16_t* from, const char16_t* to, BOOL fail_if_exists) {
  return PlatformCall({"CopyFileW", View(from), 0, {static_cast<std::uint32_t>(fail_if_exists)}}, kFalse,
                      [&] { return Copy(View(from), View(to), fail_if_exists == kFalse); });
}

BOOL DeleteFileW(const char16_t* name) {
  return PlatformCall({"DeleteFileW", View(name), 0}, kFalse, [&] { return Delete(View(name)); });
}

}  // namespace coredll
