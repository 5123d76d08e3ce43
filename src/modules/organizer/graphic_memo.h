// Module 13, the graphic memo: memos drawn by hand, kept by SketchStore.dll.
#ifndef QV_MODULES_ORGANIZER_GRAPHIC_MEMO_H
#define QV_MODULES_ORGANIZER_GRAPHIC_MEMO_H

#include "modules/organizer/graphic_memo_layout.h"
#include "sync/procedure.h"

namespace qv::graphic_memo {

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"gmemoinfo.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\gmemo.log", .layout = &kMemoLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"SketchStore.dll",
    .anchor_key = u"GMEMO",
    .change_list = u"gmemocmd.tbl",
    .id_map = u"gmemomap.tbl",
    .tables = kTables,
};

/// The store is asked for a table although it has one only.
inline constexpr RecordTableFacts kTableFacts[] = {{
    .calls = {.count = {u"DrawInfo_GetAllRecNum", {Argument::kTable}},
              .list = {u"DrawInfo_GetAllidTime", {Argument::kTable, Argument::kCountPlace, Argument::kEntries}},
              .read = {u"DrawInfo_Read", {Argument::kTable, Argument::kCount, Argument::kIds, Argument::kRecords}},
              .insert = {u"DrawInfo_Insert", {Argument::kTable, Argument::kRecords, Argument::kNewId}},
              .update = {u"DrawInfo_Update", {Argument::kTable, Argument::kId, Argument::kRecords}}},
    .sync_info = kFileTimeIn12Bytes,
    .created = TableCreated::kFirstAndAnew,
    .created_incrementally = TableCreated::kUnlessEmpty,
    .no_memory_for_changed_records = Result::kNoChangeList,
    .written = StepFlag::kTable0Exported,
}};

inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {u"DrawInfo_Sync_Del", {Argument::kTable, Argument::kCount, Argument::kIds}},
    .erase_all = {u"DrawInfo_DelAll", {}},
    .emptied_by = EmptiedBy::kAllButAdding,
    .looks_up_before_change_list = true,
    .tables_of_changes = TablesOfChanges::kIgnoredToDelete,
};

}  // namespace qv::graphic_memo

#endif  // QV_MODULES_ORGANIZER_GRAPHIC_MEMO_H
