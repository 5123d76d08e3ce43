// Fail call 1, 2, 3, ... until nothing fails any more: of the platform, and of the store. Each failure must come out as
// its documented code at its step, leave nothing open, and cost nothing of what the desktop placed.
#include <set>

#include "tests/support/schedule_records.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

struct Run {
  const char* name;
  bool exporting;
  std::uint32_t mode;
};

class FailureTest : public AgentTest, public testing::WithParamInterface<Run> {
 protected:
  /// The same handset before each run: records on both sides, everything an incremental run needs.
  void SetUpHandset(ScriptedScheduleStore& store) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(handset::HostPath(u"\\"))) {
      if (entry.is_regular_file()) std::filesystem::remove(entry.path());
    }
    for (std::uint32_t id = 1; id <= 60; ++id) store.Add(0, id, id, id == 1 ? StoreEntry() : Bytes());
    store.Add(1, 5, 1, StoreGroup());
    WriteText(u"\\dbdata\\sysconfig\\qvSyncAnchor.ini", "[ANCHORDATE]\r\nSCHEDULE = 5");
    WriteFile(u"\\dbdata\\sysconfig\\schedule.log", Words({1, 1, 0, 99, 1, 0}));
    WriteFile(u"\\dbdata\\sysconfig\\schegroup.log", Words({98, 1, 0}));
    if (GetParam().exporting) return;
    Bytes entries = ExchangeEntry();
    Append(entries, PlainEntry(2, 50));
    WriteFile(u"\\sync\\schedule.tbl", entries);
    WriteFile(u"\\sync\\schedulegroup.tbl", ExchangeGroup(50));
    WriteFile(u"\\sync\\schedcmd.tbl", Words({0, kEntryId, 1, 0, 2, 2, 0, 3, 3, 1, 50, 1, 1, 5, 3}));
  }

  Answer Perform() { return GetParam().exporting ? Export(2, GetParam().mode, u"5") : Recover(2, GetParam().mode); }

  static bool ExchangeFilesAreThere() {
    return Exists(u"\\sync\\schedule.tbl") && Exists(u"\\sync\\schedulegroup.tbl") && Exists(u"\\sync\\schedcmd.tbl");
  }

  /// A failed recover keeps what the desktop placed, unless it failed after all was applied.
  static void ExpectFilesKept(std::uint32_t code) {
    const bool after_all_was_applied = (code & 0x0F000000) == 0x05000000;
    EXPECT_TRUE(after_all_was_applied || ExchangeFilesAreThere());
  }
};

/// Whether a failing call must not show in the result: the anchor, the id map, and what is only tidied or announced.
bool IsBestEffort(std::string_view function, std::u16string_view path) {
  static const std::set<std::string_view> kNotExamined = {"DeleteFileW", "PostMessageW", "wcstombs", "mbstowcs"};
  return kNotExamined.contains(function) || path.ends_with(u"qvSyncAnchor.ini") || path.ends_with(u"schedmap.tbl");
}

/// The code that a failing platform function comes out as.
std::set<std::uint32_t> CodesOf(std::string_view function) {
  if (function == "LoadLibraryW") return {1};
  if (function == "GetProcAddressW") return {2};
  if (function == "realloc") return {16, 32};
  if (function == "ReadFile") return {512};
  if (function == "CreateFileW" || function == "WriteFile") return {256};
  return {};
}

class PlatformFailureTest : public FailureTest {
 protected:
  void FailEachCall(handset::Fault fault) {
    unsigned n = 1;
    for (;; ++n) {
      ASSERT_LT(n, 2000u) << "the run never gets through";
      ScriptedScheduleStore store;
      SetUpHandset(store);
      std::u16string path;
      std::uint32_t size = 0;
      handset::Observe([&](const handset::Call& call) {
        if (handset::FaultHappened()) return;
        path = call.path;
        size = call.size;
      });
      handset::FailCall(n, fault);
      const Answer answer = Perform();
      handset::Observe({});
      if (!handset::FaultHappened()) break;
      const std::string function(handset::FaultedFunction());
      SCOPED_TRACE(std::string(GetParam().name) + ", call " + std::to_string(n) + ", " + function);
      const std::uint32_t code = answer.code & 0xFFFF;
      const bool half_of_nothing = fault == handset::Fault::cut_short && function == "WriteFile" && size == 0;
      if (half_of_nothing) {
        EXPECT_EQ(answer.code, 0u);
      } else if (answer.code == 0) {
        // Memory for the anchor file's text is part of keeping the anchor.
        EXPECT_TRUE(IsBestEffort(function, path) || function == "realloc");
      } else {
        EXPECT_TRUE(CodesOf(function).contains(code)) << std::hex << answer.code;
        if (!GetParam().exporting) ExpectFilesKept(answer.code);
      }
      EXPECT_EQ(answer.returned, answer.code & 0x0FFFFFFF);
      const handset::Census left = handset::TakeCensus();
      EXPECT_EQ(left.files + left.libraries + left.blocks + left.semaphores, 0u);
    }
    EXPECT_GT(n, 20u) << "hardly any call was reached";
  }
};

TEST_P(PlatformFailureTest, EachFailingCallIsReported) {
  FailEachCall(handset::Fault::fail);
}

TEST_P(PlatformFailureTest, EachShortWriteIsReported) {
  FailEachCall(handset::Fault::cut_short);
}

class StoreFailureTest : public FailureTest {};

TEST_P(StoreFailureTest, EachFailingCallIsReported) {
  static const std::set<std::uint32_t> kCodes = {3, 5, 6, 7, 8, 9};
  unsigned n = 1;
  for (;; ++n) {
    ASSERT_LT(n, 100u) << "the run never gets through";
    ScriptedScheduleStore store;
    SetUpHandset(store);
    store.fail_call = n;
    const Answer answer = Perform();
    if (!store.failed_a_call) break;
    SCOPED_TRACE(std::string(GetParam().name) + ", store call " + std::to_string(n));
    EXPECT_TRUE(kCodes.contains(answer.code & 0xFFFF)) << std::hex << answer.code;
    if (!GetParam().exporting) ExpectFilesKept(answer.code);
  }
  EXPECT_GT(n, 3u) << "hardly any call was reached";
}

constexpr Run kRuns[] = {
    {"FullExport", true, 1},    {"IncrementalExport", true, 3}, {"PlainExport", true, 4},
    {"FullRecover", false, 1},  {"ReplaceRecover", false, 2},   {"IncrementalRecover", false, 3},
    {"PlainRecover", false, 5},
};
const auto kRunName = [](const auto& run) { return std::string(run.param.name); };
INSTANTIATE_TEST_SUITE_P(Runs, PlatformFailureTest, testing::ValuesIn(kRuns), kRunName);
INSTANTIATE_TEST_SUITE_P(Runs, StoreFailureTest, testing::ValuesIn(kRuns), kRunName);

}  // namespace
}  // namespace qv_test
