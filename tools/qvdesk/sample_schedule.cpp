// The words and the dice behind the sample schedule.
#include "tools/qvdesk/sample_schedule.h"

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/schedule_kinds.h"
#include "tools/qvdesk/field_value.h"

namespace qvdesk {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kGroups[] = {"Work", "Family", "朋友", "Travel", "Sports", "学习"};
constexpr std::string_view kTitles[] = {
    "Team meeting", "Dentist",     "Lunch with Anna",  "项目会议",     "Project review",
    "妈妈生日",     "Gym",         "Flight to Berlin", "Piano lesson", "和李明吃饭",
    "Quarter plan", "Car service", "Parents' evening", "电话会议",     "Book club"};
constexpr std::string_view kPlaces[] = {"Room 4.12",           "Main Street 8", "北京饭店", "Café Central",
                                        "Airport, terminal 2", "上海路 88 号",  "Home",     ""};
constexpr std::string_view kNotes[] = {"Bring the slides and last month's numbers.",
                                       "Ask about the invoice; call back before noon.",
                                       "带上护照和机票。",
                                       "Do not forget the present!",
                                       "记得提前十分钟到。",
                                       "",
                                       "",
                                       "Agenda: budget, staffing, next release.\r\nMinutes: to be sent the same day."};

/// The same numbers from the same seed with every compiler.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) {}

  /// 0 to sides - 1.
  std::uint32_t Roll(std::size_t sides) { return static_cast<std::uint32_t>(engine_() % sides); }
  bool OneIn(std::size_t sides) { return Roll(sides) == 0; }
  std::string_view Pick(std::span<const std::string_view> from) { return from[Roll(from.size())]; }

 private:
  std::mt19937 engine_;
};

/// A store record that is filled field by field, by the names of its layout.
class RecordBuilder {
 public:
  explicit RecordBuilder(const qv::layout::RecordLayout& layout) : layout_(layout), record_(layout.store_size) {}

  void Set(std::string_view field, std::uint32_t value) { qv::layout::StoreSlot(SlotOf(field), record_.data(), value); }
  void Set(std::string_view field, std::string_view text) {
    if (!StoreText(text, SlotOf(field), record_)) throw std::logic_error(fmt::format("{}: text too long", field));
  }
  void SetDate(const std::string& prefix, std::chrono::sys_days day) {
    const std::chrono::year_month_day date(day);
    Set(prefix + "_year", static_cast<std::uint32_t>(static_cast<int>(date.year())));
    Set(prefix + "_month", static_cast<unsigned>(date.month()));
    Set(prefix + "_day", static_cast<unsigned>(date.day()));
  }
  void SetTime(const std::string& prefix, std::uint32_t minutes) {
    Set(prefix + "_hour", minutes / 60 % 24);
    Set(prefix + "_minute", minutes % 60);
  }
  /// Items of made-up bytes.
  void SetItems(std::size_t run, const char* count_field, std::uint32_t count, Dice& dice) {
    Set(count_field, count);
    const std::size_t begin = layout_.items[run].store_offset;
    for (std::size_t i = 0; i < std::size_t{count} * layout_.items[run].item_size; ++i) {
      record_[begin + i] = static_cast<std::uint8_t>(dice.Roll(256));
    }
  }

  const std::uint8_t* data() const { return record_.data(); }

 private:
  const qv::layout::Slot& SlotOf(std::string_view name) const {
    for (const qv::layout::Field& field : layout_.fields) {
      if (field.name == name) return field.store;
    }
    throw std::logic_error(fmt::format("{} has no field {}", layout_.name, name));
  }

  const qv::layout::RecordLayout& layout_;
  Bytes record_;
};

constexpr auto kFirstDay = std::chrono::sys_days(std::chrono::January / 5 / 2026);
constexpr std::size_t kDays = 360;

/// Some time in the half year before the first entry, to the second.
stores::FileTime ModifiedTime(Dice& dice) {
  constexpr auto kSince1601 = kFirstDay - std::chrono::sys_days(std::chrono::January / 1 / 1601);
  constexpr std::uint32_t kHalfYear = 180 * 86400;
  const auto second = std::chrono::seconds(kSince1601).count() - 1 - dice.Roll(kHalfYear);
  return second * 10'000'000;
}

std::vector<std::uint32_t> InsertGroups(stores::Database& database, std::uint32_t count, Dice& dice) {
  const stores::KindDescription& kind = stores::kScheduleKinds[stores::kScheduleGroups];
  stores::RecordStore groups(database, kind);
  std::vector<std::uint32_t> ids;
  for (std::uint32_t i = 0; i < count; ++i) {
    RecordBuilder group(kind.layout);
    const std::string_view name = kGroups[i % std::size(kGroups)];
    group.Set("name",
              i < std::size(kGroups) ? std::string(name) : fmt::format("{} {}", name, i / std::size(kGroups) + 1));
    group.Set("value_250", i + 1);
    ids.push_back(groups.Insert(group.data(), ModifiedTime(dice)));
  }
  return ids;
}

void SetRepeat(RecordBuilder& entry, std::chrono::sys_days day, Dice& dice) {
  constexpr std::uint32_t kKinds = 4;
  entry.Set("repeat_kind", 1 + dice.Roll(kKinds));
  entry.SetDate("repeat_start", day);
  entry.SetDate("repeat_end", day + std::chrono::days(static_cast<int>(30 + dice.Roll(300))));
  entry.Set("repeat_weekdays", 1u << std::chrono::weekday(day).c_encoding());
}

RecordBuilder MakeEntry(const qv::layout::RecordLayout& layout, const std::vector<std::uint32_t>& groups, Dice& dice) {
  RecordBuilder entry(layout);
  if (!groups.empty()) entry.Set("group_id", groups[dice.Roll(groups.size())]);
  entry.Set("text_1", dice.Pick(kTitles));
  entry.Set("text_2", dice.Pick(kNotes));
  entry.Set("text_3", dice.Pick(kPlaces));
  const auto day = kFirstDay + std::chrono::days(static_cast<int>(dice.Roll(kDays)));
  const std::uint32_t begin = 8 * 60 + 15 * dice.Roll(40);
  const std::uint32_t length = 30 * (1 + dice.Roll(6));
  entry.SetDate("start", day);
  entry.SetTime("start", begin);
  entry.SetDate("end", day);
  entry.SetTime("end", begin + length);
  if (dice.OneIn(5)) SetRepeat(entry, day, dice);
  if (dice.OneIn(4)) entry.SetItems(0, "item_80_count", 1 + dice.Roll(3), dice);
  if (dice.OneIn(8)) entry.SetItems(1, "item_144_count", 1 + dice.Roll(2), dice);
  return entry;
}

}  // namespace

void InsertSampleSchedule(stores::Database& database, const SampleSize& size) {
  Dice dice(size.seed);
  stores::Transaction transaction(database);
  const std::vector<std::uint32_t> groups = InsertGroups(database, size.groups, dice);
  const stores::KindDescription& kind = stores::kScheduleKinds[stores::kScheduleEntries];
  stores::RecordStore entries(database, kind);
  for (std::uint32_t i = 0; i < size.records; ++i) {
    const RecordBuilder entry = MakeEntry(kind.layout, groups, dice);
    entries.Insert(entry.data(), ModifiedTime(dice));
  }
  transaction.Commit();
}

}  // namespace qvdesk
