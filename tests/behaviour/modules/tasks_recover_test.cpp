// Recovers of the tasks, where they are not those of any module of two tables: the bytes of each record, and what is
// left of a run in which something fails, of which nobody is told.
#include "tests/support/scripted_task_store.h"
#include "tests/support/task_records.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// An exchange record with so many items of each kind.
Bytes TaskWithItems(std::uint32_t id, const std::array<std::uint8_t, 3>& counts, const Bytes& items = {}) {
  Bytes task = PlainTask(id);
  for (std::size_t kind = 0; kind < 3; ++kind) Put8(task, kTaskItems[kind].count_place, counts.at(kind));
  Append(task, items);
  return task;
}

class TasksRecoverTest : public AgentTest {
 protected:
  static void Place(const Bytes& tasks, const Bytes& groups = {}) {
    WriteFile(kTasks, tasks);
    WriteFile(kTaskGroups, groups);
  }
  static void PlaceChanges(const Bytes& changes, const Bytes& tasks = {}, const Bytes& groups = {}) {
    WriteFile(kTaskChanges, changes);
    Place(tasks, groups);
  }

  /// Of which nobody hears more than that it is over; what the desktop placed is gone.
  void RunRecover(std::uint32_t mode) {
    for (const auto* file : {kAnchorIni, kTaskLog, kTaskGroupLog, kTaskIdMap}) {
      std::filesystem::remove(handset::HostPath(file));
    }
    const Answer answer = Recover(3, mode);
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_FALSE(Exists(kTasks));
    EXPECT_FALSE(Exists(kTaskGroups));
    EXPECT_FALSE((mode == 3 || mode == 5) && Exists(kTaskChanges));
    const bool is_remembered = mode < 4;
    EXPECT_EQ(answer.anchor, is_remembered ? kNowAnchor : u"");
    EXPECT_EQ(Exists(kAnchorIni), is_remembered);
    for (const auto* file : {kTaskLog, kTaskGroupLog, kTaskIdMap}) EXPECT_EQ(Exists(file), is_remembered);
  }

  /// What the store gets of one task.
  Bytes Recovered(const Bytes& task) {
    store_.tables[0].clear();
    Place(task);
    RunRecover(4);
    EXPECT_THAT(store_.tables[0], SizeIs(1));
    return store_.tables[0].empty() ? Bytes() : store_.tables[0][0].bytes;
  }

  void ClearStore() {
    for (auto& table : store_.tables) table.clear();
    store_.calls.clear();
    store_.next_id = 1000;
  }

  ScriptedTaskStore store_;
};

// --- Records ---

TEST_F(TasksRecoverTest, ATaskReachesTheStoreAsItStands) {
  EXPECT_EQ(Recovered(ExchangeTask()), RecoveredTask());
  EXPECT_EQ(store_.tables[0].at(0).group, kTaskGroup);
}

TEST_F(TasksRecoverTest, EachByteOfTheFixedPartGoesWhereItBelongsAndNowhereElse) {
  static constexpr CopiedBytes kCopied[] = {{0, 449, 0}, {450, 6, 450}, {458, 398, 458}};
  Bytes full(kTaskFixedPart, 0x11);
  for (const std::size_t count : {449u, 456u, 457u}) Put8(full, count, 0);
  const Bytes before = Recovered(full);
  Bytes tasks;
  for (std::size_t i = 0; i < kTaskFixedPart; ++i) {
    Bytes task = full;
    if (i != 449 && i != 456 && i != 457) task[i] ^= 0x40;
    Append(tasks, task);
  }
  store_.tables[0].clear();
  Place(tasks);
  RunRecover(4);
  ASSERT_THAT(store_.tables[0], SizeIs(kTaskFixedPart));
  for (std::size_t i = 0; i < kTaskFixedPart; ++i) {
    ASSERT_EQ(store_.tables[0][i].bytes, WithByteTurned(before, kCopied, i)) << "exchange byte " << i;
    ASSERT_EQ(store_.tables[0][i].group, Get32(store_.tables[0][i].bytes, 4));
  }
}

TEST_F(TasksRecoverTest, EachByteOfEachItemTravels) {
  for (Bytes task : {LowPositions(kTaskInStore), HighPositions(kTaskInStore)}) {
    Put8(task, 449, 20);
    Put8(task, 456, 44);
    Put8(task, 457, 4);
    EXPECT_EQ(Recovered(task), task) << "with all its slots in use a task lies alike on both sides";
  }
}

TEST_F(TasksRecoverTest, ItemsFillTheirSlotsFromTheFirst) {
  const Bytes items = Items(1, 3 * 80 + 2 * 144 + 6476, 9);
  const auto part = [&](std::size_t begin, std::size_t size) {
    const auto at = items.begin() + static_cast<std::ptrdiff_t>(begin);
    return Bytes(at, at + static_cast<std::ptrdiff_t>(size));
  };
  Bytes expected = TaskWithItems(1, {3, 2, 1});
  expected.resize(kTaskInStore);
  PutBytes(expected, 856, part(0, 240));
  PutBytes(expected, 2456, part(240, 288));
  PutBytes(expected, 8792, part(528, 6476));
  EXPECT_EQ(Recovered(TaskWithItems(1, {3, 2, 1}, items)), expected);
  Bytes last = TaskWithItems(1, {0, 0, 1}, part(528, 6476));
  Append(last, TaskWithItems(2, {}));
  store_.tables[0].clear();
  Place(last);
  RunRecover(4);
  ASSERT_THAT(store_.tables[0], SizeIs(2));
  EXPECT_EQ(store_.tables[0][1].bytes, RecoveredPlainTask(2)) << "nothing is left of the task before it";
}

TEST_F(TasksRecoverTest, AGroupReachesTheStoreAsItStandsWithItsValue) {
  Bytes groups = TaskGroup(5, 0x1234);
  for (std::size_t i = 0; i < kTaskGroupSize; ++i) {
    Bytes turned = TaskGroup(5, 0x1234);
    turned[i] ^= 0x40;
    Append(groups, turned);
  }
  Place({}, groups);
  RunRecover(4);
  const auto& applied = store_.tables[1];
  ASSERT_THAT(applied, SizeIs(1 + kTaskGroupSize));
  EXPECT_EQ(applied[0].bytes, TaskGroup(5, 0x1234));
  EXPECT_EQ(applied[0].group, 0x1234u);
  for (std::size_t i = 0; i < kTaskGroupSize; ++i) {
    static constexpr CopiedBytes kCopied[] = {{0, kTaskGroupSize, 0}};
    ASSERT_EQ(applied[1 + i].bytes, WithByteTurned(TaskGroup(5, 0x1234), kCopied, i)) << "byte " << i;
    ASSERT_EQ(applied[1 + i].group, Get32(applied[1 + i].bytes, 250) & 0xFFFF);
  }
}

TEST_F(TasksRecoverTest, UpdatesCarryTheSame) {
  store_.Add(0, kTaskId, 1);
  store_.Add(1, 5, 1);
  PlaceChanges(Words({0, kTaskId, 2, 1, 5, 2}), ExchangeTask(), TaskGroup(5, 0x4321));
  RunRecover(3);
  EXPECT_EQ(store_.At(0, kTaskId).bytes, RecoveredTask());
  EXPECT_EQ(store_.At(0, kTaskId).group, kTaskGroup);
  EXPECT_EQ(store_.At(1, 5).bytes, TaskGroup(5, 0x4321));
  EXPECT_EQ(store_.At(1, 5).group, 0x4321u);
  EXPECT_THAT(ReadFile(kTaskIdMap), IsEmpty());
}

TEST_F(TasksRecoverTest, ANewTaskOfAChangeListReachesTheStoreAsItStands) {
  PlaceChanges(Words({0, kTaskId, 1, 1, kTaskGroup, 1}), ExchangeTask(), TaskGroup(kTaskGroup));
  RunRecover(3);
  Bytes expected = RecoveredTask();
  Put32(expected, 4, 1000);
  EXPECT_EQ(store_.At(0, 1001).bytes, expected);
  EXPECT_EQ(store_.At(0, 1001).group, 1000u);
  EXPECT_EQ(ReadFile(kTaskIdMap), Words({1, 1000, kTaskGroup, 0, 1001, kTaskId}));
}

TEST_F(TasksRecoverTest, GroupsOfAChangeListStandBackToBack) {
  Bytes groups;
  Bytes changes;
  for (std::uint32_t id = 1; id <= 60; ++id) {
    Append(groups, TaskGroup(id));
    Append(changes, Words({1, id, 1}));
  }
  PlaceChanges(changes, {}, groups);
  RunRecover(3);
  EXPECT_THAT(store_.tables[1], SizeIs(60));
}

// --- Torn and absurd tables ---

TEST_F(TasksRecoverTest, ATornTaskIsUsedAsReadTheRestBeingZero) {
  Bytes whole = Items(1, kTaskFixedPart, 0x21);
  for (const std::size_t count : {449u, 456u, 457u}) Put8(whole, count, 0);
  for (std::size_t size = 1; size < kTaskFixedPart; ++size) {
    Bytes torn = whole;
    torn.resize(size);
    Bytes expected = torn;
    expected.resize(kTaskInStore);
    ASSERT_EQ(Recovered(torn), expected) << size << " bytes";
  }
}

TEST_F(TasksRecoverTest, ATornGroupIsUsedAsReadTheRestBeingZero) {
  for (const std::size_t size : {1u, 4u, 50u, 251u, 252u, 287u}) {
    ClearStore();
    Bytes torn = TaskGroup(9, 0x1234);
    torn.resize(size);
    Place({}, torn);
    RunRecover(4);
    torn.resize(kTaskGroupSize);
    EXPECT_EQ(store_.tables[1].at(0).bytes, torn);
    EXPECT_EQ(store_.tables[1].at(0).group, size < 252 ? size < 251 ? 0u : 0x34u : 0x1234u);
  }
}

TEST_F(TasksRecoverTest, ATaskTornInItsItemsEndsItsTable) {
  Bytes whole = PlainTask(1);
  Append(whole, TaskWithItems(2, {1, 1, 1}, Items(1, 80 + 144 + 6476, 3)));
  for (const std::size_t cut : {1u, 6475u, 6476u, 6477u, 6619u, 6620u, 6621u, 6699u, 6700u}) {
    SCOPED_TRACE(cut);
    for (const std::uint32_t mode : {1u, 3u}) {
      ClearStore();
      Bytes torn = whole;
      torn.resize(whole.size() - cut);
      PlaceChanges(Words({0, 1, 1, 0, 2, 1}), torn, TaskGroup(4));
      RunRecover(mode);
      EXPECT_THAT(store_.CallsOf("Insert"), SizeIs(mode == 1 ? 2 : 1)) << "the task before it was applied";
      EXPECT_EQ(ReadFile(kTaskIdMap), mode == 1 ? Words({1, 1000, 4, 0, 1001, 1}) : Words({0, 1000, 1}));
    }
  }
}

TEST_F(TasksRecoverTest, CountsBeyondTheSlotsEndTheTable) {
  using Counts = std::array<std::uint8_t, 3>;
  for (const Counts& counts : {Counts{21, 0, 0},
                               {255, 0, 0},
                               {128, 0, 0},
                               {0, 45, 0},
                               {0, 128, 0},
                               {0, 255, 0},
                               {0, 0, 5},
                               {0, 0, 128},
                               {0, 0, 255}}) {
    SCOPED_TRACE(testing::PrintToString(counts));
    for (const std::size_t behind : {std::size_t{0}, std::size_t{256 * 6476}}) {
      ClearStore();
      Bytes tasks = PlainTask(1);
      Append(tasks, TaskWithItems(2, counts, Bytes(behind)));
      Place(tasks);
      RunRecover(4);
      EXPECT_THAT(store_.Ids(0), ElementsAre(1000));
    }
  }
}

TEST_F(TasksRecoverTest, AMaimedTaskThatNobodyWantsEndsTheTableToo) {
  store_.Add(0, 3, 1);
  Bytes tasks = TaskWithItems(2, {0, 0, 5});
  Append(tasks, PlainTask(3));
  PlaceChanges(Words({0, 3, 2}), tasks);
  RunRecover(3);
  EXPECT_THAT(store_.CallsOf("Update"), IsEmpty()) << "where the next task begins is not known";
}

// --- Emptying the store ---

TEST_F(TasksRecoverTest, AStoreThatLacksWhatEmptiesItGetsNothing) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const std::uint32_t mode : {1u, 2u, 4u, 6u}) {
      ScriptedTaskStore lacking({u"TD_Sync_DelAll"}, address);
      lacking.Add(0, 1, 1);
      Place(PlainTask(2), TaskGroup(2));
      RunRecover(mode);
      EXPECT_THAT(lacking.Ids(0), ElementsAre(1));
      EXPECT_THAT(lacking.calls, SizeIs(mode < 4 ? 3 : 0)) << "for the snapshots: the groups have none to list";
      if (mode < 4) {
        EXPECT_THAT(ReadFile(kTaskIdMap), IsEmpty());
      }
    }
  }
}

TEST_F(TasksRecoverTest, AStoreThatRefusesToBeEmptiedGetsTheTablesAllTheSame) {
  for (const std::uint32_t mode : {1u, 2u, 4u, 6u}) {
    for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
      ClearStore();
      store_.statuses["DelAll"] = status;
      store_.Add(0, 1, 1);
      Place(PlainTask(2), TaskGroup(2));
      RunRecover(mode);
      EXPECT_THAT(store_.Ids(0), ElementsAre(1, 1001));
      EXPECT_THAT(store_.Ids(1), ElementsAre(1000));
      EXPECT_EQ(store_.calls.front(), "DelAll");
    }
  }
}

TEST_F(TasksRecoverTest, AChangeListNeedsNothingThatEmptiesTheStore) {
  for (const std::uint32_t mode : {3u, 5u}) {
    ScriptedTaskStore lacking({u"TD_Sync_DelAll"});
    PlaceChanges(Words({0, 2, 1}), PlainTask(2));
    RunRecover(mode);
    EXPECT_THAT(lacking.Ids(0), ElementsAre(1000));
  }
}

// --- The change list ---

TEST_F(TasksRecoverTest, WithoutAChangeListNothingIsApplied) {
  store_.Add(0, 2, 1);
  for (const std::uint32_t mode : {3u, 5u}) {
    Place(PlainTask(2), TaskGroup(2));
    RunRecover(mode);
    EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
    EXPECT_THAT(store_.CallsOf("DelAll"), IsEmpty());
    if (mode == 3) {
      EXPECT_THAT(ReadFile(kTaskIdMap), IsEmpty());
    }
  }
  Place(PlainTask(2), TaskGroup(2));
  EXPECT_EQ(LocalRecover(3), 0u);
  EXPECT_FALSE(Exists(kTasks));
  EXPECT_FALSE(Exists(kTaskGroups));
  EXPECT_THAT(store_.Ids(0), ElementsAre(2));
  EXPECT_THAT(store_.CallsOf("Insert"), IsEmpty());
}

TEST_F(TasksRecoverTest, AChangeListThatCannotBeReadIsNoneAndIsDeleted) {
  for (const std::uint32_t mode : {3u, 5u}) {
    ClearStore();
    store_.Add(0, 1, 1);
    PlaceChanges(Words({0, 1, 3, 0, 2, 1}), PlainTask(2), TaskGroup(2));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == kTaskChanges) handset::FailCallOf("ReadFile", 1);
    });
    RunRecover(mode);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_THAT(store_.Ids(0), ElementsAre(1));
    EXPECT_THAT(store_.tables[1], IsEmpty());
  }
}

TEST_F(TasksRecoverTest, AChangeListWithoutMemoryIsNoneAndIsDeleted) {
  store_.Add(0, 1, 1);
  PlaceChanges(Words({0, 1, 3, 0, 2, 1}), PlainTask(2), TaskGroup(2));
  handset::Observe([](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == kAnchorIni) handset::FailCallOf("realloc", 1);
  });
  RunRecover(3);
  handset::Observe({});
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(store_.Ids(0), ElementsAre(1));
  EXPECT_THAT(store_.tables[1], IsEmpty());
}

TEST_F(TasksRecoverTest, DeletionsOfAnyOtherTableArePassedOver) {
  for (std::uint32_t table = 0; table < 2; ++table) store_.Add(table, 1, 1);
  PlaceChanges(Words({2, 1, 3, 0x100, 1, 3, 0x10001, 1, 3, 0xFFFFFFFF, 1, 3}));
  RunRecover(3);
  EXPECT_THAT(store_.CallsOf("Del"), IsEmpty());
}

TEST_F(TasksRecoverTest, WhatADeletionAnswersIsNotLookedAt) {
  for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
    ClearStore();
    store_.statuses["Del"] = status;
    PlaceChanges(Words({0, 1, 3, 1, 2, 3, 0, 7, 1, 1, 8, 1}), PlainTask(7, 8), TaskGroup(8));
    RunRecover(3);
    store_.calls.resize(4);
    EXPECT_THAT(store_.calls, ElementsAre("Del 0 [1]", "Del 1 [2]", "Insert 1 group 4660", "Insert 0 group 1000"));
  }
}

TEST_F(TasksRecoverTest, AStoreThatCannotDeleteIsStillToldTheRest) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    ScriptedTaskStore lacking({u"TD_Sync_Del"}, address);
    lacking.Add(0, 1, 1);
    PlaceChanges(Words({0, 1, 3, 0, 7, 1}), PlainTask(7));
    RunRecover(3);
    EXPECT_THAT(lacking.Ids(0), ElementsAre(1, 1000));
  }
}

// --- Other failures, which end their own step and are not told ---

TEST_F(TasksRecoverTest, AMissingTableLeavesTheOther) {
  for (const std::uint32_t mode : {1u, 2u, 3u, 4u, 5u}) {
    SCOPED_TRACE(mode);
    ClearStore();
    WriteFile(kTaskChanges, Words({0, 7, 1, 1, 8, 1}));
    WriteFile(kTasks, PlainTask(7, 8));
    RunRecover(mode);
    EXPECT_THAT(store_.tables[0], SizeIs(1)) << "whether or not there are groups";
    EXPECT_EQ(store_.tables[0].at(0).group, 8u);
    if (mode < 4) {
      EXPECT_EQ(ReadFile(kTaskIdMap), Words({0, 1000, 7}));
    }
    ClearStore();
    WriteFile(kTaskChanges, Words({0, 7, 1, 1, 8, 1}));
    WriteFile(kTaskGroups, TaskGroup(8));
    RunRecover(mode);
    EXPECT_THAT(store_.tables[1], SizeIs(1));
    if (mode < 4) {
      EXPECT_EQ(ReadFile(kTaskIdMap), Words({1, 1000, 8}));
    }
  }
}

TEST_F(TasksRecoverTest, ARefusedRecordEndsItsTableAlone) {
  Bytes tasks = PlainTask(6, 8);
  Append(tasks, PlainTask(7, 9));
  Bytes groups = TaskGroup(8);
  Append(groups, TaskGroup(9));
  for (const std::uint32_t mode : {1u, 3u}) {
    const unsigned before = mode == 1 ? 1 : 0;  // The store is emptied.
    for (unsigned n = 1; n <= 4; ++n) {
      SCOPED_TRACE("insert " + std::to_string(n) + " of mode " + std::to_string(mode));
      ScriptedTaskStore failing;
      failing.fail_call = before + n;
      failing.failing_status = 1;
      PlaceChanges(Words({0, 6, 1, 0, 7, 1, 1, 8, 1, 1, 9, 1}), tasks, groups);
      RunRecover(mode);
      Bytes id_map;
      switch (n) {
        case 1: id_map = Words({0, 1000, 6, 0, 1001, 7}); break;
        case 2: id_map = Words({1, 1000, 8, 0, 1001, 6, 0, 1002, 7}); break;
        case 3: id_map = Words({1, 1000, 8, 1, 1001, 9}); break;
        default: id_map = Words({1, 1000, 8, 1, 1001, 9, 0, 1002, 6}); break;
      }
      EXPECT_EQ(ReadFile(kTaskIdMap), id_map);
      if (n == 1) {
        EXPECT_EQ(failing.tables[0].at(0).group, 8u) << "group 8 did not get in";
      }
      if (n == 2) {
        EXPECT_EQ(failing.tables[0].at(0).group, 1000u);
      }
      EXPECT_THAT(failing.CallsOf("Insert"), SizeIs(n % 2 == 1 ? 3 : 4)) << "the table ends with the refusal";
    }
  }
}

TEST_F(TasksRecoverTest, ARefusedUpdateEndsItsTableAlone) {
  Bytes tasks = PlainTask(6);
  Append(tasks, PlainTask(7));
  Bytes groups = TaskGroup(8);
  Append(groups, TaskGroup(9));
  for (const std::uint32_t status : {1u, 0x80000000u, 0xFFFFFFFFu}) {
    store_.calls.clear();
    store_.statuses["Update"] = status;
    PlaceChanges(Words({0, 6, 2, 0, 7, 2, 1, 8, 2, 1, 9, 2}), tasks, groups);
    RunRecover(3);
    EXPECT_THAT(store_.CallsOf("Update"), ElementsAre("Update 1 id 8 group 4660", "Update 0 id 6 group 0"));
  }
}

TEST_F(TasksRecoverTest, AMissingEntryPointLeavesWhatNeedsItUndone) {
  struct Missing {
    const char16_t* name;
    std::size_t inserted, applied, logged;  ///< Records in the store and in the snapshots.
  };
  const Missing kMissing[] = {
      {u"TD_Sync_GetAllRecNum", 1, 1, 0}, {u"TD_Sync_GetAllidTime", 1, 1, 0}, {u"TD_Sync_Read", 1, 1, 1},
      {u"Td_Sync_Insert", 0, 0, 1},       {u"TD_Sync_Update", 1, 0, 1},
  };
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(missing.name)));
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      for (const bool is_incremental : {false, true}) {
        ScriptedTaskStore lacking({missing.name}, address);
        PlaceChanges(Words({0, 2, 1, 1, 3, 1}), PlainTask(2), TaskGroup(3));
        EXPECT_EQ(Recover(3, is_incremental ? 3 : 1).code, 0u);
        const std::size_t stored = is_incremental ? missing.applied : missing.inserted;
        for (const auto& table : lacking.tables) EXPECT_THAT(table, SizeIs(stored));
        for (const auto* log : {kTaskLog, kTaskGroupLog})
          EXPECT_THAT(ReadFile(log), SizeIs(12 * stored * missing.logged));
        EXPECT_THAT(ReadFile(kTaskIdMap), SizeIs(24 * stored));
        for (const auto* table : {kTasks, kTaskGroups}) EXPECT_FALSE(Exists(table));
      }
    }
  }
}

TEST_F(TasksRecoverTest, AnUnreadableTableIsNotTakenForItsEndAndLeavesTheOther) {
  for (const auto* unreadable : {kTasks, kTaskGroups}) {
    ClearStore();
    Place(PlainTask(1, 2), TaskGroup(2));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == unreadable) handset::FailCallOf("ReadFile", 1);
    });
    RunRecover(4);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_THAT(store_.tables[0], SizeIs(unreadable == kTasks ? 0 : 1));
    EXPECT_THAT(store_.tables[1], SizeIs(unreadable == kTasks ? 1 : 0));
  }
}

TEST_F(TasksRecoverTest, ASnapshotThatCannotBeRewrittenCostsNeitherTheOtherNorTheIdMap) {
  for (const auto* log : {kTaskLog, kTaskGroupLog}) {
    ClearStore();
    Place(PlainTask(2), TaskGroup(2));
    std::filesystem::remove(handset::HostPath(log));
    MakeDirectory(log);
    EXPECT_EQ(Recover(3, 1).code, 0u);
    const auto* const other = log == kTaskLog ? kTaskGroupLog : kTaskLog;
    EXPECT_EQ(ReadFile(other), log == kTaskLog ? Words({1000, 5, 6}) : Words({1001, 5, 6}));
    EXPECT_EQ(ReadFile(kTaskIdMap), Words({1, 1000, 2, 0, 1001, 2}));
    std::filesystem::remove(handset::HostPath(log));
  }
}

TEST_F(TasksRecoverTest, AStoreThatCannotListLeavesEmptySnapshots) {
  store_.statuses["GetAllidTime"] = 1;
  Place(PlainTask(2), TaskGroup(2));
  for (const auto* log : {kTaskLog, kTaskGroupLog}) WriteText(log, "old");
  EXPECT_EQ(Recover(3, 1).code, 0u);
  for (const auto* log : {kTaskLog, kTaskGroupLog}) EXPECT_THAT(ReadFile(log), IsEmpty());
  EXPECT_THAT(store_.CallsOf("GetAllidTime"), SizeIs(2));
}

TEST_F(TasksRecoverTest, NobodyIsToldWithoutAStreamEither) {
  EXPECT_EQ(Call("fnQV_RecovTabs", Request(3, 3, u"", kSync), nullptr), 0u);
}

}  // namespace
}  // namespace qv_test
