// What the three modules of settings have in common: mode and anchor mean nothing to them, they touch no file but
// theirs, and no failure of the platform leaves anything open or is taken for the end of a file.
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <random>

#include "tests/support/run_events.h"
#include "tests/support/scripted_settings_stores.h"

namespace qv_test {
namespace {

using testing::IsEmpty;

struct SettingsFile {
  std::u16string name;
  std::size_t size;
  std::string applied_by;  ///< The last call that it is restored with.

  std::u16string Path() const { return std::u16string(kSync) + u"\\" + name; }
};

/// What a failure comes out as.
struct Codes {
  std::uint32_t entry_point_missing = 1;
  std::uint32_t no_memory = 1;
  std::uint32_t file_failed = 1;
  std::uint32_t file_unreadable = 1;
};

struct SettingsModule {
  const char* name;
  int id;
  std::unique_ptr<ScriptedSettingsStore> (*make_store)();
  std::map<std::string, std::size_t> structures;
  std::vector<SettingsFile> files;
  Codes codes = {};
  bool deletes_files = true;
  // Who hears of failures; the others are told 0. Every local export is told.
  bool desktop_hears_of_exports = false;
  bool desktop_hears_of_recovers = true;
  bool handset_hears_of_recovers = false;
};

void PrintTo(const SettingsModule& module, std::ostream* out) {
  *out << module.name;
}

template <typename Store>
std::unique_ptr<ScriptedSettingsStore> MakeStore() {
  return std::make_unique<Store>();
}

SettingsModule Personal() {
  return {.name = "Personal",
          .id = 14,
          .make_store = MakeStore<ScriptedProfileStore>,
          .structures = {{"profile 1", 3152},
                         {"profile 2", 3152},
                         {"profile 3", 3152},
                         {"profile 4", 3152},
                         {"profile 5", 3152},
                         {"profile 6", 3152},
                         {"display", 44}},
          .files = {{u"personinfo.tbl", 6 * 3168, "fnModelSetting_Restore 6"},
                    {u"dispinfo.tbl", 68, "fnDispSetting_Restore"}}};
}

SettingsModule Browser() {
  return {.name = "Browser",
          .id = 15,
          .make_store = MakeStore<ScriptedBrowserStore>,
          .structures = {{"browser", 2076}},
          .files = {{u"iesetinfo.tbl", 2076, "fnIESetting_Restore"}},
          .desktop_hears_of_recovers = false};
}

SettingsModule Clock() {
  return {.name = "Clock",
          .id = 16,
          .make_store = MakeStore<ScriptedAlarmStore>,
          .structures = {{"clock", 2336}},
          .files = {{u"clockinfo.tbl", 3108, "Sync_UpdateClockInfo"}},
          .codes = {.entry_point_missing = 2, .no_memory = 16, .file_failed = 256, .file_unreadable = 512},
          .deletes_files = false,
          .desktop_hears_of_exports = true,
          .handset_hears_of_recovers = true};
}

/// Who asks for what.
enum class Entry : std::uint8_t { kDesktopExport, kLocalExport, kDesktopRecover, kLocalRecover };

bool IsExport(Entry entry) {
  return entry == Entry::kDesktopExport || entry == Entry::kLocalExport;
}
bool IsDesktops(Entry entry) {
  return entry == Entry::kDesktopExport || entry == Entry::kDesktopRecover;
}

constexpr Entry kEntries[] = {Entry::kDesktopExport, Entry::kLocalExport, Entry::kDesktopRecover, Entry::kLocalRecover};
/// Those that there are, and some that there are not.
constexpr std::uint32_t kModes[] = {0, 1, 2, 3, 4, 5, 6, 0x10000003, 0xFFFFFFFF};

class SettingsModulesTest : public AgentTest, public testing::WithParamInterface<SettingsModule> {
 protected:
  const SettingsModule& Module() const { return GetParam(); }

  /// Structures of noise, in which texts end here and there.
  void FillStore() {
    for (const auto& [name, size] : Module().structures) {
      Bytes& bytes = store_->structures[name];
      bytes.resize(size);
      for (std::uint8_t& byte : bytes) byte = random_() % 4 == 0 ? 0 : static_cast<std::uint8_t>(random_());
    }
  }

  /// A store full of noise and the files of an earlier export, the same each time.
  void Prepare() {
    random_.seed(20061211);
    FillStore();
    EXPECT_EQ(LocalExport(Module().id), 0u);
    store_->calls.clear();
  }

  std::uint32_t Run(Entry entry) {
    const int id = Module().id;
    switch (entry) {
      case Entry::kDesktopExport: return Export(id, 1).code;
      case Entry::kLocalExport: return LocalExport(id);
      case Entry::kDesktopRecover: return Recover(id, 1).code;
      case Entry::kLocalRecover: return LocalRecover(id);
    }
    return 0;
  }

  /// What that caller is told of a module's code.
  std::uint32_t Told(Entry entry, std::uint32_t code) const {
    const std::uint32_t flag = IsExport(entry) ? 0x10000000 : 0x20000000;
    const bool is_told = entry == Entry::kDesktopExport    ? Module().desktop_hears_of_exports
                         : entry == Entry::kDesktopRecover ? Module().desktop_hears_of_recovers
                         : entry == Entry::kLocalRecover   ? Module().handset_hears_of_recovers
                                                           : true;
    return code == 0 || !is_told ? 0 : code | flag;
  }

  /// The code that a failure of this call comes out as; 0 for one that does no harm.
  std::uint32_t CodeOf(const handset::Call& call, handset::Fault fault) const {
    const Codes& codes = Module().codes;
    if (call.function == "LoadLibraryW") return 1;
    if (call.function == "GetProcAddressW") return codes.entry_point_missing;
    if (call.function == "realloc") return codes.no_memory;
    if (call.function == "ReadFile") return fault == handset::Fault::kCutShort ? 0 : codes.file_unreadable;
    if (call.function == "CreateFileW" || call.function == "WriteFile") return codes.file_failed;
    EXPECT_TRUE(call.function == "DeleteFileW" || call.function == "PostMessageW") << call.function;
    return 0;
  }

  /// Fails call 1, 2, 3, ... until nothing fails any more.
  void FailEachCall(Entry entry, handset::Fault fault);
  void ExpectNothingLost(Entry entry, std::uint32_t code, bool failed_to_delete) const;

  bool WasCalled(const std::string& call) const {
    return std::ranges::find(store_->calls, call) != store_->calls.end();
  }

  std::mt19937 random_{20061211};
  std::unique_ptr<ScriptedSettingsStore> store_ = Module().make_store();
};

INSTANTIATE_TEST_SUITE_P(Modules, SettingsModulesTest, testing::Values(Personal(), Browser(), Clock()),
                         [](const auto& module) { return std::string(module.param.name); });

// --- Modes, anchors, files ---

TEST_P(SettingsModulesTest, ModeAndAnchorComeBackAsTheyWereReceived) {
  for (const std::uint32_t mode : kModes) {
    for (const std::u16string_view anchor : {u"", u"77", kNowAnchor}) {
      Prepare();
      const Answer exported = Export(Module().id, mode, anchor);
      EXPECT_EQ(exported.code, 0u);
      EXPECT_EQ(exported.mode, mode);
      EXPECT_EQ(exported.anchor, anchor);
      const Answer recovered = Recover(Module().id, mode, anchor);
      EXPECT_EQ(recovered.code, 0u);
      EXPECT_EQ(recovered.mode, mode);
      EXPECT_EQ(recovered.anchor, anchor);
    }
  }
  EXPECT_FALSE(Exists(kAnchorIni));
}

TEST_P(SettingsModulesTest, EveryModeMovesTheSame) {
  Prepare();
  const auto files = AllFiles();
  const auto structures = store_->structures;
  EXPECT_EQ(Run(Entry::kLocalRecover), 0u);
  const auto recovered = store_->structures;
  for (const std::uint32_t mode : kModes) {
    store_->structures = structures;
    Export(Module().id, mode, u"5");
    EXPECT_EQ(AllFiles(), files) << mode;
    Recover(Module().id, mode, u"5");
    EXPECT_EQ(store_->structures, recovered) << mode;
  }
}

TEST_P(SettingsModulesTest, AnchorsOfOthersAreLeftAlone) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSMS = 5");
  Prepare();
  std::vector<Opening> openings = OpeningsOf([&] {
    for (const std::uint32_t mode : kModes) Export(Module().id, mode, u"5");
    for (const std::uint32_t mode : kModes) Recover(Module().id, mode, u"5");
  });
  for (const Opening& opening : openings) EXPECT_NE(opening.first, kAnchorIni);
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nSMS = 5");
}

TEST_P(SettingsModulesTest, OnlyItsFilesAreMadeAndTheyReplaceEarlierOnes) {
  for (const SettingsFile& file : Module().files) WriteFile(file.Path(), Bytes(file.size + 1000, 0xEE));
  EXPECT_EQ(Run(Entry::kLocalExport), 0u);
  EXPECT_EQ(AllFiles().size(), Module().files.size());
  for (const SettingsFile& file : Module().files) EXPECT_EQ(ReadFile(file.Path()).size(), file.size);
}

TEST_P(SettingsModulesTest, FilesAreOpenedAsOthersMayReadAlong) {
  std::vector<Opening> made;
  std::vector<Opening> read;
  for (const SettingsFile& file : Module().files) made.emplace_back(file.Path(), kWriter);
  for (const SettingsFile& file : Module().files) read.emplace_back(file.Path(), kReader);
  EXPECT_EQ(OpeningsOf([&] { Run(Entry::kDesktopExport); }), made);
  EXPECT_EQ(OpeningsOf([&] { Run(Entry::kDesktopRecover); }), read);
}

TEST_P(SettingsModulesTest, WhatWasRecoveredIsExportedAgain) {
  for (int trip = 0; trip < 40; ++trip) {
    FillStore();
    ASSERT_EQ(Run(Entry::kLocalExport), 0u);
    const auto before = AllFiles();
    store_->structures.clear();
    Run(Entry::kDesktopRecover);
    ASSERT_EQ(store_->structures.size(), Module().structures.size());
    ASSERT_EQ(Run(Entry::kLocalExport), 0u);
    ASSERT_EQ(AllFiles(), before) << trip;
  }
}

// --- Directories and requests ---

TEST_P(SettingsModulesTest, ADirectoryMayBeOf259Characters) {
  const std::u16string sync = kSync;
  const std::u16string longest = std::u16string(259 - sync.size(), u'\\') + sync;
  const int id = Module().id;
  EXPECT_EQ(LocalExport(id, longest.c_str()), 0u);
  for (const SettingsFile& file : Module().files) EXPECT_TRUE(Exists(file.Path()));
  EXPECT_EQ(Recover(id, 1, u"", longest).code, 0u);
  EXPECT_TRUE(WasCalled(Module().files.back().applied_by));
}

TEST_P(SettingsModulesTest, ADirectoryThatIsTooLongMovesNothing) {
  const std::u16string sync = kSync;
  const std::u16string too_long = std::u16string(260 - sync.size(), u'\\') + sync;
  const std::uint32_t code = Module().codes.file_failed;
  const int id = Module().id;
  Prepare();
  const auto before = AllFiles();
  EXPECT_EQ(LocalExport(id, too_long.c_str()), Told(Entry::kLocalExport, code));
  EXPECT_EQ(Export(id, 1, u"", too_long).code, Told(Entry::kDesktopExport, code));
  EXPECT_EQ(LocalRecover(id, too_long.c_str()), Told(Entry::kLocalRecover, code));
  EXPECT_EQ(Recover(id, 1, u"", too_long).code, Told(Entry::kDesktopRecover, code));
  EXPECT_THAT(store_->calls, IsEmpty());
  EXPECT_EQ(AllFiles(), before);
}

TEST_P(SettingsModulesTest, ADirectoryThatIsNotThereIsReported) {
  const std::uint32_t code = Module().codes.file_failed;
  EXPECT_EQ(LocalExport(Module().id, u"\\none"), Told(Entry::kLocalExport, code));
  EXPECT_EQ(Recover(Module().id, 1, u"", u"\\none").code, Told(Entry::kDesktopRecover, code));
  EXPECT_THAT(store_->calls, IsEmpty());
}

TEST_P(SettingsModulesTest, NoDirectoryIsTheRoot) {
  EXPECT_EQ(LocalExport(Module().id, nullptr), 0u);
  for (const SettingsFile& file : Module().files) EXPECT_TRUE(Exists(u"\\" + file.name));
  EXPECT_EQ(LocalRecover(Module().id, nullptr), 0u);
  EXPECT_TRUE(WasCalled(Module().files.back().applied_by));
}

TEST_P(SettingsModulesTest, RequestsAndDirectoriesMayLieAtOddAddresses) {
  Prepare();
  const auto files = AllFiles();
  alignas(4) std::array<std::uint8_t, 64> place{};
  for (const std::size_t shift : {1u, 2u, 3u}) {
    std::memcpy(place.data() + shift, kSync, sizeof(kSync));
    const auto* const directory = reinterpret_cast<const char16_t*>(place.data() + shift);
    EXPECT_EQ(LocalExport(Module().id, directory), 0u);
    EXPECT_EQ(AllFiles(), files);
    store_->calls.clear();
    EXPECT_EQ(LocalRecover(Module().id, directory), 0u);
    EXPECT_TRUE(WasCalled(Module().files.back().applied_by));

    for (const char* const name : {"fnQV_ExportTabs", "fnQV_RecovTabs"}) {
      Bytes shifted(shift);
      Append(shifted, Request(Module().id, 3, u"77", kSync));
      RecordingStream stream;
      Prepare();
      EXPECT_EQ(Agent().Export<RapiFunction>(name)(0, shifted.data() + shift, nullptr, nullptr, &stream), 0u);
      EXPECT_THAT(stream.calls, testing::ElementsAre("Write 48", "Release"));
      EXPECT_FALSE(store_->calls.empty());
    }
  }
}

// --- Failures ---

TEST_P(SettingsModulesTest, AStoreThatDoesNotLoadIsReportedToWhomItConcerns) {
  Prepare();
  const auto before = AllFiles();
  for (const std::uintptr_t handle : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    handset::InstallLibraryHandle(store_->library(), reinterpret_cast<coredll::HMODULE>(handle));
    for (const Entry entry : kEntries) EXPECT_EQ(Run(entry), Told(entry, 1));
    EXPECT_EQ(AllFiles(), before);
  }
}

void SettingsModulesTest::ExpectNothingLost(Entry entry, std::uint32_t code, bool failed_to_delete) const {
  const handset::Census left = handset::TakeCensus();
  EXPECT_EQ(left.files + left.libraries + left.blocks + left.semaphores, 0u);
  if (IsExport(entry)) return;
  EXPECT_EQ(WasCalled(Module().files.back().applied_by), code == 0);
  for (const SettingsFile& file : Module().files) {
    const bool is_done_with = Module().deletes_files && WasCalled(file.applied_by);
    EXPECT_TRUE(failed_to_delete || Exists(file.Path()) == !is_done_with);
  }
}

void SettingsModulesTest::FailEachCall(Entry entry, handset::Fault fault) {
  Prepare();
  const auto before = AllFiles();
  unsigned n = 1;
  for (;; ++n) {
    ASSERT_LT(n, 200u) << "the run never gets through";
    Prepare();
    std::uint32_t code = 0;
    std::string function;
    unsigned blocks = 0;
    handset::Observe([&](const handset::Call& call) {
      const bool can_fail = call.function != "CloseHandle" && call.function != "FreeLibrary" && call.function != "free";
      if (handset::FaultHappened() || !can_fail) return;
      function = call.function;
      blocks += function == "realloc" ? 1 : 0;
      code = CodeOf(call, fault);
    });
    handset::FailCall(n, fault);
    const std::uint32_t told = Run(entry);
    handset::Observe({});
    handset::FailCall(0);
    if (!handset::FaultHappened()) break;
    SCOPED_TRACE(Module().name + std::string(", call ") + std::to_string(n) + ", " + function);
    if (IsDesktops(entry) && function == "realloc" && blocks == 1) {  // The anchor's, without which no module is run.
      EXPECT_EQ(told, IsExport(entry) ? 0x10000010u : 0x20000010u);
      EXPECT_THAT(store_->calls, IsEmpty());
      EXPECT_EQ(AllFiles(), before);
      continue;
    }
    EXPECT_EQ(told, Told(entry, code));
    ExpectNothingLost(entry, code, function == "DeleteFileW");
    EXPECT_TRUE(!IsExport(entry) || code != 0 || AllFiles() == before);
  }
  EXPECT_GT(n, 5u) << "hardly any call was reached";
}

TEST_P(SettingsModulesTest, EachFailingPlatformCallIsReportedAndNothingIsLost) {
  for (const Entry entry : kEntries) FailEachCall(entry, handset::Fault::kFail);
}

TEST_P(SettingsModulesTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  for (const Entry entry : kEntries) FailEachCall(entry, handset::Fault::kCutShort);
}

TEST_P(SettingsModulesTest, ReadsThatComeInPartsGiveTheWhole) {
  Prepare();
  Run(Entry::kDesktopRecover);
  const auto expected = store_->structures;
  for (unsigned time = 1; time <= 8; ++time) {
    Prepare();
    handset::FailCallOf("ReadFile", time, handset::Fault::kCutShort);
    EXPECT_EQ(Run(Entry::kDesktopRecover), 0u);
    EXPECT_EQ(store_->structures, expected) << time;
    handset::FailCall(0);
  }
}

}  // namespace
}  // namespace qv_test
