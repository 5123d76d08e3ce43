// The name of a message's file, in the exchange directory or as a path on the phone, built for one use: the text lives
// as long as the value.
#ifndef QV_MODULES_MAIL_MESSAGE_FILE_H
#define QV_MODULES_MAIL_MESSAGE_FILE_H

#include <cstdint>

#include "platform/coredll.h"

namespace qv::mail {

class MessageFile {
 public:
  /// `format` is one of those in mail.h.
  MessageFile(const char16_t* format, std::uint32_t message_id) {
    coredll::_snwprintf(text_, kCapacity - 1, format, message_id);
  }
  operator const char16_t*() const { return text_; }  // NOLINT(google-explicit-constructor): it is a name's text

 private:
  static constexpr std::size_t kCapacity = 64;
  char16_t text_[kCapacity] = {};
};

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_MESSAGE_FILE_H
