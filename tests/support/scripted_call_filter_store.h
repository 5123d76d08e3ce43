// CallFilterStore.dll as a scripted store: entries in table 0, groups in table 1, and a configuration, kept as bytes.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_CALL_FILTER_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_CALL_FILTER_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

class ScriptedCallFilterStore final : public ScriptedRecordStore {
 public:
  static constexpr std::size_t kEntrySize = 144;
  static constexpr std::size_t kGroupSize = 788;
  static constexpr std::size_t kConfigSize = 712;

  explicit ScriptedCallFilterStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedCallFilterStore() override;

  /// Zero before the first configuration, and when it was deleted.
  Bytes config = Bytes(kConfigSize);

  // Calls are told without "Sync_" and "Sync_rbc_", the deletion of records as "Del 0 [5 6]", of a table as "DelAll 0".
  // The update of a record that is not there answers 3. "Sync_Del" is there, and the test fails when it is called.

 private:
  friend struct CallFilterEntryPoints;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_CALL_FILTER_STORE_H
