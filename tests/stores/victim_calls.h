// The calls that store_call_victim is killed in, and what the database holds before: shared by victim and test.
#ifndef QV_TESTS_STORES_VICTIM_CALLS_H
#define QV_TESTS_STORES_VICTIM_CALLS_H

#include <array>
#include <cstdint>
#include <numeric>
#include <random>
#include <string_view>
#include <vector>

#include "host/stores/contact_kinds.h"
#include "host/stores/schedule_kinds.h"
#include "tests/stores/sample_records.h"

/// The entries there at first, with ids from 1 on, and how many of them the delete call names.
inline constexpr std::uint32_t kEntriesBefore = 60;
inline constexpr std::uint32_t kGroupsBefore = 3;
inline constexpr std::uint32_t kUpdatedId = 30;
inline constexpr std::size_t kDeletedCount = 50;
inline constexpr std::uint32_t kGroupArgument = 2;

/// The contacts there at first, all in the first of these groups. One call adds a batch of contacts, the other puts
/// those there at first into the other groups instead.
inline constexpr std::uint32_t kContactsBefore = 6;
inline constexpr std::uint32_t kContactGroupsBefore = 3;
inline constexpr std::uint32_t kAddedContacts = 5;
inline constexpr std::array<std::uint32_t, 2> kOtherGroups = {2, 3};

inline constexpr std::array<std::string_view, 6> kCalls = {"insert",     "update",       "delete",
                                                           "delete_all", "add_contacts", "modify_groups"};

/// Whether it is one of ContactStore.dll, not of SchedStore.dll.
inline bool IsContactCall(std::string_view call) {
  return call == "add_contacts" || call == "modify_groups";
}

/// What the victim inserts or updates with: all items, so that it takes many pages.
inline Record VictimRecord() {
  std::mt19937 random(1);
  return RandomRecord(stores::kScheduleKinds[stores::kScheduleEntries].layout, random);
}

inline std::vector<Record> AddedContacts() {
  std::mt19937 random(3);
  std::vector<Record> contacts(kAddedContacts);
  for (Record& contact : contacts) contact = RandomRecord(stores::kContactKinds[stores::kContacts].layout, random);
  return contacts;
}

inline std::array<std::uint32_t, kDeletedCount> DeletedIds() {
  std::array<std::uint32_t, kDeletedCount> ids;
  std::iota(ids.begin(), ids.end(), 5);
  return ids;
}

#endif  // QV_TESTS_STORES_VICTIM_CALLS_H
