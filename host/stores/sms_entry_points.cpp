// SmsStore.dll, the short messages' store library: a table of messages, and a configuration in five sections that is
// read and replaced whole. The arrays that it hands out are the caller's to free.
#include <algorithm>

#include "host/stores/sms_database.h"
#include "host/stores/store_library.h"
#include "modules/messaging/sms_config.h"

namespace {

using qv::sms::ConfigBlock;
using qv::sms::ConfigSection;
using stores::kOnlyTable;
using stores::SmsDatabase;

stores::LibraryOf<SmsDatabase> library;

std::size_t SizeOf(std::size_t section) {
  return qv::sms::kSectionLayouts[section].store_size;
}

bool IsSound(const ConfigSection& section) {
  return section.count == 0 || (section.count > 0 && section.entries != nullptr);
}

void TakeBack(ConfigBlock& config) {
  for (ConfigSection& section : config.sections) coredll::free(section.entries);
  config = {};
}

}  // namespace

STORE_ENTRY_POINT std::uint32_t Sync_GetAllRecNum() {
  return library.Count(kOnlyTable);
}

STORE_ENTRY_POINT std::uint32_t Sync_GetAllidTime(std::uint32_t* count, void* entries) {
  return library.List(kOnlyTable, count, entries);
}

STORE_ENTRY_POINT std::uint32_t Sync_Read(std::uint32_t count, const std::uint32_t* ids, void* records) {
  return library.Read(kOnlyTable, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t Sync_Insert(const void* record, std::uint32_t* new_id) {
  return library.Insert(kOnlyTable, record, new_id);
}

STORE_ENTRY_POINT std::uint32_t Sync_Update(std::uint32_t id, const void* record) {
  return library.Update(kOnlyTable, id, record);
}

STORE_ENTRY_POINT std::uint32_t Sync_Del(std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(kOnlyTable, count, ids);
}

STORE_ENTRY_POINT std::uint32_t Sync_DelAll() {
  return library.DeleteAll();
}

STORE_ENTRY_POINT std::uint32_t Sync_GetSMSConfig(ConfigBlock* config) {
  if (config == nullptr) return stores::kNullPointer;
  *config = {};
  const stores::Status status = library.Call([&](const SmsDatabase& sms) {
    for (std::size_t i = 0; i < qv::sms::kSections; ++i) {
      const std::vector<std::uint8_t> records = sms.Section(i);
      config->sections[i] = {.count = static_cast<std::int32_t>(records.size() / SizeOf(i)),
                             .entries = stores::HandOut(records.data(), records.size())};
    }
  });
  if (status != stores::kDone) TakeBack(*config);
  return status;
}

STORE_ENTRY_POINT std::uint32_t Sync_SetSMSConfig(const ConfigBlock* config) {
  return library.Call([&](SmsDatabase& sms) {
    stores::Expect({config});
    if (!std::ranges::all_of(config->sections, IsSound)) stores::Refuse(stores::kOutOfBounds);
    for (std::size_t i = 0; i < qv::sms::kSections; ++i) {
      const auto& [count, entries] = config->sections[i];
      sms.ReplaceSection(i, {static_cast<const std::uint8_t*>(entries), static_cast<std::size_t>(count) * SizeOf(i)});
    }
  });
}
