// What the agent imports from MailStore.dll. A handset's loader binds imports once; here each call goes to the store
// that the handset has at the time, because a process starts many handsets for one agent.
#include "platform/mail_store.h"

#include "host/handset/handset.h"
#include "host/handset/libraries.h"

namespace {

/// A store shows its members as entry points of their plain names.
template <typename Function>
Function* Member(const char16_t* name) {
  return reinterpret_cast<Function*>(handset::ImportOf(handset::kMailStore, name));
}

}  // namespace

namespace mail_store {

CMailDBSync* Construct(CMailDBSync* self) {
  return Member<decltype(Construct)>(u"CMailDBSync")(self);
}

int InitCEDB(CMailDBSync* self) {
  return Member<decltype(InitCEDB)>(u"InitCEDB")(self);
}

int CloseCEDB(CMailDBSync* self) {
  return Member<decltype(CloseCEDB)>(u"CloseCEDB")(self);
}

int DisConnectDB(CMailDBSync* self) {
  return Member<decltype(DisConnectDB)>(u"DisConnectDB")(self);
}

long Sync_GetUserInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetUserInfo")(self, head, count);
}

long Sync_GetConfigInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetConfigInfo")(self, head, count);
}

long Sync_GetFilterInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetFilterInfo")(self, head, count);
}

long Sync_GetLinkManInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetLinkManInfo")(self, head, count);
}

long Sync_GetFolderInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetFolderInfo")(self, head, count);
}

long Sync_GetUIDLInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetUIDLInfo")(self, head, count);
}

long Sync_GetMailHeaderInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetMailHeaderInfo")(self, head, count);
}

long Sync_GetMailAddressInfo(CMailDBSync* self, long* head, long* count) {
  return Member<Get>(u"Sync_GetMailAddressInfo")(self, head, count);
}

long Sync_SetUserInfo(CMailDBSync* self, Node* user, Node* config, int* new_id) {
  return Member<decltype(Sync_SetUserInfo)>(u"Sync_SetUserInfo")(self, user, config, new_id);
}

long Sync_SetUIDLInfo(CMailDBSync* self, Node* uidls, int account) {
  return Member<decltype(Sync_SetUIDLInfo)>(u"Sync_SetUIDLInfo")(self, uidls, account);
}

long Sync_SetFilterInfo(CMailDBSync* self, Node* filter, Node* contacts, int account, int reserved) {
  return Member<decltype(Sync_SetFilterInfo)>(u"Sync_SetFilterInfo")(self, filter, contacts, account, reserved);
}

long Sync_QueryHeaderByUserId(CMailDBSync* self, Node** headers, int account) {
  return Member<decltype(Sync_QueryHeaderByUserId)>(u"Sync_QueryHeaderByUserId")(self, headers, account);
}

long Sync_SetFolderInfo(CMailDBSync* self, Node* folder, int account, int* new_id) {
  return Member<decltype(Sync_SetFolderInfo)>(u"Sync_SetFolderInfo")(self, folder, account, new_id);
}

long Sync_SetMailInfo(CMailDBSync* self, Node* header, Node* addresses, long body_size, char* body) {
  return Member<decltype(Sync_SetMailInfo)>(u"Sync_SetMailInfo")(self, header, addresses, body_size, body);
}

}  // namespace mail_store
