// Counts what the agent writes, as it asks for it: the handset shows calls before it carries them out.
#include "tools/qvdesk/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

constexpr std::chrono::milliseconds kPause(100);
constexpr char kClearLine[] = "\r\033[K";

}  // namespace

Progress::Progress(std::string what)
    : what_(std::move(what)), watched_(isatty(STDOUT_FILENO) != 0 && isatty(STDERR_FILENO) != 0) {
  if (watched_) handset::Observe([this](const handset::Call& call) { Note(call); });
}

Progress::~Progress() {
  if (!watched_) return;
  handset::Observe({});
  fmt::print(stderr, "{}", kClearLine);
  std::fflush(stderr);
}

void Progress::Note(const handset::Call& call) {
  if (call.function != "WriteFile") return;
  if (call.path != file_) files_.insert(file_ = call.path);
  bytes_ += call.size;
  const auto now = std::chrono::steady_clock::now();
  if (now - printed_ < kPause) return;
  printed_ = now;
  Print();
}

void Progress::Print() {
  fmt::print(stderr, "{}{}: {}, {} files, {} KB written", kClearLine, what_, Visible(ToUtf8(file_)), files_.size(),
             bytes_ / 1024);
  std::fflush(stderr);
}

}  // namespace qvdesk
