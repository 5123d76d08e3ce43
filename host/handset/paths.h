// Where a path on the handset lies on the host. Every path of the agent goes through here, so none leads out of the
// directory that is the handset's file system.
#ifndef QV_HOST_HANDSET_PATHS_H
#define QV_HOST_HANDSET_PATHS_H

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace handset {

void SetRoot(const std::filesystem::path& root);

/// Whether the path is a file name alone.
bool IsBareName(std::u16string_view path);

/// The names in a path. "/" separates like "\" (a host name cannot hold it), repeated separators count as one, and ".."
/// stops at the root.
std::vector<std::u16string_view> PathNames(std::u16string_view path);

/// The host's path for names below `directory`: each is the existing file's spelling where there is such a file, and
/// else as given.
std::filesystem::path ResolveUnder(const std::filesystem::path& directory, std::span<const std::u16string_view> names);

/// ResolveUnder the handset's root.
std::filesystem::path Resolve(std::span<const std::u16string_view> names);

/// The names in a host directory but "." and "..", in the order of their folded forms; none if it cannot be read.
std::vector<std::string> SortedNames(const std::filesystem::path& directory);

/// Whether a path exists, and is a directory or any other file.
bool IsDirectory(const std::filesystem::path& path);
bool IsFile(const std::filesystem::path& path);

}  // namespace handset

#endif  // QV_HOST_HANDSET_PATHS_H
