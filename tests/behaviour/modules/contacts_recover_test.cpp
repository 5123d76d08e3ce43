// Recovers of the contacts, by insertion and by change list: what reaches the store, in which calls, and what becomes
// of the files.
#include <algorithm>
#include <numeric>
#include <set>
#include <span>
#include <tuple>

#include "tests/support/recovered_contact_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_contact_store.h"

namespace qv_test {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint32_t kNoContact = 0xFFFFFFFF;
constexpr std::uint32_t kOldLow = ScriptedContactStore::kOldLow;
constexpr std::uint32_t kOldHigh = ScriptedContactStore::kOldHigh;
constexpr std::uint32_t kNewLow = ScriptedContactStore::kNewLow;
constexpr std::uint32_t kNewHigh = ScriptedContactStore::kNewHigh;

/// What a desktop places.
struct Tables {
  Bytes contacts = {};
  Bytes groups = {};
  Bytes memberships = {};
  Bytes pictures = {};
};

class ContactsRecoverTest : public AgentTest {
 protected:
  static void Place(const Tables& tables) {
    WriteFile(kContactTable, tables.contacts);
    WriteFile(kContactGroupTable, tables.groups);
    WriteFile(kMembershipTable, tables.memberships);
    WriteFile(kPictureTable, tables.pictures);
  }

  static void PlaceChanges(const Bytes& changes, const Tables& tables = {}) {
    WriteFile(kContactChanges, changes);
    Place(tables);
  }

  static bool TablesAreKept() { return std::ranges::all_of(kContactTables, &AgentTest::Exists); }
  static bool TablesAreGone() { return std::ranges::none_of(kContactTables, &AgentTest::Exists); }

  /// What the store receives for one contact.
  Bytes Received(const Bytes& contact) {
    store_.added[0].clear();
    Place({.contacts = contact});
    EXPECT_EQ(Recover(1, 5).code, 0u);
    EXPECT_THAT(store_.added[0], SizeIs(1));
    return store_.added[0].at(0);
  }

  /// The calls of a recover that say what is done to records: no counting, listing or leave-taking.
  std::vector<std::string> Deeds() const {
    std::vector<std::string> deeds;
    std::ranges::copy_if(store_.calls, std::back_inserter(deeds), [](const std::string& call) {
      return !call.starts_with("Get") && !call.starts_with("Initialize") && !call.starts_with("UnInitialize");
    });
    return deeds;
  }

  /// Lets entry points leave alone what they were to fill from the nth read of a file on.
  void FillNothingFromRead(std::u16string_view file, unsigned nth, const std::set<std::string>& entry_points) {
    reads_ = 0;
    handset::Observe([=, this](const handset::Call& call) {
      if (call.function == "ReadFile" && call.path == file && ++reads_ == nth) store_.fills_nothing = entry_points;
    });
  }

  /// The handset's user has a contact with a picture.
  void AddContact(std::uint32_t id, std::uint32_t picture = 0, std::u16string_view name = u"") {
    Bytes record(ScriptedContactStore::kRecordSize);
    PutText(record, 18, name);
    Put32(record, 2284, picture);
    store_.Add(0, id, ScriptedContactStore::kOldTime, record);
    if (picture != 0) store_.pictures[picture] = {1, {1}};
  }

  void AddGroup(std::uint32_t id, std::u16string_view name = u"") {
    Bytes record(ScriptedContactStore::kRecordSize);
    PutText(record, 18, name);
    store_.Add(1, id, ScriptedContactStore::kOldTime, record);
  }

  ScriptedContactStore store_;

 private:
  unsigned reads_ = 0;
};

/// One record with another value in one place.
Bytes With32(Bytes record, std::size_t offset, std::uint32_t value) {
  Put32(record, offset, value);
  return record;
}

/// Entries that say the same of `count` ids from `first` on.
Bytes Changes(std::uint32_t table, std::uint32_t first, std::uint32_t count, std::uint32_t operation) {
  Bytes changes;
  for (std::uint32_t id = first; id < first + count; ++id) Append(changes, Words({table, id, operation}));
  return changes;
}

Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes joined;
  for (const Bytes& part : parts) Append(joined, part);
  return joined;
}

Bytes CutTo(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

/// The entries of an id map file that tell of refused records, ids first, first + 1, ...
Bytes RefusedFrom(std::uint32_t first, std::uint32_t count) {
  Bytes map;
  for (std::uint32_t i = 0; i < count; ++i) Append(map, Words({0, kNoContact, first + i}));
  return map;
}

Bytes Mapped(std::uint32_t table, std::uint32_t new_id, std::uint32_t incoming, std::uint32_t count) {
  Bytes map;
  for (std::uint32_t i = 0; i < count; ++i) Append(map, Words({table, new_id + i, incoming + i}));
  return map;
}

// --- Contacts ---

TEST_F(ContactsRecoverTest, AContactReachesTheStoreFieldByField) {
  EXPECT_EQ(Received(IncomingContact(Texts::kFull)), ReceivedContact(Texts::kFull));
  EXPECT_EQ(Received(IncomingContact(Texts::kShort)), ReceivedContact(Texts::kShort));
}

TEST_F(ContactsRecoverTest, AContactThatSaysNothingIsAllZeroButForItsIdAndKind) {
  EXPECT_EQ(Received(NamedContact(7)), ReceivedNamedContact(7));
}

/// Where a flipped bit of exchange byte `offset` shows in the store record; false when it must not show at all.
bool FindStoreByte(std::span<const CopiedContactBytes> copied, std::span<const TextField> texts, std::size_t offset,
                   std::size_t& store) {
  for (const CopiedContactBytes& bytes : copied) {
    if (offset < bytes.exchange || offset >= bytes.exchange + bytes.size) continue;
    store = bytes.store + offset - bytes.exchange;
    return true;
  }
  for (const TextField& text : texts) {
    if (offset < text.exchange || offset >= text.exchange + text.exchange_size) continue;
    store = text.store + offset - text.exchange;
    return offset - text.exchange < text.store_size - 2;  // The store's last character is the NUL.
  }
  return false;
}

TEST_F(ContactsRecoverTest, EachByteOfAContactGoesWhereItBelongsAndNowhereElse) {
  // The default number, the chosen flag and the reminders decide about other bytes, and have tests of their own.
  const auto decides = [](std::size_t offset) {
    return (offset >= 856 && offset < 860) || (offset >= 1124 && offset < 1128) || offset >= 3592;
  };
  std::vector<std::size_t> offsets;
  for (std::size_t offset = 0; offset < 3596; ++offset) {
    if (!decides(offset)) offsets.push_back(offset);
  }
  const Bytes incoming = IncomingContact(Texts::kFull);
  const Bytes received = ReceivedContact(Texts::kFull);
  while (!offsets.empty()) {
    const std::size_t count = std::min<std::size_t>(offsets.size(), 1000);
    Bytes contacts;
    for (std::size_t i = 0; i < count; ++i) {
      Append(contacts, incoming);
      contacts[i * 3596 + offsets[i]] ^= 0x40;
    }
    Place({.contacts = contacts});
    store_.added[0].clear();
    ASSERT_EQ(Recover(1, 4).code, 0u);
    ASSERT_EQ(store_.added[0].size(), count);
    for (std::size_t i = 0; i < count; ++i) {
      Bytes expected = received;
      std::size_t store = 0;
      if (FindStoreByte(kCopiedContactBytes, kContactTexts, offsets[i], store)) expected[store] ^= 0x40;
      ASSERT_EQ(store_.added[0][i], expected) << "exchange byte " << offsets[i];
    }
    offsets.erase(offsets.begin(), offsets.begin() + static_cast<std::ptrdiff_t>(count));
  }
}

TEST_F(ContactsRecoverTest, TheFirstDateDecidesAboutBothDates) {
  struct Row {
    std::uint32_t year, month, day;
    bool taken;
  };
  static constexpr Row kRows[] = {
      {1975, 5, 17, true},       {1900, 5, 17, false},     {1975, 1, 15, false},
      {1975, 5, 1, false},       {1900, 1, 1, false},      {1901, 2, 2, true},
      {0, 0, 0, true},           {2100, 12, 31, true},     {67436, 5, 17, true},  // 1900 in its low half only
      {1975, 0x10001, 17, true}, {1975, 5, 0x10001, true},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.year << "-" << row.month << "-" << row.day);
    Bytes contact = IncomingContact(Texts::kFull);
    Put32(contact, 112, row.year);
    Put32(contact, 116, row.month);
    Put32(contact, 120, row.day);
    Put32(contact, 3592, 0);
    Bytes expected = ReceivedContact(Texts::kFull);
    Put32(expected, 2736, 0);
    Put32(expected, 2740, 0);
    Put16(expected, 1084, static_cast<std::uint16_t>(row.year));
    Put16(expected, 1086, static_cast<std::uint16_t>(row.month));
    Put16(expected, 1088, static_cast<std::uint16_t>(row.day));
    if (!row.taken) std::fill_n(expected.begin() + 1084, 24, std::uint8_t{0});
    EXPECT_EQ(Received(contact), expected);
  }
}

TEST_F(ContactsRecoverTest, ASecondDateMayBeWhatAFirstMayNot) {
  Bytes contact = IncomingContact(Texts::kFull);
  Put32(contact, 3076, 1900);
  Put32(contact, 3080, 1);
  Put32(contact, 3084, 1);
  Bytes expected = ReceivedContact(Texts::kFull);
  Put16(expected, 1096, 1900);
  Put16(expected, 1098, 1);
  Put16(expected, 1100, 1);
  EXPECT_EQ(Received(contact), expected);
}

TEST_F(ContactsRecoverTest, ASecondDateNeedsNoFirst) {
  Bytes contact = NamedContact(1);
  Put32(contact, 3076, 1998);
  Put32(contact, 3080, 8);
  Put32(contact, 3084, 22);
  Bytes expected = ReceivedNamedContact(1);
  Put16(expected, 1096, 1998);
  Put16(expected, 1098, 8);
  Put16(expected, 1100, 22);
  EXPECT_EQ(Received(contact), expected);
}

TEST_F(ContactsRecoverTest, ABirthdayInJanuaryIsLostButNotItsReminder) {
  Bytes contact = IncomingContact(Texts::kFull);
  Put32(contact, 112, 1975);
  Put32(contact, 116, 1);
  Put32(contact, 120, 15);
  Put32(contact, 3592, 2);
  const Bytes received = Received(contact);
  EXPECT_EQ(Bytes(received.begin() + 1084, received.begin() + 1108), Bytes(24));
  EXPECT_EQ(Get32(received, 2736), 100u);
  EXPECT_EQ(Get32(received, 2740), 0u);
}

TEST_F(ContactsRecoverTest, RemindersAreTwoBits) {
  for (const std::uint32_t bits : {0u, 1u, 2u, 3u, 4u, 0xFFFFFFFCu, 0xFFFFFFFEu}) {
    const Bytes received = Received(With32(IncomingContact(Texts::kFull), 3592, bits));
    EXPECT_EQ(Get32(received, 2736), (bits & 2) != 0 ? 100u : 0u) << bits;
    EXPECT_EQ(Get32(received, 2740), (bits & 1) != 0 ? 100u : 0u) << bits;
  }
}

TEST_F(ContactsRecoverTest, AReminderNeedsYearMonthAndDayOfItsDate) {
  for (const std::size_t missing : {112u, 116u, 120u}) {
    const Bytes received = Received(With32(IncomingContact(Texts::kFull), missing, 0));
    EXPECT_EQ(Get32(received, 2736), 0u) << missing;
    EXPECT_EQ(Get32(received, 2740), 100u) << missing;
  }
  for (const std::size_t missing : {3076u, 3080u, 3084u}) {
    const Bytes received = Received(With32(IncomingContact(Texts::kFull), missing, 0));
    EXPECT_EQ(Get32(received, 2736), 100u) << missing;
    EXPECT_EQ(Get32(received, 2740), 0u) << missing;
  }
  for (const std::size_t time_of_day : {124u, 128u, 132u, 3088u, 3092u, 3096u}) {
    const Bytes received = Received(With32(IncomingContact(Texts::kFull), time_of_day, 0));
    EXPECT_EQ(Get32(received, 2736), 100u) << time_of_day;
    EXPECT_EQ(Get32(received, 2740), 100u) << time_of_day;
  }
}

TEST_F(ContactsRecoverTest, TheChosenFlagIsTheOneNamedOrElseThatOfTheFirstTextThereIs) {
  struct Row {
    std::uint32_t chosen;
    bool first_text, second_text;
    std::uint8_t first_flag, second_flag;
  };
  static constexpr Row kRows[] = {
      {1, false, false, 0x92, 0x23},         {1, true, true, 0x92, 0x23},      {1, false, true, 0x92, 0x23},
      {2, false, false, 0x12, 0xA3},         {2, true, true, 0x12, 0xA3},      {2, true, false, 0x12, 0xA3},
      {0, false, false, 0x12, 0x23},         {0, true, true, 0x92, 0x23},      {0, true, false, 0x92, 0x23},
      {0, false, true, 0x12, 0xA3},          {3, false, false, 0x12, 0x23},    {3, true, true, 0x92, 0x23},
      {3, false, true, 0x12, 0xA3},          {0x101, false, true, 0x12, 0xA3}, {0x10002, true, true, 0x92, 0x23},
      {0xFFFFFFFF, false, true, 0x12, 0xA3},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.chosen << " " << row.first_text << " " << row.second_text);
    Bytes contact = With32(NamedContact(1), 1124, row.chosen);
    Bytes expected = ReceivedNamedContact(1);
    Put8(contact, 1120, 0x12);
    Put8(contact, 1121, 0x23);
    if (row.first_text) {
      PutText(contact, 860, u"a");
      PutText(expected, 122, u"a");
    }
    if (row.second_text) {
      PutText(contact, 990, u"b");
      PutText(expected, 252, u"b");
    }
    Put8(expected, 1386, row.first_flag);
    Put8(expected, 1387, row.second_flag);
    EXPECT_EQ(Received(contact), expected);
  }
}

TEST_F(ContactsRecoverTest, ATextWithOnlyAHighByteIsATextNonetheless) {
  Bytes contact = NamedContact(1);
  PutText(contact, 990, u"\u0100");
  PutText(contact, 540, u"\u0100");
  const Bytes received = Received(contact);
  EXPECT_EQ(received[1387], 128);
  EXPECT_EQ(received[1394], 128);
}

TEST_F(ContactsRecoverTest, ADefaultNumberIsMarkedWhetherOrNotItHasAText) {
  for (const bool have_texts : {false, true}) {
    for (std::uint32_t number = 1; number <= 8; ++number) {
      Bytes contact = have_texts ? IncomingContact(Texts::kShort) : NamedContact(1);
      Put32(contact, 856, number);
      Bytes expected = have_texts ? ReceivedContact(Texts::kShort) : ReceivedNamedContact(1);
      for (std::size_t i = 0; i < 8; ++i) {
        const auto type = static_cast<std::uint8_t>(0x31 + i);
        Put8(contact, 672 + i, type);
        Put8(expected, 1388 + i, i + 1 == number ? type | 0x80 : type);
      }
      EXPECT_EQ(Received(contact), expected) << number;
    }
  }
}

TEST_F(ContactsRecoverTest, WithoutADefaultTheFirstNumberWithATextIsMarked) {
  for (const std::uint32_t no_default : {0u, 9u, 0x101u, 0x80000001u, 0xFFFFFFFFu}) {
    for (std::size_t first = 0; first <= 8; ++first) {
      Bytes contact = With32(NamedContact(1), 856, no_default);
      for (std::size_t i = first; i < 8; i += 2) PutText(contact, kIncomingNumbers[i], u"5");
      const Bytes received = Received(contact);
      for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(received[1388 + i], i == first ? 128 : 0) << no_default << ", first text " << first << ", type " << i;
      }
    }
  }
}

TEST_F(ContactsRecoverTest, AMarkIsAddedModulo256) {
  Bytes contact = IncomingContact(Texts::kFull);
  Put8(contact, 674, 0x85);
  Put8(contact, 675, 0x86);
  Put8(contact, 1120, 0x97);
  Put8(contact, 1121, 0x98);
  Bytes received = Received(contact);
  EXPECT_EQ(received[1390], 0x05);
  EXPECT_EQ(received[1391], 0x86);
  EXPECT_EQ(received[1386], 0x97);
  EXPECT_EQ(received[1387], 0x18);
  received = Received(With32(contact, 1124, 1));
  EXPECT_EQ(received[1386], 0x17);
  EXPECT_EQ(received[1387], 0x98);
}

TEST_F(ContactsRecoverTest, AnUpdatedContactReachesTheStoreFieldByField) {
  AddContact(kIncomingContactId);
  PlaceChanges(Words({0, kIncomingContactId, 2}), {.contacts = IncomingContact(Texts::kFull)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.updated[0], ElementsAre(ReceivedContact(Texts::kFull)));
  EXPECT_THAT(store_.added[0], IsEmpty());
}

TEST_F(ContactsRecoverTest, ANewContactOfAChangeListReachesTheStoreFieldByField) {
  PlaceChanges(Words({0, kIncomingContactId, 1}), {.contacts = IncomingContact(Texts::kFull)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.added[0], ElementsAre(ReceivedContact(Texts::kFull)));
}

TEST_F(ContactsRecoverTest, NothingOfAContactIsLeftInTheOneAfterIt) {
  const Bytes two = Joined({IncomingContact(Texts::kFull), NamedContact(2)});
  Place({.contacts = Joined({two, two})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_EQ(store_.added[0].at(1), ReceivedNamedContact(2));
  EXPECT_EQ(store_.added[0].at(3), ReceivedNamedContact(2));
}

// --- Groups ---

TEST_F(ContactsRecoverTest, AGroupReachesTheStoreFieldByField) {
  for (const Texts texts : {Texts::kFull, Texts::kShort}) {
    store_.added[1].clear();
    Place({.groups = Joined({IncomingGroup(texts), NamedGroup(7, u"Work")})});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    EXPECT_THAT(store_.added[1], ElementsAre(ReceivedGroup(texts), ReceivedNamedGroup(7, u"Work")));
  }
}

TEST_F(ContactsRecoverTest, EachByteOfAGroupGoesWhereItBelongsAndNowhereElse) {
  const Bytes incoming = IncomingGroup(Texts::kFull);
  for (std::size_t first = 0; first < incoming.size(); first += 100) {
    const std::size_t count = std::min<std::size_t>(incoming.size() - first, 100);
    Bytes groups;
    for (std::size_t i = 0; i < count; ++i) {
      Append(groups, incoming);
      groups[i * 1532 + first + i] ^= 0x40;
    }
    Place({.groups = groups});
    store_.added[1].clear();
    ASSERT_EQ(Recover(1, 4).code, 0u);
    ASSERT_EQ(store_.added[1].size(), count);
    for (std::size_t i = 0; i < count; ++i) {
      Bytes expected = ReceivedGroup(Texts::kFull);
      std::size_t store = 0;
      if (FindStoreByte(kCopiedGroupBytes, kGroupTexts, first + i, store)) expected[store] ^= 0x40;
      ASSERT_EQ(store_.added[1][i], expected) << "exchange byte " << first + i;
    }
  }
}

TEST_F(ContactsRecoverTest, AnUpdatedGroupReachesTheStoreFieldByField) {
  AddGroup(kIncomingGroupId);
  PlaceChanges(Words({1, kIncomingGroupId, 2}), {.groups = IncomingGroup(Texts::kFull)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.updated[1], ElementsAre(ReceivedGroup(Texts::kFull)));
  EXPECT_THAT(store_.CallsOf("UpdateGroup"), ElementsAre("UpdateGroup [" + std::to_string(kIncomingGroupId) + "]"));
}

// --- Pictures ---

TEST_F(ContactsRecoverTest, APictureReachesTheStoreByteForByte) {
  static constexpr std::uint16_t kLengths[] = {0, 1, 255, 256, 8191, 8192};
  for (const std::uint16_t length : kLengths) {
    store_.loaded_pictures.clear();
    Bytes incoming = IncomingPicture(0x87654321, length);
    std::fill(incoming.begin() + 8200, incoming.end(), std::uint8_t{0xFF});  // The tail is the desktop's own affair.
    Place({.pictures = incoming});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    EXPECT_THAT(store_.loaded_pictures, ElementsAre(ReceivedPicture(0x87654321, length))) << length;
  }
}

TEST_F(ContactsRecoverTest, TheByteAfterAPicturesDataIsZero) {
  Bytes incoming(8236, 0xFF);
  Put32(incoming, 0, 7);
  Put32(incoming, 4, 8192);
  Place({.pictures = incoming});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  Bytes expected(8200, 0xFF);
  Put32(expected, 0, 7);
  Put16(expected, 4, 8192);
  Put16(expected, 8198, 0);
  EXPECT_THAT(store_.loaded_pictures, ElementsAre(expected));
}

TEST_F(ContactsRecoverTest, ThePictureDataBehindItsLengthTravelsToo) {
  Place({.pictures = With32(IncomingPicture(7, 8192), 4, 10)});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  Bytes expected = ReceivedPicture(7, 8192);
  Put16(expected, 4, 10);
  EXPECT_THAT(store_.loaded_pictures, ElementsAre(expected));
}

TEST_F(ContactsRecoverTest, NothingOfAPictureIsLeftInTheOneAfterIt) {
  Place({.pictures = Joined({IncomingPicture(1, 8192), IncomingPicture(2, 10), IncomingPicture(3, 0)})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(store_.loaded_pictures,
              ElementsAre(ReceivedPicture(1, 8192), ReceivedPicture(2, 10), ReceivedPicture(3, 0)));
}

TEST_F(ContactsRecoverTest, APictureLongerThanItsRoomEndsTheRecover) {
  for (const std::uint32_t length : {8193u, 0x10000u, 0x10001u, 4'000'000'000u, 0xFFFFFFFFu}) {
    store_.calls.clear();
    Place({.contacts = NamedContact(1),
           .groups = NamedGroup(1),
           .pictures = Joined({IncomingPicture(1, 5), With32(IncomingPicture(2, 5), 4, length)})});
    EXPECT_EQ(Recover(1, 5).code, 0x2B000200u);
    EXPECT_THAT(Deeds(), ElementsAre("LoadingImage 1")) << length;
    EXPECT_TRUE(TablesAreKept());
  }
}

/// Contacts 1, 2, ... with these pictures.
Bytes ContactsWithPictures(const std::vector<std::uint32_t>& pictures) {
  Bytes contacts;
  for (std::uint32_t i = 0; i < pictures.size(); ++i) {
    Append(contacts, With32(NamedContact(i + 1), 3108, pictures[i]));
  }
  return contacts;
}

std::vector<std::uint32_t> PicturesOf(const std::vector<Bytes>& records) {
  std::vector<std::uint32_t> pictures;
  for (const Bytes& record : records) pictures.push_back(Get32(record, 2284));
  return pictures;
}

TEST_F(ContactsRecoverTest, ContactsPointAtTheIdsThatTheirPicturesReceived) {
  // Picture 3 has a contact's id, picture 60 a group's: neither is mistaken for the other.
  Place({.contacts = ContactsWithPictures({8, 7, 9, 0, 3, 60, 7}),
         .groups = NamedGroup(60),
         .pictures = Joined({IncomingPicture(7, 1), IncomingPicture(8, 1), IncomingPicture(3, 1)})});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(5001, 5000, 9, 0, 5002, 60, 5000));
  EXPECT_EQ(ReadFile(kContactIdMap),
            Words({1, 1000, 60, 0, 1001, 1, 0, 1002, 2, 0, 1003, 3, 0, 1004, 4, 0, 1005, 5, 0, 1006, 6, 0, 1007, 7}))
      << "pictures are not told";
}

TEST_F(ContactsRecoverTest, ChangedContactsPointAtTheIdsThatTheirPicturesReceived) {
  AddContact(2, 0, u"Two");
  PlaceChanges(Words({0, 1, 1, 0, 2, 2, 0, 3, 1}),
               {.contacts = ContactsWithPictures({7, 7, 9}), .pictures = IncomingPicture(7, 1)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(5000, 9));
  EXPECT_THAT(PicturesOf(store_.updated[0]), ElementsAre(5000));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 1000, 1, 0, 1001, 3}));
}

TEST_F(ContactsRecoverTest, APictureOfTheIdZeroIsNobodysPicture) {
  AddContact(2);
  const Tables tables = {.contacts = ContactsWithPictures({0, 0, 7}),
                         .pictures = Joined({IncomingPicture(0, 1), IncomingPicture(7, 1)})};
  PlaceChanges(Words({0, 1, 1, 0, 2, 2, 0, 3, 1}), tables);
  store_.found_flag = 0;
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("LoadingImage"), ElementsAre("LoadingImage 0", "LoadingImage 7"));
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(0, 5001));
  EXPECT_THAT(PicturesOf(store_.updated[0]), ElementsAre(0));
  store_.added[0].clear();
  Place(tables);
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(0, 0, 5003));
}

TEST_F(ContactsRecoverTest, OfTwoPicturesWithOneIdTheFirstIsPointedAt) {
  Place({.contacts = ContactsWithPictures({7, 8}),
         .pictures = Joined({IncomingPicture(7, 1), IncomingPicture(7, 2), IncomingPicture(8, 1)})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(store_.loaded_pictures, SizeIs(3));
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(5000, 5002));
}

TEST_F(ContactsRecoverTest, APictureKeepsItsIncomingIdWhateverTheStoreDoesToItsBuffer) {
  // The scripted store overwrites the whole buffer, the id at its front included.
  Place({.contacts = ContactsWithPictures({7, 0xEEEEEEEE}), .pictures = IncomingPicture(7, 1)});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(5000, 0xEEEEEEEE));
}

TEST_F(ContactsRecoverTest, APictureWithoutANewIdHasNotThatOfTheOneBeforeIt) {
  FillNothingFromRead(kPictureTable, 2, {"LoadingImage"});
  Place({.contacts = ContactsWithPictures({7, 8}), .pictures = Joined({IncomingPicture(7, 1), IncomingPicture(8, 1)})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  handset::Observe({});
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(5000, 0));
}

TEST_F(ContactsRecoverTest, ASkippedPictureLeavesItsContactAsItIs) {
  store_.refusals["LoadingImage"] = {{1, -503}, {3, -503}};
  Place({.contacts = ContactsWithPictures({7, 8, 9}),
         .pictures = Joined({IncomingPicture(7, 1), IncomingPicture(8, 1), IncomingPicture(9, 1)})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(store_.CallsOf("LoadingImage"), ElementsAre("LoadingImage 7", "LoadingImage 8", "LoadingImage 9"));
  EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(7, 5000, 9));
}

TEST_F(ContactsRecoverTest, WithoutRoomForPicturesTheRecoverGoesOnWithGroups) {
  for (const std::uint32_t mode : {4u, 3u}) {
    SCOPED_TRACE(mode);
    store_.calls.clear();
    store_.added[0].clear();
    store_.next_picture_id = 5000;
    store_.refusals["LoadingImage"] = {{mode == 4 ? 2 : 4, -504}};
    PlaceChanges(Words({0, 1, 1, 0, 2, 1, 0, 3, 1, 1, 5, 1}),
                 {.contacts = ContactsWithPictures({7, 8, 9}),
                  .groups = NamedGroup(5, u"g"),
                  .pictures = Joined({IncomingPicture(7, 1), IncomingPicture(8, 1), IncomingPicture(9, 1)})});
    for (auto& table : store_.tables) table.clear();
    EXPECT_EQ(Recover(1, mode).code, 0u);
    EXPECT_THAT(store_.CallsOf("LoadingImage"), ElementsAre("LoadingImage 7", "LoadingImage 8"));
    EXPECT_THAT(store_.CallsOf("AddGroup"), ElementsAre("AddGroup 1"));
    if (mode == 4) {
      EXPECT_THAT(PicturesOf(store_.added[0]), ElementsAre(5000, 8, 9));
    }
    EXPECT_TRUE(TablesAreGone());
  }
}

TEST_F(ContactsRecoverTest, AnyOtherRefusalOfAPictureEndsTheRecover) {
  for (const std::int32_t status : {-1, 1, -502, -505, 503, 504}) {
    store_.calls.clear();
    store_.statuses["LoadingImage"] = status;
    PlaceChanges({}, {.groups = NamedGroup(1), .pictures = IncomingPicture(7, 1)});
    EXPECT_EQ(Recover(1, 5).code, 0x2B000007u) << status;
    EXPECT_EQ(Recover(1, 3).code, 0x2B000007u) << status;
    EXPECT_THAT(store_.CallsOf("AddGroup"), IsEmpty());
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kContactChanges));
  }
}

// --- Emptying the store ---

TEST_F(ContactsRecoverTest, AllModesButTheIncrementalAndTheLocalOneEmptyTheStore) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 77u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    for (auto& table : store_.tables) table.clear();
    store_.calls.clear();
    AddContact(11);
    AddContact(12);
    AddGroup(21);
    AddGroup(22);
    PlaceChanges({});
    EXPECT_EQ(Recover(1, mode).code, 0u);
    const bool emptied = mode != 3 && mode != 5;
    EXPECT_THAT(store_.tables[0], SizeIs(emptied ? 0 : 2)) << mode;
    EXPECT_THAT(store_.tables[1], SizeIs(emptied ? 0 : 2)) << mode;
    if (emptied) {
      EXPECT_THAT(Deeds(), ElementsAre("DeleteGroup [21 22]", "DeleteMan [11 12]")) << mode;
    }
  }
}

TEST_F(ContactsRecoverTest, ALocalRecoverAddsToWhatIsThere) {
  AddContact(11);
  AddGroup(21);
  Place({.contacts = NamedContact(1), .groups = NamedGroup(2)});
  EXPECT_EQ(LocalRecover(1), 0u);
  EXPECT_THAT(store_.Ids(0), ElementsAre(11, 1001));
  EXPECT_THAT(store_.Ids(1), ElementsAre(21, 1000));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_F(ContactsRecoverTest, GroupsAreListedAndDeletedBeforeContactsAreListed) {
  AddContact(11);
  AddGroup(21);
  Place({});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  const auto at = [&](const std::string& call) { return std::ranges::find(store_.calls, call); };
  EXPECT_LT(at("GetAllgroupSyncid"), at("DeleteGroup [21]"));
  EXPECT_LT(at("DeleteGroup [21]"), at("GetAllmanSyncid"));
  EXPECT_LT(at("GetAllmanSyncid"), at("DeleteMan [11]"));
  EXPECT_NE(at("DeleteMan [11]"), store_.calls.end());
}

TEST_F(ContactsRecoverTest, AnEmptyTableIsNotDeletedFrom) {
  Place({});
  EXPECT_EQ(Recover(1, 2).code, 0u);
  EXPECT_THAT(Deeds(), IsEmpty());
  AddContact(11);
  Place({});
  EXPECT_EQ(Recover(1, 2).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("DeleteMan [11]"));
  store_.calls.clear();
  AddGroup(21);
  Place({});
  EXPECT_EQ(Recover(1, 2).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("DeleteGroup [21]"));
}

TEST_F(ContactsRecoverTest, TheListsHaveTheirFixedRoomAtLeast) {
  for (const std::uint32_t mode : {1u, 2u, 4u}) {
    for (const std::int32_t claimed : {0, 1, -1, -7, INT32_MIN}) {
      SCOPED_TRACE(testing::Message() << claimed << " in mode " << mode);
      AddContact(11);
      AddGroup(21);
      for (auto& count : store_.claimed_count) count = claimed;
      for (auto& rooms : store_.offered_rooms) rooms.clear();
      store_.calls.clear();
      Place({});
      EXPECT_EQ(Recover(1, mode).code, 0u);
      EXPECT_EQ(store_.offered_rooms[0].at(0), 3000);
      EXPECT_EQ(store_.offered_rooms[1].at(0), 100);
      EXPECT_THAT(Deeds(), ElementsAre("DeleteGroup [21]", "DeleteMan [11]"));
    }
  }
}

TEST_F(ContactsRecoverTest, AStoreThatClaimsToHoldMoreThanMemoryIsNotEmptiedAtAll) {
  AddContact(11);
  AddGroup(21);
  for (const std::uint32_t mode : {1u, 2u, 4u}) {
    for (const std::int32_t claimed : {0x10000001, INT32_MAX}) {
      for (const std::size_t table : {0u, 1u}) {
        SCOPED_TRACE(testing::Message() << claimed << " records in table " << table << ", mode " << mode);
        store_.claimed_count[table] = claimed;
        store_.claimed_count[1 - table] = std::nullopt;
        Place({});
        EXPECT_EQ(Recover(1, mode).code, 0x20000010u);
        EXPECT_TRUE(TablesAreKept());
      }
    }
  }
  EXPECT_THAT(Deeds(), IsEmpty());
}

TEST_F(ContactsRecoverTest, AStoreLargerThanTheFixedRoomsIsEmptiedWhole) {
  for (const bool heeds_room : {true, false}) {
    store_.heeds_room = heeds_room;
    for (std::uint32_t id = 1; id <= 3001; ++id) AddContact(id);
    for (std::uint32_t id = 1; id <= 101; ++id) AddGroup(id);
    Place({});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    EXPECT_THAT(store_.Ids(0), IsEmpty());
    EXPECT_THAT(store_.Ids(1), IsEmpty());
    EXPECT_THAT(store_.CallsOf("DeleteMan"), SizeIs(1));
    EXPECT_THAT(store_.CallsOf("DeleteGroup"), SizeIs(1));
    store_.calls.clear();
  }
}

TEST_F(ContactsRecoverTest, AStoreThatClaimsToListMoreThanItHasRoomForIsTakenAtItsRoom) {
  AddContact(11);
  AddGroup(21);
  for (const std::int32_t claimed : {3001, 0x7FFFFFFF}) {
    store_.claimed_listed[0] = store_.claimed_listed[1] = claimed;
    Place({});
    EXPECT_EQ(Recover(1, 4).code, 0u);
  }
  store_.calls.clear();
  store_.claimed_listed[0] = store_.claimed_listed[1] = -1;
  Place({});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(Deeds(), IsEmpty());
}

TEST_F(ContactsRecoverTest, AStoreThatCannotBeEmptiedIsReportedWithoutAStep) {
  const std::pair<const char*, std::uint32_t> kRows[] = {{"GetAllgroupSyncid", 0x20000005},
                                                         {"DeleteGroup", 0x20000003},
                                                         {"GetAllmanSyncid", 0x20000005},
                                                         {"DeleteMan", 0x20000003}};
  AddContact(11);
  for (const auto& [entry_point, code] : kRows) {
    SCOPED_TRACE(entry_point);
    if (store_.Ids(1).empty()) AddGroup(21);
    store_.statuses = {{entry_point, 1}};
    for (const std::uint32_t mode : {1u, 2u, 4u}) {
      Place({.contacts = NamedContact(1)});
      EXPECT_EQ(Recover(1, mode).code, code) << mode;
      EXPECT_TRUE(TablesAreKept());
      EXPECT_THAT(store_.Ids(0), ElementsAre(11));
    }
    const bool groups_were_deleted =
        std::string_view(entry_point).ends_with("an") || std::string_view(entry_point).starts_with("GetAllman");
    EXPECT_EQ(store_.Ids(1).empty(), groups_were_deleted);
    EXPECT_THAT(store_.added[0], IsEmpty());
  }
  EXPECT_FALSE(Exists(kContactIdMap));
  EXPECT_FALSE(Exists(kContactLog));
}

TEST_F(ContactsRecoverTest, AMissingEntryPointDeletesNothingAtAll) {
  for (const auto* missing :
       {u"DTP_PIMDeleteMan", u"DTP_PIMDeleteGroup", u"DTP_PIMGetAllmanSyncid", u"DTP_PIMGetAllgroupSyncid"}) {
    for (const bool is_empty : {false, true}) {
      SCOPED_TRACE(testing::PrintToString(std::u16string(missing)) + (is_empty ? ", nothing to delete" : ""));
      ScriptedContactStore lacking({missing});
      if (!is_empty) lacking.Add(0, 11);
      if (!is_empty) lacking.Add(1, 21);
      for (const std::uint32_t mode : {1u, 2u, 4u}) {
        Place({});
        EXPECT_EQ(Recover(1, mode).code, 0x20000002u);
        EXPECT_TRUE(TablesAreKept());
      }
      // No more than the groups' count, which says how much room their list needs.
      EXPECT_THAT(lacking.calls, Each(AnyOf("Initialize 0", "GetAllGroupNum", "UnInitialize")));
    }
  }
}

TEST_F(ContactsRecoverTest, AStoreThatDoesNotCountItsRecordsIsEmptiedNonetheless) {
  struct Row {
    const char16_t* missing;
    std::uint32_t code;
  };
  for (const Row& row : {Row{u"DTP_PIMGetAllGroupNum", 0x24000002}, Row{u"DTP_PIMGetAllManNum", 0x23000002}}) {
    ScriptedContactStore lacking({row.missing});
    lacking.Add(0, 11);
    lacking.Add(1, 21);
    Place({});
    EXPECT_EQ(Recover(1, 4).code, row.code) << "the step that applies the records cannot do without";
    EXPECT_THAT(lacking.tables[0], IsEmpty());
    EXPECT_THAT(lacking.tables[1], IsEmpty());
  }
}

TEST_F(ContactsRecoverTest, AStoreThatCannotCountItsRecordsIsEmptiedNonetheless) {
  const std::pair<const char*, std::uint32_t> kRows[] = {{"GetAllGroupNum", 0x24000004}, {"GetAllManNum", 0x23000004}};
  for (const auto& [entry_point, code] : kRows) {
    AddContact(11);
    AddGroup(21);
    store_.statuses = {{entry_point, 1}};
    PlaceChanges({});
    EXPECT_EQ(Recover(1, 4).code, code);
    EXPECT_THAT(store_.tables[0], IsEmpty());
    EXPECT_THAT(store_.tables[1], IsEmpty());
    EXPECT_EQ(Recover(1, 3).code, code);
    EXPECT_EQ(Recover(1, 5).code, code);
    EXPECT_TRUE(TablesAreKept());
  }
}

TEST_F(ContactsRecoverTest, TheStoreIsEmptiedBeforeATableIsMissed) {
  AddContact(11);
  AddGroup(21);
  EXPECT_EQ(Recover(1, 2).code, 0x2B000100u);
  EXPECT_THAT(store_.Ids(0), IsEmpty());
  EXPECT_THAT(store_.Ids(1), IsEmpty());
}

// --- Insertion ---

TEST_F(ContactsRecoverTest, PicturesGoFirstThenGroupsThenContactsThenMemberships) {
  Place({.contacts = NamedContact(1),
         .groups = NamedGroup(2),
         .memberships = ExchangeMembership(1, {2}),
         .pictures = IncomingPicture(7, 1)});
  EXPECT_EQ(LocalRecover(1), 0u);
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "LoadingImage 7", "GetAllGroupNum", "AddGroup 1",
                                        "GetAllManNum", "AddManToUnGroup 1", "PhoneAddToGroups 1", "UnInitialize"));
}

TEST_F(ContactsRecoverTest, ARememberedRecoverLeavesSnapshotsOfTheStoreAndAnIdMap) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    store_.next_id = 1000;
    Place({.contacts = NamedContacts(1, 2), .groups = NamedGroup(7)});
    const Answer answer = Recover(1, mode);
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_EQ(ReadFile(kContactLog), Words({1001, kNewLow, kNewHigh, 1002, kNewLow, kNewHigh}));
    EXPECT_EQ(ReadFile(kContactGroupLog), Words({1000, kNewLow, kNewHigh}));
    EXPECT_EQ(ReadFile(kContactIdMap), Words({1, 1000, 7, 0, 1001, 1, 0, 1002, 2}));
    EXPECT_THAT(ReadText(kAnchorIni), testing::HasSubstr("LINKMAN = 200612117210"));
    EXPECT_TRUE(TablesAreGone());
  }
}

TEST_F(ContactsRecoverTest, APlainRecoverLeavesNothingButTheRecords) {
  for (const std::uint32_t mode : {4u, 5u, 6u, 77u}) {
    store_.added[0].clear();
    Place({.contacts = NamedContact(1),
           .groups = NamedGroup(2),
           .memberships = ExchangeMembership(1, {2}),
           .pictures = IncomingPicture(7, 1)});
    const Answer answer = Recover(1, mode, u"77");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.anchor, u"77");
    EXPECT_THAT(store_.added[0], SizeIs(1));
    EXPECT_THAT(AllFiles(), IsEmpty()) << mode;
  }
}

TEST_F(ContactsRecoverTest, ARecoverOfNothingEmptiesSnapshotsAndMap) {
  Place({});
  for (const auto* file : {kContactLog, kContactGroupLog, kContactIdMap}) WriteText(file, "old");
  EXPECT_EQ(Recover(1, 1).code, 0u);
  for (const auto* file : {kContactLog, kContactGroupLog, kContactIdMap}) EXPECT_THAT(ReadFile(file), IsEmpty());
}

TEST_F(ContactsRecoverTest, AnInsertingRecoverLeavesAChangeListAlone) {
  AddContact(11);
  PlaceChanges(Words({0, 11, 3}), {.contacts = NamedContact(1)});
  EXPECT_EQ(Recover(1, 5).code, 0u);
  EXPECT_TRUE(Exists(kContactChanges));
  EXPECT_THAT(store_.Ids(0), ElementsAre(11, 1000));
}

TEST_F(ContactsRecoverTest, AMapThatIsInTheWayIsReportedWhenAllIsDone) {
  Place({.contacts = NamedContact(1)});
  MakeDirectory(kContactIdMap);
  EXPECT_EQ(Recover(1, 1).code, 0x26000100u);
  EXPECT_TRUE(TablesAreGone());
  EXPECT_EQ(ReadFile(kContactLog), Words({1000, kNewLow, kNewHigh}));
  PlaceChanges(Words({0, 2, 1}), {.contacts = NamedContact(2, u"b")});
  EXPECT_EQ(Recover(1, 3).code, 0x26000100u);
  EXPECT_FALSE(Exists(kContactChanges));
  EXPECT_THAT(store_.Ids(0), ElementsAre(1000, 1001));
}

TEST_F(ContactsRecoverTest, RecordsTravelInChunksOfTwoHundred) {
  struct Row {
    std::uint32_t count;
    std::vector<std::string> calls;
  };
  const Row kRows[] = {
      {1, {"AddManToUnGroup 1"}},
      {199, {"AddManToUnGroup 199"}},
      {200, {"AddManToUnGroup 200"}},
      {201, {"AddManToUnGroup 200", "AddManToUnGroup 1"}},
      {401, {"AddManToUnGroup 200", "AddManToUnGroup 200", "AddManToUnGroup 1"}},
  };
  for (const Row& row : kRows) {
    store_.calls.clear();
    store_.added[0].clear();
    store_.next_id = 50000;
    Place({.contacts = NamedContacts(1, row.count)});
    EXPECT_EQ(Recover(1, 1).code, 0u);
    EXPECT_EQ(store_.CallsOf("AddManToUnGroup"), row.calls);
    ASSERT_EQ(store_.added[0].size(), row.count);
    Bytes map;
    for (std::uint32_t i = 0; i < row.count; ++i) {
      ASSERT_EQ(store_.added[0][i], ReceivedNamedContact(i + 1));
      Append(map, Words({0, 50000 + i, i + 1}));
    }
    EXPECT_EQ(ReadFile(kContactIdMap), map);
  }
}

TEST_F(ContactsRecoverTest, RecordsWithoutNewIdsHaveNotThoseOfTheChunkBefore) {
  FillNothingFromRead(kContactTable, 2, {"AddManToUnGroup"});
  Place({.contacts = NamedContacts(1, 202)});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  handset::Observe({});
  EXPECT_EQ(ReadFile(kContactIdMap), Joined({Mapped(0, 1000, 1, 200), Words({0, 0, 201, 0, 0, 202})}));

  store_.fills_nothing = {"AddGroup"};
  Place({.groups = NamedGroups(1, 2)});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({1, 0, 1, 1, 0, 2}));
}

TEST_F(ContactsRecoverTest, OfTwoRecordsWithOneIdBothAreToldAndTheFirstIsPointedAt) {
  Place({.contacts = Joined({NamedContact(1, u"a"), NamedContact(1, u"b")}),
         .groups = Joined({NamedGroup(2, u"c"), NamedGroup(2, u"d")}),
         .memberships = ExchangeMembership(1, {2})});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({1, 1000, 2, 1, 1001, 2, 0, 1002, 1, 0, 1003, 1}));
  EXPECT_THAT(store_.added_memberships, ElementsAre(ReceivedMembership(1002, {1000})));
}

TEST_F(ContactsRecoverTest, TablesAreReadAChunkAtATime) {
  for (const std::uint32_t mode : {4u, 3u}) {
    PlaceChanges({}, {.contacts = NamedContacts(1, 201), .groups = NamedGroups(1, 201)});
    std::vector<std::uint32_t> contact_reads;
    std::vector<std::uint32_t> group_reads;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "ReadFile" && call.path == kContactTable) contact_reads.push_back(call.size);
      if (call.function == "ReadFile" && call.path == kContactGroupTable) group_reads.push_back(call.size);
    });
    EXPECT_EQ(Recover(1, mode).code, 0u);
    handset::Observe({});
    // A chunk that comes up short is asked for the rest of it.
    EXPECT_THAT(contact_reads, ElementsAre(719200, 719200, 719200 - 3596, 719200));
    EXPECT_THAT(group_reads, ElementsAre(306400, 306400, 306400 - 1532, 306400));
  }
}

TEST_F(ContactsRecoverTest, RefusedRecordsAreFlaggedWithTheirTable) {
  const std::pair<std::int32_t, std::uint32_t> kRows[] = {{-502, 10}, {-503, 11}, {-1, 7}, {1, 7}, {-504, 7}, {502, 7}};
  for (const auto& [status, code] : kRows) {
    for (const std::uint32_t mode : {1u, 4u, 5u, 3u}) {
      SCOPED_TRACE(testing::Message() << status << " in mode " << mode);
      PlaceChanges(Words({0, 1, 1, 1, 1, 1}), {.contacts = NamedContact(1), .groups = NamedGroup(1)});
      store_.statuses = {{"AddManToUnGroup", status}};
      EXPECT_EQ(Recover(1, mode).code, 0x23000000u | code);
      store_.tables[1].clear();
      store_.statuses = {{"AddGroup", status}};
      EXPECT_EQ(Recover(1, mode).code, 0x24000000u | code);
      EXPECT_TRUE(TablesAreKept());
      EXPECT_TRUE(Exists(kContactChanges));
    }
  }
  EXPECT_FALSE(Exists(kContactIdMap));
  EXPECT_FALSE(Exists(kContactLog));
}

TEST_F(ContactsRecoverTest, ChunksBeforeARefusalStayApplied) {
  store_.refusals["AddManToUnGroup"] = {{2, -502}};
  Place({.contacts = NamedContacts(1, 401)});
  EXPECT_EQ(Recover(1, 4).code, 0x2300000Au);
  EXPECT_THAT(store_.tables[0], SizeIs(200));
  EXPECT_THAT(store_.CallsOf("AddManToUnGroup"), SizeIs(2));
  EXPECT_TRUE(TablesAreKept());
}

// --- Limits ---

TEST_F(ContactsRecoverTest, ALocalRecoverFillsTheHandsetUpToThreeThousandContacts) {
  for (std::uint32_t id = 10001; id <= 12990; ++id) AddContact(id);
  Bytes memberships;
  for (std::uint32_t id = 1; id <= 20; ++id) Append(memberships, ExchangeMembership(id, {}));
  Place({.contacts = NamedContacts(1, 20), .memberships = memberships});
  EXPECT_EQ(LocalRecover(1), 0u);
  EXPECT_THAT(store_.CallsOf("AddManToUnGroup"), ElementsAre("AddManToUnGroup 10"));
  EXPECT_THAT(store_.tables[0], SizeIs(3000));
  ASSERT_THAT(store_.added_memberships, SizeIs(20));
  for (std::uint32_t i = 0; i < 20; ++i) {
    EXPECT_EQ(Get32(store_.added_memberships[i], 0), i < 10 ? 1000 + i : kNoContact);
  }
}

TEST_F(ContactsRecoverTest, ContactsBeyondThreeThousandAreMappedToNone) {
  store_.claimed_count[0] = 2990;
  Place({.contacts = NamedContacts(1, 20)});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_THAT(store_.added[0], SizeIs(10));
  EXPECT_EQ(ReadFile(kContactIdMap), Joined({RefusedFrom(11, 10), Mapped(0, 1000, 1, 10)}));
  EXPECT_TRUE(TablesAreGone());
}

TEST_F(ContactsRecoverTest, ThreeThousandContactsAreAppliedAndNoneAfterThem) {
  Place({.contacts = NamedContacts(1, 3250)});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_THAT(store_.tables[0], SizeIs(3000));
  EXPECT_THAT(store_.CallsOf("AddManToUnGroup"), AllOf(SizeIs(15), Each("AddManToUnGroup 200")));
  EXPECT_EQ(ReadFile(kContactIdMap), Joined({Mapped(0, 1000, 1, 3000), RefusedFrom(3001, 250)}));
}

TEST_F(ContactsRecoverTest, AHundredGroupsAreAppliedAndNoneAfterThem) {
  for (std::uint32_t id = 901; id <= 940; ++id) AddGroup(id);
  Place({.groups = NamedGroups(1, 250)});
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_THAT(store_.CallsOf("AddGroup"), ElementsAre("AddGroup 100"));
  EXPECT_THAT(store_.CallsOf("DeleteGroup"), SizeIs(1));
  EXPECT_THAT(store_.tables[1], SizeIs(100));
  EXPECT_EQ(ReadFile(kContactIdMap), Joined({RefusedFrom(101, 100), Mapped(1, 1000, 1, 100), RefusedFrom(201, 50)}));
}

TEST_F(ContactsRecoverTest, AHandsetAtOrAboveItsLimitTakesNoMore) {
  for (const std::int32_t count : {0, 1, 50000}) {
    SCOPED_TRACE(count);
    store_.calls.clear();
    store_.claimed_count[0] = 3000 + count;
    store_.claimed_count[1] = 100 + count;
    Place({.contacts = NamedContacts(1, 2), .groups = NamedGroups(5, 2)});
    EXPECT_EQ(Recover(1, 5).code, 0u);
    EXPECT_THAT(Deeds(), IsEmpty());
    EXPECT_TRUE(TablesAreGone());
    PlaceChanges(Words({0, 1, 1, 0, 2, 2, 1, 5, 1, 1, 6, 2}),
                 {.contacts = NamedContacts(1, 2), .groups = NamedGroups(5, 2)});
    EXPECT_EQ(Recover(1, 3).code, 0u);
    EXPECT_THAT(Deeds(), IsEmpty());
    EXPECT_EQ(ReadFile(kContactIdMap), Joined({RefusedFrom(5, 2), RefusedFrom(1, 2)}));
  }
  store_.claimed_count[0] = store_.claimed_count[1] = 0x7FFFFFFF;
  Place({.contacts = NamedContacts(1, 2), .groups = NamedGroups(5, 2)});
  EXPECT_EQ(LocalRecover(1), 0u);
  EXPECT_THAT(Deeds(), IsEmpty());
}

TEST_F(ContactsRecoverTest, WhatAChangeListDeletesMakesRoomForWhatItAdds) {
  for (std::uint32_t id = 1; id <= 100; ++id) AddGroup(id);
  for (std::uint32_t id = 1; id <= 3000; ++id) AddContact(id);
  PlaceChanges(Words({1, 200, 1, 1, 50, 3, 0, 4000, 1, 0, 50, 3}),
               {.contacts = NamedContact(4000, u"a"), .groups = NamedGroup(200, u"g")});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({1, 1000, 200, 0, 1001, 4000}));
  EXPECT_THAT(store_.tables[1], SizeIs(100));
  EXPECT_THAT(store_.tables[0], SizeIs(3000));
}

TEST_F(ContactsRecoverTest, ANegativeCountRaisesNoLimit) {
  for (const std::int32_t count : {-1, -100, -0x7FFFFFFF - 1}) {
    SCOPED_TRACE(count);
    for (auto& added : store_.added) added.clear();
    store_.claimed_count[0] = store_.claimed_count[1] = count;
    Place({.contacts = NamedContacts(1, 3001), .groups = NamedGroups(5, 101)});
    EXPECT_EQ(Recover(1, 5).code, 0u);
    EXPECT_THAT(store_.added[0], SizeIs(3000));
    EXPECT_THAT(store_.added[1], SizeIs(100));
  }
}

TEST_F(ContactsRecoverTest, InAChangeListRecordsWithoutAnEntryCountToo) {
  store_.claimed_count[0] = 2998;
  store_.claimed_count[1] = 99;
  PlaceChanges(Words({0, 2, 1, 0, 3, 1, 0, 4, 2, 1, 6, 1}),
               {.contacts = NamedContacts(1, 5), .groups = NamedGroups(5, 2)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("AddManToUnGroup"), ElementsAre("AddManToUnGroup 1"));
  EXPECT_THAT(store_.CallsOf("AddGroup"), IsEmpty());
  EXPECT_THAT(store_.updated[0], IsEmpty());
  EXPECT_EQ(ReadFile(kContactIdMap), Joined({RefusedFrom(6, 1), RefusedFrom(3, 3), Mapped(0, 1000, 2, 1)}));
}

TEST_F(ContactsRecoverTest, UpdatesAndRecordsFoundByNameCountToo) {
  AddContact(1);
  AddContact(50, 0, u"Anna");
  store_.claimed_count[0] = 2998;
  PlaceChanges(Words({0, 1, 2, 0, 2, 1, 0, 3, 1}),
               {.contacts = Joined({NamedContact(1), NamedContact(2, u"Anna"), NamedContact(3, u"Bert")})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.added[0], IsEmpty());
  EXPECT_THAT(store_.updated[0], SizeIs(1));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, kNoContact, 3, 0, 50, 2}));
}

// --- Change lists ---

TEST_F(ContactsRecoverTest, AChangeListDeletesThenAppliesEachTableInItsTurn) {
  AddContact(1, 70);
  AddContact(2);
  AddContact(3);
  AddGroup(4);
  AddGroup(5);
  PlaceChanges(Words({0, 60, 1, 1, 4, 3, 0, 1, 3, 1, 50, 1, 0, 2, 2, 1, 5, 2}),
               {.contacts = Joined({NamedContact(2, u"Two"), NamedContact(60, u"Sixty"), NamedContact(3, u"Three")}),
                .groups = Joined({NamedGroup(50, u"Fifty"), NamedGroup(5, u"Five")}),
                .memberships = ExchangeMembership(60, {50}),
                .pictures = IncomingPicture(7, 1)});
  const Answer answer = Recover(1, 3);
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_THAT(Deeds(),
              ElementsAre("Readman [1]", "DeleteImage 70", "DeleteMan [1]", "DeleteGroup [4]", "LoadingImage 7",
                          "FindgroupSyncidByName Fifty", "AddGroup 1", "UpdateGroup [5]", "FindmanSyncidByName Sixty",
                          "AddManToUnGroup 1", "UpdateMan [2]", "PhoneAddToGroups 1"));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({1, 1000, 50, 0, 1001, 60}));
  EXPECT_EQ(ReadFile(kContactLog), Words({2, kNewLow, kNewHigh, 3, kOldLow, kOldHigh, 1001, kNewLow, kNewHigh}));
  EXPECT_EQ(ReadFile(kContactGroupLog), Words({5, kNewLow, kNewHigh, 1000, kNewLow, kNewHigh}));
  EXPECT_TRUE(TablesAreGone());
  EXPECT_FALSE(Exists(kContactChanges));
  EXPECT_EQ(store_.At(0, 2).bytes, ReceivedNamedContact(2, u"Two"));
  EXPECT_EQ(store_.At(1, 5).bytes, ReceivedNamedGroup(5, u"Five"));
}

TEST_F(ContactsRecoverTest, ANewContactOfAKnownNameIsThatContact) {
  AddContact(5, 0, u"Anna");
  PlaceChanges(Words({0, 77, 1, 0, 78, 1}),
               {.contacts = Joined({NamedContact(77, u"Anna"), NamedContact(78, u"anna")})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("FindmanSyncidByName Anna", "FindmanSyncidByName anna", "AddManToUnGroup 1"));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 5, 77, 0, 1000, 78}));
  EXPECT_EQ(store_.At(0, 5).time, ScriptedContactStore::kOldTime) << "the contact that was there is left alone";
}

TEST_F(ContactsRecoverTest, ANewGroupOfAKnownNameIsToldAsAContact) {
  AddGroup(5, u"Family");
  AddContact(6, 0, u"Work");
  PlaceChanges(Words({1, 77, 1, 1, 78, 1}), {.groups = Joined({NamedGroup(77, u"Family"), NamedGroup(78, u"Work")})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("FindgroupSyncidByName Family", "FindgroupSyncidByName Work", "AddGroup 1"));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 5, 77, 1, 1000, 78}));
}

TEST_F(ContactsRecoverTest, AChunkOfKnownNamesAddsNothing) {
  AddContact(5, 0, u"Anna");
  AddGroup(6, u"Family");
  PlaceChanges(Words({0, 77, 1, 1, 78, 1}),
               {.contacts = NamedContact(77, u"Anna"), .groups = NamedGroup(78, u"Family")});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("FindgroupSyncidByName Family", "FindmanSyncidByName Anna"));
}

TEST_F(ContactsRecoverTest, ANameWithoutEndIsLookedUpAsFarAsTheStoreCanHoldIt) {
  Bytes contact(3596, 0xFF);
  Bytes group(1532, 0xFF);
  PutText(contact, 4, u"Thirty-one characters, no NUL!!");
  PutText(group, 4, u"Twenty-one characters");
  Put32(contact, 0, 1);
  Put32(group, 0, 1);
  PlaceChanges(Words({0, 1, 1, 1, 1, 1}), {.contacts = contact, .groups = group});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("FindgroupSyncidByName Twenty-one characters", "AddGroup 1",
                                   "FindmanSyncidByName Thirty-one characters, no NUL!", "AddManToUnGroup 1"));
}

TEST_F(ContactsRecoverTest, NamesAreLookedUpBeforeTheirChunkIsAdded) {
  PlaceChanges(Changes(0, 1, 201, 1), {.contacts = [] {
                 Bytes contacts = Joined({NamedContact(1, u"Twin"), NamedContact(2, u"Twin")});
                 for (std::uint32_t id = 3; id <= 200; ++id) Append(contacts, NamedContact(id, u"One of many"));
                 Append(contacts, NamedContact(201, u"Twin"));
                 return contacts;
               }()});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("AddManToUnGroup"), ElementsAre("AddManToUnGroup 200"));
  const Bytes map = ReadFile(kContactIdMap);
  EXPECT_EQ(Bytes(map.end() - 12, map.end()), Words({0, 1000, 201})) << "the twin of the chunk before";
}

TEST_F(ContactsRecoverTest, AnyAnswerButZeroIsARecordFound) {
  AddContact(5, 0, u"Anna");
  AddGroup(6, u"Family");
  for (const std::int32_t flag : {1, 2, -1, INT32_MIN, 0x10000}) {
    store_.found_flag = flag;
    PlaceChanges(Words({0, 77, 1, 1, 78, 1}),
                 {.contacts = NamedContact(77, u"Anna"), .groups = NamedGroup(78, u"Family")});
    EXPECT_EQ(Recover(1, 3).code, 0u);
    EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 6, 78, 0, 5, 77})) << flag;
  }
  EXPECT_THAT(store_.added[0], IsEmpty());
  EXPECT_THAT(store_.added[1], IsEmpty());
}

TEST_F(ContactsRecoverTest, ALookUpWithoutAnAnswerFindsNothing) {
  // All names are that of contact 5; of the last one the store does not say so.
  AddContact(5);
  FillNothingFromRead(kContactTable, 2, {"FindmanSyncidByName"});
  PlaceChanges(Changes(0, 1, 201, 1), {.contacts = NamedContacts(1, 201)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  handset::Observe({});
  Bytes map;
  for (std::uint32_t id = 1; id <= 200; ++id) Append(map, Words({0, 5, id}));
  EXPECT_EQ(ReadFile(kContactIdMap), Joined({map, Words({0, 1000, 201})}));

  AddGroup(6);
  store_.fills_nothing = {"FindgroupSyncidByName"};
  PlaceChanges(Words({1, 7, 1}), {.groups = NamedGroup(7)});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({1, 1001, 7}));
}

TEST_F(ContactsRecoverTest, AModifiedRecordIsUpdatedUnderItsOwnId) {
  AddContact(1);
  AddContact(2);
  AddGroup(1);
  PlaceChanges(Words({0, 1, 2, 1, 1, 2, 0, 2, 2}),
               {.contacts = Joined({NamedContact(2, u"b"), NamedContact(1, u"a")}), .groups = NamedGroup(1, u"g")});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("UpdateGroup [1]", "UpdateMan [2 1]"));
  EXPECT_THAT(store_.updated[0], ElementsAre(ReceivedNamedContact(2, u"b"), ReceivedNamedContact(1, u"a")));
  EXPECT_THAT(store_.updated[1], ElementsAre(ReceivedNamedGroup(1, u"g")));
  EXPECT_THAT(ReadFile(kContactIdMap), IsEmpty());
}

TEST_F(ContactsRecoverTest, NewAndModifiedRecordsOfEachChunkGoInOneCallEach) {
  Bytes changes;
  Bytes contacts;
  for (std::uint32_t id = 1; id <= 401; ++id) {
    if (id % 3 == 0) AddContact(id, 0, u"old");
    if (id % 3 != 1) Append(changes, Words({0, id, id % 3 == 0 ? 2u : 1u}));
    Append(contacts, NamedContact(id, u"new"));
    PutText(contacts, contacts.size() - 3596 + 4, std::u16string(1, static_cast<char16_t>(0x4E00 + id)));
  }
  PlaceChanges(changes, {.contacts = contacts});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  std::vector<std::string> sizes;
  for (const std::string& call : Deeds()) {
    if (call.starts_with("Add")) sizes.push_back(call);
    if (call.starts_with("Update")) sizes.push_back("Update " + std::to_string(std::ranges::count(call, ' ')));
  }
  EXPECT_THAT(sizes,
              ElementsAre("AddManToUnGroup 67", "Update 66", "AddManToUnGroup 66", "Update 67", "AddManToUnGroup 1"));
  for (std::uint32_t i = 0; i < 133; ++i) EXPECT_EQ(Get32(store_.updated[0].at(i), 0), 3 * (i + 1));
  for (std::uint32_t i = 0; i < 134; ++i) EXPECT_EQ(Get32(store_.added[0].at(i), 0), 3 * i + 2);
}

TEST_F(ContactsRecoverTest, RecordsWithoutAnEntryArePassedOver) {
  AddContact(1);
  AddGroup(1);
  // An entry speaks of the record of its own table only, and not every entry asks for something.
  PlaceChanges(Words({1, 2, 1, 0, 3, 1, 0, 1, 0, 0, 4, 4, 0, 5, 0xFFFFFFFF, 7, 1, 1, 0xFFFFFFFF, 1, 2}),
               {.contacts = Joined({NamedContacts(1, 2), NamedContacts(4, 2)}),
                .groups = Joined({NamedGroup(1), NamedGroup(3)})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), IsEmpty());
  EXPECT_TRUE(TablesAreGone());
  EXPECT_FALSE(Exists(kContactChanges));
}

TEST_F(ContactsRecoverTest, AContactOfWhichOnlyThePictureChangedIsPassedOver) {
  AddContact(1, 70);
  for (const std::uint32_t operation : {1u, 2u}) {
    store_.calls.clear();
    store_.pictures[70] = {1, {1}};
    PlaceChanges(Words({2, 1, operation}),
                 {.contacts = NamedContact(1, u"a"), .memberships = ExchangeMembership(1, {5})});
    EXPECT_EQ(Recover(1, 3).code, 0u);
    EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteImage 70")) << operation;
    EXPECT_THAT(ReadFile(kContactIdMap), IsEmpty());
  }
}

TEST_F(ContactsRecoverTest, TheFirstChangeOfARecordCounts) {
  AddContact(1);
  PlaceChanges(Words({0, 1, 2, 0, 1, 1, 0, 2, 1, 0, 2, 2}), {.contacts = NamedContacts(1, 2)});
  store_.found_flag = 0;
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("UpdateMan"), ElementsAre("UpdateMan [1]"));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 1000, 2}));
}

TEST_F(ContactsRecoverTest, AnEmptyChangeListChangesNothing) {
  AddContact(1);
  PlaceChanges({}, {.contacts = NamedContact(1), .memberships = ExchangeMembership(1, {2})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), IsEmpty());
  EXPECT_EQ(ReadFile(kContactLog), Words({1, kOldLow, kOldHigh}));
  EXPECT_THAT(ReadFile(kContactGroupLog), IsEmpty());
  EXPECT_THAT(ReadFile(kContactIdMap), IsEmpty());
  EXPECT_TRUE(TablesAreGone());
  EXPECT_FALSE(Exists(kContactChanges));
}

TEST_F(ContactsRecoverTest, RefusedUpdatesAndNameLookUpsAreFlaggedWithTheirTable) {
  struct Row {
    const char* entry_point;
    Bytes changes;
    std::uint32_t code;
  };
  const Row kRows[] = {
      {"FindmanSyncidByName", Words({0, 1, 1}), 0x23000006},
      {"FindgroupSyncidByName", Words({1, 1, 1}), 0x24000006},
      {"UpdateMan", Words({0, 1, 2}), 0x23000008},
      {"UpdateGroup", Words({1, 1, 2}), 0x24000008},
  };
  AddContact(1);
  AddGroup(1);
  for (const Row& row : kRows) {
    for (const std::int32_t status : {1, -502, -503}) {
      store_.statuses = {{row.entry_point, status}};
      PlaceChanges(row.changes, {.contacts = NamedContact(1), .groups = NamedGroup(1)});
      EXPECT_EQ(Recover(1, 3).code, row.code) << row.entry_point;
      EXPECT_TRUE(TablesAreKept());
      EXPECT_TRUE(Exists(kContactChanges));
    }
  }
  EXPECT_THAT(store_.added[0], IsEmpty());
  EXPECT_FALSE(Exists(kContactIdMap));
  EXPECT_FALSE(Exists(kContactLog));
}

TEST_F(ContactsRecoverTest, ALookUpThatFailsAddsNothingOfItsChunk) {
  store_.refusals["FindmanSyncidByName"] = {{3, 1}};
  PlaceChanges(Changes(0, 1, 5, 1), {.contacts = NamedContacts(1, 5)});
  EXPECT_EQ(Recover(1, 3).code, 0x23000006u);
  EXPECT_THAT(store_.CallsOf("FindmanSyncidByName"), SizeIs(3));
  EXPECT_THAT(store_.added[0], IsEmpty());
}

// --- Deletions ---

TEST_F(ContactsRecoverTest, DeletedContactsTakeTheirPicturesAlong) {
  AddContact(1, 70);
  AddContact(2);
  AddContact(3, 71);
  AddContact(4, 72);
  PlaceChanges(Words({0, 1, 3, 0, 2, 3, 0, 3, 3}));
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteImage 70", "Readman [2]", "Readman [3]", "DeleteImage 71",
                                   "DeleteMan [1 2 3]"));
  EXPECT_THAT(store_.Ids(0), ElementsAre(4));
  EXPECT_THAT(store_.pictures, AllOf(SizeIs(1), Contains(testing::Key(72u))));
}

TEST_F(ContactsRecoverTest, AChangedPictureReplacesTheOneThereIs) {
  AddContact(1, 70);
  AddContact(2, 71);
  AddContact(3);
  PlaceChanges(Words({2, 1, 1, 2, 2, 2, 2, 3, 2}));
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteImage 70", "Readman [2]", "DeleteImage 71", "Readman [3]"));
  EXPECT_THAT(store_.Ids(0), ElementsAre(1, 2, 3));
}

TEST_F(ContactsRecoverTest, OtherChangesOfPicturesMeanNothing) {
  AddContact(1, 70);
  AddGroup(1);
  PlaceChanges(Words({2, 1, 3, 2, 1, 0, 2, 1, 4, 3, 1, 1, 3, 1,          2, 3, 1, 3, 0,         1,
                      0, 1, 1, 0, 0, 1, 4, 0, 1, 1, 0, 1, 2, 0xFFFFFFFF, 1, 3, 0, 1, 0xFFFFFFFF}));
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), IsEmpty());
}

TEST_F(ContactsRecoverTest, AReadThatFillsNothingFindsNoPicture) {
  AddContact(1, 70);
  store_.fills_nothing = {"Readman"};
  PlaceChanges(Words({0, 1, 3}));
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteMan [1]"));
}

TEST_F(ContactsRecoverTest, DeletionsGoInOneCallOfEachTableContactsFirst) {
  for (std::uint32_t id = 1; id <= 4; ++id) {
    AddContact(id);
    AddGroup(id);
  }
  PlaceChanges(Words({1, 3, 3, 0, 2, 3, 1, 1, 3, 0, 4, 3, 1, 2, 3}));
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(Deeds(), ElementsAre("Readman [2]", "Readman [4]", "DeleteMan [2 4]", "DeleteGroup [3 1 2]"));
}

TEST_F(ContactsRecoverTest, DeletionsHaveNoLimit) {
  Bytes changes;
  for (std::uint32_t id = 1; id <= 3500; ++id) {
    AddContact(id);
    Append(changes, Words({0, id, 3}));
    if (id > 300) continue;
    AddGroup(id);
    Append(changes, Words({1, id, 3}));
  }
  PlaceChanges(changes);
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.tables[0], IsEmpty());
  EXPECT_THAT(store_.tables[1], IsEmpty());
  EXPECT_THAT(store_.CallsOf("DeleteMan"), SizeIs(1));
  EXPECT_THAT(store_.CallsOf("DeleteGroup"), SizeIs(1));
}

TEST_F(ContactsRecoverTest, ATornChangeIsPassedOver) {
  AddContact(1);
  AddContact(2);
  for (std::size_t size = 12; size < 24; ++size) {
    PlaceChanges(CutTo(Words({0, 9, 0, 0, 1, 3}), size));
    EXPECT_EQ(Recover(1, 3).code, 0u);
    EXPECT_THAT(store_.tables[0], SizeIs(2)) << size;
  }
}

TEST_F(ContactsRecoverTest, AContactThatCannotBeReadEndsTheDeletions) {
  AddContact(1, 70);
  AddContact(2);
  for (const Bytes& failing : {Words({0, 2, 3}), Words({2, 2, 1}), Words({2, 2, 2})}) {
    store_.calls.clear();
    store_.pictures[70] = {1, {1}};
    const unsigned second_read = static_cast<unsigned>(2 * (store_.refusals["Readman"].size() + 1));
    store_.refusals["Readman"][second_read] = 1;
    PlaceChanges(Joined({Words({0, 1, 3, 1, 1, 3}), failing, Words({0, 1, 3})}), {.groups = NamedGroup(9)});
    EXPECT_EQ(Recover(1, 3).code, 0x20200006u);
    EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteImage 70", "Readman [2]"));
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kContactChanges));
  }
}

TEST_F(ContactsRecoverTest, APictureThatCannotBeDeletedEndsTheDeletions) {
  AddContact(1, 70);
  store_.statuses["DeleteImage"] = -1;
  for (const Bytes& failing : {Words({0, 1, 3}), Words({2, 1, 1}), Words({2, 1, 2})}) {
    store_.calls.clear();
    PlaceChanges(Joined({Words({1, 1, 3}), failing, Words({0, 1, 3})}));
    EXPECT_EQ(Recover(1, 3).code, 0x20200009u);
    EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteImage 70"));
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kContactChanges));
  }
}

TEST_F(ContactsRecoverTest, APictureThatIsGoneCannotBeDeletedAgain) {
  for (const Bytes& changes : {Words({0, 1, 3, 0, 1, 3}), Words({2, 1, 2, 0, 1, 3})}) {
    store_.tables[0].clear();
    store_.calls.clear();
    AddContact(1, 70);
    PlaceChanges(changes);
    EXPECT_EQ(Recover(1, 3).code, 0x20200009u);
    EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteImage 70", "Readman [1]", "DeleteImage 70"));
    EXPECT_THAT(store_.Ids(0), ElementsAre(1));
  }
}

TEST_F(ContactsRecoverTest, RefusedDeletionsEndTheRecover) {
  AddContact(1);
  AddGroup(1);
  store_.statuses = {{"DeleteMan", 1}};
  PlaceChanges(Words({1, 1, 3, 0, 1, 3}), {.groups = NamedGroup(9)});
  EXPECT_EQ(Recover(1, 3).code, 0x20200009u);
  EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteMan [1]"));
  store_.calls.clear();
  store_.statuses = {{"DeleteGroup", 1}};
  EXPECT_EQ(Recover(1, 3).code, 0x20200009u);
  EXPECT_THAT(Deeds(), ElementsAre("Readman [1]", "DeleteMan [1]", "DeleteGroup [1]"));
  EXPECT_THAT(store_.Ids(0), IsEmpty()) << "contacts were deleted before the groups failed";
  EXPECT_TRUE(TablesAreKept());
  EXPECT_TRUE(Exists(kContactChanges));
  EXPECT_FALSE(Exists(kContactIdMap));
}

TEST_F(ContactsRecoverTest, DeletionsNeedAllTheirEntryPointsBeforeTheList) {
  for (const auto* missing : {u"DTP_PIMDeleteGroup", u"DTP_PIMDeleteMan", u"DTP_DeleteImage", u"DTP_PIMReadman"}) {
    ScriptedContactStore lacking({missing});
    lacking.Add(0, 1);
    lacking.Add(1, 1);
    EXPECT_EQ(Recover(1, 3).code, 0x20200002u) << testing::PrintToString(std::u16string(missing));
    PlaceChanges(Words({0, 1, 3, 1, 1, 3}));
    EXPECT_EQ(Recover(1, 3).code, 0x20200002u);
    EXPECT_THAT(lacking.tables[0], SizeIs(1));
    EXPECT_THAT(lacking.tables[1], SizeIs(1));
    EXPECT_TRUE(Exists(kContactChanges));
    std::filesystem::remove(handset::HostPath(kContactChanges));
  }
}

// --- Memberships ---

TEST_F(ContactsRecoverTest, MembershipsPointAtTheIdsThatTheirRecordsReceived) {
  Place({.contacts = NamedContacts(1, 2),
         .groups = NamedGroups(2, 2),
         .memberships = Joined({ExchangeMembership(2, {3, 2, 9}), ExchangeMembership(1, {1}),
                                ExchangeMembership(3, {2}), ExchangeMembership(1, {})}),
         .pictures = Joined({IncomingPicture(3, 1), IncomingPicture(9, 1)})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  // Groups became 1000 and 1001, contacts 1002 and 1003; a picture's id is neither a group's nor a contact's.
  EXPECT_THAT(store_.added_memberships,
              ElementsAre(ReceivedMembership(1003, {1001, 1000, 9}), ReceivedMembership(1002, {1}),
                          ReceivedMembership(3, {1000}), ReceivedMembership(1002, {})));
  EXPECT_THAT(store_.CallsOf("PhoneAddToGroups"), ElementsAre("PhoneAddToGroups 4"));
  EXPECT_THAT(store_.CallsOf("ModifyManToGroup"), IsEmpty());
}

TEST_F(ContactsRecoverTest, MembershipsOfChangedContactsGoWhereTheirChangeSays) {
  AddContact(2);
  AddContact(5, 0, u"Anna");
  PlaceChanges(
      Words({0, 1, 1, 0, 2, 2, 0, 6, 1, 1, 8, 1, 1, 3, 1, 2, 4, 1, 0, 4, 3, 0, 7, 0}),
      {.contacts = Joined({NamedContact(1, u"One"), NamedContact(2), NamedContact(6, u"Anna")}),
       .groups = NamedGroup(8, u"Eight"),
       .memberships = Joined({ExchangeMembership(2, {8, 9}), ExchangeMembership(1, {9, 8}), ExchangeMembership(3, {8}),
                              ExchangeMembership(4, {8}), ExchangeMembership(6, {8}), ExchangeMembership(7, {8}),
                              ExchangeMembership(2, {})})});
  AddContact(4);
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.CallsOf("PhoneAddToGroups"), ElementsAre("PhoneAddToGroups 2"));
  EXPECT_THAT(store_.CallsOf("ModifyManToGroup"), ElementsAre("ModifyManToGroup 2"));
  EXPECT_THAT(store_.added_memberships,
              ElementsAre(ReceivedMembership(1001, {9, 1000}), ReceivedMembership(5, {1000})));
  EXPECT_THAT(store_.modified_memberships, ElementsAre(ReceivedMembership(2, {1000, 9}), ReceivedMembership(2, {})));
}

TEST_F(ContactsRecoverTest, AModifiedContactKeepsItsIdWhateverTheMapSays) {
  AddContact(7);
  store_.claimed_count[1] = 100;
  // Group 7 is refused, which the map tells as contact 7.
  PlaceChanges(Words({0, 7, 2, 1, 7, 1}),
               {.contacts = NamedContact(7), .groups = NamedGroup(7), .memberships = ExchangeMembership(7, {7})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.modified_memberships, ElementsAre(ReceivedMembership(7, {7})));
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, kNoContact, 7}));
}

TEST_F(ContactsRecoverTest, MembershipsOfRefusedContactsAreDroppedByAChangeListOnly) {
  store_.claimed_count[0] = 2999;
  const Tables tables = {.contacts = Joined({NamedContact(1, u"a"), NamedContact(2, u"b")}),
                         .memberships = Joined({ExchangeMembership(2, {9}), ExchangeMembership(1, {9})})};
  PlaceChanges(Words({0, 1, 1, 0, 2, 1}), tables);
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_THAT(store_.added_memberships, ElementsAre(ReceivedMembership(1000, {9})));
  store_.added_memberships.clear();
  Place(tables);
  EXPECT_EQ(Recover(1, 5).code, 0u);
  EXPECT_THAT(store_.added_memberships,
              ElementsAre(ReceivedMembership(kNoContact, {9}), ReceivedMembership(1001, {9})));
}

TEST_F(ContactsRecoverTest, AGroupThatWasRefusedOrFoundByNameIsNotTranslated) {
  AddGroup(50, u"Family");
  store_.claimed_count[1] = 99;
  PlaceChanges(Words({0, 1, 1, 1, 8, 1, 1, 9, 1}),
               {.contacts = NamedContact(1, u"a"),
                .groups = Joined({NamedGroup(8, u"Family"), NamedGroup(9, u"Work")}),
                .memberships = ExchangeMembership(1, {8, 9})});
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, kNoContact, 9, 0, 50, 8, 0, 1000, 1})) << "told as contacts";
  EXPECT_THAT(store_.added_memberships, ElementsAre(ReceivedMembership(1000, {8, 9})));
}

TEST_F(ContactsRecoverTest, AGroupToldAsAContactStandsBeforeTheContactOfItsId) {
  // Contact 7 and group 7, which is found by name as group 50: what was told first counts.
  AddGroup(50, u"Family");
  const Tables tables = {.contacts = NamedContact(7, u"a"),
                         .groups = NamedGroup(7, u"Family"),
                         .memberships = ExchangeMembership(7, {7, 9})};
  PlaceChanges(Words({0, 7, 1, 1, 7, 1}), tables);
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 50, 7, 0, 1000, 7}));
  EXPECT_THAT(store_.added_memberships, ElementsAre(ReceivedMembership(50, {7, 9})));

  // Group 7 is refused: so is the membership of contact 7.
  store_.added_memberships.clear();
  store_.claimed_count[1] = 100;
  store_.tables[0].clear();
  PlaceChanges(Words({0, 7, 1, 1, 7, 1}), tables);
  EXPECT_EQ(Recover(1, 3).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, kNoContact, 7, 0, 1001, 7}));
  EXPECT_THAT(store_.added_memberships, IsEmpty());

  // Without a change list it is passed on.
  Place(tables);
  EXPECT_EQ(Recover(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, kNoContact, 7, 0, 1002, 7}));
  EXPECT_THAT(store_.added_memberships, ElementsAre(ReceivedMembership(kNoContact, {7, 9})));
}

TEST_F(ContactsRecoverTest, MembershipsTravelInBatchesOfTwoHundred) {
  struct Row {
    std::uint32_t count;
    std::vector<std::string> sizes;
  };
  const Row kRows[] = {{0, {}},
                       {1, {" 1"}},
                       {199, {" 199"}},
                       {200, {" 200"}},
                       {201, {" 200", " 1"}},
                       {400, {" 200", " 200"}},
                       {401, {" 200", " 200", " 1"}}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.count);
    store_.calls.clear();
    store_.added_memberships.clear();
    store_.modified_memberships.clear();
    const auto prefixed = [&](const std::string& entry_point) {
      std::vector<std::string> calls;
      for (const std::string& size : row.sizes) calls.push_back(entry_point + size);
      return calls;
    };
    Bytes memberships;
    Bytes changes;
    for (std::uint32_t id = 1; id <= row.count; ++id) {
      Append(memberships, ExchangeMembership(id, {id + 1, id + 2}));
      Append(memberships, ExchangeMembership(10000 + id, {id + 3}));
      Append(changes, Words({0, id, 1, 0, 10000 + id, 2}));
    }
    PlaceChanges(changes, {.memberships = memberships});
    EXPECT_EQ(Recover(1, 3).code, 0u);
    EXPECT_EQ(store_.CallsOf("PhoneAddToGroups"), prefixed("PhoneAddToGroups"));
    EXPECT_EQ(store_.CallsOf("ModifyManToGroup"), prefixed("ModifyManToGroup"));
    ASSERT_THAT(store_.added_memberships, SizeIs(row.count));
    ASSERT_THAT(store_.modified_memberships, SizeIs(row.count));
    memberships.clear();
    for (std::uint32_t id = 1; id <= row.count; ++id) {
      ASSERT_EQ(store_.added_memberships[id - 1], ReceivedMembership(id, {id + 1, id + 2}));
      ASSERT_EQ(store_.modified_memberships[id - 1], ReceivedMembership(10000 + id, {id + 3}));
      Append(memberships, ExchangeMembership(id, {id}));
    }
    store_.calls.clear();
    Place({.memberships = memberships});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    EXPECT_EQ(store_.CallsOf("PhoneAddToGroups"), prefixed("PhoneAddToGroups"));
    EXPECT_THAT(store_.CallsOf("ModifyManToGroup"), IsEmpty());
  }
}

TEST_F(ContactsRecoverTest, AMembershipHasUpToAHundredGroups) {
  std::vector<std::uint32_t> groups(100);
  std::iota(groups.begin(), groups.end(), 500u);
  Place(
      {.memberships = Joined({ExchangeMembership(1, groups), ExchangeMembership(2, {}), ExchangeMembership(3, {4})})});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(store_.added_memberships,
              ElementsAre(ReceivedMembership(1, groups), ReceivedMembership(2, {}), ReceivedMembership(3, {4})))
      << "nothing of a membership is left in the one after it";
}

TEST_F(ContactsRecoverTest, AMembershipOfMoreGroupsEndsTheRecover) {
  for (const std::uint32_t count : {101u, 0x40000000u, 4'000'000'000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(count);
    Bytes memberships = Joined({ExchangeMembership(1, {5}), Words({1, count}), Bytes(404)});
    PlaceChanges(Words({0, 1, 1}), {.memberships = memberships});
    EXPECT_EQ(Recover(1, 4).code, 0x2A000200u);
    EXPECT_EQ(Recover(1, 3).code, 0x2A000200u);
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kContactChanges));
    // Also where nothing would be done with it.
    PlaceChanges({}, {.memberships = memberships});
    EXPECT_EQ(Recover(1, 3).code, 0x2A000200u);
  }
  for (const Bytes& membership : store_.added_memberships) EXPECT_EQ(membership, ReceivedMembership(1, {5}));
}

TEST_F(ContactsRecoverTest, RefusedMembershipsAreFlagged) {
  AddContact(2);
  const Tables tables = {.memberships = Joined({ExchangeMembership(1, {5}), ExchangeMembership(2, {5})})};
  for (const std::int32_t status : {1, -1, -502, -503, -504}) {
    store_.statuses = {{"PhoneAddToGroups", status}};
    PlaceChanges(Words({0, 1, 1, 0, 2, 2}), tables);
    EXPECT_EQ(Recover(1, 5).code, 0x2A000007u) << status;
    EXPECT_EQ(Recover(1, 3).code, 0x2A000007u) << status;
    store_.statuses = {{"ModifyManToGroup", status}};
    EXPECT_EQ(Recover(1, 3).code, 0x2A000008u) << status;
    EXPECT_TRUE(TablesAreKept());
    EXPECT_TRUE(Exists(kContactChanges));
  }
  EXPECT_FALSE(Exists(kContactIdMap));
  EXPECT_FALSE(Exists(kContactLog));
}

TEST_F(ContactsRecoverTest, ARefusedBatchEndsTheMemberships) {
  Bytes memberships;
  for (std::uint32_t id = 1; id <= 401; ++id) Append(memberships, ExchangeMembership(id, {5}));
  for (const std::uint32_t operation : {1u, 2u}) {
    const char* const entry_point = operation == 1 ? "PhoneAddToGroups" : "ModifyManToGroup";
    store_.refusals[entry_point] = {{2, 1}};
    PlaceChanges(Changes(0, 1, 401, operation), {.memberships = memberships});
    EXPECT_EQ(Recover(1, 3).code, operation == 1 ? 0x2A000007u : 0x2A000008u);
    EXPECT_THAT(store_.CallsOf(entry_point), SizeIs(2));
  }
}

// --- Torn tables ---

TEST_F(ContactsRecoverTest, ATornContactIsUsedAsReadTheRestBeingZero) {
  const Bytes whole = IncomingContact(Texts::kFull);
  for (const std::size_t size : {0u, 1u, 3u, 4u, 5u, 65u, 112u, 860u, 1120u, 1798u, 3076u, 3559u, 3592u, 3595u}) {
    SCOPED_TRACE(size);
    store_.added[0].clear();
    const Bytes torn = CutTo(whole, size);
    Place({.contacts = Joined({NamedContact(1, u"whole"), torn})});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    ASSERT_EQ(store_.added[0].size(), size == 0 ? 1u : 2u);
    EXPECT_EQ(store_.added[0][0], ReceivedNamedContact(1, u"whole"));
    EXPECT_TRUE(TablesAreGone());
    if (size == 0) continue;
    const Bytes from_torn = store_.added[0][1];
    EXPECT_EQ(from_torn, Received(CutTo(torn, 3596)));
  }
}

TEST_F(ContactsRecoverTest, ATornContactBehindAWholeChunkIsUsedToo) {
  Place({.contacts = CutTo(Joined({NamedContacts(1, 200), IncomingContact(Texts::kFull)}), 200 * 3596 + 4)});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_THAT(store_.CallsOf("AddManToUnGroup"), ElementsAre("AddManToUnGroup 200", "AddManToUnGroup 1"));
  EXPECT_EQ(store_.added[0].back(), ReceivedNamedContact(kIncomingContactId));
}

TEST_F(ContactsRecoverTest, ATornGroupIsUsedAsReadTheRestBeingZero) {
  for (const std::size_t size : {0u, 1u, 4u, 6u, 766u, 1531u}) {
    SCOPED_TRACE(size);
    const auto received = [&](const Bytes& group) {
      store_.added[1].clear();
      Place({.groups = Joined({NamedGroup(1), group})});
      EXPECT_EQ(Recover(1, 4).code, 0u);
      return store_.added[1];
    };
    const Bytes torn = CutTo(IncomingGroup(Texts::kFull), size);
    const std::vector<Bytes> from_torn = received(torn);
    EXPECT_THAT(from_torn, SizeIs(size == 0 ? 1 : 2));
    if (size != 0) {
      EXPECT_EQ(from_torn, received(CutTo(torn, 1532)));
    }
  }
  Place({.groups = CutTo(NamedGroup(1, u"Family"), 8)});
  EXPECT_EQ(Recover(1, 4).code, 0u);
  EXPECT_EQ(store_.added[1].back(), ReceivedNamedGroup(1, u"Fa"));
}

TEST_F(ContactsRecoverTest, ATornPictureIsUsedAsReadTheRestBeingZero) {
  const Bytes whole = IncomingPicture(0x87654321, 8192);
  for (const std::size_t size : {0u, 1u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 4118u, 8199u, 8200u, 8235u}) {
    SCOPED_TRACE(size);
    store_.loaded_pictures.clear();
    Place({.pictures = Joined({IncomingPicture(1, 8192), CutTo(whole, size)})});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    ASSERT_THAT(store_.loaded_pictures, SizeIs(size == 0 ? 1 : 2));
    if (size == 0) continue;
    const Bytes filled = CutTo(CutTo(whole, size), 8236);
    Bytes expected = CutTo(Bytes(filled.begin(), filled.begin() + 6), 6);  // The length's upper half has no place.
    expected.insert(expected.end(), filled.begin() + 8, filled.begin() + 8200);
    expected.resize(8200);
    EXPECT_EQ(store_.loaded_pictures[1], expected);
  }
}

TEST_F(ContactsRecoverTest, ATornHeadOfAMembershipIsUsedAsReadTheRestBeingZero) {
  const Bytes whole = Words({0x87654321, 0});
  for (std::size_t size = 1; size <= 8; ++size) {
    SCOPED_TRACE(size);
    store_.added_memberships.clear();
    Place({.memberships = Joined({ExchangeMembership(1, {2}), CutTo(whole, size)})});
    EXPECT_EQ(Recover(1, 4).code, 0u);
    EXPECT_THAT(store_.added_memberships, ElementsAre(ReceivedMembership(1, {2}), CutTo(CutTo(whole, size), 408)));
  }
  Place({.memberships = CutTo(Words({1, 0x100}), 5)});
  EXPECT_EQ(Recover(1, 4).code, 0u) << "the byte that says 256 is cut off";
  Place({.memberships = CutTo(Words({1, 0x100}), 6)});
  EXPECT_EQ(Recover(1, 4).code, 0x2A000200u);
}

TEST_F(ContactsRecoverTest, AMembershipTornInItsGroupsIsNotApplied) {
  const Bytes whole = ExchangeMembership(2, {3, 4});
  for (std::size_t size = 8; size < 16; ++size) {
    SCOPED_TRACE(size);
    PlaceChanges(Words({0, 1, 1, 0, 2, 1}), {.memberships = Joined({ExchangeMembership(1, {2}), CutTo(whole, size)})});
    EXPECT_EQ(Recover(1, 5).code, 0x2A000200u);
    EXPECT_EQ(Recover(1, 3).code, 0x2A000200u);
    EXPECT_TRUE(TablesAreKept());
  }
  EXPECT_THAT(store_.added_memberships, Each(ReceivedMembership(1, {2})));
}

// --- Failures ---

TEST_F(ContactsRecoverTest, AStoreThatIsNotLoadedTouchesNothing) {
  PlaceChanges(Words({0, 1, 3}), {.contacts = NamedContact(1)});
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"ContactStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    EXPECT_EQ(Recover(1, 2, u"", std::u16string(300, u'x')).code, 0x20000001u);
    EXPECT_EQ(Recover(1, 3).code, 0x20000001u);
    EXPECT_EQ(LocalRecover(1), 0x20000001u);
    EXPECT_EQ(AllFiles().size(), 5u);
  }
}

TEST_F(ContactsRecoverTest, AnOverlongDirectoryIsRefusedBeforeTheStoreIsEmptied) {
  AddContact(1);
  const Answer answer = Recover(1, 2, u"77", std::u16string(260, u'\\'));
  EXPECT_EQ(answer.code, 0x20000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "UnInitialize"));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_F(ContactsRecoverTest, ADirectoryOf259CharactersIsRecoveredFrom) {
  Place({.contacts = NamedContact(1)});
  const std::u16string sync = kSync;
  EXPECT_EQ(Recover(1, 1, u"", std::u16string(260 - sync.size(), u'\\') + sync).code, 0x20000100u);
  EXPECT_TRUE(TablesAreKept());
  EXPECT_EQ(Recover(1, 1, u"", std::u16string(259 - sync.size(), u'\\') + sync).code, 0u);
  EXPECT_TRUE(TablesAreGone());
  EXPECT_EQ(ReadFile(kContactIdMap), Words({0, 1000, 1}));
}

TEST_F(ContactsRecoverTest, AFailedRecoverAnswersTheAnchorThatItMade) {
  for (const std::uint32_t mode : {1u, 2u, 3u}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nLINKMAN = 5");
    EXPECT_EQ(Recover(1, mode, u"5").anchor, kNowAnchor) << "there are no tables";
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nLINKMAN = 200612117210");
  }
  EXPECT_EQ(Recover(1, 4, u"5").anchor, u"5");
}

TEST_F(ContactsRecoverTest, TheStoreIsInitialisedOnceAndLeftOnceWhateverHappens) {
  Place({});
  for (const std::int32_t status : {0, 1, -1}) {
    store_.statuses = {{"Initialize", status}, {"UnInitialize", status}};
    for (const std::uint32_t mode : {1u, 3u, 4u}) {
      store_.calls.clear();
      Place({});
      EXPECT_EQ(Recover(1, mode).code, mode == 3 ? 0x20200100u : 0u);
      EXPECT_EQ(store_.calls.front(), "Initialize 0");
      EXPECT_EQ(store_.calls.back(), "UnInitialize");
      EXPECT_EQ(std::ranges::count(store_.calls, "Initialize 0"), 1);
      EXPECT_EQ(std::ranges::count(store_.calls, "UnInitialize"), 1);
    }
  }
}

TEST_F(ContactsRecoverTest, EntryPointsAreMissedByTheStepsThatNeedThem) {
  struct Missing {
    const char16_t* name;
    std::uint32_t inserting, applying;
  };
  static constexpr Missing kMissing[] = {
      {u"DTP_Initialize", 0, 0},
      {u"DTP_UnInitialize", 0, 0},
      {u"DTP_PIMGetAllManNum", 0x23000002, 0x23000002},
      {u"DTP_PIMGetAllGroupNum", 0x24000002, 0x24000002},
      {u"DTP_PIMGetAllmanSyncid", 0x25000002, 0x25000002},
      {u"DTP_PIMGetAllgroupSyncid", 0x25000002, 0x25000002},
      {u"DTP_PIMReadman", 0, 0x20200002},
      {u"DTP_PIMReadgroup", 0, 0},
      {u"DTP_PIMDeleteMan", 0, 0x20200002},
      {u"DTP_PIMDeleteGroup", 0, 0x20200002},
      {u"DTP_PIMAddManToUnGroup", 0x23000002, 0x23000002},
      {u"DTP_PIMAddGroup", 0x24000002, 0x24000002},
      {u"DTP_PIMUpdateMan", 0, 0x23000002},
      {u"DTP_PIMUpdateGroup", 0, 0x24000002},
      {u"DTP_PIMFindmanSyncidByName", 0, 0x23000002},
      {u"DTP_PIMFindgroupSyncidByName", 0, 0x24000002},
      {u"DTP_PIMQueryManAttachGroup", 0, 0},
      {u"DTP_PIMPhoneAddToGroups", 0x2A000002, 0x2A000002},
      {u"DTP_PIMModifyManToGroup", 0, 0x2A000002},
      {u"DTP_DownloadingImage", 0, 0},
      {u"DTP_LoadingImage", 0x2B000002, 0x2B000002},
      {u"DTP_DeleteImage", 0, 0x20200002},
  };
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(missing.name)));
    const ScriptedContactStore lacking({missing.name});
    // A local recover neither empties the store nor lists it afterwards.
    const bool only_lists = (missing.inserting & 0xFF000000) == 0x25000000;
    PlaceChanges({});
    EXPECT_EQ(LocalRecover(1), only_lists ? 0 : missing.inserting);
    PlaceChanges({});
    EXPECT_EQ(Recover(1, 3).code, missing.applying);
  }
}

TEST_F(ContactsRecoverTest, AMissingTableIsFlaggedWithItsStep) {
  for (const std::uint32_t mode : {1u, 3u, 4u, 5u}) {
    SCOPED_TRACE(mode);
    PlaceChanges({});
    for (const auto* file : kContactTables) std::filesystem::remove(handset::HostPath(file));
    EXPECT_EQ(Recover(1, mode).code, 0x2B000100u);
    WriteFile(kPictureTable, {});
    EXPECT_EQ(Recover(1, mode).code, 0x24000100u);
    WriteFile(kContactGroupTable, {});
    EXPECT_EQ(Recover(1, mode).code, 0x23000100u);
    WriteFile(kContactTable, {});
    EXPECT_EQ(Recover(1, mode).code, 0x2A000100u);
    EXPECT_TRUE(Exists(kPictureTable) && Exists(kContactGroupTable) && Exists(kContactTable));
    EXPECT_TRUE(Exists(kContactChanges));
  }
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
  EXPECT_FALSE(Exists(kContactLog));
  std::filesystem::remove(handset::HostPath(kContactChanges));
  EXPECT_EQ(Recover(1, 3).code, 0x20200100u);
}

TEST_F(ContactsRecoverTest, TablesAreOpenedBeforeEntryPointsAreLookedUp) {
  struct Row {
    const char16_t* file;
    const char16_t* entry_point;
    std::uint32_t flag;
  };
  static constexpr Row kRows[] = {
      {kPictureTable, u"DTP_LoadingImage", 0x2B000000},
      {kContactGroupTable, u"DTP_PIMAddGroup", 0x24000000},
      {kContactTable, u"DTP_PIMAddManToUnGroup", 0x23000000},
      {kMembershipTable, u"DTP_PIMPhoneAddToGroups", 0x2A000000},
  };
  for (const Row& row : kRows) {
    const ScriptedContactStore lacking({row.entry_point});
    PlaceChanges({});
    std::filesystem::remove(handset::HostPath(row.file));
    EXPECT_EQ(LocalRecover(1), row.flag | 0x100);
    EXPECT_EQ(Recover(1, 3).code, row.flag | 0x100);
    WriteFile(row.file, {});
    EXPECT_EQ(LocalRecover(1), row.flag | 2);
    EXPECT_EQ(Recover(1, 3).code, row.flag | 2);
  }
}

TEST_F(ContactsRecoverTest, AnUnreadableTableIsNotTakenForItsEnd) {
  struct Row {
    const char16_t* file;
    std::uint32_t code;
  };
  const Row kRows[] = {{kPictureTable, 0x2B000200},
                       {kContactGroupTable, 0x24000200},
                       {kContactTable, 0x23000200},
                       {kMembershipTable, 0x2A000200}};
  for (const Row& row : kRows) {
    for (const std::uint32_t mode : {4u, 3u}) {
      for (const unsigned nth : {1u, 2u}) {
        SCOPED_TRACE(testing::Message() << std::hex << row.code << " in mode " << mode << " read " << nth);
        for (auto& table : store_.tables) table.clear();
        PlaceChanges(Words({0, 1, 1, 1, 1, 1}), {.contacts = NamedContact(1),
                                                 .groups = NamedGroup(1),
                                                 .memberships = ExchangeMembership(1, {1}),
                                                 .pictures = IncomingPicture(1, 1)});
        unsigned reads = 0;
        handset::Observe([&](const handset::Call& call) {
          if (call.function == "ReadFile" && call.path == row.file && ++reads == nth) {
            handset::FailCallOf("ReadFile", 1);
          }
        });
        EXPECT_EQ(Recover(1, mode).code, row.code);
        handset::Observe({});
        EXPECT_TRUE(handset::FaultHappened());
        EXPECT_TRUE(TablesAreKept());
        EXPECT_TRUE(Exists(kContactChanges));
      }
    }
  }
}

TEST_F(ContactsRecoverTest, TheStoreIsAskedForItsCountBeforeATableIsRead) {
  const std::tuple<const char*, const char16_t*, std::uint32_t> kRows[] = {
      {"GetAllGroupNum", kContactGroupTable, 0x24000004}, {"GetAllManNum", kContactTable, 0x23000004}};
  for (const auto& [entry_point, file, code] : kRows) {
    store_.statuses = {{entry_point, 1}};
    for (const std::uint32_t mode : {5u, 3u}) {
      PlaceChanges({}, {.contacts = NamedContact(1), .groups = NamedGroup(1)});
      handset::Observe([table = file](const handset::Call& call) {
        if (call.function == "CreateFileW" && call.path == table) handset::FailCallOf("ReadFile", 1);
      });
      EXPECT_EQ(Recover(1, mode).code, code);
      handset::Observe({});
      EXPECT_FALSE(handset::FaultHappened());
      handset::FailCall(0);
    }
  }
}

TEST_F(ContactsRecoverTest, AnUnreadableChangeListDeletesNothing) {
  AddContact(1);
  PlaceChanges(Words({0, 1, 3}));
  handset::FailCallOf("ReadFile", 1);  // There is no anchor file to read yet.
  EXPECT_EQ(Recover(1, 3).code, 0x20200200u);
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(store_.Ids(0), ElementsAre(1));
  EXPECT_TRUE(Exists(kContactChanges));
}

TEST_F(ContactsRecoverTest, ASnapshotThatCannotBeRewrittenIsFlaggedAfterTheTablesAreGone) {
  for (const auto* file : {kContactLog, kContactGroupLog}) {
    PlaceChanges({}, {.contacts = NamedContact(1)});
    MakeDirectory(file);
    EXPECT_EQ(Recover(1, 1).code, 0x25000100u);
    EXPECT_TRUE(TablesAreGone());
    EXPECT_FALSE(Exists(kContactIdMap));
    Place({});
    EXPECT_EQ(Recover(1, 3).code, 0x25000100u);
    EXPECT_FALSE(Exists(kContactChanges));
    std::filesystem::remove(handset::HostPath(file));
  }
}

TEST_F(ContactsRecoverTest, AStoreThatCannotBeListedAfterwardsIsFlagged) {
  AddContact(1);
  for (const auto* entry_point : {"GetAllmanSyncid", "GetAllgroupSyncid"}) {
    store_.statuses = {{entry_point, 1}};
    PlaceChanges({});
    EXPECT_EQ(Recover(1, 3).code, 0x25000005u) << entry_point;
    EXPECT_TRUE(TablesAreGone());
    EXPECT_FALSE(Exists(kContactIdMap));
  }
}

TEST_F(ContactsRecoverTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  PlaceChanges({});
  EXPECT_THAT(DataOpeningsOf([&] { EXPECT_EQ(Recover(1, 3).code, 0u); }),
              ElementsAre(Opening(kContactChanges, kReader), Opening(kPictureTable, kReader),
                          Opening(kContactGroupTable, kReader), Opening(kContactTable, kReader),
                          Opening(kMembershipTable, kReader), Opening(kContactLog, kWriter),
                          Opening(kContactGroupLog, kWriter), Opening(kContactIdMap, kWriter)));
}

TEST_F(ContactsRecoverTest, NoFileIsOpenWhenOneIsDeletedOrWritten) {
  AddContact(1);
  PlaceChanges(Words({0, 2, 1}), {.contacts = NamedContact(2, u"a"), .memberships = ExchangeMembership(2, {3})});
  std::vector<unsigned> open_files;
  handset::Observe([&](const handset::Call& call) {
    const bool makes_anew = call.function == "CreateFileW" && call.options[2] == 2 && call.path != kAnchorIni;
    if (makes_anew || call.function == "DeleteFileW") open_files.push_back(handset::TakeCensus().files);
  });
  EXPECT_EQ(Recover(1, 3).code, 0u);
  handset::Observe({});
  EXPECT_THAT(open_files, AllOf(SizeIs(8), Each(0))) << "five deletions, two snapshots, the id map";
}

TEST_F(ContactsRecoverTest, FilesAreDeletedInTheOrderOfTheirSteps) {
  PlaceChanges({});
  std::vector<std::u16string> deleted;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "DeleteFileW") deleted.emplace_back(call.path);
  });
  EXPECT_EQ(Recover(1, 3).code, 0u);
  handset::Observe({});
  EXPECT_THAT(deleted,
              ElementsAre(kContactChanges, kContactTable, kContactGroupTable, kMembershipTable, kPictureTable));
}

}  // namespace
}  // namespace qv_test
