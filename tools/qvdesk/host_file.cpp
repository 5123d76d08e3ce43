// What goes wrong with a file is told with its name and the system's reason.
#include "tools/qvdesk/host_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace qvdesk {

std::vector<std::uint8_t> ReadWholeFile(const std::filesystem::path& file) {
  const HostFile stream(std::fopen(file.c_str(), "rb"));
  if (stream == nullptr) throw std::runtime_error(file.string() + ": it cannot be opened: " + std::strerror(errno));
  std::vector<std::uint8_t> bytes;
  std::array<std::uint8_t, 65536> block;
  while (const std::size_t got = std::fread(block.data(), 1, block.size(), stream.get())) {
    bytes.insert(bytes.end(), block.begin(), block.begin() + got);
  }
  if (std::ferror(stream.get()) != 0) {
    throw std::runtime_error(file.string() + ": it cannot be read: " + std::strerror(errno));
  }
  return bytes;
}

void WriteWholeFile(const std::filesystem::path& file, std::span<const std::uint8_t> bytes) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  if (!stream) throw std::runtime_error(file.string() + ": it cannot be created: " + std::strerror(errno));
  stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (!stream) throw std::runtime_error(file.string() + ": it cannot be written whole: " + std::strerror(errno));
}

std::filesystem::path Beside(const std::filesystem::path& path, const char* suffix) {
  std::filesystem::path name = std::filesystem::absolute(path).lexically_normal();
  if (!name.has_filename()) name = name.parent_path();
  return name += suffix;
}

}  // namespace qvdesk
