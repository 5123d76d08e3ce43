// The graphic memo's field table. The store names few of its values, so a field without a known meaning is named after
// its place in the exchange record.
#include "modules/organizer/graphic_memo_layout.h"

namespace qv::graphic_memo {
namespace {

using namespace layout;

constexpr Field kMemoFields[] = {
    Both("memo_id", U32(0), U32(0)),
    Both("byte_4", U32(4), U8(4)),
    Both("byte_5", U32(8), U8(5)),
    Both("byte_6", U32(12), U8(6)),
    ExchangeUnused(7, 1),
    Both("time_1", FileTime(16), TimeNumbers(8)),
    ExchangeUnused(32, 8),
    Both("time_2", FileTime(24), TimeNumbers(40)),
    ExchangeUnused(64, 8),
    Both("text_1", Text(32, 126), Text(72, 126)),
    Both("text_2", Text(158, 48), Text(198, 48)),
    Both("text_3", Text(206, 206), Text(246, 206)),
    Both("value_452", U32(412), U32(452)),
    Both("text_4", Text(416, 204), Text(456, 204)),
    Both("text_5", Text(620, 512), Text(660, 512)),
    Both("value_1172", U32(1132), U32(1172)),
    Both("value_1176", U32(1136), U32(1176)),
    Both("value_1180", U32(1140), U32(1180)),
    Both("value_1184", U32(1144), U32(1184)),
    ExchangeUnused(1188, 36),
};

}  // namespace

constinit const RecordLayout kMemoLayout = TiledLayout<kStoreSize, kExchangeSize>("graphic memo", kMemoFields);

}  // namespace qv::graphic_memo
