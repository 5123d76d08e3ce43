// What exports of the modules of two tables, entries and groups, have in common: which files there are and what they
// say, what the store is asked, and what becomes of counts that cannot be.
#include <numeric>

#include "tests/behaviour/modules/two_table_module_test.h"
#include "tests/support/run_events.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

class TwoTableModuleExportTest : public TwoTableModuleTest {
 protected:
  /// Entry 3 and group 7.
  void AddOneOfEach() {
    store_.Add(0, 3);
    store_.Add(1, 7);
  }
};

INSTANTIATE_TEST_SUITE_P(Modules, TwoTableModuleExportTest, testing::Values(Schedule(), Tasks(), Agenda()),
                         NameOfModule);

// --- Full exports ---

TEST_P(TwoTableModuleExportTest, FullAndReplaceExportsWriteEverythingAndRememberIt) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 0xFFFFFFFFu, 0x80000000u}) {
    SCOPED_TRACE(mode);
    ClearStore();
    store_.Add(0, 3, 0x0000000200000001);
    store_.Add(0, 1, 0x0000000400000003);
    store_.Add(1, 7, 0x0000000600000005);
    const Answer answer = ExportIn(mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_THAT(ExportedIds(0), ElementsAre(3, 1)) << "in the store's order";
    EXPECT_THAT(ExportedIds(1), ElementsAre(7));
    EXPECT_EQ(ReadFile(module_.logs[0]), Words({3, 1, 2, 1, 3, 4}));
    EXPECT_EQ(ReadFile(module_.logs[1]), Words({7, 5, 6}));
    EXPECT_EQ(ReadText(kAnchorIni), AnchorMoved());
    EXPECT_FALSE(Exists(module_.changes));
    EXPECT_FALSE(Exists(module_.id_map));
    EXPECT_THAT(CallsFor(StoreRole::kDeleteAll), IsEmpty());
    for (const auto* log : module_.logs) std::filesystem::remove(handset::HostPath(log));
    std::filesystem::remove(handset::HostPath(kAnchorIni));
  }
}

TEST_P(TwoTableModuleExportTest, APlainCopyRemembersNothing) {
  AddOneOfEach();
  for (const std::uint32_t mode : {4u, 5u, 99u, 0x7FFFFFFFu}) {
    const Answer answer = ExportIn(mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, u"77");
    EXPECT_THAT(ExportedIds(0), ElementsAre(3));
    EXPECT_THAT(ExportedIds(1), ElementsAre(7));
    EXPECT_THAT(AllFiles(), SizeIs(2));
  }
}

TEST_P(TwoTableModuleExportTest, ALocalExportIsAPlainOne) {
  AddOneOfEach();
  EXPECT_EQ(LocalExport(module_.id), 0u);
  EXPECT_THAT(ExportedIds(0), ElementsAre(3));
  EXPECT_THAT(ExportedIds(1), ElementsAre(7));
  EXPECT_THAT(AllFiles(), SizeIs(2));
}

TEST_P(TwoTableModuleExportTest, EntriesWithoutGroupsAndGroupsWithoutEntriesAreExported) {
  for (std::uint32_t table = 0; table < 2; ++table) {
    ClearStore();
    store_.Add(table, 1);
    EXPECT_EQ(ExportIn(1).code, 0u);
    EXPECT_THAT(ExportedIds(table), ElementsAre(1));
    EXPECT_THAT(ReadFile(module_.tables.at(1 - table)), IsEmpty());
  }
}

TEST_P(TwoTableModuleExportTest, AnEmptyStoreGivesEmptyTablesAndSnapshots) {
  for (const auto* file : {module_.tables[0], module_.tables[1], module_.logs[0], module_.logs[1]}) {
    WriteText(file, "old");
  }
  EXPECT_EQ(ExportIn(1).code, 0u);
  for (const auto* file : {module_.tables[0], module_.tables[1], module_.logs[0], module_.logs[1]}) {
    EXPECT_THAT(ReadFile(file), IsEmpty());
  }
  EXPECT_THAT(CallsFor(StoreRole::kCount), SizeIs(4));
  EXPECT_THAT(store_.calls, SizeIs(4)) << "there is nothing to list and to read";
}

TEST_P(TwoTableModuleExportTest, RecordsAreReadSoManyAtATime) {
  const std::string read = store_.EntryPointFor(StoreRole::kRead).told;
  for (std::uint32_t table = 0; table < 2; ++table) {
    const std::size_t batch = module_.read_batches.at(table);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, batch - 1, batch, batch + 1, 2 * batch + 1}) {
      SCOPED_TRACE(std::to_string(size) + " records of table " + std::to_string(table));
      ClearStore();
      std::vector<std::uint32_t> ids(size);
      std::iota(ids.begin(), ids.end(), 1);
      for (const std::uint32_t id : ids) store_.Add(table, id);
      std::vector<std::string> reads;
      for (std::size_t i = 0; i < size; i += batch) {
        reads.push_back(read + " " + std::to_string(table) + " " + IdList(&ids[i], std::min(batch, size - i)));
      }
      for (const bool is_incremental : {false, true}) {
        store_.calls.clear();
        EXPECT_EQ((is_incremental ? ExportChanges() : ExportIn(4)).code, 0u);
        EXPECT_EQ(CallsFor(StoreRole::kRead), reads);
        EXPECT_EQ(ExportedIds(table), ids);
      }
    }
  }
}

TEST_P(TwoTableModuleExportTest, AFullExportTakesItsStepsInOrder) {
  AddOneOfEach();
  RunEvents events(store_);
  EXPECT_EQ(ExportIn(4).code, 0u);
  EXPECT_THAT(events.Take(), ElementsAreArray(module_.steps.full_export));
}

TEST_P(TwoTableModuleExportTest, AnIncrementalExportTakesItsStepsInOrder) {
  AddOneOfEach();
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges().code, 0u);
  const std::vector<std::string> seen = events.Take();
  ASSERT_GT(seen.size(), 3u);
  EXPECT_EQ(seen[0], "open qvSyncAnchor.ini") << "the anchor moves before anything else happens";
  EXPECT_EQ(seen[1], "open qvSyncAnchor.ini");
  EXPECT_EQ(seen[2], "create qvSyncAnchor.ini");
  EXPECT_THAT(Steps(seen), ElementsAreArray(module_.steps.incremental_export));
}

TEST_P(TwoTableModuleExportTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  AddOneOfEach();
  std::set<std::u16string> opened;
  for (const auto& [file, how] : DataOpeningsOf([&] { EXPECT_EQ(ExportChanges().code, 0u); })) {
    opened.insert(file);
    EXPECT_THAT(how, testing::AnyOf(kReader, kWriter));
  }
  EXPECT_EQ(opened, (std::set<std::u16string>{module_.tables[0], module_.tables[1], module_.changes, module_.logs[0],
                                              module_.logs[1]}));
}

TEST_P(TwoTableModuleExportTest, AnExportNeedsNoEntryPointThatWrites) {
  const auto reading = module_.make_store({NameOf(StoreRole::kInsert), NameOf(StoreRole::kUpdate),
                                           NameOf(StoreRole::kDelete), NameOf(StoreRole::kDeleteAll)},
                                          0);
  for (std::uint32_t table = 0; table < 2; ++table) reading->Add(table, 1);
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
  for (std::uint32_t table = 0; table < 2; ++table) EXPECT_THAT(ExportedIds(table), ElementsAre(1));
}

// --- Incremental exports ---

TEST_P(TwoTableModuleExportTest, ChangesAreListedNewAndModifiedInTheStoresOrderThenDeletedInTheSnapshots) {
  store_.Add(0, 10, 100);                 // unchanged
  store_.Add(0, 30, 300);                 // new
  store_.Add(0, 20, 0x0000000100000000);  // modified: only the upper word differs
  store_.Add(0, 40, 399);                 // modified: its time moved back
  store_.Add(0, 50, 500);                 // new
  store_.Add(1, 10, 7);                   // new group: ids of one table say nothing of the other
  EXPECT_EQ(ExportChanges(Words({90, 1, 0, 10, 100, 0, 20, 0, 0, 80, 1, 0, 40, 400, 0}), Words({3, 3, 0})).code, 0u);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 30, 1, 0, 20, 2, 0, 40, 2, 0, 50, 1, 0, 90, 3, 0, 80, 3,  //
                                              1, 10, 1, 1, 3,  3}));
  EXPECT_THAT(ExportedIds(0), ElementsAre(30, 20, 40, 50));
  EXPECT_THAT(ExportedIds(1), ElementsAre(10));
  EXPECT_EQ(ReadFile(module_.logs[0]), Words({10, 100, 0, 30, 300, 0, 20, 0, 1, 40, 399, 0, 50, 500, 0}));
  EXPECT_EQ(ReadFile(module_.logs[1]), Words({10, 7, 0}));
}

TEST_P(TwoTableModuleExportTest, NothingChangedGivesEmptyFilesAndReadsNoRecord) {
  store_.Add(0, 10, 100);
  store_.Add(1, 20, 200);
  const Answer answer = ExportChanges(Words({10, 100, 0}), Words({20, 200, 0}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  for (const auto* file : {module_.changes, module_.tables[0], module_.tables[1]}) {
    EXPECT_THAT(ReadFile(file), IsEmpty());
  }
  EXPECT_THAT(CallsFor(StoreRole::kRead), IsEmpty());
}

TEST_P(TwoTableModuleExportTest, AnEmptyTableNeedsNoSnapshot) {
  StoreAnchor("5");
  EXPECT_EQ(ExportIn(3, u"5").code, 0u);
  EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
  for (const auto* log : module_.logs) EXPECT_THAT(ReadFile(log), IsEmpty());
}

TEST_P(TwoTableModuleExportTest, AnEmptyTableReportsNoDeletions) {
  store_.Add(1, 20, 200);
  WriteText(module_.tables[0], "old");
  EXPECT_EQ(ExportChanges(Words({1, 1, 0}), Words({20, 200, 0, 21, 1, 0})).code, 0u);
  EXPECT_EQ(ReadFile(module_.changes), Words({1, 21, 3}));
  EXPECT_THAT(ReadFile(module_.tables[0]), IsEmpty());
  EXPECT_THAT(ReadFile(module_.logs[0]), IsEmpty());
}

TEST_P(TwoTableModuleExportTest, TheFirstSnapshotEntryOfAnIdCounts) {
  store_.Add(0, 1, 100);
  store_.Add(0, 2, 100);
  EXPECT_EQ(ExportChanges(Words({1, 100, 0, 1, 5, 0, 2, 5, 0, 2, 100, 0})).code, 0u);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 2, 2}));
}

TEST_P(TwoTableModuleExportTest, EachSnapshotEntryOfADeletedIdIsReported) {
  store_.Add(0, 1, 100);
  EXPECT_EQ(ExportChanges(Words({2, 1, 0, 1, 100, 0, 2, 2, 0})).code, 0u);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 2, 3, 0, 2, 3}));
}

TEST_P(TwoTableModuleExportTest, ATornSnapshotEntryIsPassedOver) {
  store_.Add(0, 1, 100);
  Bytes log = Words({1, 100, 0, 2, 2, 0});
  log.resize(23);
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
}

TEST_P(TwoTableModuleExportTest, SnapshotsAndChangesHaveNoLimit) {
  Bytes log;
  for (std::uint32_t id = 1; id <= 5000; ++id) {
    Append(log, Words({id, id, 0}));
    if (id % 2 == 0) store_.Add(1, id, id % 4 == 0 ? id : 1);
  }
  store_.Add(0, 1, 1);
  EXPECT_EQ(ExportChanges(log, log).code, 0u);
  std::vector<std::uint32_t> expected;
  for (std::uint32_t id = 2; id <= 5000; ++id) expected.insert(expected.end(), {0, id, 3});
  for (std::uint32_t i = 0; i < 1250; ++i) expected.insert(expected.end(), {1, 2 + 4 * i, 2});
  for (std::uint32_t i = 0; i < 2500; ++i) expected.insert(expected.end(), {1, 1 + 2 * i, 3});
  EXPECT_EQ(ToWords(ReadFile(module_.changes)), expected);
  EXPECT_THAT(ExportedIds(1), SizeIs(1250));
}

TEST_P(TwoTableModuleExportTest, WithoutItsAnchorAnIncrementalExportIsFull) {
  AddOneOfEach();
  const std::string head = "[ANCHORDATE]\r\n";
  for (const std::string& stored :
       {head + module_.anchor_key + " = 6", head + "OTHER = 5", head + module_.anchor_key + " = 00000000000000"}) {
    WriteText(kAnchorIni, stored);
    WriteLogs(Words({3, 1, 0}));
    const Answer answer = ExportIn(3, stored.ends_with("0000") ? u"00000000000000" : u"5");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, 1u);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_FALSE(Exists(module_.changes));
    EXPECT_THAT(ExportedIds(0), ElementsAre(3));
    EXPECT_EQ(ReadFile(module_.logs[0]), Words({3, 1, 0}));
    EXPECT_EQ(ReadFile(module_.logs[1]), Words({7, 1, 0}));
  }
}

TEST_P(TwoTableModuleExportTest, AChangeMadeAfterAnExportIsInTheNext) {
  store_.Add(0, 1, 1);
  store_.Add(0, 2, 2);
  const Answer first = ExportIn(1);
  store_.At(0, 2).time = 3;
  const Answer second = ExportIn(3, first.anchor);
  EXPECT_EQ(second.mode, 3u);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 2, 2}));
  const Answer third = ExportIn(3, second.anchor);
  EXPECT_EQ(third.mode, 3u);
  EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
}

// --- What the store claims ---

TEST_P(TwoTableModuleExportTest, AbsurdCountsAreAMemoryFailure) {
  for (const std::uint32_t count : {0x10000000u, 0x7FFFFFFFu}) {
    store_.claimed_count = count;
    EXPECT_EQ(ExportIn(1).code, Told(0x11000010));
    EXPECT_EQ(ExportChanges().code, Told(0x11000010));
  }
  store_.claimed_count = 0x0FFFFFFF;
  EXPECT_EQ(ExportIn(1).code, Told(0x11000010)) << "four gigabytes are more than the handset has";
  EXPECT_THAT(CallsFor(StoreRole::kList), IsEmpty());
}

TEST_P(TwoTableModuleExportTest, ANegativeCountIsNoneOrAbsurd) {
  for (const std::uint32_t count : {0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = count;
    const std::uint32_t code = module_.negative_counts_are_none ? 0 : Told(0x11000010);
    WriteLogs(Words({1, 1, 0}));
    EXPECT_EQ(ExportIn(1).code, code);
    if (module_.negative_counts_are_none) {
      EXPECT_THAT(ReadFile(module_.logs[0]), IsEmpty());
    }
    EXPECT_EQ(ExportChanges(Words({1, 1, 0})).code, code);
    EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
  }
  EXPECT_THAT(CallsFor(StoreRole::kList), IsEmpty());
}

TEST_P(TwoTableModuleExportTest, AListLongerThanItsRoomIsCut) {
  store_.Add(0, 1, 1);
  store_.Add(0, 2, 1);
  std::vector<std::uint32_t> longer = {3, 0x7FFFFFFF};
  if (!module_.negative_counts_are_none) longer.push_back(0xFFFFFFFF);
  for (const std::uint32_t count : longer) {
    store_.claimed_listed = count;
    EXPECT_EQ(ExportIn(1).code, 0u);
    EXPECT_THAT(ExportedIds(0), ElementsAre(1, 2));
    EXPECT_EQ(ReadFile(module_.logs[0]), Words({1, 1, 0, 2, 1, 0}));
  }
}

TEST_P(TwoTableModuleExportTest, AListShorterThanItsCountIsTakenAsItIs) {
  store_.Add(0, 1, 1);
  store_.claimed_count = 3;
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_THAT(ExportedIds(0), ElementsAre(1));
  EXPECT_EQ(ReadFile(module_.logs[0]), Words({1, 1, 0}));
  EXPECT_THAT(ReadFile(module_.tables[1]), IsEmpty());
}

// --- Failures ---

TEST_P(TwoTableModuleExportTest, AStoreThatIsNotLoadedTouchesNothing) {
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(store_.library(), reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(ExportIn(1, u"", std::u16string(300, u'x')).code, Told(0x10000001));
    const Answer answer = ExportIn(3, u"77");
    EXPECT_EQ(answer.code, Told(0x10000001));
    EXPECT_EQ(answer.mode, 3u);
    EXPECT_EQ(answer.anchor, u"77");
    EXPECT_THAT(AllFiles(), IsEmpty());
    EXPECT_THAT(store_.calls, IsEmpty());
  }
}

TEST_P(TwoTableModuleExportTest, AnOverlongDirectoryIsRefusedBeforeAnythingMoves) {
  std::u16string path = kSync;
  path.insert(0, 255, u'\\');
  const Answer answer = ExportIn(1, u"77", path);
  EXPECT_EQ(answer.code, Told(0x10000100));
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_EQ(ExportIn(1, u"", path.substr(1)).code, 0u) << "259 characters are allowed";
  EXPECT_TRUE(Exists(module_.tables[0]));
}

}  // namespace
}  // namespace qv_test
