// The names and the arguments; the columns are the record forms' own.
#include "host/stores/schedule_kinds.h"

#include "modules/calendar/schedule_layout.h"

namespace stores {

constinit const KindDescription kScheduleKinds[2] = {
    {.table = "schedule_entries", .layout = qv::schedule::kEntryLayout, .argument = qv::schedule::kEntryGroupId},
    {.table = "schedule_groups", .layout = qv::schedule::kGroupLayout, .argument = qv::schedule::kGroupValue},
};

}  // namespace stores
