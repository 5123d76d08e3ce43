// The scripted store's entry points. They are noexcept: nothing may be thrown through the agent.
#include "tests/support/scripted_sms_store.h"

#include <algorithm>
#include <cstring>

namespace qv_test {
namespace {

ScriptedSmsStore* g_store = nullptr;

struct Section {
  std::int32_t count;
  std::uint8_t* entries;
};

/// As stores are built for a processor that has no unaligned access.
void ExpectAligned(const char* what, const void* buffer) {
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % 4, 0u) << what << " is not on a multiple of 4";
}

std::string IdList(std::uint32_t count, const std::uint32_t* ids) {
  std::string list = " [";
  for (std::uint32_t i = 0; i < count; ++i) list += (i == 0 ? "" : " ") + std::to_string(ids[i]);
  return list + "]";
}

/// Tries twice: running out of memory is the handset's failure, not this store's.
std::uint8_t* Allocate(std::size_t size) {
  void* block = coredll::malloc(size);
  if (block == nullptr) block = coredll::malloc(size);
  return static_cast<std::uint8_t*>(block);
}

}  // namespace

struct SmsEntryPoints {
  static constexpr std::size_t kListEntrySize = 36;

  static std::uint32_t GetAllRecNum() noexcept {
    g_store->calls.emplace_back("GetAllRecNum");
    return g_store->claimed_count.value_or(static_cast<std::uint32_t>(g_store->messages.size()));
  }

  static std::uint32_t GetAllidTime(std::uint32_t* count, std::uint8_t* entries) noexcept {
    ExpectAligned("the count's place", count);
    ExpectAligned("the list", entries);
    if (const std::uint32_t status = g_store->Begin("GetAllidTime", " room " + std::to_string(*count)); status != 0) {
      return status;
    }
    if (g_store->fills_nothing.contains("GetAllidTime")) return 0;
    const std::size_t listed = std::min<std::size_t>(*count, g_store->messages.size());
    for (std::size_t i = 0; i < listed; ++i) {
      const auto& message = g_store->messages[i];
      Bytes entry(kListEntrySize, 0xAA);
      Put32(entry, 0, message.id);
      PutText(entry, 4, message.time);
      if (message.time.size() < 16) Put16(entry, 4 + 2 * message.time.size(), 0);
      std::copy(entry.begin(), entry.end(), entries + kListEntrySize * i);
    }
    *count = g_store->claimed_listed.value_or(static_cast<std::uint32_t>(listed));
    return 0;
  }

  static std::uint32_t Read(std::uint32_t count, const std::uint32_t* ids, std::uint8_t* records) noexcept {
    ExpectAligned("the list of ids", ids);
    ExpectAligned("the room for records", records);
    if (const std::uint32_t status = g_store->Begin("Read", IdList(count, ids)); status != 0) return status;
    if (g_store->fills_nothing.contains("Read")) return 0;
    for (std::uint32_t i = 0; i < count; ++i) {
      const Bytes& bytes = g_store->At(ids[i]).bytes;
      std::copy(bytes.begin(), bytes.end(), records + i * ScriptedSmsStore::kRecordSize);
    }
    return 0;
  }

  static std::uint32_t Insert(const std::uint8_t* record, std::uint32_t* new_id) noexcept {
    ExpectAligned("a record", record);
    ExpectAligned("the new id's place", new_id);
    if (const std::uint32_t status = g_store->Begin("Insert"); status != 0) return status;
    *new_id = g_store->next_id++;
    g_store->Add(*new_id, ScriptedSmsStore::kNewTime, Bytes(record, record + ScriptedSmsStore::kRecordSize));
    return 0;
  }

  static std::uint32_t Update(std::uint32_t id, const std::uint8_t* record) noexcept {
    ExpectAligned("a record", record);
    if (const std::uint32_t status = g_store->Begin("Update", " " + std::to_string(id)); status != 0) return status;
    auto& updated = g_store->At(id);
    updated.time = ScriptedSmsStore::kNewTime;
    updated.bytes.assign(record, record + ScriptedSmsStore::kRecordSize);
    return 0;
  }

  static std::uint32_t Del(std::uint32_t count, const std::uint32_t* ids) noexcept {
    ExpectAligned("the list of ids", ids);
    if (const std::uint32_t status = g_store->Begin("Del", IdList(count, ids)); status != 0) return status;
    const std::set<std::uint32_t> gone(ids, ids + count);
    std::erase_if(g_store->messages, [&](const auto& message) { return gone.contains(message.id); });
    return 0;
  }

  static std::uint32_t DelAll() noexcept {
    if (const std::uint32_t status = g_store->Begin("DelAll"); status != 0) return status;
    g_store->messages.clear();
    return 0;
  }

  static std::uint32_t GetSmsConfig(Section* config) noexcept {
    ExpectAligned("the configuration", config);
    if (const std::uint32_t status = g_store->Begin("GetSMSConfig"); status != 0) return status;
    if (g_store->fills_nothing.contains("GetSMSConfig")) return 0;
    for (std::size_t i = 0; i < ScriptedSmsStore::kSections; ++i) {
      const Bytes& bytes = g_store->sections[i];
      config[i] = {static_cast<std::int32_t>(bytes.size() / ScriptedSmsStore::kSectionSizes[i]), nullptr};
      if (const auto claim = g_store->claimed_section_counts.find(i); claim != g_store->claimed_section_counts.end()) {
        config[i].count = claim->second;
      }
      if (g_store->null_sections.contains(i)) continue;
      config[i].entries = Allocate(bytes.size());
      std::copy(bytes.begin(), bytes.end(), config[i].entries);
    }
    return 0;
  }

  static std::uint32_t SetSmsConfig(const Section* config) noexcept {
    ExpectAligned("the configuration", config);
    std::string counts;
    for (std::size_t i = 0; i < ScriptedSmsStore::kSections; ++i) counts += " " + std::to_string(config[i].count);
    if (const std::uint32_t status = g_store->Begin("SetSMSConfig", counts); status != 0) return status;
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

ScriptedSmsStore::ScriptedSmsStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  handset::EntryPoints all = {
      {u"Sync_GetAllRecNum", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::GetAllRecNum)},
      {u"Sync_GetAllidTime", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::GetAllidTime)},
      {u"Sync_Read", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::Read)},
      {u"Sync_Insert", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::Insert)},
      {u"Sync_Update", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::Update)},
      {u"Sync_Del", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::Del)},
      {u"Sync_DelAll", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::DelAll)},
      {u"Sync_GetSMSConfig", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::GetSmsConfig)},
      {u"Sync_SetSMSConfig", reinterpret_cast<coredll::FARPROC>(&SmsEntryPoints::SetSmsConfig)},
  };
  for (const std::u16string& name : missing) {
    all.erase(name);
    if (missing_address != 0) all[name] = reinterpret_cast<coredll::FARPROC>(missing_address);
  }
  g_store = this;
  handset::InstallLibrary(u"SmsStore.dll", std::move(all));
}

ScriptedSmsStore::~ScriptedSmsStore() {
  g_store = nullptr;
}

void ScriptedSmsStore::Add(std::uint32_t id, std::u16string_view time, Bytes bytes) {
  if (bytes.empty()) {
    bytes.resize(kRecordSize);
    Put32(bytes, 0, id);
  }
  messages.push_back({id, std::u16string(time), std::move(bytes)});
}

ScriptedSmsStore::Message& ScriptedSmsStore::At(std::uint32_t id) {
  for (Message& message : messages) {
    if (message.id == id) return message;
  }
  static Message nowhere;
  ADD_FAILURE() << "the store was asked for message " << id << ", which it has not";
  nowhere = {id, u"", Bytes(kRecordSize)};
  return nowhere;
}

std::vector<std::string> ScriptedSmsStore::CallsOf(const std::string& entry_point) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.substr(0, call.find(' ')) == entry_point) found.push_back(call);
  }
  return found;
}

std::uint32_t ScriptedSmsStore::Begin(const std::string& entry_point, const std::string& arguments) {
  calls.push_back(entry_point + arguments);
  std::uint32_t status = 0;
  if (const auto told = statuses.find(entry_point); told != statuses.end()) status = told->second;
  if (++calls_with_status_ == fail_call) status = 0xFFFFFFFF;
  failed_a_call = failed_a_call || status != 0;
  return status;
}

}  // namespace qv_test
