// Entries, groups and the configuration of the call filter written out by hand, as the store holds them and as they
// travel. Nothing here comes from the agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_CALL_FILTER_RECORDS_H
#define QV_TESTS_SUPPORT_CALL_FILTER_RECORDS_H

#include <array>
#include <utility>

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the call filter's files lie on the handset of a behaviour test.
constexpr char16_t kFilterEntries[] = u"\\sync\\redblistinfo.tbl";
constexpr char16_t kFilterGroups[] = u"\\sync\\redblistgroup.tbl";
constexpr char16_t kFilterConfig[] = u"\\sync\\redblistconfig.tbl";
constexpr char16_t kFilterChanges[] = u"\\sync\\redblistcmd.tbl";
constexpr char16_t kFilterIdMap[] = u"\\sync\\redblistmap.tbl";
constexpr char16_t kFilterEntryLog[] = u"\\dbdata\\sysconfig\\redblist.log";
constexpr char16_t kFilterGroupLog[] = u"\\dbdata\\sysconfig\\redblistgroup.log";

// In the exchange tables.
constexpr std::size_t kFilterEntrySize = 204;
constexpr std::size_t kFilterGroupSize = 1200;
constexpr std::size_t kFilterConfigSize = 700;

constexpr std::uint32_t kFilterEntryId = 0xC4A1A2A3;
constexpr std::uint32_t kFilterEntryGroup = 77;
constexpr std::uint32_t kFilterGroupId = 0xC5B1B2B3;

/// The times of a group, and where each lies in the store record and in the exchange record.
struct FilterTimePlace {
  std::size_t store, exchange;
};
constexpr FilterTimePlace kFilterGroupTimes[] = {{48, 204},  {208, 392}, {216, 424}, {224, 456}, {232, 488},
                                                 {240, 520}, {248, 552}, {256, 584}, {264, 616}};
constexpr FilterTimePlace kFilterEntryTime = {8, 8};

/// Year, month, day, hour, minute, second, millisecond.
using FilterTime = std::array<std::uint32_t, 7>;
void PutFilterTime(Bytes& bytes, std::size_t offset, const FilterTime& numbers);

// Each in four forms: in the store, with every field set and 0xFF wherever an export reads nothing, behind the NULs
// too; as an export writes it; from a desktop that leaves no byte zero; and what a recover hands to the store for
// either of these.

Bytes StoreFilterEntry();
Bytes ExchangeFilterEntry();
Bytes NoisyFilterEntry();
Bytes RecoveredFilterEntry();

/// With the first day of the week, and so with all seven.
Bytes StoreFilterGroup();
Bytes ExchangeFilterGroup();
Bytes NoisyFilterGroup();
Bytes RecoveredFilterGroup();

/// What a configuration may count, and how many of its numbers travel then.
constexpr std::pair<std::uint16_t, std::uint16_t> kFilterNumberCounts[] = {{0, 0}, {1, 1}, {3, 3},    {7, 7},
                                                                           {8, 8}, {9, 8}, {65535, 8}};
/// With what belongs to all eight numbers, whatever the count says.
Bytes StoreFilterConfig(std::uint16_t count = 8);
Bytes NoisyFilterConfig(std::uint16_t count = 8);
/// With what belongs to the first `count` numbers.
Bytes ExchangeFilterConfig(std::uint16_t count = 8);
Bytes RecoveredFilterConfig(std::uint16_t count = 8);

/// Exchange records that say no more than who they are, and which group they are in.
Bytes PlainFilterEntry(std::uint32_t id, std::uint32_t group = 0);
Bytes PlainFilterGroup(std::uint32_t id);
/// What an export writes for such records, whose times are the FILETIME 0: 1 January 1601.
Bytes PlainFilterEntryOfStore(std::uint32_t id);
Bytes PlainFilterGroupOfStore(std::uint32_t id);
/// Tables of such records from a desktop.
Bytes PlainFilterEntries(std::initializer_list<std::uint32_t> ids);
Bytes PlainFilterGroups(std::initializer_list<std::uint32_t> ids);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_CALL_FILTER_RECORDS_H
