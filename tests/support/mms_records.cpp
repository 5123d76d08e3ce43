// The bytes of multimedia messages.
#include "tests/support/mms_records.h"

namespace qv_test {

Bytes MmsHead(std::uint32_t text_length, std::uint32_t id, std::uint32_t value, std::uint32_t data_length) {
  return Words({0, text_length, id, value, 0, data_length});
}

Bytes MmsRecord(std::uint32_t id, std::string_view text, const Bytes& data, std::uint32_t value) {
  Bytes record = MmsHead(static_cast<std::uint32_t>(text.size()), id, value, static_cast<std::uint32_t>(data.size()));
  record.insert(record.end(), text.begin(), text.end());
  Append(record, data);
  return record;
}

}  // namespace qv_test
