// The record form of the call history.
#ifndef QV_MODULES_MESSAGING_CALL_HISTORY_LAYOUT_H
#define QV_MODULES_MESSAGING_CALL_HISTORY_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::call_history {

inline constexpr std::size_t kStoreSize = 180;
inline constexpr std::size_t kExchangeSize = 208;

extern const layout::RecordLayout kCallLayout;

// Conversions of whole records: the table's fields, and the type, which is a byte in an exchange table.
void CallToExchange(const std::uint8_t* store, std::uint8_t* exchange);
void CallToStore(const std::uint8_t* exchange, std::uint8_t* store);

}  // namespace qv::call_history

#endif  // QV_MODULES_MESSAGING_CALL_HISTORY_LAYOUT_H
