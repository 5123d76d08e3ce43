// The agenda's two tables of records in the database, for its store library and for tools that create data. The
// entries' long items are in agenda_database.h.
#ifndef QV_HOST_STORES_AGENDA_KINDS_H
#define QV_HOST_STORES_AGENDA_KINDS_H

#include <string_view>

#include "host/stores/record_store.h"

namespace stores {

// Settings by which a person or a test has AgendaStore.dll take no entry or no group.
inline constexpr std::string_view kAgendaAddRefusal = "agenda_add_refusal";
inline constexpr std::string_view kAgendaGroupAddRefusal = "agenda_group_add_refusal";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// By table number: entries, as far as they are records, and groups.
extern const KindDescription kAgendaKinds[2];
inline constexpr std::size_t kAgendaEntries = 0;
inline constexpr std::size_t kAgendaGroups = 1;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_AGENDA_KINDS_H
