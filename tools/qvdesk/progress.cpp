// Counts the bytes that pass, and the calls that are one record of the file's form.
#include "tools/qvdesk/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

#include "tools/qvdesk/catalog.h"
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
  if (call.function != "WriteFile" && call.function != "ReadFile") return;
  if (call.path != file_) files_.insert(file_ = call.path);
  bytes_ += call.size;
  const auto now = std::chrono::steady_clock::now();
  const FileForm* const form = FindForm(ToUtf8(call.path));
  if (form != nullptr && form->layout != nullptr) {
    // Bookkeeping files pass in runs of entries, exchange tables record by record with their items apart.
    if (call.size % form->layout->exchange_size == 0) records_ += call.size / form->layout->exchange_size;
  }
  if (now - printed_ < kPause) return;
  printed_ = now;
  Print();
}

void Progress::Print() {
  fmt::print(stderr, "{}{}: {}, {} files, {} records, {} KB", kClearLine, what_, Visible(ToUtf8(file_)), files_.size(),
             records_, bytes_ / 1024);
  std::fflush(stderr);
}

}  // namespace qvdesk
