// Contacts, groups, memberships and pictures as a desktop sends them, and the very bytes that the store must receive
// for them. All of it is written out by hand: these bytes are what the agent's field tables are judged by.
#ifndef QV_TESTS_SUPPORT_RECOVERED_CONTACT_RECORDS_H
#define QV_TESTS_SUPPORT_RECOVERED_CONTACT_RECORDS_H

#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/contact_records.h"

namespace qv_test {

/// Bytes of an exchange record that reach the store as they stand. The texts are listed in contact_records.h.
struct CopiedContactBytes {
  std::size_t exchange, size, store;
};
inline constexpr CopiedContactBytes kCopiedContactBytes[] = {
    {0, 4, 0},                                          // record id
    {108, 1, 2288},                                     // attribute
    {112, 2, 1084},                                     // first date: year, month, day, hour, minute, second
    {116, 2, 1086},  {120, 2, 1088},  {124, 2, 1090},   //
    {128, 2, 1092},  {132, 2, 1094},                    //
    {672, 8, 1388},                                     // types of the numbers
    {1120, 1, 1386}, {1121, 1, 1387},                   // flags
    {1962, 1, 2289},                                    // attribute
    {3076, 2, 1096}, {3080, 2, 1098}, {3084, 2, 1100},  // second date
    {3088, 2, 1102}, {3092, 2, 1104}, {3096, 2, 1106},  //
    {3108, 4, 2284},                                    // picture id
    {3514, 1, 16},                                      // attribute
    {3560, 2, 4},    {3564, 2, 6},    {3568, 2, 8},     // last modification
    {3572, 2, 10},   {3576, 2, 12},   {3580, 2, 14},    //
};
inline constexpr CopiedContactBytes kCopiedGroupBytes[] = {
    {0, 4, 0},      // group id
    {1492, 1, 16},  // attribute
};

/// Where a contact's eight number slots lie in its exchange record.
inline constexpr std::size_t kIncomingNumbers[] = {144, 210, 276, 342, 408, 474, 540, 606};

/// What the texts of a record look like: each fills its room to the last character and has no NUL, or is short, with
/// other bytes than zero behind its NUL.
enum class Texts { kFull, kShort };

/// A contact from a desktop that leaves no byte zero, and what a recover hands to the store for it. Number 3 is its
/// default, the second flag is chosen, and both dates have reminders.
Bytes IncomingContact(Texts texts);
Bytes ReceivedContact(Texts texts);
constexpr std::uint32_t kIncomingContactId = 0xC1A2B3C4;
constexpr std::uint32_t kIncomingPictureId = 0x9192A3A4;

/// The same of a group.
Bytes IncomingGroup(Texts texts);
Bytes ReceivedGroup(Texts texts);
constexpr std::uint32_t kIncomingGroupId = 0x61A2B3C4;

/// Records that say no more than who they are.
Bytes NamedContact(std::uint32_t id, std::u16string_view name = u"");
Bytes NamedGroup(std::uint32_t id, std::u16string_view name = u"");
/// What the store receives for those.
Bytes ReceivedNamedContact(std::uint32_t id, std::u16string_view name = u"");
Bytes ReceivedNamedGroup(std::uint32_t id, std::u16string_view name = u"");

/// Contacts or groups with the ids first, first + 1, ...
Bytes NamedContacts(std::uint32_t first, std::uint32_t count);
Bytes NamedGroups(std::uint32_t first, std::uint32_t count);

/// A contact's membership in groups as the 408 bytes that say so to the store.
Bytes ReceivedMembership(std::uint32_t contact, const std::vector<std::uint32_t>& groups);

/// A picture of which only the first `length` bytes are not zero, and the 8200 bytes that the store receives for it.
Bytes IncomingPicture(std::uint32_t id, std::uint16_t length);
Bytes ReceivedPicture(std::uint32_t id, std::uint16_t length);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_RECOVERED_CONTACT_RECORDS_H
