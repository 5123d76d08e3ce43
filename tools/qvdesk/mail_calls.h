// What the agent asks of the e-mail database's library, in words: its members have no table like the functions of other
// stores. That they are called so the compiler checks.
#ifndef QV_TOOLS_QVDESK_MAIL_CALLS_H
#define QV_TOOLS_QVDESK_MAIL_CALLS_H

#include "platform/mail_store.h"
#include "tools/qvdesk/catalog.h"

namespace qvdesk {

#define QV_MEMBER(name) (static_cast<void>(sizeof(&mail_store::name)), #name)

inline constexpr CallWords kMailCallWords[] = {
    {"beginning", "CMailDBSync", "", "none"},
    {"beginning", QV_MEMBER(InitCEDB), "", "not looked at"},
    {"export", QV_MEMBER(Sync_GetUserInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetConfigInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetFilterInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetLinkManInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetFolderInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetUIDLInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetMailHeaderInfo), "long* head, long* count", "not looked at"},
    {"export", QV_MEMBER(Sync_GetMailAddressInfo), "long* head, long* count", "not looked at"},
    {"recover, each account", QV_MEMBER(Sync_SetUserInfo), "account, configuration, int* newId", "0 and above"},
    {"recover, its UIDLs", QV_MEMBER(Sync_SetUIDLInfo), "UIDLs, int account", "0 and above"},
    {"recover, each filter of the whole account", QV_MEMBER(Sync_SetFilterInfo), "filter, null, int account, int 0",
     "0 and above"},
    {"recover, when the account was there", QV_MEMBER(Sync_QueryHeaderByUserId), "headers* out, int account",
     "not looked at"},
    {"recover, each folder", QV_MEMBER(Sync_SetFolderInfo), "folder, int account, int* newId", "0 and above"},
    {"recover, each filter of the folder", QV_MEMBER(Sync_SetFilterInfo),
     "filter, contacts or null, int account, int 0", "0 and above"},
    {"recover, each message of the folder", QV_MEMBER(Sync_SetMailInfo), "header, addresses, long size, char* body",
     "0 and above"},
    {"end", QV_MEMBER(CloseCEDB), "", "not looked at"},
    {"end", QV_MEMBER(DisConnectDB), "", "not looked at"},
    {"end", "scalar deleting destructor", "int 1", "not looked at"},
};

#undef QV_MEMBER

inline constexpr OwnCalls kMailCalls = {
    "The members of the class `CMailDBSync`, in the order in which they are called; the first argument of each is the\n"
    "object. Lists are of nodes, whose last four bytes are the pointer to the next one.",
    kMailCallWords};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_MAIL_CALLS_H
