// A SchedStore.dll in memory for behaviour tests: it keeps records as bytes, knows nothing of their fields, logs what
// it is asked, and fails where it is told to.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_SCHEDULE_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_SCHEDULE_STORE_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

class ScriptedScheduleStore final : public ScriptedStore {
 public:
  static constexpr std::size_t kEntrySize = 8680;
  static constexpr std::size_t kGroupSize = 264;

  /// Installs itself as SchedStore.dll on the running handset; `missing` names entry points that it lacks, or has at
  /// the address `missing_address`.
  explicit ScriptedScheduleStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedScheduleStore() override;
  ScriptedScheduleStore(const ScriptedScheduleStore&) = delete;
  ScriptedScheduleStore& operator=(const ScriptedScheduleStore&) = delete;

  struct Record {
    std::uint32_t id;
    std::uint64_t time;
    Bytes bytes;
    std::uint32_t group = 0;  ///< The last argument of the insert or update that wrote it.
  };
  std::vector<Record> tables[2];

  /// Adds a record as if the handset's user had made it.
  void Add(std::uint32_t table, std::uint32_t id, std::uint64_t time, Bytes bytes = {});
  Record& At(std::uint32_t table, std::uint32_t id);

  // Calls are told as "Read 0 [5 6]", "Insert 1 group 7" or "DelAll".

  /// Entry points that answer this instead of doing their work.
  std::map<std::string, std::uint32_t> statuses;

  /// What the store says instead of the truth.
  std::optional<std::uint32_t> claimed_total;
  std::optional<std::uint32_t> claimed_sync_info_count;

  /// A store may use all of the room that it is offered for a read, or answer without filling anything.
  bool fills_all_room = false;
  bool fills_nothing = false;

  /// Data-changed messages that were out when the store was last called.
  std::size_t messages_at_last_call = 0;

  std::uint32_t next_id = 1000;

 private:
  friend struct ScheduleEntryPoints;
  void Log(std::string call);
  bool Fails(const char* entry_point, std::uint32_t& status);
  unsigned calls_with_status_ = 0;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_SCHEDULE_STORE_H
