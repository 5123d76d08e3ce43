// Reads and rewrites the anchor file. Its shape, including what the writer does in front of a further section, is what
// handsets in use hold: it must not change.
#include "sync/anchor_file.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <type_traits>

#include "platform/file.h"
#include "platform/memory.h"
#include "qv_rapi.h"

namespace qv {
namespace {

constexpr std::size_t kBytesRead = 2000;
constexpr std::size_t kAnchorChars = 14;

/// What the platform's conversions return for a character that the other side lacks.
constexpr auto kNotConvertible = static_cast<std::size_t>(-1);

using Text8 = std::string_view;
using Text16 = std::u16string_view;

/// The first occurrence at or after `from`, or npos.
template <typename Char>
std::size_t Find(std::basic_string_view<Char> text, std::basic_string_view<Char> what, std::size_t from = 0) {
  const auto found = std::search(text.begin() + std::min(from, text.size()), text.end(), what.begin(), what.end());
  return found == text.end() ? Text8::npos : static_cast<std::size_t>(found - text.begin());
}

template <typename Char>
std::basic_string_view<Char> Between(std::basic_string_view<Char> text, std::size_t begin, std::size_t end) {
  return {text.data() + begin, std::min(end, text.size()) - begin};
}

template <typename Char>
std::basic_string_view<Char> View(const List<Char>& text) {
  return {text.data(), text.size()};
}

/// The file's text up to its first NUL, at most 2000 bytes; empty when the file cannot be read. False without memory.
bool ReadText(const char16_t* path, File::Sharing sharing, List<char>& text) {
  if (!text.Resize(kBytesRead)) return false;
  std::size_t got = 0;
  File file = File::OpenExisting(path, sharing);
  if (!file.IsOpen() || !file.Read(text.data(), kBytesRead, got)) got = 0;
  const auto end = std::find(text.begin(), text.begin() + got, '\0');
  return text.Resize(static_cast<std::size_t>(end - text.begin()));
}

/// Text that the code page cannot read, such as half a character at the 2000th byte, is widened byte by byte: the
/// agent's own lines are plain ASCII and must stay readable.
bool Widen(List<char>& bytes, List<char16_t>& text) {
  if (!bytes.Append('\0') || !text.Resize(bytes.size())) return false;
  const std::size_t length = coredll::mbstowcs(text.data(), bytes.data(), text.size());
  if (length != kNotConvertible) return text.Resize(length);
  std::transform(bytes.begin(), bytes.end(), text.begin(), [](char byte) { return static_cast<unsigned char>(byte); });
  return text.Resize(bytes.size() - 1);
}

bool Narrow(const char16_t* text, List<char>& bytes) {
  if (!bytes.Resize(2 * Text16(text).size() + 1)) return false;
  const std::size_t length = coredll::wcstombs(bytes.data(), text, bytes.size());
  return length != kNotConvertible && bytes.Resize(length);
}

template <typename Char>
bool AppendAll(List<Char>& text, std::initializer_list<std::basic_string_view<std::type_identity_t<Char>>> pieces) {
  for (const auto& piece : pieces) {
    if (!text.Append({piece.data(), piece.size()})) return false;
  }
  return true;
}

Text16 TrimBlanks(Text16 text) {
  while (text.starts_with(u' ')) text.remove_prefix(1);
  while (text.ends_with(u' ')) text.remove_suffix(1);
  return text;
}

/// The value that `text` gives the key in the section, empty when it gives none.
Text16 FindValue(Text16 text, Text16 header, Text16 key) {
  const std::size_t header_at = Find(text, header);
  if (header_at == Text16::npos) return {};
  const Text16 section = Between(text, header_at, Find(text, Text16(u"["), header_at + header.size()));
  const std::size_t key_at = Find(section, key);
  if (key_at == Text16::npos) return {};
  const Text16 line = Between(section, key_at, Find(section, Text16(u"\r\n"), key_at));
  const std::size_t equals_at = Find(line, Text16(u"="));
  return equals_at == Text16::npos ? Text16() : TrimBlanks(Between(line, equals_at + 1, line.size()));
}

/// One rewrite of the file's text.
struct Rewrite {
  Text8 text;
  Text8 header;
  Text8 key;
  Text8 value;
  List<char> result{};

  bool AddSection() {
    return AppendAll(result, {text, text.empty() ? Text8() : Text8("\r\n"), header, "\r\n", key, " = ", value});
  }

  /// Everything between the "=" and the line's end gives way to the value. A line without a "=" is no line of ours
  /// and is written anew, as far as it is the section's.
  bool ReplaceValue(std::size_t key_at, std::size_t section_at, std::size_t section_end) {
    const std::size_t line_end = std::min(Find(text, Text8("\r\n"), key_at), text.size());
    const std::size_t equals_at = Find(text, Text8("="), key_at);
    if (equals_at < std::min(line_end, section_end)) {
      return AppendAll(result, {Between(text, 0, equals_at + 1), " ", value, Between(text, line_end, text.size())});
    }
    const Text8 kept = Between(text, 0, LineBegin(key_at, section_at));
    const Text8 tail = Between(text, std::min(line_end, section_end), text.size());
    return AppendAll(result, {kept, key, " = ", value, tail});
  }

  bool InsertLine(Text8 line_key, std::size_t at, std::size_t section_at, bool keep_rest) {
    const std::size_t place = BeforeLineEnds(at, section_at);
    return AppendAll(result, {Between(text, 0, place), "\r\n", line_key, " = ", value,
                              keep_rest ? Between(text, place, text.size()) : Text8()});
  }

  bool Run() {
    const std::size_t header_at = Find(text, header);
    if (header_at == Text8::npos) return AddSection();
    const std::size_t section_at = header_at + header.size();
    const std::size_t next_section = Find(text, Text8("["), section_at);
    const std::size_t key_at = Find(text, key, header_at);
    if (key_at < next_section) return ReplaceValue(key_at, section_at, next_section);
    if (next_section == Text8::npos) return InsertLine(key, text.size(), section_at, false);
    // In front of a further section only the key's first character is written, so that module's anchor is never found
    // again and it falls back to full exports. Desktops count on handsets answering so.
    return InsertLine(Between(key, 0, 1), next_section, section_at, true);
  }

 private:
  /// Steps back from `at` over whole line ends, never back past the section's header.
  std::size_t BeforeLineEnds(std::size_t at, std::size_t section_at) const {
    while (at >= section_at + 2 && text[at - 2] == '\r' && text[at - 1] == '\n') at -= 2;
    return at;
  }

  std::size_t LineBegin(std::size_t at, std::size_t section_at) const {
    while (at > section_at && !(text[at - 1] == '\n' && text[at - 2] == '\r')) --at;
    return at;
  }
};

}  // namespace

std::size_t ReadAnchorValue(const char16_t* section, const char16_t* key, const char16_t* default_value,
                            char16_t* buffer, std::size_t max_chars, const char16_t* path) {
  List<char> bytes;
  List<char16_t> text;
  List<char16_t> header;
  Text16 value;
  if (ReadText(path, File::Sharing::kRead, bytes) && Widen(bytes, text) &&
      AppendAll(header, {Text16(u"["), Text16(section), Text16(u"]")})) {
    value = FindValue(View(text), View(header), key);
    value = Between(value, 0, max_chars);
  }
  if (value.empty()) value = default_value;
  *std::copy(value.begin(), value.end(), buffer) = u'\0';
  return value.size();
}

int WriteAnchorValue(const char16_t* section, const char16_t* key, const char16_t* value, const char16_t* path) {
  List<char> section8;
  List<char> key8;
  List<char> value8;
  List<char> header;
  List<char> text;
  if (!Narrow(section, section8) || !Narrow(key, key8) || !Narrow(value, value8) ||
      !AppendAll(header, {Text8("["), View(section8), Text8("]")}) || !ReadText(path, File::Sharing::kNone, text)) {
    return 1;
  }
  Rewrite rewrite{.text = View(text), .header = View(header), .key = View(key8), .value = View(value8)};
  if (!rewrite.Run()) return 1;
  File file = File::CreateAlways(path, File::Sharing::kNone);
  if (file.IsOpen()) (void)file.Write(rewrite.result.data(), rewrite.result.size());
  return 1;
}

void CheckAnchor(SyncMode& mode, const char16_t* key, const char16_t* anchor) {
  if (mode != SyncMode::kIncremental) return;
  char16_t stored[kAnchorCapacity];
  ReadAnchorValue(kAnchorSection, key, kNeverSynchronised, stored, kAnchorChars, kAnchorFile);
  if (Text16(stored) == kNeverSynchronised || Text16(stored) != anchor) mode = SyncMode::kFull;
}

void MoveAnchor(SyncMode mode, const char16_t* key, char16_t* anchor) {
  if (!IsRemembered(mode)) return;
  coredll::SYSTEMTIME now;
  coredll::GetLocalTime(&now);
  std::fill_n(anchor, kAnchorCapacity, u'\0');
  // No leading zeros: two moments can share an anchor, and desktops compare anchors only as whole strings.
  coredll::_snwprintf(anchor, kAnchorCapacity - 1, u"%d%d%d%d%d%d", now.wYear, now.wMonth, now.wDay, now.wHour,
                      now.wMinute, now.wSecond);
  WriteAnchorValue(kAnchorSection, key, anchor, kAnchorFile);
}

}  // namespace qv
