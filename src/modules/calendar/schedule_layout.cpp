// The schedule's field tables. The store names few of its values, so a field without a known meaning is named after its
// place in the exchange record.
#include "modules/calendar/schedule_layout.h"

namespace qv::schedule {
namespace {

using namespace layout;

constexpr Slot kItem80Count = U8(449);
constexpr Slot kItem144Count = U8(456);

constexpr Field kEntryFields[] = {
    Both("entry_id", kEntryId, kEntryId),
    Both("group_id", kEntryGroupId, kEntryGroupId),
    Both("text_1", Text(80, 62), Text(8, 62)),
    Both("text_2", Text(142, 242), Text(70, 242)),
    Both("text_3", Text(384, 62), Text(312, 62)),
    Both("flag_374", U8(30), U8(374)),
    Both("flag_375", U8(31), U8(375)),
    Both("flag_376", U8(32), U8(376)),
    ExchangeUnused(377, 3),
    Both("start_year", Bits(8, 4, 31, 20), U32(380)),
    Both("start_month", Bits(8, 4, 19, 16), U32(384)),
    Both("start_day", Bits(8, 4, 15, 11), U32(388)),
    Both("start_hour", Bits(8, 4, 10, 6), U32(392)),
    Both("start_minute", Bits(8, 4, 5, 0), U32(396)),
    ExchangeUnused(400, 8),
    Repeated("start_packed", U32(8), U32(408)),
    Both("end_year", Bits(12, 4, 31, 20), U32(412)),
    Both("end_month", Bits(12, 4, 19, 16), U32(416)),
    Both("end_day", Bits(12, 4, 15, 11), U32(420)),
    Both("end_hour", Bits(12, 4, 10, 6), U32(424)),
    Both("end_minute", Bits(12, 4, 5, 0), U32(428)),
    ExchangeUnused(432, 8),
    Repeated("end_packed", U32(12), U32(440)),
    Both("value_444", U16(28), U16(444)),
    Both("flag_446", Truth(38, 2), Truth(446, 1)),
    Both("byte_447", U8(33), U8(447)),
    Both("byte_448", U8(34), U8(448)),
    Both("item_80_count", U8(40), kItem80Count),
    ExchangeUnused(450, 6),
    Both("item_144_count", U8(41), kItem144Count),
    StoreUnused(42, 2),
    ExchangeUnused(457, 7),
    Both("byte_464", U8(35), U8(464)),
    ExchangeUnused(465, 3),
    StoreUnusedBits(16, 4, 31, 24),
    Both("value_468", Bits(16, 4, 23, 16), U32(468)),
    Both("value_472", Bits(16, 4, 15, 8), U32(472)),
    Both("value_476", Bits(16, 4, 7, 0), U32(476)),
    StoreUnusedBits(20, 4, 31, 16),
    Both("value_480", Bits(20, 4, 15, 8), U32(480)),
    ExchangeUnused(484, 4),
    Both("value_488", Bits(20, 4, 7, 0), U32(488)),
    ExchangeUnused(492, 4),
    Both("value_496", U32(24), U32(496)),
    Both("byte_500", U8(36), U8(500)),
    StoreUnused(37, 1),
    ExchangeUnused(501, 1),
    Both("text_4", Text(446, 258), Text(502, 258)),
    // An entry that does not repeat carries nothing from here on, whatever the store's slots still hold.
    EndsWhenZero("repeat_kind", Bits(44, 1, 3, 0), U8(760)),
    StoreUnusedBits(44, 1, 7, 4),
    ExchangeUnused(761, 3),
    Both("repeat_start_year", Bits(48, 4, 31, 16), U32(764)),
    Both("repeat_start_month", Bits(48, 4, 15, 8), U32(768)),
    Both("repeat_start_day", Bits(48, 4, 7, 0), U32(772)),
    ExchangeUnused(776, 20),
    Both("repeat_end_year", Bits(52, 4, 31, 16), U32(796)),
    Both("repeat_end_month", Bits(52, 4, 15, 8), U32(800)),
    Both("repeat_end_day", Bits(52, 4, 7, 0), U32(804)),
    ExchangeUnused(808, 20),
    Both("repeat_value_828", U16(56), U32(828)),
    Both("repeat_byte_832", U8(45), U8(832)),
    Both("repeat_byte_833", U8(46), U8(833)),
    ExchangeUnused(834, 2),
    Both("repeat_weekdays", U32(60), U32(836)),
    ExchangeUnused(840, 4),
    Both("repeat_value_844", U8(47), U32(844)),
    Repeated("repeat_weekday_0", Bits(60, 4, 0, 0), U8(848)),
    Repeated("repeat_weekday_1", Bits(60, 4, 1, 1), U8(849)),
    Repeated("repeat_weekday_2", Bits(60, 4, 2, 2), U8(850)),
    Repeated("repeat_weekday_3", Bits(60, 4, 3, 3), U8(851)),
    Repeated("repeat_weekday_4", Bits(60, 4, 4, 4), U8(852)),
    Repeated("repeat_weekday_5", Bits(60, 4, 5, 5), U8(853)),
    Repeated("repeat_weekday_6", Bits(60, 4, 6, 6), U8(854)),
    ExchangeUnused(855, 1),
    Both("repeat_value_856", U32(64), U32(856)),
    Both("repeat_byte_860", U8(58), U8(860)),
    StoreUnused(59, 1),
    ExchangeUnused(861, 3),
    Both("repeat_value_864", U32(68), U32(864)),
    Both("repeat_bytes_868", Bytes(72, 7), Bytes(868, 7)),
    StoreUnused(79, 1),
    ExchangeUnused(875, 37),
    StoreUnused(8640, 40),
};

constexpr ItemRun kEntryItems[] = {
    {.name = "item_80", .count = kItem80Count, .item = Bytes(0, 80), .store_offset = 704, .slots = 20},
    {.name = "item_144", .count = kItem144Count, .item = Bytes(0, 144), .store_offset = 2304, .slots = 44},
};

// A group passes through as it stands, but for the exchange record's tail, which the store has no room for.
constexpr Field kGroupFields[] = {
    Both("group_id", kGroupId, kGroupId),
    Both("bytes_4", Bytes(4, 42), Bytes(4, 42)),
    Both("name", RawText(46, 204), RawText(46, 204)),
    Both("value_250", kGroupValue, kGroupValue),
    Both("bytes_252", Bytes(252, 12), Bytes(252, 12)),
    ExchangeUnused(264, 24),
};

}  // namespace

constinit const RecordLayout kEntryLayout =
    TiledLayout<kEntryStoreSize, kEntryExchangeSize>("schedule entry", kEntryFields, kEntryItems);
constinit const RecordLayout kGroupLayout =
    TiledLayout<kGroupStoreSize, kGroupExchangeSize>("schedule group", kGroupFields);

}  // namespace qv::schedule
