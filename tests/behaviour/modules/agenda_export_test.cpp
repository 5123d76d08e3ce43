// Exports of the agenda, where they are not those of any module of two tables: the bytes of each record, and what each
// failure comes out as.
#include "tests/support/agenda_records.h"
#include "tests/support/scripted_agenda_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What travels of the items in an area.
Bytes LongItemsIn(const Bytes& area) {
  Bytes items;
  for (const Bytes& item : Split(area, kLongItemInStore)) Append(items, Bytes(item.begin(), item.begin() + kLongItem));
  return items;
}

class AgendaExportTest : public AgentTest {
 protected:
  void AddEntry(std::uint32_t id, const Bytes& entry, const Bytes& area = {}) {
    store_.Add(0, id, 1, entry);
    store_.areas[id] = area;
  }
  /// What an export makes of one entry, which is listed as 9.
  Bytes Exported(const Bytes& entry, const Bytes& area = {}) {
    store_.tables[0].clear();
    AddEntry(9, entry, area);
    EXPECT_EQ(Export(4, 4).code, 0u);
    return ReadFile(kAgenda);
  }
  /// Entry 3 and group 7.
  static void AddOneOfEach(ScriptedAgendaStore& store) {
    store.Add(0, 3, 1);
    store.Add(1, 7, 1);
  }
  /// An incremental export against a stored anchor and these snapshots.
  Answer ExportChanges(const Bytes& entry_log = {}, const Bytes& group_log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nAGENDA = 5");
    WriteFile(kAgendaLog, entry_log);
    WriteFile(kAgendaGroupLog, group_log);
    return Export(4, 3, u"5");
  }

  ScriptedAgendaStore store_;
};

// --- Records ---

TEST_F(AgendaExportTest, AnEntryTravelsFieldByField) {
  AddEntry(kAgendaId, StoreAgendaEntry(), StoreAgendaArea());
  EXPECT_EQ(Export(4, 1).code, 0u);
  EXPECT_EQ(ReadFile(kAgenda), ExchangeAgendaEntry());
}

TEST_F(AgendaExportTest, EachByteOfTheStoreRecordGoesWhereItBelongsAndNowhereElse) {
  // Store, byte count, exchange.
  std::vector<CopiedBytes> copied = {
      {0, 34, 8},   {36, 1, 52},  {37, 1, 48}, {38, 2, 44},  {40, 1, 84},  {41, 1, 80},    {42, 2, 76},
      {44, 2, 108}, {46, 1, 110}, {48, 4, 4},  {56, 1, 111}, {58, 1, 112}, {60, 130, 114},
  };
  for (std::size_t i = 0; i < kMostAgendaItems; ++i) {
    const std::size_t slot = kAgendaSlots + i * kAgendaSlot;
    const std::size_t item = kAgendaFixedPart + i * kAgendaItem;
    copied.push_back({slot, 4, item + 12});
    copied.push_back({slot + 6, 1, item});
    copied.push_back({slot + 8, 4, item + 4});
    copied.push_back({slot + 12, 2, item + 8});
    copied.push_back({slot + 14, 2, item + 10});
    copied.push_back({slot + 16, 62, item + 16});
  }
  Bytes full(kAgendaInStore, 0x11);
  Put8(full, kAgendaItemCount, kMostAgendaItems);
  Put32(full, kLongItemCount, 0);
  const Bytes before = Exported(full);
  ASSERT_EQ(before.size(), kAgendaFixedPart + kMostAgendaItems * kAgendaItem + 4);
  store_.tables[0].clear();
  const std::size_t turned = kLongItemCount - 4;
  for (std::uint32_t i = 0; i < turned; ++i) {
    Bytes entry = full;
    if (i != kAgendaItemCount) entry[i] ^= 0x40;
    AddEntry(1000 + i, entry);
  }
  ASSERT_EQ(Export(4, 4).code, 0u);
  const std::vector<Bytes> exported = Split(ReadFile(kAgenda), before.size());
  ASSERT_EQ(exported.size(), turned);
  for (std::uint32_t i = 0; i < turned; ++i) {
    Bytes expected = WithByteTurned(before, copied, i);
    Put32(expected, 0, 1000 + i);
    ASSERT_EQ(exported[i], expected) << "store byte " << i;
  }
}

TEST_F(AgendaExportTest, EachByteOfALongItemGoesWhereItBelongsAndNowhereElse) {
  Bytes entry(kAgendaInStore);
  Put32(entry, kLongItemCount, kMostLongItems);
  for (const Bytes& area :
       {LowPositions(ScriptedAgendaStore::kAreaSize), HighPositions(ScriptedAgendaStore::kAreaSize)}) {
    EXPECT_EQ(Exported(entry, area), AgendaEntryOf(9, {}, LongItemsIn(area)));
  }
}

TEST_F(AgendaExportTest, AnEntryWithoutItemsIs292Bytes) {
  store_.Add(0, 1, 1);
  EXPECT_EQ(Export(4, 1).code, 0u);
  EXPECT_EQ(ReadFile(kAgenda), PlainAgendaEntry(1));
}

TEST_F(AgendaExportTest, AnEntryHasAsManyItemsAsItCountsOrThereIsRoomFor) {
  struct Count {
    std::uint32_t said, carried;
  };
  for (const Count& count : {Count{0, 0},
                             {1, 1},
                             {19, 19},
                             {20, 20},
                             {21, 20},
                             {127, 20},
                             {128, 20},
                             {255, 20},
                             {0xFFFFFF00, 0},
                             {0x80000001, 1},
                             {0xFFFFFFFF, 20},
                             {0x7FFFFFFF, 20}}) {
    SCOPED_TRACE(count.said);
    Bytes entry = LowPositions(kAgendaInStore);
    std::fill_n(entry.begin(), kAgendaSlots, std::uint8_t{0});
    Put32(entry, kAgendaItemCount, count.said);
    Put32(entry, kLongItemCount, 0);
    Bytes items;
    for (std::size_t i = 0; i < count.carried; ++i) {
      const Bytes slot(entry.begin() + static_cast<std::ptrdiff_t>(kAgendaSlots + i * kAgendaSlot), entry.end());
      Bytes item(kAgendaItem);
      Put8(item, 0, slot[6]);
      std::copy_n(slot.begin() + 8, 4, item.begin() + 4);
      std::copy_n(slot.begin() + 12, 4, item.begin() + 8);
      std::copy_n(slot.begin(), 4, item.begin() + 12);
      // The text of the positions' bytes has no end within these.
      std::copy_n(slot.begin() + 16, 62, item.begin() + 16);
      Append(items, item);
    }
    EXPECT_EQ(Exported(entry), AgendaEntryOf(9, items));
  }
}

TEST_F(AgendaExportTest, AnEntryHasAsManyLongItemsAsItCountsOrThereIsRoomFor) {
  const Bytes area = Items(kMostLongItems, kLongItemInStore, 9);
  const Bytes all = LongItemsIn(area);
  struct Count {
    std::uint32_t said, carried;
  };
  for (const Count& count : {Count{0, 0},
                             {1, 1},
                             {2, 2},
                             {49, 49},
                             {50, 50},
                             {51, 50},
                             {0x100, 50},
                             {0x7FFFFFFF, 50},
                             {0x80000000, 50},
                             {0xFFFFFFFF, 50}}) {
    SCOPED_TRACE(count.said);
    Bytes entry(kAgendaInStore);
    Put32(entry, kLongItemCount, count.said);
    const Bytes carried(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count.carried * kLongItem));
    EXPECT_EQ(Exported(entry, area), AgendaEntryOf(9, {}, carried));
  }
}

TEST_F(AgendaExportTest, EachEntryHasAnAreaOfItsOwn) {
  // Two of them in one call of the store; nothing is left of those of the call before.
  for (std::uint32_t id = 1; id <= 5; ++id) {
    Bytes entry(kAgendaInStore);
    Put32(entry, kLongItemCount, id <= 3 ? 2 : 1);
    AddEntry(id, entry, id == 4 ? Bytes() : Items(2, kLongItemInStore, static_cast<std::uint8_t>(id)));
  }
  EXPECT_EQ(Export(4, 1).code, 0u);
  Bytes expected;
  for (std::uint32_t id = 1; id <= 5; ++id) {
    Bytes items = LongItemsIn(store_.areas[id]);
    items.resize((id <= 3 ? 2 : 1) * kLongItem);
    Append(expected, AgendaEntryOf(id, {}, items));
  }
  EXPECT_EQ(ReadFile(kAgenda), expected);
}

TEST_F(AgendaExportTest, AnEntryThatTheStoreDoesNotFillIsEmpty) {
  store_.fills_nothing = {"Read"};
  AddEntry(7, StoreAgendaEntry(), StoreAgendaArea());
  store_.Add(1, 7, 1);
  EXPECT_EQ(Export(4, 1).code, 0u);
  EXPECT_EQ(ReadFile(kAgenda), PlainAgendaEntry(7));
  EXPECT_EQ(ReadFile(kAgendaGroups), Bytes(kAgendaGroupSize));
}

TEST_F(AgendaExportTest, ATextEndsAtItsNul) {
  Bytes entry = StoreAgendaEntry();
  PutUsedText(entry, 0, u"");
  PutUsedText(entry, 60, std::u16string(60, u'x'));
  PutUsedText(entry, 204 + 16, u"y");
  Bytes expected = ExchangeAgendaEntry();
  Put32(expected, 0, 9);
  PutBytes(expected, 8, Bytes(36));
  PutBytes(expected, 114, Bytes(132));
  PutText(expected, 114, std::u16string(60, u'x'));
  PutBytes(expected, 288 + 16, Bytes(64));
  PutText(expected, 288 + 16, u"y");
  EXPECT_EQ(Exported(entry, StoreAgendaArea()), expected);
}

TEST_F(AgendaExportTest, AGroupTravelsAsItStands) {
  store_.Add(1, 6, 1, AgendaGroup(5));
  for (std::uint32_t i = 0; i < kAgendaGroupSize; ++i) {
    Bytes turned = AgendaGroup(5);
    turned[i] ^= 0x40;
    store_.Add(1, 1000 + i, 1, turned);
  }
  EXPECT_EQ(Export(4, 1).code, 0u);
  const std::vector<Bytes> groups = Split(ReadFile(kAgendaGroups), kAgendaGroupSize);
  ASSERT_EQ(groups.size(), 1 + kAgendaGroupSize);
  EXPECT_EQ(groups[0], AgendaGroup(5)) << "also under another id than it was listed under";
  for (std::size_t i = 0; i < kAgendaGroupSize; ++i) {
    static constexpr CopiedBytes kCopied[] = {{0, kAgendaGroupSize, 0}};
    ASSERT_EQ(groups[1 + i], WithByteTurned(AgendaGroup(5), kCopied, i)) << "byte " << i;
  }
}

TEST_F(AgendaExportTest, ChangedRecordsTravelLikeAllOthers) {
  AddEntry(kAgendaId, StoreAgendaEntry(), StoreAgendaArea());
  store_.Add(1, 5, 1, AgendaGroup(5));
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kAgenda), ExchangeAgendaEntry());
  EXPECT_EQ(ReadFile(kAgendaGroups), AgendaGroup(5));
}

TEST_F(AgendaExportTest, TwoAreasAreAllTheMemoryThatEntriesTake) {
  for (std::uint32_t id = 1; id <= 9; ++id) store_.Add(0, id, 1);
  handset::ResetPeakMemory();
  EXPECT_EQ(Export(4, 1).code, 0u);
  EXPECT_GE(handset::PeakAllocatedBytes(), 2 * ScriptedAgendaStore::kAreaSize);
  EXPECT_LT(handset::PeakAllocatedBytes(), 3 * ScriptedAgendaStore::kAreaSize);
}

// --- What the store claims ---

TEST_F(AgendaExportTest, AListOfLessThanNoneIsNone) {
  AddOneOfEach(store_);
  for (const std::uint32_t count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_listed = count;
    EXPECT_EQ(Export(4, 1).code, 0u);
    for (const auto* file : {kAgenda, kAgendaGroups, kAgendaLog, kAgendaGroupLog}) {
      EXPECT_THAT(ReadFile(file), IsEmpty());
    }
  }
}

// --- Failures ---

TEST_F(AgendaExportTest, ADirectoryThatIsNotThereFailsAtTheFirstFile) {
  EXPECT_EQ(Export(4, 1, u"", u"\\nowhere").code, 0x11000100u);
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
  EXPECT_FALSE(Exists(kAgendaLog));
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nAGENDA = 5");
  EXPECT_EQ(Export(4, 3, u"5", u"\\nowhere").code, 0x10000100u);
}

TEST_F(AgendaExportTest, FilesThatCannotBeCreatedAreFlaggedWithTheirTable) {
  AddOneOfEach(store_);
  const std::pair<const char16_t*, std::uint32_t> kFiles[] = {
      {kAgenda, 0x11000100}, {kAgendaGroups, 0x12000100}, {kAgendaChanges, 0x10000100}};
  for (const auto& [file, code] : kFiles) {
    MakeDirectory(file);
    store_.calls.clear();
    EXPECT_EQ(ExportChanges(Words({9, 9, 0})).code, code);
    EXPECT_EQ(store_.calls.empty(), file != kAgendaGroups);
    if (file != kAgendaChanges) {
      EXPECT_EQ(Export(4, 1).code, code);
    }
    EXPECT_EQ(ReadFile(kAgendaLog), Words({9, 9, 0}));
    for (const auto* created : {kAgenda, kAgendaGroups, kAgendaChanges}) {
      std::filesystem::remove(handset::HostPath(created));
    }
  }
}

TEST_F(AgendaExportTest, AMissingEntryPointIsFlaggedWithTheFirstTable) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const auto* name : {u"AGD_Sync_GetAllRecNum", u"AGD_Sync_GetAllidTime", u"AGD_Sync_Read"}) {
      const ScriptedAgendaStore lacking({name}, address);
      EXPECT_EQ(Export(4, 1).code, 0x11000002u);
      EXPECT_EQ(Export(4, 4).code, 0x11000002u);
      EXPECT_FALSE(Exists(kAgenda)) << "the table is created behind that";
      EXPECT_EQ(ExportChanges().code, 0x11000002u);
      EXPECT_FALSE(Exists(kAgenda));
      EXPECT_THAT(ReadFile(kAgendaChanges), IsEmpty());
      EXPECT_THAT(lacking.calls, IsEmpty());
      EXPECT_EQ(LocalExport(4), 0x11000002u);
    }
  }
}

TEST_F(AgendaExportTest, AStoreFailureIsFlaggedWithItsTable) {
  // The store's answering calls of an export: list and read entries, list and read groups, list both again.
  const std::uint32_t kCodes[] = {0x11000005, 0x11000006, 0x12000005, 0x12000006, 0x15000005, 0x15000005};
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    for (unsigned n = 1; n <= 6; ++n) {
      for (const bool is_incremental : {false, true}) {
        SCOPED_TRACE("call " + std::to_string(n));
        ScriptedAgendaStore failing;
        AddOneOfEach(failing);
        failing.fail_call = n;
        failing.failing_status = status;
        for (const auto* log : {kAgendaLog, kAgendaGroupLog}) WriteText(log, "old");
        EXPECT_EQ((is_incremental ? ExportChanges() : Export(4, 1)).code, kCodes[n - 1]);
        EXPECT_EQ(ReadFile(kAgenda), n <= 2 ? Bytes() : PlainAgendaEntry(3));
        if (!is_incremental) {
          EXPECT_EQ(ReadText(kAgendaGroupLog), n < 6 ? "old" : "");
        }
        if (!is_incremental && n < 5) {
          EXPECT_EQ(ReadText(kAgendaLog), "old");
        }
      }
    }
  }
}

TEST_F(AgendaExportTest, WithoutASnapshotAnIncrementalExportFailsAtItsTable) {
  AddOneOfEach(store_);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nAGENDA = 5");
  EXPECT_EQ(Export(4, 3, u"5").code, 0x11100100u);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nAGENDA = 5");
  WriteFile(kAgendaLog, {});
  EXPECT_EQ(Export(4, 3, u"5").code, 0x12100100u);
}

TEST_F(AgendaExportTest, AnUnreadableSnapshotIsNotTakenForAnEmptyOne) {
  AddOneOfEach(store_);
  const std::pair<const char16_t*, std::uint32_t> kLogs[] = {{kAgendaLog, 0x11100200}, {kAgendaGroupLog, 0x12100200}};
  for (const auto& [log, code] : kLogs) {
    handset::Observe([&, log = log](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == log) handset::FailCallOf("ReadFile", 1);
    });
    EXPECT_EQ(ExportChanges().code, code);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
  }
}

TEST_F(AgendaExportTest, ASnapshotThatCannotBeRewrittenIsFlagged) {
  for (const auto* file : {kAgendaLog, kAgendaGroupLog}) {
    MakeDirectory(file);
    EXPECT_EQ(Export(4, 1).code, 0x15000100u);
    std::filesystem::remove(handset::HostPath(file));
  }
}

TEST_F(AgendaExportTest, AFailedExportKeepsItsFilesAndTheSnapshots) {
  AddOneOfEach(store_);
  store_.fail_call = 4;  // reading the groups
  EXPECT_EQ(ExportChanges(Words({9, 9, 0})).code, 0x12000006u);
  EXPECT_EQ(ReadFile(kAgenda), PlainAgendaEntry(3));
  EXPECT_EQ(ReadFile(kAgendaLog), Words({9, 9, 0}));
  EXPECT_EQ(ReadFile(kAgendaChanges), Words({0, 3, 1, 0, 9, 3, 1, 7, 1}));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nAGENDA = 200612117210");
}

TEST_F(AgendaExportTest, AFullDiskIsAFileFailureAtItsTable) {
  AddEntry(kAgendaId, StoreAgendaEntry(), StoreAgendaArea());
  store_.Add(1, 1, 1);
  constexpr std::uint64_t kEntrySize = 288 + 160 + 4 + 3 * 3928;
  const std::pair<std::uint64_t, std::uint32_t> kFreeSpaces[] = {
      {0, 0x11000100},
      {287, 0x11000100},
      {288 + 79, 0x11000100},
      {288 + 159, 0x11000100},
      {288 + 163, 0x11000100},
      {288 + 164 + 3927, 0x11000100},
      {288 + 164 + 2 * 3928, 0x11000100},
      {kEntrySize - 1, 0x11000100},
      {kEntrySize, 0x12000100},
      {kEntrySize + 287, 0x12000100},
      {kEntrySize + 288, 0},
  };
  for (const auto& [bytes, code] : kFreeSpaces) {
    for (const auto* file : {kAgenda, kAgendaGroups}) std::filesystem::remove(handset::HostPath(file));
    handset::SetFreeSpace(bytes);
    EXPECT_EQ(Export(4, 4).code, code) << bytes << " bytes free";
  }
}

TEST_F(AgendaExportTest, WithoutMemoryForAnAreaAnExportFailsAtTheEntries) {
  AddOneOfEach(store_);
  for (const bool is_incremental : {false, true}) {
    bool failed = false;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "realloc" && call.size >= ScriptedAgendaStore::kAreaSize && !failed) {
        failed = true;
        handset::FailCallOf("realloc", 1);
      }
    });
    EXPECT_EQ((is_incremental ? ExportChanges() : Export(4, 1)).code, 0x11000010u);
    handset::Observe({});
    EXPECT_TRUE(failed);
    EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
  }
}

TEST_F(AgendaExportTest, AFailedExportIsReturnedWithoutAStreamToo) {
  const ScriptedAgendaStore lacking({u"AGD_Sync_Read"});
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(4, 1, u"", kSync), nullptr), 0x01000002u);
}

}  // namespace
}  // namespace qv_test
