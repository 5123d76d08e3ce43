// One field of a record, as JSON and back, and as text for people.
#ifndef QV_TOOLS_QVDESK_FIELD_VALUE_H
#define QV_TOOLS_QVDESK_FIELD_VALUE_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

#include "layout/record_layout.h"

namespace qvdesk {

/// Keeps the fields in the order of the record.
using Json = nlohmann::ordered_json;

/// Over several lines, as files and reports have it. What is not UTF-8, which JSON cannot hold, becomes U+FFFD.
std::string ToIndentedText(const Json& json);

/// Whether the slot holds something that a reader may see.
bool IsShown(const qv::layout::Slot& slot);

/// Numbers as numbers, times as arrays of six, bytes as hex digits, text as a string; text that a string would not give
/// back byte for byte as
/// {"hex": "…"}.
Json ToJson(const qv::layout::Slot& slot, std::span<const std::uint8_t> record);
/// Throws std::runtime_error that says what the slot takes.
void FromJson(const Json& value, const qv::layout::Slot& slot, std::span<std::uint8_t> record);

/// The same for people: times as "2026-03-04 10:00:00", of bytes that would fill a screen only how many they are.
std::string ToText(const qv::layout::Slot& slot, std::span<const std::uint8_t> record);

/// Sets a text slot, which is zero; false when the text with its NUL does not fit.
bool StoreText(std::string_view utf8, const qv::layout::Slot& slot, std::span<std::uint8_t> record);

/// 100 ns since 1601, as "2026-03-04 10:00:00 UTC".
std::string DescribeFileTime(std::uint64_t time);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_FIELD_VALUE_H
