// Agenda entries and their groups written out by hand, as the store holds them and as they travel. Nothing here comes
// from the agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_AGENDA_RECORDS_H
#define QV_TESTS_SUPPORT_AGENDA_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the agenda's files lie on the handset of a behaviour test.
constexpr char16_t kAgenda[] = u"\\sync\\agenda.tbl";
constexpr char16_t kAgendaGroups[] = u"\\sync\\agendagroup.tbl";
constexpr char16_t kAgendaChanges[] = u"\\sync\\agendacmd.tbl";
constexpr char16_t kAgendaIdMap[] = u"\\sync\\agendamap.tbl";
constexpr char16_t kAgendaLog[] = u"\\dbdata\\sysconfig\\ageninfo.log";
constexpr char16_t kAgendaGroupLog[] = u"\\dbdata\\sysconfig\\agengroup.log";

// Sizes.
constexpr std::size_t kAgendaInStore = 4372;
constexpr std::size_t kAgendaFixedPart = 288;  ///< Of an exchange record.
constexpr std::size_t kAgendaItem = 80;        ///< In an exchange record.
constexpr std::size_t kAgendaSlot = 208;       ///< The same item in the store.
constexpr std::size_t kLongItem = 3928;        ///< In an exchange record.
constexpr std::size_t kLongItemInStore = 5128;
constexpr std::size_t kMostAgendaItems = 20;
constexpr std::size_t kMostLongItems = 50;
constexpr std::size_t kAgendaGroupSize = 288;  ///< On both sides.

// Places in a store record.
constexpr std::size_t kAgendaGroupPlace = 48;
constexpr std::size_t kAgendaItemCount = 192;
constexpr std::size_t kAgendaSlots = 204;
constexpr std::size_t kLongItemCount = 4368;

constexpr std::uint32_t kAgendaId = 0xA4A1A2A3;
constexpr std::uint32_t kAgendaGroup = 79;

/// An entry in the store: every field set, other bytes than zero wherever no field lies, two items, and three long ones
/// in its area.
Bytes StoreAgendaEntry();
Bytes StoreAgendaArea();
/// The same entry as an export writes it under kAgendaId.
Bytes ExchangeAgendaEntry();
/// The same entry from a desktop that leaves no byte zero: what lies between the fields and behind a text's NUL, and
/// what exceeds a number's place in the store, says nothing.
Bytes NoisyAgendaEntry();
/// What a recover hands to the store for either, before the group is translated.
Bytes RecoveredAgendaEntry();
Bytes RecoveredAgendaArea();

/// An entry that says no more than who it is and which group it is in; and what a recover makes of it.
Bytes PlainAgendaEntry(std::uint32_t id, std::uint32_t group = 0);
Bytes RecoveredPlainAgendaEntry(std::uint32_t id, std::uint32_t group = 0);

/// An exchange record of such an entry with these items behind it.
Bytes AgendaEntryOf(std::uint32_t id, const Bytes& items, const Bytes& long_items = {});

/// A group, which is the same on both sides.
Bytes AgendaGroup(std::uint32_t id);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_AGENDA_RECORDS_H
