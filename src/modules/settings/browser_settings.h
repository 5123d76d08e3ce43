// Module 15, the browser's settings, kept by BrowserSettings.dll: one structure in one file. Mode and anchor mean
// nothing here.
#ifndef QV_MODULES_SETTINGS_BROWSER_SETTINGS_H
#define QV_MODULES_SETTINGS_BROWSER_SETTINGS_H

#include "modules/settings/settings_layout.h"
#include "sync/form_rules.h"
#include "sync/module_names.h"
#include "sync/result.h"

namespace qv::settings {

inline constexpr TableNames kBrowserTables[] = {{.exchange_file = u"iesetinfo.tbl", .layout = &kBrowserLayout}};
inline constexpr ModuleNames kBrowserModule = {.store_library = u"BrowserSettings.dll", .tables = kBrowserTables};

inline constexpr char16_t kBackUpBrowser[] = u"fnIESetting_Backup";
inline constexpr char16_t kRestoreBrowser[] = u"fnIESetting_Restore";

inline constexpr RuleWords kBrowserRules[] = {{&kBrowserLayout, kOneStructureRule}};

/// kOk, or 1 for whatever failed. What the store answers is not looked at.
Result ExportBrowser(const void* directory);
/// 1 in every case: callers have never been told more. The file is deleted once it was applied.
Result RecoverBrowser(const void* directory);

}  // namespace qv::settings

#endif  // QV_MODULES_SETTINGS_BROWSER_SETTINGS_H
