// SmsStore.dll, the short messages' store library: messages, and a configuration in five sections that is read and
// replaced whole. Every call is one transaction of the database.
#include <algorithm>
#include <cstring>
#include <vector>

#include "host/stores/sms_database.h"
#include "host/stores/store_library.h"
#include "layout/time_text.h"
#include "modules/messaging/sms.h"

namespace {

using qv::sms::ConfigBlock;
using qv::sms::ConfigSection;
using stores::SmsDatabase;

stores::LibraryOf<SmsDatabase> library;

/// What the list of messages says of one: the time as 14 digits.
struct ListEntry {
  std::uint32_t id;
  char16_t modified[16];
};
static_assert(sizeof(ListEntry) == qv::sms::kFacts.table.sync_info.entry_size);
static_assert(offsetof(ListEntry, modified) == qv::sms::kFacts.table.sync_info.time_offset);

ListEntry ListEntryOf(const qv::SyncInfoEntry& info) {
  const auto modified = static_cast<stores::FileTime>(std::uint64_t{info.time_high} << 32 | info.time_low);
  const stores::CalendarTime time = stores::CalendarTimeOf(modified);
  ListEntry entry = {.id = info.id, .modified = {}};
  qv::layout::PutTimeText({time.year, time.month, time.day, time.hour, time.minute, time.second},
                          reinterpret_cast<std::uint8_t*>(entry.modified));
  return entry;
}

/// Copies records to a block for the caller; false without memory.
bool HandOut(const std::vector<std::uint8_t>& records, std::size_t record_size, ConfigSection& section) {
  section = {.count = static_cast<std::int32_t>(records.size() / record_size), .entries = nullptr};
  if (records.empty()) return true;
  section.entries = coredll::malloc(records.size());
  if (section.entries != nullptr) std::memcpy(section.entries, records.data(), records.size());
  return section.entries != nullptr;
}

void TakeBack(ConfigBlock& config) {
  for (ConfigSection& section : config.sections) coredll::free(section.entries);
  config = {};
}

std::size_t SizeOf(std::size_t section) {
  return qv::sms::kSectionLayouts[section].store_size;
}

bool IsSound(const ConfigBlock& config) {
  return std::ranges::all_of(config.sections, [](const ConfigSection& section) {
    return section.count == 0 || (section.count > 0 && section.entries != nullptr);
  });
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t Sync_GetAllRecNum() {
  std::uint32_t count = 0;
  library.Call([&](SmsDatabase& sms) {
    count = sms.Messages().Count();
    return stores::kDone;
  });
  return count;
}

STORE_ENTRY_POINT std::uint32_t Sync_GetAllidTime(std::uint32_t* count, void* entries) {
  return library.Call([&](SmsDatabase& sms) {
    if (count == nullptr || (entries == nullptr && *count != 0)) return stores::kNullPointer;
    std::vector<qv::SyncInfoEntry> info(std::min(*count, sms.Messages().Count()));
    sms.Messages().SyncInfo(info);
    auto* to = static_cast<std::uint8_t*>(entries);
    for (const qv::SyncInfoEntry& from : info) {
      const ListEntry entry = ListEntryOf(from);
      std::memcpy(to, &entry, sizeof(entry));
      to += sizeof(entry);
    }
    *count = info.size();
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_Read(std::uint32_t count, const std::uint32_t* ids, void* records) {
  return library.Call([&](SmsDatabase& sms) {
    if (count != 0 && (ids == nullptr || records == nullptr)) return stores::kNullPointer;
    sms.Messages().Read({ids, count}, static_cast<std::uint8_t*>(records));
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_Insert(const void* record, std::uint32_t* new_id) {
  return library.Call([&](SmsDatabase& sms) {
    if (record == nullptr || new_id == nullptr) return stores::kNullPointer;
    *new_id = sms.Messages().Insert(static_cast<const std::uint8_t*>(record));
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_Update(std::uint32_t id, const void* record) {
  return library.Call([&](SmsDatabase& sms) {
    if (record == nullptr) return stores::kNullPointer;
    sms.Messages().Update(id, static_cast<const std::uint8_t*>(record));
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Call([&](SmsDatabase& sms) {
    if (count != 0 && ids == nullptr) return stores::kNullPointer;
    sms.Messages().Delete({ids, count});
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_DelAll() {
  return library.Call([&](SmsDatabase& sms) {
    sms.Messages().DeleteAll();
    return stores::kDone;
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_GetSMSConfig(ConfigBlock* config) {
  if (config == nullptr) return stores::kNullPointer;
  *config = {};
  const stores::Status status = library.Call([&](const SmsDatabase& sms) {
    for (std::size_t i = 0; i < qv::sms::kSections; ++i) {
      if (!HandOut(sms.Section(i), SizeOf(i), config->sections[i])) return stores::kNoMemory;
    }
    return stores::kDone;
  });
  if (status != stores::kDone) TakeBack(*config);
  return status;
}

STORE_ENTRY_POINT std::uint32_t Sync_SetSMSConfig(const ConfigBlock* config) {
  return library.Call([&](SmsDatabase& sms) {
    if (config == nullptr) return stores::kNullPointer;
    if (!IsSound(*config)) return stores::kOutOfBounds;
    for (std::size_t i = 0; i < qv::sms::kSections; ++i) {
      const auto& [count, entries] = config->sections[i];
      sms.ReplaceSection(i, {static_cast<const std::uint8_t*>(entries), static_cast<std::size_t>(count) * SizeOf(i)});
    }
    return stores::kDone;
  });
}
