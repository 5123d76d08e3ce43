// From one number to several, by the handset's own calendar.
#include "host/stores/file_time.h"

#include "host/handset/handset.h"

namespace stores {

CalendarTime CalendarTimeOf(FileTime time) {
  const coredll::SYSTEMTIME whole = handset::SystemTimeOf(time);
  return {.year = whole.wYear,
          .month = whole.wMonth,
          .day = whole.wDay,
          .hour = whole.wHour,
          .minute = whole.wMinute,
          .second = whole.wSecond};
}

}  // namespace stores
