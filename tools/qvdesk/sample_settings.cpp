// What the owner chose. Nobody says what a phone's settings mean; names and rings are put where there is room for such.
#include "tools/qvdesk/sample_settings.h"

#include <fmt/format.h>

#include <iterator>
#include <string_view>

#include "host/stores/settings_kinds.h"
#include "modules/settings/settings_layout.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

constexpr std::string_view kProfileNames[] = {"Normal", "会议", "Outdoors", "静音", "In the car", "Headset"};
constexpr std::string_view kCityNames[] = {"Berlin",   "北京", "London", "上海", "Madrid",
                                           "New York", "东京", "Lyon",   "成都"};
/// On workdays, in either of the other two ways that an alarm may repeat in, at the weekend, never, and every day.
struct Alarm {
  std::string_view text, note;
  std::uint32_t repeat_flags;
};
constexpr Alarm kAlarms[] = {{"Get up", "", 0x1F},   {"吃药", "药在厨房", 0x100}, {"Bus", "Stop at the market", 0x80},
                             {"跑步", "公园", 0x60}, {"Call home", "", 0},        {"Feed the cat", "", 0x7F}};
constexpr std::uint32_t kRings = 12;
constexpr std::uint32_t kDay = 86400;

void Put(stores::Database& database, const stores::KindDescription& kind, std::uint32_t place,
         const RecordBuilder& record) {
  stores::RecordStore(database, kind).Insert(record.data(), FileTimeOf(kSampleDay), place);
}

RecordBuilder MakeProfile(std::uint32_t i, Dice& dice) {
  RecordBuilder profile(stores::kProfileKind.layout);
  profile.Set("text_1", kProfileNames[i]);
  for (const char* const ring : {"text_2", "text_3", "text_4", "text_5"}) {
    profile.Set(ring, fmt::format("\\systemdata\\SystemRing\\Ring{:02}.mid", dice.Roll(kRings) + 1));
  }
  profile.Set("text_6", fmt::format("\\My Documents\\Picture{}.bmp", i + 1));
  profile.Set("value_1", dice.Roll(8));
  profile.Set("value_2", dice.Roll(8));
  for (std::uint32_t k = 1; k <= 6; ++k) profile.Set(fmt::format("setting_{}", k), dice.Roll(2));
  return profile;
}

RecordBuilder MakeDisplay(Dice& dice) {
  RecordBuilder display(stores::kDisplayKind.layout);
  for (std::uint32_t k = 0; k <= 10; ++k) display.Set(fmt::format("value_{}", k), dice.Roll(100));
  return display;
}

RecordBuilder MakeBrowser(Dice& dice) {
  RecordBuilder browser(stores::kBrowserKind.layout);
  browser.Set("text_1", "http://wap.example.org/");
  browser.Set("text_2", "\\My Documents\\Pages");
  for (std::uint32_t k = 1; k <= 7; ++k) browser.Set(fmt::format("value_{}", k), dice.Roll(2));
  return browser;
}

RecordBuilder MakeAlarm(std::uint32_t i, Dice& dice) {
  RecordBuilder alarm(stores::kAlarmKind.layout);
  alarm.Set("value_1", dice.Roll(kDay));
  alarm.Set("value_2", dice.Roll(2));
  alarm.Set("repeat_flags", kAlarms[i].repeat_flags);
  alarm.Set("value_3", dice.Roll(60));
  alarm.Set("value_4", 1 + dice.Roll(9));
  alarm.Set("text_1", kAlarms[i].text);
  alarm.Set("text_2", kAlarms[i].note);
  alarm.Set("text_3", fmt::format("\\systemdata\\SystemRing\\Ring{:02}.mid", dice.Roll(kRings) + 1));
  return alarm;
}

}  // namespace

void InsertSampleSettings(stores::Database& database, std::uint32_t seed) {
  stores::Transaction transaction(database);
  Dice dice(seed);
  std::uint32_t place = stores::kProfileKind.first_id;
  for (std::uint32_t i = 0; i < std::size(kProfileNames); ++i) {
    Put(database, stores::kProfileKind, place++, MakeProfile(i, dice));
  }
  Put(database, stores::kDisplayKind, stores::kDisplayKind.first_id, MakeDisplay(dice));
  Put(database, stores::kBrowserKind, stores::kBrowserKind.first_id, MakeBrowser(dice));
  place = stores::kAlarmKind.first_id;
  for (std::uint32_t i = 0; i < std::size(kAlarms); ++i) {
    Put(database, stores::kAlarmKind, place++, MakeAlarm(i, dice));
  }
  place = stores::kClockNameKind.first_id;
  for (const std::string_view name : kCityNames) {
    RecordBuilder city(stores::kClockNameKind.layout);
    city.Set("name", name);
    Put(database, stores::kClockNameKind, place++, city);
  }
  transaction.Commit();
}

}  // namespace qvdesk
