// The record form of the card reader.
#ifndef QV_MODULES_ORGANIZER_CARD_READER_LAYOUT_H
#define QV_MODULES_ORGANIZER_CARD_READER_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::card_reader {

inline constexpr std::size_t kStoreSize = 968;
inline constexpr std::size_t kExchangeSize = 956;

/// When the record was last changed, as the store's list tells it too.
inline constexpr layout::Slot kStoreTime = layout::FileTime(4);

extern const layout::RecordLayout kCardLayout;

}  // namespace qv::card_reader

#endif  // QV_MODULES_ORGANIZER_CARD_READER_LAYOUT_H
