// Module 6, the e-mail database: accounts with their configurations, filters, folders and UIDLs, messages with their
// addresses, and the files that hold the messages themselves. Kept by MailStore.dll, whose class the agent imports.
//
// Nothing here follows the procedure of the other modules: an export is always a full one, there is no anchor, change
// list, id map or snapshot, and no failure has a number. What cannot be had is passed over, and the rest goes on.
#ifndef QV_MODULES_MAIL_MAIL_H
#define QV_MODULES_MAIL_MAIL_H

#include "modules/mail/mail_layout.h"
#include "sync/form_rules.h"
#include "sync/module_names.h"
#include "sync/result.h"

namespace qv::mail {

// The names begin with a separator of their own, so that paths hold two, which is one to the system.
inline constexpr TableNames kUserTable = {.exchange_file = u"\\mailuser.tbl", .layout = &kUserLayout};
inline constexpr TableNames kConfigTable = {.exchange_file = u"\\mailconfig.tbl", .layout = &kConfigLayout};
inline constexpr TableNames kFilterTable = {.exchange_file = u"\\mailfilter.tbl", .layout = &kFilterLayout};
inline constexpr TableNames kContactTable = {.exchange_file = u"\\maillinkman.tbl", .layout = &kContactLayout};
inline constexpr TableNames kFolderTable = {.exchange_file = u"\\mailfolder.tbl", .layout = &kFolderLayout};
inline constexpr TableNames kUidlTable = {.exchange_file = u"\\mailuidl.tbl", .layout = &kUidlLayout};
inline constexpr TableNames kHeaderTable = {.exchange_file = u"\\mailhead.tbl", .layout = &kHeaderLayout};
inline constexpr TableNames kAddressTable = {.exchange_file = u"\\mailaddress.tbl", .layout = &kAddressLayout};

/// In the order of an export.
inline constexpr TableNames kTables[] = {kUserTable,   kConfigTable, kFilterTable, kContactTable,
                                         kFolderTable, kUidlTable,   kHeaderTable, kAddressTable};

inline constexpr ModuleNames kNames = {
    .store_library = u"MailStore.dll",
    .tables = kTables,
};

/// What a message's file is called in the exchange directory; and its paths on the handset and on its storage card.
inline constexpr char16_t kMessageFile[] = u"%d.eml";
inline constexpr char16_t kMessagePath[] = u"\\dbdata\\mail\\file\\%d.eml";
inline constexpr char16_t kMessagePathOnCard[] = u"\\SD\\mail\\file\\%d.eml";

inline constexpr const char* kPlaceNotRestored[] = {"on_card", "path"};

inline constexpr RuleWords kRules[] = {
    {&kHeaderLayout,
     "path: where the message's file lies on the handset, \\SD\\mail\\file\\N.eml when on_card is not 0, and "
     "\\dbdata\\mail\\file\\N.eml otherwise, N being the message's id. A recover does not read it, and leaves on_card "
     "0.",
     kPlaceNotRestored},
    {&kHeaderLayout, "The message itself travels beside the tables as the file N.eml."},
    {&kAddressLayout, "A recover looks addresses up by the low 8 bits of a message's id."},
    {&kConfigLayout,
     "A record that the end of the file cuts off is not applied; in the other tables what is missing of it reads as "
     "zero."},
};

/// Always kOk. Nothing is written when there is no memory, or when the directory (UTF-16LE of any alignment) is too
/// long.
Result Export(const void* directory);

/// The number of messages handed to the store, whatever it said of them. 0 when a table cannot be taken, and when
/// reading the accounts fails, whatever was handed over before. Each other table is deleted as soon as it is held, so a
/// recover that stops leaves only the accounts and what was not held.
Result Recover(const void* directory);

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_MAIL_H
