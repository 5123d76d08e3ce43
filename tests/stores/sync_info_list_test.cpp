// Lists of records in the forms that stores have for them, byte by byte, and the times in them.
#include "host/stores/sync_info_list.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>
#include <vector>

#include "host/handset/handset.h"
#include "host/stores/file_time.h"

namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;
using Time = qv::SyncInfoForm::Time;

// 2006-01-05 09:03:07 and something, 0x01C611D6D800AE07, and 2024-02-29 23:59:59, 0x01DA6B6B66BA2980.
constexpr qv::SyncInfoEntry kRecords[] = {
    {.id = 0x04030201, .unused = 0, .time_low = 0xD800AE07, .time_high = 0x01C611D6},
    {.id = 7, .unused = 0, .time_low = 0x66BA2980, .time_high = 0x01DA6B6B},
};

/// The list at an odd address: callers need not align it.
Bytes ListOf(const qv::SyncInfoForm& form) {
  Bytes list(1 + std::size(kRecords) * form.entry_size, 0xEE);
  stores::PutSyncInfoList(kRecords, form, list.data() + 1);
  list.erase(list.begin());
  return list;
}

TEST(SyncInfoListTest, MostStoresTellAFileTimeBehindAnUnusedWord) {
  EXPECT_THAT(ListOf(qv::kFileTimeIn16Bytes),
              ElementsAre(1, 2, 3, 4, 0, 0, 0, 0, 0x07, 0xAE, 0x00, 0xD8, 0xD6, 0x11, 0xC6, 0x01,  //
                          7, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x29, 0xBA, 0x66, 0x6B, 0x6B, 0xDA, 0x01));
}

TEST(SyncInfoListTest, OthersTellItRightBehindTheId) {
  EXPECT_THAT(ListOf({12, 4, Time::kFileTime}),
              ElementsAre(1, 2, 3, 4, 0x07, 0xAE, 0x00, 0xD8, 0xD6, 0x11, 0xC6, 0x01,  //
                          7, 0, 0, 0, 0x80, 0x29, 0xBA, 0x66, 0x6B, 0x6B, 0xDA, 0x01));
}

TEST(SyncInfoListTest, SixWordsAreATime) {
  EXPECT_THAT(ListOf({16, 4, Time::kSixWords}), ElementsAre(1, 2, 3, 4, 0xD6, 0x07, 1, 0, 5, 0, 9, 0, 3, 0, 7, 0,  //
                                                            7, 0, 0, 0, 0xE8, 0x07, 2, 0, 29, 0, 23, 0, 59, 0, 59, 0));
}

TEST(SyncInfoListTest, FourteenDigitsAreATimeAndZerosFillTheEntry) {
  EXPECT_THAT(ListOf({36, 4, Time::kText}),
              ElementsAre(1, 2, 3, 4, '2', 0, '0', 0, '0', 0, '6', 0, '0', 0, '1', 0, '0', 0, '5', 0,  //
                          '0', 0, '9', 0, '0', 0, '3', 0, '0', 0, '7', 0, 0, 0, 0, 0,                  //
                          7, 0, 0, 0, '2', 0, '0', 0, '2', 0, '4', 0, '0', 0, '2', 0, '2', 0, '9', 0,  //
                          '2', 0, '3', 0, '5', 0, '9', 0, '5', 0, '9', 0, 0, 0, 0, 0));
}

TEST(FileTimeTest, AnyTimeHasSixNumbers) {
  const auto numbers = [](stores::FileTime time) {
    const stores::CalendarTime t = stores::CalendarTimeOf(time);
    return std::array{t.year, t.month, t.day, t.hour, t.minute, t.second};
  };
  EXPECT_THAT(numbers(0), ElementsAre(1601, 1, 1, 0, 0, 0));
  EXPECT_THAT(numbers(-1), ElementsAre(1600, 12, 31, 23, 59, 59));
  EXPECT_EQ(stores::CalendarTimeOf(std::numeric_limits<stores::FileTime>::max()).year, 30828);
  EXPECT_EQ(stores::CalendarTimeOf(std::numeric_limits<stores::FileTime>::min()).month, 4);
}

TEST(FileTimeTest, ASystemTimeHasTheDayOfTheWeekAndTheMillisecondsToo) {
  const coredll::SYSTEMTIME t = handset::SystemTimeOf(0x01C611D6D800AE07);
  EXPECT_THAT((std::array{t.wYear, t.wMonth, t.wDayOfWeek, t.wDay, t.wHour, t.wMinute, t.wSecond, t.wMilliseconds}),
              ElementsAre(2006, 1, 4, 5, 9, 3, 7, 123));
  EXPECT_EQ(handset::SystemTimeOf(0).wDayOfWeek, 1);  // A Monday.
}

}  // namespace
