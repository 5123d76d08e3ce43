// Slots to columns and back.
#include "host/stores/columns.h"

#include <algorithm>
#include <cstring>

#include "host/handset/unicode.h"

namespace stores {
namespace {

using qv::layout::Form;
using qv::layout::Slot;

enum class Kind { kNumber, kTime, kText, kBytes };

Kind KindOf(const Slot& slot) {
  if (qv::layout::IsNumeric(slot.form)) return Kind::kNumber;
  if (slot.form == Form::kFileTime) return Kind::kTime;
  const bool is_text = slot.form == Form::kText || slot.form == Form::kRawText || slot.form == Form::kTimeText;
  return is_text ? Kind::kText : Kind::kBytes;
}

/// A FILETIME as one number.
std::int64_t LoadTime(const Slot& slot, const std::uint8_t* record) {
  std::int64_t time = 0;
  std::memcpy(&time, record + slot.offset, sizeof(time));
  return time;
}

void StoreTime(std::int64_t time, const Slot& slot, std::uint8_t* record) {
  std::memcpy(record + slot.offset, &time, sizeof(time));
}

std::span<const std::uint8_t> WithoutTrailingZeros(const Slot& slot, const std::uint8_t* record) {
  std::span<const std::uint8_t> bytes(record + slot.offset, slot.size);
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  return bytes;
}

std::u16string TextUpToNul(const Slot& slot, const std::uint8_t* record) {
  std::u16string text(slot.size / 2, u'\0');
  std::memcpy(text.data(), record + slot.offset, slot.size);
  text.resize(std::min(text.find(u'\0'), text.size()));
  return text;
}

/// Writes what leaves room for the NUL, and no half of a surrogate pair.
void PutText(std::u16string_view text, const Slot& slot, std::uint8_t* record) {
  std::size_t length = std::min<std::size_t>(text.size(), slot.size / 2u - 1u);
  if (length < text.size() && handset::IsLowSurrogate(text[length])) --length;
  std::memcpy(record + slot.offset, text.data(), length * sizeof(char16_t));
}

/// Whether PutText of the text makes the slot: it has a NUL and nothing behind it.
bool IsZeroBehind(std::u16string_view text, const Slot& slot, const std::uint8_t* record) {
  return text.size() < slot.size / 2u && WithoutTrailingZeros(slot, record).size() <= text.size() * sizeof(char16_t);
}

void BindText(const Slot& slot, const std::uint8_t* record, Query& query, int parameter) {
  const std::u16string text = TextUpToNul(slot, record);
  if (handset::IsWellFormed(text) && IsZeroBehind(text, slot, record)) {
    query.Bind(parameter, handset::Utf8(text));
  } else {
    query.Bind(parameter, WithoutTrailingZeros(slot, record));
  }
}

}  // namespace

std::vector<Column> ColumnsOf(const qv::layout::RecordLayout& layout) {
  std::vector<Column> columns;
  for (const qv::layout::Field& field : layout.fields) {
    if (field.store.form == Form::kNone || field.store.form == Form::kUnused) continue;
    if (field.carried == qv::layout::Carried::kRepeated) continue;
    columns.push_back({field.name, field.store});
  }
  for (const qv::layout::ItemRun& run : layout.items) {
    if (run.slots == qv::layout::kAnyNumber) continue;
    const auto size = static_cast<std::uint16_t>(run.item.size * run.slots);
    columns.push_back({run.name, qv::layout::Bytes(run.store_offset, size)});
  }
  return columns;
}

std::string TypeOf(const Column& column) {
  switch (KindOf(column.slot)) {
    case Kind::kNumber:
    case Kind::kTime: return "INTEGER NOT NULL DEFAULT 0";
    case Kind::kText: return "TEXT NOT NULL DEFAULT ''";
    case Kind::kBytes: break;
  }
  return "BLOB NOT NULL DEFAULT x''";
}

void BindColumn(const Slot& slot, const std::uint8_t* record, Query& query, int parameter) {
  switch (KindOf(slot)) {
    case Kind::kNumber: return query.Bind(parameter, std::int64_t{qv::layout::LoadSlot(slot, record)});
    case Kind::kTime: return query.Bind(parameter, LoadTime(slot, record));
    case Kind::kText: return BindText(slot, record, query, parameter);
    case Kind::kBytes: return query.Bind(parameter, WithoutTrailingZeros(slot, record));
  }
}

void ReadColumn(const Query& query, int column, const Slot& slot, std::uint8_t* record) {
  if (KindOf(slot) == Kind::kNumber) {
    qv::layout::StoreSlot(slot, record, static_cast<std::uint32_t>(query.Number(column)));
  } else if (KindOf(slot) == Kind::kTime) {
    StoreTime(query.Number(column), slot, record);
  } else if (KindOf(slot) == Kind::kText && !query.IsBlob(column)) {
    PutText(handset::Utf16(query.Text(column)), slot, record);
  } else {
    const std::span<const std::uint8_t> bytes = query.Blob(column);
    std::copy_n(bytes.data(), std::min<std::size_t>(bytes.size(), slot.size), record + slot.offset);
  }
}

}  // namespace stores
