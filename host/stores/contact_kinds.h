// The contacts' two tables of records in the database, for their store library and for tools that create data. What
// else belongs to contacts is in contact_database.h.
#ifndef QV_HOST_STORES_CONTACT_KINDS_H
#define QV_HOST_STORES_CONTACT_KINDS_H

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

/// By table number: contacts and groups.
extern const KindDescription kContactKinds[2];
inline constexpr std::size_t kContacts = 0;
inline constexpr std::size_t kContactGroups = 1;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_CONTACT_KINDS_H
