// Module 14, the personal settings: the handset's six profiles and its display, kept by ProfileSettings.dll. Mode and
// anchor mean nothing here: an export is always a full one.
#ifndef QV_MODULES_SETTINGS_PERSONAL_SETTINGS_H
#define QV_MODULES_SETTINGS_PERSONAL_SETTINGS_H

#include "modules/settings/settings_layout.h"
#include "sync/form_rules.h"
#include "sync/module_names.h"
#include "sync/result.h"

namespace qv::settings {

inline constexpr TableNames kProfileTable = {.exchange_file = u"personinfo.tbl", .layout = &kProfileLayout};
inline constexpr TableNames kDisplayTable = {.exchange_file = u"dispinfo.tbl", .layout = &kDisplayLayout};
inline constexpr TableNames kPersonalTables[] = {kProfileTable, kDisplayTable};
inline constexpr ModuleNames kPersonalModule = {.store_library = u"ProfileSettings.dll", .tables = kPersonalTables};

inline constexpr char16_t kBackUpProfile[] = u"fnModelSetting_Backup";
inline constexpr char16_t kBackUpDisplay[] = u"fnDispSetting_Backup";
inline constexpr char16_t kRestoreProfile[] = u"fnModelSetting_Restore";
inline constexpr char16_t kRestoreDisplay[] = u"fnDispSetting_Restore";

/// Profiles are numbered from 1.
inline constexpr std::int32_t kProfileCount = 6;

inline constexpr RuleWords kPersonalRules[] = {
    {&kProfileLayout, "Six records, profiles 1 to 6. A recover takes those that are whole, then deletes the file."},
    {&kDisplayLayout, kOneStructureRule},
};

// kOk, or 1 for whatever failed: a store that does not load or lacks an entry point, a file, memory. What the store
// answers is not looked at.

/// A store without fnDispSetting_Backup gives the profiles alone, which is a failure too.
Result ExportPersonal(const void* directory);
/// Restores the profiles that the table has whole, then the display. Each table is deleted once it was applied.
Result RecoverPersonal(const void* directory);

}  // namespace qv::settings

#endif  // QV_MODULES_SETTINGS_PERSONAL_SETTINGS_H
