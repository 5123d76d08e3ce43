// The messages' and the calls' tables of records in the database, for their store libraries and for tools that create
// data. What else belongs to messages is in sms_database.h and mms_database.h.
#ifndef QV_HOST_STORES_MESSAGE_KINDS_H
#define QV_HOST_STORES_MESSAGE_KINDS_H

#include "host/stores/record_store.h"
#include "modules/messaging/sms_layout.h"

#pragma GCC visibility push(default)

namespace stores {

extern const KindDescription kSmsKind;
/// The sections of the short messages' configuration in their order.
extern const KindDescription kSmsSectionKinds[qv::sms::kSections];
/// As far as a multimedia message is a record: text and data are columns of their own.
extern const KindDescription kMmsKind;
extern const KindDescription kCallKinds[1];

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_MESSAGE_KINDS_H
