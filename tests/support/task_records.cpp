// A task's bytes, by hand. What they mean only the store knows.
#include "tests/support/task_records.h"

namespace qv_test {
namespace {

/// The fixed part of all forms: 856 bytes that are all different from their neighbours.
Bytes FixedPart() {
  Bytes r = Items(1, 856, 0x21);
  Put32(r, 0, kTaskId);
  Put32(r, 4, kTaskGroup);
  Put8(r, 449, 2);  // 80-byte items
  Put8(r, 456, 1);  // 144-byte items
  Put8(r, 457, 3);  // 6476-byte items
  return r;
}

void PutItems(Bytes& store_record) {
  PutBytes(store_record, 856, Items(2, 80, 1));
  PutBytes(store_record, 2456, Items(1, 144, 101));
  PutBytes(store_record, 8792, Items(3, 6476, 51));
}

}  // namespace

Bytes StoreTask() {
  Bytes r = FixedPart();
  Put32(r, 0, 0xEEEEEEEE);  // the store's own idea of the id, which is not asked
  r.resize(34696, 0xFF);
  PutItems(r);
  return r;
}

Bytes ExchangeTask() {
  Bytes r = FixedPart();
  Append(r, Items(2, 80, 1));
  Append(r, Items(1, 144, 101));
  Append(r, Items(3, 6476, 51));
  return r;
}

Bytes RecoveredTask() {
  Bytes r = FixedPart();
  r.resize(34696);
  PutItems(r);
  return r;
}

Bytes PlainTask(std::uint32_t id, std::uint32_t group) {
  Bytes r(856);
  Put32(r, 0, id);
  Put32(r, 4, group);
  return r;
}

Bytes RecoveredPlainTask(std::uint32_t id, std::uint32_t group) {
  Bytes r = PlainTask(id, group);
  r.resize(34696);
  return r;
}

Bytes TaskGroup(std::uint32_t id, std::uint16_t value) {
  Bytes r = Items(1, 288, 0x31);
  Put32(r, 0, id);
  Put16(r, 250, value);
  return r;
}

}  // namespace qv_test
