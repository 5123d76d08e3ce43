// The walk over a file's records, driven by their form alone.
#include "tools/qvdesk/record_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "layout/bytes.h"
#include "sync/file_forms.h"
#include "tools/qvdesk/block_value.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::Field;
using qv::layout::ItemRun;
using qv::layout::RecordLayout;

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kEquals = " = ";
/// By qv::Operation.
constexpr std::array kOperationWords = {"none", "new", "modified", "deleted"};

const ItemRun* FindRun(const RecordLayout& layout, std::string_view name) {
  const auto found = std::ranges::find_if(layout.items, [&](const ItemRun& run) { return run.name == name; });
  return found == layout.items.end() ? nullptr : &*found;
}

/// What the fixed part says; 0 of a run that is counted elsewhere.
std::uint32_t CountIn(const ItemRun& run, Bytes fixed) {
  return run.is_counted_in_front ? 0 : ItemCount(run, fixed.data());
}

/// What is wrong with a count, if anything.
std::optional<std::string> CheckRoom(const ItemRun& run, std::uint32_t count) {
  if (count <= run.slots) return std::nullopt;
  return fmt::format("the record claims {} items \"{}\", but at most {} can be", count, run.name, run.slots);
}

/// Bytes of the number in front of a run that is counted there.
constexpr std::size_t kCountInFrontSize = 4;

// These take what they name from the front of `rest` and give what is wrong, if anything.

std::optional<std::string> TakeBlock(const ItemRun& run, std::uint32_t count, Bytes& rest, std::vector<Bytes>& items) {
  const std::uint64_t size = std::uint64_t{count} * run.item.size;
  if (rest.size() < size) {
    return fmt::format("the file ends inside \"{}\": {} of its {} bytes are there", run.name, rest.size(), size);
  }
  items.push_back(rest.first(static_cast<std::size_t>(size)));
  rest = rest.subspan(items.back().size());
  return std::nullopt;
}

std::optional<std::string> TakeCountInFront(const ItemRun& run, Bytes& rest, std::uint32_t& count) {
  if (rest.size() < kCountInFrontSize) {
    return fmt::format("the file ends inside the number of items \"{}\": {} of its {} bytes are there", run.name,
                       rest.size(), kCountInFrontSize);
  }
  count = qv::layout::LoadNumber(rest.data(), kCountInFrontSize);
  rest = rest.subspan(kCountInFrontSize);
  return std::nullopt;
}

std::optional<std::string> TakeRun(const ItemRun& run, std::uint32_t count, Bytes& rest, std::vector<Bytes>& items) {
  if (run.is_counted_in_front) {
    if (auto damage = TakeCountInFront(run, rest, count)) return damage;
    if (auto damage = CheckRoom(run, count)) return damage;
  }
  if (IsBlock(run)) return TakeBlock(run, count, rest, items);
  while (items.size() < count) {
    if (rest.size() < run.item.size) {
      return fmt::format("the file ends inside item {} of {} items \"{}\": {} of its {} bytes are there",
                         items.size() + 1, count, run.name, rest.size(), run.item.size);
    }
    items.push_back(rest.first(run.item.size));
    rest = rest.subspan(run.item.size);
  }
  return std::nullopt;
}

/// Counts in the fixed part are looked at before anything is taken.
std::optional<std::string> TakeItems(const RecordLayout& layout, Bytes& rest, RecordView& record) {
  for (const ItemRun& run : layout.items) {
    if (auto damage = CheckRoom(run, CountIn(run, record.fixed))) return damage;
  }
  for (const ItemRun& run : layout.items) {
    if (auto damage = TakeRun(run, CountIn(run, record.fixed), rest, record.items.emplace_back())) return damage;
  }
  return std::nullopt;
}

/// Where the run has its count. One that was given stays when it means as many: below 0 is as good as 0.
void PutCount(std::size_t count, const ItemRun& run, std::span<std::uint8_t> fixed, std::vector<std::uint8_t>& bytes) {
  if (run.is_counted_in_front) {
    bytes.resize(bytes.size() + kCountInFrontSize);
    qv::layout::StoreNumber(&bytes[bytes.size() - kCountInFrontSize], kCountInFrontSize,
                            static_cast<std::uint32_t>(count));
  } else if (ItemCount(run, fixed.data()) != count) {
    qv::layout::StoreSlot(run.count, fixed.data(), static_cast<std::uint32_t>(count));
  }
}

void PutBlock(const Json& value, const ItemRun& run, std::span<std::uint8_t> fixed, std::vector<std::uint8_t>& bytes) {
  try {
    const std::vector<std::uint8_t> block = BlockFromJson(value, run);
    PutCount(block.size() / run.item.size, run, fixed, bytes);
    bytes.insert(bytes.end(), block.begin(), block.end());
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("\"{}\" {}", run.name, error.what()));
  }
}

Json OperationNumber(const Json& value) {
  for (std::size_t i = 0; i < kOperationWords.size(); ++i) {
    if (value == kOperationWords[i]) return i;
  }
  return value;
}

/// Of a record, or of an item that has a form of its own. Where the record has items their arrays are passed over.
void PutFields(const Json& fields, const RecordLayout& layout, std::span<std::uint8_t> fixed) {
  if (!fields.is_object()) throw std::runtime_error("a record is an object of fields, not " + fields.dump());
  for (const auto& [name, value] : fields.items()) {
    if (name == kReads || FindRun(layout, name) != nullptr) continue;
    const Field* const field = FindField(layout, name);
    if (field == nullptr) throw std::runtime_error(fmt::format("a {} has no field \"{}\"", layout.name, name));
    try {
      FromJson(name == "operation" ? OperationNumber(value) : value, field->exchange, fixed);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(fmt::format("\"{}\" {}", name, error.what()));
    }
  }
}

void PutItem(const Json& item, const ItemRun& run, std::span<std::uint8_t> bytes) {
  try {
    run.layout != nullptr ? PutFields(item, *run.layout, bytes) : FromJson(item, run.item, bytes);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(
        fmt::format("an item of \"{}\"{} {}", run.name, run.layout != nullptr ? ":" : "", error.what()));
  }
}

void PutItems(const Json& value, const ItemRun& run, std::span<std::uint8_t> fixed, std::vector<std::uint8_t>& bytes) {
  if (!value.is_array() || value.size() > run.slots) {
    throw std::runtime_error(fmt::format("\"{}\" takes an array of at most {} items", run.name, run.slots));
  }
  PutCount(value.size(), run, fixed, bytes);
  for (const Json& item : value) {
    bytes.resize(bytes.size() + run.item.size);
    PutItem(item, run, std::span(bytes).last(run.item.size));
  }
}

const char* CountedBy(const ItemRun& run) {
  if (!IsBlock(run)) return "items";
  return run.item.size == 1 ? "bytes" : "characters";
}

/// A count given beside its items must be theirs.
void CheckCounts(const Json& record, const RecordLayout& layout, Bytes fixed) {
  for (const ItemRun& run : layout.items) {
    if (run.is_counted_in_front) continue;
    for (const Field& field : layout.fields) {
      const bool counts = IsShown(field.exchange) && field.exchange.offset == run.count.offset;
      if (!counts || !record.contains(field.name)) continue;
      if (record[field.name] == qv::layout::LoadSlot(run.count, fixed.data())) continue;
      throw std::runtime_error(fmt::format("\"{}\" is {}, but \"{}\" has {} {}; leave it out, it follows from them",
                                           field.name, record[field.name].dump(), run.name,
                                           ItemCount(run, fixed.data()), CountedBy(run)));
    }
  }
}

bool HoldsTexts(const Json& line, std::initializer_list<const char*> names) {
  return line.is_object() &&
         std::ranges::all_of(names, [&](const char* name) { return line.contains(name) && line[name].is_string(); });
}

std::string AnchorLineText(const Json& line) {
  const auto text = [&](const char* name) { return line[name].get<std::string>(); };
  if (HoldsTexts(line, {"section"})) return fmt::format("[{}]", text("section"));
  if (HoldsTexts(line, {"key", "value"})) return text("key") + std::string(kEquals) + text("value");
  if (HoldsTexts(line, {"text"})) return text("text");
  if (!HoldsTexts(line, {"hex"})) {
    throw std::runtime_error("takes {\"section\"}, {\"key\", \"value\"}, {\"text\"} or {\"hex\"} with strings, not " +
                             line.dump());
  }
  const std::vector<std::uint8_t> bytes = FromHex(text("hex"));
  return {bytes.begin(), bytes.end()};
}

/// Those that are whole.
Json FieldsToJson(const RecordLayout& layout, const RecordView& record) {
  Json json = Json::object();
  for (const Field& field : layout.fields) {
    if (IsShown(field.exchange) && record.Has(field.exchange)) {
      json[field.name] = ToJson(field.exchange, record.fixed);
    }
  }
  return json;
}

}  // namespace

RecordFile ParseRecords(const RecordLayout& layout, Bytes bytes, std::uint32_t stride) {
  RecordFile file;
  Bytes rest = bytes;
  while (!rest.empty() && !file.damage) {
    const std::size_t offset = bytes.size() - rest.size();
    RecordView& record = file.records.emplace_back();
    record.fixed = rest.first(std::min<std::size_t>(rest.size(), layout.exchange_size));
    rest = rest.subspan(record.fixed.size());
    if (record.fixed.size() < layout.exchange_size) {
      file.damage = fmt::format("the file ends inside the record: {} of {} bytes are there", record.fixed.size(),
                                layout.exchange_size);
    } else {
      file.damage = TakeItems(layout, rest, record);
    }
    if (file.damage) file.damage = fmt::format("offset {}, record {}: {}", offset, file.records.size(), *file.damage);
    const std::size_t end = std::max<std::size_t>(bytes.size() - rest.size(), offset + stride);
    rest = bytes.subspan(std::min(end, bytes.size()));
  }
  return file;
}

const Field* FindField(const RecordLayout& layout, std::string_view name) {
  const auto found = std::ranges::find_if(
      layout.fields, [&](const Field& field) { return IsShown(field.exchange) && field.name == name; });
  return found == layout.fields.end() ? nullptr : &*found;
}

std::optional<std::uint32_t> NumberOf(const RecordLayout& layout, const RecordView& record, std::string_view name) {
  const Field* const field = FindField(layout, name);
  if (field == nullptr || !record.Has(field->exchange)) return std::nullopt;
  return qv::layout::LoadSlot(field->exchange, record.fixed.data());
}

std::vector<std::pair<std::string, std::string>> ReadableOf(const RecordLayout& layout, const RecordView& record) {
  std::vector<std::pair<std::string, std::string>> readable;
  const auto low = NumberOf(layout, record, "time_low");
  const auto high = NumberOf(layout, record, "time_high");
  if (low && high) readable.emplace_back("modified", DescribeFileTime(std::uint64_t{*high} << 32 | *low));
  if (const auto operation = NumberOf(layout, record, "operation")) {
    readable.emplace_back("operation", *operation < kOperationWords.size() ? kOperationWords[*operation] : "unknown");
  }
  return readable;
}

Json ToJson(const RecordLayout& layout, const RecordView& record) {
  Json json = FieldsToJson(layout, record);
  for (std::size_t run = 0; run < record.items.size(); ++run) {
    const ItemRun& items = layout.items[run];
    if (IsBlock(items)) {
      for (const Bytes block : record.items[run]) json[items.name] = BlockToJson(items, block);
      continue;
    }
    Json& array = json[items.name] = Json::array();
    for (const Bytes item : record.items[run]) {
      const bool has_fields = items.layout != nullptr;
      array.push_back(has_fields ? FieldsToJson(*items.layout, {item, {}}) : ToJson(items.item, item));
    }
  }
  for (const auto& [name, words] : ReadableOf(layout, record)) json[kReads][name] = words;
  return json;
}

void AppendRecord(const Json& record, const RecordLayout& layout, std::vector<std::uint8_t>& bytes) {
  std::vector<std::uint8_t> fixed(layout.exchange_size);
  PutFields(record, layout, fixed);
  std::vector<std::uint8_t> items;
  for (const ItemRun& run : layout.items) {
    if (IsBlock(run)) {
      PutBlock(record.value(run.name, Json("")), run, fixed, items);
    } else {
      PutItems(record.value(run.name, Json::array()), run, fixed, items);
    }
  }
  CheckCounts(record, layout, fixed);
  bytes.insert(bytes.end(), fixed.begin(), fixed.end());
  bytes.insert(bytes.end(), items.begin(), items.end());
}

Json AnchorLines(std::string_view file) {
  Json lines = Json::array();
  for (bool last = file.empty(); !last;) {
    const std::size_t end = file.find(kLineEnd);
    last = end == std::string_view::npos;
    const std::string line(file.substr(0, end));
    if (!last) file.remove_prefix(end + kLineEnd.size());
    const std::size_t equals = line.find(kEquals);
    if (ToUtf8(ToUtf16(line)) != line) {
      lines.push_back({{"hex", Hex({reinterpret_cast<const std::uint8_t*>(line.data()), line.size()})}});
    } else if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
      lines.push_back({{"section", line.substr(1, line.size() - 2)}});
    } else if (equals != std::string::npos) {
      lines.push_back({{"key", line.substr(0, equals)}, {"value", line.substr(equals + kEquals.size())}});
    } else {
      lines.push_back({{"text", line}});
    }
  }
  return lines;
}

std::string AnchorText(const Json& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i != 0) text += kLineEnd;
    try {
      text += AnchorLineText(lines[i]);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(fmt::format("line {}: {}", i + 1, error.what()));
    }
  }
  return text;
}

}  // namespace qvdesk
