// Files and paths: what the agent's files rest on is that this file system behaves like the handset's, not the host's.
// Names without case, share modes and full disks are what the two differ in.
#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

using coredll::CloseHandle;
using coredll::CopyFileW;
using coredll::DeleteFileW;
using coredll::GENERIC_READ;
using coredll::GENERIC_WRITE;
using coredll::GetLastError;
using coredll::INVALID_HANDLE_VALUE;

using FilesTest = HandsetTest;

TEST_F(FilesTest, WhatIsWrittenIsReadBack) {
  MakeDirectory("data");
  const auto written = Create(u"\\data\\a.tbl");
  EXPECT_EQ(Write(written, "hello, "), 7);
  EXPECT_EQ(Write(written, ""), 0);
  EXPECT_EQ(Write(written, "world"), 5);
  EXPECT_TRUE(CloseHandle(written));

  const auto file = Open(u"\\data\\a.tbl");
  EXPECT_EQ(Read(file, 5), "hello");
  EXPECT_EQ(Read(file, 100), ", world");
  EXPECT_EQ(Read(file, 100), "");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(TakeCensus(), Census());
}

TEST_F(FilesTest, NamesAreFoundWithoutCase) {
  Put("My Data/Größe.TBL", "x");
  EXPECT_EQ(Read(Open(u"\\MY DATA\\grÖße.tbl"), 9), "x");
}

TEST_F(FilesTest, OnlyTheWholeNameIsTheName) {
  Put("data/a.tb", "x"), Put("data/a.tbl2", "x"), Put("data/Größe", "x");
  for (const char16_t* const name : {u"\\data\\A.tbl", u"\\data\\größ", u"\\data\\größe2", u"\\data\\grosse"}) {
    EXPECT_EQ(Open(name), INVALID_HANDLE_VALUE);
  }
}

TEST_F(FilesTest, OfNamesThatDifferOnlyInCaseTheHostsFirstIsFound) {
  Put("data/b.tbl", "lower"), Put("data/B.tbl", "upper"), Put("data/b.TBL", "mixed");
  EXPECT_EQ(Read(Open(u"\\data\\B.TBL"), 9), "upper");
  EXPECT_EQ(Read(Open(u"\\data\\b.TBL"), 9), "mixed");
}

TEST_F(FilesTest, AnExistingFileKeepsItsSpellingAndANewOneHasTheGivenOne) {
  Put("Data/Old.tbl", "old");
  CloseHandle(Create(u"\\dATA\\OLD.TBL"));
  CloseHandle(Create(u"\\dATA\\New.tbl"));
  EXPECT_EQ(Content("Data/Old.tbl"), "");
  EXPECT_TRUE(Exists("Data/New.tbl"));
  EXPECT_FALSE(Exists("Data/OLD.TBL"));
}

TEST_F(FilesTest, SeparatorsMayBeDoubledOrMissingInFront) {
  Put("data/a", "x");
  EXPECT_EQ(Read(Open(u"\\\\data\\\\a", GENERIC_READ, 1), 9), "x");
  EXPECT_EQ(Read(Open(u"data\\a", GENERIC_READ, 1), 9), "x");
}

TEST_F(FilesTest, NoPathLeadsOutOfTheRoot) {
  EXPECT_EQ(HostPath(u"\\..\\..\\etc\\passwd"), root_ / "etc/passwd");
  EXPECT_EQ(HostPath(u"\\a\\..\\..\\b"), root_ / "b");
  EXPECT_EQ(HostPath(u"\\a/../../../b"), root_ / "b");
  EXPECT_EQ(HostPath(u"\\"), root_);
}

TEST_F(FilesTest, NamesAreUtf8OnTheHost) {
  CloseHandle(Create(u"\\日程\U0001F4C5.tbl"));
  EXPECT_TRUE(Exists("日程\U0001F4C5.tbl"));
}

TEST_F(FilesTest, AnUnpairedSurrogateIsAnOrdinaryNameThatComesBack) {
  const char16_t name[] = {u'\\', 0xDC00, u'x', 0xD800, 0};
  ASSERT_NE(Create(name), INVALID_HANDLE_VALUE);
  coredll::WIN32_FIND_DATAW found;
  ASSERT_NE(coredll::FindFirstFileW(name, &found), INVALID_HANDLE_VALUE);
  EXPECT_EQ(std::u16string(found.cFileName), name + 1);
}

TEST_F(FilesTest, OpeningSaysWhatIsMissing) {
  EXPECT_EQ(Open(u"\\none"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 2u);
  EXPECT_EQ(Open(u"\\no directory\\none"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_EQ(Create(u"\\no directory\\none"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 3u);
}

TEST_F(FilesTest, ADirectoryIsNoFile) {
  MakeDirectory("data");
  EXPECT_EQ(Create(u"\\Data"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(Open(u"\\Data"), INVALID_HANDLE_VALUE);
  EXPECT_FALSE(DeleteFileW(u"\\Data"));
  EXPECT_EQ(Open(nullptr), INVALID_HANDLE_VALUE);
}

TEST_F(FilesTest, NoFileHasAWildcardInItsName) {
  EXPECT_EQ(Create(u"\\a*.tbl"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 123u);
}

TEST_F(FilesTest, CreatingTellsWhetherTheFileWasThere) {
  const auto file = Create(u"\\a");
  EXPECT_EQ(GetLastError(), 0u);
  CloseHandle(file);
  Create(u"\\A");
  EXPECT_EQ(GetLastError(), coredll::ERROR_ALREADY_EXISTS);
}

TEST_F(FilesTest, AFileIsUsedOnlyForWhatItWasOpenedFor) {
  Put("a", "x");
  const auto reader = Open(u"\\a");
  EXPECT_EQ(Write(reader, "y"), -1);
  EXPECT_EQ(GetLastError(), 5u);
  const auto writer = Create(u"\\b");
  EXPECT_EQ(Read(writer, 1), "failed");
  const auto both = Create(u"\\c", GENERIC_READ | GENERIC_WRITE);
  EXPECT_EQ(Write(both, "z"), 1);
  EXPECT_EQ(Read(both, 1), "");
}

TEST_F(FilesTest, AnUnsharedFileOpensOnce) {
  Put("a", "x");
  const auto first = Open(u"\\a");
  EXPECT_EQ(Open(u"\\A", GENERIC_READ, 1), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), 32u);
  CloseHandle(first);
  EXPECT_NE(Open(u"\\A"), INVALID_HANDLE_VALUE);
}

TEST_F(FilesTest, SharingNeedsTheConsentOfBothSides) {
  Put("a", "x");
  const auto reader = Open(u"\\a", GENERIC_READ, 1);
  EXPECT_NE(Open(u"\\a", GENERIC_READ, 1), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Open(u"\\a", GENERIC_READ, 0), INVALID_HANDLE_VALUE) << "the first one reads";
  EXPECT_EQ(Open(u"\\a", GENERIC_WRITE, 3), INVALID_HANDLE_VALUE) << "the first one lets nobody write";
  EXPECT_EQ(Create(u"\\a"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Content("a"), "x") << "a refused CREATE_ALWAYS leaves the content";
  CloseHandle(reader);
}

TEST_F(FilesTest, WriteSharingLetsAReaderAndAWriterIn) {
  const auto writer = Create(u"\\a", GENERIC_WRITE, 1);
  EXPECT_EQ(Open(u"\\a", GENERIC_READ, 1), INVALID_HANDLE_VALUE);
  EXPECT_NE(Open(u"\\a", GENERIC_READ, 3), INVALID_HANDLE_VALUE);
  CloseHandle(writer);
}

TEST_F(FilesTest, AFileIsDeletedOnceNobodyHasItOpen) {
  Put("Data/A", "x");
  const auto file = Open(u"\\data\\a", GENERIC_READ, 3);
  EXPECT_FALSE(DeleteFileW(u"\\data\\a"));
  EXPECT_EQ(GetLastError(), 32u);
  CloseHandle(file);
  EXPECT_TRUE(DeleteFileW(u"\\data\\a"));
  EXPECT_FALSE(Exists("Data/A"));
  EXPECT_FALSE(DeleteFileW(u"\\data\\a"));
  EXPECT_EQ(GetLastError(), 2u);
}

TEST_F(FilesTest, AClosedHandleIsNoHandle) {
  const auto file = Create(u"\\a");
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_FALSE(CloseHandle(file));
  EXPECT_EQ(GetLastError(), 6u);
  EXPECT_EQ(Write(file, "x"), -1);
  EXPECT_FALSE(CloseHandle(INVALID_HANDLE_VALUE));
  EXPECT_NE(Create(u"\\b"), file) << "handles are not given out twice";
}

TEST_F(FilesTest, AFullDiskTakesWhatFits) {
  SetFreeSpace(10);
  const auto file = Create(u"\\a");
  EXPECT_EQ(Write(file, "12345678"), 8);
  EXPECT_EQ(Write(file, "12345678"), 2);
  EXPECT_EQ(GetLastError(), 112u);
  EXPECT_EQ(Write(file, "1"), 0);
  EXPECT_EQ(Content("a"), "1234567812");
}

TEST_F(FilesTest, DeletingAndTruncatingGiveRoomBack) {
  SetFreeSpace(4);
  auto file = Create(u"\\a");
  EXPECT_EQ(Write(file, "123456"), 4);
  CloseHandle(file);
  file = Create(u"\\a");
  EXPECT_EQ(Write(file, "123"), 3);
  CloseHandle(file);
  EXPECT_TRUE(DeleteFileW(u"\\a"));
  EXPECT_EQ(Write(Create(u"\\b"), "123456"), 4);
}

TEST_F(FilesTest, WritingOverWhatIsThereNeedsNoRoom) {
  Put("a", "12345");
  SetFreeSpace(1);
  EXPECT_EQ(Write(Open(u"\\a", GENERIC_WRITE), "abcdefgh"), 6);
  EXPECT_EQ(Content("a"), "abcdef");
}

TEST_F(FilesTest, FreeSpaceIsTheHostsUnlessItIsSet) {
  coredll::ULARGE_INTEGER free{}, total{}, total_free{};
  ASSERT_TRUE(coredll::GetDiskFreeSpaceExW(u"\\", &free, &total, &total_free));
  EXPECT_GT((std::uint64_t{total.HighPart} << 32) + total.LowPart, 0u);
  SetFreeSpace(0x1'0000'0002);
  ASSERT_TRUE(coredll::GetDiskFreeSpaceExW(nullptr, &free, nullptr, &total_free));
  EXPECT_EQ(free.LowPart, 0xF0000002u) << "a sixteenth is the system's";
  EXPECT_EQ(free.HighPart, 0u);
  EXPECT_EQ(total_free.LowPart, 2u);
  EXPECT_EQ(total_free.HighPart, 1u);
  EXPECT_FALSE(coredll::GetDiskFreeSpaceExW(u"\\none", &free, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), 3u);
}

TEST_F(FilesTest, AnOpenFileHasASize) {
  Put("a", "12345");
  const auto file = Open(u"\\a");
  Read(file, 3);
  coredll::DWORD high = 77;
  EXPECT_EQ(coredll::GetFileSize(file, &high), 5u) << "whatever was read of it";
  EXPECT_EQ(high, 0u);
  EXPECT_EQ(coredll::GetFileSize(file, nullptr), 5u);
  const auto written = Create(u"\\b");
  EXPECT_EQ(coredll::GetFileSize(written, nullptr), 0u);
  Write(written, "123");
  EXPECT_EQ(coredll::GetFileSize(written, nullptr), 3u);
}

TEST_F(FilesTest, TheSizeOfALargeFileHasAHighHalf) {
  Put("a", "");
  std::filesystem::resize_file(root_ / "a", 0x1'0000'0002);
  coredll::DWORD high = 0;
  EXPECT_EQ(coredll::GetFileSize(Open(u"\\a"), &high), 2u);
  EXPECT_EQ(high, 1u);
}

TEST_F(FilesTest, WhatIsNoOpenFileHasNoSize) {
  Put("a", "x");
  const auto file = Open(u"\\a");
  CloseHandle(file);
  EXPECT_EQ(coredll::GetFileSize(file, nullptr), coredll::INVALID_FILE_SIZE);
  EXPECT_EQ(GetLastError(), 6u);
  EXPECT_EQ(coredll::GetFileSize(INVALID_HANDLE_VALUE, nullptr), coredll::INVALID_FILE_SIZE);
}

// --- Copies ---

TEST_F(FilesTest, ACopyHasTheWholeContentUnderTheGivenName) {
  std::string content(200'000, '\0');
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7 + i / 256);
  Put("From/Large.eml", content);
  Put("empty", "");
  MakeDirectory("to");
  EXPECT_TRUE(CopyFileW(u"\\FROM\\large.EML", u"\\to\\Copy", 0));
  EXPECT_TRUE(CopyFileW(u"\\empty", u"\\to\\\\None", 1));
  EXPECT_EQ(Content("to/Copy"), content);
  EXPECT_TRUE(Exists("to/None"));
  EXPECT_EQ(Content("From/Large.eml"), content);
  EXPECT_EQ(TakeCensus(), Census());
}

TEST_F(FilesTest, ACopyReplacesAFileUnlessItIsNotTo) {
  Put("a", "new");
  Put("Data/B", "an old one");
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\data\\b", 1));
  EXPECT_EQ(GetLastError(), 80u);
  EXPECT_EQ(Content("Data/B"), "an old one");
  EXPECT_TRUE(CopyFileW(u"\\a", u"\\data\\b", 0));
  EXPECT_EQ(Content("Data/B"), "new");
  EXPECT_FALSE(Exists("Data/b")) << "it keeps its spelling";
}

TEST_F(FilesTest, ACopyOfNothingLeavesTheFileThatIsThere) {
  Put("b", "old");
  MakeDirectory("directory");
  for (const auto& [from, error] : {std::pair(u"\\none", 2u), std::pair(u"\\no directory\\none", 3u),
                                    std::pair(u"\\directory", 5u), std::pair(u"\\b*", 123u)}) {
    EXPECT_FALSE(CopyFileW(from, u"\\b", 0));
    EXPECT_EQ(GetLastError(), error);
  }
  EXPECT_EQ(Content("b"), "old");
  EXPECT_FALSE(CopyFileW(u"\\b", u"\\no directory\\c", 0));
  EXPECT_EQ(GetLastError(), 3u);
  EXPECT_FALSE(CopyFileW(u"\\b", u"\\directory", 0));
  EXPECT_EQ(GetLastError(), 5u);
  EXPECT_EQ(TakeCensus(), Census());
}

TEST_F(FilesTest, ACopyNeedsTheConsentOfWhoeverHasEitherFileOpen) {
  Put("a", "x");
  Put("b", "old");
  const auto unshared = Open(u"\\a");
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\b", 0));
  EXPECT_EQ(GetLastError(), 32u);
  CloseHandle(unshared);
  const auto shared = Open(u"\\a", GENERIC_READ, 1);
  const auto target = Open(u"\\b", GENERIC_READ, 1);
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\b", 0)) << "the target is being read";
  EXPECT_EQ(Content("b"), "old");
  CloseHandle(target);
  EXPECT_TRUE(CopyFileW(u"\\a", u"\\b", 0));
  CloseHandle(shared);
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\A", 0)) << "a file onto itself";
  EXPECT_EQ(Content("a"), "x");
}

TEST_F(FilesTest, AFullDiskLeavesNoHalfCopy) {
  Put("a", "12345678");
  SetFreeSpace(7);
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\b", 0));
  EXPECT_EQ(GetLastError(), 112u);
  EXPECT_FALSE(Exists("b"));
  SetFreeSpace(8);
  EXPECT_TRUE(CopyFileW(u"\\a", u"\\b", 0));
  EXPECT_TRUE(CopyFileW(u"\\a", u"\\b", 0)) << "in the room of the file that it replaces";
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\c", 0));
  EXPECT_EQ(Content("b"), "12345678");
}

TEST_F(FilesTest, ACopyThatIsToFailDoesNothing) {
  Put("a", "new");
  Put("b", "old");
  for (const Fault fault : {Fault::kFail, Fault::kCutShort}) {
    FailCallOf("CopyFileW", 1, fault);
    EXPECT_FALSE(CopyFileW(u"\\a", u"\\b", 0));
    EXPECT_TRUE(FaultHappened());
    EXPECT_EQ(Content("b"), "old");
  }
  std::vector<std::string> seen;
  Observe([&](const Call& call) {
    seen.push_back(std::string(call.function) + " " + std::string(call.path.begin(), call.path.end()) + " " +
                   std::to_string(call.options[0]));
  });
  EXPECT_TRUE(CopyFileW(u"\\a", u"\\b", 0));
  EXPECT_FALSE(CopyFileW(u"\\a", u"\\b", 1));
  Observe(nullptr);
  EXPECT_THAT(seen, testing::ElementsAre("CopyFileW \\a 0", "CopyFileW \\a 1")) << "one call to whoever watches";
}

TEST_F(FilesTest, StartingAgainClosesEverything) {
  const auto file = Create(u"\\a");
  Start(root_);
  EXPECT_EQ(TakeCensus(), Census());
  EXPECT_FALSE(CloseHandle(file));
}

}  // namespace
}  // namespace handset
