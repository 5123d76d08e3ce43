// The sixteen kinds of data, and what each entry point tells its caller of a module's result. Desktops and handset
// programs count on every cell, the dropped ones included.
#ifndef QV_ENTRY_MODULE_TABLE_H
#define QV_ENTRY_MODULE_TABLE_H

#include <cstdint>

namespace qv {

/// What an entry point does with a module's result.
enum class Report : std::uint8_t {
  kKept,     ///< Reported, with the entry point's flag.
  kDropped,  ///< 0, whatever the module returned.
  kRaw,      ///< Reported without the flag.
};

struct ModuleRow {
  std::int32_t id;
  const char* name;  ///< What people call the module.
  const char* data;
  Report desktop_export;   ///< fnQV_ExportTabs
  Report desktop_recover;  ///< fnQV_RecovTabs
  Report local_export;     ///< qv_ExportTabs
  Report local_recover;    ///< qv_RecovTabs
};

inline constexpr ModuleRow kModuleTable[] = {
    {1, "contacts", "contacts, groups, pictures", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {2, "schedule", "schedule", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {3, "tasks", "tasks", Report::kDropped, Report::kDropped, Report::kDropped, Report::kDropped},
    {4, "agenda", "agenda", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {5, "unified-mail", "unified mail", Report::kDropped, Report::kDropped, Report::kDropped, Report::kDropped},
    {6, "e-mail", "e-mail database", Report::kDropped, Report::kDropped, Report::kDropped, Report::kRaw},
    {7, "card-reader", "business-card reader records", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {8, "sms", "SMS", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {9, "call-history", "call history", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {10, "quick-dial", "quick dial", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {11, "call-filter", "red/black call-filter list", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {12, "mms", "MMS", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {13, "graphic-memo", "graphic memo", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
    {14, "personal-settings", "personal settings", Report::kDropped, Report::kKept, Report::kKept, Report::kDropped},
    {15, "browser-settings", "browser settings", Report::kDropped, Report::kDropped, Report::kKept, Report::kDropped},
    {16, "clock-settings", "clock and alarm settings", Report::kKept, Report::kKept, Report::kKept, Report::kKept},
};

}  // namespace qv

#endif  // QV_ENTRY_MODULE_TABLE_H
