// Module 16, the clock's settings: six alarms and nine names, kept by AlarmStore.dll as one structure. Mode and anchor
// mean nothing here.
#ifndef QV_MODULES_SETTINGS_CLOCK_SETTINGS_H
#define QV_MODULES_SETTINGS_CLOCK_SETTINGS_H

#include "modules/settings/settings_layout.h"
#include "sync/form_rules.h"
#include "sync/module_names.h"
#include "sync/result.h"

namespace qv::settings {

inline constexpr char16_t kClockFile[] = u"clockinfo.tbl";

/// The alarms stand at the beginning of the file, the names behind them.
inline constexpr TableNames kClockTables[] = {{.exchange_file = kClockFile, .layout = &kAlarmLayout},
                                              {.exchange_file = nullptr, .layout = &kClockNameLayout}};
inline constexpr ModuleNames kClockModule = {.store_library = u"AlarmStore.dll", .tables = kClockTables};

inline constexpr char16_t kGetClock[] = u"Sync_GetClockInfo";
inline constexpr char16_t kUpdateClock[] = u"Sync_UpdateClockInfo";

inline constexpr std::uint32_t kAlarmCount = 6;
inline constexpr std::uint32_t kClockNameCount = 9;
/// Bytes of the store's structure: the alarms, the names, and two without use.
inline constexpr std::size_t kClockSize = kAlarmCount * kAlarmSize + kClockNameCount * kClockNameSize + 2;

inline constexpr RuleWords kClockRules[] = {
    {&kAlarmLayout,
     "repeat_mode: 1 for 0x100 in repeat_flags, else 2 for 0x80, else 3 for any of the seven lowest bits, which then "
     "are "
     "the days, bit 0 first; 0 otherwise. A recover takes only days that are 1, and only in mode 3."},
    {&kClockNameLayout,
     "index: the place that the name goes to, 0 to 8; an export writes them in order. A higher one refuses the whole "
     "file."},
    {&kClockNameLayout,
     "A recover leaves the file. An empty one changes nothing; what a shorter one lacks becomes zero in the store, as "
     "does a name that is not whole."},
};

/// kOk; kStoreNotLoaded; kFileFailed; kEntryPointMissing, kReadFailed and kNoMemory, which leave an empty file.
Result ExportClock(const void* directory);
/// The file stays. kOk, also for an empty file, which changes nothing; kStoreNotLoaded; kFileFailed; kNoMemory;
/// kFileUnreadable, also for a name without a place; kEntryPointMissing; kUpdateFailed.
Result RecoverClock(const void* directory);

}  // namespace qv::settings

#endif  // QV_MODULES_SETTINGS_CLOCK_SETTINGS_H
