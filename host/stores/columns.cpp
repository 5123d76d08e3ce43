// Slots to columns and back.
#include "host/stores/columns.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "host/handset/unicode.h"
#include "layout/narrow_text.h"

namespace stores {
namespace {

using qv::layout::Form;
using qv::layout::Slot;

enum class Kind { kNumber, kTime, kText, kNarrowText, kDate, kBytes };

Kind KindOf(const Slot& slot) {
  if (qv::layout::IsNumeric(slot.form)) return Kind::kNumber;
  switch (slot.form) {
    case Form::kFileTime: return Kind::kTime;
    case Form::kText:
    case Form::kRawText:
    case Form::kTimeText: return Kind::kText;
    case Form::kNarrowText: return Kind::kNarrowText;
    case Form::kSystemTime: return Kind::kDate;
    default: return Kind::kBytes;
  }
}

std::int64_t LoadNumber(const Slot& slot, const std::uint8_t* record) {
  const std::uint32_t number = qv::layout::LoadSlot(slot, record);
  return slot.form == Form::kSigned ? std::int64_t{static_cast<std::int32_t>(number)} : std::int64_t{number};
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
  const bool gives_back = handset::IsWellFormed(text) && IsZeroBehind(text, slot, record);
  query.BindText(parameter, handset::Utf8(text), gives_back, WithoutTrailingZeros(slot, record));
}

/// Room for a narrow text as a wide one: a character is a byte of it at least.
constexpr std::uint16_t kWideSize = sizeof(char16_t) * (qv::layout::kMostNarrowText + 1);
constexpr Slot kWide = qv::layout::Text(0, kWideSize);

std::string NarrowText(const Slot& slot, const std::uint8_t* record) {
  std::uint8_t wide[kWideSize] = {};
  qv::layout::PutWideText(record + slot.offset, slot.size, wide, kWideSize);
  return handset::Utf8(TextUpToNul(kWide, wide));
}

void PutNarrowText(std::string_view text, const Slot& slot, std::uint8_t* record) {
  std::uint8_t wide[kWideSize] = {};
  PutText(handset::Utf16(text), kWide, wide);
  qv::layout::PutNarrowText(wide, kWideSize, record + slot.offset, slot.size);
}

/// "2006-01-05 09:03:07"; nothing for no time at all. The day of the week and the milliseconds are not told.
std::string DateText(const Slot& slot, const std::uint8_t* record) {
  if (WithoutTrailingZeros(slot, record).empty()) return "";
  coredll::SYSTEMTIME t;
  std::memcpy(&t, record + slot.offset, sizeof(t));
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute,
                t.wSecond);
  return text;
}

/// What is missing at the end of the text is zero.
void PutDate(std::string_view text, const Slot& slot, std::uint8_t* record) {
  coredll::SYSTEMTIME t = {};
  (void)std::sscanf(std::string(text).c_str(), "%hu-%hu-%hu %hu:%hu:%hu", &t.wYear, &t.wMonth, &t.wDay, &t.wHour,
                    &t.wMinute, &t.wSecond);
  std::memcpy(record + slot.offset, &t, sizeof(t));
}

/// Binds the text that `put` would make the slot of, or the slot's bytes when it would not.
void BindIfExact(const std::string& text, void (*put)(std::string_view, const Slot&, std::uint8_t*), const Slot& slot,
                 const std::uint8_t* record, Query& query, int parameter) {
  std::vector<std::uint8_t> again(slot.offset + slot.size);
  put(text, slot, again.data());
  const bool gives_back = std::equal(again.begin() + slot.offset, again.end(), record + slot.offset);
  query.BindText(parameter, text, gives_back, WithoutTrailingZeros(slot, record));
}

bool IsNamed(const Slot& slot) {
  return slot.form != Form::kNone && slot.form != Form::kUnused;
}

}  // namespace

std::vector<Column> ColumnsOf(const qv::layout::RecordLayout& layout) {
  std::vector<Column> columns;
  for (const qv::layout::Field& field : layout.fields) {
    if (!IsNamed(field.store)) continue;
    if (field.carried == qv::layout::Carried::kRepeated) continue;
    columns.push_back({field.name, field.store});
  }
  for (const qv::layout::ItemRun& run : layout.items) {
    if (!LiesInRecord(run)) continue;
    const auto size = static_cast<std::uint16_t>(StoreItemSize(run) * run.slots);
    columns.push_back({run.name, qv::layout::Bytes(run.store_offset, size)});
  }
  return columns;
}

const Slot& IdSlotOf(const qv::layout::RecordLayout& layout) {
  return std::ranges::find_if(layout.fields, IsNamed, &qv::layout::Field::store)->store;
}

std::string Listed(const std::vector<Column>& columns, const char* suffix) {
  std::string list;
  for (const Column& column : columns) list += ", \"" + column.name + '"' + suffix;
  return list;
}

std::string Defined(const std::vector<Column>& columns) {
  std::string list;
  for (const Column& column : columns) list += ",\n  \"" + column.name + "\" " + TypeOf(column);
  return list;
}

std::string Placeholders(std::size_t count) {
  std::string list;
  for (std::size_t i = 0; i < count; ++i) list += ", ?";
  return list;
}

std::string TypeOf(const Column& column) {
  switch (KindOf(column.slot)) {
    case Kind::kNumber:
    case Kind::kTime: return "INTEGER NOT NULL DEFAULT 0";
    case Kind::kText:
    case Kind::kNarrowText:
    case Kind::kDate: return "TEXT NOT NULL DEFAULT ''";
    case Kind::kBytes: break;
  }
  return "BLOB NOT NULL DEFAULT x''";
}

void BindColumns(const std::vector<Column>& columns, const std::uint8_t* record, Query& query, int first) {
  for (const Column& column : columns) BindColumn(column.slot, record, query, first++);
}

void BindColumn(const Slot& slot, const std::uint8_t* record, Query& query, int parameter) {
  switch (KindOf(slot)) {
    case Kind::kNumber: return query.Bind(parameter, LoadNumber(slot, record));
    case Kind::kTime: return query.Bind(parameter, LoadTime(slot, record));
    case Kind::kText: return BindText(slot, record, query, parameter);
    case Kind::kNarrowText: return BindIfExact(NarrowText(slot, record), PutNarrowText, slot, record, query, parameter);
    case Kind::kDate: return BindIfExact(DateText(slot, record), PutDate, slot, record, query, parameter);
    case Kind::kBytes: return query.Bind(parameter, WithoutTrailingZeros(slot, record));
  }
}

void ReadColumns(const Query& query, int first, const std::vector<Column>& columns, std::uint8_t* record) {
  for (const Column& column : columns) ReadColumn(query, first++, column.slot, record);
}

void ReadColumn(const Query& query, int column, const Slot& slot, std::uint8_t* record) {
  const Kind kind = KindOf(slot);
  if (kind == Kind::kNumber) {
    qv::layout::StoreSlot(slot, record, static_cast<std::uint32_t>(query.Number(column)));
  } else if (kind == Kind::kTime) {
    StoreTime(query.Number(column), slot, record);
  } else if (kind == Kind::kBytes || query.IsBlob(column)) {
    const std::span<const std::uint8_t> bytes = query.Blob(column);
    std::copy_n(bytes.data(), std::min<std::size_t>(bytes.size(), slot.size), record + slot.offset);
  } else if (kind == Kind::kText) {
    PutText(handset::Utf16(query.Text(column)), slot, record);
  } else {
    (kind == Kind::kDate ? PutDate : PutNarrowText)(query.Text(column), slot, record);
  }
}

}  // namespace stores
