// Counts, and for each section the walk that tables of records have.
#include "tools/qvdesk/section_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "layout/bytes.h"

namespace qvdesk {
namespace {

using qv::layout::RecordLayout;

std::size_t CountAt(std::size_t section, std::span<const std::uint8_t> header) {
  const std::uint32_t count = qv::layout::LoadNumber(&header[8 * section], 4);
  return static_cast<std::size_t>(std::max(static_cast<std::int32_t>(count), 0));
}

/// The records of the section of this layout; null when it is not in the list.
const Json* FindRecords(const Json& list, const RecordLayout& layout) {
  const auto found = std::ranges::find_if(list, [&](const Json& section) {
    return section.is_object() && section.contains("name") && section["name"] == layout.name;
  });
  if (found == list.end()) return nullptr;
  if (!found->contains("records") || !(*found)["records"].is_array()) {
    throw std::runtime_error(fmt::format("section \"{}\": it has no list \"records\"", layout.name));
  }
  return &(*found)["records"];
}

void CheckNames(const Json& list, SectionLayouts layouts) {
  for (const Json& section : list) {
    const Json name = section.is_object() ? section.value("name", Json()) : Json();
    if (std::ranges::any_of(layouts, [&](const RecordLayout& layout) { return name == layout.name; })) continue;
    throw std::runtime_error(fmt::format("{}: there is no such section", name.dump()));
  }
}

}  // namespace

SectionFile ParseSections(SectionLayouts layouts, std::span<const std::uint8_t> bytes) {
  SectionFile file;
  file.sections.resize(layouts.size());
  const std::size_t header_size = SectionHeaderSize(layouts);
  if (bytes.size() < header_size) {
    file.damage = fmt::format("the file ends inside its header: {} of {} bytes are there", bytes.size(), header_size);
    return file;
  }
  std::span<const std::uint8_t> rest = bytes.subspan(header_size);
  for (std::size_t i = 0; i < layouts.size(); ++i) {
    const std::size_t count = CountAt(i, bytes);
    const std::size_t there = std::min(count, rest.size() / layouts[i].exchange_size);
    file.sections[i] = ParseRecords(layouts[i], rest.first(there * layouts[i].exchange_size));
    rest = rest.subspan(there * layouts[i].exchange_size);
    if (there == count) continue;
    file.damage = fmt::format("the file ends inside the section \"{}\": {} of {} records are there", layouts[i].name,
                              there, count);
    return file;
  }
  if (!rest.empty()) file.damage = fmt::format("{} bytes lie behind the last section", rest.size());
  return file;
}

Json ToJson(SectionLayouts layouts, const SectionFile& file) {
  Json list = Json::array();
  for (std::size_t i = 0; i < layouts.size(); ++i) {
    Json records = Json::array();
    for (const RecordView& record : file.sections[i].records) records.push_back(ToJson(layouts[i], record));
    list.push_back({{"name", layouts[i].name}, {"records", records}});
  }
  return list;
}

std::vector<std::uint8_t> SectionsFromJson(const Json& list, SectionLayouts layouts) {
  CheckNames(list, layouts);
  std::vector<std::uint8_t> bytes(SectionHeaderSize(layouts));
  for (std::size_t i = 0; i < layouts.size(); ++i) {
    const Json* const records = FindRecords(list, layouts[i]);
    if (records == nullptr) continue;
    qv::layout::StoreNumber(&bytes[8 * i], 4, records->size());
    for (std::size_t k = 0; k < records->size(); ++k) {
      try {
        AppendRecord((*records)[k], layouts[i], bytes);
      } catch (const std::runtime_error& error) {
        throw std::runtime_error(fmt::format("section \"{}\", record {}: {}", layouts[i].name, k + 1, error.what()));
      }
    }
  }
  return bytes;
}

}  // namespace qvdesk
