// Exports of the contacts, full and incremental: the bytes of each file, and what the store is asked.
#include <numeric>
#include <span>

#include "tests/support/contact_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_contact_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

using Time = ScriptedContactStore::Time;

/// A time as the store says it and as the FILETIME that it is, counted by hand.
struct Stamp {
  Time time;
  std::uint32_t low, high;
};
constexpr Stamp kOld = {ScriptedContactStore::kOldTime, ScriptedContactStore::kOldLow, ScriptedContactStore::kOldHigh};
constexpr Stamp kOneSecondBefore = {{2006, 1, 2, 3, 4, 4}, 0x300FAA00, 0x01C60F49};
constexpr Stamp kNewer = {{2007, 1, 31, 23, 59, 59}, 0xE9E5A980, 0x01C74593};
constexpr Stamp kNoTime = {{}, 0, 0};

struct LogEntry {
  std::uint32_t id;
  Stamp stamp;
};

Bytes Log(std::initializer_list<LogEntry> entries) {
  Bytes log;
  for (const auto& [id, stamp] : entries) Append(log, Words({id, stamp.low, stamp.high}));
  return log;
}

constexpr std::size_t kNowhere = ~std::size_t{0};

/// Where each byte of a record goes: `size` bytes from one offset to another, over kNowhere.
class ByteMap {
 public:
  explicit ByteMap(std::size_t store_size) : target_(store_size, kNowhere) {}

  void Copy(std::size_t from, std::size_t size, std::size_t to) {
    for (std::size_t i = 0; i < size; ++i) target_[from + i] = to + i;
  }
  /// A text without a NUL goes as far as it leaves room for one.
  void CopyTexts(std::span<const TextField> fields) {
    for (const TextField& field : fields) {
      Copy(field.store, std::min(field.store_size, field.exchange_size - 2), field.exchange);
    }
  }
  std::size_t operator[](std::size_t from) const { return target_[from]; }

  /// What a store record that is `value` all over puts into `record`.
  Bytes FillFrom(std::uint8_t value, Bytes record) const {
    for (const std::size_t to : target_) {
      if (to != kNowhere) record[to] = value;
    }
    return record;
  }

 private:
  std::vector<std::size_t> target_;
};

std::vector<std::uint32_t> Counting(std::uint32_t from, std::uint32_t count) {
  std::vector<std::uint32_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), from);
  return numbers;
}

Bytes PictureData(std::size_t size, std::uint8_t seed) {
  Bytes data(size);
  for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<std::uint8_t>(seed + i * 3 + i / 256);
  return data;
}

class ContactsExportTest : public AgentTest {
 protected:
  static constexpr const char16_t* kLogs[] = {kContactLog, kContactGroupLog};

  static void StoreAnchor() { WriteText(kAnchorIni, "[ANCHORDATE]\r\nLINKMAN = 5"); }

  /// An incremental export against a stored anchor and these snapshots.
  Answer ExportChanges(const Bytes& contact_log = {}, const Bytes& group_log = {}) {
    StoreAnchor();
    WriteFile(kContactLog, contact_log);
    WriteFile(kContactGroupLog, group_log);
    return Export(1, 3, u"5");
  }

  static void RemoveFiles() {
    for (const auto* file : kContactTables) std::filesystem::remove(handset::HostPath(file));
    std::filesystem::remove(handset::HostPath(kContactChanges));
  }

  /// What is exported of one contact.
  Bytes Exported(const Bytes& contact) {
    store_.tables[0].clear();
    store_.Add(0, kContactId, kOld.time, contact);
    EXPECT_EQ(Export(1, 4).code, 0u);
    return ReadFile(kContactTable);
  }

  void AddContact(std::uint32_t id, const Stamp& stamp = kOld, std::uint32_t picture = 0) {
    Bytes bytes(ScriptedContactStore::kRecordSize);
    Put32(bytes, 0, id);
    Put32(bytes, 2284, picture);
    store_.Add(0, id, stamp.time, bytes);
  }
  void AddGroup(std::uint32_t id, const Stamp& stamp = kOld) {
    Bytes bytes(ScriptedContactStore::kRecordSize);
    Put32(bytes, 0, id);
    store_.Add(1, id, stamp.time, bytes);
  }
  /// Something for each step: contact 1 in group 2 with picture 3.
  static void FillWithOneOfEach(ScriptedContactStore& store) {
    Bytes contact(ScriptedContactStore::kRecordSize);
    Put32(contact, 0, 1);
    Put32(contact, 2284, 3);
    store.Add(0, 1, kOld.time, contact);
    store.Add(1, 2, kOld.time);
    store.groups_of[1] = {2};
    store.pictures[3] = {1, {9}};
  }

  static std::vector<std::uint32_t> IdsIn(const Bytes& table, std::size_t record_size) {
    std::vector<std::uint32_t> ids;
    for (std::size_t i = 0; i < table.size(); i += record_size) ids.push_back(Get32(table, i));
    return ids;
  }
  static std::vector<std::uint32_t> ContactIds() { return IdsIn(ReadFile(kContactTable), 3596); }
  static std::vector<std::uint32_t> GroupIds() { return IdsIn(ReadFile(kContactGroupTable), 1532); }
  static std::vector<std::uint32_t> PictureIds() { return IdsIn(ReadFile(kPictureTable), 8236); }

  /// The sizes of the calls of a platform function on a file (or on none) while a plain copy runs.
  std::vector<std::uint32_t> SizesOf(std::string_view function, std::u16string_view path = {}) {
    std::vector<std::uint32_t> sizes;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == function && (path.empty() || call.path == path)) sizes.push_back(call.size);
    });
    EXPECT_EQ(Export(1, 4).code, 0u);
    handset::Observe({});
    return sizes;
  }

  /// Lets the next call of `function` behind each opening of `path` fail.
  static void FailBehindOpening(std::u16string_view path, std::string_view function) {
    handset::Observe([=](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == path) handset::FailCallOf(function, 1);
    });
  }

  ScriptedContactStore store_;
};

// --- Contacts ---

TEST_F(ContactsExportTest, AContactTravelsFieldByField) {
  EXPECT_EQ(Exported(StoreContact()), ExchangeContact());
}

TEST_F(ContactsExportTest, EachByteOfTheStoreRecordGoesWhereItBelongsAndNowhereElse) {
  // A contact for each byte of the store record, in which that byte alone is another.
  ByteMap map(2744);
  map.CopyTexts(kContactTexts);
  map.Copy(0, 4, 0);
  map.Copy(16, 1, 3514);
  for (std::size_t i = 0; i < 6; ++i) map.Copy(1084 + 2 * i, 2, 112 + 4 * i);
  for (std::size_t i = 0; i < 6; ++i) map.Copy(1096 + 2 * i, 2, 3076 + 4 * i);
  map.Copy(1386, 1, 1120);
  map.Copy(1387, 1, 1121);
  map.Copy(1388, 8, 672);
  map.Copy(2284, 4, 3108);
  map.Copy(2288, 1, 108);
  map.Copy(2289, 1, 1962);
  map.Copy(2548, 1, 3516);
  Bytes before = map.FillFrom(0x11, Bytes(3596));
  Put32(before, 140, 14);
  Put32(before, 3104, 14);
  Put32(before, 3592, 3);  // both reminders are above 0

  for (std::uint32_t i = 0; i < 2744; ++i) {
    Bytes contact(2744, 0x11);
    contact[i] ^= 0x40;
    store_.Add(0, i, kOld.time, contact);
  }
  EXPECT_EQ(Export(1, 4).code, 0u);
  const Bytes table = ReadFile(kContactTable);
  ASSERT_EQ(table.size(), 2744u * 3596);
  for (std::size_t i = 0; i < 2744; ++i) {
    Bytes expected = before;
    if (map[i] != kNowhere) expected[map[i]] ^= 0x40;
    const auto record = table.begin() + static_cast<std::ptrdiff_t>(i * 3596);
    ASSERT_EQ(Bytes(record, record + 3596), expected) << "store byte " << i;
  }
}

TEST_F(ContactsExportTest, TextsThatFillTheirFieldsAreCutToRoomForANul) {
  Bytes contact(2744);
  Bytes expected = PlainContact(0);
  for (const TextField& field : kContactTexts) {
    PutText(contact, field.store, FullText(field.store_size));
    PutText(expected, field.exchange, FullText(std::min(field.store_size, field.exchange_size - 2)));
  }
  EXPECT_EQ(Exported(contact), expected);
}

TEST_F(ContactsExportTest, TextsThatLeaveRoomForJustANulTravelWhole) {
  Bytes contact(2744);
  Bytes expected = PlainContact(0);
  for (const TextField& field : kContactTexts) {
    PutText(contact, field.store, FullText(field.store_size - 2));
    PutText(expected, field.exchange, FullText(field.store_size - 2));
  }
  EXPECT_EQ(Exported(contact), expected);
}

TEST_F(ContactsExportTest, NothingIsTakenFromBehindTheNulOfAnEmptyText) {
  Bytes contact = StoreContact();
  Bytes expected = ExchangeContact();
  for (const TextField& field : kContactTexts) {
    Put16(contact, field.store, 0);
    for (std::size_t i = 0; i < field.exchange_size; ++i) Put8(expected, field.exchange + i, 0);
  }
  EXPECT_EQ(Exported(contact), expected);
}

TEST_F(ContactsExportTest, AnEmptyContactIsItsIdAndTheConstants) {
  Bytes contact(2744);
  Put32(contact, 0, 77);
  EXPECT_EQ(Exported(contact), PlainContact(77));
}

TEST_F(ContactsExportTest, TheFirstTypeByteAboveTheMarkTellsTheDefaultNumber) {
  struct Case {
    std::array<std::uint8_t, 8> store;
    std::array<std::uint8_t, 8> exchange;
    std::uint32_t slot;
  };
  static constexpr Case kCases[] = {
      {{0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0}, 0},
      {{127, 128, 127, 128, 0, 1, 2, 128}, {127, 128, 127, 128, 0, 1, 2, 128}, 0},  // the mark alone is none
      {{129, 0, 0, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 0, 0}, 1},
      {{255, 0, 0, 0, 0, 0, 0, 0}, {127, 0, 0, 0, 0, 0, 0, 0}, 1},
      {{3, 130, 131, 4, 5, 6, 7, 255}, {3, 2, 131, 4, 5, 6, 7, 255}, 2},
      {{128, 128, 129, 129, 0, 0, 0, 0}, {128, 128, 1, 129, 0, 0, 0, 0}, 3},
      {{1, 2, 3, 132, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}, 4},
      {{1, 2, 3, 4, 133, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}, 5},
      {{1, 2, 3, 4, 5, 134, 135, 8}, {1, 2, 3, 4, 5, 6, 135, 8}, 6},
      {{1, 2, 3, 4, 5, 6, 135, 8}, {1, 2, 3, 4, 5, 6, 7, 8}, 7},
      {{127, 127, 127, 127, 127, 127, 128, 129}, {127, 127, 127, 127, 127, 127, 128, 1}, 8},
  };
  for (const Case& marked : kCases) {
    Bytes contact(2744);
    Bytes expected = PlainContact(0);
    for (std::size_t i = 0; i < 8; ++i) {
      Put8(contact, 1388 + i, marked.store[i]);
      Put8(expected, 672 + i, marked.exchange[i]);
    }
    Put32(expected, 856, marked.slot);
    EXPECT_EQ(Exported(contact), expected) << testing::PrintToString(marked.store);
  }
}

TEST_F(ContactsExportTest, OnlyTheFirstFlagByteIsEverChosen) {
  struct Case {
    std::uint8_t store;
    std::uint8_t exchange;
    std::uint32_t chosen;
  };
  for (const Case& first : {Case{0, 0, 0}, {1, 1, 0}, {127, 127, 0}, {128, 128, 0}, {129, 1, 1}, {255, 127, 1}}) {
    for (const int second : {0, 1, 127, 128, 129, 255}) {
      Bytes contact(2744);
      Put8(contact, 1386, first.store);
      Put8(contact, 1387, static_cast<std::uint8_t>(second));
      Bytes expected = PlainContact(0);
      Put8(expected, 1120, first.exchange);
      Put8(expected, 1121, static_cast<std::uint8_t>(second));
      Put32(expected, 1124, first.chosen);
      EXPECT_EQ(Exported(contact), expected) << int{first.store} << " and " << second;
    }
  }
}

TEST_F(ContactsExportTest, AReminderAboveZeroIsOn) {
  for (const std::int32_t first : {INT32_MIN, -1, 0, 1, 100, 0x100, INT32_MAX}) {
    for (const std::int32_t second : {-1, 0, 1, 100}) {
      Bytes contact(2744);
      Put32(contact, 2736, static_cast<std::uint32_t>(first));
      Put32(contact, 2740, static_cast<std::uint32_t>(second));
      Bytes expected = PlainContact(0);
      Put32(expected, 3592, (first > 0 ? 2u : 0u) + (second > 0 ? 1u : 0u));
      EXPECT_EQ(Exported(contact), expected) << first << " and " << second;
    }
  }
}

TEST_F(ContactsExportTest, ARecordThatTheStoreDoesNotFillIsEmptyInEachBatch) {
  for (std::uint32_t id = 1; id <= 401; ++id) store_.Add(0, id, kOld.time, StoreContact());
  store_.At(0, 401).bytes.clear();  // It comes to lie where the first contact lay.
  EXPECT_EQ(Export(1, 4).code, 0u);
  const Bytes table = ReadFile(kContactTable);
  ASSERT_EQ(table.size(), 401u * 3596);
  EXPECT_EQ(Bytes(table.end() - 3596, table.end()), PlainContact(0));
  EXPECT_EQ(Bytes(table.begin(), table.begin() + 3596), ExchangeContact());

  store_.fills_nothing = {"Readman"};
  EXPECT_EQ(Exported(StoreContact()), PlainContact(0));
}

// --- Groups ---

TEST_F(ContactsExportTest, AGroupTravelsFieldByField) {
  store_.Add(1, kContactGroupId, kOld.time, StoreContactGroup());
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kContactGroupTable), ExchangeContactGroup());
}

TEST_F(ContactsExportTest, EachByteOfAStoredGroupGoesWhereItBelongsAndNowhereElse) {
  ByteMap map(2744);
  map.CopyTexts(kGroupTexts);
  map.Copy(0, 4, 0);
  map.Copy(16, 1, 1492);
  const Bytes before = map.FillFrom(0x11, Bytes(1532));
  for (std::size_t first = 0; first < 2744; first += 100) {
    const std::size_t count = std::min<std::size_t>(100, 2744 - first);
    store_.tables[1].clear();
    for (std::size_t i = first; i < first + count; ++i) {
      Bytes group(2744, 0x11);
      group[i] ^= 0x40;
      store_.Add(1, static_cast<std::uint32_t>(i), kOld.time, group);
    }
    EXPECT_EQ(Export(1, 4).code, 0u);
    const Bytes table = ReadFile(kContactGroupTable);
    ASSERT_EQ(table.size(), count * 1532);
    for (std::size_t i = first; i < first + count; ++i) {
      Bytes expected = before;
      if (map[i] != kNowhere) expected[map[i]] ^= 0x40;
      const auto record = table.begin() + static_cast<std::ptrdiff_t>((i - first) * 1532);
      ASSERT_EQ(Bytes(record, record + 1532), expected) << "store byte " << i;
    }
  }
}

TEST_F(ContactsExportTest, TextsOfAGroupAreCutToRoomForANul) {
  Bytes group(2744);
  Bytes expected(1532);
  for (const TextField& field : kGroupTexts) {
    PutText(group, field.store, FullText(field.store_size));
    PutText(expected, field.exchange, FullText(std::min(field.store_size, field.exchange_size - 2)));
  }
  store_.Add(1, 1, kOld.time, group);
  EXPECT_EQ(Export(1, 4).code, 0u);
  EXPECT_EQ(ReadFile(kContactGroupTable), expected);
}

TEST_F(ContactsExportTest, AGroupThatTheStoreDoesNotFillIsEmpty) {
  store_.Add(1, 9, kOld.time, StoreContactGroup());
  store_.fills_nothing = {"Readgroup"};
  EXPECT_EQ(Export(1, 4).code, 0u);
  EXPECT_EQ(ReadFile(kContactGroupTable), Bytes(1532));
}

TEST_F(ContactsExportTest, AllGroupsAreOneReadAndOneWrite) {
  for (std::uint32_t id = 1; id <= 100; ++id) AddGroup(id);
  EXPECT_THAT(SizesOf("WriteFile", kContactGroupTable), ElementsAre(153200));
  EXPECT_EQ(GroupIds(), Counting(1, 100));
  EXPECT_THAT(store_.CallsOf("Readgroup"), SizeIs(1));
}

TEST_F(ContactsExportTest, AHundredGroupsAreExportedAtMost) {
  for (std::uint32_t id = 1; id <= 120; ++id) AddGroup(id);
  for (const std::optional<std::int32_t> claimed : {std::optional<std::int32_t>(), {101}, {120}, {INT32_MAX}}) {
    store_.claimed_listed[1] = claimed;
    EXPECT_EQ(Export(1, 1).code, 0u);
    EXPECT_EQ(GroupIds(), Counting(1, 100));
    EXPECT_EQ(ReadFile(kContactGroupLog).size(), 1200u);
  }
  EXPECT_THAT(store_.CallsOf("GetAllGroupNum"), IsEmpty()) << "groups are not counted before";
  EXPECT_THAT(store_.offered_rooms[1], testing::Each(100));
}

// --- Memberships ---

TEST_F(ContactsExportTest, AMembershipIsAContactAndItsGroups) {
  for (const std::uint32_t id : {30u, 10u, 20u, 40u}) AddContact(id);
  store_.groups_of[30] = {7};
  store_.groups_of[20] = Counting(500, 100);
  store_.groups_of[40] = {0, 0xFFFFFFFF, 3};  // Group ids are passed on, whatever they are.
  store_.groups_of[99] = {7};                 // Of a contact that is not there.
  EXPECT_EQ(Export(1, 1).code, 0u);
  Bytes expected = ExchangeMembership(30, {7});
  Append(expected, ExchangeMembership(20, Counting(500, 100)));
  Append(expected, ExchangeMembership(40, {0, 0xFFFFFFFF, 3}));
  EXPECT_EQ(ReadFile(kMembershipTable), expected);
}

TEST_F(ContactsExportTest, WithoutGroupsThereAreNoMemberships) {
  AddContact(1);
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(ReadFile(kMembershipTable), IsEmpty());
  store_.fills_nothing = {"QueryManAttachGroup"};
  store_.groups_of[1] = {7};
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(ReadFile(kMembershipTable), IsEmpty());
}

TEST_F(ContactsExportTest, AGroupCountBeyondTheRoomIsCutToTheRoom) {
  for (const std::uint32_t id : {1u, 2u, 3u}) AddContact(id);
  const std::vector<std::uint32_t> groups = Counting(500, 100);
  for (const std::uint32_t id : {1u, 2u, 3u}) store_.groups_of[id] = groups;
  for (const std::uint32_t claimed : {101u, 0x7FFFFFFFu, 0x80000000u, 4'000'000'000u, 0xFFFFFFFFu}) {
    store_.claimed_group_counts[2] = claimed;
    EXPECT_EQ(Export(1, 1).code, 0u);
    Bytes expected = ExchangeMembership(1, groups);
    Append(expected, ExchangeMembership(2, groups));
    Append(expected, ExchangeMembership(3, groups));
    EXPECT_EQ(ReadFile(kMembershipTable), expected) << claimed;
  }
}

TEST_F(ContactsExportTest, AGroupCountIsTakenAtItsWordWithinTheRoom) {
  for (const std::uint32_t id : {1u, 2u}) AddContact(id);
  store_.groups_of[1] = {7, 8};
  store_.groups_of[2] = {9};
  store_.claimed_group_counts = {{1, 0}, {2, 3}};
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kMembershipTable), ExchangeMembership(2, {9, 0, 0}));
}

TEST_F(ContactsExportTest, AMembershipIsWrittenAsTheStoreLeftIt) {
  for (const std::uint32_t id : {1u, 2u, 3u}) {
    AddContact(id);
    store_.groups_of[id] = {7};
  }
  store_.renamed_contacts = {{1, 0}, {3, 99}};
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kMembershipTable), Words({0, 1, 7, 2, 1, 7, 99, 1, 7})) << "its contact's id included";
}

TEST_F(ContactsExportTest, MembershipsOfOneBatchDoNotShineThroughTheNext) {
  for (std::uint32_t id = 1; id <= 401; ++id) AddContact(id);
  store_.groups_of[1] = {7, 8, 9};
  store_.claimed_group_counts[401] = 2;
  EXPECT_EQ(Export(1, 1).code, 0u);
  Bytes expected = ExchangeMembership(1, {7, 8, 9});
  Append(expected, ExchangeMembership(401, {0, 0}));
  EXPECT_EQ(ReadFile(kMembershipTable), expected);
}

// --- Pictures ---

TEST_F(ContactsExportTest, APictureIsItsIdItsLengthAndItsBytes) {
  AddContact(1, kOld, 11);
  AddContact(2, kOld, 0);
  AddContact(3, kOld, 0xFFFFFFFF);
  AddContact(4, kOld, 13);
  AddContact(5, kOld, 14);
  store_.pictures[11] = {8192, PictureData(8192, 1)};
  store_.pictures[0xFFFFFFFF] = {1, {0x77}};
  store_.pictures[13] = {0, {}};
  store_.pictures[14] = {300, PictureData(300, 2)};
  EXPECT_EQ(Export(1, 1).code, 0u);
  Bytes expected = ExchangePicture(11, 8192, PictureData(8192, 1));
  Append(expected, ExchangePicture(0xFFFFFFFF, 1, {0x77}));
  Append(expected, ExchangePicture(13, 0, {}));
  Append(expected, ExchangePicture(14, 300, PictureData(300, 2)));
  EXPECT_EQ(ReadFile(kPictureTable), expected);
  EXPECT_THAT(store_.CallsOf("DownloadingImage"), ElementsAre("DownloadingImage 11", "DownloadingImage 4294967295",
                                                              "DownloadingImage 13", "DownloadingImage 14"));
}

TEST_F(ContactsExportTest, ThePictureDataBehindItsLengthTravelsToo) {
  AddContact(1, kOld, 11);
  store_.pictures[11] = {10, PictureData(8192, 1)};
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kPictureTable), ExchangePicture(11, 10, PictureData(8192, 1)));
}

TEST_F(ContactsExportTest, APictureLongerThanItsRoomIsCutToTheRoom) {
  AddContact(1, kOld, 11);
  for (const std::uint16_t claimed : {std::uint16_t{8193}, std::uint16_t{0x8000}, std::uint16_t{0xFFFF}}) {
    store_.pictures[11] = {claimed, PictureData(8192, 1)};
    EXPECT_EQ(Export(1, 1).code, 0u);
    EXPECT_EQ(ReadFile(kPictureTable), ExchangePicture(11, 8192, PictureData(8192, 1))) << claimed;
  }
}

TEST_F(ContactsExportTest, APictureThatTheStoreDoesNotFillIsEmpty) {
  AddContact(1, kOld, 11);
  AddContact(2, kOld, 12);
  store_.pictures[11] = {8192, PictureData(8192, 1)};
  store_.pictures[12] = {100, {}};
  EXPECT_EQ(Export(1, 1).code, 0u);
  Bytes expected = ExchangePicture(11, 8192, PictureData(8192, 1));
  Append(expected, ExchangePicture(12, 100, {}));
  EXPECT_EQ(ReadFile(kPictureTable), expected);

  store_.fills_nothing = {"DownloadingImage"};
  EXPECT_EQ(Export(1, 1).code, 0u);
  expected = ExchangePicture(11, 0, {});
  Append(expected, ExchangePicture(12, 0, {}));
  EXPECT_EQ(ReadFile(kPictureTable), expected);
}

TEST_F(ContactsExportTest, APictureThatSeveralContactsShareTravelsWithEach) {
  AddContact(1, kOld, 11);
  AddContact(2, kOld, 12);
  AddContact(3, kOld, 11);
  store_.pictures[11] = {1, {1}};
  store_.pictures[12] = {1, {2}};
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(PictureIds(), ElementsAre(11, 12, 11));
}

TEST_F(ContactsExportTest, APictureThatFailsEndsThePicturesButNotTheExport) {
  for (std::uint32_t i = 1; i <= 3; ++i) {
    AddContact(i, kOld, 10 + i);
    store_.pictures[10 + i] = {1, {1}};
  }
  for (unsigned nth = 1; nth <= 3; ++nth) {
    for (const std::int32_t status : {1, -1, -503}) {
      std::filesystem::remove(handset::HostPath(kContactLog));
      ScriptedContactStore failing;
      failing.tables[0] = store_.tables[0];
      failing.pictures = store_.pictures;
      failing.refusals["DownloadingImage"][nth] = status;
      EXPECT_EQ(Export(1, 1).code, 0u);
      EXPECT_EQ(PictureIds(), Counting(11, nth - 1));
      EXPECT_THAT(failing.CallsOf("DownloadingImage"), SizeIs(nth));
      EXPECT_EQ(ContactIds(), Counting(1, 3));
      EXPECT_EQ(ReadFile(kContactLog).size(), 36u) << "the snapshots are rewritten";
    }
  }
}

TEST_F(ContactsExportTest, AContactWhoseOnlyPictureIsNotThereIsExported) {
  EXPECT_EQ(Exported(StoreContact()), ExchangeContact());
  EXPECT_THAT(ReadFile(kPictureTable), IsEmpty());
}

TEST_F(ContactsExportTest, EachPictureIsOneWrite) {
  AddContact(1, kOld, 11);
  AddContact(2, kOld, 12);
  store_.pictures[11] = {1, {1}};
  store_.pictures[12] = {8192, PictureData(8192, 1)};
  EXPECT_THAT(SizesOf("WriteFile", kPictureTable), ElementsAre(8236, 8236));
}

TEST_F(ContactsExportTest, PicturesOfAllBatchesAreExported) {
  for (std::uint32_t id = 1; id <= 850; ++id) {
    AddContact(id, kOld, 10'000 + id);
    store_.pictures[10'000 + id] = {1, {1}};
  }
  EXPECT_EQ(Export(1, 4).code, 0u);
  EXPECT_EQ(PictureIds(), Counting(10'001, 850));
}

// --- Batches ---

TEST_F(ContactsExportTest, ContactsAndMembershipsTravelInBatchesOf400) {
  struct Case {
    std::uint32_t contacts;
    std::vector<std::uint32_t> batches;
  };
  const Case kCases[] = {{1, {1}},        {399, {399}},      {400, {400}},
                         {401, {400, 1}}, {800, {400, 400}}, {801, {400, 400, 1}}};
  for (const auto& [contacts, batches] : kCases) {
    store_.tables[0].clear();
    store_.groups_of.clear();
    store_.calls.clear();
    Bytes memberships;
    for (std::uint32_t id = 1; id <= contacts; ++id) {
      AddContact(id);
      store_.groups_of[id] = {id};
      Append(memberships, ExchangeMembership(id, {id}));
    }
    std::vector<std::string> reads, queries;
    std::vector<std::uint32_t> contact_writes, membership_writes;
    std::uint32_t first = 1;
    for (const std::uint32_t batch : batches) {
      std::string ids;
      for (std::uint32_t i = 0; i < batch; ++i) ids += (i == 0 ? "" : " ") + std::to_string(first++);
      reads.push_back("Readman [" + ids + "]");
      queries.push_back("QueryManAttachGroup [" + ids + "]");
      contact_writes.push_back(batch * 3596);
      membership_writes.push_back(batch * 12);
    }
    EXPECT_EQ(SizesOf("WriteFile", kContactTable), contact_writes);
    EXPECT_EQ(store_.CallsOf("Readman"), reads);
    EXPECT_EQ(store_.CallsOf("QueryManAttachGroup"), queries);
    EXPECT_EQ(ContactIds(), Counting(1, contacts));
    EXPECT_EQ(SizesOf("WriteFile", kMembershipTable), membership_writes);
    EXPECT_EQ(ReadFile(kMembershipTable), memberships);
  }
}

TEST_F(ContactsExportTest, TheBuffersOfABatchAreMadeOnce) {
  for (std::uint32_t id = 1; id <= 1201; ++id) AddContact(id);
  const std::vector<std::uint32_t> blocks = SizesOf("realloc");
  EXPECT_EQ(std::count(blocks.begin(), blocks.end(), 1'097'600u), 1) << "400 store records";
  EXPECT_EQ(std::count(blocks.begin(), blocks.end(), 1'438'400u), 1) << "400 file records";
}

// --- The course of an export ---

TEST_F(ContactsExportTest, AFullExportAsksTheStoreInThisOrder) {
  FillWithOneOfEach(store_);
  AddContact(4, kOld, 5);
  store_.pictures[5] = {1, {1}};
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(store_.calls,
              ElementsAre("Initialize 0", "GetAllManNum", "GetAllmanSyncid", "Readman [1 4]", "GetAllgroupSyncid",
                          "Readgroup [2]", "QueryManAttachGroup [1 4]", "DownloadingImage 3", "DownloadingImage 5",
                          "GetAllManNum", "GetAllmanSyncid", "GetAllgroupSyncid", "UnInitialize"));
}

TEST_F(ContactsExportTest, APlainCopyDoesNotListTheStoreAgain) {
  FillWithOneOfEach(store_);
  EXPECT_EQ(Export(1, 4).code, 0u);
  EXPECT_THAT(store_.calls,
              ElementsAre("Initialize 0", "GetAllManNum", "GetAllmanSyncid", "Readman [1]", "GetAllgroupSyncid",
                          "Readgroup [2]", "QueryManAttachGroup [1]", "DownloadingImage 3", "UnInitialize"));
}

TEST_F(ContactsExportTest, AnEmptyStoreIsOnlyCountedAndListed) {
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "GetAllManNum", "GetAllgroupSyncid", "GetAllManNum",
                                        "GetAllgroupSyncid", "UnInitialize"));
}

TEST_F(ContactsExportTest, TheStoreIsLeftBeforeItIsUnloaded) {
  std::vector<std::string> course;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "LoadLibraryW" && call.path == u"ContactStore.dll") course.emplace_back("load");
    if (call.function == "FreeLibrary") course.push_back("free after " + store_.calls.back());
  });
  EXPECT_EQ(Export(1, 1).code, 0u);
  handset::Observe({});
  EXPECT_THAT(course, ElementsAre("load", "free after UnInitialize"));
  EXPECT_EQ(store_.calls.front(), "Initialize 0");
}

TEST_F(ContactsExportTest, TheStoreIsInitializedAndLeftAlsoWhenAnExportFails) {
  store_.statuses["GetAllManNum"] = 1;
  EXPECT_EQ(Export(1, 1).code, 0x11000004u);
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "GetAllManNum", "UnInitialize"));
}

TEST_F(ContactsExportTest, NobodyLooksAtTheResultOfTheInitialization) {
  FillWithOneOfEach(store_);
  store_.statuses["Initialize"] = -1;
  store_.statuses["UnInitialize"] = 5;
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(ContactIds(), ElementsAre(1));
}

TEST_F(ContactsExportTest, AStoreThatNeedsNoInitializationIsExported) {
  for (const std::set<std::u16string>& missing :
       {std::set<std::u16string>{u"DTP_Initialize"}, {u"DTP_UnInitialize"}, {u"DTP_Initialize", u"DTP_UnInitialize"}}) {
    for (const std::uintptr_t address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      ScriptedContactStore lacking(missing, address);
      FillWithOneOfEach(lacking);
      EXPECT_EQ(Export(1, 1).code, 0u);
      EXPECT_EQ(lacking.CallsOf("Initialize").size(), 1 - missing.count(u"DTP_Initialize"));
      EXPECT_EQ(lacking.CallsOf("UnInitialize").size(), 1 - missing.count(u"DTP_UnInitialize"));
      EXPECT_EQ(ReadFile(kContactTable).size(), 3596u);
    }
  }
}

TEST_F(ContactsExportTest, EachStepLooksItsEntryPointsUpAnew) {
  std::vector<std::u16string> names;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "GetProcAddressW") names.emplace_back(call.path);
  });
  EXPECT_EQ(Export(1, 1).code, 0u);
  handset::Observe({});
  const std::vector<std::u16string> contacts = {u"DTP_PIMGetAllManNum", u"DTP_PIMGetAllmanSyncid"};
  const std::vector<std::u16string> groups = {u"DTP_PIMGetAllgroupSyncid"};
  std::vector<std::u16string> expected = {u"DTP_Initialize"};
  const auto expect = [&](const std::vector<std::u16string>& more) {
    expected.insert(expected.end(), more.begin(), more.end());
  };
  expect(contacts);
  expect({u"DTP_PIMReadman"});
  expect(groups);
  expect({u"DTP_PIMReadgroup", u"DTP_PIMQueryManAttachGroup", u"DTP_DownloadingImage"});
  expect(contacts);  // for their snapshots
  expect(groups);
  expect({u"DTP_UnInitialize"});
  EXPECT_THAT(names, ElementsAreArray(expected));
}

TEST_F(ContactsExportTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  FillWithOneOfEach(store_);
  const std::vector<Opening> openings = OpeningsOf([&] { EXPECT_EQ(ExportChanges().code, 0u); });
  const Opening kExpected[] = {
      {kAnchorIni, kReader},       {kAnchorIni, kReaderAlone},    {kAnchorIni, kWriterAlone},
      {kContactTable, kWriter},    {kContactGroupTable, kWriter}, {kMembershipTable, kWriter},
      {kPictureTable, kWriter},    {kContactChanges, kWriter},     // all are there from the start
      {kContactLog, kReader},      {kContactTable, kWriter},       // contacts
      {kContactGroupLog, kReader}, {kContactGroupTable, kWriter},  // groups
      {kMembershipTable, kWriter}, {kPictureTable, kWriter},      {kContactLog, kWriter},
      {kContactGroupLog, kWriter},
  };
  EXPECT_THAT(openings, ElementsAreArray(kExpected));
}

TEST_F(ContactsExportTest, NoFileIsOpenWhenASnapshotIsRewritten) {
  FillWithOneOfEach(store_);
  std::vector<unsigned> open_files;
  handset::Observe([&](const handset::Call& call) {
    const bool is_log = call.path == kContactLog || call.path == kContactGroupLog;
    if (call.function == "CreateFileW" && is_log && call.options[2] == 2) {
      open_files.push_back(handset::TakeCensus().files);
    }
  });
  EXPECT_EQ(ExportChanges().code, 0u);
  handset::Observe({});
  EXPECT_THAT(open_files, ElementsAre(0, 0));
}

TEST_F(ContactsExportTest, EachTimedStepAsksForTheTimeBeforeItAndAfterIt) {
  FillWithOneOfEach(store_);
  std::vector<std::string> course;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "GetTickCount") course.push_back("time after " + store_.calls.back());
    if (call.function == "WriteFile") course.emplace_back("write");
  });
  EXPECT_EQ(Export(1, 4).code, 0u);
  handset::Observe({});
  EXPECT_THAT(course,
              ElementsAre("time after GetAllmanSyncid", "time after GetAllmanSyncid",  // contacts: batch, its call
                          "time after Readman [1]", "write", "time after Readman [1]",
                          "write",                                                 // groups are not timed
                          "time after Readgroup [2]", "time after Readgroup [2]",  // memberships: batch, its call
                          "time after QueryManAttachGroup [1]", "write", "time after QueryManAttachGroup [1]",
                          "time after QueryManAttachGroup [1]", "time after QueryManAttachGroup [1]",  // picture
                          "time after DownloadingImage 3", "write", "time after DownloadingImage 3"));
}

TEST_F(ContactsExportTest, EachBatchIsTimed) {
  for (std::uint32_t id = 1; id <= 401; ++id) AddContact(id, kOld, id <= 3 ? id : 0);
  for (std::uint32_t id = 1; id <= 3; ++id) store_.pictures[id] = {1, {1}};
  // Two batches of contacts and of memberships, three pictures: each a step with a call inside it.
  EXPECT_THAT(SizesOf("GetTickCount"), SizeIs(2 * 2 * (2 + 2 + 3)));
  for (auto& table : store_.tables) table.clear();
  EXPECT_THAT(SizesOf("GetTickCount"), IsEmpty());
}

// --- Full exports ---

TEST_F(ContactsExportTest, FullAndReplaceExportsWriteEverythingAndRememberIt) {
  for (const std::uint32_t mode : {1u, 2u, 0u, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    RemoveFiles();
    std::filesystem::remove(handset::HostPath(kAnchorIni));
    for (const auto* log : kLogs) std::filesystem::remove(handset::HostPath(log));
    store_.tables[0].clear();
    store_.tables[1].clear();
    AddContact(3, kNewer);
    AddContact(1, kOld);
    AddGroup(7, kOld);
    EXPECT_EQ(Export(1, mode).code, 0u);
    EXPECT_THAT(ContactIds(), ElementsAre(3, 1)) << "in the store's order";
    EXPECT_THAT(GroupIds(), ElementsAre(7));
    EXPECT_EQ(ReadFile(kContactLog), Log({{3, kNewer}, {1, kOld}}));
    EXPECT_EQ(ReadFile(kContactGroupLog), Log({{7, kOld}}));
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nLINKMAN = 200612117210");
    EXPECT_FALSE(Exists(kContactChanges));
  }
}

TEST_F(ContactsExportTest, AnEmptyStoreGivesEmptyTablesAndSnapshots) {
  for (const auto* file : kContactTables) WriteText(file, "old");
  for (const auto* log : kLogs) WriteText(log, "old");
  EXPECT_EQ(Export(1, 1).code, 0u);
  for (const auto* file : kContactTables) EXPECT_TRUE(Exists(file) && ReadFile(file).empty());
  for (const auto* log : kLogs) EXPECT_TRUE(Exists(log) && ReadFile(log).empty());
}

TEST_F(ContactsExportTest, WithoutContactsTheGroupsAreExported) {
  AddGroup(7);
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_TRUE(Exists(kContactTable));
  EXPECT_THAT(ReadFile(kContactTable), IsEmpty());
  EXPECT_THAT(GroupIds(), ElementsAre(7));
  EXPECT_THAT(ReadFile(kContactLog), IsEmpty());
  EXPECT_EQ(ReadFile(kContactGroupLog), Log({{7, kOld}}));
}

TEST_F(ContactsExportTest, WithoutGroupsContactsMembershipsAndPicturesAreExported) {
  FillWithOneOfEach(store_);
  store_.tables[1].clear();
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(ContactIds(), ElementsAre(1));
  EXPECT_THAT(ReadFile(kContactGroupTable), IsEmpty());
  EXPECT_EQ(ReadFile(kMembershipTable), ExchangeMembership(1, {2}));
  EXPECT_THAT(PictureIds(), ElementsAre(3));
}

TEST_F(ContactsExportTest, APlainCopyRemembersNothing) {
  FillWithOneOfEach(store_);
  for (const std::uint32_t mode : {4u, 5u, 99u}) {
    EXPECT_EQ(Export(1, mode).code, 0u);
    EXPECT_EQ(ReadFile(kContactTable).size(), 3596u);
    EXPECT_FALSE(Exists(kContactChanges));
    for (const auto* log : kLogs) EXPECT_FALSE(Exists(log));
    EXPECT_FALSE(Exists(kAnchorIni));
  }
}

TEST_F(ContactsExportTest, ALocalExportIsAPlainCopy) {
  FillWithOneOfEach(store_);
  StoreAnchor();
  for (const auto* log : kLogs) WriteText(log, "old");
  EXPECT_EQ(LocalExport(1), 0u);
  EXPECT_THAT(ContactIds(), ElementsAre(1));
  EXPECT_THAT(GroupIds(), ElementsAre(0));
  EXPECT_EQ(ReadFile(kMembershipTable), ExchangeMembership(1, {2}));
  EXPECT_THAT(PictureIds(), ElementsAre(3));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nLINKMAN = 5");
  for (const auto* log : kLogs) EXPECT_EQ(ReadText(log), "old");
  EXPECT_FALSE(Exists(kContactChanges));
}

// --- Snapshots ---

TEST_F(ContactsExportTest, ASnapshotHoldsTimesInTicksOfTheYear1601) {
  const Stamp kStamps[] = {
      kOld,
      kOneSecondBefore,
      kNewer,
      {{1601, 1, 1, 0, 0, 1}, 10'000'000, 0},
      {{2000, 2, 29, 12, 0, 0}, 0x81016000, 0x01BF82AC},
      {{9999, 12, 31, 23, 59, 59}, 0xD127A980, 0x24C85A5E},
  };
  Bytes expected;
  for (std::uint32_t id = 1; id <= std::size(kStamps); ++id) {
    AddContact(id, kStamps[id - 1]);
    AddGroup(id, kStamps[id - 1]);
    Append(expected, Words({id, kStamps[id - 1].low, kStamps[id - 1].high}));
  }
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kContactLog), expected);
  EXPECT_EQ(ReadFile(kContactGroupLog), expected);
}

TEST_F(ContactsExportTest, ATimeThatDoesNotExistIsTheZeroTime) {
  const Time kImpossible[] = {
      {},
      {2006, 2, 30, 0, 0, 0},
      {2005, 2, 29, 0, 0, 0},
      {2006, 0, 1, 0, 0, 0},
      {2006, 13, 1, 0, 0, 0},
      {2006, 1, 0, 0, 0, 0},
      {2006, 4, 31, 0, 0, 0},
      {2006, 1, 1, 24, 0, 0},
      {2006, 1, 1, 0, 60, 0},
      {2006, 1, 1, 0, 0, 60},
      {1600, 12, 31, 23, 59, 59},
      {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF},
  };
  Bytes expected;
  for (std::uint32_t id = 1; id <= std::size(kImpossible); ++id) {
    AddContact(id, {kImpossible[id - 1], 0, 0});
    AddGroup(id, {kImpossible[id - 1], 0, 0});
    Append(expected, Words({id, 0, 0}));
  }
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ReadFile(kContactLog), expected);
  EXPECT_EQ(ReadFile(kContactGroupLog), expected);
  EXPECT_EQ(ExportChanges(expected, expected).code, 0u);
  EXPECT_THAT(ReadFile(kContactChanges), IsEmpty()) << "and it equals itself";
}

// --- Incremental exports ---

TEST_F(ContactsExportTest, ChangesAreListedNewAndModifiedInTheStoresOrderThenDeletedInTheSnapshots) {
  AddContact(10, kOld);              // unchanged
  AddContact(30, kOld, 3);           // new
  AddContact(20, kNewer);            // modified
  AddContact(40, kOneSecondBefore);  // modified: its time moved back
  AddContact(50, kNoTime);           // modified: its time is gone
  AddContact(60, kNewer);            // new
  AddGroup(10, kNewer);              // new group: ids of one table say nothing of the other
  AddGroup(11, kNewer);              // modified
  AddGroup(12, kOld);                // unchanged
  for (const std::uint32_t id : {10u, 20u, 30u, 60u}) store_.groups_of[id] = {id};
  store_.pictures[3] = {1, {1}};
  const Bytes contact_log = Log({{90, kOld}, {10, kOld}, {20, kOld}, {80, kOld}, {40, kOld}, {50, kOld}});
  EXPECT_EQ(ExportChanges(contact_log, Log({{12, kOld}, {3, kOld}, {11, kOld}})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 30, 1, 0, 20, 2, 0, 40, 2, 0, 50, 2, 0, 60, 1, 0, 90, 3, 0, 80, 3,  //
                                              1, 10, 1, 1, 11, 2, 1, 3,  3}));
  EXPECT_THAT(ContactIds(), ElementsAre(30, 20, 40, 50, 60));
  EXPECT_THAT(GroupIds(), ElementsAre(10, 11));
  Bytes memberships = ExchangeMembership(30, {30});
  Append(memberships, ExchangeMembership(20, {20}));
  Append(memberships, ExchangeMembership(60, {60}));
  EXPECT_EQ(ReadFile(kMembershipTable), memberships) << "only those of changed contacts";
  EXPECT_THAT(PictureIds(), ElementsAre(3));
  EXPECT_THAT(store_.CallsOf("QueryManAttachGroup"), ElementsAre("QueryManAttachGroup [30 20 40 50 60]"));
  EXPECT_EQ(ReadFile(kContactLog),
            Log({{10, kOld}, {30, kOld}, {20, kNewer}, {40, kOneSecondBefore}, {50, kNoTime}, {60, kNewer}}));
  EXPECT_EQ(ReadFile(kContactGroupLog), Log({{10, kNewer}, {11, kNewer}, {12, kOld}}));
}

TEST_F(ContactsExportTest, ATimeOfWhichOneWordDiffersIsAnother) {
  AddContact(1, kOld);
  AddContact(2, kOld);
  EXPECT_EQ(ExportChanges(Words({1, kOld.low, kOld.high + 1, 2, kOld.low + 1, kOld.high})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 1, 2, 0, 2, 2}));
}

TEST_F(ContactsExportTest, ChangedRecordsTravelLikeAllOthers) {
  store_.Add(0, kContactId, kOld.time, StoreContact());
  store_.Add(1, kContactGroupId, kOld.time, StoreContactGroup());
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kContactTable), ExchangeContact());
  EXPECT_EQ(ReadFile(kContactGroupTable), ExchangeContactGroup());
}

TEST_F(ContactsExportTest, NothingChangedGivesEmptyFilesAndReadsNoRecord) {
  FillWithOneOfEach(store_);
  for (const auto* file : kContactTables) WriteText(file, "old");
  WriteText(kContactChanges, "old");
  std::uint32_t largest_block = 0;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "realloc") largest_block = std::max(largest_block, call.size);
  });
  const Answer answer = ExportChanges(Log({{1, kOld}}), Log({{2, kOld}}));
  handset::Observe({});
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_LT(largest_block, 1'097'600u) << "no room is made for contacts";
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_TRUE(Exists(kContactChanges) && ReadFile(kContactChanges).empty());
  for (const auto* file : kContactTables) EXPECT_TRUE(Exists(file) && ReadFile(file).empty());
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "GetAllManNum", "GetAllmanSyncid", "GetAllgroupSyncid",
                                        "GetAllManNum", "GetAllmanSyncid", "GetAllgroupSyncid", "UnInitialize"));
}

TEST_F(ContactsExportTest, ChangedContactsTravelInBatchesToo) {
  Bytes log;
  for (std::uint32_t id = 1; id <= 1202; ++id) {
    AddContact(id);
    if (id % 2 == 0) Append(log, Log({{id, kOld}}));
  }
  EXPECT_EQ(ExportChanges(log).code, 0u);
  EXPECT_THAT(store_.CallsOf("Readman"), SizeIs(2)) << "601 of them have changed";
  EXPECT_THAT(store_.CallsOf("QueryManAttachGroup"), SizeIs(2));
  std::vector<std::uint32_t> expected;
  for (std::uint32_t id = 1; id <= 1202; id += 2) expected.push_back(id);
  EXPECT_EQ(ContactIds(), expected);
}

TEST_F(ContactsExportTest, GroupsChangeWithoutContacts) {
  AddContact(1);
  AddGroup(2, kNewer);
  EXPECT_EQ(ExportChanges(Log({{1, kOld}}), Log({{2, kOld}, {3, kOld}})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({1, 2, 2, 1, 3, 3}));
  EXPECT_THAT(ReadFile(kContactTable), IsEmpty());
  EXPECT_THAT(GroupIds(), ElementsAre(2));
}

TEST_F(ContactsExportTest, AnEmptyTableNeedsNoSnapshot) {
  StoreAnchor();
  EXPECT_EQ(Export(1, 3, u"5").code, 0u);
  EXPECT_TRUE(Exists(kContactChanges) && ReadFile(kContactChanges).empty());
}

TEST_F(ContactsExportTest, AnEmptyTableReportsNoDeletions) {
  AddGroup(2);
  EXPECT_EQ(ExportChanges(Log({{1, kOld}}), Log({{2, kOld}, {3, kOld}})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({1, 3, 3}));
  EXPECT_THAT(ReadFile(kContactTable), IsEmpty());
  EXPECT_THAT(ReadFile(kContactLog), IsEmpty());

  store_.tables[1].clear();
  AddContact(1);
  EXPECT_EQ(ExportChanges(Log({{1, kOld}}), Log({{3, kOld}})).code, 0u);
  EXPECT_THAT(ReadFile(kContactChanges), IsEmpty());
  EXPECT_THAT(ReadFile(kContactGroupLog), IsEmpty());
}

TEST_F(ContactsExportTest, TheFirstSnapshotEntryOfAnIdCounts) {
  AddContact(1);
  AddContact(2);
  EXPECT_EQ(ExportChanges(Log({{1, kOld}, {1, kNewer}, {2, kNewer}, {2, kOld}})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 2, 2}));
}

TEST_F(ContactsExportTest, EachSnapshotEntryOfADeletedIdIsReported) {
  AddContact(1);
  EXPECT_EQ(ExportChanges(Log({{2, kOld}, {1, kOld}, {2, kNewer}})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 2, 3, 0, 2, 3}));
}

TEST_F(ContactsExportTest, AnIdThatTheStoreListsTwiceIsReportedAndExportedTwice) {
  for (const std::uint32_t id : {1u, 1u, 2u, 2u}) AddContact(id);
  EXPECT_EQ(ExportChanges(Log({{2, kNewer}})).code, 0u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 1, 1, 0, 1, 1, 0, 2, 2, 0, 2, 2}));
  EXPECT_THAT(ContactIds(), ElementsAre(1, 1, 2, 2));
}

TEST_F(ContactsExportTest, ATornSnapshotEntryIsPassedOver) {
  AddContact(1);
  AddGroup(1);
  Bytes log = Log({{1, kOld}, {2, kOld}});
  log.resize(23);
  EXPECT_EQ(ExportChanges(log, log).code, 0u);
  EXPECT_THAT(ReadFile(kContactChanges), IsEmpty());
}

TEST_F(ContactsExportTest, SnapshotsAndChangesHaveNoLimit) {
  Bytes contact_log, group_log;
  std::vector<std::uint32_t> expected;
  for (std::uint32_t id = 1; id <= 3500; ++id) {
    AddContact(id, id % 2 == 0 ? kNewer : kOld);
    Append(contact_log, Log({{id, kOld}, {10'000 + id, kOld}}));
    if (id % 2 == 0) expected.insert(expected.end(), {0, id, 2});
  }
  for (std::uint32_t id = 1; id <= 3500; ++id) expected.insert(expected.end(), {0, 10'000 + id, 3});
  AddGroup(101);
  for (std::uint32_t id = 1; id <= 3500; ++id) Append(group_log, Log({{id, kOld}}));
  for (std::uint32_t id = 1; id <= 3500; ++id) {
    if (id != 101) expected.insert(expected.end(), {1, id, 3});
  }
  EXPECT_EQ(ExportChanges(contact_log, group_log).code, 0u);
  EXPECT_EQ(ToWords(ReadFile(kContactChanges)), expected);
  EXPECT_THAT(ContactIds(), SizeIs(1750));
  EXPECT_EQ(ReadFile(kContactLog).size(), 3500u * 12);
}

TEST_F(ContactsExportTest, ADowngradedExportIsFullAndWritesNoChangeList) {
  AddContact(1);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nLINKMAN = 6");
  EXPECT_EQ(Export(1, 3, u"5").mode, 1u);
  EXPECT_FALSE(Exists(kContactChanges));
  EXPECT_THAT(ContactIds(), ElementsAre(1));
  EXPECT_EQ(ReadFile(kContactLog), Log({{1, kOld}}));
}

TEST_F(ContactsExportTest, AChangeMadeAfterAnExportIsInTheNext) {
  AddContact(1);
  AddContact(2);
  AddGroup(1);
  const Answer first = Export(1, 1);
  store_.At(0, 2).time = kNewer.time;
  const Answer second = Export(1, 3, first.anchor);
  EXPECT_EQ(second.mode, 3u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 2, 2}));
  const Answer third = Export(1, 3, second.anchor);
  EXPECT_EQ(third.mode, 3u);
  EXPECT_THAT(ReadFile(kContactChanges), IsEmpty());
}

// --- Counts that are not true ---

TEST_F(ContactsExportTest, ACountBelowOneIsAnEmptyTable) {
  AddContact(1);
  AddGroup(2);
  for (const std::int32_t count : {0, -1, INT32_MIN}) {
    store_.claimed_count[0] = count;
    EXPECT_EQ(Export(1, 1).code, 0u);
    EXPECT_THAT(ReadFile(kContactTable), IsEmpty());
    EXPECT_THAT(GroupIds(), ElementsAre(2));
    EXPECT_THAT(ReadFile(kContactLog), IsEmpty());
  }
  EXPECT_THAT(store_.CallsOf("GetAllmanSyncid"), IsEmpty());
}

TEST_F(ContactsExportTest, AListOfNoneIsAnEmptyTable) {
  AddContact(1);
  AddGroup(2);
  for (const std::int32_t count : {0, -1, INT32_MIN}) {
    for (auto& claimed : store_.claimed_listed) claimed = count;
    EXPECT_EQ(ExportChanges(Log({{9, kOld}}), Log({{9, kOld}})).code, 0u);
    for (const auto* file : kContactTables) EXPECT_THAT(ReadFile(file), IsEmpty());
    EXPECT_THAT(ReadFile(kContactChanges), IsEmpty());
    for (const auto* log : kLogs) EXPECT_THAT(ReadFile(log), IsEmpty());
  }
}

TEST_F(ContactsExportTest, AbsurdCountsAreAMemoryFailure) {
  AddContact(1);
  for (const std::int32_t count : {0x0FFFFFFF, 0x10000000, 0x10000001, INT32_MAX}) {
    store_.claimed_count[0] = count;
    EXPECT_EQ(Export(1, 1).code, 0x11000010u);
    EXPECT_EQ(ExportChanges().code, 0x11000010u);
  }
}

TEST_F(ContactsExportTest, AListLongerThanItsRoomIsCut) {
  AddContact(1);
  AddContact(2);
  store_.heeds_room = false;
  for (const std::int32_t count : {3, INT32_MAX}) {
    store_.claimed_listed[0] = count;
    EXPECT_EQ(Export(1, 1).code, 0u);
    EXPECT_THAT(ContactIds(), ElementsAre(1, 2));
    EXPECT_EQ(ReadFile(kContactLog), Log({{1, kOld}, {2, kOld}}));
  }
}

TEST_F(ContactsExportTest, AListShorterThanItsCountIsTakenAsItIs) {
  AddContact(1);
  AddContact(2);
  store_.claimed_count[0] = 3;
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(ContactIds(), ElementsAre(1, 2));
  store_.claimed_listed[0] = 1;
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_THAT(ContactIds(), ElementsAre(1));
  EXPECT_EQ(ReadFile(kContactLog), Log({{1, kOld}}));
}

// --- Failures ---

TEST_F(ContactsExportTest, AStoreThatIsNotLoadedTouchesNothing) {
  for (const auto handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"ContactStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    std::vector<std::string> library_calls;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "GetProcAddressW" || call.function == "FreeLibrary") {
        library_calls.emplace_back(call.function);
      }
    });
    EXPECT_EQ(Export(1, 1, u"", std::u16string(300, u'x')).code, 0x10000001u);
    EXPECT_EQ(Export(1, 3, u"5").code, 0x10000001u);
    EXPECT_EQ(Export(1, 4).code, 0x10000001u);
    handset::Observe({});
    EXPECT_THAT(library_calls, IsEmpty());
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(ContactsExportTest, AnOverlongDirectoryIsRefusedBeforeAnythingMoves) {
  std::u16string path = u"\\sync";
  path.insert(0, 255, u'\\');
  const Answer answer = Export(1, 1, u"77", path);
  EXPECT_EQ(answer.code, 0x10000100u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "UnInitialize"));
  EXPECT_EQ(Export(1, 1, u"", path.substr(1)).code, 0u) << "259 characters are allowed";
  EXPECT_TRUE(Exists(kContactTable));
}

TEST_F(ContactsExportTest, ADirectoryThatIsNotThereIsAFileFailureWithoutAStep) {
  EXPECT_EQ(Export(1, 1, u"", u"\\nowhere").code, 0x10000100u);
  EXPECT_TRUE(Exists(kAnchorIni)) << "the anchor has moved by then";
  for (const auto* log : kLogs) EXPECT_FALSE(Exists(log));
}

TEST_F(ContactsExportTest, FilesThatCannotBeCreatedAreAFileFailureWithoutAStep) {
  // The first that fails ends it: none of those behind it comes to be.
  const std::u16string kFiles[] = {kContactTable, kContactGroupTable, kMembershipTable, kPictureTable, kContactChanges};
  for (std::size_t i = 0; i < std::size(kFiles); ++i) {
    MakeDirectory(kFiles[i]);
    EXPECT_EQ(ExportChanges().code, 0x10000100u);
    for (std::size_t j = 0; j < std::size(kFiles); ++j) EXPECT_EQ(Exists(kFiles[j]), j <= i) << i << ", " << j;
    std::filesystem::remove(handset::HostPath(kFiles[i]));
    RemoveFiles();
  }
  EXPECT_THAT(store_.CallsOf("GetAllManNum"), IsEmpty());
}

TEST_F(ContactsExportTest, AMissingEntryPointIsFlaggedWithItsStep) {
  const std::pair<const char16_t*, std::uint32_t> kCodes[] = {
      {u"DTP_PIMGetAllManNum", 0x11000002},  {u"DTP_PIMGetAllmanSyncid", 0x11000002},
      {u"DTP_PIMReadman", 0x11000002},       {u"DTP_PIMGetAllgroupSyncid", 0x12000002},
      {u"DTP_PIMReadgroup", 0x12000002},     {u"DTP_PIMQueryManAttachGroup", 0x18000002},
      {u"DTP_DownloadingImage", 0x19000002},
  };
  for (const auto& [name, code] : kCodes) {
    for (const std::uintptr_t address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      ScriptedContactStore lacking({name}, address);
      EXPECT_EQ(Export(1, 1).code, code) << "even with nothing to export";
      FillWithOneOfEach(lacking);
      EXPECT_EQ(Export(1, 1).code, code);
      EXPECT_EQ(Export(1, 4).code, code);
      EXPECT_EQ(ExportChanges().code, code);
      for (const auto* file : kContactTables) EXPECT_TRUE(Exists(file)) << "the tables were created before";
    }
  }
}

TEST_F(ContactsExportTest, AStepLooksAllItsEntryPointsUpBeforeItAsks) {
  const ScriptedContactStore lacking({u"DTP_PIMReadman"});
  EXPECT_EQ(Export(1, 1).code, 0x11000002u);
  EXPECT_THAT(lacking.calls, ElementsAre("Initialize 0", "UnInitialize"));
  ScriptedContactStore lacking_groups({u"DTP_PIMReadgroup"});
  EXPECT_EQ(Export(1, 1).code, 0x12000002u);
  EXPECT_THAT(lacking_groups.CallsOf("GetAllgroupSyncid"), IsEmpty());
}

TEST_F(ContactsExportTest, AnExportNeedsNoEntryPointThatWrites) {
  ScriptedContactStore reading({u"DTP_PIMGetAllGroupNum", u"DTP_PIMDeleteMan", u"DTP_PIMDeleteGroup",
                                u"DTP_DeleteImage", u"DTP_LoadingImage", u"DTP_PIMAddManToUnGroup", u"DTP_PIMAddGroup",
                                u"DTP_PIMUpdateMan", u"DTP_PIMUpdateGroup", u"DTP_PIMFindmanSyncidByName",
                                u"DTP_PIMFindgroupSyncidByName", u"DTP_PIMPhoneAddToGroups",
                                u"DTP_PIMModifyManToGroup"});
  FillWithOneOfEach(reading);
  EXPECT_EQ(Export(1, 1).code, 0u);
  EXPECT_EQ(ExportChanges().code, 0u);
}

TEST_F(ContactsExportTest, TheFirstThingThatIsWrongIsReported) {
  // In a plain copy the tables are created by the first four openings, and opened again by one each step.
  const ScriptedContactStore no_read({u"DTP_PIMReadman"});
  handset::FailCallOf("CreateFileW", 5);
  EXPECT_EQ(Export(1, 4).code, 0x11000002u) << "entry points are looked up before the contact table is opened";
  EXPECT_FALSE(handset::FaultHappened());

  const ScriptedContactStore no_query({u"DTP_PIMQueryManAttachGroup"});
  handset::FailCallOf("CreateFileW", 5);  // No contact and no group: those tables are not opened.
  EXPECT_EQ(Export(1, 4).code, 0x18000100u) << "but the membership table before";

  const ScriptedContactStore no_download({u"DTP_DownloadingImage"});
  handset::FailCallOf("CreateFileW", 6);
  EXPECT_EQ(Export(1, 4).code, 0x19000100u) << "and so the picture table";

  ScriptedContactStore no_list;
  FillWithOneOfEach(no_list);
  no_list.statuses["GetAllmanSyncid"] = 1;
  StoreAnchor();
  EXPECT_EQ(Export(1, 3, u"5").code, 0x11000005u) << "the store is listed before the snapshot is read";

  ScriptedContactStore unreadable;
  FillWithOneOfEach(unreadable);
  unreadable.statuses["Readman"] = 1;
  handset::FailCallOf("CreateFileW", 5);
  EXPECT_EQ(Export(1, 4).code, 0x11000100u) << "contacts are read after their table is opened";
  unreadable.statuses = {{"Readgroup", 1}};
  handset::FailCallOf("CreateFileW", 6);
  EXPECT_EQ(Export(1, 4).code, 0x12000006u) << "groups before";
}

TEST_F(ContactsExportTest, ATableThatCannotBeOpenedAgainIsFlagged) {
  FillWithOneOfEach(store_);
  const std::uint32_t kCodes[] = {0x11000100, 0x12000100, 0x18000100, 0x19000100};
  for (unsigned i = 0; i < 4; ++i) {
    handset::FailCallOf("CreateFileW", 5 + i);
    EXPECT_EQ(Export(1, 4).code, kCodes[i]);
    EXPECT_TRUE(handset::FaultHappened());
  }
}

TEST_F(ContactsExportTest, AFailedExportIsReturnedWithoutAStreamToo) {
  const ScriptedContactStore lacking({u"DTP_DownloadingImage"});
  EXPECT_EQ(Call("fnQV_ExportTabs", Request(1, 1, u"", kSync), nullptr), 0x09000002u);
}

TEST_F(ContactsExportTest, AStoreFailureIsFlaggedWithItsStep) {
  // The store's answering calls: count, list and read contacts, list and read groups, query, download; count and list
  // contacts and list groups for the snapshots.
  const std::uint32_t kCodes[] = {0x11000004, 0x11000005, 0x11000006, 0x12000005, 0x12000006,
                                  0x18000006, 0,          0x15000004, 0x15000005, 0x15000005};
  for (unsigned n = 1; n <= std::size(kCodes); ++n) {
    for (const bool changes : {false, true}) {
      ScriptedContactStore failing;
      FillWithOneOfEach(failing);
      failing.fail_call = n;
      EXPECT_EQ((changes ? ExportChanges() : Export(1, 1)).code, kCodes[n - 1]) << "call " << n;
      EXPECT_TRUE(failing.failed_a_call);
    }
  }
}

TEST_F(ContactsExportTest, AnyStatusButZeroIsAFailure) {
  FillWithOneOfEach(store_);
  for (const std::int32_t status : {1, -1, INT32_MIN, 0x10000}) {
    store_.statuses = {{"GetAllManNum", status}};
    EXPECT_EQ(Export(1, 4).code, 0x11000004u);
    store_.statuses = {{"GetAllmanSyncid", status}};
    EXPECT_EQ(Export(1, 4).code, 0x11000005u);
    store_.statuses = {{"Readman", status}};
    EXPECT_EQ(Export(1, 4).code, 0x11000006u);
    store_.statuses = {{"GetAllgroupSyncid", status}};
    EXPECT_EQ(Export(1, 4).code, 0x12000005u);
    store_.statuses = {{"Readgroup", status}};
    EXPECT_EQ(Export(1, 4).code, 0x12000006u);
    store_.statuses = {{"QueryManAttachGroup", status}};
    EXPECT_EQ(Export(1, 4).code, 0x18000006u);
  }
}

TEST_F(ContactsExportTest, ABatchThatFailsLeavesThoseBeforeIt) {
  for (std::uint32_t id = 1; id <= 801; ++id) {
    AddContact(id);
    store_.groups_of[id] = {id};
  }
  store_.refusals["Readman"][2] = 1;
  EXPECT_EQ(Export(1, 4).code, 0x11000006u);
  EXPECT_EQ(ContactIds(), Counting(1, 400));
  EXPECT_THAT(store_.CallsOf("Readman"), SizeIs(2));

  ScriptedContactStore failing;
  failing.tables[0] = store_.tables[0];
  failing.groups_of = store_.groups_of;
  failing.refusals["QueryManAttachGroup"][2] = 1;
  EXPECT_EQ(Export(1, 4).code, 0x18000006u);
  EXPECT_EQ(ReadFile(kMembershipTable).size(), 4800u);
  EXPECT_THAT(failing.CallsOf("QueryManAttachGroup"), SizeIs(2));
}

TEST_F(ContactsExportTest, WithoutASnapshotAnIncrementalExportFailsAtItsTable) {
  FillWithOneOfEach(store_);
  StoreAnchor();
  EXPECT_EQ(Export(1, 3, u"5").code, 0x11100100u);
  StoreAnchor();
  WriteFile(kContactLog, {});
  EXPECT_EQ(Export(1, 3, u"5").code, 0x12100100u);
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 1, 1}));
}

TEST_F(ContactsExportTest, AnUnreadableSnapshotIsNotTakenForAnEmptyOne) {
  FillWithOneOfEach(store_);
  const std::pair<const char16_t*, std::uint32_t> kCodes[] = {{kContactLog, 0x11100200},
                                                              {kContactGroupLog, 0x12100200}};
  for (const auto& [log, code] : kCodes) {
    FailBehindOpening(log, "ReadFile");
    EXPECT_EQ(ExportChanges().code, code);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
  }
}

TEST_F(ContactsExportTest, AChangeListThatCannotBeWrittenIsFlaggedWithItsTable) {
  FillWithOneOfEach(store_);
  const std::pair<const char16_t*, std::uint32_t> kCodes[] = {{kContactLog, 0x11000100},
                                                              {kContactGroupLog, 0x12000100}};
  for (const auto& [log, code] : kCodes) {
    FailBehindOpening(log, "WriteFile");
    EXPECT_EQ(ExportChanges().code, code);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
  }
}

TEST_F(ContactsExportTest, ASnapshotThatCannotBeRewrittenIsFlagged) {
  FillWithOneOfEach(store_);
  for (const auto* log : kLogs) {
    MakeDirectory(log);
    EXPECT_EQ(Export(1, 1).code, 0x15000100u);
    std::filesystem::remove(handset::HostPath(log));
    FailBehindOpening(log, "WriteFile");
    EXPECT_EQ(Export(1, 1).code, 0x15000100u);
    handset::Observe({});
  }
}

TEST_F(ContactsExportTest, AFailedExportKeepsItsFilesAndTheSnapshots) {
  FillWithOneOfEach(store_);
  store_.statuses["QueryManAttachGroup"] = 1;
  const Answer answer = ExportChanges(Log({{9, kOld}}), Log({{8, kOld}}));
  EXPECT_EQ(answer.code, 0x18000006u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_THAT(ContactIds(), ElementsAre(1));
  EXPECT_EQ(ReadFile(kContactGroupTable).size(), 1532u);
  for (const auto* file : {kMembershipTable, kPictureTable}) EXPECT_TRUE(Exists(file) && ReadFile(file).empty());
  EXPECT_EQ(ReadFile(kContactLog), Log({{9, kOld}}));
  EXPECT_EQ(ReadFile(kContactGroupLog), Log({{8, kOld}}));
  EXPECT_EQ(ReadFile(kContactChanges), Words({0, 1, 1, 0, 9, 3, 1, 2, 1, 1, 8, 3}));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nLINKMAN = 200612117210");
}

TEST_F(ContactsExportTest, AFullDiskIsAFileFailureAtItsTable) {
  FillWithOneOfEach(store_);
  constexpr std::uint64_t kContacts = 3596, kGroups = kContacts + 1532, kMemberships = kGroups + 12,
                          kPictures = kMemberships + 8236;
  const std::pair<std::uint64_t, std::uint32_t> kFreeSpaces[] = {
      {0, 0x11000100},       {kContacts - 1, 0x11000100},    {kContacts, 0x12000100},    {kGroups - 1, 0x12000100},
      {kGroups, 0x18000100}, {kMemberships - 1, 0x18000100}, {kMemberships, 0x19000100}, {kPictures - 1, 0x19000100},
      {kPictures, 0},
  };
  for (const auto& [bytes, code] : kFreeSpaces) {
    RemoveFiles();
    handset::SetFreeSpace(bytes);
    EXPECT_EQ(Export(1, 4).code, code) << bytes << " bytes free";
  }
}

}  // namespace
}  // namespace qv_test
