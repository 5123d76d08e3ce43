// The bytes of the call filter's records, offset by offset.
#include "tests/support/call_filter_records.h"

#include <iterator>
#include <string>

namespace qv_test {
namespace {

// Texts that fill their field, in the store or as they travel, and what is left of them where a NUL must follow.
constexpr char16_t kText31[] = u"Thirty-one characters, no NUL!!";
constexpr char16_t kText31Cut[] = u"Thirty-one characters, no NUL!";
constexpr char16_t kText33[] = u"Thirty-three characters, no NUL!!";
constexpr char16_t kText33Cut[] = u"Thirty-three characters, no NUL!";
constexpr char16_t kText22[] = u"Twenty-two characters!";
constexpr char16_t kText22Cut[] = u"Twenty-two characters";
static_assert(sizeof(kText31) == 2 * 32 && sizeof(kText31Cut) == 2 * 31);
static_assert(sizeof(kText33) == 2 * 34 && sizeof(kText33Cut) == 2 * 33);
static_assert(sizeof(kText22) == 2 * 23 && sizeof(kText22Cut) == 2 * 22);

constexpr char16_t kText[] = u"Not before nine, \u738B";
constexpr char16_t kTextA[] = u"A: nobody from the office";
constexpr char16_t kTextB[] = u"B: \u00C4rmel & Co.";

/// A FILETIME, and the time that it is.
struct TimeByHand {
  std::uint32_t low, high;
  FilterTime numbers;
};
constexpr TimeByHand kEntryTime = {0x47132990, 0x01C71CF2, {2006, 12, 11, 7, 2, 10, 345}};
constexpr TimeByHand kGroupTimes[] = {
    {0x7DB61670, 0x01C08D96, {2001, 2, 3, 4, 5, 6, 7}},        {0x4AA2FE80, 0x01C1C33A, {2002, 3, 4, 5, 6, 7, 80}},
    {0x973F2240, 0x01C2FB39, {2003, 4, 5, 6, 7, 8, 900}},      {0x4F47FE10, 0x01C3FE9B, {2004, 2, 29, 8, 9, 10, 1}},
    {0xB515F040, 0x01C56B40, {2005, 6, 7, 9, 10, 11, 12}},     {0xD6DC24B0, 0x01C6A276, {2006, 7, 8, 10, 11, 12, 123}},
    {0x230C1920, 0x01C7DA76, {2007, 8, 9, 11, 12, 13, 234}},   {0x9A099870, 0x01C9133E, {2008, 9, 10, 12, 13, 14, 999}},
    {0x5C6DB1E0, 0x01CA8A75, {2009, 12, 31, 23, 59, 59, 998}},
};
static_assert(std::size(kGroupTimes) == std::size(kFilterGroupTimes));
constexpr FilterTime kFileTime0 = {1601, 1, 1, 0, 0, 0, 0};

void PutFileTime(Bytes& bytes, std::size_t offset, const TimeByHand& time) {
  Put32(bytes, offset, time.low);
  Put32(bytes, offset + 4, time.high);
}

/// What the store holds of a group before an export and after a recover.
void PutStoreGroupFields(Bytes& r) {
  for (std::size_t i = 0; i < std::size(kGroupTimes); ++i) PutFileTime(r, kFilterGroupTimes[i].store, kGroupTimes[i]);
  Put32(r, 0, kFilterGroupId);
  Put16(r, 56, 0x5152);   // value 1
  Put16(r, 58, 0x5354);   // value 2
  Put16(r, 202, 0x5556);  // value 3
}

void PutExchangeGroupFields(Bytes& r) {
  for (std::size_t i = 0; i < std::size(kGroupTimes); ++i) {
    PutFilterTime(r, kFilterGroupTimes[i].exchange, kGroupTimes[i].numbers);
  }
  Put32(r, 0, kFilterGroupId);
  PutText(r, 4, kText22);
  Put16(r, 4 + 2 * 22, 0);
  Put16(r, 236, 0x5152);
  Put16(r, 238, 0x5354);
  Put16(r, 382, 0x5556);
}

/// Where what belongs to one of the configuration's numbers lies.
struct NumberPlace {
  std::size_t store_index, store_value, store_number, store_short_text;
  std::size_t number, value, short_text;
};
constexpr NumberPlace kNumbers[8] = {
    {8, 10, 12, 74, 12, 508, 524},       {96, 98, 100, 162, 74, 510, 546},    {184, 186, 188, 250, 136, 512, 568},
    {272, 274, 276, 338, 198, 514, 590}, {360, 362, 364, 426, 260, 516, 612}, {448, 450, 452, 514, 322, 518, 634},
    {536, 538, 540, 602, 384, 520, 656}, {624, 626, 628, 690, 446, 522, 678},
};

std::u16string NumberText(std::size_t i) {
  return u"+49 170 555000" + std::u16string(1, static_cast<char16_t>(u'1' + i));
}
std::u16string ShortText(std::size_t i) {
  return u"Key " + std::u16string(1, static_cast<char16_t>(u'1' + i));
}
std::uint16_t Value(std::size_t i) {
  return static_cast<std::uint16_t>(0xD1E1 + i);
}

void PutStoreConfigFields(Bytes& r, std::uint16_t count) {
  Put16(r, 0, 0x1112);  // a
  Put16(r, 2, 0x2122);  // b
  Put16(r, 4, 0x3132);  // c
  Put16(r, 6, count);
}

void PutExchangeConfigFields(Bytes& r, std::uint16_t count) {
  Put16(r, 4, 0x1112);
  Put16(r, 6, 0x2122);
  Put16(r, 8, count);
  Put16(r, 10, 0x3132);
}

Bytes Concatenated(std::initializer_list<std::uint32_t> ids, Bytes (*record)(std::uint32_t)) {
  Bytes table;
  for (const std::uint32_t id : ids) Append(table, record(id));
  return table;
}

}  // namespace

void PutFilterTime(Bytes& bytes, std::size_t offset, const FilterTime& numbers) {
  for (std::size_t i = 0; i < numbers.size(); ++i) Put32(bytes, offset + 4 * i, numbers[i]);
}

Bytes StoreFilterEntry() {
  Bytes r(144, 0xFF);
  Put32(r, 0, kFilterEntryId);
  Put32(r, 4, kFilterEntryGroup);
  PutFileTime(r, 8, kEntryTime);
  r[8] |= 0x0F;  // What is less than a millisecond does not travel.
  PutText(r, 16, kText31);
  PutText(r, 78, kText33);
  return r;
}

Bytes ExchangeFilterEntry() {
  Bytes r(204);
  Put32(r, 0, kFilterEntryId);
  Put32(r, 4, kFilterEntryGroup);
  PutFilterTime(r, 8, kEntryTime.numbers);
  PutText(r, 40, kText31Cut);
  PutText(r, 102, kText33);
  return r;
}

Bytes NoisyFilterEntry() {
  Bytes r(204, 0xFF);
  Put32(r, 0, kFilterEntryId);
  Put32(r, 4, kFilterEntryGroup);
  PutFilterTime(r, 8, kEntryTime.numbers);
  PutText(r, 40, kText31);
  PutText(r, 102, kText33);  // The room behind it is not zero either.
  return r;
}

Bytes RecoveredFilterEntry() {
  Bytes r(144);
  Put32(r, 0, kFilterEntryId);
  Put32(r, 4, kFilterEntryGroup);
  PutFileTime(r, 8, kEntryTime);
  PutText(r, 16, kText31Cut);
  PutText(r, 78, kText33Cut);
  return r;
}

Bytes StoreFilterGroup() {
  Bytes r(788, 0xFF);
  PutStoreGroupFields(r);
  PutText(r, 4, kText22);
  PutUsedText(r, 60, kText);
  Put16(r, 204, 0xFF81);  // Of the days an export tells the lowest bit.
  PutUsedText(r, 272, kTextA);
  PutUsedText(r, 530, kTextB);
  return r;
}

Bytes ExchangeFilterGroup() {
  Bytes r(1200);
  PutExchangeGroupFields(r);
  PutText(r, 240, kText);
  for (std::size_t day = 384; day < 391; ++day) Put8(r, day, 1);
  PutText(r, 648, kTextA);
  PutText(r, 906, kTextB);
  return r;
}

Bytes NoisyFilterGroup() {
  Bytes r(1200, 0xFF);  // So are the seven days.
  PutExchangeGroupFields(r);
  PutUsedText(r, 240, kText);
  PutUsedText(r, 648, kTextA);
  PutUsedText(r, 906, kTextB);
  return r;
}

Bytes RecoveredFilterGroup() {
  Bytes r(788);
  PutStoreGroupFields(r);
  PutText(r, 4, kText22Cut);
  PutText(r, 60, kText);
  Put16(r, 204, 0x007F);
  PutText(r, 272, kTextA);
  PutText(r, 530, kTextB);
  return r;
}

Bytes StoreFilterConfig(std::uint16_t count) {
  Bytes r(712, 0xFF);
  PutStoreConfigFields(r, count);
  for (std::size_t i = 0; i < 8; ++i) {
    Put16(r, kNumbers[i].store_index, static_cast<std::uint16_t>(0xA0 + i));  // Which number it is goes without saying.
    Put16(r, kNumbers[i].store_value, Value(i));
    PutUsedText(r, kNumbers[i].store_number, NumberText(i));
    PutUsedText(r, kNumbers[i].store_short_text, ShortText(i));
  }
  return r;
}

Bytes ExchangeFilterConfig(std::uint16_t count) {
  Bytes r(700);
  PutExchangeConfigFields(r, count);
  for (std::size_t i = 0; i < count; ++i) {
    PutText(r, kNumbers[i].number, NumberText(i));
    Put16(r, kNumbers[i].value, Value(i));
    PutText(r, kNumbers[i].short_text, ShortText(i));
  }
  return r;
}

Bytes NoisyFilterConfig(std::uint16_t count) {
  Bytes r(700, 0xFF);
  PutExchangeConfigFields(r, count);
  for (std::size_t i = 0; i < 8; ++i) {
    PutUsedText(r, kNumbers[i].number, NumberText(i));
    Put16(r, kNumbers[i].value, Value(i));
    PutUsedText(r, kNumbers[i].short_text, ShortText(i));
  }
  return r;
}

Bytes RecoveredFilterConfig(std::uint16_t count) {
  Bytes r(712);
  PutStoreConfigFields(r, count);
  for (std::size_t i = 0; i < 8; ++i) Put16(r, kNumbers[i].store_index, static_cast<std::uint16_t>(i));
  for (std::size_t i = 0; i < count; ++i) {
    Put16(r, kNumbers[i].store_value, Value(i));
    PutText(r, kNumbers[i].store_number, NumberText(i));
    PutText(r, kNumbers[i].store_short_text, ShortText(i));
  }
  return r;
}

Bytes PlainFilterEntry(std::uint32_t id, std::uint32_t group) {
  Bytes r(204);
  Put32(r, 0, id);
  Put32(r, 4, group);
  return r;
}

Bytes PlainFilterGroup(std::uint32_t id) {
  Bytes r(1200);
  Put32(r, 0, id);
  return r;
}

Bytes PlainFilterEntryOfStore(std::uint32_t id) {
  Bytes r = PlainFilterEntry(id);
  PutFilterTime(r, kFilterEntryTime.exchange, kFileTime0);
  return r;
}

Bytes PlainFilterGroupOfStore(std::uint32_t id) {
  Bytes r = PlainFilterGroup(id);
  for (const FilterTimePlace& time : kFilterGroupTimes) PutFilterTime(r, time.exchange, kFileTime0);
  return r;
}

Bytes PlainFilterEntries(std::initializer_list<std::uint32_t> ids) {
  return Concatenated(ids, [](std::uint32_t id) { return PlainFilterEntry(id); });
}

Bytes PlainFilterGroups(std::initializer_list<std::uint32_t> ids) {
  return Concatenated(ids, PlainFilterGroup);
}

}  // namespace qv_test
