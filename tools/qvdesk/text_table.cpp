// Layout of text tables.
#include "tools/qvdesk/text_table.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <numeric>

#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 6;
constexpr std::size_t kWidthWithoutTerminal = 120;

using Row = std::vector<std::string>;

void Shrink(std::vector<std::size_t>& widths, const std::vector<bool>& whole, std::size_t width) {
  const std::size_t gaps = kGap * (widths.size() - 1);
  while (std::accumulate(widths.begin(), widths.end(), gaps) > width) {
    std::size_t* widest = nullptr;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (i < whole.size() && whole[i]) continue;
      if (widest == nullptr || widths[i] > *widest) widest = &widths[i];
    }
    if (widest == nullptr || *widest <= kNarrowest) return;
    --*widest;
  }
}

void AppendRow(const Row& row, const std::vector<std::size_t>& widths, std::string& text) {
  std::string line;
  std::size_t column_begin = 0;
  for (std::size_t i = 0; i < row.size(); ++i) {
    line += std::string(column_begin - Width(line), ' ') + CutTo(row[i], widths[i]);
    column_begin += widths[i] + kGap;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  text += line + '\n';
}

}  // namespace

std::string TextTable::Render(std::size_t width) const {
  std::vector<Row> visible = rows;
  visible.insert(visible.begin(), header);
  std::vector<std::size_t> widths(header.size());
  for (Row& row : visible) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i] = Visible(row[i]);
      widths[i] = std::max(widths[i], Width(row[i]));
    }
  }
  Shrink(widths, whole, width);
  Row rule;
  for (const std::size_t column : widths) rule.emplace_back(column, '-');
  visible.insert(visible.begin() + 1, rule);
  std::string text;
  for (const Row& row : visible) AppendRow(row, widths, text);
  return text;
}

std::size_t TerminalWidth() {
  winsize size{};
  const bool known = isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? size.ws_col : kWidthWithoutTerminal;
}

}  // namespace qvdesk
