// Free space: the host disk's, or a bound that a test has set and that files use up as they grow.
// Only what the agent itself writes and deletes counts against the bound.
#include "host/handset/storage.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "host/handset/faults.h"
#include "host/handset/paths.h"

namespace handset {
namespace {

std::optional<std::uint64_t> room;

void Store(coredll::ULARGE_INTEGER* out, std::uint64_t value) {
  if (out != nullptr) *out = {static_cast<coredll::DWORD>(value), static_cast<coredll::DWORD>(value >> 32)};
}

}  // namespace

void SetFreeSpace(std::optional<std::uint64_t> bytes) {
  room = bytes;
}

std::uint32_t TakeRoom(int descriptor, std::uint32_t size) {
  struct stat status {};
  const off_t position = room ? lseek(descriptor, 0, SEEK_CUR) : -1;
  if (position < 0 || fstat(descriptor, &status) != 0) return size;
  const auto inside = static_cast<std::uint64_t>(std::max<off_t>(status.st_size - position, 0));
  const std::uint64_t taken = std::min<std::uint64_t>(size, inside + *room);
  if (taken > inside) *room -= taken - inside;
  return static_cast<std::uint32_t>(taken);
}

void GiveBackRoom(std::uint64_t bytes) {
  if (room) *room += bytes;
}

}  // namespace handset

coredll::BOOL coredll::GetDiskFreeSpaceExW(const char16_t* directory, ULARGE_INTEGER* free_to_caller,
                                           ULARGE_INTEGER* total, ULARGE_INTEGER* total_free) {
  using namespace handset;
  return PlatformCall({"GetDiskFreeSpaceExW", View(directory), 0}, kFalse, [&] {
    struct statvfs disk {};
    if (statvfs(HostPath(View(directory)).c_str(), &disk) != 0) return Fail(Error::kPathNotFound, kFalse);
    const std::uint64_t unit = disk.f_frsize;
    constexpr std::uint64_t kSystemsPart = 16;
    const std::uint64_t free = room.value_or(disk.f_bavail * unit);
    Store(free_to_caller, free - free / kSystemsPart);
    Store(total, std::max(disk.f_blocks * unit, free));
    Store(total_free, room.value_or(disk.f_bfree * unit));
    return kTrue;
  });
}
