// A record form as columns of a table: each field with a slot in the store record is one, and so is each run of items.
#ifndef QV_HOST_STORES_COLUMNS_H
#define QV_HOST_STORES_COLUMNS_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/stores/statement.h"
#include "layout/record_layout.h"

namespace stores {

struct Column {
  std::string name;
  qv::layout::Slot slot;
};

/// The columns in the order of the rows. Rows that only repeat others, unused room, and items that do not lie in the
/// record have none.
std::vector<Column> ColumnsOf(const qv::layout::RecordLayout& layout);

/// Of a form whose records say their id: where. It is the first row's that is not unused.
const qv::layout::Slot& IdSlotOf(const qv::layout::RecordLayout& layout);

/// The column's type and what it holds in a row inserted by hand that does not name it, in SQL.
std::string TypeOf(const Column& column);

// For statements on them:

/// The names with `suffix`, each after a comma.
std::string Listed(const std::vector<Column>& columns, const char* suffix = "");
/// The columns with their types, each after a comma.
std::string Defined(const std::vector<Column>& columns);
/// So many parameters, each after a comma.
std::string Placeholders(std::size_t count);

/// Numbers are kept as they stand in the record, bytes without the zeros at their end. Text, of 8 bits too, is kept as
/// UTF-8, but as the slot's bytes when UTF-8 could not give them back: ill-formed, without a NUL, or with something
/// behind it. A SYSTEMTIME is kept as "2006-01-05 09:03:07", likewise: with a day of the week or milliseconds as bytes.
void BindColumn(const qv::layout::Slot& slot, const std::uint8_t* record, Query& query, int parameter);

/// The reverse, on a record whose slot is zero. What someone wrote by hand and does not fit is cut; text keeps its NUL.
void ReadColumn(const Query& query, int column, const qv::layout::Slot& slot, std::uint8_t* record);

// The same of all columns, from the parameter or the result column `first` on.
void BindColumns(const std::vector<Column>& columns, const std::uint8_t* record, Query& query, int first);
void ReadColumns(const Query& query, int first, const std::vector<Column>& columns, std::uint8_t* record);

}  // namespace stores

#endif  // QV_HOST_STORES_COLUMNS_H
