// Business cards and hand-drawn memos as a person might have them: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_ORGANIZER_H
#define QV_TOOLS_QVDESK_SAMPLE_ORGANIZER_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleOrganizer {
  std::uint32_t cards;
  std::uint32_t memos;
};

/// Fills the tables of the running handset's database.
void InsertSampleOrganizer(stores::Database& database, const SampleOrganizer& count, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_ORGANIZER_H
