// The field tables of the settings. What their texts and numbers mean is known to the store libraries alone.
#include "modules/settings/settings_layout.h"

namespace qv::settings {
namespace {

using namespace layout;

constexpr Field kProfileFields[] = {
    Both("text_1", Text(0, 520), Text(0, 520)),
    Both("text_2", Text(520, 520), Text(520, 520)),
    Both("value_1", U32(1040), U16(1040)),
    Both("text_3", Text(1044, 520), Text(1042, 520)),
    Both("text_4", Text(1564, 520), Text(1562, 520)),
    Both("value_2", U32(3124), U16(2082)),
    Both("text_5", Text(2084, 520), Text(2084, 520)),
    Both("text_6", Text(2604, 520), Text(2604, 520)),
    Both("setting_1", U32(3128), U8(3124)),
    Both("setting_2", U32(3132), U8(3125)),
    Both("setting_3", U32(3136), U8(3126)),
    Both("setting_4", U32(3140), U8(3127)),
    Both("setting_5", U32(3144), U8(3128)),
    Both("setting_6", U32(3148), U8(3129)),
    ExchangeUnused(3130, 38),
};

constexpr Field kDisplayFields[] = {
    Both("value_0", U32(0), U32(0)),
    Both("value_1", U32(4), U32(4)),
    Both("value_2", U32(8), U32(8)),
    Both("value_3", U32(12), U8(12)),
    Both("value_4", U32(16), U8(13)),
    Both("value_5", U32(20), U8(14)),
    Both("value_6", U32(24), U8(15)),
    Both("value_7", U32(28), U8(16)),
    ExchangeUnused(17, 3),
    Both("value_8", U32(32), U32(20)),
    Both("value_9", U32(36), U32(24)),
    Both("value_10", U32(40), U32(28)),
    ExchangeUnused(32, 36),
};

constexpr Field kBrowserFields[] = {
    Both("text_1", Text(0, 1024), Text(0, 1024)), Both("text_2", Text(1024, 1024), Text(1024, 1024)),
    Both("value_1", U32(2048), U32(2048)),        Both("value_2", U32(2052), U32(2052)),
    Both("value_3", U32(2056), U32(2056)),        Both("value_4", U32(2060), U32(2060)),
    Both("value_5", U32(2064), U32(2064)),        Both("value_6", U32(2068), U32(2068)),
    Both("value_7", U32(2072), U32(2072)),
};

constexpr Field kAlarmFields[] = {
    ExchangeUnused(0, 4),
    Both("value_1", U32(0), U32(4)),
    Both("value_2", U32(4), U8(8)),
    ByModule("repeat_flags", kAlarmFlags, {}),
    ByModule("repeat_mode", {}, kAlarmRepeatMode),
    ByModule("days", {}, kAlarmDays),
    ExchangeUnused(17, 15),
    Both("value_3", U32(12), U32(32)),
    Both("value_4", U32(16), U32(36)),
    ExchangeUnused(40, 12),
    Both("text_1", Text(20, 30), Text(52, 30)),
    Both("text_2", Text(50, 82), Text(82, 82)),
    Both("text_3", Text(132, 212), Text(164, 240)),
};

constexpr Field kClockNameFields[] = {
    ExchangeUnused(0, 4),
    ByModule("index", {}, kClockNameIndex),
    Both("name", Text(0, 30), Text(8, 30)),
    ExchangeUnused(38, 38),
};

}  // namespace

constinit const RecordLayout kProfileLayout = TiledLayout<kProfileSize, 3168>("profile", kProfileFields);
constinit const RecordLayout kDisplayLayout =
    TiledLayout<kDisplaySize, kDisplayRecordSize>("display settings", kDisplayFields);
constinit const RecordLayout kBrowserLayout =
    TiledLayout<kBrowserSize, kBrowserSize>("browser settings", kBrowserFields);
constinit const RecordLayout kAlarmLayout = TiledLayout<kAlarmSize, kAlarmRecordSize>("alarm", kAlarmFields);
constinit const RecordLayout kClockNameLayout =
    TiledLayout<kClockNameSize, kClockNameRecordSize>("clock name", kClockNameFields);

}  // namespace qv::settings
