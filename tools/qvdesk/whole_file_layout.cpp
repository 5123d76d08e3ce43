// Repeats the rows of the records' forms, each at its place in the file.
#include "tools/qvdesk/whole_file_layout.h"

#include <fmt/format.h>

#include <deque>
#include <string>
#include <vector>

namespace qvdesk {
namespace {

using qv::layout::Field;
using qv::layout::Form;
using qv::layout::RecordLayout;

struct OwnedLayout {
  std::deque<std::string> names;  // The fields point at them.
  std::vector<Field> fields;
  RecordLayout layout;
};

void AddRecord(const RecordsOfAFile& part, std::uint32_t number, OwnedLayout& whole) {
  for (Field field : part.layout->fields) {
    if (field.exchange.form == Form::kNone) continue;
    if (*field.name != '\0') {
      field.name = whole.names.emplace_back(fmt::format("{}_{}_{}", part.name, number, field.name)).c_str();
    }
    field.store = {};
    field.exchange.offset = static_cast<std::uint16_t>(field.exchange.offset + whole.layout.exchange_size);
    whole.fields.push_back(field);
  }
  whole.layout.exchange_size += part.layout->exchange_size;
}

}  // namespace

const RecordLayout& WholeFileLayout(const char* name, std::span<const RecordsOfAFile> parts) {
  static std::deque<OwnedLayout> layouts;
  OwnedLayout& whole = layouts.emplace_back();
  whole.layout = {.name = name, .store_size = 0, .exchange_size = 0, .fields = {}};
  for (const RecordsOfAFile& part : parts) {
    for (std::uint32_t i = 1; i <= part.count; ++i) AddRecord(part, i, whole);
  }
  whole.layout.fields = whole.fields;
  return whole.layout;
}

}  // namespace qvdesk
