// The record form of the graphic memo.
#ifndef QV_MODULES_ORGANIZER_GRAPHIC_MEMO_LAYOUT_H
#define QV_MODULES_ORGANIZER_GRAPHIC_MEMO_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::graphic_memo {

inline constexpr std::size_t kStoreSize = 1148;
inline constexpr std::size_t kExchangeSize = 1224;

extern const layout::RecordLayout kMemoLayout;

}  // namespace qv::graphic_memo

#endif  // QV_MODULES_ORGANIZER_GRAPHIC_MEMO_LAYOUT_H
