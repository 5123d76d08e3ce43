// The contacts' pictures as an image table holds them.
#ifndef QV_TOOLS_QVDESK_PICTURE_TABLE_H
#define QV_TOOLS_QVDESK_PICTURE_TABLE_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qvdesk {

struct Picture {
  std::uint32_t id;
  std::uint32_t claimed;            ///< Its length as the record says it.
  std::vector<std::uint8_t> bytes;  ///< As many as that, but no more than a record has room for.
};

struct PictureTable {
  std::vector<Picture> pictures;      ///< Of the records that are whole.
  std::optional<std::string> damage;  ///< Where the rest cannot be read, and why.
};

/// Throws std::runtime_error when the file cannot be read.
PictureTable ReadPictureTable(const std::filesystem::path& file);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_PICTURE_TABLE_H
