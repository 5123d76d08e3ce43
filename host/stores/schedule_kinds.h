// The schedule's two tables in the database, for its store library and for tools that create data.
#ifndef QV_HOST_STORES_SCHEDULE_KINDS_H
#define QV_HOST_STORES_SCHEDULE_KINDS_H

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

/// By table number: entries, whose last argument is the group they belong to, and groups.
extern const KindDescription kScheduleKinds[2];
inline constexpr std::size_t kScheduleEntries = 0;
inline constexpr std::size_t kScheduleGroups = 1;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_SCHEDULE_KINDS_H
