// The scripted store's members. They are noexcept: nothing may be thrown through the agent.
#include "tests/support/scripted_mail_store.h"

#include <algorithm>
#include <cstring>

namespace qv_test {
namespace {

using mail_store::CMailDBSync;
using mail_store::Node;
using Nodes = ScriptedMailStore::Nodes;

constexpr const char* kGetters[kMailKinds] = {"GetUser",   "GetConfig", "GetFilter",     "GetLinkMan",
                                              "GetFolder", "GetUIDL",   "GetMailHeader", "GetMailAddress"};
/// The members that nodes of a kind are handed to.
constexpr const char* kSetters[kMailKinds] = {"SetUser",   "SetUser", "SetFilter", "SetFilter",
                                              "SetFolder", "SetUIDL", "SetMail",   "SetMail"};
constexpr int kRefused = -1;
constexpr std::size_t kPointerSize = 4;
/// No list of a test is as long; one that is runs in a circle.
constexpr std::size_t kLongestList = 1'000'000;

ScriptedMailStore* g_store = nullptr;

/// Copies a list of the agent's nodes, each of which must be a block of this very size; `most` of them.
Nodes NodesOf(const Node* node, MailKind kind, std::size_t most = kLongestList) {
  const std::size_t size = kMailNodeSizes[kind];
  Nodes nodes;
  while (node != nullptr && nodes.size() < most) {
    ExpectAligned("a node", node);
    EXPECT_EQ(handset::BlockSize(node), size) << "the size of a node";
    Bytes bytes(node, node + size);
    std::memcpy(&node, bytes.data() + size - kPointerSize, kPointerSize);
    std::fill_n(bytes.end() - kPointerSize, kPointerSize, std::uint8_t{0});
    nodes.push_back(std::move(bytes));
  }
  EXPECT_LT(nodes.size(), kLongestList) << "a list that does not end";
  return nodes;
}

bool HasNext(const Node* node, MailKind kind) {
  const Node* next = nullptr;
  if (node != nullptr) std::memcpy(&next, node + kMailNodeSizes[kind] - kPointerSize, kPointerSize);
  return next != nullptr;
}

/// The ids in nodes, one or two or four bytes wide: "[17 18]".
std::string IdsOf(const Nodes& nodes, std::size_t offset, std::size_t size) {
  std::string ids;
  for (const Bytes& node : nodes) {
    std::uint32_t id = 0;
    std::memcpy(&id, node.data() + offset, size);
    ids += (ids.empty() ? "" : " ") + std::to_string(id);
  }
  return "[" + ids + "]";
}

std::string IdOf(const Nodes& nodes, std::size_t offset, std::size_t size) {
  if (nodes.empty()) return "null";
  const std::string ids = IdsOf({nodes.front()}, offset, size);
  return ids.substr(1, ids.size() - 2);
}

}  // namespace

struct MailMembers {
  static CMailDBSync* QV_THISCALL Construct(CMailDBSync* self) noexcept {
    EXPECT_EQ(g_store->object_, nullptr) << "the last object was never destroyed";
    EXPECT_EQ(handset::BlockSize(self), 2 * sizeof(void*)) << "the room for the object";
    static constexpr CMailDBSync::VirtualTable kTable = {&Delete};
    g_store->object_ = self;
    *self = {&kTable, nullptr};
    g_store->Begin(self, "CMailDBSync");
    return self;
  }

  static void* QV_THISCALL Delete(CMailDBSync* self, int flags) noexcept {
    g_store->Begin(self, "Delete", std::to_string(flags));
    g_store->object_ = nullptr;
    *self = {};
    if ((flags & 1) != 0) coredll::free(self);
    return self;
  }

  static int QV_THISCALL InitCEDB(CMailDBSync* self) noexcept { return g_store->Begin(self, "InitCEDB"); }
  static int QV_THISCALL CloseCEDB(CMailDBSync* self) noexcept { return g_store->Begin(self, "CloseCEDB"); }
  static int QV_THISCALL DisConnectDB(CMailDBSync* self) noexcept { return g_store->Begin(self, "DisConnectDB"); }

  template <MailKind kKind>
  static long QV_THISCALL Get(CMailDBSync* self, long* head, long* count) noexcept {
    const char* const member = kGetters[kKind];
    EXPECT_EQ(*count, 0) << "the count before " << member;
    if (const int status = g_store->Begin(self, member); status != 0) return status;
    *count = 0x7FFFFFF0;  // Nobody reads it.
    if (g_store->fills_nothing.contains(member)) return 0;
    const Node* const list = g_store->NewList(g_store->lists[kKind], kMailNodeSizes[kKind]);
    *head = static_cast<long>(reinterpret_cast<std::intptr_t>(list));
    return g_store->End(member);
  }

  static long QV_THISCALL QueryHeaders(CMailDBSync* self, Node** headers, int account) noexcept {
    if (const int status = g_store->Begin(self, "QueryHeaderByUserId", std::to_string(account)); status != 0) {
      return status;
    }
    if (g_store->fills_nothing.contains("QueryHeaderByUserId")) return 0;
    *headers = g_store->NewList(g_store->present_headers[account], kMailNodeSizes[kHeader]);
    return g_store->End("QueryHeaderByUserId");
  }

  /// Keeps what was handed over, and says what the member answers.
  static int Take(CMailDBSync* self, const std::string& member, const std::string& arguments, Nodes first,
                  bool has_next, Nodes second = {}, std::optional<Bytes> body = std::nullopt) {
    g_store->handed_over.push_back(
        {member + " " + arguments, std::move(first), has_next, std::move(second), std::move(body)});
    return g_store->Begin(self, member, arguments);
  }

  /// Answers a new id: what a script says, or else the node's own.
  static void GiveId(int* new_id, const std::function<std::optional<int>(const Bytes&)>& script, const Nodes& nodes) {
    if (nodes.empty()) return;
    const std::optional<int> id = script ? script(nodes.front()) : nodes.front()[4];
    if (id) *new_id = *id;
  }

  static long QV_THISCALL SetUser(CMailDBSync* self, Node* user, Node* config, int* new_id) noexcept {
    const Nodes users = NodesOf(user, kUser);
    const int status = Take(self, "SetUser", IdOf(users, 4, 1) + " as " + std::to_string(*new_id), users,
                            HasNext(user, kUser), NodesOf(config, kConfig));
    if (status != 0) return status;
    GiveId(new_id, g_store->account_id, users);
    return g_store->End("SetUser");
  }

  static long QV_THISCALL SetUidls(CMailDBSync* self, Node* uidls, int account) noexcept {
    const Nodes nodes = NodesOf(uidls, kUidl);
    const int status =
        Take(self, "SetUIDL", IdsOf(nodes, 4, 2) + " of " + std::to_string(account), nodes, HasNext(uidls, kUidl));
    return status != 0 ? status : g_store->End("SetUIDL");
  }

  static long QV_THISCALL SetFilter(CMailDBSync* self, Node* filter, Node* contacts, int account,
                                    int reserved) noexcept {
    EXPECT_EQ(reserved, 0) << "the last argument of Sync_SetFilterInfo";
    const Nodes filters = NodesOf(filter, kFilter);
    const Nodes with = NodesOf(contacts, kContact);
    std::string arguments = IdOf(filters, 4, 1);
    if (contacts != nullptr) arguments += " with " + IdsOf(with, 4, 1);
    const int status =
        Take(self, "SetFilter", arguments + " of " + std::to_string(account), filters, HasNext(filter, kFilter), with);
    return status != 0 ? status : g_store->End("SetFilter");
  }

  static long QV_THISCALL SetFolder(CMailDBSync* self, Node* folder, int account, int* new_id) noexcept {
    const Nodes folders = NodesOf(folder, kFolder, 1);
    const std::string arguments =
        IdOf(folders, 4, 1) + " of " + std::to_string(account) + " as " + std::to_string(*new_id);
    if (const int status = Take(self, "SetFolder", arguments, folders, HasNext(folder, kFolder)); status != 0)
      return status;
    GiveId(new_id, g_store->folder_id, folders);
    return g_store->End("SetFolder");
  }

  static long QV_THISCALL SetMail(CMailDBSync* self, Node* header, Node* addresses, long size, char* body) noexcept {
    const Nodes headers = NodesOf(header, kHeader, 1);
    const Nodes with = NodesOf(addresses, kAddress);
    std::optional<Bytes> bytes;
    std::string file = " without file";
    if (body != nullptr) {
      EXPECT_LE(static_cast<std::size_t>(size), handset::BlockSize(body)) << "the size of a body";
      bytes.emplace(body, body + size);
      file = " of " + std::to_string(size) + " bytes";
    } else {
      EXPECT_EQ(size, 0) << "the size of no body";
    }
    const std::string arguments = IdOf(headers, 4, 4) + " with " + IdsOf(with, 4, 4) + file;
    const int status = Take(self, "SetMail", arguments, headers, HasNext(header, kHeader), with, std::move(bytes));
    return status != 0 ? status : g_store->End("SetMail");
  }
};

ScriptedMailStore::ScriptedMailStore() {
  g_store = this;
  Install(handset::kMailStore,
          {
              {u"CMailDBSync", AddressOf(&MailMembers::Construct)},
              {u"InitCEDB", AddressOf(&MailMembers::InitCEDB)},
              {u"CloseCEDB", AddressOf(&MailMembers::CloseCEDB)},
              {u"DisConnectDB", AddressOf(&MailMembers::DisConnectDB)},
              {u"Sync_GetUserInfo", AddressOf(&MailMembers::Get<kUser>)},
              {u"Sync_GetConfigInfo", AddressOf(&MailMembers::Get<kConfig>)},
              {u"Sync_GetFilterInfo", AddressOf(&MailMembers::Get<kFilter>)},
              {u"Sync_GetLinkManInfo", AddressOf(&MailMembers::Get<kContact>)},
              {u"Sync_GetFolderInfo", AddressOf(&MailMembers::Get<kFolder>)},
              {u"Sync_GetUIDLInfo", AddressOf(&MailMembers::Get<kUidl>)},
              {u"Sync_GetMailHeaderInfo", AddressOf(&MailMembers::Get<kHeader>)},
              {u"Sync_GetMailAddressInfo", AddressOf(&MailMembers::Get<kAddress>)},
              {u"Sync_SetUserInfo", AddressOf(&MailMembers::SetUser)},
              {u"Sync_SetUIDLInfo", AddressOf(&MailMembers::SetUidls)},
              {u"Sync_SetFilterInfo", AddressOf(&MailMembers::SetFilter)},
              {u"Sync_QueryHeaderByUserId", AddressOf(&MailMembers::QueryHeaders)},
              {u"Sync_SetFolderInfo", AddressOf(&MailMembers::SetFolder)},
              {u"Sync_SetMailInfo", AddressOf(&MailMembers::SetMail)},
          },
          {}, 0);
}

ScriptedMailStore::~ScriptedMailStore() {
  EXPECT_EQ(object_, nullptr) << "the object was never destroyed";
  g_store = nullptr;
}

int ScriptedMailStore::Begin(const CMailDBSync* self, const std::string& member, const std::string& arguments) {
  EXPECT_NE(self, nullptr) << member;
  EXPECT_EQ(self, object_) << member << " of another object";
  calls.push_back(arguments.empty() ? member : member + " " + arguments);
  blocks_at_last[member] = handset::TakeCensus().blocks;
  if (member == "CMailDBSync" || member == "Delete") return 0;
  if (++counted_calls_ == fail_call) {
    failed_a_call = true;
    return kRefused;
  }
  const unsigned time = ++calls_by_name_[member];
  if (const auto refused = refusals.find(member); refused != refusals.end() && refused->second.contains(time)) {
    return refused->second.at(time);
  }
  const auto status = statuses.find(member);
  return status == statuses.end() ? 0 : status->second;
}

int ScriptedMailStore::End(const std::string& member) const {
  const auto complaint = complaints.find(member);
  return complaint == complaints.end() ? 0 : complaint->second;
}

Node* ScriptedMailStore::NewList(const Nodes& nodes, std::size_t node_size) {
  is_allocating = true;
  Node* head = nullptr;
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
    EXPECT_EQ(node->size(), node_size) << "a node that the test holds";
    Node* const block = NewBlock(node->data(), node_size);
    std::memcpy(block + node_size - kPointerSize, &head, kPointerSize);
    head = block;
  }
  is_allocating = false;
  return head;
}

void ScriptedMailStore::Forget() {
  calls.clear();
  handed_over.clear();
}

void ScriptedMailStore::Refuse(unsigned n) {
  fail_call = counted_calls_ + n;
  failed_a_call = false;
}

Nodes ScriptedMailStore::NodesSet(MailKind kind) const {
  const std::string call = std::string(kSetters[kind]) + " ";
  const bool is_second = kind == kConfig || kind == kContact || kind == kAddress;
  Nodes nodes;
  for (const HandedOver& handed : handed_over) {
    if (!handed.call.starts_with(call)) continue;
    const Nodes& list = is_second ? handed.second : handed.first;
    nodes.insert(nodes.end(), list.begin(), list.end());
  }
  return nodes;
}

std::vector<std::string> ScriptedMailStore::CallsThatSet() const {
  std::vector<std::string> set;
  for (const HandedOver& handed : handed_over) set.push_back(handed.call);
  return set;
}

std::vector<std::uint32_t> ScriptedMailStore::MessagesSet() const {
  std::vector<std::uint32_t> ids;
  for (const Bytes& header : NodesSet(kHeader)) ids.push_back(Get32(header, 4));
  return ids;
}

}  // namespace qv_test
