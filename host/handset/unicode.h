// Names between the handset's UTF-16 and the host's UTF-8, and how the handset compares them. Written out because the
// standard library's conversions throw at text that is not well formed, and the handset must take any.
#ifndef QV_HOST_HANDSET_UNICODE_H
#define QV_HOST_HANDSET_UNICODE_H

#include <string>
#include <string_view>

#pragma GCC visibility push(default)  // The stand-in stores convert their texts the same way.

namespace handset {

/// The halves of a pair that stands for one code point above 0xFFFF.
constexpr bool IsHighSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}
/// Whether every surrogate has its other half.
bool IsWellFormed(std::u16string_view text);

/// An unpaired surrogate is encoded like any other code point, so that every name has its own form and comes back.
std::string Utf8(std::u16string_view text);
/// Each byte that belongs to no character becomes U+FFFD.
std::u16string Utf16(std::string_view text);

/// The form in which names that differ only in case are equal.
std::u16string FoldCase(std::u16string_view text);

/// Whether a folded name matches a folded pattern, in which "*" stands for any characters and "?" for one.
bool MatchesPattern(std::u16string_view name, std::u16string_view pattern);

}  // namespace handset

#pragma GCC visibility pop

#endif  // QV_HOST_HANDSET_UNICODE_H
