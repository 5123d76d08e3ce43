// Times as most stores keep them, FILETIMEs and a few SYSTEMTIMEs, and as exchange tables tell them, in numbers. The
// platform converts FILETIMEs.
#ifndef QV_LAYOUT_FILE_TIME_H
#define QV_LAYOUT_FILE_TIME_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/coredll.h"

namespace qv::layout {

inline constexpr std::uint16_t kFileTimeSize = 8;  ///< Two words, the low one first.
inline constexpr std::uint16_t kSystemTimeSize = sizeof(coredll::SYSTEMTIME);

/// 0 for a time that does not exist.
coredll::FILETIME ToFileTime(const coredll::SYSTEMTIME& time);
/// The same from year, month, day, hour, minute and second, and milliseconds if there are seven.
coredll::FILETIME ToFileTime(std::span<const std::uint32_t> parts);

/// Tells a FILETIME in `size` bytes: six or seven numbers of 32 bits, the same as above. All are 0 for one that the
/// platform refuses.
void PutFileTimeNumbers(const std::uint8_t* file_time, std::uint8_t* numbers, std::size_t size);
void PutFileTime(const std::uint8_t* numbers, std::size_t size, std::uint8_t* file_time);

/// The same for a SYSTEMTIME, whether or not there is such a time. The day of the week is not told.
void PutSystemTimeNumbers(const std::uint8_t* system_time, std::uint8_t* numbers, std::size_t size);
void PutSystemTime(const std::uint8_t* numbers, std::size_t size, std::uint8_t* system_time);

}  // namespace qv::layout

#endif  // QV_LAYOUT_FILE_TIME_H
