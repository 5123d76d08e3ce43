// The interpreter of the field tables: export and recover are the same walk with the sides swapped.
#include "layout/record_layout.h"

#include <algorithm>

#include "layout/bytes.h"

namespace qv::layout {
namespace {

bool IsNumeric(Form form) {
  return form == Form::number || form == Form::bits || form == Form::truth;
}

std::uint32_t BitMask(const Slot& slot) {
  return (slot.width < 32 ? 1u << slot.width : 0u) - 1u;
}

std::uint32_t LoadValue(const Slot& slot, const std::uint8_t* record) {
  const std::uint32_t number = LoadNumber(record + slot.offset, slot.size);
  switch (slot.form) {
    case Form::bits: return (number >> slot.shift) & BitMask(slot);
    case Form::truth: return number != 0 ? 1 : 0;
    default: return number;
  }
}

void StoreValue(const Slot& slot, std::uint8_t* record, std::uint32_t value) {
  std::uint8_t* const place = record + slot.offset;
  if (slot.form == Form::bits) {
    const std::uint32_t others = LoadNumber(place, slot.size) & ~(BitMask(slot) << slot.shift);
    value = others | (value & BitMask(slot)) << slot.shift;
  }
  StoreNumber(place, slot.size, value);
}

/// Copies text up to its NUL, at most the source's width and the target's less the NUL. The target is zero already.
void CopyText(const std::uint8_t* source, std::size_t source_size, std::uint8_t* target, std::size_t target_size) {
  const std::size_t room = std::min(source_size, target_size - 2);
  for (std::size_t i = 0; i < room && (source[i] | source[i + 1]) != 0; i += 2) {
    target[i] = source[i];
    target[i + 1] = source[i + 1];
  }
}

void Carry(const Slot& from, const std::uint8_t* source, const Slot& to, std::uint8_t* target) {
  if (IsNumeric(from.form)) {
    StoreValue(to, target, LoadValue(from, source));
  } else if (from.form == Form::text) {
    CopyText(source + from.offset, from.size, target + to.offset, to.size);
  } else {
    std::copy_n(source + from.offset, std::min(from.size, to.size), target + to.offset);
  }
}

/// Walks the rows, carrying `from` slots of `source` to `to` slots of a zeroed `target`.
void Convert(std::span<const Field> fields, Slot Field::*from, const std::uint8_t* source, Slot Field::*to,
             std::uint8_t* target, bool exporting) {
  for (const Field& field : fields) {
    const Slot& source_slot = field.*from;
    const Slot& target_slot = field.*to;
    if (source_slot.form == Form::none || target_slot.form == Form::none) continue;
    if (field.export_only && !exporting) continue;
    Carry(source_slot, source, target_slot, target);
    if (field.ends_when_zero && LoadValue(target_slot, target) == 0) return;
  }
}

}  // namespace

void ToExchange(const RecordLayout& layout, const std::uint8_t* store, std::uint8_t* exchange) {
  std::fill_n(exchange, layout.exchange_size, std::uint8_t{0});
  Convert(layout.fields, &Field::store, store, &Field::exchange, exchange, true);
  for (const ItemRun& run : layout.items) {
    std::uint8_t& count = exchange[run.count_offset];
    count = static_cast<std::uint8_t>(std::min<std::uint32_t>(count, run.slots));
  }
}

void ToStore(const RecordLayout& layout, const std::uint8_t* exchange, std::uint8_t* store) {
  std::fill_n(store, layout.store_size, std::uint8_t{0});
  Convert(layout.fields, &Field::exchange, exchange, &Field::store, store, false);
}

}  // namespace qv::layout
