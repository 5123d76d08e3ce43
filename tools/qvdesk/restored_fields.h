// What a phone has back after a restore, and what not: from the rows of the record forms, and the rules beside them.
#ifndef QV_TOOLS_QVDESK_RESTORED_FIELDS_H
#define QV_TOOLS_QVDESK_RESTORED_FIELDS_H

#include <string>
#include <string_view>
#include <vector>

#include "layout/record_layout.h"
#include "tools/qvdesk/catalog.h"

namespace qvdesk {

/// Of a record itself, or of another one that it refers to. Each phone gives its own.
bool IsId(std::string_view name);

/// Whether a recover brings the field or the run of items back as it was exported. Not ids, rows that only an export
/// carries, and what the module's rules except.
bool IsRestored(const Module& module, const qv::layout::RecordLayout& layout, std::string_view name);

/// Some fields of one form.
struct RecordFields {
  std::string record;  ///< The form's name: "contact".
  std::vector<std::string> names;
};

/// The fields of the module's files that are not restored, but for ids.
std::vector<RecordFields> NotRestored(const Module& module);

/// The fields of the module's store that no file of it tells.
std::vector<RecordFields> NotExported(const Module& module);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_RESTORED_FIELDS_H
