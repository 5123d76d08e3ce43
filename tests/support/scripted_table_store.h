// What scripted stores of one table have in common: how they are told to depart from the truth, and how they log what
// they are asked.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_TABLE_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_TABLE_STORE_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

class ScriptedTableStore : public ScriptedStore {
 public:
  /// The calls of one entry point.
  std::vector<std::string> CallsOf(const std::string& entry_point) const;

  /// What records that the agent inserts are called, from here on.
  std::uint32_t next_id = 1000;
  /// The modification time of records that the agent inserts or updates.
  static constexpr std::uint64_t kNewTime = 0x0000000600000005;

  /// Entry points that answer this instead of doing their work: statuses["Read"].
  std::map<std::string, std::uint32_t> statuses;
  /// Entry points that answer success and leave alone what they were to fill.
  std::set<std::string> fills_nothing;
  /// What it counts, and how many records it says it listed.
  std::optional<std::uint32_t> claimed_count;
  std::optional<std::uint32_t> claimed_listed;

 protected:
  ScriptedTableStore() = default;

  /// Makes a library of these entry points. `missing` are taken out, or moved to `missing_address`.
  static void Install(std::u16string_view library, handset::EntryPoints entry_points,
                      const std::set<std::u16string>& missing, std::uintptr_t missing_address);

  /// Logs a call, its arguments given, and says what it answers: 0 for it to do its work.
  std::uint32_t Begin(const std::string& entry_point, const std::string& arguments = {});

  struct Listed {
    std::uint32_t id;
    std::uint64_t time;
  };
  /// The entry point that lists records, as 16-byte entries.
  std::uint32_t List(const std::vector<Listed>& records, std::uint32_t* count, std::uint32_t* entries);

  static std::string IdList(std::uint32_t count, const std::uint32_t* ids);
  /// As stores are built for a processor that has no unaligned access.
  static void ExpectAligned(const char* what, const void* buffer);

 private:
  unsigned calls_with_status_ = 0;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_TABLE_STORE_H
