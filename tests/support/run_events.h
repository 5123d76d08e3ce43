// What a run of the agent does to the outside, in order: files, entry points looked up, calls of the store.
#ifndef QV_TESTS_SUPPORT_RUN_EVENTS_H
#define QV_TESTS_SUPPORT_RUN_EVENTS_H

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

/// Watches as long as it is there.
class RunEvents {
 public:
  explicit RunEvents(const ScriptedStore& store);
  ~RunEvents();
  RunEvents(const RunEvents&) = delete;
  RunEvents& operator=(const RunEvents&) = delete;

  /// "create mmsinfo.tbl", "open mmsinfo.tbl", "delete mmsinfo.tbl", "copy 17.eml", "find mms_Sync_Read",
  /// "call Read [1]".
  std::vector<std::string> Take();

 private:
  void See(const handset::Call& call);
  void TakeStoreCalls();

  const ScriptedStore& store_;
  std::size_t calls_taken_;
  std::vector<std::string> seen_;
};

/// A file that is opened, and how: access, share mode and disposition.
using Opening = std::pair<std::u16string, std::array<std::uint32_t, 3>>;
// Who writes makes the file anew, and everyone may read along, except in the anchor file while it is rewritten.
inline constexpr std::array<std::uint32_t, 3> kReader = {0x80000000, 1, 3};
inline constexpr std::array<std::uint32_t, 3> kWriter = {0x40000000, 1, 2};
inline constexpr std::array<std::uint32_t, 3> kReaderAlone = {0x80000000, 0, 3};
inline constexpr std::array<std::uint32_t, 3> kWriterAlone = {0x40000000, 0, 2};

/// What is opened while this runs, in order.
std::vector<Opening> OpeningsOf(const std::function<void()>& run);
/// The same but for the anchor's file.
std::vector<Opening> DataOpeningsOf(const std::function<void()>& run);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_RUN_EVENTS_H
