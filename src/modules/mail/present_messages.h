// The messages that the store holds for an account before a recover adds to them.
#ifndef QV_MODULES_MAIL_PRESENT_MESSAGES_H
#define QV_MODULES_MAIL_PRESENT_MESSAGES_H

#include "modules/mail/mail_database.h"
#include "modules/mail/node_list.h"
#include "sync/indexed_list.h"

namespace qv::mail {

/// What makes two headers the same message: text_4, date_1 to the second, and text_5. A view of a header's node.
struct MessageIdentity {
  const Node* header;

  bool operator==(const MessageIdentity& other) const;
  std::uint32_t Hash() const;
};

class PresentMessages {
 public:
  PresentMessages();

  void Fetch(const MailDatabase& database, int account);
  bool Contains(const Node* header) const;

 private:
  static MessageIdentity IdentityOf(const Node* const& header) { return {header}; }

  NodeList headers_;
  IndexedList<const Node*, MessageIdentity, IdentityOf> index_;
  bool is_indexed_ = true;  ///< Without memory for that, the list itself is searched.
};

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_PRESENT_MESSAGES_H
