// Fail call 1, 2, 3, ... until nothing fails any more: of the platform, and of the store. Each failure must come out as
// its documented code with the flag of its step, leave nothing open, and cost nothing of what the desktop placed.
#include <map>
#include <set>

#include "tests/support/schedule_records.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

struct Scenario {
  const char* name;
  bool exporting;
  std::uint32_t mode;

  bool IsIncremental() const { return mode == 3; }
  bool IsRemembered() const { return mode < 4; }
};

constexpr std::uint32_t kSnapshotRead = 0x100000;
constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kEntriesExported = 0x1000000;
constexpr std::uint32_t kGroupsExported = 0x2000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;

/// Follows a run by its platform calls, and says what it must answer if the call just seen fails.
class StepWatcher {
 public:
  explicit StepWatcher(const Scenario& run) : run_(run) {}

  void See(const handset::Call& call) {
    call_ = std::string(call.function);
    path_ = std::u16string(call.path.substr(call.path.rfind(u'\\') + 1));
    size_ = call.size;
    ++count_[call_];
    if (call_ == "CreateFileW") step_ = StepOfOpening(++openings_[path_]);
    if (call_ == "GetProcAddressW") step_ = StepOfLookUp();
    if (call_ == "CloseHandle" && step_ != kNoStep) step_ &= ~kSnapshotRead;
    if (call_ == "WriteFile" && path_ == kAnchorName) anchor_is_kept_ = true;
  }

  const std::string& call() const { return call_; }

  /// A fault that cuts short does not hurt where there is nothing to cut, or where the rest can be asked for.
  bool IsHarmless(handset::Fault fault) const {
    return fault == handset::Fault::kCutShort && (call_ == "ReadFile" || (call_ == "WriteFile" && size_ == 0));
  }

  /// The result without the direction's flag; 0 for what is not reported.
  std::uint32_t Expected() const {
    static const std::set<std::string> kNotExamined = {"DeleteFileW", "PostMessageW", "wcstombs", "mbstowcs"};
    if (call_ == "LoadLibraryW") return 1;
    if (call_ == "realloc" && count_.at("realloc") == 1) return 16;  // The anchor's buffer.
    const bool keeps_the_anchor = run_.IsRemembered() && step_ == kNoStep && !anchor_is_kept_;
    if (keeps_the_anchor || path_ == kAnchorName || path_ == u"schedmap.tbl" || kNotExamined.contains(call_)) return 0;
    if (call_ == "GetProcAddressW") return step_ | 2;
    if (call_ == "ReadFile") return step_ | 512;
    if (call_ == "realloc" && step_ == kNoStep) return kChangeListApplied | 32;  // The change list itself.
    return step_ | (call_ == "realloc" ? 16 : 256);
  }

 private:
  static constexpr char16_t kAnchorName[] = u"qvSyncAnchor.ini";
  static constexpr std::uint32_t kNoStep = 0xFFFFFFFF;

  std::uint32_t StepOfOpening(unsigned time) const {
    if (path_ == kAnchorName || path_ == u"schedmap.tbl") return step_;
    if (path_ == u"schedcmd.tbl") return run_.exporting ? 0 : kChangeListApplied;
    const bool is_log = path_.ends_with(u".log");
    if (is_log && run_.exporting && run_.IsIncremental() && time == 1) return step_ | kSnapshotRead;
    if (is_log) return kSnapshotWritten;
    const bool is_groups = path_ == u"schedulegroup.tbl";
    if (run_.exporting) return time == 1 ? 0 : is_groups ? kGroupsExported : kEntriesExported;
    return is_groups == run_.IsIncremental() ? 0x3000000 : 0x4000000;
  }

  std::uint32_t StepOfLookUp() const {
    if (path_ == u"SC_Sync_Del") return kChangeListApplied;
    if (path_ == u"SC_Sync_DelAll") return 0;
    if (path_ == u"SC_Sync_Insert" || path_ == u"SC_Sync_Update") return step_;
    const unsigned time = count_.at("GetProcAddressW");
    return !run_.exporting || time > 6 ? kSnapshotWritten : time > 3 ? kGroupsExported : kEntriesExported;
  }

  const Scenario& run_;
  std::string call_;
  std::u16string path_;
  std::uint32_t size_ = 0;
  std::uint32_t step_ = kNoStep;
  bool anchor_is_kept_ = false;
  std::map<std::string, unsigned> count_;
  std::map<std::u16string, unsigned> openings_;
};

class FailureTest : public AgentTest, public testing::WithParamInterface<Scenario> {
 protected:
  /// The same handset before each run: records on both sides, everything an incremental run needs, and enough of each
  /// that no buffer takes it whole.
  void SetUpHandset(ScriptedScheduleStore& store) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(handset::HostPath(u"\\"))) {
      if (entry.is_regular_file()) std::filesystem::remove(entry.path());
    }
    Bytes gone;
    for (std::uint32_t id = 1; id <= 70; ++id) {
      store.Add(1, id, id);
      Append(gone, Words({1000 + id, 1, 0}));
    }
    store.Add(0, 1, 1, StoreEntry());
    store.Add(0, 2, 2);
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
    WriteFile(kEntryLog, Words({1, 9, 0, 99, 1, 0}));
    WriteFile(kGroupLog, gone);
    if (GetParam().exporting) return;
    Bytes entries = ExchangeEntry();
    Append(entries, PlainEntry(2, 50));
    WriteFile(kEntries, entries);
    WriteFile(kGroups, ExchangeGroup(50));
    WriteFile(kChangeList, Words({0, kEntryId, 1, 0, 2, 2, 0, 1, 3, 1, 50, 1, 1, 5, 3}));
  }

  Answer Perform() { return GetParam().exporting ? Export(2, GetParam().mode, u"5") : Recover(2, GetParam().mode); }

  static std::uint32_t Flagged(std::uint32_t result) {
    return result == 0 ? 0 : result | (GetParam().exporting ? 0x10000000 : 0x20000000);
  }

  /// A failed recover keeps what the desktop placed, unless it failed after all was applied.
  static void ExpectFilesKept(std::uint32_t code) {
    if (GetParam().exporting || code == 0 || (code & 0x0F000000) == kSnapshotWritten) return;
    for (const auto* file : {kEntries, kGroups, kChangeList}) {
      EXPECT_TRUE(Exists(file));
    }
  }
};

class PlatformFailureTest : public FailureTest {
 protected:
  void FailEachCall(handset::Fault fault) {
    unsigned n = 1;
    for (;; ++n) {
      ASSERT_LT(n, 2000u) << "the run never gets through";
      ScriptedScheduleStore store;
      SetUpHandset(store);
      StepWatcher watcher(GetParam());
      handset::Observe([&](const handset::Call& call) {
        if (!handset::FaultHappened()) watcher.See(call);
      });
      handset::FailCall(n, fault);
      const Answer answer = Perform();
      handset::Observe({});
      if (!handset::FaultHappened()) break;
      SCOPED_TRACE(std::string(GetParam().name) + ", call " + std::to_string(n) + ", " + watcher.call());
      EXPECT_EQ(answer.code, watcher.IsHarmless(fault) ? 0 : Flagged(watcher.Expected()));
      EXPECT_EQ(answer.returned, answer.code & 0x0FFFFFFF);
      ExpectFilesKept(answer.code);
      const handset::Census left = handset::TakeCensus();
      EXPECT_EQ(left.files + left.libraries + left.blocks + left.semaphores, 0u);
    }
    EXPECT_GT(n, 20u) << "hardly any call was reached";
  }
};

TEST_P(PlatformFailureTest, EachFailingCallIsReported) {
  FailEachCall(handset::Fault::kFail);
}

TEST_P(PlatformFailureTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  FailEachCall(handset::Fault::kCutShort);
}

class StoreFailureTest : public FailureTest {
 protected:
  /// What a failing entry point comes out as; `time` counts its calls in the run.
  static std::uint32_t Expected(const std::string& call, unsigned time) {
    const Scenario& run = GetParam();
    const auto is = [&](std::string_view name) { return call.starts_with(name); };
    const bool of_groups = call.find(" 1") == call.find(' ');
    if (is("DelAll")) return 3;
    if (is("Del")) return kChangeListApplied | 9;
    if (is("Read")) return (of_groups ? kGroupsExported : kEntriesExported) | 6;
    if (is("Get")) {
      const std::uint32_t exporting = of_groups ? kGroupsExported : kEntriesExported;
      return (run.exporting && time <= 2 ? exporting : kSnapshotWritten) | 5;
    }
    return (of_groups == run.IsIncremental() ? 0x3000000 : 0x4000000) | (is("Insert") ? 7 : 8);
  }
};

TEST_P(StoreFailureTest, EachFailingCallIsReported) {
  unsigned n = 1;
  for (;; ++n) {
    ASSERT_LT(n, 100u) << "the run never gets through";
    ScriptedScheduleStore store;
    SetUpHandset(store);
    store.fail_call = n;
    const Answer answer = Perform();
    if (!store.failed_a_call) break;
    SCOPED_TRACE(std::string(GetParam().name) + ", " + store.calls.back());
    const auto lists = std::count_if(store.calls.begin(), store.calls.end(),
                                     [](const std::string& call) { return call.starts_with("GetAllSyncInfo"); });
    EXPECT_EQ(answer.code, Flagged(Expected(store.calls.back(), static_cast<unsigned>(lists))));
    ExpectFilesKept(answer.code);
  }
  EXPECT_GT(n, 3u) << "hardly any call was reached";
}

constexpr Scenario kRuns[] = {
    {"FullExport", true, 1},    {"IncrementalExport", true, 3}, {"PlainExport", true, 4},
    {"FullRecover", false, 1},  {"ReplaceRecover", false, 2},   {"IncrementalRecover", false, 3},
    {"PlainRecover", false, 5},
};
const auto kRunName = [](const auto& run) { return std::string(run.param.name); };
INSTANTIATE_TEST_SUITE_P(Runs, PlatformFailureTest, testing::ValuesIn(kRuns), kRunName);
INSTANTIATE_TEST_SUITE_P(Runs, StoreFailureTest, testing::ValuesIn(kRuns), kRunName);

}  // namespace
}  // namespace qv_test
