// What the multimedia messages' store is, and what it does with the blocks that its records are made of.
#include "tests/support/scripted_mms_store.h"

#include <cstddef>
#include <cstring>

namespace qv_test {
namespace {

using enum Argument;

/// A message as it lies in memory.
struct Entry {
  char* text;
  std::uint32_t id;
  std::uint32_t value;
  std::uint8_t* data;
  std::int32_t data_length;
};
static_assert(sizeof(Entry) == 20);

const ScriptedStoreFacts kFacts = {
    .library = u"MmsStore.dll",
    .tables = {{.record_size = sizeof(Entry), .id_offset = offsetof(Entry, id)}},
    .list = kFileTimeIn16Bytes,
    .entry_points =
        {
            {u"mms_Sync_GetAllRecvNum", "GetAllRecvNum", StoreRole::kCount, {}},
            {u"mms_Sync_getAllidTime", "GetAllidTime", StoreRole::kList, {kCountPlace, kListEntries}},
            {u"mms_Sync_Read", "Read", StoreRole::kRead, {kCount, kIds, kRecords}},
            {u"mms_Sync_Insert", "Insert", StoreRole::kInsert, {kRecords, kNewId}},
            {u"mms_Sync_Update", "Update", StoreRole::kUpdate, {kId, kRecords}},
            {u"mms_SC_Sync_Del", "Del", StoreRole::kDelete, {kCount, kIds}},
            {u"mms_Sync_DelAll", "DelAll", StoreRole::kDeleteAll, {}},
        },
};

ScriptedMmsStore* g_store = nullptr;

constexpr int kRubbish = 0xEE;

}  // namespace

struct MmsEntryPoints {
  static std::uint32_t GetConfig(std::uint8_t** block, std::uint32_t* size) noexcept {
    ExpectAligned("the block's place", block);
    ExpectAligned("the size's place", size);
    if (const auto refusal = g_store->Begin("GetConfig")) {
      std::memset(block, kRubbish, sizeof(*block));
      std::memset(size, kRubbish, sizeof(*size));
      return *refusal;
    }
    if (g_store->fills_nothing.contains("GetConfig")) return 0;
    const std::optional<Bytes>& config = g_store->config;
    *block = config ? NewBlock(config->data(), config->size()) : nullptr;
    *size = g_store->claimed_config_size.value_or(static_cast<std::uint32_t>(config ? config->size() : 0));
    return 0;
  }

  static std::uint32_t SetConfig(const std::uint8_t* block, std::uint32_t size) noexcept {
    const std::string told = (block == nullptr ? " null " : " ") + std::to_string(size);
    if (const auto refusal = g_store->Begin("SetConfig", told)) return *refusal;
    g_store->told_configs.emplace_back(block, block + (block == nullptr ? 0 : size));
    return 0;
  }
};

void PrintTo(const MmsEntry& entry, std::ostream* out) {
  *out << "{text " << testing::PrintToString(entry.text) << ", id " << entry.id << ", value " << entry.value
       << ", data " << testing::PrintToString(entry.data) << ", length " << entry.data_length << "}";
}

ScriptedMmsStore::ScriptedMmsStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedTableStore(kFacts, missing, missing_address,
                         {{u"mms_Sync_GetConfig", AddressOf(&MmsEntryPoints::GetConfig)},
                          {u"mms_Sync_SetConfig", AddressOf(&MmsEntryPoints::SetConfig)}}) {
  g_store = this;
}

ScriptedMmsStore::~ScriptedMmsStore() {
  g_store = nullptr;
}

void ScriptedMmsStore::Add(std::uint32_t id, std::uint64_t time, std::optional<std::string> text,
                           std::optional<Bytes> data) {
  const auto data_length = static_cast<std::int32_t>(data ? data->size() : 0);
  AddEntry(id, time, {std::move(text), id, 0, std::move(data), data_length});
}

void ScriptedMmsStore::AddEntry(std::uint32_t id, std::uint64_t time, MmsEntry entry) {
  ScriptedTableStore::Add(id, time);
  entries_[id] = std::move(entry);
}

void ScriptedMmsStore::HandOut(const Record& record, std::uint32_t table, std::uint8_t* place) {
  const auto known = entries_.find(record.id);
  if (known == entries_.end()) return ScriptedTableStore::HandOut(record, table, place);
  const MmsEntry& entry = known->second;
  const Entry handed_out = {.text = entry.text ? NewBlock(entry.text->c_str(), entry.text->size() + 1) : nullptr,
                            .id = entry.id,
                            .value = entry.value,
                            .data = entry.data ? NewBlock(entry.data->data(), entry.data->size()) : nullptr,
                            .data_length = entry.data_length};
  std::memcpy(place, &handed_out, sizeof(handed_out));
}

void ScriptedMmsStore::TakeIn(Record& record, std::uint32_t table, const std::uint8_t* place) {
  ScriptedTableStore::TakeIn(record, table, place);
  Entry handed_in;
  std::memcpy(&handed_in, place, sizeof(handed_in));
  const auto& [text, id, value, data, data_length] = handed_in;
  MmsEntry entry = {.text = {}, .id = id, .value = value, .data = {}, .data_length = data_length};
  if (text != nullptr) entry.text.emplace(text, handset::BlockSize(text));
  if (data != nullptr) entry.data.emplace(data, data + handset::BlockSize(data));
  entries_[record.id] = std::move(entry);
}

}  // namespace qv_test
