// Module 8, the short messages, kept by SmsStore.dll: one table, and a configuration that travels before it.
#ifndef QV_MODULES_MESSAGING_SMS_H
#define QV_MODULES_MESSAGING_SMS_H

#include "modules/messaging/sms_config.h"
#include "modules/messaging/sms_layout.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"
#include "sync/sync_calls.h"

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
    .calls = kSyncCalls,
    .sync_info = {36, 4, SyncInfoForm::Time::kText},
    .created = TableCreated::kFirstAndAnew,
    .looks_up_before_table = true,
    .written = StepFlag::kTable0Exported,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = kSyncErase,
    .erase_all = kSyncEraseAll,
    .deletes_table_first = true,
    .looks_up_before_change_list = true,
    .tables_of_changes = TablesOfChanges::kIgnored,
};

inline constexpr RuleWords kRules[] = {
    {&kMessageLayout,
     "folder_id: a recover puts a message into the handset's folder of the same name as the desktop's, which "
     "smsconf.tbl tells, and into folder 1 when there is none."},
};

/// Results as the procedure's, and those of the configuration's steps without a flag.
class SmsHandler {
 public:
  SmsHandler(const ModuleFacts& facts, const ModuleCall& call) : call_(call), procedure_(facts, call, table_) {}

  Result Export(SyncMode& mode, char16_t* anchor);
  Result Recover(SyncMode mode, char16_t* anchor);

 private:
  /// Messages go into the handset's folders.
  class Table final : public RecordTable {
   public:
    Table(const ModuleCall& call, const FolderMap& folders)
        : RecordTable(call, kMainTable, kTableFacts[kMainTable]), folders_(folders) {}

   private:
    void Repoint(std::uint8_t* message, const IdMap& id_map) const override;

    const FolderMap& folders_;
  };

  const ModuleCall& call_;
  FolderMap folders_;
  Table table_{call_, folders_};
  Procedure procedure_;
};

}  // namespace qv::sms

#endif  // QV_MODULES_MESSAGING_SMS_H
