// The lists of nodes that the e-mail library hands out and takes: owned here, whoever made them.
#ifndef QV_MODULES_MAIL_NODE_LIST_H
#define QV_MODULES_MAIL_NODE_LIST_H

#include <cstdint>

#include "layout/record_layout.h"
#include "platform/mail_store.h"

namespace qv::mail {

using mail_store::Node;

class NodeList {
 public:
  /// An empty list of nodes of this form.
  explicit NodeList(const layout::RecordLayout& form) : form_(form) {}
  ~NodeList();
  NodeList(const NodeList&) = delete;
  NodeList& operator=(const NodeList&) = delete;

  /// A whole list of the library's in place of this empty one.
  void Adopt(Node* head) { head_ = head; }

  /// Adds a node made from an exchange record, or a zero one from none. Null without memory.
  Node* Append(const std::uint8_t* exchange_record);

  /// Null at the end of the list.
  Node* first() const { return head_; }
  Node* NextOf(const Node* node) const;

 private:
  void LinkTo(Node* node, Node* next) const;

  const layout::RecordLayout& form_;
  Node* head_ = nullptr;
  Node* last_ = nullptr;  ///< Of the nodes appended.
};

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_NODE_LIST_H
