// Slots to values and back.
#include "tools/qvdesk/field_value.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "layout/bytes.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::Form;
using qv::layout::IsNumeric;
using qv::layout::LargestNumber;
using qv::layout::LoadSlot;
using qv::layout::Slot;
using qv::layout::StoreSlot;

/// Bytes beyond these are no help to the eye.
constexpr std::size_t kMostBytesShown = 256;

bool IsText(Form form) {
  return form == Form::kText || form == Form::kRawText || form == Form::kTimeText;
}

std::span<const std::uint8_t> BytesOf(const Slot& slot, std::span<const std::uint8_t> record) {
  return record.subspan(slot.offset, slot.size);
}

std::u16string TextUpToNul(std::span<const std::uint8_t> bytes) {
  std::u16string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
    if (unit == u'\0') break;
    text += unit;
  }
  return text;
}

void PutBytes(const std::string& hex, const Slot& slot, std::span<std::uint8_t> record) {
  const std::vector<std::uint8_t> bytes = FromHex(hex);
  if (bytes.size() != slot.size) {
    throw std::runtime_error(fmt::format("takes {} bytes in hexadecimal digits, not {}", slot.size, bytes.size()));
  }
  std::ranges::copy(bytes, record.begin() + slot.offset);
}

/// Six, or seven with the milliseconds.
std::vector<std::uint32_t> TimeParts(const Slot& slot, std::span<const std::uint8_t> record) {
  std::vector<std::uint32_t> parts;
  for (std::size_t at = slot.offset; at < std::size_t{slot.offset} + slot.size; at += sizeof(std::uint32_t)) {
    parts.push_back(qv::layout::LoadNumber(&record[at], sizeof(std::uint32_t)));
  }
  return parts;
}

void PutTimeParts(const Json& value, const Slot& slot, std::span<std::uint8_t> record) {
  const std::size_t count = slot.size / sizeof(std::uint32_t);
  const auto fits = [](const Json& part) {
    return part.is_number_unsigned() && part.get<std::uint64_t>() <= UINT32_MAX;
  };
  if (!value.is_array() || value.size() != count || !std::ranges::all_of(value, fits)) {
    throw std::runtime_error(fmt::format("takes year, month, day, hour, minute{} as [2026, 3, 4, 10, 0, 0{}], not {}",
                                         count == qv::layout::kTimeParts ? " and second" : ", second and milliseconds",
                                         count == qv::layout::kTimeParts ? "" : ", 0", value.dump()));
  }
  std::size_t at = slot.offset;
  for (const Json& part : value) {
    qv::layout::StoreNumber(&record[at], sizeof(std::uint32_t), part.get<std::uint32_t>());
    at += sizeof(std::uint32_t);
  }
}

/// To the second; nothing for a time that is none: all zero, or what the FILETIME 0 becomes.
std::string DescribeTime(const std::vector<std::uint32_t>& parts) {
  constexpr std::uint32_t kFileTimeZero[] = {1601, 1, 1, 0, 0, 0, 0};
  const bool is_none = std::ranges::all_of(parts, [](std::uint32_t part) { return part == 0; }) ||
                       std::ranges::equal(parts, std::span(kFileTimeZero).first(parts.size()));
  if (is_none) return "";
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
}

}  // namespace

bool IsShown(const Slot& slot) {
  return slot.form != Form::kNone && slot.form != Form::kUnused;
}

bool StoreText(std::string_view utf8, const Slot& slot, std::span<std::uint8_t> record) {
  const std::u16string text = ToUtf16(utf8);
  if (2 * text.size() + 2 > slot.size) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    qv::layout::StoreNumber(&record[slot.offset + 2 * i], 2, text[i]);
  }
  return true;
}

Json ToJson(const Slot& slot, std::span<const std::uint8_t> record) {
  const std::span<const std::uint8_t> bytes = BytesOf(slot, record);
  if (IsNumeric(slot.form)) return LoadSlot(slot, record.data());
  if (slot.form == Form::kTimeNumbers) return TimeParts(slot, record);
  if (!IsText(slot.form)) return Hex(bytes);
  const std::string text = ToUtf8(TextUpToNul(bytes));
  std::vector<std::uint8_t> again(record.size());
  if (StoreText(text, slot, again) && std::ranges::equal(BytesOf(slot, again), bytes)) return text;
  return {{"hex", Hex(bytes)}};
}

void FromJson(const Json& value, const Slot& slot, std::span<std::uint8_t> record) {
  if (IsNumeric(slot.form)) {
    const std::uint32_t most = LargestNumber(slot);
    const bool fits = value.is_number_unsigned() && value.get<std::uint64_t>() <= most;
    if (!fits) throw std::runtime_error(fmt::format("takes a number from 0 to {}, not {}", most, value.dump()));
    StoreSlot(slot, record.data(), value.get<std::uint32_t>());
  } else if (slot.form == Form::kTimeNumbers) {
    PutTimeParts(value, slot, record);
  } else if (!IsText(slot.form)) {
    if (!value.is_string()) throw std::runtime_error("takes a string of hexadecimal digits, not " + value.dump());
    PutBytes(value, slot, record);
  } else if (value.is_object() && value.size() == 1 && value.contains("hex") && value["hex"].is_string()) {
    PutBytes(value["hex"], slot, record);
  } else if (!value.is_string()) {
    throw std::runtime_error("takes a string, or {\"hex\": \"…\"}, not " + value.dump());
  } else if (!StoreText(value.get<std::string>(), slot, record)) {
    throw std::runtime_error(fmt::format("takes at most {} characters", slot.size / 2 - 1));
  }
}

std::string ToIndentedText(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::string ToText(const Slot& slot, std::span<const std::uint8_t> record) {
  if (IsNumeric(slot.form)) return std::to_string(LoadSlot(slot, record.data()));
  if (slot.form == Form::kTimeNumbers) return DescribeTime(TimeParts(slot, record));
  const std::span<const std::uint8_t> bytes = BytesOf(slot, record);
  if (IsText(slot.form)) return ToUtf8(TextUpToNul(bytes));
  return bytes.size() > kMostBytesShown ? CountOf(bytes.size(), "byte") : Hex(bytes);
}

std::string DescribeFileTime(std::uint64_t time) {
  using namespace std::chrono;
  const auto since_1601 = static_cast<std::int64_t>(time / 10'000'000);
  const auto days_passed = since_1601 / 86400;
  constexpr std::int64_t kLastDay = (sys_days(year(9999) / December / 31) - sys_days(year(1601) / January / 1)).count();
  if (days_passed > kLastDay) return "beyond the year 9999";
  const auto day = sys_days(year(1601) / January / 1) + days(static_cast<int>(days_passed));
  const year_month_day date(day);
  const auto second = since_1601 % 86400;
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} UTC", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), second / 3600,
                     second / 60 % 60, second % 60);
}

}  // namespace qvdesk
