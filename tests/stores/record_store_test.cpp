// The record store by its C++ interface: what goes in comes out, and each call is all or nothing.
#include "host/stores/record_store.h"

#include <gmock/gmock.h>

#include <cstring>

#include "host/stores/schedule_kinds.h"
#include "modules/calendar/schedule_layout.h"
#include "tests/stores/store_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecordStoreTest : public StoreTest {
 protected:
  std::uint32_t InsertSample() { return entries_.Insert(SmallRecord(entries_.Kind().layout, random_).data()); }

  stores::Database database_;
  stores::RecordStore entries_{database_, stores::kScheduleKinds[stores::kScheduleEntries]};
  stores::RecordStore groups_{database_, stores::kScheduleKinds[stores::kScheduleGroups]};
};

TEST_F(RecordStoreTest, RecordsComeBackByteForByteWithTheirNewId) {
  for (stores::RecordStore* const store : {&entries_, &groups_}) {
    for (int i = 0; i < 50; ++i) {
      Record record = RandomRecord(store->Kind().layout, random_);
      const std::uint32_t id = store->Insert(record.data());
      PutId(store->Kind().layout, id, record);
      ASSERT_EQ(ReadOne(*store, id), record);
    }
  }
}

TEST_F(RecordStoreTest, UpdatedRecordsComeBackByteForByte) {
  const std::uint32_t id = InsertSample();
  Record record = RandomRecord(entries_.Kind().layout, random_);
  entries_.Update(id, record.data());
  PutId(entries_.Kind().layout, id, record);
  EXPECT_EQ(ReadOne(entries_, id), record);
}

TEST_F(RecordStoreTest, BytesThatNoRowNamesComeBackZero) {
  const Record ones(entries_.Kind().layout.store_size, 0xFF);
  const std::uint32_t id = entries_.Insert(ones.data());
  Record named = NamedBits(entries_.Kind().layout);
  PutId(entries_.Kind().layout, id, named);
  EXPECT_EQ(ReadOne(entries_, id), named);
}

class TextTest : public RecordStoreTest, public testing::WithParamInterface<std::u16string> {};

TEST_P(TextTest, ComesBackByteForByte) {
  for (const qv::layout::Field& field : entries_.Kind().layout.fields) {
    if (field.store.form != qv::layout::Form::kText) continue;
    Record record(entries_.Kind().layout.store_size);
    std::memcpy(record.data() + field.store.offset, GetParam().data(), GetParam().size() * 2);
    const std::uint32_t id = entries_.Insert(record.data());
    PutId(entries_.Kind().layout, id, record);
    EXPECT_EQ(ReadOne(entries_, id), record) << field.name;
  }
}

INSTANTIATE_TEST_SUITE_P(OfAnyKind, TextTest,
                         testing::Values(u"", u"plain", u"Grüße, 日本語, 😀", u"\xFEFFmark", u"\xFFFE\xFFFF", u"\xFFFD",
                                         u"lone \xD800 high", u"low \xDC00", u"end \xD83D",
                                         std::u16string(u"behind\0the NUL", 14), std::u16string(u"\0x", 2),
                                         u"thirty-one units fill the slot.", u"thirty units leave a NUL only."));

TEST_F(RecordStoreTest, SyncInfoIsInTheOrderOfInsertionWithTheTimesGiven) {
  const Record record(groups_.Kind().layout.store_size);
  groups_.Insert(record.data(), 0x0123456789ABCDEF);
  groups_.Insert(record.data(), 5);
  groups_.Insert(record.data(), 0x100000000);
  const auto info = SyncInfoOf(groups_);
  ASSERT_EQ(info.size(), 3u);
  EXPECT_EQ(info[0].id, 1u);
  EXPECT_EQ(info[0].unused, 0u);
  EXPECT_EQ(info[0].time_low, 0x89ABCDEFu);
  EXPECT_EQ(info[0].time_high, 0x01234567u);
  EXPECT_EQ(TimeOf(info[1]), 5);
  EXPECT_EQ(TimeOf(info[2]), 0x100000000);
  EXPECT_THAT(IdsOf(groups_), ElementsAre(1, 2, 3));
}

TEST_F(RecordStoreTest, SyncInfoStopsWhereTheRoomEnds) {
  for (int i = 0; i < 3; ++i) InsertSample();
  std::vector<qv::SyncInfoEntry> room(2);
  EXPECT_EQ(entries_.SyncInfo(room), 2u);
  EXPECT_EQ(room[1].id, 2u);
}

TEST_F(RecordStoreTest, AnInsertWithoutATimeIsAsOfNow) {
  InsertSample();
  EXPECT_NEAR(static_cast<double>(TimeOf(SyncInfoOf(entries_)[0]) - Now()), 0, kMinute);
}

TEST_F(RecordStoreTest, AnUpdateMovesTheTime) {
  const Record record(groups_.Kind().layout.store_size);
  const std::uint32_t past = groups_.Insert(record.data(), 1000);
  const stores::FileTime in_an_hour = Now() + 60 * kMinute;
  const std::uint32_t future = groups_.Insert(record.data(), in_an_hour);
  groups_.Update(past, record.data());
  groups_.Update(future, record.data());
  const auto info = SyncInfoOf(groups_);
  EXPECT_NEAR(static_cast<double>(TimeOf(info[0]) - Now()), 0, kMinute);
  EXPECT_EQ(TimeOf(info[1]), in_an_hour + 1);
}

TEST_F(RecordStoreTest, IdsAreNeverGivenOutTwice) {
  for (int i = 0; i < 3; ++i) InsertSample();
  const std::uint32_t last = 3;
  entries_.Delete({&last, 1});
  EXPECT_EQ(InsertSample(), 4u);
  entries_.DeleteAll();
  EXPECT_EQ(InsertSample(), 5u);
}

TEST_F(RecordStoreTest, AnIdThatIsGivenIsTakenAndThoseAfterItAreGreater) {
  const Record record(groups_.Kind().layout.store_size);
  EXPECT_EQ(groups_.Insert(record.data(), 1000, 7), 7u);
  EXPECT_EQ(groups_.Insert(record.data(), 1000), 8u);
  EXPECT_THROW(groups_.Insert(record.data(), 1000, 7), stores::StoreError);
  EXPECT_THAT(IdsOf(groups_), ElementsAre(7, 8));
}

TEST_F(RecordStoreTest, AnUnknownIdAmongThoseToDeleteKeepsThemAll) {
  for (int i = 0; i < 3; ++i) InsertSample();
  EXPECT_THROW(entries_.Delete(std::vector<std::uint32_t>{1, 2, 99}), stores::UnknownId);
  EXPECT_THROW(entries_.Delete(std::vector<std::uint32_t>{1, 1}), stores::UnknownId);
  EXPECT_THAT(IdsOf(entries_), ElementsAre(1, 2, 3));
  entries_.Delete(std::vector<std::uint32_t>{1, 3});
  EXPECT_THAT(IdsOf(entries_), ElementsAre(2));
}

TEST_F(RecordStoreTest, UnknownIdsAreNeitherReadNorUpdated) {
  const Record record(entries_.Kind().layout.store_size);
  EXPECT_THROW(ReadOne(entries_, 1), stores::UnknownId);
  EXPECT_THROW(entries_.Update(1, record.data()), stores::UnknownId);
  EXPECT_EQ(entries_.Count(), 0u);
}

TEST_F(RecordStoreTest, ATransactionMakesManyCallsOne) {
  {
    stores::Transaction transaction(database_);
    InsertSample();
    InsertSample();
  }
  EXPECT_THAT(IdsOf(entries_), IsEmpty());
  stores::Transaction transaction(database_);
  const std::uint32_t kept = InsertSample();
  EXPECT_THROW(entries_.Delete(std::vector<std::uint32_t>{kept, 99}), stores::UnknownId);
  transaction.Commit();
  EXPECT_THAT(IdsOf(entries_), ElementsAre(kept));
}

TEST_F(RecordStoreTest, RecordsOutliveTheDatabaseConnection) {
  const std::uint32_t id = InsertSample();
  stores::Database again;
  const stores::RecordStore entries(again, entries_.Kind());
  EXPECT_EQ(ReadOne(entries, id), ReadOne(entries_, id));
}

TEST_F(RecordStoreTest, SettingsAreKeptByName) {
  EXPECT_EQ(database_.Setting("a"), std::nullopt);
  database_.SetSetting("a", 1);
  database_.SetSetting("a", 0xFFFFFFFF);
  EXPECT_EQ(database_.Setting("a"), 0xFFFFFFFF);
}

}  // namespace
