// What the call filter's store is, and what it does in its own way: updates that say when there is no such record,
// tables that are emptied one by one, and a configuration.
#include "tests/support/scripted_call_filter_store.h"

namespace qv_test {
namespace {

using enum Argument;

const ScriptedStoreFacts kFacts = {
    .library = u"CallFilterStore.dll",
    .tables = {{.record_size = ScriptedCallFilterStore::kEntrySize, .id_offset = 0},
               {.record_size = ScriptedCallFilterStore::kGroupSize, .id_offset = 0}},
    .list = kFileTimeIn12Bytes,
    .entry_points =
        {
            {u"Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {kTable}},
            {u"Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kTable, kCountPlace, kListEntries}},
            {u"Sync_Read", "Read", StoreRole::kRead, {kTable, kCount, kIds, kRecords}},
            {u"Sync_insert", "Insert", StoreRole::kInsert, {kTable, kRecords, kNewId}},
            {u"SC_Sync_Del", "Del", StoreRole::kDelete, {kTable, kCount, kIds}},
        },
};

constexpr std::uint32_t kNoSuchRecord = 3;

ScriptedCallFilterStore* g_store = nullptr;

}  // namespace

struct CallFilterEntryPoints {
  static std::uint32_t Update(std::uint32_t table, std::uint32_t id, const std::uint8_t* record) noexcept {
    ExpectAligned("a record", record);
    const std::string asked = " " + std::to_string(table) + " id " + std::to_string(id);
    if (const auto refusal = g_store->Begin("Update", asked)) return *refusal;
    const auto known = std::ranges::find(g_store->tables[table], id, &ScriptedRecordStore::Record::id);
    if (known == g_store->tables[table].end()) return kNoSuchRecord;
    known->time = kFacts.list.new_time;
    known->bytes.assign(record, record + kFacts.tables.at(table).record_size);
    return 0;
  }

  static std::uint32_t ReadConfig(std::uint8_t* block) noexcept {
    ExpectAligned("the configuration", block);
    if (const auto refusal = g_store->Begin("ReadConfig")) return *refusal;
    if (!g_store->fills_nothing.contains("ReadConfig")) std::ranges::copy(g_store->config, block);
    return 0;
  }

  static std::uint32_t WriteConfig(const std::uint8_t* block) noexcept {
    ExpectAligned("the configuration", block);
    if (const auto refusal = g_store->Begin("WriteConfig")) return *refusal;
    g_store->config.assign(block, block + ScriptedCallFilterStore::kConfigSize);
    return 0;
  }

  static std::uint32_t DeleteConfig() noexcept {
    const std::uint32_t success = SuccessOf("DelConfig");
    if (const auto refusal = g_store->Begin("DelConfig", {}, success)) return *refusal;
    g_store->config.assign(ScriptedCallFilterStore::kConfigSize, 0);
    return success;
  }

  static std::uint32_t DeleteAll(std::uint32_t table) noexcept {
    const std::uint32_t success = SuccessOf("DelAll");
    if (const auto refusal = g_store->Begin("DelAll", " " + std::to_string(table), success)) return *refusal;
    g_store->tables[table].clear();
    return success;
  }

  static std::uint32_t Delete() noexcept {
    ADD_FAILURE() << "Sync_Del is for others";
    return 0xFFFFFFFF;
  }

 private:
  static std::uint32_t SuccessOf(const std::string& entry_point) {
    const auto chosen = g_store->successes.find(entry_point);
    return chosen == g_store->successes.end() ? 0 : chosen->second;
  }
};

ScriptedCallFilterStore::ScriptedCallFilterStore(const std::set<std::u16string>& missing,
                                                 std::uintptr_t missing_address)
    : ScriptedRecordStore(kFacts, missing, missing_address,
                          {{u"Sync_Update", AddressOf(&CallFilterEntryPoints::Update)},
                           {u"Sync_rbc_ReadConfig", AddressOf(&CallFilterEntryPoints::ReadConfig)},
                           {u"Sync_rbc_WriteConfig", AddressOf(&CallFilterEntryPoints::WriteConfig)},
                           {u"Sync_rbc_DelConfig", AddressOf(&CallFilterEntryPoints::DeleteConfig)},
                           {u"Sync_DelAll", AddressOf(&CallFilterEntryPoints::DeleteAll)},
                           {u"Sync_Del", AddressOf(&CallFilterEntryPoints::Delete)}}) {
  g_store = this;
}

ScriptedCallFilterStore::~ScriptedCallFilterStore() {
  g_store = nullptr;
}

}  // namespace qv_test
