// The names and the arguments; the columns are the record forms' own.
#include "host/stores/task_kinds.h"

#include "modules/calendar/tasks_layout.h"

namespace stores {

constinit const KindDescription kTaskKinds[2] = {
    {.table = "tasks",
     .layout = qv::tasks::kTaskLayout,
     .argument = qv::tasks::kTaskGroupId,
     .insert_refusal = kTaskAddRefusal},
    {.table = "task_groups",
     .layout = qv::tasks::kGroupLayout,
     .argument = qv::tasks::kGroupValue,
     .insert_refusal = kTaskGroupAddRefusal},
};

}  // namespace stores
