// The index behind snapshots, change lists and id maps: first entry wins, at any size, also when ids collide.
#include "sync/indexed_list.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "host/handset/handset.h"

namespace qv {
namespace {

struct Entry {
  std::uint32_t table, id, value;
};
RecordKey KeyOf(const Entry& entry) {
  return {entry.table, entry.id};
}
using Entries = IndexedList<Entry, RecordKey, KeyOf>;

TEST(IndexedListTest, FindsNothingWhenEmpty) {
  const Entries entries;
  EXPECT_EQ(entries.Find({0, 0}), Entries::kAbsent);
}

TEST(IndexedListTest, FindsTheFirstOfSeveralAndKeepsAll) {
  Entries entries;
  ASSERT_TRUE(entries.Append({0, 5, 1}));
  ASSERT_TRUE(entries.Append({1, 5, 2}));
  ASSERT_TRUE(entries.Append({0, 5, 3}));
  EXPECT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[entries.Find({0, 5})].value, 1u);
  EXPECT_EQ(entries[entries.Find({1, 5})].value, 2u);
  EXPECT_EQ(entries.Find({2, 5}), Entries::kAbsent);
}

TEST(IndexedListTest, IdsOfOneHashStayApart) {
  const RecordKey first{0, 0x9E3779B6};
  const RecordKey second{1, 5};
  ASSERT_EQ(first.Hash(), second.Hash());
  Entries entries;
  ASSERT_TRUE(entries.Append({first.table, first.id, 1}));
  ASSERT_TRUE(entries.Append({second.table, second.id, 2}));
  EXPECT_EQ(entries.Find(first), 0u);
  EXPECT_EQ(entries.Find(second), 1u);
}

TEST(IndexedListTest, AnAbsentKeyIsAbsentAtAnySize) {
  Entries entries;
  for (std::uint32_t i = 0; i < 200; ++i) {
    ASSERT_TRUE(entries.Append({0, i, i}));
    ASSERT_EQ(entries.Find({1, i}), Entries::kAbsent);
    ASSERT_EQ(entries.Find({0, i}), i);
  }
}

TEST(IndexedListTest, AgreesWithAPlainScanOnRandomEntries) {
  std::mt19937 random(1);
  for (const std::uint32_t range : {10u, 1000u, 0xFFFFFFFFu}) {
    Entries entries;
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> first;
    std::uniform_int_distribution<std::uint32_t> id(0, range);
    for (std::size_t i = 0; i < 3000; ++i) {
      const Entry entry{static_cast<std::uint32_t>(i % 3), id(random), 0};
      ASSERT_TRUE(entries.Append(entry));
      first.emplace(std::pair(entry.table, entry.id), i);
    }
    for (const auto& [key, position] : first) ASSERT_EQ(entries.Find({key.first, key.second}), position);
    for (std::uint32_t i = 0; i < 1000; ++i) {
      const std::pair key(i % 3, id(random));
      const auto known = first.find(key);
      ASSERT_EQ(entries.Find({key.first, key.second}), known == first.end() ? Entries::kAbsent : known->second);
    }
  }
}

TEST(IndexedListTest, IsAsItWasWhenThereIsNoMemory) {
  Entries entries;
  std::uint32_t count = 0;
  for (unsigned fault = 1; fault < 40; ++fault) {
    handset::FailCallOf("realloc", fault % 3 + 1);
    for (std::uint32_t i = 0; i < 20; ++i) {
      if (entries.Append({0, count, count})) ++count;
    }
    for (std::uint32_t i = 0; i < count; ++i) ASSERT_EQ(entries.Find({0, i}), i);
    ASSERT_EQ(entries.size(), count);
  }
  handset::FailCall(0);
}

}  // namespace
}  // namespace qv
