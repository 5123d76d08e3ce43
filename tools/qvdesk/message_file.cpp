// Header fields are recognised by their form alone; what they say is not looked at.
#include "tools/qvdesk/message_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

/// Beyond these a text is a file to be opened, not to be shown on a terminal.
constexpr std::size_t kMostTextShown = 16384;

/// Takes a line from the front, without its end.
std::string_view TakeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(std::min(rest.size(), line.size() + 1));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

bool IsFolded(std::string_view line) {
  return line.starts_with(' ') || line.starts_with('\t');
}

/// The place of the colon in a header field, npos in any other line. A name is printable ASCII without spaces.
std::size_t ColonOf(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == 0 || colon == std::string_view::npos) return std::string_view::npos;
  const std::string_view name = line.substr(0, colon);
  const bool is_name = std::ranges::all_of(name, [](char c) { return c > ' ' && c < '\x7F'; });
  return is_name ? colon : std::string_view::npos;
}

std::string_view Trimmed(std::string_view value) {
  const std::size_t begin = std::min(value.find_first_not_of(" \t"), value.size());
  return value.substr(begin, value.find_last_not_of(" \t") + 1 - begin);
}

/// The beginning of a text, cut between characters of UTF-8.
std::string_view BeginningOf(std::string_view text) {
  std::size_t size = std::min(text.size(), kMostTextShown);
  while (size < text.size() && size > kMostTextShown - 4 && (text[size] & 0xC0) == 0x80) --size;
  return text.substr(0, size);
}

}  // namespace

Message ParseMessage(std::span<const std::uint8_t> bytes) {
  Message message;
  std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  while (!rest.empty()) {
    std::string_view after = rest;
    const std::string_view line = TakeLine(after);
    const std::size_t colon = ColonOf(line);
    if (IsFolded(line) && !message.header.empty()) {
      message.header.back().second += ' ';
      message.header.back().second += Trimmed(line);
    } else if (colon != std::string_view::npos) {
      message.header.emplace_back(line.substr(0, colon), Trimmed(line.substr(colon + 1)));
    } else {
      if (line.empty()) rest = after;
      break;
    }
    rest = after;
  }
  message.text = rest;
  return message;
}

std::string RenderMessage(const Message& message) {
  std::string rendered;
  for (const auto& [name, value] : message.header) {
    rendered += fmt::format("{:<14} {}\n", Visible(name) + ":", Visible(value));
  }
  std::string_view shown = BeginningOf(message.text);
  const std::size_t hidden = message.text.size() - shown.size();
  if (!shown.empty()) rendered += '\n';
  while (!shown.empty()) rendered += Visible(TakeLine(shown)) + '\n';
  if (hidden != 0) {
    rendered += fmt::format("… and {} more, which --format json gives\n", CountOf(hidden, "byte"));
  }
  return rendered;
}

}  // namespace qvdesk
