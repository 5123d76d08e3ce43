// An address book as a person might have it: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_CONTACTS_H
#define QV_TOOLS_QVDESK_SAMPLE_CONTACTS_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

/// Fills the contacts' tables of the running handset's database: contacts, groups and who belongs to them, pictures.
/// There are no groups without contacts.
void InsertSampleContacts(stores::Database& database, std::uint32_t contacts, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_CONTACTS_H
