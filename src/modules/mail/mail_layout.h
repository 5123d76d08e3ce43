// The forms of the e-mail database: a list's nodes in MailStore.dll, the records of its exchange tables, and the fields
// by which they belong together.
#ifndef QV_MODULES_MAIL_MAIL_LAYOUT_H
#define QV_MODULES_MAIL_MAIL_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::mail {

// The store side is a node, which ends with the pointer to the next one.
inline constexpr std::uint16_t kNextNodeSize = 4;
extern const layout::RecordLayout kUserLayout;
extern const layout::RecordLayout kConfigLayout;
extern const layout::RecordLayout kFilterLayout;
extern const layout::RecordLayout kContactLayout;  ///< Of a filter. In the library they are "link men".
extern const layout::RecordLayout kFolderLayout;
extern const layout::RecordLayout kUidlLayout;
extern const layout::RecordLayout kHeaderLayout;
extern const layout::RecordLayout kAddressLayout;

inline constexpr std::size_t kLargestRecord = 4820;  ///< In an exchange table: a filter's.

// In the nodes. The ids of accounts, folders and filters are one byte there, wherever they are looked up.
inline constexpr layout::Slot kUserAccount = layout::U8(4);
inline constexpr layout::Slot kFilterId = layout::U8(4);
inline constexpr layout::Slot kFilterHasContacts = layout::U8(68);
inline constexpr layout::Slot kFilterFolder = layout::U8(672);
inline constexpr layout::Slot kFolderId = layout::U8(4);
inline constexpr layout::Slot kFolderAccount = layout::U8(5);
inline constexpr layout::Slot kFolderKind = layout::U8(72);
inline constexpr layout::Slot kMessageId = layout::U32(4);
inline constexpr layout::Slot kMessageAccount = layout::U8(8);
inline constexpr layout::Slot kMessageFolder = layout::U8(9);
inline constexpr layout::Slot kMessageDate1 = layout::SystemTime(290);
inline constexpr layout::Slot kMessageOnCard = layout::U8(848);  ///< Not 0: its file lies on the storage card.
/// With date_1 and text_5, what tells a message that the store already has.
inline constexpr layout::Slot kMessageText4 = layout::Text(384, 130);
inline constexpr layout::Slot kMessageText5 = layout::Text(514, 202);

// In the exchange records: the ids, in full, by which a record is looked up.
inline constexpr layout::Slot kRecordConfigAccount = layout::U32(4);
inline constexpr layout::Slot kRecordUidlAccount = layout::U32(4);
inline constexpr layout::Slot kRecordFilterAccount = layout::U32(4);
inline constexpr layout::Slot kRecordFilterFolder = layout::U32(676);  ///< 0: the filter is for the whole account.
inline constexpr layout::Slot kRecordContactFilter = layout::U32(4);
inline constexpr layout::Slot kRecordFolderAccount = layout::U32(4);
inline constexpr layout::Slot kRecordMessageAccount = layout::U32(8);
inline constexpr layout::Slot kRecordMessageFolder = layout::U32(4);
inline constexpr layout::Slot kRecordMessagePath = layout::Text(1390, 550);
inline constexpr layout::Slot kRecordAddressMessage = layout::U32(4);

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_MAIL_LAYOUT_H
