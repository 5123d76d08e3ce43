// The record forms of the schedule: entries with their items, and groups.
#ifndef QV_MODULES_CALENDAR_SCHEDULE_LAYOUT_H
#define QV_MODULES_CALENDAR_SCHEDULE_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::schedule {

inline constexpr std::size_t kEntryStoreSize = 8680;
inline constexpr std::size_t kEntryExchangeSize = 912;
inline constexpr std::size_t kGroupStoreSize = 264;
inline constexpr std::size_t kGroupExchangeSize = 288;

// The fields that the module itself looks at.
inline constexpr layout::Slot kEntryId = layout::U32(0);
inline constexpr layout::Slot kEntryGroupId = layout::U32(4);
inline constexpr layout::Slot kGroupId = layout::U32(0);
/// What the store's insert and update of a group take as their last argument.
inline constexpr layout::Slot kGroupValue = layout::U16(250);

extern const layout::RecordLayout kEntryLayout;
extern const layout::RecordLayout kGroupLayout;

}  // namespace qv::schedule

#endif  // QV_MODULES_CALENDAR_SCHEDULE_LAYOUT_H
