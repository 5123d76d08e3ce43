// The call history's field table. The store names few of its values, so a field without a known meaning is named after
// its place in the exchange record.
#include "modules/messaging/call_history_layout.h"

namespace qv::call_history {
namespace {

using namespace layout;

constexpr Slot kStoreType = U16(168);
constexpr Slot kExchangeType = U8(40);
constexpr std::uint32_t kFirstType = 46000;

constexpr Field kCallFields[] = {
    Both("call_id", U32(160), U32(0)),
    Both("time", TimeText(0), TimeNumbers(4)),
    ExchangeUnused(28, 8),
    Both("value_36", U32(164), U32(36)),
    ByModule("type", kStoreType, kExchangeType),
    Both("byte_41", U16(170), U8(41)),
    Both("number", Text(30, 62), Text(42, 62)),
    Both("name", Text(92, 68), Text(104, 66)),
    Both("byte_170", U16(172), U8(170)),
    Both("byte_171", U16(174), U8(171)),
    ExchangeUnused(172, 36),
    StoreUnused(176, 4),
};

}  // namespace

constinit const RecordLayout kCallLayout = TiledLayout<kStoreSize, kExchangeSize>("call", kCallFields);

void CallToExchange(const std::uint8_t* store, std::uint8_t* exchange) {
  ToExchange(kCallLayout, store, exchange);
  StoreSlot(kExchangeType, exchange, LoadSlot(kStoreType, store) - kFirstType);
}

void CallToStore(const std::uint8_t* exchange, std::uint8_t* store) {
  ToStore(kCallLayout, exchange, store);
  StoreSlot(kStoreType, store, LoadSlot(kExchangeType, exchange) + kFirstType);
}

}  // namespace qv::call_history
