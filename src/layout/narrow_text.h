// Text in the system's 8-bit code page, as a few stores keep it, and the wide text that exchange tables hold.
#ifndef QV_LAYOUT_NARROW_TEXT_H
#define QV_LAYOUT_NARROW_TEXT_H

#include <cstddef>
#include <cstdint>

namespace qv::layout {

/// Bytes that an 8-bit text can have where one is converted.
inline constexpr std::size_t kMostNarrowText = 256;

// Up to the NUL, or all of the source; cut so that a NUL follows in the target, which is zero already, but never within
// a character; and only as far as the platform finds a counterpart to every character. Sizes are in bytes; that of an
// 8-bit text is at most kMostNarrowText.
void PutWideText(const std::uint8_t* narrow, std::size_t size, std::uint8_t* wide, std::size_t wide_size);
void PutNarrowText(const std::uint8_t* wide, std::size_t wide_size, std::uint8_t* narrow, std::size_t size);

}  // namespace qv::layout

#endif  // QV_LAYOUT_NARROW_TEXT_H
