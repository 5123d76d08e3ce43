// Each field of a contact and of a group at its place, by hand.
#include "tests/support/contact_records.h"

#include <initializer_list>
#include <span>

namespace qv_test {
namespace {

void PutStoreTexts(Bytes& record, std::span<const TextField> fields) {
  for (const TextField& field : fields) {
    PutText(record, field.store, field.sample);
    Put16(record, field.store + 2 * field.sample.size(), 0);
  }
}

void PutExchangeTexts(Bytes& record, std::span<const TextField> fields) {
  for (const TextField& field : fields) PutText(record, field.exchange, field.sample);
}

}  // namespace

Bytes StoreContact() {
  Bytes r(2744, 0xFF);
  PutStoreTexts(r, kContactTexts);
  Put32(r, 0, kContactId);
  Put8(r, 16, 0x91);
  Put16(r, 1084, 1975);  // first date
  Put16(r, 1086, 1);
  Put16(r, 1088, 15);
  Put16(r, 1090, 7);
  Put16(r, 1092, 8);
  Put16(r, 1094, 9);
  Put16(r, 1096, 0xFFFE);  // second date, which none is: dates travel unjudged
  Put16(r, 1098, 0);
  Put16(r, 1100, 32);
  Put16(r, 1102, 25);
  Put16(r, 1104, 61);
  Put16(r, 1106, 0x8001);
  Put8(r, 1386, 0xA1);  // first flag, chosen
  Put8(r, 1387, 0xF7);  // second flag
  PutBytes(r, 1388, {0x01, 0x02, 0x83, 0x04, 0x85, 0x06, 0x80, 0x08});
  Put32(r, 2284, kContactPicture);
  Put8(r, 2288, 0x92);
  Put8(r, 2289, 0x93);
  Put32(r, 2548, 0xFFFFFF94);
  Put32(r, 2736, 100);         // first reminder: on
  Put32(r, 2740, 0xFFFFFFFF);  // second reminder: not above 0
  return r;
}

Bytes ExchangeContact() {
  Bytes r(3596);
  PutExchangeTexts(r, kContactTexts);
  Put32(r, 0, kContactId);
  Put32(r, 108, 0x92);
  Put32(r, 112, 1975);  // first date
  Put32(r, 116, 1);
  Put32(r, 120, 15);
  Put32(r, 124, 7);
  Put32(r, 128, 8);
  Put32(r, 132, 9);
  Put32(r, 140, 14);
  PutBytes(r, 672, {0x01, 0x02, 0x03, 0x04, 0x85, 0x06, 0x80, 0x08});
  Put32(r, 856, 3);     // the third number is the default
  Put8(r, 1120, 0x21);  // first flag
  Put8(r, 1121, 0xF7);  // second flag
  Put32(r, 1124, 1);    // the first is chosen
  Put8(r, 1962, 0x93);
  Put32(r, 3076, 0xFFFE);  // second date
  Put32(r, 3080, 0);
  Put32(r, 3084, 32);
  Put32(r, 3088, 25);
  Put32(r, 3092, 61);
  Put32(r, 3096, 0x8001);
  Put32(r, 3104, 14);
  Put32(r, 3108, kContactPicture);
  Put8(r, 3514, 0x91);
  Put8(r, 3516, 0x94);
  Put32(r, 3592, 2);  // the first date has a reminder
  return r;
}

Bytes StoreContactGroup() {
  Bytes r(2744, 0xFF);
  PutStoreTexts(r, kGroupTexts);
  Put32(r, 0, kContactGroupId);
  Put8(r, 16, 0x95);
  return r;
}

Bytes ExchangeContactGroup() {
  Bytes r(1532);
  PutExchangeTexts(r, kGroupTexts);
  Put32(r, 0, kContactGroupId);
  Put32(r, 1492, 0x95);
  return r;
}

Bytes PlainContact(std::uint32_t id) {
  Bytes r(3596);
  Put32(r, 0, id);
  Put32(r, 140, 14);
  Put32(r, 3104, 14);
  return r;
}

Bytes ExchangeMembership(std::uint32_t contact, const std::vector<std::uint32_t>& groups) {
  Bytes r = Words({contact, static_cast<std::uint32_t>(groups.size())});
  for (const std::uint32_t group : groups) Append(r, Words({group}));
  return r;
}

Bytes ExchangePicture(std::uint32_t id, std::uint32_t length, const Bytes& data) {
  Bytes r = Words({id, length});
  Append(r, data);
  r.resize(8236);
  return r;
}

std::u16string FullText(std::size_t size) {
  std::u16string text;
  for (std::size_t i = 0; i < size / 2; ++i) text += static_cast<char16_t>(0x4E00 + i);
  return text;
}

}  // namespace qv_test
