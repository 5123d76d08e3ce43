// The entry points of the settings' stores. Two of them take their structure by value, as C passes it.
#include "tests/support/scripted_settings_stores.h"

namespace qv_test {
namespace {

struct ProfileStructure {
  char16_t text_1[260], text_2[260];
  std::uint32_t value_1;
  char16_t text_3[260], text_4[260], text_5[260], text_6[260];
  std::uint32_t value_2;
  std::uint32_t settings[6];
};
static_assert(sizeof(ProfileStructure) == ScriptedProfileStore::kProfileSize);

struct DisplayStructure {
  std::uint32_t values[11];
};
static_assert(sizeof(DisplayStructure) == ScriptedProfileStore::kDisplaySize);

ScriptedSettingsStore* g_store = nullptr;

std::string ProfileName(std::int32_t index) {
  return "profile " + std::to_string(index);
}

std::uint32_t BackUp(const std::string& call, const std::string& name, void* structure, std::size_t size) {
  g_store->calls.push_back(call);
  ExpectAligned("a structure", structure);
  auto* const bytes = static_cast<std::uint8_t*>(structure);
  EXPECT_EQ(Bytes(bytes, bytes + size), Bytes(size)) << call;
  const auto known = g_store->structures.find(name);
  if (known != g_store->structures.end()) std::ranges::copy(known->second, bytes);
  return g_store->answer;
}

std::uint32_t Restore(const std::string& call, const std::string& name, const void* structure, std::size_t size) {
  g_store->calls.push_back(call);
  ExpectAligned("a structure", structure);
  const auto* const bytes = static_cast<const std::uint8_t*>(structure);
  g_store->structures[name].assign(bytes, bytes + size);
  return g_store->answer;
}

std::uint32_t BackUpProfile(std::int32_t index, void* profile) noexcept {
  return BackUp("fnModelSetting_Backup " + std::to_string(index), ProfileName(index), profile,
                sizeof(ProfileStructure));
}

std::uint32_t BackUpDisplay(void* display) noexcept {
  return BackUp("fnDispSetting_Backup", "display", display, sizeof(DisplayStructure));
}

std::uint32_t RestoreProfile(std::int32_t index, ProfileStructure profile) noexcept {
  return Restore("fnModelSetting_Restore " + std::to_string(index), ProfileName(index), &profile, sizeof(profile));
}

std::uint32_t RestoreDisplay(DisplayStructure display) noexcept {
  return Restore("fnDispSetting_Restore", "display", &display, sizeof(display));
}

std::uint32_t BackUpBrowser(void* browser) noexcept {
  return BackUp("fnIESetting_Backup", "browser", browser, ScriptedBrowserStore::kBrowserSize);
}

std::uint32_t RestoreBrowser(const void* browser) noexcept {
  return Restore("fnIESetting_Restore", "browser", browser, ScriptedBrowserStore::kBrowserSize);
}

std::uint32_t GetClockInfo(void* clock) noexcept {
  return BackUp("Sync_GetClockInfo", "clock", clock, ScriptedAlarmStore::kClockSize);
}

std::uint32_t UpdateClockInfo(const void* clock) noexcept {
  return Restore("Sync_UpdateClockInfo", "clock", clock, ScriptedAlarmStore::kClockSize);
}

}  // namespace

ScriptedSettingsStore::ScriptedSettingsStore(std::u16string_view library, const handset::EntryPoints& entry_points,
                                             std::uint32_t usual_answer, const std::set<std::u16string>& missing,
                                             std::uintptr_t missing_address)
    : answer(usual_answer) {
  Install(library, entry_points, missing, missing_address);
  g_store = this;
}

ScriptedSettingsStore::~ScriptedSettingsStore() {
  g_store = nullptr;
}

ScriptedProfileStore::ScriptedProfileStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedSettingsStore(u"ProfileSettings.dll",
                            {{u"fnModelSetting_Backup", AddressOf(&BackUpProfile)},
                             {u"fnDispSetting_Backup", AddressOf(&BackUpDisplay)},
                             {u"fnModelSetting_Restore", AddressOf(&RestoreProfile)},
                             {u"fnDispSetting_Restore", AddressOf(&RestoreDisplay)}},
                            0, missing, missing_address) {}

ScriptedBrowserStore::ScriptedBrowserStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedSettingsStore(
          u"BrowserSettings.dll",
          {{u"fnIESetting_Backup", AddressOf(&BackUpBrowser)}, {u"fnIESetting_Restore", AddressOf(&RestoreBrowser)}}, 0,
          missing, missing_address) {}

ScriptedAlarmStore::ScriptedAlarmStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedSettingsStore(
          u"AlarmStore.dll",
          {{u"Sync_GetClockInfo", AddressOf(&GetClockInfo)}, {u"Sync_UpdateClockInfo", AddressOf(&UpdateClockInfo)}}, 1,
          missing, missing_address) {}

}  // namespace qv_test
