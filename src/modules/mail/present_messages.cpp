// Finds a message among those present by what a person would know it by, its id being the store's.
#include "modules/mail/present_messages.h"

#include <array>

#include "layout/bytes.h"
#include "modules/mail/mail_layout.h"

namespace qv::mail {
namespace {

std::uint32_t CharacterAt(const Node* header, const layout::Slot& text, std::size_t offset) {
  return offset < text.size ? layout::LoadNumber(header + text.offset + offset, 2) : 0;
}

bool SameText(const Node* left, const Node* right, const layout::Slot& text) {
  for (std::size_t offset = 0;; offset += 2) {
    const std::uint32_t character = CharacterAt(left, text, offset);
    if (character != CharacterAt(right, text, offset)) return false;
    if (character == 0) return true;
  }
}

std::uint32_t HashText(const Node* header, const layout::Slot& text, std::uint32_t hash) {
  for (std::size_t offset = 0;; offset += 2) {
    const std::uint32_t character = CharacterAt(header, text, offset);
    if (character == 0) return hash;
    hash = HashWord(hash ^ character);
  }
}

using Date = std::array<std::uint8_t, 4 * layout::kTimeParts>;

Date DateOf(const Node* header) {
  Date date;
  layout::PutSystemTimeNumbers(header + kMessageDate1.offset, date.data(), date.size());
  return date;
}

}  // namespace

bool MessageIdentity::operator==(const MessageIdentity& other) const {
  return SameText(header, other.header, kMessageText4) && DateOf(header) == DateOf(other.header) &&
         SameText(header, other.header, kMessageText5);
}

std::uint32_t MessageIdentity::Hash() const {
  std::uint32_t hash = HashText(header, kMessageText4, 0);
  for (const std::uint8_t byte : DateOf(header)) hash = HashWord(hash ^ byte);
  return HashText(header, kMessageText5, hash);
}

PresentMessages::PresentMessages() : headers_(kHeaderLayout) {}

void PresentMessages::Fetch(const MailDatabase& database, int account) {
  Node* head = nullptr;
  (void)mail_store::Sync_QueryHeaderByUserId(database.get(), &head, account);
  headers_.Adopt(head);
  for (const Node* header = head; header != nullptr && is_indexed_; header = headers_.NextOf(header)) {
    is_indexed_ = index_.Append(header);
  }
}

bool PresentMessages::Contains(const Node* header) const {
  if (is_indexed_) return index_.Find({header}) != index_.kAbsent;
  const Node* present = headers_.first();
  while (present != nullptr && !(MessageIdentity{present} == MessageIdentity{header}))
    present = headers_.NextOf(present);
  return present != nullptr;
}

}  // namespace qv::mail
