// Times as some stores keep them: 14 digits of text, each part at its fixed position.
#ifndef QV_LAYOUT_TIME_TEXT_H
#define QV_LAYOUT_TIME_TEXT_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace qv::layout {

inline constexpr std::size_t kTimeDigits = 14;
inline constexpr std::uint16_t kTimeTextSize = 30;  ///< Bytes, the NUL's included.
inline constexpr std::size_t kTimeParts = 6;

/// Year, month, day, hour, minute, second.
using TimeOfSix = std::array<std::uint32_t, kTimeParts>;

/// Six zeros for a text of fewer than 14 characters, or with one that is no digit. What stands behind the 14 is not
/// looked at, nor is it judged whether there is such a time.
TimeOfSix ParseTimeText(const std::uint8_t* text);
/// Four digits and five times two, more for numbers that need them (and a "-" for signed ones below 0), cut to 14. The
/// place of the NUL is left alone.
void PutTimeText(const TimeOfSix& time, std::uint8_t* text);

/// 32 bits each, little-endian.
TimeOfSix LoadTimeNumbers(const std::uint8_t* numbers);
void PutTimeNumbers(const TimeOfSix& time, std::uint8_t* numbers);

}  // namespace qv::layout

#endif  // QV_LAYOUT_TIME_TEXT_H
