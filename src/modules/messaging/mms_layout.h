// The form of a multimedia message in an exchange table. In the store it is a few words and two blocks of memory.
#ifndef QV_MODULES_MESSAGING_MMS_LAYOUT_H
#define QV_MODULES_MESSAGING_MMS_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::mms {

/// The fixed part; the text and the data follow it.
inline constexpr std::size_t kExchangeSize = 24;

inline constexpr layout::Slot kTextLength = layout::U32(4);
inline constexpr layout::Slot kMessageId = layout::U32(8);
inline constexpr layout::Slot kValue = layout::U32(12);
inline constexpr layout::Slot kDataLength = layout::U32(20);  ///< Signed; below 0 is as good as 0.

extern const layout::RecordLayout kMessageLayout;

}  // namespace qv::mms

#endif  // QV_MODULES_MESSAGING_MMS_LAYOUT_H
