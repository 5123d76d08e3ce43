// The scripted store's entry points. They are noexcept: nothing may be thrown through the agent.
#include "tests/support/scripted_mms_store.h"

#include <algorithm>
#include <cstring>

namespace qv_test {
namespace {

ScriptedMmsStore* g_store = nullptr;

constexpr int kRubbish = 0xEE;

struct Entry {
  char* text;
  std::uint32_t id;
  std::uint32_t value;
  std::uint8_t* data;
  std::int32_t data_length;
};
static_assert(sizeof(Entry) == 20);

/// A copy in a block of the agent's. Tries twice: running out of memory is the handset's failure, not this store's.
template <typename Byte>
Byte* NewBlock(const Byte* bytes, std::size_t size) {
  void* block = coredll::malloc(size);
  if (block == nullptr) block = coredll::malloc(size);
  if (size != 0) std::memcpy(block, bytes, size);
  return static_cast<Byte*>(block);
}

Entry HandOut(const MmsEntry& entry) {
  return {.text = entry.text ? NewBlock(entry.text->c_str(), entry.text->size() + 1) : nullptr,
          .id = entry.id,
          .value = entry.value,
          .data = entry.data ? NewBlock(entry.data->data(), entry.data->size()) : nullptr,
          .data_length = entry.data_length};
}

MmsEntry Take(const Entry& entry) {
  MmsEntry taken = {.text = {}, .id = entry.id, .value = entry.value, .data = {}, .data_length = entry.data_length};
  if (entry.text != nullptr) taken.text.emplace(entry.text, handset::BlockSize(entry.text));
  if (entry.data != nullptr) taken.data.emplace(entry.data, entry.data + handset::BlockSize(entry.data));
  return taken;
}

}  // namespace

struct MmsEntryPoints {
  using Store = ScriptedMmsStore;

  static std::uint32_t GetAllRecvNum() noexcept {
    g_store->calls.emplace_back("GetAllRecvNum");
    return g_store->claimed_count.value_or(static_cast<std::uint32_t>(g_store->messages.size()));
  }

  static std::uint32_t GetAllidTime(std::uint32_t* count, std::uint32_t* entries) noexcept {
    std::vector<Store::Listed> listed;
    for (const auto& message : g_store->messages) listed.push_back({message.id, message.time});
    return g_store->List(listed, count, entries);
  }

  static std::uint32_t Read(std::uint32_t count, const std::uint32_t* ids, Entry* entries) noexcept {
    Store::ExpectAligned("the room for messages", entries);
    if (const std::uint32_t status = g_store->Begin("Read", Store::IdList(count, ids)); status != 0) {
      std::memset(static_cast<void*>(entries), kRubbish, count * sizeof(Entry));
      return status;
    }
    if (g_store->fills_nothing.contains("Read")) return 0;
    for (std::uint32_t i = 0; i < count; ++i) entries[i] = HandOut(g_store->At(ids[i]).entry);
    return 0;
  }

  static std::uint32_t Insert(const Entry* entry, std::uint32_t* new_id) noexcept {
    Store::ExpectAligned("a message", entry);
    Store::ExpectAligned("the new id's place", new_id);
    EXPECT_EQ(*new_id, 0u) << "what a new id is preset to";
    if (const std::uint32_t status = g_store->Begin("Insert"); status != 0) return status;
    *new_id = g_store->next_id++;
    g_store->messages.push_back({*new_id, Store::kNewTime, Take(*entry)});
    return 0;
  }

  static std::uint32_t Update(std::uint32_t id, const Entry* entry) noexcept {
    Store::ExpectAligned("a message", entry);
    if (const std::uint32_t status = g_store->Begin("Update", " " + std::to_string(id)); status != 0) return status;
    auto& updated = g_store->At(id);
    updated.time = Store::kNewTime;
    updated.entry = Take(*entry);
    return 0;
  }

  static std::uint32_t Del(std::uint32_t count, const std::uint32_t* ids) noexcept {
    if (const std::uint32_t status = g_store->Begin("Del", Store::IdList(count, ids)); status != 0) return status;
    const std::set<std::uint32_t> gone(ids, ids + count);
    std::erase_if(g_store->messages, [&](const auto& message) { return gone.contains(message.id); });
    return 0;
  }

  static std::uint32_t DelAll() noexcept {
    if (const std::uint32_t status = g_store->Begin("DelAll"); status != 0) return status;
    g_store->messages.clear();
    return 0;
  }

  static std::uint32_t GetConfig(std::uint8_t** block, std::uint32_t* size) noexcept {
    Store::ExpectAligned("the block's place", block);
    Store::ExpectAligned("the size's place", size);
    if (const std::uint32_t status = g_store->Begin("GetConfig"); status != 0) {
      std::memset(block, kRubbish, sizeof(*block));
      std::memset(size, kRubbish, sizeof(*size));
      return status;
    }
    if (g_store->fills_nothing.contains("GetConfig")) return 0;
    const std::optional<Bytes>& config = g_store->config;
    *block = config ? NewBlock(config->data(), config->size()) : nullptr;
    *size = g_store->claimed_config_size.value_or(static_cast<std::uint32_t>(config ? config->size() : 0));
    return 0;
  }

  static std::uint32_t SetConfig(const std::uint8_t* block, std::uint32_t size) noexcept {
    const std::string told = (block == nullptr ? " null " : " ") + std::to_string(size);
    if (const std::uint32_t status = g_store->Begin("SetConfig", told); status != 0) return status;
    g_store->told_configs.emplace_back(block, block + (block == nullptr ? 0 : size));
    return 0;
  }
};

void PrintTo(const MmsEntry& entry, std::ostream* out) {
  *out << "{text " << testing::PrintToString(entry.text) << ", id " << entry.id << ", value " << entry.value
       << ", data " << testing::PrintToString(entry.data) << ", length " << entry.data_length << "}";
}

ScriptedMmsStore::ScriptedMmsStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  g_store = this;
  Install(u"MmsStore.dll",
          {
              {u"mms_Sync_GetAllRecvNum", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::GetAllRecvNum)},
              {u"mms_Sync_getAllidTime", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::GetAllidTime)},
              {u"mms_Sync_Read", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::Read)},
              {u"mms_Sync_Insert", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::Insert)},
              {u"mms_Sync_Update", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::Update)},
              {u"mms_SC_Sync_Del", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::Del)},
              {u"mms_Sync_DelAll", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::DelAll)},
              {u"mms_Sync_GetConfig", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::GetConfig)},
              {u"mms_Sync_SetConfig", reinterpret_cast<coredll::FARPROC>(&MmsEntryPoints::SetConfig)},
          },
          missing, missing_address);
}

ScriptedMmsStore::~ScriptedMmsStore() {
  g_store = nullptr;
}

void ScriptedMmsStore::Add(std::uint32_t id, std::uint64_t time, std::optional<std::string> text,
                           std::optional<Bytes> data) {
  const auto data_length = static_cast<std::int32_t>(data ? data->size() : 0);
  messages.push_back({id, time, {std::move(text), id, 0, std::move(data), data_length}});
}

ScriptedMmsStore::Message& ScriptedMmsStore::At(std::uint32_t id) {
  for (Message& message : messages) {
    if (message.id == id) return message;
  }
  static Message nowhere;
  ADD_FAILURE() << "the store was asked for message " << id << ", which it has not";
  nowhere = {id, 0, {}};
  return nowhere;
}

std::vector<std::uint32_t> ScriptedMmsStore::Ids() const {
  std::vector<std::uint32_t> ids;
  for (const Message& message : messages) ids.push_back(message.id);
  return ids;
}

}  // namespace qv_test
