// The calls that store_call_victim is killed in, and what the database holds before: shared by victim and test.
#ifndef QV_TESTS_STORES_VICTIM_CALLS_H
#define QV_TESTS_STORES_VICTIM_CALLS_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <random>
#include <string_view>
#include <vector>

#include "host/stores/contact_kinds.h"
#include "host/stores/message_kinds.h"
#include "host/stores/schedule_kinds.h"
#include "host/stores/telephony_kinds.h"
#include "tests/stores/sample_records.h"

/// The entries, or records of a store's only table, there at first, with ids from 1 on, and how many of them the delete
/// call names.
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

inline constexpr std::array<std::string_view, 4> kScheduleCalls = {"insert", "update", "delete", "delete_all"};
inline constexpr std::array<std::string_view, 2> kContactCalls = {"add_contacts", "modify_groups"};
inline constexpr std::string_view kWriteConfig = "write_config";  ///< Of the call filter.

/// A call that deletes records of a store's only table, as these stores all do it: (u32 n, const u32* ids).
struct ListDeletion {
  std::string_view call;
  std::string_view library;
  const char* entry_point;
  const stores::KindDescription& kind;
};
inline const ListDeletion kListDeletions[] = {
    {"delete_messages", "SmsStore.dll", "Sync_Del", stores::kSmsKind},
    {"delete_multimedia_messages", "MmsStore.dll", "mms_SC_Sync_Del", stores::kMmsKind},
    {"delete_calls", "CallLogStore.dll", "EXPCALLHISTORY_Sync_Del", stores::kCallKinds[0]},
    {"delete_quick_dials", "SpeedDialStore.dll", "Sync_Del", stores::kQuickDialKinds[0]},
};

inline std::vector<std::string_view> AllCalls() {
  std::vector<std::string_view> calls(kScheduleCalls.begin(), kScheduleCalls.end());
  calls.insert(calls.end(), kContactCalls.begin(), kContactCalls.end());
  calls.push_back(kWriteConfig);
  for (const ListDeletion& deletion : kListDeletions) calls.push_back(deletion.call);
  return calls;
}

inline bool IsContactCall(std::string_view call) {
  return std::ranges::find(kContactCalls, call) != kContactCalls.end();
}
/// Null for any other call.
inline const ListDeletion* FindListDeletion(std::string_view call) {
  const auto* const found = std::ranges::find(kListDeletions, call, &ListDeletion::call);
  return found == std::end(kListDeletions) ? nullptr : found;
}
/// The file's name.
inline std::string_view LibraryOf(std::string_view call) {
  if (IsContactCall(call)) return "ContactStore.dll";
  if (call == kWriteConfig) return "CallFilterStore.dll";
  const ListDeletion* const deletion = FindListDeletion(call);
  return deletion == nullptr ? "SchedStore.dll" : deletion->library;
}

/// What the victim inserts or updates with: all items, so that it takes many pages.
inline Record VictimRecord() {
  std::mt19937 random(1);
  return RandomRecord(stores::kScheduleKinds[stores::kScheduleEntries].layout, random);
}

/// What the call filter's configuration becomes.
inline Record WrittenConfig() {
  std::mt19937 random(4);
  return RandomRecord(stores::kCallFilterConfigKind.layout, random);
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
