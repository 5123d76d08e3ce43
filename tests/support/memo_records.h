// Graphic memos written out by hand, as the store holds them and as they travel. Nothing here comes from the agent's
// field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_MEMO_RECORDS_H
#define QV_TESTS_SUPPORT_MEMO_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the graphic memo's files lie on the handset of a behaviour test.
constexpr char16_t kMemoTable[] = u"\\sync\\gmemoinfo.tbl";
constexpr char16_t kMemoChanges[] = u"\\sync\\gmemocmd.tbl";
constexpr char16_t kMemoIdMap[] = u"\\sync\\gmemomap.tbl";
constexpr char16_t kMemoLog[] = u"\\dbdata\\sysconfig\\gmemo.log";

constexpr std::uint32_t kMemoId = 0xB4A1A2A3;

/// A memo in the store: every field set, and 0xFF wherever an export reads nothing, behind the NULs too.
Bytes StoreMemo();
/// The same memo as an export writes it.
Bytes ExchangeMemo();
/// The same memo from a desktop that leaves no byte zero.
Bytes NoisyMemo();
/// What a recover hands to the store for either.
Bytes RecoveredMemo();

/// An exchange record that says no more than who it is.
Bytes PlainMemo(std::uint32_t id);
/// What a recover hands to the store for it.
Bytes RecoveredPlainMemo(std::uint32_t id);
}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_MEMO_RECORDS_H
