// The record forms of the contacts: contacts and groups, memberships, pictures. What a field table cannot say is a
// named function beside it.
#ifndef QV_MODULES_CONTACTS_CONTACTS_LAYOUT_H
#define QV_MODULES_CONTACTS_CONTACTS_LAYOUT_H

#include "layout/record_layout.h"

namespace qv::contacts {

/// Contacts and groups share the form of a store record.
inline constexpr std::size_t kStoreSize = 2744;
inline constexpr std::size_t kContactExchangeSize = 3596;
inline constexpr std::size_t kGroupExchangeSize = 1532;

inline constexpr std::size_t kMembershipStoreSize = 408;
inline constexpr std::size_t kMembershipExchangeSize = 8;  ///< Without the group ids.
inline constexpr std::uint16_t kMostGroupsOfContact = 100;

inline constexpr std::size_t kPictureStoreSize = 8200;
inline constexpr std::size_t kPictureExchangeSize = 8236;
inline constexpr std::uint16_t kMostPictureBytes = 8192;

inline constexpr std::uint32_t kNumbers = 8;  ///< Telephone numbers and the like that a contact has.

// Values that the store's fields have.
inline constexpr std::uint32_t kContactKind = 1;
inline constexpr std::uint32_t kGroupKind = 2;
inline constexpr std::uint32_t kMark = 128;  ///< Added to the type of the number, or the flag, that is the chosen one.
inline constexpr std::uint32_t kReminderOn = 100;

// The fields that the module itself looks at.
inline constexpr layout::Slot kRecordId = layout::U32(0);  ///< In all forms, on both sides.
inline constexpr layout::Slot kStoreName = layout::Text(18, 62);
inline constexpr layout::Slot kStorePicture = layout::U32(2284);
inline constexpr std::uint32_t kNoPicture = 0;
inline constexpr layout::Slot kMembershipCount = layout::U32(4);  ///< On both sides.
inline constexpr layout::Slot kMembershipGroups = layout::Bytes(8, 4 * kMostGroupsOfContact);
inline constexpr layout::Slot kStorePictureLength = layout::U16(4);
inline constexpr layout::Slot kExchangePictureLength = layout::U32(4);

extern const layout::RecordLayout kContactLayout;
extern const layout::RecordLayout kGroupLayout;
extern const layout::RecordLayout kMembershipLayout;
extern const layout::RecordLayout kPictureLayout;

// Conversions of whole records: the table's fields, then those that follow from others.

void ContactToExchange(const std::uint8_t* store, std::uint8_t* exchange);
void ContactToStore(const std::uint8_t* exchange, std::uint8_t* store);
void GroupToExchange(const std::uint8_t* store, std::uint8_t* exchange);
void GroupToStore(const std::uint8_t* exchange, std::uint8_t* store);
/// A picture that claims to be longer than its room is as long as its room.
void PictureToExchange(const std::uint8_t* store, std::uint8_t* exchange);
/// Appends a membership with its groups at `end` and returns the new end; one of no group is nothing. More groups than
/// a record has room for are cut to the room.
std::uint8_t* AppendMembership(const std::uint8_t* store, std::uint8_t* end);

/// The chosen flag of an exported contact whose table fields are filled. Its second case cannot arise in an export,
/// which clears the byte that it looks at; it is declared for its test.
void TakeChosenFlag(std::uint8_t* exchange);

}  // namespace qv::contacts

#endif  // QV_MODULES_CONTACTS_CONTACTS_LAYOUT_H
