// For tests that turn each byte of a structure over to see where it goes, in both directions.
#ifndef QV_TESTS_SUPPORT_TURNED_BYTES_H
#define QV_TESTS_SUPPORT_TURNED_BYTES_H

#include <span>
#include <vector>

#include "tests/support/agent_test.h"

namespace qv_test {

/// The source that WithByteTurned tells of.
inline Bytes WithOneTurned(Bytes bytes, std::size_t at) {
  bytes.at(at) ^= 0x40;
  return bytes;
}

/// What the other form takes from this one.
inline std::vector<CopiedBytes> TheOtherWay(std::span<const CopiedBytes> copied) {
  std::vector<CopiedBytes> back;
  for (const CopiedBytes& field : copied) back.push_back({field.to, field.size, field.from});
  return back;
}

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_TURNED_BYTES_H
