// Recovers of the agenda, where they are not those of any module of two tables: the bytes of each record, entries that
// the end of the file cuts off, and what each failure comes out as.
#include "tests/support/agenda_records.h"
#include "tests/support/scripted_agenda_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AgendaRecoverTest : public AgentTest {
 protected:
  static void Place(const Bytes& entries, const Bytes& groups = {}) {
    WriteFile(kAgenda, entries);
    WriteFile(kAgendaGroups, groups);
  }
  static void PlaceChanges(const Bytes& changes, const Bytes& entries = {}, const Bytes& groups = {}) {
    WriteFile(kAgendaChanges, changes);
    Place(entries, groups);
  }
  static bool TablesAreKept() { return Exists(kAgenda) && Exists(kAgendaGroups); }
  static bool TablesAreGone() { return !Exists(kAgenda) && !Exists(kAgendaGroups); }

  /// What the store gets of these entries.
  const std::vector<ScriptedRecordStore::Record>& Recovered(const Bytes& entries) {
    ClearStore();
    Place(entries);
    EXPECT_EQ(Recover(4, 4).code, 0u);
    EXPECT_TRUE(TablesAreGone());
    return store_.tables[0];
  }

  void ClearStore() {
    for (auto& table : store_.tables) table.clear();
    store_.areas.clear();
    store_.calls.clear();
    store_.next_id = 1000;
  }

  ScriptedAgendaStore store_;
};

// --- Records ---

TEST_F(AgendaRecoverTest, AnEntryReachesTheStoreFieldByField) {
  for (const Bytes& incoming : {ExchangeAgendaEntry(), NoisyAgendaEntry()}) {
    const auto& applied = Recovered(incoming);
    ASSERT_THAT(applied, SizeIs(1));
    EXPECT_EQ(applied[0].bytes, RecoveredAgendaEntry());
    EXPECT_EQ(store_.areas[1000], RecoveredAgendaArea());
  }
}

TEST_F(AgendaRecoverTest, EachByteOfTheEntryGoesWhereItBelongsAndNowhereElse) {
  // Exchange, byte count, store.
  std::vector<CopiedBytes> copied = {
      {0, 4, 52},  {4, 4, 48},  {8, 34, 0},   {44, 2, 38},  {48, 1, 37},  {52, 1, 36},  {76, 2, 42},
      {80, 1, 41}, {84, 1, 40}, {108, 2, 44}, {110, 1, 46}, {111, 1, 56}, {112, 1, 58}, {114, 130, 60},
  };
  for (std::size_t i = 0; i < kMostAgendaItems; ++i) {
    const std::size_t slot = kAgendaSlots + i * kAgendaSlot;
    const std::size_t item = kAgendaFixedPart + i * kAgendaItem;
    copied.push_back({item, 1, slot + 6});
    copied.push_back({item + 4, 4, slot + 8});
    copied.push_back({item + 8, 2, slot + 12});
    copied.push_back({item + 10, 2, slot + 14});
    copied.push_back({item + 12, 4, slot});
    copied.push_back({item + 16, 64, slot + 16});
  }
  Bytes full(kAgendaFixedPart + kMostAgendaItems * kAgendaItem, 0x11);
  const std::size_t turned = full.size();
  Put8(full, 247, kMostAgendaItems);
  Append(full, Words({0}));
  const Bytes before = Recovered(full).at(0).bytes;
  Bytes entries;
  for (std::size_t i = 0; i < turned; ++i) {
    Bytes entry = full;
    if (i != 247) entry[i] ^= 0x40;
    Append(entries, entry);
  }
  const auto& applied = Recovered(entries);
  ASSERT_THAT(applied, SizeIs(turned));
  for (std::size_t i = 0; i < turned; ++i) {
    ASSERT_EQ(applied[i].bytes, WithByteTurned(before, copied, i)) << "exchange byte " << i;
  }
}

TEST_F(AgendaRecoverTest, EachByteOfALongItemGoesWhereItBelongsAndNowhereElse) {
  for (const Bytes& items : {LowPositions(kMostLongItems * kLongItem), HighPositions(kMostLongItems * kLongItem)}) {
    Bytes expected;
    for (Bytes item : Split(items, kLongItem)) {
      item.resize(kLongItemInStore);
      Append(expected, item);
    }
    ASSERT_THAT(Recovered(AgendaEntryOf(9, {}, items)), SizeIs(1));
    EXPECT_EQ(Get32(store_.tables[0][0].bytes, kLongItemCount), kMostLongItems);
    EXPECT_EQ(store_.areas[1000], expected);
  }
}

TEST_F(AgendaRecoverTest, AnEntryWithoutItemsLeavesItsSlotsAndItsAreaZero) {
  Bytes entries = NoisyAgendaEntry();
  Append(entries, PlainAgendaEntry(7, 8));
  const auto& applied = Recovered(entries);
  ASSERT_THAT(applied, SizeIs(2));
  EXPECT_EQ(applied[1].bytes, RecoveredPlainAgendaEntry(7, 8)) << "nothing is left of the entry before it";
  EXPECT_THAT(store_.areas[1001], IsEmpty());
}

TEST_F(AgendaRecoverTest, AnEntryMayFillAllItsSlots) {
  for (const std::size_t count : {1u, 19u, 20u}) {
    const Bytes items = Items(count, kAgendaItem, 0x81);
    const auto& applied = Recovered(AgendaEntryOf(7, items));
    ASSERT_THAT(applied, SizeIs(1));
    EXPECT_EQ(Get32(applied[0].bytes, kAgendaItemCount), count);
  }
  for (const std::size_t count : {1u, 49u, 50u}) {
    ASSERT_THAT(Recovered(AgendaEntryOf(7, {}, Items(count, kLongItem, 0x81))), SizeIs(1));
    EXPECT_EQ(store_.areas[1000].size(), count * kLongItemInStore);
  }
}

TEST_F(AgendaRecoverTest, ATextEndsAtItsNul) {
  Bytes entry = NoisyAgendaEntry();
  PutUsedText(entry, 8, u"");
  PutUsedText(entry, 114, std::u16string(60, u'x'));
  PutUsedText(entry, 288 + 16, u"y");
  Bytes expected = RecoveredAgendaEntry();
  PutBytes(expected, 0, Bytes(36));
  PutBytes(expected, 60, Bytes(132));
  PutText(expected, 60, std::u16string(60, u'x'));
  PutBytes(expected, 204 + 16, Bytes(64));
  PutText(expected, 204 + 16, u"y");
  EXPECT_EQ(Recovered(entry).at(0).bytes, expected);
}

TEST_F(AgendaRecoverTest, AGroupReachesTheStoreAsItStands) {
  Bytes groups = AgendaGroup(5);
  for (std::size_t i = 0; i < kAgendaGroupSize; ++i) {
    Bytes turned = AgendaGroup(5);
    turned[i] ^= 0x40;
    Append(groups, turned);
  }
  Place({}, groups);
  EXPECT_EQ(Recover(4, 4).code, 0u);
  const auto& applied = store_.tables[1];
  ASSERT_THAT(applied, SizeIs(1 + kAgendaGroupSize));
  EXPECT_EQ(applied[0].bytes, AgendaGroup(5));
  for (std::size_t i = 0; i < kAgendaGroupSize; ++i) {
    static constexpr CopiedBytes kCopied[] = {{0, kAgendaGroupSize, 0}};
    ASSERT_EQ(applied[1 + i].bytes, WithByteTurned(AgendaGroup(5), kCopied, i)) << "byte " << i;
  }
}

TEST_F(AgendaRecoverTest, AChangeListBringsTheSame) {
  for (const std::uint32_t mode : {3u, 5u}) {
    ClearStore();
    store_.Add(0, kAgendaId, 1);
    store_.Add(1, 5, 1);
    PlaceChanges(Words({0, kAgendaId, 2, 1, 5, 2}), NoisyAgendaEntry(), AgendaGroup(5));
    EXPECT_EQ(Recover(4, mode).code, 0u);
    EXPECT_EQ(store_.At(0, kAgendaId).bytes, RecoveredAgendaEntry());
    EXPECT_EQ(store_.areas[kAgendaId], RecoveredAgendaArea());
    EXPECT_EQ(store_.At(1, 5).bytes, AgendaGroup(5));
    ClearStore();
    PlaceChanges(Words({0, kAgendaId, 1, 1, kAgendaGroup, 1}), NoisyAgendaEntry(), AgendaGroup(kAgendaGroup));
    EXPECT_EQ(Recover(4, mode).code, 0u);
    Bytes expected = RecoveredAgendaEntry();
    Put32(expected, kAgendaGroupPlace, 1000);
    EXPECT_EQ(store_.At(0, 1001).bytes, expected);
    EXPECT_EQ(store_.areas[1001], RecoveredAgendaArea());
  }
}

TEST_F(AgendaRecoverTest, AnEntryThatIsPassedOverTakesItsItemsAlong) {
  Bytes entries = ExchangeAgendaEntry();
  Append(entries, PlainAgendaEntry(7));
  PlaceChanges(Words({0, 7, 1}), entries);
  EXPECT_EQ(Recover(4, 3).code, 0u);
  ASSERT_THAT(store_.tables[0], SizeIs(1));
  EXPECT_EQ(store_.tables[0][0].bytes, RecoveredPlainAgendaEntry(7));
  EXPECT_THAT(store_.areas[1000], IsEmpty());
}

TEST_F(AgendaRecoverTest, GroupsOfAChangeListStandBackToBack) {
  Bytes groups;
  Bytes changes;
  for (std::uint32_t id = 1; id <= 60; ++id) {
    Append(groups, AgendaGroup(id));
    Append(changes, Words({1, id, 1}));
  }
  PlaceChanges(changes, {}, groups);
  EXPECT_EQ(Recover(4, 3).code, 0u);
  EXPECT_THAT(store_.tables[1], SizeIs(60));
}

// --- Torn and absurd tables ---

TEST_F(AgendaRecoverTest, AnEntryThatTheEndOfTheFileCutsOffIsNotAppliedAndIsNoFailure) {
  const Bytes torn = ExchangeAgendaEntry();
  // All places in front of the long items, and some within them.
  std::vector<std::size_t> sizes;
  for (std::size_t size = 1; size <= 288 + 160 + 4; ++size) sizes.push_back(size);
  for (const std::size_t size : {std::size_t{288 + 160 + 4 + 1}, std::size_t{288 + 164 + 3927},
                                 std::size_t{288 + 164 + 3928}, std::size_t{288 + 164 + 3929}, torn.size() - 1}) {
    sizes.push_back(size);
  }
  for (const std::size_t size : sizes) {
    Bytes entries = PlainAgendaEntry(1);
    Append(entries, torn);
    entries.resize(292 + size);
    const auto& applied = Recovered(entries);
    ASSERT_THAT(applied, SizeIs(1)) << size << " bytes";
    ASSERT_EQ(applied[0].bytes, RecoveredPlainAgendaEntry(1));
  }
}

TEST_F(AgendaRecoverTest, ACountInAFixedPartThatIsCutOffIsNotJudged) {
  for (const std::size_t size : {248u, 287u}) {
    Bytes torn = PlainAgendaEntry(1);
    Put8(torn, 247, 255);
    torn.resize(size);
    EXPECT_THAT(Recovered(torn), IsEmpty());
  }
}

TEST_F(AgendaRecoverTest, AChangeListsEntryThatIsCutOffIsNoFailureEither) {
  store_.Add(0, 2, 1, StoreAgendaEntry());
  for (const std::size_t size : {1u, 287u, 288u, 291u}) {
    Bytes entry = PlainAgendaEntry(2);
    entry.resize(size);
    PlaceChanges(Words({0, 2, 2}), entry);
    EXPECT_EQ(Recover(4, 3).code, 0u);
    EXPECT_TRUE(TablesAreGone());
    EXPECT_FALSE(Exists(kAgendaChanges));
  }
  EXPECT_THAT(store_.CallsOf("Update"), IsEmpty());
}

TEST_F(AgendaRecoverTest, ATornGroupIsUsedAsReadTheRestBeingZero) {
  for (const std::size_t size : {1u, 4u, 50u, 287u}) {
    ClearStore();
    Bytes torn = AgendaGroup(9);
    torn.resize(size);
    Place({}, torn);
    EXPECT_EQ(Recover(4, 4).code, 0u);
    torn.resize(kAgendaGroupSize);
    EXPECT_EQ(store_.tables[1].at(0).bytes, torn);
  }
}

TEST_F(AgendaRecoverTest, CountsBeyondTheSlotsAreRefused) {
  std::vector<Bytes> absurd;
  for (const std::uint8_t items : {std::uint8_t{21}, std::uint8_t{127}, std::uint8_t{128}, std::uint8_t{255}}) {
    for (const std::size_t behind : {std::size_t{0}, std::size_t{255} * kAgendaItem + 4}) {
      Bytes entry = PlainAgendaEntry(2);
      entry.resize(kAgendaFixedPart + behind);
      Put8(entry, 247, items);
      absurd.push_back(entry);
    }
  }
  for (const std::uint32_t long_items : {51u, 0x100u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    for (const std::size_t behind : {std::size_t{0}, 51 * kLongItem}) {
      Bytes entry = PlainAgendaEntry(2);
      Put32(entry, 288, long_items);
      entry.resize(entry.size() + behind);
      absurd.push_back(entry);
    }
  }
  for (std::size_t i = 0; i < absurd.size(); ++i) {
    SCOPED_TRACE(i);
    ClearStore();
    Bytes entries = PlainAgendaEntry(1);
    Append(entries, absurd[i]);
    Place(entries);
    EXPECT_EQ(Recover(4, 4).code, 0x23000200u);
    EXPECT_THAT(store_.Ids(0), ElementsAre(1000)) << "the entry before it was applied";
    EXPECT_TRUE(TablesAreKept());
    PlaceChanges(Words({0, 2, 1}), entries);
    EXPECT_EQ(Recover(4, 3).code, 0x23000200u);
    EXPECT_THAT(store_.Ids(0), ElementsAre(1000));
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kAgendaChanges));
  }
}

// --- Emptying the store ---

TEST_F(AgendaRecoverTest, AStoreThatCannotBeEmptiedKeepsEverything) {
  Place(PlainAgendaEntry(1), AgendaGroup(1));
  for (const std::uint32_t mode : {1u, 2u, 4u, 6u, 0xFFFFFFFFu}) {
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const ScriptedAgendaStore lacking({u"AGD_Sync_DelAll"}, address);
      EXPECT_EQ(Recover(4, mode).code, 0x20000002u);
      EXPECT_THAT(lacking.calls, IsEmpty());
    }
    for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
      ScriptedAgendaStore refusing;
      refusing.Add(0, 9, 1);
      refusing.statuses["DelAll"] = status;
      EXPECT_EQ(Recover(4, mode).code, 0x20000003u);
      EXPECT_THAT(refusing.calls, ElementsAre("DelAll"));
    }
    EXPECT_TRUE(TablesAreKept());
    EXPECT_FALSE(Exists(kAgendaLog));
    EXPECT_FALSE(Exists(kAgendaIdMap));
  }
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
}

TEST_F(AgendaRecoverTest, AStoreIsEmptiedBeforeATableIsMissed) {
  for (const std::uint32_t mode : {1u, 2u, 4u}) {
    store_.Add(0, 1, 1);
    EXPECT_EQ(Recover(4, mode).code, 0x24000100u);
    EXPECT_THAT(store_.tables[0], IsEmpty());
  }
}

TEST_F(AgendaRecoverTest, AChangeListNeedsNothingThatEmptiesTheStore) {
  for (const std::uint32_t mode : {3u, 5u}) {
    ScriptedAgendaStore lacking({u"AGD_Sync_DelAll"});
    PlaceChanges(Words({0, 2, 1}), PlainAgendaEntry(2));
    EXPECT_EQ(Recover(4, mode).code, 0u);
    EXPECT_THAT(lacking.Ids(0), ElementsAre(1000));
  }
}

// --- The change list ---

TEST_F(AgendaRecoverTest, TheLowByteOfTheTableSaysWhereADeletionGoes) {
  PlaceChanges(
      Words({0, 1, 3, 0x100, 2, 3, 0xFFFFFF00, 3, 3, 1, 4, 3, 2, 5, 3, 0xFF, 6, 3, 0x101, 7, 3, 0xFFFFFFFF, 8, 3}));
  EXPECT_EQ(Recover(4, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("Del"), ElementsAre("Del 0 [1 2 3]", "Del 1 [4 5 6 7 8]"));
}

TEST_F(AgendaRecoverTest, WithoutAChangeListNothingIsApplied) {
  Place(PlainAgendaEntry(2), AgendaGroup(2));
  for (const std::uint32_t mode : {3u, 5u}) {
    EXPECT_EQ(Recover(4, mode).code, 0x20200100u);
    EXPECT_THAT(store_.calls, IsEmpty());
    EXPECT_TRUE(TablesAreKept());
  }
  EXPECT_EQ(LocalRecover(4), 0x20200100u);
  EXPECT_TRUE(TablesAreKept());
}

TEST_F(AgendaRecoverTest, AChangeListWithoutMemoryIsNone) {
  store_.Add(0, 1, 1);
  PlaceChanges(Words({0, 1, 3, 0, 2, 1}), PlainAgendaEntry(2));
  handset::Observe([](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == kAnchorIni) handset::FailCallOf("realloc", 1);
  });
  EXPECT_EQ(Recover(4, 3).code, 0x20200020u);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(store_.Ids(0), ElementsAre(1));
  EXPECT_TRUE(TablesAreKept());
  EXPECT_TRUE(Exists(kAgendaChanges));
}

TEST_F(AgendaRecoverTest, RefusedDeletionsEndTheRecover) {
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    for (const std::uint32_t table : {0u, 1u}) {
      ClearStore();
      store_.statuses["Del"] = status;
      PlaceChanges(Words({table, 1, 3, 0, 2, 1}), PlainAgendaEntry(2));
      EXPECT_EQ(Recover(4, 3).code, 0x20200009u);
      EXPECT_THAT(store_.calls, SizeIs(1));
      EXPECT_TRUE(TablesAreKept());
      EXPECT_TRUE(Exists(kAgendaChanges));
    }
  }
  ClearStore();
  PlaceChanges(Words({0, 1, 3, 1, 1, 3}));
  EXPECT_EQ(Recover(4, 3).code, 0x20200009u);
  EXPECT_THAT(store_.calls, ElementsAre("Del 0 [1]")) << "the groups are left alone";
}

// --- Other failures ---

TEST_F(AgendaRecoverTest, AMissingTableIsFlaggedAlikeInEveryMode) {
  for (const std::uint32_t mode : {1u, 2u, 3u, 4u, 5u}) {
    WriteFile(kAgendaChanges, {});
    EXPECT_EQ(Recover(4, mode).code, 0x24000100u);
    WriteFile(kAgendaGroups, {});
    EXPECT_EQ(Recover(4, mode).code, 0x23000100u);
    EXPECT_TRUE(Exists(kAgendaGroups));
    EXPECT_TRUE(Exists(kAgendaChanges));
    std::filesystem::remove(handset::HostPath(kAgendaGroups));
  }
}

TEST_F(AgendaRecoverTest, RefusedInsertsAreFlaggedWithTheirTable) {
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    store_.statuses["Insert"] = status;
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u, 5u}) {
      PlaceChanges(Words({0, 1, 1, 1, 1, 1}), PlainAgendaEntry(1));
      EXPECT_EQ(Recover(4, mode).code, 0x23000007u);
      PlaceChanges(Words({0, 1, 1, 1, 1, 1}), PlainAgendaEntry(1), AgendaGroup(1));
      EXPECT_EQ(Recover(4, mode).code, 0x24000007u);
      EXPECT_TRUE(TablesAreKept());
      EXPECT_TRUE(Exists(kAgendaChanges));
    }
  }
  EXPECT_FALSE(Exists(kAgendaIdMap));
  EXPECT_FALSE(Exists(kAgendaLog));
}

TEST_F(AgendaRecoverTest, WhatWasInsertedBeforeARefusalStays) {
  Bytes entries = PlainAgendaEntry(1);
  Append(entries, PlainAgendaEntry(2));
  Append(entries, PlainAgendaEntry(3));
  Place(entries);
  store_.fail_call = 3;  // The store is emptied, and takes the first entry.
  EXPECT_EQ(Recover(4, 1).code, 0x23000007u);
  EXPECT_THAT(store_.Ids(0), ElementsAre(1000));
  EXPECT_THAT(store_.calls, ElementsAre("DelAll", "Insert 0", "Insert 0"));
}

TEST_F(AgendaRecoverTest, RefusedUpdatesAreFlaggedWithTheirTable) {
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    store_.statuses["Update"] = status;
    for (const std::uint32_t mode : {3u, 5u}) {
      PlaceChanges(Words({0, 1, 2, 1, 1, 2}), PlainAgendaEntry(1));
      EXPECT_EQ(Recover(4, mode).code, 0x23000008u);
      PlaceChanges(Words({0, 1, 2, 1, 1, 2}), PlainAgendaEntry(1), AgendaGroup(1));
      EXPECT_EQ(Recover(4, mode).code, 0x24000008u);
      EXPECT_TRUE(TablesAreKept());
    }
  }
}

TEST_F(AgendaRecoverTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  struct Missing {
    const char16_t* name;
    std::uint32_t inserting, plain, applying, local;
  };
  const Missing kMissing[] = {
      {u"AGD_Sync_GetAllRecNum", 0x25000002, 0, 0x25000002, 0},
      {u"AGD_Sync_GetAllidTime", 0x25000002, 0, 0x25000002, 0},
      {u"AGD_Sync_Read", 0, 0, 0, 0},
      {u"AGD_Sync_Insert", 0x24000002, 0x24000002, 0x24000002, 0x24000002},
      {u"AGD_Sync_Update", 0, 0, 0x24000002, 0x24000002},
      {u"AGD_Sync_Del", 0, 0, 0x20200002, 0x20200002},
      {u"AGD_Sync_DelAll", 0x20000002, 0x20000002, 0, 0},
  };
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(missing.name)));
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const ScriptedAgendaStore lacking({missing.name}, address);
      Place({});
      EXPECT_EQ(Recover(4, 1).code, missing.inserting);
      Place({});
      EXPECT_EQ(Recover(4, 4).code, missing.plain);
      PlaceChanges({});
      EXPECT_EQ(Recover(4, 3).code, missing.applying);
      PlaceChanges({});
      EXPECT_EQ(LocalRecover(4), missing.local);
    }
  }
}

TEST_F(AgendaRecoverTest, TheFirstThingThatIsWrongIsReported) {
  const ScriptedAgendaStore lacking({u"AGD_Sync_Del", u"AGD_Sync_Insert"});
  EXPECT_EQ(Recover(4, 3).code, 0x20200100u) << "the change list is read before the entry point is looked up";
  EXPECT_EQ(Recover(4, 1).code, 0x24000100u) << "so are the tables opened";
}

TEST_F(AgendaRecoverTest, WhatRanBeforeAMissingEntryPointHasRun) {
  ScriptedAgendaStore lacking({u"AGD_Sync_Insert"});
  lacking.Add(0, 1, 1);
  PlaceChanges(Words({0, 1, 3}));
  EXPECT_EQ(Recover(4, 3).code, 0x24000002u);
  EXPECT_THAT(lacking.tables[0], IsEmpty());
  lacking.Add(0, 1, 1);
  EXPECT_EQ(Recover(4, 1).code, 0x24000002u);
  EXPECT_THAT(lacking.tables[0], IsEmpty());
}

TEST_F(AgendaRecoverTest, AnUnreadableTableIsNotTakenForItsEnd) {
  // An entry is read in parts: the fixed part, two items, the number of long items, and three of these.
  unsigned reads = 0;
  for (unsigned n = 1; n <= 8; ++n) {
    SCOPED_TRACE(n);
    ClearStore();
    reads = 0;
    Place(ExchangeAgendaEntry(), AgendaGroup(1));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "ReadFile" && call.path == kAgenda && ++reads == n) handset::FailCallOf("ReadFile", 1);
    });
    const std::uint32_t code = Recover(4, 4).code;
    handset::Observe({});
    if (reads < n) break;
    EXPECT_EQ(code, 0x23000200u);
    EXPECT_TRUE(TablesAreKept());
    EXPECT_THAT(store_.tables[1], SizeIs(1));
  }
  EXPECT_GE(reads, 5u) << "hardly any part was read";
  ClearStore();
  Place(ExchangeAgendaEntry(), AgendaGroup(1));
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == kAgendaGroups) handset::FailCallOf("ReadFile", 1);
  });
  EXPECT_EQ(Recover(4, 4).code, 0x24000200u);
  handset::Observe({});
  EXPECT_TRUE(TablesAreKept());
  EXPECT_THAT(store_.tables[0], IsEmpty());
}

TEST_F(AgendaRecoverTest, WithoutMemoryForAnAreaARecoverFailsAtTheEntries) {
  for (const std::uint32_t mode : {1u, 3u}) {
    PlaceChanges(Words({0, 1, 1}), PlainAgendaEntry(1));
    bool failed = false;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "realloc" && call.size >= ScriptedAgendaStore::kAreaSize && !failed) {
        failed = true;
        handset::FailCallOf("realloc", 1);
      }
    });
    EXPECT_EQ(Recover(4, mode).code, 0x23000010u);
    handset::Observe({});
    EXPECT_TRUE(failed);
    EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
    EXPECT_TRUE(TablesAreKept());
  }
}

TEST_F(AgendaRecoverTest, ASnapshotWhoseStoreFailsIsEmpty) {
  store_.statuses["GetAllidTime"] = 1;
  Place(PlainAgendaEntry(1));
  WriteText(kAgendaLog, "old");
  WriteText(kAgendaGroupLog, "old");
  EXPECT_EQ(Recover(4, 1).code, 0x25000005u);
  EXPECT_THAT(ReadFile(kAgendaLog), IsEmpty());
  EXPECT_EQ(ReadText(kAgendaGroupLog), "old");
  EXPECT_FALSE(Exists(kAgendaIdMap));
  EXPECT_TRUE(TablesAreGone());
}

TEST_F(AgendaRecoverTest, AFailedRecoverIsReturnedWithoutAStreamToo) {
  EXPECT_EQ(Call("fnQV_RecovTabs", Request(4, 3, u"", kSync), nullptr), 0x00200100u);
}

}  // namespace
}  // namespace qv_test
