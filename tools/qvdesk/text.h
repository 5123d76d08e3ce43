// Text between the handset's UTF-16, our UTF-8 and the terminal, which must never take a handset's text for commands.
#ifndef QV_TOOLS_QVDESK_TEXT_H
#define QV_TOOLS_QVDESK_TEXT_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qvdesk {

/// Well-formed UTF-8 always: a surrogate without its partner becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);
/// What is not UTF-8 becomes U+FFFD.
std::u16string ToUtf16(std::string_view text);

/// Control characters, and those that turn the writing direction, as "\u001b". Valid inside a JSON string too.
std::string Visible(std::string_view utf8);

/// Columns that the text takes on a terminal: Chinese characters take two.
std::size_t Width(std::string_view utf8);
/// The text, or its beginning and "…" when it is wider than `width` columns.
std::string CutTo(std::string_view utf8, std::size_t width);

/// "1 record", "2 records".
std::string CountOf(std::size_t count, std::string_view noun);

// Of case: ASCII letters only, for that is all our names have.

std::string Lowercase(std::string_view text);
bool SameWithoutCase(std::string_view a, std::string_view b);

std::string Hex(std::span<const std::uint8_t> bytes);
/// Throws std::runtime_error.
std::vector<std::uint8_t> FromHex(std::string_view hex);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_TEXT_H
