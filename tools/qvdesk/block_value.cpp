// Blocks to values and back.
#include "tools/qvdesk/block_value.h"

#include <optional>
#include <stdexcept>
#include <string_view>

#include "layout/bytes.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::ItemRun;

using Bytes = std::span<const std::uint8_t>;

/// UTF-16, which a run of bytes is not.
bool IsWide(const ItemRun& run) {
  return run.item.form == qv::layout::Form::kRawText;
}

bool IsText(const ItemRun& run) {
  return IsWide(run) || std::string_view(run.name) == "text";
}

std::u16string Characters(Bytes block) {
  std::u16string characters;
  for (std::size_t i = 0; i + 1 < block.size(); i += 2) {
    characters += static_cast<char16_t>(qv::layout::LoadNumber(&block[i], 2));
  }
  return characters;
}

std::vector<std::uint8_t> BytesOf(std::u16string_view characters) {
  std::vector<std::uint8_t> bytes(2 * characters.size());
  for (std::size_t i = 0; i < characters.size(); ++i) qv::layout::StoreNumber(&bytes[2 * i], 2, characters[i]);
  return bytes;
}

/// Nothing for a block that is not readable.
std::optional<std::string> ReadableText(const ItemRun& run, Bytes block) {
  if (IsWide(run)) {
    const std::u16string characters = Characters(block);
    const std::string text = ToUtf8(characters);
    return ToUtf16(text) == characters ? std::optional(text) : std::nullopt;
  }
  const std::string text(block.begin(), block.end());
  const bool is_readable = IsText(run) && Visible(text) == text;  // Which also replaces what is not UTF-8.
  return is_readable ? std::optional(text) : std::nullopt;
}

}  // namespace

bool IsBlock(const ItemRun& run) {
  return IsWide(run) || (run.item.form == qv::layout::Form::kBytes && run.item.size == 1);
}

std::string BlockText(const ItemRun& run, Bytes block) {
  if (block.empty()) return "";
  return ReadableText(run, block).value_or(CountOf(block.size(), "byte"));
}

Json BlockToJson(const ItemRun& run, Bytes block) {
  if (!IsText(run)) return Hex(block);
  if (const std::optional<std::string> text = ReadableText(run, block)) return *text;
  return {{"hex", Hex(block)}};
}

std::vector<std::uint8_t> BlockFromJson(const Json& value, const ItemRun& run) {
  const bool is_hex_object = value.is_object() && value.size() == 1 && value.contains("hex");
  const Json& given = IsText(run) && is_hex_object ? value["hex"] : value;
  if (!given.is_string()) {
    const char* const takes = IsText(run) ? "a string, or {\"hex\": \"…\"}" : "a string of hexadecimal digits";
    throw std::runtime_error(std::string("takes ") + takes + ", not " + value.dump());
  }
  const std::string text = given;
  if (!IsText(run) || is_hex_object) {
    std::vector<std::uint8_t> bytes = FromHex(text);
    if (bytes.size() % run.item.size == 0) return bytes;
    throw std::runtime_error("takes whole characters of 2 bytes, not " + CountOf(bytes.size(), "byte"));
  }
  if (IsWide(run)) return BytesOf(ToUtf16(text));
  return {text.begin(), text.end()};
}

}  // namespace qvdesk
