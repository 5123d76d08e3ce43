// Schedule records written out by hand, as the store holds them and as they travel. Nothing here comes from the agent's
// field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_SCHEDULE_RECORDS_H
#define QV_TESTS_SUPPORT_SCHEDULE_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the schedule's files lie on the handset of a behaviour test.
constexpr char16_t kEntries[] = u"\\sync\\schedule.tbl";
constexpr char16_t kGroups[] = u"\\sync\\schedulegroup.tbl";
constexpr char16_t kChangeList[] = u"\\sync\\schedcmd.tbl";
constexpr char16_t kIdMap[] = u"\\sync\\schedmap.tbl";
constexpr char16_t kEntryLog[] = u"\\dbdata\\sysconfig\\schedule.log";
constexpr char16_t kGroupLog[] = u"\\dbdata\\sysconfig\\schegroup.log";

constexpr std::uint32_t kEntryId = 0xD4A1A2A3;
constexpr std::uint32_t kEntryGroup = 77;

/// An entry in the store: every field set, and other bytes than zero wherever no field lies.
Bytes StoreEntry();
/// The same entry as an export writes it under kEntryId: the fixed part, two 80-byte items, one 144-byte item.
Bytes ExchangeEntry();
/// The same entry from a desktop that leaves no byte zero: unused room and what only repeats another field say nothing.
Bytes NoisyExchangeEntry();
/// What a recover hands to the store for either, before the group is translated.
Bytes RecoveredEntry();

/// A group in the store, as an export writes it, and from a desktop that fills the tail.
Bytes StoreGroup(std::uint32_t id = 5, std::u16string_view name = u"Family", std::uint16_t value = 0x1234);
Bytes ExchangeGroup(std::uint32_t id = 5, std::u16string_view name = u"Family", std::uint16_t value = 0x1234);

/// An entry of 912 bytes that says no more than who it is and which group it is in.
Bytes PlainEntry(std::uint32_t id, std::uint32_t group = 0);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCHEDULE_RECORDS_H
