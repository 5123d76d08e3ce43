// The names and the times; the columns are the record forms' own, but for the multimedia messages, which have none in
// their store.
#include "host/stores/message_kinds.h"

#include "modules/messaging/call_history_layout.h"
#include "modules/messaging/sms.h"
#include "modules/messaging/unified_mail_layout.h"

namespace stores {
namespace {

using qv::sms::kSectionLayouts;

constexpr qv::layout::Field kMmsFields[] = {
    qv::layout::Both("message_id", qv::layout::U32(0), {}),
    qv::layout::Both("value_12", qv::layout::U32(4), {}),
};
constexpr qv::layout::RecordLayout kMmsRecord = {"multimedia message", 8, 0, kMmsFields};

constexpr const char* kLongText = ",\n  text NOT NULL DEFAULT ''";
constexpr const char* kMmsBlocks = ",\n  text NOT NULL DEFAULT '',\n  data BLOB NOT NULL DEFAULT x''";

}  // namespace

constinit const KindDescription kSmsKind = {
    .table = "sms_messages", .layout = qv::sms::kMessageLayout, .list = qv::sms::kTableFacts[0].sync_info};

constinit const KindDescription kSmsSectionKinds[qv::sms::kSections] = {
    {.table = "sms_config_1", .layout = kSectionLayouts[0], .says_id = false},
    {.table = "sms_config_2", .layout = kSectionLayouts[1], .says_id = false},
    {.table = "sms_config_3", .layout = kSectionLayouts[2], .says_id = false},
    {.table = "sms_folders", .layout = kSectionLayouts[qv::sms::kFolders]},
    {.table = "sms_config_5", .layout = kSectionLayouts[4], .says_id = false},
};

constinit const KindDescription kMmsKind = {.table = "mms_messages", .layout = kMmsRecord, .more_columns = kMmsBlocks};

constinit const KindDescription kCallKinds[1] = {{.table = "calls", .layout = qv::call_history::kCallLayout}};

constinit const KindDescription kUnifiedMailKinds[2] = {
    {.table = "unified_mails_received",
     .layout = qv::unified_mail::kMailLayout,
     .insert_refusal = kUnifiedMailAddRefusal,
     .more_columns = kLongText},
    {.table = "unified_mails_sent",
     .layout = qv::unified_mail::kMailLayout,
     .insert_refusal = kUnifiedMailAddRefusal,
     .more_columns = kLongText},
};

constinit const KindDescription kUnifiedMailListKinds[3] = {
    {.table = "unified_mail_folders", .layout = qv::unified_mail::kFolderLayout, .says_id = false},
    {.table = "unified_mail_folder_rules", .layout = qv::unified_mail::kRuleLayout, .says_id = false},
    {.table = "unified_mail_sender_rules", .layout = qv::unified_mail::kRuleLayout, .says_id = false},
};

}  // namespace stores
