// Each field of the eight kinds at its place, by hand.
#include "tests/support/mail_records.h"

#include <algorithm>

namespace qv_test {
namespace {

constexpr MailText kUserTexts[] = {{6, 62, 4, 62},       {68, 130, 66, 130},    {198, 508, 196, 102},
                                   {706, 508, 298, 258}, {1214, 122, 556, 122}, {1336, 122, 678, 122}};
constexpr CopiedBytes kUserBytes[] = {{4, 1, 0}, {1458, 6, 800}};
constexpr std::size_t kUserKeys[] = {0};

void PutUserNode(Bytes& n) {
  Put8(n, 4, kMailAccount);
  for (std::uint8_t i = 0; i < 6; ++i) Put8(n, 1458u + i, static_cast<std::uint8_t>(0xA1 + i));
}

void PutUserRecord(Bytes& r) {
  Put8(r, 0, kMailAccount);
  for (std::uint8_t i = 0; i < 6; ++i) Put8(r, 800u + i, static_cast<std::uint8_t>(0xA1 + i));
}

constexpr MailText kConfigTexts[] = {{12, 130, 14, 130}, {144, 402, 146, 42}};
constexpr CopiedBytes kConfigBytes[] = {{4, 2, 4}, {6, 2, 8}, {8, 2, 10}, {10, 2, 12}, {142, 2, 144}, {546, 2, 188}};
constexpr std::size_t kConfigKeys[] = {4, 5, 6, 7};

void PutConfigNode(Bytes& n) {
  Put16(n, 4, kMailAccount);
  Put16(n, 6, 0x8182);
  Put16(n, 8, 0x8384);
  Put16(n, 10, 0x8586);
  Put16(n, 142, 0x8788);
  Put16(n, 546, 0x898A);
}

void PutConfigRecord(Bytes& r) {
  Put32(r, 4, kMailAccount);
  Put16(r, 8, 0x8182);
  Put16(r, 10, 0x8384);
  Put16(r, 12, 0x8586);
  Put16(r, 144, 0x8788);
  Put16(r, 188, 0x898A);
}

constexpr MailText kFilterTexts[] = {
    {6, 62, 8, 62}, {70, 130, 72, 130}, {200, 130, 202, 130}, {330, 130, 332, 130}, {462, 202, 462, 202}};
constexpr CopiedBytes kFilterBytes[] = {{4, 1, 0},     {68, 1, 70},   {460, 1, 4},   {664, 4, 664}, {668, 1, 668},
                                        {669, 1, 669}, {670, 1, 670}, {671, 1, 672}, {672, 1, 676}, {673, 1, 680}};
constexpr std::size_t kFilterKeys[] = {0, 4, 5, 6, 7, 70, 676, 677, 678, 679};

void PutFilterNode(Bytes& n) {
  Put8(n, 4, kMailFilter);
  Put8(n, 68, 1);
  Put8(n, 460, kMailAccount);
  Put32(n, 664, 0xB1B2B3B4);
  Put8(n, 668, 0xB5);
  Put8(n, 669, 0xB6);
  Put8(n, 670, 0xB7);
  Put8(n, 671, 0xB8);
  Put8(n, 672, kMailFolder);
  Put8(n, 673, 0xB9);
}

void PutFilterRecord(Bytes& r) {
  Put8(r, 0, kMailFilter);
  Put32(r, 4, kMailAccount);
  Put8(r, 70, 1);
  Put32(r, 664, 0xB1B2B3B4);
  Put8(r, 668, 0xB5);
  Put8(r, 669, 0xB6);
  Put8(r, 670, 0xB7);
  Put8(r, 672, 0xB8);
  Put32(r, 676, kMailFolder);
  Put8(r, 680, 0xB9);
}

constexpr MailText kContactTexts[] = {{6, 62, 8, 62}, {68, 130, 70, 130}};
constexpr CopiedBytes kContactBytes[] = {{4, 1, 4}, {200, 1, 200}, {204, 4, 204}, {208, 2, 208}, {212, 4, 212}};
constexpr std::size_t kOwnerKeys[] = {4, 5, 6, 7};

/// What an address has in common with a filter's contact, the same on both sides.
void PutPerson(Bytes& bytes) {
  Put8(bytes, 200, 0xC1);
  Put32(bytes, 204, 0xC2C3C4C5);
  Put16(bytes, 208, 0xC6C7);
  Put32(bytes, 212, 0xC8C9CACB);
}

void PutContactNode(Bytes& n) {
  PutPerson(n);
  Put8(n, 4, kMailFilter);
}

void PutContactRecord(Bytes& r) {
  PutPerson(r);
  Put32(r, 4, kMailFilter);
}

constexpr MailText kFolderTexts[] = {{6, 62, 8, 62}};
constexpr CopiedBytes kFolderBytes[] = {{4, 1, 0}, {5, 1, 4}, {68, 1, 70}, {72, 1, 71}, {73, 1, 72}};
constexpr std::size_t kFolderKeys[] = {0, 4, 5, 6, 7, 71};

void PutFolderNode(Bytes& n) {
  Put8(n, 4, kMailFolder);
  Put8(n, 5, kMailAccount);
  Put8(n, 68, 0xD1);
  Put8(n, 72, 0);  // Its filters are applied.
  Put8(n, 73, 0xD2);
}

void PutFolderRecord(Bytes& r) {
  Put8(r, 0, kMailFolder);
  Put32(r, 4, kMailAccount);
  Put8(r, 70, 0xD1);
  Put8(r, 71, 0);
  Put8(r, 72, 0xD2);
}

constexpr MailText kUidlTexts[] = {{6, 122, 8, 124}};
constexpr CopiedBytes kUidlBytes[] = {{0, 4, 0}, {4, 2, 4}};

void PutUidlNode(Bytes& n) {
  Put32(n, kUidlNumber, 0xE1E2E3E4);
  Put16(n, 4, kMailAccount);
}

void PutUidlRecord(Bytes& r) {
  Put32(r, kUidlNumber, 0xE1E2E3E4);
  Put32(r, 4, kMailAccount);
}

constexpr MailText kHeaderTexts[] = {{12, 122, 14, 122},   {148, 142, 146, 142}, {322, 62, 352, 62},
                                     {384, 130, 414, 130}, {514, 202, 544, 202}, {716, 130, 746, 130}};
// Ids, numbers and flags, two dates of year, month, day, hour, minute and second, flags.
constexpr CopiedBytes kHeaderBytes[] = {{4, 4, 0},     {9, 1, 4},     {8, 1, 8},     {10, 1, 12},   {11, 1, 13},
                                        {136, 4, 136}, {140, 4, 140}, {144, 1, 144}, {290, 2, 288}, {292, 2, 292},
                                        {296, 2, 296}, {298, 2, 300}, {300, 2, 304}, {302, 2, 308}, {306, 2, 320},
                                        {308, 2, 324}, {312, 2, 328}, {314, 2, 332}, {316, 2, 336}, {318, 2, 340},
                                        {846, 1, 876}, {847, 1, 877}, {850, 1, 878}, {852, 1, 879}};
constexpr std::size_t kHeaderKeys[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

void PutHeaderNode(Bytes& n) {
  Put32(n, 4, kMailMessage);
  Put8(n, 8, kMailAccount);
  Put8(n, 9, kMailFolder);
  Put8(n, 10, 0xF1);
  Put8(n, 11, 0xF2);
  Put32(n, 136, 0x91929394);
  Put32(n, 140, 0x95969798);
  Put8(n, 144, 0xF3);
  Put16(n, 290, 2006);  // first date
  Put16(n, 292, 12);
  Put16(n, 296, 11);
  Put16(n, 298, 7);
  Put16(n, 300, 2);
  Put16(n, 302, 10);
  Put16(n, 306, 0xFFFE);  // second date, which none is: dates travel unjudged
  Put16(n, 308, 0);
  Put16(n, 312, 32);
  Put16(n, 314, 25);
  Put16(n, 316, 61);
  Put16(n, 318, 0x8001);
  Put8(n, 846, 0xF4);
  Put8(n, 847, 0xF5);
  Put8(n, 848, 0);  // The file is not on the storage card.
  Put8(n, 850, 0xF6);
  Put8(n, 852, 0xF7);
}

void PutHeaderRecord(Bytes& r) {
  Put32(r, 0, kMailMessage);
  Put32(r, 4, kMailFolder);
  Put32(r, 8, kMailAccount);
  Put8(r, 12, 0xF1);
  Put8(r, 13, 0xF2);
  Put32(r, 136, 0x91929394);
  Put32(r, 140, 0x95969798);
  Put8(r, 144, 0xF3);
  Put32(r, 288, 2006);  // first date
  Put32(r, 292, 12);
  Put32(r, 296, 11);
  Put32(r, 300, 7);
  Put32(r, 304, 2);
  Put32(r, 308, 10);
  Put32(r, 320, 0xFFFE);  // second date
  Put32(r, 324, 0);
  Put32(r, 328, 32);
  Put32(r, 332, 25);
  Put32(r, 336, 61);
  Put32(r, 340, 0x8001);
  Put8(r, 876, 0xF4);
  Put8(r, 877, 0xF5);
  Put8(r, 878, 0xF6);
  Put8(r, 879, 0xF7);
}

constexpr MailText kAddressTexts[] = {{8, 62, 8, 62}, {70, 130, 70, 130}};
constexpr CopiedBytes kAddressBytes[] = {{4, 4, 4}, {200, 1, 200}, {204, 4, 204}, {208, 2, 208}, {212, 4, 212}};

void PutAddress(Bytes& bytes) {
  PutPerson(bytes);
  Put32(bytes, 4, kMailMessage);
}

/// As much of a text as the other side takes: up to where it leaves room for a NUL.
std::size_t Taken(std::size_t size, std::size_t other_size) {
  return std::min(size, other_size - 2);
}

/// Characters of an 8-bit text that reach the record, and that reach the node. The field's last stays free for the NUL.
std::size_t NarrowToRecord(const MailText& text) {
  return std::min(text.node_size, text.record_size / 2 - 1);
}
std::size_t NarrowToNode(const MailText& text) {
  return std::min(text.record_size / 2, text.node_size - 1);
}

/// `size` bytes of characters that no other text of a record has at their place, and zeros to the end of the field.
void PutSample(Bytes& bytes, std::size_t at, std::size_t field_size, std::size_t size, std::size_t text) {
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), field_size, std::uint8_t{0});
  for (std::size_t i = 0; i < size / 2; ++i) {
    Put16(bytes, at + 2 * i, static_cast<std::uint16_t>(0x4E00 + 0x100 * text + i));
  }
}

/// The same of an 8-bit text, `width` bytes a character.
void PutNarrowSample(Bytes& bytes, std::size_t at, std::size_t field_size, std::size_t length, std::size_t width) {
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), field_size, std::uint8_t{0});
  for (std::size_t i = 0; i < length; ++i) {
    Put8(bytes, at + width * i, static_cast<std::uint8_t>("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[i % 36]));
  }
}

/// A source is full and has 0xFF where nobody looks; of what was made from one, the texts are cut and the rest is zero.
Bytes NodeSample(MailKind kind, bool is_source) {
  const MailForm& form = kMailForms[kind];
  Bytes node(kMailNodeSizes[kind], is_source ? 0xFF : 0);
  for (std::size_t i = 0; i < form.texts.size(); ++i) {
    const MailText& text = form.texts[i];
    const std::size_t size = is_source ? text.node_size : Taken(text.record_size, text.node_size);
    PutSample(node, text.node, text.node_size, size, i);
  }
  const MailText& narrow = form.narrow_text;
  if (narrow.node_size != 0) {
    PutNarrowSample(node, narrow.node, narrow.node_size, is_source ? narrow.node_size : NarrowToNode(narrow), 1);
  }
  form.put_node(node);
  return node;
}

Bytes RecordSample(MailKind kind, bool is_source) {
  const MailForm& form = kMailForms[kind];
  Bytes record(form.record_size, is_source ? 0xFF : 0);
  for (std::size_t i = 0; i < form.texts.size(); ++i) {
    const MailText& text = form.texts[i];
    const std::size_t size = is_source ? text.record_size : Taken(text.node_size, text.record_size);
    PutSample(record, text.record, text.record_size, size, i);
  }
  const MailText& narrow = form.narrow_text;
  if (narrow.node_size != 0) {
    const std::size_t length = is_source ? narrow.record_size / 2 : NarrowToRecord(narrow);
    PutNarrowSample(record, narrow.record, narrow.record_size, length, 2);
  }
  form.put_record(record);
  return record;
}

}  // namespace

// clang-format off
const MailForm kMailForms[kMailKinds] = {
    {"User", u"\\sync\\mailuser.tbl", 844, kUserTexts, {}, kUserBytes, PutUserNode, PutUserRecord, kUserKeys},
    {"Config", u"\\sync\\mailconfig.tbl", 192, kConfigTexts, {}, kConfigBytes, PutConfigNode, PutConfigRecord,
     kConfigKeys},
    {"Filter", u"\\sync\\mailfilter.tbl", 4820, kFilterTexts, {}, kFilterBytes, PutFilterNode, PutFilterRecord,
     kFilterKeys},
    {"Contact", u"\\sync\\maillinkman.tbl", 252, kContactTexts, {}, kContactBytes, PutContactNode, PutContactRecord,
     kOwnerKeys},
    {"Folder", u"\\sync\\mailfolder.tbl", 628, kFolderTexts, {80, 256, 80, 514}, kFolderBytes, PutFolderNode,
     PutFolderRecord, kFolderKeys},
    {"Uidl", u"\\sync\\mailuidl.tbl", 132, kUidlTexts, {}, kUidlBytes, PutUidlNode, PutUidlRecord, kOwnerKeys},
    {"Header", u"\\sync\\mailhead.tbl", 1940, kHeaderTexts, {853, 256, 880, 510}, kHeaderBytes, PutHeaderNode,
     PutHeaderRecord, kHeaderKeys},
    {"Address", u"\\sync\\mailaddress.tbl", 252, kAddressTexts, {}, kAddressBytes, PutAddress, PutAddress, kOwnerKeys},
};
// clang-format on

Bytes ExportedNode(MailKind kind) {
  return NodeSample(kind, true);
}

Bytes ExportedRecord(MailKind kind) {
  Bytes record = RecordSample(kind, false);
  if (kind == kHeader) PutText(record, kHeaderPath, u"\\dbdata\\mail\\file\\17.eml");
  return record;
}

Bytes RecoveredRecord(MailKind kind) {
  return RecordSample(kind, true);
}

Bytes RecoveredNode(MailKind kind) {
  Bytes node = NodeSample(kind, false);
  if (kind == kUidl) Put32(node, kUidlNumber, 0);
  return node;
}

std::vector<CopiedBytes> CarriedToRecord(MailKind kind) {
  const MailForm& form = kMailForms[kind];
  std::vector<CopiedBytes> carried(form.carried.begin(), form.carried.end());
  for (const MailText& text : form.texts) {
    carried.push_back({text.node, Taken(text.node_size, text.record_size), text.record});
  }
  const MailText& narrow = form.narrow_text;
  const std::size_t length = narrow.node_size == 0 ? 0 : NarrowToRecord(narrow);
  for (std::size_t i = 0; i < length; ++i) carried.push_back({narrow.node + i, 1, narrow.record + 2 * i});
  return carried;
}

std::vector<CopiedBytes> CarriedToNode(MailKind kind) {
  const MailForm& form = kMailForms[kind];
  std::vector<CopiedBytes> carried;
  for (const CopiedBytes& field : form.carried) {
    if (kind != kUidl || field.from != kUidlNumber) carried.push_back({field.to, field.size, field.from});
  }
  for (const MailText& text : form.texts) {
    carried.push_back({text.record, Taken(text.record_size, text.node_size), text.node});
  }
  const MailText& narrow = form.narrow_text;
  const std::size_t length = narrow.node_size == 0 ? 0 : NarrowToNode(narrow);
  for (std::size_t i = 0; i < length; ++i) carried.push_back({narrow.record + 2 * i, 1, narrow.node + i});
  return carried;
}

Bytes UserRecord(std::uint32_t id) {
  Bytes r(844);
  Put32(r, 0, id);
  Put8(r, 800, static_cast<std::uint8_t>(id));
  return r;
}

Bytes ConfigRecord(std::uint32_t account, std::uint8_t mark) {
  Bytes r(192);
  Put32(r, 4, account);
  Put8(r, 8, mark);
  return r;
}

Bytes FilterRecord(std::uint32_t id, std::uint32_t account, std::uint32_t folder, std::uint8_t has_contacts) {
  Bytes r(4820);
  Put32(r, 0, id);
  Put32(r, 4, account);
  Put8(r, 70, has_contacts);
  Put32(r, 676, folder);
  return r;
}

Bytes ContactRecord(std::uint32_t filter, std::uint8_t mark) {
  Bytes r(252);
  Put32(r, 4, filter);
  Put8(r, 200, mark);
  return r;
}

Bytes FolderRecord(std::uint32_t id, std::uint32_t account, std::uint8_t kind) {
  Bytes r(628);
  Put32(r, 0, id);
  Put32(r, 4, account);
  Put8(r, 71, kind);
  return r;
}

Bytes UidlRecord(std::uint32_t account, std::uint8_t mark) {
  Bytes r(132);
  Put32(r, 4, account);
  Put8(r, 8, mark);
  return r;
}

Bytes HeaderRecord(std::uint32_t id, std::uint32_t folder, std::uint32_t account) {
  Bytes r(1940);
  Put32(r, 0, id);
  Put32(r, 4, folder);
  Put32(r, 8, account);
  return r;
}

Bytes AddressRecord(std::uint32_t message, std::uint8_t mark) {
  return ContactRecord(message, mark);  // Of the same form.
}

Bytes HeaderNode(std::uint32_t id, std::uint8_t card) {
  Bytes n(kMailNodeSizes[kHeader]);
  Put32(n, 4, id);
  Put8(n, 848, card);
  return n;
}

void PutKeyIntoNode(Bytes& node, const HeaderKey& key) {
  PutText(node, 384, key.text_1);
  Put16(node, 290, key.date.wYear);
  Put16(node, 292, key.date.wMonth);
  Put16(node, 294, key.date.wDayOfWeek);
  Put16(node, 296, key.date.wDay);
  Put16(node, 298, key.date.wHour);
  Put16(node, 300, key.date.wMinute);
  Put16(node, 302, key.date.wSecond);
  Put16(node, 304, key.date.wMilliseconds);
  PutText(node, 514, key.text_2);
}

void PutKeyIntoRecord(Bytes& record, const HeaderKey& key) {
  PutText(record, 414, key.text_1);
  Put32(record, 288, key.date.wYear);
  Put32(record, 292, key.date.wMonth);
  Put32(record, 296, key.date.wDay);
  Put32(record, 300, key.date.wHour);
  Put32(record, 304, key.date.wMinute);
  Put32(record, 308, key.date.wSecond);
  PutText(record, 544, key.text_2);
}

}  // namespace qv_test
