// An agenda that travels from the desktop to an emptied store, out and in again: whatever does not return as it left is
// named in one place.
#include <cstring>
#include <map>
#include <random>

#include "tests/support/agenda_records.h"
#include "tests/support/scripted_agenda_store.h"

namespace qv_test {
namespace {

/// Numbers of an exchange record of which only the low bytes are carried: where they stand, and how many are dropped.
struct Narrowed {
  std::size_t offset, dropped;
};
constexpr Narrowed kNarrowed[] = {{44, 2}, {48, 3}, {52, 3}, {76, 2}, {80, 3}, {84, 3}};
/// What lies between the fields of the fixed part, and of an item.
constexpr CopiedBytes kUnusedInEntry[] = {{56, 20, 0}, {88, 20, 0}, {113, 1, 0}, {246, 1, 0}, {248, 40, 0}};
constexpr CopiedBytes kUnusedInItem[] = {{1, 3, 0}};

class AgendaRoundTripTest : public AgentTest {
 protected:
  static constexpr std::uint32_t kEntryCount = 21;
  static constexpr std::uint32_t kGroupCount = 55;

  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_()) % bound; }

  Bytes Noise(std::size_t size) {
    Bytes bytes((size + 3) / 4 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
      const auto word = static_cast<std::uint32_t>(random_());
      std::memcpy(&bytes[i], &word, sizeof(word));
    }
    bytes.resize(size);
    return bytes;
  }

  /// Text that fills its room, or ends before.
  void PutSomeText(Bytes& r, std::size_t offset, std::uint32_t room) {
    const std::uint32_t length = Below(4) == 0 ? room : Below(room);
    for (std::uint32_t i = 0; i < length; ++i) {
      Put16(r, offset + 2 * i, static_cast<std::uint16_t>(1 + Below(0xFFFF)));
    }
    if (length < room) Put16(r, offset + 2 * length, 0);
  }

  /// An exchange record of which every byte is anything.
  Bytes RandomEntry(std::uint32_t id) {
    Bytes r = Noise(kAgendaFixedPart);
    Put32(r, 0, id);
    Put32(r, 4, 1 + Below(kGroupCount + 5));  // A few are in no group that there is.
    PutSomeText(r, 8, 18);
    PutSomeText(r, 114, 66);
    const std::uint32_t items = Below(kMostAgendaItems + 1);
    Put8(r, 247, static_cast<std::uint8_t>(items));
    for (std::uint32_t i = 0; i < items; ++i) {
      Bytes item = Noise(kAgendaItem);
      PutSomeText(item, 16, 32);
      Append(r, item);
    }
    const std::uint32_t long_items = Below(kMostLongItems + 1);
    Append(r, Words({long_items}));
    Append(r, Noise(long_items * kLongItem));
    return r;
  }

  static void Blank(Bytes& r, std::size_t base, std::span<const CopiedBytes> unused) {
    for (const CopiedBytes& bytes : unused) PutBytes(r, base + bytes.from, Bytes(bytes.size));
  }
  /// A text's last character goes, if it fills its room, and so does what follows its NUL.
  static void EndText(Bytes& r, std::size_t offset, std::size_t room) {
    bool ended = false;
    for (std::size_t i = 0; i < room; ++i) {
      ended = ended || i + 1 == room || (r[offset + 2 * i] == 0 && r[offset + 2 * i + 1] == 0);
      if (ended) Put16(r, offset + 2 * i, 0);
    }
  }
  /// An entry as it comes out again under this id.
  static Bytes AfterARoundTrip(Bytes r, std::uint32_t id, const std::map<std::uint32_t, std::uint32_t>& groups) {
    Put32(r, 0, id);
    if (const auto group = groups.find(Get32(r, 4)); group != groups.end()) Put32(r, 4, group->second);
    for (const auto& [offset, dropped] : kNarrowed) PutBytes(r, offset + 4 - dropped, Bytes(dropped));
    Blank(r, 0, kUnusedInEntry);
    EndText(r, 8, 18);
    EndText(r, 114, 66);
    for (std::size_t i = 0; i < r[247]; ++i) {
      const std::size_t item = kAgendaFixedPart + i * kAgendaItem;
      Blank(r, item, kUnusedInItem);
      EndText(r, item + 16, 32);
    }
    return r;
  }

  std::mt19937 random_{20061211};
  ScriptedAgendaStore store_;
};

TEST_F(AgendaRoundTripTest, WhatWasRecoveredIsExported) {
  for (std::uint32_t trip = 1; trip <= 2; ++trip) {
    SCOPED_TRACE(trip);
    std::vector<Bytes> entries;
    Bytes sent;
    for (std::uint32_t i = 0; i < kEntryCount; ++i) {
      entries.push_back(RandomEntry(200 + 7 * i));
      Append(sent, entries.back());
    }
    Bytes groups;
    for (std::uint32_t id = 1; id <= kGroupCount; ++id) {
      groups.resize(groups.size() + kAgendaGroupSize);
      PutBytes(groups, groups.size() - kAgendaGroupSize, Noise(kAgendaGroupSize));
      Put32(groups, groups.size() - kAgendaGroupSize, id);
    }
    WriteFile(kAgenda, sent);
    WriteFile(kAgendaGroups, groups);
    store_.next_id = 100000 * trip;
    ASSERT_EQ(Recover(4, 2).code, 0u);
    ASSERT_EQ(Export(4, 2).code, 0u);
    EXPECT_EQ(ReadFile(kAgendaGroups), groups) << "a group says itself who it is";
    std::map<std::uint32_t, std::uint32_t> new_groups;
    for (std::uint32_t id = 1; id <= kGroupCount; ++id) new_groups[id] = store_.tables[1].at(id - 1).id;
    Bytes expected;
    for (std::uint32_t i = 0; i < kEntryCount; ++i) {
      Append(expected, AfterARoundTrip(entries[i], store_.tables[0].at(i).id, new_groups));
    }
    EXPECT_EQ(ReadFile(kAgenda), expected);
  }
}

TEST_F(AgendaRoundTripTest, ARecoveredStoreHasNoChangesToExport) {
  Bytes sent = RandomEntry(1);
  Append(sent, RandomEntry(2));
  WriteFile(kAgenda, sent);
  WriteFile(kAgendaGroups, AgendaGroup(3));
  const Answer recovered = Recover(4, 1);
  ASSERT_EQ(recovered.code, 0u);
  const Answer exported = Export(4, 3, recovered.anchor);
  EXPECT_EQ(exported.code, 0u);
  EXPECT_EQ(exported.mode, 3u);
  for (const auto* file : {kAgenda, kAgendaGroups, kAgendaChanges}) EXPECT_TRUE(ReadFile(file).empty());
}

}  // namespace
}  // namespace qv_test
