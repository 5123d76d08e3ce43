// A table of text for the terminal: columns as wide as they need to be, cut when the line would be too long.
#ifndef QV_TOOLS_QVDESK_TEXT_TABLE_H
#define QV_TOOLS_QVDESK_TEXT_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

namespace qvdesk {

struct TextTable {
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;  ///< Each as long as the header.
  std::vector<bool> whole = {};                ///< Columns that are never cut: half a date misleads. Empty: none.

  /// Control characters are made visible, the widest columns cut until a line fits into `width` columns.
  std::string Render(std::size_t width) const;
};

/// Columns of the terminal that standard output is; a fixed number when it is none.
std::size_t TerminalWidth();

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_TEXT_TABLE_H
