// Libraries: where they are found, which is asked first, and that a handle ends with its last reference.
// A broken library file must be as good as none.
#include "platform/mail_store.h"
#include "tests/handset/handset_fixture.h"

namespace handset {
namespace {

using coredll::FARPROC;
using coredll::FreeLibrary;
using coredll::GetLastError;
using coredll::GetProcAddressW;
using coredll::LoadLibraryW;

class LibrariesTest : public HandsetTest {
 protected:
  // A copy, because the host opens a file only once.
  void PutSampleLibrary(const std::string& path) const {
    std::filesystem::create_directories((root_ / path).parent_path());
    std::filesystem::copy_file(QV_SAMPLE_LIBRARY, root_ / path);
  }

  static int CallAnswer(coredll::HMODULE library) {
    const FARPROC answer = GetProcAddressW(library, u"Answer");
    return answer == nullptr ? -1 : reinterpret_cast<int (*)()>(answer)();
  }

  static void First() {}
  static void Second() {}
};

TEST_F(LibrariesTest, ABareNameIsFoundInTheSystemDirectory) {
  PutSampleLibrary("Windows/Sample.dll");
  const auto library = LoadLibraryW(u"SAMPLE.DLL");
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(CallAnswer(library), 42);
  EXPECT_EQ(GetProcAddressW(library, u"answer"), nullptr) << "entry points have case";
  EXPECT_EQ(GetLastError(), 127u);
}

TEST_F(LibrariesTest, APathIsFoundWhereItLeads) {
  PutSampleLibrary("Program Files/sample.dll");
  EXPECT_EQ(CallAnswer(LoadLibraryW(u"\\program files\\SAMPLE.dll")), 42);
  EXPECT_EQ(LoadLibraryW(u"sample.dll"), nullptr);
  EXPECT_EQ(GetLastError(), 126u);
}

TEST_F(LibrariesTest, TheRomHasWhatTheHandsetHasNot) {
  PutSampleLibrary("rom/windows/sample.dll");
  SetRom(root_ / "rom");
  Start(root_);
  EXPECT_EQ(CallAnswer(LoadLibraryW(u"Sample.dll")), 42);
  EXPECT_EQ(CallAnswer(LoadLibraryW(u"\\Windows\\Sample.dll")), 42);
  Put("Windows/sample.dll", "the handset's own comes first");
  EXPECT_EQ(LoadLibraryW(u"Sample.dll"), nullptr);
}

TEST_F(LibrariesTest, AFileThatIsNoLibraryIsNotLoaded) {
  Put("Windows/sample.dll", "no library");
  EXPECT_EQ(LoadLibraryW(u"sample.dll"), nullptr);
  EXPECT_EQ(GetLastError(), 193u);
  EXPECT_EQ(LoadLibraryW(u"\\Windows"), nullptr);
  EXPECT_EQ(LoadLibraryW(u""), nullptr);
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
}

TEST_F(LibrariesTest, AnInstalledLibraryComesBeforeAFile) {
  PutSampleLibrary("Windows/sample.dll");
  InstallLibrary(u"Sample.DLL", {{u"First", &First}});
  const auto library = LoadLibraryW(u"sample.dll");
  EXPECT_EQ(GetProcAddressW(library, u"First"), &First);
  EXPECT_EQ(GetProcAddressW(library, u"Answer"), nullptr);
}

TEST_F(LibrariesTest, ALibraryIsInstalledUnderAPath) {
  InstallLibrary(u"\\Windows\\a.dll", {{u"First", &First}});
  EXPECT_NE(LoadLibraryW(u"windows\\\\A.DLL"), nullptr);
  EXPECT_EQ(LoadLibraryW(u"a.dll"), nullptr);
}

TEST_F(LibrariesTest, InstallingAgainReplaces) {
  InstallLibrary(u"a.dll", {{u"Entry", &First}});
  const auto before = LoadLibraryW(u"a.dll");
  InstallLibrary(u"a.dll", {{u"Entry", &Second}});
  const auto after = LoadLibraryW(u"a.dll");
  EXPECT_EQ(GetProcAddressW(before, u"Entry"), &First) << "what is loaded stays as it is";
  EXPECT_EQ(GetProcAddressW(after, u"Entry"), &Second);
}

TEST_F(LibrariesTest, AnInstalledHandleIsAnsweredAndNothingLoaded) {
  InstallLibraryHandle(u"a.dll", coredll::INVALID_HANDLE_VALUE);
  EXPECT_EQ(LoadLibraryW(u"A.dll"), coredll::INVALID_HANDLE_VALUE);
  EXPECT_EQ(TakeCensus(), Census());
  EXPECT_EQ(GetProcAddressW(coredll::INVALID_HANDLE_VALUE, u"Entry"), nullptr);
  EXPECT_FALSE(FreeLibrary(coredll::INVALID_HANDLE_VALUE));
}

TEST_F(LibrariesTest, ALibraryStaysUntilItsLastReferenceIsFreed) {
  PutSampleLibrary("Windows/sample.dll");
  const auto library = LoadLibraryW(u"sample.dll");
  EXPECT_EQ(LoadLibraryW(u"\\Windows\\SAMPLE.dll"), library);
  EXPECT_EQ(TakeCensus(), Census{.libraries = 2});
  EXPECT_TRUE(FreeLibrary(library));
  EXPECT_EQ(CallAnswer(library), 42);
  EXPECT_TRUE(FreeLibrary(library));
  EXPECT_EQ(GetProcAddressW(library, u"Answer"), nullptr);
  EXPECT_EQ(GetLastError(), 6u);
  EXPECT_FALSE(FreeLibrary(library));
  EXPECT_FALSE(FreeLibrary(nullptr));
  EXPECT_EQ(TakeCensus(), Census());
}

class MailStoreImportTest : public LibrariesTest {
 protected:
  static int QV_THISCALL Seven(mail_store::CMailDBSync*) { return 7; }
  static int QV_THISCALL Eight(mail_store::CMailDBSync*) { return 8; }

  /// What InitCEDB answers in a library of its own.
  static EntryPoints LibraryWith(int(QV_THISCALL* init)(mail_store::CMailDBSync*)) {
    return {{u"InitCEDB", reinterpret_cast<FARPROC>(init)}};
  }
};

TEST_F(MailStoreImportTest, AMemberIsThatOfTheLibraryAtTheTime) {
  InstallLibrary(kMailStore, LibraryWith(&Seven));
  EXPECT_EQ(mail_store::InitCEDB(nullptr), 7);
  InstallLibrary(u"\\systemdata\\DLL\\mailstore.DLL", LibraryWith(&Eight));
  EXPECT_EQ(mail_store::InitCEDB(nullptr), 8);
  EXPECT_EQ(TakeCensus(), Census()) << "it counts as no loaded library";
}

TEST_F(MailStoreImportTest, WithoutTheLibraryOrTheMemberTheProcessEnds) {
  EXPECT_DEATH(mail_store::InitCEDB(nullptr), "the agent needs InitCEDB of .*MailStore.dll, which is not there");
  Put("SystemData/dll/MailStore.dll", "no library");
  EXPECT_DEATH(mail_store::InitCEDB(nullptr), "InitCEDB");
  PutSampleLibrary("SystemData/dll/other.dll");
  std::filesystem::rename(root_ / "SystemData/dll/other.dll", root_ / "SystemData/dll/MailStore.dll");
  EXPECT_DEATH(mail_store::InitCEDB(nullptr), "InitCEDB") << "a library without the member";
  InstallLibrary(kMailStore, LibraryWith(&Seven));
  EXPECT_EQ(mail_store::InitCEDB(nullptr), 7);
  EXPECT_DEATH(mail_store::CloseCEDB(nullptr), "CloseCEDB");
  Start(root_);
  EXPECT_DEATH(mail_store::InitCEDB(nullptr), "InitCEDB") << "another handset";
}

}  // namespace
}  // namespace handset
