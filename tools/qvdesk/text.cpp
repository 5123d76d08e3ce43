// Conversions by way of code points; the terminal widths are those that matter for what handsets hold.
#include "tools/qvdesk/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "host/handset/unicode.h"

namespace qvdesk {
namespace {

struct Range {
  char32_t first, last;
};

constexpr Range kWide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                           {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
constexpr Range kWithoutWidth[] = {{0x300, 0x36F}, {0x200B, 0x200D}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}};
constexpr Range kControls[] = {{0, 0x1F}, {0x7F, 0x9F}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

bool IsIn(std::span<const Range> ranges, char32_t code) {
  return std::ranges::any_of(ranges, [&](const Range& range) { return range.first <= code && code <= range.last; });
}

std::size_t WidthOf(char32_t code) {
  return IsIn(kWithoutWidth, code) ? 0 : IsIn(kWide, code) ? 2 : 1;
}

/// Calls `visit` (code point, its bytes) for each character.
template <typename Visit>
void ForEachCharacter(std::string_view utf8, Visit visit) {
  for (std::size_t begin = 0; begin < utf8.size();) {
    std::size_t end = begin + 1;
    while (end < utf8.size() && (utf8[end] & 0xC0) == 0x80) ++end;
    const std::string_view bytes = utf8.substr(begin, end - begin);
    const std::u16string units = handset::Utf16(bytes);
    const bool pair = units.size() == 2 && handset::IsHighSurrogate(units[0]);
    const char32_t code = pair ? 0x10000 + ((units[0] & 0x3FFu) << 10) + (units[1] & 0x3FFu) : units[0];
    visit(code, bytes);
    begin = end;
  }
}

char LowercaseOf(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int HexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  throw std::runtime_error(fmt::format("\"{}\" is not a hexadecimal digit", Visible(std::string(1, digit))));
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  std::u16string whole(text);
  for (std::size_t i = 0; i < whole.size(); ++i) {
    const bool pair =
        handset::IsHighSurrogate(whole[i]) && i + 1 < whole.size() && handset::IsLowSurrogate(whole[i + 1]);
    if (pair) {
      ++i;
    } else if (handset::IsHighSurrogate(whole[i]) || handset::IsLowSurrogate(whole[i])) {
      whole[i] = u'\uFFFD';
    }
  }
  return handset::Utf8(whole);
}

std::u16string ToUtf16(std::string_view text) {
  return handset::Utf16(text);
}

std::string Visible(std::string_view utf8) {
  std::string visible;
  ForEachCharacter(ToUtf8(ToUtf16(utf8)), [&](char32_t code, std::string_view bytes) {
    if (IsIn(kControls, code)) {
      visible += fmt::format("\\u{:04x}", static_cast<std::uint32_t>(code));
    } else {
      visible += bytes;
    }
  });
  return visible;
}

std::size_t Width(std::string_view utf8) {
  std::size_t width = 0;
  ForEachCharacter(utf8, [&](char32_t code, std::string_view) { width += WidthOf(code); });
  return width;
}

std::string CutTo(std::string_view utf8, std::size_t width) {
  if (Width(utf8) <= width) return std::string(utf8);
  std::string cut;
  std::size_t used = 1;  // the ellipsis
  bool full = false;
  ForEachCharacter(utf8, [&](char32_t code, std::string_view bytes) {
    used += WidthOf(code);
    full = full || used > width;
    if (!full) cut += bytes;
  });
  return cut + "…";
}

std::string CountOf(std::size_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string Lowercase(std::string_view text) {
  std::string lowercase(text);
  std::ranges::transform(text, lowercase.begin(), LowercaseOf);
  return lowercase;
}

bool SameWithoutCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, LowercaseOf, LowercaseOf);
}

std::string Hex(std::span<const std::uint8_t> bytes) {
  return fmt::format("{:02x}", fmt::join(bytes, ""));
}

std::vector<std::uint8_t> FromHex(std::string_view hex) {
  if (hex.size() % 2 != 0) throw std::runtime_error("hexadecimal bytes need an even number of digits");
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(HexDigit(hex[i]) * 16 + HexDigit(hex[i + 1])));
  }
  return bytes;
}

}  // namespace qvdesk
