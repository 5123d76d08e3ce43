// The bytes of calls, offset by offset.
#include "tests/support/call_records.h"

namespace qv_test {
namespace {

constexpr std::u16string_view kNumber = u"+49 170 1234567";
constexpr std::u16string_view kName = u"Anna \u738B-\u00C4rmel";

Bytes ExchangeFields(std::uint8_t unused) {
  Bytes r(208, unused);
  Put32(r, 0, kCallId);
  const std::uint32_t kTime[] = {2006, 1, 5, 9, 3, 7};
  for (std::size_t i = 0; i < 6; ++i) Put32(r, 4 + 4 * i, kTime[i]);
  Put32(r, 36, 0xB1B2B3B4);
  Put8(r, 40, 7);
  Put8(r, 41, 0x41);
  PutTextWithEnd(r, 42, kNumber);
  PutTextWithEnd(r, 104, kName);
  Put8(r, 170, 0xAA);
  Put8(r, 171, 0xAB);
  return r;
}

}  // namespace

Bytes StoreCall() {
  Bytes r(180, 0xFF);
  PutTextWithEnd(r, 0, u"20060105090307");
  PutTextWithEnd(r, 30, kNumber);
  PutTextWithEnd(r, 92, kName);
  Put32(r, 160, kCallId);
  Put32(r, 164, 0xB1B2B3B4);
  Put16(r, 168, 46007);
  Put16(r, 170, 0xE141);
  Put16(r, 172, 0xE2AA);
  Put16(r, 174, 0xE3AB);
  return r;
}

Bytes ExchangeCall() {
  return ExchangeFields(0);
}

Bytes NoisyCall() {
  return ExchangeFields(0xFF);
}

Bytes RecoveredCall() {
  Bytes r(180);
  PutText(r, 0, u"20060105090307");
  PutText(r, 30, kNumber);
  PutText(r, 92, kName);
  Put32(r, 160, kCallId);
  Put32(r, 164, 0xB1B2B3B4);
  Put16(r, 168, 46007);
  Put16(r, 170, 0x41);
  Put16(r, 172, 0xAA);
  Put16(r, 174, 0xAB);
  return r;
}

Bytes PlainCall(std::uint32_t id) {
  Bytes r(208);
  Put32(r, 0, id);
  return r;
}

Bytes RecoveredPlainCall(std::uint32_t id) {
  Bytes r(180);
  PutText(r, 0, u"00000000000000");
  Put32(r, 160, id);
  Put16(r, 168, 46000);
  return r;
}

}  // namespace qv_test
