// Records are matched by a key, those of one key in their order; what is left over stands on one side only.
#include "tools/qvdesk/record_difference.h"

#include <fmt/format.h>

#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/restored_fields.h"
#include "tools/qvdesk/section_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::Field;
using qv::layout::RecordLayout;

constexpr std::size_t kMostDetails = 8;
/// A value or a key this long tells no more when it is shown whole.
constexpr std::size_t kValueWidth = 40;
constexpr std::size_t kKeyWidth = 100;

/// A record as its fields, without what only helps people read them.
Json FieldsOf(const Module* module, const RecordLayout& layout, const RecordView& record, SameRecord same) {
  const Json all = ToJson(layout, record);
  Json fields = Json::object();
  for (const auto& [name, value] : all.items()) {
    if (name == kReads) continue;
    if (same == SameRecord::kById || module == nullptr || IsRestored(*module, layout, name)) fields[name] = value;
  }
  return fields;
}

/// "contact_id 17"; empty for a record without an id.
std::string IdOf(const RecordLayout& layout, const Json& fields) {
  for (const Field& field : layout.fields) {
    if (IsId(field.name) && fields.contains(field.name)) {
      return fmt::format("{} {}", field.name, fields[field.name].dump());
    }
  }
  return "";
}

void Add(const Module* module, const RecordLayout& layout, const RecordFile& file, SameRecord same,
         FileRecords& records) {
  for (const RecordView& record : file.records) {
    Json fields = FieldsOf(module, layout, record, same);
    std::string key =
        fmt::format("{}, {}", layout.name, same == SameRecord::kById ? IdOf(layout, fields) : fields.dump());
    records.by_key.emplace(std::move(key), std::move(fields));
  }
}

std::string ChangedFields(const Json& first, const Json& second) {
  std::string text;
  for (const auto& [name, value] : first.items()) {
    if (second.contains(name) && second[name] == value) continue;
    const std::string other = second.contains(name) ? second[name].dump() : "nothing";
    text += fmt::format("{}{}: {} | {}", text.empty() ? "" : ", ", name, CutTo(value.dump(), kValueWidth),
                        CutTo(other, kValueWidth));
  }
  return text;
}

}  // namespace

FileRecords ReadRecords(const FileForm& form, std::span<const std::uint8_t> bytes, SameRecord same) {
  FileRecords records;
  if (form.kind != FileKind::kSections) {
    const RecordFile file = ParseRecords(*form.layout, bytes);
    Add(form.module, *form.layout, file, same, records);
    records.damage = file.damage;
    return records;
  }
  const SectionLayouts layouts = form.module->config_sections;
  const SectionFile file = ParseSections(layouts, bytes);
  for (std::size_t i = 0; i < layouts.size(); ++i) Add(form.module, layouts[i], file.sections[i], same, records);
  records.damage = file.damage;
  return records;
}

void Difference::Changed(const std::string& line) {
  ++changed;
  Tell(line);
}

void Difference::OnlyFirst(const std::string& what) {
  ++only_first;
  Tell("only in the first: " + CutTo(what, kKeyWidth));
}

void Difference::OnlySecond(const std::string& what) {
  ++only_second;
  Tell("only in the second: " + CutTo(what, kKeyWidth));
}

void Difference::Tell(const std::string& line) {
  if (details.size() < kMostDetails) details.push_back(line);
}

Difference CompareRecords(const FileRecords& first, FileRecords second) {
  Difference difference;
  for (const auto& [key, fields] : first.by_key) {
    const auto found = second.by_key.lower_bound(key);
    if (found == second.by_key.end() || found->first != key) {
      difference.OnlyFirst(key);
      continue;
    }
    if (found->second == fields) {
      ++difference.equal;
    } else {
      difference.Changed(fmt::format("{}: {}", key, ChangedFields(fields, found->second)));
    }
    second.by_key.erase(found);
  }
  for (const auto& [key, fields] : second.by_key) difference.OnlySecond(key);
  if (first.damage != second.damage) {
    difference.Changed(fmt::format("damage: {} | {}", first.damage.value_or("none"), second.damage.value_or("none")));
  }
  return difference;
}

}  // namespace qvdesk
