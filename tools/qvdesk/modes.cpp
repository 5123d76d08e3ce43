// Words for modes.
#include "tools/qvdesk/modes.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>

#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

struct ModeWord {
  qv::SyncMode mode;
  const char* word;
};

constexpr ModeWord kModeWords[] = {{qv::SyncMode::kFull, "full"},
                                   {qv::SyncMode::kReplace, "replace"},
                                   {qv::SyncMode::kIncremental, "incremental"},
                                   {qv::SyncMode::kPlainCopy, "plain"}};

}  // namespace

std::string ModeWords() {
  std::string words;
  for (const ModeWord& word : kModeWords) words += (words.empty() ? "" : ", ") + std::string(word.word);
  return words;
}

qv::SyncMode ParseMode(const std::string& text) {
  for (const ModeWord& word : kModeWords) {
    if (SameWithoutCase(text, word.word)) return word.mode;
  }
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end && number >= INT32_MIN && number <= UINT32_MAX) {
    return static_cast<qv::SyncMode>(static_cast<std::int32_t>(number));
  }
  throw UsageError(fmt::format("--mode \"{}\": neither {} nor a 32-bit number.", Visible(text), ModeWords()));
}

std::string Describe(qv::SyncMode mode) {
  const auto number = static_cast<std::int32_t>(mode);
  for (const ModeWord& word : kModeWords) {
    if (word.mode == mode) return fmt::format("{} ({})", word.word, number);
  }
  const char* const like = mode == qv::SyncMode::kLocalRecover ? "as recovers on the handset itself"
                           : qv::IsRemembered(mode)            ? "works like full"
                                                               : "works like plain";
  return fmt::format("{} ({})", number, like);
}

bool Applies(qv::Modes modes, qv::SyncMode mode) {
  const bool incremental = mode == qv::SyncMode::kIncremental;
  return modes == qv::Modes::kAny || incremental == (modes == qv::Modes::kIncremental);
}

}  // namespace qvdesk
