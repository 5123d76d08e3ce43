// Each failure in a run of the multimedia messages', of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/mms_records.h"
#include "tests/support/scripted_mms_store.h"

namespace qv_test {
namespace {

constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kTableApplied = 0x3000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;

class MmsFailureTest : public FaultSweepTest {
 public:
  /// Enough of everything that no buffer takes it whole.
  static std::unique_ptr<ScriptedStore> Prepare() {
    auto store = std::make_unique<ScriptedMmsStore>();
    Bytes gone;
    for (std::uint32_t id = 1; id <= 70; ++id) {
      store->Add(id, id, "text", Bytes{1, 2, 3});
      Append(gone, Words({1000 + id, 1, 0}));
    }
    store->config = Bytes{1, 2, 3};
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nMMS = 5");
    WriteFile(kMmsLog, gone);
    return store;
  }

  static std::unique_ptr<ScriptedStore> PrepareRecover() {
    Bytes table = MmsRecord(51, "new", {1, 2, 3});
    Append(table, MmsRecord(2, "modified", {4, 5}));
    WriteFile(kMmsTable, table);
    WriteFile(kMmsConfig, {1, 2, 3});
    WriteFile(kMmsChanges, Words({0, 51, 1, 0, 2, 2, 0, 1, 3, 1, 5, 3}));
    return Prepare();
  }

  static std::uint32_t StoreCode(const std::string& entry_point, std::uint32_t) {
    static const std::map<std::string, std::uint32_t> kCodes = {{"DelAll", 3},    {"GetAllidTime", 5}, {"Read", 6},
                                                                {"GetConfig", 6}, {"Insert", 7},       {"SetConfig", 7},
                                                                {"Update", 8},    {"Del", 9}};
    return kCodes.at(entry_point);
  }

  static FaultScript Exporting(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"GetProcAddressW", u"mms_Sync_GetConfig", 1, 0},
        {"CreateFileW", u"mmsinfo.log", mode == 3 ? 2u : 1u, kSnapshotWritten},
    };
    if (mode == 3) steps.push_back({"CreateFileW", u"mmsinfo.log", 1, kSnapshotRead});
    return {.name = name,
            .module_id = 12,
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
            .module_id = 12,
            .exporting = false,
            .mode = mode,
            .steps = {{"CreateFileW", u"mmsconf.tbl", 1, 0},
                      {"DeleteFileW", u"mmsconf.tbl", 1, kNoStep},
                      {"GetProcAddressW", u"mms_Sync_DelAll", 1, 0},
                      {"CreateFileW", u"mmscmd.tbl", 1, kChangeListApplied},
                      {"CreateFileW", u"mmsinfo.tbl", 1, kTableApplied},
                      {"CreateFileW", u"mmsinfo.log", 1, kSnapshotWritten}},
            .unreported = {u"mmsmap.tbl"},
            .early_allocation = kChangeListApplied | 32,  // The change list itself.
            .store_code = StoreCode,
            .prepare = PrepareRecover,
            .desktop_files = {kMmsTable, kMmsChanges}};
  }
};

TEST_P(MmsFailureTest, EachFailingPlatformCallIsReported) {
  FailEachPlatformCall(handset::Fault::kFail);
}

TEST_P(MmsFailureTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  FailEachPlatformCall(handset::Fault::kCutShort);
}

TEST_P(MmsFailureTest, EachFailingStoreCallIsReported) {
  FailEachStoreCall();
}

INSTANTIATE_TEST_SUITE_P(
    Runs, MmsFailureTest,
    testing::Values(MmsFailureTest::Exporting("FullExport", 1), MmsFailureTest::Exporting("ReplaceExport", 2),
                    MmsFailureTest::Exporting("IncrementalExport", 3), MmsFailureTest::Exporting("PlainExport", 4),
                    MmsFailureTest::Recovering("FullRecover", 1), MmsFailureTest::Recovering("ReplaceRecover", 2),
                    MmsFailureTest::Recovering("IncrementalRecover", 3), MmsFailureTest::Recovering("PlainRecover", 5)),
    NameOfScript);

}  // namespace
}  // namespace qv_test
