// The table of items, its triggers and the statements on it, all made from the item form.
#include "host/stores/item_store.h"

namespace stores {
namespace {

std::string TableSql(const KindDescription& records, const std::string& table, const std::string& record_id,
                     const std::vector<Column>& columns) {
  const std::string touch_old = TouchSql(records, "OLD." + record_id);
  const std::string touch_new = TouchSql(records, "NEW." + record_id);
  return "CREATE TABLE IF NOT EXISTS " + table + " (\n  " + record_id +
         " INTEGER NOT NULL,\n  number INTEGER NOT NULL" + Defined(columns) + ",\n  PRIMARY KEY (" + record_id +
         ", number));" +
         TriggerSql(table + "_go", "DELETE", records.table,
                    "DELETE FROM " + table + " WHERE " + record_id + " = OLD.id") +
         TriggerSql(table + "_insert", "INSERT", table, touch_new) +
         TriggerSql(table + "_delete", "DELETE", table, touch_old) +
         TriggerSql(table + "_update", "UPDATE", table, touch_old + ";\n  " + touch_new);
}

std::vector<Column> CreateTable(Database& database, const KindDescription& records, const std::string& table,
                                const std::string& record_id, const qv::layout::RecordLayout& layout) {
  std::vector<Column> columns = ColumnsOf(layout);
  Transaction transaction(database);
  database.Execute(TableSql(records, table, record_id, columns));
  transaction.Commit();
  return columns;
}

}  // namespace

ItemStore::ItemStore(Database& database, const KindDescription& records, const std::string& table,
                     const std::string& record_id, const qv::layout::RecordLayout& layout)
    : database_(database),
      item_size_(layout.store_size),
      columns_(CreateTable(database, records, table, record_id, layout)),
      read_(database.Prepare("SELECT number" + Listed(columns_) + " FROM " + table + " WHERE " + record_id +
                             " = ? ORDER BY number")),
      insert_(database.Prepare("INSERT INTO " + table + " (" + record_id + ", number" + Listed(columns_) +
                               ") VALUES (?, ?" + Placeholders(columns_.size()) + ")")),
      delete_(database.Prepare("DELETE FROM " + table + " WHERE " + record_id + " = ?")) {}

std::vector<std::uint8_t> ItemStore::Read(std::uint32_t record) const {
  Query query(read_);
  query.Bind(1, std::int64_t{record});
  std::vector<std::uint8_t> items;
  while (query.Step()) {
    items.resize(items.size() + item_size_);
    ReadColumns(query, 1, columns_, &items[items.size() - item_size_]);
  }
  return items;
}

void ItemStore::Replace(std::uint32_t record, std::span<const std::uint8_t> items) {
  Transaction transaction(database_);
  {
    Query query(delete_);
    query.Bind(1, std::int64_t{record});
    query.Run();
  }
  for (std::int64_t number = 1; items.size() >= item_size_; items = items.subspan(item_size_)) {
    Query query(insert_);
    query.Bind(1, std::int64_t{record});
    query.Bind(2, number++);
    BindColumns(columns_, items.data(), query, 3);
    query.Run();
  }
  transaction.Commit();
}

}  // namespace stores
