// The names; the columns are the record forms' own.
#include "host/stores/agenda_kinds.h"

#include "modules/calendar/agenda_layout.h"

namespace stores {

constinit const KindDescription kAgendaKinds[2] = {
    {.table = "agenda_entries", .layout = qv::agenda::kEntryLayout, .insert_refusal = kAgendaAddRefusal},
    {.table = "agenda_groups", .layout = qv::agenda::kGroupLayout, .insert_refusal = kAgendaGroupAddRefusal},
};

}  // namespace stores
