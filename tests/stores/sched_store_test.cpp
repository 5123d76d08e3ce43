// SchedStore.dll and MailStore.dll: what their entry points answer to good and bad callers.
#include <array>
#include <string>

#include "host/stores/schedule_kinds.h"
#include "host/stores/store_library.h"
#include "modules/calendar/schedule_layout.h"
#include "tests/stores/sched_store_library.h"
#include "tests/stores/store_test.h"

namespace {

constexpr std::uint32_t kEntries = 0;
constexpr std::uint32_t kGroups = 1;

class SchedStoreTest : public StoreTest {
 protected:
  Record RecordWith(std::uint32_t table, std::uint32_t id, const qv::layout::Slot& slot, std::uint32_t value,
                    Record record) const {
    PutId(stores::kScheduleKinds[table].layout, id, record);
    qv::layout::StoreNumber(record.data() + slot.offset, slot.size, value);
    return record;
  }
  Record Read(std::uint32_t table, std::uint32_t id) const {
    Record record(stores::kScheduleKinds[table].layout.store_size);
    EXPECT_EQ(library_.read(table, 1, &id, record.data()), stores::kDone);
    return record;
  }

  const qv::layout::RecordLayout& entry_ = stores::kScheduleKinds[kEntries].layout;
  const qv::layout::RecordLayout& group_ = stores::kScheduleKinds[kGroups].layout;
  SchedStoreLibrary library_{QV_SCHED_STORE};
};

TEST_F(SchedStoreTest, AnEntryBelongsToTheGroupItIsInsertedAndUpdatedWith) {
  Record record = RandomRecord(entry_, random_);
  std::uint32_t id = 0;
  ASSERT_EQ(library_.insert(kEntries, record.data(), &id, 70000), stores::kDone);
  EXPECT_EQ(Read(kEntries, id), RecordWith(kEntries, id, qv::schedule::kEntryGroupId, 70000, record));
  record = RandomRecord(entry_, random_);
  ASSERT_EQ(library_.update(kEntries, id, record.data(), 5), stores::kDone);
  EXPECT_EQ(Read(kEntries, id), RecordWith(kEntries, id, qv::schedule::kEntryGroupId, 5, record));
}

TEST_F(SchedStoreTest, AGroupHasTheValueItIsInsertedAndUpdatedWith) {
  const Record record = RandomRecord(group_, random_);
  std::uint32_t id = 0;
  ASSERT_EQ(library_.insert(kGroups, record.data(), &id, 0xABCD), stores::kDone);
  EXPECT_EQ(Read(kGroups, id), RecordWith(kGroups, id, qv::schedule::kGroupValue, 0xABCD, record));
  ASSERT_EQ(library_.update(kGroups, id, record.data(), 7), stores::kDone);
  EXPECT_EQ(Read(kGroups, id), RecordWith(kGroups, id, qv::schedule::kGroupValue, 7, record));
}

TEST_F(SchedStoreTest, RecordsAreReadBackToBackInTheOrderAskedFor) {
  std::array<std::uint32_t, 3> ids{};
  for (std::uint32_t& id : ids) library_.insert(kGroups, RandomRecord(group_, random_).data(), &id, 1);
  std::swap(ids[0], ids[2]);
  Record records(3 * group_.store_size);
  ASSERT_EQ(library_.read(kGroups, 3, ids.data(), records.data()), stores::kDone);
  Record expected;
  for (const std::uint32_t id : ids) {
    const Record record = Read(kGroups, id);
    expected.insert(expected.end(), record.begin(), record.end());
  }
  EXPECT_EQ(records, expected);
}

TEST_F(SchedStoreTest, TheTablesAreCountedListedAndDeletedApart) {
  std::uint32_t id = 0;
  for (int i = 0; i < 3; ++i) library_.insert(kEntries, RandomRecord(entry_, random_).data(), &id, 0);
  library_.insert(kGroups, RandomRecord(group_, random_).data(), &id, 0);
  const std::array<std::uint32_t, 2> doomed = {1, 3};
  ASSERT_EQ(library_.del(kEntries, 2, doomed.data()), stores::kDone);
  EXPECT_EQ(library_.get_total_num(kEntries), 1u);
  EXPECT_EQ(library_.get_total_num(kGroups), 1u);
  std::array<qv::SyncInfoEntry, 4> info{};
  std::uint32_t count = info.size();
  ASSERT_EQ(library_.get_all_sync_info(kEntries, &count, info.data()), stores::kDone);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(info[0].id, 2u);
}

TEST_F(SchedStoreTest, DelAllEmptiesBothTables) {
  std::uint32_t id = 0;
  library_.insert(kEntries, RandomRecord(entry_, random_).data(), &id, 0);
  library_.insert(kGroups, RandomRecord(group_, random_).data(), &id, 0);
  ASSERT_EQ(library_.del_all(), stores::kDone);
  EXPECT_EQ(library_.get_total_num(kEntries) + library_.get_total_num(kGroups), 0u);
}

TEST_F(SchedStoreTest, NullPointersAreRefused) {
  Record record(entry_.store_size);
  std::uint32_t number = 1;
  EXPECT_EQ(library_.get_all_sync_info(kEntries, nullptr, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.get_all_sync_info(kEntries, &number, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.read(kEntries, 1, nullptr, record.data()), stores::kNullPointer);
  EXPECT_EQ(library_.read(kEntries, 1, &number, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.insert(kEntries, nullptr, &number, 0), stores::kNullPointer);
  EXPECT_EQ(library_.insert(kEntries, record.data(), nullptr, 0), stores::kNullPointer);
  EXPECT_EQ(library_.update(kEntries, 1, nullptr, 0), stores::kNullPointer);
  EXPECT_EQ(library_.del(kEntries, 1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.get_total_num(kEntries), 0u);
}

TEST_F(SchedStoreTest, NothingMayBeAskedForWithNullPointers) {
  std::uint32_t none = 0;
  EXPECT_EQ(library_.get_all_sync_info(kEntries, &none, nullptr), stores::kDone);
  EXPECT_EQ(library_.read(kEntries, 0, nullptr, nullptr), stores::kDone);
  EXPECT_EQ(library_.del(kEntries, 0, nullptr), stores::kDone);
}

TEST_F(SchedStoreTest, UnknownTablesAreRefused) {
  Record record(entry_.store_size);
  std::uint32_t number = 1;
  qv::SyncInfoEntry info;
  for (const std::uint32_t table : {2u, 0xFFFFFFFFu}) {
    EXPECT_EQ(library_.get_total_num(table), 0u);
    EXPECT_EQ(library_.get_all_sync_info(table, &number, &info), stores::kUnknownTable);
    EXPECT_EQ(library_.read(table, 1, &number, record.data()), stores::kUnknownTable);
    EXPECT_EQ(library_.insert(table, record.data(), &number, 0), stores::kUnknownTable);
    EXPECT_EQ(library_.update(table, 1, record.data(), 0), stores::kUnknownTable);
    EXPECT_EQ(library_.del(table, 1, &number), stores::kUnknownTable);
  }
}

TEST_F(SchedStoreTest, UnknownIdsAreRefusedAndChangeNothing) {
  Record record(entry_.store_size);
  std::uint32_t known = 0;
  library_.insert(kEntries, record.data(), &known, 0);
  const std::array<std::uint32_t, 2> ids = {known, 99};
  EXPECT_EQ(library_.read(kEntries, 1, &ids[1], record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.update(kEntries, 99, record.data(), 0), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(kEntries, 2, ids.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.get_total_num(kEntries), 1u);
}

TEST_F(SchedStoreTest, ADatabaseThatCannotBeOpenedFailsTheCall) {
  std::filesystem::create_directories(handset::HostPath(stores::kDatabasePath));
  EXPECT_EQ(library_.del_all(), stores::kDatabaseFailed);
  EXPECT_EQ(library_.get_total_num(kEntries), 0u);
  std::filesystem::remove(handset::HostPath(stores::kDatabasePath));
  EXPECT_EQ(library_.del_all(), stores::kDone);
}

TEST(StoreUnloadTest, FreeingTheLibraryClosesTheDatabase) {
  const FreshHandset handset;
  const std::string log = handset::HostPath(stores::kDatabasePath).string() + "-wal";
  {
    const SchedStoreLibrary library(QV_SCHED_STORE);
    ASSERT_EQ(library.del_all(), stores::kDone);
    EXPECT_TRUE(std::filesystem::exists(log));
  }
  EXPECT_FALSE(std::filesystem::exists(log));
}

TEST(MailStoreTest, TheMailIdIsTheSettingOrMissing) {
  const FreshHandset handset;
  const LibraryFile library(QV_MAIL_STORE);
  const auto get_mail_id = library.Find<std::uint32_t(std::uint32_t*)>("GetSystemMailID");
  std::uint32_t id = 0;
  EXPECT_EQ(get_mail_id(&id), stores::kUnknownRecord);
  stores::Database().SetSetting(stores::kSystemMailId, 0x90000001);
  EXPECT_EQ(get_mail_id(&id), stores::kDone);
  EXPECT_EQ(id, 0x90000001);
  EXPECT_EQ(get_mail_id(nullptr), stores::kNullPointer);
}

}  // namespace
