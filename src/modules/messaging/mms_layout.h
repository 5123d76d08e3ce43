// The form of a multimedia message in an exchange table. In the store it is a few words and two blocks of memory.
#ifndef QV_MODULES_MESSAGING_MMS_LAYOUT_H
#define QV_MODULES_MESSAGING_MMS_LAYOUT_H

#include <cstdint>

#include "layout/record_layout.h"

namespace qv::mms {

/// The fixed part; the text and the data follow it.
inline constexpr std::size_t kExchangeSize = 24;

inline constexpr layout::Slot kTextLength = layout::U32(4);
inline constexpr layout::Slot kMessageId = layout::U32(8);
inline constexpr layout::Slot kValue = layout::U32(12);
inline constexpr layout::Slot kDataLength = layout::U32(20);  ///< Signed; below 0 is as good as 0.

extern const layout::RecordLayout kMessageLayout;

/// A message as the store hands it out and takes it. The blocks are malloc's; those that the store hands out are the
/// caller's to free.
struct StoreMessage {
  char* text;  ///< 8 bits, with a NUL from the store and without one to it: there the block is as long as the text.
  std::uint32_t id;
  std::uint32_t value;
  std::uint8_t* data;
  std::int32_t data_length;
};
static_assert(sizeof(StoreMessage) == 20);

}  // namespace qv::mms

#endif  // QV_MODULES_MESSAGING_MMS_LAYOUT_H
