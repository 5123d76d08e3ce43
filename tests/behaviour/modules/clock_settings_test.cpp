// Module 16: six alarms and nine names in one file, and how an alarm repeats. What it has in common with the other
// settings is in settings_modules_test.cpp.
#include <array>

#include "tests/support/run_events.h"
#include "tests/support/scripted_settings_stores.h"
#include "tests/support/turned_bytes.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char16_t kFile[] = u"\\sync\\clockinfo.tbl";
constexpr std::size_t kClockSize = ScriptedAlarmStore::kClockSize;
constexpr std::size_t kAlarmSize = 344;
constexpr std::size_t kAlarmRecordSize = 404;
constexpr std::size_t kNameAt = 2064;  // The first of nine, 30 bytes apart.
constexpr std::size_t kNameSize = 30;
constexpr std::size_t kNameRecordSize = 76;
constexpr std::size_t kNameRecordAt = 2424;
constexpr std::size_t kFileSize = 3108;

// --- An alarm and a name, byte by byte. ---

constexpr std::u16string_view kText = u"Fr\u00FChschicht";
constexpr std::u16string_view kLongText = u"\\Storage\\r\u00EDng\\W\u00E4cker \u738B.mid";
constexpr std::u16string_view kLongestText = u"Zug 7:14, Gleis 3; nicht vergessen: Kohl f\u00FCr Anna \xD83D\xDE00";

/// With the flags 0 it does not repeat.
Bytes StoreAlarm(std::uint32_t flags, std::uint8_t unused = 0xFF) {
  Bytes r(kAlarmSize, unused);
  Put32(r, 0, 0xA1A2A3A4);
  Put32(r, 4, 0xB1B2B384);  // The low byte travels.
  Put32(r, 8, flags);
  Put32(r, 12, 0xC1C2C3C4);
  Put32(r, 16, 0xD1D2D3D4);
  PutTextWithEnd(r, 20, kText);
  PutTextWithEnd(r, 50, kLongText);
  PutTextWithEnd(r, 132, kLongestText);
  return r;
}

Bytes ExchangeAlarm(std::uint8_t mode, const std::array<std::uint8_t, 7>& days = {}, std::uint8_t unused = 0) {
  Bytes r(kAlarmRecordSize, unused);
  Put32(r, 4, 0xA1A2A3A4);
  Put8(r, 8, 0x84);
  Put8(r, 9, mode);
  for (std::size_t i = 0; i < 7; ++i) Put8(r, 10 + i, days.at(i));
  Put32(r, 32, 0xC1C2C3C4);
  Put32(r, 36, 0xD1D2D3D4);
  PutTextWithEnd(r, 52, kText);
  PutTextWithEnd(r, 82, kLongText);
  PutTextWithEnd(r, 164, kLongestText);
  return r;
}

Bytes RecoveredAlarm(std::uint32_t flags) {
  Bytes r = StoreAlarm(flags, 0);
  Put32(r, 4, 0x84);  // Widened without its sign.
  return r;
}

Bytes StoreName(std::u16string_view text, std::uint8_t unused = 0xFF) {
  Bytes r(kNameSize, unused);
  PutTextWithEnd(r, 0, text);
  return r;
}

Bytes ExchangeName(std::uint32_t index, std::u16string_view text, std::uint8_t unused = 0) {
  Bytes r(kNameRecordSize, unused);
  Put32(r, 4, index);
  PutTextWithEnd(r, 8, text);
  return r;
}

// Store, byte count, exchange; of an alarm, but for its flags. A text that fills its field loses its last character,
// and the longest one has more room in the exchange record.
constexpr CopiedBytes kAlarmBytes[] = {{0, 4, 4},    {4, 1, 8},    {12, 4, 32},    {16, 4, 36},
                                       {20, 28, 52}, {50, 80, 82}, {132, 212, 164}};
constexpr CopiedBytes kAlarmRecordBytes[] = {{4, 4, 0},    {8, 1, 4},    {32, 4, 12},    {36, 4, 16},
                                             {52, 28, 20}, {82, 80, 50}, {164, 210, 132}};

constexpr std::array<std::u16string_view, 9> kNameTexts = {
    u"Berlin", u"", u"\u5317\u4EAC", u"a name of 14..", u"New York", u"5", u"6", u"7", u"T\u014Dky\u014D"};

/// What lies at a place; the test fails when nothing does.
Bytes At(std::size_t begin, std::size_t size, const Bytes& bytes) {
  EXPECT_LE(begin + size, bytes.size());
  if (begin + size > bytes.size()) return Bytes(size);
  const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(begin);
  return {from, from + static_cast<std::ptrdiff_t>(size)};
}

void PutAt(Bytes& bytes, std::size_t begin, const Bytes& part) {
  std::ranges::copy(part, bytes.begin() + static_cast<std::ptrdiff_t>(begin));
}

Bytes AlarmOf(const Bytes& clock, std::size_t alarm) {
  return At(alarm * kAlarmSize, kAlarmSize, clock);
}
Bytes NameOf(const Bytes& clock, std::size_t name) {
  return At(kNameAt + name * kNameSize, kNameSize, clock);
}
Bytes AlarmRecordOf(const Bytes& file, std::size_t alarm) {
  return At(alarm * kAlarmRecordSize, kAlarmRecordSize, file);
}

/// The alarms of a file, all without repetition unless given; any number of names may follow.
Bytes SixAlarmRecords(const Bytes& first = ExchangeAlarm(0)) {
  Bytes file = first;
  for (int i = 1; i < 6; ++i) Append(file, ExchangeAlarm(0));
  return file;
}

Bytes NineNameRecords() {
  Bytes names;
  for (std::uint32_t i = 0; i < 9; ++i) Append(names, ExchangeName(i, kNameTexts.at(i)));
  return names;
}

class ClockSettingsTest : public AgentTest {
 protected:
  Bytes Exported(const Bytes& clock) {
    store_.structures["clock"] = clock;
    EXPECT_EQ(Export(16, 1).code, 0u);
    return ReadFile(kFile);
  }
  Bytes Recovered(const Bytes& file) {
    WriteFile(kFile, file);
    store_.structures.clear();
    EXPECT_EQ(Recover(16, 1).code, 0u);
    return store_.structures["clock"];
  }
  /// What becomes of the first alarm's flags.
  std::uint32_t RecoveredFlags(std::uint8_t mode, const std::array<std::uint8_t, 7>& days) {
    return Get32(AlarmOf(Recovered(SixAlarmRecords(ExchangeAlarm(mode, days))), 0), 8);
  }

  ScriptedAlarmStore store_;
};

// --- Where everything goes ---

TEST_F(ClockSettingsTest, AlarmsAndNamesAreExportedInOrder) {
  constexpr std::uint32_t kFlags[] = {0, 0x100, 0x80, 0x7F, 0x15, 0x40};
  Bytes clock;
  for (const std::uint32_t flags : kFlags) Append(clock, StoreAlarm(flags));
  for (const std::u16string_view name : kNameTexts) Append(clock, StoreName(name));
  Append(clock, {0xFF, 0xFF});

  Bytes file = ExchangeAlarm(0);
  Append(file, ExchangeAlarm(1));
  Append(file, ExchangeAlarm(2));
  Append(file, ExchangeAlarm(3, {1, 1, 1, 1, 1, 1, 1}));
  Append(file, ExchangeAlarm(3, {1, 0, 1, 0, 1, 0, 0}));
  Append(file, ExchangeAlarm(3, {0, 0, 0, 0, 0, 0, 1}));
  Append(file, NineNameRecords());
  ASSERT_EQ(clock.size(), kClockSize);
  ASSERT_EQ(file.size(), kFileSize);
  EXPECT_EQ(Exported(clock), file);

  Bytes recovered;
  for (const std::uint32_t flags : kFlags) Append(recovered, RecoveredAlarm(flags));
  for (const std::u16string_view name : kNameTexts) Append(recovered, StoreName(name, 0));
  Append(recovered, {0, 0});
  EXPECT_EQ(Recovered(file), recovered);
}

TEST_F(ClockSettingsTest, WhatADesktopLeavesInUnusedBytesIsNotRead) {
  Bytes file;
  for (int i = 0; i < 6; ++i) Append(file, ExchangeAlarm(3, {1, 0xFF, 0, 2, 1, 0xFF, 0xFF}, 0xFF));
  for (std::uint32_t i = 0; i < 9; ++i) Append(file, ExchangeName(i, kNameTexts.at(i), 0xFF));
  Bytes recovered;
  for (int i = 0; i < 6; ++i) Append(recovered, RecoveredAlarm(0x11));
  for (const std::u16string_view name : kNameTexts) Append(recovered, StoreName(name, 0));
  Append(recovered, {0, 0});
  EXPECT_EQ(Recovered(file), recovered);
}

TEST_F(ClockSettingsTest, EachByteOfAnAlarmGoesWhereItBelongsAndNowhereElse) {
  Bytes full(kClockSize, 0x11);
  for (std::size_t alarm = 0; alarm < 6; ++alarm) Put32(full, alarm * kAlarmSize + 8, 0);
  const Bytes before = AlarmRecordOf(Exported(full), 0);
  for (std::size_t i = 0; i < kAlarmSize; ++i) {
    if (i >= 8 && i < 12) continue;  // The flags.
    const std::size_t alarm = i % 6;
    const Bytes after = Exported(WithOneTurned(full, alarm * kAlarmSize + i));
    for (std::size_t k = 0; k < 6; ++k) {
      const Bytes expected = k == alarm ? WithByteTurned(before, kAlarmBytes, i) : before;
      ASSERT_EQ(AlarmRecordOf(after, k), expected) << "store byte " << i << " of alarm " << alarm;
    }
  }
}

TEST_F(ClockSettingsTest, EachByteOfAnAlarmRecordGoesWhereItBelongsAndNowhereElse) {
  const Bytes full(kFileSize - 9 * kNameRecordSize, 0x11);
  const Bytes before = AlarmOf(Recovered(full), 0);
  EXPECT_EQ(Get32(before, 8), 0u) << "a mode that there is not";
  for (std::size_t i = 0; i < kAlarmRecordSize; ++i) {
    const std::size_t alarm = i % 6;
    const Bytes after = Recovered(WithOneTurned(full, alarm * kAlarmRecordSize + i));
    for (std::size_t k = 0; k < 6; ++k) {
      const Bytes expected = k == alarm ? WithByteTurned(before, kAlarmRecordBytes, i) : before;
      ASSERT_EQ(AlarmOf(after, k), expected) << "exchange byte " << i << " of alarm " << alarm;
    }
  }
}

TEST_F(ClockSettingsTest, EachByteOfTheNamesGoesWhereItBelongsAndNowhereElse) {
  const Bytes full(kClockSize, 0x11);
  const Bytes exported = Exported(full);
  const Bytes recovered = Recovered(exported);
  for (std::size_t i = kNameAt; i < kClockSize; ++i) {
    const std::size_t name = (i - kNameAt) / kNameSize;
    const std::size_t at = (i - kNameAt) % kNameSize;
    const std::size_t record = kNameRecordAt + name * kNameRecordSize;
    const bool travels = name < 9 && at < kNameSize - 2;
    const Bytes after = Exported(WithOneTurned(full, i));
    ASSERT_EQ(after, travels ? WithOneTurned(exported, record + 8 + at) : exported) << "store byte " << i;
    const Bytes back = Recovered(after);
    ASSERT_EQ(back, travels ? WithOneTurned(recovered, i) : recovered) << "store byte " << i;
  }
}

TEST_F(ClockSettingsTest, EachByteOfANameRecordGoesWhereItBelongsAndNowhereElse) {
  Bytes full(kFileSize, 0x11);
  for (std::uint32_t i = 0; i < 9; ++i) Put32(full, kNameRecordAt + i * kNameRecordSize + 4, i);
  const Bytes before = Recovered(full);
  for (std::size_t i = 0; i < kNameRecordSize; ++i) {
    if (i >= 4 && i < 8) continue;  // The index.
    const std::size_t name = i % 9;
    const Bytes after = Recovered(WithOneTurned(full, kNameRecordAt + name * kNameRecordSize + i));
    const bool travels = i >= 8 && i < 36;
    ASSERT_EQ(after, travels ? WithOneTurned(before, kNameAt + name * kNameSize + i - 8) : before)
        << "exchange byte " << i << " of name " << name;
  }
}

TEST_F(ClockSettingsTest, WhatTheStoreDoesNotFillIsZero) {
  Bytes empty(kNameRecordAt);
  for (std::uint32_t i = 0; i < 9; ++i) Append(empty, ExchangeName(i, u""));
  EXPECT_EQ(Exported({}), empty);
}

// --- How an alarm repeats ---

TEST_F(ClockSettingsTest, TheFirstFlagThatIsThereDecidesTheMode) {
  struct Flags {
    std::uint32_t flags;
    std::uint8_t mode;
    std::array<std::uint8_t, 7> days;
  };
  constexpr Flags kCases[] = {
      {0, 0, {}},
      {0x100, 1, {}},
      {0x17F, 1, {}},
      {0x101, 1, {}},
      {0x180, 1, {}},
      {0x1FF, 1, {}},
      {0x80, 2, {}},
      {0x81, 2, {}},
      {0xFF, 2, {}},
      {0x01, 3, {1, 0, 0, 0, 0, 0, 0}},
      {0x02, 3, {0, 1, 0, 0, 0, 0, 0}},
      {0x04, 3, {0, 0, 1, 0, 0, 0, 0}},
      {0x08, 3, {0, 0, 0, 1, 0, 0, 0}},
      {0x10, 3, {0, 0, 0, 0, 1, 0, 0}},
      {0x20, 3, {0, 0, 0, 0, 0, 1, 0}},
      {0x40, 3, {0, 0, 0, 0, 0, 0, 1}},
      {0x7F, 3, {1, 1, 1, 1, 1, 1, 1}},
      {0x200, 0, {}},  // What no flag has been heard of.
      {0xFFFFFE00, 0, {}},
      {0xFFFFFE2A, 3, {0, 1, 0, 1, 0, 1, 0}},
      {0xFFFFFE80, 2, {}},
      {0xFFFFFFFF, 1, {}},
  };
  for (const Flags& flags : kCases) {
    Bytes clock(kClockSize);
    PutAt(clock, 2 * kAlarmSize, StoreAlarm(flags.flags));
    EXPECT_EQ(AlarmRecordOf(Exported(clock), 2), ExchangeAlarm(flags.mode, flags.days)) << flags.flags;
  }
}

TEST_F(ClockSettingsTest, EachCombinationOfFlagsComesBackAsItsModeSays) {
  for (std::uint32_t first = 0; first < 0x200; first += 6) {
    Bytes clock;
    for (std::uint32_t i = 0; i < 6; ++i) Append(clock, StoreAlarm(first + i));
    clock.resize(kClockSize);
    const Bytes back = Recovered(Exported(clock));
    for (std::uint32_t i = 0; i < 6; ++i) {
      const std::uint32_t flags = first + i;
      std::uint32_t expected = flags & 0x7F;
      if ((flags & 0x80) != 0) expected = 0x80;
      if ((flags & 0x100) != 0) expected = 0x100;
      ASSERT_EQ(AlarmOf(back, i), RecoveredAlarm(expected)) << flags;
    }
  }
}

TEST_F(ClockSettingsTest, OnlyThreeModesGiveFlags) {
  for (std::uint32_t mode = 0; mode < 256; ++mode) {
    const std::uint32_t expected = mode == 1 ? 0x100 : mode == 2 ? 0x80 : mode == 3 ? 0x7F : 0;
    EXPECT_EQ(RecoveredFlags(static_cast<std::uint8_t>(mode), {1, 1, 1, 1, 1, 1, 1}), expected) << mode;
  }
}

TEST_F(ClockSettingsTest, EachCombinationOfDaysGivesItsFlags) {
  for (std::uint32_t flags = 0; flags < 0x80; ++flags) {
    std::array<std::uint8_t, 7> days{};
    for (std::size_t day = 0; day < 7; ++day) days.at(day) = static_cast<std::uint8_t>(flags >> day & 1);
    EXPECT_EQ(RecoveredFlags(3, days), flags);
  }
}

TEST_F(ClockSettingsTest, ADayCountsOnlyWhenItIsOne) {
  for (std::uint32_t day = 0; day < 256; ++day) {
    const auto value = static_cast<std::uint8_t>(day);
    EXPECT_EQ(RecoveredFlags(3, {0, 0, value, 0, 0, 0, value}), day == 1 ? 0x44u : 0u) << day;
  }
}

// --- Names ---

TEST_F(ClockSettingsTest, ANameGoesWhereItsIndexSays) {
  Bytes file = SixAlarmRecords();
  for (const std::uint32_t index : {8u, 3u, 0u, 7u, 1u, 6u, 2u, 5u, 4u}) {
    Append(file, ExchangeName(index, kNameTexts.at(index)));
  }
  const Bytes clock = Recovered(file);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(NameOf(clock, i), StoreName(kNameTexts.at(i), 0)) << i;
}

TEST_F(ClockSettingsTest, OfTwoNamesOfOneIndexTheLastCounts) {
  Bytes file = SixAlarmRecords();
  for (std::uint32_t i = 0; i < 9; ++i) Append(file, ExchangeName(4, i == 8 ? u"end" : u"a longer one"));
  Bytes expected(9 * kNameSize);
  PutAt(expected, 4 * kNameSize, StoreName(u"end", 0));
  EXPECT_EQ(At(kNameAt, 9 * kNameSize, Recovered(file)), expected);
}

TEST_F(ClockSettingsTest, ANameWithoutAPlaceIsRefusedBeforeAnythingIsApplied) {
  for (const std::uint32_t index : {9u, 0x100u, 0x10000u, 0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    for (std::size_t place = 0; place < 9; ++place) {
      Bytes file = SixAlarmRecords();
      Append(file, NineNameRecords());
      Put32(file, kNameRecordAt + place * kNameRecordSize + 4, index);
      WriteFile(kFile, file);
      EXPECT_EQ(Recover(16, 1).code, 0x20000200u) << index;
      EXPECT_THAT(store_.calls, IsEmpty());
      EXPECT_EQ(ReadFile(kFile), file);
    }
  }
}

TEST_F(ClockSettingsTest, ANameWithoutAPlaceDoesNoHarmInARecordThatIsNotWhole) {
  Bytes file = SixAlarmRecords();
  Append(file, ExchangeName(2, u"whole"));
  Append(file, ExchangeName(9, u"not whole"));
  file.pop_back();
  EXPECT_EQ(NameOf(Recovered(file), 2), StoreName(u"whole", 0));
  Append(file, {0});
  WriteFile(kFile, file);
  EXPECT_EQ(Recover(16, 1).code, 0x20000200u);
}

// --- Files of other lengths ---

/// What the store is told of an alarm record.
Bytes AlarmOfRecord(const Bytes& record) {
  Bytes alarm(kAlarmSize);
  for (const CopiedBytes& field : kAlarmRecordBytes) PutAt(alarm, field.to, At(field.from, field.size, record));
  std::uint32_t flags = 0;
  for (std::uint32_t day = 0; day < 7; ++day) flags |= record[9] == 3 && record[10 + day] == 1 ? 1u << day : 0;
  Put32(alarm, 8, flags);
  return alarm;
}

TEST_F(ClockSettingsTest, AFileCutShortKeepsPartsOfAlarmsButWholeNames) {
  Bytes whole;
  for (int i = 0; i < 6; ++i) Append(whole, ExchangeAlarm(3, {1, 1, 1, 1, 1, 1, 1}));
  Append(whole, NineNameRecords());
  // Every length within an alarm and within the names, and some between.
  for (std::size_t size = 1; size <= kFileSize; size += size > kAlarmRecordSize && size < kNameRecordAt - 13 ? 13 : 1) {
    Bytes cut = whole;
    cut.resize(size);
    Bytes padded = cut;
    padded.resize(kFileSize);
    Bytes expected(kClockSize);
    for (std::size_t i = 0; i < 6; ++i) PutAt(expected, i * kAlarmSize, AlarmOfRecord(AlarmRecordOf(padded, i)));
    for (std::size_t i = 0; kNameRecordAt + (i + 1) * kNameRecordSize <= size; ++i) {
      PutAt(expected, kNameAt + i * kNameSize, StoreName(kNameTexts.at(i), 0));
    }
    ASSERT_EQ(Recovered(cut), expected) << size << " bytes";
  }
}

TEST_F(ClockSettingsTest, AnEmptyFileChangesNothing) {
  WriteFile(kFile, {});
  EXPECT_EQ(Recover(16, 1).code, 0u);
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_TRUE(Exists(kFile));
}

TEST_F(ClockSettingsTest, WhatFollowsTheNinthNameIsNotRead) {
  Bytes file = SixAlarmRecords();
  Append(file, NineNameRecords());
  const Bytes clock = Recovered(file);
  Append(file, ExchangeName(0, u"tenth"));
  Append(file, ExchangeName(10, u"eleventh"));
  EXPECT_EQ(Recovered(file), clock);
}

// --- Order and failures ---

TEST_F(ClockSettingsTest, AnExportMakesItsFileBeforeItLooksUpItsEntryPoint) {
  RunEvents events(store_);
  EXPECT_EQ(Export(16, 1).code, 0u);
  EXPECT_THAT(events.Take(), ElementsAre("create clockinfo.tbl", "find Sync_GetClockInfo", "call Sync_GetClockInfo"));
}

TEST_F(ClockSettingsTest, ARecoverLeavesTheFile) {
  const Bytes file = SixAlarmRecords();
  WriteFile(kFile, file);
  RunEvents events(store_);
  EXPECT_EQ(Recover(16, 1).code, 0u);
  EXPECT_THAT(events.Take(),
              ElementsAre("open clockinfo.tbl", "find Sync_UpdateClockInfo", "call Sync_UpdateClockInfo"));
  EXPECT_EQ(ReadFile(kFile), file);
}

TEST_F(ClockSettingsTest, AlarmsAndNamesAreTwoWritesAndTwoReads) {
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" || call.function == "ReadFile") sizes.push_back(call.size);
  });
  EXPECT_EQ(Export(16, 1).code, 0u);
  EXPECT_EQ(Recover(16, 1).code, 0u);
  handset::Observe({});
  EXPECT_THAT(sizes, ElementsAre(2424, 684, 2424, 684));
}

TEST_F(ClockSettingsTest, AStoreThatCannotGiveTheClockLeavesAnEmptyFile) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    const ScriptedAlarmStore lacking({u"Sync_GetClockInfo"}, address);
    WriteText(kFile, "old");
    EXPECT_EQ(Export(16, 1).code, 0x10000002u);
    EXPECT_EQ(LocalExport(16), 0x10000002u);
    EXPECT_THAT(ReadFile(kFile), IsEmpty());
  }
}

TEST_F(ClockSettingsTest, AStoreThatRefusesToGiveTheClockLeavesAnEmptyFile) {
  for (const std::uint32_t answer : {0u, 2u, 0x101u, 0xFFFFFFFFu}) {
    store_.answer = answer;
    WriteText(kFile, "old");
    EXPECT_EQ(Export(16, 1).code, 0x10000006u);
    EXPECT_EQ(LocalExport(16), 0x10000006u);
    EXPECT_THAT(ReadFile(kFile), IsEmpty());
  }
}

TEST_F(ClockSettingsTest, AStoreThatCannotTakeTheClockIsReported) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    const ScriptedAlarmStore lacking({u"Sync_UpdateClockInfo"}, address);
    WriteFile(kFile, SixAlarmRecords());
    EXPECT_EQ(Recover(16, 1).code, 0x20000002u);
    EXPECT_EQ(LocalRecover(16), 0x20000002u);
    EXPECT_EQ(ReadFile(kFile), SixAlarmRecords());
  }
}

TEST_F(ClockSettingsTest, AStoreIsNotLookedAtBeforeThereIsAClockForIt) {
  const ScriptedAlarmStore lacking({u"Sync_UpdateClockInfo"});
  WriteFile(kFile, {});
  EXPECT_EQ(Recover(16, 1).code, 0u) << "nothing to apply";
  Bytes file = SixAlarmRecords();
  Append(file, ExchangeName(9, u"without a place"));
  WriteFile(kFile, file);
  EXPECT_EQ(Recover(16, 1).code, 0x20000200u) << "refused before that";
}

TEST_F(ClockSettingsTest, AStoreThatRefusesToTakeTheClockIsReported) {
  for (const std::uint32_t answer : {0u, 2u, 0x101u, 0xFFFFFFFFu}) {
    store_.answer = answer;
    WriteFile(kFile, SixAlarmRecords());
    EXPECT_EQ(Recover(16, 1).code, 0x20000008u);
    EXPECT_EQ(LocalRecover(16), 0x20000008u);
    EXPECT_EQ(ReadFile(kFile), SixAlarmRecords());
  }
}

TEST_F(ClockSettingsTest, WithoutAFileTheStoreIsNotCalled) {
  EXPECT_EQ(Recover(16, 1).code, 0x20000100u);
  EXPECT_EQ(LocalRecover(16), 0x20000100u);
  MakeDirectory(kFile);
  EXPECT_EQ(Export(16, 1).code, 0x10000100u);
  EXPECT_EQ(LocalExport(16), 0x10000100u);
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(ClockSettingsTest, AFullDiskIsReported) {
  for (const std::uint64_t space : {std::uint64_t{100}, std::uint64_t{2424}, std::uint64_t{3107}}) {
    handset::SetFreeSpace(space);
    EXPECT_EQ(Export(16, 1).code, 0x10000100u);
    handset::SetFreeSpace(std::nullopt);
    WriteFile(kFile, {});
  }
}

}  // namespace
}  // namespace qv_test
