// Short messages and the entries of their configuration written out by hand, as the store holds them and as they
// travel. Nothing here comes from the agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_SMS_RECORDS_H
#define QV_TESTS_SUPPORT_SMS_RECORDS_H

#include <array>
#include <span>

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the short messages' files lie on the handset of a behaviour test.
constexpr char16_t kSmsTable[] = u"\\sync\\smsinfo.tbl";
constexpr char16_t kSmsConfig[] = u"\\sync\\smsconf.tbl";
constexpr char16_t kSmsChanges[] = u"\\sync\\smscmd.tbl";
constexpr char16_t kSmsIdMap[] = u"\\sync\\smsmap.tbl";
constexpr char16_t kSmsLog[] = u"\\dbdata\\sysconfig\\smsinfo.log";

constexpr std::size_t kSmsRecordSize = 1624;  ///< In the exchange table.
constexpr std::size_t kSmsSections = 5;
/// Of one entry as it travels, by section.
constexpr std::size_t kSmsSectionSizes[kSmsSections] = {208, 188, 200, 128, 204};
constexpr std::size_t kSmsFolders = 3;  ///< The section of folders, from 0.

/// A table of configuration entries for each section.
using SmsSections = std::array<Bytes, kSmsSections>;

constexpr std::uint32_t kMessageId = 0xA4A1A2A3;
constexpr std::uint32_t kMessageFolder = 77;

/// A message in the store: every field set, and 0xFF wherever an export reads nothing, behind the NULs too.
Bytes StoreShortMessage();
/// The same message as an export writes it.
Bytes ExchangeShortMessage();
/// The same message from a desktop that leaves no byte zero.
Bytes NoisyShortMessage();
/// What a recover hands to the store for either, in this folder.
Bytes RecoveredShortMessage(std::uint32_t folder = 1);

/// An exchange record that says no more than who it is and which folder it is in.
Bytes PlainShortMessage(std::uint32_t id, std::uint32_t folder = 0);
/// What a recover hands to the store for it: times of zeros, and no id.
Bytes RecoveredPlainShortMessage(std::uint32_t folder = 1);

/// One entry for each section, in the same four forms.
SmsSections StoreSmsSections();
SmsSections ExchangeSmsSections();
SmsSections NoisySmsSections();
SmsSections RecoveredSmsSections();

/// A folder as the store holds it, and as it travels.
Bytes StoreSmsFolder(std::uint32_t id, std::u16string_view name);
Bytes ExchangeSmsFolder(std::uint32_t id, std::u16string_view name);

/// The 40 bytes before the sections.
Bytes SmsConfigHeader(const std::array<std::uint32_t, kSmsSections>& counts);
/// A whole smsconf.tbl with these entries.
Bytes SmsConfigFile(const SmsSections& sections);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SMS_RECORDS_H
