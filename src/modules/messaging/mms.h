// Module 12, the multimedia messages, kept by MmsStore.dll: one table of records of any length, and a configuration
// that travels before it as one block.
#ifndef QV_MODULES_MESSAGING_MMS_H
#define QV_MODULES_MESSAGING_MMS_H

#include "modules/messaging/mms_layout.h"
#include "sync/exchange_table.h"
#include "sync/procedure.h"

namespace qv::mms {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"mmsinfo.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\mmsinfo.log", .layout = &kMessageLayout},
};
inline constexpr char16_t kConfigFile[] = u"mmsconf.tbl";

inline constexpr ModuleNames kNames = {
    .store_library = u"MmsStore.dll",
    .anchor_key = u"MMS",
    .change_list = u"mmscmd.tbl",
    .id_map = u"mmsmap.tbl",
    .tables = kTables,
};

inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = {.count = {u"mms_Sync_GetAllRecvNum", {}},
              .list = {u"mms_Sync_getAllidTime", {Argument::kCountPlace, Argument::kEntries}},
              .read = {u"mms_Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"mms_Sync_Insert", {Argument::kRecords, Argument::kNewId}},
              .update = {u"mms_Sync_Update", {Argument::kId, Argument::kRecords}}},
    .read_batch = 50,
    .incoming_id = kMessageId,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"mms_SC_Sync_Del", {Argument::kCount, Argument::kIds}},
    .erase_all = {u"mms_Sync_DelAll", {}},
    .creates_tables_first = true,
    // Not mmscmd.tbl, which stays: desktops clean it away themselves, and count on the other going.
    .consumed_change_list = u"smscmd.tbl",
};

/// Results as the procedure's, and those of the configuration's steps without a flag.
class MmsHandler {
 public:
  MmsHandler(const ModuleFacts& facts, const ModuleCall& call) : call_(call), procedure_(facts, call, table_) {}

  Result Export(SyncMode& mode, char16_t* anchor);
  Result Recover(SyncMode mode, char16_t* anchor);

 private:
  /// Records of any length pass one at a time.
  class Table final : public RecordTable {
   public:
    using RecordTable::RecordTable;

   private:
    Result ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table) override;
    Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more) override;

    FileRest rest_;
  };

  Result ExportConfig();
  Result ApplyConfig();

  const ModuleCall& call_;
  Table table_{call_, kMainTable, kTableFacts[kMainTable]};
  Procedure procedure_;
};

}  // namespace qv::mms

#endif  // QV_MODULES_MESSAGING_MMS_H
