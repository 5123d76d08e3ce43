// Business cards written out by hand, as the store holds them and as they travel. Nothing here comes from the agent's
// field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_CARD_RECORDS_H
#define QV_TESTS_SUPPORT_CARD_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the card reader's files lie on the handset of a behaviour test.
constexpr char16_t kCardTable[] = u"\\sync\\cardreader.tbl";
constexpr char16_t kCardChanges[] = u"\\sync\\cardcmd.tbl";
constexpr char16_t kCardIdMap[] = u"\\sync\\cardmap.tbl";
constexpr char16_t kCardLog[] = u"\\dbdata\\sysconfig\\cardreader.log";

constexpr std::uint32_t kCardId = 0xC4A1A2A3;

/// A card in the store: every field set, and 0xFF wherever an export reads nothing, behind the NULs too.
Bytes StoreCard();
/// The same card as an export writes it.
Bytes ExchangeCard();
/// The same card from a desktop that leaves no byte zero.
Bytes NoisyCard();
/// What a recover hands to the store for either.
Bytes RecoveredCard();

/// An exchange record that says no more than who it is.
Bytes PlainCard(std::uint32_t id);
/// What a recover hands to the store for it.
Bytes RecoveredPlainCard(std::uint32_t id);
}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_CARD_RECORDS_H
