// A call filter that travels to the desktop, back to an emptied store and out again: whatever does not return as it
// left is named in one place, for each table.
#include <map>
#include <random>

#include "tests/support/call_filter_records.h"
#include "tests/support/scripted_call_filter_store.h"

namespace qv_test {
namespace {

using IdsBecome = std::map<std::uint32_t, std::uint32_t>;

/// A text in the store: where it lies, and how many characters it has room for.
struct TextPlace {
  std::size_t offset, room;
};
constexpr TextPlace kEntryTexts[] = {{16, 31}, {78, 33}};
constexpr TextPlace kGroupTexts[] = {{4, 22}, {60, 71}, {272, 129}, {530, 129}};

class RandomCallFilter {
 public:
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_()) % bound; }
  bool OneIn(std::uint32_t chances) { return Below(chances) == 0; }

  Bytes Entry(std::uint32_t id, std::uint32_t group) {
    Bytes r = Noise(144);
    Put32(r, 0, id);
    Put32(r, 4, group);
    PutTime(r, kFilterEntryTime.store);
    for (const TextPlace& text : kEntryTexts) PutSomeText(r, text);
    return r;
  }

  Bytes Group(std::uint32_t id) {
    Bytes r = Noise(788);
    Put32(r, 0, id);
    for (const FilterTimePlace& time : kFilterGroupTimes) PutTime(r, time.store);
    for (const TextPlace& text : kGroupTexts) PutSomeText(r, text);
    return r;
  }

  Bytes Config() {
    Bytes r = Noise(712);
    Put16(r, 6, static_cast<std::uint16_t>(Below(12)));
    for (std::size_t slot = 8; slot < 712; slot += 88) {
      PutSomeText(r, {slot + 4, 31});
      PutSomeText(r, {slot + 66, 11});
    }
    return r;
  }

 private:
  Bytes Noise(std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(Below(256));
    return bytes;
  }

  /// Any time of some ten thousand years, or none.
  void PutTime(Bytes& r, std::size_t offset) {
    Put32(r, offset + 4, OneIn(5) ? 0x80000000 | Below(0x10000) : Below(0x2C000000));
  }

  /// Text that fills its room, or ends before.
  void PutSomeText(Bytes& r, const TextPlace& place) {
    const std::size_t length = OneIn(4) ? place.room : Below(static_cast<std::uint32_t>(place.room));
    for (std::size_t i = 0; i < length; ++i) {
      Put16(r, place.offset + 2 * i, static_cast<std::uint16_t>(1 + Below(0xFFFF)));
    }
    if (length < place.room) Put16(r, place.offset + 2 * length, 0);
  }

  std::mt19937 engine_{20061211};
};

/// A time that there is not returns as the FILETIME 0: 1 January 1601.
void TimeAfterARoundTrip(Bytes& r, std::size_t offset) {
  if (Get32(r, offset) == 0) PutFilterTime(r, offset, {1601, 1, 1, 0, 0, 0, 0});
}

/// Entries have new ids, and follow their groups; the 33rd character of the second text finds no room.
Bytes EntryAfterARoundTrip(Bytes r, const IdsBecome& entries, const IdsBecome& groups) {
  Put32(r, 0, entries.at(Get32(r, 0)));
  if (const auto group = groups.find(Get32(r, 4)); group != groups.end()) Put32(r, 4, group->second);
  TimeAfterARoundTrip(r, kFilterEntryTime.exchange);
  Put16(r, 102 + 2 * 32, 0);
  return r;
}

/// Groups have new ids; the last characters of a name and of the last text find no room.
Bytes GroupAfterARoundTrip(Bytes r, const IdsBecome& groups) {
  Put32(r, 0, groups.at(Get32(r, 0)));
  for (const FilterTimePlace& time : kFilterGroupTimes) TimeAfterARoundTrip(r, time.exchange);
  Put16(r, 4 + 2 * 21, 0);
  Put16(r, 906 + 2 * 128, 0);
  return r;
}

class CallFilterRoundTripTest : public AgentTest {
 protected:
  static constexpr std::uint32_t kEntries = 450;  // More than one call of the store takes, in either direction.
  static constexpr std::uint32_t kGroups = 9;

  void FillStore() {
    for (std::uint32_t id = 1; id <= kGroups; ++id) store_.Add(1, id, 1, random_.Group(id));
    for (std::uint32_t i = 0; i < kEntries; ++i) {
      const std::uint32_t id = 20 + 7 * i;
      store_.Add(0, id, 1, random_.Entry(id, random_.Below(kGroups + 3)));  // A few are in no group that there is.
    }
    store_.config = random_.Config();
  }

  /// A handset's store has a record's own id in the record, too.
  void TakeIdsIntoRecords() {
    for (auto& table : store_.tables) {
      for (auto& record : table) Put32(record.bytes, 0, record.id);
    }
  }

  static IdsBecome Pairs(const std::vector<std::uint32_t>& before, const std::vector<std::uint32_t>& after) {
    EXPECT_EQ(before.size(), after.size());
    IdsBecome pairs;
    for (std::size_t i = 0; i < before.size(); ++i) pairs[before[i]] = after.at(i);
    return pairs;
  }

  RandomCallFilter random_;
  ScriptedCallFilterStore store_;
};

TEST_F(CallFilterRoundTripTest, WhatWasRecoveredIsExportedAgain) {
  for (std::uint32_t trip = 1; trip <= 5; ++trip) {
    SCOPED_TRACE(trip);
    for (auto& table : store_.tables) table.clear();
    FillStore();
    ASSERT_EQ(Export(11, 2).code, 0u);
    const std::vector<Bytes> entries_before = Split(ReadFile(kFilterEntries), kFilterEntrySize);
    const std::vector<Bytes> groups_before = Split(ReadFile(kFilterGroups), kFilterGroupSize);
    const Bytes config_before = ReadFile(kFilterConfig);
    const std::vector<std::uint32_t> entry_ids = store_.Ids(0);
    const std::vector<std::uint32_t> group_ids = store_.Ids(1);

    store_.next_id = 100000 * trip;
    ASSERT_EQ(Recover(11, 2).code, 0u);
    TakeIdsIntoRecords();
    ASSERT_EQ(Export(11, 2).code, 0u);

    const IdsBecome groups = Pairs(group_ids, store_.Ids(1));
    const IdsBecome entries = Pairs(entry_ids, store_.Ids(0));
    const std::vector<Bytes> entries_after = Split(ReadFile(kFilterEntries), kFilterEntrySize);
    const std::vector<Bytes> groups_after = Split(ReadFile(kFilterGroups), kFilterGroupSize);
    ASSERT_EQ(entries_after.size(), kEntries);
    ASSERT_EQ(groups_after.size(), kGroups);
    for (std::size_t i = 0; i < kEntries; ++i) {
      ASSERT_EQ(entries_after[i], EntryAfterARoundTrip(entries_before[i], entries, groups)) << "entry " << i;
    }
    for (std::size_t i = 0; i < kGroups; ++i) {
      ASSERT_EQ(groups_after[i], GroupAfterARoundTrip(groups_before[i], groups)) << "group " << i;
    }
    EXPECT_EQ(ReadFile(kFilterConfig), config_before);
  }
}

TEST_F(CallFilterRoundTripTest, ARecoveredStoreHasNoChangesToExport) {
  FillStore();
  ASSERT_EQ(Export(11, 1).code, 0u);
  store_.next_id = 100000;
  const Answer recovered = Recover(11, 1);
  ASSERT_EQ(recovered.code, 0u);
  const Answer exported = Export(11, 3, recovered.anchor);
  EXPECT_EQ(exported.code, 0u);
  EXPECT_EQ(exported.mode, 3u);
  for (const auto* file : {kFilterEntries, kFilterGroups, kFilterChanges}) EXPECT_TRUE(ReadFile(file).empty());
}

}  // namespace
}  // namespace qv_test
