// The scripted store's entry points. They are noexcept: nothing may be thrown through the agent.
#include "tests/support/scripted_call_store.h"

#include <algorithm>

namespace qv_test {
namespace {

ScriptedCallStore* g_store = nullptr;

}  // namespace

struct CallEntryPoints {
  using Store = ScriptedCallStore;

  static std::uint32_t GetAllRecNum() noexcept {
    g_store->calls.emplace_back("GetAllRecNum");
    return g_store->claimed_count.value_or(static_cast<std::uint32_t>(g_store->records.size()));
  }

  static std::uint32_t GetAllidTime(std::uint32_t* count, std::uint32_t* entries) noexcept {
    std::vector<Store::Listed> listed;
    for (const auto& record : g_store->records) listed.push_back({record.id, record.time});
    return g_store->List(listed, count, entries);
  }

  static std::uint32_t Read(std::uint32_t count, const std::uint32_t* ids, std::uint8_t* records) noexcept {
    Store::ExpectAligned("the room for records", records);
    if (const std::uint32_t status = g_store->Begin("Read", Store::IdList(count, ids)); status != 0) return status;
    if (g_store->fills_nothing.contains("Read")) return 0;
    for (std::uint32_t i = 0; i < count; ++i) {
      const Bytes& bytes = g_store->At(ids[i]).bytes;
      std::copy(bytes.begin(), bytes.end(), records + i * Store::kRecordSize);
    }
    return 0;
  }

  static std::uint32_t Insert(const std::uint8_t* record, std::uint32_t* new_id) noexcept {
    Store::ExpectAligned("a record", record);
    Store::ExpectAligned("the new id's place", new_id);
    if (const std::uint32_t status = g_store->Begin("Insert"); status != 0) return status;
    *new_id = g_store->next_id++;
    g_store->Add(*new_id, Store::kNewTime, Bytes(record, record + Store::kRecordSize));
    return 0;
  }

  static std::uint32_t Update(std::uint32_t id, const std::uint8_t* record) noexcept {
    Store::ExpectAligned("a record", record);
    if (const std::uint32_t status = g_store->Begin("Update", " " + std::to_string(id)); status != 0) return status;
    auto& updated = g_store->At(id);
    updated.time = Store::kNewTime;
    updated.bytes.assign(record, record + Store::kRecordSize);
    return 0;
  }

  static std::uint32_t Del(std::uint32_t count, const std::uint32_t* ids) noexcept {
    if (const std::uint32_t status = g_store->Begin("Del", Store::IdList(count, ids)); status != 0) return status;
    const std::set<std::uint32_t> gone(ids, ids + count);
    std::erase_if(g_store->records, [&](const auto& record) { return gone.contains(record.id); });
    return 0;
  }

  static std::uint32_t DelAll() noexcept {
    if (const std::uint32_t status = g_store->Begin("DelAll"); status != 0) return status;
    g_store->records.clear();
    return 0;
  }
};

ScriptedCallStore::ScriptedCallStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  g_store = this;
  Install(u"CallLogStore.dll",
          {
              {u"EXPCALLHISTORY_Sync_GetAllRecNum", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::GetAllRecNum)},
              {u"EXPCALLHISTORY_Sync_GetAllidTime", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::GetAllidTime)},
              {u"EXPCALLHISTORY_Sync_Read", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::Read)},
              {u"EXPCALLHISTORY_Sync_Insert", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::Insert)},
              {u"EXPCALLHISTORY_Sync_Update", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::Update)},
              {u"EXPCALLHISTORY_Sync_Del", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::Del)},
              {u"EXPCALLHISTORY_Sync_DelAll", reinterpret_cast<coredll::FARPROC>(&CallEntryPoints::DelAll)},
          },
          missing, missing_address);
}

ScriptedCallStore::~ScriptedCallStore() {
  g_store = nullptr;
}

void ScriptedCallStore::Add(std::uint32_t id, std::uint64_t time, Bytes bytes) {
  if (bytes.empty()) {
    bytes.resize(kRecordSize);
    Put32(bytes, 160, id);
  }
  records.push_back({id, time, std::move(bytes)});
}

ScriptedCallStore::Record& ScriptedCallStore::At(std::uint32_t id) {
  for (Record& record : records) {
    if (record.id == id) return record;
  }
  static Record nowhere;
  ADD_FAILURE() << "the store was asked for call " << id << ", which it has not";
  nowhere = {id, 0, Bytes(kRecordSize)};
  return nowhere;
}

std::vector<std::uint32_t> ScriptedCallStore::Ids() const {
  std::vector<std::uint32_t> ids;
  for (const Record& record : records) ids.push_back(record.id);
  return ids;
}

}  // namespace qv_test
