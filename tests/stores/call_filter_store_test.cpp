// CallFilterStore.dll: entries and groups by table number, two names for one deletion, and a configuration.
#include "host/stores/store_library.h"
#include "host/stores/telephony_kinds.h"
#include "tests/stores/library_file.h"
#include "tests/stores/store_test.h"

namespace {

using stores::kCallFilterEntries;
using stores::kCallFilterGroups;

struct CallFilterStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Number = std::uint32_t;
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  Number (*const count)(Number) = Find<Number(Number)>("Sync_GetAllRecNum");
  Status (*const list)(Number, Number*, void*) = Find<Status(Number, Number*, void*)>("Sync_GetAllidTime");
  Status (*const read)(Number, Number, Ids, void*) = Find<Status(Number, Number, Ids, void*)>("Sync_Read");
  Status (*const insert)(Number, const void*, Number*) = Find<Status(Number, const void*, Number*)>("Sync_insert");
  Status (*const update)(Number, Number, const void*) = Find<Status(Number, Number, const void*)>("Sync_Update");
  Status (*const del)(Number, Number, Ids) = Find<Status(Number, Number, Ids)>("Sync_Del");
  Status (*const sc_del)(Number, Number, Ids) = Find<Status(Number, Number, Ids)>("SC_Sync_Del");
  Status (*const del_all)(Number) = Find<Status(Number)>("Sync_DelAll");
  Status (*const read_config)(void*) = Find<Status(void*)>("Sync_rbc_ReadConfig");
  Status (*const write_config)(const void*) = Find<Status(const void*)>("Sync_rbc_WriteConfig");
  Status (*const del_config)() = Find<Status()>("Sync_rbc_DelConfig");
};

class CallFilterStoreTest : public StoreTest {
 protected:
  static const qv::layout::RecordLayout& Layout(std::uint32_t table) { return stores::kCallFilterKinds[table].layout; }

  std::uint32_t Insert(std::uint32_t table, const Record& record) const {
    std::uint32_t id = 0;
    EXPECT_EQ(library_.insert(table, record.data(), &id), stores::kDone);
    return id;
  }
  std::uint32_t InsertAny(std::uint32_t table) { return Insert(table, RandomRecord(Layout(table), random_)); }
  Record Read(std::uint32_t table, std::uint32_t id) const {
    Record record(Layout(table).store_size);
    EXPECT_EQ(library_.read(table, 1, &id, record.data()), stores::kDone);
    return record;
  }
  Record ReadConfig() const {
    Record config(stores::kCallFilterConfigKind.layout.store_size, 0xEE);
    EXPECT_EQ(library_.read_config(config.data()), stores::kDone);
    return config;
  }
  CallFilterStoreLibrary library_{QV_CALL_FILTER_STORE};
};

TEST_F(CallFilterStoreTest, EachTableHasRecordsOfItsOwn) {
  for (const std::uint32_t table : {kCallFilterEntries, kCallFilterGroups}) {
    const std::uint32_t id = InsertAny(table);
    Record record = RandomRecord(Layout(table), random_);
    PutId(Layout(table), id, record);
    ASSERT_EQ(library_.update(table, id, record.data()), stores::kDone);
    EXPECT_EQ(Read(table, id), record);
    EXPECT_EQ(library_.count(table), 1u);
  }
  EXPECT_EQ(library_.count(2), 0u);
}

TEST_F(CallFilterStoreTest, AListTellsFileTimesRightBehindTheIds) {
  stores::Database database;
  const Record record(Layout(kCallFilterGroups).store_size);
  stores::RecordStore groups(database, stores::kCallFilterKinds[kCallFilterGroups]);
  groups.Insert(record.data(), 0x0102030405060708);
  Record list(2 * 12);
  std::uint32_t count = 2;
  ASSERT_EQ(library_.list(kCallFilterGroups, &count, list.data()), stores::kDone);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(list, (Record{1, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(CallFilterStoreTest, BothNamesDelete) {
  const std::uint32_t first = InsertAny(kCallFilterEntries);
  const std::uint32_t second = InsertAny(kCallFilterEntries);
  InsertAny(kCallFilterGroups);
  EXPECT_EQ(library_.del(kCallFilterEntries, 1, &first), stores::kDone);
  EXPECT_EQ(library_.sc_del(kCallFilterEntries, 1, &first), stores::kUnknownRecord);
  EXPECT_EQ(library_.sc_del(kCallFilterEntries, 1, &second), stores::kDone);
  EXPECT_EQ(library_.count(kCallFilterEntries), 0u);
  EXPECT_EQ(library_.count(kCallFilterGroups), 1u);
}

TEST_F(CallFilterStoreTest, OneTableIsEmptiedAtATime) {
  InsertAny(kCallFilterEntries), InsertAny(kCallFilterGroups);
  EXPECT_EQ(library_.del_all(kCallFilterGroups), stores::kDone);
  EXPECT_EQ(library_.count(kCallFilterEntries), 1u);
  EXPECT_EQ(library_.count(kCallFilterGroups), 0u);
}

TEST_F(CallFilterStoreTest, AnUpdateOfAnUnknownRecordAnswersThree) {
  const Record group(Layout(kCallFilterGroups).store_size);
  EXPECT_EQ(library_.update(kCallFilterGroups, 7, group.data()), 3u);
  EXPECT_EQ(library_.count(kCallFilterGroups), 0u);
}

TEST_F(CallFilterStoreTest, TheConfigurationIsWrittenReplacedAndDeleted) {
  const Record none(stores::kCallFilterConfigKind.layout.store_size);
  EXPECT_EQ(ReadConfig(), none);
  EXPECT_EQ(library_.del_config(), stores::kDone);
  for (int i = 0; i < 2; ++i) {
    const Record config = RandomRecord(stores::kCallFilterConfigKind.layout, random_);
    ASSERT_EQ(library_.write_config(config.data()), stores::kDone);
    EXPECT_EQ(ReadConfig(), config);
  }
  EXPECT_EQ(library_.del_all(kCallFilterEntries), stores::kDone);
  EXPECT_NE(ReadConfig(), none);
  ASSERT_EQ(library_.del_config(), stores::kDone);
  EXPECT_EQ(ReadConfig(), none);
}

TEST_F(CallFilterStoreTest, NullPointersAreRefused) {
  std::uint32_t id = 0;
  EXPECT_EQ(library_.insert(kCallFilterEntries, nullptr, &id), stores::kNullPointer);
  EXPECT_EQ(library_.read_config(nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.write_config(nullptr), stores::kNullPointer);
}

}  // namespace
