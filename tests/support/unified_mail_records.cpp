// The bytes of unified mail, offset by offset.
#include "tests/support/unified_mail_records.h"

#include <algorithm>

namespace qv_test {
namespace {

/// One text in both forms. \xCD\xF5 is U+738B, \xD3\xCA U+90AE, \xBC\xFE U+4EF6.
struct Text {
  std::string_view narrow;
  std::u16string_view wide;
};
constexpr Text kText1 = {"Anna \xCD\xF5", u"Anna \u738B"};
constexpr Text kText2 = {"anna@example.org", u"anna@example.org"};
constexpr Text kText3 = {"\xD3\xCA\xBC\xFE: the garden", u"\u90AE\u4EF6: the garden"};
constexpr Text kText4 = {"office@example.com", u"office@example.com"};
constexpr Text kText5 = {"\\My Documents\\\xD3\xCA.dat", u"\\My Documents\\\u90AE.dat"};
constexpr Text kLongText = {"Dear \xCD\xF5, come", u"Dear \u738B, come"};

constexpr Text kItemTexts[][2] = {
    {{"To", u"To"}, {"to@example.org", u"to@example.org"}},
    {{"\xCD\xF5", u"\u738B"}, {"two@example.org", u"two@example.org"}},
    {{"Cc", u"Cc"}, {"cc\xBC\xFE@example.org", u"cc\u4EF6@example.org"}},
    {{"Bcc", u"Bcc"}, {"bcc@example.org", u"bcc@example.org"}},
};
/// The kinds of these items, in the order in which they travel.
constexpr std::uint16_t kItemKinds[] = {0, 0, 1, 2};

constexpr Text kFileTexts[] = {{"\\Temp\\a.txt", u"\\Temp\\a.txt"}, {"\\Temp\\\xBC\xFE", u"\\Temp\\\u4EF6"}};

/// All but the texts.
void PutStoreNumbers(Bytes& r) {
  Put32(r, 0, kUnMailId);
  Put16(r, 4, 0x9EB5);  // From the top: 2, 7, 10, 6, and the flags 1, 0, 1.
  Put8(r, 6, 0x5B);
  Put32(r, 8, 0xB1B2B3B4);
  Put16(r, 12, 2006);  // The first time.
  Put16(r, 14, 12);
  Put16(r, 16, 31);
  Put16(r, 18, 23);
  Put16(r, 20, 59);
  Put16(r, 22, 58);
  Put16(r, 24, 1999);  // The second time.
  Put16(r, 26, 1);
  Put16(r, 28, 2);
  Put16(r, 30, 3);
  Put16(r, 32, 4);
  Put16(r, 34, 5);
}

void PutExchangeNumbers(Bytes& r) {
  Put32(r, 0, kUnMailId);
  Put8(r, 4, 1);
  Put8(r, 5, 0);
  Put8(r, 6, 1);
  Put8(r, 7, 6);
  Put32(r, 12, 10);
  Put8(r, 16, 7);
  Put8(r, 17, 2);
  Put32(r, 20, 0xB1B2B3B4);
  Put32(r, 24, 2006);  // The first time.
  Put32(r, 28, 12);
  Put32(r, 32, 31);
  Put32(r, 36, 23);
  Put32(r, 40, 59);
  Put32(r, 44, 58);
  Put32(r, 56, 1999);  // The second time.
  Put32(r, 60, 1);
  Put32(r, 64, 2);
  Put32(r, 68, 3);
  Put32(r, 72, 4);
  Put32(r, 76, 5);
  Put8(r, 620, 0x5B);
}

void PutStoreTexts(Bytes& r) {
  PutNarrowText(r, 36, kText1.narrow);
  PutNarrowText(r, 86, kText2.narrow);
  PutNarrowText(r, 216, kText3.narrow);
  PutNarrowText(r, 418, kText4.narrow);
  PutNarrowText(r, 548, kText5.narrow);
}

void PutExchangeTexts(Bytes& r) {
  PutTextWithEnd(r, 88, kText1.wide);
  PutTextWithEnd(r, 138, kText2.wide);
  PutTextWithEnd(r, 268, kText3.wide);
  PutTextWithEnd(r, 470, kText4.wide);
  PutTextWithEnd(r, 632, kText5.wide);
}

/// What is counted behind a fixed part.
struct Counts {
  std::uint32_t kinds[3];
  std::uint32_t items_182, items_308, characters;
};

void PutCounts(Bytes& r, const Counts& counts) {
  for (std::size_t kind = 0; kind < 3; ++kind) Put32(r, 600 + 4 * kind, counts.kinds[kind]);
  Put32(r, 612, counts.items_182);
  Put32(r, 628, counts.characters);
  Put32(r, 836, counts.items_308);
}

void AppendText(Bytes& r, std::u16string_view text) {
  const std::size_t end = r.size();
  r.resize(end + 2 * text.size());
  PutText(r, end, text);
}

Bytes Item182With(std::uint8_t unused, std::uint16_t kind, const Text (&texts)[2]) {
  Bytes r(182, unused);
  PutTextWithEnd(r, 0, texts[0].wide);
  PutTextWithEnd(r, 50, texts[1].wide);
  Put16(r, 180, kind);
  return r;
}

Bytes Node182With(std::uint8_t unused, const Text (&texts)[2]) {
  Bytes r(100, unused);
  PutNarrowText(r, 4, texts[0].narrow);
  PutNarrowText(r, 29, texts[1].narrow);
  Put32(r, 96, 0);
  return r;
}

Bytes Item308With(std::uint8_t unused, std::uint32_t number, const Text& text) {
  Bytes r(308, unused);
  Put32(r, 0, 0xC1C2C3C0 + number);
  Put32(r, 4, 0xD1D2D3D0 + number);
  PutTextWithEnd(r, 8, text.wide);
  return r;
}

Bytes Node308With(std::uint8_t unused, std::uint32_t number, const Text& text) {
  Bytes r(164, unused);
  Put32(r, 0, 0xC1C2C3C0 + number);
  Put32(r, 4, 0xD1D2D3D0 + number);
  PutNarrowText(r, 8, text.narrow);
  Put32(r, 160, 0);
  return r;
}

UnMail SampleInStore(std::uint8_t unused) {
  UnMail mail;
  mail.record.assign(kStoreUnMailSize, unused);
  PutStoreNumbers(mail.record);
  PutStoreTexts(mail.record);
  for (const std::size_t head : kChainHeads) Put32(mail.record, head, 0);
  Put32(mail.record, kUnMailTextAt, 0);
  for (std::size_t i = 0; i < 4; ++i) mail.chains[kItemKinds[i]].push_back(Node182With(unused, kItemTexts[i]));
  for (std::uint32_t i = 0; i < 2; ++i) mail.chains[3].push_back(Node308With(unused, i, kFileTexts[i]));
  return mail;
}

Bytes SampleAsItTravels(std::uint8_t unused, std::uint32_t table) {
  Bytes r(kUnMailSize, unused);
  PutExchangeNumbers(r);
  Put32(r, 8, table);
  PutExchangeTexts(r);
  PutCounts(r, {{2, 1, 1}, 4, 2, 12});
  for (std::size_t i = 0; i < 4; ++i) Append(r, Item182With(unused, kItemKinds[i], kItemTexts[i]));
  for (std::uint32_t i = 0; i < 2; ++i) Append(r, Item308With(unused, i, kFileTexts[i]));
  AppendText(r, kLongText.wide);
  return r;
}

// Texts that fill their fields: letters from 'a' to 't' again and again, none of which becomes a NUL when a bit
// changes.

char Letter(std::size_t i) {
  return static_cast<char>('a' + i % 20);
}

void FillNarrow(Bytes& r, std::size_t offset, std::size_t characters) {
  for (std::size_t i = 0; i < characters; ++i) Put8(r, offset + i, static_cast<std::uint8_t>(Letter(i)));
}

void FillWide(Bytes& r, std::size_t offset, std::size_t characters) {
  for (std::size_t i = 0; i < characters; ++i) Put16(r, offset + 2 * i, static_cast<std::uint16_t>(Letter(i)));
}

/// How many characters of each text there are in the store's fields.
struct Fill {
  std::size_t texts[5], item_182[2], item_308;
};

UnMail FilledInStore(const Fill& fill) {
  UnMail mail;
  PutStoreNumbers(mail.record);
  for (std::size_t i = 0; i < 5; ++i) FillNarrow(mail.record, kUnMailTexts[i].store, fill.texts[i]);
  for (std::size_t kind = 0; kind < 3; ++kind) {
    Bytes node(100);
    for (std::size_t i = 0; i < 2; ++i) FillNarrow(node, kItem182Texts[i].store, fill.item_182[i]);
    mail.chains[kind].push_back(node);
  }
  Bytes node = Node308(0xC1C2C3C4, 0xD1D2D3D4);
  FillNarrow(node, 8, fill.item_308);
  mail.chains[3].push_back(node);
  return mail;
}

Bytes FilledAsItTravels(const Fill& fill) {
  Bytes r(kUnMailSize);
  PutExchangeNumbers(r);
  for (std::size_t i = 0; i < 5; ++i) FillWide(r, kUnMailTexts[i].exchange, fill.texts[i]);
  PutCounts(r, {{1, 1, 1}, 3, 1, 6});
  for (std::uint16_t kind = 0; kind < 3; ++kind) {
    Bytes item = Item182(kind);
    for (std::size_t i = 0; i < 2; ++i) FillWide(item, kItem182Texts[i].exchange, fill.item_182[i]);
    Append(r, item);
  }
  Bytes item = Item308(0xC1C2C3C4, 0xD1D2D3D4);
  FillWide(item, 8, fill.item_308);
  Append(r, item);
  AppendText(r, u"abcdef");
  return r;
}

}  // namespace

void PrintTo(const UnMail& mail, std::ostream* out) {
  *out << "{" << testing::PrintToString(mail.record);
  for (const auto& chain : mail.chains) *out << ", chain " << testing::PrintToString(chain);
  *out << ", text " << testing::PrintToString(mail.text) << "}";
}

void PutNarrowText(Bytes& bytes, std::size_t offset, std::string_view text) {
  for (const char character : text) Put8(bytes, offset++, static_cast<std::uint8_t>(character));
  Put8(bytes, offset, 0);
}

UnMail StoreUnMail() {
  UnMail mail = SampleInStore(0xFF);
  mail.text = kLongText.narrow;
  Put32(mail.record, kUnMailTextLength, 13);
  return mail;
}

Bytes ExchangeUnMail(std::uint32_t table) {
  return SampleAsItTravels(0, table);
}

Bytes NoisyUnMail(std::uint32_t table) {
  return SampleAsItTravels(0xFF, table);
}

UnMail RecoveredUnMail() {
  UnMail mail = SampleInStore(0);
  mail.text = std::string("Dear\0\0\0\0\0\0\0\0", 12);
  Put32(mail.record, kUnMailTextLength, 12);
  return mail;
}

UnMail FullStoreUnMail() {
  UnMail mail = FilledInStore({{50, 130, 202, 130, 202}, {25, 67}, 152});
  mail.text = "abcdef";
  Put32(mail.record, kUnMailTextLength, 6);
  return mail;
}

Bytes FullExchangeUnMail() {
  return FilledAsItTravels({{24, 64, 100, 64, 101}, {24, 64}, 149});
}

Bytes FullSentUnMail() {
  return FilledAsItTravels({{25, 65, 101, 65, 102}, {25, 65}, 150});
}

UnMail FullRecoveredUnMail() {
  UnMail mail = FilledInStore({{25, 65, 101, 65, 102}, {24, 65}, 150});
  mail.text = std::string("abcd\0\0", 6);
  Put32(mail.record, kUnMailTextLength, 6);
  return mail;
}

Bytes Item182(std::uint16_t kind, std::u16string_view first, std::u16string_view second) {
  return Item182With(0, kind, {{"", first}, {"", second}});
}

Bytes Node182(std::string_view first, std::string_view second) {
  return Node182With(0, {{first, u""}, {second, u""}});
}

Bytes Item308(std::uint32_t first, std::uint32_t second, std::u16string_view text) {
  Bytes r(308);
  Put32(r, 0, first);
  Put32(r, 4, second);
  PutText(r, 8, text);
  return r;
}

Bytes Node308(std::uint32_t first, std::uint32_t second, std::string_view text) {
  Bytes r(164);
  Put32(r, 0, first);
  Put32(r, 4, second);
  PutNarrowText(r, 8, text);
  return r;
}

Bytes UnMailRecord(const SentUnMail& mail) {
  Counts counts = {{0, 0, 0},
                   static_cast<std::uint32_t>(mail.items_182.size()),
                   static_cast<std::uint32_t>(mail.items_308.size()),
                   static_cast<std::uint32_t>(mail.text.size())};
  for (const Bytes& item : mail.items_182) {
    if (item[180] < 3 && item[181] == 0) ++counts.kinds[item[180]];
  }
  Bytes r = PlainUnMail(mail.table, mail.id);
  PutCounts(r, counts);
  for (const Bytes& item : mail.items_182) Append(r, item);
  for (const Bytes& item : mail.items_308) Append(r, item);
  AppendText(r, mail.text);
  return r;
}

Bytes PlainUnMail(std::uint32_t table, std::uint32_t id) {
  Bytes r(kUnMailSize);
  Put32(r, 0, id);
  Put32(r, 8, table);
  return r;
}

UnMail PlainStoreUnMail(std::uint32_t id) {
  UnMail mail;
  Put32(mail.record, 0, id);
  return mail;
}

UnMail StoreUnMailWithText(std::uint32_t id, std::string_view text) {
  UnMail mail = PlainStoreUnMail(id);
  Put32(mail.record, kUnMailTextLength, static_cast<std::uint32_t>(text.size()));
  mail.text = text;
  return mail;
}

Bytes Folders(std::size_t count) {
  Bytes folders(count * kFolderSize);
  for (std::size_t i = 0; i < folders.size(); ++i) folders[i] = static_cast<std::uint8_t>(i * 7 + i / kFolderSize);
  return folders;
}

Bytes Rules(std::size_t count, std::uint8_t first) {
  Bytes rules(count * kRuleSize);
  for (std::size_t i = 0; i < rules.size(); ++i) rules[i] = static_cast<std::uint8_t>(first + i * 5 + i / kRuleSize);
  return rules;
}

}  // namespace qv_test
