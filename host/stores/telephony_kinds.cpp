// The names and the lists; the columns are the record forms' own.
#include "host/stores/telephony_kinds.h"

#include "modules/telephony/call_filter.h"
#include "modules/telephony/quick_dial.h"

namespace stores {

constinit const KindDescription kQuickDialKinds[1] = {
    {.table = "quick_dials", .layout = qv::quick_dial::kEntryLayout, .list = qv::quick_dial::kTableFacts[0].sync_info}};

constinit const KindDescription kCallFilterKinds[2] = {
    {.table = "call_filter_entries",
     .layout = qv::call_filter::kEntryLayout,
     .list = qv::call_filter::kTableFacts[0].sync_info},
    {.table = "call_filter_groups",
     .layout = qv::call_filter::kGroupLayout,
     .list = qv::call_filter::kTableFacts[0].sync_info},
};

constinit const KindDescription kCallFilterConfigKind = {
    .table = "call_filter_config", .layout = qv::call_filter::kConfigLayout, .says_id = false};

}  // namespace stores
