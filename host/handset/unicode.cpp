// Conversions and comparisons of names: see the header for why they are not the standard library's.
// A high surrogate is 0xD800 to 0xDBFF, a low one 0xDC00 to 0xDFFF.
#include "host/handset/unicode.h"

#include <locale.h>
#include <wctype.h>

#include <cstddef>
#include <cstdint>

namespace handset {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

/// Whether a surrogate pair begins at a place in the text.
bool IsPairAt(std::u16string_view text, std::size_t at) {
  return IsHighSurrogate(text[at]) && at + 1 < text.size() && IsLowSurrogate(text[at + 1]);
}

void AppendUtf8(std::string& out, char32_t point) {
  // How many bytes of six bits follow the first, and the bits that say so there.
  const int following = point < 0x80 ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  constexpr std::uint8_t kMarks[] = {0x00, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kMarks[following] | (point >> (6 * following)));
  for (int left = following - 1; left >= 0; --left) out += static_cast<char>(0x80 | ((point >> (6 * left)) & 0x3F));
}

void AppendUtf16(std::u16string& out, char32_t point) {
  if (point < 0x10000) {
    out += static_cast<char16_t>(point);
  } else {
    out += static_cast<char16_t>(0xD7C0 + (point >> 10));
    out += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
  }
}

// The bytes of a character that starts with this one; 0 when none does.
std::size_t LengthFrom(std::uint8_t first) {
  if (first < 0x80) return 1;
  if (first < 0xC2 || first >= 0xF5) return 0;
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

// The bytes of the character that `text` starts with, and its code point; 0 when it starts with none.
std::size_t DecodeUtf8(std::string_view text, char32_t& point) {
  const auto first = static_cast<std::uint8_t>(text[0]);
  const std::size_t length = LengthFrom(first);
  if (length == 0 || text.size() < length) return 0;
  point = length == 1 ? first : first & (0x7Fu >> length);
  for (const char byte : text.substr(1, length - 1)) {
    if ((byte & 0xC0) != 0x80) return 0;
    point = (point << 6) | (static_cast<std::uint8_t>(byte) & 0x3F);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  return point < kLeast[length] || point > 0x10FFFF ? 0 : length;
}

}  // namespace

bool IsWellFormed(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsPairAt(text, i)) {
      ++i;
    } else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i])) {
      return false;
    }
  }
  return true;
}

std::string Utf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t point = text[i];
    if (IsPairAt(text, i)) {
      point = 0x10000 + ((point & 0x3FF) << 10) + (text[++i] & 0x3FF);
    }
    AppendUtf8(out, point);
  }
  return out;
}

std::u16string Utf16(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  while (!text.empty()) {
    char32_t point = kReplacement;
    const std::size_t length = DecodeUtf8(text, point);
    AppendUtf16(out, length == 0 ? kReplacement : point);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out;
}

std::u16string FoldCase(std::u16string_view text) {
  // Not the process's locale: in the "C" one only ASCII has upper and lower case.
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  std::u16string folded(text);
  for (char16_t& unit : folded) {
    unit = static_cast<char16_t>(unicode == nullptr ? towupper(unit) : towupper_l(unit, unicode));
  }
  return folded;
}

bool MatchesPattern(std::u16string_view name, std::u16string_view pattern) {
  constexpr std::size_t kNone = std::u16string_view::npos;
  std::size_t at = 0, in_name = 0;
  std::size_t star = kNone, star_took = 0;  // The last "*", and where in the name its text ends so far.
  while (in_name < name.size()) {
    if (at < pattern.size() && pattern[at] == u'*') {
      star = at++;
      star_took = in_name;
    } else if (at < pattern.size() && (pattern[at] == u'?' || pattern[at] == name[in_name])) {
      ++at;
      ++in_name;
    } else if (star != kNone) {
      at = star + 1;
      in_name = ++star_took;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(u'*', at) == kNone;
}

}  // namespace handset
