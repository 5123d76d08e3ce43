// The words behind the sample agenda: meetings with their points, and what was written down about some of these.
#include "tools/qvdesk/sample_agenda.h"

#include <chrono>
#include <string_view>
#include <vector>

#include "host/stores/agenda_database.h"
#include "modules/calendar/agenda_layout.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

constexpr std::string_view kGroups[] = {"Projects", "Club", "家长会", "Board"};
constexpr std::string_view kTitles[] = {"Kick-off",       "Weekly round",    "季度总结", "Release plan",
                                        "Annual meeting", "School festival", "预算会议"};
constexpr std::string_view kTexts[] = {"Bring the figures of last year.", "Minutes by Anna.", "请大家准时到。",
                                       "Second floor, the room with the big table.", ""};
constexpr std::string_view kPoints[] = {
    "Budget", "Staffing", "下一步计划", "Any other business", "Date of the next round", "Review"};
constexpr std::string_view kMinutes[] = {"Agreed without a vote.", "Tom looks into it until March.", "下次再讨论。"};

// Positions of the runs of items.
constexpr std::size_t kItems = 0;
constexpr std::size_t kLongItems = 1;

constexpr std::uint32_t kFirstLongItemType = 2;
constexpr std::uint32_t kLongItemTypes = 8;
constexpr std::size_t kGroupNameAt = 42;  ///< In the group's bytes, where groups of the schedule have theirs.
constexpr std::size_t kDays = 360;

std::vector<std::uint32_t> InsertGroups(stores::RecordStore& groups, std::uint32_t count, Dice& dice) {
  std::vector<std::uint32_t> ids;
  for (std::uint32_t i = 0; i < count; ++i) {
    RecordBuilder group(groups.Kind().layout);
    group.SetWideText("bytes_4", kGroupNameAt, NameByTurns(kGroups[i % std::size(kGroups)], std::size(kGroups), i));
    ids.push_back(groups.Insert(group.data(), ModifiedTime(dice)));
  }
  return ids;
}

/// A day and an hour.
void SetTime(RecordBuilder& entry, Dice& dice) {
  const std::chrono::year_month_day day(kSampleDay + std::chrono::days(static_cast<int>(dice.Roll(kDays))));
  const std::uint32_t hour = 8 + dice.Roll(10);
  entry.Set("value_44", static_cast<std::uint32_t>(static_cast<int>(day.year())));
  entry.Set("value_48", static_cast<unsigned>(day.month()));
  entry.Set("value_52", static_cast<unsigned>(day.day()));
  entry.Set("value_80", hour);
  entry.Set("value_84", hour + 1);
}

RecordBuilder MakeRecord(const std::vector<std::uint32_t>& groups, Dice& dice) {
  const qv::layout::RecordLayout& layout = qv::agenda::kEntryLayout;
  RecordBuilder entry(layout);
  if (!groups.empty()) entry.Set("group_id", groups[dice.Roll(groups.size())]);
  entry.Set("title", dice.Pick(kTitles));
  entry.Set("text", dice.Pick(kTexts));
  SetTime(entry, dice);
  const std::uint32_t points = dice.Roll(4);
  entry.Set("item_count", points);
  for (std::uint32_t i = 0; i < points; ++i) {
    RecordBuilder item(*layout.items[kItems].layout);
    item.Set("value_8", i + 1);
    item.Set("text", dice.Pick(kPoints));
    entry.SetItem(kItems, i, item);
  }
  return entry;
}

std::vector<std::uint8_t> MakeLongItems(Dice& dice) {
  std::vector<std::uint8_t> items;
  for (std::uint32_t i = dice.Roll(3); i != 0; --i) {
    RecordBuilder item(*qv::agenda::kEntryLayout.items[kLongItems].layout);
    item.Set("type", kFirstLongItemType + dice.Roll(kLongItemTypes));
    item.SetWideText("bytes_4", 0, dice.Pick(kMinutes));
    Append(item, items);
  }
  return items;
}

}  // namespace

void InsertSampleAgenda(stores::Database& database, const SampleAgenda& count, std::uint32_t seed) {
  Dice dice(seed);
  stores::Transaction transaction(database);
  stores::AgendaDatabase agenda(database);
  const std::vector<std::uint32_t> groups = InsertGroups(agenda.Tables()[stores::kAgendaGroups], count.groups, dice);
  for (std::uint32_t i = 0; i < count.entries; ++i) {
    const RecordBuilder record = MakeRecord(groups, dice);
    agenda.Insert({.record = record.bytes(), .long_items = MakeLongItems(dice)}, ModifiedTime(dice));
  }
  transaction.Commit();
}

}  // namespace qvdesk
