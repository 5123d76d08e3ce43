// Follows each run by its platform calls to know the step that a failure falls in.
#include "tests/support/fault_sweep.h"

namespace qv_test {
namespace {

constexpr char16_t kAnchorName[] = u"qvSyncAnchor.ini";

std::u16string NameOf(std::u16string_view path) {
  return std::u16string(path.substr(path.rfind(u'\\') + 1));
}

std::string Narrow(std::u16string_view name) {
  std::string narrow;
  for (const char16_t character : name) narrow.push_back(static_cast<char>(character));
  return narrow;
}

/// What the snapshot logs say before each run: one record that changed and many that are gone.
Bytes EarlierSnapshot() {
  Bytes snapshot = Words({1, 9, 0});
  for (std::uint32_t id = 1001; id <= 1070; ++id) Append(snapshot, Words({id, 1, 0}));
  return snapshot;
}

/// Says what a run must answer if the call just seen fails.
class StepWatcher {
 public:
  explicit StepWatcher(const FaultScript& run) : run_(run) {}

  void See(const handset::Call& call) {
    call_ = std::string(call.function);
    name_ = NameOf(call.path);
    size_ = call.size;
    is_unreported_ = run_.unreported.contains(name_);
    const unsigned time = ++times_[{call_, name_}];
    ++count_[call_];
    if (call_ == "CreateFileW") opened_last_ = name_;
    for (const StepBegin& step : run_.steps) {
      if (step.call.function != call_ || step.call.name != name_ || step.call.time != time) continue;
      is_behind_changes_ |= step.is_behind_changes;
      if (step.flag == kUnreported) {
        is_unreported_ = true;
      } else if (step.flag == kSnapshotRead) {
        step_ |= kSnapshotRead;
      } else {
        step_ = step.flag;
        no_memory_ = step.no_memory;
      }
    }
    if (call_ == "CloseHandle" && step_ != kNoStep) step_ &= ~kSnapshotRead;
    if (call_ == "WriteFile" && name_ == kAnchorName) anchor_is_kept_ = true;
  }

  const std::string& call() const { return call_; }
  /// Before the first step nothing but the anchor has been looked at.
  bool is_in_a_step() const { return step_ != kNoStep; }
  /// Nothing is run without a buffer for the anchor: this is told of every module.
  bool IsForTheAnchorsBuffer() const { return call_ == "realloc" && count_.at("realloc") == 1; }
  /// What need not be done if the call just seen fails, or the `store_call` that followed it.
  std::set<std::string> Excused(const std::string& store_call = {}) const;
  std::uint32_t step() const { return step_ == kNoStep ? 0 : step_; }
  bool is_behind_changes() const { return is_behind_changes_; }

  /// A fault that cuts short does not hurt where there is nothing to cut, or where the rest can be asked for.
  bool IsHarmless(handset::Fault fault) const {
    return fault == handset::Fault::kCutShort && (call_ == "ReadFile" || (call_ == "WriteFile" && size_ == 0));
  }

  /// The result without the direction's flag; 0 for what is not reported.
  std::uint32_t Expected() const {
    // malloc is what stores allocate with, which try again.
    static const std::set<std::string> kNotExamined = {"DeleteFileW", "PostMessageW",         "wcstombs",
                                                       "mbstowcs",    "SystemTimeToFileTime", "FileTimeToSystemTime",
                                                       "malloc"};
    if (call_ == "LoadLibraryW") return 1;
    if (IsForTheAnchorsBuffer()) return 16;
    const bool keeps_the_anchor = run_.mode < 4 && step_ == kNoStep && !anchor_is_kept_;
    if (keeps_the_anchor || is_unreported_ || name_ == kAnchorName || kNotExamined.contains(call_)) return 0;
    if (call_ == "GetProcAddressW") return step() | 2;
    if (call_ == "ReadFile" || call_ == "GetFileSize") return step() | 512;
    if (call_ == "realloc" && step_ == kNoStep) return run_.early_allocation;
    return step() | (call_ == "realloc" ? no_memory_ : 256);
  }

 private:
  const FaultScript& run_;
  std::string call_;
  std::u16string name_;
  std::u16string opened_last_;
  std::uint32_t size_ = 0;
  std::uint32_t step_ = kNoStep;
  std::uint32_t no_memory_ = 16;
  bool is_unreported_ = false;
  bool is_behind_changes_ = false;
  bool anchor_is_kept_ = false;
  std::map<std::pair<std::string, std::u16string>, unsigned> times_;
  std::map<std::string, unsigned> count_;
};

/// What a store is told of a table, as its calls begin.
std::array<std::string, 2> ApplyingCalls(std::size_t table) {
  return {"Insert " + std::to_string(table), "Update " + std::to_string(table)};
}

std::set<std::string> StepWatcher::Excused(const std::string& store_call) const {
  const SweptModule& module = run_.module;
  std::set<std::string> excused;
  if (store_call.empty()) excused.insert(Narrow(name_));
  const std::uint32_t flag = step() & ~kSnapshotRead;
  if (flag == kSnapshotWritten) excused.insert(Narrow(opened_last_));
  // Without a change list, or what empties the store, no table goes on; a store that does not delete is not waited for.
  const bool deletes = store_call.starts_with("Del") || (call_ == "GetProcAddressW" && name_ != module.delete_all);
  const bool is_about_all = !deletes && (flag == kChangeListApplied || name_ == module.delete_all);
  for (std::size_t i = 0; i < module.tables.size(); ++i) {
    const SweptTable& table = module.tables[i];
    const std::uint32_t applied = run_.mode == 3 ? table.applied : table.inserted;
    if (!is_about_all && flag != (run_.exporting ? table.exported : applied)) continue;
    if (run_.exporting) {
      excused.merge(std::set<std::string>{Narrow(NameOf(table.file)), Narrow(NameOf(module.change_list))});
    } else {
      for (const std::string& call : ApplyingCalls(i)) excused.insert(call);
    }
  }
  return excused;
}

/// The code that a failing entry point of this role comes out as.
std::uint32_t CodeOf(StoreRole role) {
  switch (role) {
    case StoreRole::kDeleteAll: return 3;
    case StoreRole::kCount: return 4;
    case StoreRole::kList: return 5;
    case StoreRole::kRead: return 6;
    case StoreRole::kInsert: return 7;
    case StoreRole::kUpdate: return 8;
    case StoreRole::kDelete: return 9;
  }
  return 0;
}

/// The code of a failing store call in a step; 0 for one that is not reported.
std::uint32_t CodeOf(const SweptModule& module, const ScriptedStore& store, const std::string& entry_point,
                     std::uint32_t step) {
  const auto& unflagged = module.unflagged_store_codes;
  if (const auto own = unflagged.find(entry_point); step == 0 && own != unflagged.end()) return own->second;
  if (const auto own = module.store_codes.find(entry_point); own != module.store_codes.end()) return own->second;
  const std::optional<StoreRole> role = store.RoleOf(entry_point);
  EXPECT_TRUE(role.has_value()) << "nobody said what " << entry_point << " comes out as";
  return role ? CodeOf(*role) : 0;
}

void AppendSteps(std::vector<StepBegin>& steps, const std::vector<StepBegin>& more) {
  steps.insert(steps.end(), more.begin(), more.end());
}

std::vector<StepBegin> ExportSteps(const SweptModule& module) {
  const SweptTable& main = module.tables.front();
  std::vector<StepBegin> steps = {{Opens(main.file), 0}};
  if (main.snapshot_log != nullptr) {
    steps.push_back({Opens(main.snapshot_log), kSnapshotWritten, {1, 2}});
    steps.push_back({Opens(main.snapshot_log, 2), kSnapshotWritten, {3}});
  }
  for (const SweptTable& table : module.tables) {
    if (table.export_begin) steps.push_back({*table.export_begin, table.exported});
    if (table.snapshot_log != nullptr) steps.push_back({Opens(table.snapshot_log), kSnapshotRead, {3}});
  }
  AppendSteps(steps, module.more_export_steps);
  return steps;
}

std::vector<StepBegin> RecoverSteps(const SweptModule& module) {
  std::vector<StepBegin> steps = {{LooksUp(module.delete_all), 0}, {Opens(module.change_list), kChangeListApplied}};
  for (const SweptTable& table : module.tables) {
    steps.push_back({Opens(table.file), table.inserted, {1, 2, 4, 5}});
    steps.push_back({Opens(table.file), table.applied, {3}});
  }
  const char16_t* const log = module.tables.front().snapshot_log;
  if (log != nullptr) steps.push_back({Opens(log), kSnapshotWritten});
  if (module.id_map_written != kUnreported) steps.push_back({Opens(module.id_map), module.id_map_written});
  AppendSteps(steps, module.more_recover_steps);
  return steps;
}

FaultScript ScriptOf(const SweptModule& module, const char* name, bool exporting, std::uint32_t mode) {
  FaultScript script = {.name = name,
                        .exporting = exporting,
                        .mode = mode,
                        .module = module,
                        .steps = exporting ? ExportSteps(module) : RecoverSteps(module),
                        .unreported = module.unreported,
                        .early_allocation = exporting ? 0 : module.early_allocation};
  std::erase_if(script.steps, [&](const StepBegin& step) { return !step.modes.contains(mode); });
  if (module.id_map_written == kUnreported) script.unreported.insert(NameOf(module.id_map));
  return script;
}

}  // namespace

PlatformCall Opens(std::u16string_view file, unsigned time) {
  return {"CreateFileW", NameOf(file), time};
}

PlatformCall Deletes(std::u16string_view file) {
  return {"DeleteFileW", NameOf(file)};
}

PlatformCall LooksUp(std::u16string_view entry_point, unsigned time) {
  return {"GetProcAddressW", std::u16string(entry_point), time};
}

std::vector<FaultScript> ScriptsOf(const SweptModule& module) {
  return {
      ScriptOf(module, "FullExport", true, 1),          ScriptOf(module, "ReplaceExport", true, 2),
      ScriptOf(module, "IncrementalExport", true, 3),   ScriptOf(module, "PlainExport", true, 4),
      ScriptOf(module, "FullRecover", false, 1),        ScriptOf(module, "ReplaceRecover", false, 2),
      ScriptOf(module, "IncrementalRecover", false, 3), ScriptOf(module, "PlainRecover", false, 4),
      ScriptOf(module, "LocalRecover", false, 5),
  };
}

void PrintTo(const FaultScript& script, std::ostream* out) {
  *out << script.name;
}

std::string NameOfScript(const testing::TestParamInfo<FaultScript>& info) {
  return info.param.name;
}

FaultSweepTest::FaultSweepTest() {
  if (!GetParam().module.goes_on) return;
  const std::unique_ptr<ScriptedStore> store = Prepare();
  EXPECT_EQ(Perform().code, 0u);
  all_deeds_ = DeedsOf(*store);
}

/// The same each time: the store, an anchor "5", snapshots, and for a recover what the desktop sends.
std::unique_ptr<ScriptedStore> FaultSweepTest::Prepare() {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(handset::HostPath(u"\\"))) {
    if (entry.is_regular_file()) std::filesystem::remove(entry.path());
  }
  const bool exporting = GetParam().exporting;
  const SweptModule& module = GetParam().module;
  WriteText(kAnchorIni, "[ANCHORDATE]\r\n" + module.anchor_key + " = 5");
  for (const SweptTable& table : module.tables) {
    if (table.snapshot_log != nullptr) WriteFile(table.snapshot_log, EarlierSnapshot());
    if (!exporting) WriteFile(table.file, table.sent);
  }
  if (!exporting) WriteFile(module.change_list, module.changes);
  if (!exporting && module.config_file != nullptr) WriteFile(module.config_file, module.config);
  return module.make_store();
}

Answer FaultSweepTest::Perform() {
  const FaultScript& script = GetParam();
  const std::int32_t module = script.module.id;
  return script.exporting ? Export(module, script.mode, u"5") : Recover(module, script.mode);
}

void FaultSweepTest::ExpectAnswer(const Answer& answer, std::uint32_t result) {
  EXPECT_EQ(answer.code, result == 0 ? 0 : result | (GetParam().exporting ? 0x10000000 : 0x20000000));
  EXPECT_EQ(answer.returned, answer.code & 0x0FFFFFFF);
  const handset::Census left = handset::TakeCensus();
  EXPECT_EQ(left.files + left.libraries + left.blocks + left.semaphores, 0u);
}

void FaultSweepTest::ExpectFailure(const Answer& answer, std::uint32_t result, bool is_behind_changes) {
  const bool exporting = GetParam().exporting;
  const SweptModule& module = GetParam().module;
  const bool is_told = exporting ? module.exports_are_told : module.recovers_are_told;
  ExpectAnswer(answer, is_told ? result : 0);
  const std::uint32_t step = result & 0x0F000000;
  const bool all_was_applied = result == 0 || step == kSnapshotWritten || step == kIdMapWritten;
  if (exporting || all_was_applied) return;
  for (const SweptTable& table : module.tables) EXPECT_TRUE(Exists(table.file)) << handset::HostPath(table.file);
  EXPECT_EQ(Exists(module.change_list), !is_behind_changes);
}

FaultSweepTest::Deeds FaultSweepTest::DeedsOf(const ScriptedStore& store) {
  Deeds deeds;
  const bool exporting = GetParam().exporting;
  for (const auto& [path, bytes] : AllFiles()) {
    // What a recover writes depends on which records the store took.
    const std::string said = exporting ? std::string(bytes.begin(), bytes.end()) : "is new";
    deeds[std::filesystem::path(path).filename().string()] = bytes == EarlierSnapshot() ? "is as it was" : said;
  }
  for (std::size_t table = 0; table < GetParam().module.tables.size(); ++table) {
    for (const std::string& told : ApplyingCalls(table)) {
      const auto is_it = [&](const std::string& call) { return call.starts_with(told); };
      deeds[told] = std::to_string(std::ranges::count_if(store.calls, is_it)) + " times";
    }
  }
  return deeds;
}

void FaultSweepTest::ExpectTheRestWasDone(const ScriptedStore& store, const std::set<std::string>& excused) const {
  Deeds done = DeedsOf(store);
  Deeds expected = all_deeds_;
  for (const std::string& deed : excused) {
    done.erase(deed);
    expected.erase(deed);
  }
  EXPECT_EQ(done, expected);
}

unsigned FaultSweepTest::FailEach(handset::Fault fault, const std::function<void(unsigned n)>& fail_call) {
  constexpr unsigned kNeverThrough = 2000;
  for (unsigned n = 1; n < kNeverThrough; ++n) {
    const std::unique_ptr<ScriptedStore> store = Prepare();
    StepWatcher watcher(GetParam());
    handset::Observe([&](const handset::Call& call) {
      if (!handset::FaultHappened()) watcher.See(call);
    });
    fail_call(n);
    const Answer answer = Perform();
    handset::Observe({});
    if (!handset::FaultHappened()) {
      EXPECT_EQ(answer.code, 0u) << "of a run in which nothing fails";
      return n - 1;
    }
    SCOPED_TRACE(std::string(GetParam().name) + ", call " + std::to_string(n) + ", " + watcher.call());
    if (GetParam().module.goes_on) {
      ExpectAnswer(answer, watcher.IsForTheAnchorsBuffer() ? 16 : 0);
      if (watcher.is_in_a_step()) ExpectTheRestWasDone(*store, watcher.Excused());
      continue;
    }
    ExpectFailure(answer, watcher.IsHarmless(fault) ? 0 : watcher.Expected(), watcher.is_behind_changes());
  }
  ADD_FAILURE() << "the run never gets through";
  return kNeverThrough;
}

void FaultSweepTest::FailEachPlatformCall() {
  const unsigned failed = FailEach(handset::Fault::kFail, [](unsigned n) { handset::FailCall(n); });
  EXPECT_GE(failed, 20u) << "hardly any call was reached";
}

void FaultSweepTest::CutEachTransferShort() {
  unsigned cut = 0;
  for (const char* const function : {"ReadFile", "WriteFile"}) {
    cut += FailEach(handset::Fault::kCutShort,
                    [&](unsigned n) { handset::FailCallOf(function, n, handset::Fault::kCutShort); });
  }
  EXPECT_GE(cut, 3u) << "hardly any transfer was reached";
}

void FaultSweepTest::FailEachStoreCall() {
  unsigned n = 1;
  for (;; ++n) {
    ASSERT_LT(n, 200u) << "the run never gets through";
    const std::unique_ptr<ScriptedStore> store = Prepare();
    StepWatcher watcher(GetParam());
    std::string failed;
    handset::Observe([&](const handset::Call& call) {
      if (!store->failed_a_call) {
        watcher.See(call);
      } else if (failed.empty()) {
        failed = store->calls.back();
      }
    });
    store->fail_call = n;
    const Answer answer = Perform();
    handset::Observe({});
    if (!store->failed_a_call) break;
    SCOPED_TRACE(std::string(GetParam().name) + ", " + failed);
    if (GetParam().module.goes_on) {
      ExpectAnswer(answer, 0);
      ExpectTheRestWasDone(*store, watcher.Excused(failed));
      continue;
    }
    const std::uint32_t code = CodeOf(GetParam().module, *store, failed.substr(0, failed.find(' ')), watcher.step());
    ExpectFailure(answer, code == 0 ? 0 : watcher.step() | code, watcher.is_behind_changes());
  }
  EXPECT_GT(n, 2u) << "hardly any call was reached";
}

void FaultSweepTest::FailToLoadTheStore() {
  constexpr std::uintptr_t kAllOnes = 0xFFFFFFFF;
  for (const std::uintptr_t handle : {std::uintptr_t{0}, kAllOnes}) {
    const std::unique_ptr<ScriptedStore> store = Prepare();
    handset::InstallLibraryHandle(store->library(), reinterpret_cast<coredll::HMODULE>(handle));
    const auto before = AllFiles();
    if (GetParam().module.goes_on) {
      ExpectAnswer(Perform(), 0);
    } else {
      ExpectFailure(Perform(), 1);
    }
    EXPECT_EQ(AllFiles(), before);
  }
}

TEST_P(FaultSweepTest, EachFailingPlatformCallIsReported) {
  FailEachPlatformCall();
}

TEST_P(FaultSweepTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  CutEachTransferShort();
}

TEST_P(FaultSweepTest, EachFailingStoreCallIsReported) {
  FailEachStoreCall();
}

TEST_P(FaultSweepTest, AStoreThatDoesNotLoadIsReported) {
  FailToLoadTheStore();
}

}  // namespace qv_test
