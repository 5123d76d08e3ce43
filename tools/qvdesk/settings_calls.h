// What the agent asks of the settings' stores, in words: their functions have nothing in common with those of records.
#ifndef QV_TOOLS_QVDESK_SETTINGS_CALLS_H
#define QV_TOOLS_QVDESK_SETTINGS_CALLS_H

#include "modules/settings/browser_settings.h"
#include "modules/settings/clock_settings.h"
#include "modules/settings/personal_settings.h"
#include "tools/qvdesk/catalog.h"

namespace qvdesk {

inline constexpr CallWords kPersonalCallWords[] = {
    {"export, each profile", nullptr, "int index, profile* out", "not looked at", qv::settings::kBackUpProfile},
    {"export", nullptr, "display* out", "not looked at", qv::settings::kBackUpDisplay},
    {"recover, each profile", nullptr, "int index, profile by value", "not looked at", qv::settings::kRestoreProfile},
    {"recover", nullptr, "display by value", "not looked at", qv::settings::kRestoreDisplay},
};

inline constexpr CallWords kBrowserCallWords[] = {
    {"export", nullptr, "settings* out", "not looked at", qv::settings::kBackUpBrowser},
    {"recover", nullptr, "const settings*", "not looked at", qv::settings::kRestoreBrowser},
};

inline constexpr CallWords kClockCallWords[] = {
    {"export", nullptr, "clock* out", "1", qv::settings::kGetClock},
    {"recover", nullptr, "const clock*", "1", qv::settings::kUpdateClock},
};

inline constexpr OwnCalls kPersonalCalls = {"Profiles are numbered from 1 to 6. Structures are as FORMATS has them.",
                                            kPersonalCallWords};
inline constexpr OwnCalls kBrowserCalls = {"The structure is as FORMATS has it.", kBrowserCallWords};
inline constexpr OwnCalls kClockCalls = {
    "The structure is six alarms and nine names behind them, as FORMATS has them, and two bytes that say nothing.",
    kClockCallWords};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SETTINGS_CALLS_H
