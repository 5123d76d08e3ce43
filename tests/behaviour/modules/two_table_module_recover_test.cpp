// What recovers of the modules of two tables, entries and groups, have in common: how entries find their groups, the
// change list's rules, and the failures that concern no table alone.
#include "tests/behaviour/modules/two_table_module_test.h"
#include "tests/support/run_events.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

class TwoTableModuleRecoverTest : public TwoTableModuleTest {};

INSTANTIATE_TEST_SUITE_P(Modules, TwoTableModuleRecoverTest,
                         testing::Values(Schedule(), CallFilter(), Tasks(), Agenda()), NameOfModule);

/// Modules that have nothing but their two tables.
class TwoTableModuleInsertTest : public TwoTableModuleTest {
 protected:
  bool IsEmptiedIn(std::uint32_t mode) const { return module_.only_replacing_empties ? mode == 2 : mode != 3; }
};

INSTANTIATE_TEST_SUITE_P(Modules, TwoTableModuleInsertTest, testing::Values(Schedule(), Tasks(), Agenda()),
                         NameOfModule);

// --- Insertion ---

TEST_P(TwoTableModuleInsertTest, TheModeSaysWhetherTheStoreIsEmptied) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u, 6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    ClearStore();
    store_.calls.clear();
    for (std::uint32_t table = 0; table < 2; ++table) store_.Add(table, 1);
    Place(Entry(2), Groups({2}));
    const Answer answer = RecoverIn(mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, mode < 4 || mode >= 0x80000000 ? kNowAnchor : u"77");
    for (const auto& table : store_.tables) EXPECT_THAT(table, SizeIs(IsEmptiedIn(mode) ? 1 : 2));
    EXPECT_THAT(CallsFor(StoreRole::kDeleteAll), SizeIs(IsEmptiedIn(mode) ? 1 : 0));
    EXPECT_EQ(store_.calls.front() == "DelAll", IsEmptiedIn(mode));
    ExpectTablesAreGone();
  }
}

TEST_P(TwoTableModuleInsertTest, ARememberedRecoverLeavesSnapshotsOfTheStoreAndAnIdMap) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    ClearStore();
    store_.next_id = 1000;
    store_.Add(0, 1, 0x0000000300000002);
    Place(Entries({{2, 0}, {3, 0}}), Groups({2}));
    EXPECT_EQ(RecoverIn(mode).code, 0u);
    Bytes entry_log = IsEmptiedIn(mode) ? Bytes() : Words({1, 2, 3});
    Append(entry_log, Words({1001, 5, 6, 1002, 5, 6}));
    EXPECT_EQ(ReadFile(module_.logs[0]), entry_log);
    EXPECT_EQ(ReadFile(module_.logs[1]), Words({1000, 5, 6}));
    EXPECT_EQ(ReadFile(module_.id_map), Words({1, 1000, 2, 0, 1001, 2, 0, 1002, 3}));
    EXPECT_EQ(ReadText(kAnchorIni), AnchorMoved());
  }
}

TEST_P(TwoTableModuleInsertTest, APlainRecoverLeavesNothingButTheRecords) {
  for (const std::uint32_t mode : {4u, 6u, 77u}) {
    ClearStore();
    Place(Entry(2), Groups({2}));
    EXPECT_EQ(RecoverIn(mode).code, 0u);
    for (const auto& table : store_.tables) EXPECT_THAT(table, SizeIs(1));
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_P(TwoTableModuleInsertTest, ALocalRecoverAddsOrAppliesAChangeList) {
  for (const bool asked_by_the_desktop : {false, true}) {
    ClearStore();
    store_.next_id = 1000;
    for (std::uint32_t table = 0; table < 2; ++table) store_.Add(table, 1);
    WriteFile(module_.changes, Words({0, 60, 1, 1, 50, 1, 0, 1, 3}));
    Place(Entries({{60, 50}, {61, 50}}), Groups({50}));
    EXPECT_EQ(asked_by_the_desktop ? RecoverIn(5, u"77").code : LocalRecover(module_.id), 0u);
    if (module_.adds_locally) {
      EXPECT_THAT(store_.Ids(0), ElementsAre(1, 1001, 1002));
    } else {
      EXPECT_THAT(store_.Ids(0), ElementsAre(1001));
    }
    EXPECT_THAT(store_.Ids(1), ElementsAre(1, 1000));
    EXPECT_EQ(GroupOf(store_.At(0, 1001)), 1000u);
    EXPECT_THAT(AllFiles(), SizeIs(module_.adds_locally ? 1 : 0)) << "no anchor, no snapshots, no id map";
    EXPECT_THAT(CallsFor(StoreRole::kDeleteAll), IsEmpty());
  }
}

TEST_P(TwoTableModuleInsertTest, ARecoverOfNothingEmptiesSnapshotsAndMap) {
  Place({});
  const auto files = {module_.logs[0], module_.logs[1], module_.id_map};
  for (const auto* file : files) WriteText(file, "old");
  EXPECT_EQ(RecoverIn(1).code, 0u);
  for (const auto* file : files) EXPECT_THAT(ReadFile(file), IsEmpty());
}

TEST_P(TwoTableModuleInsertTest, AnInsertingRecoverLeavesAChangeListAlone) {
  for (const std::uint32_t mode : {1u, 2u, 4u}) {
    ClearStore();
    WriteFile(module_.changes, Words({0, 7, 3, 0, 8, 2}));
    Place(Entries({{7, 0}, {8, 0}}));
    EXPECT_EQ(RecoverIn(mode).code, 0u);
    EXPECT_EQ(ReadFile(module_.changes), Words({0, 7, 3, 0, 8, 2}));
    EXPECT_THAT(CallsFor(StoreRole::kDelete), IsEmpty());
    EXPECT_THAT(CallsFor(StoreRole::kUpdate), IsEmpty());
    EXPECT_THAT(store_.tables[0], SizeIs(2));
  }
}

TEST_P(TwoTableModuleInsertTest, AnInsertingRecoverNeedsNoEntryPointThatReadsUpdatesOrDeletes) {
  const auto inserting =
      module_.make_store({NameOf(StoreRole::kRead), NameOf(StoreRole::kUpdate), NameOf(StoreRole::kDelete)}, 0);
  Place(Entry(2), Groups({2}));
  EXPECT_EQ(RecoverIn(2).code, 0u);
  for (const auto& table : inserting->tables) EXPECT_THAT(table, SizeIs(1));
  EXPECT_TRUE(Exists(module_.id_map));
}

TEST_P(TwoTableModuleInsertTest, AReplacingRecoverTakesItsStepsInOrder) {
  Place(Entry(2, 5), Groups({5}));
  RunEvents events(store_);
  EXPECT_EQ(RecoverIn(2).code, 0u);
  const std::vector<std::string> seen = events.Take();
  const auto anchor = std::ranges::find(seen, "create qvSyncAnchor.ini");
  EXPECT_LT(anchor, std::ranges::find(seen, "call DelAll")) << "the anchor moves before the store is emptied";
  EXPECT_THAT(Steps(seen), ElementsAreArray(module_.steps.replacing_recover));
}

TEST_P(TwoTableModuleInsertTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  WriteFile(module_.changes, {});
  Place({});
  EXPECT_THAT(DataOpeningsOf([&] { EXPECT_EQ(RecoverIn(3).code, 0u); }),
              ElementsAre(Opening(module_.changes, kReader), Opening(module_.tables[1], kReader),
                          Opening(module_.tables[0], kReader), Opening(module_.logs[0], kWriter),
                          Opening(module_.logs[1], kWriter), Opening(module_.id_map, kWriter)));
}

TEST_P(TwoTableModuleInsertTest, AnIdMapThatCannotBeWrittenIsNotReported) {
  Place(Entry(1));
  MakeDirectory(module_.id_map);
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_EQ(ReadFile(module_.logs[0]), Words({1000, 5, 6}));
}

TEST_P(TwoTableModuleInsertTest, AnIdMapThatBreaksOffHasNoHole) {
  Bytes entries;
  for (std::uint32_t id = 0; id < 70; ++id) Append(entries, Entry(id));
  Place(entries);
  bool fails = false;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == module_.id_map && !fails) {
      fails = true;
      handset::FailCallOf("WriteFile", 1);
    }
  });
  EXPECT_EQ(RecoverIn(1).code, 0u);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(ReadFile(module_.id_map), IsEmpty());
}

TEST_P(TwoTableModuleInsertTest, AStoreThatGivesNoNewIdLeavesZeroInTheMap) {
  store_.fills_nothing = {store_.EntryPointFor(StoreRole::kInsert).told};
  Place(Entry(7, 5), Groups({5}));
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_EQ(ReadFile(module_.id_map), Words({1, 0, 5, 0, 0, 7}));
  EXPECT_EQ(GroupOf(store_.tables[0].at(0)), 0u);
}

// --- Entries and their groups ---

TEST_P(TwoTableModuleInsertTest, GroupsGoFirstSoThatEntriesFindThem) {
  Place(Entries({{100, 7}, {101, 9}, {102, 5}}), Groups({5, 7}));
  EXPECT_EQ(RecoverIn(1).code, 0u);
  const auto& applied = store_.tables[0];
  ASSERT_THAT(applied, SizeIs(3));
  EXPECT_EQ(GroupOf(applied[0]), 1001u);
  EXPECT_EQ(GroupOf(applied[1]), 9u) << "group 9 did not come with this recover";
  EXPECT_EQ(GroupOf(applied[2]), 1000u);
  EXPECT_EQ(ReadFile(module_.id_map), Words({1, 1000, 5, 1, 1001, 7, 0, 1002, 100, 0, 1003, 101, 0, 1004, 102}));
}

TEST_P(TwoTableModuleInsertTest, AStoreThatIsToldTheGroupIsToldTheNewOne) {
  if (std::ranges::count(store_.EntryPointFor(StoreRole::kInsert).arguments, Argument::kGroup) == 0) return;
  Place(Entries({{100, 7}, {101, 9}}), Groups({5, 7}));
  EXPECT_EQ(RecoverIn(1).code, 0u);
  ASSERT_THAT(store_.tables[0], SizeIs(2));
  EXPECT_EQ(store_.tables[0][0].group, 1001u);
  EXPECT_EQ(store_.tables[0][1].group, 9u);
}

TEST_P(TwoTableModuleInsertTest, TheFirstGroupOfAnIdIsTheOneEntriesFind) {
  Place(Entry(1, 5), Groups({5, 5}));
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_EQ(GroupOf(store_.tables[0].at(0)), 1000u);
}

TEST_P(TwoTableModuleInsertTest, AnEntrysIdIsNoGroupsId) {
  Place(Entries({{5, 0}, {6, 5}}));
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_EQ(GroupOf(store_.tables[0].at(1)), 5u);
}

TEST_P(TwoTableModuleInsertTest, AGroupThatIsUpdatedKeepsItsId) {
  for (std::uint32_t table = 0; table < 2; ++table) store_.Add(table, 5);
  EXPECT_EQ(RecoverChanges(Words({1, 5, 2, 0, 5, 2}), Entry(5, 5), Groups({5})).code, 0u);
  EXPECT_EQ(GroupOf(store_.At(0, 5)), 5u);
  EXPECT_THAT(ReadFile(module_.id_map), IsEmpty());
}

TEST_P(TwoTableModuleInsertTest, ThousandsOfRecordsFindTheirGroups) {
  Bytes entries;
  Bytes groups;
  for (std::uint32_t i = 0; i < 1000; ++i) {
    Append(entries, Entry(i, 50000 + i));
    Append(groups, module_.group(50000 + i));
  }
  Place(entries, groups);
  EXPECT_EQ(RecoverIn(4).code, 0u);
  ASSERT_THAT(store_.tables[0], SizeIs(1000));
  for (std::uint32_t i = 0; i < 1000; ++i) ASSERT_EQ(GroupOf(store_.tables[0][i]), 1000 + i);
}

// --- Change lists ---

TEST_P(TwoTableModuleInsertTest, AChangeListDeletesThenAppliesGroupsThenEntries) {
  for (const std::uint32_t id : {1u, 2u, 3u}) {
    store_.Add(0, id);
    store_.Add(1, id);
  }
  RunEvents events(store_);
  const Answer answer = RecoverChanges(Words({0, 60, 1, 1, 2, 3, 0, 1, 3, 1, 50, 1, 1, 1, 3, 0, 2, 2}),
                                       Entries({{2, 50}, {60, 50}, {3, 3}}), Groups({50}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_THAT(Steps(events.Take()), ElementsAreArray(module_.steps.incremental_recover));
  EXPECT_EQ(ReadFile(module_.id_map), Words({1, 1000, 50, 0, 1001, 60}));
  ExpectTablesAreGone();
  EXPECT_FALSE(Exists(module_.changes));
  EXPECT_EQ(ReadFile(module_.logs[0]), Words({2, 5, 6, 3, 1, 0, 1001, 5, 6}));
  EXPECT_EQ(ReadFile(module_.logs[1]), Words({3, 1, 0, 1000, 5, 6}));
  EXPECT_EQ(GroupOf(store_.At(0, 2)), 1000u);
  EXPECT_EQ(GroupOf(store_.At(0, 1001)), 1000u);
  EXPECT_EQ(GroupOf(store_.At(0, 3)), 0u) << "entry 3 is not in the change list";
}

TEST_P(TwoTableModuleInsertTest, UnknownOperationsAndOtherTablesChangeNothing) {
  for (std::uint32_t table = 0; table < 2; ++table) store_.Add(table, 1);
  const Bytes changes = Words({0, 1, 0, 0, 2, 4, 2, 1, 1, 0xFFFFFFFF, 1, 2, 0x100, 2, 1, 1, 2, 1, 0, 3, 0x01000001});
  EXPECT_EQ(RecoverChanges(changes, Entries({{1, 0}, {2, 0}, {3, 0}}), Groups({1})).code, 0u);
  for (const auto& table : store_.tables) EXPECT_THAT(table, SizeIs(1));
  EXPECT_THAT(store_.calls, testing::Each(testing::StartsWith("Get")));
  ExpectTablesAreGone();
}

TEST_P(TwoTableModuleRecoverTest, TheFirstChangeOfARecordCounts) {
  store_.Add(0, 1, 1);
  const Bytes changes = Words({0, 1, 2, 0, 1, 1, 0, 2, 1, 0, 2, 2});
  EXPECT_EQ(RecoverChanges(changes, Entries({{1, 0}, {2, 0}})).code, 0u);
  EXPECT_EQ(ReadFile(module_.id_map), Words({0, 1000, 2}));
}

TEST_P(TwoTableModuleRecoverTest, AChangeWithoutItsRecordInsertsNothing) {
  EXPECT_EQ(RecoverChanges(Words({0, 1, 1, 1, 1, 1}), Entry(2), Groups({2})).code, 0u);
  for (const auto& table : store_.tables) EXPECT_THAT(table, IsEmpty());
  EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
  ExpectTablesAreGone();
}

TEST_P(TwoTableModuleRecoverTest, DeletionsHaveNoLimit) {
  Bytes changes;
  for (std::uint32_t id = 1; id <= 2500; ++id) {
    store_.Add(0, id, 1);
    store_.Add(1, id, 1);
    Append(changes, Words({0, id, 3, 1, id, 3}));
  }
  EXPECT_EQ(RecoverChanges(changes).code, 0u);
  for (const auto& table : store_.tables) EXPECT_THAT(table, IsEmpty());
}

TEST_P(TwoTableModuleRecoverTest, ATornChangeIsPassedOver) {
  store_.Add(0, 1, 1);
  for (std::size_t size = 1; size < 12; ++size) {
    Bytes changes = Words({0, 1, 3});
    changes.resize(size);
    EXPECT_EQ(RecoverChanges(changes).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(1)) << size << " bytes";
  }
}

// --- Failures ---

TEST_P(TwoTableModuleRecoverTest, AStoreThatIsNotLoadedTouchesNothing) {
  Place(Entry(1));
  const auto before = AllFiles();
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(store_.library(), reinterpret_cast<coredll::HMODULE>(handle));
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u, 5u}) EXPECT_EQ(RecoverIn(mode).code, Told(0x20000001));
    EXPECT_EQ(RecoverIn(2, u"", std::u16string(300, u'x')).code, Told(0x20000001));
    EXPECT_EQ(AllFiles(), before);
  }
}

TEST_P(TwoTableModuleInsertTest, AnOverlongDirectoryIsRefusedBeforeTheStoreIsEmptied) {
  store_.Add(0, 1, 1);
  const Answer answer = RecoverIn(2, u"77", std::u16string(260, u'\\'));
  EXPECT_EQ(answer.code, Told(0x20000100));
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_P(TwoTableModuleRecoverTest, ASnapshotThatCannotBeRewrittenIsFlaggedAfterTheTablesAreGone) {
  for (const char16_t* const log : module_.logs) {
    Place(Entry(1));
    std::filesystem::remove(handset::HostPath(log));
    MakeDirectory(log);
    EXPECT_EQ(RecoverIn(1).code, Told(0x25000100));
    ExpectTablesAreGone();
    EXPECT_EQ(Exists(module_.id_map), !module_.is_told) << "what is not told ends no run";
    std::filesystem::remove(handset::HostPath(log));
  }
}

TEST_P(TwoTableModuleInsertTest, AnUnreadableChangeListDeletesNothing) {
  store_.Add(0, 1);
  Bytes changes = Words({0, 2, 1});
  for (std::uint32_t id = 1; id <= 5000; ++id) Append(changes, Words({0, id, 3}));
  for (const unsigned n : {1u, 2u}) {
    unsigned reads = 0;
    bool tables_are_opened = false;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "ReadFile" && call.path == module_.changes && ++reads == n) {
        handset::FailCallOf("ReadFile", 1);
      }
      const bool is_table = call.path == module_.tables[0] || call.path == module_.tables[1];
      tables_are_opened = tables_are_opened || (call.function == "CreateFileW" && is_table);
    });
    EXPECT_EQ(RecoverChanges(changes, Entry(2)).code, Told(0x20200200));
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_THAT(store_.Ids(0), ElementsAre(1));
    EXPECT_FALSE(tables_are_opened);
    EXPECT_EQ(Exists(module_.changes), module_.is_told);
  }
}

}  // namespace
}  // namespace qv_test
