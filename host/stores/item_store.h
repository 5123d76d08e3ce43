// Items that belong to records and do not lie in them, as rows of a table beside the records' own: so they are read and
// edited one by one in the sqlite3 shell.
#ifndef QV_HOST_STORES_ITEM_STORE_H
#define QV_HOST_STORES_ITEM_STORE_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

/// A table of the record's id, the item's number among those of its record, which tells their order, and the columns of
/// the item form (columns.h). Rows go with their record, and changing them changes it. Triggers see to that, so it
/// holds in the shell too.
class ItemStore {
 public:
  /// Makes the table when there is none; the records' must be there. `record_id` is the column that names the record.
  /// The database and the layout must outlive the store.
  ItemStore(Database& database, const KindDescription& records, const std::string& table, const std::string& record_id,
            const qv::layout::RecordLayout& layout);

  /// The record's items back to back.
  std::vector<std::uint8_t> Read(std::uint32_t record) const;

  /// By items back to back.
  void Replace(std::uint32_t record, std::span<const std::uint8_t> items);

 private:
  Database& database_;
  std::size_t item_size_;
  std::vector<Column> columns_;
  Statement read_, insert_, delete_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_ITEM_STORE_H
