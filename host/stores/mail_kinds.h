// The e-mail database's eight tables of records, for its store library and for tools that create data. What belongs
// together among them, and the messages' files, are mail_database.h's.
#ifndef QV_HOST_STORES_MAIL_KINDS_H
#define QV_HOST_STORES_MAIL_KINDS_H

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

// By table number, in the order in which the library's callers fetch them. The records are nodes of its lists.
inline constexpr std::size_t kMailAccounts = 0;
inline constexpr std::size_t kMailConfigs = 1;
inline constexpr std::size_t kMailFilters = 2;
inline constexpr std::size_t kMailFilterContacts = 3;
inline constexpr std::size_t kMailFolders = 4;
inline constexpr std::size_t kMailUidls = 5;
inline constexpr std::size_t kMailMessages = 6;
inline constexpr std::size_t kMailAddresses = 7;
inline constexpr std::size_t kMailTables = 8;

extern const KindDescription kMailKinds[kMailTables];

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_MAIL_KINDS_H
