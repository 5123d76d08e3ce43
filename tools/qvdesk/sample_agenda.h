// An agenda as a person might have it: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_AGENDA_H
#define QV_TOOLS_QVDESK_SAMPLE_AGENDA_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleAgenda {
  std::uint32_t entries;
  std::uint32_t groups;
};

/// Fills the agenda's tables of the running handset's database.
void InsertSampleAgenda(stores::Database& database, const SampleAgenda& count, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_AGENDA_H
