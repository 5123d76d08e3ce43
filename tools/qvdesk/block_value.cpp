// Blocks to values and back.
#include "tools/qvdesk/block_value.h"

#include <stdexcept>
#include <string_view>

#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::layout::ItemRun;

bool IsText(const ItemRun& run) {
  return std::string_view(run.name) == "text";
}

bool IsReadable(const std::string& text) {
  return Visible(text) == text;  // Which also replaces what is not UTF-8.
}

}  // namespace

bool IsBlock(const ItemRun& run) {
  return run.item.form == qv::layout::Form::kBytes && run.item.size == 1;
}

std::string BlockText(const ItemRun& run, std::span<const std::uint8_t> block) {
  const std::string text(block.begin(), block.end());
  if (text.empty() || (IsText(run) && IsReadable(text))) return text;
  return CountOf(block.size(), "byte");
}

Json BlockToJson(const ItemRun& run, std::span<const std::uint8_t> block) {
  if (!IsText(run)) return Hex(block);
  const std::string text(block.begin(), block.end());
  if (IsReadable(text)) return text;
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
  if (!IsText(run) || is_hex_object) return FromHex(text);
  return {text.begin(), text.end()};
}

}  // namespace qvdesk
