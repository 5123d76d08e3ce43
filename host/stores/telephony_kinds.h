// The quick dial's and the call filter's tables in the database, for their store libraries and for tools that create
// data.
#ifndef QV_HOST_STORES_TELEPHONY_KINDS_H
#define QV_HOST_STORES_TELEPHONY_KINDS_H

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

extern const KindDescription kQuickDialKinds[1];

/// By table number: entries and the groups that they belong to.
extern const KindDescription kCallFilterKinds[2];
inline constexpr std::size_t kCallFilterEntries = 0;
inline constexpr std::size_t kCallFilterGroups = 1;
/// Of one record at most.
extern const KindDescription kCallFilterConfigKind;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_TELEPHONY_KINDS_H
