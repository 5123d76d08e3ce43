// Tasks that travel to the desktop, back to an emptied store and out again: nothing is lost but the items behind those
// that are counted, and only ids change.
#include <cstring>
#include <map>
#include <random>

#include "tests/support/scripted_task_store.h"
#include "tests/support/task_records.h"

namespace qv_test {
namespace {

class TasksRoundTripTest : public AgentTest {
 protected:
  static constexpr std::uint32_t kTaskCount = 60;  // More than one call of the store takes.
  static constexpr std::uint32_t kGroupCount = 55;

  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_()) % bound; }

  Bytes Noise(std::size_t size) {
    Bytes bytes((size + 3) / 4 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
      const auto word = static_cast<std::uint32_t>(random_());
      std::memcpy(&bytes[i], &word, sizeof(word));
    }
    bytes.resize(size);
    return bytes;
  }

  Bytes RandomTask() {
    Bytes r = Noise(kTaskInStore);
    Put32(r, 4, 1 + Below(kGroupCount + 5));  // A few are in no group that there is.
    for (const TaskItems& items : kTaskItems) {
      const auto room = static_cast<std::uint32_t>(items.room);
      // All, some, or more than there are.
      const std::uint32_t counts[] = {room, Below(room), room + Below(256 - room)};
      Put8(r, items.count_place, static_cast<std::uint8_t>(counts[Below(3)]));
    }
    return r;
  }

  void FillStore() {
    for (auto& table : store_.tables) table.clear();
    for (std::uint32_t id = 1; id <= kGroupCount; ++id) {
      Bytes group = Noise(kTaskGroupSize);
      Put32(group, 0, id);
      store_.Add(1, id, 1, group);
    }
    for (std::uint32_t i = 0; i < kTaskCount; ++i) store_.Add(0, 200 + 7 * i, 1, RandomTask());
  }

  /// A task as a recover leaves it: its counts within the slots, the other slots zero, its group's new id.
  static Bytes AfterARoundTrip(std::uint32_t id, const Bytes& task,
                               const std::map<std::uint32_t, std::uint32_t>& groups) {
    Bytes r(task.begin(), task.begin() + kTaskFixedPart);
    r.resize(kTaskInStore);
    Put32(r, 0, id);
    if (const auto group = groups.find(Get32(r, 4)); group != groups.end()) Put32(r, 4, group->second);
    for (const TaskItems& items : kTaskItems) {
      const std::size_t count = std::min<std::size_t>(task[items.count_place], items.room);
      Put8(r, items.count_place, static_cast<std::uint8_t>(count));
      const auto from = task.begin() + static_cast<std::ptrdiff_t>(items.store);
      PutBytes(r, items.store, Bytes(from, from + static_cast<std::ptrdiff_t>(count * items.size)));
    }
    return r;
  }

  std::mt19937 random_{20061211};
  ScriptedTaskStore store_;
};

TEST_F(TasksRoundTripTest, WhatWasExportedIsRecovered) {
  for (std::uint32_t trip = 1; trip <= 2; ++trip) {
    SCOPED_TRACE(trip);
    FillStore();
    const auto tasks = store_.tables[0];
    const auto groups = store_.tables[1];
    ASSERT_EQ(Export(3, 2).code, 0u);
    const Bytes exported = ReadFile(kTasks);

    store_.next_id = 100000 * trip;
    ASSERT_EQ(Recover(3, 2).code, 0u);
    ASSERT_EQ(store_.tables[1].size(), kGroupCount);
    ASSERT_EQ(store_.tables[0].size(), kTaskCount);
    std::map<std::uint32_t, std::uint32_t> new_groups;
    for (std::size_t i = 0; i < kGroupCount; ++i) {
      ASSERT_EQ(store_.tables[1][i].bytes, groups[i].bytes);
      new_groups[groups[i].id] = store_.tables[1][i].id;
    }
    for (std::size_t i = 0; i < kTaskCount; ++i) {
      ASSERT_EQ(store_.tables[0][i].bytes, AfterARoundTrip(tasks[i].id, tasks[i].bytes, new_groups)) << "task " << i;
    }

    // What returned once returns for good.
    const auto returned = store_.tables[0];
    ASSERT_EQ(Export(3, 2).code, 0u);
    EXPECT_EQ(ReadFile(kTasks).size(), exported.size());
    ASSERT_EQ(Recover(3, 2).code, 0u);
    for (std::size_t i = 0; i < kTaskCount; ++i) {
      Bytes expected = returned[i].bytes;
      Put32(expected, 0, returned[i].id);
      Bytes again = store_.tables[0].at(i).bytes;
      Put32(expected, 4, Get32(again, 4));
      ASSERT_EQ(again, expected) << "task " << i;
    }
  }
}

TEST_F(TasksRoundTripTest, ARecoveredStoreHasNoChangesToExport) {
  FillStore();
  ASSERT_EQ(Export(3, 1).code, 0u);
  store_.next_id = 100000;
  const Answer recovered = Recover(3, 1);
  const Answer exported = Export(3, 3, recovered.anchor);
  EXPECT_EQ(exported.mode, 3u);
  for (const auto* file : {kTasks, kTaskGroups, kTaskChanges}) EXPECT_TRUE(ReadFile(file).empty());
}

}  // namespace
}  // namespace qv_test
