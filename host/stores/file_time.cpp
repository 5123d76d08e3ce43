// From one number to several: the calendar is the C++ library's.
#include "host/stores/file_time.h"

#include <chrono>

namespace stores {

SystemTime SystemTimeOf(FileTime time) {
  using namespace std::chrono;
  const auto since_1601 = floor<milliseconds>(duration<FileTime, std::ratio<1, kSecond>>(time));
  const auto instant = sys_days(year(1601) / January / 1) + since_1601;
  const auto day = floor<days>(instant);
  const year_month_day date(day);
  const hh_mm_ss clock(instant - day);
  return {.year = static_cast<std::uint16_t>(static_cast<int>(date.year())),
          .month = static_cast<std::uint16_t>(static_cast<unsigned>(date.month())),
          .day_of_week = static_cast<std::uint16_t>(weekday(day).c_encoding()),
          .day = static_cast<std::uint16_t>(static_cast<unsigned>(date.day())),
          .hour = static_cast<std::uint16_t>(clock.hours().count()),
          .minute = static_cast<std::uint16_t>(clock.minutes().count()),
          .second = static_cast<std::uint16_t>(clock.seconds().count()),
          .millisecond = static_cast<std::uint16_t>(clock.subseconds().count())};
}

CalendarTime CalendarTimeOf(FileTime time) {
  const SystemTime whole = SystemTimeOf(time);
  return {.year = whole.year,
          .month = whole.month,
          .day = whole.day,
          .hour = whole.hour,
          .minute = whole.minute,
          .second = whole.second};
}

}  // namespace stores
