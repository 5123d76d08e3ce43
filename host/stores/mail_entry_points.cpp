// MailStore.dll, the e-mail database's store library: a class, whose members are entry points of their plain names here
// and take the object as their first argument. There is one database, whatever object a member is called on. Beside the
// class stands the question for the handset's mail id.
#include <bit>
#include <cstring>
#include <utility>

#include "host/stores/mail_database.h"
#include "host/stores/store_library.h"
#include "modules/mail/mail_layout.h"
#include "platform/coredll.h"
#include "platform/mail_store.h"

namespace {

using mail_store::CMailDBSync;
using mail_store::Node;
using stores::MailDatabase;

constexpr std::size_t kPointerSize = 4;
constexpr int kFreeMemory = 1;  ///< A flag of the destructor.

/// Its session is the time from InitCEDB to CloseCEDB.
stores::LibraryOf<MailDatabase> library({.has_session = true});

/// Failures are below 0, those of settings too, whatever their sign there.
long AnswerOf(stores::Status status) {
  const auto number = static_cast<std::int32_t>(status);
  return number > 0 ? -number : number;
}

/// A call of the member, which a setting of its name and "_refusal" refuses.
long Run(const char* member, CMailDBSync* self, const std::function<void(MailDatabase&)>& call) {
  return AnswerOf(library.Call([&](MailDatabase& mail) {
    stores::Expect({self});
    library.RefuseIfSet(std::string(member) + "_refusal");
    call(mail);
  }));
}

std::size_t NextPointerOf(const qv::layout::RecordLayout& form) {
  return form.store_size - kPointerSize;
}

/// The nodes of a list, of which the first may be null.
std::vector<const std::uint8_t*> NodesOf(const Node* head, std::size_t table) {
  std::vector<const std::uint8_t*> nodes;
  while (head != nullptr) {
    nodes.push_back(head);
    std::memcpy(&head, head + NextPointerOf(stores::kMailKinds[table].layout), kPointerSize);
  }
  return nodes;
}

/// A list that is made from its end, and taken back unless it is handed out.
class GivenList {
 public:
  explicit GivenList(const qv::layout::RecordLayout& form) : form_(form) {}
  ~GivenList() {
    while (head_ != nullptr) {
      Node* const node = head_;
      std::memcpy(&head_, node + NextPointerOf(form_), kPointerSize);
      coredll::free(node);
    }
  }
  GivenList(const GivenList&) = delete;
  GivenList& operator=(const GivenList&) = delete;

  void PutInFront(const std::uint8_t* record) {
    auto* const node = static_cast<Node*>(stores::HandOut(record, form_.store_size));
    std::memcpy(node + NextPointerOf(form_), &head_, kPointerSize);
    head_ = node;
  }
  Node* HandOut() { return std::exchange(head_, nullptr); }

 private:
  const qv::layout::RecordLayout& form_;
  Node* head_ = nullptr;
};

Node* ListOf(const stores::RecordStore& records, const std::vector<std::uint32_t>& ids) {
  const qv::layout::RecordLayout& form = records.Kind().layout;
  GivenList list(form);
  std::vector<std::uint8_t> record(form.store_size);
  for (auto id = ids.rbegin(); id != ids.rend(); ++id) {
    records.Read({&*id, 1}, record.data());
    list.PutInFront(record.data());
  }
  return list.HandOut();
}

std::vector<std::uint32_t> AllIdsOf(const stores::RecordStore& records) {
  std::vector<qv::SyncInfoEntry> entries(records.Count());
  entries.resize(records.SyncInfo(entries));
  std::vector<std::uint32_t> ids;
  for (const qv::SyncInfoEntry& entry : entries) ids.push_back(entry.id);
  return ids;
}

long GetTable(const char* member, CMailDBSync* self, std::size_t table, long* head, long* count) {
  return Run(member, self, [&](MailDatabase& mail) {
    stores::Expect({head, count});
    const stores::RecordStore& records = mail.Tables()[table];
    *head = std::bit_cast<long>(ListOf(records, AllIdsOf(records)));
    *count = static_cast<long>(records.Count());
  });
}

QV_THISCALL void* Destroy(CMailDBSync* self, int flags) {
  library.End();
  if ((flags & kFreeMemory) != 0) coredll::free(self);
  return self;
}

constexpr CMailDBSync::VirtualTable kVirtualTable = {.scalar_deleting_destructor = &Destroy};

}  // namespace

STORE_ENTRY_POINT QV_THISCALL CMailDBSync* Construct(CMailDBSync* self) __asm__("CMailDBSync");
STORE_ENTRY_POINT QV_THISCALL CMailDBSync* Construct(CMailDBSync* self) {
  if (self != nullptr) *self = {.virtual_table = &kVirtualTable, .state = nullptr};
  return self;
}

STORE_ENTRY_POINT QV_THISCALL int InitCEDB(CMailDBSync*) {
  return static_cast<int>(AnswerOf(library.Begin()));
}

STORE_ENTRY_POINT QV_THISCALL int CloseCEDB(CMailDBSync*) {
  return static_cast<int>(AnswerOf(library.End()));
}

/// The database is a file, from which there is nothing to disconnect.
STORE_ENTRY_POINT QV_THISCALL int DisConnectDB(CMailDBSync*) {
  return static_cast<int>(stores::kDone);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetUserInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailAccounts, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetConfigInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailConfigs, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetFilterInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailFilters, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetLinkManInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailFilterContacts, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetFolderInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailFolders, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetUIDLInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailUidls, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetMailHeaderInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailMessages, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_GetMailAddressInfo(CMailDBSync* self, long* head, long* count) {
  return GetTable(__func__, self, stores::kMailAddresses, head, count);
}

STORE_ENTRY_POINT QV_THISCALL long Sync_SetUserInfo(CMailDBSync* self, const Node* user, const Node* config,
                                                    int* new_id) {
  return Run(__func__, self, [&](MailDatabase& mail) {
    stores::Expect({user, config, new_id});
    *new_id = static_cast<int>(mail.PutAccount(user, config));
  });
}

STORE_ENTRY_POINT QV_THISCALL long Sync_SetUIDLInfo(CMailDBSync* self, const Node* uidls, int account) {
  return Run(__func__, self, [&](MailDatabase& mail) {
    stores::Expect({uidls});
    mail.AddUidls(static_cast<std::uint32_t>(account), NodesOf(uidls, stores::kMailUidls));
  });
}

STORE_ENTRY_POINT QV_THISCALL long Sync_SetFilterInfo(CMailDBSync* self, const Node* filter, const Node* contacts,
                                                      int account, int) {
  return Run(__func__, self, [&](MailDatabase& mail) {
    stores::Expect({filter});
    mail.PutFilter(static_cast<std::uint32_t>(account), filter, NodesOf(contacts, stores::kMailFilterContacts));
  });
}

STORE_ENTRY_POINT QV_THISCALL long Sync_QueryHeaderByUserId(CMailDBSync* self, Node** headers, int account) {
  return Run(__func__, self, [&](MailDatabase& mail) {
    stores::Expect({headers});
    *headers = ListOf(mail.Tables()[stores::kMailMessages], mail.MessagesOf(static_cast<std::uint32_t>(account)));
  });
}

STORE_ENTRY_POINT QV_THISCALL long Sync_SetFolderInfo(CMailDBSync* self, const Node* folder, int account, int* new_id) {
  return Run(__func__, self, [&](MailDatabase& mail) {
    stores::Expect({folder, new_id});
    *new_id = static_cast<int>(mail.PutFolder(static_cast<std::uint32_t>(account), folder));
  });
}

STORE_ENTRY_POINT QV_THISCALL long Sync_SetMailInfo(CMailDBSync* self, const Node* header, const Node* addresses,
                                                    long body_size, const char* body) {
  return Run(__func__, self, [&](MailDatabase& mail) {
    stores::Expect({header});
    const auto size = static_cast<std::uint32_t>(body_size);
    stores::ExpectList(size, {body});
    std::optional<std::span<const std::uint8_t>> file;
    if (body != nullptr) file = {reinterpret_cast<const std::uint8_t*>(body), size};
    mail.AddMessage(header, NodesOf(addresses, stores::kMailAddresses), file);
  });
}

/// Not 0 when the handset has no mail id.
STORE_ENTRY_POINT std::uint32_t GetSystemMailID(std::uint32_t* id) {
  return stores::StatusOf([&] {
    stores::Expect({id});
    const std::optional<std::int64_t> setting = stores::Database().Setting(stores::kSystemMailId);
    if (!setting) stores::Refuse(stores::kUnknownRecord);
    *id = static_cast<std::uint32_t>(*setting);
  });
}
