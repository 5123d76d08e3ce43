// Believable settings for a new handset: profiles, display, browser, alarms.
#ifndef QV_TOOLS_QVDESK_SAMPLE_SETTINGS_H
#define QV_TOOLS_QVDESK_SAMPLE_SETTINGS_H

#include <cstdint>

#include "host/stores/database.h"

namespace qvdesk {

/// The same seed makes the same settings.
void InsertSampleSettings(stores::Database& database, std::uint32_t seed);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_SETTINGS_H
