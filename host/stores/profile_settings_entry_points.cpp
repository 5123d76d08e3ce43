// ProfileSettings.dll, the store library of the personal settings: six profiles and the display. What it restores it
// takes by value.
#include "host/stores/settings_kinds.h"
#include "host/stores/settings_table.h"
#include "host/stores/store_library.h"
#include "modules/settings/personal_settings.h"

namespace {

constexpr std::uint32_t kOnlyPlace = 1;

struct PersonalSettings {
  explicit PersonalSettings(stores::Database& database)
      : profiles(database, stores::kProfileKind, qv::settings::kProfileCount),
        display(database, stores::kDisplayKind, kOnlyPlace) {}

  static std::span<stores::RecordStore> Tables() { return {}; }

  stores::SettingsTable profiles;
  stores::SettingsTable display;
};

struct Profile {
  alignas(4) std::uint8_t bytes[qv::settings::kProfileSize];
};
struct Display {
  alignas(4) std::uint8_t bytes[qv::settings::kDisplaySize];
};

stores::LibraryOf<PersonalSettings> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t fnModelSetting_Backup(std::int32_t index, Profile* profile) {
  return library.Call([&](const PersonalSettings& settings) {
    stores::Expect({profile});
    settings.profiles.Read(static_cast<std::uint32_t>(index), profile->bytes);
  });
}

STORE_ENTRY_POINT std::uint32_t fnModelSetting_Restore(std::int32_t index, Profile profile) {
  return library.Call(
      [&](PersonalSettings& settings) { settings.profiles.Write(static_cast<std::uint32_t>(index), profile.bytes); });
}

STORE_ENTRY_POINT std::uint32_t fnDispSetting_Backup(Display* display) {
  return library.Call([&](const PersonalSettings& settings) {
    stores::Expect({display});
    settings.display.Read(kOnlyPlace, display->bytes);
  });
}

STORE_ENTRY_POINT std::uint32_t fnDispSetting_Restore(Display display) {
  return library.Call([&](PersonalSettings& settings) { settings.display.Write(kOnlyPlace, display.bytes); });
}
