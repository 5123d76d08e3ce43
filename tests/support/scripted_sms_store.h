// SmsStore.dll as a scripted store: messages, and a configuration that it keeps as bytes, too.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_SMS_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_SMS_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

class ScriptedSmsStore final : public ScriptedTableStore {
 public:
  static constexpr std::size_t kRecordSize = 1600;
  static constexpr std::size_t kSections = 5;
  /// Of one entry, by section.
  static constexpr std::size_t kSectionSizes[kSections] = {204, 178, 156, 92, 164};
  /// The time of messages that a test adds without saying when.
  static constexpr char16_t kOldTime[] = u"20060102030405";

  explicit ScriptedSmsStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedSmsStore() override;

  /// The configuration: each section's entries, one after another.
  std::array<Bytes, kSections> sections;

  // Calls are told without "Sync_", those for the configuration as "GetSMSConfig", and with the counts of the sections
  // "SetSMSConfig 1 0 2 3 0".

  /// What it was last told to take for its configuration. It keeps its own all the same.
  std::array<Bytes, kSections> told_sections;

  /// What it says a section's count is, by section from 0; it allocates what it has.
  std::map<std::size_t, std::int32_t> claimed_section_counts;
  /// Sections without an array, whatever their count.
  std::set<std::size_t> null_sections;

 private:
  friend struct SmsEntryPoints;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_SMS_STORE_H
