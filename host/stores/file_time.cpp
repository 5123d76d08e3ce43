// From one number to six: the calendar is the C++ library's.
#include "host/stores/file_time.h"

#include <chrono>

namespace stores {

CalendarTime CalendarTimeOf(FileTime time) {
  using namespace std::chrono;
  const auto since_1601 = floor<seconds>(duration<FileTime, std::ratio<1, kSecond>>(time));
  const sys_seconds second = sys_days(year(1601) / January / 1) + since_1601;
  const auto day = floor<days>(second);
  const year_month_day date(day);
  const hh_mm_ss clock(second - day);
  return {.year = static_cast<std::uint16_t>(static_cast<int>(date.year())),
          .month = static_cast<std::uint16_t>(static_cast<unsigned>(date.month())),
          .day = static_cast<std::uint16_t>(static_cast<unsigned>(date.day())),
          .hour = static_cast<std::uint16_t>(clock.hours().count()),
          .minute = static_cast<std::uint16_t>(clock.minutes().count()),
          .second = static_cast<std::uint16_t>(clock.seconds().count())};
}

}  // namespace stores
