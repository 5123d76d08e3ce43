// E-mail as a person might have it: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_MAIL_H
#define QV_TOOLS_QVDESK_SAMPLE_MAIL_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

/// Fills the tables of the running handset's database, and puts each message into its file. Two accounts with folders,
/// filters and configurations are there without messages too. The second message lies on the storage card; the third is
/// one whose file is missing.
void InsertSampleMail(stores::Database& database, std::uint32_t messages, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_MAIL_H
