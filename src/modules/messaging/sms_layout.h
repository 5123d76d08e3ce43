// The record forms of the short messages, and those of the five sections of their configuration.
#ifndef QV_MODULES_MESSAGING_SMS_LAYOUT_H
#define QV_MODULES_MESSAGING_SMS_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::sms {

inline constexpr std::size_t kMessageStoreSize = 1600;
inline constexpr std::size_t kMessageExchangeSize = 1624;

inline constexpr std::size_t kSections = 5;
inline constexpr std::size_t kFolders = 3;  ///< The section, counted from 0, that lists the folders.
inline constexpr std::size_t kMostSectionExchangeSize = 208;

// The fields that the module itself looks at.
inline constexpr layout::Slot kMessageFolder = layout::U32(8);
inline constexpr layout::Slot kFolderId = layout::U32(0);
inline constexpr layout::Slot kFolderName = layout::Text(4, 80);

extern const layout::RecordLayout kMessageLayout;
extern const layout::RecordLayout kSectionLayouts[kSections];

}  // namespace qv::sms

#endif  // QV_MODULES_MESSAGING_SMS_LAYOUT_H
