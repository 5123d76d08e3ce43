// AlarmStore.dll, the store library of the clock: six alarms and nine names, which travel as one structure. It answers
// 1 for success.
#include <algorithm>

#include "host/stores/settings_kinds.h"
#include "host/stores/settings_table.h"
#include "host/stores/store_library.h"
#include "modules/settings/clock_settings.h"

namespace {

using qv::settings::kAlarmCount;
using qv::settings::kAlarmSize;
using qv::settings::kClockNameCount;
using qv::settings::kClockSize;

constexpr std::size_t kNamesOffset = kAlarmCount * kAlarmSize;

class ClockSettings {
 public:
  explicit ClockSettings(stores::Database& database)
      : alarms_(database, stores::kAlarmKind, kAlarmCount), names_(database, stores::kClockNameKind, kClockNameCount) {}

  static std::span<stores::RecordStore> Tables() { return {}; }

  void Read(std::uint8_t* clock) const {
    std::fill_n(clock, kClockSize, std::uint8_t{0});
    alarms_.ReadAll(clock);
    names_.ReadAll(clock + kNamesOffset);
  }
  void Write(const std::uint8_t* clock) {
    alarms_.WriteAll(clock);
    names_.WriteAll(clock + kNamesOffset);
  }

 private:
  stores::SettingsTable alarms_;
  stores::SettingsTable names_;
};

stores::LibraryOf<ClockSettings> library({.success = 1});

}  // namespace

STORE_ENTRY_POINT std::uint32_t Sync_GetClockInfo(std::uint8_t* clock) {
  return library.Call([&](const ClockSettings& settings) {
    stores::Expect({clock});
    settings.Read(clock);
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_UpdateClockInfo(const std::uint8_t* clock) {
  return library.Call([&](ClockSettings& settings) {
    stores::Expect({clock});
    settings.Write(clock);
  });
}
