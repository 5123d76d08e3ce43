// All that belongs to contacts, in the database: contacts and groups as records, who belongs to which group, and
// pictures. ContactStore.dll is a thin caller of it, and so are tools that create data.
#ifndef QV_HOST_STORES_CONTACT_DATABASE_H
#define QV_HOST_STORES_CONTACT_DATABASE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "host/stores/contact_kinds.h"
#include "host/stores/database.h"
#include "host/stores/record_store.h"

namespace stores {

// Settings by which a person or a test has ContactStore.dll take no picture. While the first is there and not 0, it is
// the answer.
inline constexpr std::string_view kPictureRefusal = "picture_refusal";
/// So many pictures fit; without it, any number.
inline constexpr std::string_view kMostPictures = "most_pictures";

}  // namespace stores

#pragma GCC visibility push(default)

namespace stores {

/// The tables `contacts` and `contact_groups` are RecordStores. Beside them there are
///
///     memberships(contact_id, group_id)   rows go with their contact or group, and changing them changes the contact
///     pictures(id, data)                  an id is never given out twice; contacts name theirs in `picture_id`
///
/// Triggers see to that, so it holds in the sqlite3 shell too. Each call is one transaction; one that throws has done
/// nothing.
class ContactDatabase {
 public:
  /// Makes the tables when there are none. The database must outlive this.
  explicit ContactDatabase(Database& database);

  /// As of a store library: kContacts and kContactGroups.
  std::span<RecordStore> Tables() { return tables_; }
  RecordStore& Table(std::size_t table) { return tables_[table]; }

  /// The lowest id of a record that has exactly this name, which may lie at any address. What goes beyond the room for
  /// a name is not looked at.
  std::optional<std::uint32_t> FindByName(std::size_t table, const char16_t* name) const;

  /// In ascending order. Throws UnknownId.
  std::vector<std::uint32_t> GroupsOf(std::uint32_t contact) const;

  // Groups that are not there are passed over. Both throw UnknownId for the contact.
  void AddToGroups(std::uint32_t contact, std::span<const std::uint32_t> groups);
  /// Takes the contact out of all other groups.
  void ReplaceGroups(std::uint32_t contact, std::span<const std::uint32_t> groups);

  /// By kMostPictures.
  bool HasRoomForPicture() const;
  /// Throws UnknownId.
  std::vector<std::uint8_t> ReadPicture(std::uint32_t id) const;
  /// At most kMostPictureBytes. Returns the new picture's id.
  std::uint32_t InsertPicture(std::span<const std::uint8_t> data);
  /// Throws UnknownId.
  void DeletePicture(std::uint32_t id);

 private:
  void ExpectContact(std::uint32_t id) const;

  RecordStore tables_[2];
  Database& database_;
  Statement find_by_name_[2];
  Statement find_contact_, groups_of_, add_to_group_, leave_groups_;
  Statement count_pictures_, read_picture_, insert_picture_, delete_picture_;
};

}  // namespace stores

#pragma GCC visibility pop

#endif  // QV_HOST_STORES_CONTACT_DATABASE_H
