// Module 5, the unified mail: mails received and sent, with the folders and the rules that sort them, kept by
// UniMailStore.dll. Nobody is told what came of a run, and no failure ends one.
#ifndef QV_MODULES_MESSAGING_UNIFIED_MAIL_H
#define QV_MODULES_MESSAGING_UNIFIED_MAIL_H

#include "modules/messaging/unified_mail_layout.h"
#include "sync/exchange_table.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

namespace qv::unified_mail {

// Its tables. Mails sent are no groups, though they have their number.
inline constexpr std::uint32_t kReceived = kMainTable;
inline constexpr std::uint32_t kSent = kGroupTable;

/// The mails of both tables.
inline constexpr char16_t kMailFile[] = u"UnMailinfo.tbl";
inline constexpr char16_t kFolderFile[] = u"UnMailFolder.tbl";
inline constexpr char16_t kFolderRuleFile[] = u"UnMailFolderFilt.tbl";
inline constexpr char16_t kSenderRuleFile[] = u"UnMailSendFilt.tbl";

inline constexpr TableNames kTables[] = {
    {.exchange_file = kMailFile, .snapshot_log = u"\\dbdata\\sysconfig\\unmailrecv.log", .layout = &kMailLayout},
    // Mails sent stand in the same file.
    {.exchange_file = nullptr, .snapshot_log = u"\\dbdata\\sysconfig\\unmailsend.log", .layout = &kMailLayout},
    {.exchange_file = kFolderFile, .layout = &kFolderLayout},
    {.exchange_file = kFolderRuleFile, .layout = &kRuleLayout},
    {.exchange_file = kSenderRuleFile, .layout = &kRuleLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"UniMailStore.dll",
    .anchor_key = u"UNMAIL",
    .change_list = u"UnMailcmd.tbl",
    .id_map = u"taskmap.tbl",  // As the tasks'. Desktops look for it there.
    .tables = kTables,
};

inline constexpr RecordTableFacts kTableFacts{
    .calls = {.count = {u"UMAIL_GetAllRecNum", {Argument::kTable}},
              .list = {u"UMAIL_GetAllidTime", {Argument::kTable, Argument::kCountPlace, Argument::kEntries}},
              .read = {u"UMAIL_GetRec", {Argument::kTable, Argument::kId, Argument::kRecords}},
              .insert = {u"UMAIL_AddOneRec", {Argument::kRecords, Argument::kNewId, Argument::kTable}},
              .update = {u"UMAIL_UpdateRec", {Argument::kRecords, Argument::kId, Argument::kTable}}},
    .read_batch = 1,
    .created = TableCreated::kByModule,
};

/// Received and sent mails differ in their number only.
inline constexpr RecordTableFacts kBothTables[] = {kTableFacts, kTableFacts};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kBothTables,
    .erase = {u"tag_UMAIL_DelRec", {Argument::kIds, Argument::kCount, Argument::kTable}},
    .erase_all = {},  // The store has none: it is emptied mail by mail.
    .never_fails = true,
};

/// Folders, and the rules that a folder or a sender has: each a list that the store gives and takes as a whole.
struct WholeList {
  const char16_t* file;
  std::uint32_t entry_size;
  /// Most entries that pass; layout::kAnyNumber: any number, and the store allocates the list.
  std::uint32_t most_entries;
  EntryPoint get;
  EntryPoint set;
};

inline constexpr std::uint32_t kMostRules = 30;

/// In the order in which they pass. For a list that the store allocates, kRecords is the place for its address.
inline constexpr WholeList kWholeLists[] = {
    {.file = kFolderFile,
     .entry_size = kFolderSize,
     .most_entries = layout::kAnyNumber,
     .get = {u"UMAIL_GetSubFolderList", {Argument::kCountPlace, Argument::kRecords}},
     .set = {u"UMAIL_WriteFolderList", {Argument::kCount, Argument::kRecords}}},
    {.file = kFolderRuleFile,
     .entry_size = kRuleSize,
     .most_entries = kMostRules,
     .get = {u"UMAIL_GetAllSubFolderFilterRecs", {Argument::kCountPlace, Argument::kRecords}},
     .set = {u"UMAIL_WriteAllSubFolderFilterRecs", {Argument::kCount, Argument::kRecords}}},
    {.file = kSenderRuleFile,
     .entry_size = kRuleSize,
     .most_entries = kMostRules,
     .get = {u"UMAIL_GetAllSenderAppointRecs", {Argument::kCountPlace, Argument::kRecords}},
     .set = {u"UMAIL_WriteAllSenderAppointRecs", {Argument::kCount, Argument::kRecords}}},
};

inline constexpr const char* kTextNotRestored[] = {"text", "text_length"};

inline constexpr RuleWords kRules[] = {
    {&kMailLayout, "table: 0 of a mail received, 1 of one sent."},
    {&kMailLayout,
     "kind_0_count, kind_1_count, kind_2_count: an export writes how many of the items of 182 bytes are of each kind, "
     "and the items by kind; a recover goes by the kind in each item, and passes over one of another kind."},
    {&kMailLayout,
     "In the store the items are nodes of chains, which begin at 752, 756 and 760 for the kinds and at 764 for the "
     "items of 308 bytes."},
    {&kMailLayout,
     "text: in the store at the address that stands at 768, in as many bytes of the handset's 8-bit code page as 772 "
     "says. A recover hands over one byte for each character, of which it fills the first 4 at most; the others are "
     "0.",
     kTextNotRestored},
    {&kRuleLayout, "There are at most 30; those behind them are not taken."},
};

/// Every run is a success.
class UnifiedMailHandler {
 public:
  UnifiedMailHandler(const ModuleFacts& facts, const ModuleCall& call)
      : call_(call), procedure_(facts, call, received_, &sent_) {}

  Result Export(SyncMode& mode, char16_t* anchor);
  Result Recover(SyncMode mode, char16_t* anchor);

 private:
  /// Mails of any length pass one at a time; the file that they pass through has those of both tables.
  class MailTable final : public RecordTable {
   public:
    MailTable(const ModuleCall& call, std::uint32_t number, File& mails)
        : RecordTable(call, number, kTableFacts), mails_(mails) {}

   private:
    Result ExportRecords(std::span<const std::uint32_t> ids, std::size_t batch, File& exchange_table) override;
    Result ApplyRecord(File& exchange_table, const Applying& applying, bool& more) override;

    File& mails_;
    FileRest rest_;
  };

  void DeleteEachMail();

  const ModuleCall& call_;
  File mails_;  ///< Open while both tables are exported.
  MailTable received_{call_, kReceived, mails_};
  MailTable sent_{call_, kSent, mails_};
  Procedure procedure_;
};

}  // namespace qv::unified_mail

#endif  // QV_MODULES_MESSAGING_UNIFIED_MAIL_H
