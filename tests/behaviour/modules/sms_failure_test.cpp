// Each failure in a run of the short messages', of the platform and of the store.
#include <map>

#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_sms_store.h"
#include "tests/support/sms_records.h"

namespace qv_test {
namespace {

constexpr std::uint32_t kTableExported = 0x1000000;
constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kTableApplied = 0x3000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;

class SmsFailureTest : public FaultSweepTest {
 public:
  /// Enough of everything that no buffer takes it whole.
  static std::unique_ptr<ScriptedStore> Prepare() {
    auto store = std::make_unique<ScriptedSmsStore>();
    store->sections = StoreSmsSections();
    Bytes log = Words({1, 9, 0});
    for (std::uint32_t id = 1; id <= 70; ++id) {
      store->Add(id);
      Append(log, Words({1000 + id, 1, 0}));
    }
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nSMS = 5");
    WriteFile(kSmsLog, log);
    return store;
  }

  static std::unique_ptr<ScriptedStore> PrepareRecover() {
    Bytes messages = ExchangeShortMessage();
    Append(messages, PlainShortMessage(2, 50));
    Bytes changes = Words({0, kMessageId, 1, 0, 2, 2});
    for (std::uint32_t id = 3; id <= 70; ++id) Append(changes, Words({0, id, 3}));
    WriteFile(kSmsTable, messages);
    WriteFile(kSmsChanges, changes);
    WriteFile(kSmsConfig, SmsConfigFile(ExchangeSmsSections()));
    return Prepare();
  }

  static std::uint32_t StoreCode(const std::string& entry_point, std::uint32_t) {
    static const std::map<std::string, std::uint32_t> kCodes = {{"DelAll", 3},       {"GetAllidTime", 5}, {"Read", 6},
                                                                {"GetSMSConfig", 6}, {"SetSMSConfig", 0}, {"Insert", 7},
                                                                {"Update", 8},       {"Del", 9}};
    return kCodes.at(entry_point);
  }

  static FaultScript Exporting(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"GetProcAddressW", u"Sync_GetSMSConfig", 1, 0},
        {"CreateFileW", u"smsinfo.tbl", 2, kTableExported},
        {"CreateFileW", u"smsinfo.log", mode == 3 ? 2u : 1u, kSnapshotWritten},
    };
    if (mode == 3) steps.push_back({"CreateFileW", u"smsinfo.log", 1, kSnapshotRead});
    return {.name = name,
            .module_id = 8,
            .exporting = true,
            .mode = mode,
            .steps = steps,
            .unreported = {},
            .store_code = StoreCode,
            .prepare = Prepare,
            .desktop_files = {}};
  }

  static FaultScript Recovering(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"GetProcAddressW", u"Sync_SetSMSConfig", 1, 0},
        {"GetLocalTime", u"", 1, kNoStep},  // The anchor moves between two steps.
        {"GetProcAddressW", u"Sync_DelAll", 1, 0},
        {"CreateFileW", u"smscmd.tbl", 1, kChangeListApplied},
        {mode == 3 ? "GetProcAddressW" : "CreateFileW", mode == 3 ? u"Sync_Insert" : u"smsinfo.tbl", 1, kTableApplied},
        {"CreateFileW", u"smsinfo.log", 1, kSnapshotWritten},
    };
    return {.name = name,
            .module_id = 8,
            .exporting = false,
            .mode = mode,
            .steps = steps,
            .unreported = {u"smsmap.tbl"},
            .early_allocation = kChangeListApplied | 32,  // The change list itself.
            .store_code = StoreCode,
            .prepare = PrepareRecover,
            .desktop_files = {kSmsTable, kSmsChanges}};
  }
};

TEST_P(SmsFailureTest, EachFailingPlatformCallIsReported) {
  FailEachPlatformCall(handset::Fault::kFail);
}

TEST_P(SmsFailureTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  FailEachPlatformCall(handset::Fault::kCutShort);
}

TEST_P(SmsFailureTest, EachFailingStoreCallIsReported) {
  FailEachStoreCall();
}

INSTANTIATE_TEST_SUITE_P(
    Runs, SmsFailureTest,
    testing::Values(SmsFailureTest::Exporting("FullExport", 1), SmsFailureTest::Exporting("IncrementalExport", 3),
                    SmsFailureTest::Exporting("PlainExport", 4), SmsFailureTest::Recovering("FullRecover", 1),
                    SmsFailureTest::Recovering("ReplaceRecover", 2),
                    SmsFailureTest::Recovering("IncrementalRecover", 3), SmsFailureTest::Recovering("PlainRecover", 5)),
    NameOfScript);

}  // namespace
}  // namespace qv_test
