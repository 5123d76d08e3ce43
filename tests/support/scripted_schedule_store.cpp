// The scripted store's entry points. They are noexcept: nothing may be thrown through the agent.
#include "tests/support/scripted_schedule_store.h"

#include <algorithm>
#include <cstring>

namespace qv_test {
namespace {

ScriptedScheduleStore* g_store = nullptr;

std::string IdList(std::uint32_t count, const std::uint32_t* ids) {
  std::string list = "[";
  for (std::uint32_t i = 0; i < count; ++i) list += (i == 0 ? "" : " ") + std::to_string(ids[i]);
  return list + "]";
}

std::size_t RecordSize(std::uint32_t table) {
  return table == 0 ? ScriptedScheduleStore::kEntrySize : ScriptedScheduleStore::kGroupSize;
}

}  // namespace

struct ScheduleEntryPoints {
  static std::uint32_t GetTotalNum(std::uint32_t table) noexcept {
    g_store->Log("GetTotalNum " + std::to_string(table));
    return g_store->claimed_total.value_or(static_cast<std::uint32_t>(g_store->tables[table].size()));
  }

  static std::uint32_t GetAllSyncInfo(std::uint32_t table, std::uint32_t* count, std::uint32_t* entries) noexcept {
    g_store->Log("GetAllSyncInfo " + std::to_string(table) + " room " + std::to_string(*count));
    std::uint32_t status = 0;
    if (g_store->Fails("GetAllSyncInfo", status)) return status;
    const auto& records = g_store->tables[table];
    const std::size_t listed = std::min<std::size_t>(*count, records.size());
    for (std::size_t i = 0; i < listed; ++i) {
      const auto& record = records[i];
      const std::uint32_t words[] = {record.id, 0xAAAAAAAA, static_cast<std::uint32_t>(record.time),
                                     static_cast<std::uint32_t>(record.time >> 32)};
      std::memcpy(entries + 4 * i, words, sizeof(words));
    }
    *count = g_store->claimed_sync_info_count.value_or(static_cast<std::uint32_t>(listed));
    return 0;
  }

  static std::uint32_t Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                            std::uint8_t* records) noexcept {
    g_store->Log("Read " + std::to_string(table) + " " + IdList(count, ids));
    std::uint32_t status = 0;
    if (g_store->Fails("Read", status)) return status;
    if (g_store->fills_nothing) return 0;
    if (g_store->fills_all_room) std::memset(records, 0xDD, 100 * RecordSize(table));
    for (std::uint32_t i = 0; i < count; ++i) {
      const Bytes& bytes = g_store->At(table, ids[i]).bytes;
      std::copy(bytes.begin(), bytes.end(), records + i * RecordSize(table));
    }
    return 0;
  }

  static std::uint32_t Insert(std::uint32_t table, const std::uint8_t* record, std::uint32_t* new_id,
                              std::uint32_t group) noexcept {
    g_store->Log("Insert " + std::to_string(table) + " group " + std::to_string(group));
    std::uint32_t status = 0;
    if (g_store->Fails("Insert", status)) return status;
    *new_id = g_store->next_id++;
    g_store->tables[table].push_back({*new_id, 1, Bytes(record, record + RecordSize(table)), group});
    return 0;
  }

  static std::uint32_t Update(std::uint32_t table, std::uint32_t id, const std::uint8_t* record,
                              std::uint32_t group) noexcept {
    g_store->Log("Update " + std::to_string(table) + " id " + std::to_string(id) + " group " + std::to_string(group));
    std::uint32_t status = 0;
    if (g_store->Fails("Update", status)) return status;
    auto& updated = g_store->At(table, id);
    updated.bytes.assign(record, record + RecordSize(table));
    updated.group = group;
    return 0;
  }

  static std::uint32_t Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) noexcept {
    g_store->Log("Del " + std::to_string(table) + " " + IdList(count, ids));
    std::uint32_t status = 0;
    if (g_store->Fails("Del", status)) return status;
    std::erase_if(g_store->tables[table],
                  [&](const auto& record) { return std::find(ids, ids + count, record.id) != ids + count; });
    return 0;
  }

  static std::uint32_t DelAll() noexcept {
    g_store->Log("DelAll");
    std::uint32_t status = 0;
    if (g_store->Fails("DelAll", status)) return status;
    for (auto& table : g_store->tables) table.clear();
    return 0;
  }
};

ScriptedScheduleStore::ScriptedScheduleStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  handset::EntryPoints all = {
      {u"SC_Sync_GetTotalNum", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::GetTotalNum)},
      {u"SC_Sync_GetAllSyncInfo", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::GetAllSyncInfo)},
      {u"SC_Sync_Read", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::Read)},
      {u"SC_Sync_Insert", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::Insert)},
      {u"SC_Sync_Update", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::Update)},
      {u"SC_Sync_Del", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::Del)},
      {u"SC_Sync_DelAll", reinterpret_cast<coredll::FARPROC>(&ScheduleEntryPoints::DelAll)},
  };
  for (const std::u16string& name : missing) {
    all.erase(name);
    if (missing_address != 0) all[name] = reinterpret_cast<coredll::FARPROC>(missing_address);
  }
  g_store = this;
  handset::InstallLibrary(u"SchedStore.dll", std::move(all));
}

ScriptedScheduleStore::~ScriptedScheduleStore() {
  g_store = nullptr;
}

void ScriptedScheduleStore::Add(std::uint32_t table, std::uint32_t id, std::uint64_t time, Bytes bytes) {
  bytes.resize(RecordSize(table));
  tables[table].push_back({id, time, std::move(bytes)});
}

ScriptedScheduleStore::Record& ScriptedScheduleStore::At(std::uint32_t table, std::uint32_t id) {
  for (Record& record : tables[table]) {
    if (record.id == id) return record;
  }
  static Record nowhere;
  ADD_FAILURE() << "the store was asked for record " << id << " of table " << table << ", which it has not";
  nowhere = {id, 0, Bytes(RecordSize(table))};
  return nowhere;
}

void ScriptedScheduleStore::Log(std::string call) {
  calls.push_back(std::move(call));
  messages_at_last_call = handset::PostedMessages().size();
}

bool ScriptedScheduleStore::Fails(const char* entry_point, std::uint32_t& status) {
  ++calls_with_status_;
  if (const auto told = statuses.find(entry_point); told != statuses.end()) {
    status = told->second;
  } else if (calls_with_status_ == fail_call) {
    status = 0xFFFFFFFF;
  }
  failed_a_call = failed_a_call || status != 0;
  return status != 0;
}

}  // namespace qv_test
