// The forms of a time in a list; what the agent's src/sync/sync_info.cpp reads.
#include "host/stores/sync_info_list.h"

#include <algorithm>
#include <cstring>

#include "host/handset/handset.h"
#include "host/stores/file_time.h"
#include "layout/time_text.h"

namespace stores {
namespace {

void Put(const auto& value, std::uint8_t* to) {
  std::memcpy(to, &value, sizeof(value));
}

void PutText(const CalendarTime& time, std::uint8_t* to) {
  qv::layout::PutTimeText({time.year, time.month, time.day, time.hour, time.minute, time.second}, to);
}

void PutTime(FileTime time, qv::SyncInfoForm::Time form, std::uint8_t* to) {
  using Time = qv::SyncInfoForm::Time;
  switch (form) {
    case Time::kFileTime: return Put(time, to);
    case Time::kSystemTime: return Put(handset::SystemTimeOf(time), to);
    case Time::kSixWords: return Put(CalendarTimeOf(time), to);
    case Time::kText: return PutText(CalendarTimeOf(time), to);
  }
}

}  // namespace

void PutSyncInfoList(std::span<const qv::SyncInfoEntry> records, const qv::SyncInfoForm& form, std::uint8_t* entries) {
  for (const qv::SyncInfoEntry& record : records) {
    std::fill_n(entries, form.entry_size, std::uint8_t{0});
    Put(record.id, entries);
    const auto modified = static_cast<FileTime>(std::uint64_t{record.time_high} << 32 | record.time_low);
    PutTime(modified, form.time, entries + form.time_offset);
    entries += form.entry_size;
  }
}

}  // namespace stores
