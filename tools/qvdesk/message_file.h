// A message as it lies in a file: RFC 5322, header fields in lines, an empty line, the text.
#ifndef QV_TOOLS_QVDESK_MESSAGE_FILE_H
#define QV_TOOLS_QVDESK_MESSAGE_FILE_H

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace qvdesk {

struct Message {
  std::vector<std::pair<std::string, std::string>> header;  ///< Names and values; what was folded is one line again.
  std::string text;                                         ///< All that follows, in whatever encoding.
};

/// Takes any bytes: the first line that is no header field ends the header, whether or not it is empty. Lines end with
/// CR LF or LF.
Message ParseMessage(std::span<const std::uint8_t> bytes);

/// For people: header and text line by line, what no terminal should see made visible, and of a long text the
/// beginning.
std::string RenderMessage(const Message& message);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_MESSAGE_FILE_H
