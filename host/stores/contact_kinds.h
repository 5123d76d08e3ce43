// The contacts' two tables of records in the database, for their store library and for tools that create data. What
// else belongs to contacts is in contact_database.h.
#ifndef QV_HOST_STORES_CONTACT_KINDS_H
#define QV_HOST_STORES_CONTACT_KINDS_H

#include <string_view>

#include "host/stores/record_store.h"

namespace stores {

// Settings by which a person or a test has ContactStore.dll take no contact or no group.
inline constexpr std::string_view kContactAddRefusal = "contact_add_refusal";
inline constexpr std::string_view kGroupAddRefusal = "group_add_refusal";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// By table number: contacts and groups.
extern const KindDescription kContactKinds[2];
inline constexpr std::size_t kContacts = 0;
inline constexpr std::size_t kContactGroups = 1;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_CONTACT_KINDS_H
