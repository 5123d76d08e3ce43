// Each field of a schedule record at its place, by hand.
#include "tests/support/schedule_records.h"

namespace qv_test {
namespace {

constexpr char16_t kText1[] = u"Thirty-one characters, no NUL!!";
constexpr char16_t kText1Cut[] = u"Thirty-one characters, no NUL!";
static_assert(sizeof(kText1) == 2 * 32 && sizeof(kText1Cut) == 2 * 31);

/// The fields of the store record that are the same in an export's source and in a recover's result.
void PutStoreFields(Bytes& r) {
  Put32(r, 4, kEntryGroup);
  Put32(r, 8, 0x7D6C59C2);   // start: 2006 << 20 | 12 << 16 | 11 << 11 | 7 << 6 | 2
  Put32(r, 12, 0x7D71FDFB);  // end: 2007 << 20 | 1 << 16 | 31 << 11 | 23 << 6 | 59
  Put32(r, 24, 0x11223344);  // value_496
  Put16(r, 28, 0x5566);      // value_444
  Put8(r, 30, 0x31);         // flag_374
  Put8(r, 31, 0x32);         // flag_375
  Put8(r, 32, 0x33);         // flag_376
  Put8(r, 33, 0x34);         // byte_447
  Put8(r, 34, 0x35);         // byte_448
  Put8(r, 35, 0x36);         // byte_464
  Put8(r, 36, 0x37);         // byte_500
  Put8(r, 40, 2);            // 80-byte items
  Put8(r, 41, 1);            // 144-byte items
  Put8(r, 45, 0x45);         // repeat_byte_832
  Put8(r, 46, 0x46);         // repeat_byte_833
  Put8(r, 47, 0x47);         // repeat_value_844
  Put32(r, 48, 0x07D60C0B);  // repeat start: 2006 << 16 | 12 << 8 | 11
  Put32(r, 52, 0x07D70A1E);  // repeat end: 2007 << 16 | 10 << 8 | 30
  Put16(r, 56, 0x7788);      // repeat_value_828
  Put8(r, 58, 0x58);         // repeat_byte_860
  Put32(r, 60, 0xA5A5A555);  // weekdays: bits 0, 2, 4 and 6 of the lowest seven
  Put32(r, 64, 0x64656667);  // repeat_value_856
  Put32(r, 68, 0x68696A6B);  // repeat_value_864
  PutBytes(r, 72, {0x72, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78});
  PutBytes(r, 704, Items(2, 80, 1));
  PutBytes(r, 2304, Items(1, 144, 101));
}

/// The fixed part's fields that recover reads.
void PutExchangeFields(Bytes& r) {
  Put32(r, 0, kEntryId);
  Put32(r, 4, kEntryGroup);
  Put8(r, 374, 0x31);
  Put8(r, 375, 0x32);
  Put8(r, 376, 0x33);
  Put32(r, 380, 2006);  // start
  Put32(r, 384, 12);
  Put32(r, 388, 11);
  Put32(r, 392, 7);
  Put32(r, 396, 2);
  Put32(r, 412, 2007);  // end
  Put32(r, 416, 1);
  Put32(r, 420, 31);
  Put32(r, 424, 23);
  Put32(r, 428, 59);
  Put16(r, 444, 0x5566);
  Put8(r, 446, 1);  // the store's u16 at 38 is not zero
  Put8(r, 447, 0x34);
  Put8(r, 448, 0x35);
  Put8(r, 449, 2);  // 80-byte items
  Put8(r, 456, 1);  // 144-byte items
  Put8(r, 464, 0x36);
  Put32(r, 468, 0xA1);  // bits 23..16 of the store's u32 at 16
  Put32(r, 472, 0xB2);  // bits 15..8
  Put32(r, 476, 0xC3);  // bits 7..0
  Put32(r, 480, 0xD4);  // bits 15..8 of the store's u32 at 20
  Put32(r, 488, 0xE5);  // bits 7..0
  Put32(r, 496, 0x11223344);
  Put8(r, 500, 0x37);
  Put8(r, 760, 3);      // repeat kind
  Put32(r, 764, 2006);  // repeat start
  Put32(r, 768, 12);
  Put32(r, 772, 11);
  Put32(r, 796, 2007);  // repeat end
  Put32(r, 800, 10);
  Put32(r, 804, 30);
  Put32(r, 828, 0x7788);
  Put8(r, 832, 0x45);
  Put8(r, 833, 0x46);
  Put32(r, 836, 0xA5A5A555);
  Put32(r, 844, 0x47);
  Put32(r, 856, 0x64656667);
  Put8(r, 860, 0x58);
  Put32(r, 864, 0x68696A6B);
  PutBytes(r, 868, {0x72, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78});
}

}  // namespace

Bytes StoreEntry() {
  Bytes r(8680, 0xFF);
  PutStoreFields(r);
  Put32(r, 0, 0xEEEEEEEE);   // the store's own idea of the id, which is not asked
  Put32(r, 16, 0xFFA1B2C3);  // the top byte is not carried
  Put32(r, 20, 0xFFFFD4E5);  // nor is the upper half
  Put16(r, 38, 0x0200);
  Put8(r, 44, 0xF3);  // repeat kind in the low four bits
  PutText(r, 80, kText1);
  PutUsedText(r, 142, u"Room 4");
  PutUsedText(r, 384, u"");
  PutUsedText(r, 446, u"\u65E5\u7A0B: bring the slides");
  return r;
}

Bytes ExchangeEntry() {
  Bytes r(912);
  PutExchangeFields(r);
  PutText(r, 8, kText1Cut);
  PutText(r, 70, u"Room 4");
  PutText(r, 502, u"\u65E5\u7A0B: bring the slides");
  Put32(r, 408, 0x7D6C59C2);                // start, packed
  Put32(r, 440, 0x7D71FDFB);                // end, packed
  PutBytes(r, 848, {1, 0, 1, 0, 1, 0, 1});  // weekdays, a byte each
  Append(r, Items(2, 80, 1));
  Append(r, Items(1, 144, 101));
  return r;
}

Bytes NoisyExchangeEntry() {
  Bytes r(912, 0xFF);
  PutExchangeFields(r);
  PutText(r, 8, kText1);
  PutUsedText(r, 70, u"Room 4");
  PutUsedText(r, 312, u"");
  PutUsedText(r, 502, u"\u65E5\u7A0B: bring the slides");
  Put8(r, 446, 0x80);         // any value but zero
  Put32(r, 388, 0xFFFFFFEB);  // of a day only what its place holds is taken: 0xEB & 31 = 11
  Append(r, Items(2, 80, 1));
  Append(r, Items(1, 144, 101));
  return r;
}

Bytes RecoveredEntry() {
  Bytes r(8680);
  PutStoreFields(r);
  Put32(r, 0, kEntryId);
  Put32(r, 16, 0x00A1B2C3);
  Put32(r, 20, 0x0000D4E5);
  Put16(r, 38, 1);
  Put8(r, 44, 3);
  PutText(r, 80, kText1Cut);
  PutText(r, 142, u"Room 4");
  PutText(r, 446, u"\u65E5\u7A0B: bring the slides");
  return r;
}

Bytes StoreGroup(std::uint32_t id, std::u16string_view name, std::uint16_t value) {
  Bytes r = ExchangeGroup(id, name, value);
  r.resize(264);
  return r;
}

Bytes ExchangeGroup(std::uint32_t id, std::u16string_view name, std::uint16_t value) {
  Bytes r(288);
  for (std::size_t i = 4; i < 264; ++i) r[i] = static_cast<std::uint8_t>(i);  // passes through, whatever it means
  Put32(r, 0, id);
  PutText(r, 46, name);
  Put16(r, 46 + 2 * name.size(), 0);
  Put16(r, 250, value);
  return r;
}

Bytes PlainEntry(std::uint32_t id, std::uint32_t group) {
  Bytes r(912);
  Put32(r, 0, id);
  Put32(r, 4, group);
  return r;
}

}  // namespace qv_test
