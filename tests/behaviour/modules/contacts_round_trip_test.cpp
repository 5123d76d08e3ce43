// Contacts that travel to the desktop, back to an emptied store and out again: whatever does not return as it left is
// named in one place, AfterARoundTrip.
#include <algorithm>
#include <map>
#include <random>
#include <span>

#include "tests/support/contact_records.h"
#include "tests/support/scripted_contact_store.h"

namespace qv_test {
namespace {

constexpr std::size_t kContactSize = 3596;
constexpr std::size_t kGroupSize = 1532;
constexpr std::size_t kPictureSize = 8236;

using IdsBecome = std::map<std::uint32_t, std::uint32_t>;

/// The exchange tables of one export.
struct Exported {
  std::vector<Bytes> contacts, groups, pictures;
  std::vector<std::uint32_t> memberships;  ///< Contact, count, groups; contact, ...
};

class RandomContacts {
 public:
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_()) % bound; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Below(256)); }
  bool OneIn(std::uint32_t chances) { return Below(chances) == 0; }

  Bytes Contact(std::uint32_t id, std::uint32_t picture) {
    Bytes r = Record(id, 1, kContactTexts);
    PutDate(r, 1084);
    PutDate(r, 1096);
    Put8(r, 1386, OneIn(3) ? MarkedByte() : PlainByte());
    Put8(r, 1387, OneIn(3) ? MarkedByte() : PlainByte());
    for (std::size_t i = 0; i < 8; ++i) Put8(r, 1388 + i, OneIn(8) ? MarkedByte() : PlainByte());
    Put32(r, 2284, picture);
    Put8(r, 2288, Byte());
    Put8(r, 2289, Byte());
    Put32(r, 2548, static_cast<std::uint32_t>(engine_()));
    Put32(r, 2736, OneIn(2) ? 100 : 0);
    Put32(r, 2740, OneIn(2) ? 100 : 0);
    return r;
  }

  Bytes Group(std::uint32_t id) { return Record(id, 2, kGroupTexts); }

  Bytes PictureData() {
    Bytes data(OneIn(10) ? 8192 : Below(8193));
    for (std::uint8_t& byte : data) byte = Byte();
    return data;
  }

 private:
  /// A byte below its mark; 0 is the commonest.
  std::uint8_t PlainByte() { return OneIn(2) ? std::uint8_t{0} : static_cast<std::uint8_t>(Below(128)); }
  std::uint8_t MarkedByte() { return static_cast<std::uint8_t>(129 + Below(127)); }

  Bytes Record(std::uint32_t id, std::uint8_t kind, std::span<const TextField> texts) {
    Bytes r(ScriptedContactStore::kRecordSize);
    Put32(r, 0, id);
    Put8(r, 16, Byte());
    Put8(r, 17, kind);
    for (const TextField& text : texts) {
      if (OneIn(3)) continue;
      const std::size_t room = std::min(text.store_size, text.exchange_size) / 2 - 1;
      std::u16string characters(OneIn(5) ? room : Below(static_cast<std::uint32_t>(room) + 1), u'\0');
      for (char16_t& character : characters) character = static_cast<char16_t>(1 + Below(0xFFFF));
      PutText(r, text.store, characters);
    }
    return r;
  }

  /// No date, or one of any month and day, the first of them among the rest.
  void PutDate(Bytes& r, std::size_t offset) {
    if (OneIn(4)) return;
    Put16(r, offset, static_cast<std::uint16_t>(1900 + Below(4) * 50));
    Put16(r, offset + 2, static_cast<std::uint16_t>(1 + Below(12)));
    Put16(r, offset + 4, static_cast<std::uint16_t>(1 + Below(28)));
    Put16(r, offset + 6, static_cast<std::uint16_t>(Below(24)));
    Put16(r, offset + 8, static_cast<std::uint16_t>(Below(60)));
    Put16(r, offset + 10, static_cast<std::uint16_t>(Below(60)));
  }

  std::mt19937 engine_{20061211};
};

/// Marks a byte of a store record and reads it as an export does: true, and the byte without the mark, when the mark
/// shows. It does not on a byte that was 0, or had the mark already.
bool IsTakenForMarked(std::uint8_t& byte) {
  byte = static_cast<std::uint8_t>(byte + 128);
  if (byte <= 128) return false;
  byte = static_cast<std::uint8_t>(byte - 128);
  return true;
}

bool HasText(const Bytes& record, std::size_t offset) {
  return record[offset] != 0 || record[offset + 1] != 0;
}

bool HasDate(const Bytes& record, std::size_t offset) {
  return Get32(record, offset) != 0 && Get32(record, offset + 4) != 0 && Get32(record, offset + 8) != 0;
}

/// What an exported contact looks like when it was applied to an empty store and exported again. All that does not
/// return as it left:
/// - Contacts, groups and pictures have new ids, and those who refer to them follow.
/// - The first date's year 1900, a January, or a first of the month takes both dates away.
/// - A reminder needs a whole date.
/// - The store's word at 2548 is not given back.
/// - Without a chosen flag, the flag of the first text there is becomes the chosen one.
/// - Without a default number, the first number with a text becomes the default.
Bytes AfterARoundTrip(Bytes r, const IdsBecome& contacts, const IdsBecome& pictures) {
  Put32(r, 0, contacts.at(Get32(r, 0)));
  if (const std::uint32_t picture = Get32(r, 3108); picture != 0) Put32(r, 3108, pictures.at(picture));

  std::uint32_t reminders = Get32(r, 3592);
  if (!HasDate(r, 112)) reminders &= ~2u;
  if (!HasDate(r, 3076)) reminders &= ~1u;
  Put32(r, 3592, reminders);
  if (Get32(r, 112) == 1900 || Get32(r, 116) == 1 || Get32(r, 120) == 1) {
    std::fill_n(r.begin() + 112, 24, std::uint8_t{0});
    std::fill_n(r.begin() + 3076, 24, std::uint8_t{0});
  }

  Put8(r, 3516, 0);

  if (Get32(r, 1124) == 0) {
    if (HasText(r, 860)) {
      Put32(r, 1124, IsTakenForMarked(r[1120]) ? 1 : 0);
    } else if (HasText(r, 990)) {
      Put8(r, 1121, static_cast<std::uint8_t>(r[1121] + 128));  // An export looks at the first flag only.
    }
  }

  for (std::size_t i = 0; i < 8 && Get32(r, 856) == 0; ++i) {
    if (!HasText(r, 144 + 66 * i)) continue;
    if (IsTakenForMarked(r[672 + i])) Put32(r, 856, static_cast<std::uint32_t>(i + 1));
    break;
  }
  return r;
}

class ContactsRoundTripTest : public AgentTest {
 protected:
  static constexpr std::uint32_t kContacts = 450;  // More than one call of the store takes, in either direction.
  static constexpr std::uint32_t kGroups = 60;

  void FillStore() {
    RandomContacts random;
    for (std::uint32_t i = 0; i < kGroups; ++i) {
      store_.Add(1, 7000 + 3 * i, ScriptedContactStore::kOldTime, random.Group(7000 + 3 * i));
    }
    for (std::uint32_t i = 0; i < kContacts; ++i) {
      const std::uint32_t id = 20 + 7 * i;
      const std::uint32_t picture = random.OneIn(8) ? 30000 + i : 0;
      store_.Add(0, id, ScriptedContactStore::kOldTime, random.Contact(id, picture));
      if (picture != 0) {
        const Bytes data = random.PictureData();
        store_.pictures[picture] = {static_cast<std::uint16_t>(data.size()), data};
      }
      // A few are in no group, a few in all.
      const std::uint32_t one_in = random.OneIn(20) ? 1 : 1 + random.Below(40);
      for (const std::uint32_t group : store_.Ids(1)) {
        if (random.OneIn(one_in)) store_.groups_of[id].push_back(group);
      }
    }
  }

  Exported ExportAll() {
    EXPECT_EQ(Export(1, 2).code, 0u);
    return {Split(ReadFile(kContactTable), kContactSize), Split(ReadFile(kContactGroupTable), kGroupSize),
            Split(ReadFile(kPictureTable), kPictureSize), ToWords(ReadFile(kMembershipTable))};
  }

  /// A handset's store has a record's own id in the record, too.
  void TakeIdsIntoRecords() {
    for (auto& table : store_.tables) {
      for (auto& record : table) Put32(record.bytes, 0, record.id);
    }
  }

  static std::vector<Bytes> WithIds(std::vector<Bytes> records, const IdsBecome& ids) {
    for (Bytes& record : records) Put32(record, 0, ids.at(Get32(record, 0)));
    return records;
  }

  static IdsBecome Pairs(const std::vector<std::uint32_t>& before, const std::vector<std::uint32_t>& after) {
    EXPECT_EQ(before.size(), after.size());
    IdsBecome pairs;
    for (std::size_t i = 0; i < before.size(); ++i) pairs[before[i]] = after.at(i);
    return pairs;
  }

  static std::vector<std::uint32_t> IdsOf(const std::vector<Bytes>& records) {
    std::vector<std::uint32_t> ids;
    for (const Bytes& record : records) ids.push_back(Get32(record, 0));
    return ids;
  }

  static std::vector<std::uint32_t> Translated(const std::vector<std::uint32_t>& memberships, const IdsBecome& contacts,
                                               const IdsBecome& groups) {
    std::vector<std::uint32_t> words = memberships;
    for (std::size_t i = 0; i < words.size();) {
      words[i] = contacts.at(words[i]);
      const std::size_t end = i + 2 + words.at(i + 1);
      for (i += 2; i < end; ++i) words.at(i) = groups.at(words[i]);
    }
    return words;
  }

  ScriptedContactStore store_;
};

TEST_F(ContactsRoundTripTest, WhatWasRecoveredIsExportedAgain) {
  FillStore();
  Exported before = ExportAll();
  ASSERT_EQ(before.contacts.size(), kContacts);
  ASSERT_EQ(before.groups.size(), kGroups);
  ASSERT_GT(before.pictures.size(), 10u);
  ASSERT_GT(before.memberships.size(), kContacts);
  // What a first trip leaves is not what a second one does: a mark may come and go.
  for (int trip = 1; trip <= 3; ++trip) {
    SCOPED_TRACE(trip);
    const std::vector<std::uint32_t> contacts_before = store_.Ids(0);
    const std::vector<std::uint32_t> groups_before = store_.Ids(1);
    store_.next_id = static_cast<std::uint32_t>(100000 * trip);
    store_.next_picture_id = static_cast<std::uint32_t>(500000 * trip);
    ASSERT_EQ(Recover(1, 2).code, 0u);
    TakeIdsIntoRecords();
    const Exported after = ExportAll();

    const IdsBecome contacts = Pairs(contacts_before, store_.Ids(0));
    const IdsBecome groups = Pairs(groups_before, store_.Ids(1));
    const IdsBecome pictures = Pairs(IdsOf(before.pictures), IdsOf(after.pictures));
    ASSERT_EQ(after.contacts.size(), kContacts);
    for (std::uint32_t i = 0; i < kContacts; ++i) {
      ASSERT_EQ(after.contacts[i], AfterARoundTrip(before.contacts[i], contacts, pictures)) << "contact " << i;
    }
    EXPECT_EQ(after.groups, WithIds(before.groups, groups));
    EXPECT_EQ(after.memberships, Translated(before.memberships, contacts, groups));
    EXPECT_EQ(after.pictures, WithIds(before.pictures, pictures));
    before = after;
  }
}

TEST_F(ContactsRoundTripTest, ARecoveredStoreHasNoChangesToExport) {
  FillStore();
  ASSERT_EQ(Export(1, 1).code, 0u);
  const Answer recovered = Recover(1, 1);
  ASSERT_EQ(recovered.code, 0u);
  const Answer exported = Export(1, 3, recovered.anchor);
  EXPECT_EQ(exported.code, 0u);
  EXPECT_EQ(exported.mode, 3u);
  for (const auto* file : kContactTables) EXPECT_TRUE(ReadFile(file).empty());
  EXPECT_TRUE(ReadFile(kContactChanges).empty());
}

}  // namespace
}  // namespace qv_test
