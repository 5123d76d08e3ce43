// The small questions: each answer, and what each does without a stream, an input or a success of the platform.
#include "tests/support/agent_test.h"

namespace qv_test {
namespace {

using testing::ElementsAre;

class HandsetQueriesTest : public AgentTest {
 protected:
  /// The numbers that an export writes; checks that it then releases the stream.
  std::vector<std::uint32_t> Ask(const std::string& name, const Bytes& input = {}, std::uint32_t returns = 0) {
    RecordingStream stream;
    EXPECT_EQ(Call(name, input, &stream), returns);
    std::vector<std::string> expected_calls(stream.written.size() / 4, "Write 4");
    expected_calls.emplace_back("Release");
    EXPECT_EQ(stream.calls, expected_calls);
    std::vector<std::uint32_t> words;
    for (std::size_t i = 0; i < stream.written.size(); i += 4) words.push_back(Get32(stream.written, i));
    return words;
  }

  void MakeModel() {
    for (const auto* name : {u"App", u"Dll", u"SystemRing", u"GameRing"}) {
      MakeDirectory(std::u16string(u"\\systemdata\\") + name);
    }
  }

  std::uint32_t CheckMutex(std::uint32_t selector) {
    RecordingStream stream;
    const std::uint32_t returned = Call("fnQV_CheckMutex", Words({selector}), &stream);
    Bytes expected(48);
    Put32(expected, 0, returned);
    EXPECT_EQ(stream.written, expected);
    EXPECT_THAT(stream.calls, ElementsAre("Write 48", "Release"));
    return returned;
  }

  static Bytes WideText(std::u16string_view text) {
    Bytes bytes(2 * (text.size() + 1));
    PutText(bytes, 0, text);
    return bytes;
  }

  using GetId = std::uint32_t (*)(std::uint32_t*);
  static void InstallMailStore(GetId get_id) {
    handset::InstallLibrary(u"\\SystemData\\dll\\MailStore.dll",
                            {{u"GetSystemMailID", reinterpret_cast<coredll::FARPROC>(get_id)}});
  }
};

TEST_F(HandsetQueriesTest, TheModelIsKnownByItsFourDirectories) {
  MakeModel();
  EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(1));
}

TEST_F(HandsetQueriesTest, OtherDirectoriesAndFilesDoNotMakeAnotherModel) {
  MakeModel();
  MakeDirectory(u"\\systemdata\\Other");
  WriteText(u"\\systemdata\\app.txt", "");
  EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(1));
}

TEST_F(HandsetQueriesTest, ADirectoryOfTheRomCounts) {
  MakeModel();
  using std::filesystem::perms;
  std::filesystem::permissions(handset::HostPath(u"\\systemdata\\Dll"), perms::owner_read | perms::owner_exec);
  EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(1));
}

TEST_F(HandsetQueriesTest, AMissingDirectoryMakesAnotherModel) {
  for (const auto* name : {u"App", u"Dll", u"SystemRing", u"GameRing"}) {
    MakeModel();
    std::filesystem::remove(handset::HostPath(std::u16string(u"\\systemdata\\") + name));
    EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(0));
  }
}

TEST_F(HandsetQueriesTest, AFileOfADirectorysNameDoesNotCount) {
  for (const auto* name : {u"Dll", u"SystemRing", u"GameRing"}) {
    MakeDirectory(std::u16string(u"\\systemdata\\") + name);
  }
  WriteText(u"\\systemdata\\App", "a file");
  EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(0));
}

TEST_F(HandsetQueriesTest, TheModelsDirectoriesAreComparedWithCase) {
  for (const auto* name : {u"APP", u"Dll", u"SystemRing", u"GameRing"}) {
    MakeDirectory(std::u16string(u"\\systemdata\\") + name);
  }
  EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(0));
}

TEST_F(HandsetQueriesTest, WithoutSystemDataItIsAnotherModel) {
  EXPECT_THAT(Ask("fnQV_IsNimbraK9"), ElementsAre(0));
}

TEST_F(HandsetQueriesTest, ASynchronisationRunsWhileItsSemaphoreIsHeld) {
  EXPECT_THAT(Ask("fnQV_IsRunSDSync"), ElementsAre(0));
  EXPECT_THAT(Ask("fnQV_IsRunSDSync"), ElementsAre(0)) << "asking must not hold the semaphore";
  handset::HoldSemaphore(u"App_SyncK9");
  EXPECT_THAT(Ask("fnQV_IsRunSDSync"), ElementsAre(1));
  handset::DropSemaphore(u"App_SyncK9");
  EXPECT_THAT(Ask("fnQV_IsRunSDSync"), ElementsAre(0));
}

TEST_F(HandsetQueriesTest, EachSelectorTestsItsOwnSemaphore) {
  const std::pair<std::uint32_t, std::u16string> kSelectors[] = {
      {1, u"abc.exe"}, {6, u"APP_EMAIL_MAINFRAME_WND"}, {32, u"App_SyncK9"}, {0, u""}, {2, u""}, {0xFFFFFFFF, u""},
  };
  for (const auto& [selector, name] : kSelectors) {
    SCOPED_TRACE(selector);
    EXPECT_EQ(CheckMutex(selector), 0u);
    handset::HoldSemaphore(name);
    EXPECT_EQ(CheckMutex(selector), 1u);
    handset::DropSemaphore(name);
    EXPECT_EQ(CheckMutex(selector), 0u);
  }
}

TEST_F(HandsetQueriesTest, CheckMutexReturnsItsAnswerWithoutAStream) {
  handset::HoldSemaphore(u"abc.exe");
  EXPECT_EQ(Call("fnQV_CheckMutex", Words({1}), nullptr), 1u);
  EXPECT_EQ(Call("fnQV_CheckMutex", Words({6}), nullptr), 0u);
}

TEST_F(HandsetQueriesTest, CheckMutexWithoutASelectorTestsTheEmptyName) {
  handset::HoldSemaphore(u"");
  EXPECT_EQ(Call("fnQV_CheckMutex", {}, nullptr), 1u);
}

TEST_F(HandsetQueriesTest, ATestedSemaphoreCountsToOne) {
  std::array<std::uint32_t, 3> counts{};
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateSemaphoreW") counts = call.options;
  });
  EXPECT_EQ(CheckMutex(1), 0u);
  handset::Observe({});
  EXPECT_EQ(counts[0], 1u);
  EXPECT_EQ(counts[1], 1u);
}

TEST_F(HandsetQueriesTest, ASemaphoreThatCannotBeMadeIsNotRunning) {
  handset::FailCallOf("CreateSemaphoreW", 1);
  EXPECT_EQ(CheckMutex(1), 0u);
  EXPECT_TRUE(handset::FaultHappened());
}

TEST_F(HandsetQueriesTest, FreeSpaceIsTheLowWordOfTheFreeBytes) {
  handset::SetFreeSpace(12345678);
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(u"\\sync")), ElementsAre(12345678));
  handset::SetFreeSpace(0x300000005);
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(u"\\sync")), ElementsAre(5));
}

TEST_F(HandsetQueriesTest, FreeSpaceOfAPathThatDoesNotExistIsAllOnes) {
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(u"\\nowhere")), ElementsAre(0xFFFFFFFF));
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(u"")), ElementsAre(0xFFFFFFFF));
  EXPECT_THAT(Ask("fnQV_GetPDASpace"), ElementsAre(0xFFFFFFFF));
}

TEST_F(HandsetQueriesTest, FreeSpaceOfAnOverlongPathIsAllOnes) {
  std::u16string path = u"\\sync";
  path.insert(0, 255, u'\\');
  EXPECT_EQ(path.size(), 260u);
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(path)), ElementsAre(0xFFFFFFFF));
  handset::SetFreeSpace(7);
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(path.substr(1))), ElementsAre(7)) << "259 characters are allowed";
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(path.substr(1) + u"x")), ElementsAre(0xFFFFFFFF))
      << "what remains of a cut path is another path";
}

TEST_F(HandsetQueriesTest, FreeSpaceIsZeroWhenTheHandsetCannotSay) {
  handset::FailCallOf("GetDiskFreeSpaceExW", 1);
  EXPECT_THAT(Ask("fnQV_GetPDASpace", WideText(u"\\sync")), ElementsAre(0));
  EXPECT_TRUE(handset::FaultHappened());
}

TEST_F(HandsetQueriesTest, TheMemoryDivisionIsSetIn256ths) {
  handset::AnswerMemoryDivision(0);
  EXPECT_THAT(Ask("fnQV_SetPDAStoreSpace", Words({0x1234})), ElementsAre(1));
  EXPECT_THAT(handset::MemoryDivisions(), ElementsAre(0x123400));
  handset::AnswerMemoryDivision(1);
  EXPECT_THAT(Ask("fnQV_SetPDAStoreSpace", Words({2})), ElementsAre(0)) << "it waits for a restart";
  for (const std::uint32_t refusal : {2u, 3u, 0xFFFFFFFFu}) {
    handset::AnswerMemoryDivision(refusal);
    EXPECT_THAT(Ask("fnQV_SetPDAStoreSpace", Words({2})), ElementsAre(0)) << "it was refused";
  }
}

TEST_F(HandsetQueriesTest, TheMemoryDivisionStaysWithoutASize) {
  EXPECT_THAT(Ask("fnQV_SetPDAStoreSpace"), ElementsAre(0));
  EXPECT_THAT(handset::MemoryDivisions(), testing::IsEmpty());
}

TEST_F(HandsetQueriesTest, TheMailIdFollowsItsFlag) {
  InstallMailStore([](std::uint32_t* id) -> std::uint32_t {
    *id = 0x01020304;
    return 0;
  });
  EXPECT_THAT(Ask("fnQV_GetMailID"), ElementsAre(1, 0x01020304));
}

TEST_F(HandsetQueriesTest, TheMailLibraryIsFreedAfterTheAnswer) {
  RecordingStream stream;
  std::size_t answered = 0;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "FreeLibrary") answered = stream.calls.size();
  });
  EXPECT_EQ(Call("fnQV_GetMailID", {}, &stream), 0u) << "there is no such library";
  EXPECT_EQ(answered, 2u) << "a zero was written and the stream released";
  InstallMailStore([](std::uint32_t*) -> std::uint32_t { return 0; });
  EXPECT_EQ(Call("fnQV_GetMailID", {}, &stream), 0u);
  handset::Observe({});
  EXPECT_EQ(answered, 5u);
}

TEST_F(HandsetQueriesTest, ARefusedMailIdIsNotFound) {
  InstallMailStore([](std::uint32_t*) -> std::uint32_t { return 1; });
  EXPECT_THAT(Ask("fnQV_GetMailID"), ElementsAre(0));
}

TEST_F(HandsetQueriesTest, WithoutTheMailLibraryOrItsFunctionThereIsNoId) {
  std::vector<std::string> library_calls;
  handset::Observe([&](const handset::Call& call) {
    if (call.function.ends_with("Library") || call.function == "LoadLibraryW") {
      library_calls.emplace_back(call.function);
    }
  });
  EXPECT_THAT(Ask("fnQV_GetMailID"), ElementsAre(0));
  handset::Observe({});
  EXPECT_THAT(library_calls, ElementsAre("LoadLibraryW", "FreeLibrary"));
  handset::InstallLibrary(u"\\SystemData\\dll\\MailStore.dll", {});
  EXPECT_THAT(Ask("fnQV_GetMailID"), ElementsAre(0));
}

TEST_F(HandsetQueriesTest, AMailLibraryHandleOfAllOnesIsLeftAlone) {
  handset::InstallLibraryHandle(u"\\SystemData\\dll\\MailStore.dll", reinterpret_cast<coredll::HMODULE>(-1));
  std::vector<std::string> library_calls;
  handset::Observe([&](const handset::Call& call) { library_calls.emplace_back(call.function); });
  EXPECT_THAT(Ask("fnQV_GetMailID"), ElementsAre(0));
  handset::Observe({});
  EXPECT_THAT(library_calls, ElementsAre("LoadLibraryW"));
}

TEST_F(HandsetQueriesTest, TheTelephonyServerIsToldOfTheCallFilter) {
  EXPECT_EQ(Agent().Export<std::uint32_t()>("fnQV_NotifyBLTChanged")(), 0u);
  EXPECT_THAT(handset::PostedMessages(), testing::IsEmpty()) << "nobody to tell";
  const coredll::HWND server = handset::OpenWindow(u"PhoneServerWindow");
  EXPECT_EQ(Agent().Export<std::uint32_t()>("fnQV_NotifyBLTChanged")(), 0u);
  EXPECT_THAT(handset::PostedMessages(), ElementsAre(handset::PostedMessage{server, 0x981, 32, 0}));
}

TEST_F(HandsetQueriesTest, NoQueryNeedsAStream) {
  MakeModel();
  for (const char* name :
       {"fnQV_IsNimbraK9", "fnQV_IsRunSDSync", "fnQV_GetPDASpace", "fnQV_SetPDAStoreSpace", "fnQV_GetMailID"}) {
    EXPECT_EQ(Call(name, {}, nullptr), 0u) << name;
  }
}

}  // namespace
}  // namespace qv_test
