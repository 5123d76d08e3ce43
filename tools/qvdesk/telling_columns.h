// The columns of the table view: of all that a record holds, what tells it apart for a person.
#ifndef QV_TOOLS_QVDESK_TELLING_COLUMNS_H
#define QV_TOOLS_QVDESK_TELLING_COLUMNS_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "layout/record_layout.h"
#include "tools/qvdesk/record_file.h"

namespace qvdesk {

/// Made of one or more fields.
struct Column {
  std::string title;
  std::function<std::string(const RecordView&)> text;  ///< Empty where the record has nothing to say.
  bool whole = true;                                   ///< Not to be cut.
};

/// What tells records of any form apart: ids, dates, texts, items. The layout must outlive the columns, here as below.
std::vector<Column> TellingColumns(const qv::layout::RecordLayout& layout);

// Choices for forms whose texts are too many for a line.

/// Contacts find their pictures in `directory`.
std::vector<Column> ContactColumns(const qv::layout::RecordLayout& layout, const std::filesystem::path& directory);
std::vector<Column> CardColumns(const qv::layout::RecordLayout& layout, const std::filesystem::path& directory);
/// Whether a mail was received or sent stands behind its id.
std::vector<Column> UnifiedMailColumns(const qv::layout::RecordLayout& layout, const std::filesystem::path& directory);
/// E-mails find their files in `directory`.
std::vector<Column> MessageColumns(const qv::layout::RecordLayout& layout, const std::filesystem::path& directory);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_TELLING_COLUMNS_H
