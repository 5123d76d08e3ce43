// Exports of the call filter, full and incremental: the bytes of each file, and what the store is asked.
#include <algorithm>
#include <numeric>
#include <string>

#include "tests/support/call_filter_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_call_filter_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char16_t* kExportedTables[] = {kFilterEntries, kFilterGroups, kFilterConfig};

class CallFilterExportTest : public AgentTest {
 protected:
  /// An incremental export against a stored anchor and these snapshots.
  Answer ExportChanges(const Bytes& entry_log = {}, const Bytes& group_log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nREDBLIST = 5");
    WriteFile(kFilterEntryLog, entry_log);
    WriteFile(kFilterGroupLog, group_log);
    return Export(11, 3, u"5");
  }

  static std::vector<std::uint32_t> IdsIn(const char16_t* table, std::size_t record_size) {
    std::vector<std::uint32_t> ids;
    for (const Bytes& record : Split(ReadFile(table), record_size)) ids.push_back(Get32(record, 0));
    return ids;
  }

  /// What an export makes of one record, and of the configuration.
  Bytes ExportedEntry(const Bytes& record) { return Exported(0, record, kFilterEntries); }
  Bytes ExportedGroup(const Bytes& record) { return Exported(1, record, kFilterGroups); }
  Bytes ExportedConfig(const Bytes& config) {
    store_.config = config;
    EXPECT_EQ(Export(11, 4).code, 0u);
    return ReadFile(kFilterConfig);
  }

  /// What an export makes of records that differ from this one in a byte each, byte after byte.
  std::vector<Bytes> ExportedWithEachByteTurned(std::uint32_t table, const Bytes& record) {
    store_.tables[table].clear();
    for (std::size_t i = 0; i < record.size(); ++i) {
      Bytes changed = record;
      changed[i] ^= 0x40;
      store_.Add(table, 1 + static_cast<std::uint32_t>(i), 1, changed);
    }
    EXPECT_EQ(Export(11, 4).code, 0u);
    return table == 0 ? Split(ReadFile(kFilterEntries), kFilterEntrySize)
                      : Split(ReadFile(kFilterGroups), kFilterGroupSize);
  }

  ScriptedCallFilterStore store_;

 private:
  Bytes Exported(std::uint32_t table, const Bytes& record, const char16_t* file) {
    store_.tables[table].clear();
    store_.Add(table, 9, 1, record);
    EXPECT_EQ(Export(11, 4).code, 0u);
    return ReadFile(file);
  }
};

// --- Entries ---

TEST_F(CallFilterExportTest, AnEntryTravelsFieldByField) {
  EXPECT_EQ(ExportedEntry(StoreFilterEntry()), ExchangeFilterEntry());
}

TEST_F(CallFilterExportTest, EachByteOfAnEntryGoesWhereItBelongsAndNowhereElse) {
  // Store, byte count, exchange.
  static constexpr CopiedBytes kCopied[] = {{0, 4, 0}, {4, 4, 4}, {16, 60, 40}, {78, 66, 102}};
  Bytes full(144, 0x11);
  std::fill_n(full.begin() + 8, 8, std::uint8_t{0});
  const Bytes before = ExportedEntry(full);
  const std::vector<Bytes> after = ExportedWithEachByteTurned(0, full);
  ASSERT_THAT(after, SizeIs(144));
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (i >= 8 && i < 16) continue;  // The time.
    ASSERT_EQ(after[i], WithByteTurned(before, kCopied, i)) << "store byte " << i;
  }
}

TEST_F(CallFilterExportTest, ATextOfAnEntryIsCutForTheNulOfWhereItGoes) {
  Bytes record(144);
  PutText(record, 16, std::u16string(31, u'a'));
  PutText(record, 78, std::u16string(33, u'b'));
  Bytes expected = PlainFilterEntryOfStore(0);
  PutText(expected, 40, std::u16string(30, u'a'));
  PutText(expected, 102, std::u16string(33, u'b'));
  EXPECT_EQ(ExportedEntry(record), expected);
}

struct StoreTime {
  std::uint32_t low, high;
  FilterTime numbers;
};

constexpr StoreTime kStoreTimes[] = {
    {0, 0, {1601, 1, 1, 0, 0, 0, 0}},
    {9999, 0, {1601, 1, 1, 0, 0, 0, 0}},  // Almost a millisecond.
    {10000, 0, {1601, 1, 1, 0, 0, 0, 1}},
    {0x256D4000, 0x01BF53EB, {2000, 1, 1, 0, 0, 0, 0}},
    {0x256D3FFF, 0x01BF53EB, {1999, 12, 31, 23, 59, 59, 999}},
    {0x4F47FE10, 0x01C3FE9B, {2004, 2, 29, 8, 9, 10, 1}},
    // From here on there is no such time.
    {0, 0x80000000, {}},
    {0xFFFFFFFF, 0xFFFFFFFF, {}},
};

TEST_F(CallFilterExportTest, ATimeIsSevenNumbersAndZerosIfThereIsNone) {
  for (const StoreTime& time : kStoreTimes) {
    Bytes record(144);
    Put32(record, 8, time.low);
    Put32(record, 12, time.high);
    Bytes expected(204);
    PutFilterTime(expected, 8, time.numbers);
    EXPECT_EQ(ExportedEntry(record), expected) << time.high << " " << time.low;
  }
}

TEST_F(CallFilterExportTest, EachTimeOfAGroupIsSevenNumbersAndZerosIfThereIsNone) {
  for (const FilterTimePlace& place : kFilterGroupTimes) {
    for (const StoreTime& time : kStoreTimes) {
      Bytes record(788);
      Put32(record, place.store, time.low);
      Put32(record, place.store + 4, time.high);
      Bytes expected = PlainFilterGroupOfStore(0);
      PutFilterTime(expected, place.exchange, time.numbers);
      EXPECT_EQ(ExportedGroup(record), expected) << "the time at " << place.store;
    }
  }
}

// --- Groups ---

TEST_F(CallFilterExportTest, AGroupTravelsFieldByField) {
  EXPECT_EQ(ExportedGroup(StoreFilterGroup()), ExchangeFilterGroup());
}

TEST_F(CallFilterExportTest, EachByteOfAGroupGoesWhereItBelongsAndNowhereElse) {
  static constexpr CopiedBytes kCopied[] = {{0, 4, 0},      {4, 44, 4},    {56, 2, 236},    {58, 2, 238},
                                            {60, 140, 240}, {202, 2, 382}, {272, 256, 648}, {530, 258, 906}};
  Bytes full(788, 0x11);
  const auto is_time = [](std::size_t i) { return (i >= 48 && i < 56) || (i >= 208 && i < 272); };
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (is_time(i)) full[i] = 0;
  }
  const Bytes before = ExportedGroup(full);
  const std::vector<Bytes> after = ExportedWithEachByteTurned(1, full);
  ASSERT_THAT(after, SizeIs(788));
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (is_time(i)) continue;
    ASSERT_EQ(after[i], WithByteTurned(before, kCopied, i)) << "store byte " << i;
  }
}

TEST_F(CallFilterExportTest, ATextOfAGroupIsCutForTheNulOfWhereItGoes) {
  Bytes record(788);
  PutText(record, 4, std::u16string(22, u'a'));
  PutText(record, 60, std::u16string(71, u'b'));
  PutText(record, 272, std::u16string(129, u'c'));
  PutText(record, 530, std::u16string(129, u'd'));
  Bytes expected = PlainFilterGroupOfStore(0);
  PutText(expected, 4, std::u16string(22, u'a'));
  PutText(expected, 240, std::u16string(70, u'b'));
  PutText(expected, 648, std::u16string(128, u'c'));
  PutText(expected, 906, std::u16string(129, u'd'));
  EXPECT_EQ(ExportedGroup(record), expected);
}

TEST_F(CallFilterExportTest, TheFirstDayIsToldSevenTimes) {
  const std::pair<std::uint16_t, std::uint8_t> kDays[] = {{0x0000, 0}, {0x0001, 1}, {0x0005, 1}, {0x007F, 1},
                                                          {0x007E, 0}, {0xFFFE, 0}, {0xFF01, 1}, {0x0100, 0}};
  for (const auto& [days, day] : kDays) {
    Bytes record(788);
    Put16(record, 204, days);
    Bytes expected = PlainFilterGroupOfStore(0);
    for (std::size_t i = 384; i < 391; ++i) Put8(expected, i, day);
    EXPECT_EQ(ExportedGroup(record), expected) << days;
  }
}

// --- The configuration ---

TEST_F(CallFilterExportTest, TheConfigurationTravelsWithAsManyNumbersAsItCounts) {
  for (const auto& [count, carried] : kFilterNumberCounts) {
    EXPECT_EQ(ExportedConfig(StoreFilterConfig(count)), ExchangeFilterConfig(carried)) << count;
  }
}

TEST_F(CallFilterExportTest, EachByteOfTheConfigurationGoesWhereItBelongsAndNowhereElse) {
  // Store, byte count, exchange; of the count the upper byte would be too many.
  std::vector<CopiedBytes> copied = {{0, 2, 4}, {2, 2, 6}, {4, 2, 10}};
  for (std::size_t i = 0; i < 8; ++i) {
    copied.push_back({10 + 88 * i, 2, 508 + 2 * i});
    copied.push_back({12 + 88 * i, 60, 12 + 62 * i});
    copied.push_back({74 + 88 * i, 20, 524 + 22 * i});
  }
  Bytes full(712, 0x11);
  Put16(full, 6, 8);
  const Bytes before = ExportedConfig(full);
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (i == 6 || i == 7) continue;
    Bytes changed = full;
    changed[i] ^= 0x40;
    ASSERT_EQ(ExportedConfig(changed), WithByteTurned(before, copied, i)) << "store byte " << i;
  }
}

TEST_F(CallFilterExportTest, AConfigurationThatTheStoreDoesNotFillIsEmpty) {
  store_.config = StoreFilterConfig();
  store_.fills_nothing = {"ReadConfig"};
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_EQ(ReadFile(kFilterConfig), Bytes(700));
}

TEST_F(CallFilterExportTest, ARecordThatTheStoreDoesNotFillIsEmpty) {
  store_.fills_nothing = {"Read"};
  store_.Add(0, 7, 1, StoreFilterEntry());
  store_.Add(1, 8, 1, StoreFilterGroup());
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_EQ(ReadFile(kFilterEntries), PlainFilterEntryOfStore(0));
  EXPECT_EQ(ReadFile(kFilterGroups), PlainFilterGroupOfStore(0));
}

// --- Full exports ---

TEST_F(CallFilterExportTest, FullAndReplaceExportsWriteEverythingAndRememberIt) {
  store_.Add(0, 3, 0x0000000200000001);
  store_.Add(0, 1, 0x0000000400000003);
  store_.Add(1, 7, 0x0000000600000005);
  store_.config = StoreFilterConfig();
  for (const std::uint32_t mode : {1u, 2u}) {
    const Answer answer = Export(11, mode);
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_THAT(IdsIn(kFilterEntries, kFilterEntrySize), ElementsAre(3, 1)) << "in the store's order";
    EXPECT_EQ(ReadFile(kFilterGroups), PlainFilterGroupOfStore(7));
    EXPECT_EQ(ReadFile(kFilterConfig), ExchangeFilterConfig());
    EXPECT_EQ(ReadFile(kFilterEntryLog), Words({3, 1, 2, 1, 3, 4}));
    EXPECT_EQ(ReadFile(kFilterGroupLog), Words({7, 5, 6}));
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nREDBLIST = 200612117210");
    EXPECT_FALSE(Exists(kFilterChanges));
    for (const auto* file : {kFilterEntryLog, kFilterGroupLog, kAnchorIni}) {
      std::filesystem::remove(handset::HostPath(file));
    }
  }
}

TEST_F(CallFilterExportTest, AnExportTakesItsStepsInOrder) {
  store_.Add(0, 3, 1);
  store_.Add(1, 7, 1);
  RunEvents events(store_);
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_THAT(
      events.Take(),
      ElementsAre("open qvSyncAnchor.ini", "create qvSyncAnchor.ini",  //
                  "create redblistinfo.tbl", "create redblistgroup.tbl", "create redblistconfig.tbl",
                  "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read", "create redblistinfo.tbl",
                  "call GetAllRecNum 0", "call GetAllidTime 0 room 1", "call Read 0 [3]",  //
                  "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read", "create redblistgroup.tbl",
                  "call GetAllRecNum 1", "call GetAllidTime 1 room 1", "call Read 1 [7]",          //
                  "find Sync_rbc_ReadConfig", "call ReadConfig", "create redblistconfig.tbl",      //
                  "create redblist.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",       //
                  "call GetAllRecNum 0", "call GetAllidTime 0 room 1",                             //
                  "create redblistgroup.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",  //
                  "call GetAllRecNum 1", "call GetAllidTime 1 room 1"));
}

TEST_F(CallFilterExportTest, AnIncrementalExportTakesItsStepsInOrder) {
  store_.Add(0, 3, 1);
  store_.Add(1, 7, 1);
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_THAT(
      events.Take(),
      ElementsAre("open qvSyncAnchor.ini", "open qvSyncAnchor.ini", "create qvSyncAnchor.ini",  //
                  "create redblistinfo.tbl", "create redblistgroup.tbl", "create redblistconfig.tbl",
                  "create redblistcmd.tbl",  //
                  "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read", "create redblistinfo.tbl",
                  "call GetAllRecNum 0", "call GetAllidTime 0 room 1", "open redblist.log", "call Read 0 [3]",  //
                  "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read", "create redblistgroup.tbl",
                  "call GetAllRecNum 1", "call GetAllidTime 1 room 1", "open redblistgroup.log", "call Read 1 [7]",
                  "find Sync_rbc_ReadConfig", "call ReadConfig", "create redblistconfig.tbl",      //
                  "create redblist.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",       //
                  "call GetAllRecNum 0", "call GetAllidTime 0 room 1",                             //
                  "create redblistgroup.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",  //
                  "call GetAllRecNum 1", "call GetAllidTime 1 room 1"));
}

TEST_F(CallFilterExportTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  const std::vector<Opening> openings = DataOpeningsOf([&] { EXPECT_EQ(ExportChanges().code, 0u); });
  EXPECT_THAT(openings, testing::SizeIs(11));
  EXPECT_THAT(openings, testing::Each(testing::Pair(testing::_, testing::AnyOf(kReader, kWriter))));
}

TEST_F(CallFilterExportTest, EntriesAreReadTwoHundredAtATimeAndGroupsAllAtOnce) {
  std::vector<std::uint32_t> ids(401);
  std::iota(ids.begin(), ids.end(), 1);
  for (const std::uint32_t id : ids) {
    store_.Add(0, id, 1);
    store_.Add(1, id, 1);
  }
  EXPECT_EQ(Export(11, 4).code, 0u);
  std::vector<std::string> reads;
  for (const std::string& call : store_.CallsOf("Read")) {
    // The table, and the number of ids.
    reads.push_back(call.substr(0, 7) + std::to_string(std::count(call.begin(), call.end(), ' ') - 1));
  }
  EXPECT_THAT(reads, ElementsAre("Read 0 200", "Read 0 200", "Read 0 1", "Read 1 401"));
  EXPECT_EQ(IdsIn(kFilterEntries, kFilterEntrySize), ids);
  EXPECT_EQ(IdsIn(kFilterGroups, kFilterGroupSize), ids);
}

TEST_F(CallFilterExportTest, EachRecordIsOneWrite) {
  store_.Add(0, 1, 1);
  store_.Add(0, 2, 1);
  store_.Add(1, 3, 1);
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile") sizes.push_back(call.size);
  });
  EXPECT_EQ(Export(11, 4).code, 0u);
  handset::Observe({});
  EXPECT_THAT(sizes, ElementsAre(204, 204, 1200, 700));
}

TEST_F(CallFilterExportTest, AnEmptyStoreGivesEmptyTablesAndSnapshotsAndItsConfiguration) {
  for (const auto* file : {kFilterEntries, kFilterGroups, kFilterConfig, kFilterEntryLog, kFilterGroupLog}) {
    WriteText(file, "old");
  }
  store_.config = StoreFilterConfig();
  EXPECT_EQ(Export(11, 1).code, 0u);
  for (const auto* file : {kFilterEntries, kFilterGroups, kFilterEntryLog, kFilterGroupLog}) {
    EXPECT_THAT(ReadFile(file), IsEmpty());
  }
  EXPECT_EQ(ReadFile(kFilterConfig), ExchangeFilterConfig());
}

TEST_F(CallFilterExportTest, EntriesWithoutGroupsAndGroupsWithoutEntriesAreExported) {
  store_.Add(0, 1, 1);
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_EQ(ReadFile(kFilterEntries), PlainFilterEntryOfStore(1));
  EXPECT_THAT(ReadFile(kFilterGroups), IsEmpty());
  store_.tables[0].clear();
  store_.Add(1, 2, 1);
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_THAT(ReadFile(kFilterEntries), IsEmpty());
  EXPECT_EQ(ReadFile(kFilterGroups), PlainFilterGroupOfStore(2));
}

TEST_F(CallFilterExportTest, APlainCopyRemembersNothing) {
  store_.Add(0, 1, 1);
  store_.config = StoreFilterConfig();
  for (const std::uint32_t mode : {4u, 5u, 99u}) {
    const Answer answer = Export(11, mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(ReadFile(kFilterEntries), PlainFilterEntryOfStore(1));
    EXPECT_EQ(ReadFile(kFilterConfig), ExchangeFilterConfig());
    for (const auto* file : {kFilterEntryLog, kFilterGroupLog, kAnchorIni}) EXPECT_FALSE(Exists(file));
  }
}

// --- Incremental exports ---

TEST_F(CallFilterExportTest, TheChangesOfBothTablesAreInOneList) {
  store_.Add(0, 10, 100);                 // unchanged
  store_.Add(0, 30, 300);                 // new
  store_.Add(0, 20, 0x0000000100000000);  // modified: only the upper word differs
  store_.Add(0, 40, 399);                 // modified: its time moved back
  store_.Add(1, 10, 7);                   // new group: ids of one table say nothing of the other
  store_.Add(1, 5, 9);                    // modified group
  const Answer answer =
      ExportChanges(Words({90, 1, 0, 10, 100, 0, 20, 0, 0, 80, 1, 0, 40, 400, 0}), Words({3, 3, 0, 5, 8, 0}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(ReadFile(kFilterChanges), Words({0, 30, 1, 0, 20, 2, 0, 40, 2, 0, 90, 3, 0, 80, 3,  //
                                             1, 10, 1, 1, 5,  2, 1, 3,  3}));
  EXPECT_THAT(IdsIn(kFilterEntries, kFilterEntrySize), ElementsAre(30, 20, 40));
  EXPECT_THAT(IdsIn(kFilterGroups, kFilterGroupSize), ElementsAre(10, 5));
  EXPECT_EQ(ReadFile(kFilterEntryLog), Words({10, 100, 0, 30, 300, 0, 20, 0, 1, 40, 399, 0}));
  EXPECT_EQ(ReadFile(kFilterGroupLog), Words({10, 7, 0, 5, 9, 0}));
}

TEST_F(CallFilterExportTest, ChangedRecordsTravelLikeAllOthersAndTheConfigurationAlways) {
  store_.Add(0, 9, 1, StoreFilterEntry());
  store_.Add(1, 9, 1, StoreFilterGroup());
  store_.config = StoreFilterConfig(3);
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kFilterEntries), ExchangeFilterEntry());
  EXPECT_EQ(ReadFile(kFilterGroups), ExchangeFilterGroup());
  EXPECT_EQ(ReadFile(kFilterConfig), ExchangeFilterConfig(3));
}

TEST_F(CallFilterExportTest, NothingChangedGivesEmptyFilesAndReadsNoRecord) {
  store_.Add(0, 10, 100);
  store_.Add(1, 20, 200);
  store_.config = StoreFilterConfig();
  EXPECT_EQ(ExportChanges(Words({10, 100, 0}), Words({20, 200, 0})).code, 0u);
  for (const auto* file : {kFilterChanges, kFilterEntries, kFilterGroups}) EXPECT_THAT(ReadFile(file), IsEmpty());
  EXPECT_EQ(ReadFile(kFilterConfig), ExchangeFilterConfig());
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
}

TEST_F(CallFilterExportTest, DeletionsAloneAreListedWithEmptyTables) {
  store_.Add(0, 10, 100);
  store_.Add(1, 20, 200);
  EXPECT_EQ(ExportChanges(Words({10, 100, 0, 11, 1, 0}), Words({21, 1, 0, 20, 200, 0})).code, 0u);
  EXPECT_EQ(ReadFile(kFilterChanges), Words({0, 11, 3, 1, 21, 3}));
  EXPECT_THAT(ReadFile(kFilterEntries), IsEmpty());
  EXPECT_THAT(ReadFile(kFilterGroups), IsEmpty());
}

TEST_F(CallFilterExportTest, AnEmptyTableNeedsNoSnapshotAndReportsNoDeletions) {
  store_.Add(1, 20, 200);
  EXPECT_EQ(ExportChanges(Words({1, 1, 0}), Words({20, 200, 0, 21, 1, 0})).code, 0u);
  EXPECT_EQ(ReadFile(kFilterChanges), Words({1, 21, 3}));
  EXPECT_THAT(ReadFile(kFilterEntryLog), IsEmpty());
  store_.tables[1].clear();
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nREDBLIST = 5");
  for (const auto* log : {kFilterEntryLog, kFilterGroupLog}) std::filesystem::remove(handset::HostPath(log));
  EXPECT_EQ(Export(11, 3, u"5").code, 0u);
  EXPECT_THAT(ReadFile(kFilterChanges), IsEmpty());
}

TEST_F(CallFilterExportTest, ATornSnapshotEntryIsPassedOver) {
  store_.Add(0, 1, 100);
  Bytes log = Words({1, 100, 0, 2, 2, 0});
  log.resize(23);
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_THAT(ReadFile(kFilterChanges), IsEmpty());
}

TEST_F(CallFilterExportTest, SnapshotsAndChangesHaveNoLimit) {
  Bytes log;
  std::vector<std::uint32_t> changed;
  std::vector<std::uint32_t> changes[2];
  for (std::uint32_t id = 1; id <= 2000; ++id) {
    Append(log, Words({id, id, 0}));
    if (id % 2 == 1) continue;
    for (const std::uint32_t table : {0u, 1u}) {
      store_.Add(table, id, id % 4 == 0 ? id : 1);
      if (id % 4 != 0) changes[table].insert(changes[table].end(), {table, id, 2});
    }
    if (id % 4 != 0) changed.push_back(id);
  }
  for (std::uint32_t id = 1; id <= 2000; id += 2) {
    for (const std::uint32_t table : {0u, 1u}) changes[table].insert(changes[table].end(), {table, id, 3});
  }
  EXPECT_EQ(ExportChanges(log, log).code, 0u);
  std::vector<std::uint32_t> expected = changes[0];
  expected.insert(expected.end(), changes[1].begin(), changes[1].end());
  EXPECT_EQ(ToWords(ReadFile(kFilterChanges)), expected);
  EXPECT_EQ(IdsIn(kFilterEntries, kFilterEntrySize), changed);
  EXPECT_EQ(IdsIn(kFilterGroups, kFilterGroupSize), changed);
}

TEST_F(CallFilterExportTest, ADowngradedExportIsFullAndWritesNoChangeList) {
  store_.Add(0, 1, 1);
  for (const auto* anchor : {"6", "00000000000000"}) {
    WriteText(kAnchorIni, std::string("[ANCHORDATE]\r\nREDBLIST = ") + anchor);
    EXPECT_EQ(Export(11, 3, u"5").mode, 1u);
    EXPECT_FALSE(Exists(kFilterChanges));
    EXPECT_EQ(ReadFile(kFilterEntries).size(), kFilterEntrySize);
    EXPECT_EQ(ReadFile(kFilterEntryLog), Words({1, 1, 0}));
  }
}

// --- Failures ---

TEST_F(CallFilterExportTest, AStoreThatIsNotLoadedTouchesNothing) {
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"CallFilterStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    for (const std::uint32_t mode : {1u, 3u, 4u}) EXPECT_EQ(Export(11, mode).code, 0x10000001u);
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(CallFilterExportTest, FilesThatCannotBeCreatedAreAFileFailureWithoutAStep) {
  for (const auto* file : {kFilterEntries, kFilterGroups, kFilterConfig, kFilterChanges}) {
    MakeDirectory(file);
    EXPECT_EQ(ExportChanges().code, 0x10000100u);
    EXPECT_THAT(store_.calls, IsEmpty());
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nREDBLIST = 200612117210") << "the anchor has moved by then";
    std::filesystem::remove(handset::HostPath(file));
  }
}

TEST_F(CallFilterExportTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  for (const auto* name : {u"Sync_GetAllRecNum", u"Sync_GetAllidTime", u"Sync_Read", u"Sync_rbc_ReadConfig"}) {
    for (const std::uintptr_t address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const ScriptedCallFilterStore lacking({name}, address);
      for (const std::uint32_t mode : {1u, 4u}) EXPECT_EQ(Export(11, mode).code, 0x11000002u);
      EXPECT_EQ(ExportChanges().code, 0x11000002u);
      for (const auto* table : kExportedTables) EXPECT_TRUE(Exists(table)) << "the tables were created before";
    }
  }
  const ScriptedCallFilterStore reading({u"Sync_insert", u"Sync_Update", u"Sync_Del", u"SC_Sync_Del", u"Sync_DelAll",
                                         u"Sync_rbc_WriteConfig", u"Sync_rbc_DelConfig"});
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
}

TEST_F(CallFilterExportTest, AStoreFailureIsFlaggedWithItsStep) {
  // The store's answering calls: list and read entries, list and read groups, the configuration, list both again.
  const std::uint32_t kCodes[] = {0x11000005, 0x11000006, 0x12000005, 0x12000006, 0x11000006, 0x15000005, 0x15000005};
  for (unsigned n = 1; n <= 7; ++n) {
    for (const bool full : {true, false}) {
      ScriptedCallFilterStore failing;
      failing.Add(0, 1, 1);
      failing.Add(1, 1, 1);
      failing.fail_call = n;
      EXPECT_EQ(full ? Export(11, 1).code : ExportChanges().code, kCodes[n - 1]) << "call " << n;
    }
  }
}

TEST_F(CallFilterExportTest, TheConfigurationIsReadOnlyBehindBothTables) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  store_.config = StoreFilterConfig();
  for (const unsigned failing : {1u, 5u}) {  // Listing the entries, and in the next run the groups.
    store_.fail_call = failing;
    EXPECT_NE(Export(11, 4).code, 0u);
    EXPECT_THAT(store_.CallsOf("ReadConfig"), IsEmpty());
    EXPECT_THAT(ReadFile(kFilterConfig), IsEmpty());
  }
}

TEST_F(CallFilterExportTest, AConfigurationThatCannotBeReadLeavesAnEmptyFileAndNoSnapshots) {
  store_.Add(0, 1, 1);
  store_.config = StoreFilterConfig();
  for (const std::uint32_t status : {1u, 2u, 3u, 0xFFFFFFFFu}) {
    store_.statuses["ReadConfig"] = status;
    for (const std::uint32_t mode : {1u, 2u, 4u}) EXPECT_EQ(Export(11, mode).code, 0x11000006u);
    EXPECT_EQ(ReadFile(kFilterEntries), PlainFilterEntryOfStore(1));
    EXPECT_THAT(ReadFile(kFilterConfig), IsEmpty());
    EXPECT_FALSE(Exists(kFilterEntryLog));
  }
}

TEST_F(CallFilterExportTest, AConfigurationFileThatCannotBeOpenedAgainIsFlagged) {
  handset::FailCallOf("CreateFileW", 6);  // Behind three files that are created and two tables.
  EXPECT_EQ(Export(11, 4).code, 0x11000100u);
  EXPECT_THAT(store_.CallsOf("ReadConfig"), SizeIs(1));
}

TEST_F(CallFilterExportTest, ATableThatCannotBeOpenedAgainIsFlagged) {
  handset::FailCallOf("CreateFileW", 4);
  EXPECT_EQ(Export(11, 4).code, 0x11000100u);
  handset::FailCallOf("CreateFileW", 5);
  EXPECT_EQ(Export(11, 4).code, 0x12000100u);
}

TEST_F(CallFilterExportTest, WithoutASnapshotAnIncrementalExportFailsAtItsTable) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nREDBLIST = 5");
  EXPECT_EQ(Export(11, 3, u"5").code, 0x11100100u);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nREDBLIST = 5");
  WriteFile(kFilterEntryLog, {});
  EXPECT_EQ(Export(11, 3, u"5").code, 0x12100100u);
}

TEST_F(CallFilterExportTest, AnUnreadableSnapshotIsNotTakenForAnEmptyOne) {
  store_.Add(0, 1, 1);
  bool fails = false;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == kFilterEntryLog && !fails) {
      fails = true;
      handset::FailCallOf("ReadFile", 1);
    }
  });
  EXPECT_EQ(ExportChanges().code, 0x11100200u);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
}

TEST_F(CallFilterExportTest, ASnapshotThatCannotBeRewrittenIsFlagged) {
  for (const auto* file : {kFilterEntryLog, kFilterGroupLog}) {
    MakeDirectory(file);
    EXPECT_EQ(Export(11, 1).code, 0x15000100u);
    std::filesystem::remove(handset::HostPath(file));
  }
}

TEST_F(CallFilterExportTest, AFailedExportKeepsItsFilesAndTheSnapshots) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  store_.fail_call = 4;  // Reading the groups.
  EXPECT_EQ(ExportChanges(Words({9, 9, 0})).code, 0x12000006u);
  EXPECT_EQ(ReadFile(kFilterEntries), PlainFilterEntryOfStore(1));
  EXPECT_EQ(ReadFile(kFilterEntryLog), Words({9, 9, 0}));
  EXPECT_EQ(ReadFile(kFilterChanges), Words({0, 1, 1, 0, 9, 3, 1, 1, 1}));
}

TEST_F(CallFilterExportTest, AFullDiskIsAFileFailureAtItsStep) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  const std::pair<std::uint64_t, std::uint32_t> kFreeSpaces[] = {
      {0, 0x11000100},          {203, 0x11000100},        {204, 0x12000100},
      {204 + 1199, 0x12000100}, {204 + 1200, 0x11000100}, {204 + 1200 + 699, 0x11000100},
      {204 + 1200 + 700, 0},
  };
  for (const auto& [bytes, code] : kFreeSpaces) {
    for (const auto* file : kExportedTables) std::filesystem::remove(handset::HostPath(file));
    handset::SetFreeSpace(bytes);
    EXPECT_EQ(Export(11, 4).code, code) << bytes << " bytes free";
  }
}

TEST_F(CallFilterExportTest, AbsurdCountsAreAMemoryFailure) {
  for (const std::uint32_t count : {0x10000000u, 0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = count;
    EXPECT_EQ(Export(11, 1).code, 0x11000010u);
    EXPECT_EQ(ExportChanges().code, 0x11000010u);
  }
}

TEST_F(CallFilterExportTest, AListLongerThanItsRoomIsCut) {
  store_.Add(0, 1, 1);
  store_.Add(0, 2, 1);
  store_.claimed_listed = 0xFFFFFFFF;
  EXPECT_EQ(Export(11, 1).code, 0u);
  EXPECT_THAT(IdsIn(kFilterEntries, kFilterEntrySize), ElementsAre(1, 2));
  EXPECT_EQ(ReadFile(kFilterEntryLog), Words({1, 1, 0, 2, 1, 0}));
}

}  // namespace
}  // namespace qv_test
