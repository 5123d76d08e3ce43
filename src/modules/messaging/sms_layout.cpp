// The field tables of the short messages. The store names few of its values, so a field without a known meaning is
// named after its place in the exchange record.
#include "modules/messaging/sms_layout.h"

#include <algorithm>

namespace qv::sms {
namespace {

using namespace layout;

constexpr Field kMessageFields[] = {
    // The store gives its own id to what it inserts, and is told beside the record what it updates.
    ExportOnly("message_id", U32(0), U32(0)),
    Both("value_4", U16(4), U16(4)),
    ExchangeUnused(6, 2),
    Both("folder_id", kMessageFolder, U32(8)),
    Both("value_12", U16(6), U8(12)),
    ExchangeUnused(13, 3),
    Both("value_16", U32(12), U32(16)),
    Both("time_1", TimeText(16), TimeNumbers(20)),
    ExchangeUnused(44, 8),
    Both("time_2", TimeText(192), TimeNumbers(52)),
    ExchangeUnused(76, 8),
    Both("text_84", Text(46, 66), Text(84, 68)),
    Both("text_152", Text(112, 80), Text(152, 82)),
    Both("body", Text(222, 1342), Text(234, 1342)),
    Both("flag_1576", U16(1564), U8(1576)),
    Both("flag_1577", U16(1566), U8(1577)),
    Both("flag_1578", U16(1568), U8(1578)),
    StoreUnused(1570, 2),
    ExchangeUnused(1579, 1),
    Both("value_1580", U32(1572), U32(1580)),
    Both("flag_1584", U16(1576), U8(1584)),
    Both("flag_1585", U16(1578), U8(1585)),
    StoreUnused(1580, 20),
    ExchangeUnused(1586, 38),
};

constexpr Field kFirstSectionFields[] = {
    Both("value_0", U32(0), U32(0)),
    Both("text_4", Text(4, 200), Text(4, 204)),
};
constexpr Field kSecondSectionFields[] = {
    ExchangeUnused(0, 4),
    Both("text_4", Text(0, 66), Text(4, 68)),
    Both("text_72", Text(66, 80), Text(72, 82)),
    Both("value_154", U16(146), U16(154)),
    Both("time", TimeText(148), TimeNumbers(156)),
    ExchangeUnused(180, 8),
};
constexpr Field kThirdSectionFields[] = {
    ExchangeUnused(0, 4),
    Both("value_4", U32(0), U32(4)),
    Both("value_8", U16(4), U16(8)),
    Both("value_10", U16(6), U16(10)),
    Both("text_12", Text(8, 66), Text(12, 68)),
    Both("text_80", Text(74, 82), Text(80, 120)),
};
constexpr Field kFolderFields[] = {
    Both("folder_id", kFolderId, U32(0)),
    Both("name", kFolderName, Text(4, 82)),
    Both("value_86", U16(84), U8(86)),
    Both("value_87", U16(86), U8(87)),
    Both("value_88", U16(88), U8(88)),
    StoreUnused(90, 2),
    ExchangeUnused(89, 39),
};
constexpr Field kFifthSectionFields[] = {
    ExchangeUnused(0, 4),
    Both("value_4", U32(0), U32(4)),
    Both("value_8", U16(8), U8(8)),
    ExchangeUnused(9, 1),
    Both("value_10", U16(4), U16(10)),
    Both("value_12", U32(12), U32(12)),
    Both("value_16", U16(6), U16(16)),
    Both("text_18", Text(96, 68), Text(18, 68)),
    Both("text_86", Text(16, 80), Text(86, 118)),
    StoreUnused(10, 2),
};
}  // namespace

constinit const RecordLayout kMessageLayout =
    TiledLayout<kMessageStoreSize, kMessageExchangeSize>("short message", kMessageFields);
constexpr RecordLayout kSectionLayouts[kSections] = {
    TiledLayout<204, 208>("configuration section 1", kFirstSectionFields),
    TiledLayout<178, 188>("configuration section 2", kSecondSectionFields),
    TiledLayout<156, 200>("configuration section 3", kThirdSectionFields),
    TiledLayout<92, 128>("configuration folder", kFolderFields),
    TiledLayout<164, 204>("configuration section 5", kFifthSectionFields),
};

static_assert(std::ranges::max(kSectionLayouts, {}, &RecordLayout::exchange_size).exchange_size ==
              kMostSectionExchangeSize);

}  // namespace qv::sms
