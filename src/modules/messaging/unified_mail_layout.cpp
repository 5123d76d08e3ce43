// The unified mail's field tables. What its values mean only the store knows: a field is named after its order, or
// after its place in the exchange record.
#include "modules/messaging/unified_mail_layout.h"

namespace qv::unified_mail {
namespace {

using namespace layout;

constexpr Field kMailFields[] = {
    Both("mail_id", U32(0), kMailId),
    Both("flag_4", Bits(4, 2, 0, 0), U8(4)),
    Both("flag_5", Bits(4, 2, 1, 1), U8(5)),
    Both("flag_6", Bits(4, 2, 2, 2), U8(6)),
    Both("byte_7", Bits(4, 2, 5, 3), U8(7)),
    FileOnly("table", kTable),
    Both("value_12", Bits(4, 2, 9, 6), U32(12)),
    Both("byte_16", Bits(4, 2, 13, 10), U8(16)),
    Both("byte_17", Bits(4, 2, 15, 14), U8(17)),
    ExchangeUnused(18, 2),
    Both("value_20", U32(8), U32(20)),
    Both("time_1_year", U16(12), U32(24)),
    Both("time_1_month", U16(14), U32(28)),
    Both("time_1_day", U16(16), U32(32)),
    Both("time_1_hour", U16(18), U32(36)),
    Both("time_1_minute", U16(20), U32(40)),
    Both("time_1_second", U16(22), U32(44)),
    ExchangeUnused(48, 8),
    Both("time_2_year", U16(24), U32(56)),
    Both("time_2_month", U16(26), U32(60)),
    Both("time_2_day", U16(28), U32(64)),
    Both("time_2_hour", U16(30), U32(68)),
    Both("time_2_minute", U16(32), U32(72)),
    Both("time_2_second", U16(34), U32(76)),
    ExchangeUnused(80, 8),
    Both("text_1", NarrowText(36, 50), Text(88, 50)),
    Both("text_2", NarrowText(86, 130), Text(138, 130)),
    Both("text_3", NarrowText(216, 202), Text(268, 202)),
    Both("text_4", NarrowText(418, 130), Text(470, 130)),
    FileOnly("kind_0_count", kKindCounts[0]),
    FileOnly("kind_1_count", kKindCounts[1]),
    FileOnly("kind_2_count", kKindCounts[2]),
    FileOnly("item_182_count", kItem182Count),
    ExchangeUnused(616, 4),
    Both("byte_620", U8(6), U8(620)),
    StoreUnused(7, 1),
    ExchangeUnused(621, 7),
    FileOnly("text_length", kTextLength),
    Both("text_5", NarrowText(548, 202), Text(632, 204)),
    StoreUnused(750, 2),
    FileOnly("item_308_count", kItem308Count),
    ExchangeUnused(840, 40),
    // The addresses of what lies elsewhere, and the long text's length.
    StoreUnused(kKindChains[0].offset, kKindChains[0].size),
    StoreUnused(kKindChains[1].offset, kKindChains[1].size),
    StoreUnused(kKindChains[2].offset, kKindChains[2].size),
    StoreUnused(kItem308Chain.offset, kItem308Chain.size),
    StoreUnused(kStoreText.offset, kStoreText.size),
    StoreUnused(kStoreTextLength.offset, kStoreTextLength.size),
};

constexpr Field kItem182Fields[] = {
    Both("text_1", NarrowText(4, 25), Text(0, 50)),
    Both("text_2", NarrowText(29, 67), Text(50, 130)),
    FileOnly("kind", kItemKind),
    StoreUnused(0, 4),
    StoreUnused(kNextItem182.offset, kNextItem182.size),
};

constexpr Field kItem308Fields[] = {
    Both("value_0", U32(0), U32(0)),
    Both("value_4", U32(4), U32(4)),
    Both("text", NarrowText(8, 152), Text(8, 300)),
    StoreUnused(kNextItem308.offset, kNextItem308.size),
};

}  // namespace

// Constants to the compiler too, which looks at them in the mail's layout.
constexpr RecordLayout kItem182Layout =
    TiledLayout<kItem182NodeSize, kItem182Size>("unified mail item of 182 bytes", kItem182Fields);
constexpr RecordLayout kItem308Layout =
    TiledLayout<kItem308NodeSize, kItem308Size>("unified mail item of 308 bytes", kItem308Fields);

namespace {

constexpr ItemRun kMailItems[] = {
    {.name = "item_182",
     .count = kItem182Count,
     .item = Bytes(0, kItem182Size),
     .store_offset = kElsewhere,
     .slots = kAnyNumber,
     .is_signed = true,
     .layout = &kItem182Layout},
    {.name = "item_308",
     .count = kItem308Count,
     .item = Bytes(0, kItem308Size),
     .store_offset = kElsewhere,
     .slots = kAnyNumber,
     .is_signed = true,
     .layout = &kItem308Layout},
    {.name = "text",
     .count = kTextLength,
     .item = RawText(0, 2),
     .store_offset = kElsewhere,
     .slots = kAnyNumber,
     .is_signed = true},
};

constexpr Field kFolderFields[] = {
    Both("bytes_0", Bytes(0, kFolderSize), Bytes(0, kFolderSize)),
};

constexpr Field kRuleFields[] = {
    Both("bytes_0", Bytes(0, kRuleSize), Bytes(0, kRuleSize)),
};

}  // namespace

constinit const RecordLayout kMailLayout =
    TiledLayout<kMailStoreSize, kMailExchangeSize>("unified mail", kMailFields, kMailItems);
constinit const RecordLayout kFolderLayout =
    TiledLayout<kFolderSize, kFolderSize>("unified mail folder", kFolderFields);
constinit const RecordLayout kRuleLayout = TiledLayout<kRuleSize, kRuleSize>("unified mail rule", kRuleFields);

}  // namespace qv::unified_mail
