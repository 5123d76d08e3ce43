// The names; the columns are the structures' own.
#include "host/stores/settings_kinds.h"

#include "modules/settings/settings_layout.h"

namespace stores {

constinit const KindDescription kProfileKind = {
    .table = "profiles", .layout = qv::settings::kProfileLayout, .says_id = false};
constinit const KindDescription kDisplayKind = {
    .table = "display_settings", .layout = qv::settings::kDisplayLayout, .says_id = false};
constinit const KindDescription kBrowserKind = {
    .table = "browser_settings", .layout = qv::settings::kBrowserLayout, .says_id = false};
constinit const KindDescription kAlarmKind = {
    .table = "alarms", .layout = qv::settings::kAlarmLayout, .says_id = false};
constinit const KindDescription kClockNameKind = {
    .table = "clock_names", .layout = qv::settings::kClockNameLayout, .says_id = false, .first_id = 0};

}  // namespace stores
