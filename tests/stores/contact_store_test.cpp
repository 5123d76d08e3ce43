// ContactStore.dll as a file: what its entry points answer to good and bad callers, and what a person with the sqlite3
// shell sees and does. The offsets are written out by hand: the store takes its own from the agent's tables, where a
// wrong one would pass unnoticed.
#include <gmock/gmock.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "host/stores/contact_database.h"
#include "host/stores/store_library.h"
#include "tests/stores/contact_store_library.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Ids = std::vector<std::uint32_t>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRecordSize = 2744;
constexpr std::size_t kHeadSize = 16;  // Id and time: what a list has of a record.
constexpr std::size_t kNameOffset = 18;
constexpr std::size_t kMembershipSize = 408;
constexpr std::size_t kPictureSize = 8200;
constexpr std::size_t kMostPictureBytes = 8192;

void PutText(Record& record, std::size_t offset, std::u16string_view text) {
  std::memcpy(record.data() + offset, text.data(), text.size() * 2);
}

std::u16string TextAt(const Record& record, std::size_t offset) {
  std::u16string text;
  for (std::size_t i = offset; record[i] != 0 || record[i + 1] != 0; i += 2) {
    text += static_cast<char16_t>(record[i] | record[i + 1] << 8);
  }
  return text;
}

Record Named(std::u16string_view name) {
  Record record(kRecordSize);
  PutText(record, kNameOffset, name);
  return record;
}

Bytes Membership(std::uint32_t contact, const Ids& groups) {
  Bytes record(kMembershipSize);
  const auto count = static_cast<std::uint32_t>(groups.size());
  std::memcpy(record.data(), &contact, 4);
  std::memcpy(record.data() + 4, &count, 4);
  for (std::size_t i = 0; i < groups.size(); ++i) std::memcpy(record.data() + 8 + 4 * i, &groups[i], 4);
  return record;
}

Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Bytes Picture(const Bytes& data) {
  Bytes buffer(kPictureSize);
  buffer[4] = static_cast<std::uint8_t>(data.size());
  buffer[5] = static_cast<std::uint8_t>(data.size() >> 8);
  std::copy_n(data.begin(), std::min(data.size(), kMostPictureBytes), buffer.begin() + 6);
  return buffer;
}

/// The library after DTP_Initialize, and the database as another program has it.
class ContactStoreTest : public StoreTest {
 protected:
  ContactStoreTest() { EXPECT_EQ(library_.initialize(0), 0); }

  std::uint32_t Add(const ContactTableCalls& table, const Record& record) {
    std::uint32_t id = 0;
    EXPECT_EQ(table.add(record.data(), 1, &id), 0);
    return id;
  }
  std::uint32_t AddContact(std::u16string_view name = u"") { return Add(library_.contacts, Named(name)); }
  std::uint32_t AddGroup(std::u16string_view name = u"") { return Add(library_.groups, Named(name)); }

  static Record Read(const ContactTableCalls& table, std::uint32_t id) {
    Record record(kRecordSize, 0xEE);
    EXPECT_EQ(table.read(&id, 1, record.data()), 0);
    return record;
  }

  static std::int32_t Count(const ContactTableCalls& table) {
    std::int32_t count = -1;
    EXPECT_EQ(table.count(&count), 0);
    return count;
  }

  /// The list's entries, 16 bytes each.
  static std::vector<Bytes> List(const ContactTableCalls& table, std::int32_t room = 100) {
    Bytes entries(static_cast<std::size_t>(room) * kHeadSize + 1);
    // At an odd address: callers need not align it.
    EXPECT_EQ(table.list(&room, entries.data() + 1), 0);
    std::vector<Bytes> list;
    for (auto from = entries.begin() + 1; room > 0; --room, from += kHeadSize)
      list.emplace_back(from, from + kHeadSize);
    return list;
  }

  static Ids IdsOf(const ContactTableCalls& table) {
    Ids ids;
    for (const Bytes& entry : List(table)) {
      ids.emplace_back();
      std::memcpy(&ids.back(), entry.data(), 4);
    }
    return ids;
  }

  Ids GroupsOf(std::uint32_t contact) {
    Bytes record = Membership(contact, {});
    EXPECT_EQ(library_.query_groups(1, record.data()), 0);
    std::uint32_t count = 0;
    std::memcpy(&count, record.data() + 4, 4);
    Ids groups(count);
    for (std::size_t i = 0; i < groups.size(); ++i) std::memcpy(&groups[i], record.data() + 8 + 4 * i, 4);
    return groups;
  }

  std::int32_t AddToGroups(const Bytes& memberships) {
    return library_.add_to_groups(static_cast<std::int32_t>(memberships.size() / kMembershipSize), memberships.data());
  }
  std::int32_t ModifyGroups(const Bytes& memberships) {
    return library_.modify_groups(static_cast<std::int32_t>(memberships.size() / kMembershipSize), memberships.data());
  }

  std::uint32_t AddPicture(const Bytes& data) {
    std::uint32_t id = 0;
    EXPECT_EQ(library_.load_picture(Picture(data).data(), &id), 0);
    return id;
  }

  static std::optional<std::uint32_t> Find(const ContactTableCalls& table, const std::u16string& name) {
    std::int32_t found = -1;
    std::uint32_t id = 99;
    EXPECT_EQ(table.find(name.c_str(), &found, &id), 0);
    if (found == 0) return std::nullopt;
    EXPECT_EQ(found, 1);
    return id;
  }

  const ContactStoreLibrary library_{QV_CONTACT_STORE};
  const ContactTableCalls* const tables_[2] = {&library_.contacts, &library_.groups};
  stores::Database database_;
};

TEST_F(ContactStoreTest, RecordsComeBackByteForByteBehindTheirIdAndTime) {
  for (std::size_t table = 0; table < std::size(tables_); ++table) {
    for (int i = 0; i < 20; ++i) {
      Record record = RandomRecord(stores::kContactKinds[table].layout, random_);
      const std::uint32_t id = Add(*tables_[table], record);
      const Bytes head = List(*tables_[table]).back();
      std::copy(head.begin(), head.end(), record.begin());
      ASSERT_EQ(Read(*tables_[table], id), record);
    }
  }
}

TEST_F(ContactStoreTest, AContactsBytesAreColumns) {
  Record record = Named(u"Änne 李");
  record[16] = 9;
  record[17] = 1;
  PutText(record, 382, u"+49 30 1");
  record[1084] = 0xD9;
  record[1085] = 0x07;
  record[1388] = 131;
  record[2284] = 0x21;
  record[2285] = 0x43;
  record[2736] = 100;
  EXPECT_EQ(Add(library_.contacts, record), 1u);
  EXPECT_EQ(Shell("SELECT id, name, value_3514, kind, number_1, first_date_year, number_type_1, picture_id,"
                  " first_date_reminder FROM contacts"),
            "1|Änne 李|9|1|+49 30 1|2009|131|17185|100\n");
}

TEST_F(ContactStoreTest, ARowsColumnsAreAContactsBytes) {
  Shell("INSERT INTO contacts (name, kind, picture_id, text_66) VALUES ('Änne 李', 1, 0x4321, 'x')");
  const Record record = Read(library_.contacts, 1);
  EXPECT_EQ(record[0], 1);
  EXPECT_EQ(record[17], 1);
  EXPECT_EQ(TextAt(record, 18), u"Änne 李");
  EXPECT_EQ(TextAt(record, 80), u"x");
  EXPECT_EQ(record[2284] | record[2285] << 8, 0x4321);
}

TEST_F(ContactStoreTest, AGroupsBytesAreColumns) {
  Record record = Named(u"Família");
  record[17] = 2;
  PutText(record, 1366, u"ab");
  EXPECT_EQ(Add(library_.groups, record), 1u);
  EXPECT_EQ(Shell("SELECT id, name, kind, text_46 FROM contact_groups"), "1|Família|2|ab\n");
}

TEST_F(ContactStoreTest, ATimeIsTheRowsInSixNumbersInTheListAndTheRecord) {
  const Bytes head = {1, 0, 0, 0, 0xD9, 0x07, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0};
  for (const char* const table : {"contacts", "contact_groups"}) {
    Shell("INSERT INTO " + std::string(table) + " (modified) VALUES (128806167679999999)");
  }
  for (const ContactTableCalls* const table : tables_) {
    EXPECT_THAT(List(*table), ElementsAre(head));
    const Record record = Read(*table, 1);
    EXPECT_EQ(Bytes(record.begin(), record.begin() + kHeadSize), head);
  }
}

TEST_F(ContactStoreTest, ANewRecordIsAsOfNowWhateverTimeItBrings) {
  Record record(kRecordSize);
  std::fill_n(record.begin(), kHeadSize, std::uint8_t{0xEE});
  for (const ContactTableCalls* const table : tables_) Add(*table, record);
  for (const char* const table : {"contacts", "contact_groups"}) {
    const double modified = std::stod(Shell("SELECT modified FROM " + std::string(table)));
    EXPECT_NEAR(modified - static_cast<double>(Now()), 0, kMinute);
  }
}

TEST_F(ContactStoreTest, EveryEditMovesTheListedTimeByASecondAtLeast) {
  const std::uint32_t id = AddContact();
  std::vector<stores::FileTime> times;
  const auto take_time = [&] { times.push_back(std::stoll(Shell("SELECT modified FROM contacts"))); };
  take_time();
  std::vector<Bytes> listed = List(library_.contacts);
  const auto edited = [&] {
    take_time();
    listed.push_back(List(library_.contacts)[0]);
    EXPECT_NE(listed[listed.size() - 2], listed.back());
    EXPECT_GE(times.back() - times[times.size() - 2], 10'000'000);
  };
  for (const char* const name : {"a", "b", "c"}) {
    Shell("UPDATE contacts SET name = '" + std::string(name) + "'");
    edited();
  }
  ASSERT_EQ(library_.contacts.update(&id, 1, Named(u"d").data()), 0);
  edited();
}

TEST_F(ContactStoreTest, RecordsAreReadBackToBackInTheOrderAskedFor) {
  for (const ContactTableCalls* const table : tables_) {
    Ids ids(3);
    const Record three = Named(u"one") + Named(u"two") + Named(u"three");
    ASSERT_EQ(table->add(three.data(), 3, ids.data()), 0);
    EXPECT_THAT(ids, ElementsAre(1, 2, 3));
    std::swap(ids[0], ids[2]);
    Record records(3 * kRecordSize);
    ASSERT_EQ(table->read(ids.data(), 3, records.data()), 0);
    EXPECT_EQ(TextAt(records, kNameOffset), u"three");
    EXPECT_EQ(records, Read(*table, 3) + Read(*table, 2) + Read(*table, 1));
  }
}

TEST_F(ContactStoreTest, ContactsAndGroupsAreCountedListedUpdatedAndDeletedApart) {
  for (int i = 0; i < 3; ++i) AddContact(u"contact");
  for (int i = 0; i < 2; ++i) AddGroup(u"group");
  const Ids doomed = {1, 3}, kept = {2};
  ASSERT_EQ(library_.contacts.erase(doomed.data(), 2), 0);
  ASSERT_EQ(library_.groups.update(kept.data(), 1, Named(u"changed").data()), 0);
  EXPECT_EQ(Count(library_.contacts), 1);
  EXPECT_EQ(Count(library_.groups), 2);
  EXPECT_EQ(IdsOf(library_.contacts), kept);
  EXPECT_THAT(IdsOf(library_.groups), ElementsAre(1, 2));
  EXPECT_EQ(TextAt(Read(library_.contacts, 2), kNameOffset), u"contact");
  EXPECT_EQ(TextAt(Read(library_.groups, 1), kNameOffset), u"group");
  EXPECT_EQ(TextAt(Read(library_.groups, 2), kNameOffset), u"changed");
}

TEST_F(ContactStoreTest, TheListStopsWhereTheRoomEnds) {
  for (int i = 0; i < 3; ++i) AddContact(), AddGroup();
  for (const ContactTableCalls* const table : tables_) {
    Bytes entries(3 * kHeadSize, 0xEE);
    std::int32_t count = 2;
    ASSERT_EQ(table->list(&count, entries.data()), 0);
    EXPECT_EQ(count, 2);
    EXPECT_THAT(Bytes(entries.end() - kHeadSize, entries.end()), testing::Each(0xEE));
    EXPECT_EQ(List(*table, std::numeric_limits<std::int16_t>::max()).size(), 3u);
  }
}

TEST_F(ContactStoreTest, IdsAreNeverGivenOutTwice) {
  for (const ContactTableCalls* const table : tables_) {
    const std::uint32_t id = Add(*table, Record(kRecordSize));
    ASSERT_EQ(table->erase(&id, 1), 0);
    EXPECT_EQ(Add(*table, Record(kRecordSize)), id + 1);
  }
}

TEST_F(ContactStoreTest, AnUnknownIdAmongOthersIsRefusedAndChangesNothing) {
  const Ids ids = {1, 99};
  const Record changed = Named(u"changed") + Named(u"changed");
  Record room(2 * kRecordSize);
  for (const ContactTableCalls* const table : tables_) {
    Add(*table, Named(u"kept"));
    const Record before = Read(*table, 1);
    EXPECT_EQ(table->read(ids.data(), 2, room.data()), stores::kUnknownRecord);
    EXPECT_EQ(table->update(ids.data(), 2, changed.data()), stores::kUnknownRecord);
    EXPECT_EQ(table->erase(ids.data(), 2), stores::kUnknownRecord);
    EXPECT_EQ(Read(*table, 1), before);
    EXPECT_THAT(IdsOf(*table), ElementsAre(1));
  }
}

TEST_F(ContactStoreTest, ABatchThatFailsHalfwayAddsNothing) {
  Shell("INSERT INTO contacts (id) VALUES (4294967294)");
  Ids ids(2);
  EXPECT_EQ(library_.contacts.add(Record(2 * kRecordSize).data(), 2, ids.data()), stores::kDatabaseFailed);
  EXPECT_EQ(Count(library_.contacts), 1);
}

TEST_F(ContactStoreTest, ANameIsFoundAsItIsWrittenAndNotOtherwise) {
  for (const ContactTableCalls* const table : tables_) {
    EXPECT_EQ(Find(*table, u"Anna"), std::nullopt);
    Add(*table, Named(u"Bert"));
    Add(*table, Named(u"Anna"));
    EXPECT_EQ(Find(*table, u"Anna"), 2u);
    for (const char16_t* const other : {u"anna", u"Ann", u"Anna ", u"Anna%", u""}) {
      EXPECT_EQ(Find(*table, other), std::nullopt);
    }
  }
}

TEST_F(ContactStoreTest, OfTwoRecordsOfTheSameNameTheLowerIdIsFound) {
  for (const ContactTableCalls* const table : tables_) {
    for (int i = 0; i < 3; ++i) Add(*table, Named(u"Anna"));
    const std::uint32_t first = 1;
    EXPECT_EQ(Find(*table, u"Anna"), first);
    ASSERT_EQ(table->update(&first, 1, Named(u"Berta").data()), 0);
    EXPECT_EQ(Find(*table, u"Anna"), 2u);
  }
}

TEST_F(ContactStoreTest, NamesOfAllKindsAreFound) {
  for (const ContactTableCalls* const table : tables_) {
    for (const std::u16string name :
         {u"", u"Jürgen Groß", u"李明", u"😀", u"lone \xD800 high", u"o'Hara; --", u"thirty units leave a NUL only."}) {
      const std::uint32_t id = Add(*table, Named(name));
      EXPECT_EQ(Find(*table, name), id);
    }
  }
}

TEST_F(ContactStoreTest, ANameAtAnOddAddressIsFound) {
  const std::uint32_t id = AddContact(u"Anna");
  Bytes name(11);
  std::memcpy(name.data() + 1, u"Anna", 10);
  std::int32_t found = 0;
  std::uint32_t found_id = 0;
  const void* const odd = name.data() + 1;
  ASSERT_EQ(library_.contacts.find(static_cast<const char16_t*>(odd), &found, &found_id), 0);
  EXPECT_EQ(found_id, id);
}

TEST_F(ContactStoreTest, AContactIsInTheGroupsItWasAddedTo) {
  for (int i = 0; i < 3; ++i) AddContact(), AddGroup();
  EXPECT_THAT(GroupsOf(1), IsEmpty());
  ASSERT_EQ(AddToGroups(Membership(1, {3, 1}) + Membership(2, {2})), 0);
  ASSERT_EQ(AddToGroups(Membership(1, {2, 3})), 0);
  Bytes records = Membership(3, {}) + Membership(2, {}) + Membership(1, {});
  ASSERT_EQ(library_.query_groups(3, records.data()), 0);
  EXPECT_EQ(records, Membership(3, {}) + Membership(2, {2}) + Membership(1, {1, 2, 3}));
  EXPECT_EQ(Shell("SELECT contact_id, group_id FROM memberships"), "1|1\n1|2\n1|3\n2|2\n");
}

TEST_F(ContactStoreTest, ModifiedMembershipsReplaceTheFormerOnes) {
  for (int i = 0; i < 3; ++i) AddContact(), AddGroup();
  ASSERT_EQ(AddToGroups(Membership(1, {1, 2}) + Membership(2, {1}) + Membership(3, {1})), 0);
  ASSERT_EQ(ModifyGroups(Membership(1, {3, 2}) + Membership(2, {})), 0);
  EXPECT_THAT(GroupsOf(1), ElementsAre(2, 3));
  EXPECT_THAT(GroupsOf(2), IsEmpty());
  EXPECT_THAT(GroupsOf(3), ElementsAre(1));
}

TEST_F(ContactStoreTest, MembershipsGoWithTheirContactOrGroup) {
  for (int i = 0; i < 2; ++i) AddContact(), AddGroup();
  ASSERT_EQ(AddToGroups(Membership(1, {1, 2}) + Membership(2, {1, 2})), 0);
  const std::uint32_t first = 1;
  ASSERT_EQ(library_.contacts.erase(&first, 1), 0);
  EXPECT_EQ(Shell("SELECT contact_id, group_id FROM memberships"), "2|1\n2|2\n");
  ASSERT_EQ(library_.groups.erase(&first, 1), 0);
  EXPECT_THAT(GroupsOf(2), ElementsAre(2));
  Shell("DELETE FROM contact_groups");
  EXPECT_THAT(GroupsOf(2), IsEmpty());
}

TEST_F(ContactStoreTest, AChangeOfItsGroupsChangesAContact) {
  AddContact(), AddContact();
  AddGroup(), AddGroup();
  std::vector<Bytes> before = List(library_.contacts);
  const auto expect_first_alone_changed = [&] {
    const std::vector<Bytes> after = List(library_.contacts);
    EXPECT_NE(after[0], before[0]);
    EXPECT_EQ(after[1], before[1]);
    before = after;
  };
  ASSERT_EQ(AddToGroups(Membership(1, {1})), 0);
  expect_first_alone_changed();
  ASSERT_EQ(ModifyGroups(Membership(1, {})), 0);
  expect_first_alone_changed();
  Shell("INSERT INTO memberships VALUES (1, 1)");
  expect_first_alone_changed();
  Shell("UPDATE memberships SET group_id = 2");
  expect_first_alone_changed();
  Shell("DELETE FROM contact_groups");
  expect_first_alone_changed();
}

TEST_F(ContactStoreTest, GroupsThatAreNotThereArePassedOver) {
  AddContact(), AddGroup();
  ASSERT_EQ(AddToGroups(Membership(1, {7, 1, 0xFFFFFFFF})), 0);
  EXPECT_THAT(GroupsOf(1), ElementsAre(1));
  ASSERT_EQ(ModifyGroups(Membership(1, {7})), 0);
  EXPECT_THAT(GroupsOf(1), IsEmpty());
}

TEST_F(ContactStoreTest, AContactThatWasRefusedIsPassedOver) {
  AddContact(), AddGroup();
  ASSERT_EQ(AddToGroups(Membership(0xFFFFFFFF, {1}) + Membership(1, {1})), 0);
  ASSERT_EQ(ModifyGroups(Membership(0xFFFFFFFF, {1})), 0);
  EXPECT_EQ(Shell("SELECT contact_id, group_id FROM memberships"), "1|1\n");
}

TEST_F(ContactStoreTest, MembershipsOfAnUnknownContactFailTheCall) {
  AddContact(), AddGroup(), AddGroup();
  ASSERT_EQ(AddToGroups(Membership(1, {1})), 0);
  EXPECT_EQ(AddToGroups(Membership(1, {2}) + Membership(99, {1})), stores::kUnknownRecord);
  EXPECT_EQ(ModifyGroups(Membership(1, {2}) + Membership(99, {1})), stores::kUnknownRecord);
  Bytes records = Membership(1, {}) + Membership(99, {});
  EXPECT_EQ(library_.query_groups(2, records.data()), stores::kUnknownRecord);
  EXPECT_EQ(Shell("SELECT contact_id, group_id FROM memberships"), "1|1\n");
}

TEST_F(ContactStoreTest, AMembershipHasRoomForAHundredGroups) {
  AddContact();
  Ids groups;
  for (int i = 0; i < 101; ++i) groups.push_back(AddGroup());
  Ids hundred(groups.begin(), groups.end() - 1);
  ASSERT_EQ(AddToGroups(Membership(1, hundred)), 0);
  EXPECT_EQ(GroupsOf(1), hundred);
  Shell("INSERT INTO memberships VALUES (1, 101)");
  EXPECT_EQ(GroupsOf(1), hundred);
  Bytes too_many = Membership(1, hundred);
  too_many[4] = 101;
  EXPECT_EQ(AddToGroups(too_many), stores::kOutOfBounds);
  EXPECT_EQ(ModifyGroups(too_many), stores::kOutOfBounds);
}

TEST_F(ContactStoreTest, PicturesComeBackByteForByteUnderTheirIds) {
  Bytes full(kMostPictureBytes);
  for (std::uint8_t& byte : full) byte = static_cast<std::uint8_t>(random_());
  for (const Bytes& data : {Bytes{0xFF, 0xD8, 0}, full, Bytes{}}) {
    const std::uint32_t id = AddPicture(data);
    Bytes expected = Picture(data);
    expected[0] = static_cast<std::uint8_t>(id);
    Bytes buffer(kPictureSize, 0xEE);
    ASSERT_EQ(library_.download_picture(id, buffer.data()), 0);
    EXPECT_EQ(buffer, expected);
  }
}

TEST_F(ContactStoreTest, APictureIsARow) {
  EXPECT_EQ(AddPicture({0xFF, 0xD8, 0}), 1u);
  EXPECT_EQ(Shell("SELECT id, hex(data) FROM pictures"), "1|FFD800\n");
}

TEST_F(ContactStoreTest, WhatLiesBehindAPicturesLengthIsNotKept) {
  Bytes buffer = Picture({1, 2});
  std::fill(buffer.begin() + 8, buffer.end(), std::uint8_t{0xEE});
  std::uint32_t id = 0;
  ASSERT_EQ(library_.load_picture(buffer.data(), &id), 0);
  EXPECT_EQ(Shell("SELECT hex(data) FROM pictures"), "0102\n");
}

TEST_F(ContactStoreTest, APictureTooLongIsRefused) {
  std::uint32_t id = 0;
  EXPECT_EQ(library_.load_picture(Picture(Bytes(kMostPictureBytes + 1)).data(), &id), stores::kOutOfBounds);
  Shell("INSERT OR IGNORE INTO pictures (data) VALUES (zeroblob(8193)), ('text'), (zeroblob(8192))");
  EXPECT_EQ(Shell("SELECT length(data) FROM pictures"), "8192\n");
}

TEST_F(ContactStoreTest, ADeletedPictureIsGoneAndItsIdIsNotGivenOutAgain) {
  AddPicture({1});
  EXPECT_EQ(library_.delete_picture(1), 0);
  Bytes buffer(kPictureSize);
  EXPECT_EQ(library_.download_picture(1, buffer.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.delete_picture(1), stores::kUnknownRecord);
  EXPECT_EQ(AddPicture({1}), 2u);
}

TEST_F(ContactStoreTest, APictureStaysWhenItsContactGoes) {
  Record record(kRecordSize);
  record[2284] = static_cast<std::uint8_t>(AddPicture({1}));
  const std::uint32_t id = Add(library_.contacts, record);
  ASSERT_EQ(library_.contacts.erase(&id, 1), 0);
  EXPECT_EQ(library_.delete_picture(1), 0);
}

TEST_F(ContactStoreTest, AddingIsRefusedWithTheStatusSet) {
  const Record record(kRecordSize);
  const std::string_view settings[] = {"contact_add_refusal", "group_add_refusal"};
  for (std::size_t table = 0; table < std::size(tables_); ++table) {
    const std::int32_t before = Count(*tables_[table]);
    for (const std::int32_t status : {-502, -503, 42}) {
      database_.SetSetting(settings[table], status);
      std::uint32_t id = 0;
      EXPECT_EQ(tables_[table]->add(record.data(), 1, &id), status);
      Add(*tables_[1 - table], record);
    }
    EXPECT_EQ(Count(*tables_[table]), before);
    database_.SetSetting(settings[table], 0);
    Add(*tables_[table], record);
  }
}

TEST_F(ContactStoreTest, APictureIsRefusedWithTheStatusSet) {
  std::uint32_t id = 0;
  for (const std::int32_t status : {-503, -504, 42}) {
    Shell("INSERT OR REPLACE INTO settings VALUES ('picture_refusal', " + std::to_string(status) + ")");
    EXPECT_EQ(library_.load_picture(Picture({1}).data(), &id), status);
  }
  EXPECT_EQ(Shell("SELECT count(*) FROM pictures"), "0\n");
  Shell("DELETE FROM settings");
  EXPECT_EQ(AddPicture({1}), 1u);
}

TEST_F(ContactStoreTest, NoMorePicturesFitThanTheSettingSays) {
  database_.SetSetting("most_pictures", 2);
  AddPicture({1}), AddPicture({2});
  std::uint32_t id = 0;
  EXPECT_EQ(library_.load_picture(Picture({3}).data(), &id), -504);
  ASSERT_EQ(library_.delete_picture(1), 0);
  EXPECT_EQ(AddPicture({3}), 3u);
  database_.SetSetting("most_pictures", 0);
  EXPECT_EQ(library_.load_picture(Picture({4}).data(), &id), -504);
}

TEST_F(ContactStoreTest, NullPointersAreRefused) {
  Record bytes(kPictureSize);
  std::uint32_t id = 1;
  std::int32_t number = 1;
  for (const ContactTableCalls* const table : tables_) {
    EXPECT_EQ(table->count(nullptr), stores::kNullPointer);
    EXPECT_EQ(table->list(nullptr, bytes.data()), stores::kNullPointer);
    EXPECT_EQ(table->list(&number, nullptr), stores::kNullPointer);
    EXPECT_EQ(table->read(nullptr, 1, bytes.data()), stores::kNullPointer);
    EXPECT_EQ(table->read(&id, 1, nullptr), stores::kNullPointer);
    EXPECT_EQ(table->erase(nullptr, 1), stores::kNullPointer);
    EXPECT_EQ(table->add(nullptr, 1, &id), stores::kNullPointer);
    EXPECT_EQ(table->add(bytes.data(), 1, nullptr), stores::kNullPointer);
    EXPECT_EQ(table->update(nullptr, 1, bytes.data()), stores::kNullPointer);
    EXPECT_EQ(table->update(&id, 1, nullptr), stores::kNullPointer);
    EXPECT_EQ(table->find(nullptr, &number, &id), stores::kNullPointer);
    EXPECT_EQ(table->find(u"", nullptr, &id), stores::kNullPointer);
    EXPECT_EQ(table->find(u"", &number, nullptr), stores::kNullPointer);
    EXPECT_EQ(Count(*table), 0);
  }
  EXPECT_EQ(library_.query_groups(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.add_to_groups(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.modify_groups(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.download_picture(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.load_picture(nullptr, &id), stores::kNullPointer);
  EXPECT_EQ(library_.load_picture(bytes.data(), nullptr), stores::kNullPointer);
}

TEST_F(ContactStoreTest, NothingMayBeAskedForWithNullPointers) {
  std::int32_t none = 0;
  for (const ContactTableCalls* const table : tables_) {
    EXPECT_EQ(table->list(&none, nullptr), 0);
    EXPECT_EQ(table->read(nullptr, 0, nullptr), 0);
    EXPECT_EQ(table->erase(nullptr, 0), 0);
    EXPECT_EQ(table->add(nullptr, 0, nullptr), 0);
    EXPECT_EQ(table->update(nullptr, 0, nullptr), 0);
  }
  EXPECT_EQ(library_.query_groups(0, nullptr), 0);
  EXPECT_EQ(library_.add_to_groups(0, nullptr), 0);
  EXPECT_EQ(library_.modify_groups(0, nullptr), 0);
}

TEST_F(ContactStoreTest, NegativeCountsAreRefused) {
  Record bytes(kPictureSize);
  std::uint32_t id = 1;
  for (const std::int32_t count : {-1, std::numeric_limits<std::int32_t>::min()}) {
    for (const ContactTableCalls* const table : tables_) {
      std::int32_t room = count;
      EXPECT_EQ(table->list(&room, bytes.data()), stores::kOutOfBounds);
      EXPECT_EQ(table->read(&id, count, bytes.data()), stores::kOutOfBounds);
      EXPECT_EQ(table->erase(&id, count), stores::kOutOfBounds);
      EXPECT_EQ(table->add(bytes.data(), count, &id), stores::kOutOfBounds);
      EXPECT_EQ(table->update(&id, count, bytes.data()), stores::kOutOfBounds);
    }
    EXPECT_EQ(library_.query_groups(count, bytes.data()), stores::kOutOfBounds);
    EXPECT_EQ(library_.add_to_groups(count, bytes.data()), stores::kOutOfBounds);
    EXPECT_EQ(library_.modify_groups(count, bytes.data()), stores::kOutOfBounds);
  }
}

TEST_F(ContactStoreTest, NothingIsAnsweredOutsideASession) {
  ASSERT_EQ(library_.uninitialize(), 0);
  Record bytes(kPictureSize);
  std::uint32_t id = 1;
  std::int32_t number = 1;
  for (const ContactTableCalls* const table : tables_) {
    EXPECT_EQ(table->count(&number), stores::kNoSession);
    EXPECT_EQ(table->list(&number, bytes.data()), stores::kNoSession);
    EXPECT_EQ(table->read(&id, 1, bytes.data()), stores::kNoSession);
    EXPECT_EQ(table->add(bytes.data(), 1, &id), stores::kNoSession);
    EXPECT_EQ(table->find(u"", &number, &id), stores::kNoSession);
  }
  EXPECT_EQ(library_.query_groups(1, bytes.data()), stores::kNoSession);
  EXPECT_EQ(library_.delete_picture(1), stores::kNoSession);
  EXPECT_EQ(library_.uninitialize(), 0);
  ASSERT_EQ(library_.initialize(0), 0);
  EXPECT_EQ(library_.initialize(0), 0);
  EXPECT_EQ(Count(library_.contacts), 0);
}

TEST(ContactStoreSessionTest, ADatabaseThatCannotBeOpenedMakesNoSession) {
  const FreshHandset handset;
  const ContactStoreLibrary library(QV_CONTACT_STORE);
  std::filesystem::create_directories(handset::HostPath(stores::kDatabasePath));
  EXPECT_EQ(library.initialize(0), stores::kDatabaseFailed);
  std::int32_t count = 0;
  EXPECT_EQ(library.contacts.count(&count), stores::kNoSession);
  std::filesystem::remove(handset::HostPath(stores::kDatabasePath));
  EXPECT_EQ(library.initialize(0), 0);
  EXPECT_EQ(library.contacts.count(&count), 0);
}

TEST(ContactStoreSessionTest, ItsEndAndTheLibrarysEndCloseTheDatabase) {
  const FreshHandset handset;
  const std::string log = handset::HostPath(stores::kDatabasePath).string() + "-wal";
  {
    const ContactStoreLibrary library(QV_CONTACT_STORE);
    ASSERT_EQ(library.initialize(0), 0);
    EXPECT_TRUE(std::filesystem::exists(log));
    ASSERT_EQ(library.uninitialize(), 0);
    EXPECT_FALSE(std::filesystem::exists(log));
    ASSERT_EQ(library.initialize(0), 0);
    EXPECT_TRUE(std::filesystem::exists(log));
  }
  EXPECT_FALSE(std::filesystem::exists(log));
}

}  // namespace
