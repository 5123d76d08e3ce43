// All that belongs to the agenda, in the database: entries and groups as records, and the entries' long items.
// AgendaStore.dll is a thin caller of it, and so are tools that create data.
#ifndef QV_HOST_STORES_AGENDA_DATABASE_H
#define QV_HOST_STORES_AGENDA_DATABASE_H

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/stores/agenda_kinds.h"
#include "host/stores/database.h"
#include "host/stores/item_store.h"
#include "host/stores/record_store.h"

#pragma GCC visibility push(default)

namespace stores {

struct AgendaEntry {
  std::vector<std::uint8_t> record;      ///< A store record. What it says of its area does not matter.
  std::vector<std::uint8_t> long_items;  ///< As in an area: kLongItemStoreSize each.
};

/// Long items are rows of `agenda_long_items`, which are their entry's (ItemStore). Each call is one transaction; one
/// that throws has done nothing.
class AgendaDatabase {
 public:
  /// Makes the tables when there are none. The database must outlive this.
  explicit AgendaDatabase(Database& database);

  /// By table number: the entries without their long items, to count, list and delete them, and the groups.
  std::span<RecordStore> Tables() { return tables_; }

  /// Throws UnknownId.
  AgendaEntry Read(std::uint32_t id) const;
  /// Returns the new entry's id. Without `modified` it is as of now.
  std::uint32_t Insert(const AgendaEntry& entry, std::optional<FileTime> modified = std::nullopt);
  /// Throws UnknownId.
  void Update(std::uint32_t id, const AgendaEntry& entry);

 private:
  Database& database_;
  RecordStore tables_[2];
  ItemStore long_items_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_AGENDA_DATABASE_H
