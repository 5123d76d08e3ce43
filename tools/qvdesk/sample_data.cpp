// Times and fields of sample records.
#include "tools/qvdesk/sample_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "host/handset/handset.h"
#include "layout/narrow_text.h"
#include "tools/qvdesk/field_value.h"

namespace qvdesk {

stores::FileTime FileTimeOf(std::chrono::sys_days day) {
  const auto since_1601 = day - std::chrono::sys_days(std::chrono::January / 1 / 1601);
  return std::chrono::seconds(since_1601).count() * stores::kSecond;
}

stores::FileTime ModifiedTime(Dice& dice) {
  constexpr std::uint32_t kHalfYear = 180 * 86400;
  return FileTimeOf(kSampleDay) - (1 + dice.Roll(kHalfYear)) * stores::kSecond;
}

std::string TimeText(stores::FileTime time) {
  const stores::CalendarTime t = stores::CalendarTimeOf(time);
  return fmt::format("{:04}{:02}{:02}{:02}{:02}{:02}", t.year, t.month, t.day, t.hour, t.minute, t.second);
}

std::string NumberIn(std::string_view area, Dice& dice) {
  constexpr std::uint32_t kSevenDigits = 10'000'000;
  return fmt::format("{} {:07}", area, dice.Roll(kSevenDigits));
}

std::string NameByTurns(std::string_view name, std::size_t names, std::uint32_t i) {
  return i < names ? std::string(name) : fmt::format("{} {}", name, i / names + 1);
}

void RecordBuilder::Set(std::string_view field, std::uint32_t value) {
  qv::layout::StoreSlot(SlotOf(field), record_.data(), value);
}

void RecordBuilder::Set(std::string_view field, std::string_view text) {
  const qv::layout::Slot& slot = SlotOf(field);
  const bool is_narrow = slot.form == qv::layout::Form::kNarrowText;
  std::vector<std::uint8_t> wide(is_narrow ? 2 * slot.size : 0);
  const bool fits = is_narrow ? StoreText(text, qv::layout::Text(0, static_cast<std::uint16_t>(wide.size())), wide)
                              : StoreText(text, slot, record_);
  if (!fits) throw std::logic_error(fmt::format("{}: text too long", field));
  if (is_narrow) qv::layout::PutNarrowText(wide.data(), wide.size(), &record_[slot.offset], slot.size);
}

void RecordBuilder::SetDate(const std::string& prefix, std::chrono::sys_days day) {
  const std::chrono::year_month_day date(day);
  Set(prefix + "_year", static_cast<std::uint32_t>(static_cast<int>(date.year())));
  Set(prefix + "_month", static_cast<unsigned>(date.month()));
  Set(prefix + "_day", static_cast<unsigned>(date.day()));
}

void RecordBuilder::SetTime(const std::string& prefix, std::uint32_t minutes) {
  Set(prefix + "_hour", minutes / 60 % 24);
  Set(prefix + "_minute", minutes % 60);
}

void RecordBuilder::SetFileTime(std::string_view field, stores::FileTime time) {
  std::memcpy(&record_[SlotOf(field).offset], &time, sizeof(time));
}

void RecordBuilder::SetSystemTime(std::string_view field, stores::FileTime time) {
  coredll::SYSTEMTIME system_time = handset::SystemTimeOf(time);
  system_time.wDayOfWeek = 0;
  std::memcpy(&record_[SlotOf(field).offset], &system_time, sizeof(system_time));
}

void RecordBuilder::SetWideText(std::string_view field, std::size_t at, std::string_view text) {
  const qv::layout::Slot& slot = SlotOf(field);
  const auto place = qv::layout::Text(static_cast<std::uint16_t>(slot.offset + at),
                                      static_cast<std::uint16_t>(slot.size - std::min<std::size_t>(at, slot.size)));
  if (!StoreText(text, place, record_)) throw std::logic_error(fmt::format("{}: text too long", field));
}

void RecordBuilder::SetItem(std::size_t run, std::size_t position, const RecordBuilder& item) {
  const qv::layout::ItemRun& items = layout_.items[run];
  std::ranges::copy(item.record_, &record_[items.store_offset + position * StoreItemSize(items)]);
}

void RecordBuilder::SetItems(std::size_t run, const char* count_field, std::uint32_t count, Dice& dice) {
  Set(count_field, count);
  const std::size_t begin = layout_.items[run].store_offset;
  for (std::size_t i = 0; i < std::size_t{count} * layout_.items[run].item.size; ++i) {
    record_[begin + i] = static_cast<std::uint8_t>(dice.Roll(256));
  }
}

const qv::layout::Slot& RecordBuilder::SlotOf(std::string_view name) const {
  for (const qv::layout::Field& field : layout_.fields) {
    if (field.name == name && field.store.form != qv::layout::Form::kNone) return field.store;
  }
  throw std::logic_error(fmt::format("the store's {} has no field {}", layout_.name, name));
}

void Append(const RecordBuilder& record, std::vector<std::uint8_t>& records) {
  records.insert(records.end(), record.bytes().begin(), record.bytes().end());
}

}  // namespace qvdesk
