// The record forms of the unified mail: mails with their items and long text, folders, and rules.
#ifndef QV_MODULES_MESSAGING_UNIFIED_MAIL_LAYOUT_H
#define QV_MODULES_MESSAGING_UNIFIED_MAIL_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::unified_mail {

inline constexpr std::size_t kMailStoreSize = 776;
inline constexpr std::size_t kMailExchangeSize = 880;  ///< Without the items and the long text.
inline constexpr std::size_t kFolderSize = 272;        ///< On both sides.
inline constexpr std::size_t kRuleSize = 94;           ///< On both sides.

// In the store an item is a node of a chain, whose head stands in the record. The items of 182 bytes are of three
// kinds, each with a chain of its own. The last four bytes of a node are the address of the next.
inline constexpr std::size_t kItem182NodeSize = 100;
inline constexpr std::size_t kItem182Size = 182;
inline constexpr std::size_t kItem308NodeSize = 164;
inline constexpr std::size_t kItem308Size = 308;
inline constexpr std::uint32_t kKinds = 3;

// The fields that the module itself looks at, in an exchange record

inline constexpr layout::Slot kMailId = layout::U32(0);
inline constexpr layout::Slot kTable = layout::U32(8);
inline constexpr layout::Slot kKindCounts[kKinds] = {layout::U32(600), layout::U32(604), layout::U32(608)};
inline constexpr layout::Slot kItem182Count = layout::U32(612);
inline constexpr layout::Slot kTextLength = layout::U32(628);  ///< In characters.
inline constexpr layout::Slot kItem308Count = layout::U32(836);
inline constexpr layout::Slot kItemKind = layout::U16(180);  ///< In an item of 182 bytes.

// and in a store record.

inline constexpr layout::Slot kKindChains[kKinds] = {layout::U32(752), layout::U32(756), layout::U32(760)};
inline constexpr layout::Slot kItem308Chain = layout::U32(764);
inline constexpr layout::Slot kStoreText = layout::U32(768);        ///< Its address. The text has 8 bits, and no NUL.
inline constexpr layout::Slot kStoreTextLength = layout::U32(772);  ///< In bytes.
inline constexpr layout::Slot kNextItem182 = layout::U32(96);       ///< In a node.
inline constexpr layout::Slot kNextItem308 = layout::U32(160);      ///< In a node.

/// What follows a mail's fixed part, by its position in kMailLayout.items.
enum MailRun : std::size_t { kItems182, kItems308, kText };

extern const layout::RecordLayout kMailLayout;
extern const layout::RecordLayout kItem182Layout;
extern const layout::RecordLayout kItem308Layout;
extern const layout::RecordLayout kFolderLayout;
extern const layout::RecordLayout kRuleLayout;

}  // namespace qv::unified_mail

#endif  // QV_MODULES_MESSAGING_UNIFIED_MAIL_LAYOUT_H
