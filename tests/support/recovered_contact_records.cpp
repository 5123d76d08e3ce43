// Each field of a contact, a group, a membership and a picture at its place, by hand.
#include "tests/support/recovered_contact_records.h"

#include <algorithm>
#include <span>

namespace qv_test {
namespace {

/// A text that no other field has, without a zero byte, and without one when a bit of it is flipped.
std::u16string TextOf(const TextField& field, std::size_t length) {
  std::u16string text;
  for (std::size_t i = 0; i < length; ++i) {
    text.push_back(
        static_cast<char16_t>((0x81 + (field.exchange / 2 + i) % 61) << 8 | (0x81 + (field.exchange + i) % 59)));
  }
  return text;
}

constexpr std::size_t kShortLength = 3;

void PutIncoming(Bytes& record, std::span<const TextField> fields, Texts texts) {
  for (const TextField& field : fields) {
    if (texts == Texts::kFull) {
      PutText(record, field.exchange, TextOf(field, field.exchange_size / 2));
    } else {
      PutText(record, field.exchange, TextOf(field, kShortLength));
      Put16(record, field.exchange + 2 * kShortLength, 0);
    }
  }
}

void PutReceived(Bytes& record, std::span<const TextField> fields, Texts texts) {
  for (const TextField& field : fields) {
    const std::size_t room = std::min(field.exchange_size / 2, field.store_size / 2 - 1);
    PutText(record, field.store, TextOf(field, texts == Texts::kFull ? room : kShortLength));
  }
}

Bytes Numbered(Bytes (*make)(std::uint32_t, std::u16string_view), std::uint32_t first, std::uint32_t count) {
  Bytes records;
  for (std::uint32_t i = 0; i < count; ++i) Append(records, make(first + i, u""));
  return records;
}

Bytes PictureData(std::uint16_t length) {
  Bytes data(length);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(1 + i % 251);
  return data;
}

}  // namespace

Bytes IncomingContact(Texts texts) {
  Bytes r(3596, 0xFF);
  PutIncoming(r, kContactTexts, texts);
  Put32(r, 0, kIncomingContactId);
  Put32(r, 108, 0xFFFFFF21);
  Put32(r, 112, 0xFFFF07B7);  // first date: 1975-05-17 06:09:04, of which the store has 16 bits each
  Put32(r, 116, 0xFFFF0005);
  Put32(r, 120, 0xFFFF0011);
  Put32(r, 124, 0xFFFF0006);
  Put32(r, 128, 0xFFFF0009);
  Put32(r, 132, 0xFFFF0004);
  Put32(r, 672, 0x04030201);  // types of the numbers
  Put32(r, 676, 0x18171615);
  Put32(r, 856, 3);  // default number
  Put8(r, 1120, 0x12);
  Put8(r, 1121, 0x23);
  Put32(r, 1124, 2);  // chosen flag
  Put16(r, 1962, 0xFF34);
  Put32(r, 3076, 0xFFFF07CE);  // second date: 1998-08-22 10:11:12
  Put32(r, 3080, 0xFFFF0008);
  Put32(r, 3084, 0xFFFF0016);
  Put32(r, 3088, 0xFFFF000A);
  Put32(r, 3092, 0xFFFF000B);
  Put32(r, 3096, 0xFFFF000C);
  Put32(r, 3108, kIncomingPictureId);
  Put16(r, 3514, 0xFF45);
  Put32(r, 3560, 0xFFFF07D6);  // last modification: 2006-12-11 07:02:10
  Put32(r, 3564, 0xFFFF000C);
  Put32(r, 3568, 0xFFFF000B);
  Put32(r, 3572, 0xFFFF0007);
  Put32(r, 3576, 0xFFFF0002);
  Put32(r, 3580, 0xFFFF000A);
  return r;
}

Bytes ReceivedContact(Texts texts) {
  Bytes r(2744);
  PutReceived(r, kContactTexts, texts);
  Put32(r, 0, kIncomingContactId);
  Put16(r, 4, 2006);  // last modification
  Put16(r, 6, 12);
  Put16(r, 8, 11);
  Put16(r, 10, 7);
  Put16(r, 12, 2);
  Put16(r, 14, 10);
  Put8(r, 16, 0x45);
  Put8(r, 17, 1);        // kind
  Put16(r, 1084, 1975);  // first date
  Put16(r, 1086, 5);
  Put16(r, 1088, 17);
  Put16(r, 1090, 6);
  Put16(r, 1092, 9);
  Put16(r, 1094, 4);
  Put16(r, 1096, 1998);  // second date
  Put16(r, 1098, 8);
  Put16(r, 1100, 22);
  Put16(r, 1102, 10);
  Put16(r, 1104, 11);
  Put16(r, 1106, 12);
  Put8(r, 1386, 0x12);
  Put8(r, 1387, 0xA3);         // chosen: 0x23 + 128
  Put32(r, 1388, 0x04830201);  // number 3 is the default: 3 + 128
  Put32(r, 1392, 0x18171615);
  Put32(r, 2284, kIncomingPictureId);
  Put8(r, 2288, 0x21);
  Put8(r, 2289, 0x34);
  Put32(r, 2736, 100);  // reminders
  Put32(r, 2740, 100);
  return r;
}

Bytes IncomingGroup(Texts texts) {
  Bytes r(1532, 0xFF);
  PutIncoming(r, kGroupTexts, texts);
  Put32(r, 0, kIncomingGroupId);
  Put32(r, 1492, 0xFFFFFF56);
  return r;
}

Bytes ReceivedGroup(Texts texts) {
  Bytes r(2744);
  PutReceived(r, kGroupTexts, texts);
  Put32(r, 0, kIncomingGroupId);
  Put8(r, 16, 0x56);
  Put8(r, 17, 2);  // kind
  return r;
}

Bytes NamedContact(std::uint32_t id, std::u16string_view name) {
  Bytes r(3596);
  Put32(r, 0, id);
  PutText(r, 4, name);
  return r;
}

Bytes NamedGroup(std::uint32_t id, std::u16string_view name) {
  Bytes r(1532);
  Put32(r, 0, id);
  PutText(r, 4, name);
  return r;
}

Bytes ReceivedNamedContact(std::uint32_t id, std::u16string_view name) {
  Bytes r(2744);
  Put32(r, 0, id);
  Put8(r, 17, 1);
  PutText(r, 18, name);
  return r;
}

Bytes ReceivedNamedGroup(std::uint32_t id, std::u16string_view name) {
  Bytes r(2744);
  Put32(r, 0, id);
  Put8(r, 17, 2);
  PutText(r, 18, name);
  return r;
}

Bytes NamedContacts(std::uint32_t first, std::uint32_t count) {
  return Numbered(&NamedContact, first, count);
}

Bytes NamedGroups(std::uint32_t first, std::uint32_t count) {
  return Numbered(&NamedGroup, first, count);
}

Bytes ReceivedMembership(std::uint32_t contact, const std::vector<std::uint32_t>& groups) {
  Bytes r = ExchangeMembership(contact, groups);
  r.resize(408);
  return r;
}

Bytes IncomingPicture(std::uint32_t id, std::uint16_t length) {
  return ExchangePicture(id, length, PictureData(length));
}

Bytes ReceivedPicture(std::uint32_t id, std::uint16_t length) {
  Bytes r(6);
  Put32(r, 0, id);
  Put16(r, 4, length);
  Append(r, PictureData(length));
  r.resize(8200);
  return r;
}

}  // namespace qv_test
