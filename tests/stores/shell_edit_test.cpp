// Edits of the database in the sqlite3 shell count as edits on the handset.
#include <gmock/gmock.h>

#include <cstring>
#include <string>

#include "host/stores/schedule_kinds.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

class ShellEditTest : public StoreTest {
 protected:
  std::u16string TextOf(std::uint32_t id) const {
    const Record record = ReadOne(entries_, id);
    const qv::layout::Slot& slot = kText->store;
    std::u16string text(slot.size / 2, u'\0');
    std::memcpy(text.data(), record.data() + slot.offset, slot.size);
    text.resize(text.find(u'\0'));
    return text;
  }

  static constexpr std::string_view kTextName = "text_1";
  const qv::layout::Field* const kText = [] {
    for (const auto& field : stores::kScheduleKinds[stores::kScheduleEntries].layout.fields) {
      if (field.name == kTextName) return &field;
    }
    throw std::logic_error("the form has no such field");
  }();

  stores::Database database_;
  stores::RecordStore entries_{database_, stores::kScheduleKinds[stores::kScheduleEntries]};
};

TEST_F(ShellEditTest, AnUpdateMovesTheTimeAndIsRead) {
  const Record record(entries_.Kind().layout.store_size);
  const std::uint32_t id = entries_.Insert(record.data(), 1000);
  Shell("UPDATE schedule_entries SET text_1 = 'Grüße 😀', start_year = 2009 WHERE id = 1");
  EXPECT_EQ(TextOf(id), u"Grüße 😀");
  EXPECT_NEAR(static_cast<double>(TimeOf(SyncInfoOf(entries_)[0]) - Now()), 0, kMinute);
}

TEST_F(ShellEditTest, AnUpdateOfTheTimeItselfIsKept) {
  const Record record(entries_.Kind().layout.store_size);
  entries_.Insert(record.data(), 1000);
  Shell("UPDATE schedule_entries SET modified = 77, text_1 = 'x'");
  EXPECT_EQ(TimeOf(SyncInfoOf(entries_)[0]), 77);
}

TEST_F(ShellEditTest, AnInsertedRowIsAsOfNowAndZeroWhereItNamesNothing) {
  Shell("INSERT INTO schedule_entries (text_1) VALUES ('new'); INSERT INTO schedule_entries (modified) VALUES (NULL)");
  const auto info = SyncInfoOf(entries_);
  ASSERT_EQ(info.size(), 2u);
  for (const auto& entry : info) EXPECT_NEAR(static_cast<double>(TimeOf(entry) - Now()), 0, kMinute);
  EXPECT_EQ(TextOf(info[0].id), u"new");
  Record zero(entries_.Kind().layout.store_size);
  PutId(entries_.Kind().layout, info[1].id, zero);
  EXPECT_EQ(ReadOne(entries_, info[1].id), zero);
}

TEST_F(ShellEditTest, IdsThatNoRecordCanHaveAreRefused) {
  Shell(
      "INSERT OR IGNORE INTO schedule_entries (id) VALUES (-1), (0), (1), (4294967295), (4294967296);"
      "UPDATE OR IGNORE schedule_entries SET id = id - 1");
  EXPECT_THAT(IdsOf(entries_), testing::ElementsAre(1, 4294967294));
}

TEST_F(ShellEditTest, NoRecordIsInsertedBehindTheLastId) {
  const Record record(entries_.Kind().layout.store_size);
  Shell("INSERT INTO schedule_entries (id) VALUES (4294967294)");
  EXPECT_EQ(entries_.Insert(record.data()), 4294967295);
  EXPECT_THROW(entries_.Insert(record.data()), stores::StoreError);
  EXPECT_THAT(IdsOf(entries_), testing::ElementsAre(4294967294, 4294967295));
}

TEST_F(ShellEditTest, TextThatDoesNotFitIsCutBeforeItsNulAndBetweenCharacters) {
  Shell(
      "INSERT INTO schedule_entries (text_1) VALUES ('1234567890123456789012345678901234567890');"
      "INSERT INTO schedule_entries (text_1) VALUES ('12345678901234567890123456789😀')");
  EXPECT_EQ(TextOf(1), u"123456789012345678901234567890");
  EXPECT_EQ(TextOf(2), u"12345678901234567890123456789");
}

TEST_F(ShellEditTest, NumbersThatDoNotFitLoseTheirHighBits) {
  Shell("INSERT INTO schedule_entries (start_year, start_month) VALUES (4096 + 2009, 16 + 5)");
  Shell("INSERT INTO schedule_entries (start_year, start_month) VALUES (2009, 5)");
  Record record = ReadOne(entries_, 1);
  PutId(entries_.Kind().layout, 2, record);
  EXPECT_EQ(ReadOne(entries_, 2), record);
}

TEST_F(ShellEditTest, AStoredTextShowsAsText) {
  Record record(entries_.Kind().layout.store_size);
  std::memcpy(record.data() + kText->store.offset, u"Überblick", 18);
  entries_.Insert(record.data());
  EXPECT_EQ(Shell("SELECT typeof(text_1), text_1, start_year, typeof(item_80) FROM schedule_entries"),
            "text|Überblick|0|blob\n");
}

TEST_F(ShellEditTest, AnIllFormedTextShowsAsBytes) {
  Record record(entries_.Kind().layout.store_size);
  std::memcpy(record.data() + kText->store.offset, u"a\xD800", 4);
  entries_.Insert(record.data());
  EXPECT_EQ(Shell("SELECT typeof(text_1), hex(text_1) FROM schedule_entries"), "blob|610000D8\n");
}

TEST_F(ShellEditTest, TheShellFindsTheFileSound) {
  EXPECT_EQ(Shell("PRAGMA integrity_check"), "ok\n");
}

}  // namespace
