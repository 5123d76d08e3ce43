// The interpreter of field tables, on small tables of its own: each form both ways, and what the tiling check refuses.
#include "layout/record_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace qv::layout {
namespace {

using Record = std::vector<std::uint8_t>;

Record Exported(std::span<const Field> fields, const Record& store, std::uint32_t exchange_size,
                std::span<const ItemRun> items = {}) {
  Record exchange(exchange_size, 0xEE);
  ToExchange({"test", static_cast<std::uint32_t>(store.size()), exchange_size, fields, items}, store.data(),
             exchange.data());
  return exchange;
}

Record Recovered(std::span<const Field> fields, const Record& exchange, std::uint32_t store_size) {
  Record store(store_size, 0xEE);
  ToStore({"test", store_size, static_cast<std::uint32_t>(exchange.size()), fields}, exchange.data(), store.data());
  return store;
}

TEST(RecordLayoutTest, NumbersWidenWithZerosAndNarrowToTheirLowBytes) {
  static constexpr Field kFields[] = {Both("a", U8(0), U32(0)), Both("b", U32(1), U16(4))};
  EXPECT_EQ(Exported(kFields, {0x81, 1, 2, 3, 4}, 6), (Record{0x81, 0, 0, 0, 1, 2}));
  EXPECT_EQ(Recovered(kFields, {0x81, 9, 9, 9, 1, 2}, 5), (Record{0x81, 1, 2, 0, 0}));
}

TEST(RecordLayoutTest, ASignedNumberKeepsItsSignWhereItIsWidened) {
  static constexpr Field kFields[] = {Both("a", S16(0), U32(0))};
  EXPECT_EQ(Exported(kFields, {0xFE, 0xFF}, 4), (Record{0xFE, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(Exported(kFields, {0x00, 0x80}, 4), (Record{0x00, 0x80, 0xFF, 0xFF}));
  EXPECT_EQ(Exported(kFields, {0xFF, 0x7F}, 4), (Record{0xFF, 0x7F, 0, 0}));
  EXPECT_EQ(Recovered(kFields, {0xFE, 0xFF, 0xFF, 0xFF}, 2), (Record{0xFE, 0xFF}));
  EXPECT_EQ(Recovered(kFields, {1, 2, 3, 4}, 2), (Record{1, 2})) << "the low bytes";
  EXPECT_EQ(LoadSlot(S16(0), Record{0xFF, 0xFF}.data()), 0xFFFFFFFFu);
  static constexpr Field kNarrower[] = {Both("a", S16(0), U8(0))};
  EXPECT_EQ(Exported(kNarrower, {0x81, 0xFF}, 1), (Record{0x81}));
  EXPECT_EQ(Recovered(kNarrower, {0x81}, 2), (Record{0x81, 0})) << "the other side has no sign";
}

/// A wide text's bytes, and zeros up to a size.
Record Wide(std::u16string_view text, std::size_t size) {
  Record bytes(size);
  for (std::size_t i = 0; i < text.size(); ++i) {
    bytes[2 * i] = static_cast<std::uint8_t>(text[i]);
    bytes[2 * i + 1] = static_cast<std::uint8_t>(text[i] >> 8);
  }
  return bytes;
}

Record Narrow(std::string_view text, std::size_t size) {
  Record bytes(size);
  std::copy(text.begin(), text.end(), bytes.begin());
  return bytes;
}

TEST(RecordLayoutTest, EightBitTextBecomesWideUpToItsNulAndLeavesRoomForOne) {
  static constexpr Field kFields[] = {Both("text", NarrowText(0, 6), Text(0, 16))};
  EXPECT_EQ(Exported(kFields, Narrow("ab", 6), 16), Wide(u"ab", 16));
  EXPECT_EQ(Exported(kFields, Narrow(std::string_view("ab\0cd", 5), 6), 16), Wide(u"ab", 16));
  EXPECT_EQ(Exported(kFields, Narrow("\xD6\xD0\xCE\xC4", 6), 16), Wide(u"\u4E2D\u6587", 16));
  EXPECT_EQ(Exported(kFields, Narrow("abcdef", 6), 16), Wide(u"abcdef", 16)) << "the source may lack its NUL";
  EXPECT_EQ(Exported(kFields, Narrow("abcde\xD6", 6), 16), Wide(u"abcde", 16)) << "half a character is none";
  EXPECT_EQ(Exported(kFields, Narrow("ab\xFF\xFFz", 6), 16), Wide(u"ab", 16)) << "what has no counterpart ends it";
  static constexpr Field kShorter[] = {Both("text", NarrowText(0, 6), Text(0, 6))};
  EXPECT_EQ(Exported(kShorter, Narrow("abcdef", 6), 6), Wide(u"ab", 6));
  EXPECT_EQ(Exported(kShorter, Narrow("\xD6\xD0\xCE\xC4z", 6), 6), Wide(u"\u4E2D\u6587", 6));
}

TEST(RecordLayoutTest, WideTextBecomesEightBitAndIsNeverCutWithinACharacter) {
  static constexpr Field kFields[] = {Both("text", NarrowText(0, 6), Text(0, 16))};
  EXPECT_EQ(Recovered(kFields, Wide(u"ab", 16), 6), Narrow("ab", 6));
  EXPECT_EQ(Recovered(kFields, Wide(std::u16string_view(u"ab\0cd", 5), 16), 6), Narrow("ab", 6));
  EXPECT_EQ(Recovered(kFields, Wide(u"abcdefgh", 16), 6), Narrow("abcde", 6)) << "the source may lack its NUL";
  EXPECT_EQ(Recovered(kFields, Wide(u"a\u4E2D\u6587z", 16), 6), Narrow("a\xD6\xD0\xCE\xC4", 6));
  EXPECT_EQ(Recovered(kFields, Wide(u"\u4E2D\u6587\u4E2D", 16), 6), Narrow("\xD6\xD0\xCE\xC4", 6));
  EXPECT_EQ(Recovered(kFields, Wide(u"ab\u0E01z", 16), 6), Narrow("ab", 6)) << "what has no counterpart ends it";
  static constexpr Field kWidest[] = {Both("text", NarrowText(0, 256), Text(0, 514))};
  EXPECT_EQ(Recovered(kWidest, Wide(std::u16string(257, u'x'), 514), 256), Narrow(std::string(255, 'x'), 256));
  EXPECT_EQ(Exported(kWidest, Narrow(std::string(256, 'x'), 256), 514), Wide(std::u16string(256, u'x'), 514));
}

TEST(RecordLayoutTest, BitsShareANumber) {
  static constexpr Field kFields[] = {Both("high", Bits(0, 2, 15, 12), U8(0)), Both("low", Bits(0, 2, 11, 0), U16(1))};
  EXPECT_EQ(Exported(kFields, {0xBC, 0xFA}, 3), (Record{0x0F, 0xBC, 0x0A}));
  EXPECT_EQ(Recovered(kFields, {0xFF, 0xBC, 0xFA}, 2), (Record{0xBC, 0xFA}));
  static constexpr Field kWord[] = {Both("all", Bits(0, 4, 31, 0), U32(0))};
  EXPECT_EQ(Exported(kWord, {1, 2, 3, 0xFF}, 4), (Record{1, 2, 3, 0xFF}));
  static constexpr Field kAlmostAWord[] = {Both("low", Bits(0, 4, 30, 0), U32(0))};
  EXPECT_EQ(Exported(kAlmostAWord, {1, 0, 0, 0x80}, 4), (Record{1, 0, 0, 0}));
}

TEST(RecordLayoutTest, ATruthIsOneForAnythingButZero) {
  static constexpr Field kFields[] = {Both("flag", Truth(0, 2), Truth(0, 1))};
  EXPECT_EQ(Exported(kFields, {0, 0x80}, 1), (Record{1}));
  EXPECT_EQ(Exported(kFields, {0, 0}, 1), (Record{0}));
  EXPECT_EQ(Recovered(kFields, {0xFF}, 2), (Record{1, 0}));
}

TEST(RecordLayoutTest, TextEndsAtItsNulAndLeavesRoomForOne) {
  static constexpr Field kFields[] = {Both("text", Text(0, 6), Text(0, 4))};
  EXPECT_EQ(Exported(kFields, {'a', 0, 0, 0, 'x', 0}, 4), (Record{'a', 0, 0, 0}));
  EXPECT_EQ(Exported(kFields, {'a', 0, 'b', 0, 'c', 0}, 4), (Record{'a', 0, 0, 0}));
  EXPECT_EQ(Exported(kFields, {0, 1, 0, 0, 0, 0}, 4), (Record{0, 1, 0, 0})) << "U+0100 is no NUL";
  static constexpr Field kWider[] = {Both("text", Text(0, 4), Text(0, 10))};
  EXPECT_EQ(Exported(kWider, {'a', 0, 'b', 0}, 10), (Record{'a', 0, 'b', 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Recovered(kFields, {'a', 0, 'b', 0}, 6), (Record{'a', 0, 'b', 0, 0, 0})) << "the source may lack its NUL";
}

TEST(RecordLayoutTest, RawTextAndBytesTravelAsTheyStand) {
  static constexpr Field kFields[] = {Both("raw", RawText(0, 4), RawText(2, 4)),
                                      Both("bytes", Bytes(4, 2), Bytes(0, 2))};
  EXPECT_EQ(Exported(kFields, {'a', 0, 0, 0, 5, 6}, 6), (Record{5, 6, 'a', 0, 0, 0}));
  EXPECT_EQ(Exported(kFields, {0, 0, 'x', 0, 5, 6}, 6), (Record{5, 6, 0, 0, 'x', 0}));
}

TEST(RecordLayoutTest, WhatOnlyRepeatsIsExportedAndNotRead) {
  static constexpr Field kFields[] = {Both("a", U8(0), U8(0)), Repeated("again", U8(0), U8(1))};
  EXPECT_EQ(Exported(kFields, {7}, 2), (Record{7, 7}));
  EXPECT_EQ(Recovered(kFields, {7, 9}, 1), (Record{7}));
}

TEST(RecordLayoutTest, WhatOnlyARecoverReadsIsZeroAfterAnExport) {
  static constexpr Field kFields[] = {Both("a", U8(0), U8(0)), RecoverOnly("b", U8(1), U8(1))};
  EXPECT_EQ(Exported(kFields, {7, 9}, 2), (Record{7, 0}));
  EXPECT_EQ(Recovered(kFields, {7, 9}, 2), (Record{7, 9}));
}

TEST(RecordLayoutTest, WhatTheModuleWorksOutIsLeftToIt) {
  static constexpr Field kFields[] = {Both("a", U8(0), U8(0)), ByModule("b", U8(1), U8(1)), ByModule("c", U8(2), {})};
  EXPECT_EQ(Exported(kFields, {7, 9, 9}, 2), (Record{7, 0}));
  EXPECT_EQ(Recovered(kFields, {7, 9}, 3), (Record{7, 0, 0}));
  EXPECT_TRUE((Tiles<3, 2>(kFields)));
}

TEST(RecordLayoutTest, AZeroEndsTheRecordWhereItIsToldTo) {
  static constexpr Field kFields[] = {EndsWhenZero("kind", Bits(0, 1, 3, 0), U8(0)), Both("rest", U8(1), U8(1))};
  EXPECT_EQ(Exported(kFields, {0xF1, 5}, 2), (Record{1, 5}));
  EXPECT_EQ(Exported(kFields, {0xF0, 5}, 2), (Record{0, 0}));
  EXPECT_EQ(Recovered(kFields, {0x01, 5}, 2), (Record{0x01, 5}));
  EXPECT_EQ(Recovered(kFields, {0x10, 5}, 2), (Record{0x00, 0}));
}

TEST(RecordLayoutTest, UnusedRoomIsZeroOnBothSides) {
  static constexpr Field kFields[] = {Both("a", U8(0), U8(0)), StoreUnused(1, 1), ExchangeUnused(1, 1)};
  EXPECT_EQ(Exported(kFields, {7, 9}, 2), (Record{7, 0}));
  EXPECT_EQ(Recovered(kFields, {7, 9}, 2), (Record{7, 0}));
}

TEST(RecordLayoutTest, AnItemCountIsCutToItsSlots) {
  static constexpr Field kFields[] = {Both("count", U8(0), U8(0))};
  static constexpr ItemRun kItems[] = {{"item", U8(0), Bytes(0, 2), 1, 3}};
  EXPECT_EQ(Exported(kFields, {4, 0, 0, 0, 0, 0, 0}, 1, kItems), (Record{3}));
  EXPECT_EQ(Exported(kFields, {3, 0, 0, 0, 0, 0, 0}, 1, kItems), (Record{3}));
  static constexpr Field kWideCount[] = {Both("count", U32(0), U32(0))};
  static constexpr ItemRun kNumbers[] = {{"number", U32(0), U32(0), 4, 1}};
  EXPECT_EQ(Exported(kWideCount, {0, 0, 0, 0x80, 0, 0, 0, 0}, 4, kNumbers), (Record{1, 0, 0, 0}));
}

// 11 December 2006, 07:02:10, on both sides; and the same with 5 milliseconds.
const Record kSixNumbers = {0xD6, 0x07, 0, 0, 12, 0, 0, 0, 11, 0, 0, 0, 7, 0, 0, 0, 2, 0, 0, 0, 10, 0, 0, 0};
const Record kSevenNumbers = {0xD6, 0x07, 0, 0, 12, 0, 0,  0, 11, 0, 0, 0, 7, 0,
                              0,    0,    2, 0, 0,  0, 10, 0, 0,  0, 5, 0, 0, 0};
const Record kFileTime = {0x00, 0x85, 0xDE, 0x46, 0xF2, 0x1C, 0xC7, 0x01};
const Record kFileTimeWithMilliseconds = {0x50, 0x48, 0xDF, 0x46, 0xF2, 0x1C, 0xC7, 0x01};
const Record kDigits = {'2', 0,   '0', 0,   '0', 0,   '6', 0,   '1', 0,   '2', 0,   '1', 0, '1',
                        0,   '0', 0,   '7', 0,   '0', 0,   '2', 0,   '1', 0,   '0', 0,   0, 0};

TEST(RecordLayoutTest, AFileTimeIsSixNumbersOrSevenWithTheMilliseconds) {
  static constexpr Field kSix[] = {Both("time", FileTime(0), TimeNumbers(0))};
  EXPECT_EQ(Exported(kSix, kFileTimeWithMilliseconds, 24), kSixNumbers);
  EXPECT_EQ(Recovered(kSix, kSixNumbers, 8), kFileTime);
  static constexpr Field kSeven[] = {Both("time", FileTime(0), TimeOfSeven(0))};
  EXPECT_EQ(Exported(kSeven, kFileTimeWithMilliseconds, 28), kSevenNumbers);
  EXPECT_EQ(Recovered(kSeven, kSevenNumbers, 8), kFileTimeWithMilliseconds);
}

TEST(RecordLayoutTest, ATimeThatDoesNotExistIsZero) {
  static constexpr Field kFields[] = {Both("time", FileTime(0), TimeOfSeven(0))};
  EXPECT_EQ(Exported(kFields, Record(8, 0xFF), 28), Record(28)) << "a FILETIME that no date can tell";
  EXPECT_EQ(Recovered(kFields, Record(28), 8), Record(8));
  Record no_such_day = kSevenNumbers;
  no_such_day[8] = 32;
  EXPECT_EQ(Recovered(kFields, no_such_day, 8), Record(8));
}

TEST(RecordLayoutTest, ASystemTimeIsSixNumbersThatNobodyJudges) {
  static constexpr Field kFields[] = {Both("time", SystemTime(1), TimeNumbers(0)), StoreUnused(0, 1)};
  // With the day of the week and milliseconds, which do not travel; at an odd address.
  Record store = {9, 0xD6, 0x07, 12, 0, 1, 0, 11, 0, 7, 0, 2, 0, 10, 0, 0xF4, 0x01};
  EXPECT_EQ(Exported(kFields, store, 24), kSixNumbers);
  store = {0, 0xD6, 0x07, 12, 0, 0, 0, 11, 0, 7, 0, 2, 0, 10, 0, 0, 0};
  EXPECT_EQ(Recovered(kFields, kSixNumbers, 17), store);
  Record impossible(24);
  for (std::size_t i = 0; i < 6; ++i) {
    impossible[4 * i] = static_cast<std::uint8_t>(0xF0 + i);
    impossible[4 * i + 1] = 0xFF;
  }
  const Record as_it_stands = {0, 0xF0, 0xFF, 0xF1, 0xFF, 0, 0, 0xF2, 0xFF, 0xF3, 0xFF, 0xF4, 0xFF, 0xF5, 0xFF, 0, 0};
  EXPECT_EQ(Recovered(kFields, impossible, 17), as_it_stands);
  EXPECT_EQ(Exported(kFields, as_it_stands, 24), impossible);
  for (std::size_t i = 0; i < 6; ++i) impossible[4 * i + 2] = 0xFF;
  EXPECT_EQ(Recovered(kFields, impossible, 17), as_it_stands) << "the low halves";
}

TEST(RecordLayoutTest, ATimeTextIsSixNumbers) {
  static constexpr Field kFields[] = {Both("time", TimeText(0), TimeNumbers(0))};
  EXPECT_EQ(Exported(kFields, kDigits, 24), kSixNumbers);
  EXPECT_EQ(Recovered(kFields, kSixNumbers, 30), kDigits);
  Record with_letter = kDigits;
  with_letter[26] = 'x';
  EXPECT_EQ(Exported(kFields, with_letter, 24), Record(24));
}

TEST(RecordLayoutTest, RowsOfOneWayLeaveTheOtherSideZero) {
  static constexpr Field kFields[] = {ExportOnly("out", U8(0), U8(0)), RecoverOnly("in", U8(1), U8(1)),
                                      ByModule("rule", U8(2), U8(2))};
  EXPECT_EQ(Exported(kFields, {1, 2, 3}, 3), (Record{1, 0, 0}));
  EXPECT_EQ(Recovered(kFields, {1, 2, 3}, 3), (Record{0, 2, 0}));
}

TEST(RecordLayoutTest, ASignedCountBelowZeroIsNoItems) {
  static constexpr ItemRun kRun = {
      .name = "item", .count = U32(0), .item = Bytes(0, 1), .store_offset = 0, .slots = 3, .is_signed = true};
  const Record minus_one = {0xFF, 0xFF, 0xFF, 0xFF};
  EXPECT_EQ(ItemCount(kRun, minus_one.data()), 0u);
}

constexpr Field kWhole[] = {Both("a", U16(0), U8(0)), ExchangeUnused(1, 1)};
constexpr Field kOverlapping[] = {Both("a", U16(0), U8(0)), Both("b", U8(1), U8(1))};
constexpr Field kOverlappingBits[] = {Both("a", Bits(0, 1, 7, 3), U8(0)), Both("b", Bits(0, 1, 3, 0), U8(1))};
constexpr Field kMissingBit[] = {Both("a", Bits(0, 1, 7, 4), U8(0)), Both("b", Bits(0, 1, 2, 0), U8(1))};
constexpr Field kOutside[] = {Both("a", U16(1), U16(0))};
constexpr Field kUnequalBytes[] = {Both("a", Bytes(0, 2), Bytes(0, 1)), ExchangeUnused(1, 1)};
constexpr ItemRun kItemRun[] = {{"item", U8(0), Bytes(0, 2), 1, 3}};
constexpr ItemRun kUncountedRun[] = {{"item", U16(0), Bytes(0, 2), 1, 3}};
constexpr Field kTextAsBytes[] = {Both("a", Text(0, 4), Bytes(0, 8))};
constexpr Field kNumberAsText[] = {Both("a", U16(0), Text(0, 2))};
constexpr Field kSevenOfAText[] = {Both("a", TimeText(0), TimeOfSeven(0))};
constexpr Field kSevenOfAFileTime[] = {Both("a", FileTime(0), TimeOfSeven(0))};
constexpr Field kFileTimeAsItStands[] = {Both("a", FileTime(0), FileTime(0))};
constexpr Field kNarrowAsText[] = {Both("a", NarrowText(0, 256), Text(0, 16))};
constexpr Field kTimeNumbersAsTheyStand[] = {Both("a", TimeNumbers(0), TimeNumbers(0))};
constexpr Field kFromOddText[] = {Both("a", Text(0, 5), Text(0, 4))};
constexpr Field kToOddText[] = {Both("a", Text(0, 4), Text(0, 5))};
constexpr Field kTextWithoutRoom[] = {Both("a", Text(0, 2), Text(0, 0))};
constexpr Field kNarrowAsOddText[] = {Both("a", NarrowText(0, 4), Text(0, 7))};
constexpr Field kNarrowAsNoText[] = {Both("a", NarrowText(0, 4), Text(0, 0))};
constexpr Field kNarrowWithoutRoom[] = {Both("a", NarrowText(0, 0), Text(0, 8))};
constexpr Field kRawAsText[] = {Both("a", RawText(0, 4), Text(0, 4))};
constexpr Field kUnequalRawText[] = {Both("a", RawText(0, 4), RawText(0, 2)), ExchangeUnused(2, 2)};
constexpr Field kTruthOfFiveBytes[] = {Both("a", Truth(0, 5), U8(0))};
constexpr Field kTruthInFiveBytes[] = {Both("a", U8(0), Truth(0, 5))};
constexpr Field kTruthOfNothing[] = {Both("a", Truth(0, 0), U8(0))};
constexpr Field kBitsOfFiveBytes[] = {Both("a", Bits(0, 5, 31, 0), U32(0)), StoreUnusedBits(0, 5, 39, 32)};
constexpr Field kBitsOfFourBytes[] = {Both("a", Bits(0, 4, 23, 0), U32(0)), StoreUnusedBits(0, 4, 31, 24)};
constexpr Field kNarrowAsNarrow[] = {Both("a", NarrowText(0, 2), NarrowText(0, 2))};
constexpr Field kTextAsNarrow[] = {Both("a", Text(0, 2), NarrowText(0, 2))};
constexpr Field kLongNarrow[] = {Both("a", NarrowText(0, 257), Text(0, 16))};
constexpr Field kSystemTimeAsSix[] = {Both("a", SystemTime(0), TimeNumbers(0))};
constexpr Field kSystemTimeAsSeven[] = {Both("a", SystemTime(0), TimeOfSeven(0))};
constexpr Field kSystemTimeAsItStands[] = {Both("a", SystemTime(0), SystemTime(0))};
constexpr Field kSignedAsNumber[] = {Both("a", S16(0), U32(0))};
constexpr Field kSignedAsText[] = {Both("a", S16(0), Text(0, 4))};
constexpr Field kCountOnly[] = {Both("count", U8(0), U8(0))};

TEST(RecordLayoutTest, TilesHasNoGapAndNoOverlap) {
  EXPECT_TRUE((Tiles<2, 2>(kWhole)));
  EXPECT_FALSE((Tiles<3, 2>(kWhole))) << "a gap in the store record";
  EXPECT_FALSE((Tiles<2, 3>(kWhole))) << "a gap in the exchange record";
  EXPECT_FALSE((Tiles<2, 2>(kOverlapping)));
  EXPECT_FALSE((Tiles<1, 2>(kOverlappingBits)));
  EXPECT_FALSE((Tiles<1, 2>(kMissingBit)));
  EXPECT_FALSE((Tiles<2, 2>(kOutside)));
  EXPECT_FALSE((Tiles<2, 2>(kUnequalBytes))) << "bytes that stand for bytes are as many";
  EXPECT_FALSE((Tiles<4, 8>(kTextAsBytes)));
  EXPECT_FALSE((Tiles<2, 2>(kNumberAsText)));
  EXPECT_FALSE((Tiles<30, 28>(kSevenOfAText))) << "a text tells no milliseconds";
  EXPECT_FALSE((Tiles<8, 8>(kFileTimeAsItStands))) << "exchange files tell times in numbers";
  EXPECT_TRUE((Tiles<8, 28>(kSevenOfAFileTime)));
  EXPECT_TRUE((Tiles<256, 16>(kNarrowAsText)));
  EXPECT_FALSE((Tiles<2, 2>(kNarrowAsNarrow))) << "exchange files hold wide text";
  EXPECT_FALSE((Tiles<2, 2>(kTextAsNarrow)));
  EXPECT_FALSE((Tiles<257, 16>(kLongNarrow))) << "longer than what is converted at once";
  EXPECT_TRUE((Tiles<16, 24>(kSystemTimeAsSix)));
  EXPECT_FALSE((Tiles<16, 28>(kSystemTimeAsSeven)));
  EXPECT_FALSE((Tiles<16, 16>(kSystemTimeAsItStands)));
  EXPECT_FALSE((Tiles<24, 24>(kTimeNumbersAsTheyStand))) << "no store keeps times so";
  EXPECT_TRUE((Tiles<2, 4>(kSignedAsNumber)));
  EXPECT_FALSE((Tiles<2, 4>(kSignedAsText)));
  EXPECT_TRUE((Tiles<7, 1>(kCountOnly, kItemRun)));
  EXPECT_FALSE((Tiles<7, 1>(kCountOnly, kUncountedRun))) << "no row is the count";
  EXPECT_FALSE((Tiles<8, 1>(kCountOnly, kItemRun)));
}

TEST(RecordLayoutTest, TextHasWholeCharactersAndRoomForItsNul) {
  EXPECT_FALSE((Tiles<5, 4>(kFromOddText)));
  EXPECT_FALSE((Tiles<4, 5>(kToOddText)));
  EXPECT_FALSE((Tiles<2, 0>(kTextWithoutRoom)));
  EXPECT_FALSE((Tiles<4, 7>(kNarrowAsOddText)));
  EXPECT_FALSE((Tiles<4, 0>(kNarrowAsNoText)));
  EXPECT_FALSE((Tiles<0, 8>(kNarrowWithoutRoom)));
  EXPECT_FALSE((Tiles<4, 4>(kRawAsText)));
  EXPECT_FALSE((Tiles<4, 4>(kUnequalRawText)));
}

TEST(RecordLayoutTest, NumbersHaveOneToFourBytes) {
  EXPECT_TRUE((Tiles<4, 4>(kBitsOfFourBytes)));
  EXPECT_FALSE((Tiles<5, 4>(kBitsOfFiveBytes)));
  EXPECT_FALSE((Tiles<5, 1>(kTruthOfFiveBytes)));
  EXPECT_FALSE((Tiles<1, 5>(kTruthInFiveBytes)));
  EXPECT_FALSE((Tiles<0, 1>(kTruthOfNothing)));
}

}  // namespace
}  // namespace qv::layout
