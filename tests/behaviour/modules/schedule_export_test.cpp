// Exports of the schedule, full and incremental: the bytes of each file, and what the store is asked.
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

TEST_F(ScheduleExportTest, AnEntryIsAWriteForEachPartThatItHasAndAGroupOne) {
  store_.Add(0, 1, 1, StoreEntry());
  store_.Add(0, 2, 1);
  store_.Add(1, 3, 1, StoreGroup());
  EXPECT_THAT(WritesTo(kEntries, 1), ElementsAre(912, 160, 144, 912));
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

TEST_F(ScheduleExportTest, ChangedRecordsTravelLikeAllOthers) {
  store_.Add(0, kEntryId, 1, StoreEntry());
  store_.Add(1, 5, 1, StoreGroup());
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kEntries), ExchangeEntry());
  EXPECT_EQ(ReadFile(kGroups), ExchangeGroup());
}

// --- Failures ---

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

}  // namespace
}  // namespace qv_test
