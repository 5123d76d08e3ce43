// The card reader's and the graphic memo's tables in the database, for their store libraries and for tools that create
// data.
#ifndef QV_HOST_STORES_ORGANIZER_KINDS_H
#define QV_HOST_STORES_ORGANIZER_KINDS_H

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

extern const KindDescription kCardKinds[1];
extern const KindDescription kMemoKinds[1];

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_ORGANIZER_KINDS_H
