// The bytes of quick dial entries, offset by offset.
#include "tests/support/dial_records.h"

namespace qv_test {
namespace {

constexpr std::u16string_view kText = u"Anna \u738B-\u00C4rmel";
constexpr std::u16string_view kNumber = u"+49 170 1234567";

Bytes ExchangeFields(std::uint8_t unused) {
  Bytes r(216, unused);
  PutTextWithEnd(r, 4, kText);
  PutTextWithEnd(r, 66, kNumber);
  Put16(r, 132, 0xE1E2);
  Put8(r, 134, 0x4A);
  Put8(r, 135, 0x4B);
  Put32(r, 136, kDialId);
  Put32(r, 140, 0xC1C2C3C4);
  Put32(r, 144, 2007);
  Put32(r, 148, 3);
  Put32(r, 152, 5);
  Put32(r, 156, 9);
  Put32(r, 160, 4);
  Put32(r, 164, 0);
  Put16(r, 176, 0xF1F2);
  return r;
}

}  // namespace

Bytes StoreDial() {
  Bytes r(184, 0xFF);
  PutTextWithEnd(r, 0, kText);
  PutTextWithEnd(r, 62, kNumber);
  Put16(r, 128, 0xE1E2);
  Put32(r, 132, 0xD1D2D34A);  // The low byte travels.
  Put16(r, 136, 0xD44B);      // Likewise.
  Put32(r, 140, kDialId);
  Put32(r, 144, 0xC1C2C3C4);
  PutTextWithEnd(r, 148, u"20070305090400");
  Put16(r, 178, 0xF1F2);
  return r;
}

Bytes ExchangeDial() {
  Bytes r = ExchangeFields(0);
  Put32(r, 0, kDialId);
  return r;
}

Bytes NoisyDial() {
  return ExchangeFields(0xFF);
}

Bytes RecoveredDial() {
  Bytes r(184);
  PutText(r, 0, kText);
  PutText(r, 62, kNumber);
  Put16(r, 128, 0xE1E2);
  Put32(r, 132, 0x4A);
  Put16(r, 136, 0x4B);
  Put32(r, 140, kDialId);
  Put32(r, 144, 0xC1C2C3C4);
  PutText(r, 148, u"20070305090400");
  Put16(r, 178, 0xF1F2);
  return r;
}

Bytes PlainDial(std::uint32_t id) {
  Bytes r(216);
  Put32(r, 0, id);
  Put32(r, 136, id);
  return r;
}

Bytes RecoveredPlainDial(std::uint32_t id) {
  Bytes r(184);
  Put32(r, 140, id);
  PutText(r, 148, u"00000000000000");
  return r;
}

}  // namespace qv_test
