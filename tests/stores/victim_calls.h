// The calls that store_call_victim is killed in, and what the database holds before: shared by victim and test.
#ifndef QV_TESTS_STORES_VICTIM_CALLS_H
#define QV_TESTS_STORES_VICTIM_CALLS_H

#include <array>
#include <cstdint>
#include <numeric>
#include <random>
#include <string_view>

#include "host/stores/schedule_kinds.h"
#include "tests/stores/sample_records.h"

/// The entries there at first, with ids from 1 on, and how many of them the delete call names.
inline constexpr std::uint32_t kEntriesBefore = 60;
inline constexpr std::uint32_t kGroupsBefore = 3;
inline constexpr std::uint32_t kUpdatedId = 30;
inline constexpr std::size_t kDeletedCount = 50;
inline constexpr std::uint32_t kGroupArgument = 2;

inline constexpr std::array<std::string_view, 4> kCalls = {"insert", "update", "delete", "delete_all"};

/// What the victim inserts or updates with: all items, so that it takes many pages.
inline Record VictimRecord() {
  std::mt19937 random(1);
  return RandomRecord(stores::kScheduleKinds[stores::kScheduleEntries].layout, random);
}

inline std::array<std::uint32_t, kDeletedCount> DeletedIds() {
  std::array<std::uint32_t, kDeletedCount> ids;
  std::iota(ids.begin(), ids.end(), 5);
  return ids;
}

#endif  // QV_TESTS_STORES_VICTIM_CALLS_H
