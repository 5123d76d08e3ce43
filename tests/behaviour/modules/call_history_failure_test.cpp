// Each failure in a run of the call history's, of the platform and of the store.
#include "tests/support/call_records.h"
#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_call_store.h"

namespace qv_test {
namespace {

constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kTableApplied = 0x3000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;

class CallHistoryFailureTest : public FaultSweepTest {
 public:
  /// Enough of everything that no buffer takes it whole.
  static std::unique_ptr<ScriptedStore> Prepare() {
    auto store = std::make_unique<ScriptedCallStore>();
    Bytes gone;
    for (std::uint32_t id = 1; id <= 70; ++id) {
      store->Add(id, id, StoreCall());
      Append(gone, Words({1000 + id, 1, 0}));
    }
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nRECORDCALL = 5");
    WriteFile(kCallLog, gone);
    return store;
  }

  static std::unique_ptr<ScriptedStore> PrepareRecover() {
    WriteFile(kCallTable, PlainCalls({51, 2, 3}));
    WriteFile(kCallChanges, Words({0, 51, 1, 0, 2, 2, 0, 1, 3, 1, 5, 3}));
    return Prepare();
  }

  static std::uint32_t StoreCode(const std::string& entry_point, std::uint32_t) {
    static const std::map<std::string, std::uint32_t> kCodes = {{"DelAll", 3}, {"GetAllidTime", 5}, {"Read", 6},
                                                                {"Insert", 7}, {"Update", 8},       {"Del", 9}};
    return kCodes.at(entry_point);
  }

  static FaultScript Exporting(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"CreateFileW", u"callinfo.tbl", 1, 0},
        {"CreateFileW", u"recordcall.log", mode == 3 ? 2u : 1u, kSnapshotWritten},
    };
    if (mode == 3) steps.push_back({"CreateFileW", u"recordcall.log", 1, kSnapshotRead});
    return {.name = name,
            .module_id = 9,
            .exporting = true,
            .mode = mode,
            .steps = steps,
            .unreported = {},
            .store_code = StoreCode,
            .prepare = Prepare,
            .desktop_files = {}};
  }

  static FaultScript Recovering(const char* name, std::uint32_t mode) {
    return {.name = name,
            .module_id = 9,
            .exporting = false,
            .mode = mode,
            .steps = {{"GetProcAddressW", u"EXPCALLHISTORY_Sync_DelAll", 1, 0},
                      {"CreateFileW", u"callcmd.tbl", 1, kChangeListApplied},
                      {"CreateFileW", u"callinfo.tbl", 1, kTableApplied},
                      {"CreateFileW", u"recordcall.log", 1, kSnapshotWritten}},
            .unreported = {u"callmap.tbl"},
            .early_allocation = kChangeListApplied | 32,  // The change list itself.
            .store_code = StoreCode,
            .prepare = PrepareRecover,
            .desktop_files = {kCallTable, kCallChanges}};
  }
};

TEST_P(CallHistoryFailureTest, EachFailingPlatformCallIsReported) {
  FailEachPlatformCall(handset::Fault::kFail);
}

TEST_P(CallHistoryFailureTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  FailEachPlatformCall(handset::Fault::kCutShort);
}

TEST_P(CallHistoryFailureTest, EachFailingStoreCallIsReported) {
  FailEachStoreCall();
}

INSTANTIATE_TEST_SUITE_P(Runs, CallHistoryFailureTest,
                         testing::Values(CallHistoryFailureTest::Exporting("FullExport", 1),
                                         CallHistoryFailureTest::Exporting("ReplaceExport", 2),
                                         CallHistoryFailureTest::Exporting("IncrementalExport", 3),
                                         CallHistoryFailureTest::Exporting("PlainExport", 4),
                                         CallHistoryFailureTest::Recovering("FullRecover", 1),
                                         CallHistoryFailureTest::Recovering("ReplaceRecover", 2),
                                         CallHistoryFailureTest::Recovering("IncrementalRecover", 3),
                                         CallHistoryFailureTest::Recovering("PlainRecover", 5)),
                         NameOfScript);

}  // namespace
}  // namespace qv_test
