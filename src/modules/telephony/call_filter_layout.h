// The record forms of the call filter: entries, groups with their times, and a configuration of one record.
#ifndef QV_MODULES_TELEPHONY_CALL_FILTER_LAYOUT_H
#define QV_MODULES_TELEPHONY_CALL_FILTER_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::call_filter {

inline constexpr std::size_t kEntryStoreSize = 144;
inline constexpr std::size_t kEntryExchangeSize = 204;
inline constexpr std::size_t kGroupStoreSize = 788;
inline constexpr std::size_t kGroupExchangeSize = 1200;
inline constexpr std::size_t kConfigStoreSize = 712;
inline constexpr std::size_t kConfigExchangeSize = 700;

inline constexpr std::uint32_t kFixedGroup = 7;  ///< The id of the group that every handset has.

inline constexpr layout::Slot kEntryGroupId = layout::U32(4);

extern const layout::RecordLayout kEntryLayout;
extern const layout::RecordLayout kGroupLayout;
extern const layout::RecordLayout kConfigLayout;

// Conversions of whole records: the table's fields, then those that follow from others.

void GroupToExchange(const std::uint8_t* store, std::uint8_t* exchange);
void GroupToStore(const std::uint8_t* exchange, std::uint8_t* store);
void ConfigToExchange(const std::uint8_t* store, std::uint8_t* exchange);
void ConfigToStore(const std::uint8_t* exchange, std::uint8_t* store);

}  // namespace qv::call_filter

#endif  // QV_MODULES_TELEPHONY_CALL_FILTER_LAYOUT_H
