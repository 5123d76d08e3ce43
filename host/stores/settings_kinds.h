// The settings' tables in the database, for their store libraries and for tools that create data. Their rows are
// places: settings_table.h.
#ifndef QV_HOST_STORES_SETTINGS_KINDS_H
#define QV_HOST_STORES_SETTINGS_KINDS_H

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

extern const KindDescription kProfileKind;  ///< 1 to 6.
extern const KindDescription kDisplayKind;  ///< 1.
extern const KindDescription kBrowserKind;  ///< 1.
extern const KindDescription kAlarmKind;    ///< 1 to 6.
/// 0 to 8, as the exchange file counts them.
extern const KindDescription kClockNameKind;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_SETTINGS_KINDS_H
