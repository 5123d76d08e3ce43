// The e-mail database: export and recover against a bare copy of the same files and tables, and how the search for
// messages that are present grows with their number.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "host/handset/handset.h"
#include "layout/bytes.h"
#include "modules/mail/mail.h"
#include "platform/file.h"
#include "platform/mail_store.h"

namespace bench {
namespace {

using mail_store::CMailDBSync;
using mail_store::Node;
using qv::layout::RecordLayout;
using qv::layout::StoreSlot;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t kMailModule = 6;
constexpr std::uint32_t kMessages = 10000;
constexpr std::size_t kMessageSize = 4096;
constexpr std::uint32_t kAccount = 1;
constexpr std::uint32_t kFolder = 3;

/// A MailStore.dll in memory: one account with a configuration and a folder, `messages` messages with an address each,
/// and nothing else. What comes is counted.
struct MemoryStore {
  static inline std::uint32_t messages = 0;
  static inline std::uint32_t present = 0;  ///< Messages that a query finds.
  static inline std::uint32_t taken = 0;    ///< Messages that were set.
  static inline Bytes last_body;

  static Node* NewNode(const RecordLayout& form, Node* next) {
    auto* const node = static_cast<Node*>(coredll::malloc(form.store_size));
    std::memset(node, 0, form.store_size);
    std::memcpy(node + form.store_size - sizeof(next), &next, sizeof(next));
    return node;
  }
  static void Free(const RecordLayout& form, Node* node) {
    while (node != nullptr) {
      Node* const next = NextOf(form, node);
      coredll::free(node);
      node = next;
    }
  }
  static Node* NextOf(const RecordLayout& form, const Node* node) {
    Node* next;
    std::memcpy(&next, node + form.store_size - sizeof(next), sizeof(next));
    return next;
  }

  static Node* Headers(std::uint32_t count) {
    Node* head = nullptr;
    for (std::uint32_t id = count; id != 0; --id) {
      head = NewNode(qv::mail::kHeaderLayout, head);
      StoreSlot(qv::mail::kMessageId, head, id);
      StoreSlot(qv::mail::kMessageAccount, head, kAccount);
      StoreSlot(qv::mail::kMessageFolder, head, kFolder);
      PutText(head + qv::mail::kMessageText4.offset, "anna.mueller@example.com");
      PutText(head + qv::mail::kMessageText5.offset, ("Minutes of meeting " + std::to_string(id)).c_str());
      const coredll::SYSTEMTIME date = {
          2006, 1, 0, 5, 9, static_cast<std::uint16_t>(id / 60 % 60), static_cast<std::uint16_t>(id % 60), 0};
      std::memcpy(head + qv::mail::kMessageDate1.offset, &date, sizeof(date));
    }
    return head;
  }
  static Node* Addresses(std::uint32_t count) {
    Node* head = nullptr;
    for (std::uint32_t id = count; id != 0; --id) {
      head = NewNode(qv::mail::kAddressLayout, head);
      qv::layout::StoreNumber(head + 4, 4, id);
      PutText(head + 70, "anna.mueller@example.com");
    }
    return head;
  }

  static long HandOut(Node* list, long* head) {
    *head = reinterpret_cast<long>(list);
    return 0;
  }
  static QV_THISCALL long GetUsers(CMailDBSync*, long* head, long*) {
    Node* const user = NewNode(qv::mail::kUserLayout, nullptr);
    StoreSlot(qv::mail::kUserAccount, user, kAccount);
    return HandOut(user, head);
  }
  static QV_THISCALL long GetConfigs(CMailDBSync*, long* head, long*) {
    Node* const config = NewNode(qv::mail::kConfigLayout, nullptr);
    qv::layout::StoreNumber(config + 4, 2, kAccount);
    return HandOut(config, head);
  }
  static QV_THISCALL long GetFolders(CMailDBSync*, long* head, long*) {
    Node* const folder = NewNode(qv::mail::kFolderLayout, nullptr);
    StoreSlot(qv::mail::kFolderId, folder, kFolder);
    StoreSlot(qv::mail::kFolderAccount, folder, kAccount);
    return HandOut(folder, head);
  }
  static QV_THISCALL long GetHeaders(CMailDBSync*, long* head, long*) { return HandOut(Headers(messages), head); }
  static QV_THISCALL long GetAddresses(CMailDBSync*, long* head, long*) { return HandOut(Addresses(messages), head); }
  static QV_THISCALL long GetNone(CMailDBSync*, long* head, long*) { return HandOut(nullptr, head); }

  static QV_THISCALL long SetUser(CMailDBSync*, Node*, Node*, int* new_id) {
    *new_id = kAccount;
    return 0;
  }
  static QV_THISCALL long SetFolder(CMailDBSync*, Node*, int, int* new_id) {
    *new_id = kFolder;
    return 0;
  }
  static QV_THISCALL long Query(CMailDBSync*, Node** headers, int) {
    *headers = Headers(present);
    return 0;
  }
  static QV_THISCALL long SetMail(CMailDBSync*, Node*, Node*, long size, char* body) {
    last_body.assign(body, body + size);
    ++taken;
    return 0;
  }

  static QV_THISCALL void* Destroy(CMailDBSync* self, int) {
    coredll::free(self);
    return self;
  }
  static QV_THISCALL CMailDBSync* Construct(CMailDBSync* self) {
    static constexpr CMailDBSync::VirtualTable kTable = {&Destroy};
    self->virtual_table = &kTable;
    return self;
  }
  static QV_THISCALL int Do(CMailDBSync*) { return 0; }

  static void Install() {
    const auto point = [](auto* function) { return reinterpret_cast<coredll::FARPROC>(function); };
    handset::InstallLibrary(handset::kMailStore, {{u"CMailDBSync", point(&Construct)},
                                                  {u"InitCEDB", point(&Do)},
                                                  {u"CloseCEDB", point(&Do)},
                                                  {u"DisConnectDB", point(&Do)},
                                                  {u"Sync_GetUserInfo", point(&GetUsers)},
                                                  {u"Sync_GetConfigInfo", point(&GetConfigs)},
                                                  {u"Sync_GetFilterInfo", point(&GetNone)},
                                                  {u"Sync_GetLinkManInfo", point(&GetNone)},
                                                  {u"Sync_GetFolderInfo", point(&GetFolders)},
                                                  {u"Sync_GetUIDLInfo", point(&GetNone)},
                                                  {u"Sync_GetMailHeaderInfo", point(&GetHeaders)},
                                                  {u"Sync_GetMailAddressInfo", point(&GetAddresses)},
                                                  {u"Sync_SetUserInfo", point(&SetUser)},
                                                  {u"Sync_SetFolderInfo", point(&SetFolder)},
                                                  {u"Sync_QueryHeaderByUserId", point(&Query)},
                                                  {u"Sync_SetMailInfo", point(&SetMail)}});
  }
};

std::u16string Numbered(const char16_t* format, std::uint32_t id) {
  std::u16string text = format;
  const std::string digits = std::to_string(id);
  return text.replace(text.find(u"%d"), 2, std::u16string(digits.begin(), digits.end()));
}

std::u16string InExchange(const std::u16string& file) {
  return std::u16string(kDirectory) + u"\\" + file;
}

std::u16string Exchanged(std::uint32_t id) {
  return InExchange(Numbered(qv::mail::kMessageFile, id));
}

std::filesystem::path StoreDirectory() {
  return handset::HostPath(Numbered(qv::mail::kMessagePath, 1)).parent_path();
}

void PutFile(const std::filesystem::path& file, const Bytes& bytes) {
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// The messages' files, put into the directory by the host, without a search for their names.
void PutMessages(const std::filesystem::path& directory) {
  std::filesystem::create_directories(directory);
  for (std::uint32_t id = 1; id <= kMessages; ++id)
    PutFile(directory / (std::to_string(id) + ".eml"), Bytes(kMessageSize, 'x'));
}

void WriteTable(const qv::TableNames& table, std::uint32_t records) {
  const Bytes bytes(table.layout->exchange_size, 1);
  qv::File file = qv::File::CreateAlways(InExchange(table.exchange_file).c_str());
  for (std::uint32_t i = 0; i < records; ++i) {
    if (!file.Write(bytes.data(), bytes.size())) Die("cannot write");
  }
}

/// Fetches the lists, writes as many records with the same writes, and copies each file.
void CopyBare() {
  WriteTable(qv::mail::kUserTable, 1);
  WriteTable(qv::mail::kConfigTable, 1);
  WriteTable(qv::mail::kFilterTable, 0);
  WriteTable(qv::mail::kContactTable, 0);
  WriteTable(qv::mail::kFolderTable, 1);
  WriteTable(qv::mail::kUidlTable, 0);
  Node* const headers = MemoryStore::Headers(kMessages);
  WriteTable(qv::mail::kHeaderTable, kMessages);
  for (std::uint32_t id = 1; id <= kMessages; ++id) {
    if (coredll::CopyFileW(Numbered(qv::mail::kMessagePath, id).c_str(), Exchanged(id).c_str(), 0) == 0) {
      Die("cannot copy");
    }
  }
  MemoryStore::Free(qv::mail::kHeaderLayout, headers);
  Node* const addresses = MemoryStore::Addresses(kMessages);
  WriteTable(qv::mail::kAddressTable, kMessages);
  MemoryStore::Free(qv::mail::kAddressLayout, addresses);
}

/// Reads a table record by record and deletes it. A record of messages or addresses becomes a node.
void ReadTableBare(const qv::TableNames& table) {
  Bytes exchange(table.layout->exchange_size);
  Bytes node(table.layout->store_size);
  qv::File file = qv::File::OpenExisting(InExchange(table.exchange_file).c_str());
  for (;;) {
    std::size_t got = 0;
    if (!file.Read(exchange.data(), exchange.size(), got)) Die("cannot read");
    if (got == 0) break;
    qv::layout::ToStore(*table.layout, exchange.data(), node.data());
  }
  file.Close();
  coredll::DeleteFileW(InExchange(table.exchange_file).c_str());
}

void TakeMessageBare(std::uint32_t id) {
  std::uint32_t size = 0;
  std::size_t got = 0;
  qv::File file = qv::File::OpenExisting(Exchanged(id).c_str());
  if (!file.Size(size)) Die("cannot read");
  std::vector<char> body(size);
  if (!file.Read(body.data(), size, got) || got != size) Die("cannot read");
  file.Close();
  MemoryStore::SetMail(nullptr, nullptr, nullptr, static_cast<long>(size), body.data());
  coredll::DeleteFileW(Exchanged(id).c_str());
}

/// Reads and converts all tables, hands each message's bytes over, and deletes what was read: what no recover can do
/// without.
void TakeBare() {
  for (const qv::TableNames& table : qv::mail::kTables) ReadTableBare(table);
  for (std::uint32_t id = 1; id <= kMessages; ++id) TakeMessageBare(id);
}

/// The tables of an export, as a desktop places them again before each recover.
class Placed {
 public:
  explicit Placed(Desktop& desktop) {
    desktop.Export(1);
    for (const qv::TableNames& table : qv::mail::kTables) {
      const std::filesystem::path file = handset::HostPath(InExchange(table.exchange_file));
      std::ifstream stream(file, std::ios::binary);
      tables_.emplace_back(file, Bytes(std::istreambuf_iterator<char>(stream), {}));
    }
  }
  void Place() const {
    for (const auto& [file, bytes] : tables_) PutFile(file, bytes);
  }

 private:
  std::vector<std::pair<std::filesystem::path, Bytes>> tables_;
};

/// The shortest times of several runs of each, what is placed before each not counted.
std::vector<double> ShortestAfter(int runs, const std::function<void()>& place,
                                  const std::vector<std::function<void()>>& works) {
  std::vector<double> shortest(works.size(), 1e9);
  for (int run = 0; run < runs; ++run) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      place();
      shortest[i] = std::min(shortest[i], Shortest(1, {works[i]})[0]);
    }
  }
  return shortest;
}

bool MeasureAgainstBare(Desktop& desktop) {
  std::printf("E-mail: %u messages of %zu bytes exported and recovered\n", kMessages, kMessageSize);
  MemoryStore::messages = kMessages;
  MemoryStore::present = 0;
  PutMessages(StoreDirectory());
  const auto place_files = [] { PutMessages(handset::HostPath(kDirectory)); };
  place_files();  // Files that are there are found at once, on both sides.
  handset::ResetPeakMemory();
  const std::vector<double> exports = Shortest(3, {[&] { desktop.Export(1); }, CopyBare});
  std::printf("  export: agent %.1f ms, bare %.1f ms, peak memory %llu bytes\n", 1e3 * exports[0], 1e3 * exports[1],
              static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  bool good = Report("export against a bare copy of the same files and tables", exports[0] / exports[1], 1.5);

  const Placed placed(desktop);
  MemoryStore::taken = 0;
  handset::ResetPeakMemory();
  const auto place = [&] { place_files(), placed.Place(); };
  const std::vector<double> recovers = ShortestAfter(3, place, {[&] { desktop.Recover(1); }, TakeBare});
  if (MemoryStore::taken != 6 * kMessages) Die("a recover did not hand all messages over");
  std::printf("  recover: agent %.1f ms, bare %.1f ms, peak memory %llu bytes\n", 1e3 * recovers[0], 1e3 * recovers[1],
              static_cast<unsigned long long>(handset::PeakAllocatedBytes()));
  return Report("recover against a bare reader of the same files and tables", recovers[0] / recovers[1], 1.5) && good;
}

/// All messages are present, and none has a file.
bool MeasureGrowth(Desktop& desktop) {
  std::printf("E-mail: how the search for messages that are present grows\n");
  std::vector<double> per_message;
  for (const std::uint32_t messages : {1000u, 10000u}) {
    MemoryStore::messages = MemoryStore::present = messages;
    std::filesystem::remove_all(StoreDirectory());
    const Placed placed(desktop);
    MemoryStore::taken = 0;
    const auto recover = [&] { desktop.Recover(1); };
    const int runs = static_cast<int>(50000 / messages);
    per_message.push_back(ShortestAfter(runs, [&] { placed.Place(); }, {recover})[0] / messages);
    if (MemoryStore::taken != 0) Die("a message that is present was handed over");
    std::printf("  %6u messages: recover %6.0f ns a message\n", messages, 1e9 * per_message.back());
  }
  return Report("time per message, 10,000 present against 1,000", per_message.back() / per_message.front(), 2);
}

}  // namespace

bool MeasureMail(const loader::AgentLibrary& agent) {
  MemoryStore::Install();
  Desktop desktop(agent, kMailModule);
  const bool good = MeasureAgainstBare(desktop);
  return MeasureGrowth(desktop) && good;
}

}  // namespace bench
