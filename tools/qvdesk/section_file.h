// Files of sections: a header that counts each section's records, and then the records, section by section.
#ifndef QV_TOOLS_QVDESK_SECTION_FILE_H
#define QV_TOOLS_QVDESK_SECTION_FILE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "layout/record_layout.h"
#include "tools/qvdesk/record_file.h"

namespace qvdesk {

using SectionLayouts = std::span<const qv::layout::RecordLayout>;

/// The header: for each section its count, and a zero.
constexpr std::size_t SectionHeaderSize(SectionLayouts layouts) {
  return 8 * layouts.size();
}

struct SectionFile {
  std::vector<RecordFile> sections;   ///< As many as there are layouts.
  std::optional<std::string> damage;  ///< Where the rest cannot be read, and why.
};

SectionFile ParseSections(SectionLayouts layouts, std::span<const std::uint8_t> bytes);

/// A list of {"name": …, "records": […]}.
Json ToJson(SectionLayouts layouts, const SectionFile& file);
/// The reverse. Sections that are not given are empty. Throws std::runtime_error that names section and record.
std::vector<std::uint8_t> SectionsFromJson(const Json& list, SectionLayouts layouts);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SECTION_FILE_H
