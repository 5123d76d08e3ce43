// The messages' and the calls' tables of records in the database, for their store libraries and for tools that create
// data. What else belongs to messages is in sms_database.h, mms_database.h and unified_mail_database.h.
#ifndef QV_HOST_STORES_MESSAGE_KINDS_H
#define QV_HOST_STORES_MESSAGE_KINDS_H

#include <string_view>

#include "host/stores/record_store.h"
#include "modules/messaging/sms_layout.h"

namespace stores {

/// A setting by which a person or a test has UniMailStore.dll take no mail.
inline constexpr std::string_view kUnifiedMailAddRefusal = "unified_mail_add_refusal";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

extern const KindDescription kSmsKind;
/// The sections of the short messages' configuration in their order.
extern const KindDescription kSmsSectionKinds[qv::sms::kSections];
/// As far as a multimedia message is a record: text and data are columns of their own.
extern const KindDescription kMmsKind;
extern const KindDescription kCallKinds[1];

/// By table number, as far as a mail is a record: its text is a column of its own, and its items lie elsewhere.
extern const KindDescription kUnifiedMailKinds[2];
inline constexpr std::size_t kMailsReceived = 0;
inline constexpr std::size_t kMailsSent = 1;

/// What the unified mail's store gives and takes as whole lists.
extern const KindDescription kUnifiedMailListKinds[3];
inline constexpr std::size_t kUnifiedMailFolders = 0;
inline constexpr std::size_t kUnifiedMailFolderRules = 1;
inline constexpr std::size_t kUnifiedMailSenderRules = 2;

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_MESSAGE_KINDS_H
