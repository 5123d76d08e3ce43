// How long the steps of an export took: a hook for whoever looks for what is slow on a handset. It tells nobody in this
// build.
#ifndef QV_SYNC_TIMING_H
#define QV_SYNC_TIMING_H

#include <cstddef>
#include <cstdint>

#include "platform/coredll.h"

namespace qv {

/// Hears of every step that was timed.
inline void TraceTiming(const char* /*label*/, std::uint32_t /*milliseconds*/, std::size_t /*records*/) {}

/// Times a step from here to the end of the scope.
class TimedStep {
 public:
  TimedStep(const char* label, std::size_t records)
      : label_(label), records_(records), begin_(coredll::GetTickCount()) {}
  ~TimedStep() { TraceTiming(label_, coredll::GetTickCount() - begin_, records_); }
  TimedStep(const TimedStep&) = delete;
  TimedStep& operator=(const TimedStep&) = delete;

 private:
  const char* label_;
  std::size_t records_;
  std::uint32_t begin_;
};

}  // namespace qv

#endif  // QV_SYNC_TIMING_H
