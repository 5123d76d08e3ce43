// The form of a file that is always the same run of records of several forms: one record, whose fields are theirs.
#ifndef QV_TOOLS_QVDESK_WHOLE_FILE_LAYOUT_H
#define QV_TOOLS_QVDESK_WHOLE_FILE_LAYOUT_H

#include <cstdint>
#include <span>

#include "layout/record_layout.h"

namespace qvdesk {

/// So many records of a form, whose fields are called by `name` and their number, from 1: "alarm_1_text_1".
struct RecordsOfAFile {
  const char* name;
  const qv::layout::RecordLayout* layout;
  std::uint32_t count;
};

/// Lives as long as the program.
const qv::layout::RecordLayout& WholeFileLayout(const char* name, std::span<const RecordsOfAFile> parts);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_WHOLE_FILE_LAYOUT_H
