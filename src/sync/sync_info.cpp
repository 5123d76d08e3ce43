// The forms in which stores tell times, made one.
#include "sync/sync_info.h"

#include <algorithm>
#include <cstring>

#include "layout/bytes.h"
#include "layout/file_time.h"
#include "layout/time_text.h"
#include "platform/coredll.h"

namespace qv {
namespace {

layout::TimeOfSix SixWords(const std::uint8_t* words) {
  layout::TimeOfSix time;
  for (std::uint32_t& part : time) {
    part = layout::LoadNumber(words, 2);
    words += 2;
  }
  return time;
}

coredll::FILETIME OfSystemTime(const std::uint8_t* bytes) {
  coredll::SYSTEMTIME time;
  std::memcpy(&time, bytes, sizeof(time));
  time.wMilliseconds = 0;
  return layout::ToFileTime(time);
}

coredll::FILETIME TimeOf(const std::uint8_t* entry, const SyncInfoForm& form) {
  const std::uint8_t* const time = entry + form.time_offset;
  switch (form.time) {
    case SyncInfoForm::Time::kSystemTime: return OfSystemTime(time);
    case SyncInfoForm::Time::kSixWords: return layout::ToFileTime(SixWords(time));
    case SyncInfoForm::Time::kText: return layout::ToFileTime(layout::ParseTimeText(time));
    case SyncInfoForm::Time::kFileTime: break;
  }
  return {layout::LoadNumber(time, 4), layout::LoadNumber(time + 4, 4)};
}

}  // namespace

bool SyncInfoList::Resize(std::uint32_t count, const SyncInfoForm& form) {
  if (!bytes_.Resize(count, form.entry_size)) return false;
  bytes_.Zero();
  form_ = form;
  count_ = count;
  return true;
}

void SyncInfoList::Take(std::uint32_t count) {
  count_ = std::min<std::size_t>(count, count_);
  auto* const entries = reinterpret_cast<SnapshotEntry*>(bytes_.data());
  for (std::size_t i = 0; i < count_; ++i) {
    const std::uint8_t* const entry = bytes_.data() + i * form_.entry_size;
    const coredll::FILETIME time = TimeOf(entry, form_);
    entries[i] = {layout::LoadNumber(entry, 4), time.dwLowDateTime, time.dwHighDateTime};
  }
}

}  // namespace qv
