// Each failure in a run of the contacts', of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/recovered_contact_records.h"
#include "tests/support/scripted_contact_store.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedContactStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) {
    Bytes contact(ScriptedContactStore::kRecordSize);
    Put32(contact, 2284, id <= 2 ? 100 + id : 0);
    store->Add(0, id, ScriptedContactStore::kOldTime, contact);
    store->pictures[100 + id] = {3, {1, 2, 3}};
    store->groups_of[id] = {1, 2};
  }
  store->Add(1, 1);
  store->Add(1, 2);
  return store;
}

std::vector<SweptTable> Tables() {
  Bytes contacts = NamedContact(51, u"New");
  Append(contacts, NamedContact(2, u"Modified"));
  Bytes groups = NamedGroup(61, u"New group");
  Append(groups, NamedGroup(1, u"Modified group"));
  Bytes memberships = ExchangeMembership(51, {61, 1});
  Append(memberships, ExchangeMembership(2, {61}));
  return {{.file = kContactTable,
           .snapshot_log = kContactLog,
           .sent = contacts,
           .exported = kMainTableExported,
           .export_begin = LooksUp(u"DTP_PIMGetAllManNum")},
          {.file = kContactGroupTable,
           .snapshot_log = kContactGroupLog,
           .sent = groups,
           .exported = kGroupTableExported,
           .export_begin = LooksUp(u"DTP_PIMGetAllgroupSyncid"),
           .inserted = kGroupTableApplied},
          {.file = kMembershipTable,
           .sent = memberships,
           .exported = 0x8000000,
           .export_begin = Opens(kMembershipTable, 2),
           .inserted = 0xA000000},
          {.file = kPictureTable,
           .sent = IncomingPicture(71, 5),
           .exported = 0x9000000,
           .export_begin = Opens(kPictureTable, 2),
           .inserted = 0xB000000}};
}

SweptModule Contacts() {
  const std::set<std::uint32_t> emptying = {1, 2, 4};
  return {.id = 1,
          .anchor_key = "LINKMAN",
          .tables = Tables(),
          .change_list = kContactChanges,
          .changes = Words({0, 51, 1, 0, 2, 2, 0, 3, 3, 1, 61, 1, 1, 1, 2, 1, 2, 3, 2, 4, 2}),
          .id_map = kContactIdMap,
          .id_map_written = kIdMapWritten,
          .make_store = MakeStore,
          .more_recover_steps = {{LooksUp(u"DTP_PIMDeleteGroup"), kChangeListApplied, {3}},
                                 {LooksUp(u"DTP_PIMGetAllgroupSyncid"), 0, emptying},
                                 // A store that does not count is emptied all the same.
                                 {LooksUp(u"DTP_PIMGetAllGroupNum"), kUnreported, emptying},
                                 {LooksUp(u"DTP_PIMGetAllManNum"), kUnreported, emptying}},
          .early_allocation = 0,
          .unreported = {u"DTP_Initialize", u"DTP_UnInitialize"},
          .store_codes = {{"QueryManAttachGroup", 6},
                          {"FindmanSyncidByName", 6},
                          {"FindgroupSyncidByName", 6},
                          {"LoadingImage", 7},
                          {"PhoneAddToGroups", 7},
                          {"ModifyManToGroup", 8},
                          {"DeleteImage", 9},
                          {"DownloadingImage", 0}},
          // What empties the store, which has no entry point for that.
          .unflagged_store_codes = {{"GetAllManNum", 0}, {"GetAllGroupNum", 0}, {"DeleteMan", 3}, {"DeleteGroup", 3}}};
}

INSTANTIATE_TEST_SUITE_P(Contacts, FaultSweepTest, testing::ValuesIn(ScriptsOf(Contacts())), NameOfScript);

}  // namespace
}  // namespace qv_test
