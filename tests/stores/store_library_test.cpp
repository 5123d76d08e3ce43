// What libraries may be beside what those there are: success by another number, updates by the id in the record, one
// table emptied, inserts refused.
#include "host/stores/store_library.h"

#include <gmock/gmock.h>

#include <array>

#include "host/stores/contact_kinds.h"
#include "host/stores/message_kinds.h"
#include "host/stores/schedule_kinds.h"
#include "tests/stores/store_test.h"

namespace {

using stores::kOnlyTable;
using stores::kScheduleEntries;
using stores::kScheduleGroups;
using testing::ElementsAre;

constexpr std::uint32_t kSuccess = 2;

class StoreLibraryTest : public StoreTest {
 protected:
  using Schedule = stores::LibraryOf<stores::RecordTables<stores::kScheduleKinds>>;
  using Calls = stores::LibraryOf<stores::RecordTables<stores::kCallKinds>>;
  using Contacts = stores::LibraryOf<stores::RecordTables<stores::kContactKinds>>;

  std::uint32_t Insert(std::uint32_t table) {
    const Record record(stores::kScheduleKinds[table].layout.store_size);
    std::uint32_t id = 0;
    EXPECT_EQ(schedule_.Insert(table, record.data(), &id), stores::kDone);
    return id;
  }

  const qv::layout::RecordLayout& group_ = stores::kScheduleKinds[kScheduleGroups].layout;
  Schedule schedule_;
  Schedule other_success_{{.success = kSuccess}};
};

TEST_F(StoreLibraryTest, EveryCallButTheCountAnswersTheLibrarysSuccess) {
  Record record(group_.store_size);
  std::uint32_t id = 0;
  EXPECT_EQ(other_success_.Insert(kScheduleGroups, record.data(), &id), kSuccess);
  EXPECT_EQ(other_success_.Count(kScheduleGroups), 1u);
  qv::SyncInfoEntry entry = {};
  std::uint32_t count = 1;
  EXPECT_EQ(other_success_.List(kScheduleGroups, &count, &entry), kSuccess);
  EXPECT_EQ(entry.id, id);
  EXPECT_EQ(other_success_.Read(kScheduleGroups, 1, &id, record.data()), kSuccess);
  EXPECT_EQ(other_success_.Update(kScheduleGroups, id, record.data()), kSuccess);
  EXPECT_EQ(other_success_.Delete(kScheduleGroups, 1, &id), kSuccess);
  EXPECT_EQ(other_success_.DeleteAll(), kSuccess);
  EXPECT_EQ(other_success_.Count(kScheduleGroups), 0u);
}

TEST_F(StoreLibraryTest, NoFailureIsTakenForAnotherSuccess) {
  const std::uint32_t unknown = 9;
  EXPECT_EQ(static_cast<std::int32_t>(other_success_.Delete(kScheduleGroups, 1, nullptr)), -1);
  EXPECT_EQ(static_cast<std::int32_t>(other_success_.DeleteAll(2)), -2);
  EXPECT_EQ(static_cast<std::int32_t>(other_success_.Delete(kScheduleGroups, 1, &unknown)), -3);
}

TEST_F(StoreLibraryTest, AnUpdateWithoutAnIdGoesToTheRecordsOwn) {
  Calls calls;
  const qv::layout::RecordLayout& layout = stores::kCallKinds[0].layout;
  std::uint32_t id = 0;
  for (int i = 0; i < 2; ++i) calls.Insert(kOnlyTable, Record(layout.store_size).data(), &id);
  Record record = RandomRecord(layout, random_);
  PutId(layout, id, record);
  ASSERT_EQ(calls.Update(kOnlyTable, record.data()), stores::kDone);
  Record read(layout.store_size);
  ASSERT_EQ(calls.Read(kOnlyTable, 1, &id, read.data()), stores::kDone);
  EXPECT_EQ(read, record);
  PutId(layout, 99, record);
  EXPECT_EQ(calls.Update(kOnlyTable, record.data()), stores::kUnknownRecord);
  EXPECT_EQ(calls.Update(kOnlyTable, nullptr), stores::kNullPointer);
}

TEST_F(StoreLibraryTest, OneTableIsEmptiedOrAll) {
  Insert(kScheduleEntries), Insert(kScheduleGroups);
  ASSERT_EQ(schedule_.DeleteAll(kScheduleEntries), stores::kDone);
  EXPECT_EQ(schedule_.Count(kScheduleEntries), 0u);
  EXPECT_EQ(schedule_.Count(kScheduleGroups), 1u);
  Insert(kScheduleEntries);
  ASSERT_EQ(schedule_.DeleteAll(), stores::kDone);
  EXPECT_EQ(schedule_.Count(kScheduleEntries) + schedule_.Count(kScheduleGroups), 0u);
}

TEST_F(StoreLibraryTest, CountsThatNoCallerCanMeanAreRefused) {
  Record record(group_.store_size);
  std::uint32_t id = 1;
  for (std::uint32_t count : {0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(schedule_.List(kScheduleGroups, &count, record.data()), stores::kOutOfBounds);
    EXPECT_EQ(schedule_.Read(kScheduleGroups, count, &id, record.data()), stores::kOutOfBounds);
    EXPECT_EQ(schedule_.InsertBatch(kScheduleGroups, count, record.data(), &id), stores::kOutOfBounds);
    EXPECT_EQ(schedule_.UpdateBatch(kScheduleGroups, count, &id, record.data()), stores::kOutOfBounds);
    EXPECT_EQ(schedule_.Delete(kScheduleGroups, count, &id), stores::kOutOfBounds);
  }
}

TEST_F(StoreLibraryTest, AnInsertIsRefusedAsItsKindsSettingSays) {
  Contacts contacts;
  const Record record(stores::kContactKinds[stores::kContacts].layout.store_size);
  std::uint32_t id = 0;
  stores::Database().SetSetting("contact_add_refusal", 42);
  EXPECT_EQ(contacts.Insert(stores::kContacts, record.data(), &id), 42u);
  EXPECT_EQ(contacts.Insert(stores::kContactGroups, record.data(), &id), stores::kDone);
  EXPECT_EQ(contacts.Count(stores::kContacts), 0u);
}

TEST_F(StoreLibraryTest, OfACallThatIsRefusedNothingStays) {
  const Record record(group_.store_size);
  const auto insert_and_refuse = [&](auto& tables) {
    tables.Tables()[kScheduleGroups].Insert(record.data());
    stores::Refuse(stores::kNoMemory);
  };
  EXPECT_EQ(schedule_.Call(insert_and_refuse), stores::kNoMemory);
  EXPECT_EQ(schedule_.Count(kScheduleGroups), 0u);
}

TEST_F(StoreLibraryTest, OutsideItsSessionALibraryAnswersNothing) {
  Schedule library({.has_session = true});
  EXPECT_EQ(library.DeleteAll(), stores::kNoSession);
  EXPECT_EQ(library.Begin(), stores::kDone);
  EXPECT_EQ(library.DeleteAll(), stores::kDone);
  EXPECT_EQ(library.End(), stores::kDone);
  EXPECT_EQ(library.DeleteAll(), stores::kNoSession);
}

TEST_F(StoreLibraryTest, WhatIsHandedOutIsABlockOfItsOwn) {
  const std::array<std::uint8_t, 3> bytes = {1, 2, 3};
  auto* const block = static_cast<std::uint8_t*>(stores::HandOut(bytes.data(), bytes.size()));
  EXPECT_THAT(std::vector(block, block + bytes.size()), ElementsAre(1, 2, 3));
  EXPECT_EQ(handset::BlockSize(block), bytes.size());
  coredll::free(block);
  EXPECT_EQ(stores::HandOut(nullptr, 0), nullptr);
}

}  // namespace
