// Recovers of the plain modules, inserting and applying changes: what reaches the store, and what becomes of the files.
#include "tests/behaviour/modules/plain_module_test.h"
#include "tests/support/run_events.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class PlainModuleRecoverTest : public PlainModuleTest {
 protected:
  bool IsEmptiedIn(std::uint32_t mode) const {
    return module_.only_replacing_empties ? mode == 2 : mode != 3 && mode != 5;
  }
  /// A configuration is applied, and its file deleted, before the records are looked at.
  void ExpectConfigWasTaken() const { EXPECT_FALSE(module_.config && Exists(module_.config->file)); }
};

INSTANTIATE_TEST_SUITE_P(Modules, PlainModuleRecoverTest,
                         testing::Values(CallHistory(), CardReader(), QuickDial(), GraphicMemo(), Mms(), Sms()),
                         NameOfModule);

// --- Inserting recovers ---

TEST_P(PlainModuleRecoverTest, TheModeSaysWhetherTheStoreIsEmptied) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u, 5u, 6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    store_.records.clear();
    store_.calls.clear();
    store_.Add(1);
    WriteFile(module_.table, Plain({2, 3}));
    const Answer answer = RecoverIn(mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, mode < 4 || mode >= 0x80000000 ? kNowAnchor : u"77");
    EXPECT_EQ(store_.records.size(), IsEmptiedIn(mode) ? 2u : 3u);
    EXPECT_EQ(CallsFor(StoreRole::kDeleteAll).size(), IsEmptiedIn(mode) ? 1u : 0u);
    EXPECT_FALSE(Exists(module_.table));
  }
}

TEST_P(PlainModuleRecoverTest, ARememberedRecoverLeavesASnapshotOfTheStoreAndAnIdMap) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    store_.records.clear();
    store_.next_id = 1000;
    store_.Add(1);
    WriteFile(module_.table, Plain({7, 8}));
    EXPECT_EQ(RecoverIn(mode).code, 0u);
    EXPECT_EQ(ReadFile(module_.log), Join({IsEmptiedIn(mode) ? Bytes() : Old(1), New(1000), New(1001)}));
    EXPECT_EQ(ReadFile(module_.id_map), Words({0, 1000, 7, 0, 1001, 8}));
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\n" + module_.anchor_key + " = 200612117210");
  }
}

TEST_P(PlainModuleRecoverTest, APlainRecoverLeavesNothingButTheRecords) {
  for (const std::uint32_t mode : {4u, 5u, 77u}) {
    store_.records.clear();
    WriteFile(module_.table, Plain({2}));
    EXPECT_EQ(RecoverIn(mode).code, 0u);
    EXPECT_THAT(AllFiles(), IsEmpty());
    EXPECT_EQ(store_.records.size(), 1u);
  }
}

TEST_P(PlainModuleRecoverTest, ALocalRecoverAdds) {
  store_.Add(1);
  WriteFile(module_.table, Plain({2}));
  PlaceConfig();
  EXPECT_EQ(LocalRecover(module_.id), 0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(1, 1000));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_P(PlainModuleRecoverTest, ARecoverOfNothingEmptiesSnapshotAndMap) {
  WriteFile(module_.table, {});
  WriteText(module_.id_map, "old");
  WriteText(module_.log, "old");
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_THAT(ReadFile(module_.log), IsEmpty());
  EXPECT_THAT(ReadFile(module_.id_map), IsEmpty());
}

TEST_P(PlainModuleRecoverTest, AnInsertingRecoverLeavesAChangeListAlone) {
  for (const std::uint32_t mode : {1u, 2u, 4u}) {
    store_.records.clear();
    store_.next_id = 1000;
    WriteFile(module_.table, Plain({7}));
    WriteFile(module_.changes, Words({0, 7, 3}));
    EXPECT_EQ(RecoverIn(mode).code, 0u);
    EXPECT_EQ(ReadFile(module_.changes), Words({0, 7, 3}));
    EXPECT_THAT(CallsFor(StoreRole::kDelete), IsEmpty());
    EXPECT_THAT(store_.Ids(), ElementsAre(1000));
  }
}

TEST_P(PlainModuleRecoverTest, AReplacingRecoverTakesItsStepsInOrder) {
  WriteFile(module_.table, Plain({7, 8}));
  RunEvents events(store_);
  EXPECT_EQ(RecoverIn(2).code, 0u);
  const std::vector<std::string> seen = events.Take();
  const auto anchor = std::ranges::find(seen, "create qvSyncAnchor.ini");
  EXPECT_LT(anchor, std::ranges::find(seen, "call DelAll")) << "the anchor moves before the store is emptied";
  EXPECT_THAT(Steps(seen), ElementsAreArray(module_.steps.replacing_recover));
}

TEST_P(PlainModuleRecoverTest, AnIdMapThatCannotBeWrittenIsNotReported) {
  WriteFile(module_.table, Plain({1}));
  MakeDirectory(module_.id_map);
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_EQ(ReadFile(module_.log), New(1000));
}

TEST_P(PlainModuleRecoverTest, AStoreThatGivesNoNewIdLeavesZeroInTheMap) {
  store_.fills_nothing = {Told(StoreRole::kInsert)};
  WriteFile(module_.table, Plain({7}));
  EXPECT_EQ(RecoverIn(1).code, 0u);
  EXPECT_EQ(ReadFile(module_.id_map), Words({0, 0, 7}));
}

// --- Change lists ---

TEST_P(PlainModuleRecoverTest, AChangeListDeletesThenInsertsAndUpdates) {
  for (const std::uint32_t id : {1u, 2u, 3u, 4u}) store_.Add(id);
  RunEvents events(store_);
  const Answer answer = RecoverChanges(Words({0, 60, 1, 0, 2, 3, 0, 3, 2, 0, 4, 3}), Plain({3, 60, 99}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_THAT(Steps(events.Take()), ElementsAreArray(module_.steps.incremental_recover));
  EXPECT_THAT(store_.Ids(), ElementsAre(1, 3, 1000));
  EXPECT_EQ(store_.At(3).bytes, module_.recovered_plain(3));
  EXPECT_EQ(store_.At(1000).bytes, module_.recovered_plain(60));
  EXPECT_EQ(Exists(module_.changes), module_.keeps_change_list);
  EXPECT_FALSE(Exists(module_.table));
  EXPECT_EQ(ReadFile(module_.log), Join({Old(1), New(3), New(1000)}));
  EXPECT_EQ(ReadFile(module_.id_map), Words({0, 1000, 60}));
}

TEST_P(PlainModuleRecoverTest, AnUpdatedRecordReachesTheStoreFieldByField) {
  store_.Add(module_.sample_id);
  EXPECT_EQ(RecoverChanges(Words({0, module_.sample_id, 2}), module_.noisy).code, 0u);
  EXPECT_EQ(store_.At(module_.sample_id).bytes, module_.recovered);
  EXPECT_THAT(ReadFile(module_.id_map), IsEmpty());
}

TEST_P(PlainModuleRecoverTest, ANewRecordReachesTheStoreFieldByField) {
  EXPECT_EQ(RecoverChanges(Words({0, module_.sample_id, 1}), module_.noisy).code, 0u);
  EXPECT_EQ(store_.At(1000).bytes, module_.recovered);
  EXPECT_EQ(ReadFile(module_.id_map), Words({0, 1000, module_.sample_id}));
}

TEST_P(PlainModuleRecoverTest, AnInsertOrUpdateNamesItsTableOrIsOfTheOnlyOne) {
  store_.Add(2);
  EXPECT_EQ(RecoverChanges(Words({1, 2, 2, 7, 60, 1, 0x100, 61, 1}), Plain({2, 60, 61})).code, 0u);
  if (module_.changes_any_table) {
    EXPECT_THAT(store_.Ids(), ElementsAre(2, 1000, 1001));
    EXPECT_THAT(CallsFor(StoreRole::kUpdate), testing::SizeIs(1));
    EXPECT_EQ(ReadFile(module_.id_map), Words({0, 1000, 60, 0, 1001, 61}));
  } else {
    EXPECT_THAT(store_.Ids(), ElementsAre(2));
    EXPECT_THAT(RolesCalled(store_), ElementsAre(StoreRole::kCount, StoreRole::kList));
  }
}

TEST_P(PlainModuleRecoverTest, ADeletionNamesItsTableOrIsOfTheOnlyOne) {
  for (const std::uint32_t id : {1u, 2u, 3u, 4u}) store_.Add(id);
  EXPECT_EQ(RecoverChanges(Words({1, 1, 3, 2, 2, 3, 0xFFFFFFFF, 3, 3})).code, 0u);
  if (module_.deletes_from_any_table) {
    EXPECT_THAT(CallsFor(StoreRole::kDelete), ElementsAre(CallWithIds(StoreRole::kDelete, {1, 2, 3})));
    EXPECT_THAT(store_.Ids(), ElementsAre(4));
  } else {
    EXPECT_THAT(CallsFor(StoreRole::kDelete), IsEmpty());
    EXPECT_THAT(store_.Ids(), ElementsAre(1, 2, 3, 4));
  }
}

TEST_P(PlainModuleRecoverTest, UnknownOperationsChangeNothing) {
  store_.Add(2);
  EXPECT_EQ(RecoverChanges(Words({0, 2, 0, 0, 60, 4, 0, 61, 0xFFFFFFFF, 0, 62, 257}), Plain({2, 60, 61, 62})).code, 0u);
  EXPECT_THAT(RolesCalled(store_), ElementsAre(StoreRole::kCount, StoreRole::kList));
}

TEST_P(PlainModuleRecoverTest, TheFirstChangeOfARecordCounts) {
  store_.Add(2);
  store_.Add(3);
  EXPECT_EQ(RecoverChanges(Words({0, 2, 2, 0, 2, 1, 0, 60, 1, 0, 60, 2, 0, 3, 0, 0, 3, 2}), Plain({2, 60, 3})).code,
            0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(2, 3, 1000));
  EXPECT_THAT(CallsFor(StoreRole::kUpdate).size(), 1u);
}

TEST_P(PlainModuleRecoverTest, AChangeWithoutItsRecordChangesNothing) {
  store_.Add(2);
  EXPECT_EQ(RecoverChanges(Words({0, 2, 2, 0, 60, 1})).code, 0u);
  EXPECT_THAT(RolesCalled(store_), ElementsAre(StoreRole::kCount, StoreRole::kList));
  EXPECT_THAT(ReadFile(module_.id_map), IsEmpty());
}

TEST_P(PlainModuleRecoverTest, ThousandsOfDeletionsAreOneCall) {
  Bytes changes;
  std::vector<std::uint32_t> ids;
  for (std::uint32_t id = 1; id <= 10000; ++id) {
    Append(changes, Words({0, id, 3}));
    ids.push_back(id);
  }
  EXPECT_EQ(RecoverChanges(changes).code, 0u);
  EXPECT_THAT(CallsFor(StoreRole::kDelete), ElementsAre(CallWithIds(StoreRole::kDelete, ids)));
}

TEST_P(PlainModuleRecoverTest, ATornChangeIsPassedOver) {
  for (std::size_t size = 13; size < 24; ++size) {
    store_.records.clear();
    for (const std::uint32_t id : {1u, 2u}) store_.Add(id);
    Bytes changes = Words({0, 1, 3, 0, 2, 3});
    changes.resize(size);
    EXPECT_EQ(RecoverChanges(changes).code, 0u);
    EXPECT_THAT(store_.Ids(), ElementsAre(2)) << size << " bytes";
  }
}

// --- Failures ---

TEST_P(PlainModuleRecoverTest, AStoreThatIsNotLoadedTouchesNothing) {
  WriteFile(module_.table, Plain({1}));
  PlaceConfig();
  const auto before = AllFiles();
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(store_.library(), reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(RecoverIn(1, u"", std::u16string(300, u'x')).code, 0x20000001u);
    EXPECT_EQ(RecoverIn(3).code, 0x20000001u);
    EXPECT_EQ(AllFiles(), before);
    EXPECT_THAT(store_.calls, IsEmpty());
  }
}

TEST_P(PlainModuleRecoverTest, AnOverlongDirectoryIsRefusedBeforeTheStoreIsEmptied) {
  const Answer answer = RecoverIn(2, u"77", std::u16string(260, u'\\'));
  EXPECT_EQ(answer.code, 0x20000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(RolesCalled(store_), IsEmpty());
  EXPECT_FALSE(Exists(kAnchorIni));
}

TEST_P(PlainModuleRecoverTest, AStoreThatCannotBeEmptiedKeepsEverything) {
  WriteFile(module_.table, Plain({1}));
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const auto lacking = StoreWithout(StoreRole::kDeleteAll, address);
    EXPECT_EQ(RecoverIn(2).code, 0x20000002u);
    EXPECT_THAT(RolesCalled(*lacking), IsEmpty());
  }
  for (const std::uint32_t status : module_.failures) {
    const auto failing = module_.make_store({}, 0);
    failing->statuses[Told(StoreRole::kDeleteAll)] = status;
    EXPECT_EQ(RecoverIn(2).code, 0x20000003u);
    EXPECT_THAT(RolesCalled(*failing), ElementsAre(StoreRole::kDeleteAll));
  }
  EXPECT_TRUE(Exists(module_.table));
  EXPECT_FALSE(Exists(module_.log));
  ExpectConfigWasTaken();
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
}

TEST_P(PlainModuleRecoverTest, AMissingTableIsFlaggedAsTheTableAfterTheStoreWasEmptied) {
  for (const std::uint32_t mode : {1u, 2u, 4u, 5u}) {
    store_.records.clear();
    store_.Add(1);
    EXPECT_EQ(RecoverIn(mode).code, 0x23000100u);
    EXPECT_EQ(store_.records.empty(), IsEmptiedIn(mode));
  }
  EXPECT_THAT(CallsFor(StoreRole::kInsert), IsEmpty());
  WriteFile(module_.changes, {});
  EXPECT_EQ(RecoverIn(3).code, 0x23000100u);
  EXPECT_TRUE(Exists(module_.changes));
}

TEST_P(PlainModuleRecoverTest, AMissingChangeListIsFlaggedAsSuch) {
  WriteFile(module_.table, Plain({1}));
  EXPECT_EQ(RecoverIn(3).code, 0x20200100u);
  EXPECT_THAT(RolesCalled(store_), IsEmpty());
  EXPECT_TRUE(Exists(module_.table));
}

TEST_P(PlainModuleRecoverTest, AChangeListWithoutMemoryIsNone) {
  store_.Add(1);
  WriteFile(module_.table, Plain({1}));
  WriteFile(module_.changes, Words({0, 1, 3}));
  bool anchor_is_kept = false;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == kAnchorIni && !anchor_is_kept) {
      anchor_is_kept = true;
      handset::FailCallOf("realloc", 1);
    }
  });
  EXPECT_EQ(RecoverIn(3).code, 0x20200020u);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(RolesCalled(store_), IsEmpty());
  EXPECT_TRUE(Exists(module_.changes));
  EXPECT_TRUE(Exists(module_.table));
}

TEST_P(PlainModuleRecoverTest, RefusedDeletionsEndTheRecover) {
  for (const std::uint32_t status : module_.failures) {
    store_.calls.clear();
    store_.statuses[Told(StoreRole::kDelete)] = status;
    EXPECT_EQ(RecoverChanges(Words({0, 1, 3, 0, 7, 1}), Plain({7})).code, 0x20200009u);
    EXPECT_THAT(RolesCalled(store_), ElementsAre(StoreRole::kDelete));
    EXPECT_TRUE(Exists(module_.changes));
    EXPECT_TRUE(Exists(module_.table));
  }
}

TEST_P(PlainModuleRecoverTest, ARefusedRecordEndsTheTable) {
  WriteFile(module_.table, Plain({7, 8, 9}));
  store_.fail_call = (module_.config ? module_.config->calls_of_recovers : 0) + 2;
  EXPECT_EQ(RecoverIn(5).code, 0x23000007u);
  EXPECT_THAT(RolesCalled(store_), ElementsAre(StoreRole::kInsert, StoreRole::kInsert));
  EXPECT_THAT(store_.Ids(), ElementsAre(1000)) << "what was inserted before it stays";
  EXPECT_TRUE(Exists(module_.table));
  EXPECT_FALSE(Exists(kAnchorIni));
  for (const std::uint32_t status : module_.failures) {
    store_.statuses = {{Told(StoreRole::kInsert), status}};
    for (const std::uint32_t mode : {1u, 2u, 4u}) {
      EXPECT_EQ(RecoverIn(mode).code, 0x23000007u);
      EXPECT_TRUE(Exists(module_.table));
      EXPECT_FALSE(Exists(module_.log));
      EXPECT_FALSE(Exists(module_.id_map));
      ExpectConfigWasTaken();
    }
    EXPECT_EQ(RecoverChanges(Words({0, 7, 1}), Plain({7})).code, 0x23000007u);
    store_.statuses = {{Told(StoreRole::kUpdate), status}};
    EXPECT_EQ(RecoverChanges(Words({0, 8, 2}), Plain({8})).code, 0x23000008u);
    EXPECT_TRUE(Exists(module_.changes));
    EXPECT_TRUE(Exists(module_.table));
  }
}

TEST_P(PlainModuleRecoverTest, EachSuccessOfTheStoreIsOne) {
  for (const std::uint32_t status : module_.successes) {
    for (const StoreRole role :
         {StoreRole::kList, StoreRole::kInsert, StoreRole::kUpdate, StoreRole::kDelete, StoreRole::kDeleteAll}) {
      store_.successes[Told(role)] = status;
    }
    store_.records.clear();
    for (const std::uint32_t id : {1u, 2u}) store_.Add(id);
    EXPECT_EQ(RecoverChanges(Words({0, 1, 3, 0, 2, 2, 0, 60, 1}), Plain({2, 60})).code, 0u);
    WriteFile(module_.table, Plain({7}));
    EXPECT_EQ(RecoverIn(2).code, 0u);
    EXPECT_EQ(store_.records.size(), 1u);
  }
}

TEST_P(PlainModuleRecoverTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  const std::uint32_t when_emptied = module_.only_replacing_empties ? 0 : 0x20000002;
  struct Missing {
    StoreRole role;
    std::uint32_t full, local, applying;
  };
  const Missing kMissing[] = {
      {StoreRole::kCount, 0x25000002, 0, 0x25000002},
      {StoreRole::kList, 0x25000002, 0, 0x25000002},
      {StoreRole::kRead, 0, 0, 0},
      {StoreRole::kInsert, 0x23000002, 0x23000002, 0x23000002},
      {StoreRole::kUpdate, 0, 0, 0x23000002},
      {StoreRole::kDelete, 0, 0, 0x20200002},
      {StoreRole::kDeleteAll, when_emptied, 0, 0},
  };
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(NameOf(missing.role))));
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const auto lacking = StoreWithout(missing.role, address);
      WriteFile(module_.table, {});
      EXPECT_EQ(RecoverIn(1).code, missing.full);
      WriteFile(module_.table, {});
      EXPECT_EQ(RecoverIn(5).code, missing.local);
      EXPECT_EQ(RecoverChanges({}).code, missing.applying);
    }
  }
}

TEST_P(PlainModuleRecoverTest, AnUnreadableFileIsNotTakenForItsEnd) {
  const auto fail_reading = [](const char16_t* file) {
    handset::Observe([file](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == file) handset::FailCallOf("ReadFile", 1);
    });
  };
  fail_reading(module_.table);
  WriteFile(module_.table, Plain({1}));
  EXPECT_EQ(RecoverIn(5).code, 0x23000200u);
  EXPECT_EQ(RecoverChanges(Words({0, 1, 1}), Plain({1})).code, 0x23000200u);
  fail_reading(module_.changes);
  EXPECT_EQ(RecoverChanges(Words({0, 1, 3}), Plain({1})).code, 0x20200200u);
  handset::Observe({});
  EXPECT_THAT(RolesCalled(store_), IsEmpty());
  EXPECT_TRUE(Exists(module_.table));
}

TEST_P(PlainModuleRecoverTest, ASnapshotThatCannotBeRewrittenIsFlaggedAfterTheTableIsGone) {
  MakeDirectory(module_.log);
  for (const std::uint32_t mode : {1u, 3u}) {
    WriteFile(module_.table, Plain({1}));
    WriteFile(module_.changes, {});
    EXPECT_EQ(RecoverIn(mode).code, 0x25000100u);
    EXPECT_FALSE(Exists(module_.table));
    EXPECT_EQ(Exists(module_.changes), mode == 1 || module_.keeps_change_list);
    EXPECT_FALSE(Exists(module_.id_map));
  }
  std::filesystem::remove(handset::HostPath(module_.log));
  store_.statuses[Told(StoreRole::kList)] = module_.failures.front();
  WriteFile(module_.table, Plain({1}));
  EXPECT_EQ(RecoverIn(1).code, 0x25000005u);
  EXPECT_THAT(ReadFile(module_.log), IsEmpty());
  EXPECT_FALSE(Exists(module_.id_map));
}

}  // namespace
}  // namespace qv_test
