// The record forms of the agenda: entries with short items, groups, and the long items that an entry refers to.
#ifndef QV_MODULES_CALENDAR_AGENDA_LAYOUT_H
#define QV_MODULES_CALENDAR_AGENDA_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::agenda {

inline constexpr std::size_t kEntryStoreSize = 4372;
inline constexpr std::size_t kEntryExchangeSize = 288;  ///< Without the items.
inline constexpr std::size_t kGroupSize = 288;          ///< On both sides.

// Long items lie in an area of their own, which a store record points at; in an exchange table they follow their number
// behind the entry's short items. The store's room for one is larger: what an item says stands at its beginning.
inline constexpr std::uint32_t kMostLongItems = 50;
inline constexpr std::uint16_t kLongItemStoreSize = 5128;
inline constexpr std::uint16_t kLongItemExchangeSize = 3928;
inline constexpr std::size_t kAreaSize = std::size_t{kMostLongItems} * kLongItemStoreSize;

inline constexpr layout::Slot kExchangeEntryId = layout::U32(0);
inline constexpr layout::Slot kStoreGroupId = layout::U32(48);
inline constexpr layout::Slot kArea = layout::U32(4364);           ///< Its address, in a store record.
inline constexpr layout::Slot kLongItemCount = layout::U32(4368);  ///< In a store record.

extern const layout::RecordLayout kEntryLayout;
extern const layout::RecordLayout kGroupLayout;

}  // namespace qv::agenda

#endif  // QV_MODULES_CALENDAR_AGENDA_LAYOUT_H
