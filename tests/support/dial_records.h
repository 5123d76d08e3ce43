// Quick dial entries written out by hand, as the store holds them and as they travel. Nothing here comes from the
// agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_DIAL_RECORDS_H
#define QV_TESTS_SUPPORT_DIAL_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the quick dial's files lie on the handset of a behaviour test.
constexpr char16_t kDialTable[] = u"\\sync\\Quickinfo.tbl";
constexpr char16_t kDialChanges[] = u"\\sync\\Quickcmd.tbl";
constexpr char16_t kDialIdMap[] = u"\\sync\\Quickmap.tbl";
constexpr char16_t kDialLog[] = u"\\dbdata\\sysconfig\\quickinfo.log";

constexpr std::uint32_t kDialId = 0xD4A1A2A3;

/// An entry in the store: every field set, and 0xFF wherever an export reads nothing, behind the NULs too.
Bytes StoreDial();
/// The same entry as an export writes it.
Bytes ExchangeDial();
/// The same entry from a desktop that leaves no byte zero, and has another id where a recover does not look.
Bytes NoisyDial();
/// What a recover hands to the store for either.
Bytes RecoveredDial();

/// An exchange record that says no more than who it is.
Bytes PlainDial(std::uint32_t id);
/// What a recover hands to the store for it.
Bytes RecoveredPlainDial(std::uint32_t id);
}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_DIAL_RECORDS_H
