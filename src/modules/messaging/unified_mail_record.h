// One mail with all that belongs to it, between the store's form, which is spread over blocks of memory, and that of
// the exchange table, where it lies in one piece.
#ifndef QV_MODULES_MESSAGING_UNIFIED_MAIL_RECORD_H
#define QV_MODULES_MESSAGING_UNIFIED_MAIL_RECORD_H

#include <cstdint>

#include "modules/messaging/unified_mail_layout.h"
#include "platform/file.h"
#include "platform/memory.h"
#include "sync/exchange_table.h"
#include "sync/result.h"

namespace qv::unified_mail {

/// Makes `exchange` the mail as the table has it. kNoMemory; kReadFailed for a text that the store says there is, but
/// not where.
Result MailToExchange(std::uint32_t table, const std::uint8_t* record, List<std::uint8_t>& exchange);

/// A mail from the table, in the store's form as long as this lives.
class IncomingMail {
 public:
  /// Reads the next. `more` is false at the end, and after a failure: kFileUnreadable, also for a mail that claims more
  /// than the file has; kNoMemory.
  Result Read(File& mails, FileRest& rest, bool& more);

  std::uint32_t id() const { return layout::LoadSlot(kMailId, exchange_); }
  /// The store knows its tables by one byte.
  std::uint32_t table() const { return layout::LoadSlot(kTable, exchange_) & 0xFF; }
  const std::uint8_t* record() const { return record_; }

 private:
  Result ReadParts(File& mails);
  Result ReadItems182(File& mails, std::uint32_t count);
  Result ReadItems308(File& mails, std::uint32_t count);
  Result ReadText(File& mails, std::uint32_t length);

  std::uint8_t exchange_[kMailExchangeSize];
  alignas(std::uint32_t) std::uint8_t record_[kMailStoreSize];
  List<std::uint8_t> nodes_182_;
  List<std::uint8_t> nodes_308_;
  List<char> text_;
};

}  // namespace qv::unified_mail

#endif  // QV_MODULES_MESSAGING_UNIFIED_MAIL_RECORD_H
