// The interpreter of field tables, on small tables of its own: each form both ways, and what the tiling check refuses.
#include "layout/record_layout.h"

#include <gtest/gtest.h>

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

constexpr Field kWhole[] = {Both("a", U16(0), U8(0)), ExchangeUnused(1, 1)};
constexpr Field kOverlapping[] = {Both("a", U16(0), U8(0)), Both("b", U8(1), U8(1))};
constexpr Field kOverlappingBits[] = {Both("a", Bits(0, 1, 7, 3), U8(0)), Both("b", Bits(0, 1, 3, 0), U8(1))};
constexpr Field kMissingBit[] = {Both("a", Bits(0, 1, 7, 4), U8(0)), Both("b", Bits(0, 1, 2, 0), U8(1))};
constexpr Field kOutside[] = {Both("a", U16(1), U16(0))};
constexpr Field kUnequalBytes[] = {Both("a", Bytes(0, 2), Bytes(0, 1)), ExchangeUnused(1, 1)};
constexpr ItemRun kItemRun[] = {{"item", U8(0), Bytes(0, 2), 1, 3}};
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
  EXPECT_TRUE((Tiles<7, 1>(kCountOnly, kItemRun)));
  EXPECT_FALSE((Tiles<8, 1>(kCountOnly, kItemRun)));
}

}  // namespace
}  // namespace qv::layout
