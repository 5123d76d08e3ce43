// Applies the e-mail tables account by account. The library gives accounts and folders new ids, under which all that
// belongs to them is handed over; where an account is new under another id, its folders' filters and messages are
// looked for under that id too, and so are not found (or those of the account are that came under it): desktops restore
// such accounts without their messages, and count on it.
#include <cstdint>

#include "modules/mail/mail.h"
#include "modules/mail/mail_database.h"
#include "modules/mail/mail_records.h"
#include "modules/mail/message_file.h"
#include "modules/mail/node_list.h"
#include "modules/mail/present_messages.h"
#include "platform/file.h"
#include "platform/memory.h"
#include "sync/exchange_directory.h"
#include "sync/exchange_table.h"

namespace qv::mail {
namespace {

using layout::LoadSlot;
using layout::StoreSlot;

// What a store that refuses is reported with, for those who watch the handset's output: in the code page of the system,
// GBK, with the account's new id. In turn "... went wrong" of the UIDLs, an account's filter, a folder, a folder's
// filter, and "adding MAILInfo went wrong".
constexpr char kUidlTrace[] = "UIDL\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC%d";
constexpr char kFilterTrace[] = "Filter\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC%d";
constexpr char kFolderTrace[] = "Folder\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC%d";
constexpr char kFolderFilterTrace[] = "Sync_SetFilterInfo\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC%d";
constexpr char kMessageTrace[] = "\xCC\xED\xBC\xD3MAILInfo\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC%d";

/// The id that the library gives accounts which it does not tell apart.
constexpr int kSharedAccountId = 100;

constexpr bool HasFilters(std::uint32_t folder_kind) {
  return folder_kind == 0 || folder_kind == 5;
}

/// Adds a node for each of the owner's records. False without memory.
bool Build(NodeList& nodes, const MailRecords& records, Owner owner) {
  for (const std::uint8_t* record = records.First(owner); record != nullptr; record = records.Next(record)) {
    if (nodes.Append(record) == nullptr) return false;
  }
  return true;
}

void TraceIfFailed(long result, const char* trace, int account) {
  if (result < 0) coredll::printf(trace, account);
}

/// The bytes of a message's file, and a NUL behind them. False when it is there but cannot be read or held whole.
bool ReadMessage(const char16_t* path, List<char>& body, std::uint32_t& size) {
  size = 0;
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) {
    const coredll::DWORD error = coredll::GetLastError();
    return error == coredll::ERROR_FILE_NOT_FOUND || error == coredll::ERROR_PATH_NOT_FOUND;
  }
  std::size_t got = 0;
  if (!file.Size(size) || !body.Resize(size + 1) || !file.Read(body.data(), size, got) || got != size) return false;
  body[size] = '\0';
  return true;
}

class MailRecover {
 public:
  /// The number of messages handed over.
  std::uint32_t Run(const void* directory) {
    if (!database_.IsThere() || directory_.Assign(directory) != Result::kOk) return 0;
    List<std::uint8_t> record;
    if (!record.Resize(kUserLayout.exchange_size)) return 0;
    File users = File::OpenExisting(directory_ / kUserTable.exchange_file);
    if (!users.IsOpen() || !LoadAndDeleteTables()) return 0;
    for (bool more = true; more;) {
      if (ReadRecord(users, record.data(), record.size(), record.size(), more) != Result::kOk) return 0;
      if (more) ApplyAccount(record.data());
    }
    users.Close();
    coredll::DeleteFileW(directory_ / kUserTable.exchange_file);
    return messages_;
  }

 private:
  struct Account {
    int old_id;
    int id;
    /// From the moment the library gives the shared id, no account's id tells whether it was there before.
    bool shares_id;

    /// What its UIDLs, its folders and the filters of the whole account name in the tables.
    Owner AsOwner() const { return {static_cast<std::uint32_t>(old_id)}; }
    bool IsMoved() const { return id != old_id && !shares_id; }
    bool WasThere() const { return id == old_id && !shares_id; }
  };

  bool LoadAndDeleteTables() {
    return LoadAndDelete(configs_, kConfigTable, MailRecords::LastRecord::kMustBeWhole) &&
           LoadAndDelete(uidls_, kUidlTable) && LoadAndDelete(filters_, kFilterTable) &&
           LoadAndDelete(folders_, kFolderTable) && LoadAndDelete(headers_, kHeaderTable) &&
           LoadAndDelete(addresses_, kAddressTable) && LoadAndDelete(contacts_, kContactTable);
  }

  bool LoadAndDelete(MailRecords& records, const TableNames& table,
                     MailRecords::LastRecord last_record = MailRecords::LastRecord::kMayBeCut) {
    const ExchangeDirectory::Path path = directory_ / table.exchange_file;
    if (!records.Load(path, last_record)) return false;
    coredll::DeleteFileW(path);
    return true;
  }

  /// An account without a configuration of its own gets an empty one, as long as there are any for others.
  void ApplyAccount(const std::uint8_t* record) {
    if (configs_.AllTaken()) return;
    NodeList user(kUserLayout);
    NodeList config(kConfigLayout);
    if (user.Append(record) == nullptr) return;
    const std::uint32_t old_id = LoadSlot(kUserAccount, user.first());
    if (config.Append(configs_.Take({old_id})) == nullptr) return;

    int id = shares_id_ ? kSharedAccountId : 0;
    const long result = mail_store::Sync_SetUserInfo(database_.get(), user.first(), config.first(), &id);
    if (id == kSharedAccountId) shares_id_ = true;
    if (result < 0) return;
    const Account account = {static_cast<int>(old_id), id, shares_id_};
    ApplyUidls(account);
    ApplyAccountFilters(account);
    ApplyFolders(account);
  }

  void ApplyUidls(const Account& account) {
    NodeList uidls(kUidlLayout);
    if (!Build(uidls, uidls_, account.AsOwner()) || uidls.first() == nullptr) return;
    TraceIfFailed(mail_store::Sync_SetUIDLInfo(database_.get(), uidls.first(), account.id), kUidlTrace, account.id);
  }

  void ApplyAccountFilters(const Account& account) {
    while (const std::uint8_t* const record = filters_.Take(account.AsOwner())) {
      NodeList filter(kFilterLayout);
      if (filter.Append(record) != nullptr) StoreFilter(account, filter.first(), nullptr, kFilterTrace);
    }
  }

  void StoreFilter(const Account& account, Node* filter, Node* contacts, const char* trace) {
    const long result = mail_store::Sync_SetFilterInfo(database_.get(), filter, contacts, account.id, 0);
    TraceIfFailed(result, trace, account.id);
  }

  void ApplyFolders(const Account& account) {
    NodeList folders(kFolderLayout);
    if (!Build(folders, folders_, account.AsOwner())) return;
    if (account.IsMoved()) {
      for (Node* folder = folders.first(); folder != nullptr; folder = folders.NextOf(folder)) {
        StoreSlot(kFolderAccount, folder, static_cast<std::uint32_t>(account.id));
      }
    }
    PresentMessages present;
    if (account.WasThere()) present.Fetch(database_, account.id);
    for (Node* folder = folders.first(); folder != nullptr; folder = folders.NextOf(folder)) {
      ApplyFolder(account, folder, present);
    }
  }

  void ApplyFolder(const Account& account, Node* folder, const PresentMessages& present) {
    const Owner owner = {LoadSlot(kFolderAccount, folder), LoadSlot(kFolderId, folder)};
    const std::uint32_t kind = LoadSlot(kFolderKind, folder);
    int new_id = 0;
    const long result = mail_store::Sync_SetFolderInfo(database_.get(), folder, account.id, &new_id);
    TraceIfFailed(result, kFolderTrace, account.id);
    if (HasFilters(kind)) ApplyFolderFilters(account, owner, new_id);
    ApplyMessages(account, owner, new_id, present);
  }

  void ApplyFolderFilters(const Account& account, Owner owner, int new_folder) {
    while (const std::uint8_t* const record = filters_.Take(owner)) {
      NodeList filter(kFilterLayout);
      NodeList contacts(kContactLayout);
      Node* const node = filter.Append(record);
      if (node == nullptr) continue;
      StoreSlot(kFilterFolder, node, static_cast<std::uint32_t>(new_folder));
      const bool has_contacts = LoadSlot(kFilterHasContacts, node) == 1;
      if (has_contacts && !Build(contacts, contacts_, {LoadSlot(kFilterId, node)})) continue;
      StoreFilter(account, node, contacts.first(), kFolderFilterTrace);
    }
  }

  void ApplyMessages(const Account& account, Owner owner, int new_folder, const PresentMessages& present) {
    NodeList headers(kHeaderLayout);
    if (!Build(headers, headers_, owner)) return;
    for (Node* header = headers.first(); header != nullptr; header = headers.NextOf(header)) {
      const MessageFile file(kMessageFile, LoadSlot(kMessageId, header));
      const ExchangeDirectory::Path path = directory_ / file;
      if (present.Contains(header) || HandOver(account, header, new_folder, path)) coredll::DeleteFileW(path);
    }
  }

  /// False when the message could not be had whole: then it must not be lost.
  bool HandOver(const Account& account, Node* header, int new_folder, const char16_t* path) {
    NodeList addresses(kAddressLayout);
    if (!Build(addresses, addresses_, {LoadSlot(kMessageId, header) & kLargestId})) return false;
    List<char> body;
    std::uint32_t size = 0;
    if (!ReadMessage(path, body, size)) return false;
    StoreSlot(kMessageFolder, header, static_cast<std::uint32_t>(new_folder));
    if (account.id != kSharedAccountId) StoreSlot(kMessageAccount, header, static_cast<std::uint32_t>(account.id));
    const long result =
        mail_store::Sync_SetMailInfo(database_.get(), header, addresses.first(), static_cast<long>(size), body.data());
    ++messages_;
    TraceIfFailed(result, kMessageTrace, account.id);
    return true;
  }

  MailDatabase database_;
  ExchangeDirectory directory_;
  bool shares_id_ = false;
  std::uint32_t messages_ = 0;
  // Freed from the last to the first.
  MailRecords addresses_{kAddressLayout, {kRecordAddressMessage}};
  MailRecords headers_{kHeaderLayout, {kRecordMessageAccount, kRecordMessageFolder}};
  MailRecords folders_{kFolderLayout, {kRecordFolderAccount}};
  MailRecords filters_{kFilterLayout, {kRecordFilterAccount, kRecordFilterFolder}};
  MailRecords uidls_{kUidlLayout, {kRecordUidlAccount}};
  MailRecords configs_{kConfigLayout, {kRecordConfigAccount}};
  MailRecords contacts_{kContactLayout, {kRecordContactFilter}};
};

}  // namespace

Result Recover(const void* directory) {
  return Result{MailRecover().Run(directory)};
}

}  // namespace qv::mail
