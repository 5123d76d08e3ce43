// What only the quick dial does: it deletes its table before it exports, lists its records with SYSTEMTIMEs, and has
// two ids in an exchange record. All else is in the tests of the plain modules.
#include "tests/support/dial_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_dial_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class QuickDialTest : public AgentTest {
 protected:
  Answer ExportChanges(const Bytes& log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nQUCIKDAIL = 5");
    WriteFile(kDialLog, log);
    return Export(10, 3, u"5");
  }

  /// An exchange record that carries two ids.
  static Bytes DialOfTwoIds(std::uint32_t first, std::uint32_t second) {
    Bytes record = PlainDial(second);
    Put32(record, 0, first);
    return record;
  }

  ScriptedDialStore store_;
};

// --- The table ---

TEST_F(QuickDialTest, AnExportDeletesTheTableBeforeAnythingElseCanFail) {
  for (const std::uint32_t mode : {1u, 2u, 4u, 5u}) {
    const ScriptedDialStore lacking({u"Sync_GetAllRecNum"});
    WriteText(kDialTable, "old");
    EXPECT_EQ(Export(10, mode).code, 0x10000002u);
    EXPECT_FALSE(Exists(kDialTable));
  }
  WriteText(kDialTable, "old");
  MakeDirectory(kDialChanges);
  EXPECT_EQ(ExportChanges().code, 0x10000100u);
  EXPECT_FALSE(Exists(kDialTable));
}

TEST_F(QuickDialTest, ATableThatCannotBeDeletedIsOverwritten) {
  store_.Add(1);
  WriteText(kDialTable, std::string(1000, 'x'));
  handset::FailCallOf("DeleteFileW", 1);
  EXPECT_EQ(Export(10, 4).code, 0u);
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_EQ(ReadFile(kDialTable), PlainDial(1));
}

TEST_F(QuickDialTest, ATableThatCannotBeCreatedIsFlaggedWhenRecordsGoIntoIt) {
  MakeDirectory(kDialTable);
  EXPECT_EQ(Export(10, 1).code, 0x10000100u) << "of an empty store";
  EXPECT_EQ(ExportChanges().code, 0x10000100u) << "of an empty store";
  store_.Add(1);
  EXPECT_EQ(ExportChanges(Words({1, 0x30A84080, 0x01C60F49})).code, 0x10000100u) << "without changes";
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
  EXPECT_EQ(Export(10, 1).code, 0x11000100u);
  EXPECT_EQ(ExportChanges().code, 0x11000100u);
}

TEST_F(QuickDialTest, AnAllocationThatFailsCarriesNoFlag) {
  store_.Add(1);
  // The list, the records, one exchange record.
  for (const unsigned time : {1u, 2u, 3u}) {
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "DeleteFileW") handset::FailCallOf("realloc", time);
    });
    EXPECT_EQ(Export(10, 4).code, 0x10000010u) << time;
    EXPECT_TRUE(handset::FaultHappened());
  }
  handset::Observe({});
  EXPECT_FALSE(Exists(kDialTable));
}

TEST_F(QuickDialTest, DeletionsStandInTheChangeListWhenTheTableIsMadeEmptyBehindThem) {
  store_.Add(1);
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges(Words({1, 0x30A84080, 0x01C60F49, 8, 1, 1})).code, 0u);
  const std::vector<std::string> seen = events.Take();
  EXPECT_EQ(std::ranges::count(seen, "create Quickcmd.tbl"), 1);
  EXPECT_EQ(std::ranges::count(seen, "create Quickinfo.tbl"), 1);
  EXPECT_THAT(ReadFile(kDialTable), IsEmpty());
  EXPECT_EQ(ReadFile(kDialChanges), Words({0, 8, 3}));
}

TEST_F(QuickDialTest, TheAnchorsKeyIsSpelledAsAnchorFilesHaveIt) {
  store_.Add(1);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nQUICKDIAL = 5");
  EXPECT_EQ(Export(10, 3, u"5").mode, 1u);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nQUICKDIAL = 5\r\nQUCIKDAIL = 200612117210");
}

// --- The list's times ---

TEST_F(QuickDialTest, DayOfTheWeekAndMillisecondsOfAListedTimeDoNotCount) {
  store_.Add(1, coredll::SYSTEMTIME{2007, 3, 0, 5, 9, 4, 0, 0});
  store_.Add(2, coredll::SYSTEMTIME{2007, 3, 6, 5, 9, 4, 0, 999});
  store_.Add(3, coredll::SYSTEMTIME{2007, 3, 0xFFFF, 5, 9, 4, 0, 0xFFFF});
  EXPECT_EQ(Export(10, 1).code, 0u);
  EXPECT_EQ(ReadFile(kDialLog),
            Words({1, 0x36AB0000, 0x01C75F05, 2, 0x36AB0000, 0x01C75F05, 3, 0x36AB0000, 0x01C75F05}));
}

TEST_F(QuickDialTest, EachPartOfAListedTimeCounts) {
  const coredll::SYSTEMTIME kTimes[] = {{2008, 3, 1, 5, 9, 4, 0, 0}, {2007, 4, 1, 5, 9, 4, 0, 0},
                                        {2007, 3, 1, 6, 9, 4, 0, 0}, {2007, 3, 1, 5, 8, 4, 0, 0},
                                        {2007, 3, 1, 5, 9, 5, 0, 0}, {2007, 3, 1, 5, 9, 4, 1, 0}};
  Bytes log;
  Bytes changes;
  for (std::uint32_t id = 1; id <= 6; ++id) {
    store_.Add(id, kTimes[id - 1]);
    Append(log, Words({id, 0x36AB0000, 0x01C75F05}));  // 5 March 2007 09:04:00.
    Append(changes, Words({0, id, 2}));
  }
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_EQ(ReadFile(kDialChanges), changes);
}

TEST_F(QuickDialTest, AListedTimeThatDoesNotExistIsTheFileTimeZero) {
  store_.Add(1, coredll::SYSTEMTIME{});
  store_.Add(2, coredll::SYSTEMTIME{2007, 2, 0, 30, 9, 4, 0, 0});
  EXPECT_EQ(Export(10, 1).code, 0u);
  EXPECT_EQ(ReadFile(kDialLog), Words({1, 0, 0, 2, 0, 0}));
  EXPECT_EQ(ExportChanges(Words({1, 0, 0, 2, 0, 1})).code, 0u);
  EXPECT_EQ(ReadFile(kDialChanges), Words({0, 2, 2}));
}

// --- Ids ---

TEST_F(QuickDialTest, ARecordsIdStandsTwiceInItsExchangeRecord) {
  store_.Add(5, std::nullopt, StoreDial());
  EXPECT_EQ(Export(10, 4).code, 0u);
  const Bytes exchange = ReadFile(kDialTable);
  EXPECT_EQ(Get32(exchange, 0), kDialId);
  EXPECT_EQ(Get32(exchange, 136), kDialId);
}

TEST_F(QuickDialTest, ARecoverGoesByTheSecondIdEverywhere) {
  for (const std::uint32_t id : {1u, 2u}) store_.Add(id);
  Bytes table = DialOfTwoIds(1, 2);
  Append(table, DialOfTwoIds(61, 60));
  WriteFile(kDialTable, table);
  WriteFile(kDialChanges, Words({0, 2, 2, 0, 60, 1, 0, 61, 2}));
  EXPECT_EQ(Recover(10, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("Update"), ElementsAre("Update 2"));
  EXPECT_EQ(store_.At(1000).bytes, RecoveredPlainDial(60));
  EXPECT_EQ(ReadFile(kDialIdMap), Words({0, 1000, 60}));
  WriteFile(kDialTable, DialOfTwoIds(61, 60));
  EXPECT_EQ(Recover(10, 1).code, 0u);
  EXPECT_EQ(ReadFile(kDialIdMap), Words({0, 1001, 60}));
}

}  // namespace
}  // namespace qv_test
