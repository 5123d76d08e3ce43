// Whom the sample phone calls at a key, and whose calls it takes. Nobody says what a phone takes most of the values
// for; names, numbers and times are put where there is room for such.
#include "tools/qvdesk/sample_telephony.h"

#include <fmt/format.h>

#include <chrono>
#include <iterator>
#include <string>
#include <string_view>

#include "host/stores/telephony_kinds.h"
#include "modules/telephony/call_filter_layout.h"
#include "tools/qvdesk/sample_data.h"

namespace qvdesk {
namespace {

constexpr std::uint32_t kFirstKey = 2;  ///< 1 calls the mailbox.

struct Caller {
  std::string_view name, area;
};

constexpr Caller kKeys[] = {
    {"妈妈", "+86 138"}, {"Anna Müller", "+49 170"}, {"Office", "+49 30"},    {"李明", "+86 138"},
    {"Taxi", "+49 30"},  {"Dr. Weiß", "+49 30"},     {"Tom Smith", "+44 20"}, {"家", "+86 10"}};

/// Those to let through or to turn away, and when.
struct Group {
  std::uint32_t id;
  std::string_view name, text;
  std::uint32_t from_hour, to_hour;
  bool every_day;
};

constexpr Group kGroups[] = {
    {1, "Red list", "Always let through", 0, 24, true},
    {2, "黑名单", "Turned away with the busy tone", 0, 24, true},
    {qv::call_filter::kFixedGroup, "Quiet hours", "Only these at night", 22, 31, false},
};

/// By turns of the groups.
constexpr Caller kCallers[] = {{"妈妈", "+86 138"},    {"Survey", "+49 30"},      {"Anna Müller", "+49 170"},
                               {"Dr. Weiß", "+49 30"}, {"推销电话", "+86 10"},    {"Night desk", "+49 30"},
                               {"School", "+49 30"},   {"Lottery", "+44 20"},     {"Neighbour", "+49 170"},
                               {"王经理", "+86 21"},   {"Unknown fax", "+44 20"}, {"李明", "+86 138"}};

/// What callers who are turned away hear about: where to call instead.
struct Forward {
  std::string_view number, label;
};
constexpr Forward kForwards[] = {{"+49 30 5550100", "Office"}, {"+86 10 55501000", "家"}, {"+49 170 5550101", "Anna"}};

void InsertQuickDials(stores::Database& database, std::uint32_t count, Dice& dice) {
  const stores::KindDescription& kind = stores::kQuickDialKinds[0];
  stores::RecordStore quick_dials(database, kind);
  for (std::uint32_t i = 0; i < count; ++i) {
    const stores::FileTime modified = ModifiedTime(dice);
    RecordBuilder entry(kind.layout);
    const Caller& from = kKeys[i % std::size(kKeys)];
    entry.Set("text_1", NameByTurns(from.name, std::size(kKeys), i));
    entry.Set("number", NumberIn(from.area, dice));
    entry.Set("value_132", kFirstKey + i);
    entry.Set("time", TimeText(modified));
    quick_dials.Insert(entry.data(), modified);
  }
}

void InsertGroups(stores::Database& database, Dice& dice) {
  constexpr stores::FileTime kHour = 3600 * stores::kSecond;
  constexpr std::uint32_t kAllDays = 0x7F;
  const stores::KindDescription& kind = stores::kCallFilterKinds[stores::kCallFilterGroups];
  stores::RecordStore groups(database, kind);
  for (const Group& from : kGroups) {
    const stores::FileTime modified = ModifiedTime(dice);
    RecordBuilder group(kind.layout);
    group.Set("name", from.name);
    group.Set("text", from.text);
    group.SetFileTime("time_0", modified);
    group.SetFileTime("time_1", FileTimeOf(kSampleDay) + from.from_hour * kHour);
    group.SetFileTime("time_2", FileTimeOf(kSampleDay) + from.to_hour * kHour);
    group.Set("days", from.every_day ? kAllDays : 0);
    groups.Insert(group.data(), modified, from.id);
  }
}

void InsertEntries(stores::Database& database, std::uint32_t count, Dice& dice) {
  const stores::KindDescription& kind = stores::kCallFilterKinds[stores::kCallFilterEntries];
  stores::RecordStore entries(database, kind);
  for (std::uint32_t i = 0; i < count; ++i) {
    const stores::FileTime modified = ModifiedTime(dice);
    RecordBuilder entry(kind.layout);
    entry.Set("group_id", kGroups[i % std::size(kGroups)].id);
    entry.SetFileTime("time", modified);
    const Caller& from = kCallers[i % std::size(kCallers)];
    entry.Set("text_1", NameByTurns(from.name, std::size(kCallers), i));
    entry.Set("text_2", NumberIn(from.area, dice));
    entries.Insert(entry.data(), modified);
  }
}

void InsertConfig(stores::Database& database) {
  RecordBuilder config(stores::kCallFilterConfigKind.layout);
  config.Set("value_4", 1);
  config.Set("count", std::size(kForwards));
  for (std::uint32_t i = 0; i < std::size(kForwards); ++i) {
    config.Set(fmt::format("index_of_{}", i + 1), i);
    config.Set(fmt::format("value_of_{}", i + 1), i + 1);
    config.Set(fmt::format("number_{}", i + 1), kForwards[i].number);
    config.Set(fmt::format("short_text_{}", i + 1), kForwards[i].label);
  }
  stores::RecordStore(database, stores::kCallFilterConfigKind).Insert(config.data());
}

}  // namespace

void InsertSampleTelephony(stores::Database& database, const SampleTelephony& count, std::uint32_t seed) {
  stores::Transaction transaction(database);
  Dice dice(seed);
  InsertQuickDials(database, count.quick_dials, dice);
  if (count.filters != 0) {
    InsertGroups(database, dice);
    InsertEntries(database, count.filters, dice);
    InsertConfig(database);
  }
  transaction.Commit();
}

}  // namespace qvdesk
