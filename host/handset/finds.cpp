// Searches of a directory. What matches is settled when the search begins and comes in the order of the names, so that
// the agent's answer does not depend on the host's file system.
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/handset/faults.h"
#include "host/handset/files.h"
#include "host/handset/objects.h"
#include "host/handset/paths.h"
#include "host/handset/unicode.h"

namespace handset {
namespace {

using coredll::WIN32_FIND_DATAW;

/// The attribute of files and directories that may not be changed, such as those of the ROM.
constexpr coredll::DWORD kReadOnly = 0x01;

// Units of 100 ns since 1601, in which the handset counts time.
coredll::FILETIME FileTime(const timespec& time) {
  constexpr std::int64_t kUnitsPerSecond = 10'000'000;
  constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
  const auto units =
      static_cast<std::uint64_t>((time.tv_sec + kSecondsFrom1601To1970) * kUnitsPerSecond + time.tv_nsec / 100);
  return {static_cast<coredll::DWORD>(units), static_cast<coredll::DWORD>(units >> 32)};
}

WIN32_FIND_DATAW Describe(const std::string& name, const struct stat& status) {
  WIN32_FIND_DATAW found{};
  found.ftLastWriteTime = FileTime(status.st_mtim);
  if (S_ISDIR(status.st_mode)) {
    found.dwFileAttributes = coredll::FILE_ATTRIBUTE_DIRECTORY;
  } else {
    const auto size = static_cast<std::uint64_t>(status.st_size);
    found.dwFileAttributes = coredll::FILE_ATTRIBUTE_NORMAL;
    found.nFileSizeLow = static_cast<coredll::DWORD>(size);
    found.nFileSizeHigh = static_cast<coredll::DWORD>(size >> 32);
  }
  if ((status.st_mode & S_IWUSR) == 0) found.dwFileAttributes |= kReadOnly;
  Utf16(name).copy(found.cFileName, std::size(found.cFileName) - 1);
  return found;
}

class Find : public Object {
 public:
  Find(std::u16string_view pattern, std::filesystem::path directory, std::vector<std::string> names)
      : Object(pattern), directory_(std::move(directory)), names_(std::move(names)) {}

  // Passes over what has gone since the search began.
  bool Next(WIN32_FIND_DATAW* found) {
    while (next_ < names_.size()) {
      const std::string& name = names_[next_++];
      struct stat status {};
      if (stat((directory_ / name).c_str(), &status) != 0) continue;
      *found = Describe(name, status);
      return true;
    }
    return false;
  }

 private:
  std::filesystem::path directory_;
  std::vector<std::string> names_;
  std::size_t next_ = 0;
};

std::vector<std::string> Matches(const std::filesystem::path& directory, std::u16string_view pattern) {
  // To this system "*.*" is every name, with a dot or without.
  const std::u16string folded = FoldCase(pattern == u"*.*" ? u"*" : pattern);
  std::vector<std::string> names = SortedNames(directory);
  std::erase_if(names, [&](const std::string& name) { return !MatchesPattern(FoldCase(Utf16(name)), folded); });
  return names;
}

coredll::HANDLE StartFind(std::u16string_view pattern, WIN32_FIND_DATAW* found) {
  const coredll::HANDLE failure = coredll::INVALID_HANDLE_VALUE;
  const auto names = PathNames(pattern);
  if (names.empty()) return Fail(Error::kPathNotFound, failure);  // The root is in no directory.
  const auto directory = Resolve(std::span(names).first(names.size() - 1));
  if (!IsDirectory(directory)) return Fail(Error::kPathNotFound, failure);
  auto find = std::make_unique<Find>(pattern, directory, Matches(directory, names.back()));
  if (!find->Next(found)) return Fail(Error::kFileNotFound, failure);
  return AddObject(std::move(find));
}

}  // namespace

unsigned CountOpenFinds() {
  return CountObjects<Find>();
}

}  // namespace handset

namespace coredll {

using namespace handset;

HANDLE FindFirstFileW(const char16_t* pattern, WIN32_FIND_DATAW* found) {
  return PlatformCall({"FindFirstFileW", View(pattern), 0}, INVALID_HANDLE_VALUE,
                      [&] { return StartFind(View(pattern), found); });
}

BOOL FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* found) {
  return PlatformCall({"FindNextFileW", ObjectName(handle), 0}, kFalse, [&] {
    auto* find = ObjectOf<Find>(handle);
    if (find == nullptr) return kFalse;
    return find->Next(found) ? kTrue : Fail(Error::kNoMoreFiles, kFalse);
  });
}

}  // namespace coredll
