// Text as some stores keep it, in the handset's 8-bit code page, and as exchange tables tell it, in UTF-16LE; the
// platform converts. What the other form lacks ends a text: what stands before it is carried.
#ifndef QV_LAYOUT_NARROW_TEXT_H
#define QV_LAYOUT_NARROW_TEXT_H

#include <cstddef>
#include <cstdint>

namespace qv::layout {

/// Most bytes in an 8-bit field, which may lack a NUL, and as many characters and a NUL in a wide one.
inline constexpr std::size_t kMostNarrowText = 256;
inline constexpr std::size_t kMostWideText = kMostNarrowText + 1;

/// Whether a field of UTF-16 text can have this size, in bytes: whole characters, of which one is the NUL.
constexpr bool IsWideText(std::size_t size) {
  return size >= 2 && size % 2 == 0;
}

/// Whether fields of these sizes, in bytes, can be converted.
constexpr bool IsNarrowText(std::size_t narrow_size, std::size_t wide_size) {
  return narrow_size != 0 && narrow_size <= kMostNarrowText && IsWideText(wide_size) && wide_size <= 2 * kMostWideText;
}

/// Converts a field up to its NUL, as far as it leaves room for one. Sizes are in bytes. The target is zero already.
void PutNarrowText(const std::uint8_t* wide, std::size_t wide_size, std::uint8_t* narrow, std::size_t narrow_size);
void PutWideText(const std::uint8_t* narrow, std::size_t narrow_size, std::uint8_t* wide, std::size_t wide_size);

// The conversions below them, of text that ends with a NUL. The rest of the room behind the converted text, which is
// told, has no defined content.

/// At most `room` bytes, and no part of a character.
std::size_t Narrow(const char16_t* wide, char* narrow, std::size_t room);
/// At most `room` characters.
std::size_t Widen(const char* narrow, char16_t* wide, std::size_t room);

}  // namespace qv::layout

#endif  // QV_LAYOUT_NARROW_TEXT_H
