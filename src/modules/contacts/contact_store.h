// ContactStore.dll as the contacts' steps see it: its entry points, its session, and its two tables.
#ifndef QV_MODULES_CONTACTS_CONTACT_STORE_H
#define QV_MODULES_CONTACTS_CONTACT_STORE_H

#include <cstdint>
#include <span>

#include "platform/library.h"
#include "sync/procedure.h"

namespace qv::contacts {

// The entry points' forms. All answer 0 for success.
using InitializeFunction = std::int32_t(std::uint32_t reserved);
using UnInitializeFunction = std::int32_t();
using CountFunction = std::int32_t(std::int32_t* count);
using ListFunction = std::int32_t(std::int32_t* count, void* entries);
using ReadFunction = std::int32_t(const std::uint32_t* ids, std::int32_t count, void* records);
using DeleteFunction = std::int32_t(const std::uint32_t* ids, std::int32_t count);
using AddFunction = std::int32_t(const void* records, std::int32_t count, std::uint32_t* new_ids);
using UpdateFunction = std::int32_t(const std::uint32_t* ids, std::int32_t count, const void* records);
using FindFunction = std::int32_t(const char16_t* name, std::int32_t* found, std::uint32_t* id);
using QueryMembershipsFunction = std::int32_t(std::int32_t count, void* memberships);
using ApplyMembershipsFunction = std::int32_t(std::int32_t count, const void* memberships);
using DownloadPictureFunction = std::int32_t(std::uint32_t id, void* picture);
using LoadPictureFunction = std::int32_t(const void* picture, std::uint32_t* new_id);
using DeletePictureFunction = std::int32_t(std::uint32_t id);

/// The entry points that contacts and groups have in the same form.
struct TableEntryPoints {
  const char16_t* count;
  const char16_t* list;
  const char16_t* read;
  const char16_t* erase;
  const char16_t* add;
  const char16_t* update;
  const char16_t* find_by_name;
};

/// By table number.
inline constexpr TableEntryPoints kEntryPoints[] = {
    {.count = u"DTP_PIMGetAllManNum",
     .list = u"DTP_PIMGetAllmanSyncid",
     .read = u"DTP_PIMReadman",
     .erase = u"DTP_PIMDeleteMan",
     .add = u"DTP_PIMAddManToUnGroup",
     .update = u"DTP_PIMUpdateMan",
     .find_by_name = u"DTP_PIMFindmanSyncidByName"},
    {.count = u"DTP_PIMGetAllGroupNum",
     .list = u"DTP_PIMGetAllgroupSyncid",
     .read = u"DTP_PIMReadgroup",
     .erase = u"DTP_PIMDeleteGroup",
     .add = u"DTP_PIMAddGroup",
     .update = u"DTP_PIMUpdateGroup",
     .find_by_name = u"DTP_PIMFindgroupSyncidByName"},
};

/// The store, initialised as long as it is loaded. A store without the entry points for that needs none, and what they
/// answer is of no interest: the calls that matter fail by themselves.
class Store : public Library {
 public:
  explicit Store(const char16_t* name);
  ~Store();
};

/// Contacts or groups.
class ContactTable final : public StoreTable {
 public:
  /// `names` as the module gives them for the table of this number.
  ContactTable(const Library& store, std::uint32_t number, const TableNames& names);

  bool LookUp(Use use) override;
  Result Count(std::uint32_t* count) override;
  Result GetSyncInfo(std::uint32_t* count, void* entries) override;

  /// Fills records that the caller cleared. False when the store fails.
  [[nodiscard]] bool Read(std::span<const std::uint32_t> ids, void* records);

  /// Looks up what Empty needs and makes room for the list. kEntryPointMissing, kNoMemory.
  Result PrepareEmptying();
  /// Deletes all records in one call, which is not made for none. kSyncInfoFailed, kWipeFailed.
  Result Empty();

 private:
  const Library& store_;
  const TableEntryPoints& entry_points_;
  CountFunction* count_ = nullptr;
  ListFunction* list_ = nullptr;
  ReadFunction* read_ = nullptr;
  DeleteFunction* erase_ = nullptr;
  SyncInfoList to_erase_;
};

}  // namespace qv::contacts

#endif  // QV_MODULES_CONTACTS_CONTACT_STORE_H
