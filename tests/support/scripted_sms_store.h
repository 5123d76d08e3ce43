// A SmsStore.dll in memory for behaviour tests: it keeps messages and configuration as bytes, knows nothing of their
// fields, logs what it is asked, and fails where it is told to.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_SMS_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_SMS_STORE_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

class ScriptedSmsStore final : public ScriptedStore {
 public:
  static constexpr std::size_t kRecordSize = 1600;
  static constexpr std::size_t kSections = 5;
  /// Of one entry, by section.
  static constexpr std::size_t kSectionSizes[kSections] = {204, 178, 156, 92, 164};

  /// Installs itself as SmsStore.dll on the running handset; `missing` names entry points that it lacks, or has at the
  /// address `missing_address`.
  explicit ScriptedSmsStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedSmsStore() override;
  ScriptedSmsStore(const ScriptedSmsStore&) = delete;
  ScriptedSmsStore& operator=(const ScriptedSmsStore&) = delete;

  // --- What it holds ---

  struct Message {
    std::uint32_t id;
    std::u16string time;  ///< As listed, at most 16 characters.
    Bytes bytes;
  };
  std::vector<Message> messages;

  /// Adds a message as if it had come in. Without bytes it is empty but for its id.
  void Add(std::uint32_t id, std::u16string_view time = kOldTime, Bytes bytes = {});
  /// A message that must be there: the test fails otherwise.
  Message& At(std::uint32_t id);

  static constexpr char16_t kOldTime[] = u"20060102030405";
  /// The time of messages that the agent inserts or updates.
  static constexpr char16_t kNewTime[] = u"20061211070210";
  std::uint32_t next_id = 1000;

  /// The configuration: each section's entries, one after another.
  std::array<Bytes, kSections> sections;

  // --- What it was asked ---

  // Calls are told without "Sync_": "GetAllRecNum", "GetAllidTime room 3", "Read [5 6]", "Insert", "Update 5",
  // "Del [5 6]", "DelAll", "GetSMSConfig", and with the counts of the sections "SetSMSConfig 1 0 2 3 0".

  /// The calls of one entry point.
  std::vector<std::string> CallsOf(const std::string& entry_point) const;
  /// What it was last told to take for its configuration. It keeps its own all the same.
  std::array<Bytes, kSections> told_sections;

  // --- How it departs from the truth ---

  /// Entry points that answer this instead of doing their work: statuses["Read"].
  std::map<std::string, std::uint32_t> statuses;
  /// Entry points that answer success and leave alone what they were to fill.
  std::set<std::string> fills_nothing;
  /// What it counts, and how many messages it says it listed.
  std::optional<std::uint32_t> claimed_count;
  std::optional<std::uint32_t> claimed_listed;
  /// What it says a section's count is, by section from 0; it allocates what it has.
  std::map<std::size_t, std::int32_t> claimed_section_counts;
  /// Sections without an array, whatever their count.
  std::set<std::size_t> null_sections;

 private:
  friend struct SmsEntryPoints;
  /// Logs a call, its arguments given, and says what it answers: 0 for it to do its work.
  std::uint32_t Begin(const std::string& entry_point, const std::string& arguments = {});
  unsigned calls_with_status_ = 0;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_SMS_STORE_H
