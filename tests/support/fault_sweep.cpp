// Follows each run by its platform calls to know the step that a failure falls in.
#include "tests/support/fault_sweep.h"

#include <map>

namespace qv_test {
namespace {

constexpr char16_t kAnchorName[] = u"qvSyncAnchor.ini";
constexpr std::uint32_t kSnapshotWritten = 0x5000000;
constexpr std::uint32_t kIdMapWritten = 0x6000000;

/// Says what a run must answer if the call just seen fails.
class StepWatcher {
 public:
  explicit StepWatcher(const FaultScript& run) : run_(run) {}

  void See(const handset::Call& call) {
    call_ = std::string(call.function);
    name_ = std::u16string(call.path.substr(call.path.rfind(u'\\') + 1));
    size_ = call.size;
    is_unreported_ = run_.unreported.contains(name_);
    const unsigned time = ++times_[{call_, name_}];
    ++count_[call_];
    for (const StepBegin& step : run_.steps) {
      if (step.function != call_ || step.name != name_ || step.time != time) continue;
      if (step.flag == kUnreported) {
        is_unreported_ = true;
      } else {
        step_ = step.flag;
      }
    }
    if (call_ == "CloseHandle" && step_ != kNoStep) step_ &= ~kSnapshotRead;
    if (call_ == "WriteFile" && name_ == kAnchorName) anchor_is_kept_ = true;
  }

  const std::string& call() const { return call_; }
  std::uint32_t step() const { return step_ == kNoStep ? 0 : step_; }

  /// A fault that cuts short does not hurt where there is nothing to cut, or where the rest can be asked for.
  bool IsHarmless(handset::Fault fault) const {
    return fault == handset::Fault::kCutShort && (call_ == "ReadFile" || (call_ == "WriteFile" && size_ == 0));
  }

  /// The result without the direction's flag; 0 for what is not reported.
  std::uint32_t Expected() const {
    // malloc is what stores allocate with, which try again.
    static const std::set<std::string> kNotExamined = {"DeleteFileW", "PostMessageW",         "wcstombs",
                                                       "mbstowcs",    "SystemTimeToFileTime", "malloc"};
    if (call_ == "LoadLibraryW") return 1;
    if (call_ == "realloc" && count_.at("realloc") == 1) return 16;  // The anchor's buffer.
    const bool keeps_the_anchor = run_.mode < 4 && step_ == kNoStep && !anchor_is_kept_;
    if (keeps_the_anchor || is_unreported_ || name_ == kAnchorName || kNotExamined.contains(call_)) return 0;
    if (call_ == "GetProcAddressW") return step() | 2;
    if (call_ == "ReadFile" || call_ == "GetFileSize") return step() | 512;
    if (call_ == "realloc" && step_ == kNoStep) return run_.early_allocation;
    return step() | (call_ == "realloc" ? 16 : 256);
  }

 private:
  const FaultScript& run_;
  std::string call_;
  std::u16string name_;
  std::uint32_t size_ = 0;
  std::uint32_t step_ = kNoStep;
  bool is_unreported_ = false;
  bool anchor_is_kept_ = false;
  std::map<std::pair<std::string, std::u16string>, unsigned> times_;
  std::map<std::string, unsigned> count_;
};

}  // namespace

void PrintTo(const FaultScript& script, std::ostream* out) {
  *out << script.name;
}

std::string NameOfScript(const testing::TestParamInfo<FaultScript>& info) {
  return info.param.name;
}

std::unique_ptr<ScriptedStore> FaultSweepTest::Prepare() {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(handset::HostPath(u"\\"))) {
    if (entry.is_regular_file()) std::filesystem::remove(entry.path());
  }
  return GetParam().prepare();
}

Answer FaultSweepTest::Perform() {
  const FaultScript& script = GetParam();
  return script.exporting ? Export(script.module_id, script.mode, u"5") : Recover(script.module_id, script.mode);
}

void FaultSweepTest::ExpectFailure(const Answer& answer, std::uint32_t result) {
  const std::uint32_t flag = GetParam().exporting ? 0x10000000 : 0x20000000;
  EXPECT_EQ(answer.code, result == 0 ? 0 : result | flag);
  EXPECT_EQ(answer.returned, answer.code & 0x0FFFFFFF);
  const handset::Census left = handset::TakeCensus();
  EXPECT_EQ(left.files + left.libraries + left.blocks + left.semaphores, 0u);
  const std::uint32_t step = answer.code & 0x0F000000;
  const bool all_was_applied = answer.code == 0 || step == kSnapshotWritten || step == kIdMapWritten;
  if (GetParam().exporting || all_was_applied) return;
  for (const char16_t* const file : GetParam().desktop_files) EXPECT_TRUE(Exists(file)) << handset::HostPath(file);
}

void FaultSweepTest::FailEachPlatformCall(handset::Fault fault) {
  unsigned n = 1;
  for (;; ++n) {
    ASSERT_LT(n, 2000u) << "the run never gets through";
    const std::unique_ptr<ScriptedStore> store = Prepare();
    StepWatcher watcher(GetParam());
    handset::Observe([&](const handset::Call& call) {
      if (!handset::FaultHappened()) watcher.See(call);
    });
    handset::FailCall(n, fault);
    const Answer answer = Perform();
    handset::Observe({});
    if (!handset::FaultHappened()) break;
    SCOPED_TRACE(std::string(GetParam().name) + ", call " + std::to_string(n) + ", " + watcher.call());
    ExpectFailure(answer, watcher.IsHarmless(fault) ? 0 : watcher.Expected());
  }
  EXPECT_GT(n, 20u) << "hardly any call was reached";
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
    const std::uint32_t code = GetParam().store_code(failed.substr(0, failed.find(' ')), watcher.step());
    ExpectFailure(answer, code == 0 ? 0 : watcher.step() | code);
  }
  EXPECT_GT(n, 3u) << "hardly any call was reached";
}

}  // namespace qv_test
