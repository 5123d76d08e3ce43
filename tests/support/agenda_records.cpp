// Each field of an agenda entry at its place, by hand.
#include "tests/support/agenda_records.h"

namespace qv_test {
namespace {

constexpr char16_t kTitle[] = u"Eighteen letters!!";
constexpr char16_t kTitleCut[] = u"Eighteen letters!";
static_assert(sizeof(kTitle) == 2 * 19 && sizeof(kTitleCut) == 2 * 18);
constexpr char16_t kText[] = u"\u65E5\u7A0B: bring the slides";
constexpr char16_t kItemText[] = u"An item's text of 32 characters!";
constexpr char16_t kItemTextCut[] = u"An item's text of 32 characters";
static_assert(sizeof(kItemText) == 2 * 33 && sizeof(kItemTextCut) == 2 * 32);

/// The fields that are the same in an export's source and in a recover's result, but for texts.
void PutStoreFields(Bytes& r) {
  Put8(r, 36, 0xA2);
  Put8(r, 37, 0xA1);
  Put16(r, 38, 0x3132);
  Put8(r, 40, 0xB2);
  Put8(r, 41, 0xB1);
  Put16(r, 42, 0x4142);
  Put16(r, 44, 0x5152);
  Put32(r, 48, kAgendaGroup);
  Put8(r, 192, 2);  // items
  // The first item.
  Put32(r, 204, 0x11121314);
  Put32(r, 204 + 8, 0x21222324);
  Put16(r, 204 + 12, 0x3334);
  Put16(r, 204 + 14, 0x4344);
  // The second.
  Put32(r, 412, 0x51525354);
  Put32(r, 412 + 8, 0x61626364);
  Put16(r, 412 + 12, 0x7374);
  Put16(r, 412 + 14, 0x8384);
  Put32(r, 4368, 3);  // long items
}

/// The fields that a recover reads, but for texts.
void PutExchangeFields(Bytes& r) {
  Put32(r, 0, kAgendaId);
  Put32(r, 4, kAgendaGroup);
  Put32(r, 44, 0x3132);
  Put32(r, 48, 0xA1);
  Put32(r, 52, 0xA2);
  Put32(r, 76, 0x4142);
  Put32(r, 80, 0xB1);
  Put32(r, 84, 0xB2);
  Put16(r, 108, 0x5152);
  Put8(r, 110, 0x61);
  Put8(r, 111, 0x62);
  Put8(r, 112, 0x63);
  Put8(r, 247, 2);  // items
  // The first item.
  Put8(r, 288, 0x71);
  Put32(r, 288 + 4, 0x21222324);
  Put16(r, 288 + 8, 0x3334);
  Put16(r, 288 + 10, 0x4344);
  Put32(r, 288 + 12, 0x11121314);
  // The second.
  Put8(r, 368, 0x72);
  Put32(r, 368 + 4, 0x61626364);
  Put16(r, 368 + 8, 0x7374);
  Put16(r, 368 + 10, 0x8384);
  Put32(r, 368 + 12, 0x51525354);
}

/// Of these items what travels, each in so many bytes.
Bytes LongItems(std::size_t size, std::uint8_t fill) {
  Bytes all;
  for (std::uint8_t i = 0; i < 3; ++i) {
    Bytes item = Items(1, 3928, static_cast<std::uint8_t>(77 * i));
    Put32(item, 0, 2 + std::uint32_t{i});  // its type
    item.resize(size, fill);
    Append(all, item);
  }
  return all;
}

Bytes WithLongItems(Bytes r) {
  Append(r, Words({3}));
  Append(r, LongItems(3928, 0));
  return r;
}

}  // namespace

Bytes StoreAgendaEntry() {
  Bytes r(4372, 0xFF);
  PutStoreFields(r);
  PutText(r, 0, kTitle);
  Put16(r, 46, 0xFF61);      // of these three the low byte travels
  Put32(r, 52, 0xEEEEEEEE);  // the store's own idea of the id, which is not asked
  Put16(r, 56, 0xFF62);
  Put16(r, 58, 0xFF63);
  PutUsedText(r, 60, kText);
  Put16(r, 204 + 6, 0xFF71);  // of these two as well
  PutText(r, 204 + 16, kItemText);
  Put16(r, 412 + 6, 0xFF72);
  PutUsedText(r, 412 + 16, u"Short");
  Put32(r, 4364, 0);
  return r;
}

Bytes StoreAgendaArea() {
  return LongItems(5128, 0xFF);
}

Bytes ExchangeAgendaEntry() {
  Bytes r(288 + 2 * 80);
  PutExchangeFields(r);
  PutText(r, 8, kTitleCut);
  PutText(r, 114, kText);
  PutText(r, 288 + 16, kItemTextCut);
  PutText(r, 368 + 16, u"Short");
  return WithLongItems(r);
}

Bytes NoisyAgendaEntry() {
  Bytes r(288 + 2 * 80, 0xFF);
  PutExchangeFields(r);
  PutText(r, 8, kTitle);
  Put32(r, 44, 0xFFFF3132);
  Put32(r, 48, 0xFFFFFFA1);
  Put32(r, 52, 0xFFFFFFA2);
  Put32(r, 76, 0xFFFF4142);
  Put32(r, 80, 0xFFFFFFB1);
  Put32(r, 84, 0xFFFFFFB2);
  PutUsedText(r, 114, kText);
  PutTextWithEnd(r, 288 + 16, kItemTextCut);
  PutUsedText(r, 368 + 16, u"Short");
  return WithLongItems(r);
}

Bytes RecoveredAgendaEntry() {
  Bytes r(4372);
  PutStoreFields(r);
  PutText(r, 0, kTitleCut);
  Put16(r, 46, 0x61);
  Put32(r, 52, kAgendaId);
  Put16(r, 56, 0x62);
  Put16(r, 58, 0x63);
  PutText(r, 60, kText);
  Put16(r, 204 + 6, 0x71);
  PutText(r, 204 + 16, kItemTextCut);
  Put16(r, 412 + 6, 0x72);
  PutText(r, 412 + 16, u"Short");
  return r;
}

Bytes RecoveredAgendaArea() {
  return LongItems(5128, 0);
}

Bytes PlainAgendaEntry(std::uint32_t id, std::uint32_t group) {
  Bytes r(288 + 4);
  Put32(r, 0, id);
  Put32(r, 4, group);
  return r;
}

Bytes RecoveredPlainAgendaEntry(std::uint32_t id, std::uint32_t group) {
  Bytes r(4372);
  Put32(r, 48, group);
  Put32(r, 52, id);
  return r;
}

Bytes AgendaEntryOf(std::uint32_t id, const Bytes& items, const Bytes& long_items) {
  Bytes r(288);
  Put32(r, 0, id);
  Put8(r, 247, static_cast<std::uint8_t>(items.size() / 80));
  Append(r, items);
  Append(r, Words({static_cast<std::uint32_t>(long_items.size() / 3928)}));
  Append(r, long_items);
  return r;
}

Bytes AgendaGroup(std::uint32_t id) {
  Bytes r = Items(1, 288, 0x41);
  Put32(r, 0, id);
  return r;
}

}  // namespace qv_test
