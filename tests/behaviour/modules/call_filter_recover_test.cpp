// Recovers of the call filter, by insertion and by change list: what reaches the store, what becomes of group 7, and
// what of the files.
#include <algorithm>
#include <iterator>
#include <string>

#include "tests/support/call_filter_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_call_filter_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr const char16_t* kSentTables[] = {kFilterEntries, kFilterGroups, kFilterConfig};

class CallFilterRecoverTest : public AgentTest {
 protected:
  static void Place(const Bytes& entries, const Bytes& groups = {}, const Bytes& config = ExchangeFilterConfig()) {
    WriteFile(kFilterEntries, entries);
    WriteFile(kFilterGroups, groups);
    WriteFile(kFilterConfig, config);
  }

  static void PlaceChanges(const Bytes& changes, const Bytes& entries = {}, const Bytes& groups = {}) {
    WriteFile(kFilterChanges, changes);
    Place(entries, groups);
  }

  static bool TablesAreKept() {
    return std::all_of(std::begin(kSentTables), std::end(kSentTables), [](const auto* table) { return Exists(table); });
  }
  static bool TablesAreGone() {
    return std::none_of(std::begin(kSentTables), std::end(kSentTables),
                        [](const auto* table) { return Exists(table); });
  }

  /// What the store gets of these records, and of a configuration.
  std::vector<Bytes> RecoveredEntries(const Bytes& entries) { return Recovered(0, entries, {}); }
  std::vector<Bytes> RecoveredGroups(const Bytes& groups) { return Recovered(1, {}, groups); }
  Bytes RecoveredConfig(const Bytes& config) {
    Place({}, {}, config);
    EXPECT_EQ(Recover(11, 4).code, 0u);
    return store_.config;
  }

  /// An entry that says no more than who it is and which group it is in, as the store gets it.
  static Bytes StoredEntry(std::uint32_t id, std::uint32_t group) {
    Bytes entry(144);
    Put32(entry, 0, id);
    Put32(entry, 4, group);
    return entry;
  }
  static Bytes StoredGroup(std::uint32_t id) {
    Bytes group(788);
    Put32(group, 0, id);
    return group;
  }

  std::uint32_t GroupOfEntry(std::size_t i) { return Get32(store_.tables[0].at(i).bytes, 4); }

  void EmptyTheStore() {
    for (auto& table : store_.tables) table.clear();
    store_.calls.clear();
  }

  ScriptedCallFilterStore store_;

 private:
  std::vector<Bytes> Recovered(std::uint32_t table, const Bytes& entries, const Bytes& groups) {
    EmptyTheStore();
    Place(entries, groups);
    EXPECT_EQ(Recover(11, 4).code, 0u);
    std::vector<Bytes> records;
    for (const auto& record : store_.tables[table]) records.push_back(record.bytes);
    return records;
  }
};

// --- Entries ---

TEST_F(CallFilterRecoverTest, AnEntryReachesTheStoreFieldByField) {
  for (const Bytes& incoming : {ExchangeFilterEntry(), NoisyFilterEntry()}) {
    EXPECT_THAT(RecoveredEntries(incoming), ElementsAre(RecoveredFilterEntry()));
  }
}

TEST_F(CallFilterRecoverTest, EachByteOfAnEntryGoesWhereItBelongsAndNowhereElse) {
  // Exchange, byte count, store.
  static constexpr CopiedBytes kCopied[] = {{0, 4, 0}, {4, 4, 4}, {40, 60, 16}, {102, 64, 78}};
  Bytes full(204, 0x11);
  std::fill_n(full.begin() + 8, 28, std::uint8_t{0});
  Bytes table = full;
  for (std::size_t i = 0; i < full.size(); ++i) {
    Bytes changed = full;
    if (i < 8 || i >= 36) changed[i] ^= 0x40;
    Append(table, changed);
  }
  const std::vector<Bytes> recovered = RecoveredEntries(table);
  ASSERT_THAT(recovered, SizeIs(205));
  for (std::size_t i = 0; i < full.size(); ++i) {
    ASSERT_EQ(recovered[i + 1], WithByteTurned(recovered[0], kCopied, i)) << "exchange byte " << i;
  }
}

TEST_F(CallFilterRecoverTest, ATextOfAnEntryIsCutForItsNul) {
  Bytes entry(204);
  PutText(entry, 40, std::u16string(31, u'a'));
  PutText(entry, 102, std::u16string(51, u'b'));
  Bytes expected(144);
  PutText(expected, 16, std::u16string(30, u'a'));
  PutText(expected, 78, std::u16string(32, u'b'));
  EXPECT_THAT(RecoveredEntries(entry), ElementsAre(expected));
}

struct SentTime {
  FilterTime numbers;
  std::uint32_t low, high;
};

constexpr SentTime kSentTimes[] = {
    {{1601, 1, 1, 0, 0, 0, 0}, 0, 0},
    {{1601, 1, 1, 0, 0, 0, 1}, 10000, 0},
    {{2000, 1, 1, 0, 0, 0, 0}, 0x256D4000, 0x01BF53EB},
    {{2004, 2, 29, 8, 9, 10, 1}, 0x4F47FE10, 0x01C3FE9B},
    {{2008, 9, 10, 12, 13, 14, 999}, 0x9A099870, 0x01C9133E},
    // From here on there is no such time.
    {{}, 0, 0},
    {{1600, 12, 31, 23, 59, 59, 999}, 0, 0},
    {{2005, 2, 29, 8, 9, 10, 1}, 0, 0},
    {{2008, 13, 10, 12, 13, 14, 999}, 0, 0},
    {{2008, 0, 10, 12, 13, 14, 999}, 0, 0},
    {{2008, 9, 31, 12, 13, 14, 999}, 0, 0},
    {{2008, 9, 0, 12, 13, 14, 999}, 0, 0},
    {{2008, 9, 10, 24, 13, 14, 999}, 0, 0},
    {{2008, 9, 10, 12, 60, 14, 999}, 0, 0},
    {{2008, 9, 10, 12, 13, 60, 999}, 0, 0},
    {{2008, 9, 10, 12, 13, 14, 1000}, 0, 0},
};

TEST_F(CallFilterRecoverTest, ATimeThatThereIsNotIsZero) {
  for (const SentTime& time : kSentTimes) {
    Bytes entry(204);
    PutFilterTime(entry, 8, time.numbers);
    Bytes expected(144);
    Put32(expected, 8, time.low);
    Put32(expected, 12, time.high);
    EXPECT_THAT(RecoveredEntries(entry), ElementsAre(expected)) << testing::PrintToString(time.numbers);
  }
}

TEST_F(CallFilterRecoverTest, EachTimeOfAGroupThatThereIsNotIsZero) {
  for (const FilterTimePlace& place : kFilterGroupTimes) {
    for (const SentTime& time : kSentTimes) {
      Bytes group(1200);
      PutFilterTime(group, place.exchange, time.numbers);
      Bytes expected(788);
      Put32(expected, place.store, time.low);
      Put32(expected, place.store + 4, time.high);
      EXPECT_THAT(RecoveredGroups(group), ElementsAre(expected)) << "the time at " << place.exchange;
    }
  }
}

// --- Groups ---

TEST_F(CallFilterRecoverTest, AGroupReachesTheStoreFieldByField) {
  for (const Bytes& incoming : {ExchangeFilterGroup(), NoisyFilterGroup()}) {
    EXPECT_THAT(RecoveredGroups(incoming), ElementsAre(RecoveredFilterGroup()));
  }
}

TEST_F(CallFilterRecoverTest, EachByteOfAGroupGoesWhereItBelongsAndNowhereElse) {
  static constexpr CopiedBytes kCopied[] = {{0, 4, 0},      {4, 42, 4},    {236, 2, 56},    {238, 2, 58},
                                            {240, 140, 60}, {382, 2, 202}, {648, 256, 272}, {906, 256, 530}};
  const auto is_time = [](std::size_t i) {
    for (const FilterTimePlace& time : kFilterGroupTimes) {
      if (i >= time.exchange && i < time.exchange + 28) return true;
    }
    return false;
  };
  Bytes full(1200, 0x11);
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (is_time(i)) full[i] = 0;
  }
  const Bytes before = RecoveredGroups(full).at(0);
  for (std::size_t first = 0; first < full.size(); first += 8) {  // No more than 9 are taken in one run.
    Bytes table;
    for (std::size_t i = first; i < first + 8; ++i) {
      Bytes changed = full;
      if (!is_time(i)) changed[i] ^= 0x40;
      Append(table, changed);
    }
    const std::vector<Bytes> recovered = RecoveredGroups(table);
    ASSERT_THAT(recovered, SizeIs(8));
    for (std::size_t i = 0; i < 8; ++i) {
      ASSERT_EQ(recovered[i], WithByteTurned(before, kCopied, first + i)) << "exchange byte " << first + i;
    }
  }
}

TEST_F(CallFilterRecoverTest, ATextOfAGroupIsCutForItsNul) {
  Bytes group(1200);
  PutText(group, 4, std::u16string(100, u'a'));
  PutText(group, 240, std::u16string(71, u'b'));
  PutText(group, 648, std::u16string(129, u'c'));
  PutText(group, 906, std::u16string(147, u'd'));
  Bytes expected(788);
  PutText(expected, 4, std::u16string(21, u'a'));
  PutText(expected, 60, std::u16string(70, u'b'));
  PutText(expected, 272, std::u16string(128, u'c'));
  PutText(expected, 530, std::u16string(128, u'd'));
  EXPECT_THAT(RecoveredGroups(group), ElementsAre(expected));
}

TEST_F(CallFilterRecoverTest, TheLowestBitsOfTheSevenDaysMakeANumber) {
  const std::pair<Bytes, std::uint16_t> kDays[] = {
      {{0, 0, 0, 0, 0, 0, 0}, 0},
      {{1, 0, 0, 0, 0, 0, 1}, 65},
      {{1, 0, 0, 0, 0, 0, 0}, 64},
      {{0, 1, 0, 0, 0, 0, 0}, 32},
      {{0, 0, 1, 0, 0, 0, 0}, 16},
      {{0, 0, 0, 1, 0, 0, 0}, 8},
      {{0, 0, 0, 0, 1, 0, 0}, 4},
      {{0, 0, 0, 0, 0, 1, 0}, 2},
      {{0, 0, 0, 0, 0, 0, 1}, 1},
      {{1, 1, 1, 1, 1, 1, 1}, 127},
      {{2, 0xFE, 3, 0xFF, 4, 0x81, 0x80}, 16 + 8 + 2},
  };
  for (const auto& [bytes, days] : kDays) {
    Bytes group(1200);
    std::ranges::copy(bytes, group.begin() + 384);
    Bytes expected(788);
    Put16(expected, 204, days);
    EXPECT_THAT(RecoveredGroups(group), ElementsAre(expected)) << days;
  }
}

TEST_F(CallFilterRecoverTest, AnUpdatedRecordReachesTheStoreFieldByField) {
  store_.Add(0, kFilterEntryId, 1);
  store_.Add(1, kFilterGroupId, 1);
  PlaceChanges(Words({0, kFilterEntryId, 2, 1, kFilterGroupId, 2}), NoisyFilterEntry(), NoisyFilterGroup());
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_EQ(store_.At(0, kFilterEntryId).bytes, RecoveredFilterEntry());
  EXPECT_EQ(store_.At(1, kFilterGroupId).bytes, RecoveredFilterGroup());
  EXPECT_THAT(ReadFile(kFilterIdMap), IsEmpty());
}

// --- The configuration ---

TEST_F(CallFilterRecoverTest, TheConfigurationReachesTheStoreWithAsManyNumbersAsItCounts) {
  for (const auto& [count, carried] : kFilterNumberCounts) {
    EXPECT_EQ(RecoveredConfig(NoisyFilterConfig(count)), RecoveredFilterConfig(carried)) << count;
  }
  EXPECT_EQ(RecoveredConfig(ExchangeFilterConfig(3)), RecoveredFilterConfig(3));
}

TEST_F(CallFilterRecoverTest, EachByteOfTheConfigurationGoesWhereItBelongsAndNowhereElse) {
  std::vector<CopiedBytes> copied = {{4, 2, 0}, {6, 2, 2}, {10, 2, 4}};
  for (std::size_t i = 0; i < 8; ++i) {
    copied.push_back({508 + 2 * i, 2, 10 + 88 * i});
    copied.push_back({12 + 62 * i, 60, 12 + 88 * i});
    copied.push_back({524 + 22 * i, 20, 74 + 88 * i});
  }
  Bytes full(700, 0x11);
  Put16(full, 8, 8);
  const Bytes before = RecoveredConfig(full);
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (i == 8 || i == 9) continue;  // The count.
    Bytes changed = full;
    changed[i] ^= 0x40;
    ASSERT_EQ(RecoveredConfig(changed), WithByteTurned(before, copied, i)) << "exchange byte " << i;
  }
}

TEST_F(CallFilterRecoverTest, AShortConfigurationIsUsedAsReadTheRestBeingZero) {
  for (const std::size_t size : {0u, 1u, 5u, 8u, 9u, 12u, 73u, 74u, 300u, 508u, 509u, 525u, 699u}) {
    Bytes torn = NoisyFilterConfig();
    torn.resize(size);
    Bytes padded = torn;
    padded.resize(700);
    const Bytes recovered = RecoveredConfig(torn);
    EXPECT_EQ(recovered, RecoveredConfig(padded)) << size << " bytes";
    EXPECT_EQ(Get32(recovered, 624) & 0xFFFF, 7u) << "the numbers are numbered all the same";
  }
}

TEST_F(CallFilterRecoverTest, OfALongConfigurationTheFirst700BytesCount) {
  Bytes config = ExchangeFilterConfig(2);
  Append(config, Bytes(700, 0xFF));
  EXPECT_EQ(RecoveredConfig(config), RecoveredFilterConfig(2));
}

TEST_F(CallFilterRecoverTest, TheConfigurationIsWrittenInEveryMode) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 99u}) {
    store_.config = Bytes(712, 0xEE);
    PlaceChanges({});
    EXPECT_EQ(Recover(11, mode).code, 0u);
    EXPECT_EQ(store_.config, RecoveredFilterConfig()) << mode;
  }
}

// --- Steps ---

TEST_F(CallFilterRecoverTest, AReplacingRecoverTakesItsStepsInOrder) {
  Place(PlainFilterEntry(3), PlainFilterGroups({5, 7}));
  RunEvents events(store_);
  EXPECT_EQ(Recover(11, 2).code, 0u);
  EXPECT_THAT(events.Take(),
              ElementsAre("open qvSyncAnchor.ini", "create qvSyncAnchor.ini",  //
                          "find Sync_DelAll", "find Sync_rbc_DelConfig", "call DelConfig", "call DelAll 0",
                          "call DelAll 1", "open redblistgroup.tbl", "find Sync_insert", "find Sync_Update",  //
                          "call Insert 1", "call Update 1 id 7", "call Insert 1",                             //
                          "open redblistinfo.tbl", "find Sync_insert", "call Insert 0",                       //
                          "open redblistconfig.tbl", "find Sync_rbc_WriteConfig", "call WriteConfig",         //
                          "delete redblistinfo.tbl", "delete redblistgroup.tbl", "delete redblistconfig.tbl",
                          "create redblist.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",       //
                          "call GetAllRecNum 0", "call GetAllidTime 0 room 1",                             //
                          "create redblistgroup.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",  //
                          "call GetAllRecNum 1", "call GetAllidTime 1 room 2", "create redblistmap.tbl"));
}

TEST_F(CallFilterRecoverTest, AnIncrementalRecoverTakesItsStepsInOrder) {
  store_.Add(0, 4, 1);
  store_.Add(1, 6, 1);
  store_.Add(0, 9, 1);
  store_.Add(1, 9, 1);
  Bytes entries = PlainFilterEntry(3, 5);
  Append(entries, PlainFilterEntry(9));
  PlaceChanges(Words({1, 6, 3, 0, 4, 3, 0, 3, 1, 0, 9, 2, 1, 5, 1, 1, 9, 2}), entries, PlainFilterGroups({5, 9}));
  RunEvents events(store_);
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_THAT(events.Take(),
              ElementsAre("open qvSyncAnchor.ini", "create qvSyncAnchor.ini",                              //
                          "open redblistcmd.tbl", "find SC_Sync_Del", "call Del 0 [4]", "call Del 1 [6]",  //
                          "open redblistgroup.tbl", "find Sync_insert", "find Sync_Update", "find Sync_Del",
                          "call Insert 1", "call Update 1 id 9",  //
                          "open redblistinfo.tbl", "find Sync_insert", "find Sync_Update", "find Sync_Del",
                          "call Insert 0", "call Update 0 id 9",                                       //
                          "delete redblistcmd.tbl",                                                    //
                          "open redblistconfig.tbl", "find Sync_rbc_WriteConfig", "call WriteConfig",  //
                          "delete redblistinfo.tbl", "delete redblistgroup.tbl", "delete redblistconfig.tbl",
                          "create redblist.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",       //
                          "call GetAllRecNum 0", "call GetAllidTime 0 room 2",                             //
                          "create redblistgroup.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",  //
                          "call GetAllRecNum 1", "call GetAllidTime 1 room 2", "create redblistmap.tbl"));
}

TEST_F(CallFilterRecoverTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  PlaceChanges({});
  const std::vector<Opening> openings = DataOpeningsOf([&] { EXPECT_EQ(Recover(11, 3).code, 0u); });
  EXPECT_THAT(openings, SizeIs(7));
  EXPECT_THAT(openings, testing::Each(testing::Pair(testing::_, testing::AnyOf(kReader, kWriter))));
}

TEST_F(CallFilterRecoverTest, OnlyReplaceEmptiesTheStore) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u, 5u, 6u, 0xFFFFFFFFu}) {
    EmptyTheStore();
    store_.Add(0, 1, 1);
    store_.Add(1, 1, 1);
    Place(PlainFilterEntry(2), PlainFilterGroup(2));
    EXPECT_EQ(Recover(11, mode).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(mode == 2 ? 1 : 2)) << mode;
    EXPECT_THAT(store_.tables[1], SizeIs(mode == 2 ? 1 : 2)) << mode;
    EXPECT_THAT(store_.CallsOf("DelConfig"), SizeIs(mode == 2 ? 1 : 0));
    EXPECT_TRUE(TablesAreGone());
  }
}

TEST_F(CallFilterRecoverTest, AStoreIsEmptiedWithAnAnswerUpTo2) {
  for (const std::uint32_t answer : {0u, 1u, 2u}) {
    store_.calls.clear();
    store_.Add(0, 1, 1);
    store_.successes = {{"DelConfig", answer}, {"DelAll", (answer + 1) % 3}};
    Place({});
    EXPECT_EQ(Recover(11, 2).code, 0u) << answer;
    EXPECT_THAT(store_.tables[0], IsEmpty());
  }
}

TEST_F(CallFilterRecoverTest, AStoreThatCannotBeEmptiedIsLeftWhereItIs) {
  const std::vector<std::string> all = {"DelConfig", "DelAll 0", "DelAll 1"};
  for (const std::uint32_t answer : {3u, 4u, 0x80000000u, 0xFFFFFFFFu}) {
    for (unsigned n = 1; n <= 3; ++n) {
      ScriptedCallFilterStore failing;
      failing.fail_call = n;
      failing.failing_status = answer;
      Place(PlainFilterEntry(1));
      EXPECT_EQ(Recover(11, 2).code, 0x20000003u) << answer;
      EXPECT_THAT(failing.calls, ElementsAreArray(all.data(), n));
      EXPECT_TRUE(TablesAreKept());
      EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
      EXPECT_FALSE(Exists(kFilterEntryLog));
    }
  }
}

TEST_F(CallFilterRecoverTest, AStoreThatLacksWhatEmptiesItIsNotEmptiedInPart) {
  for (const auto* name : {u"Sync_DelAll", u"Sync_rbc_DelConfig"}) {
    for (const std::uintptr_t address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const ScriptedCallFilterStore lacking({name}, address);
      Place(PlainFilterEntry(1));
      EXPECT_EQ(Recover(11, 2).code, 0x20000002u);
      EXPECT_THAT(lacking.calls, IsEmpty());
      EXPECT_TRUE(TablesAreKept());
    }
  }
}

TEST_F(CallFilterRecoverTest, ReplaceEmptiesTheStoreBeforeItMissesATable) {
  store_.Add(0, 1, 1);
  EXPECT_EQ(Recover(11, 2).code, 0x24000100u);
  EXPECT_THAT(store_.tables[0], IsEmpty());
}

TEST_F(CallFilterRecoverTest, ARememberedRecoverLeavesSnapshotsOfTheStoreAndAnIdMap) {
  for (const std::uint32_t mode : {0u, 1u, 0xFFFFFFFFu}) {
    EmptyTheStore();
    store_.next_id = 1000;
    store_.Add(0, 1, 0x0000000300000002);
    Place(PlainFilterEntry(2), PlainFilterGroup(2));
    const Answer answer = Recover(11, mode);
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_EQ(ReadFile(kFilterEntryLog), Words({1, 2, 3, 1001, 5, 6}));
    EXPECT_EQ(ReadFile(kFilterGroupLog), Words({1000, 5, 6}));
    EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 2, 0, 1001, 2}));
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nREDBLIST = 200612117210");
  }
}

TEST_F(CallFilterRecoverTest, APlainRecoverLeavesNothingButTheRecords) {
  for (const std::uint32_t mode : {4u, 5u, 77u}) {
    EmptyTheStore();
    Place(PlainFilterEntry(2), PlainFilterGroup(2));
    EXPECT_EQ(Recover(11, mode).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(1));
    EXPECT_THAT(store_.tables[1], SizeIs(1));
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(CallFilterRecoverTest, ARecoverOfNothingEmptiesSnapshotsAndMap) {
  Place({});
  WriteText(kFilterIdMap, "old");
  EXPECT_EQ(Recover(11, 1).code, 0u);
  for (const auto* file : {kFilterEntryLog, kFilterGroupLog, kFilterIdMap}) EXPECT_THAT(ReadFile(file), IsEmpty());
}

TEST_F(CallFilterRecoverTest, AnIdMapThatCannotBeWrittenIsNotReported) {
  Place(PlainFilterEntry(1));
  MakeDirectory(kFilterIdMap);
  EXPECT_EQ(Recover(11, 1).code, 0u);
  EXPECT_EQ(ReadFile(kFilterEntryLog), Words({1000, 5, 6}));
}

TEST_F(CallFilterRecoverTest, AnInsertingRecoverLeavesAChangeListAlone) {
  store_.Add(0, 1, 1);
  PlaceChanges(Words({0, 1, 3}));
  EXPECT_EQ(Recover(11, 1).code, 0u);
  EXPECT_TRUE(Exists(kFilterChanges));
  EXPECT_THAT(store_.tables[0], SizeIs(1));
}

// --- Groups and those who refer to them ---

TEST_F(CallFilterRecoverTest, GroupsGoFirstSoThatEntriesFindThem) {
  Bytes entries = PlainFilterEntry(100, 8);
  Append(entries, PlainFilterEntry(101, 9));
  Append(entries, PlainFilterEntry(102, 5));
  Place(entries, PlainFilterGroups({5, 8}));
  EXPECT_EQ(Recover(11, 1).code, 0u);
  ASSERT_THAT(store_.tables[0], SizeIs(3));
  EXPECT_EQ(store_.tables[0][0].bytes, StoredEntry(100, 1001));
  EXPECT_EQ(store_.tables[0][1].bytes, StoredEntry(101, 9)) << "group 9 did not come with this recover";
  EXPECT_EQ(store_.tables[0][2].bytes, StoredEntry(102, 1000));
  EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 5, 1, 1001, 8, 0, 1002, 100, 0, 1003, 101, 0, 1004, 102}));
}

TEST_F(CallFilterRecoverTest, TheFirstGroupOfAnIdIsTheOneEntriesFind) {
  Place(PlainFilterEntry(1, 5), PlainFilterGroups({5, 5}));
  EXPECT_EQ(Recover(11, 1).code, 0u);
  EXPECT_EQ(GroupOfEntry(0), 1000u);
}

TEST_F(CallFilterRecoverTest, AnEntrysIdIsNoGroupsId) {
  Bytes entries = PlainFilterEntry(5);
  Append(entries, PlainFilterEntry(6, 5));
  Place(entries);
  EXPECT_EQ(Recover(11, 1).code, 0u);
  EXPECT_EQ(GroupOfEntry(1), 5u);
}

TEST_F(CallFilterRecoverTest, NineGroupsAreTakenByOneRead) {
  for (const std::uint32_t mode : {1u, 2u, 4u, 5u}) {
    EmptyTheStore();
    store_.next_id = 1000;
    Bytes entries = PlainFilterEntry(100, 18);
    Append(entries, PlainFilterEntry(101, 19));
    Place(entries, PlainFilterGroups({10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
    std::vector<std::uint32_t> sizes;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "ReadFile" && call.path == kFilterGroups) sizes.push_back(call.size);
    });
    EXPECT_EQ(Recover(11, mode).code, 0u);
    handset::Observe({});
    EXPECT_THAT(sizes, ElementsAre(10800));
    EXPECT_THAT(store_.Ids(1), ElementsAre(1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008));
    EXPECT_EQ(GroupOfEntry(0), 1008u);
    EXPECT_EQ(GroupOfEntry(1), 19u) << "the tenth group is not taken";
  }
}

TEST_F(CallFilterRecoverTest, AnIncrementalRecoverTakesAllGroups) {
  Bytes changes;
  Bytes groups;
  for (std::uint32_t id = 10; id < 40; ++id) {
    Append(changes, Words({1, id, 1}));
    Append(groups, PlainFilterGroup(id));
  }
  PlaceChanges(changes, {}, groups);
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_THAT(store_.tables[1], SizeIs(30));
}

TEST_F(CallFilterRecoverTest, EntriesAreReadTwoHundredAtATime) {
  Bytes entries;
  for (std::uint32_t id = 1; id <= 400; ++id) Append(entries, PlainFilterEntry(id));
  Place(entries);
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "ReadFile" && call.path == kFilterEntries) sizes.push_back(call.size);
  });
  EXPECT_EQ(Recover(11, 4).code, 0u);
  handset::Observe({});
  EXPECT_THAT(sizes, ElementsAre(40800, 40800, 40800));
  ASSERT_THAT(store_.tables[0], SizeIs(400));
  for (std::uint32_t i = 0; i < 400; ++i) ASSERT_EQ(Get32(store_.tables[0][i].bytes, 0), i + 1);
}

// --- Group 7 ---

TEST_F(CallFilterRecoverTest, Group7IsUpdatedInPlaceAndItsEntriesAreInGroup0) {
  Bytes group = ExchangeFilterGroup();
  Put32(group, 0, 7);
  Bytes expected = RecoveredFilterGroup();
  Put32(expected, 0, 7);
  for (const std::uint32_t mode : {0u, 1u, 4u, 5u}) {
    EmptyTheStore();
    store_.next_id = 1000;
    store_.Add(1, 7, 1);
    WriteFile(kFilterIdMap, {});
    Bytes groups = PlainFilterGroup(5);
    Append(groups, group);
    Append(groups, PlainFilterGroup(8));
    Bytes entries = PlainFilterEntry(100, 7);
    Append(entries, PlainFilterEntry(101, 8));
    Place(entries, groups);
    EXPECT_EQ(Recover(11, mode).code, 0u);
    EXPECT_EQ(store_.At(1, 7).bytes, expected);
    EXPECT_THAT(store_.CallsOf("Update"), ElementsAre("Update 1 id 7"));
    EXPECT_THAT(store_.Ids(1), ElementsAre(7, 1000, 1001));
    EXPECT_EQ(GroupOfEntry(0), 0u);
    EXPECT_EQ(GroupOfEntry(1), 1001u);
    if (mode < 4) {
      EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 5, 1, 0, 7, 1, 1001, 8, 0, 1002, 100, 0, 1003, 101}));
    }
  }
}

TEST_F(CallFilterRecoverTest, AGroup7ThatTheStoreHasNotIsInserted) {
  for (const std::uint32_t mode : {1u, 2u}) {
    EmptyTheStore();
    store_.next_id = 1000;
    store_.Add(1, 8, 1);
    store_.Add(0, 7, 1);
    Place(PlainFilterEntry(100, 7), PlainFilterGroup(7));
    EXPECT_EQ(Recover(11, mode).code, 0u);
    EXPECT_EQ(store_.At(1, 1000).bytes, StoredGroup(7));
    EXPECT_EQ(store_.At(0, 1001).bytes, StoredEntry(100, 1000));
    EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 7, 0, 1001, 100}));
    EXPECT_THAT(store_.CallsOf("Update"), ElementsAre("Update 1 id 7"));
  }
}

TEST_F(CallFilterRecoverTest, AGroup7ThatIsRefusedEndsTheRecover) {
  store_.Add(1, 7, 1);
  for (const std::uint32_t answer : {1u, 2u, 4u, 0x80000003u, 0xFFFFFFFFu}) {
    store_.statuses["Update"] = answer;
    Place(PlainFilterEntry(1), PlainFilterGroup(7));
    for (const std::uint32_t mode : {1u, 4u}) EXPECT_EQ(Recover(11, mode).code, 0x24000008u) << answer;
    EXPECT_TRUE(TablesAreKept());
  }
  EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
}

TEST_F(CallFilterRecoverTest, AGroup7ThatIsRefusedAsNewToo) {
  store_.statuses["Insert"] = 1;
  Place({}, PlainFilterGroup(7));
  EXPECT_EQ(Recover(11, 1).code, 0x24000007u);
}

TEST_F(CallFilterRecoverTest, AnIncrementalRecoverTakesGroup7ForAnyOther) {
  PlaceChanges(Words({1, 7, 1}), {}, PlainFilterGroup(7));
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("Update"), IsEmpty());
  EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 7}));
  PlaceChanges(Words({1, 7, 2}), {}, PlainFilterGroup(7));
  EXPECT_EQ(Recover(11, 3).code, 0x24000008u);
}

TEST_F(CallFilterRecoverTest, AnEntry7IsNoGroup7) {
  Place(PlainFilterEntry(7));
  EXPECT_EQ(Recover(11, 1).code, 0u);
  EXPECT_THAT(store_.CallsOf("Update"), IsEmpty());
  EXPECT_EQ(ReadFile(kFilterIdMap), Words({0, 1000, 7}));
}

// --- Torn tables ---

TEST_F(CallFilterRecoverTest, ATornRecordIsPassedOverWhenInserting) {
  for (const std::size_t size : {1u, 4u, 100u, 203u}) {
    EmptyTheStore();
    Bytes entries = PlainFilterEntries({1, 2});
    entries.resize(204 + size);
    Place(entries, Bytes(1200 / 204 * size));  // Less than a group.
    EXPECT_EQ(Recover(11, 1).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(1)) << size;
    EXPECT_THAT(store_.tables[1], IsEmpty());
    EXPECT_TRUE(TablesAreGone());
  }
  EmptyTheStore();
  Bytes groups = PlainFilterGroups({1, 2});
  groups.resize(2399);
  Place(Bytes(203), groups);
  EXPECT_EQ(Recover(11, 4).code, 0u);
  EXPECT_THAT(store_.tables[0], IsEmpty());
  EXPECT_THAT(store_.tables[1], SizeIs(1));
}

TEST_F(CallFilterRecoverTest, ATornEntryBehindAWholeChunkIsPassedOverToo) {
  Bytes entries(200 * 204 + 203);
  Place(entries);
  EXPECT_EQ(Recover(11, 4).code, 0u);
  EXPECT_THAT(store_.tables[0], SizeIs(200));
}

TEST_F(CallFilterRecoverTest, ATornRecordOfAnIncrementalRecoverIsUsedAsReadTheRestBeingZero) {
  for (const std::size_t size : {4u, 7u, 12u, 39u, 42u, 102u, 203u}) {
    EmptyTheStore();
    Bytes entry = NoisyFilterEntry();
    entry.resize(size);
    Bytes group = NoisyFilterGroup();
    group.resize(size * 5);
    Bytes padded_entry = entry;
    padded_entry.resize(204);
    Bytes padded_group = group;
    padded_group.resize(1200);
    const Bytes expected_entry = RecoveredEntries(padded_entry).at(0);
    const Bytes expected_group = RecoveredGroups(padded_group).at(0);
    EmptyTheStore();
    PlaceChanges(Words({0, kFilterEntryId, 1, 1, kFilterGroupId, 1}), entry, group);
    EXPECT_EQ(Recover(11, 3).code, 0u);
    ASSERT_THAT(store_.tables[0], SizeIs(1)) << size;
    ASSERT_THAT(store_.tables[1], SizeIs(1)) << size;
    EXPECT_EQ(store_.tables[0][0].bytes, expected_entry);
    EXPECT_EQ(store_.tables[1][0].bytes, expected_group);
  }
}

// --- Change lists ---

TEST_F(CallFilterRecoverTest, AChangeListDecidesWhatBecomesOfEachRecord) {
  for (const std::uint32_t id : {2u, 3u}) {
    store_.Add(0, id, 1);
    store_.Add(1, id, 1);
  }
  Bytes entries = PlainFilterEntry(2, 50);
  Append(entries, PlainFilterEntry(60, 50));
  Append(entries, PlainFilterEntry(3, 50));  // Not in the list.
  PlaceChanges(Words({0, 60, 1, 1, 50, 1, 0, 2, 2, 1, 2, 2}), entries, PlainFilterGroups({3, 50, 2}));
  const Answer answer = Recover(11, 3);
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  store_.calls.resize(4);
  EXPECT_THAT(store_.calls, ElementsAre("Insert 1", "Update 1 id 2", "Update 0 id 2", "Insert 0"));
  EXPECT_EQ(store_.At(0, 2).bytes, StoredEntry(2, 1000)) << "a modified entry follows its group, too";
  EXPECT_EQ(store_.At(0, 1001).bytes, StoredEntry(60, 1000));
  EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 50, 0, 1001, 60}));
  EXPECT_EQ(ReadFile(kFilterEntryLog), Words({2, 5, 6, 3, 1, 0, 1001, 5, 6}));
  EXPECT_EQ(ReadFile(kFilterGroupLog), Words({2, 5, 6, 3, 1, 0, 1000, 5, 6}));
  EXPECT_TRUE(TablesAreGone());
  EXPECT_FALSE(Exists(kFilterChanges));
}

TEST_F(CallFilterRecoverTest, TheLowByteOfTheTableSaysWhereADeletionGoes) {
  const struct {
    std::uint32_t word;
    const char* call;
  } kRows[] = {{0, "Del 0 [1]"}, {0x0100, "Del 0 [1]"}, {0xFFFFFF00, "Del 0 [1]"}, {1, "Del 1 [1]"},
               {2, "Del 1 [1]"}, {0xFF, "Del 1 [1]"},   {0x0101, "Del 1 [1]"},     {0x80000001, "Del 1 [1]"}};
  for (const auto& row : kRows) {
    store_.calls.clear();
    PlaceChanges(Words({row.word, 1, 3}));
    EXPECT_EQ(Recover(11, 3).code, 0u);
    EXPECT_THAT(store_.CallsOf("Del"), ElementsAre(row.call)) << row.word;
  }
}

TEST_F(CallFilterRecoverTest, DeletionsGoTableByTableInTheirOrder) {
  PlaceChanges(Words({1, 5, 3, 0, 4, 3, 0x0100, 3, 3, 2, 6, 3}));
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("Del"), ElementsAre("Del 0 [4 3]", "Del 1 [5 6]"));
}

TEST_F(CallFilterRecoverTest, OfOtherChangesTheWholeTableCounts) {
  PlaceChanges(Words({0x0100, 1, 1, 2, 1, 1, 0x0101, 1, 1}), PlainFilterEntry(1), PlainFilterGroup(1));
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
}

TEST_F(CallFilterRecoverTest, Operation0IsPassedOverAndOthersStandBeforeLaterOnes) {
  const struct {
    std::uint32_t operation;
    std::size_t inserted;
  } kRows[] = {{0, 1}, {1, 1}, {4, 0}, {0x0101, 0}, {0xFFFFFFFF, 0}};
  for (const auto& row : kRows) {
    EmptyTheStore();
    PlaceChanges(Words({0, 60, row.operation, 0, 60, 1, 1, 50, row.operation, 1, 50, 1}), PlainFilterEntry(60),
                 PlainFilterGroup(50));
    EXPECT_EQ(Recover(11, 3).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(row.inserted)) << row.operation;
    EXPECT_THAT(store_.tables[1], SizeIs(row.inserted)) << row.operation;
  }
}

TEST_F(CallFilterRecoverTest, AnIncrementalRecoverNeedsNoEntryTable) {
  store_.Add(0, 1, 1);
  PlaceChanges(Words({0, 1, 3, 1, 5, 1, 0, 2, 1}), {}, PlainFilterGroup(5));
  std::filesystem::remove(handset::HostPath(kFilterEntries));
  EXPECT_EQ(Recover(11, 3).code, 0u);
  EXPECT_THAT(store_.tables[0], IsEmpty());
  EXPECT_EQ(ReadFile(kFilterIdMap), Words({1, 1000, 5}));
  EXPECT_EQ(store_.config, RecoveredFilterConfig());
  EXPECT_TRUE(TablesAreGone());
  EXPECT_FALSE(Exists(kFilterChanges));
}

// --- Failures ---

TEST_F(CallFilterRecoverTest, AMissingTableIsFlagged) {
  WriteFile(kFilterConfig, {});
  EXPECT_EQ(Recover(11, 3).code, 0x20200100u) << "no change list";
  WriteFile(kFilterChanges, {});
  for (const std::uint32_t mode : {1u, 3u, 4u, 5u}) EXPECT_EQ(Recover(11, mode).code, 0x24000100u);
  WriteFile(kFilterGroups, {});
  for (const std::uint32_t mode : {1u, 2u, 4u, 5u}) EXPECT_EQ(Recover(11, mode).code, 0x23000100u);
  EXPECT_TRUE(Exists(kFilterChanges));
  EXPECT_TRUE(Exists(kFilterGroups));
}

TEST_F(CallFilterRecoverTest, RefusedInsertsAreFlaggedWithTheirTable) {
  store_.statuses["Insert"] = 3;
  const Bytes changes = Words({0, 1, 1, 1, 1, 1});
  for (const std::uint32_t mode : {1u, 3u, 4u}) {
    PlaceChanges(changes, PlainFilterEntry(1));
    EXPECT_EQ(Recover(11, mode).code, 0x23000007u);
    PlaceChanges(changes, PlainFilterEntry(1), PlainFilterGroup(1));
    EXPECT_EQ(Recover(11, mode).code, 0x24000007u);
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kFilterChanges));
    for (const auto* file : {kFilterIdMap, kFilterEntryLog, kFilterGroupLog}) EXPECT_FALSE(Exists(file));
  }
  EXPECT_THAT(store_.CallsOf("WriteConfig"), IsEmpty());
}

TEST_F(CallFilterRecoverTest, RefusedUpdatesAreFlaggedWithTheirTable) {
  for (const std::uint32_t answer : {1u, 3u}) {
    store_.statuses["Update"] = answer;
    PlaceChanges(Words({0, 1, 2, 1, 1, 2}), PlainFilterEntry(1));
    EXPECT_EQ(Recover(11, 3).code, 0x23000008u);
    PlaceChanges(Words({0, 1, 2, 1, 1, 2}), PlainFilterEntry(1), PlainFilterGroup(1));
    EXPECT_EQ(Recover(11, 3).code, 0x24000008u);
    EXPECT_TRUE(TablesAreKept());
  }
}

TEST_F(CallFilterRecoverTest, RefusedDeletionsEndTheRecover) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  for (const unsigned n : {1u, 2u}) {
    ScriptedCallFilterStore failing;
    failing.fail_call = n;
    PlaceChanges(Words({1, 1, 3, 0, 1, 3}), PlainFilterEntry(1));
    EXPECT_EQ(Recover(11, 3).code, 0x20200009u);
    EXPECT_THAT(failing.calls, SizeIs(n));
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kFilterChanges));
  }
}

TEST_F(CallFilterRecoverTest, ConfigurationsThatFailAreFlaggedLikeTheEntries) {
  for (const std::uint32_t mode : {1u, 2u, 3u, 4u, 5u}) {
    ScriptedCallFilterStore failing;
    for (const std::uint32_t answer : {1u, 2u, 3u, 0xFFFFFFFFu}) {
      failing.statuses["WriteConfig"] = answer;
      PlaceChanges({}, PlainFilterEntry(1), PlainFilterGroup(1));
      EXPECT_EQ(Recover(11, mode).code, 0x23000008u);
      EXPECT_TRUE(TablesAreKept());
      EXPECT_EQ(Exists(kFilterChanges), mode != 3) << "an incremental recover is through with it";
      for (const auto* file : {kFilterIdMap, kFilterEntryLog, kFilterGroupLog}) EXPECT_FALSE(Exists(file));
    }
    const ScriptedCallFilterStore lacking({u"Sync_rbc_WriteConfig"});
    PlaceChanges({});
    EXPECT_EQ(Recover(11, mode).code, 0x23000002u);
    EXPECT_TRUE(TablesAreKept());
    std::filesystem::remove(handset::HostPath(kFilterConfig));
    WriteFile(kFilterChanges, {});
    EXPECT_EQ(Recover(11, mode).code, 0x23000100u) << "the file is missed before the entry point";
    EXPECT_TRUE(Exists(kFilterEntries));
    EXPECT_TRUE(Exists(kFilterGroups));
  }
}

TEST_F(CallFilterRecoverTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  const struct {
    const char16_t* name;
    std::uint32_t inserting, replacing, applying;
  } kMissing[] = {
      {u"Sync_GetAllRecNum", 0x25000002, 0x25000002, 0x25000002},
      {u"Sync_GetAllidTime", 0x25000002, 0x25000002, 0x25000002},
      {u"Sync_Read", 0, 0, 0},
      {u"Sync_insert", 0x24000002, 0x24000002, 0x24000002},
      {u"Sync_Update", 0x24000002, 0x24000002, 0x24000002},
      {u"Sync_Del", 0, 0, 0x24000002},
      {u"SC_Sync_Del", 0, 0, 0x20200002},
      {u"Sync_DelAll", 0, 0x20000002, 0},
      {u"Sync_rbc_DelConfig", 0, 0x20000002, 0},
      {u"Sync_rbc_ReadConfig", 0, 0, 0},
      {u"Sync_rbc_WriteConfig", 0x23000002, 0x23000002, 0x23000002},
  };
  for (const auto& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(missing.name)));
    for (const std::uintptr_t address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const ScriptedCallFilterStore lacking({missing.name}, address);
      Place({});
      EXPECT_EQ(Recover(11, 1).code, missing.inserting);
      Place({});
      EXPECT_EQ(Recover(11, 2).code, missing.replacing);
      PlaceChanges({});
      EXPECT_EQ(Recover(11, 3).code, missing.applying);
    }
  }
}

TEST_F(CallFilterRecoverTest, EntriesNeedTheirEntryPointsThemselves) {
  // The look-ups of an incremental recover: the deletion, three for the groups, three for the entries.
  for (const unsigned n : {5u, 6u, 7u}) {
    PlaceChanges({});
    handset::FailCallOf("GetProcAddressW", n);
    EXPECT_EQ(Recover(11, 3).code, 0x23000002u);
    EXPECT_TRUE(Exists(kFilterChanges));
  }
  Place({});
  handset::FailCallOf("GetProcAddressW", 3);  // Behind two for the groups.
  EXPECT_EQ(Recover(11, 4).code, 0x23000002u);
}

TEST_F(CallFilterRecoverTest, AnUnreadableFileIsNotTakenForItsEnd) {
  struct Failing {
    const char16_t* file;
    std::uint32_t mode, code;
  };
  const Failing kFailing[] = {
      {kFilterGroups, 4, 0x24000200},  {kFilterEntries, 4, 0x23000200}, {kFilterConfig, 4, 0x23000200},
      {kFilterChanges, 3, 0x20200200}, {kFilterGroups, 3, 0x24000200},  {kFilterEntries, 3, 0x23000200},
      {kFilterConfig, 3, 0x23000200},
  };
  for (const Failing& failing : kFailing) {
    store_.calls.clear();
    PlaceChanges(Words({0, 1, 1}), PlainFilterEntry(1), PlainFilterGroup(1));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == failing.file) handset::FailCallOf("ReadFile", 1);
    });
    EXPECT_EQ(Recover(11, failing.mode).code, failing.code);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_TRUE(TablesAreKept());
    EXPECT_THAT(store_.CallsOf("WriteConfig"), IsEmpty());
  }
}

}  // namespace
}  // namespace qv_test
