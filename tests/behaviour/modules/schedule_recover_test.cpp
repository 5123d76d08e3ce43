// Recovers of the schedule, by insertion and by change list: what reaches the store, and what becomes of the files.
#include "tests/support/schedule_records.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

using testing::IsEmpty;

/// What an incremental recover reads of the group table at a time.
constexpr std::size_t kGroupRequest = 10332;

class ScheduleRecoverTest : public AgentTest {
 protected:
  static void Place(const Bytes& entries, const Bytes& groups = {}) {
    WriteFile(kEntries, entries);
    WriteFile(kGroups, groups);
  }

  static void PlaceChanges(const Bytes& changes, const Bytes& entries = {}, const Bytes& groups = {}) {
    WriteFile(kChangeList, changes);
    Place(entries, groups);
  }

  static bool TablesAreKept() { return Exists(kEntries) && Exists(kGroups); }

  ScriptedScheduleStore store_;
};

// --- Records ---

TEST_F(ScheduleRecoverTest, AnEntryReachesTheStoreFieldByField) {
  for (const Bytes& incoming : {ExchangeEntry(), NoisyExchangeEntry()}) {
    store_.tables[0].clear();
    Place(incoming);
    EXPECT_EQ(Recover(2, 1).code, 0u);
    ASSERT_EQ(store_.tables[0].size(), 1u);
    EXPECT_EQ(store_.tables[0][0].bytes, RecoveredEntry());
    EXPECT_EQ(store_.tables[0][0].group, kEntryGroup);
  }
}

TEST_F(ScheduleRecoverTest, EachByteOfTheEntryGoesWhereItBelongsAndNowhereElse) {
  struct Copied {
    std::size_t exchange, size, store;
  };
  static constexpr Copied kCopied[] = {
      {444, 2, 28},    {374, 1, 30}, {375, 1, 31}, {376, 1, 32}, {447, 1, 33}, {448, 1, 34},   {464, 1, 35},
      {496, 4, 24},    {500, 1, 36}, {828, 2, 56}, {832, 1, 45}, {833, 1, 46}, {836, 4, 60},   {844, 1, 47},
      {856, 4, 64},    {860, 1, 58}, {864, 4, 68}, {868, 7, 72}, {8, 60, 80},  {70, 240, 142}, {312, 60, 384},
      {502, 256, 446}, {468, 1, 18}, {472, 1, 17}, {476, 1, 16}, {480, 1, 21}, {488, 1, 20},   {764, 2, 50},
      {768, 1, 49},    {772, 1, 48}, {796, 2, 54}, {800, 1, 53}, {804, 1, 52},
  };
  Bytes full(912, 0x11);
  Put8(full, 449, 0);
  Put8(full, 456, 0);
  const auto recovered = [&](const Bytes& entry) {
    store_.tables[0].clear();
    Place(entry);
    EXPECT_EQ(Recover(2, 4).code, 0u);
    return store_.tables[0].at(0).bytes;
  };
  const Bytes before = recovered(full);
  for (const Copied& field : kCopied) {
    for (std::size_t i = 0; i < field.size; ++i) {
      Bytes changed = full;
      changed[field.exchange + i] ^= 0x40;
      Bytes expected = before;
      expected[field.store + i] ^= 0x40;
      ASSERT_EQ(recovered(changed), expected) << "exchange byte " << field.exchange + i;
    }
  }
  // What is unused, repeats another field, or exceeds its place in the store says nothing.
  for (const std::size_t unread : {68u,  310u, 372u, 377u, 400u, 408u, 411u, 432u, 440u, 443u, 450u, 457u, 465u,
                                   469u, 473u, 477u, 481u, 484u, 489u, 492u, 501u, 758u, 761u, 766u, 769u, 773u,
                                   776u, 808u, 830u, 834u, 840u, 845u, 848u, 854u, 855u, 861u, 875u, 911u}) {
    Bytes changed = full;
    changed[unread] ^= 0x40;
    ASSERT_EQ(recovered(changed), before) << "exchange byte " << unread;
  }
}

TEST_F(ScheduleRecoverTest, StartAndEndArePackedFromTheirFiveNumbers) {
  Bytes entry = PlainEntry(1);
  Put32(entry, 380, 4095);
  Put32(entry, 384, 15);
  Put32(entry, 388, 31);
  Put32(entry, 392, 31);
  Put32(entry, 396, 63);
  Place(entry);
  EXPECT_EQ(Recover(2, 1).code, 0u);
  EXPECT_EQ(Get32(store_.tables[0][0].bytes, 8), 0xFFFFFFFFu);
  EXPECT_EQ(Get32(store_.tables[0][0].bytes, 12), 0u);
}

TEST_F(ScheduleRecoverTest, ARepeatKindHasFourBits) {
  Bytes entry = PlainEntry(1);
  Put8(entry, 760, 0xFF);
  Put8(entry, 832, 7);
  Place(entry);
  EXPECT_EQ(Recover(2, 1).code, 0u);
  EXPECT_EQ(store_.tables[0].at(0).bytes[44], 15);
  EXPECT_EQ(store_.tables[0].at(0).bytes[45], 7);
}

TEST_F(ScheduleRecoverTest, AnEntryThatDoesNotRepeatBringsNoRepeatFields) {
  for (const std::uint8_t kind : {std::uint8_t{0x00}, std::uint8_t{0x10}}) {
    store_.tables[0].clear();
    Bytes entry = NoisyExchangeEntry();
    Put8(entry, 760, kind);
    Place(entry);
    EXPECT_EQ(Recover(2, 1).code, 0u);
    Bytes expected = RecoveredEntry();
    std::fill(expected.begin() + 44, expected.begin() + 80, std::uint8_t{0});
    EXPECT_EQ(store_.tables[0].at(0).bytes, expected);
  }
}

TEST_F(ScheduleRecoverTest, AGroupReachesTheStoreWithoutItsTail) {
  Bytes group = ExchangeGroup(5, u"Family", 0x1234);
  std::fill(group.begin() + 264, group.end(), std::uint8_t{0xFF});
  Place({}, group);
  EXPECT_EQ(Recover(2, 1).code, 0u);
  ASSERT_EQ(store_.tables[1].size(), 1u);
  EXPECT_EQ(store_.tables[1][0].bytes, StoreGroup(5, u"Family", 0x1234));
  EXPECT_EQ(store_.tables[1][0].group, 0x1234u);
}

TEST_F(ScheduleRecoverTest, AllItemsOfAFullEntryReachTheStore) {
  Bytes entry = PlainEntry(1);
  Put8(entry, 449, 20);
  Put8(entry, 456, 44);
  const Bytes items = Items(20 * 80 + 44 * 144, 1, 9);
  Append(entry, items);
  Place(entry);
  EXPECT_EQ(Recover(2, 1).code, 0u);
  const Bytes& record = store_.tables[0].at(0).bytes;
  EXPECT_EQ(Bytes(record.begin() + 704, record.begin() + 8640), items);
}

// --- Change lists ---

TEST_F(ScheduleRecoverTest, GroupsAreReadInTheDesktopsRequests) {
  PlaceChanges({}, {}, ExchangeGroup(1));
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "ReadFile" && call.path == kGroups) sizes.push_back(call.size);
  });
  EXPECT_EQ(Recover(2, 3).code, 0u);
  handset::Observe({});
  EXPECT_EQ(sizes.front(), kGroupRequest);
}

TEST_F(ScheduleRecoverTest, AnUpdatedEntryReachesTheStoreFieldByField) {
  store_.Add(0, kEntryId, 1);
  PlaceChanges(Words({0, kEntryId, 2}), NoisyExchangeEntry());
  EXPECT_EQ(Recover(2, 3).code, 0u);
  EXPECT_EQ(store_.At(0, kEntryId).bytes, RecoveredEntry());
}

TEST_F(ScheduleRecoverTest, AnUpdatedGroupReachesTheStoreWithItsValue) {
  store_.Add(1, 5, 1);
  PlaceChanges(Words({1, 5, 2}), {}, ExchangeGroup(5, u"Work", 0x4321));
  EXPECT_EQ(Recover(2, 3).code, 0u);
  EXPECT_EQ(store_.At(1, 5).bytes, StoreGroup(5, u"Work", 0x4321));
  EXPECT_EQ(store_.At(1, 5).group, 0x4321u);
  EXPECT_THAT(ReadFile(kIdMap), IsEmpty());
}

TEST_F(ScheduleRecoverTest, UnknownOperationsAndTablesChangeNothing) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  Bytes entries = PlainEntry(1);
  Append(entries, PlainEntry(2));
  PlaceChanges(Words({0, 1, 0, 0, 2, 4, 2, 1, 3, 0xFFFFFFFF, 1, 3, 1, 2, 1}), entries);
  EXPECT_EQ(Recover(2, 3).code, 0u);
  EXPECT_EQ(store_.tables[0].size(), 1u);
  EXPECT_EQ(store_.tables[1].size(), 1u);
  EXPECT_THAT(store_.calls, testing::Each(testing::StartsWith("Get")));
}

TEST_F(ScheduleRecoverTest, OnlyTheFirstGroupOfEachRequestIsApplied) {
  Bytes groups;
  Bytes changes;
  for (std::uint32_t id = 1; id <= 40; ++id) {
    Append(groups, ExchangeGroup(id));
    Append(changes, Words({1, id, 1}));
  }
  groups.resize(kGroupRequest);
  Append(groups, ExchangeGroup(41));
  Append(changes, Words({1, 41, 1}));
  PlaceChanges(changes, {}, groups);
  EXPECT_EQ(Recover(2, 3).code, 0u);
  EXPECT_EQ(ReadFile(kIdMap), Words({1, 1000, 1, 1, 1001, 41}));
}

// --- Torn and absurd tables ---

TEST_F(ScheduleRecoverTest, ATornEntryIsUsedAsReadTheRestBeingZero) {
  Bytes whole = NoisyExchangeEntry();
  whole.resize(912);
  Put8(whole, 449, 0);
  Put8(whole, 456, 0);
  for (const std::size_t size : {1u, 4u, 50u, 380u, 384u, 449u, 450u, 457u, 700u, 761u, 911u}) {
    SCOPED_TRACE(size);
    store_.tables[0].clear();
    Bytes torn = whole;
    torn.resize(size);
    Place(torn);
    EXPECT_EQ(Recover(2, 4).code, 0u);
    ASSERT_EQ(store_.tables[0].size(), 1u);
    const Bytes from_torn = store_.tables[0][0].bytes;
    store_.tables[0].clear();
    torn.resize(912);
    Place(torn);
    EXPECT_EQ(Recover(2, 4).code, 0u);
    EXPECT_EQ(from_torn, store_.tables[0].at(0).bytes);
  }
}

TEST_F(ScheduleRecoverTest, ATornGroupIsUsedAsReadTheRestBeingZero) {
  Bytes torn = ExchangeGroup(9, u"Family", 0x1234);
  torn.resize(50);
  Place({}, torn);
  EXPECT_EQ(Recover(2, 4).code, 0u);
  torn.resize(264);
  EXPECT_EQ(store_.tables[1].at(0).bytes, torn);
  EXPECT_EQ(store_.tables[1].at(0).group, 0u);
}

TEST_F(ScheduleRecoverTest, AnEntryTornInItsItemsIsNotApplied) {
  Bytes whole = PlainEntry(1);
  Append(whole, ExchangeEntry());
  for (const std::size_t cut : {1u, 143u, 144u, 145u, 303u, 304u}) {
    SCOPED_TRACE(cut);
    store_.tables[0].clear();
    Bytes torn = whole;
    torn.resize(whole.size() - cut);
    Place(torn);
    EXPECT_EQ(Recover(2, 1).code, 0x23000200u);
    EXPECT_EQ(store_.tables[0].size(), 1u) << "the entry before it was applied";
    EXPECT_TRUE(TablesAreKept());
  }
}

TEST_F(ScheduleRecoverTest, CountsBeyondTheSlotsAreRefused) {
  const std::pair<std::size_t, std::uint8_t> kAbsurd[] = {{449, 21}, {449, 255}, {456, 45}, {456, 255}};
  for (const auto& [offset, count] : kAbsurd) {
    Bytes entry = PlainEntry(1);
    Put8(entry, offset, count);
    Append(entry, Bytes(255 * 144));
    Place(entry);
    EXPECT_EQ(Recover(2, 1).code, 0x23000200u);
    PlaceChanges(Words({0, 1, 1}), entry);
    EXPECT_EQ(Recover(2, 3).code, 0x24000200u);
    EXPECT_THAT(store_.tables[0], IsEmpty());
    EXPECT_TRUE(TablesAreKept());
  }
}

// --- Failures ---

TEST_F(ScheduleRecoverTest, AStoreThatCannotBeEmptiedKeepsEverything) {
  Place(PlainEntry(1));
  store_.statuses["DelAll"] = 1;
  EXPECT_EQ(Recover(2, 2).code, 0x20000003u);
  const ScriptedScheduleStore lacking({u"SC_Sync_DelAll"});
  EXPECT_EQ(Recover(2, 2).code, 0x20000002u);
  EXPECT_THAT(lacking.calls, IsEmpty());
  EXPECT_TRUE(TablesAreKept());
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
  EXPECT_FALSE(Exists(kEntryLog));
}

TEST_F(ScheduleRecoverTest, ReplaceEmptiesTheStoreBeforeItMissesATable) {
  store_.Add(0, 1, 1);
  EXPECT_EQ(Recover(2, 2).code, 0x24000100u);
  EXPECT_THAT(store_.tables[0], IsEmpty());
}

TEST_F(ScheduleRecoverTest, AMissingTableIsFlaggedInsertingGroups4Entries3) {
  EXPECT_EQ(Recover(2, 1).code, 0x24000100u);
  WriteFile(kGroups, {});
  EXPECT_EQ(Recover(2, 1).code, 0x23000100u);
}

TEST_F(ScheduleRecoverTest, AMissingTableIsFlaggedApplyingGroups3Entries4) {
  EXPECT_EQ(Recover(2, 3).code, 0x20200100u) << "no change list";
  WriteFile(kChangeList, {});
  EXPECT_EQ(Recover(2, 3).code, 0x23000100u);
  WriteFile(kGroups, {});
  EXPECT_EQ(Recover(2, 3).code, 0x24000100u);
  EXPECT_TRUE(Exists(kChangeList));
}

TEST_F(ScheduleRecoverTest, RefusedInsertsAreFlaggedWithTheirTable) {
  store_.statuses["Insert"] = 0xFFFFFE0A;
  Place(PlainEntry(1));
  EXPECT_EQ(Recover(2, 1).code, 0x23000007u);
  Place(PlainEntry(1), ExchangeGroup(1));
  EXPECT_EQ(Recover(2, 1).code, 0x24000007u);
  PlaceChanges(Words({0, 1, 1, 1, 1, 1}), PlainEntry(1));
  EXPECT_EQ(Recover(2, 3).code, 0x24000007u);
  PlaceChanges(Words({0, 1, 1, 1, 1, 1}), PlainEntry(1), ExchangeGroup(1));
  EXPECT_EQ(Recover(2, 3).code, 0x23000007u);
  EXPECT_TRUE(TablesAreKept());
  EXPECT_FALSE(Exists(kIdMap));
  EXPECT_FALSE(Exists(kEntryLog));
}

TEST_F(ScheduleRecoverTest, RefusedUpdatesAreFlaggedWithTheirTable) {
  store_.Add(0, 1, 1);
  store_.Add(1, 1, 1);
  store_.statuses["Update"] = 1;
  PlaceChanges(Words({0, 1, 2, 1, 1, 2}), PlainEntry(1));
  EXPECT_EQ(Recover(2, 3).code, 0x24000008u);
  PlaceChanges(Words({0, 1, 2, 1, 1, 2}), PlainEntry(1), ExchangeGroup(1));
  EXPECT_EQ(Recover(2, 3).code, 0x23000008u);
  EXPECT_TRUE(TablesAreKept());
}

TEST_F(ScheduleRecoverTest, RefusedDeletionsEndTheRecover) {
  store_.statuses["Del"] = 1;
  for (const std::uint32_t table : {0u, 1u}) {
    PlaceChanges(Words({table, 1, 3}), PlainEntry(1));
    EXPECT_EQ(Recover(2, 3).code, 0x20200009u);
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kChangeList));
  }
  EXPECT_THAT(store_.tables[0], IsEmpty());
}

TEST_F(ScheduleRecoverTest, RefusedDeletionsOfEntriesLeaveTheGroupsAlone) {
  store_.Add(1, 1, 1);
  store_.fail_call = 1;
  PlaceChanges(Words({0, 1, 3, 1, 1, 3}));
  EXPECT_EQ(Recover(2, 3).code, 0x20200009u);
  EXPECT_EQ(store_.tables[1].size(), 1u);
}

TEST_F(ScheduleRecoverTest, WhatRanBeforeAMissingEntryPointHasRun) {
  ScriptedScheduleStore lacking({u"SC_Sync_Insert"});
  lacking.Add(0, 1, 1);
  PlaceChanges(Words({0, 1, 3}));
  EXPECT_EQ(Recover(2, 3).code, 0x23000002u);
  EXPECT_THAT(lacking.tables[0], IsEmpty());
  lacking.Add(0, 1, 1);
  EXPECT_EQ(Recover(2, 2).code, 0x24000002u);
  EXPECT_THAT(lacking.tables[0], IsEmpty());
}

TEST_F(ScheduleRecoverTest, TheFirstThingThatIsWrongIsReported) {
  const ScriptedScheduleStore lacking({u"SC_Sync_Del", u"SC_Sync_Insert"});
  EXPECT_EQ(Recover(2, 3).code, 0x20200100u) << "the change list is read before the entry point is looked up";
  EXPECT_EQ(Recover(2, 1).code, 0x24000100u) << "so are the tables opened";
}

TEST_F(ScheduleRecoverTest, ASnapshotWhoseStoreLacksItsListIsEmpty) {
  const ScriptedScheduleStore lacking({u"SC_Sync_GetTotalNum"});
  Place({});
  WriteText(kEntryLog, "old");
  EXPECT_EQ(Recover(2, 1).code, 0x25000002u);
  EXPECT_THAT(ReadFile(kEntryLog), IsEmpty());
}

TEST_F(ScheduleRecoverTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  struct Missing {
    const char16_t* name;
    std::uint32_t inserting, applying;
  };
  const Missing kMissing[] = {
      {u"SC_Sync_GetTotalNum", 0x25000002, 0x25000002},
      {u"SC_Sync_GetAllSyncInfo", 0x25000002, 0x25000002},
      {u"SC_Sync_Read", 0, 0},
      {u"SC_Sync_Insert", 0x24000002, 0x23000002},
      {u"SC_Sync_Update", 0, 0x23000002},
      {u"SC_Sync_Del", 0, 0x20200002},
      {u"SC_Sync_DelAll", 0, 0},
  };
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(missing.name)));
    const ScriptedScheduleStore lacking({missing.name});
    Place({});
    EXPECT_EQ(Recover(2, 1).code, missing.inserting);
    PlaceChanges({});
    EXPECT_EQ(Recover(2, 3).code, missing.applying);
  }
}

TEST_F(ScheduleRecoverTest, AnUnreadableTableIsNotTakenForItsEnd) {
  Place(PlainEntry(1), ExchangeGroup(1));
  handset::FailCallOf("ReadFile", 1);
  EXPECT_EQ(Recover(2, 4).code, 0x24000200u);
  EXPECT_TRUE(TablesAreKept());
  handset::FailCallOf("ReadFile", 3);  // After the group and the end of its table.
  EXPECT_EQ(Recover(2, 4).code, 0x23000200u);
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_TRUE(TablesAreKept());
}

}  // namespace
}  // namespace qv_test
