// SchedStore.dll by its entry points, as a caller that only knows the file sees it.
#ifndef QV_TESTS_STORES_SCHED_STORE_LIBRARY_H
#define QV_TESTS_STORES_SCHED_STORE_LIBRARY_H

#include <dlfcn.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/stores/record_store.h"

/// A library file open with local symbols, until the end of its life.
class LibraryFile {
 public:
  explicit LibraryFile(const std::string& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(dlerror());
  }

  template <typename Function>
  Function* Find(const char* name) const {
    void* const symbol = dlsym(handle_.get(), name);
    if (symbol == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(symbol);
  }

 private:
  struct Closer {
    void operator()(void* handle) const { dlclose(handle); }
  };
  std::unique_ptr<void, Closer> handle_;
};

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
