// ContactStore.dll, the contacts' store library: contacts, groups, who belongs to which group, and pictures. It has a
// session, takes records in batches, and all its numbers are signed.
#include <algorithm>
#include <cstring>

#include "host/stores/contact_database.h"
#include "host/stores/store_library.h"
#include "modules/contacts/contacts.h"

namespace {

using namespace qv::contacts;
using qv::layout::LoadSlot;
using qv::layout::StoreSlot;
using stores::ContactDatabase;
using stores::kContactGroups;
using stores::kContacts;

/// A status that this store alone knows.
constexpr auto kNoRoom = static_cast<stores::Status>(static_cast<std::uint32_t>(kNoRoomForPictures));

/// Behind the picture's length.
constexpr std::size_t kPictureData = kStorePictureLength.offset + kStorePictureLength.size;

stores::LibraryOf<ContactDatabase> library({.has_session = true});

std::int32_t Signed(stores::Status status) {
  return static_cast<std::int32_t>(status);
}
std::uint32_t Unsigned(std::int32_t count) {
  return static_cast<std::uint32_t>(count);
}
std::uint32_t* Unsigned(std::int32_t* count) {
  return reinterpret_cast<std::uint32_t*>(count);
}

std::int32_t Find(std::size_t table, const char16_t* name, std::int32_t* found, std::uint32_t* id) {
  return Signed(library.Call([&](const ContactDatabase& contacts) {
    stores::Expect({name, found, id});
    const std::optional<std::uint32_t> match = contacts.FindByName(table, name);
    *found = match ? 1 : 0;
    *id = match.value_or(0);
  }));
}

/// Hands `take` each membership.
template <typename Byte>
std::int32_t OnMemberships(std::int32_t count, Byte* memberships, auto take) {
  return Signed(library.Call([&](ContactDatabase& contacts) {
    stores::ExpectList(Unsigned(count), {memberships});
    for (std::int32_t i = 0; i < count; ++i) take(contacts, memberships + i * std::ptrdiff_t{kMembershipStoreSize});
  }));
}

void FillIn(const ContactDatabase& contacts, std::uint8_t* membership) {
  std::vector<std::uint32_t> groups = contacts.GroupsOf(LoadSlot(kRecordId, membership));
  groups.resize(std::min<std::size_t>(groups.size(), kMostGroupsOfContact));
  StoreSlot(kMembershipCount, membership, groups.size());
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(groups.data());
  std::copy_n(bytes, groups.size() * sizeof(groups[0]), membership + kMembershipGroups.offset);
}

using PutIntoGroups = void (ContactDatabase::*)(std::uint32_t contact, std::span<const std::uint32_t> groups);

std::int32_t ApplyMemberships(PutIntoGroups put, std::int32_t count, const void* memberships) {
  const auto apply = [put](ContactDatabase& contacts, const std::uint8_t* membership) {
    std::uint32_t groups[kMostGroupsOfContact];
    const std::uint32_t group_count = LoadSlot(kMembershipCount, membership);
    if (group_count > std::size(groups)) stores::Refuse(stores::kOutOfBounds);
    std::memcpy(groups, membership + kMembershipGroups.offset, sizeof(groups));
    const std::uint32_t contact = LoadSlot(kRecordId, membership);
    if (contact != kRefused) (contacts.*put)(contact, {groups, group_count});
  };
  return OnMemberships(count, static_cast<const std::uint8_t*>(memberships), apply);
}

}  // namespace

STORE_ENTRY_POINT std::int32_t DTP_Initialize(std::uint32_t) {
  return Signed(library.Begin());
}

STORE_ENTRY_POINT std::int32_t DTP_UnInitialize() {
  return Signed(library.End());
}

STORE_ENTRY_POINT std::int32_t DTP_PIMGetAllManNum(std::int32_t* count) {
  return Signed(library.Count(kContacts, Unsigned(count)));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMGetAllGroupNum(std::int32_t* count) {
  return Signed(library.Count(kContactGroups, Unsigned(count)));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMGetAllmanSyncid(std::int32_t* count, void* entries) {
  return Signed(library.List(kContacts, Unsigned(count), entries));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMGetAllgroupSyncid(std::int32_t* count, void* entries) {
  return Signed(library.List(kContactGroups, Unsigned(count), entries));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMReadman(const std::uint32_t* ids, std::int32_t count, void* records) {
  return Signed(library.Read(kContacts, Unsigned(count), ids, records));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMReadgroup(const std::uint32_t* ids, std::int32_t count, void* records) {
  return Signed(library.Read(kContactGroups, Unsigned(count), ids, records));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMDeleteMan(const std::uint32_t* ids, std::int32_t count) {
  return Signed(library.Delete(kContacts, Unsigned(count), ids));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMDeleteGroup(const std::uint32_t* ids, std::int32_t count) {
  return Signed(library.Delete(kContactGroups, Unsigned(count), ids));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMAddManToUnGroup(const void* records, std::int32_t count, std::uint32_t* new_ids) {
  return Signed(library.InsertBatch(kContacts, Unsigned(count), records, new_ids));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMAddGroup(const void* records, std::int32_t count, std::uint32_t* new_ids) {
  return Signed(library.InsertBatch(kContactGroups, Unsigned(count), records, new_ids));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMUpdateMan(const std::uint32_t* ids, std::int32_t count, const void* records) {
  return Signed(library.UpdateBatch(kContacts, Unsigned(count), ids, records));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMUpdateGroup(const std::uint32_t* ids, std::int32_t count, const void* records) {
  return Signed(library.UpdateBatch(kContactGroups, Unsigned(count), ids, records));
}

STORE_ENTRY_POINT std::int32_t DTP_PIMFindmanSyncidByName(const char16_t* name, std::int32_t* found,
                                                          std::uint32_t* id) {
  return Find(kContacts, name, found, id);
}

STORE_ENTRY_POINT std::int32_t DTP_PIMFindgroupSyncidByName(const char16_t* name, std::int32_t* found,
                                                            std::uint32_t* id) {
  return Find(kContactGroups, name, found, id);
}

STORE_ENTRY_POINT std::int32_t DTP_PIMQueryManAttachGroup(std::int32_t count, void* memberships) {
  return OnMemberships(count, static_cast<std::uint8_t*>(memberships), FillIn);
}

STORE_ENTRY_POINT std::int32_t DTP_PIMPhoneAddToGroups(std::int32_t count, const void* memberships) {
  return ApplyMemberships(&ContactDatabase::AddToGroups, count, memberships);
}

STORE_ENTRY_POINT std::int32_t DTP_PIMModifyManToGroup(std::int32_t count, const void* memberships) {
  return ApplyMemberships(&ContactDatabase::ReplaceGroups, count, memberships);
}

STORE_ENTRY_POINT std::int32_t DTP_DownloadingImage(std::uint32_t id, void* picture) {
  return Signed(library.Call([&](const ContactDatabase& contacts) {
    stores::Expect({picture});
    const std::vector<std::uint8_t> data = contacts.ReadPicture(id);
    auto* const buffer = static_cast<std::uint8_t*>(picture);
    std::fill_n(buffer, kPictureStoreSize, std::uint8_t{0});
    StoreSlot(kRecordId, buffer, id);
    StoreSlot(kStorePictureLength, buffer, data.size());
    std::ranges::copy(data, buffer + kPictureData);
  }));
}

STORE_ENTRY_POINT std::int32_t DTP_LoadingImage(const void* picture, std::uint32_t* new_id) {
  return Signed(library.Call([&](ContactDatabase& contacts) {
    stores::Expect({picture, new_id});
    library.RefuseIfSet(stores::kPictureRefusal);
    if (!contacts.HasRoomForPicture()) stores::Refuse(kNoRoom);
    const auto* const buffer = static_cast<const std::uint8_t*>(picture);
    const std::uint32_t length = LoadSlot(kStorePictureLength, buffer);
    if (length > kMostPictureBytes) stores::Refuse(stores::kOutOfBounds);
    *new_id = contacts.InsertPicture({buffer + kPictureData, length});
  }));
}

STORE_ENTRY_POINT std::int32_t DTP_DeleteImage(std::uint32_t id) {
  return Signed(library.Call([&](ContactDatabase& contacts) { contacts.DeletePicture(id); }));
}
