// What every scripted store library offers to tests that do not care which one it is.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_STORE_H

#include <string>
#include <vector>

namespace qv_test {

class ScriptedStore {
 public:
  virtual ~ScriptedStore() = default;

  /// Each call in order: the entry point, then what it was asked.
  std::vector<std::string> calls;
  /// The n-th call that answers a status fails (1 is the first); 0 for none.
  unsigned fail_call = 0;
  bool failed_a_call = false;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_STORE_H
