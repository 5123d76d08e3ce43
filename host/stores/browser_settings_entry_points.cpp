// BrowserSettings.dll, the store library of the browser's settings: one structure.
#include "host/stores/settings_kinds.h"
#include "host/stores/settings_table.h"
#include "host/stores/store_library.h"

namespace {

constexpr std::uint32_t kOnlyPlace = 1;

struct BrowserSettings {
  explicit BrowserSettings(stores::Database& database) : browser(database, stores::kBrowserKind, kOnlyPlace) {}

  static std::span<stores::RecordStore> Tables() { return {}; }

  stores::SettingsTable browser;
};

stores::LibraryOf<BrowserSettings> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t fnIESetting_Backup(std::uint8_t* browser) {
  return library.Call([&](const BrowserSettings& settings) {
    stores::Expect({browser});
    settings.browser.Read(kOnlyPlace, browser);
  });
}

STORE_ENTRY_POINT std::uint32_t fnIESetting_Restore(const std::uint8_t* browser) {
  return library.Call([&](BrowserSettings& settings) {
    stores::Expect({browser});
    settings.browser.Write(kOnlyPlace, browser);
  });
}
