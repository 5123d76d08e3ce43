// What a run of the agent does to the outside, in order: files, entry points looked up, calls of the store.
#ifndef QV_TESTS_SUPPORT_RUN_EVENTS_H
#define QV_TESTS_SUPPORT_RUN_EVENTS_H

#include <string>
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

  /// "create mmsinfo.tbl", "open mmsinfo.tbl", "delete mmsinfo.tbl", "find mms_Sync_Read", "call Read [1]".
  std::vector<std::string> Take();

 private:
  void See(const handset::Call& call);
  void TakeStoreCalls();

  const ScriptedStore& store_;
  std::size_t calls_taken_;
  std::vector<std::string> seen_;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_RUN_EVENTS_H
