// Module 12, the multimedia messages, kept by MmsStore.dll: one table of records of any length, and a configuration
// that travels before it as one block.
#ifndef QV_MODULES_MESSAGING_MMS_H
#define QV_MODULES_MESSAGING_MMS_H

#include "modules/messaging/mms_layout.h"
#include "sync/one_table.h"

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

inline constexpr OneTableFacts kFacts = {
    .names = kNames,
    .table = {.count = {u"mms_Sync_GetAllRecvNum", {}},
              .list = {u"mms_Sync_getAllidTime", {Argument::kCountPlace, Argument::kEntries}},
              .read = {u"mms_Sync_Read", {Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"mms_Sync_Insert", {Argument::kRecords, Argument::kNewId}},
              .update = {u"mms_Sync_Update", {Argument::kId, Argument::kRecords}},
              .read_batch = 50,
              .keeps_table_open = true,
              .incoming_id = kMessageId},
    .erase = {u"mms_SC_Sync_Del", {Argument::kCount, Argument::kIds}},
    .erase_all = {u"mms_Sync_DelAll", {}},
    .creates_files_first = true,
    // Not mmscmd.tbl, which stays: desktops clean it away themselves, and count on the other going.
    .consumed_change_list = u"smscmd.tbl",
};

/// Serves one call: loads the store when it is made, unloads it when it goes.
class MmsHandler {
 public:
  /// Results as OneTableRun's; without a flag kStoreNotLoaded, kFileFailed, and what the configuration comes to.
  Result Export(SyncMode& mode, char16_t* anchor, const void* directory);
  Result Recover(SyncMode mode, char16_t* anchor, const void* directory);

 private:
  /// Records of any length pass one at a time.
  class Table final : public RecordTable {
   public:
    explicit Table(const Library& store) : RecordTable(store, kMainTable, kTables[kMainTable], kFacts.table) {}

    Result ExportRecords(std::span<const std::uint32_t> ids, const char16_t* path, File& exchange_table) override;
    Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more) override;

   private:
    bool rest_is_known_ = false;
    std::uint32_t rest_ = 0;  ///< Bytes of the exchange table that are not read yet.
  };

  Result ExportConfig();
  Result ApplyConfig();

  Library store_{kNames.store_library};
  ExchangeDirectory directory_;
  Table table_{store_};
  OneTableRun run_{kFacts, store_, directory_, table_};
};

}  // namespace qv::mms

#endif  // QV_MODULES_MESSAGING_MMS_H
