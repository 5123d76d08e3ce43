// Files of this machine, read and written whole, and the names of those that stand beside others.
#ifndef QV_TOOLS_QVDESK_HOST_FILE_H
#define QV_TOOLS_QVDESK_HOST_FILE_H

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace qvdesk {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using HostFile = std::unique_ptr<std::FILE, CloseFile>;

/// Throw std::runtime_error that says what could not be done with which file.
std::vector<std::uint8_t> ReadWholeFile(const std::filesystem::path& file);
void WriteWholeFile(const std::filesystem::path& file, std::span<const std::uint8_t> bytes);

/// What is called as `path` with `suffix` behind it, and lies beside it: "phone", "phone/" and "./phone" are one.
std::filesystem::path Beside(const std::filesystem::path& path, const char* suffix);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_HOST_FILE_H
