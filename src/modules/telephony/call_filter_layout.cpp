// The call filter's field tables. The store names few of its values, so a field without a known meaning is named after
// its place in the exchange record.
#include "modules/telephony/call_filter_layout.h"

#include <algorithm>

namespace qv::call_filter {
namespace {

using namespace layout;

constexpr Field kEntryFields[] = {
    Both("entry_id", U32(0), U32(0)),           Both("group_id", kEntryGroupId, kEntryGroupId),
    Both("time", FileTime(8), TimeOfSeven(8)),  ExchangeUnused(36, 4),
    Both("text_1", Text(16, 62), Text(40, 62)), Both("text_2", Text(78, 66), Text(102, 102)),
};

constexpr Slot kStoreDays = U16(204);
constexpr Slot kExchangeDays = Bytes(384, 7);

constexpr Field kGroupFields[] = {
    Both("group_id", U32(0), U32(0)),
    Both("name", Text(4, 44), Text(4, 200)),
    Both("time_0", FileTime(48), TimeOfSeven(204)),
    ExchangeUnused(232, 4),
    Both("value_236", U16(56), U16(236)),
    Both("value_238", U16(58), U16(238)),
    Both("text", Text(60, 142), Text(240, 142)),
    Both("value_382", U16(202), U16(382)),
    ByModule("days", kStoreDays, kExchangeDays),
    ExchangeUnused(391, 1),
    StoreUnused(206, 2),
    Both("time_1", FileTime(208), TimeOfSeven(392)),
    ExchangeUnused(420, 4),
    Both("time_2", FileTime(216), TimeOfSeven(424)),
    ExchangeUnused(452, 4),
    Both("time_3", FileTime(224), TimeOfSeven(456)),
    ExchangeUnused(484, 4),
    Both("time_4", FileTime(232), TimeOfSeven(488)),
    ExchangeUnused(516, 4),
    Both("time_5", FileTime(240), TimeOfSeven(520)),
    ExchangeUnused(548, 4),
    Both("time_6", FileTime(248), TimeOfSeven(552)),
    ExchangeUnused(580, 4),
    Both("time_7", FileTime(256), TimeOfSeven(584)),
    ExchangeUnused(612, 4),
    Both("time_8", FileTime(264), TimeOfSeven(616)),
    ExchangeUnused(644, 4),
    Both("text_a", Text(272, 258), Text(648, 258)),
    Both("text_b", Text(530, 258), Text(906, 294)),
};

constexpr std::uint32_t kConfigSlots = 8;
constexpr Slot kStoreConfigCount = U16(6);
constexpr Slot kExchangeConfigCount = U16(8);

// Of the eight numbers with what belongs to each.
constexpr Slot StoreIndex(std::uint32_t slot) {
  return U16(static_cast<std::uint16_t>(8 + 88 * slot));
}
constexpr Slot StoreValue(std::uint32_t slot) {
  return U16(static_cast<std::uint16_t>(10 + 88 * slot));
}
constexpr Slot StoreNumber(std::uint32_t slot) {
  return Text(static_cast<std::uint16_t>(12 + 88 * slot), 62);
}
constexpr Slot StoreShortText(std::uint32_t slot) {
  return Text(static_cast<std::uint16_t>(74 + 88 * slot), 22);
}
constexpr Slot ExchangeNumber(std::uint32_t slot) {
  return Text(static_cast<std::uint16_t>(12 + 62 * slot), 62);
}
constexpr Slot ExchangeValue(std::uint32_t slot) {
  return U16(static_cast<std::uint16_t>(508 + 2 * slot));
}
constexpr Slot ExchangeShortText(std::uint32_t slot) {
  return Text(static_cast<std::uint16_t>(524 + 22 * slot), 22);
}

constexpr Field kConfigFields[] = {
    ExchangeUnused(0, 4),
    Both("value_4", U16(0), U16(4)),
    Both("value_6", U16(2), U16(6)),
    Both("count", kStoreConfigCount, kExchangeConfigCount),
    Both("value_10", U16(4), U16(10)),
    Both("number_1", StoreNumber(0), ExchangeNumber(0)),
    Both("number_2", StoreNumber(1), ExchangeNumber(1)),
    Both("number_3", StoreNumber(2), ExchangeNumber(2)),
    Both("number_4", StoreNumber(3), ExchangeNumber(3)),
    Both("number_5", StoreNumber(4), ExchangeNumber(4)),
    Both("number_6", StoreNumber(5), ExchangeNumber(5)),
    Both("number_7", StoreNumber(6), ExchangeNumber(6)),
    Both("number_8", StoreNumber(7), ExchangeNumber(7)),
    Both("value_of_1", StoreValue(0), ExchangeValue(0)),
    Both("value_of_2", StoreValue(1), ExchangeValue(1)),
    Both("value_of_3", StoreValue(2), ExchangeValue(2)),
    Both("value_of_4", StoreValue(3), ExchangeValue(3)),
    Both("value_of_5", StoreValue(4), ExchangeValue(4)),
    Both("value_of_6", StoreValue(5), ExchangeValue(5)),
    Both("value_of_7", StoreValue(6), ExchangeValue(6)),
    Both("value_of_8", StoreValue(7), ExchangeValue(7)),
    Both("short_text_1", StoreShortText(0), ExchangeShortText(0)),
    Both("short_text_2", StoreShortText(1), ExchangeShortText(1)),
    Both("short_text_3", StoreShortText(2), ExchangeShortText(2)),
    Both("short_text_4", StoreShortText(3), ExchangeShortText(3)),
    Both("short_text_5", StoreShortText(4), ExchangeShortText(4)),
    Both("short_text_6", StoreShortText(5), ExchangeShortText(5)),
    Both("short_text_7", StoreShortText(6), ExchangeShortText(6)),
    Both("short_text_8", StoreShortText(7), ExchangeShortText(7)),
    ByModule("index_of_1", StoreIndex(0), {}),
    ByModule("index_of_2", StoreIndex(1), {}),
    ByModule("index_of_3", StoreIndex(2), {}),
    ByModule("index_of_4", StoreIndex(3), {}),
    ByModule("index_of_5", StoreIndex(4), {}),
    ByModule("index_of_6", StoreIndex(5), {}),
    ByModule("index_of_7", StoreIndex(6), {}),
    ByModule("index_of_8", StoreIndex(7), {}),
};

void Clear(const Slot& slot, std::uint8_t* record) {
  std::fill_n(record + slot.offset, slot.size, std::uint8_t{0});
}

/// Cuts the count to the slots there are, and returns it.
std::uint32_t CutCount(const Slot& count, std::uint8_t* record) {
  const std::uint32_t cut = std::min(LoadSlot(count, record), kConfigSlots);
  StoreSlot(count, record, cut);
  return cut;
}

}  // namespace

constinit const RecordLayout kEntryLayout =
    TiledLayout<kEntryStoreSize, kEntryExchangeSize>("call filter entry", kEntryFields);
constinit const RecordLayout kGroupLayout =
    TiledLayout<kGroupStoreSize, kGroupExchangeSize>("call filter group", kGroupFields);
constinit const RecordLayout kConfigLayout =
    TiledLayout<kConfigStoreSize, kConfigExchangeSize>("call filter configuration", kConfigFields);

// The two directions of the days are not inverse. Desktops and stores live with it.

void GroupToExchange(const std::uint8_t* store, std::uint8_t* exchange) {
  ToExchange(kGroupLayout, store, exchange);
  const auto first_day = static_cast<std::uint8_t>(LoadSlot(kStoreDays, store) & 1);
  std::fill_n(exchange + kExchangeDays.offset, kExchangeDays.size, first_day);
}

void GroupToStore(const std::uint8_t* exchange, std::uint8_t* store) {
  ToStore(kGroupLayout, exchange, store);
  std::uint32_t days = 0;
  for (std::size_t i = 0; i < kExchangeDays.size; ++i) days = days << 1 | (exchange[kExchangeDays.offset + i] & 1u);
  StoreSlot(kStoreDays, store, days);
}

void ConfigToExchange(const std::uint8_t* store, std::uint8_t* exchange) {
  ToExchange(kConfigLayout, store, exchange);
  for (std::uint32_t slot = CutCount(kExchangeConfigCount, exchange); slot < kConfigSlots; ++slot) {
    Clear(ExchangeNumber(slot), exchange);
    Clear(ExchangeValue(slot), exchange);
    Clear(ExchangeShortText(slot), exchange);
  }
}

void ConfigToStore(const std::uint8_t* exchange, std::uint8_t* store) {
  ToStore(kConfigLayout, exchange, store);
  for (std::uint32_t slot = CutCount(kStoreConfigCount, store); slot < kConfigSlots; ++slot) {
    Clear(StoreNumber(slot), store);
    Clear(StoreValue(slot), store);
    Clear(StoreShortText(slot), store);
  }
  for (std::uint32_t slot = 0; slot < kConfigSlots; ++slot) StoreSlot(StoreIndex(slot), store, slot);
}

}  // namespace qv::call_filter
