// A unified mailbox as a person might have it: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_UNIFIED_MAIL_H
#define QV_TOOLS_QVDESK_SAMPLE_UNIFIED_MAIL_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

/// Fills the unified mail's tables of the running handset's database; every third of the mails was sent. Folders and
/// rules are there without mails too.
void InsertSampleUnifiedMail(stores::Database& database, std::uint32_t mails, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_UNIFIED_MAIL_H
