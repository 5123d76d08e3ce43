// Unified mail written out by hand, as the store holds it and as it travels: mails, the items that hang on them, and
// the text behind. Nothing here comes from the agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_UNIFIED_MAIL_RECORDS_H
#define QV_TESTS_SUPPORT_UNIFIED_MAIL_RECORDS_H

#include <optional>

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the unified mail's files lie on the handset of a behaviour test.
constexpr char16_t kUnMailTable[] = u"\\sync\\UnMailinfo.tbl";
constexpr char16_t kUnMailChanges[] = u"\\sync\\UnMailcmd.tbl";
constexpr char16_t kUnMailFolders[] = u"\\sync\\UnMailFolder.tbl";
constexpr char16_t kUnMailFolderRules[] = u"\\sync\\UnMailFolderFilt.tbl";
constexpr char16_t kUnMailSenderRules[] = u"\\sync\\UnMailSendFilt.tbl";
constexpr const char16_t* kUnMailRuleFiles[] = {kUnMailFolders, kUnMailFolderRules, kUnMailSenderRules};
/// Not a slip: the tasks' map has the same name.
constexpr char16_t kUnMailIdMap[] = u"\\sync\\taskmap.tbl";
constexpr char16_t kReceivedLog[] = u"\\dbdata\\sysconfig\\unmailrecv.log";
constexpr char16_t kSentLog[] = u"\\dbdata\\sysconfig\\unmailsend.log";

constexpr std::size_t kUnMailSize = 880;       ///< Of an exchange record without items and text.
constexpr std::size_t kStoreUnMailSize = 776;  ///< Of a store record.
constexpr std::size_t kFolderSize = 272;
constexpr std::size_t kRuleSize = 94;

/// Where a mail in the store has the addresses of its chains and of its text, and the text's length. The first three
/// chains are the items of 182 bytes by kind, the fourth the items of 308 bytes.
constexpr std::size_t kUnMailChains = 4;
constexpr std::size_t kChainHeads[kUnMailChains] = {752, 756, 760, 764};
constexpr std::size_t kUnMailTextAt = 768;
constexpr std::size_t kUnMailTextLength = 772;
/// The size of a chain's nodes, whose last four bytes lead to the next.
constexpr std::size_t kNodeSizes[kUnMailChains] = {100, 100, 100, 164};

/// A mail as the store has it.
struct UnMail {
  Bytes record = Bytes(kStoreUnMailSize);    ///< All addresses are zero.
  std::vector<Bytes> chains[kUnMailChains];  ///< Their nodes; the links are zero.
  std::optional<std::string> text = std::nullopt;
  bool operator==(const UnMail&) const = default;
};
void PrintTo(const UnMail& mail, std::ostream* out);

/// 8-bit text and its NUL; what follows keeps its bytes.
void PutNarrowText(Bytes& bytes, std::size_t offset, std::string_view text);
/// A text field, in bytes on both sides.
struct UnMailText {
  std::size_t store, store_size, exchange, exchange_size;
};
inline constexpr UnMailText kUnMailTexts[] = {
    {36, 50, 88, 50}, {86, 130, 138, 130}, {216, 202, 268, 202}, {418, 130, 470, 130}, {548, 202, 632, 204},
};
/// The same of an item of 182 bytes and its node, and of an item of 308 bytes.
inline constexpr UnMailText kItem182Texts[] = {{4, 25, 0, 50}, {29, 67, 50, 130}};
inline constexpr UnMailText kItem308Text = {8, 152, 8, 300};

/// A mail with every field, items of all kinds, and a text that needs two bytes a character in places.
constexpr std::uint32_t kUnMailId = 0xE4A1A2A3;
UnMail StoreUnMail();                       ///< Bytes that do not travel are 0xFF.
Bytes ExchangeUnMail(std::uint32_t table);  ///< The same as it travels.
Bytes NoisyUnMail(std::uint32_t table);     ///< As a desktop may send it: bytes without a meaning are 0xFF.
UnMail RecoveredUnMail();                   ///< What then reaches the store, the text of which is not all there.

/// A mail in the store whose texts, the items' too, fill their fields to the last byte, and as it travels.
UnMail FullStoreUnMail();
Bytes FullExchangeUnMail();
/// The reverse: filled to the last character as it travels, and what then reaches the store.
Bytes FullSentUnMail();
UnMail FullRecoveredUnMail();

/// An item of 182 bytes and of 308 bytes, as they travel and as the store's nodes.
Bytes Item182(std::uint16_t kind, std::u16string_view first = {}, std::u16string_view second = {});
Bytes Node182(std::string_view first = {}, std::string_view second = {});
Bytes Item308(std::uint32_t first, std::uint32_t second = 0, std::u16string_view text = {});
Bytes Node308(std::uint32_t first, std::uint32_t second = 0, std::string_view text = {});

/// A mail as it travels, zero but for this.
struct SentUnMail {
  std::uint32_t table = 0;
  std::uint32_t id = 0;
  std::vector<Bytes> items_182 = {};  ///< Those of kinds 0 to 2 are counted by kind.
  std::vector<Bytes> items_308 = {};
  std::u16string text = {};
};
Bytes UnMailRecord(const SentUnMail& mail);
Bytes PlainUnMail(std::uint32_t table, std::uint32_t id);
/// A mail in the store, zero but for its id; and one that has this text.
UnMail PlainStoreUnMail(std::uint32_t id);
UnMail StoreUnMailWithText(std::uint32_t id, std::string_view text);

/// `count` folders, or rules, no two of them alike.
Bytes Folders(std::size_t count);
Bytes Rules(std::size_t count, std::uint8_t first = 0x30);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_UNIFIED_MAIL_RECORDS_H
