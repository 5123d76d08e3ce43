// What every measurement stands on: the agent on a handset in a directory, a desktop that asks it for exports, and
// ratios of things timed in this very run, so that they mean the same on any machine.
#ifndef QV_BENCH_BENCH_H
#define QV_BENCH_BENCH_H

#include <cstdint>
#include <functional>
#include <vector>

#include "host/loader/agent_library.h"
#include "host/loader/refusing_stream.h"
#include "qv_rapi.h"

namespace bench {

inline constexpr char16_t kDirectory[] = u"\\sync";

[[noreturn]] void Die(const char* what);

/// Puts text into a record as UTF-16.
void PutText(std::uint8_t* place, const char* text);

/// The shortest of several runs of each in seconds, taken in turns, so that a disturbance does not hit only one of
/// them.
std::vector<double> Shortest(int runs, const std::vector<std::function<void()>>& works);

/// Prints the ratio; false when it is above its bound.
bool Report(const char* what, double ratio, double bound);

/// Asks one module for exports and recovers.
class Desktop {
 public:
  Desktop(const loader::AgentLibrary& agent, std::int32_t module_id);

  /// Runs an export and returns the mode it came back with; the anchor is kept for the next one.
  std::uint32_t Export(std::uint32_t mode) { return Run(export_, mode); }
  std::uint32_t Recover(std::uint32_t mode) { return Run(recover_, mode); }

 private:
  struct Answer final : loader::RefusingStream {
    qv::ResultRecord record{};
    std::int32_t QV_STDCALL Write(const void* buffer, std::uint32_t size, std::uint32_t* written) override;
    std::uint32_t QV_STDCALL Release() override { return 0; }
  };

  std::uint32_t Run(RapiFunction* entry_point, std::uint32_t mode);

  RapiFunction* export_;
  RapiFunction* recover_;
  qv::RequestRecord request_{};
  Answer answer_;
};

/// What incremental exports of growing stores took.
struct Growth {
  bool good = false;                 ///< Time grows in proportion.
  std::vector<std::uint64_t> peaks;  ///< Memory in bytes, by size of the store.
};

/// Exports 1,000, 10,000 and 100,000 records incrementally and reports how the time for one grows. `prepare` sets the
/// store up for so many; `change` makes a run's changes.
Growth MeasureIncrementalExport(Desktop& desktop, const std::function<void(std::uint32_t records)>& prepare,
                                const std::function<void()>& change);

// The measurements. False when a ratio is above its bound.
bool MeasureSchedule(const loader::AgentLibrary& agent, Growth& incremental);
bool MeasureChangeComputation();
bool MeasureMessages(const loader::AgentLibrary& agent);
bool MeasureMail(const loader::AgentLibrary& agent);
bool MeasureCardsAndMemos(const loader::AgentLibrary& agent);
bool MeasureRecordsWithItems(const loader::AgentLibrary& agent);
bool MeasureContacts(const loader::AgentLibrary& agent, const Growth& schedule);

}  // namespace bench

#endif  // QV_BENCH_BENCH_H
