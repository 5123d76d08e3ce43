// What only the graphic memo does: it looks its entry points up before it makes a file, makes its table twice, or not
// at all, and tells one lack of memory from another. All else is in the tests of the plain modules.
#include "tests/support/memo_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_memo_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class GraphicMemoTest : public AgentTest {
 protected:
  Answer ExportChanges(const Bytes& log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nGMEMO = 5");
    WriteFile(kMemoLog, log);
    return Export(13, 3, u"5");
  }

  /// What an export answers whose n-th allocation fails once it has looked at the store's number of records.
  std::uint32_t CodeWithoutMemory(std::uint32_t mode, unsigned n) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nGMEMO = 5");
    WriteFile(kMemoLog, Words({8, 1, 1}));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "GetProcAddressW" && call.path == u"DrawInfo_Read") handset::FailCallOf("realloc", n);
    });
    const Answer answer = Export(13, mode, u"5");
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened()) << "allocation " << n;
    return answer.code;
  }

  ScriptedMemoStore store_;
};

// --- An empty store ---

TEST_F(GraphicMemoTest, AnIncrementalExportOfAnEmptyStoreMakesNoTable) {
  RunEvents events(store_);
  const Answer answer = ExportChanges(Words({1, 1, 0}));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_FALSE(Exists(kMemoTable));
  EXPECT_THAT(ReadFile(kMemoChanges), IsEmpty());
  EXPECT_THAT(ReadFile(kMemoLog), IsEmpty());
  std::vector<std::string> seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.ends_with("qvSyncAnchor.ini"); });
  EXPECT_THAT(seen, ElementsAre("find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "find DrawInfo_Read",
                                "create gmemocmd.tbl", "call GetAllRecNum 0", "create gmemo.log",
                                "find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "call GetAllRecNum 0"));
}

TEST_F(GraphicMemoTest, AFullExportOfAnEmptyStoreMakesItsTableOnce) {
  RunEvents events(store_);
  EXPECT_EQ(Export(13, 4).code, 0u);
  EXPECT_THAT(events.Take(), ElementsAre("find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime",
                                         "find DrawInfo_Read", "create gmemoinfo.tbl", "call GetAllRecNum 0"));
  EXPECT_THAT(ReadFile(kMemoTable), IsEmpty());
}

// --- Files ---

TEST_F(GraphicMemoTest, DeletionsAloneLeaveAnEmptyTableAndStayInTheChangeList) {
  store_.Add(1);
  RunEvents events(store_);
  EXPECT_EQ(ExportChanges(Words({1, 1, 0, 8, 1, 1, 9, 1, 1})).code, 0u);
  const std::vector<std::string> seen = events.Take();
  EXPECT_EQ(std::ranges::count(seen, "create gmemoinfo.tbl"), 1);
  EXPECT_THAT(ReadFile(kMemoTable), IsEmpty());
  EXPECT_EQ(ReadFile(kMemoChanges), Words({0, 8, 3, 0, 9, 3}));
  EXPECT_EQ(ReadFile(kMemoLog), Words({1, 1, 0}));
}

TEST_F(GraphicMemoTest, ATableIsFlaggedOnlyWhereRecordsGoIntoIt) {
  store_.Add(1);
  handset::FailCallOf("CreateFileW", 1);
  EXPECT_EQ(Export(13, 4).code, 0x10000100u);
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(store_.calls, IsEmpty());
  handset::FailCallOf("CreateFileW", 2);
  EXPECT_EQ(Export(13, 4).code, 0x11000100u);
  EXPECT_TRUE(handset::FaultHappened());
  std::filesystem::remove(handset::HostPath(kMemoTable));
  MakeDirectory(kMemoTable);
  EXPECT_EQ(ExportChanges(Words({1, 1, 0})).code, 0x10000100u) << "without changes";
  EXPECT_EQ(ExportChanges().code, 0x11000100u);
}

TEST_F(GraphicMemoTest, EntryPointsAreMissedBeforeAnyFileIsMade) {
  const ScriptedMemoStore lacking({u"DrawInfo_Read"});
  EXPECT_EQ(Export(13, 1, u"", u"\\nowhere").code, 0x10000002u);
  EXPECT_EQ(ExportChanges().code, 0x10000002u);
  EXPECT_FALSE(Exists(kMemoTable));
  EXPECT_FALSE(Exists(kMemoChanges));
}

// --- Memory ---

TEST_F(GraphicMemoTest, AFullExportWithoutMemoryHasOneNumberForIt) {
  store_.Add(1);
  // The list, the records, one exchange record.
  for (const unsigned n : {1u, 2u, 3u}) EXPECT_EQ(CodeWithoutMemory(1, n), 0x10000010u);
}

TEST_F(GraphicMemoTest, AnIncrementalExportWithoutMemoryForTheRecordsHasAnotherNumber) {
  store_.Add(1);
  EXPECT_EQ(CodeWithoutMemory(3, 1), 0x10000010u) << "the list";
  EXPECT_EQ(CodeWithoutMemory(3, 2), 0x10100010u) << "the snapshot";
  // The snapshot's ids in order, and which of its entries are still there.
  unsigned n = 3;
  while (CodeWithoutMemory(3, n) != 0x10000020u) ASSERT_LT(n++, 8u);
  EXPECT_EQ(CodeWithoutMemory(3, n + 1), 0x10000020u) << "one exchange record";
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
  EXPECT_FALSE(Exists(kMemoTable));
  EXPECT_EQ(ReadFile(kMemoChanges), Words({0, 1, 1, 0, 8, 3}));
  EXPECT_EQ(ReadFile(kMemoLog), Words({8, 1, 1}));
}

// --- The table that calls name ---

TEST_F(GraphicMemoTest, TheStoreIsAlwaysAskedForTableZero) {
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.Add(id);
  EXPECT_EQ(Export(13, 1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
  WriteFile(kMemoTable, TableOf(PlainMemo, {2, 60}));
  WriteFile(kMemoChanges, Words({7, 1, 3, 1, 3, 3, 0, 2, 2, 0, 60, 1}));
  EXPECT_EQ(Recover(13, 3).code, 0u);
  const std::set<std::string> calls(store_.calls.begin(), store_.calls.end());
  EXPECT_THAT(calls, ElementsAre("Del 0 [1 3]", "GetAllRecNum 0", "GetAllidTime 0 room 2", "GetAllidTime 0 room 3",
                                 "Insert 0", "Read 0 [1 2 3]", "Update 0 id 2"));
}

}  // namespace
}  // namespace qv_test
