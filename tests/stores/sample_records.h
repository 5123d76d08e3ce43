// Store records for tests, made from the record forms alone.
#ifndef QV_TESTS_STORES_SAMPLE_RECORDS_H
#define QV_TESTS_STORES_SAMPLE_RECORDS_H

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "layout/bytes.h"
#include "layout/record_layout.h"

using Record = std::vector<std::uint8_t>;

/// Sets the bits that the slot claims.
inline void Claim(const qv::layout::Slot& slot, Record& mask) {
  const unsigned end = slot.width == 0 ? slot.size * 8u : unsigned{slot.shift} + slot.width;
  for (unsigned bit = slot.shift; bit < end; ++bit) {
    std::uint8_t& byte = mask[slot.offset + bit / 8];
    byte = static_cast<std::uint8_t>(byte | 1u << bit % 8);
  }
}

/// Makes all bytes of the slots for items the same.
inline void FillItems(const qv::layout::RecordLayout& layout, std::uint8_t byte, Record& record) {
  for (const qv::layout::ItemRun& run : layout.items) {
    if (LiesInRecord(run)) std::fill_n(record.begin() + run.store_offset, StoreItemSize(run) * run.slots, byte);
  }
}

/// Ones where the form's rows and items name a bit of the store record.
inline Record NamedBits(const qv::layout::RecordLayout& layout) {
  using qv::layout::Form;
  Record mask(layout.store_size);
  for (const qv::layout::Field& field : layout.fields) {
    if (field.store.form != Form::kNone && field.store.form != Form::kUnused) Claim(field.store, mask);
  }
  FillItems(layout, 0xFF, mask);
  return mask;
}

/// The id is the first row's that is not unused.
inline void PutId(const qv::layout::RecordLayout& layout, std::uint32_t id, Record& record) {
  const qv::layout::Field* field = layout.fields.data();
  while (field->store.form == qv::layout::Form::kUnused) ++field;
  const qv::layout::Slot& slot = field->store;
  qv::layout::StoreNumber(record.data() + slot.offset, slot.size, id);
}

/// Random in all bits that the form names, with the id zero. Its texts are as ill-formed as they come.
inline Record RandomRecord(const qv::layout::RecordLayout& layout, std::mt19937& random) {
  Record record = NamedBits(layout);
  for (std::uint8_t& byte : record) byte = static_cast<std::uint8_t>(byte & random());
  PutId(layout, 0, record);
  return record;
}

/// Random, but without items: of the size of most entries.
inline Record SmallRecord(const qv::layout::RecordLayout& layout, std::mt19937& random) {
  Record record = RandomRecord(layout, random);
  FillItems(layout, 0, record);
  return record;
}

#endif  // QV_TESTS_STORES_SAMPLE_RECORDS_H
