// The field tables of the e-mail database. What the library's texts, flags and numbers mean is known to it alone.
#include "modules/mail/mail_layout.h"

namespace qv::mail {
namespace {

using namespace layout;

constexpr Field NextNode(std::uint16_t offset) {
  return StoreUnused(offset, kNextNodeSize);
}

constexpr bool EndsWithNextNode(std::span<const Field> fields, std::size_t node_size) {
  const Slot& last = fields.back().store;
  return last.form == Form::kUnused && last.size == kNextNodeSize && last.offset == node_size - kNextNodeSize;
}

/// The layout of a node and of its record, which has to fit where records are held.
template <std::size_t node_size, std::size_t record_size, const auto& fields>
consteval RecordLayout MailLayout(Name name) {
  static_assert(EndsWithNextNode(fields, node_size));
  static_assert(record_size <= kLargestRecord);
  return TiledLayout<node_size, record_size>(name, fields);
}

constexpr Field kUserFields[] = {
    StoreUnused(0, 4),
    Both("account_id", kUserAccount, U32(0)),
    StoreUnused(5, 1),
    Both("text_1", Text(6, 62), Text(4, 62)),
    Both("text_2", Text(68, 130), Text(66, 130)),
    Both("text_3", Text(198, 508), Text(196, 102)),
    Both("text_4", Text(706, 508), Text(298, 258)),
    Both("text_5", Text(1214, 122), Text(556, 122)),
    Both("text_6", Text(1336, 122), Text(678, 122)),
    Both("flags", Bytes(1458, 6), Bytes(800, 6)),
    ExchangeUnused(806, 38),
    NextNode(1464),
};

constexpr Field kConfigFields[] = {
    StoreUnused(0, 4),
    ExchangeUnused(0, 4),
    Both("account_id", S16(4), kRecordConfigAccount),
    Both("setting_1", U16(6), U16(8)),
    Both("setting_2", U16(8), U16(10)),
    Both("setting_3", U16(10), U16(12)),
    Both("text_1", Text(12, 130), Text(14, 130)),
    Both("setting_4", U16(142), U16(144)),
    Both("text_2", Text(144, 402), Text(146, 42)),
    Both("setting_5", U16(546), U16(188)),
    ExchangeUnused(190, 2),
    NextNode(548),
};

constexpr Field kFilterFields[] = {
    StoreUnused(0, 4),
    Both("filter_id", kFilterId, U32(0)),
    StoreUnused(5, 1),
    Both("account_id", U8(460), kRecordFilterAccount),
    StoreUnused(461, 1),
    Both("text_1", Text(6, 62), Text(8, 62)),
    Both("has_contacts", kFilterHasContacts, U8(70)),
    StoreUnused(69, 1),
    ExchangeUnused(71, 1),
    Both("text_2", Text(70, 130), Text(72, 130)),
    Both("text_3", Text(200, 130), Text(202, 130)),
    Both("text_4", Text(330, 130), Text(332, 130)),
    Both("text_5", Text(462, 202), Text(462, 202)),
    Both("value_1", U32(664), U32(664)),
    Both("flag_1", U8(668), U8(668)),
    Both("flag_2", U8(669), U8(669)),
    Both("flag_3", U8(670), U8(670)),
    ExchangeUnused(671, 1),
    Both("value_2", U8(671), U32(672)),
    Both("folder_id", kFilterFolder, kRecordFilterFolder),
    Both("flag_4", U8(673), U8(680)),
    StoreUnused(674, 2),
    // Desktops count on the size of the record, not on what is in it.
    ExchangeUnused(681, 4139),
    NextNode(676),
};

constexpr Field kContactFields[] = {
    StoreUnused(0, 4),
    ExchangeUnused(0, 4),
    Both("filter_id", U8(4), kRecordContactFilter),
    StoreUnused(5, 1),
    Both("text_1", Text(6, 62), Text(8, 62)),
    Both("text_2", Text(68, 130), Text(70, 130)),
    StoreUnused(198, 2),
    Both("value_1", U32(200), U8(200)),
    ExchangeUnused(201, 3),
    Both("value_2", U32(204), U32(204)),
    Both("value_3", U32(208), U16(208)),
    ExchangeUnused(210, 2),
    Both("value_4", U32(212), U32(212)),
    ExchangeUnused(216, 36),
    NextNode(216),
};

constexpr Field kFolderFields[] = {
    StoreUnused(0, 4),
    Both("folder_id", kFolderId, U32(0)),
    Both("account_id", kFolderAccount, kRecordFolderAccount),
    Both("name", Text(6, 62), Text(8, 62)),
    Both("flag_1", U8(68), U8(70)),
    StoreUnused(69, 3),
    Both("kind", kFolderKind, U8(71)),
    Both("flag_2", U8(73), U8(72)),
    StoreUnused(74, 6),
    ExchangeUnused(73, 7),
    Both("text_1", NarrowText(80, 256), Text(80, 514)),
    ExchangeUnused(594, 34),
    NextNode(336),
};

constexpr Field kUidlFields[] = {
    ExportOnly("value_1", U32(0), U32(0)),
    Both("account_id", U16(4), kRecordUidlAccount),
    Both("uidl", Text(6, 122), Text(8, 124)),
    NextNode(128),
};

constexpr Field kHeaderFields[] = {
    StoreUnused(0, 4),
    Both("message_id", kMessageId, U32(0)),
    Both("folder_id", kMessageFolder, kRecordMessageFolder),
    Both("account_id", kMessageAccount, kRecordMessageAccount),
    Both("flag_1", U8(10), U8(12)),
    Both("flag_2", U8(11), U8(13)),
    Both("text_1", Text(12, 122), Text(14, 122)),
    StoreUnused(134, 2),
    Both("value_1", U32(136), U32(136)),
    Both("value_2", U32(140), U32(140)),
    Both("value_3", U32(144), U8(144)),
    ExchangeUnused(145, 1),
    Both("text_2", Text(148, 142), Text(146, 142)),
    Both("date_1", kMessageDate1, TimeNumbers(288)),
    ExchangeUnused(312, 8),
    Both("date_2", SystemTime(306), TimeNumbers(320)),
    ExchangeUnused(344, 8),
    Both("text_3", Text(322, 62), Text(352, 62)),
    Both("text_4", kMessageText4, Text(414, 130)),
    Both("text_5", kMessageText5, Text(544, 202)),
    Both("text_6", Text(716, 130), Text(746, 130)),
    Both("flag_3", U8(846), U8(876)),
    Both("flag_4", U8(847), U8(877)),
    ByModule("on_card", kMessageOnCard, {}),
    StoreUnused(849, 1),
    Both("flag_5", U8(850), U8(878)),
    StoreUnused(851, 1),
    Both("flag_6", U8(852), U8(879)),
    Both("text_7", NarrowText(853, 256), Text(880, 510)),
    StoreUnused(1109, 3),
    ByModule("path", {}, kRecordMessagePath),
    NextNode(1112),
};

/// As a filter's contacts, but for the owner: a message, whose id is a whole number.
constexpr Field kAddressFields[] = {
    StoreUnused(0, 4),
    ExchangeUnused(0, 4),
    Both("message_id", U32(4), kRecordAddressMessage),
    Both("text_1", Text(8, 62), Text(8, 62)),
    Both("text_2", Text(70, 130), Text(70, 130)),
    Both("value_1", U32(200), U8(200)),
    ExchangeUnused(201, 3),
    Both("value_2", U32(204), U32(204)),
    Both("value_3", U32(208), U16(208)),
    ExchangeUnused(210, 2),
    Both("value_4", U32(212), U32(212)),
    ExchangeUnused(216, 36),
    NextNode(216),
};

}  // namespace

constinit const RecordLayout kUserLayout = MailLayout<1468, 844, kUserFields>("mail account");
constinit const RecordLayout kConfigLayout = MailLayout<552, 192, kConfigFields>("mail configuration");
constinit const RecordLayout kFilterLayout = MailLayout<680, kLargestRecord, kFilterFields>("mail filter");
constinit const RecordLayout kContactLayout = MailLayout<220, 252, kContactFields>("mail filter contact");
constinit const RecordLayout kFolderLayout = MailLayout<340, 628, kFolderFields>("mail folder");
constinit const RecordLayout kUidlLayout = MailLayout<132, 132, kUidlFields>("mail UIDL");
constinit const RecordLayout kHeaderLayout = MailLayout<1116, 1940, kHeaderFields>("mail header");
constinit const RecordLayout kAddressLayout = MailLayout<220, 252, kAddressFields>("mail address");

}  // namespace qv::mail
