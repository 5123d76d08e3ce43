// Searches: that they come in one order and tell a file from a directory is what lets tests compare the agent's answers
// byte for byte.
#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

using coredll::FindFirstFileW;
using coredll::FindNextFileW;
using coredll::INVALID_HANDLE_VALUE;
using coredll::WIN32_FIND_DATAW;
using testing::ElementsAre;
using testing::IsEmpty;

class FindsTest : public HandsetTest {
 protected:
  static std::vector<std::u16string> Names(const char16_t* pattern) {
    std::vector<std::u16string> names;
    WIN32_FIND_DATAW found;
    const auto find = FindFirstFileW(pattern, &found);
    if (find == INVALID_HANDLE_VALUE) return names;
    do names.emplace_back(found.cFileName);
    while (FindNextFileW(find, &found));
    EXPECT_EQ(coredll::GetLastError(), 18u);
    return names;
  }
};

TEST_F(FindsTest, EveryNameComesInOrderWithoutCase) {
  for (const char* name : {"b", "C", "a", "D/x"}) Put(name, "");
  EXPECT_THAT(Names(u"\\*"), ElementsAre(u"a", u"b", u"C", u"D"));
  EXPECT_THAT(Names(u"\\*.*"), ElementsAre(u"a", u"b", u"C", u"D"));
}

TEST_F(FindsTest, WildcardsMatchWithoutCase) {
  for (const char* name : {"d/one.TBL", "d/two.tbl", "d/three.txt", "d/tbl"}) Put(name, "");
  EXPECT_THAT(Names(u"\\D\\*.tbl"), ElementsAre(u"one.TBL", u"two.tbl"));
  EXPECT_THAT(Names(u"\\D\\T??.*"), ElementsAre(u"two.tbl"));
  EXPECT_THAT(Names(u"\\D\\*t*l"), ElementsAre(u"one.TBL", u"tbl", u"two.tbl"));
  EXPECT_THAT(Names(u"\\D\\ONE.tbl"), ElementsAre(u"one.TBL"));
  EXPECT_THAT(Names(u"\\D\\?"), IsEmpty());
}

TEST_F(FindsTest, AHostNameThatIsNoTextIsShownWithReplacements) {
  Put("a\xFF\xE4\xBD", "");
  EXPECT_THAT(Names(u"\\a*"), ElementsAre(u"a\uFFFD\uFFFD\uFFFD"));
}

TEST_F(FindsTest, AFileIsDescribed) {
  Put("a.tbl", "12345");
  WIN32_FIND_DATAW found;
  ASSERT_NE(FindFirstFileW(u"\\A.tbl", &found), INVALID_HANDLE_VALUE);
  EXPECT_EQ(found.dwFileAttributes, coredll::FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(found.nFileSizeLow, 5u);
  EXPECT_EQ(found.nFileSizeHigh, 0u);
}

TEST_F(FindsTest, TheWriteTimeCountsFrom1601) {
  Put("a", "");
  const std::chrono::sys_seconds since_1970(std::chrono::seconds(1'000'000'000));
  std::filesystem::last_write_time(root_ / "a", std::chrono::file_clock::from_sys(since_1970));
  WIN32_FIND_DATAW found;
  ASSERT_NE(FindFirstFileW(u"\\a", &found), INVALID_HANDLE_VALUE);
  const auto time = (std::uint64_t{found.ftLastWriteTime.dwHighDateTime} << 32) + found.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(time, 126'444'736'000'000'000u);
}

TEST_F(FindsTest, ADirectoryIsDescribed) {
  MakeDirectory("Data");
  WIN32_FIND_DATAW found;
  ASSERT_NE(FindFirstFileW(u"\\data", &found), INVALID_HANDLE_VALUE);
  EXPECT_EQ(found.dwFileAttributes, coredll::FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(found.nFileSizeLow, 0u);
}

TEST_F(FindsTest, ASearchThatFindsNothingFails) {
  MakeDirectory("empty");
  WIN32_FIND_DATAW found;
  EXPECT_EQ(FindFirstFileW(u"\\empty\\*", &found), INVALID_HANDLE_VALUE);
  EXPECT_EQ(coredll::GetLastError(), 2u);
  EXPECT_EQ(FindFirstFileW(u"\\none\\*", &found), INVALID_HANDLE_VALUE);
  EXPECT_EQ(coredll::GetLastError(), 3u);
  EXPECT_EQ(FindFirstFileW(u"\\", &found), INVALID_HANDLE_VALUE) << "the root has no name";
  EXPECT_EQ(TakeCensus(), Census());
}

TEST_F(FindsTest, WhatIsDeletedMeanwhileIsPassedOver) {
  for (const char* name : {"a", "b", "c"}) Put(name, "");
  WIN32_FIND_DATAW found;
  const auto find = FindFirstFileW(u"\\*", &found);
  ASSERT_TRUE(coredll::DeleteFileW(u"\\b"));
  ASSERT_TRUE(FindNextFileW(find, &found));
  EXPECT_EQ(std::u16string(found.cFileName), u"c");
}

TEST_F(FindsTest, OpenSearchesAreCountedApart) {
  Put("a", "");
  WIN32_FIND_DATAW found;
  const auto find = FindFirstFileW(u"\\*", &found);
  EXPECT_EQ(TakeCensus(), Census{.finds = 1});
  EXPECT_TRUE(coredll::CloseHandle(find));
  EXPECT_EQ(TakeCensus(), Census());
  EXPECT_FALSE(FindNextFileW(find, &found));
}

}  // namespace
}  // namespace handset
