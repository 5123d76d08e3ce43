// Each failure in a run of the contacts', of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/recovered_contact_records.h"
#include "tests/support/scripted_contact_store.h"

namespace qv_test {
namespace {

constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kContactsExported = 0x1000000;
constexpr std::uint32_t kGroupsExported = 0x2000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;

class ContactsFailureTest : public FaultSweepTest {
 public:
  /// Enough of everything that no buffer takes it whole.
  static std::unique_ptr<ScriptedStore> Prepare() {
    auto store = std::make_unique<ScriptedContactStore>();
    Bytes gone;
    for (std::uint32_t id = 1; id <= 70; ++id) {
      Bytes contact(ScriptedContactStore::kRecordSize);
      Put32(contact, 2284, id <= 2 ? 100 + id : 0);
      store->Add(0, id, ScriptedContactStore::kOldTime, contact);
      store->pictures[100 + id] = {3, {1, 2, 3}};
      store->groups_of[id] = {1, 2};
      Append(gone, Words({1000 + id, 1, 0}));
    }
    store->Add(1, 1);
    store->Add(1, 2);
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nLINKMAN = 5");
    WriteFile(kContactLog, gone);
    WriteFile(kContactGroupLog, Words({1, 9, 0, 99, 1, 0}));
    return store;
  }

  static std::unique_ptr<ScriptedStore> PrepareRecover() {
    Bytes contacts = NamedContact(51, u"New");
    Append(contacts, NamedContact(2, u"Modified"));
    Bytes groups = NamedGroup(61, u"New group");
    Append(groups, NamedGroup(1, u"Modified group"));
    Bytes memberships = ExchangeMembership(51, {61, 1});
    Append(memberships, ExchangeMembership(2, {61}));
    WriteFile(kContactTable, contacts);
    WriteFile(kContactGroupTable, groups);
    WriteFile(kMembershipTable, memberships);
    WriteFile(kPictureTable, IncomingPicture(71, 5));
    WriteFile(kContactChanges, Words({0, 51, 1, 0, 2, 2, 0, 3, 3, 1, 61, 1, 1, 1, 2, 1, 2, 3, 2, 4, 2}));
    return Prepare();
  }

  static std::uint32_t StoreCode(const std::string& entry_point, std::uint32_t step) {
    static const std::map<std::string, std::uint32_t> kCodes = {{"GetAllManNum", 4},
                                                                {"GetAllGroupNum", 4},
                                                                {"GetAllmanSyncid", 5},
                                                                {"GetAllgroupSyncid", 5},
                                                                {"Readman", 6},
                                                                {"Readgroup", 6},
                                                                {"QueryManAttachGroup", 6},
                                                                {"FindmanSyncidByName", 6},
                                                                {"LoadingImage", 7},
                                                                {"FindgroupSyncidByName", 6},
                                                                {"AddManToUnGroup", 7},
                                                                {"AddGroup", 7},
                                                                {"PhoneAddToGroups", 7},
                                                                {"UpdateMan", 8},
                                                                {"UpdateGroup", 8},
                                                                {"ModifyManToGroup", 8},
                                                                {"DeleteMan", 9},
                                                                {"DeleteGroup", 9},
                                                                {"DeleteImage", 9},
                                                                {"DownloadingImage", 0}};
    const bool empties_the_store = step == 0;
    if (!empties_the_store) return kCodes.at(entry_point);
    if (entry_point.starts_with("Delete")) return 3;
    return entry_point.ends_with("Num") ? 0 : kCodes.at(entry_point);
  }

  static FaultScript Exporting(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"CreateFileW", u"linkman.tbl", 1, 0},
        {"GetProcAddressW", u"DTP_PIMGetAllManNum", 1, kContactsExported},
        {"GetProcAddressW", u"DTP_PIMGetAllgroupSyncid", 1, kGroupsExported},
        {"CreateFileW", u"groupattach.tbl", 2, 0x8000000},
        {"CreateFileW", u"image.tbl", 2, 0x9000000},
        {"CreateFileW", u"linkman.log", mode == 3 ? 2u : 1u, kSnapshotWritten},
    };
    if (mode == 3) {
      steps.push_back({"CreateFileW", u"linkman.log", 1, kContactsExported | kSnapshotRead});
      steps.push_back({"CreateFileW", u"lkmgroup.log", 1, kGroupsExported | kSnapshotRead});
    }
    return {.name = name,
            .module_id = 1,
            .exporting = true,
            .mode = mode,
            .steps = steps,
            .unreported = {u"DTP_Initialize", u"DTP_UnInitialize"},
            .store_code = StoreCode,
            .prepare = Prepare,
            .desktop_files = {}};
  }

  static FaultScript Recovering(const char* name, std::uint32_t mode) {
    std::vector<StepBegin> steps = {
        {"CreateFileW", u"image.tbl", 1, 0xB000000},          {"CreateFileW", u"groupmgr.tbl", 1, 0x4000000},
        {"CreateFileW", u"linkman.tbl", 1, 0x3000000},        {"CreateFileW", u"groupattach.tbl", 1, 0xA000000},
        {"CreateFileW", u"linkman.log", 1, kSnapshotWritten}, {"CreateFileW", u"lkmmap.tbl", 1, 0x6000000},
    };
    if (mode == 3) {
      steps.push_back({"GetProcAddressW", u"DTP_PIMDeleteGroup", 1, kChangeListApplied});
    } else if (mode != 5) {
      steps.push_back({"GetProcAddressW", u"DTP_PIMGetAllgroupSyncid", 1, 0});
      // A store that does not count is emptied all the same.
      steps.push_back({"GetProcAddressW", u"DTP_PIMGetAllGroupNum", 1, kUnreported});
      steps.push_back({"GetProcAddressW", u"DTP_PIMGetAllManNum", 1, kUnreported});
    }
    return {.name = name,
            .module_id = 1,
            .exporting = false,
            .mode = mode,
            .steps = steps,
            .unreported = {u"DTP_Initialize", u"DTP_UnInitialize"},
            .store_code = StoreCode,
            .prepare = PrepareRecover,
            .desktop_files = {kContactTable, kContactGroupTable, kMembershipTable, kPictureTable, kContactChanges}};
  }
};

TEST_P(ContactsFailureTest, EachFailingPlatformCallIsReported) {
  FailEachPlatformCall(handset::Fault::kFail);
}

TEST_P(ContactsFailureTest, EachTransferCutShortIsReportedOrGoneOnWith) {
  FailEachPlatformCall(handset::Fault::kCutShort);
}

TEST_P(ContactsFailureTest, EachFailingStoreCallIsReported) {
  FailEachStoreCall();
}

INSTANTIATE_TEST_SUITE_P(Runs, ContactsFailureTest,
                         testing::Values(ContactsFailureTest::Exporting("FullExport", 1),
                                         ContactsFailureTest::Exporting("IncrementalExport", 3),
                                         ContactsFailureTest::Exporting("PlainExport", 4),
                                         ContactsFailureTest::Recovering("FullRecover", 1),
                                         ContactsFailureTest::Recovering("IncrementalRecover", 3),
                                         ContactsFailureTest::Recovering("PlainCopyRecover", 4),
                                         ContactsFailureTest::Recovering("AddingRecover", 5)),
                         NameOfScript);

}  // namespace
}  // namespace qv_test
