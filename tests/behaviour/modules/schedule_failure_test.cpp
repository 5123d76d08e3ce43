// Each failure in a run of the schedule's, of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/schedule_records.h"
#include "tests/support/scripted_schedule_store.h"

namespace qv_test {
namespace {

constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kEntriesExported = 0x1000000;
constexpr std::uint32_t kGroupsExported = 0x2000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;

class ScheduleFailureTest : public FaultSweepTest {
 public:
  /// Enough of everything that no buffer takes it whole.
  static std::unique_ptr<ScriptedStore> Prepare() {
    auto store = std::make_unique<ScriptedScheduleStore>();
    Bytes gone;
    for (std::uint32_t id = 1; id <= 70; ++id) {
      store->Add(1, id, id);
      Append(gone, Words({1000 + id, 1, 0}));
    }
    store->Add(0, 1, 1, StoreEntry());
    store->Add(0, 2, 2);
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nSCHEDULE = 5");
    WriteFile(kEntryLog, Words({1, 9, 0, 99, 1, 0}));
    WriteFile(kGroupLog, gone);
    return store;
  }

  static std::unique_ptr<ScriptedStore> PrepareRecover() {
    Bytes entries = ExchangeEntry();
    Append(entries, PlainEntry(2, 50));
    WriteFile(kEntries, entries);
    WriteFile(kGroups, ExchangeGroup(50));
    WriteFile(kChangeList, Words({0, kEntryId, 1, 0, 2, 2, 0, 1, 3, 1, 50, 1, 1, 5, 3}));
    return Prepare();
  }

  static std::uint32_t StoreCode(const std::string& entry_point, std::uint32_t) {
    static const std::map<std::string, std::uint32_t> kCodes = {{"DelAll", 3}, {"GetAllSyncInfo", 5}, {"Read", 6},
                                                                {"Insert", 7}, {"Update", 8},         {"Del", 9}};
    return kCodes.at(entry_point);
  }

  static FaultScript Exporting(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"CreateFileW", u"schedule.tbl", 1, 0},
        {"GetProcAddressW", u"SC_Sync_GetTotalNum", 1, kEntriesExported},
        {"GetProcAddressW", u"SC_Sync_GetTotalNum", 2, kGroupsExported},
        {"CreateFileW", u"schedule.log", mode == 3 ? 2u : 1u, kSnapshotWritten},
    };
    if (mode == 3) {
      steps.push_back({"CreateFileW", u"schedule.log", 1, kEntriesExported | kSnapshotRead});
      steps.push_back({"CreateFileW", u"schegroup.log", 1, kGroupsExported | kSnapshotRead});
    }
    return {.name = name,
            .module_id = 2,
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
            .module_id = 2,
            .exporting = false,
            .mode = mode,
            .steps = {{"GetProcAddressW", u"SC_Sync_DelAll", 1, 0},
                      {"CreateFileW", u"schedcmd.tbl", 1, kChangeListApplied},
                      {"CreateFileW", u"schedulegroup.tbl", 1, mode == 3 ? 0x3000000u : 0x4000000u},
                      {"CreateFileW", u"schedule.tbl", 1, mode == 3 ? 0x4000000u : 0x3000000u},
                      {"CreateFileW", u"schedule.log", 1, kSnapshotWritten}},
            .unreported = {u"schedmap.tbl"},
            .early_allocation = kChangeListApplied | 32,  // The change list itself.
            .store_code = StoreCode,
            .prepare = PrepareRecover,
            .desktop_files = {kEntries, kGroups, kChangeList}};
  }
};

TEST_P(ScheduleFailureTest, EachFailingPlatformCallIsReported) {
  FailEachPlatformCall(handset::Fault::kFail);
}

TEST_P(ScheduleFailureTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  FailEachPlatformCall(handset::Fault::kCutShort);
}

TEST_P(ScheduleFailureTest, EachFailingStoreCallIsReported) {
  FailEachStoreCall();
}

INSTANTIATE_TEST_SUITE_P(Runs, ScheduleFailureTest,
                         testing::Values(ScheduleFailureTest::Exporting("FullExport", 1),
                                         ScheduleFailureTest::Exporting("IncrementalExport", 3),
                                         ScheduleFailureTest::Exporting("PlainExport", 4),
                                         ScheduleFailureTest::Recovering("FullRecover", 1),
                                         ScheduleFailureTest::Recovering("ReplaceRecover", 2),
                                         ScheduleFailureTest::Recovering("IncrementalRecover", 3),
                                         ScheduleFailureTest::Recovering("PlainRecover", 5)),
                         NameOfScript);

}  // namespace
}  // namespace qv_test
