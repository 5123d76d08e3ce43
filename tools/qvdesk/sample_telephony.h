// Speed-dial keys and a call filter as a person might have them: made up, but the same for the same seed.
#ifndef QV_TOOLS_QVDESK_SAMPLE_TELEPHONY_H
#define QV_TOOLS_QVDESK_SAMPLE_TELEPHONY_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

struct SampleTelephony {
  std::uint32_t quick_dials;
  std::uint32_t filters;
};

/// Fills the tables of the running handset's database. The call filter's groups, the fixed one among them, and its
/// configuration come with the first filter.
void InsertSampleTelephony(stores::Database& database, const SampleTelephony& count, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_TELEPHONY_H
