// The bytes of business cards, offset by offset.
#include "tests/support/card_records.h"

namespace qv_test {
namespace {

// In the order of the fields.
constexpr std::u16string_view kText1 = u"Anna \u738B-\u00C4rmel";
constexpr std::u16string_view kText2 = u"Dr.";
constexpr std::u16string_view kText3 = u"Sales and service, second floor";
constexpr std::u16string_view kText4 = u"+49 170 1234567";
constexpr std::u16string_view kText5 = u"+49 30 2";
constexpr std::u16string_view kText6 = u"+49 30 3";
constexpr std::u16string_view kText7 = u"+49 30 4";
constexpr std::u16string_view kText8 = u"+49 30 5";
constexpr std::u16string_view kText9 = u"10115 Berlin";
constexpr std::u16string_view kText10 = u"anna@example.com";
constexpr std::u16string_view kText11 = u"blue";
constexpr std::u16string_view kText12 = u"met at the fair \u2013 call back";

Bytes ExchangeFields(std::uint8_t unused) {
  Bytes r(956, unused);
  Put32(r, 0, kCardId);
  PutTextWithEnd(r, 4, kText1);
  PutTextWithEnd(r, 66, kText2);
  PutTextWithEnd(r, 76, kText3);
  PutTextWithEnd(r, 206, kText4);
  PutTextWithEnd(r, 272, kText5);
  PutTextWithEnd(r, 338, kText6);
  PutTextWithEnd(r, 404, kText7);
  PutTextWithEnd(r, 470, kText8);
  PutTextWithEnd(r, 536, kText9);
  PutTextWithEnd(r, 578, kText10);
  PutTextWithEnd(r, 644, kText11);
  PutTextWithEnd(r, 662, kText12);
  Put32(r, 920, 2006);  // The time of the last change.
  Put32(r, 924, 1);
  Put32(r, 928, 5);
  Put32(r, 932, 9);
  Put32(r, 936, 3);
  Put32(r, 940, 7);
  return r;
}

/// All but the time.
void PutStoreFields(Bytes& r) {
  Put32(r, 0, kCardId);
  PutTextWithEnd(r, 12, kText1);
  PutTextWithEnd(r, 74, kText2);
  PutTextWithEnd(r, 84, kText3);
  PutTextWithEnd(r, 214, kText4);
  PutTextWithEnd(r, 280, kText5);
  PutTextWithEnd(r, 346, kText6);
  PutTextWithEnd(r, 412, kText7);
  PutTextWithEnd(r, 478, kText8);
  PutTextWithEnd(r, 544, kText9);
  PutTextWithEnd(r, 586, kText10);
  PutTextWithEnd(r, 652, kText11);
  PutTextWithEnd(r, 670, kText12);
}

}  // namespace

Bytes StoreCard() {
  Bytes r(968, 0xFF);
  PutStoreFields(r);
  Put32(r, 4, 0xD813FD20);  // 5 January 2006 09:03:07.250; the milliseconds do not travel.
  Put32(r, 8, 0x01C611D6);
  return r;
}

Bytes ExchangeCard() {
  return ExchangeFields(0);
}

Bytes NoisyCard() {
  return ExchangeFields(0xFF);
}

Bytes RecoveredCard() {
  Bytes r(968);
  PutStoreFields(r);
  Put32(r, 4, 0xD7EDD780);  // 5 January 2006 09:03:07.
  Put32(r, 8, 0x01C611D6);
  return r;
}

Bytes PlainCard(std::uint32_t id) {
  Bytes r(956);
  Put32(r, 0, id);
  return r;
}

Bytes RecoveredPlainCard(std::uint32_t id) {
  Bytes r(968);
  Put32(r, 0, id);
  return r;
}

}  // namespace qv_test
