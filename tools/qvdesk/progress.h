// A line on standard error that shows what a long call is doing, where a person watches.
#ifndef QV_TOOLS_QVDESK_PROGRESS_H
#define QV_TOOLS_QVDESK_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <set>
#include <string>

#include "host/handset/handset.h"

namespace qvdesk {

/// Watches what the handset writes to files while it lives; the line is gone afterwards. Does nothing when standard
/// output or standard error is no terminal.
class Progress {
 public:
  /// `what`: "schedule export".
  explicit Progress(std::string what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void Note(const handset::Call& call);
  void Print();

  std::string what_;
  bool watched_;
  std::set<std::u16string> files_;
  std::u16string file_;  ///< The one last written.
  std::uint64_t bytes_ = 0;
  std::chrono::steady_clock::time_point printed_{};
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_PROGRESS_H
