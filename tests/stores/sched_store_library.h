// SchedStore.dll by its entry points, as a caller that only knows the file sees it.
#ifndef QV_TESTS_STORES_SCHED_STORE_LIBRARY_H
#define QV_TESTS_STORES_SCHED_STORE_LIBRARY_H

#include <cstdint>

#include "host/stores/record_store.h"
#include "tests/stores/library_file.h"

struct SchedStoreLibrary : LibraryFile {
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  std::uint32_t (*const get_total_num)(std::uint32_t) = Find<std::uint32_t(std::uint32_t)>("SC_Sync_GetTotalNum");
  std::uint32_t (*const get_all_sync_info)(std::uint32_t, std::uint32_t*, qv::SyncInfoEntry*) =
      Find<std::uint32_t(std::uint32_t, std::uint32_t*, qv::SyncInfoEntry*)>("SC_Sync_GetAllSyncInfo");
  std::uint32_t (*const read)(std::uint32_t, std::uint32_t, Ids,
                              void*) = Find<std::uint32_t(std::uint32_t, std::uint32_t, Ids, void*)>("SC_Sync_Read");
  std::uint32_t (*const insert)(std::uint32_t, const void*, std::uint32_t*, std::uint32_t) =
      Find<std::uint32_t(std::uint32_t, const void*, std::uint32_t*, std::uint32_t)>("SC_Sync_Insert");
  std::uint32_t (*const update)(std::uint32_t, std::uint32_t, const void*, std::uint32_t) =
      Find<std::uint32_t(std::uint32_t, std::uint32_t, const void*, std::uint32_t)>("SC_Sync_Update");
  std::uint32_t (*const del)(std::uint32_t, std::uint32_t,
                             Ids) = Find<std::uint32_t(std::uint32_t, std::uint32_t, Ids)>("SC_Sync_Del");
  std::uint32_t (*const del_all)() = Find<std::uint32_t()>("SC_Sync_DelAll");
};

#endif  // QV_TESTS_STORES_SCHED_STORE_LIBRARY_H
