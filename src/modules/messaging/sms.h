// Module 8, the short messages, kept by SmsStore.dll: one table, and a configuration that travels before it.
#ifndef QV_MODULES_MESSAGING_SMS_H
#define QV_MODULES_MESSAGING_SMS_H

#include "modules/messaging/sms_config.h"
#include "modules/messaging/sms_layout.h"
#include "sync/form_rules.h"
#include "sync/one_table.h"

namespace qv::sms {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"smsinfo.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\smsinfo.log", .layout = &kMessageLayout},
};
inline constexpr char16_t kConfigFile[] = u"smsconf.tbl";

inline constexpr ModuleNames kNames = {
    .store_library = u"SmsStore.dll",
    .anchor_key = u"SMS",
    .change_list = u"smscmd.tbl",
    .id_map = u"smsmap.tbl",
    .tables = kTables,
};

inline constexpr OneTableFacts kFacts = {
    .names = kNames,
    .table = {.count = {u"Sync_GetAllRecNum", {}},
              .list = {u"Sync_GetAllidTime", {Argument::kCountPlace, Argument::kEntries}},
              .read = {u"Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"Sync_Insert", {Argument::kRecords, Argument::kNewId}},
              .update = {u"Sync_Update", {Argument::kId, Argument::kRecords}},
              .sync_info = {36, 4, SyncInfoForm::Time::kText},
              .table_written = StepFlag::kTable0Exported,
              .looks_up_first = true},
    .erase = {u"Sync_Del", {Argument::kCount, Argument::kIds}},
    .erase_all = {u"Sync_DelAll", {}},
    .ignores_tables_of_changes = true,
};

inline constexpr RuleWords kRules[] = {
    {&kMessageLayout,
     "folder_id: a recover puts a message into the handset's folder of the same name as the desktop's, which "
     "smsconf.tbl "
     "tells, and into folder 1 when there is none."},
};

/// Serves one call: loads the store when it is made, unloads it when it goes.
class SmsHandler {
 public:
  /// Results as OneTableRun's; without a flag kStoreNotLoaded, kFileFailed, and what the configuration comes to.
  Result Export(SyncMode& mode, char16_t* anchor, const void* directory);
  Result Recover(SyncMode mode, char16_t* anchor, const void* directory);

 private:
  class Table final : public RecordTable {
   public:
    Table(const Library& store, const FolderMap& folders)
        : RecordTable(store, kMainTable, kTables[kMainTable], kFacts.table), folders_(folders) {}

   private:
    void Repoint(std::uint8_t* message, const IdMap& id_map) const override;

    const FolderMap& folders_;
  };

  Library store_{kNames.store_library};
  ExchangeDirectory directory_;
  FolderMap folders_;
  Table table_{store_, folders_};
  OneTableRun run_{kFacts, store_, directory_, table_};
};

}  // namespace qv::sms

#endif  // QV_MODULES_MESSAGING_SMS_H
