// Each field of a short message, and of each section of the configuration, at its place, by hand.
#include "tests/support/sms_records.h"

#include <algorithm>

namespace qv_test {
namespace {

constexpr char16_t kText1[] = u"Thirty-three characters, no NUL!!";
constexpr char16_t kText1Cut[] = u"Thirty-three characters, no NUL!";
constexpr char16_t kText2[] = u"Forty characters are in here, and no NUL";
constexpr char16_t kText2Cut[] = u"Forty characters are in here, and no NU";
static_assert(sizeof(kText1) == 2 * 34 && sizeof(kText1Cut) == 2 * 33);
static_assert(sizeof(kText2) == 2 * 41 && sizeof(kText2Cut) == 2 * 40);

constexpr char16_t kBody[] = u"\u77ED\u4FE1: see you at the station";
constexpr char16_t kName[] = u"Archive \u738B";

void PutNumbers(Bytes& bytes, std::size_t offset, const std::array<std::uint32_t, 6>& numbers) {
  for (std::size_t i = 0; i < numbers.size(); ++i) Put32(bytes, offset + 4 * i, numbers[i]);
}

/// What the store holds before an export and after a recover.
void PutStoreFields(Bytes& r) {
  Put16(r, 4, 0xFEDC);  // A negative value 1.
  Put32(r, 12, 0x21222324);
  PutText(r, 16, u"20061211070210");
  PutText(r, 192, u"20070131235958");
  Put32(r, 1572, 0x61626364);
}

void PutExchangeFields(Bytes& r) {
  Put32(r, 0, kMessageId);
  Put16(r, 4, 0xFEDC);
  Put32(r, 8, kMessageFolder);
  Put8(r, 12, 0xC7);  // value 2
  Put32(r, 16, 0x21222324);
  PutNumbers(r, 20, {2006, 12, 11, 7, 2, 10});
  PutNumbers(r, 52, {2007, 1, 31, 23, 59, 58});
  Put8(r, 1576, 0xA1);
  Put8(r, 1577, 0x32);
  Put8(r, 1578, 0xA3);
  Put32(r, 1580, 0x61626364);
  Put8(r, 1584, 0x34);
  Put8(r, 1585, 0xA5);
}

}  // namespace

Bytes StoreShortMessage() {
  Bytes r(1600, 0xFF);
  PutStoreFields(r);
  Put32(r, 0, kMessageId);
  Put16(r, 6, 0x12C7);
  Put32(r, 8, kMessageFolder);
  PutText(r, 46, kText1);
  PutText(r, 112, kText2);
  PutUsedText(r, 222, kBody);
  Put16(r, 1564, 0xFFA1);
  Put16(r, 1566, 0x0132);
  Put16(r, 1568, 0x80A3);
  Put16(r, 1576, 0xFF34);
  Put16(r, 1578, 0x7FA5);
  return r;
}

Bytes ExchangeShortMessage() {
  Bytes r(1624);
  PutExchangeFields(r);
  PutText(r, 84, kText1);
  PutText(r, 152, kText2);
  PutText(r, 234, kBody);
  return r;
}

Bytes NoisyShortMessage() {
  Bytes r(1624, 0xFF);
  PutExchangeFields(r);
  PutText(r, 84, kText1);  // The room behind it is not zero either.
  PutText(r, 152, kText2);
  PutUsedText(r, 234, kBody);
  return r;
}

Bytes RecoveredShortMessage(std::uint32_t folder) {
  Bytes r(1600);
  PutStoreFields(r);
  Put16(r, 6, 0x00C7);
  Put32(r, 8, folder);
  PutText(r, 46, kText1Cut);
  PutText(r, 112, kText2Cut);
  PutText(r, 222, kBody);
  Put16(r, 1564, 0x00A1);
  Put16(r, 1566, 0x0032);
  Put16(r, 1568, 0x00A3);
  Put16(r, 1576, 0x0034);
  Put16(r, 1578, 0x00A5);
  return r;
}

Bytes PlainShortMessage(std::uint32_t id, std::uint32_t folder) {
  Bytes r(1624);
  Put32(r, 0, id);
  Put32(r, 8, folder);
  return r;
}

Bytes RecoveredPlainShortMessage(std::uint32_t folder) {
  Bytes r(1600);
  Put32(r, 8, folder);
  PutText(r, 16, u"00000000000000");
  PutText(r, 192, u"00000000000000");
  return r;
}

SmsSections StoreSmsSections() {
  SmsSections s = {Bytes(204, 0xFF), Bytes(178, 0xFF), Bytes(156, 0xFF), Bytes(92, 0xFF), Bytes(164, 0xFF)};
  Put32(s[0], 0, 0x11121314);
  PutUsedText(s[0], 4, u"A quick reply");

  PutText(s[1], 0, kText1);
  PutText(s[1], 66, kText2);
  Put16(s[1], 146, 0x2122);
  PutText(s[1], 148, u"20061211070210");

  Put32(s[2], 0, 0x31323334);
  Put16(s[2], 4, 0x3536);
  Put16(s[2], 6, 0x3738);
  PutText(s[2], 8, kText1);
  PutUsedText(s[2], 74, u"+49 171 5550123");

  Put32(s[3], 0, 0x41424344);
  PutUsedText(s[3], 4, kName);
  Put16(s[3], 84, 0xFF45);
  Put16(s[3], 86, 0x01C6);
  Put16(s[3], 88, 0x8047);

  Put32(s[4], 0, 0x51525354);
  Put16(s[4], 4, 0x5556);
  Put16(s[4], 6, 0x5758);
  Put16(s[4], 8, 0x7FD9);
  Put32(s[4], 12, 0x5A5B5C5D);
  PutText(s[4], 16, kText2);
  PutUsedText(s[4], 96, u"A sender");
  return s;
}

namespace {

void PutExchangeSectionFields(SmsSections& s) {
  Put32(s[0], 0, 0x11121314);

  Put16(s[1], 154, 0x2122);
  PutNumbers(s[1], 156, {2006, 12, 11, 7, 2, 10});

  Put32(s[2], 4, 0x31323334);
  Put16(s[2], 8, 0x3536);
  Put16(s[2], 10, 0x3738);

  Put32(s[3], 0, 0x41424344);
  Put8(s[3], 86, 0x45);
  Put8(s[3], 87, 0xC6);
  Put8(s[3], 88, 0x47);

  Put32(s[4], 4, 0x51525354);
  Put8(s[4], 8, 0xD9);
  Put16(s[4], 10, 0x5556);
  Put32(s[4], 12, 0x5A5B5C5D);
  Put16(s[4], 16, 0x5758);
}

}  // namespace

SmsSections ExchangeSmsSections() {
  SmsSections s = {Bytes(208), Bytes(188), Bytes(200), Bytes(128), Bytes(204)};
  PutExchangeSectionFields(s);
  PutText(s[0], 4, u"A quick reply");
  PutText(s[1], 4, kText1);
  PutText(s[1], 72, kText2);
  PutText(s[2], 12, kText1);
  PutText(s[2], 80, u"+49 171 5550123");
  PutText(s[3], 4, kName);
  PutText(s[4], 18, u"A sender");
  PutText(s[4], 86, kText2);
  return s;
}

SmsSections NoisySmsSections() {
  SmsSections s = {Bytes(208, 0xFF), Bytes(188, 0xFF), Bytes(200, 0xFF), Bytes(128, 0xFF), Bytes(204, 0xFF)};
  PutExchangeSectionFields(s);
  PutUsedText(s[0], 4, u"A quick reply");
  PutText(s[1], 4, kText1);
  PutText(s[1], 72, kText2);
  PutText(s[2], 12, kText1);
  PutUsedText(s[2], 80, u"+49 171 5550123");
  PutUsedText(s[3], 4, kName);
  PutUsedText(s[4], 18, u"A sender");
  PutText(s[4], 86, kText2);
  return s;
}

SmsSections RecoveredSmsSections() {
  SmsSections s = {Bytes(204), Bytes(178), Bytes(156), Bytes(92), Bytes(164)};
  Put32(s[0], 0, 0x11121314);
  PutText(s[0], 4, u"A quick reply");

  PutText(s[1], 0, kText1Cut);
  PutText(s[1], 66, kText2Cut);
  Put16(s[1], 146, 0x2122);
  PutText(s[1], 148, u"20061211070210");

  Put32(s[2], 0, 0x31323334);
  Put16(s[2], 4, 0x3536);
  Put16(s[2], 6, 0x3738);
  PutText(s[2], 8, kText1Cut);
  PutText(s[2], 74, u"+49 171 5550123");

  Put32(s[3], 0, 0x41424344);
  PutText(s[3], 4, kName);
  Put16(s[3], 84, 0x0045);
  Put16(s[3], 86, 0x00C6);
  Put16(s[3], 88, 0x0047);

  Put32(s[4], 0, 0x51525354);
  Put16(s[4], 4, 0x5556);
  Put16(s[4], 6, 0x5758);
  Put16(s[4], 8, 0x00D9);
  Put32(s[4], 12, 0x5A5B5C5D);
  PutText(s[4], 16, kText2Cut);
  PutText(s[4], 96, u"A sender");
  return s;
}

Bytes StoreSmsFolder(std::uint32_t id, std::u16string_view name) {
  Bytes r(92);
  Put32(r, 0, id);
  PutText(r, 4, name);
  return r;
}

Bytes ExchangeSmsFolder(std::uint32_t id, std::u16string_view name) {
  Bytes r(128);
  Put32(r, 0, id);
  PutText(r, 4, name);
  return r;
}

Bytes SmsConfigHeader(const std::array<std::uint32_t, kSmsSections>& counts) {
  Bytes header(40);
  for (std::size_t i = 0; i < kSmsSections; ++i) Put32(header, 8 * i, counts[i]);
  return header;
}

Bytes SmsConfigFile(const SmsSections& sections) {
  std::array<std::uint32_t, kSmsSections> counts;
  for (std::size_t i = 0; i < kSmsSections; ++i) {
    counts[i] = static_cast<std::uint32_t>(sections[i].size() / kSmsSectionSizes[i]);
  }
  Bytes file = SmsConfigHeader(counts);
  for (const Bytes& section : sections) Append(file, section);
  return file;
}

}  // namespace qv_test
