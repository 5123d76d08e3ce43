// Exports of the tasks, where they are not those of any module of two tables: the bytes of each record, and what is
// left of a run in which something fails, of which nobody is told.
#include "tests/support/scripted_task_store.h"
#include "tests/support/task_records.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// How often each kind of item occurs.
using Counts = std::array<std::uint8_t, 3>;

void PutCounts(Bytes& record, const Counts& counts) {
  for (std::size_t kind = 0; kind < 3; ++kind) Put8(record, kTaskItems[kind].count_place, counts.at(kind));
}

class TasksExportTest : public AgentTest {
 protected:
  /// What an export makes of one task, which is listed as 9.
  Bytes Exported(const Bytes& task) {
    store_.tables[0].clear();
    store_.Add(0, 9, 1, task);
    EXPECT_EQ(Export(3, 4).code, 0u);
    return ReadFile(kTasks);
  }

  /// Task 3 and group 7.
  static void AddOneOfEach(ScriptedTaskStore& store) {
    store.Add(0, 3, 1);
    store.Add(1, 7, 1, TaskGroup(7));
  }

  static void StoreAnchor() { WriteText(kAnchorIni, "[ANCHORDATE]\r\nTASK = 5"); }
  /// Task 8 was there, and no group.
  static void WriteLogs() {
    WriteFile(kTaskLog, Words({8, 8, 0}));
    WriteFile(kTaskGroupLog, {});
  }
  /// An incremental export of what changed since then.
  Answer ExportChanges() {
    StoreAnchor();
    WriteLogs();
    return Export(3, 3, u"5");
  }

  // What a run without a failure leaves of one of each.
  const Bytes task_ = PlainTask(3);
  const Bytes group_ = TaskGroup(7);
  const Bytes task_log_ = Words({3, 1, 0});
  const Bytes group_log_ = Words({7, 1, 0});
  const Bytes task_changes_ = Words({0, 3, 1, 0, 8, 3});
  const Bytes group_changes_ = Words({1, 7, 1});

  ScriptedTaskStore store_;
};

// --- Records ---

TEST_F(TasksExportTest, ATaskTravelsAsItStandsUnderTheIdItIsListedBy) {
  store_.Add(0, kTaskId, 1, StoreTask());
  EXPECT_EQ(Export(3, 1).code, 0u);
  EXPECT_EQ(ReadFile(kTasks), ExchangeTask());
}

TEST_F(TasksExportTest, EachByteOfTheFixedPartGoesWhereItBelongsAndNowhereElse) {
  static constexpr CopiedBytes kCopied[] = {{4, 445, 4}, {450, 6, 450}, {458, 398, 458}};
  Bytes full(kTaskInStore, 0x11);
  PutCounts(full, {});
  const Bytes before = Exported(full);
  store_.tables[0].clear();
  std::vector<std::size_t> turned;
  for (std::size_t i = 0; i < kTaskFixedPart; ++i) {
    if (i == 449 || i == 456 || i == 457) continue;
    turned.push_back(i);
    Bytes task = full;
    task[i] ^= 0x40;
    store_.Add(0, 9, 1, task);
  }
  // Records are handed out by their ids.
  for (std::uint32_t i = 0; i < turned.size(); ++i) store_.tables[0][i].id = 1000 + i;
  ASSERT_EQ(Export(3, 4).code, 0u);
  const std::vector<Bytes> exported = Split(ReadFile(kTasks), kTaskFixedPart);
  ASSERT_EQ(exported.size(), turned.size());
  for (std::uint32_t i = 0; i < turned.size(); ++i) {
    Bytes expected = WithByteTurned(before, kCopied, turned[i]);
    Put32(expected, 0, 1000 + i);
    ASSERT_EQ(exported[i], expected) << "store byte " << turned[i];
  }
}

TEST_F(TasksExportTest, EachByteOfEachItemTravels) {
  for (Bytes task : {LowPositions(kTaskInStore), HighPositions(kTaskInStore)}) {
    PutCounts(task, {20, 44, 4});
    const Bytes exported = Exported(task);
    Put32(task, 0, 9);
    EXPECT_EQ(exported, task) << "with all its slots in use a task lies alike on both sides";
  }
}

TEST_F(TasksExportTest, ATaskHasAsManyItemsOfEachKindAsItCounts) {
  for (const Counts& counts : {Counts{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {3, 2, 1}, {19, 43, 3}, {20, 0, 4}}) {
    SCOPED_TRACE(testing::PrintToString(counts));
    Bytes task = LowPositions(kTaskInStore);
    PutCounts(task, counts);
    Bytes expected(task.begin(), task.begin() + kTaskFixedPart);
    Put32(expected, 0, 9);
    for (std::size_t kind = 0; kind < 3; ++kind) {
      const auto begin = task.begin() + static_cast<std::ptrdiff_t>(kTaskItems[kind].store);
      Append(expected, Bytes(begin, begin + static_cast<std::ptrdiff_t>(counts.at(kind) * kTaskItems[kind].size)));
    }
    EXPECT_EQ(Exported(task), expected);
  }
}

TEST_F(TasksExportTest, CountsBeyondTheSlotsAreCutToTheSlots) {
  for (const Counts& counts : {Counts{21, 45, 5}, {255, 255, 255}, {128, 44, 4}, {20, 128, 4}, {20, 44, 128}}) {
    SCOPED_TRACE(testing::PrintToString(counts));
    Bytes task = LowPositions(kTaskInStore);
    PutCounts(task, counts);
    const Bytes exported = Exported(task);
    PutCounts(task, {20, 44, 4});
    Put32(task, 0, 9);
    EXPECT_EQ(exported, task);
  }
}

TEST_F(TasksExportTest, AGroupTravelsAsItStands) {
  store_.Add(1, 6, 1, TaskGroup(5));
  for (std::uint32_t i = 0; i < kTaskGroupSize; ++i) {
    Bytes turned = TaskGroup(5);
    turned[i] ^= 0x40;
    store_.Add(1, 1000 + i, 1, turned);
  }
  EXPECT_EQ(Export(3, 1).code, 0u);
  const std::vector<Bytes> groups = Split(ReadFile(kTaskGroups), kTaskGroupSize);
  ASSERT_EQ(groups.size(), 1 + kTaskGroupSize);
  EXPECT_EQ(groups[0], TaskGroup(5)) << "also under another id than it was listed under";
  for (std::size_t i = 0; i < kTaskGroupSize; ++i) {
    static constexpr CopiedBytes kCopied[] = {{0, kTaskGroupSize, 0}};
    ASSERT_EQ(groups[1 + i], WithByteTurned(TaskGroup(5), kCopied, i)) << "byte " << i;
  }
}

TEST_F(TasksExportTest, ARecordThatTheStoreDoesNotFillIsEmpty) {
  store_.fills_nothing = {"Read"};
  store_.Add(0, 7, 1, StoreTask());
  store_.Add(1, 7, 1, TaskGroup(7));
  EXPECT_EQ(Export(3, 1).code, 0u);
  EXPECT_EQ(ReadFile(kTasks), PlainTask(7));
  EXPECT_EQ(ReadFile(kTaskGroups), Bytes(kTaskGroupSize));
}

TEST_F(TasksExportTest, ChangedRecordsTravelLikeAllOthers) {
  store_.Add(0, kTaskId, 1, StoreTask());
  store_.Add(1, 5, 1, TaskGroup());
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kTasks), ExchangeTask());
  EXPECT_EQ(ReadFile(kTaskGroups), TaskGroup());
}

// --- Failures, which end their own step and are not told ---

TEST_F(TasksExportTest, AStoreFailureEndsItsStepAlone) {
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    // The store's answering calls: list and read tasks, list and read groups, list both again.
    for (unsigned n = 1; n <= 6; ++n) {
      for (const bool is_incremental : {false, true}) {
        SCOPED_TRACE("call " + std::to_string(n) + (is_incremental ? " of the changes" : ""));
        ScriptedTaskStore failing;
        AddOneOfEach(failing);
        failing.fail_call = n;
        failing.failing_status = status;
        const Answer answer = is_incremental ? ExportChanges() : Export(3, 1);
        EXPECT_EQ(answer.code, 0u);
        EXPECT_EQ(answer.returned, 0u);
        EXPECT_EQ(answer.anchor, kNowAnchor);
        EXPECT_EQ(ReadFile(kTasks), n <= 2 ? Bytes() : task_);
        EXPECT_EQ(ReadFile(kTaskGroups), n == 3 || n == 4 ? Bytes() : group_);
        EXPECT_EQ(ReadFile(kTaskLog), n == 5 ? Bytes() : task_log_);
        EXPECT_EQ(ReadFile(kTaskGroupLog), n == 6 ? Bytes() : group_log_);
        if (!is_incremental) continue;
        Bytes changes = n == 1 ? Bytes() : task_changes_;
        if (n != 3) Append(changes, group_changes_);
        EXPECT_EQ(ReadFile(kTaskChanges), changes);
      }
    }
  }
}

TEST_F(TasksExportTest, AMissingEntryPointLeavesWhatNeedsItUndone) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const auto* name : {u"TD_Sync_GetAllRecNum", u"TD_Sync_GetAllidTime", u"TD_Sync_Read"}) {
      const bool lists = std::u16string_view(name) == u"TD_Sync_Read";
      ScriptedTaskStore lacking({name}, address);
      AddOneOfEach(lacking);
      for (const bool is_incremental : {false, true}) {
        lacking.calls.clear();
        EXPECT_EQ((is_incremental ? ExportChanges() : Export(3, 1)).code, 0u);
        EXPECT_THAT(ReadFile(kTasks), IsEmpty());
        EXPECT_THAT(ReadFile(kTaskGroups), IsEmpty());
        EXPECT_EQ(ReadFile(kTaskLog), lists ? task_log_ : Bytes());
        EXPECT_EQ(ReadFile(kTaskGroupLog), lists ? group_log_ : Bytes());
        if (is_incremental) {
          EXPECT_THAT(ReadFile(kTaskChanges), IsEmpty());
        }
        EXPECT_EQ(lacking.calls.size(), lists ? 4u : 0u) << "for the snapshots";
      }
    }
  }
}

TEST_F(TasksExportTest, TheEntryPointsAreFoundByTheirExactNames) {
  std::set<std::u16string> names;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "GetProcAddressW") names.emplace(call.path);
  });
  EXPECT_EQ(Export(3, 1).code, 0u);
  handset::Observe({});
  EXPECT_THAT(names, ElementsAre(u"TD_Sync_GetAllRecNum", u"TD_Sync_GetAllidTime", u"TD_Sync_Read"));
}

TEST_F(TasksExportTest, ATableThatCannotBeCreatedLeavesTheOther) {
  AddOneOfEach(store_);
  for (const bool is_incremental : {false, true}) {
    MakeDirectory(kTasks);
    EXPECT_EQ((is_incremental ? ExportChanges() : Export(3, 1)).code, 0u);
    EXPECT_EQ(ReadFile(kTaskGroups), group_);
    EXPECT_EQ(ReadFile(kTaskLog), task_log_);
    EXPECT_EQ(ReadFile(kTaskGroupLog), group_log_);
    if (is_incremental) {
      EXPECT_EQ(ReadFile(kTaskChanges), group_changes_);
    }
    for (const auto* table : {kTasks, kTaskGroups}) std::filesystem::remove(handset::HostPath(table));

    MakeDirectory(kTaskGroups);
    EXPECT_EQ((is_incremental ? ExportChanges() : Export(3, 1)).code, 0u);
    EXPECT_EQ(ReadFile(kTasks), task_);
    EXPECT_EQ(ReadFile(kTaskLog), task_log_);
    EXPECT_EQ(ReadFile(kTaskGroupLog), group_log_);
    if (is_incremental) {
      EXPECT_EQ(ReadFile(kTaskChanges), task_changes_);
    }
    for (const auto* table : {kTasks, kTaskGroups}) std::filesystem::remove(handset::HostPath(table));
  }
}

TEST_F(TasksExportTest, ATableThatCouldNotBeEmptiedAtFirstIsMadeAllTheSame) {
  AddOneOfEach(store_);
  for (const unsigned n : {1u, 2u}) {
    handset::FailCallOf("CreateFileW", n);
    EXPECT_EQ(Export(3, 4).code, 0u);
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_EQ(ReadFile(kTasks), task_);
    EXPECT_EQ(ReadFile(kTaskGroups), group_);
  }
}

TEST_F(TasksExportTest, ATableThatCannotBeOpenedAgainIsEmpty) {
  AddOneOfEach(store_);
  for (const unsigned n : {3u, 4u}) {
    for (const auto* table : {kTasks, kTaskGroups}) WriteText(table, "old");
    handset::FailCallOf("CreateFileW", n);
    EXPECT_EQ(Export(3, 4).code, 0u);
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_EQ(ReadFile(kTasks), n == 3 ? Bytes() : task_);
    EXPECT_EQ(ReadFile(kTaskGroups), n == 4 ? Bytes() : group_);
  }
}

TEST_F(TasksExportTest, WithoutAChangeListOnlySnapshotsAndAnchorMove) {
  AddOneOfEach(store_);
  for (const auto* table : {kTasks, kTaskGroups}) WriteText(table, "old");
  MakeDirectory(kTaskChanges);
  const Answer answer = ExportChanges();
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nTASK = 200612117210");
  for (const auto* table : {kTasks, kTaskGroups}) EXPECT_THAT(ReadFile(table), IsEmpty());
  EXPECT_EQ(ReadFile(kTaskLog), task_log_);
  EXPECT_EQ(ReadFile(kTaskGroupLog), group_log_);
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
}

TEST_F(TasksExportTest, ChangesThatCannotBeWrittenLeaveThoseOfTheOtherTable) {
  AddOneOfEach(store_);
  for (const unsigned n : {1u, 2u}) {
    unsigned writes = 0;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "WriteFile" && call.path == kTaskChanges && ++writes == n) {
        handset::FailCallOf("WriteFile", 1);
      }
    });
    EXPECT_EQ(ExportChanges().code, 0u);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_EQ(ReadFile(kTasks), n == 1 ? Bytes() : task_);
    EXPECT_EQ(ReadFile(kTaskGroups), n == 2 ? Bytes() : group_);
    EXPECT_EQ(ReadFile(kTaskChanges), n == 1 ? group_changes_ : task_changes_);
    EXPECT_EQ(ReadFile(kTaskLog), task_log_);
  }
}

TEST_F(TasksExportTest, WithoutASnapshotATableIsNotExportedAndHasOneFromThenOn) {
  AddOneOfEach(store_);
  StoreAnchor();
  WriteFile(kTaskGroupLog, {});
  EXPECT_EQ(Export(3, 3, u"5").code, 0u);
  EXPECT_THAT(ReadFile(kTasks), IsEmpty());
  EXPECT_EQ(ReadFile(kTaskGroups), group_);
  EXPECT_EQ(ReadFile(kTaskChanges), group_changes_);
  EXPECT_EQ(ReadFile(kTaskLog), task_log_);
  std::filesystem::remove(handset::HostPath(kTaskGroupLog));
  StoreAnchor();
  WriteFile(kTaskLog, Words({8, 8, 0}));
  EXPECT_EQ(Export(3, 3, u"5").code, 0u);
  EXPECT_EQ(ReadFile(kTasks), task_);
  EXPECT_THAT(ReadFile(kTaskGroups), IsEmpty());
  EXPECT_EQ(ReadFile(kTaskChanges), task_changes_);
  EXPECT_EQ(ReadFile(kTaskGroupLog), group_log_);
}

TEST_F(TasksExportTest, AnUnreadableSnapshotIsNotTakenForAnEmptyOne) {
  AddOneOfEach(store_);
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == kTaskLog) handset::FailCallOf("ReadFile", 1);
  });
  EXPECT_EQ(ExportChanges().code, 0u);
  handset::Observe({});
  EXPECT_THAT(ReadFile(kTasks), IsEmpty());
  EXPECT_EQ(ReadFile(kTaskGroups), group_);
  EXPECT_EQ(ReadFile(kTaskChanges), group_changes_);
}

TEST_F(TasksExportTest, ASnapshotThatCannotBeRewrittenLeavesTheOther) {
  AddOneOfEach(store_);
  MakeDirectory(kTaskLog);
  EXPECT_EQ(Export(3, 1).code, 0u);
  EXPECT_EQ(ReadFile(kTaskGroupLog), group_log_);
  std::filesystem::remove(handset::HostPath(kTaskLog));
  std::filesystem::remove(handset::HostPath(kTaskGroupLog));
  MakeDirectory(kTaskGroupLog);
  EXPECT_EQ(Export(3, 1).code, 0u);
  EXPECT_EQ(ReadFile(kTaskLog), task_log_);
}

TEST_F(TasksExportTest, AbsurdCountsLeaveEmptyFiles) {
  AddOneOfEach(store_);
  for (const std::uint32_t count : {0x10000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = count;
    EXPECT_EQ(ExportChanges().code, 0u);
    for (const auto* file : {kTasks, kTaskGroups, kTaskChanges, kTaskLog, kTaskGroupLog}) {
      EXPECT_THAT(ReadFile(file), IsEmpty());
    }
  }
}

TEST_F(TasksExportTest, ADirectoryThatIsNotThereCostsNoSnapshot) {
  AddOneOfEach(store_);
  EXPECT_EQ(Export(3, 1, u"", u"\\nowhere").code, 0u);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nTASK = 200612117210");
  EXPECT_EQ(ReadFile(kTaskLog), task_log_);
  EXPECT_EQ(ReadFile(kTaskGroupLog), group_log_);
}

TEST_F(TasksExportTest, NobodyIsToldWithoutAStreamEither) {
  const ScriptedTaskStore lacking({u"TD_Sync_Read"});
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(3, 1, u"", kSync), nullptr), 0u);
  EXPECT_EQ(LocalExport(3), 0u);
}

}  // namespace
}  // namespace qv_test
