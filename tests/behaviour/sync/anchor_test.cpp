// The anchor file as the exports read and rewrite it.
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

class AnchorTest : public AgentTest {
 protected:
  /// What a full schedule export makes of an anchor file.
  std::string Rewritten(std::string_view before) {
    WriteText(kAnchorIni, before);
    EXPECT_EQ(Export(2, 1).code, 0u);
    return ReadText(kAnchorIni);
  }

  /// The mode that an incremental export comes back with: 3 when the file's anchor for the schedule is `anchor`.
  std::uint32_t ModeAfter(std::string_view file, std::u16string_view anchor) {
    WriteText(kAnchorIni, file);
    WriteFile(u"\\dbdata\\sysconfig\\schedule.log", {});
    WriteFile(u"\\dbdata\\sysconfig\\schegroup.log", {});
    return Export(2, 3, anchor).mode;
  }

  ScriptedScheduleStore store_;
};

TEST_F(AnchorTest, AFirstExportCreatesTheFileWithoutAFinalLineBreak) {
  EXPECT_EQ(Export(2, 1).code, 0u);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, AnEmptyFileIsLikeNone) {
  EXPECT_EQ(Rewritten(""), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, TheAnchorHasNoLeadingZeros) {
  handset::SetLocalTime(coredll::SYSTEMTIME{2006, 12, 5, 1, 12, 5, 30, 0});
  EXPECT_EQ(Export(2, 1).anchor, u"200612112530");
  handset::SetLocalTime(coredll::SYSTEMTIME{2006, 12, 1, 11, 2, 5, 30, 0});
  EXPECT_EQ(Export(2, 1).anchor, u"200612112530") << "two moments may share an anchor";
  handset::SetLocalTime(coredll::SYSTEMTIME{2026, 11, 6, 21, 10, 31, 37, 0});
  EXPECT_EQ(Export(2, 1).anchor, u"20261121103137");
  handset::SetLocalTime(coredll::SYSTEMTIME{2007, 1, 1, 1, 0, 0, 0, 0});
  EXPECT_EQ(Export(2, 1).anchor, u"200711000");
}

TEST_F(AnchorTest, RecoverMovesTheAnchorToo) {
  for (const std::uint32_t mode : {1u, 2u, 3u}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 1");
    const Answer answer = Recover(2, mode, u"1");
    EXPECT_NE(answer.code, 0u) << "there are no tables";
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
  }
}

TEST_F(AnchorTest, APlainRecoverLeavesTheAnchor) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 1");
  EXPECT_EQ(Recover(2, 4, u"1").anchor, u"1");
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 1");
}

TEST_F(AnchorTest, AnotherModulesLineStays) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nLINKMAN = 200612117215"),
            "[ANCHORDATE]\r\nLINKMAN = 200612117215\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, TrailingLineBreaksGiveWayToANewLine) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 1\r\n\r\n\r\n"), "[ANCHORDATE]\r\nTASK = 1\r\nSCHEDULE = 200612117210");
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\n\r\n"), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, AnExistingLineGetsTheNewValueOnly) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 1\r\nSCHEDULE   =   2  x \r\nMMS = 3\r\n"),
            "[ANCHORDATE]\r\nTASK = 1\r\nSCHEDULE   = 200612117210\r\nMMS = 3\r\n");
}

TEST_F(AnchorTest, AnExistingLineAtTheEndGetsTheNewValue) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nSCHEDULE = 2"), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nSCHEDULE ="), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, ALineWithoutAnEqualsSignIsWrittenAnew) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\n xSCHEDULEx\r\nTASK = 5"),
            "[ANCHORDATE]\r\nSCHEDULE = 200612117210\r\nTASK = 5");
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 5\r\nSCHEDULE"), "[ANCHORDATE]\r\nTASK = 5\r\nSCHEDULE = 200612117210");
  EXPECT_EQ(Rewritten("[ANCHORDATE]SCHEDULE"), "[ANCHORDATE]SCHEDULE = 200612117210");
  EXPECT_EQ(Rewritten("[ANCHORDATE]xSCHEDULE"), "[ANCHORDATE]SCHEDULE = 200612117210");
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 1\nSCHEDULE"), "[ANCHORDATE]\r\nSCHEDULE = 200612117210")
      << "a lone line feed ends no line";
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nSCHEDULE[NEXT]\r\nA = 1"),
            "[ANCHORDATE]\r\nSCHEDULE = 200612117210[NEXT]\r\nA = 1");
}

TEST_F(AnchorTest, AFileWithoutTheSectionKeepsItsTextInFront) {
  EXPECT_EQ(Rewritten("[OTHER]\r\nSCHEDULE = 5\r\n"),
            "[OTHER]\r\nSCHEDULE = 5\r\n\r\n[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, InFrontOfAFurtherSectionANewLineHasOnlyItsKeysFirstCharacter) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 1\r\n\r\n[NEXT]\r\nA = 1"),
            "[ANCHORDATE]\r\nTASK = 1\r\nS = 200612117210\r\n\r\n[NEXT]\r\nA = 1");
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\n\r\n[NEXT]"), "[ANCHORDATE]\r\nS = 200612117210\r\n\r\n[NEXT]");
  EXPECT_EQ(Rewritten("[ANCHORDATE][NEXT]"), "[ANCHORDATE]\r\nS = 200612117210[NEXT]");
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 1\n[NEXT]"), "[ANCHORDATE]\r\nTASK = 1\n\r\nS = 200612117210[NEXT]");
}

TEST_F(AnchorTest, InFrontOfAFurtherSectionAnExistingLineGetsTheNewValue) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nSCHEDULE = 1\r\n[NEXT]\r\nSCHEDULE = 2"),
            "[ANCHORDATE]\r\nSCHEDULE = 200612117210\r\n[NEXT]\r\nSCHEDULE = 2");
}

TEST_F(AnchorTest, AKeyOfAFurtherSectionCountsAsAbsent) {
  EXPECT_EQ(Rewritten("[ANCHORDATE]\r\nTASK = 1\r\n[NEXT]\r\nSCHEDULE = 2"),
            "[ANCHORDATE]\r\nTASK = 1\r\nS = 200612117210\r\n[NEXT]\r\nSCHEDULE = 2");
}

TEST_F(AnchorTest, WhatLiesBeyondTwoThousandBytesIsLost) {
  const std::string start = "[ANCHORDATE]\r\nSCHEDULE = 1\r\n";
  const std::string filler(2000 - start.size(), 'x');
  EXPECT_EQ(Rewritten(start + filler + "LOST"), "[ANCHORDATE]\r\nSCHEDULE = 200612117210\r\n" + filler);
}

TEST_F(AnchorTest, AnAnchorBeyondTwoThousandBytesIsNotSeen) {
  const std::string filler(1990, 'x');
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\n" + filler + "\r\nSCHEDULE = 5", u"5"), 1u);
}

TEST_F(AnchorTest, TheSameAnchorIsHonoured) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 20061211721", u"20061211721"), 3u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nTASK = 1\r\nSCHEDULE=   20061211721   \r\nMMS = 2", u"20061211721"), 3u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 20061211721\r\n[NEXT]\r\nSCHEDULE = 2", u"20061211721"), 3u);
}

TEST_F(AnchorTest, AnyOtherAnchorIsNot) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 20061211721", u"20061211722"), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 20061211721", u"2006121172"), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 20061211721", u""), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nTASK = 20061211721", u"20061211721"), 1u);
  EXPECT_EQ(ModeAfter("[OTHER]\r\nSCHEDULE = 5", u"5"), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\n[NEXT]\r\nSCHEDULE = 5", u"5"), 1u);
  EXPECT_EQ(ModeAfter("", u"5"), 1u);
}

TEST_F(AnchorTest, FourteenZerosMeanNeverSynchronised) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 00000000000000", u"00000000000000"), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]", u"00000000000000"), 1u);
}

TEST_F(AnchorTest, ALineWithAnEmptyValueMeansNeverSynchronised) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE =   \r\nTASK = 5", u""), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE\r\nTASK = 5", u"5"), 1u);
}

TEST_F(AnchorTest, AValueBeyondFourteenCharactersIsReadCut) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 123456789012345", u"12345678901234"), 3u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE = 123456789012345", u"123456789012345"), 1u);
}

TEST_F(AnchorTest, AKeyInsideAnotherWordMatches) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nMYSCHEDULER = 5\r\nSCHEDULE = 6", u"5"), 3u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nschedule = 5", u"5"), 1u) << "but not one of another case";
}

TEST_F(AnchorTest, TextInTheHandsetsCodePageDoesNotDisturb) {
  EXPECT_EQ(ModeAfter("\xC8\xD5\xB3\xCC\r\n[ANCHORDATE]\r\nSCHEDULE = 5", u"5"), 3u);
}

TEST_F(AnchorTest, TheTextEndsAtItsFirstNul) {
  EXPECT_EQ(Rewritten(std::string("[ANCHORDATE]\r\nTASK = 1\0junk", 28)),
            "[ANCHORDATE]\r\nTASK = 1\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, AKeyInFrontOfTheSectionIsNoneOfIt) {
  EXPECT_EQ(Rewritten("SCHEDULE = 5\r\n[ANCHORDATE]\r\nTASK = 1"),
            "SCHEDULE = 5\r\n[ANCHORDATE]\r\nTASK = 1\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, OnlyBlanksAreTrimmed) {
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE =\t5", u"5"), 1u);
  EXPECT_EQ(ModeAfter("[ANCHORDATE]\r\nSCHEDULE =\t5", u"\t5"), 3u);
}

TEST_F(AnchorTest, AnAnchorNeverOverrunsItsBuffer) {
  handset::SetLocalTime(coredll::SYSTEMTIME{65535, 65535, 0, 65535, 65535, 65535, 65535, 0});
  EXPECT_EQ(Export(2, 1).anchor, u"6553565535655356553");
}

TEST_F(AnchorTest, AFileThatBreaksOffWhileItIsReadMeansNeverSynchronised) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  handset::FailCallOf("ReadFile", 2);
  EXPECT_EQ(Export(2, 3, u"5").mode, 1u);
}

TEST_F(AnchorTest, AFileThatCannotBeReadMeansNeverSynchronisedAndIsMadeAnew) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  handset::FailCallOf("ReadFile", 1);
  EXPECT_EQ(Export(2, 3, u"5").mode, 1u);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 200612117210");
}

TEST_F(AnchorTest, AnAnchorThatCannotBeKeptIsNoFailure) {
  std::filesystem::remove_all(handset::HostPath(u"\\dbdata"));
  MakeDirectory(u"\\dbdata\\sysconfig\\qvSyncAnchor.ini");
  const Answer answer = Export(2, 1);
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
}

TEST_F(AnchorTest, ReadingSharesTheFileAndRewritingDoesNot) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
  WriteFile(u"\\dbdata\\sysconfig\\schedule.log", {});
  WriteFile(u"\\dbdata\\sysconfig\\schegroup.log", {});
  const coredll::HANDLE reader = coredll::CreateFileW(kAnchorIni, coredll::GENERIC_READ, coredll::FILE_SHARE_READ,
                                                      nullptr, coredll::OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(reader, coredll::INVALID_HANDLE_VALUE);
  EXPECT_EQ(Export(2, 3, u"5").mode, 3u) << "two readers get along";
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSCHEDULE = 5") << "no one may watch half a rewrite";
  coredll::CloseHandle(reader);
}

}  // namespace
}  // namespace qv_test
