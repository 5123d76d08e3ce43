// Times as the database keeps them, and as records and lists of a store tell them.
#ifndef QV_HOST_STORES_FILE_TIME_H
#define QV_HOST_STORES_FILE_TIME_H

#include <cstdint>

#pragma GCC visibility push(default)

namespace stores {

/// 100 ns since 1601, UTC: a FILETIME in one number.
using FileTime = std::int64_t;
inline constexpr FileTime kSecond = 10'000'000;

/// A time as it lies in records and lists that tell one to the second, UTC.
struct CalendarTime {
  std::uint16_t year, month, day, hour, minute, second;
};
static_assert(sizeof(CalendarTime) == 12);

/// What is finer is dropped.
CalendarTime CalendarTimeOf(FileTime time);

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_FILE_TIME_H
