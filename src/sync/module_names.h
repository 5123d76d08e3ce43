// What a record module and its tables are called wherever they show: to the store, in the files, in the anchor file.
#ifndef QV_SYNC_MODULE_NAMES_H
#define QV_SYNC_MODULE_NAMES_H

#include <cstdint>
#include <span>

#include "layout/record_layout.h"

namespace qv {

/// Main records are table 0 of a module, their groups table 1.
inline constexpr std::uint32_t kMainTable = 0;
inline constexpr std::uint32_t kGroupTable = 1;

struct TableNames {
  /// In the exchange directory; null for a table whose records stand in the main table's file.
  const char16_t* exchange_file;
  const char16_t* snapshot_log = nullptr;  ///< Full path; null for a table whose changes are not followed.
  const layout::RecordLayout* layout = nullptr;
  /// Bytes from one record to the next where an incremental recover reads the table; 0: back to back, as everywhere
  /// else.
  std::uint32_t incremental_stride = 0;
};

struct ModuleNames {
  const char16_t* store_library;
  // Null for a module without.
  const char16_t* anchor_key = nullptr;
  const char16_t* change_list = nullptr;  ///< In the exchange directory.
  const char16_t* id_map = nullptr;       ///< In the exchange directory.
  /// By table number, in the order in which an export creates them and a recover deletes them. Those with a snapshot
  /// log come first. What a module handles before its tables, as the messages' configurations, is none of them.
  std::span<const TableNames> tables = {};
  // What the store's session is begun and ended with; null for a store that has none.
  const char16_t* initialize = nullptr;
  const char16_t* uninitialize = nullptr;
};

}  // namespace qv

#endif  // QV_SYNC_MODULE_NAMES_H
