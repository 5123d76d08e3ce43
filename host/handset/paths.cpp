// Path lookup without regard to case on a host that has regard to it: a name that is not there as spelt is looked for
// in its directory's listing.
#include "host/handset/paths.h"

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <system_error>
#include <utility>

#include "host/handset/handset.h"
#include "host/handset/unicode.h"

namespace handset {
namespace {

constexpr std::u16string_view kSeparators = u"\\/";

std::filesystem::path root_directory;

// The names in a host directory but "." and "..", in the host's order; none if it cannot be read.
template <typename Take>
void ForEachName(const std::filesystem::path& directory, Take take) {
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(directory.c_str()),
                                                    [](DIR* open) { return closedir(open); });
  while (const dirent* entry = listing == nullptr ? nullptr : readdir(listing.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") take(name);
  }
}

// Whether this is the name's folded form. Told without a conversion as far as the name is ASCII, which most are: a
// handset's directory may hold thousands of names, all of which are looked at for each that is not there.
bool FoldsTo(std::string_view name, std::u16string_view folded) {
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto unit = static_cast<unsigned char>(name[i]);
    if (unit >= 0x80) return FoldCase(Utf16(name)) == folded;
    const bool is_lower = unit >= 'a' && unit <= 'z';
    if (i == folded.size() || (is_lower ? unit - 'a' + 'A' : unit) != folded[i]) return false;
  }
  return name.size() == folded.size();
}

// Of several names that differ only in case the first in the order of the host's characters.
std::filesystem::path ResolveName(const std::filesystem::path& directory, std::u16string_view name) {
  std::filesystem::path as_given = directory / Utf8(name);
  std::error_code ignored;
  if (std::filesystem::exists(as_given, ignored)) return as_given;
  const std::u16string folded = FoldCase(name);
  std::string found;
  ForEachName(directory, [&](std::string_view entry) {
    if (FoldsTo(entry, folded) && (found.empty() || entry < found)) found = entry;
  });
  return found.empty() ? as_given : directory / found;
}

}  // namespace

void SetRoot(const std::filesystem::path& root) {
  root_directory = std::filesystem::absolute(root);
}

bool IsBareName(std::u16string_view path) {
  return path.find_first_of(kSeparators) == std::u16string_view::npos;
}

std::vector<std::u16string_view> PathNames(std::u16string_view path) {
  std::vector<std::u16string_view> names;
  while (!path.empty()) {
    const std::u16string_view name = path.substr(0, path.find_first_of(kSeparators));
    path.remove_prefix(std::min(path.size(), name.size() + 1));
    if (name == u"..") {
      if (!names.empty()) names.pop_back();
    } else if (!name.empty() && name != u".") {
      names.push_back(name);
    }
  }
  return names;
}

std::filesystem::path ResolveUnder(const std::filesystem::path& directory, std::span<const std::u16string_view> names) {
  std::filesystem::path path = directory;
  for (const std::u16string_view name : names) path = ResolveName(path, name);
  return path;
}

std::filesystem::path Resolve(std::span<const std::u16string_view> names) {
  return ResolveUnder(root_directory, names);
}

std::filesystem::path HostPath(std::u16string_view handset_path) {
  return Resolve(PathNames(handset_path));
}

std::vector<std::string> SortedNames(const std::filesystem::path& directory) {
  std::vector<std::pair<std::u16string, std::string>> names;
  ForEachName(directory, [&](std::string_view name) { names.emplace_back(FoldCase(Utf16(name)), name); });
  std::sort(names.begin(), names.end());
  std::vector<std::string> sorted;
  sorted.reserve(names.size());
  for (auto& name : names) sorted.push_back(std::move(name.second));
  return sorted;
}

bool IsDirectory(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

bool IsFile(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored) && !std::filesystem::is_directory(path, ignored);
}

}  // namespace handset
