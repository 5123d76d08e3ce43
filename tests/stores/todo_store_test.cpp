// TodoStore.dll: tasks with all their items, groups, and an insert that is spelled unlike the rest.
#include <array>

#include "host/stores/store_library.h"
#include "host/stores/task_kinds.h"
#include "tests/stores/library_file.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

using stores::kTaskGroups;
using stores::kTasks;

struct TodoStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Number = std::uint32_t;
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  Number (*const count)(Number) = Find<Number(Number)>("TD_Sync_GetAllRecNum");
  Status (*const list)(Number, Number*, void*) = Find<Status(Number, Number*, void*)>("TD_Sync_GetAllidTime");
  Status (*const read)(Number, Number, Ids, void*) = Find<Status(Number, Number, Ids, void*)>("TD_Sync_Read");
  Status (*const insert)(Number, const void*, Number*,
                         Number) = Find<Status(Number, const void*, Number*, Number)>("Td_Sync_Insert");
  Status (*const update)(Number, Number, const void*,
                         Number) = Find<Status(Number, Number, const void*, Number)>("TD_Sync_Update");
  Status (*const del)(Number, Number, Ids) = Find<Status(Number, Number, Ids)>("TD_Sync_Del");
  Status (*const del_all)() = Find<Status()>("TD_Sync_DelAll");
};

constexpr std::size_t kTaskSize = 34696;
constexpr std::size_t kGroupSize = 288;

class TodoStoreTest : public StoreTest {
 protected:
  /// Random in each byte.
  Record Random(std::size_t size) {
    Record record(size);
    for (std::uint8_t& byte : record) byte = static_cast<std::uint8_t>(random_());
    return record;
  }
  static Record With(std::size_t offset, std::initializer_list<std::uint8_t> bytes, Record record) {
    std::ranges::copy(bytes, record.begin() + static_cast<std::ptrdiff_t>(offset));
    return record;
  }
  std::uint32_t Insert(std::uint32_t table, const Record& record, std::uint32_t argument = 0) const {
    std::uint32_t id = 0;
    EXPECT_EQ(library_.insert(table, record.data(), &id, argument), stores::kDone);
    return id;
  }
  Record Read(std::uint32_t table, std::uint32_t id) const {
    Record record(table == kTasks ? kTaskSize : kGroupSize, 0xEE);
    EXPECT_EQ(library_.read(table, 1, &id, record.data()), stores::kDone);
    return record;
  }

  TodoStoreLibrary library_{QV_TODO_STORE};
};

TEST_F(TodoStoreTest, ATaskKeepsEachByteAndBelongsToTheGroupItComesWith) {
  const Record task = Random(kTaskSize);
  ASSERT_EQ(Insert(kTasks, task, 0x00011170), 1u);
  EXPECT_EQ(Read(kTasks, 1), With(0, {1, 0, 0, 0, 0x70, 0x11, 1, 0}, task));
  const Record other = Random(kTaskSize);
  ASSERT_EQ(library_.update(kTasks, 1, other.data(), 5), stores::kDone);
  EXPECT_EQ(Read(kTasks, 1), With(0, {1, 0, 0, 0, 5, 0, 0, 0}, other));
}

TEST_F(TodoStoreTest, AGroupKeepsEachByteAndHasTheValueItComesWith) {
  const Record group = Random(kGroupSize);
  ASSERT_EQ(Insert(kTaskGroups, group, 0xABCD), 1u);
  EXPECT_EQ(Read(kTaskGroups, 1), With(0, {1, 0, 0, 0}, With(250, {0xCD, 0xAB}, group)));
  ASSERT_EQ(library_.update(kTaskGroups, 1, group.data(), 7), stores::kDone);
  EXPECT_EQ(Read(kTaskGroups, 1), With(0, {1, 0, 0, 0}, With(250, {7, 0}, group)));
}

TEST_F(TodoStoreTest, ItemsAreColumnsOfTheTask) {
  Record task(kTaskSize);
  task = With(449, {2}, With(856, {0x41}, With(856 + 80, {0x42}, task)));
  task = With(456, {1}, With(2456, {0x43}, task));
  task = With(457, {4}, With(kTaskSize - 1, {0x44}, task));
  Insert(kTasks, task);
  EXPECT_EQ(Shell("SELECT item_80_count, length(item_80), item_144_count, hex(item_144), item_6476_count, "
                  "length(item_6476) FROM tasks"),
            "2|81|1|43|4|25904\n");
}

TEST_F(TodoStoreTest, TheTablesAreCountedListedAndDeletedApart) {
  for (int i = 0; i < 3; ++i) Insert(kTasks, Record(kTaskSize));
  Insert(kTaskGroups, Record(kGroupSize));
  const std::array<std::uint32_t, 2> doomed = {1, 3};
  ASSERT_EQ(library_.del(kTasks, 2, doomed.data()), stores::kDone);
  EXPECT_EQ(library_.count(kTaskGroups), 1u);
  std::array<qv::SyncInfoEntry, 4> info{};
  std::uint32_t count = info.size();
  ASSERT_EQ(library_.list(kTasks, &count, info.data()), stores::kDone);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(info[0].id, 2u);
  EXPECT_NEAR(static_cast<double>(TimeOf(info[0]) - Now()), 0, kMinute);
  ASSERT_EQ(library_.del_all(), stores::kDone);
  EXPECT_EQ(library_.count(kTasks), 0u);
  EXPECT_EQ(library_.count(kTaskGroups), 0u);
}

TEST_F(TodoStoreTest, SettingsRefuseInserts) {
  stores::Database database;
  database.SetSetting(stores::kTaskAddRefusal, 77);
  const Record record(kTaskSize);
  std::uint32_t id = 0;
  EXPECT_EQ(library_.insert(kTasks, record.data(), &id, 0), 77u);
  Insert(kTaskGroups, record);
  database.SetSetting(stores::kTaskAddRefusal, 0);
  database.SetSetting(stores::kTaskGroupAddRefusal, 78);
  Insert(kTasks, record);
  EXPECT_EQ(library_.insert(kTaskGroups, record.data(), &id, 0), 78u);
}

TEST_F(TodoStoreTest, WhatCannotBeMeantIsRefused) {
  const Record record(kTaskSize);
  Record buffer(kTaskSize);
  const std::uint32_t unknown = 9;
  std::uint32_t number = 1;
  EXPECT_EQ(library_.count(2), 0u);
  EXPECT_EQ(library_.insert(2, record.data(), &number, 0), stores::kUnknownTable);
  EXPECT_EQ(library_.read(kTasks, 1, &unknown, buffer.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.update(kTasks, unknown, record.data(), 0), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(kTasks, 1, &unknown), stores::kUnknownRecord);
  EXPECT_EQ(library_.list(kTasks, nullptr, buffer.data()), stores::kNullPointer);
  EXPECT_EQ(library_.list(kTasks, &number, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.read(kTasks, 1, nullptr, buffer.data()), stores::kNullPointer);
  EXPECT_EQ(library_.read(kTasks, 0xFFFFFFFF, &unknown, buffer.data()), stores::kOutOfBounds);
  EXPECT_EQ(library_.insert(kTasks, nullptr, &number, 0), stores::kNullPointer);
  EXPECT_EQ(library_.insert(kTasks, record.data(), nullptr, 0), stores::kNullPointer);
  EXPECT_EQ(library_.update(kTasks, 1, nullptr, 0), stores::kNullPointer);
  EXPECT_EQ(library_.del(kTasks, 1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.count(kTasks), 0u);
}

}  // namespace
