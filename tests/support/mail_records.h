// Nodes and records of the e-mail database written out by hand, as the library holds them and as they travel. Nothing
// here comes from the agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_MAIL_RECORDS_H
#define QV_TESTS_SUPPORT_MAIL_RECORDS_H

#include <span>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_mail_store.h"

namespace qv_test {

/// Where a wide text lies on both sides, in bytes.
struct MailText {
  std::size_t node, node_size;
  std::size_t record, record_size;
};

/// A kind of node, and the records that it travels in.
struct MailForm {
  const char* name;
  const char16_t* table;
  std::size_t record_size;
  std::span<const MailText> texts;
  /// An 8-bit text of the node, 256 bytes; the record's is wide. 0 without one.
  MailText narrow_text;
  /// The bytes of other fields that either side takes from the other: from the node to the record.
  std::span<const CopiedBytes> carried;
  // They put a value of its own into each field that is no text, and leave all other bytes as they are.
  void (*put_node)(Bytes& node);
  void (*put_record)(Bytes& record);
  /// Bytes of the record by which it is found, or others are found for it.
  std::span<const std::size_t> keys;
};

/// The one number that a recover does not take: where it lies in a UIDL, on both sides.
constexpr std::size_t kUidlNumber = 0;
/// Where an exported header says where the message's file lies.
constexpr std::size_t kHeaderPath = 1390;

/// By MailKind.
extern const MailForm kMailForms[kMailKinds];

// The ids in the samples, which belong together: the account has a folder with a filter and a message in it.
constexpr std::uint8_t kMailAccount = 5;
constexpr std::uint8_t kMailFolder = 3;
constexpr std::uint8_t kMailFilter = 7;
constexpr std::uint32_t kMailMessage = 17;

// Samples of each kind: every field has a value of its own, texts fill their field to the last character and have no
// NUL, and each byte that the other side does not take is 0xFF.
Bytes ExportedNode(MailKind kind);
Bytes ExportedRecord(MailKind kind);   ///< Of that node.
Bytes RecoveredRecord(MailKind kind);  ///< As a desktop may send it.
Bytes RecoveredNode(MailKind kind);    ///< Of that record.

/// What either side takes, text by text and field by field, each up to where it leaves room for a NUL: to the record
/// from the node, and to the node from the record. An 8-bit text goes by its characters' low bytes.
std::vector<CopiedBytes> CarriedToRecord(MailKind kind);
std::vector<CopiedBytes> CarriedToNode(MailKind kind);

// Records that are zero but for what tells whom they belong to; `mark` tells them apart.
Bytes UserRecord(std::uint32_t id);                                ///< Its flags at 800 are the low byte of the id.
Bytes ConfigRecord(std::uint32_t account, std::uint8_t mark = 0);  ///< The mark is at 8.
Bytes FilterRecord(std::uint32_t id, std::uint32_t account, std::uint32_t folder, std::uint8_t has_contacts = 0);
Bytes ContactRecord(std::uint32_t filter, std::uint8_t mark = 0);  ///< The mark is at 200.
Bytes FolderRecord(std::uint32_t id, std::uint32_t account, std::uint8_t kind = 0);
Bytes UidlRecord(std::uint32_t account, std::uint8_t mark = 0);  ///< The mark is the text's first character.
Bytes HeaderRecord(std::uint32_t id, std::uint32_t folder, std::uint32_t account);
Bytes AddressRecord(std::uint32_t message, std::uint8_t mark = 0);  ///< The mark is at 200.

/// A header in the library, of a message whose file is in its memory or on the card.
Bytes HeaderNode(std::uint32_t id, std::uint8_t card = 0);

/// What tells a header that is there already: the text at 384, the first date, and the text at 514.
struct HeaderKey {
  std::u16string text_1;
  coredll::SYSTEMTIME date;
  std::u16string text_2;
};
void PutKeyIntoNode(Bytes& node, const HeaderKey& key);
void PutKeyIntoRecord(Bytes& record, const HeaderKey& key);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_MAIL_RECORDS_H
