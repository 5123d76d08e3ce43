// Nodes come and go one by one, because that is how the library allocates and frees them.
#include "modules/mail/node_list.h"

#include <cstring>

#include "modules/mail/mail_layout.h"
#include "platform/coredll.h"

namespace qv::mail {

static_assert(sizeof(Node*) == kNextNodeSize);

NodeList::~NodeList() {
  while (head_ != nullptr) {
    Node* const next = NextOf(head_);
    coredll::free(head_);
    head_ = next;
  }
}

Node* NodeList::Append(const std::uint8_t* exchange_record) {
  auto* const node = static_cast<Node*>(coredll::malloc(form_.store_size));
  if (node == nullptr) return nullptr;
  if (exchange_record != nullptr) {
    layout::ToStore(form_, exchange_record, node);
  } else {
    std::memset(node, 0, form_.store_size);
  }
  if (last_ == nullptr) {
    head_ = node;
  } else {
    LinkTo(last_, node);
  }
  return last_ = node;
}

Node* NodeList::NextOf(const Node* node) const {
  Node* next;
  std::memcpy(&next, node + form_.store_size - kNextNodeSize, kNextNodeSize);
  return next;
}

void NodeList::LinkTo(Node* node, Node* next) const {
  std::memcpy(node + form_.store_size - kNextNodeSize, &next, kNextNodeSize);
}

}  // namespace qv::mail
