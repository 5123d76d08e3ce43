// Module 7, the card reader: business cards that the camera read, kept by CardScanStore.dll, which has a session and
// answers 1 or 2 for success.
#ifndef QV_MODULES_ORGANIZER_CARD_READER_H
#define QV_MODULES_ORGANIZER_CARD_READER_H

#include "modules/organizer/card_reader_layout.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

namespace qv::card_reader {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"cardreader.tbl",
     .snapshot_log = u"\\dbdata\\sysconfig\\cardreader.log",
     .layout = &kCardLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"CardScanStore.dll",
    .anchor_key = u"CARDREADER",
    .change_list = u"cardcmd.tbl",
    .id_map = u"cardmap.tbl",
    .tables = kTables,
    .initialize = u"CR_Initialize",
    .uninitialize = u"CR_UnInitialize",
};

/// Of every call but the count. What tells 1 from 2 is the store's own affair.
inline constexpr SuccessNumbers kSuccess = {1, 2};

inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = {.count = {u"CR_Sync_GetAllRecNum", {}},
              .list = {u"CR_Sync_GetAllidTime", {Argument::kCountPlace, Argument::kEntries, Argument::kZero}, kSuccess},
              .read = {u"CR_Sync_Read",
                       {Argument::kCount, Argument::kIds, Argument::kRecords, Argument::kZero},
                       kSuccess},
              .insert = {u"CR_Sync_Insert", {Argument::kRecords, Argument::kNewId, Argument::kZero}, kSuccess},
              .update = {u"CR_Sync_Update", {Argument::kRecords}, kSuccess}},
    .sync_info = kFileTimeIn12Bytes,
    .counts_are_signed = true,
    .created = TableCreated::kWithRecords,
    .written = StepFlag::kTable0Exported,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"CR_Sync_Del", {Argument::kCount, Argument::kIds, Argument::kZero}, kSuccess},
    .erase_all = {u"CR_Sync_DeleteAllCardRecord", {}, kSuccess},
    .emptied_by = EmptiedBy::kAllButAdding,
    .tables_of_changes = TablesOfChanges::kIgnoredToDelete,
};

inline constexpr const char* kTimeNotRestored[] = {"time"};

inline constexpr RuleWords kRules[] = {
    {&kCardLayout, "time: when the card was last modified; a store may take the time of a recover instead.",
     kTimeNotRestored},
};

}  // namespace qv::card_reader

#endif  // QV_MODULES_ORGANIZER_CARD_READER_H
