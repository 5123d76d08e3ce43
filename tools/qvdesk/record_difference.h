// Two files of records, compared record by record.
#ifndef QV_TOOLS_QVDESK_RECORD_DIFFERENCE_H
#define QV_TOOLS_QVDESK_RECORD_DIFFERENCE_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/field_value.h"

namespace qvdesk {

/// What makes a record the same as another one.
enum class SameRecord : std::uint8_t {
  kById,       ///< Its first id; the rest is then compared.
  kByContent,  ///< All that a restore brings back, which ids are none of.
};

struct FileRecords {
  std::multimap<std::string, Json> by_key;  ///< Records of one key in their order.
  std::optional<std::string> damage;        ///< Where the rest cannot be read, and why.
};

/// Of a table, or of a file of sections.
FileRecords ReadRecords(const FileForm& form, std::span<const std::uint8_t> bytes, SameRecord same);

struct Difference {
  std::size_t equal = 0;
  std::size_t changed = 0;
  std::size_t only_first = 0;
  std::size_t only_second = 0;
  std::vector<std::string> details = {};  ///< The first few, a line each.

  bool IsNone() const { return changed + only_first + only_second == 0; }

  void Changed(const std::string& line);
  void OnlyFirst(const std::string& what);
  void OnlySecond(const std::string& what);

 private:
  void Tell(const std::string& line);
};

Difference CompareRecords(const FileRecords& first, FileRecords second);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_RECORD_DIFFERENCE_H
