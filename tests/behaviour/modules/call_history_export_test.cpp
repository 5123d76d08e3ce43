// Exports of the call history, full and incremental: the bytes of each file, and what the store is asked.
#include "tests/support/call_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_call_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CallHistoryExportTest : public AgentTest {
 protected:
  /// An incremental export against a stored anchor and this snapshot.
  Answer ExportChanges(const Bytes& log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nRECORDCALL = 5");
    WriteFile(kCallLog, log);
    return Export(9, 3, u"5");
  }

  static std::vector<std::uint32_t> IdsIn(const Bytes& table) {
    std::vector<std::uint32_t> ids;
    for (std::size_t i = 0; i < table.size(); i += kCallSize) ids.push_back(Get32(table, i));
    return ids;
  }

  /// The record that an export makes of a stored one.
  Bytes Exported(const Bytes& record) {
    store_.records.clear();
    store_.Add(9, 1, record);
    EXPECT_EQ(Export(9, 4).code, 0u);
    return ReadFile(kCallTable);
  }

  /// What an export makes of a call that is empty but for this time stamp.
  Bytes ExportedTime(std::u16string_view stamp) {
    Bytes record(180);
    PutText(record, 0, stamp);
    Put16(record, 168, 46000);
    return Exported(record);
  }

  static Bytes WithTime(const std::array<std::uint32_t, 6>& parts) {
    Bytes record(kCallSize);
    for (std::size_t i = 0; i < parts.size(); ++i) Put32(record, 4 + 4 * i, parts[i]);
    return record;
  }

  ScriptedCallStore store_;
};

// --- Records ---

TEST_F(CallHistoryExportTest, ACallTravelsFieldByField) {
  EXPECT_EQ(Exported(StoreCall()), ExchangeCall());
}

TEST_F(CallHistoryExportTest, EachByteOfACallGoesWhereItBelongsAndNowhereElse) {
  const Bytes full(180, 0x11);  // The time stamp has no digits.
  Bytes before(208);
  for (std::size_t i = 0; i < 4; ++i) before[i] = before[36 + i] = 0x11;
  before[40] = 0x61;  // 0x11 and 80.
  before[41] = before[170] = before[171] = 0x11;
  for (std::size_t i = 42; i < 102; ++i) before[i] = 0x11;   // 30 characters and a NUL.
  for (std::size_t i = 104; i < 168; ++i) before[i] = 0x11;  // 32 characters and a NUL.
  ASSERT_EQ(Exported(full), before);
  for (std::size_t i = 0; i < full.size(); ++i) {
    Bytes changed = full;
    changed[i] = 0x51;
    Bytes expected = before;
    if (i >= 30 && i < 90) expected[42 + i - 30] = 0x51;
    if (i >= 92 && i < 156) expected[104 + i - 92] = 0x51;
    if (i >= 160 && i < 164) expected[i - 160] = 0x51;
    if (i >= 164 && i < 168) expected[36 + i - 164] = 0x51;
    if (i == 168) expected[40] = 0xA1;
    if (i == 170) expected[41] = 0x51;
    if (i == 172) expected[170] = 0x51;
    if (i == 174) expected[171] = 0x51;
    EXPECT_EQ(Exported(changed), expected) << "store byte " << i;
  }
}

TEST_F(CallHistoryExportTest, EachTypeOfTheRangeHasItsByte) {
  Bytes expected;
  for (std::uint32_t i = 0; i < 256; ++i) {
    Bytes record(180);
    Put16(record, 168, static_cast<std::uint16_t>(46000 + i));
    store_.Add(i, 1, record);
    Bytes exchange(208);
    Put8(exchange, 40, static_cast<std::uint8_t>(i));
    Append(expected, exchange);
  }
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_EQ(ReadFile(kCallTable), expected);
}

TEST_F(CallHistoryExportTest, ATypeOutsideTheRangeIsTheLowByteOfItAnd80) {
  const std::pair<std::uint16_t, std::uint8_t> kTypes[] = {{45999, 255},  {46256, 0}, {0, 80},     {1, 81},
                                                           {175, 255},    {176, 0},   {65535, 79}, {0xB300, 80},
                                                           {0xB4AF, 255}, {0xB4B0, 0}};
  for (const auto& [type, byte] : kTypes) {
    Bytes record(180);
    Put16(record, 168, type);
    EXPECT_EQ(Exported(record).at(40), byte) << type;
  }
}

TEST_F(CallHistoryExportTest, EachDigitOfATimeStampHasItsPlace) {
  struct Digit {
    std::size_t part;
    std::uint32_t worth;
  };
  static constexpr Digit kDigits[14] = {{0, 1000}, {0, 100}, {0, 10}, {0, 1},  {1, 10}, {1, 1},  {2, 10},
                                        {2, 1},    {3, 10},  {3, 1},  {4, 10}, {4, 1},  {5, 10}, {5, 1}};
  for (std::size_t i = 0; i < 14; ++i) {
    std::u16string stamp(14, u'0');
    stamp[i] = u'7';
    std::array<std::uint32_t, 6> expected = {};
    expected.at(kDigits[i].part) = 7 * kDigits[i].worth;
    EXPECT_EQ(ExportedTime(stamp), WithTime(expected)) << "digit " << i;
  }
}

TEST_F(CallHistoryExportTest, ATimeStampIsNotJudged) {
  EXPECT_EQ(ExportedTime(u"99999999999999"), WithTime({9999, 99, 99, 99, 99, 99}));
  EXPECT_EQ(ExportedTime(u"20060230246161"), WithTime({2006, 2, 30, 24, 61, 61}));
}

TEST_F(CallHistoryExportTest, ATimeStampOfLessThanFourteenDigitsIsSixZeros) {
  for (const std::u16string_view stamp :
       {u"", u"2", u"2006121107021", u"2006-12-11 07:", u"200612110702 0", u"/0061211070210", u"2006121107021:",
        u"2006121107021\u0660", u"\uFF12006121107021", u"2006121107021\u0130", u"-2006121107021"}) {
    EXPECT_EQ(ExportedTime(stamp), WithTime({})) << testing::PrintToString(std::u16string(stamp));
  }
}

TEST_F(CallHistoryExportTest, WhatFollowsTheFourteenDigitsIsNotLookedAt) {
  EXPECT_EQ(ExportedTime(u"20060105090307x"), WithTime({2006, 1, 5, 9, 3, 7}));
  EXPECT_EQ(ExportedTime(u"200601050903078"), WithTime({2006, 1, 5, 9, 3, 7}));
}

TEST_F(CallHistoryExportTest, TextsEndAtTheirNul) {
  Bytes record(180, 0xFF);
  Put16(record, 30, u'1');
  Put16(record, 32, 0);
  Put16(record, 92, 0);
  const Bytes exchange = Exported(record);
  Bytes number(62);
  number[0] = '1';
  EXPECT_EQ(Bytes(exchange.begin() + 42, exchange.begin() + 104), number);
  EXPECT_EQ(Bytes(exchange.begin() + 104, exchange.begin() + 170), Bytes(66));
}

TEST_F(CallHistoryExportTest, ACallTheStoreDoesNotFillIsEmpty) {
  store_.Add(9, 1, StoreCall());
  store_.fills_nothing = {"Read"};
  EXPECT_EQ(Export(9, 1).code, 0u);
  Bytes expected(208);
  expected[40] = 80;  // A type of 0.
  EXPECT_EQ(ReadFile(kCallTable), expected);
}

// --- Full exports ---

TEST_F(CallHistoryExportTest, FullAndReplaceExportsWriteEverythingAndRememberIt) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    store_.records.clear();
    store_.Add(3, 0x0000000300000002);
    store_.Add(1, 0x0000000500000004);
    const Answer answer = Export(9, mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(3, 1)) << "in the store's order";
    EXPECT_EQ(ReadFile(kCallLog), Words({3, 2, 3, 1, 4, 5}));
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nRECORDCALL = 200612117210");
    EXPECT_FALSE(Exists(kCallChanges));
    EXPECT_FALSE(Exists(kCallIdMap));
  }
}

TEST_F(CallHistoryExportTest, PlainExportsLeaveNoAnchorAndNoSnapshot) {
  store_.Add(3);
  for (const std::uint32_t mode : {4u, 5u, 77u, 0x7FFFFFFFu}) {
    const Answer answer = Export(9, mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, u"77");
    EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(3));
    EXPECT_FALSE(Exists(kAnchorIni));
    EXPECT_FALSE(Exists(kCallLog));
  }
}

TEST_F(CallHistoryExportTest, ACallIdIsTheRecordsOwn) {
  store_.Add(3, 1, StoreCall());
  EXPECT_EQ(Export(9, 1).code, 0u);
  EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(kCallId));
  EXPECT_EQ(ReadFile(kCallLog), Words({3, 1, 0})) << "a snapshot has the listed one";
}

TEST_F(CallHistoryExportTest, CallsAreReadFiftyAtATime) {
  std::vector<std::uint32_t> expected;
  std::string reads[3] = {"Read [", "Read [", "Read ["};
  for (std::uint32_t id = 1; id <= 101; ++id) {
    store_.Add(id);
    expected.push_back(id);
    std::string& read = reads[(id - 1) / 50];
    read += (read.back() == '[' ? "" : " ") + std::to_string(id);
  }
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_THAT(store_.CallsOf("Read"), ElementsAre(reads[0] + "]", reads[1] + "]", "Read [101]"));
  EXPECT_THAT(store_.CallsOf("GetAllidTime"), ElementsAre("GetAllidTime room 101"));
  EXPECT_EQ(IdsIn(ReadFile(kCallTable)), expected);
}

TEST_F(CallHistoryExportTest, ExactlyFiftyCallsAreOneRead) {
  for (std::uint32_t id = 1; id <= 50; ++id) store_.Add(id);
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_EQ(store_.CallsOf("Read").size(), 1u);
}

TEST_F(CallHistoryExportTest, EachCallIsOneWrite) {
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.Add(id);
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == kCallTable) sizes.push_back(call.size);
  });
  EXPECT_EQ(Export(9, 1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
  handset::Observe({});
  EXPECT_THAT(sizes, ElementsAre(208, 208, 208, 208, 208, 208));
}

TEST_F(CallHistoryExportTest, AnEmptyStoreIsNoError) {
  WriteText(kCallTable, "old");
  WriteText(kCallLog, "old");
  EXPECT_EQ(Export(9, 1).code, 0u);
  EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
  EXPECT_THAT(ReadFile(kCallLog), IsEmpty());
  EXPECT_THAT(store_.calls, ElementsAre("GetAllRecNum", "GetAllRecNum"));
  EXPECT_EQ(Export(9, 4).code, 0u);
}

TEST_F(CallHistoryExportTest, AnExportTakesItsStepsInOrder) {
  store_.Add(7);
  RunEvents events(store_);
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_THAT(events.Take(),
              ElementsAre("create callinfo.tbl", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                          "find EXPCALLHISTORY_Sync_GetAllidTime", "find EXPCALLHISTORY_Sync_Read",
                          "create callinfo.tbl", "call GetAllRecNum", "call GetAllidTime room 1", "call Read [7]"));
}

TEST_F(CallHistoryExportTest, AnIncrementalExportTakesItsStepsInOrder) {
  store_.Add(7);
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_THAT(events.Take(),
              ElementsAre("open qvSyncAnchor.ini", "open qvSyncAnchor.ini", "create qvSyncAnchor.ini",
                          "create callinfo.tbl", "create callcmd.tbl", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                          "find EXPCALLHISTORY_Sync_GetAllidTime", "find EXPCALLHISTORY_Sync_Read",
                          "create callinfo.tbl", "call GetAllRecNum", "call GetAllidTime room 1", "open recordcall.log",
                          "call Read [7]", "create recordcall.log", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                          "find EXPCALLHISTORY_Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 1"));
}

TEST_F(CallHistoryExportTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  store_.Add(7);
  unsigned opened = 0;
  handset::Observe([&](const handset::Call& call) {
    if (call.function != "CreateFileW" || call.path == kAnchorIni) return;
    ++opened;
    const bool is_read = call.options[2] == 3;
    EXPECT_EQ(call.options[0], is_read ? 0x80000000u : 0x40000000u);
    EXPECT_EQ(call.options[1], 1u);
    EXPECT_EQ(call.options[2], is_read ? 3u : 2u);
  });
  EXPECT_EQ(ExportChanges().code, 0u);
  handset::Observe({});
  EXPECT_EQ(opened, 5u);
}

TEST_F(CallHistoryExportTest, AnExportNeedsNoEntryPointThatWrites) {
  ScriptedCallStore reading({u"EXPCALLHISTORY_Sync_Insert", u"EXPCALLHISTORY_Sync_Update", u"EXPCALLHISTORY_Sync_Del",
                             u"EXPCALLHISTORY_Sync_DelAll"});
  reading.Add(1);
  EXPECT_EQ(Export(9, 1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
}

// --- Incremental exports ---

TEST_F(CallHistoryExportTest, AnIncrementalExportWritesWhatChangedAndRemembersWhatIs) {
  store_.Add(5, 2);  // as it was
  store_.Add(9, 4);  // new
  store_.Add(2, 4);  // modified
  store_.Add(4, 2);  // moved back in time, which is a change too
  const Answer answer = ExportChanges(Words({8, 1, 1, 2, 2, 0, 5, 2, 0, 4, 4, 0, 7, 1, 1}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(ReadFile(kCallChanges), Words({0, 9, 1, 0, 2, 2, 0, 4, 2, 0, 8, 3, 0, 7, 3}));
  EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(9, 2, 4));
  EXPECT_THAT(store_.CallsOf("Read"), ElementsAre("Read [9 2 4]"));
  EXPECT_EQ(ReadFile(kCallLog), Words({5, 2, 0, 9, 4, 0, 2, 4, 0, 4, 2, 0}));
}

TEST_F(CallHistoryExportTest, ChangedCallsTravelLikeAllOthers) {
  store_.Add(kCallId, 1, StoreCall());
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kCallTable), ExchangeCall());
  EXPECT_EQ(ReadFile(kCallChanges), Words({0, kCallId, 1}));
}

TEST_F(CallHistoryExportTest, TheLowAndTheHighHalfOfATimeAreCompared) {
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.Add(id, 0x0000000500000004);
  EXPECT_EQ(ExportChanges(Words({1, 4, 5, 2, 3, 5, 3, 4, 6})).code, 0u);
  EXPECT_EQ(ReadFile(kCallChanges), Words({0, 2, 2, 0, 3, 2}));
}

TEST_F(CallHistoryExportTest, WithoutChangesNothingIsRead) {
  store_.Add(1, 2);
  EXPECT_EQ(ExportChanges(Words({1, 2, 0})).code, 0u);
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
  EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
  EXPECT_THAT(ReadFile(kCallChanges), IsEmpty());
}

TEST_F(CallHistoryExportTest, AnEmptiedStoreReportsNoDeletions) {
  EXPECT_EQ(ExportChanges(Words({1, 1, 1, 2, 2, 2})).code, 0u);
  EXPECT_THAT(ReadFile(kCallChanges), IsEmpty());
  EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
  EXPECT_THAT(ReadFile(kCallLog), IsEmpty());
}

TEST_F(CallHistoryExportTest, AnEmptyStoreNeedsNoSnapshot) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nRECORDCALL = 5");
  EXPECT_EQ(Export(9, 3, u"5").code, 0u);
}

TEST_F(CallHistoryExportTest, SnapshotsAndChangesHaveNoLimitAndATornEntryIsPassedOver) {
  store_.Add(1, 2);
  Bytes log = Words({1, 2, 0});
  std::vector<std::uint32_t> expected;
  for (std::uint32_t id = 2; id <= 2500; ++id) {
    Append(log, Words({id, 1, 1}));
    expected.insert(expected.end(), {0, id, 3});
  }
  Append(log, Bytes(11, 0x55));
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_EQ(ToWords(ReadFile(kCallChanges)), expected);
}

TEST_F(CallHistoryExportTest, WithoutItsAnchorAnIncrementalExportIsFull) {
  store_.Add(1, 2);
  for (const char* const stored :
       {"[ANCHORDATE]\r\nRECORDCALL = 6", "[ANCHORDATE]\r\nMMS = 5", "[ANCHORDATE]\r\nCALL = 5", ""}) {
    WriteText(kAnchorIni, stored);
    WriteFile(kCallLog, Words({1, 2, 0}));
    const Answer answer = Export(9, 3, u"5");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, 1u);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(1));
    EXPECT_FALSE(Exists(kCallChanges));
  }
}

TEST_F(CallHistoryExportTest, AnAnchorOfZerosIsNone) {
  store_.Add(1, 2);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nRECORDCALL = 00000000000000");
  EXPECT_EQ(Export(9, 3, u"00000000000000").mode, 1u);
}

// --- Failures ---

TEST_F(CallHistoryExportTest, AStoreThatIsNotLoadedTouchesNothing) {
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"CallLogStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(Export(9, 1, u"", std::u16string(300, u'x')).code, 0x10000001u);
    EXPECT_EQ(Export(9, 3).code, 0x10000001u);
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(CallHistoryExportTest, AnOverlongDirectoryIsRefusedBeforeAnythingMoves) {
  std::u16string path = u"\\sync";
  path.insert(0, 255, u'\\');
  const Answer answer = Export(9, 1, u"77", path);
  EXPECT_EQ(answer.code, 0x10000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_EQ(Export(9, 1, u"", path.substr(1)).code, 0u) << "259 characters are allowed";
  EXPECT_TRUE(Exists(kCallTable));
}

TEST_F(CallHistoryExportTest, ATableThatCannotBeWrittenCarriesNoFlag) {
  EXPECT_EQ(Export(9, 1, u"", u"\\nowhere").code, 0x10000100u);
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
  store_.Add(1);
  store_.Add(2);
  for (const unsigned time : {1u, 2u}) {
    handset::FailCallOf("CreateFileW", time);
    EXPECT_EQ(Export(9, 4).code, 0x10000100u);
    EXPECT_TRUE(handset::FaultHappened());
  }
  std::filesystem::remove(handset::HostPath(kCallTable));
  for (const std::uint64_t space : {0u, 207u, 208u, 415u}) {
    handset::SetFreeSpace(space);
    EXPECT_EQ(Export(9, 4).code, 0x10000100u) << space << " bytes free";
    std::filesystem::remove(handset::HostPath(kCallTable));
  }
  handset::SetFreeSpace(416);
  EXPECT_EQ(Export(9, 4).code, 0u);
}

TEST_F(CallHistoryExportTest, AChangeListThatCannotBeWrittenCarriesNoFlag) {
  store_.Add(1);
  MakeDirectory(kCallChanges);
  EXPECT_EQ(ExportChanges().code, 0x10000100u);
  EXPECT_THAT(ReadFile(kCallTable), IsEmpty()) << "the table is made before the change list";
}

TEST_F(CallHistoryExportTest, AMissingEntryPointLeavesEmptyFiles) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const auto* name :
         {u"EXPCALLHISTORY_Sync_GetAllRecNum", u"EXPCALLHISTORY_Sync_GetAllidTime", u"EXPCALLHISTORY_Sync_Read"}) {
      const ScriptedCallStore lacking({name}, address);
      WriteText(kCallTable, "of an earlier run");
      WriteText(kCallChanges, "of an earlier run");
      EXPECT_EQ(Export(9, 1).code, 0x10000002u);
      EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
      EXPECT_EQ(ExportChanges().code, 0x10000002u);
      EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
      EXPECT_THAT(ReadFile(kCallChanges), IsEmpty());
      EXPECT_EQ(Export(9, 1, u"", u"\\nowhere").code, 0x10000100u) << "the files come first";
      EXPECT_THAT(lacking.calls, IsEmpty());
    }
  }
}

TEST_F(CallHistoryExportTest, AStoreFailureCarriesNoFlagButTheSnapshots) {
  // The answering calls: list and read the calls, list them for the snapshot.
  const std::uint32_t kCodes[] = {0x10000005, 0x10000006, 0x15000005};
  for (unsigned n = 1; n <= 3; ++n) {
    ScriptedCallStore failing;
    failing.Add(1);
    failing.fail_call = n;
    EXPECT_EQ(Export(9, 1).code, kCodes[n - 1]) << "call " << n;
    ScriptedCallStore failing_changes;
    failing_changes.Add(1);
    failing_changes.fail_call = n;
    EXPECT_EQ(ExportChanges().code, kCodes[n - 1]) << "call " << n;
  }
}

TEST_F(CallHistoryExportTest, AnyStatusButZeroIsAFailure) {
  store_.Add(1);
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    store_.statuses["Read"] = status;
    EXPECT_EQ(Export(9, 1).code, 0x10000006u);
  }
}

TEST_F(CallHistoryExportTest, WithoutASnapshotAnIncrementalExportFailsWithItsFlag) {
  store_.Add(1);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nRECORDCALL = 5");
  EXPECT_EQ(Export(9, 3, u"5").code, 0x10100100u);
}

TEST_F(CallHistoryExportTest, ASnapshotThatCannotBeRewrittenIsFlagged) {
  MakeDirectory(kCallLog);
  EXPECT_EQ(Export(9, 1).code, 0x15000100u);
  EXPECT_TRUE(Exists(kCallTable));
}

TEST_F(CallHistoryExportTest, AFailedExportKeepsItsFilesAndTheSnapshot) {
  store_.Add(1);
  store_.statuses["Read"] = 1;
  EXPECT_EQ(ExportChanges(Words({9, 9, 0})).code, 0x10000006u);
  EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
  EXPECT_EQ(ReadFile(kCallLog), Words({9, 9, 0}));
  EXPECT_EQ(ReadFile(kCallChanges), Words({0, 1, 1, 0, 9, 3}));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nRECORDCALL = 200612117210");
}

TEST_F(CallHistoryExportTest, AFailedExportIsReturnedWithoutAStreamToo) {
  const ScriptedCallStore lacking({u"EXPCALLHISTORY_Sync_Read"});
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(9, 1, u"", kSync), nullptr), 0x00000002u);
}

TEST_F(CallHistoryExportTest, AbsurdCountsAreAMemoryFailure) {
  for (const std::uint32_t count : {0x10000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = count;
    EXPECT_EQ(Export(9, 1).code, 0x10000010u);
    EXPECT_EQ(ExportChanges().code, 0x10000010u);
  }
}

TEST_F(CallHistoryExportTest, AListLongerThanItsRoomIsCut) {
  store_.Add(1);
  store_.Add(2);
  for (const std::uint32_t count : {3u, 0xFFFFFFFFu}) {
    store_.claimed_listed = count;
    EXPECT_EQ(Export(9, 1).code, 0u);
    EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(1, 2));
    EXPECT_EQ(ReadFile(kCallLog), Words({1, 1, 0, 2, 1, 0}));
  }
}

TEST_F(CallHistoryExportTest, AListShorterThanItsCountIsTakenAsItIs) {
  store_.Add(1);
  store_.claimed_count = 3;
  EXPECT_EQ(Export(9, 1).code, 0u);
  EXPECT_THAT(IdsIn(ReadFile(kCallTable)), ElementsAre(1));
  EXPECT_EQ(ReadFile(kCallLog), Words({1, 1, 0}));
}

}  // namespace
}  // namespace qv_test
