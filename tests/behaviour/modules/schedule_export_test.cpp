// Exports of the schedule, full and incremental: the bytes of each file, and what the store is asked.
#include <numeric>

#include "tests/support/run_events.h"
#include "tests/support/schedule_records.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScheduleExportTest : public AgentTest {
 protected:
  /// An incremental export against a stored anchor and these snapshots.
  Answer ExportChanges(const Bytes& entry_log = {}, const Bytes& group_log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
    WriteFile(kEntryLog, entry_log);
    WriteFile(kGroupLog, group_log);
    return Export(2, 3, u"5");
  }

  static std::vector<std::uint32_t> IdsIn(const Bytes& table, std::size_t record_size) {
    std::vector<std::uint32_t> ids;
    for (std::size_t i = 0; i < table.size(); i += record_size) ids.push_back(Get32(table, i));
    return ids;
  }

  /// The sizes of the writes to a file while an export runs.
  std::vector<std::uint32_t> WritesTo(std::u16string_view path, std::uint32_t mode) {
    std::vector<std::uint32_t> sizes;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "WriteFile" && call.path == path) sizes.push_back(call.size);
    });
    EXPECT_EQ(Export(2, mode).code, 0u);
    handset::Observe({});
    return sizes;
  }

  ScriptedScheduleStore store_;
};

// --- Records ---

TEST_F(ScheduleExportTest, AnEntryTravelsFieldByField) {
  store_.Add(0, kEntryId, 1, StoreEntry());
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadFile(kEntries), ExchangeEntry());
}

TEST_F(ScheduleExportTest, EachByteOfTheStoreRecordGoesWhereItBelongsAndNowhereElse) {
  // One byte of the store record after the other is changed, and what then differs in the exchange record is compared
  // with where that byte's field lies. Offsets: store first, byte count, exchange first.
  struct Copied {
    std::size_t store, size, exchange;
  };
  static constexpr Copied kCopied[] = {
      {4, 4, 4},    {24, 4, 496},   {28, 2, 444},   {30, 1, 374},    {31, 1, 375}, {32, 1, 376},
      {33, 1, 447}, {34, 1, 448},   {35, 1, 464},   {36, 1, 500},    {45, 1, 832}, {46, 1, 833},
      {47, 1, 844}, {56, 2, 828},   {58, 1, 860},   {64, 4, 856},    {68, 4, 864}, {72, 7, 868},
      {80, 60, 8},  {142, 240, 70}, {384, 60, 312}, {446, 256, 502},
  };
  Bytes full(8680, 0x11);
  Put8(full, 40, 0);
  Put8(full, 41, 0);
  store_.Add(0, 9, 1, full);
  EXPECT_EQ(Export(2, 4).code, 0u);
  const Bytes before = ReadFile(kEntries);
  for (const Copied& field : kCopied) {
    for (std::size_t i = 0; i < field.size; ++i) {
      store_.At(0, 9).bytes = full;
      store_.At(0, 9).bytes[field.store + i] ^= 0x40;
      EXPECT_EQ(Export(2, 4).code, 0u);
      Bytes expected = before;
      expected[field.exchange + i] ^= 0x40;
      ASSERT_EQ(ReadFile(kEntries), expected) << "store byte " << field.store + i;
    }
  }
  // And bytes that no field holds say nothing: the tail, unused bytes, and the NUL's place of full texts.
  for (const std::size_t unused :
       {0u, 1u, 19u, 22u, 23u, 37u, 42u, 43u, 59u, 79u, 140u, 382u, 444u, 702u, 704u, 8640u, 8679u}) {
    store_.At(0, 9).bytes = full;
    store_.At(0, 9).bytes[unused] ^= 0x40;
    EXPECT_EQ(Export(2, 4).code, 0u);
    ASSERT_EQ(ReadFile(kEntries), before) << "store byte " << unused;
  }
}

TEST_F(ScheduleExportTest, EachOfTheLowestSevenWeekdayBitsHasAByte) {
  for (std::uint32_t bit = 0; bit < 32; ++bit) {
    Bytes entry(8680);
    Put8(entry, 44, 1);
    Put32(entry, 60, 1u << bit);
    store_.tables[0].clear();
    store_.Add(0, 1, 1, entry);
    EXPECT_EQ(Export(2, 4).code, 0u);
    Bytes expected = PlainEntry(1);
    Put8(expected, 760, 1);
    Put32(expected, 836, 1u << bit);
    if (bit < 7) Put8(expected, 848 + bit, 1);
    EXPECT_EQ(ReadFile(kEntries), expected) << "bit " << bit;
  }
}

TEST_F(ScheduleExportTest, ARepeatKindHasFourBits) {
  Bytes entry(8680);
  Put8(entry, 44, 0xFC);
  Put8(entry, 45, 7);
  store_.Add(0, 1, 1, entry);
  EXPECT_EQ(Export(2, 4).code, 0u);
  Bytes expected = PlainEntry(1);
  Put8(expected, 760, 12);
  Put8(expected, 832, 7);
  EXPECT_EQ(ReadFile(kEntries), expected);
}

TEST_F(ScheduleExportTest, AnEntryWithoutItemsIs912Bytes) {
  store_.Add(0, 1, 1);
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadFile(kEntries), PlainEntry(1));
}

TEST_F(ScheduleExportTest, AnEntryIsThreeWritesAndAGroupOne) {
  store_.Add(0, 1, 1, StoreEntry());
  store_.Add(0, 2, 1);
  store_.Add(1, 3, 1, StoreGroup());
  EXPECT_THAT(WritesTo(kEntries, 1), ElementsAre(912, 160, 144, 912, 0, 0));
  EXPECT_THAT(WritesTo(kGroups, 1), ElementsAre(288));
}

TEST_F(ScheduleExportTest, AnEntryThatDoesNotRepeatIsZeroFrom760On) {
  Bytes entry = StoreEntry();
  Put8(entry, 44, 0xF0);
  store_.Add(0, kEntryId, 1, entry);
  EXPECT_EQ(Export(2, 1).code, 0u);
  Bytes expected = ExchangeEntry();
  std::fill(expected.begin() + 760, expected.begin() + 912, std::uint8_t{0});
  EXPECT_EQ(ReadFile(kEntries), expected);
}

TEST_F(ScheduleExportTest, CountsBeyondTheSlotsAreCutToTheSlots) {
  Bytes entry(8680);
  Put8(entry, 40, 21);
  Put8(entry, 41, 255);
  const Bytes items = Items(20 * 80 + 44 * 144, 1, 3);
  std::copy(items.begin(), items.end(), entry.begin() + 704);
  store_.Add(0, 1, 1, entry);
  EXPECT_EQ(Export(2, 1).code, 0u);
  Bytes expected = PlainEntry(1);
  Put8(expected, 449, 20);
  Put8(expected, 456, 44);
  Append(expected, items);
  EXPECT_EQ(ReadFile(kEntries), expected);
}

TEST_F(ScheduleExportTest, AGroupTravelsAsItStands) {
  store_.Add(1, 5, 1, StoreGroup());
  EXPECT_EQ(Export(2, 1).code, 0u);
  Bytes expected = ExchangeGroup();
  EXPECT_EQ(ReadFile(kGroups), expected);
  store_.tables[1].clear();
  store_.Add(1, 6, 1, StoreGroup());
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadFile(kGroups), expected) << "also under another id than it was listed under";
}

TEST_F(ScheduleExportTest, TheStoreMayUseRoomForAHundredRecords) {
  store_.used_room = 100;
  store_.Add(0, kEntryId, 1, StoreEntry());
  std::vector<std::uint32_t> blocks;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "realloc") blocks.push_back(call.size);
  });
  EXPECT_EQ(Export(2, 1).code, 0u);
  handset::Observe({});
  EXPECT_EQ(ReadFile(kEntries), ExchangeEntry());
  EXPECT_THAT(blocks, testing::Contains(868000u));
}

TEST_F(ScheduleExportTest, ARecordThatTheStoreDoesNotFillIsEmpty) {
  store_.fills_nothing = {"Read"};
  store_.Add(0, 7, 1, StoreEntry());
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadFile(kEntries), PlainEntry(7));
}

// --- Full exports ---

TEST_F(ScheduleExportTest, FullAndReplaceExportsWriteEverythingAndRememberIt) {
  for (const std::uint32_t mode : {1u, 2u}) {
    store_.tables[0].clear();
    store_.tables[1].clear();
    store_.Add(0, 3, 0x0000000200000001);
    store_.Add(0, 1, 0x0000000400000003);
    store_.Add(1, 7, 0x0000000600000005);
    EXPECT_EQ(Export(2, mode).code, 0u);
    EXPECT_THAT(IdsIn(ReadFile(kEntries), 912), ElementsAre(3, 1)) << "in the store's order";
    EXPECT_THAT(ReadFile(kGroups).size(), 288u);
    EXPECT_EQ(ReadFile(kEntryLog), Words({3, 1, 2, 1, 3, 4}));
    EXPECT_EQ(ReadFile(kGroupLog), Words({7, 5, 6}));
    EXPECT_FALSE(Exists(kChangeList));
    for (const auto* log : {kEntryLog, kGroupLog}) std::filesystem::remove(handset::HostPath(log));
  }
}

TEST_F(ScheduleExportTest, AFullExportAsksTheStoreInThisOrder) {
  store_.Add(0, 3, 1);
  store_.Add(1, 7, 1);
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_THAT(store_.calls, ElementsAre("GetTotalNum 0", "GetAllSyncInfo 0 room 1", "Read 0 [3]", "GetTotalNum 1",
                                        "GetAllSyncInfo 1 room 1", "Read 1 [7]", "GetTotalNum 0",
                                        "GetAllSyncInfo 0 room 1", "GetTotalNum 1", "GetAllSyncInfo 1 room 1"));
}

TEST_F(ScheduleExportTest, EachStepLooksItsEntryPointsUpAnew) {
  std::vector<std::u16string> names;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "GetProcAddressW") names.emplace_back(call.path);
  });
  EXPECT_EQ(Export(2, 1).code, 0u);
  handset::Observe({});
  const std::u16string total = u"SC_Sync_GetTotalNum";
  const std::u16string info = u"SC_Sync_GetAllSyncInfo";
  const std::u16string read = u"SC_Sync_Read";
  EXPECT_THAT(names, ElementsAre(total, info, read, total, info, read, total, info, total, info));
}

TEST_F(ScheduleExportTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  EXPECT_THAT(
      OpeningsOf([&] { EXPECT_EQ(ExportChanges().code, 0u); }),
      ElementsAre(Opening(kAnchorIni, kReader), Opening(kAnchorIni, kReaderAlone), Opening(kAnchorIni, kWriterAlone),
                  Opening(kEntries, kWriter), Opening(kGroups, kWriter), Opening(kChangeList, kWriter),
                  Opening(kEntries, kWriter), Opening(kEntryLog, kReader), Opening(kGroups, kWriter),
                  Opening(kGroupLog, kReader), Opening(kEntryLog, kWriter), Opening(kGroupLog, kWriter)));
}

TEST_F(ScheduleExportTest, RecordsAreReadFiftyAtATime) {
  for (std::uint32_t id = 1; id <= 101; ++id) store_.Add(0, id, 1);
  EXPECT_EQ(Export(2, 4).code, 0u);
  std::vector<std::size_t> batches;
  for (const std::string& call : store_.calls) {
    if (call.starts_with("Read 0"))
      batches.push_back(static_cast<std::size_t>(std::count(call.begin(), call.end(), ' ')) - 1);
  }
  EXPECT_THAT(batches, ElementsAre(50, 50, 1));
  std::vector<std::uint32_t> expected(101);
  std::iota(expected.begin(), expected.end(), 1);
  EXPECT_EQ(IdsIn(ReadFile(kEntries), 912), expected);
}

TEST_F(ScheduleExportTest, AnEmptyStoreGivesEmptyTablesAndSnapshots) {
  WriteText(kEntryLog, "old");
  WriteText(kGroupLog, "old");
  EXPECT_EQ(Export(2, 1).code, 0u);
  for (const auto* file : {kEntries, kGroups, kEntryLog, kGroupLog}) EXPECT_THAT(ReadFile(file), IsEmpty());
}

TEST_F(ScheduleExportTest, EntriesWithoutGroupsAndGroupsWithoutEntriesAreExported) {
  store_.Add(0, 1, 1);
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadFile(kEntries).size(), 912u);
  store_.tables[0].clear();
  store_.Add(1, 1, 1);
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadFile(kEntries).size(), 0u);
  EXPECT_EQ(ReadFile(kGroups).size(), 288u);
}

TEST_F(ScheduleExportTest, APlainCopyRemembersNothing) {
  store_.Add(0, 1, 1);
  for (const std::uint32_t mode : {4u, 5u, 99u}) {
    EXPECT_EQ(Export(2, mode).code, 0u);
    EXPECT_EQ(ReadFile(kEntries).size(), 912u);
    EXPECT_FALSE(Exists(kEntryLog));
    EXPECT_FALSE(Exists(kGroupLog));
    EXPECT_FALSE(Exists(kAnchorIni));
  }
}

// --- Incremental exports ---

TEST_F(ScheduleExportTest, ChangesAreListedNewAndModifiedInTheStoresOrderThenDeletedInTheSnapshots) {
  store_.Add(0, 10, 100);                 // unchanged
  store_.Add(0, 30, 300);                 // new
  store_.Add(0, 20, 0x0000000100000000);  // modified: only the upper word differs
  store_.Add(0, 40, 399);                 // modified: its time moved back
  store_.Add(0, 50, 500);                 // new
  store_.Add(1, 10, 7);                   // new group: ids of one table say nothing of the other
  EXPECT_EQ(ExportChanges(Words({90, 1, 0, 10, 100, 0, 20, 0, 0, 80, 1, 0, 40, 400, 0}), Words({3, 3, 0})).code, 0u);
  EXPECT_EQ(ReadFile(kChangeList), Words({0, 30, 1, 0, 20, 2, 0, 40, 2, 0, 50, 1, 0, 90, 3, 0, 80, 3,  //
                                          1, 10, 1, 1, 3,  3}));
  EXPECT_THAT(IdsIn(ReadFile(kEntries), 912), ElementsAre(30, 20, 40, 50));
  EXPECT_EQ(ReadFile(kGroups).size(), 288u);
  EXPECT_EQ(ReadFile(kEntryLog), Words({10, 100, 0, 30, 300, 0, 20, 0, 1, 40, 399, 0, 50, 500, 0}));
  EXPECT_EQ(ReadFile(kGroupLog), Words({10, 7, 0}));
}

TEST_F(ScheduleExportTest, ChangedRecordsTravelLikeAllOthers) {
  store_.Add(0, kEntryId, 1, StoreEntry());
  store_.Add(1, 5, 1, StoreGroup());
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kEntries), ExchangeEntry());
  EXPECT_EQ(ReadFile(kGroups), ExchangeGroup());
}

TEST_F(ScheduleExportTest, NothingChangedGivesEmptyFilesAndReadsNoRecord) {
  store_.Add(0, 10, 100);
  store_.Add(1, 20, 200);
  const Answer answer = ExportChanges(Words({10, 100, 0}), Words({20, 200, 0}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  for (const auto* file : {kChangeList, kEntries, kGroups}) EXPECT_THAT(ReadFile(file), IsEmpty());
  EXPECT_THAT(store_.calls, testing::Not(testing::Contains(testing::StartsWith("Read"))));
}

TEST_F(ScheduleExportTest, AnEmptyTableNeedsNoSnapshot) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  EXPECT_EQ(Export(2, 3, u"5").code, 0u);
  EXPECT_THAT(ReadFile(kChangeList), IsEmpty());
}

TEST_F(ScheduleExportTest, AnEmptyTableReportsNoDeletions) {
  store_.Add(1, 20, 200);
  EXPECT_EQ(ExportChanges(Words({1, 1, 0}), Words({20, 200, 0, 21, 1, 0})).code, 0u);
  EXPECT_EQ(ReadFile(kChangeList), Words({1, 21, 3}));
  EXPECT_THAT(ReadFile(kEntries), IsEmpty());
  EXPECT_THAT(ReadFile(kEntryLog), IsEmpty());
}

TEST_F(ScheduleExportTest, TheFirstSnapshotEntryOfAnIdCounts) {
  store_.Add(0, 1, 100);
  store_.Add(0, 2, 100);
  EXPECT_EQ(ExportChanges(Words({1, 100, 0, 1, 5, 0, 2, 5, 0, 2, 100, 0})).code, 0u);
  EXPECT_EQ(ReadFile(kChangeList), Words({0, 2, 2}));
}

TEST_F(ScheduleExportTest, EachSnapshotEntryOfADeletedIdIsReported) {
  store_.Add(0, 1, 100);
  EXPECT_EQ(ExportChanges(Words({2, 1, 0, 1, 100, 0, 2, 2, 0})).code, 0u);
  EXPECT_EQ(ReadFile(kChangeList), Words({0, 2, 3, 0, 2, 3}));
}

TEST_F(ScheduleExportTest, ATornSnapshotEntryIsPassedOver) {
  store_.Add(0, 1, 100);
  Bytes log = Words({1, 100, 0, 2, 2, 0});
  log.resize(23);
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_THAT(ReadFile(kChangeList), IsEmpty());
}

TEST_F(ScheduleExportTest, SnapshotsAndChangesHaveNoLimit) {
  Bytes log;
  for (std::uint32_t id = 1; id <= 5000; ++id) {
    Append(log, Words({id, id, 0}));
    if (id % 2 == 0) store_.Add(1, id, id % 4 == 0 ? id : 1);
  }
  EXPECT_EQ(ExportChanges({}, log).code, 0u);
  std::vector<std::uint32_t> expected;
  for (std::uint32_t i = 0; i < 1250; ++i) expected.insert(expected.end(), {1, 2 + 4 * i, 2});
  for (std::uint32_t i = 0; i < 2500; ++i) expected.insert(expected.end(), {1, 1 + 2 * i, 3});
  EXPECT_EQ(ToWords(ReadFile(kChangeList)), expected);
  EXPECT_EQ(ReadFile(kGroups).size(), 1250u * 288);
}

TEST_F(ScheduleExportTest, ADowngradedExportIsFullAndWritesNoChangeList) {
  store_.Add(0, 1, 1);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 6");
  EXPECT_EQ(Export(2, 3, u"5").mode, 1u);
  EXPECT_FALSE(Exists(kChangeList));
  EXPECT_EQ(ReadFile(kEntries).size(), 912u);
  EXPECT_EQ(ReadFile(kEntryLog), Words({1, 1, 0}));
}

TEST_F(ScheduleExportTest, AChangeMadeAfterAnExportIsInTheNext) {
  store_.Add(0, 1, 1);
  store_.Add(0, 2, 2);
  const Answer first = Export(2, 1);
  store_.At(0, 2).time = 3;
  const Answer second = Export(2, 3, first.anchor);
  EXPECT_EQ(second.mode, 3u);
  EXPECT_EQ(ReadFile(kChangeList), Words({0, 2, 2}));
  const Answer third = Export(2, 3, second.anchor);
  EXPECT_EQ(third.mode, 3u);
  EXPECT_THAT(ReadFile(kChangeList), IsEmpty());
}

// --- Failures ---

TEST_F(ScheduleExportTest, AStoreThatIsNotLoadedTouchesNothing) {
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"SchedStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(Export(2, 1, u"", std::u16string(300, u'x')).code, 0x10000001u);
    EXPECT_EQ(Export(2, 3).code, 0x10000001u);
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(ScheduleExportTest, AnOverlongDirectoryIsRefusedBeforeAnythingMoves) {
  std::u16string path = u"\\sync";
  path.insert(0, 255, u'\\');
  const Answer answer = Export(2, 1, u"77", path);
  EXPECT_EQ(answer.code, 0x10000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_EQ(Export(2, 1, u"", path.substr(1)).code, 0u) << "259 characters are allowed";
  EXPECT_TRUE(Exists(kEntries));
}

TEST_F(ScheduleExportTest, ADirectoryThatIsNotThereIsAFileFailureWithoutAStep) {
  EXPECT_EQ(Export(2, 1, u"", u"\\nowhere").code, 0x10000100u);
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
}

TEST_F(ScheduleExportTest, FilesThatCannotBeCreatedAreAFileFailureWithoutAStep) {
  for (const auto* file : {kEntries, kGroups, kChangeList}) {
    MakeDirectory(file);
    EXPECT_EQ(ExportChanges().code, 0x10000100u);
    std::filesystem::remove(handset::HostPath(file));
  }
}

TEST_F(ScheduleExportTest, AMissingEntryPointIsFlaggedWithItsTable) {
  for (const auto* name : {u"SC_Sync_GetTotalNum", u"SC_Sync_GetAllSyncInfo", u"SC_Sync_Read"}) {
    const ScriptedScheduleStore lacking({name});
    EXPECT_EQ(Export(2, 1).code, 0x11000002u);
    EXPECT_EQ(ExportChanges().code, 0x11000002u);
    EXPECT_TRUE(Exists(kEntries)) << "the tables were created before";
    EXPECT_THAT(lacking.calls, IsEmpty());
  }
}

TEST_F(ScheduleExportTest, AnEntryPointOfAllOnesIsMissing) {
  for (const auto* name : {u"SC_Sync_GetTotalNum", u"SC_Sync_GetAllSyncInfo", u"SC_Sync_Read"}) {
    const ScriptedScheduleStore lacking({name}, ~std::uintptr_t{0});
    EXPECT_EQ(Export(2, 1).code, 0x11000002u);
  }
}

TEST_F(ScheduleExportTest, TheFirstThingThatIsWrongIsReported) {
  const ScriptedScheduleStore lacking({u"SC_Sync_Read"});
  handset::FailCallOf("CreateFileW", 3);  // The entry table, opened for its records.
  EXPECT_EQ(Export(2, 4).code, 0x11000002u) << "entry points are looked up before the table is opened";
  EXPECT_FALSE(handset::FaultHappened());

  ScriptedScheduleStore store;
  store.Add(0, 1, 1);
  store.statuses["GetAllSyncInfo"] = 1;
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  EXPECT_EQ(Export(2, 3, u"5").code, 0x11000005u) << "the store is listed before the snapshot is read";
}

TEST_F(ScheduleExportTest, ATableThatCannotBeOpenedAgainIsFlagged) {
  handset::FailCallOf("CreateFileW", 3);
  EXPECT_EQ(Export(2, 4).code, 0x11000100u);
  handset::FailCallOf("CreateFileW", 4);
  EXPECT_EQ(Export(2, 4).code, 0x12000100u);
}

TEST_F(ScheduleExportTest, AFailedExportIsReturnedWithoutAStreamToo) {
  const ScriptedScheduleStore lacking({u"SC_Sync_Read"});
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(2, 1, u"", kSync), nullptr), 0x01000002u);
}

TEST_F(ScheduleExportTest, AnExportNeedsNoEntryPointThatWrites) {
  ScriptedScheduleStore reading({u"SC_Sync_Insert", u"SC_Sync_Update", u"SC_Sync_Del", u"SC_Sync_DelAll"});
  reading.Add(0, 1, 1);
  EXPECT_EQ(Export(2, 1).code, 0u);
}

TEST_F(ScheduleExportTest, AStoreFailureIsFlaggedWithItsTable) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  // The store's answering calls of a full export: list and read entries, list and read groups, list both again.
  const std::uint32_t kCodes[] = {0x11000005, 0x11000006, 0x12000005, 0x12000006, 0x15000005, 0x15000005};
  for (unsigned n = 1; n <= 6; ++n) {
    ScriptedScheduleStore failing;
    failing.tables[0] = store_.tables[0];
    failing.tables[1] = store_.tables[1];
    failing.fail_call = n;
    EXPECT_EQ(Export(2, 1).code, kCodes[n - 1]) << "call " << n;
    ScriptedScheduleStore failing_changes;
    failing_changes.tables[0] = store_.tables[0];
    failing_changes.tables[1] = store_.tables[1];
    failing_changes.fail_call = n;
    EXPECT_EQ(ExportChanges().code, kCodes[n - 1]) << "call " << n;
  }
}

TEST_F(ScheduleExportTest, WithoutASnapshotAnIncrementalExportFailsAtItsTable) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  EXPECT_EQ(Export(2, 3, u"5").code, 0x11100100u);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  WriteFile(kEntryLog, {});
  EXPECT_EQ(Export(2, 3, u"5").code, 0x12100100u);
}

TEST_F(ScheduleExportTest, AnUnreadableSnapshotIsNotTakenForAnEmptyOne) {
  store_.Add(0, 1, 1);
  bool fails = false;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == kEntryLog && !fails) {
      fails = true;
      handset::FailCallOf("ReadFile", 1);
    }
  });
  EXPECT_EQ(ExportChanges().code, 0x11100200u);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
}

TEST_F(ScheduleExportTest, ASnapshotThatCannotBeRewrittenIsFlagged) {
  for (const auto* file : {kEntryLog, kGroupLog}) {
    MakeDirectory(file);
    EXPECT_EQ(Export(2, 1).code, 0x15000100u);
    std::filesystem::remove(handset::HostPath(file));
  }
}

TEST_F(ScheduleExportTest, ASnapshotWhoseStoreFailsIsEmpty) {
  store_.Add(0, 1, 1);
  WriteText(kEntryLog, "old");
  store_.fail_call = 3;  // Listing the entries for the snapshot.
  EXPECT_EQ(Export(2, 1).code, 0x15000005u);
  EXPECT_THAT(ReadFile(kEntryLog), IsEmpty());
}

TEST_F(ScheduleExportTest, AFailedExportKeepsItsFilesAndTheSnapshots) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  store_.fail_call = 4;  // reading the groups
  EXPECT_EQ(ExportChanges(Words({9, 9, 0})).code, 0x12000006u);
  EXPECT_EQ(ReadFile(kEntries).size(), 912u);
  EXPECT_EQ(ReadFile(kEntryLog), Words({9, 9, 0}));
  EXPECT_EQ(ReadFile(kChangeList), Words({0, 1, 1, 0, 9, 3, 1, 1, 1}));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(ScheduleExportTest, AFullDiskIsAFileFailureAtItsTable) {
  store_.Add(0, 1, 1, StoreEntry());
  store_.Add(1, 1, 1, StoreGroup());
  constexpr std::uint64_t kEntrySize = 912 + 160 + 144;
  const std::pair<std::uint64_t, std::uint32_t> kFreeSpaces[] = {
      {0, 0x11000100},          {911, 0x11000100},
      {912 + 159, 0x11000100},  {kEntrySize - 1, 0x11000100},
      {kEntrySize, 0x12000100}, {kEntrySize + 287, 0x12000100},
      {kEntrySize + 288, 0},
  };
  for (const auto& [bytes, code] : kFreeSpaces) {
    for (const auto* file : {kEntries, kGroups}) std::filesystem::remove(handset::HostPath(file));
    handset::SetFreeSpace(bytes);
    EXPECT_EQ(Export(2, 4).code, code) << bytes << " bytes free";
  }
}

TEST_F(ScheduleExportTest, AbsurdCountsAreAMemoryFailure) {
  for (const std::uint32_t count : {0x10000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = count;
    EXPECT_EQ(Export(2, 1).code, 0x11000010u);
    EXPECT_EQ(ExportChanges().code, 0x11000010u);
  }
  store_.claimed_count = 0x0FFFFFFF;
  EXPECT_EQ(Export(2, 1).code, 0x11000010u) << "four gigabytes are more than the handset has";
}

TEST_F(ScheduleExportTest, AListLongerThanItsRoomIsCut) {
  store_.Add(0, 1, 1);
  store_.Add(0, 2, 1);
  for (const std::uint32_t count : {3u, 0xFFFFFFFFu}) {
    store_.claimed_listed = count;
    EXPECT_EQ(Export(2, 1).code, 0u);
    EXPECT_THAT(IdsIn(ReadFile(kEntries), 912), ElementsAre(1, 2));
    EXPECT_EQ(ReadFile(kEntryLog), Words({1, 1, 0, 2, 1, 0}));
  }
}

TEST_F(ScheduleExportTest, AListShorterThanItsCountIsTakenAsItIs) {
  store_.Add(0, 1, 1);
  store_.claimed_count = 3;
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_THAT(IdsIn(ReadFile(kEntries), 912), ElementsAre(1));
  EXPECT_EQ(ReadFile(kEntryLog), Words({1, 1, 0}));
  EXPECT_THAT(ReadFile(kGroups), IsEmpty());
}

}  // namespace
}  // namespace qv_test
