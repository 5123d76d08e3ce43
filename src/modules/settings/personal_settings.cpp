// Profiles and display, each in a file of its own. The store takes its structures by value.
#include "modules/settings/personal_settings.h"

#include "platform/file.h"
#include "platform/memory.h"
#include "sync/exchange_table.h"
#include "sync/module_call.h"

namespace qv::settings {
namespace {

struct Profile {
  alignas(4) std::uint8_t bytes[kProfileSize];
};
struct Display {
  alignas(4) std::uint8_t bytes[kDisplaySize];
};

using BackUpProfile = void(std::int32_t index, Profile* profile);
using BackUpDisplay = void(Display* display);
using RestoreProfile = void(std::int32_t index, Profile profile);
using RestoreDisplay = void(Display display);

constexpr Result kFailed = Result::kStoreNotLoaded;

/// Profiles and their records are too large for the handset's stacks.
Result ExportProfiles(const ModuleCall& call, BackUpProfile* back_up) {
  File file = File::CreateAlways(call.PathOf(kProfileTable.exchange_file));
  List<Profile> profile;
  List<std::uint8_t> record;
  if (!file.IsOpen() || !profile.Resize(1) || !record.Resize(kProfileLayout.exchange_size)) return kFailed;
  for (std::int32_t index = 1; index <= kProfileCount; ++index) {
    profile.Zero();
    back_up(index, profile.data());
    layout::ToExchange(kProfileLayout, profile[0].bytes, record.data());
    if (!file.Write(record.data(), record.size())) return kFailed;
  }
  return Result::kOk;
}

Result ExportDisplay(const ModuleCall& call, BackUpDisplay* back_up) {
  File file = File::CreateAlways(call.PathOf(kDisplayTable.exchange_file));
  if (!file.IsOpen()) return kFailed;
  Display display = {};
  back_up(&display);
  std::uint8_t record[kDisplayRecordSize];
  layout::ToExchange(kDisplayLayout, display.bytes, record);
  return file.Write(record, sizeof(record)) ? Result::kOk : kFailed;
}

/// The table is read whole before the first profile is restored.
Result RecoverProfiles(const ModuleCall& call, RestoreProfile* restore) {
  const std::size_t size = kProfileLayout.exchange_size;
  File file = File::OpenExisting(call.PathOf(kProfileTable.exchange_file));
  List<std::uint8_t> records;
  List<Profile> profile;
  std::size_t got = 0;
  if (!file.IsOpen() || !records.Resize(kProfileCount, size) || !profile.Resize(1)) return kFailed;
  if (!file.Read(records.data(), records.size(), got)) return kFailed;
  for (std::size_t i = 0; i < got / size; ++i) {
    layout::ToStore(kProfileLayout, records.data() + i * size, profile[0].bytes);
    restore(static_cast<std::int32_t>(i + 1), profile[0]);
  }
  file.Close();
  call.Delete(kProfileTable.exchange_file);
  return Result::kOk;
}

Result RecoverDisplay(const ModuleCall& call, RestoreDisplay* restore) {
  File file = File::OpenExisting(call.PathOf(kDisplayTable.exchange_file));
  if (!file.IsOpen()) return kFailed;
  std::uint8_t record[kDisplayRecordSize];
  bool more = false;
  if (ReadRecord(file, record, sizeof(record), sizeof(record), more) != Result::kOk) return kFailed;
  Display display;
  layout::ToStore(kDisplayLayout, record, display.bytes);
  restore(display);
  file.Close();
  call.Delete(kDisplayTable.exchange_file);
  return Result::kOk;
}

}  // namespace

Result ExportPersonal(const void* directory) {
  ModuleCall call(kPersonalModule);
  if (call.Begin(directory) != Result::kOk) return kFailed;
  auto* const back_up_profile = call.store().Resolve<BackUpProfile>(kBackUpProfile);
  auto* const back_up_display = call.store().Resolve<BackUpDisplay>(kBackUpDisplay);
  if (back_up_profile == nullptr || ExportProfiles(call, back_up_profile) != Result::kOk) return kFailed;
  return back_up_display == nullptr ? kFailed : ExportDisplay(call, back_up_display);
}

Result RecoverPersonal(const void* directory) {
  ModuleCall call(kPersonalModule);
  if (call.Begin(directory) != Result::kOk) return kFailed;
  auto* const restore_profile = call.store().Resolve<RestoreProfile>(kRestoreProfile);
  auto* const restore_display = call.store().Resolve<RestoreDisplay>(kRestoreDisplay);
  if (restore_profile == nullptr || restore_display == nullptr) return kFailed;
  const Result profiles = RecoverProfiles(call, restore_profile);
  return profiles != Result::kOk ? profiles : RecoverDisplay(call, restore_display);
}

}  // namespace qv::settings
