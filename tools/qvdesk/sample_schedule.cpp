// The words behind the sample schedule.
#include "tools/qvdesk/sample_schedule.h"

#include <chrono>
#include <string_view>
#include <vector>

#include "host/stores/schedule_kinds.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

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

constexpr std::size_t kDays = 360;

std::vector<std::uint32_t> InsertGroups(stores::Database& database, std::uint32_t count, Dice& dice) {
  const stores::KindDescription& kind = stores::kScheduleKinds[stores::kScheduleGroups];
  stores::RecordStore groups(database, kind);
  std::vector<std::uint32_t> ids;
  for (std::uint32_t i = 0; i < count; ++i) {
    RecordBuilder group(kind.layout);
    group.Set("name", NameByTurns(kGroups[i % std::size(kGroups)], std::size(kGroups), i));
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
  const auto day = kSampleDay + std::chrono::days(static_cast<int>(dice.Roll(kDays)));
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

void InsertSampleSchedule(stores::Database& database, const SampleSchedule& count, std::uint32_t seed) {
  Dice dice(seed);
  stores::Transaction transaction(database);
  const std::vector<std::uint32_t> groups = InsertGroups(database, count.groups, dice);
  const stores::KindDescription& kind = stores::kScheduleKinds[stores::kScheduleEntries];
  stores::RecordStore entries(database, kind);
  for (std::uint32_t i = 0; i < count.entries; ++i) {
    const RecordBuilder entry = MakeEntry(kind.layout, groups, dice);
    entries.Insert(entry.data(), ModifiedTime(dice));
  }
  transaction.Commit();
}

}  // namespace qvdesk
