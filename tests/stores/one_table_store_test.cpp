// The store libraries of one table, whose entry points pass everything on to the record store: what all do alike, each
// in its own words, and then what only some do.
#include <cstring>

#include "host/stores/message_kinds.h"
#include "host/stores/organizer_kinds.h"
#include "host/stores/store_library.h"
#include "host/stores/telephony_kinds.h"
#include "tests/stores/library_file.h"
#include "tests/stores/store_test.h"

namespace {

using Status = std::uint32_t;
using Number = std::uint32_t;
using Ids = const std::uint32_t*;

struct CallLogStore : LibraryFile {
  CallLogStore() : LibraryFile(QV_CALL_LOG_STORE) {}

  static constexpr const stores::KindDescription& kKind = stores::kCallKinds[0];
  static constexpr Status kSuccess = stores::kDone;

  Number (*const count)() = Find<Number()>("EXPCALLHISTORY_Sync_GetAllRecNum");
  Status (*const list)(Number*, void*) = Find<Status(Number*, void*)>("EXPCALLHISTORY_Sync_GetAllidTime");
  Status (*const read)(Number, Ids, void*) = Find<Status(Number, Ids, void*)>("EXPCALLHISTORY_Sync_Read");
  Status (*const insert)(const void*, Number*) = Find<Status(const void*, Number*)>("EXPCALLHISTORY_Sync_Insert");
  Status (*const update)(Number, const void*) = Find<Status(Number, const void*)>("EXPCALLHISTORY_Sync_Update");
  Status (*const del)(Number, Ids) = Find<Status(Number, Ids)>("EXPCALLHISTORY_Sync_Del");
  Status (*const del_all)() = Find<Status()>("EXPCALLHISTORY_Sync_DelAll");
};

struct SpeedDialStore : LibraryFile {
  SpeedDialStore() : LibraryFile(QV_SPEED_DIAL_STORE) {}

  static constexpr const stores::KindDescription& kKind = stores::kQuickDialKinds[0];
  static constexpr Status kSuccess = stores::kDone;

  Number (*const count)() = Find<Number()>("Sync_GetAllRecNum");
  Status (*const list)(Number*, void*) = Find<Status(Number*, void*)>("Sync_GetAllidTime");
  Status (*const read)(Number, Ids, void*) = Find<Status(Number, Ids, void*)>("Sync_Read");
  Status (*const insert)(const void*, Number*) = Find<Status(const void*, Number*)>("Sync_Insert");
  Status update(Number, const void* record) const { return Find<Status(const void*)>("Sync_Update")(record); }
  Status (*const del)(Number, Ids) = Find<Status(Number, Ids)>("Sync_Del");
  Status (*const del_all)() = Find<Status()>("Sync_DelAll");
};

struct CardScanStore : LibraryFile {
  CardScanStore() : LibraryFile(QV_CARD_SCAN_STORE) { EXPECT_EQ(initialize(0), kSuccess); }
  ~CardScanStore() { EXPECT_EQ(uninitialize(), kSuccess); }

  static constexpr const stores::KindDescription& kKind = stores::kCardKinds[0];
  static constexpr Status kSuccess = 1;

  Status (*const initialize)(Number) = Find<Status(Number)>("CR_Initialize");
  Status (*const uninitialize)() = Find<Status()>("CR_UnInitialize");
  Number (*const count)() = Find<Number()>("CR_Sync_GetAllRecNum");
  Status list(Number* n, void* entries, Number zero = 0) const {
    return Find<Status(Number*, void*, Number)>("CR_Sync_GetAllidTime")(n, entries, zero);
  }
  Status read(Number n, Ids ids, void* records, Number zero = 0) const {
    return Find<Status(Number, Ids, void*, Number)>("CR_Sync_Read")(n, ids, records, zero);
  }
  Status insert(const void* record, Number* new_id, Number zero = 0) const {
    return Find<Status(const void*, Number*, Number)>("CR_Sync_Insert")(record, new_id, zero);
  }
  Status update(Number, const void* record) const { return Find<Status(const void*)>("CR_Sync_Update")(record); }
  Status del(Number n, Ids ids, Number zero = 0) const {
    return Find<Status(Number, Ids, Number)>("CR_Sync_Del")(n, ids, zero);
  }
  Status (*const del_all)() = Find<Status()>("CR_Sync_DeleteAllCardRecord");
};

struct SketchStore : LibraryFile {
  SketchStore() : LibraryFile(QV_SKETCH_STORE) {}

  static constexpr const stores::KindDescription& kKind = stores::kMemoKinds[0];
  static constexpr Status kSuccess = stores::kDone;

  Number count(Number table = 0) const { return Find<Number(Number)>("DrawInfo_GetAllRecNum")(table); }
  Status list(Number* n, void* entries) const {
    return Find<Status(Number, Number*, void*)>("DrawInfo_GetAllidTime")(0, n, entries);
  }
  Status read(Number n, Ids ids, void* records) const {
    return Find<Status(Number, Number, Ids, void*)>("DrawInfo_Read")(0, n, ids, records);
  }
  Status insert(const void* record, Number* new_id, Number table = 0) const {
    return Find<Status(Number, const void*, Number*)>("DrawInfo_Insert")(table, record, new_id);
  }
  Status update(Number id, const void* record) const {
    return Find<Status(Number, Number, const void*)>("DrawInfo_Update")(0, id, record);
  }
  Status del(Number n, Ids ids) const { return Find<Status(Number, Number, Ids)>("DrawInfo_Sync_Del")(0, n, ids); }
  Status (*const del_all)() = Find<Status()>("DrawInfo_DelAll");
};

template <typename Library>
class OneTableStoreTest : public StoreTest {
 protected:
  Number Insert(const Record& record) const {
    Number id = 0;
    EXPECT_EQ(library_.insert(record.data(), &id), Library::kSuccess);
    return id;
  }
  Number InsertAny() { return Insert(RandomRecord(layout_, random_)); }
  Record Read(Number id) const {
    Record record(layout_.store_size);
    EXPECT_EQ(library_.read(1, &id, record.data()), Library::kSuccess);
    return record;
  }
  /// The list, in the store's own form.
  Record List(Number room) const {
    Record entries(room * std::size_t{Library::kKind.list.entry_size});
    EXPECT_EQ(library_.list(&room, entries.data()), Library::kSuccess);
    entries.resize(room * std::size_t{Library::kKind.list.entry_size});
    return entries;
  }
  Record WithId(Number id, Record record) const {
    PutId(layout_, id, record);
    return record;
  }
  /// Where a record tells when it was modified it does not come back as it was.
  static Record WithoutTime(Record record) {
    std::fill_n(record.begin() + Library::kKind.time.offset, Library::kKind.time.size, std::uint8_t{0});
    return record;
  }

  const qv::layout::RecordLayout& layout_ = Library::kKind.layout;
  const Library library_;
};

using Libraries = testing::Types<CallLogStore, SpeedDialStore, CardScanStore, SketchStore>;
TYPED_TEST_SUITE(OneTableStoreTest, Libraries);

TYPED_TEST(OneTableStoreTest, RecordsAreInsertedReadAndUpdated) {
  const Record first = RandomRecord(this->layout_, this->random_);
  const Number id = this->Insert(first);
  EXPECT_EQ(this->WithoutTime(this->Read(id)), this->WithoutTime(this->WithId(id, first)));
  const Record second = this->WithId(id, RandomRecord(this->layout_, this->random_));
  ASSERT_EQ(this->library_.update(id, second.data()), TypeParam::kSuccess);
  EXPECT_EQ(this->WithoutTime(this->Read(id)), this->WithoutTime(second));
}

TYPED_TEST(OneTableStoreTest, RecordsAreCountedListedAndDeleted) {
  for (int i = 0; i < 3; ++i) this->InsertAny();
  const Number doomed[] = {1, 3};
  ASSERT_EQ(this->library_.del(2, doomed), TypeParam::kSuccess);
  EXPECT_EQ(this->library_.count(), 1u);
  const Record entries = this->List(4);
  ASSERT_EQ(entries.size(), TypeParam::kKind.list.entry_size);
  EXPECT_EQ(qv::layout::LoadNumber(entries.data(), 4), 2u);
  ASSERT_EQ(this->library_.del_all(), TypeParam::kSuccess);
  EXPECT_EQ(this->library_.count(), 0u);
}

TYPED_TEST(OneTableStoreTest, AnUpdateMovesTheTimeInTheList) {
  const Number id = this->InsertAny();
  const Record before = this->List(1);
  const Record record = this->WithId(id, Record(this->layout_.store_size));
  ASSERT_EQ(this->library_.update(id, record.data()), TypeParam::kSuccess);
  EXPECT_NE(this->List(1), before);
}

TYPED_TEST(OneTableStoreTest, UnknownIdsAndNullPointersAreRefused) {
  const Number unknown = 9;
  const Record record = this->WithId(unknown, Record(this->layout_.store_size));
  Number id = 0;
  const auto is_refused = [](Status status) { return status != 0 && status != 1 && status != 2; };
  EXPECT_TRUE(is_refused(this->library_.update(unknown, record.data())));
  EXPECT_TRUE(is_refused(this->library_.del(1, &unknown)));
  EXPECT_NE(this->library_.insert(nullptr, &id), TypeParam::kSuccess);
  EXPECT_NE(this->library_.insert(record.data(), nullptr), TypeParam::kSuccess);
  EXPECT_NE(this->library_.read(1, nullptr, nullptr), TypeParam::kSuccess);
  EXPECT_EQ(this->library_.count(), 0u);
}

using SpeedDialStoreTest = OneTableStoreTest<SpeedDialStore>;

TEST_F(SpeedDialStoreTest, AListTellsSystemTimes) {
  stores::Database database;
  const Record record(layout_.store_size);
  constexpr stores::FileTime kAThursday = 0x01DA6B6B66BA2980;  // 2024-02-29 23:59:59
  stores::RecordStore(database, SpeedDialStore::kKind).Insert(record.data(), kAThursday);
  EXPECT_EQ(List(1), (Record{1, 0, 0, 0, 0xE8, 0x07, 2, 0, 4, 0, 29, 0, 23, 0, 59, 0, 59, 0, 0, 0}));
}

using CardScanStoreTest = OneTableStoreTest<CardScanStore>;

TEST_F(CardScanStoreTest, ACardTellsTheTimeOfTheList) {
  const Number id = InsertAny();
  const Record entry = List(1);
  const Record card = Read(id);
  EXPECT_EQ(Record(card.begin() + 4, card.begin() + 12), Record(entry.begin() + 4, entry.end()));
}

TEST_F(CardScanStoreTest, FailuresAreNeverSuccesses) {
  const Number unknown = 9;
  EXPECT_EQ(static_cast<std::int32_t>(library_.del(1, nullptr)), -1);
  EXPECT_EQ(static_cast<std::int32_t>(library_.del(1, &unknown)), -3);
}

TEST_F(CardScanStoreTest, ALastArgumentThatIsNotZeroIsRefused) {
  Record record(layout_.store_size);
  Number id = InsertAny();
  Number count = 1;
  constexpr Status kRefused = static_cast<Status>(-6);
  EXPECT_EQ(library_.initialize(1), kRefused);
  EXPECT_EQ(library_.list(&count, record.data(), 1), kRefused);
  EXPECT_EQ(library_.read(1, &id, record.data(), 1), kRefused);
  EXPECT_EQ(library_.insert(record.data(), &id, 1), kRefused);
  EXPECT_EQ(library_.del(1, &id, 1), kRefused);
  EXPECT_EQ(library_.count(), 1u);
}

TEST_F(CardScanStoreTest, OutsideTheSessionNothingIsThere) {
  const Number id = InsertAny();
  ASSERT_EQ(library_.uninitialize(), CardScanStore::kSuccess);
  EXPECT_EQ(library_.count(), 0u);
  EXPECT_EQ(static_cast<std::int32_t>(library_.del(1, &id)), -5);
  ASSERT_EQ(library_.initialize(0), CardScanStore::kSuccess);
  EXPECT_EQ(library_.count(), 1u);
}

using SketchStoreTest = OneTableStoreTest<SketchStore>;

TEST_F(SketchStoreTest, AnotherTableThanTheFirstIsUnknown) {
  const Record record(layout_.store_size);
  Number id = 0;
  EXPECT_EQ(library_.insert(record.data(), &id, 1), stores::kUnknownTable);
  InsertAny();
  EXPECT_EQ(library_.count(1), 0u);
}

}  // namespace
