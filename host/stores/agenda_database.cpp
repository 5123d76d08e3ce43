// Entries as a record with the items that lie outside of it.
#include "host/stores/agenda_database.h"

#include <algorithm>

#include "modules/calendar/agenda_layout.h"

namespace stores {
namespace {

const qv::layout::RecordLayout& LongItemLayout() {
  const auto items = qv::agenda::kEntryLayout.items;
  return *std::ranges::find_if_not(items, qv::layout::LiesInRecord)->layout;
}

}  // namespace

AgendaDatabase::AgendaDatabase(Database& database)
    : database_(database),
      tables_{{database, kAgendaKinds[kAgendaEntries]}, {database, kAgendaKinds[kAgendaGroups]}},
      long_items_(database, kAgendaKinds[kAgendaEntries], "agenda_long_items", "entry_id", LongItemLayout()) {}

AgendaEntry AgendaDatabase::Read(std::uint32_t id) const {
  const ReadTransaction transaction(database_);
  AgendaEntry entry = {.record = std::vector<std::uint8_t>(qv::agenda::kEntryStoreSize),
                       .long_items = long_items_.Read(id)};
  tables_[kAgendaEntries].Read({&id, 1}, entry.record.data());
  return entry;
}

std::uint32_t AgendaDatabase::Insert(const AgendaEntry& entry, std::optional<FileTime> modified) {
  Transaction transaction(database_);
  RecordStore& entries = tables_[kAgendaEntries];
  const std::uint32_t id = entries.Insert(entry.record.data());
  long_items_.Replace(id, entry.long_items);
  if (modified) entries.SetModified(id, *modified);
  transaction.Commit();
  return id;
}

void AgendaDatabase::Update(std::uint32_t id, const AgendaEntry& entry) {
  Transaction transaction(database_);
  tables_[kAgendaEntries].Update(id, entry.record.data());
  long_items_.Replace(id, entry.long_items);
  transaction.Commit();
}

}  // namespace stores
