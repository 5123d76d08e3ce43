// AgendaStore.dll: entries whose long items pass through an area that the record points at, and groups.
#include <array>
#include <bit>

#include "host/stores/agenda_database.h"
#include "host/stores/store_library.h"
#include "tests/stores/library_file.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

using stores::kAgendaEntries;
using stores::kAgendaGroups;

struct AgendaStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Number = std::uint32_t;
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  Number (*const count)(Number) = Find<Number(Number)>("AGD_Sync_GetAllRecNum");
  Status (*const list)(Number, Number*, void*) = Find<Status(Number, Number*, void*)>("AGD_Sync_GetAllidTime");
  Status (*const read)(Number, Number, Ids, void*) = Find<Status(Number, Number, Ids, void*)>("AGD_Sync_Read");
  Status (*const insert)(Number, const void*, Number*) = Find<Status(Number, const void*, Number*)>("AGD_Sync_Insert");
  Status (*const update)(Number, Number, const void*) = Find<Status(Number, Number, const void*)>("AGD_Sync_Update");
  Status (*const del)(Number, Number, Ids) = Find<Status(Number, Number, Ids)>("AGD_Sync_Del");
  Status (*const del_all)() = Find<Status()>("AGD_Sync_DelAll");
};

constexpr std::size_t kRecordSize = 4372;
constexpr std::size_t kLongItemSize = 5128;
constexpr std::size_t kLongItemKept = 3928;  ///< What stands behind it in an item goes nowhere.
constexpr std::size_t kAreaAt = 4364;
constexpr std::size_t kCountAt = 4368;
constexpr std::size_t kIdAt = 52;

/// A record and its area, as the agent provides them.
struct Entry {
  explicit Entry(std::size_t items) : record(kRecordSize), area(items * kLongItemSize) {
    Put(kAreaAt, std::bit_cast<std::uint32_t>(area.data()));
    Put(kCountAt, static_cast<std::uint32_t>(items));
  }
  void Put(std::size_t offset, std::uint32_t number) { qv::layout::StoreNumber(&record[offset], 4, number); }
  std::uint32_t At(std::size_t offset) const { return qv::layout::LoadNumber(&record[offset], 4); }

  Record record;
  Record area;
};

class AgendaStoreTest : public StoreTest {
 protected:
  /// With a text, a number, short items of any bytes, and long ones.
  Entry RandomEntry(std::size_t long_items) {
    Entry entry(long_items);
    const std::u16string_view title = u"议程 7";
    std::copy_n(reinterpret_cast<const std::uint8_t*>(title.data()), 2 * title.size(), entry.record.data());
    entry.Put(48, random_());
    entry.Put(192, 20);
    for (std::size_t i = 204; i < kAreaAt; ++i) entry.record[i] = static_cast<std::uint8_t>(random_());
    for (std::size_t i = 0; i < entry.area.size(); ++i) {
      if (i % kLongItemSize < kLongItemKept) entry.area[i] = static_cast<std::uint8_t>(random_());
    }
    return entry;
  }
  std::uint32_t Insert(const Entry& entry) const {
    std::uint32_t id = 0;
    EXPECT_EQ(library_.insert(kAgendaEntries, entry.record.data(), &id), stores::kDone);
    return id;
  }
  Entry Read(std::uint32_t id) const {
    Entry entry(50);
    EXPECT_EQ(library_.read(kAgendaEntries, 1, &id, entry.record.data()), stores::kDone);
    EXPECT_EQ(entry.At(kAreaAt), std::bit_cast<std::uint32_t>(entry.area.data()));
    return entry;
  }
  /// That what is read is this, under the id.
  void ExpectRead(std::uint32_t id, Entry expected) const {
    Entry read = Read(id);
    EXPECT_EQ(read.At(kCountAt), expected.At(kCountAt));
    read.Put(kAreaAt, 0);
    expected.Put(kAreaAt, 0);
    expected.Put(kIdAt, id);
    EXPECT_EQ(read.record, expected.record);
    expected.area.resize(50 * kLongItemSize);
    EXPECT_EQ(read.area, expected.area);
  }
  stores::FileTime Time() const {
    stores::Database database;
    return TimeOf(SyncInfoOf(stores::AgendaDatabase(database).Tables()[kAgendaEntries])[0]);
  }

  AgendaStoreLibrary library_{QV_AGENDA_STORE};
};

TEST_F(AgendaStoreTest, EntriesKeepTheirItemsOfBothKinds) {
  const Entry full = RandomEntry(50);
  ASSERT_EQ(Insert(full), 1u);
  ExpectRead(1, full);
  const Entry none = RandomEntry(0);
  ASSERT_EQ(library_.update(kAgendaEntries, 1, none.record.data()), stores::kDone);
  ExpectRead(1, none);
  const Entry three = RandomEntry(3);
  ASSERT_EQ(library_.update(kAgendaEntries, 1, three.record.data()), stores::kDone);
  ExpectRead(1, three);
}

TEST_F(AgendaStoreTest, EntriesAreReadBackToBackEachIntoItsOwnArea) {
  const Entry first = RandomEntry(2);
  const Entry second = RandomEntry(1);
  const std::uint32_t ids[] = {Insert(second), Insert(first)};
  Record records(2 * kRecordSize);
  std::array<Record, 2> areas = {Record(50 * kLongItemSize), Record(50 * kLongItemSize)};
  for (std::size_t i = 0; i < 2; ++i) {
    const auto address = std::bit_cast<std::uint32_t>(areas[i].data());
    qv::layout::StoreNumber(&records[i * kRecordSize + kAreaAt], 4, address);
  }
  const std::uint32_t asked[] = {ids[1], ids[0]};
  ASSERT_EQ(library_.read(kAgendaEntries, 2, asked, records.data()), stores::kDone);
  EXPECT_TRUE(std::ranges::equal(first.area, std::span(areas[0]).first(first.area.size())));
  EXPECT_TRUE(std::ranges::equal(second.area, std::span(areas[1]).first(second.area.size())));
  EXPECT_EQ(qv::layout::LoadNumber(&records[kCountAt], 4), 2u);
  EXPECT_EQ(qv::layout::LoadNumber(&records[kRecordSize + kCountAt], 4), 1u);
}

TEST_F(AgendaStoreTest, GroupsKeepEachByte) {
  Record group(288);
  for (std::uint8_t& byte : group) byte = static_cast<std::uint8_t>(random_());
  std::uint32_t id = 0;
  ASSERT_EQ(library_.insert(kAgendaGroups, group.data(), &id), stores::kDone);
  Record read(group.size());
  ASSERT_EQ(library_.read(kAgendaGroups, 1, &id, read.data()), stores::kDone);
  qv::layout::StoreNumber(group.data(), 4, id);
  EXPECT_EQ(read, group);
  ASSERT_EQ(library_.update(kAgendaGroups, id, Record(288).data()), stores::kDone);
  ASSERT_EQ(library_.read(kAgendaGroups, 1, &id, read.data()), stores::kDone);
  EXPECT_EQ(read[100], 0);
}

TEST_F(AgendaStoreTest, LongItemsAreRowsOfTheirEntry) {
  Entry entry(2);
  entry.area[0] = 3;
  entry.area[kLongItemSize] = 9;
  entry.area[kLongItemSize + 5] = 0xAB;
  Insert(entry);
  EXPECT_EQ(Shell("SELECT entry_id, number, type, hex(bytes_4) FROM agenda_long_items"), "1|1|3|\n1|2|9|00AB\n");
  const stores::FileTime before = Time();
  Shell("UPDATE agenda_long_items SET type = 4 WHERE number = 1");
  EXPECT_GT(Time(), before);
  EXPECT_EQ(Read(1).area[0], 4);
  Shell("DELETE FROM agenda_entries");
  EXPECT_EQ(Shell("SELECT count(*) FROM agenda_long_items"), "0\n");
}

TEST_F(AgendaStoreTest, MoreLongItemsThanFitAreNotHandedOut) {
  Insert(Entry(0));
  Shell(
      "WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < 60) "
      "INSERT INTO agenda_long_items (entry_id, number, type) SELECT 1, i, i FROM n");
  const Entry read = Read(1);
  EXPECT_EQ(read.At(kCountAt), 50u);
  EXPECT_EQ(read.area[49 * kLongItemSize], 50);
}

TEST_F(AgendaStoreTest, TheTablesAreCountedListedAndDeletedApart) {
  for (int i = 0; i < 3; ++i) Insert(Entry(1));
  std::uint32_t id = 0;
  ASSERT_EQ(library_.insert(kAgendaGroups, Record(288).data(), &id), stores::kDone);
  const std::array<std::uint32_t, 2> doomed = {1, 3};
  ASSERT_EQ(library_.del(kAgendaEntries, 2, doomed.data()), stores::kDone);
  EXPECT_EQ(Shell("SELECT entry_id FROM agenda_long_items"), "2\n");
  std::array<qv::SyncInfoEntry, 4> info{};
  std::uint32_t count = info.size();
  ASSERT_EQ(library_.list(kAgendaEntries, &count, info.data()), stores::kDone);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(info[0].id, 2u);
  EXPECT_EQ(library_.count(kAgendaGroups), 1u);
  ASSERT_EQ(library_.del_all(), stores::kDone);
  EXPECT_EQ(library_.count(kAgendaEntries), 0u);
  EXPECT_EQ(library_.count(kAgendaGroups), 0u);
}

TEST_F(AgendaStoreTest, AFailedCallLeavesTheEntryAsItWas) {
  const Entry entry = RandomEntry(2);
  const std::uint32_t id = Insert(entry);
  const stores::FileTime time = Time();
  Entry bad = RandomEntry(1);
  bad.Put(kCountAt, 51);
  EXPECT_EQ(library_.update(kAgendaEntries, id, bad.record.data()), stores::kOutOfBounds);
  bad.Put(kCountAt, 0xFFFFFFFF);
  EXPECT_EQ(library_.update(kAgendaEntries, id, bad.record.data()), stores::kOutOfBounds);
  bad.Put(kCountAt, 1);
  bad.Put(kAreaAt, 0);
  EXPECT_EQ(library_.update(kAgendaEntries, id, bad.record.data()), stores::kNullPointer);
  ExpectRead(id, entry);
  EXPECT_EQ(Time(), time);
}

TEST_F(AgendaStoreTest, ACallThatFailsInBetweenChangesNothing) {
  const Entry entry = RandomEntry(2);
  const std::uint32_t id = Insert(entry);
  Shell("CREATE TRIGGER full BEFORE INSERT ON agenda_long_items BEGIN SELECT RAISE(ABORT, 'full'); END");
  const Entry other = RandomEntry(1);
  EXPECT_EQ(library_.update(kAgendaEntries, id, other.record.data()), stores::kDatabaseFailed);
  std::uint32_t new_id = 0;
  EXPECT_EQ(library_.insert(kAgendaEntries, other.record.data(), &new_id), stores::kDatabaseFailed);
  EXPECT_EQ(library_.count(kAgendaEntries), 1u);
  ExpectRead(id, entry);
}

TEST_F(AgendaStoreTest, AnEntryWithoutLongItemsNeedsNoArea) {
  Entry entry(0);
  entry.Put(kAreaAt, 0);
  const std::uint32_t id = Insert(entry);
  EXPECT_EQ(library_.read(kAgendaEntries, 1, &id, entry.record.data()), stores::kDone);
  const std::uint32_t with_items = Insert(Entry(1));
  EXPECT_EQ(library_.read(kAgendaEntries, 1, &with_items, entry.record.data()), stores::kNullPointer);
}

TEST_F(AgendaStoreTest, ATimeThatIsGivenIsTheEntrysWhateverItsItems) {
  stores::Database database;
  stores::AgendaDatabase agenda(database);
  agenda.Insert({.record = Record(kRecordSize), .long_items = Record(2 * kLongItemSize)}, 77);
  EXPECT_EQ(Time(), 77);
}

TEST_F(AgendaStoreTest, SettingsRefuseInserts) {
  stores::Database database;
  database.SetSetting(stores::kAgendaAddRefusal, 77);
  database.SetSetting(stores::kAgendaGroupAddRefusal, 78);
  std::uint32_t id = 0;
  EXPECT_EQ(library_.insert(kAgendaEntries, Entry(1).record.data(), &id), 77u);
  EXPECT_EQ(library_.insert(kAgendaGroups, Record(288).data(), &id), 78u);
  EXPECT_EQ(library_.count(kAgendaEntries), 0u);
  EXPECT_EQ(library_.count(kAgendaGroups), 0u);
}

TEST_F(AgendaStoreTest, WhatCannotBeMeantIsRefused) {
  Entry entry(50);
  const std::uint32_t unknown = 9;
  std::uint32_t number = 1;
  EXPECT_EQ(library_.count(2), 0u);
  EXPECT_EQ(library_.insert(2, entry.record.data(), &number), stores::kUnknownTable);
  EXPECT_EQ(library_.read(kAgendaEntries, 1, &unknown, entry.record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.update(kAgendaEntries, unknown, entry.record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(kAgendaEntries, 1, &unknown), stores::kUnknownRecord);
  EXPECT_EQ(library_.list(kAgendaEntries, nullptr, entry.record.data()), stores::kNullPointer);
  EXPECT_EQ(library_.read(kAgendaEntries, 1, nullptr, entry.record.data()), stores::kNullPointer);
  EXPECT_EQ(library_.read(kAgendaEntries, 1, &unknown, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.read(kAgendaEntries, 0xFFFFFFFF, &unknown, entry.record.data()), stores::kOutOfBounds);
  EXPECT_EQ(library_.insert(kAgendaEntries, nullptr, &number), stores::kNullPointer);
  EXPECT_EQ(library_.insert(kAgendaEntries, entry.record.data(), nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.update(kAgendaEntries, 1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.del(kAgendaEntries, 1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.count(kAgendaEntries), 0u);
}

}  // namespace
