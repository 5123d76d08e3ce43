// The interpreter of the field tables: export and recover are the same walk with the sides swapped.
#include "layout/record_layout.h"

#include <algorithm>

#include "layout/bytes.h"

namespace qv::layout {
namespace {

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
    const std::uint32_t value = LoadSlot(from, source);
    StoreSlot(to, target, from.form == Form::kTruth ? value != 0 : value);
  } else if (from.form == Form::kTimeText) {
    PutTimeNumbers(ParseTimeText(source + from.offset), target + to.offset);
  } else if (from.form == Form::kFileTime) {
    PutFileTimeNumbers(source + from.offset, target + to.offset, to.size);
  } else if (from.form == Form::kSystemTime) {
    PutSystemTimeNumbers(source + from.offset, target + to.offset, to.size);
  } else if (from.form == Form::kNarrowText) {
    PutWideText(source + from.offset, from.size, target + to.offset, to.size);
  } else if (to.form == Form::kFileTime) {
    PutFileTime(source + from.offset, from.size, target + to.offset);
  } else if (to.form == Form::kSystemTime) {
    PutSystemTime(source + from.offset, from.size, target + to.offset);
  } else if (to.form == Form::kNarrowText) {
    PutNarrowText(source + from.offset, from.size, target + to.offset, to.size);
  } else if (from.form == Form::kTimeNumbers) {
    PutTimeText(LoadTimeNumbers(source + from.offset), target + to.offset);
  } else if (from.form == Form::kText) {
    CopyText(source + from.offset, from.size, target + to.offset, to.size);
  } else {
    std::copy_n(source + from.offset, from.size, target + to.offset);
  }
}

bool IsCarried(Carried carried, bool exporting) {
  switch (carried) {
    case Carried::kBothWays: return true;
    case Carried::kRepeated:
    case Carried::kExportOnly: return exporting;
    case Carried::kRecoverOnly: return !exporting;
    case Carried::kByModule: return false;
  }
  return false;
}

/// Walks the rows, carrying `from` slots of `source` to `to` slots of a zeroed `target`.
void Convert(std::span<const Field> fields, Slot Field::*from, const std::uint8_t* source, Slot Field::*to,
             std::uint8_t* target, bool exporting) {
  for (const Field& field : fields) {
    const Slot& source_slot = field.*from;
    const Slot& target_slot = field.*to;
    if (source_slot.form == Form::kNone || target_slot.form == Form::kNone) continue;
    if (!IsCarried(field.carried, exporting)) continue;
    Carry(source_slot, source, target_slot, target);
    if (field.ends_when_zero && LoadSlot(target_slot, target) == 0) return;
  }
}

}  // namespace

std::uint32_t LoadSlot(const Slot& slot, const std::uint8_t* record) {
  const std::uint32_t number = LoadNumber(record + slot.offset, slot.size) >> slot.shift & LargestNumber(slot);
  if (slot.form != Form::kSigned) return number;
  const std::uint32_t sign = LargestNumber(slot) / 2 + 1;
  return (number ^ sign) - sign;
}

void StoreSlot(const Slot& slot, std::uint8_t* record, std::uint32_t value) {
  std::uint8_t* const place = record + slot.offset;
  if (slot.width != 0) {
    const std::uint32_t others = LoadNumber(place, slot.size) & ~(LargestNumber(slot) << slot.shift);
    value = others | (value & LargestNumber(slot)) << slot.shift;
  }
  StoreNumber(place, slot.size, value);
}

void ToExchange(const RecordLayout& layout, const std::uint8_t* store, std::uint8_t* exchange) {
  std::fill_n(exchange, layout.exchange_size, std::uint8_t{0});
  Convert(layout.fields, &Field::store, store, &Field::exchange, exchange, true);
  for (const ItemRun& run : layout.items) {
    if (run.is_counted_in_front) continue;
    StoreSlot(run.count, exchange, std::min<std::uint32_t>(ItemCount(run, exchange), run.slots));
  }
}

void ToStore(const RecordLayout& layout, const std::uint8_t* exchange, std::uint8_t* store) {
  std::fill_n(store, layout.store_size, std::uint8_t{0});
  Convert(layout.fields, &Field::exchange, exchange, &Field::store, store, false);
}

}  // namespace qv::layout
