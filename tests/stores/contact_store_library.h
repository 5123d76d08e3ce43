// ContactStore.dll by its entry points, as a caller that only knows the file sees it.
#ifndef QV_TESTS_STORES_CONTACT_STORE_LIBRARY_H
#define QV_TESTS_STORES_CONTACT_STORE_LIBRARY_H

#include <cstdint>

#include "tests/stores/library_file.h"

/// The entry points that contacts and groups have in the same form.
struct ContactTableCalls {
  using Status = std::int32_t;
  using Ids = const std::uint32_t*;

  Status (*count)(std::int32_t* count);
  Status (*list)(std::int32_t* count, void* entries);
  Status (*read)(Ids ids, std::int32_t count, void* records);
  Status (*erase)(Ids ids, std::int32_t count);
  Status (*add)(const void* records, std::int32_t count, std::uint32_t* new_ids);
  Status (*update)(Ids ids, std::int32_t count, const void* records);
  Status (*find)(const char16_t* name, std::int32_t* found, std::uint32_t* id);
};

struct ContactStoreLibrary : LibraryFile {
  using Status = std::int32_t;

  using LibraryFile::LibraryFile;

  template <typename Function>
  Function Get(const char* name) const {
    return Find<std::remove_pointer_t<Function>>(name);
  }
  ContactTableCalls Table(const char* count, const char* list, const char* read, const char* erase, const char* add,
                          const char* update, const char* find) const {
    using Calls = ContactTableCalls;
    return {.count = Get<decltype(Calls::count)>(count),
            .list = Get<decltype(Calls::list)>(list),
            .read = Get<decltype(Calls::read)>(read),
            .erase = Get<decltype(Calls::erase)>(erase),
            .add = Get<decltype(Calls::add)>(add),
            .update = Get<decltype(Calls::update)>(update),
            .find = Get<decltype(Calls::find)>(find)};
  }

  Status (*const initialize)(std::uint32_t) = Find<Status(std::uint32_t)>("DTP_Initialize");
  Status (*const uninitialize)() = Find<Status()>("DTP_UnInitialize");

  const ContactTableCalls contacts =
      Table("DTP_PIMGetAllManNum", "DTP_PIMGetAllmanSyncid", "DTP_PIMReadman", "DTP_PIMDeleteMan",
            "DTP_PIMAddManToUnGroup", "DTP_PIMUpdateMan", "DTP_PIMFindmanSyncidByName");
  const ContactTableCalls groups =
      Table("DTP_PIMGetAllGroupNum", "DTP_PIMGetAllgroupSyncid", "DTP_PIMReadgroup", "DTP_PIMDeleteGroup",
            "DTP_PIMAddGroup", "DTP_PIMUpdateGroup", "DTP_PIMFindgroupSyncidByName");

  Status (*const query_groups)(std::int32_t, void*) = Find<Status(std::int32_t, void*)>("DTP_PIMQueryManAttachGroup");
  Status (*const add_to_groups)(std::int32_t,
                                const void*) = Find<Status(std::int32_t, const void*)>("DTP_PIMPhoneAddToGroups");
  Status (*const modify_groups)(std::int32_t,
                                const void*) = Find<Status(std::int32_t, const void*)>("DTP_PIMModifyManToGroup");

  Status (*const download_picture)(std::uint32_t, void*) = Find<Status(std::uint32_t, void*)>("DTP_DownloadingImage");
  Status (*const load_picture)(const void*,
                               std::uint32_t*) = Find<Status(const void*, std::uint32_t*)>("DTP_LoadingImage");
  Status (*const delete_picture)(std::uint32_t) = Find<Status(std::uint32_t)>("DTP_DeleteImage");
};

#endif  // QV_TESTS_STORES_CONTACT_STORE_LIBRARY_H
