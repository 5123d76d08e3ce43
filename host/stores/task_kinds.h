// The tasks' two tables in the database, for their store library and for tools that create data.
#ifndef QV_HOST_STORES_TASK_KINDS_H
#define QV_HOST_STORES_TASK_KINDS_H

#include <string_view>

#include "host/stores/record_store.h"

namespace stores {

// Settings by which a person or a test has TodoStore.dll take no task or no group.
inline constexpr std::string_view kTaskAddRefusal = "task_add_refusal";
inline constexpr std::string_view kTaskGroupAddRefusal = "task_group_add_refusal";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// By table number: tasks, whose last argument is the group they belong to, and groups.
extern const KindDescription kTaskKinds[2];
inline constexpr std::size_t kTasks = 0;
inline constexpr std::size_t kTaskGroups = 1;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_TASK_KINDS_H
