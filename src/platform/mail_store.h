// The class that MailStore.dll exports, as the agent imports it: the only store that is not loaded by name for one
// call. Without the library QV_RAPI.dll itself does not load. The handset builds import the members under the decorated
// names given here (on ARM with QAA for QAE); the simulated handset defines them under the plain ones and passes each
// call on to the store it has.
#ifndef QV_PLATFORM_MAIL_STORE_H
#define QV_PLATFORM_MAIL_STORE_H

#include <cstdint>

// A member as a function, with the object as its first argument. GCC expects the convention in classes only; stores
// that define such functions include this too.
#if defined(__i386__)
#pragma GCC diagnostic ignored "-Wattributes"
#define QV_THISCALL __attribute__((thiscall))
#else
#define QV_THISCALL
#endif

// Maps a member to its linker name, from which the build's import library leads to the decorated name.
#if defined(QV_WINCE) && defined(__i386__)
#define MAIL_STORE(member, decorated) __asm__("_mailstore_" member)
#else
#define MAIL_STORE(member, decorated) __asm__("mailstore_" member)
#endif

#pragma GCC visibility push(default)

namespace mail_store {

/// A polymorphic class of another compiler: a plain structure, because compilers lay out virtual destructors
/// differently. The room for it is the agent's to allocate; the rest is the library's.
struct CMailDBSync {
  struct VirtualTable {
    /// Destroys the object; flags 1 frees its memory too. Returns the object.
    QV_THISCALL void* (*scalar_deleting_destructor)(CMailDBSync* self, int flags);
  };

  const VirtualTable* virtual_table;
  void* state;
};

/// A node of a list: bytes, of which the last four are the pointer to the next node, null at the end. Nodes are blocks
/// of the platform's malloc. Their forms are in modules/mail/mail_layout.h.
using Node = std::uint8_t;

/// Fetches the whole list of one kind, which the caller frees node by node: its first node goes to `head`, as a number.
/// Negative on failure, as with every member that returns a long.
using Get = QV_THISCALL long(CMailDBSync* self, long* head, long* count);

/// Constructs the object in memory of the caller's.
QV_THISCALL CMailDBSync* Construct(CMailDBSync* self) MAIL_STORE("CMailDBSync", "??0CMailDBSync@@QAE@XZ");
/// Opens the database.
QV_THISCALL int InitCEDB(CMailDBSync* self) MAIL_STORE("InitCEDB", "?InitCEDB@CMailDBSync@@QAEHXZ");
QV_THISCALL int CloseCEDB(CMailDBSync* self) MAIL_STORE("CloseCEDB", "?CloseCEDB@CMailDBSync@@QAEHXZ");
QV_THISCALL int DisConnectDB(CMailDBSync* self) MAIL_STORE("DisConnectDB", "?DisConnectDB@CMailDBSync@@QAEHXZ");

Get Sync_GetUserInfo MAIL_STORE("Sync_GetUserInfo", "?Sync_GetUserInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetConfigInfo MAIL_STORE("Sync_GetConfigInfo", "?Sync_GetConfigInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetFilterInfo MAIL_STORE("Sync_GetFilterInfo", "?Sync_GetFilterInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetLinkManInfo MAIL_STORE("Sync_GetLinkManInfo", "?Sync_GetLinkManInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetFolderInfo MAIL_STORE("Sync_GetFolderInfo", "?Sync_GetFolderInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetUIDLInfo MAIL_STORE("Sync_GetUIDLInfo", "?Sync_GetUIDLInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetMailHeaderInfo MAIL_STORE("Sync_GetMailHeaderInfo", "?Sync_GetMailHeaderInfo@CMailDBSync@@QAEJPAJ0@Z");
Get Sync_GetMailAddressInfo MAIL_STORE("Sync_GetMailAddressInfo", "?Sync_GetMailAddressInfo@CMailDBSync@@QAEJPAJ0@Z");

// What these are given stays the caller's.

/// Stores one account with its configuration. `new_id`: its id in the store.
QV_THISCALL long Sync_SetUserInfo(CMailDBSync* self, Node* user, Node* config, int* new_id)
    MAIL_STORE("Sync_SetUserInfo", "?Sync_SetUserInfo@CMailDBSync@@QAEJPAUUserList@@PAUConfigList@@PAH@Z");
/// Stores an account's list of UIDLs.
QV_THISCALL long Sync_SetUIDLInfo(CMailDBSync* self, Node* uidls, int account)
    MAIL_STORE("Sync_SetUIDLInfo", "?Sync_SetUIDLInfo@CMailDBSync@@QAEJPAUUIDLList@@H@Z");
/// Stores a filter with its contacts, which may be null. `reserved` is 0.
QV_THISCALL long Sync_SetFilterInfo(CMailDBSync* self, Node* filter, Node* contacts, int account, int reserved)
    MAIL_STORE("Sync_SetFilterInfo", "?Sync_SetFilterInfo@CMailDBSync@@QAEJPAUFilterList@@PAULinkManList@@HH@Z");
/// Fetches the headers that the store holds for an account, as a list of the caller's.
QV_THISCALL long Sync_QueryHeaderByUserId(CMailDBSync* self, Node** headers, int account)
    MAIL_STORE("Sync_QueryHeaderByUserId", "?Sync_QueryHeaderByUserId@CMailDBSync@@QAEJPAPAUHeaderList@@H@Z");
/// Stores a folder. `new_id`: its id in the store.
QV_THISCALL long Sync_SetFolderInfo(CMailDBSync* self, Node* folder, int account, int* new_id)
    MAIL_STORE("Sync_SetFolderInfo", "?Sync_SetFolderInfo@CMailDBSync@@QAEJPAUFolderList@@HPAH@Z");
/// Stores a message: its header, its addresses, and the bytes of its file, null when there is none.
QV_THISCALL long Sync_SetMailInfo(CMailDBSync* self, Node* header, Node* addresses, long body_size, char* body)
    MAIL_STORE("Sync_SetMailInfo", "?Sync_SetMailInfo@CMailDBSync@@QAEJPAUHeaderList@@PAUAddressList@@JPAD@Z");

}  // namespace mail_store

#pragma GCC visibility pop

#endif  // QV_PLATFORM_MAIL_STORE_H
