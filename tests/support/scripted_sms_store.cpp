// What the short messages' store is, and what it does with its configuration.
#include "tests/support/scripted_sms_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"SmsStore.dll",
    .tables = {{.record_size = ScriptedSmsStore::kRecordSize, .id_offset = 0}},
    .list = kTextIn36Bytes,
    .entry_points =
        {
            {u"Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {}},
            {u"Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kCountPlace, kListEntries}},
            {u"Sync_Read", "Read", StoreRole::kRead, {kCount, kIds, kRecords}},
            {u"Sync_Insert", "Insert", StoreRole::kInsert, {kRecords, kNewId}},
            {u"Sync_Update", "Update", StoreRole::kUpdate, {kId, kRecords}},
            {u"Sync_Del", "Del", StoreRole::kDelete, {kCount, kIds}},
            {u"Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

ScriptedSmsStore* g_store = nullptr;

struct Section {
  std::int32_t count;
  std::uint8_t* entries;
};

}  // namespace

struct SmsEntryPoints {
  static std::uint32_t GetSmsConfig(Section* config) noexcept {
    ExpectAligned("the configuration", config);
    if (const auto refusal = g_store->Begin("GetSMSConfig")) return *refusal;
    if (g_store->fills_nothing.contains("GetSMSConfig")) return 0;
    for (std::size_t i = 0; i < ScriptedSmsStore::kSections; ++i) {
      const Bytes& bytes = g_store->sections[i];
      config[i] = {static_cast<std::int32_t>(bytes.size() / ScriptedSmsStore::kSectionSizes[i]), nullptr};
      if (const auto claim = g_store->claimed_section_counts.find(i); claim != g_store->claimed_section_counts.end()) {
        config[i].count = claim->second;
      }
      if (!g_store->null_sections.contains(i)) config[i].entries = NewBlock(bytes.data(), bytes.size());
    }
    return 0;
  }

  static std::uint32_t SetSmsConfig(const Section* config) noexcept {
    ExpectAligned("the configuration", config);
    std::string counts;
    for (std::size_t i = 0; i < ScriptedSmsStore::kSections; ++i) counts += " " + std::to_string(config[i].count);
    if (const auto refusal = g_store->Begin("SetSMSConfig", counts)) return *refusal;
    for (std::size_t i = 0; i < ScriptedSmsStore::kSections; ++i) {
      g_store->told_sections[i].clear();
      if (config[i].count <= 0) continue;
      ExpectAligned("a section", config[i].entries);
      const std::size_t size = static_cast<std::size_t>(config[i].count) * ScriptedSmsStore::kSectionSizes[i];
      g_store->told_sections[i].assign(config[i].entries, config[i].entries + size);
    }
    return 0;
  }
};

ScriptedSmsStore::ScriptedSmsStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedTableStore(kFacts, missing, missing_address,
                         {{u"Sync_GetSMSConfig", AddressOf(&SmsEntryPoints::GetSmsConfig)},
                          {u"Sync_SetSMSConfig", AddressOf(&SmsEntryPoints::SetSmsConfig)}}) {
  g_store = this;
}

ScriptedSmsStore::~ScriptedSmsStore() {
  g_store = nullptr;
}

}  // namespace qv_test
