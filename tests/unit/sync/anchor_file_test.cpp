// ReadAnchorValue and WriteAnchorValue as the general routines they are: any section, key, value and path.
#include "sync/anchor_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "host/handset/handset.h"

namespace qv {
namespace {

constexpr char16_t kFile[] = u"\\file.ini";

class AnchorFileTest : public testing::Test {
 protected:
  AnchorFileTest() {
    std::string name = (std::filesystem::temp_directory_path() / "handset-XXXXXX").string();
    root_ = mkdtemp(name.data());
    handset::Start(root_);
  }
  ~AnchorFileTest() override {
    handset::FailCall(0);
    EXPECT_EQ(handset::TakeCensus(), handset::Census{});
    std::filesystem::remove_all(root_);
  }

  static void Write(std::string_view text) { std::ofstream(handset::HostPath(kFile), std::ios::binary) << text; }
  static std::string Read() {
    std::ifstream file(handset::HostPath(kFile), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  /// The value read, after checking the count that came with it.
  static std::u16string Value(const char16_t* section, const char16_t* key, std::size_t max_chars = 14,
                              const char16_t* default_value = u"default") {
    char16_t buffer[64];
    const std::size_t count = ReadAnchorValue(section, key, default_value, buffer, max_chars, kFile);
    EXPECT_EQ(count, std::u16string_view(buffer).size());
    return buffer;
  }

  std::filesystem::path root_;
};

TEST_F(AnchorFileTest, WithoutAFileTheDefaultIsRead) {
  char16_t buffer[20];
  EXPECT_EQ(ReadAnchorValue(u"ANCHORDATE", u"SCHEDULE", u"00000000000000", buffer, 14, kFile), 14u);
  EXPECT_EQ(std::u16string_view(buffer), u"00000000000000");
}

TEST_F(AnchorFileTest, ADefaultIsNotCut) {
  EXPECT_EQ(Value(u"S", u"K", 3), u"default");
}

TEST_F(AnchorFileTest, AValueIsReadFromItsSectionOnly) {
  Write("[ONE]\r\nA = 1\r\nB = 2\r\n[TWO]\r\nA = 3\r\nC = 4");
  EXPECT_EQ(Value(u"ONE", u"A"), u"1");
  EXPECT_EQ(Value(u"ONE", u"B"), u"2");
  EXPECT_EQ(Value(u"ONE", u"C"), u"default");
  EXPECT_EQ(Value(u"TWO", u"A"), u"3");
  EXPECT_EQ(Value(u"TWO", u"C"), u"4");
  EXPECT_EQ(Value(u"THREE", u"A"), u"default");
}

TEST_F(AnchorFileTest, AValueIsTrimmedBeforeItIsCut) {
  Write("[S]\r\nK =    12 34 56    \r\n");
  EXPECT_EQ(Value(u"S", u"K"), u"12 34 56");
  EXPECT_EQ(Value(u"S", u"K", 3), u"12 ");
}

TEST_F(AnchorFileTest, AValueMayHoldAnEqualsSign) {
  Write("[S]\r\nK = a=b\r\n");
  EXPECT_EQ(Value(u"S", u"K"), u"a=b");
}

TEST_F(AnchorFileTest, ALoneLineFeedDoesNotEndALine) {
  Write("[S]\r\nK = 1\nL = 2\r\nM = 3");
  EXPECT_EQ(Value(u"S", u"K"), u"1\nL = 2");
}

TEST_F(AnchorFileTest, ValuesAndKeysOfTheCodePageMakeTheRoundTrip) {
  EXPECT_EQ(WriteAnchorValue(u"\u951A\u70B9", u"\u65E5\u7A0B", u"\u4E00\u4E8C", kFile), 1);
  EXPECT_EQ(Read(), "[\xC3\xAA\xB5\xE3]\r\n\xC8\xD5\xB3\xCC = \xD2\xBB\xB6\xFE");
  EXPECT_EQ(Value(u"\u951A\u70B9", u"\u65E5\u7A0B"), u"\u4E00\u4E8C");
}

TEST_F(AnchorFileTest, WhatTheCodePageLacksLeavesTheFileAlone) {
  Write("[S]\r\nK = 1");
  EXPECT_EQ(WriteAnchorValue(u"S", u"K", u"\xD800", kFile), 1);
  EXPECT_EQ(Read(), "[S]\r\nK = 1");
}

TEST_F(AnchorFileTest, HalfACharacterDoesNotHideTheOtherLines) {
  Write("[S]\r\nK = 12\r\n; \xC8");
  EXPECT_EQ(Value(u"S", u"K"), u"12");
  EXPECT_EQ(Value(u"S", u";"), u"default");
}

TEST_F(AnchorFileTest, AnEmptyValueIsWrittenAndReadsAsTheDefault) {
  EXPECT_EQ(WriteAnchorValue(u"S", u"K", u"", kFile), 1);
  EXPECT_EQ(Read(), "[S]\r\nK = ");
  EXPECT_EQ(Value(u"S", u"K"), u"default");
}

TEST_F(AnchorFileTest, WithoutMemoryTheDefaultIsReadAndTheFileLeftAlone) {
  Write("[S]\r\nK = 1");
  unsigned n = 1;
  for (;; ++n) {
    handset::FailCallOf("realloc", n);
    const std::u16string value = Value(u"S", u"K");
    if (!handset::FaultHappened()) break;
    EXPECT_EQ(value, u"default");
  }
  EXPECT_GT(n, 2u);
  for (n = 1;; ++n) {
    Write("[S]\r\nK = 1");
    handset::FailCallOf("realloc", n);
    EXPECT_EQ(WriteAnchorValue(u"S", u"K", u"2", kFile), 1);
    if (!handset::FaultHappened()) break;
    EXPECT_EQ(Read(), "[S]\r\nK = 1");
  }
  EXPECT_GT(n, 4u);
  EXPECT_EQ(Read(), "[S]\r\nK = 2");
}

}  // namespace
}  // namespace qv
