// Times as most stores keep them, FILETIMEs, and as exchange tables tell them, in numbers; the platform converts.
#ifndef QV_LAYOUT_FILE_TIME_H
#define QV_LAYOUT_FILE_TIME_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/coredll.h"

namespace qv::layout {

inline constexpr std::uint16_t kFileTimeSize = 8;  ///< Two words, the low one first.

/// 0 for a time that does not exist.
coredll::FILETIME ToFileTime(const coredll::SYSTEMTIME& time);
/// The same from year, month, day, hour, minute and second, and milliseconds if there are seven.
coredll::FILETIME ToFileTime(std::span<const std::uint32_t> parts);

/// Tells a FILETIME in `size` bytes: six or seven numbers of 32 bits, the same as above. All are 0 for one that the
/// platform refuses.
void PutFileTimeNumbers(const std::uint8_t* file_time, std::uint8_t* numbers, std::size_t size);
void PutFileTime(const std::uint8_t* numbers, std::size_t size, std::uint8_t* file_time);

}  // namespace qv::layout

#endif  // QV_LAYOUT_FILE_TIME_H
