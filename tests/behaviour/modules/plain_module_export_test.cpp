// Exports of the plain modules, full and incremental: what each file holds, and what the store is asked.
#include "tests/behaviour/modules/plain_module_test.h"
#include "tests/support/run_events.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class PlainModuleExportTest : public PlainModuleTest {
 protected:
  /// The new time of the store's list, for records that changed.
  ListTime Changed() const { return store_.list_form().new_time; }

  void WriteEarlierFiles() {
    WriteText(module_.table, "earlier");
    WriteText(module_.changes, "earlier");
  }
  static void ExpectEarlier(const char16_t* file, Earlier outcome) {
    EXPECT_EQ(Exists(file), outcome != Earlier::kDeleted);
    if (!Exists(file)) return;
    EXPECT_EQ(ReadText(file), outcome == Earlier::kKept ? "earlier" : "");
  }
};

INSTANTIATE_TEST_SUITE_P(Modules, PlainModuleExportTest,
                         testing::Values(CallHistory(), CardReader(), QuickDial(), GraphicMemo(), Mms(), Sms()),
                         NameOfModule);

// --- Full exports ---

TEST_P(PlainModuleExportTest, FullAndReplaceExportsWriteEverythingAndRememberIt) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 0xFFFFFFFFu, 0x80000000u}) {
    store_.records.clear();
    store_.Add(3);
    store_.Add(1, Changed());
    const Answer answer = ExportIn(mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_THAT(ExportedIds(), ElementsAre(3, 1)) << "in the store's order";
    EXPECT_EQ(ReadFile(module_.log), Join({Old(3), New(1)}));
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\n" + module_.anchor_key + " = 200612117210");
    EXPECT_FALSE(Exists(module_.changes));
    EXPECT_FALSE(Exists(module_.id_map));
    EXPECT_THAT(CallsFor(StoreRole::kDeleteAll), IsEmpty());
  }
}

TEST_P(PlainModuleExportTest, PlainExportsLeaveNoAnchorAndNoSnapshot) {
  store_.Add(3);
  for (const std::uint32_t mode : {4u, 5u, 77u, 0x7FFFFFFFu}) {
    const Answer answer = ExportIn(mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, u"77");
    EXPECT_THAT(ExportedIds(), ElementsAre(3));
    EXPECT_FALSE(Exists(kAnchorIni));
    EXPECT_FALSE(Exists(module_.log));
  }
}

TEST_P(PlainModuleExportTest, TheIdInARecordIsItsOwn) {
  store_.Add(3, std::nullopt, module_.in_store);
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_THAT(ExportedIds(), ElementsAre(module_.sample_id));
  EXPECT_EQ(ReadFile(module_.log), Old(3)) << "a snapshot has the listed one";
}

TEST_P(PlainModuleExportTest, RecordsAreReadSoManyAtATime) {
  std::vector<std::uint32_t> all;
  for (std::uint32_t id = 1; id <= 101; ++id) {
    store_.Add(id);
    all.push_back(id);
  }
  std::vector<std::string> reads;
  const std::size_t batch = module_.read_batch == 0 ? all.size() : module_.read_batch;
  for (std::size_t i = 0; i < all.size(); i += batch) {
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(i);
    const auto count = static_cast<std::ptrdiff_t>(std::min(batch, all.size() - i));
    reads.push_back(CallWithIds(StoreRole::kRead, {begin, begin + count}));
  }
  EXPECT_EQ(ExportIn(4).code, 0u);
  EXPECT_EQ(CallsFor(StoreRole::kRead), reads);
  EXPECT_EQ(ExportedIds(), all);
  store_.calls.clear();
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(CallsFor(StoreRole::kRead), reads);
  EXPECT_EQ(ExportedIds(), all);
}

TEST_P(PlainModuleExportTest, EachRecordIsOneWrite) {
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.Add(id);
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == module_.table) sizes.push_back(call.size);
  });
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
  handset::Observe({});
  EXPECT_EQ(sizes, std::vector<std::uint32_t>(6, static_cast<std::uint32_t>(ExchangeSize())));
}

TEST_P(PlainModuleExportTest, AnEmptyStoreIsNoError) {
  WriteText(module_.table, "old");
  WriteText(module_.log, "old");
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_THAT(ReadFile(module_.table), IsEmpty());
  EXPECT_THAT(ReadFile(module_.log), IsEmpty());
  EXPECT_THAT(RolesCalled(store_), ElementsAre(StoreRole::kCount, StoreRole::kCount));
  WriteText(module_.table, "old");
  EXPECT_EQ(ExportIn(4).code, 0u);
  EXPECT_THAT(ReadFile(module_.table), IsEmpty());
}

TEST_P(PlainModuleExportTest, AFullExportTakesItsStepsInOrder) {
  store_.Add(7);
  RunEvents events(store_);
  EXPECT_EQ(ExportIn(4).code, 0u);
  EXPECT_THAT(events.Take(), ElementsAreArray(module_.steps.full_export));
}

TEST_P(PlainModuleExportTest, AnIncrementalExportTakesItsStepsInOrder) {
  store_.Add(7);
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_THAT(Steps(events.Take()), ElementsAreArray(module_.steps.incremental_export));
}

TEST_P(PlainModuleExportTest, TheAnchorMovesBeforeAnyFileIsTouched) {
  store_.Add(7);
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges().code, 0u);
  std::vector<std::string> seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.starts_with("find") || event.starts_with("call"); });
  ASSERT_GT(seen.size(), 3u);
  EXPECT_EQ(seen[0], "open qvSyncAnchor.ini");
  EXPECT_EQ(seen[1], "open qvSyncAnchor.ini");
  EXPECT_EQ(seen[2], "create qvSyncAnchor.ini");
}

TEST_P(PlainModuleExportTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  store_.Add(7);
  std::set<std::u16string> opened;
  for (const auto& [file, how] : DataOpeningsOf([&] { EXPECT_EQ(ExportChanges().code, 0u); })) {
    opened.insert(file);
    EXPECT_THAT(how, testing::AnyOf(kReader, kWriter));
  }
  std::set<std::u16string> expected = {module_.table, module_.changes, module_.log};
  if (module_.config) expected.insert(module_.config->file);
  EXPECT_EQ(opened, expected);
}

TEST_P(PlainModuleExportTest, AnExportNeedsNoEntryPointThatWrites) {
  std::set<std::u16string> writing = {NameOf(StoreRole::kInsert), NameOf(StoreRole::kUpdate),
                                      NameOf(StoreRole::kDelete), NameOf(StoreRole::kDeleteAll)};
  if (module_.config) writing.insert(module_.config->set);
  const auto reading = module_.make_store(writing, 0);
  reading->Add(1);
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
}

// --- Incremental exports ---

TEST_P(PlainModuleExportTest, AnIncrementalExportWritesWhatChangedAndRemembersWhatIs) {
  store_.Add(5);             // as it was
  store_.Add(9);             // new
  store_.Add(2, Changed());  // modified
  store_.Add(4);             // moved back in time, which is a change too
  const Answer answer = ExportChanges(Join({Old(8), Old(2), Old(5), New(4), New(7)}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 9, 1, 0, 2, 2, 0, 4, 2, 0, 8, 3, 0, 7, 3}));
  EXPECT_THAT(ExportedIds(), ElementsAre(9, 2, 4));
  EXPECT_THAT(CallsFor(StoreRole::kRead), ElementsAre(CallWithIds(StoreRole::kRead, {9, 2, 4})));
  EXPECT_EQ(ReadFile(module_.log), Join({Old(5), Old(9), New(2), Old(4)}));
}

TEST_P(PlainModuleExportTest, ChangedRecordsTravelLikeAllOthers) {
  store_.Add(module_.sample_id, std::nullopt, module_.in_store);
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(module_.table), module_.exported);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, module_.sample_id, 1}));
}

TEST_P(PlainModuleExportTest, TheLowAndTheHighHalfOfATimeAreCompared) {
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.Add(id);
  const auto [low, high] = module_.old_time;
  EXPECT_EQ(ExportChanges(Words({1, low, high, 2, low + 1, high, 3, low, high + 1})).code, 0u);
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 2, 2, 0, 3, 2}));
}

TEST_P(PlainModuleExportTest, WithoutChangesNothingIsReadAndTheTableIsEmpty) {
  store_.Add(1);
  WriteText(module_.table, "old");
  EXPECT_EQ(ExportChanges(Old(1)).code, 0u);
  EXPECT_THAT(CallsFor(StoreRole::kRead), IsEmpty());
  EXPECT_THAT(ReadFile(module_.table), IsEmpty());
  EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
  EXPECT_EQ(ReadFile(module_.log), Old(1));
}

TEST_P(PlainModuleExportTest, DeletionsAloneLeaveAnEmptyTable) {
  store_.Add(1);
  WriteText(module_.table, "old");
  EXPECT_EQ(ExportChanges(Join({Old(7), Old(1), Old(6)})).code, 0u);
  EXPECT_THAT(CallsFor(StoreRole::kRead), IsEmpty());
  EXPECT_THAT(ReadFile(module_.table), IsEmpty());
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 7, 3, 0, 6, 3}));
  EXPECT_EQ(ReadFile(module_.log), Old(1));
}

TEST_P(PlainModuleExportTest, AnEmptiedStoreReportsNoDeletions) {
  WriteEarlierFiles();
  const Answer answer = ExportChanges(Join({Old(1), Old(2)}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
  ExpectEarlier(module_.table, module_.table_of_empty_store);
  EXPECT_THAT(ReadFile(module_.log), IsEmpty());
}

TEST_P(PlainModuleExportTest, AnEmptyStoreNeedsNoSnapshot) {
  StoreAnchor("5");
  EXPECT_EQ(ExportIn(3, u"5").code, 0u);
}

TEST_P(PlainModuleExportTest, SnapshotsAndChangesHaveNoLimitAndATornEntryIsPassedOver) {
  store_.Add(1);
  Bytes log = Old(1);
  std::vector<std::uint32_t> expected;
  for (std::uint32_t id = 2; id <= 2500; ++id) {
    Append(log, Words({id, 1, 1}));
    expected.insert(expected.end(), {0, id, 3});
  }
  Append(log, Bytes(11, 0x55));
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_EQ(ToWords(ReadFile(module_.changes)), expected);
}

TEST_P(PlainModuleExportTest, WithoutItsAnchorAnIncrementalExportIsFull) {
  store_.Add(1);
  const std::string head = "[ANCHORDATE]\r\n";
  for (const std::string& stored : {head + module_.anchor_key + " = 6", head + "OTHER = 5", std::string()}) {
    WriteText(kAnchorIni, stored);
    WriteFile(module_.log, Old(1));
    const Answer answer = ExportIn(3, u"5");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, 1u);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_THAT(ExportedIds(), ElementsAre(1));
    EXPECT_FALSE(Exists(module_.changes));
  }
}

TEST_P(PlainModuleExportTest, AnAnchorOfZerosIsNone) {
  store_.Add(1);
  StoreAnchor("00000000000000");
  EXPECT_EQ(ExportIn(3, u"00000000000000").mode, 1u);
}

// --- What the store claims ---

TEST_P(PlainModuleExportTest, AbsurdCountsAreAMemoryFailure) {
  for (const std::uint32_t count : {0x10000000u, 0x7FFFFFFFu}) {
    store_.claimed_count = count;
    EXPECT_EQ(ExportIn(1).code, 0x10000010u);
    EXPECT_EQ(ExportChanges().code, 0x10000010u);
  }
  EXPECT_THAT(CallsFor(StoreRole::kList), IsEmpty());
}

TEST_P(PlainModuleExportTest, ANegativeCountIsNoneOrAbsurd) {
  for (const std::uint32_t count : {0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = count;
    const std::uint32_t code = module_.negative_counts_are_none ? 0 : 0x10000010;
    EXPECT_EQ(ExportIn(1).code, code);
    EXPECT_EQ(ExportChanges().code, code);
  }
}

TEST_P(PlainModuleExportTest, AListLongerThanItsRoomIsCut) {
  store_.Add(1);
  store_.Add(2);
  std::vector<std::uint32_t> longer = {3, 0x7FFFFFFF};
  if (!module_.negative_counts_are_none) longer.push_back(0xFFFFFFFF);
  for (const std::uint32_t count : longer) {
    store_.claimed_listed = count;
    EXPECT_EQ(ExportIn(1).code, 0u);
    EXPECT_THAT(ExportedIds(), ElementsAre(1, 2));
    EXPECT_EQ(ReadFile(module_.log), Join({Old(1), Old(2)}));
    EXPECT_EQ(ExportChanges(Old(1)).code, 0u);
    EXPECT_THAT(ExportedIds(), ElementsAre(2));
  }
}

TEST_P(PlainModuleExportTest, AListShorterThanItsCountIsTakenAsItIs) {
  store_.Add(1);
  store_.claimed_count = 3;
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_THAT(ExportedIds(), ElementsAre(1));
  EXPECT_EQ(ReadFile(module_.log), Old(1));
}

TEST_P(PlainModuleExportTest, AListOfNoneIsNoError) {
  store_.Add(1);
  store_.claimed_listed = 0;
  WriteText(module_.table, "old");
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_THAT(ReadFile(module_.table), IsEmpty());
  EXPECT_THAT(ReadFile(module_.log), IsEmpty());
  WriteText(module_.table, "old");
  EXPECT_EQ(ExportChanges(Old(1)).code, 0u);
  EXPECT_THAT(ReadFile(module_.table), IsEmpty());
  EXPECT_EQ(ReadFile(module_.changes), Words({0, 1, 3})) << "the store has records, and not this one";
  EXPECT_THAT(CallsFor(StoreRole::kRead), IsEmpty());
}

// --- Failures ---

TEST_P(PlainModuleExportTest, AStoreThatIsNotLoadedTouchesNothing) {
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(store_.library(), reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(ExportIn(1, u"", std::u16string(300, u'x')).code, 0x10000001u);
    EXPECT_EQ(ExportIn(3).code, 0x10000001u);
    EXPECT_THAT(AllFiles(), IsEmpty());
    EXPECT_THAT(store_.calls, IsEmpty());
  }
}

TEST_P(PlainModuleExportTest, AnOverlongDirectoryIsRefusedBeforeAnythingMoves) {
  std::u16string path = kSync;
  path.insert(0, 255, u'\\');
  const Answer answer = ExportIn(1, u"77", path);
  EXPECT_EQ(answer.code, 0x10000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_THAT(RolesCalled(store_), IsEmpty());
  EXPECT_EQ(ExportIn(1, u"", path.substr(1)).code, 0u) << "259 characters are allowed";
  EXPECT_TRUE(Exists(module_.table));
}

TEST_P(PlainModuleExportTest, ADirectoryThatIsNotThereFailsAfterTheAnchorMoved) {
  EXPECT_EQ(ExportIn(1, u"", u"\\nowhere").code, 0x10000100u);
  EXPECT_TRUE(Exists(kAnchorIni));
  EXPECT_FALSE(Exists(module_.log));
}

TEST_P(PlainModuleExportTest, RecordsThatCannotBeWrittenAreFlagged) {
  store_.Add(1);
  store_.Add(2);
  const std::uint64_t size = ExchangeSize();
  const std::uint64_t config_size = module_.config ? module_.config->empty.size() : 0;
  const auto remove_files = [this] {
    std::filesystem::remove(handset::HostPath(module_.table));
    if (module_.config) std::filesystem::remove(handset::HostPath(module_.config->file));
  };
  for (const std::uint64_t space : {std::uint64_t{0}, size - 1, size, 2 * size - 1}) {
    handset::SetFreeSpace(config_size + space);
    EXPECT_EQ(ExportIn(4).code, 0x10000100u | module_.write_flag) << space << " bytes free";
    remove_files();
  }
  handset::SetFreeSpace(config_size + 2 * size);
  EXPECT_EQ(ExportIn(4).code, 0u);
}

TEST_P(PlainModuleExportTest, AChangeListThatCannotBeWrittenCarriesNoFlag) {
  store_.Add(1);
  WriteText(module_.table, "earlier");
  MakeDirectory(module_.changes);
  EXPECT_EQ(ExportChanges().code, 0x10000100u);
  ExpectEarlier(module_.table, module_.table_without_entry_point);
  EXPECT_THAT(RolesCalled(store_), IsEmpty());
  std::filesystem::remove(handset::HostPath(module_.changes));
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == module_.changes) handset::FailCallOf("WriteFile", 1);
  });
  EXPECT_EQ(ExportChanges().code, 0x10000100u);
  handset::Observe({});
  EXPECT_THAT(CallsFor(StoreRole::kRead), IsEmpty());
}

TEST_P(PlainModuleExportTest, WithoutAnEntryPointNothingIsCalled) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const StoreRole role : {StoreRole::kCount, StoreRole::kList, StoreRole::kRead}) {
      const auto lacking = StoreWithout(role, address);
      WriteEarlierFiles();
      EXPECT_EQ(ExportIn(1).code, 0x10000002u);
      ExpectEarlier(module_.table, module_.table_without_entry_point);
      ExpectEarlier(module_.changes, Earlier::kKept);
      WriteEarlierFiles();
      EXPECT_EQ(ExportChanges(Old(9)).code, 0x10000002u);
      ExpectEarlier(module_.table, module_.table_without_entry_point);
      ExpectEarlier(module_.changes, module_.changes_without_entry_point);
      EXPECT_THAT(RolesCalled(*lacking), IsEmpty());
      EXPECT_EQ(ReadFile(module_.log), Old(9));
    }
  }
}

TEST_P(PlainModuleExportTest, AStoreFailureEndsTheExportWithoutAFlag) {
  store_.Add(1);
  for (const std::uint32_t status : module_.failures) {
    SCOPED_TRACE(status);
    for (const auto& [role, code] : {std::pair(StoreRole::kList, 5u), std::pair(StoreRole::kRead, 6u)}) {
      store_.statuses = {{Told(role), status}};
      WriteEarlierFiles();
      WriteFile(module_.log, Old(9));
      EXPECT_EQ(ExportIn(1).code, 0x10000000u | code);
      EXPECT_EQ(ReadFile(module_.log), Old(9));
      ExpectEarlier(module_.table, module_.table_of_failed_full_export);
      WriteEarlierFiles();
      EXPECT_EQ(ExportChanges(Old(9)).code, 0x10000000u | code);
      EXPECT_EQ(ReadFile(module_.log), Old(9));
      EXPECT_EQ(ReadFile(module_.changes), role == StoreRole::kRead ? Words({0, 1, 1, 0, 9, 3}) : Bytes());
      ExpectEarlier(module_.table, module_.table_of_failed_incremental_export);
      EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\n" + module_.anchor_key + " = 200612117210");
    }
  }
}

TEST_P(PlainModuleExportTest, EachSuccessOfTheStoreIsOne) {
  store_.Add(1);
  for (const std::uint32_t status : module_.successes) {
    for (const StoreRole role : {StoreRole::kList, StoreRole::kRead}) store_.successes[Told(role)] = status;
    EXPECT_EQ(ExportIn(1).code, 0u);
    EXPECT_EQ(ExportChanges().code, 0u);
    EXPECT_THAT(ExportedIds(), ElementsAre(1));
  }
}

TEST_P(PlainModuleExportTest, WithoutASnapshotAnIncrementalExportFailsWithItsFlag) {
  store_.Add(1);
  StoreAnchor("5");
  EXPECT_EQ(ExportIn(3, u"5").code, 0x10100100u);
  EXPECT_THAT(ReadFile(module_.changes), IsEmpty());
  EXPECT_FALSE(Exists(module_.log));
}

TEST_P(PlainModuleExportTest, ASnapshotThatCannotBeReadIsNotTakenForItsEnd) {
  store_.Add(1);
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == module_.log) handset::FailCallOf("ReadFile", 1);
  });
  EXPECT_EQ(ExportChanges(Old(1)).code, 0x10100200u);
  handset::Observe({});
  EXPECT_EQ(ReadFile(module_.log), Old(1));
}

TEST_P(PlainModuleExportTest, ASnapshotThatCannotBeRewrittenIsFlagged) {
  MakeDirectory(module_.log);
  EXPECT_EQ(ExportIn(1).code, 0x15000100u);
  EXPECT_TRUE(Exists(module_.table));
  std::filesystem::remove(handset::HostPath(module_.log));
  store_.Add(1);
  // The records are listed for the export, then for the snapshot.
  unsigned looked_up = 0;
  handset::Observe([&](const handset::Call& call) {
    const bool is_list = call.function == "GetProcAddressW" && call.path == NameOf(StoreRole::kList);
    if (is_list && ++looked_up == 2) store_.statuses[Told(StoreRole::kList)] = module_.failures.front();
  });
  for (const bool is_incremental : {false, true}) {
    looked_up = 0;
    store_.statuses.clear();
    EXPECT_EQ((is_incremental ? ExportChanges() : ExportIn(1)).code, 0x15000005u);
    EXPECT_THAT(ExportedIds(), ElementsAre(1));
    EXPECT_THAT(ReadFile(module_.log), IsEmpty());
  }
  handset::Observe({});
}

TEST_P(PlainModuleExportTest, AFailedExportIsReturnedWithoutAStreamToo) {
  const auto lacking = StoreWithout(StoreRole::kRead, 0);
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(module_.id, 1, u"", kSync), nullptr), 0x00000002u);
}

TEST_P(PlainModuleExportTest, ALocalExportIsAPlainOne) {
  store_.Add(3);
  EXPECT_EQ(LocalExport(module_.id), 0u);
  EXPECT_THAT(ExportedIds(), ElementsAre(3));
  EXPECT_EQ(AllFiles().size(), module_.config ? 2u : 1u);
}

}  // namespace
}  // namespace qv_test
