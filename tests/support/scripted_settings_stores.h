// ProfileSettings.dll, BrowserSettings.dll and AlarmStore.dll as scripted stores: they keep whole structures by name,
// and know no field of them.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_SETTINGS_STORES_H
#define QV_TESTS_SUPPORT_SCRIPTED_SETTINGS_STORES_H

#include <map>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

/// Calls are told by their entry points, those for a profile with its number: "fnModelSetting_Backup 3". A test fails
/// when a structure is to be filled that is not zero.
class ScriptedSettingsStore : public ScriptedStore {
 public:
  ~ScriptedSettingsStore() override;

  /// The structures that there are. One that is not there is not filled, a shorter one as far as it goes.
  std::map<std::string, Bytes> structures;
  /// What the entry points answer.
  std::uint32_t answer;

 protected:
  ScriptedSettingsStore(std::u16string_view library, const handset::EntryPoints& entry_points,
                        std::uint32_t usual_answer, const std::set<std::u16string>& missing,
                        std::uintptr_t missing_address);
};

/// Keeps "profile 1" to "profile 6", and "display". What it answers has no meaning.
class ScriptedProfileStore final : public ScriptedSettingsStore {
 public:
  static constexpr std::size_t kProfileSize = 3152;
  static constexpr std::size_t kDisplaySize = 44;

  explicit ScriptedProfileStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

/// Keeps "browser". What it answers has no meaning.
class ScriptedBrowserStore final : public ScriptedSettingsStore {
 public:
  static constexpr std::size_t kBrowserSize = 2076;

  explicit ScriptedBrowserStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

/// Keeps "clock", and answers 1 for success.
class ScriptedAlarmStore final : public ScriptedSettingsStore {
 public:
  static constexpr std::size_t kClockSize = 2336;

  explicit ScriptedAlarmStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_SETTINGS_STORES_H
