// Short and multimedia messages and calls as a person might have them: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_MESSAGES_H
#define QV_TOOLS_QVDESK_SAMPLE_MESSAGES_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleMessages {
  std::uint32_t short_messages;
  std::uint32_t multimedia_messages;
  std::uint32_t calls;
};

/// Fills the tables of the running handset's database. The folders for short messages, and the configurations, are
/// there without messages too.
void InsertSampleMessages(stores::Database& database, const SampleMessages& count, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_MESSAGES_H
