// The clock's structure, whole: six alarms and the nine names behind them, on either side.
#include "modules/settings/clock_settings.h"

#include <algorithm>

#include "platform/file.h"
#include "platform/memory.h"
#include "sync/module_call.h"

namespace qv::settings {
namespace {

using layout::LoadSlot;
using layout::StoreSlot;

using GetClockInfo = std::uint32_t(std::uint8_t* clock);
using UpdateClockInfo = std::uint32_t(const std::uint8_t* clock);
constexpr std::uint32_t kDone = 1;

/// An alarm's flags, of which the first that is there decides how it repeats.
constexpr std::uint32_t kFlagOfMode1 = 0x100;
constexpr std::uint32_t kFlagOfMode2 = 0x80;
constexpr std::uint32_t kDays = 0x7F;
enum RepeatMode : std::uint32_t { kNever, kMode1, kMode2, kOnDays };

/// All that a call needs, in memory of the heap: it is too much for the handset's stacks.
struct Clock {
  alignas(4) std::uint8_t alarms[kAlarmCount][kAlarmSize];
  std::uint8_t names[kClockNameCount][kClockNameSize];
  std::uint8_t unused[2];  // Of the store's structure, which ends here.

  std::uint8_t alarm_records[kAlarmCount][kAlarmRecordSize];
  std::uint8_t name_records[kClockNameCount][kClockNameRecordSize];

  std::uint8_t* Structure() { return reinterpret_cast<std::uint8_t*>(this); }
};
static_assert(offsetof(Clock, alarm_records) == kClockSize);

void RepeatToExchange(const std::uint8_t* alarm, std::uint8_t* record) {
  const std::uint32_t flags = LoadSlot(kAlarmFlags, alarm);
  RepeatMode mode = kNever;
  if ((flags & kFlagOfMode1) != 0) {
    mode = kMode1;
  } else if ((flags & kFlagOfMode2) != 0) {
    mode = kMode2;
  } else if ((flags & kDays) != 0) {
    mode = kOnDays;
    for (unsigned day = 0; day < kAlarmDays.size; ++day) record[kAlarmDays.offset + day] = flags >> day & 1;
  }
  StoreSlot(kAlarmRepeatMode, record, mode);
}

void RepeatToStore(const std::uint8_t* record, std::uint8_t* alarm) {
  std::uint32_t flags = 0;
  switch (LoadSlot(kAlarmRepeatMode, record)) {
    case kMode1: flags = kFlagOfMode1; break;
    case kMode2: flags = kFlagOfMode2; break;
    case kOnDays:
      for (unsigned day = 0; day < kAlarmDays.size; ++day) {
        if (record[kAlarmDays.offset + day] == 1) flags |= 1u << day;
      }
      break;
    default: break;
  }
  StoreSlot(kAlarmFlags, alarm, flags);
}

bool Write(File& file, Clock& clock) {
  for (std::size_t i = 0; i < kAlarmCount; ++i) {
    layout::ToExchange(kAlarmLayout, clock.alarms[i], clock.alarm_records[i]);
    RepeatToExchange(clock.alarms[i], clock.alarm_records[i]);
  }
  for (std::uint32_t i = 0; i < kClockNameCount; ++i) {
    layout::ToExchange(kClockNameLayout, clock.names[i], clock.name_records[i]);
    StoreSlot(kClockNameIndex, clock.name_records[i], i);
  }
  return file.Write(clock.alarm_records, sizeof(clock.alarm_records)) &&
         file.Write(clock.name_records, sizeof(clock.name_records));
}

/// Makes the structure of the records, the first `names` of the names. False when one has no place.
bool Restore(Clock& clock, std::size_t names) {
  for (std::size_t i = 0; i < kAlarmCount; ++i) {
    layout::ToStore(kAlarmLayout, clock.alarm_records[i], clock.alarms[i]);
    RepeatToStore(clock.alarm_records[i], clock.alarms[i]);
  }
  for (std::size_t i = 0; i < names; ++i) {
    const std::uint32_t index = LoadSlot(kClockNameIndex, clock.name_records[i]);
    if (index >= kClockNameCount) return false;
    layout::ToStore(kClockNameLayout, clock.name_records[i], clock.names[index]);
  }
  return true;
}

}  // namespace

Result ExportClock(const void* directory) {
  ModuleCall call(kClockModule);
  if (const Result begun = call.Begin(directory); begun != Result::kOk) return begun;
  File file = File::CreateAlways(call.PathOf(kClockFile));
  if (!file.IsOpen()) return Result::kFileFailed;
  auto* const get = call.store().Resolve<GetClockInfo>(kGetClock);
  if (get == nullptr) return Result::kEntryPointMissing;
  List<Clock> clock;
  if (!clock.Resize(1)) return Result::kNoMemory;
  clock.Zero();
  if (get(clock[0].Structure()) != kDone) return Result::kReadFailed;
  return Write(file, clock[0]) ? Result::kOk : Result::kFileFailed;
}

Result RecoverClock(const void* directory) {
  ModuleCall call(kClockModule);
  if (const Result begun = call.Begin(directory); begun != Result::kOk) return begun;
  File file = File::OpenExisting(call.PathOf(kClockFile));
  if (!file.IsOpen()) return Result::kFileFailed;
  List<Clock> clock;
  if (!clock.Resize(1)) return Result::kNoMemory;
  clock.Zero();
  std::size_t alarms = 0;
  std::size_t names = 0;
  if (!file.Read(clock[0].alarm_records, sizeof(clock[0].alarm_records), alarms) ||
      !file.Read(clock[0].name_records, sizeof(clock[0].name_records), names)) {
    return Result::kFileUnreadable;
  }
  if (alarms == 0) return Result::kOk;
  if (!Restore(clock[0], names / kClockNameRecordSize)) return Result::kFileUnreadable;
  auto* const update = call.store().Resolve<UpdateClockInfo>(kUpdateClock);
  if (update == nullptr) return Result::kEntryPointMissing;
  return update(clock[0].Structure()) == kDone ? Result::kOk : Result::kUpdateFailed;
}

}  // namespace qv::settings
