// Runs of single bytes, and of single characters: to people and in JSON they are one block, as long as their count
// says.
#ifndef QV_TOOLS_QVDESK_BLOCK_VALUE_H
#define QV_TOOLS_QVDESK_BLOCK_VALUE_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "layout/record_layout.h"
#include "tools/qvdesk/field_value.h"

namespace qvdesk {

bool IsBlock(const qv::layout::ItemRun& run);

// A block of characters is text, and readable if every surrogate has its partner. One of bytes named "text" is text of
// 8 bits, and readable if it is UTF-8 without control characters.

/// The text if it is readable; of any other block how long it is. Nothing for an empty one.
std::string BlockText(const qv::layout::ItemRun& run, std::span<const std::uint8_t> block);

/// Hex digits; a text as a string, or as {"hex": "…"} when it is not readable.
Json BlockToJson(const qv::layout::ItemRun& run, std::span<const std::uint8_t> block);
/// Throws std::runtime_error that says what the block takes.
std::vector<std::uint8_t> BlockFromJson(const Json& value, const qv::layout::ItemRun& run);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_BLOCK_VALUE_H
