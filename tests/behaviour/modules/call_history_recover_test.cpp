// Recovers of the call history, inserting and applying changes: what reaches the store, and what becomes of the files.
#include <random>

#include "tests/support/call_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_call_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CallHistoryRecoverTest : public AgentTest {
 protected:
  /// What reaches the store for one exchange record.
  Bytes Recovered(const Bytes& record) {
    store_.records.clear();
    WriteFile(kCallTable, record);
    EXPECT_EQ(Recover(9, 4).code, 0u);
    EXPECT_EQ(store_.records.size(), 1u);
    return store_.records.empty() ? Bytes() : store_.records.back().bytes;
  }

  /// What becomes of a time that came as these numbers.
  std::u16string RecoveredTime(const std::array<std::uint32_t, 6>& parts) {
    Bytes record = PlainCall(1);
    for (std::size_t i = 0; i < parts.size(); ++i) Put32(record, 4 + 4 * i, parts[i]);
    const Bytes stored = Recovered(record);
    std::u16string stamp;
    for (std::size_t i = 0; i < 30; i += 2)
      stamp.push_back(static_cast<char16_t>(stored.at(i) | stored.at(i + 1) << 8));
    EXPECT_EQ(stamp.back(), u'\0');
    stamp.pop_back();
    return stamp;
  }

  Answer RecoverChanges(const Bytes& changes, const Bytes& table = {}) {
    WriteFile(kCallTable, table);
    WriteFile(kCallChanges, changes);
    return Recover(9, 3);
  }

  ScriptedCallStore store_;
};

// --- Records ---

TEST_F(CallHistoryRecoverTest, ACallReachesTheStoreFieldByField) {
  EXPECT_EQ(Recovered(ExchangeCall()), RecoveredCall());
  EXPECT_EQ(Recovered(NoisyCall()), RecoveredCall());
  EXPECT_EQ(Recovered(PlainCall(5)), RecoveredPlainCall(5));
}

TEST_F(CallHistoryRecoverTest, EachByteOfACallGoesWhereItBelongsAndNowhereElse) {
  Bytes full(208, 0x11);
  for (std::size_t i = 4; i < 28; ++i) full[i] = 0;  // The time, whose numbers have a test of their own.
  Bytes before(180);
  PutText(before, 0, u"00000000000000");
  for (std::size_t i = 30; i < 90; ++i) before[i] = 0x11;   // 30 characters and a NUL.
  for (std::size_t i = 92; i < 158; ++i) before[i] = 0x11;  // 33 characters and a NUL.
  for (std::size_t i = 160; i < 168; ++i) before[i] = 0x11;
  Put16(before, 168, 46017);
  before[170] = before[172] = before[174] = 0x11;
  ASSERT_EQ(Recovered(full), before);
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (i >= 4 && i < 28) continue;
    Bytes changed = full;
    changed[i] = 0x51;
    Bytes expected = before;
    if (i < 4) expected[160 + i] = 0x51;
    if (i >= 36 && i < 40) expected[164 + i - 36] = 0x51;
    if (i == 40) Put16(expected, 168, 46081);
    if (i == 41) expected[170] = 0x51;
    if (i >= 42 && i < 102) expected[30 + i - 42] = 0x51;
    if (i >= 104 && i < 170) expected[92 + i - 104] = 0x51;
    if (i == 170) expected[172] = 0x51;
    if (i == 171) expected[174] = 0x51;
    EXPECT_EQ(Recovered(changed), expected) << "exchange byte " << i;
  }
}

TEST_F(CallHistoryRecoverTest, EachByteOfATypeIsCountedFrom46000) {
  Bytes table;
  for (std::uint32_t i = 0; i < 256; ++i) {
    Bytes record = PlainCall(i);
    Put8(record, 40, static_cast<std::uint8_t>(i));
    Append(table, record);
  }
  WriteFile(kCallTable, table);
  EXPECT_EQ(Recover(9, 4).code, 0u);
  ASSERT_EQ(store_.records.size(), 256u);
  for (std::uint32_t i = 0; i < 256; ++i) {
    Bytes expected = RecoveredPlainCall(i);
    Put16(expected, 168, static_cast<std::uint16_t>(46000 + i));
    EXPECT_EQ(store_.records[i].bytes, expected);
  }
}

TEST_F(CallHistoryRecoverTest, SmallValuesAreWidenedWithoutASign) {
  Bytes record = PlainCall(1);
  for (const std::size_t offset : {40u, 41u, 170u, 171u}) Put8(record, offset, 0xFF);
  Bytes expected = RecoveredPlainCall(1);
  Put16(expected, 168, 46255);
  for (const std::size_t offset : {170u, 172u, 174u}) Put16(expected, offset, 0x00FF);
  EXPECT_EQ(Recovered(record), expected);
}

TEST_F(CallHistoryRecoverTest, ATimeIsWrittenInFourteenDigits) {
  EXPECT_EQ(RecoveredTime({2006, 1, 5, 9, 3, 7}), u"20060105090307");
  EXPECT_EQ(RecoveredTime({2006, 12, 31, 23, 59, 58}), u"20061231235958");
  EXPECT_EQ(RecoveredTime({7, 1, 2, 3, 4, 5}), u"00070102030405");
  EXPECT_EQ(RecoveredTime({9999, 99, 99, 99, 99, 99}), u"99999999999999");
}

TEST_F(CallHistoryRecoverTest, NumbersTooWideForTheirPlaceAreCutToFourteenCharacters) {
  EXPECT_EQ(RecoveredTime({12345, 1, 2, 3, 4, 5}), u"12345010203040");
  EXPECT_EQ(RecoveredTime({2006, 123, 5, 9, 3, 7}), u"20061230509030");
  EXPECT_EQ(RecoveredTime({2006, 1, 5, 9, 3, 789}), u"20060105090378");
  EXPECT_EQ(RecoveredTime({0x7FFFFFFF, 0x7FFFFFFF, 0, 0, 0, 0}), u"21474836472147");
  EXPECT_EQ(RecoveredTime({0xFFFFFFFF, 0xFFFFFFFF, 1, 1, 1, 1}), u"-0001-01010101");
  EXPECT_EQ(RecoveredTime({0x80000000, 0x80000000, 0, 0, 0, 0}), u"-2147483648-21");
}

TEST_F(CallHistoryRecoverTest, ATornCallIsUsedAsReadTheRestBeingZero) {
  const Bytes whole = NoisyCall();
  for (std::size_t size = 1; size < 208; ++size) {
    Bytes torn(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    Bytes filled = torn;
    filled.resize(208);
    ASSERT_EQ(Recovered(torn), Recovered(filled)) << size << " bytes";
  }
  Bytes table = PlainCall(1);
  Append(table, {2});
  WriteFile(kCallTable, table);
  store_.records.clear();
  EXPECT_EQ(Recover(9, 4).code, 0u);
  ASSERT_EQ(store_.records.size(), 2u);
  EXPECT_EQ(store_.records[1].bytes, RecoveredPlainCall(2));
}

TEST_F(CallHistoryRecoverTest, WhatIsExportedAndRecoveredIsExportedAlike) {
  std::mt19937 random(20061211);
  const auto pick = [&](std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); };
  std::vector<Bytes> originals;
  for (std::uint32_t id = 1; id <= 120; ++id) {
    Bytes record(180);
    std::u16string stamp;
    while (stamp.size() < 14) stamp.push_back(static_cast<char16_t>(u'0' + pick(10)));
    PutText(record, 0, stamp);
    PutText(record, 30, std::u16string(pick(31), static_cast<char16_t>(u'0' + pick(10))));
    PutText(record, 92, std::u16string(pick(33), static_cast<char16_t>(1 + pick(0xFFFF))));
    Put32(record, 160, id);
    Put32(record, 164, static_cast<std::uint32_t>(random()));
    Put16(record, 168, static_cast<std::uint16_t>(46000 + pick(256)));
    for (const std::size_t offset : {170u, 172u, 174u}) Put8(record, offset, static_cast<std::uint8_t>(pick(256)));
    store_.Add(id, id, record);
    originals.push_back(record);
  }
  EXPECT_EQ(Export(9, 1).code, 0u);
  EXPECT_EQ(Recover(9, 2).code, 0u);
  ASSERT_EQ(store_.records.size(), originals.size());
  for (std::size_t i = 0; i < originals.size(); ++i) EXPECT_EQ(store_.records[i].bytes, originals[i]);
}

TEST_F(CallHistoryRecoverTest, ATypeOutsideTheRangeComesBackWithinIt) {
  for (const int type : {0, 45999, 46256, 65535}) {
    Bytes record(180);
    Put16(record, 168, static_cast<std::uint16_t>(type));
    store_.records.clear();
    store_.Add(1, 1, record);
    EXPECT_EQ(Export(9, 1).code, 0u);
    EXPECT_EQ(Recover(9, 2).code, 0u);
    const Bytes& back = store_.records.at(0).bytes;
    const int returned = back[168] | back[169] << 8;
    EXPECT_NE(returned, type);
    EXPECT_GE(returned, 46000);
    EXPECT_LE(returned, 46255);
  }
}

// --- Inserting recovers ---

TEST_F(CallHistoryRecoverTest, OnlyReplaceEmptiesTheStore) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u, 5u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    store_.records.clear();
    store_.calls.clear();
    store_.Add(1);
    WriteFile(kCallTable, PlainCalls({2, 3}));
    const Answer answer = Recover(9, mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, mode < 4 || mode == 0xFFFFFFFF ? kNowAnchor : u"77");
    EXPECT_EQ(store_.records.size(), mode == 2 ? 2u : 3u) << mode;
    EXPECT_EQ(store_.CallsOf("DelAll").size(), mode == 2 ? 1u : 0u);
    EXPECT_FALSE(Exists(kCallTable));
  }
}

TEST_F(CallHistoryRecoverTest, ARememberedRecoverLeavesASnapshotOfTheStoreAndAnIdMap) {
  store_.Add(1, 0x0000000300000002);
  WriteFile(kCallTable, PlainCalls({7, 8}));
  EXPECT_EQ(Recover(9, 1).code, 0u);
  EXPECT_EQ(ReadFile(kCallLog), Words({1, 2, 3, 1000, 5, 6, 1001, 5, 6}));
  EXPECT_EQ(ReadFile(kCallIdMap), Words({0, 1000, 7, 0, 1001, 8}));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nRECORDCALL = 200612117210");
}

TEST_F(CallHistoryRecoverTest, APlainRecoverLeavesNothingButTheCalls) {
  for (const std::uint32_t mode : {4u, 5u, 77u}) {
    WriteFile(kCallTable, PlainCall(2));
    EXPECT_EQ(Recover(9, mode).code, 0u);
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
  EXPECT_EQ(store_.records.size(), 3u);
}

TEST_F(CallHistoryRecoverTest, ARecoverOfNothingEmptiesSnapshotAndMap) {
  WriteFile(kCallTable, {});
  WriteText(kCallIdMap, "old");
  WriteText(kCallLog, "old");
  EXPECT_EQ(Recover(9, 1).code, 0u);
  EXPECT_THAT(ReadFile(kCallLog), IsEmpty());
  EXPECT_THAT(ReadFile(kCallIdMap), IsEmpty());
}

TEST_F(CallHistoryRecoverTest, AnInsertingRecoverLeavesAChangeListAlone) {
  store_.Add(1);
  WriteFile(kCallTable, {});
  WriteFile(kCallChanges, Words({0, 1, 3}));
  EXPECT_EQ(Recover(9, 1).code, 0u);
  EXPECT_TRUE(Exists(kCallChanges));
  EXPECT_THAT(store_.Ids(), ElementsAre(1));
}

TEST_F(CallHistoryRecoverTest, AReplacingRecoverTakesItsStepsInOrder) {
  WriteFile(kCallTable, PlainCalls({7, 8}));
  RunEvents events(store_);
  EXPECT_EQ(Recover(9, 2).code, 0u);
  std::vector<std::string> seen = events.Take();
  EXPECT_EQ(seen.at(0).substr(seen.at(0).find(' ')), " qvSyncAnchor.ini") << "the anchor goes first";
  std::erase_if(seen, [](const std::string& event) { return event.ends_with("qvSyncAnchor.ini"); });
  EXPECT_THAT(seen, ElementsAre("find EXPCALLHISTORY_Sync_DelAll", "call DelAll", "open callinfo.tbl",
                                "find EXPCALLHISTORY_Sync_Insert", "call Insert", "call Insert", "delete callinfo.tbl",
                                "create recordcall.log", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                                "find EXPCALLHISTORY_Sync_GetAllidTime", "call GetAllRecNum",
                                "call GetAllidTime room 2", "create callmap.tbl"));
}

TEST_F(CallHistoryRecoverTest, AnIdMapThatCannotBeWrittenIsNotReported) {
  WriteFile(kCallTable, PlainCall(1));
  MakeDirectory(kCallIdMap);
  EXPECT_EQ(Recover(9, 1).code, 0u);
}

// --- Change lists ---

TEST_F(CallHistoryRecoverTest, AChangeListDeletesThenInsertsAndUpdates) {
  for (const std::uint32_t id : {1u, 2u, 3u, 4u}) store_.Add(id);
  RunEvents events(store_);
  const Answer answer = RecoverChanges(Words({0, 60, 1, 0, 2, 3, 0, 3, 2, 0, 4, 3}), PlainCalls({3, 60, 99}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  std::vector<std::string> seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.ends_with("qvSyncAnchor.ini"); });
  EXPECT_THAT(seen,
              ElementsAre("open callcmd.tbl", "find EXPCALLHISTORY_Sync_Del", "call Del [2 4]", "open callinfo.tbl",
                          "find EXPCALLHISTORY_Sync_Insert", "find EXPCALLHISTORY_Sync_Update", "call Update 3",
                          "call Insert", "delete callcmd.tbl", "delete callinfo.tbl", "create recordcall.log",
                          "find EXPCALLHISTORY_Sync_GetAllRecNum", "find EXPCALLHISTORY_Sync_GetAllidTime",
                          "call GetAllRecNum", "call GetAllidTime room 3", "create callmap.tbl"));
  EXPECT_THAT(store_.Ids(), ElementsAre(1, 3, 1000));
  EXPECT_EQ(store_.At(3).bytes, RecoveredPlainCall(3));
  EXPECT_EQ(store_.At(1000).bytes, RecoveredPlainCall(60));
  EXPECT_FALSE(Exists(kCallChanges));
  EXPECT_FALSE(Exists(kCallTable));
  EXPECT_EQ(ReadFile(kCallLog), Words({1, 1, 0, 3, 5, 6, 1000, 5, 6}));
  EXPECT_EQ(ReadFile(kCallIdMap), Words({0, 1000, 60}));
}

TEST_F(CallHistoryRecoverTest, AnUpdatedCallReachesTheStoreFieldByField) {
  store_.Add(kCallId);
  EXPECT_EQ(RecoverChanges(Words({0, kCallId, 2}), NoisyCall()).code, 0u);
  EXPECT_EQ(store_.At(kCallId).bytes, RecoveredCall());
  EXPECT_THAT(ReadFile(kCallIdMap), IsEmpty());
}

TEST_F(CallHistoryRecoverTest, ChangesOfOtherTablesAreNotTheCalls) {
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.Add(id);
  EXPECT_EQ(RecoverChanges(Words({1, 1, 3, 2, 2, 3, 0xFFFFFFFF, 3, 3, 1, 2, 2, 7, 60, 1}), PlainCalls({2, 60})).code,
            0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(1, 2, 3));
  EXPECT_THAT(store_.CallsOf("Del"), IsEmpty());
  EXPECT_THAT(store_.CallsOf("Update"), IsEmpty());
}

TEST_F(CallHistoryRecoverTest, UnknownOperationsChangeNothing) {
  store_.Add(2);
  EXPECT_EQ(RecoverChanges(Words({0, 2, 0, 0, 60, 4, 0, 61, 0xFFFFFFFF}), PlainCalls({2, 60, 61})).code, 0u);
  EXPECT_THAT(store_.calls, ElementsAre("GetAllRecNum", "GetAllidTime room 1"));
}

TEST_F(CallHistoryRecoverTest, TheFirstChangeOfACallCounts) {
  store_.Add(2);
  EXPECT_EQ(RecoverChanges(Words({0, 2, 2, 0, 2, 1, 0, 60, 1, 0, 60, 2}), PlainCalls({2, 60})).code, 0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(2, 1000));
}

TEST_F(CallHistoryRecoverTest, ThousandsOfDeletionsAreOneCall) {
  Bytes changes;
  std::string call = "Del [";
  for (std::uint32_t id = 1; id <= 10000; ++id) {
    Append(changes, Words({0, id, 3}));
    call += (id == 1 ? "" : " ") + std::to_string(id);
  }
  EXPECT_EQ(RecoverChanges(changes).code, 0u);
  EXPECT_EQ(store_.CallsOf("Del"), std::vector<std::string>{call + "]"});
}

TEST_F(CallHistoryRecoverTest, ATornChangeIsPassedOver) {
  for (const std::uint32_t id : {1u, 2u}) store_.Add(id);
  Bytes changes = Words({0, 1, 3, 0, 2, 3});
  changes.resize(23);
  EXPECT_EQ(RecoverChanges(changes).code, 0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(2));
}

// --- Failures ---

TEST_F(CallHistoryRecoverTest, AStoreThatIsNotLoadedTouchesNothing) {
  WriteFile(kCallTable, PlainCall(1));
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"CallLogStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(Recover(9, 1, u"", std::u16string(300, u'x')).code, 0x20000001u);
    EXPECT_EQ(Recover(9, 3).code, 0x20000001u);
    EXPECT_EQ(AllFiles().size(), 1u);
  }
}

TEST_F(CallHistoryRecoverTest, AnOverlongDirectoryIsRefusedBeforeTheStoreIsEmptied) {
  const Answer answer = Recover(9, 2, u"77", std::u16string(260, u'\\'));
  EXPECT_EQ(answer.code, 0x20000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_FALSE(Exists(kAnchorIni));
}

TEST_F(CallHistoryRecoverTest, AStoreThatCannotBeEmptiedKeepsEverything) {
  WriteFile(kCallTable, PlainCall(1));
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const ScriptedCallStore lacking({u"EXPCALLHISTORY_Sync_DelAll"}, address);
    EXPECT_EQ(Recover(9, 2).code, 0x20000002u);
    EXPECT_THAT(lacking.calls, IsEmpty());
  }
  ScriptedCallStore failing;
  failing.statuses["DelAll"] = 1;
  EXPECT_EQ(Recover(9, 2).code, 0x20000003u);
  EXPECT_THAT(failing.calls, ElementsAre("DelAll"));
  EXPECT_TRUE(Exists(kCallTable));
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
}

TEST_F(CallHistoryRecoverTest, AMissingTableIsFlaggedAsTheTable) {
  for (const std::uint32_t mode : {1u, 2u, 4u}) EXPECT_EQ(Recover(9, mode).code, 0x23000100u);
  EXPECT_THAT(store_.calls, ElementsAre("DelAll")) << "replacing empties the store before it misses the table";
  WriteFile(kCallChanges, {});
  EXPECT_EQ(Recover(9, 3).code, 0x23000100u);
  EXPECT_TRUE(Exists(kCallChanges));
}

TEST_F(CallHistoryRecoverTest, AMissingChangeListIsFlaggedAsSuch) {
  WriteFile(kCallTable, PlainCall(1));
  EXPECT_EQ(Recover(9, 3).code, 0x20200100u);
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(CallHistoryRecoverTest, AChangeListWithoutMemoryIsNone) {
  store_.Add(1);
  WriteFile(kCallTable, PlainCall(1));
  WriteFile(kCallChanges, Words({0, 1, 3}));
  bool anchor_is_kept = false;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == kAnchorIni && !anchor_is_kept) {
      anchor_is_kept = true;
      handset::FailCallOf("realloc", 1);
    }
  });
  EXPECT_EQ(Recover(9, 3).code, 0x20200020u);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_TRUE(Exists(kCallChanges));
  EXPECT_TRUE(Exists(kCallTable));
}

TEST_F(CallHistoryRecoverTest, RefusedDeletionsEndTheRecover) {
  store_.Add(1);
  store_.statuses["Del"] = 1;
  EXPECT_EQ(RecoverChanges(Words({0, 1, 3, 0, 7, 1}), PlainCall(7)).code, 0x20200009u);
  EXPECT_THAT(store_.calls, ElementsAre("Del [1]"));
  EXPECT_TRUE(Exists(kCallChanges));
  EXPECT_TRUE(Exists(kCallTable));
}

TEST_F(CallHistoryRecoverTest, RefusedCallsEndTheTable) {
  WriteFile(kCallTable, PlainCalls({7, 8, 9}));
  store_.fail_call = 2;
  EXPECT_EQ(Recover(9, 1).code, 0x23000007u);
  EXPECT_THAT(store_.calls, ElementsAre("Insert", "Insert"));
  EXPECT_TRUE(Exists(kCallTable));
  EXPECT_FALSE(Exists(kCallLog));
  EXPECT_FALSE(Exists(kCallIdMap));
  store_.statuses["Insert"] = 0x80000000;
  EXPECT_EQ(RecoverChanges(Words({0, 7, 1}), PlainCall(7)).code, 0x23000007u);
  store_.Add(8);
  store_.statuses["Update"] = 1;
  EXPECT_EQ(RecoverChanges(Words({0, 8, 2}), PlainCall(8)).code, 0x23000008u);
  EXPECT_TRUE(Exists(kCallChanges));
}

TEST_F(CallHistoryRecoverTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  struct Missing {
    const char16_t* name;
    std::uint32_t inserting, applying;
  };
  const Missing kMissing[] = {
      {u"EXPCALLHISTORY_Sync_GetAllRecNum", 0x25000002, 0x25000002},
      {u"EXPCALLHISTORY_Sync_GetAllidTime", 0x25000002, 0x25000002},
      {u"EXPCALLHISTORY_Sync_Read", 0, 0},
      {u"EXPCALLHISTORY_Sync_Insert", 0x23000002, 0x23000002},
      {u"EXPCALLHISTORY_Sync_Update", 0, 0x23000002},
      {u"EXPCALLHISTORY_Sync_Del", 0, 0x20200002},
      {u"EXPCALLHISTORY_Sync_DelAll", 0, 0},
  };
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(missing.name)));
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      const ScriptedCallStore lacking({missing.name}, address);
      WriteFile(kCallTable, {});
      EXPECT_EQ(Recover(9, 1).code, missing.inserting);
      EXPECT_EQ(RecoverChanges({}).code, missing.applying);
    }
  }
}

TEST_F(CallHistoryRecoverTest, AnUnreadableFileIsNotTakenForItsEnd) {
  const auto fail_reading = [](const char16_t* file) {
    handset::Observe([file](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == file) handset::FailCallOf("ReadFile", 1);
    });
  };
  fail_reading(kCallTable);
  WriteFile(kCallTable, PlainCall(1));
  EXPECT_EQ(Recover(9, 1).code, 0x23000200u);
  fail_reading(kCallChanges);
  EXPECT_EQ(RecoverChanges(Words({0, 1, 3}), PlainCall(1)).code, 0x20200200u);
  handset::Observe({});
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_TRUE(Exists(kCallTable));
}

TEST_F(CallHistoryRecoverTest, ASnapshotThatCannotBeRewrittenIsFlaggedAfterTheTableIsGone) {
  WriteFile(kCallTable, PlainCall(1));
  MakeDirectory(kCallLog);
  EXPECT_EQ(Recover(9, 1).code, 0x25000100u);
  EXPECT_FALSE(Exists(kCallTable));
  EXPECT_FALSE(Exists(kCallIdMap));
  std::filesystem::remove(handset::HostPath(kCallLog));
  store_.statuses["GetAllidTime"] = 1;
  WriteFile(kCallTable, PlainCall(1));
  EXPECT_EQ(Recover(9, 1).code, 0x25000005u);
  EXPECT_THAT(ReadFile(kCallLog), IsEmpty());
}

}  // namespace
}  // namespace qv_test
