// The bytes of graphic memos, offset by offset.
#include "tests/support/memo_records.h"

namespace qv_test {
namespace {

// In the order of the fields.
constexpr std::u16string_view kText1 = u"Sketch of the \u738B garden";
constexpr std::u16string_view kText2 = u"sketch.bmp";
constexpr std::u16string_view kText3 = u"\\My Documents\\sketch.bmp";
constexpr std::u16string_view kText4 = u"\u00C4rmel";
constexpr std::u16string_view kText5 = u"To be shown to the neighbours";

Bytes ExchangeFields(std::uint8_t unused) {
  Bytes r(1224, unused);
  Put32(r, 0, kMemoId);
  Put8(r, 4, 0x4A);
  Put8(r, 5, 0x4B);
  Put8(r, 6, 0x4C);
  Put32(r, 8, 2006);  // The first time.
  Put32(r, 12, 1);
  Put32(r, 16, 5);
  Put32(r, 20, 9);
  Put32(r, 24, 3);
  Put32(r, 28, 7);
  Put32(r, 40, 2005);  // The second time.
  Put32(r, 44, 12);
  Put32(r, 48, 31);
  Put32(r, 52, 23);
  Put32(r, 56, 59);
  Put32(r, 60, 58);
  PutTextWithEnd(r, 72, kText1);
  PutTextWithEnd(r, 198, kText2);
  PutTextWithEnd(r, 246, kText3);
  Put32(r, 452, 0xC1C2C3C4);
  PutTextWithEnd(r, 456, kText4);
  PutTextWithEnd(r, 660, kText5);
  Put32(r, 1172, 0xE1E2E3E4);
  Put32(r, 1176, 0xE5E6E7E8);
  Put32(r, 1180, 0xE9EAEBEC);
  Put32(r, 1184, 0xF1F2F3F4);
  return r;
}

/// All but the bytes that travel alone, and the times.
void PutStoreFields(Bytes& r) {
  Put32(r, 0, kMemoId);
  PutTextWithEnd(r, 32, kText1);
  PutTextWithEnd(r, 158, kText2);
  PutTextWithEnd(r, 206, kText3);
  Put32(r, 412, 0xC1C2C3C4);
  PutTextWithEnd(r, 416, kText4);
  PutTextWithEnd(r, 620, kText5);
  Put32(r, 1132, 0xE1E2E3E4);
  Put32(r, 1136, 0xE5E6E7E8);
  Put32(r, 1140, 0xE9EAEBEC);
  Put32(r, 1144, 0xF1F2F3F4);
}

}  // namespace

Bytes StoreMemo() {
  Bytes r(1148, 0xFF);
  PutStoreFields(r);
  Put32(r, 4, 0xD1D2D34A);  // The low byte travels, of the next two also.
  Put32(r, 8, 0xD4D5D64B);
  Put32(r, 12, 0xD7D8D94C);
  Put32(r, 16, 0xD813FD20);  // 5 January 2006 09:03:07.250; the milliseconds do not travel.
  Put32(r, 20, 0x01C611D6);
  Put32(r, 24, 0x4DB83A10);  // 31 December 2005 23:59:58.001.
  Put32(r, 28, 0x01C60E66);
  return r;
}

Bytes ExchangeMemo() {
  return ExchangeFields(0);
}

Bytes NoisyMemo() {
  return ExchangeFields(0xFF);
}

Bytes RecoveredMemo() {
  Bytes r(1148);
  PutStoreFields(r);
  Put32(r, 4, 0x4A);
  Put32(r, 8, 0x4B);
  Put32(r, 12, 0x4C);
  Put32(r, 16, 0xD7EDD780);  // 5 January 2006 09:03:07.
  Put32(r, 20, 0x01C611D6);
  Put32(r, 24, 0x4DB81300);  // 31 December 2005 23:59:58.
  Put32(r, 28, 0x01C60E66);
  return r;
}

Bytes PlainMemo(std::uint32_t id) {
  Bytes r(1224);
  Put32(r, 0, id);
  return r;
}

Bytes RecoveredPlainMemo(std::uint32_t id) {
  Bytes r(1148);
  Put32(r, 0, id);
  return r;
}

}  // namespace qv_test
