// The clock, windows, messages, semaphores and the memory division, and the C routines that only the handset library
// calls.
#include <dlfcn.h>

#include <cstring>
#include <ctime>

#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

using coredll::CloseHandle;
using coredll::ERROR_ALREADY_EXISTS;
using coredll::GetLastError;
using testing::ElementsAre;

using SystemTest = HandsetTest;

coredll::HANDLE CreateSemaphore(const char16_t* name) {
  return coredll::CreateSemaphoreW(nullptr, 1, 1, name);
}

TEST_F(SystemTest, TheClockStandsStillOnceSet) {
  SetLocalTime(coredll::SYSTEMTIME{2008, 2, 0, 29, 23, 59, 58, 999});
  coredll::SYSTEMTIME now{};
  coredll::GetLocalTime(&now);
  EXPECT_EQ(now.wYear, 2008);
  EXPECT_EQ(now.wMonth, 2);
  EXPECT_EQ(now.wDayOfWeek, 5) << "a Friday";
  EXPECT_EQ(now.wMilliseconds, 999);
}

TEST_F(SystemTest, TheClockRunsWithTheHosts) {
  SetLocalTime(coredll::SYSTEMTIME{1999, 1, 0, 1, 0, 0, 0, 0});
  SetLocalTime(std::nullopt);
  const auto local_year = [] {
    const std::time_t now = std::time(nullptr);
    return std::localtime(&now)->tm_year + 1900;
  };
  const int earliest = local_year();
  coredll::SYSTEMTIME now{};
  coredll::GetLocalTime(&now);
  EXPECT_GE(now.wYear, earliest);
  EXPECT_LE(now.wYear, local_year());
  EXPECT_TRUE(now.wMonth >= 1 && now.wMonth <= 12);
  EXPECT_LE(now.wMilliseconds, 999);
}

std::uint64_t FileTimeOf(const coredll::SYSTEMTIME& time) {
  coredll::FILETIME file_time = {};
  EXPECT_TRUE(coredll::SystemTimeToFileTime(&time, &file_time));
  return std::uint64_t{file_time.dwHighDateTime} << 32 | file_time.dwLowDateTime;
}

TEST_F(SystemTest, AFileTimeCounts100NanosecondsSince1601) {
  EXPECT_EQ(FileTimeOf({1601, 1, 0, 1, 0, 0, 0, 0}), 0u);
  EXPECT_EQ(FileTimeOf({1601, 1, 0, 2, 1, 1, 1, 1}), 900'610'010'000u);
  EXPECT_EQ(FileTimeOf({1970, 1, 0, 1, 0, 0, 0, 0}), 116'444'736'000'000'000u);
  EXPECT_EQ(FileTimeOf({2008, 2, 6, 29, 23, 59, 59, 999}), 128'488'031'999'990'000u)
      << "the day of the week is ignored";
}

TEST_F(SystemTest, ATimeThatThereIsNotHasNoFileTime) {
  const coredll::SYSTEMTIME impossible[] = {
      {},
      {1600, 12, 0, 31, 0, 0, 0, 0},
      {30828, 1, 0, 1, 0, 0, 0, 0},
      {2007, 2, 0, 29, 0, 0, 0, 0},
      {2008, 13, 0, 1, 0, 0, 0, 0},
      {2008, 1, 0, 0, 0, 0, 0, 0},
      {2008, 1, 0, 1, 24, 0, 0, 0},
      {2008, 1, 0, 1, 0, 60, 0, 0},
      {2008, 1, 0, 1, 0, 0, 60, 0},
      {2008, 1, 0, 1, 0, 0, 0, 1000},
  };
  for (const coredll::SYSTEMTIME& time : impossible) {
    coredll::FILETIME file_time = {7, 8};
    EXPECT_FALSE(coredll::SystemTimeToFileTime(&time, &file_time));
    EXPECT_NE(file_time.dwLowDateTime, 7u) << "callers must not count on what a failed call leaves";
  }
}

TEST_F(SystemTest, AFileTimeIsTakenApartToTheMillisecond) {
  // 11 December 2006, a Monday, 07:02:10.005.
  const coredll::FILETIME file_time = {0x46DF4850, 0x01C71CF2};
  coredll::SYSTEMTIME time = {};
  EXPECT_TRUE(coredll::FileTimeToSystemTime(&file_time, &time));
  const coredll::SYSTEMTIME expected = {2006, 12, 1, 11, 7, 2, 10, 5};
  EXPECT_EQ(std::memcmp(&time, &expected, sizeof(time)), 0);
  coredll::FILETIME again = {};
  EXPECT_TRUE(coredll::SystemTimeToFileTime(&time, &again));
  EXPECT_EQ(again.dwLowDateTime, file_time.dwLowDateTime);
  EXPECT_EQ(again.dwHighDateTime, file_time.dwHighDateTime);

  const coredll::FILETIME beginning = {0, 0};
  EXPECT_TRUE(coredll::FileTimeToSystemTime(&beginning, &time));
  EXPECT_EQ(time.wYear, 1601u);
  EXPECT_EQ(time.wDayOfWeek, 1u) << "a Monday";
  const coredll::FILETIME beyond_all_dates = {0, 0x80000000};
  EXPECT_FALSE(coredll::FileTimeToSystemTime(&beyond_all_dates, &time));
}

TEST_F(SystemTest, TheTickCountDoesNotGoBack) {
  const std::uint32_t before = coredll::GetTickCount();
  EXPECT_LT(coredll::GetTickCount() - before, 1000000u);
}

TEST_F(SystemTest, AWindowIsFoundByItsTitle) {
  EXPECT_EQ(coredll::FindWindowW(nullptr, u"Phone"), nullptr);
  const auto window = OpenWindow(u"Phone");
  EXPECT_NE(window, nullptr);
  EXPECT_EQ(coredll::FindWindowW(nullptr, u"Phone"), window);
  EXPECT_EQ(coredll::FindWindowW(nullptr, u"phone"), nullptr);
  EXPECT_NE(OpenWindow(u"Calendar"), window);
}

TEST_F(SystemTest, MessagesAreLoggedInOrder) {
  EXPECT_TRUE(coredll::PostMessageW(coredll::HWND_BROADCAST, 0x500, 1, -2));
  EXPECT_TRUE(coredll::PostMessageW(nullptr, 0x501, 3, 4));
  EXPECT_THAT(PostedMessages(),
              ElementsAre(PostedMessage{coredll::HWND_BROADCAST, 0x500, 1, -2}, PostedMessage{nullptr, 0x501, 3, 4}));
  Start(root_);
  EXPECT_TRUE(PostedMessages().empty());
}

TEST_F(SystemTest, ASemaphoreNameLivesAsLongAsItsLastHandle) {
  const auto first = CreateSemaphore(u"sync");
  EXPECT_EQ(GetLastError(), 0u);
  const auto second = CreateSemaphore(u"sync");
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(TakeCensus(), Census{.semaphores = 2});
  EXPECT_TRUE(CloseHandle(first));
  const auto third = CreateSemaphore(u"sync");
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_TRUE(CloseHandle(third));
  EXPECT_TRUE(CloseHandle(second));
  CreateSemaphore(u"sync");
  EXPECT_EQ(GetLastError(), 0u);
}

TEST_F(SystemTest, AnotherProgramHoldsASemaphore) {
  HoldSemaphore(u"sync");
  EXPECT_NE(CreateSemaphore(u"sync"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
  Start(root_);
  HoldSemaphore(u"sync");
  DropSemaphore(u"sync");
  CreateSemaphore(u"sync");
  EXPECT_EQ(GetLastError(), 0u);
}

TEST_F(SystemTest, ASemaphoreWithoutANameIsAlwaysNew) {
  CreateSemaphore(nullptr);
  CreateSemaphore(nullptr);
  EXPECT_EQ(GetLastError(), 0u);
  CreateSemaphore(u"");
  EXPECT_EQ(GetLastError(), 0u) << "the empty name is a name";
  CreateSemaphore(u"");
  EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
}

TEST_F(SystemTest, ASemaphoreWithoutRoomIsRefused) {
  EXPECT_EQ(coredll::CreateSemaphoreW(nullptr, 0, 0, u"sync"), nullptr);
  EXPECT_EQ(coredll::CreateSemaphoreW(nullptr, 2, 1, u"sync"), nullptr);
}

TEST_F(SystemTest, TheMemoryDivisionIsAnsweredAndLogged) {
  EXPECT_EQ(coredll::SetSystemMemoryDivision(100), 0u);
  AnswerMemoryDivision(1);
  EXPECT_EQ(coredll::SetSystemMemoryDivision(200), 1u);
  EXPECT_THAT(MemoryDivisions(), ElementsAre(100u, 200u));
}

template <typename Function>
Function* Import(const char* linker_name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, linker_name));
}

TEST_F(SystemTest, TheLoaderFindsThePlatformFunctionsByTheirLinkerNames) {
  EXPECT_EQ(Import<decltype(coredll::CreateFileW)>("coredll_CreateFileW"), &coredll::CreateFileW);
  EXPECT_EQ(Import<decltype(coredll::free)>("coredll_free"), &coredll::free);
  EXPECT_EQ(Import<decltype(coredll::_snwprintf)>("coredll__snwprintf"), &coredll::_snwprintf);
}

TEST_F(SystemTest, TheLoaderFindsTheCRoutines) {
  char bytes[] = "abcdef";
  Import<void*(void*, const void*, std::size_t)>("coredll_memmove")(bytes + 1, bytes, 3);
  EXPECT_STREQ(bytes, "aabcef");
  Import<void*(void*, const void*, std::size_t)>("coredll_memcpy")(bytes, "xy", 2);
  Import<void*(void*, int, std::size_t)>("coredll_memset")(bytes + 2, 'z', 2);
  EXPECT_STREQ(bytes, "xyzzef");
  EXPECT_GT(Import<int(const void*, const void*, std::size_t)>("coredll_memcmp")("b", "a", 1), 0);
  EXPECT_EQ(Import<std::size_t(const char*)>("coredll_strlen")(bytes), 6u);
  EXPECT_EQ(Import<const char*(const char*, const char*)>("coredll_strstr")(bytes, "ze"), bytes + 3);
  EXPECT_EQ(Import<const char*(const char*, int)>("coredll_strchr")(bytes, 'e'), bytes + 4);
  EXPECT_EQ(Import<std::size_t(const char16_t*)>("coredll_wcslen")(u"日程"), 2u);
}

}  // namespace
}  // namespace handset
