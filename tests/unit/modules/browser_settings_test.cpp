// What a recover of the browser's settings answers: 1 in every case, which no export passes on to its caller, so only
// here can it be seen to hold.
#include "modules/settings/browser_settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "entry/dispatch.h"
#include "host/handset/handset.h"

namespace qv {
namespace {

constexpr char16_t kDirectory[] = u"\\sync";
constexpr char16_t kFile[] = u"\\sync\\iesetinfo.tbl";
constexpr std::size_t kSize = 2076;

unsigned g_restored = 0;

void Restore(const std::uint8_t* structure) {
  g_restored += structure[0];
}

class BrowserSettingsTest : public testing::Test {
 protected:
  BrowserSettingsTest() {
    std::string name = (std::filesystem::temp_directory_path() / "handset-XXXXXX").string();
    root_ = mkdtemp(name.data());
    handset::Start(root_);
    std::filesystem::create_directories(handset::HostPath(kDirectory));
    std::ofstream(handset::HostPath(kFile), std::ios::binary) << "a" << std::string(kSize - 1, '\0');
    g_restored = 0;
  }
  ~BrowserSettingsTest() override {
    EXPECT_EQ(handset::TakeCensus(), handset::Census{});
    std::filesystem::remove_all(root_);
  }

  static void InstallStore(const handset::EntryPoints& entry_points) {
    handset::InstallLibrary(u"BrowserSettings.dll", entry_points);
  }
  static void InstallWholeStore() {
    InstallStore({{u"fnIESetting_Restore", reinterpret_cast<coredll::FARPROC>(&Restore)}});
  }
  static bool FileIsThere() { return std::filesystem::exists(handset::HostPath(kFile)); }
  static std::uint32_t Recovered() {
    return static_cast<std::uint32_t>(RecoverModule(*FindModule(15), SyncMode::kFull, nullptr, kDirectory));
  }

 private:
  std::filesystem::path root_;
};

TEST_F(BrowserSettingsTest, ARecoverThatSucceedsAnswersOne) {
  InstallWholeStore();
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(g_restored, unsigned{'a'});
  EXPECT_FALSE(FileIsThere());
}

TEST_F(BrowserSettingsTest, ARecoverWithoutAFileAnswersOne) {
  InstallWholeStore();
  std::filesystem::remove(handset::HostPath(kFile));
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(g_restored, 0u);
}

TEST_F(BrowserSettingsTest, ARecoverWithoutAStoreAnswersOne) {
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_TRUE(FileIsThere());
}

TEST_F(BrowserSettingsTest, ARecoverWithoutTheStoresEntryPointAnswersOne) {
  InstallStore({});
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_TRUE(FileIsThere());
}

}  // namespace
}  // namespace qv
