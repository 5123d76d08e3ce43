// A MailStore.dll in memory for behaviour tests: the class CMailDBSync as the agent imports it. It keeps lists as
// bytes, records the nodes that it is handed, and fails where it is told to. Of the forms it knows where a node's
// pointer to the next one lies, and the ids that it logs.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_MAIL_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_MAIL_STORE_H

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/mail_store.h"
#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

/// In the order in which an export asks for them.
enum MailKind : std::uint8_t { kUser, kConfig, kFilter, kContact, kFolder, kUidl, kHeader, kAddress };
inline constexpr std::size_t kMailKinds = 8;
inline constexpr std::size_t kMailNodeSizes[kMailKinds] = {1468, 552, 680, 220, 340, 132, 1116, 220};

class ScriptedMailStore final : public ScriptedStore {
 public:
  /// Installs itself on the running handset.
  ScriptedMailStore();
  ~ScriptedMailStore() override;

  using Nodes = std::vector<Bytes>;

  // --- What it holds: nodes, whose last four bytes are its own to fill ---

  Nodes lists[kMailKinds];
  /// The headers that it has of an account.
  std::map<int, Nodes> present_headers;

  // --- What it was asked ---

  // Calls are told by the member's name without "Sync_" and "Info": "CMailDBSync", "InitCEDB", "GetUser",
  // "GetMailHeader", "CloseCEDB", "DisConnectDB", "Delete 1" with its flags. With the ids in the nodes, and what else
  // they were asked: "SetUser 5 as 0" with the new id as it came, "SetUIDL [5 5] of 5" with the account,
  // "SetFilter 7 of 5" and "SetFilter 7 with [7 7] of 5", "SetFolder 3 of 5 as 0", "QueryHeaderByUserId 5",
  // "SetMail 17 with [] of 3 bytes", "SetMail 17 with [17] without file".

  /// One call that handed nodes over, in order. A node's pointer to the next one is zeroed in the copies.
  struct HandedOver {
    std::string call;
    Nodes first;    ///< The first argument: the whole list, or of a folder or header, which come in theirs, it alone.
    bool has_next;  ///< Whether the node of the first argument points to a next one.
    Nodes second;   ///< The whole list behind the second argument.
    std::optional<Bytes> body;
  };
  std::vector<HandedOver> handed_over;
  /// The nodes of a kind that were handed over, in order.
  Nodes NodesSet(MailKind kind) const;
  /// The calls that hand something over, in order.
  std::vector<std::string> CallsThatSet() const;
  /// The ids of the messages that were handed over.
  std::vector<std::uint32_t> MessagesSet() const;

  /// Whether it is just making a list: memory that it asks for is not the agent's to miss.
  bool is_allocating = false;
  /// The blocks that there were when each member was last called.
  std::map<std::string, unsigned> blocks_at_last;

  /// Forgets what it was asked.
  void Forget();

  // --- What it answers ---

  /// The id that an account or a folder is given, from its node; std::nullopt: what came in stays. Without a function
  /// they keep their own.
  std::function<std::optional<int>(const Bytes& user)> account_id;
  std::function<std::optional<int>(const Bytes& folder)> folder_id;

  // --- How it departs from the truth ---

  /// Members that answer this instead of doing their work: statuses["SetUser"].
  std::map<std::string, int> statuses;
  /// Single calls that do: refusals["SetMail"][2] is for the second one.
  std::map<std::string, std::map<unsigned, int>> refusals;
  /// The n-th call from now on that answers anything fails.
  void Refuse(unsigned n);
  /// Members that do their work, and then answer this.
  std::map<std::string, int> complaints;
  /// Members that answer success and leave the list's head alone.
  std::set<std::string> fills_nothing;

 private:
  friend struct MailMembers;
  /// Logs a call on the object, its arguments given, and says what it answers: 0 for it to do its work.
  int Begin(const mail_store::CMailDBSync* self, const std::string& member, const std::string& arguments = {});
  int End(const std::string& member) const;
  /// A list of the agent's, from copies.
  mail_store::Node* NewList(const Nodes& nodes, std::size_t node_size);

  mail_store::CMailDBSync* object_ = nullptr;
  unsigned counted_calls_ = 0;
  std::map<std::string, unsigned> calls_by_name_;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_MAIL_STORE_H
