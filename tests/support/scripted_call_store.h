// A CallLogStore.dll in memory for behaviour tests: it keeps calls as bytes, knows nothing of their fields, logs what
// it is asked, and fails where it is told to.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_CALL_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_CALL_STORE_H

#include "tests/support/scripted_table_store.h"

namespace qv_test {

class ScriptedCallStore final : public ScriptedTableStore {
 public:
  static constexpr std::size_t kRecordSize = 180;

  /// Installs itself as CallLogStore.dll on the running handset; `missing` names entry points that it lacks, or has at
  /// the address `missing_address`.
  explicit ScriptedCallStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedCallStore() override;
  ScriptedCallStore(const ScriptedCallStore&) = delete;
  ScriptedCallStore& operator=(const ScriptedCallStore&) = delete;

  struct Record {
    std::uint32_t id;
    std::uint64_t time;
    Bytes bytes;
  };
  std::vector<Record> records;

  /// Adds a call as if it had been made. Without bytes it is empty but for its id.
  void Add(std::uint32_t id, std::uint64_t time = 1, Bytes bytes = {});
  /// A call that must be there: the test fails otherwise.
  Record& At(std::uint32_t id);
  std::vector<std::uint32_t> Ids() const;

  // Calls are told without "EXPCALLHISTORY_Sync_": "GetAllRecNum", "GetAllidTime room 3", "Read [5 6]", "Insert",
  // "Update 5", "Del [5 6]" and "DelAll".

 private:
  friend struct CallEntryPoints;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_CALL_STORE_H
