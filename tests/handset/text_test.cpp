// Text: conversions that stop where the room does, and the formats that the agent uses.
// The code page's bytes are written out, so that the tests do not rest on what they test.
#include "host/handset/unicode.h"
#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

using coredll::_snwprintf;
using coredll::mbstowcs;
using coredll::wcstombs;

constexpr auto kFailed = static_cast<std::size_t>(-1);

class TextTest : public HandsetTest {
 protected:
  // The bytes written, and that nothing behind them was.
  static std::string ToBytes(const char16_t* text, std::size_t size) {
    std::string bytes(size + 1, '#');
    const std::size_t length = wcstombs(bytes.data(), text, size);
    if (length == kFailed) return "failed";
    EXPECT_LE(length, size);
    EXPECT_EQ(bytes[length], length < size && bytes[length] == '\0' ? '\0' : '#');
    return bytes.substr(0, length);
  }

  static std::u16string ToWide(const char* bytes, std::size_t size) {
    std::u16string text(size + 1, u'#');
    const std::size_t length = mbstowcs(text.data(), bytes, size);
    return length == kFailed ? u"failed" : text.substr(0, length);
  }
};

TEST_F(TextTest, IsWellFormedWhenEverySurrogateHasItsOtherHalf) {
  for (const auto* text : {u"", u"plain", u"😀", u"😀😀", u"\xD7FF\xE000", u"\xD800\xDC00\xDBFF\xDFFF"}) {
    EXPECT_TRUE(IsWellFormed(text));
  }
  for (const auto* text : {u"\xD800", u"\xDBFF", u"\xDC00", u"\xDFFF", u"\xD800x", u"\xDC00\xD800", u"😀\xDC00"}) {
    EXPECT_FALSE(IsWellFormed(text));
  }
}

TEST_F(TextTest, AsciiStaysWhatItIs) {
  EXPECT_EQ(ToBytes(u"abc", 10), "abc");
  EXPECT_EQ(ToWide("abc\x7F", 10), u"abc\x7F");
}

TEST_F(TextTest, OtherTextTakesTwoBytesACharacter) {
  EXPECT_EQ(ToBytes(u"a中文", 10), "a\xD6\xD0\xCE\xC4");
  EXPECT_EQ(ToWide("a\xD6\xD0\xCE\xC4", 10), u"a中文");
}

TEST_F(TextTest, ACharacterIsNeverSplit) {
  EXPECT_EQ(ToBytes(u"a中文", 4), "a\xD6\xD0");
  EXPECT_EQ(ToBytes(u"a中文", 2), "a");
  EXPECT_EQ(ToBytes(u"a中文", 0), "");
  EXPECT_EQ(ToWide("a\xD6\xD0\xCE\xC4", 2), u"a中");
}

TEST_F(TextTest, TheNulIsWrittenWhenThereIsRoom) {
  char bytes[] = "####";
  EXPECT_EQ(wcstombs(bytes, u"ab", 3), 2u);
  EXPECT_EQ(std::string(bytes, 4), std::string("ab\0#", 4));
  EXPECT_EQ(wcstombs(bytes, u"xyz", 3), 3u);
  EXPECT_EQ(std::string(bytes, 4), "xyz#");
  char16_t text[] = u"####";
  EXPECT_EQ(mbstowcs(text, "ab", 3), 2u);
  EXPECT_EQ(std::u16string(text, 4), std::u16string(u"ab\0#", 4));
}

TEST_F(TextTest, NothingIsReadPastTheRoom) {
  const char16_t text[] = {u'a', u'b'};
  EXPECT_EQ(ToBytes(text, 2), "ab");
  const char bytes[] = {'a', 'b'};
  EXPECT_EQ(ToWide(bytes, 2), u"ab");
}

TEST_F(TextTest, WhatStandsBeforeAFailureIsConvertedAndNoMore) {
  char bytes[] = "######";
  EXPECT_EQ(wcstombs(bytes, u"a\u4E2D\u0E01z", 6), kFailed);
  EXPECT_EQ(std::string(bytes), "a\xD6\xD0###");
  for (const char* broken : {"ab\xFF\xFF", "ab\xD6", "ab\xD6\xFFz"}) {
    char16_t text[] = u"####";
    EXPECT_EQ(mbstowcs(text, broken, 4), kFailed);
    EXPECT_EQ(std::u16string(text), u"ab##");
  }
}

TEST_F(TextTest, WhatTheCodePageLacksFails) {
  EXPECT_EQ(ToBytes(u"aé\u0e01", 10), "failed");
  const char16_t surrogate[] = {0xD83D, 0xDE00, 0};
  EXPECT_EQ(ToBytes(surrogate, 10), "failed");
  EXPECT_EQ(ToWide("a\xFF\xFF", 10), u"failed");
  EXPECT_EQ(ToWide("a\xD6", 10), u"failed") << "half a character";
  EXPECT_EQ(ToBytes(u"中", 10), "\xD6\xD0") << "a failure leaves no trace";
}

template <typename... Arguments>
std::u16string Formatted(const char16_t* format, Arguments... arguments) {
  char16_t buffer[100];
  const int length = _snwprintf(buffer, std::size(buffer), format, arguments...);
  EXPECT_EQ(length, static_cast<int>(std::u16string(buffer).size()));
  return buffer;
}

TEST_F(TextTest, NumbersAreFormatted) {
  EXPECT_EQ(Formatted(u"%d %u %x %X", -5, 4000000000u, 0xBEEFu, 0xBEEFu), u"-5 4000000000 beef BEEF");
  EXPECT_EQ(Formatted(u"%.4d%02u|%5d|%-5d|%ld", 7, 8u, 9, 10, 11L), u"000708|    9|10   |11");
}

TEST_F(TextTest, TextIsFormatted) {
  EXPECT_EQ(Formatted(u"%s\\%c%%", u"日程", 'x'), u"日程\\x%");
  EXPECT_EQ(Formatted(u"%.2s|%4s|%-4s|", u"abc", u"ab", u"ab"), u"ab|  ab|ab  |");
  EXPECT_EQ(Formatted(u"%s", static_cast<const char16_t*>(nullptr)), u"(null)");
}

TEST_F(TextTest, FormattedTextIsCutAtTheRoom) {
  char16_t buffer[] = u"######";
  EXPECT_EQ(_snwprintf(buffer, 4, u"%d", 123), 3);
  EXPECT_EQ(std::u16string(buffer, 6), std::u16string(u"123\0##", 6));
  EXPECT_EQ(_snwprintf(buffer, 4, u"%d", 1234), 4);
  EXPECT_EQ(std::u16string(buffer, 6), u"1234##");
  EXPECT_LT(_snwprintf(buffer, 4, u"%d", 98765), 0);
  EXPECT_EQ(std::u16string(buffer, 6), u"9876##");
}

TEST_F(TextTest, WhatIsPrintedIsKeptByteForByte) {
  EXPECT_EQ(PrintedText(), "");
  EXPECT_EQ(coredll::printf("UIDL\xB3\xF6 %d", -7), 9);
  EXPECT_EQ(coredll::printf("%s%%|%5u|", "\xFF", 100u), 9);
  EXPECT_EQ(coredll::printf("%s", ""), 0);
  EXPECT_EQ(PrintedText(), "UIDL\xB3\xF6 -7\xFF%|  100|");
  const std::string long_text(5000, 'x');
  EXPECT_EQ(coredll::printf("%s", long_text.c_str()), 5000);
  EXPECT_EQ(PrintedText().size(), 18u + 5000u);
  Start(root_);
  EXPECT_EQ(PrintedText(), "") << "another handset";
}

TEST_F(TextTest, PrintingIsSeenAndCannotFail) {
  std::vector<std::string_view> seen;
  Observe([&](const Call& call) { seen.push_back(call.function); });
  FailCall(1);
  EXPECT_EQ(coredll::printf("text"), 4);
  Observe(nullptr);
  EXPECT_FALSE(FaultHappened());
  EXPECT_THAT(seen, testing::ElementsAre("printf"));
  EXPECT_THROW(FailCallOf("printf", 1), std::invalid_argument);
}

TEST_F(TextTest, AnUnknownConversionEndsTheProcess) {
  char16_t buffer[10];
  EXPECT_DEATH(_snwprintf(buffer, 10, u"%q", 1), "no conversion q");
  EXPECT_DEATH(_snwprintf(buffer, 10, u"%"), "no conversion");
}

}  // namespace
}  // namespace handset
