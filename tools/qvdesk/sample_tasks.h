// Tasks as a person might have them: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_TASKS_H
#define QV_TOOLS_QVDESK_SAMPLE_TASKS_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleTasks {
  std::uint32_t tasks;
  std::uint32_t groups;
};

/// Fills the tasks' tables of the running handset's database.
void InsertSampleTasks(stores::Database& database, const SampleTasks& count, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_TASKS_H
