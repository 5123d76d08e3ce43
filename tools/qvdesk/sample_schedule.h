// A schedule as a person might have it: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_SCHEDULE_H
#define QV_TOOLS_QVDESK_SAMPLE_SCHEDULE_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleSize {
  std::uint32_t records;
  std::uint32_t groups;
  std::uint32_t seed;
};

/// Fills the schedule's tables of the running handset's database.
void InsertSampleSchedule(stores::Database& database, const SampleSize& size);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_SCHEDULE_H
