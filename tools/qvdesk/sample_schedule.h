// A schedule as a person might have it: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_SCHEDULE_H
#define QV_TOOLS_QVDESK_SAMPLE_SCHEDULE_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleSchedule {
  std::uint32_t entries;
  std::uint32_t groups;
};

/// Fills the schedule's tables of the running handset's database.
void InsertSampleSchedule(stores::Database& database, const SampleSchedule& count, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_SCHEDULE_H
