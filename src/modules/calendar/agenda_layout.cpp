// The agenda's field tables. The store names few of its values, so a field without a known meaning is named after its
// place in the exchange record.
#include "modules/calendar/agenda_layout.h"

namespace qv::agenda {
namespace {

using namespace layout;

constexpr Slot kItemCount = U8(247);

constexpr Field kEntryFields[] = {
    Both("entry_id", U32(52), kExchangeEntryId),
    Both("group_id", kStoreGroupId, U32(4)),
    Both("title", Text(0, 36), Text(8, 36)),
    Both("value_44", U16(38), U32(44)),
    Both("value_48", U8(37), U32(48)),
    Both("value_52", U8(36), U32(52)),
    ExchangeUnused(56, 20),
    Both("value_76", U16(42), U32(76)),
    Both("value_80", U8(41), U32(80)),
    Both("value_84", U8(40), U32(84)),
    ExchangeUnused(88, 20),
    Both("value_108", U16(44), U16(108)),
    Both("byte_110", U16(46), U8(110)),
    Both("byte_111", U16(56), U8(111)),
    Both("byte_112", U16(58), U8(112)),
    ExchangeUnused(113, 1),
    Both("text", Text(60, 132), Text(114, 132)),
    ExchangeUnused(246, 1),
    Both("item_count", U32(192), kItemCount),
    ExchangeUnused(248, 40),
    StoreUnused(196, 8),
    StoreUnused(kArea.offset, kArea.size),
    StoreUnused(kLongItemCount.offset, kLongItemCount.size),
};

constexpr Field kItemFields[] = {
    Both("byte_0", U16(6), U8(0)),
    ExchangeUnused(1, 3),
    Both("value_4", U32(8), U32(4)),
    Both("value_8", U16(12), U16(8)),
    Both("value_10", U16(14), U16(10)),
    Both("value_12", U32(0), U32(12)),
    Both("text", Text(16, 192), Text(16, 64)),
    StoreUnused(4, 2),
};
constexpr RecordLayout kItemLayout = TiledLayout<208, 80>("agenda item", kItemFields);

constexpr Field kLongItemFields[] = {
    Both("type", U32(0), U32(0)),
    Both("bytes_4", Bytes(4, kLongItemExchangeSize - 4), Bytes(4, kLongItemExchangeSize - 4)),
    StoreUnused(kLongItemExchangeSize, kLongItemStoreSize - kLongItemExchangeSize),
};
constexpr RecordLayout kLongItemLayout =
    TiledLayout<kLongItemStoreSize, kLongItemExchangeSize>("agenda long item", kLongItemFields);

constexpr ItemRun kEntryItems[] = {
    {.name = "item",
     .count = kItemCount,
     .item = Bytes(0, 80),
     .store_offset = 204,
     .slots = 20,
     .layout = &kItemLayout},
    {.name = "long_item",
     .count = {},
     .item = Bytes(0, kLongItemExchangeSize),
     .store_offset = kElsewhere,
     .slots = kMostLongItems,
     .layout = &kLongItemLayout,
     .is_counted_in_front = true},
};

constexpr Field kGroupFields[] = {
    Both("group_id", U32(0), U32(0)),
    Both("bytes_4", Bytes(4, 284), Bytes(4, 284)),
};

}  // namespace

constinit const RecordLayout kEntryLayout =
    TiledLayout<kEntryStoreSize, kEntryExchangeSize>("agenda entry", kEntryFields, kEntryItems);
constinit const RecordLayout kGroupLayout = TiledLayout<kGroupSize, kGroupSize>("agenda group", kGroupFields);

}  // namespace qv::agenda
