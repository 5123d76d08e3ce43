// ContactStore.dll, the contacts' store library: contacts, groups, who belongs to which group, and pictures. It has a
// session, and every call in it is one transaction of the database.
#include "modules/contacts/contact_store.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "host/stores/contact_database.h"
#include "host/stores/store_library.h"
#include "modules/contacts/contacts_layout.h"

// In the forms by which the agent calls them.
STORE_ENTRY_POINT qv::contacts::InitializeFunction DTP_Initialize;
STORE_ENTRY_POINT qv::contacts::UnInitializeFunction DTP_UnInitialize;
STORE_ENTRY_POINT qv::contacts::CountFunction DTP_PIMGetAllManNum, DTP_PIMGetAllGroupNum;
STORE_ENTRY_POINT qv::contacts::ListFunction DTP_PIMGetAllmanSyncid, DTP_PIMGetAllgroupSyncid;
STORE_ENTRY_POINT qv::contacts::ReadFunction DTP_PIMReadman, DTP_PIMReadgroup;
STORE_ENTRY_POINT qv::contacts::DeleteFunction DTP_PIMDeleteMan, DTP_PIMDeleteGroup;
STORE_ENTRY_POINT qv::contacts::AddFunction DTP_PIMAddManToUnGroup, DTP_PIMAddGroup;
STORE_ENTRY_POINT qv::contacts::UpdateFunction DTP_PIMUpdateMan, DTP_PIMUpdateGroup;
STORE_ENTRY_POINT qv::contacts::FindFunction DTP_PIMFindmanSyncidByName, DTP_PIMFindgroupSyncidByName;
STORE_ENTRY_POINT qv::contacts::QueryMembershipsFunction DTP_PIMQueryManAttachGroup;
STORE_ENTRY_POINT qv::contacts::ApplyMembershipsFunction DTP_PIMPhoneAddToGroups, DTP_PIMModifyManToGroup;
STORE_ENTRY_POINT qv::contacts::DownloadPictureFunction DTP_DownloadingImage;
STORE_ENTRY_POINT qv::contacts::LoadPictureFunction DTP_LoadingImage;
STORE_ENTRY_POINT qv::contacts::DeletePictureFunction DTP_DeleteImage;

namespace {

namespace layout = qv::layout;
using stores::ContactDatabase;
using stores::Status;

/// The contact that callers name for one that was refused when it was to be added.
constexpr std::uint32_t kRefusedContact = 0xFFFFFFFF;

/// A status that this store alone knows.
constexpr Status OwnStatus(std::int64_t value) {
  return static_cast<Status>(static_cast<std::uint32_t>(value));
}

constexpr Status kNoRoomForPictures = OwnStatus(-504);

/// Behind the picture's length.
constexpr std::size_t kPictureData = qv::contacts::kStorePictureLength.offset + qv::contacts::kStorePictureLength.size;

/// By table number: the setting that has it refuse.
constexpr std::string_view kAddRefusals[] = {stores::kContactAddRefusal, stores::kGroupAddRefusal};

/// What the list of records says of one.
struct ListEntry {
  std::uint32_t id;
  stores::CalendarTime modified;
};
static_assert(sizeof(ListEntry) == 16);

struct Session {
  stores::Database database;
  ContactDatabase contacts{database};
};
/// From DTP_Initialize to DTP_UnInitialize, or until the library is freed.
std::unique_ptr<Session> session;

/// Runs `call`, whose changes count when it answers kDone.
std::int32_t Call(const std::function<Status(ContactDatabase&)>& call) noexcept {
  return static_cast<std::int32_t>(stores::StatusOf([&] {
    if (!session) return stores::kNoSession;
    stores::Transaction transaction(session->database);
    const Status status = call(session->contacts);
    if (status == stores::kDone) transaction.Commit();
    return status;
  }));
}

/// The same for a call that needs these pointers.
std::int32_t CallWith(std::initializer_list<const void*> pointers,
                      const std::function<Status(ContactDatabase&)>& call) noexcept {
  const bool missing = std::any_of(pointers.begin(), pointers.end(), [](const void* p) { return p == nullptr; });
  return Call([&](ContactDatabase& contacts) { return missing ? stores::kNullPointer : call(contacts); });
}

/// The same for a call on a list: for an empty one the pointers do not matter.
std::int32_t CallOnList(std::int32_t count, std::initializer_list<const void*> pointers,
                        const std::function<Status(ContactDatabase&)>& call) noexcept {
  if (count > 0) return CallWith(pointers, call);
  return Call([&](ContactDatabase& contacts) { return count < 0 ? stores::kOutOfBounds : call(contacts); });
}

/// The status that this setting wants answered; kDone when it wants none.
Status RefusalBy(std::string_view setting) {
  return OwnStatus(session->database.Setting(setting).value_or(stores::kDone));
}

std::int32_t Count(std::size_t table, std::int32_t* count) noexcept {
  return CallWith({count}, [&](ContactDatabase& contacts) {
    *count = static_cast<std::int32_t>(contacts.Table(table).Count());
    return stores::kDone;
  });
}

std::int32_t List(std::size_t table, std::int32_t* count, void* entries) noexcept {
  if (count == nullptr) return CallWith({count}, {});
  return CallOnList(*count, {entries}, [&](ContactDatabase& contacts) {
    const stores::RecordStore& store = contacts.Table(table);
    std::vector<qv::SyncInfoEntry> info(std::min(static_cast<std::uint32_t>(*count), store.Count()));
    store.SyncInfo(info);
    auto* to = static_cast<std::uint8_t*>(entries);
    for (const qv::SyncInfoEntry& from : info) {
      const auto modified = static_cast<stores::FileTime>(std::uint64_t{from.time_high} << 32 | from.time_low);
      const ListEntry entry = {.id = from.id, .modified = stores::CalendarTimeOf(modified)};
      std::memcpy(to, &entry, sizeof(entry));
      to += sizeof(entry);
    }
    *count = static_cast<std::int32_t>(info.size());
    return stores::kDone;
  });
}

std::int32_t Read(std::size_t table, const std::uint32_t* ids, std::int32_t count, void* records) noexcept {
  return CallOnList(count, {ids, records}, [&](ContactDatabase& contacts) {
    contacts.Table(table).Read({ids, static_cast<std::size_t>(count)}, static_cast<std::uint8_t*>(records));
    return stores::kDone;
  });
}

std::int32_t Delete(std::size_t table, const std::uint32_t* ids, std::int32_t count) noexcept {
  return CallOnList(count, {ids}, [&](ContactDatabase& contacts) {
    contacts.Table(table).Delete({ids, static_cast<std::size_t>(count)});
    return stores::kDone;
  });
}

std::int32_t Add(std::size_t table, const void* records, std::int32_t count, std::uint32_t* new_ids) noexcept {
  return CallOnList(count, {records, new_ids}, [&](ContactDatabase& contacts) {
    if (const Status refusal = RefusalBy(kAddRefusals[table]); refusal != stores::kDone) return refusal;
    const auto* record = static_cast<const std::uint8_t*>(records);
    for (std::int32_t i = 0; i < count; ++i, record += qv::contacts::kStoreSize) {
      new_ids[i] = contacts.Table(table).Insert(record);
    }
    return stores::kDone;
  });
}

std::int32_t Update(std::size_t table, const std::uint32_t* ids, std::int32_t count, const void* records) noexcept {
  return CallOnList(count, {ids, records}, [&](ContactDatabase& contacts) {
    const auto* record = static_cast<const std::uint8_t*>(records);
    for (std::int32_t i = 0; i < count; ++i, record += qv::contacts::kStoreSize) {
      contacts.Table(table).Update(ids[i], record);
    }
    return stores::kDone;
  });
}

/// As much of a name at any address as a record can hold.
std::u16string NameAt(const char16_t* name) {
  std::u16string text;
  for (std::size_t i = 0; i < qv::contacts::kStoreName.size / sizeof(char16_t); ++i) {
    char16_t character;
    std::memcpy(&character, reinterpret_cast<const std::uint8_t*>(name) + i * sizeof(character), sizeof(character));
    if (character == 0) break;
    text += character;
  }
  return text;
}

std::int32_t Find(std::size_t table, const char16_t* name, std::int32_t* found, std::uint32_t* id) noexcept {
  return CallWith({name, found, id}, [&](ContactDatabase& contacts) {
    const std::optional<std::uint32_t> match = contacts.FindByName(table, NameAt(name));
    *found = match ? 1 : 0;
    *id = match.value_or(0);
    return stores::kDone;
  });
}

using PutIntoGroups = void (ContactDatabase::*)(std::uint32_t contact, std::span<const std::uint32_t> groups);

std::int32_t ApplyMemberships(PutIntoGroups put, std::int32_t count, const void* memberships) noexcept {
  using namespace qv::contacts;
  return CallOnList(count, {memberships}, [&](ContactDatabase& contacts) {
    const auto* membership = static_cast<const std::uint8_t*>(memberships);
    for (std::int32_t i = 0; i < count; ++i, membership += kMembershipStoreSize) {
      std::uint32_t groups[kMostGroupsOfContact];
      const std::uint32_t group_count = layout::LoadSlot(kMembershipCount, membership);
      if (group_count > std::size(groups)) return stores::kOutOfBounds;
      std::memcpy(groups, membership + kMembershipGroups.offset, sizeof(groups));
      const std::uint32_t contact = layout::LoadSlot(kRecordId, membership);
      if (contact != kRefusedContact) (contacts.*put)(contact, {groups, group_count});
    }
    return stores::kDone;
  });
}

}  // namespace

std::int32_t DTP_Initialize(std::uint32_t) {
  return static_cast<std::int32_t>(stores::StatusOf([] {
    if (!session) session = std::make_unique<Session>();
    return stores::kDone;
  }));
}

std::int32_t DTP_UnInitialize() {
  session.reset();
  return stores::kDone;
}

std::int32_t DTP_PIMGetAllManNum(std::int32_t* count) {
  return Count(stores::kContacts, count);
}

std::int32_t DTP_PIMGetAllGroupNum(std::int32_t* count) {
  return Count(stores::kContactGroups, count);
}

std::int32_t DTP_PIMGetAllmanSyncid(std::int32_t* count, void* entries) {
  return List(stores::kContacts, count, entries);
}

std::int32_t DTP_PIMGetAllgroupSyncid(std::int32_t* count, void* entries) {
  return List(stores::kContactGroups, count, entries);
}

std::int32_t DTP_PIMReadman(const std::uint32_t* ids, std::int32_t count, void* records) {
  return Read(stores::kContacts, ids, count, records);
}

std::int32_t DTP_PIMReadgroup(const std::uint32_t* ids, std::int32_t count, void* records) {
  return Read(stores::kContactGroups, ids, count, records);
}

std::int32_t DTP_PIMDeleteMan(const std::uint32_t* ids, std::int32_t count) {
  return Delete(stores::kContacts, ids, count);
}

std::int32_t DTP_PIMDeleteGroup(const std::uint32_t* ids, std::int32_t count) {
  return Delete(stores::kContactGroups, ids, count);
}

std::int32_t DTP_PIMAddManToUnGroup(const void* records, std::int32_t count, std::uint32_t* new_ids) {
  return Add(stores::kContacts, records, count, new_ids);
}

std::int32_t DTP_PIMAddGroup(const void* records, std::int32_t count, std::uint32_t* new_ids) {
  return Add(stores::kContactGroups, records, count, new_ids);
}

std::int32_t DTP_PIMUpdateMan(const std::uint32_t* ids, std::int32_t count, const void* records) {
  return Update(stores::kContacts, ids, count, records);
}

std::int32_t DTP_PIMUpdateGroup(const std::uint32_t* ids, std::int32_t count, const void* records) {
  return Update(stores::kContactGroups, ids, count, records);
}

std::int32_t DTP_PIMFindmanSyncidByName(const char16_t* name, std::int32_t* found, std::uint32_t* id) {
  return Find(stores::kContacts, name, found, id);
}

std::int32_t DTP_PIMFindgroupSyncidByName(const char16_t* name, std::int32_t* found, std::uint32_t* id) {
  return Find(stores::kContactGroups, name, found, id);
}

std::int32_t DTP_PIMQueryManAttachGroup(std::int32_t count, void* memberships) {
  using namespace qv::contacts;
  return CallOnList(count, {memberships}, [&](const ContactDatabase& contacts) {
    auto* membership = static_cast<std::uint8_t*>(memberships);
    for (std::int32_t i = 0; i < count; ++i, membership += kMembershipStoreSize) {
      std::vector<std::uint32_t> groups = contacts.GroupsOf(layout::LoadSlot(kRecordId, membership));
      groups.resize(std::min<std::size_t>(groups.size(), kMostGroupsOfContact));
      layout::StoreSlot(kMembershipCount, membership, groups.size());
      const auto* const bytes = reinterpret_cast<const std::uint8_t*>(groups.data());
      std::copy_n(bytes, groups.size() * sizeof(groups[0]), membership + kMembershipGroups.offset);
    }
    return stores::kDone;
  });
}

std::int32_t DTP_PIMPhoneAddToGroups(std::int32_t count, const void* memberships) {
  return ApplyMemberships(&ContactDatabase::AddToGroups, count, memberships);
}

std::int32_t DTP_PIMModifyManToGroup(std::int32_t count, const void* memberships) {
  return ApplyMemberships(&ContactDatabase::ReplaceGroups, count, memberships);
}

std::int32_t DTP_DownloadingImage(std::uint32_t id, void* picture) {
  return CallWith({picture}, [&](const ContactDatabase& contacts) {
    const std::vector<std::uint8_t> data = contacts.ReadPicture(id);
    auto* const buffer = static_cast<std::uint8_t*>(picture);
    std::fill_n(buffer, qv::contacts::kPictureStoreSize, std::uint8_t{0});
    layout::StoreSlot(qv::contacts::kRecordId, buffer, id);
    layout::StoreSlot(qv::contacts::kStorePictureLength, buffer, data.size());
    std::copy(data.begin(), data.end(), buffer + kPictureData);
    return stores::kDone;
  });
}

std::int32_t DTP_LoadingImage(const void* picture, std::uint32_t* new_id) {
  return CallWith({picture, new_id}, [&](ContactDatabase& contacts) {
    if (const Status refusal = RefusalBy(stores::kPictureRefusal); refusal != stores::kDone) return refusal;
    const std::optional<std::int64_t> most = session->database.Setting(stores::kMostPictures);
    if (most && contacts.CountPictures() >= *most) return kNoRoomForPictures;
    const auto* const buffer = static_cast<const std::uint8_t*>(picture);
    const std::uint32_t length = layout::LoadSlot(qv::contacts::kStorePictureLength, buffer);
    if (length > qv::contacts::kMostPictureBytes) return stores::kOutOfBounds;
    *new_id = contacts.InsertPicture({buffer + kPictureData, length});
    return stores::kDone;
  });
}

std::int32_t DTP_DeleteImage(std::uint32_t id) {
  return Call([&](ContactDatabase& contacts) {
    contacts.DeletePicture(id);
    return stores::kDone;
  });
}
