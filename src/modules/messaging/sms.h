// Module 8, the short messages, kept by SmsStore.dll: one table, and a configuration that travels before it.
#ifndef QV_MODULES_MESSAGING_SMS_H
#define QV_MODULES_MESSAGING_SMS_H

#include "modules/messaging/sms_config.h"
#include "modules/messaging/sms_layout.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

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

inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = {.count = {u"Sync_GetAllRecNum", {}},
              .list = {u"Sync_GetAllidTime", {Argument::kCountPlace, Argument::kEntries}},
              .read = {u"Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"Sync_Insert", {Argument::kRecords, Argument::kNewId}},
              .update = {u"Sync_Update", {Argument::kId, Argument::kRecords}}},
    .sync_info = {36, 4, SyncInfoForm::Time::kText},
    .created = TableCreated::kFirstAndAnew,
    .looks_up_first = true,
    .written = StepFlag::kTable0Exported,
    .inserted = kTableApplied,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"Sync_Del", {Argument::kCount, Argument::kIds}},
    .erase_all = {u"Sync_DelAll", {}},
    .deletes_table_first = true,
    .looks_up_first = true,
    .tables_of_changes = TablesOfChanges::kOnlyOne,
};

inline constexpr RuleWords kRules[] = {
    {&kMessageLayout,
     "folder_id: a recover puts a message into the handset's folder of the same name as the desktop's, which "
     "smsconf.tbl tells, and into folder 1 when there is none."},
};

/// Results as the procedure's, and those of the configuration's steps without a flag.
class SmsHandler {
 public:
  explicit SmsHandler(const ModuleCall& call) : call_(call) {}

  Result Export(SyncMode& mode, char16_t* anchor);
  Result Recover(SyncMode mode, char16_t* anchor);

 private:
  /// Messages go into the handset's folders.
  class Table final : public RecordTable {
   public:
    Table(const Library& store, const FolderMap& folders)
        : RecordTable(store, kMainTable, kTables[kMainTable], kTableFacts[kMainTable]), folders_(folders) {}

   private:
    void Repoint(std::uint8_t* message, const IdMap& id_map) const override;

    const FolderMap& folders_;
  };

  const ModuleCall& call_;
  FolderMap folders_;
  Table table_{call_.store(), folders_};
  Procedure procedure_{kFacts, call_, table_};
};

}  // namespace qv::sms

#endif  // QV_MODULES_MESSAGING_SMS_H
