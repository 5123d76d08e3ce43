// Watching and breaking the seam: a sweep that fails each call in turn is only worth something when every function that
// can fail does so, once, and does nothing else.
#include <stdexcept>

#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

using testing::ElementsAre;

class FaultsTest : public HandsetTest {
 protected:
  // What the observer saw, as "function path size".
  std::vector<std::string> seen_;

  void Record() {
    Observe([this](const Call& call) {
      const std::string path(call.path.begin(), call.path.end());
      seen_.push_back(std::string(call.function) + " " + path + " " + std::to_string(call.size));
    });
  }
};

TEST_F(FaultsTest, EveryCallIsSeenWithWhatItConcerns) {
  Record();
  const auto file = Create(u"\\A.tbl");
  Write(file, "123");
  coredll::CloseHandle(file);
  coredll::free(coredll::malloc(17));
  Observe(nullptr);
  coredll::DeleteFileW(u"\\A.tbl");
  EXPECT_THAT(seen_, ElementsAre("CreateFileW \\A.tbl 0", "WriteFile \\A.tbl 3", "CloseHandle \\A.tbl 0", "malloc  17",
                                 "free  0"));
}

TEST_F(FaultsTest, TheObserverMayUseTheHandsetUnseen) {
  int calls = 0;
  Observe([&](const Call&) {
    ++calls;
    coredll::free(coredll::malloc(1));
  });
  FailCall(2);
  EXPECT_TRUE(coredll::PostMessageW(nullptr, 1, 0, 0)) << "the observer's own calls do not count";
  EXPECT_FALSE(coredll::PostMessageW(nullptr, 1, 0, 0));
  EXPECT_EQ(calls, 2);
}

TEST_F(FaultsTest, TheObserverMayTakeItselfAway) {
  int calls = 0;
  Observe([&](const Call&) {
    Observe(nullptr);
    ++calls;
  });
  coredll::GetLastError();
  coredll::GetLastError();
  EXPECT_EQ(calls, 1);
}

TEST_F(FaultsTest, TheCallAskedForFailsOnceHavingDoneNothing) {
  FailCall(2);
  const auto file = Create(u"\\a");
  EXPECT_FALSE(FaultHappened());
  EXPECT_EQ(Write(file, "123"), -1);
  EXPECT_TRUE(FaultHappened());
  EXPECT_EQ(FaultedFunction(), "WriteFile");
  EXPECT_EQ(Content("a"), "");
  EXPECT_EQ(Write(file, "123"), 3);
}

TEST_F(FaultsTest, OnlyCallsOfTheFunctionNamedCount) {
  FailCallOf(std::string("malloc"), 2);
  const auto file = Create(u"\\a");
  void* block = coredll::malloc(1);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(Write(file, "123"), 3);
  EXPECT_EQ(coredll::malloc(1), nullptr);
  EXPECT_EQ(FaultedFunction(), "malloc");
  EXPECT_EQ(TakeCensus(), (Census{.files = 1, .blocks = 1}));
}

TEST_F(FaultsTest, AWriteOrReadCutShortDoesHalf) {
  FailCallOf("WriteFile", 1, Fault::kCutShort);
  const auto file = Create(u"\\a");
  EXPECT_EQ(Write(file, "1234"), 2);
  EXPECT_EQ(Content("a"), "12");
  coredll::CloseHandle(file);
  FailCallOf("ReadFile", 1, Fault::kCutShort);
  char buffer[4];
  coredll::DWORD read = 0;
  EXPECT_NE(coredll::ReadFile(Open(u"\\a"), buffer, 2, &read, nullptr), 0);
  EXPECT_EQ(read, 1u) << "never nothing: that would be the end of the file";
  FailCall(1, Fault::kCutShort);
  EXPECT_EQ(Open(u"\\a"), coredll::INVALID_HANDLE_VALUE) << "what cannot be cut fails";
}

TEST_F(FaultsTest, CancellingKeepsTheAnswerAndArmingClearsIt) {
  FailCall(1);
  coredll::FindWindowW(nullptr, u"");
  FailCall(0);
  EXPECT_TRUE(FaultHappened());
  FailCall(1);
  EXPECT_FALSE(FaultHappened());
  FailCall(0);
  EXPECT_NE(Create(u"\\a"), coredll::INVALID_HANDLE_VALUE);
  EXPECT_FALSE(FaultHappened());
}

TEST_F(FaultsTest, GivingBackNeverFails) {
  const auto file = Create(u"\\a");
  void* block = coredll::malloc(1);
  FailCall(1);
  EXPECT_TRUE(coredll::CloseHandle(file));
  coredll::free(block);
  coredll::GetLastError();
  EXPECT_FALSE(FaultHappened());
  EXPECT_THROW(FailCallOf("CloseHandle", 1), std::invalid_argument);
  EXPECT_THROW(FailCallOf("CreateFile", 1), std::invalid_argument);
}

// A call of each function that can fail, which succeeds without a fault.
struct Attempt {
  const char* function;
  bool (*succeeds)();
};

class EachFunctionTest : public HandsetTest, public testing::WithParamInterface<Attempt> {
 protected:
  static bool FindsNext() {
    coredll::WIN32_FIND_DATAW found;
    return coredll::FindNextFileW(coredll::FindFirstFileW(u"\\*", &found), &found) != 0;
  }
  static bool FindsFirst() {
    coredll::WIN32_FIND_DATAW found;
    return coredll::FindFirstFileW(u"\\*", &found) != coredll::INVALID_HANDLE_VALUE;
  }
  static bool GetsEntryPoint() {
    return coredll::GetProcAddressW(coredll::LoadLibraryW(u"a.dll"), u"Entry") != nullptr;
  }
  static bool ConvertsToBytes() {
    char bytes[4];
    return coredll::wcstombs(bytes, u"a", 4) == 1;
  }
  static bool ConvertsToWide() {
    char16_t text[4];
    return coredll::mbstowcs(text, "a", 4) == 1;
  }

 public:
  static constexpr Attempt kAttempts[] = {
      {"CreateFileW", [] { return Open(u"\\a") != coredll::INVALID_HANDLE_VALUE; }},
      {"ReadFile", [] { return Read(Open(u"\\a"), 1) == "x"; }},
      {"WriteFile", [] { return Write(Create(u"\\a"), "y") == 1; }},
      {"GetFileSize", [] { return coredll::GetFileSize(Open(u"\\a"), nullptr) == 1; }},
      {"CopyFileW", [] { return coredll::CopyFileW(u"\\a", u"\\b", 0) != 0; }},
      {"DeleteFileW", [] { return coredll::DeleteFileW(u"\\a") != 0; }},
      {"FindFirstFileW", FindsFirst},
      {"FindNextFileW", FindsNext},
      {"GetDiskFreeSpaceExW", [] { return coredll::GetDiskFreeSpaceExW(u"\\", nullptr, nullptr, nullptr) != 0; }},
      {"LoadLibraryW", [] { return coredll::LoadLibraryW(u"a.dll") != nullptr; }},
      {"GetProcAddressW", GetsEntryPoint},
      {"FindWindowW", [] { return coredll::FindWindowW(nullptr, u"Phone") != nullptr; }},
      {"PostMessageW", [] { return coredll::PostMessageW(nullptr, 1, 0, 0) != 0; }},
      {"CreateSemaphoreW", [] { return coredll::CreateSemaphoreW(nullptr, 1, 1, u"sync") != nullptr; }},
      {"SetSystemMemoryDivision", [] { return coredll::SetSystemMemoryDivision(1) == 0; }},
      {"malloc", [] { return coredll::malloc(1) != nullptr; }},
      {"realloc", [] { return coredll::realloc(nullptr, 1) != nullptr; }},
      {"wcstombs", ConvertsToBytes},
      {"mbstowcs", ConvertsToWide},
  };
};

INSTANTIATE_TEST_SUITE_P(All, EachFunctionTest, testing::ValuesIn(EachFunctionTest::kAttempts),
                         [](const auto& test) { return test.param.function; });

TEST_P(EachFunctionTest, FailsWhenItIsToldTo) {
  const auto prepare = [this] {
    Start(root_);
    Put("a", "x");
    Put("b", "x");
    OpenWindow(u"Phone");
    InstallLibrary(u"a.dll", {{u"Entry", [] {}}});
  };
  prepare();
  EXPECT_TRUE(GetParam().succeeds());
  prepare();
  FailCallOf(GetParam().function, 1);
  EXPECT_FALSE(GetParam().succeeds());
  EXPECT_EQ(FaultedFunction(), GetParam().function);
}

}  // namespace
}  // namespace handset
