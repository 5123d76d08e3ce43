// The record form of the quick dial.
#ifndef QV_MODULES_TELEPHONY_QUICK_DIAL_LAYOUT_H
#define QV_MODULES_TELEPHONY_QUICK_DIAL_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::quick_dial {

inline constexpr std::size_t kStoreSize = 184;
inline constexpr std::size_t kExchangeSize = 216;

/// Of the two ids in an exchange record this is the one that a recover goes by.
inline constexpr layout::Slot kEntryId = layout::U32(136);

extern const layout::RecordLayout kEntryLayout;

}  // namespace qv::quick_dial

#endif  // QV_MODULES_TELEPHONY_QUICK_DIAL_LAYOUT_H
