// The quick dial's field table. The store names few of its values, so a field without a known meaning is named after
// its place in the exchange record.
#include "modules/telephony/quick_dial_layout.h"

namespace qv::quick_dial {
namespace {

using namespace layout;

constexpr Slot kStoreId = U32(140);

constexpr Field kEntryFields[] = {
    Both("entry_id", kStoreId, kEntryId),
    Repeated("entry_id_repeated", kStoreId, U32(0)),
    Both("text_1", Text(0, 62), Text(4, 62)),
    Both("number", Text(62, 66), Text(66, 66)),
    Both("value_132", U16(128), U16(132)),
    StoreUnused(130, 2),
    Both("byte_134", U32(132), U8(134)),
    Both("byte_135", U16(136), U8(135)),
    StoreUnused(138, 2),
    Both("value_140", U32(144), U32(140)),
    Both("time", TimeText(148), TimeNumbers(144)),
    ExchangeUnused(168, 8),
    Both("value_176", U16(178), U16(176)),
    ExchangeUnused(178, 38),
    StoreUnused(180, 4),
};

}  // namespace

constinit const RecordLayout kEntryLayout = TiledLayout<kStoreSize, kExchangeSize>("quick dial entry", kEntryFields);

}  // namespace qv::quick_dial
