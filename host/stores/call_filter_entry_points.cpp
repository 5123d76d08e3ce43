// CallFilterStore.dll, the call filter's store library: table 0 holds the entries, table 1 the groups, and beside them
// lies a configuration of one record. It deletes under two names.
#include <algorithm>

#include "host/stores/store_library.h"
#include "host/stores/telephony_kinds.h"

namespace {

class CallFilter {
 public:
  explicit CallFilter(stores::Database& database)
      : tables_(database), config_(database, stores::kCallFilterConfigKind) {}

  std::span<stores::RecordStore> Tables() { return tables_.Tables(); }

  /// Zeros when there is none.
  void ReadConfig(void* config) const {
    std::fill_n(static_cast<std::uint8_t*>(config), config_.Kind().layout.store_size, std::uint8_t{0});
    qv::SyncInfoEntry row = {};
    if (config_.SyncInfo({&row, 1}) == 1) config_.Read({&row.id, 1}, static_cast<std::uint8_t*>(config));
  }
  void WriteConfig(const void* config) {
    config_.DeleteAll();
    config_.Insert(static_cast<const std::uint8_t*>(config));
  }
  void DeleteConfig() { config_.DeleteAll(); }

 private:
  stores::RecordTables<stores::kCallFilterKinds> tables_;
  stores::RecordStore config_;
};

stores::LibraryOf<CallFilter> library;

}  // namespace

STORE_ENTRY_POINT std::uint32_t Sync_GetAllRecNum(std::uint32_t table) {
  return library.Count(table);
}

STORE_ENTRY_POINT std::uint32_t Sync_GetAllidTime(std::uint32_t table, std::uint32_t* count, void* entries) {
  return library.List(table, count, entries);
}

STORE_ENTRY_POINT std::uint32_t Sync_Read(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids,
                                          void* records) {
  return library.Read(table, count, ids, records);
}

STORE_ENTRY_POINT std::uint32_t Sync_insert(std::uint32_t table, const void* record, std::uint32_t* new_id) {
  return library.Insert(table, record, new_id);
}

STORE_ENTRY_POINT std::uint32_t Sync_Update(std::uint32_t table, std::uint32_t id, const void* record) {
  return library.Update(table, id, record);
}

STORE_ENTRY_POINT std::uint32_t Sync_Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t SC_Sync_Del(std::uint32_t table, std::uint32_t count, const std::uint32_t* ids) {
  return library.Delete(table, count, ids);
}

STORE_ENTRY_POINT std::uint32_t Sync_DelAll(std::uint32_t table) {
  return library.DeleteAll(table);
}

STORE_ENTRY_POINT std::uint32_t Sync_rbc_ReadConfig(void* config) {
  return library.Call([&](const CallFilter& filter) {
    stores::Expect({config});
    filter.ReadConfig(config);
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_rbc_WriteConfig(const void* config) {
  return library.Call([&](CallFilter& filter) {
    stores::Expect({config});
    filter.WriteConfig(config);
  });
}

STORE_ENTRY_POINT std::uint32_t Sync_rbc_DelConfig() {
  return library.Call([](CallFilter& filter) { filter.DeleteConfig(); });
}
