// Calls written out by hand, as the store holds them and as they travel. Nothing here comes from the agent's field
// tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_CALL_RECORDS_H
#define QV_TESTS_SUPPORT_CALL_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the call history's files lie on the handset of a behaviour test.
constexpr char16_t kCallTable[] = u"\\sync\\callinfo.tbl";
constexpr char16_t kCallChanges[] = u"\\sync\\callcmd.tbl";
constexpr char16_t kCallIdMap[] = u"\\sync\\callmap.tbl";
constexpr char16_t kCallLog[] = u"\\dbdata\\sysconfig\\recordcall.log";

constexpr std::uint32_t kCallId = 0xE4A1A2A3;

/// A call in the store: every field set, and 0xFF wherever an export reads nothing, behind the NULs too.
Bytes StoreCall();
/// The same call as an export writes it.
Bytes ExchangeCall();
/// The same call from a desktop that leaves no byte zero.
Bytes NoisyCall();
/// What a recover hands to the store for either.
Bytes RecoveredCall();

/// An exchange record that says no more than who it is.
Bytes PlainCall(std::uint32_t id);
/// What a recover hands to the store for it.
Bytes RecoveredPlainCall(std::uint32_t id);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_CALL_RECORDS_H
