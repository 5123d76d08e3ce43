// Each failure in a run of the short messages', of the platform and of the store.
#include "tests/support/fault_sweep.h"
#include "tests/support/scripted_sms_store.h"
#include "tests/support/sms_records.h"

namespace qv_test {
namespace {

std::unique_ptr<ScriptedStore> MakeStore() {
  auto store = std::make_unique<ScriptedSmsStore>();
  for (std::uint32_t id = 1; id <= 70; ++id) store->Add(id);
  store->sections = StoreSmsSections();
  return store;
}

Bytes SentMessages() {
  Bytes messages = ExchangeShortMessage();
  Append(messages, PlainShortMessage(2, 50));
  return messages;
}

Bytes SentChanges() {
  Bytes changes = Words({0, kMessageId, 1, 0, 2, 2});
  for (std::uint32_t id = 3; id <= 70; ++id) Append(changes, Words({0, id, 3}));
  return changes;
}

SweptModule Sms() {
  return {.id = 8,
          .anchor_key = "SMS",
          .tables = {{.file = kSmsTable,
                      .snapshot_log = kSmsLog,
                      .sent = SentMessages(),
                      .exported = kMainTableExported,
                      .export_begin = Opens(kSmsTable, 2)}},
          .change_list = kSmsChanges,
          .changes = SentChanges(),
          .id_map = kSmsIdMap,
          .config_file = kSmsConfig,
          .config = SmsConfigFile(ExchangeSmsSections()),
          .delete_all = u"Sync_DelAll",
          .make_store = MakeStore,
          .more_export_steps = {{LooksUp(u"Sync_GetSMSConfig"), 0}},
          .more_recover_steps = {{LooksUp(u"Sync_SetSMSConfig"), 0},
                                 {{"GetLocalTime", u""}, kNoStep},  // The anchor moves between two steps.
                                 {LooksUp(u"Sync_Insert"), kMainTableApplied, {3}}},
          .store_codes = {{"GetSMSConfig", 6}, {"SetSMSConfig", 0}}};
}

INSTANTIATE_TEST_SUITE_P(Sms, FaultSweepTest, testing::ValuesIn(ScriptsOf(Sms())), NameOfScript);

}  // namespace
}  // namespace qv_test
