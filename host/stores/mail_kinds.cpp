// The names; the columns are the record forms' own. What belongs to another record has no id that it says.
#include "host/stores/mail_kinds.h"

#include "modules/mail/mail_layout.h"

namespace stores {

constinit const KindDescription kMailKinds[kMailTables] = {
    {.table = "mail_accounts", .layout = qv::mail::kUserLayout},
    {.table = "mail_configs", .layout = qv::mail::kConfigLayout, .says_id = false},
    {.table = "mail_filters", .layout = qv::mail::kFilterLayout},
    {.table = "mail_filter_contacts", .layout = qv::mail::kContactLayout, .says_id = false},
    {.table = "mail_folders", .layout = qv::mail::kFolderLayout},
    {.table = "mail_uidls", .layout = qv::mail::kUidlLayout, .says_id = false},
    {.table = "mail_messages", .layout = qv::mail::kHeaderLayout},
    {.table = "mail_addresses", .layout = qv::mail::kAddressLayout, .says_id = false},
};

}  // namespace stores
