// What the business cards' store is.
#include "tests/support/scripted_card_store.h"

namespace qv_test {
namespace {

using enum Argument;

/// The agent takes 2 for success as well.
constexpr std::uint32_t kSuccess = 1;

const ScriptedStoreFacts kFacts = {
    .library = u"CardScanStore.dll",
    .tables = {{.record_size = 968, .id_offset = 0}},
    .list = kFileTimeIn12Bytes,
    .entry_points =
        {
            {u"CR_Sync_GetAllRecNum", "GetAllRecNum", StoreRole::kCount, {}},
            {u"CR_Sync_GetAllidTime", "GetAllidTime", StoreRole::kList, {kCountPlace, kListEntries, kZero}, kSuccess},
            {u"CR_Sync_Read", "Read", StoreRole::kRead, {kCount, kIds, kRecords, kZero}, kSuccess},
            {u"CR_Sync_Insert", "Insert", StoreRole::kInsert, {kRecords, kNewId, kZero}, kSuccess},
            {u"CR_Sync_Update", "Update", StoreRole::kUpdate, {kRecords}, kSuccess},
            {u"CR_Sync_Del", "Del", StoreRole::kDelete, {kCount, kIds, kZero}, kSuccess},
            {u"CR_Sync_DeleteAllCardRecord", "DelAll", StoreRole::kDeleteAll, {}, kSuccess},
        },
};

ScriptedCardStore* g_store = nullptr;

}  // namespace

struct CardEntryPoints {
  static std::uint32_t Initialize(std::uint32_t reserved) noexcept {
    g_store->calls.push_back("Initialize " + std::to_string(reserved));
    return g_store->session_answer;
  }

  static std::uint32_t UnInitialize() noexcept {
    g_store->calls.emplace_back("UnInitialize");
    return g_store->session_answer;
  }
};

ScriptedCardStore::ScriptedCardStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address)
    : ScriptedTableStore(kFacts, missing, missing_address,
                         {{u"CR_Initialize", AddressOf(&CardEntryPoints::Initialize)},
                          {u"CR_UnInitialize", AddressOf(&CardEntryPoints::UnInitialize)}}) {
  g_store = this;
}

ScriptedCardStore::~ScriptedCardStore() {
  if (g_store == this) g_store = nullptr;
}

}  // namespace qv_test
