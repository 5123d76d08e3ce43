// The record forms of the tasks: tasks with their items, and groups.
#ifndef QV_MODULES_CALENDAR_TASKS_LAYOUT_H
#define QV_MODULES_CALENDAR_TASKS_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::tasks {

inline constexpr std::size_t kTaskStoreSize = 34696;
inline constexpr std::size_t kTaskExchangeSize = 856;  ///< Without the items.
inline constexpr std::size_t kGroupSize = 288;         ///< On both sides.

inline constexpr layout::Slot kTaskId = layout::U32(0);
inline constexpr layout::Slot kTaskGroupId = layout::U32(4);
/// What the store's insert and update of a group take as their last argument.
inline constexpr layout::Slot kGroupValue = layout::U16(250);

extern const layout::RecordLayout kTaskLayout;
extern const layout::RecordLayout kGroupLayout;

}  // namespace qv::tasks

#endif  // QV_MODULES_CALENDAR_TASKS_LAYOUT_H
