// Contact and group records written out by hand, as the store holds them and as they travel. Nothing here comes from
// the agent's field tables: these bytes are what the tables are judged by.
#ifndef QV_TESTS_SUPPORT_CONTACT_RECORDS_H
#define QV_TESTS_SUPPORT_CONTACT_RECORDS_H

#include "tests/support/agent_test.h"

namespace qv_test {

// Where the contacts' files lie on the handset of a behaviour test.
constexpr char16_t kContactTable[] = u"\\sync\\linkman.tbl";
constexpr char16_t kContactGroupTable[] = u"\\sync\\groupmgr.tbl";
constexpr char16_t kMembershipTable[] = u"\\sync\\groupattach.tbl";
constexpr char16_t kPictureTable[] = u"\\sync\\image.tbl";
constexpr const char16_t* kContactTables[] = {kContactTable, kContactGroupTable, kMembershipTable, kPictureTable};
constexpr char16_t kContactChanges[] = u"\\sync\\lkmcmd.tbl";
constexpr char16_t kContactIdMap[] = u"\\sync\\lkmmap.tbl";
constexpr char16_t kContactLog[] = u"\\dbdata\\sysconfig\\linkman.log";
constexpr char16_t kContactGroupLog[] = u"\\dbdata\\sysconfig\\lkmgroup.log";

/// A text field on both sides, in bytes, and what it says in the records below.
struct TextField {
  std::size_t store, store_size;
  std::size_t exchange, exchange_size;
  std::u16string_view sample;
};

inline constexpr TextField kContactTexts[] = {
    {18, 62, 4, 62, u"Anna \u738B-\u00C4rmel"},
    {80, 42, 66, 42, u"Annie"},
    {122, 130, 860, 130, u"anna@example.org"},
    {252, 130, 990, 130, u"office@example.com"},
    // Number slots 1 to 8.
    {382, 66, 144, 66, u"+49 1"},
    {448, 66, 210, 66, u"+49 22"},
    {514, 66, 276, 66, u"+49 333"},
    {580, 66, 342, 66, u"+49 4444"},
    {646, 66, 408, 66, u"+49 55555"},
    {712, 66, 474, 66, u"+49 666666"},
    {778, 66, 540, 66, u"+49 7777777"},
    {844, 66, 606, 66, u"+49 88888888"},
    {910, 66, 3008, 66, u"Text of 910"},
    {976, 66, 1128, 98, u"Works & Sons"},
    {1042, 42, 1226, 42, u"Engineer"},
    {1108, 258, 1268, 258, u"http://www.example.org/~anna"},
    {1366, 10, 2988, 10, u"1366"},
    {1376, 10, 2998, 10, u"1376"},
    // The first address block, which travels behind the second.
    {1396, 34, 1744, 34, u"First country"},
    {1430, 34, 1778, 34, u"First state"},
    {1464, 34, 1812, 34, u"First city"},
    {1498, 66, 1846, 98, u"First street 1"},
    {1564, 18, 1944, 18, u"10101"},
    {1582, 34, 1526, 34, u"Second country"},
    {1616, 34, 1560, 34, u"Second state"},
    {1650, 34, 1594, 34, u"Second city"},
    {1684, 66, 1628, 98, u"Second street 2"},
    {1750, 18, 1726, 18, u"20202"},
    {1768, 258, 3112, 402, u"A remark, of 1768"},
    {2026, 258, 1964, 512, u"\\Storage Card\\ring 2026.mid"},
    {2290, 258, 2476, 512, u"\\Storage Card\\ring 2290.mid"},
    // A short text for each number slot.
    {2552, 22, 680, 22, u"Slot 1"},
    {2574, 22, 702, 22, u"Slot 2"},
    {2596, 22, 724, 22, u"Slot 3"},
    {2618, 22, 746, 22, u"Slot 4"},
    {2640, 22, 768, 22, u"Slot 5"},
    {2662, 22, 790, 22, u"Slot 6"},
    {2684, 22, 812, 22, u"Slot 7"},
    {2706, 22, 834, 22, u"Slot 8"},
};

inline constexpr TextField kGroupTexts[] = {
    {18, 62, 4, 42, u"Family \u738B"},
    {1366, 10, 46, 10, u"g136"},
    {1376, 10, 56, 10, u"g137"},
    {1768, 258, 1090, 402, u"A remark on the group"},
    {2026, 258, 66, 512, u"\\Storage Card\\group 2026.mid"},
    {2290, 258, 578, 512, u"\\Storage Card\\group 2290.mid"},
};

constexpr std::uint32_t kContactId = 0xC4A1A2A3;
constexpr std::uint32_t kContactPicture = 0x50515253;
constexpr std::uint32_t kContactGroupId = 0xB4B1B2B3;

/// A contact in the store: every field set, and 0xFF wherever an export reads nothing, behind the NULs too.
Bytes StoreContact();
/// The same contact as an export writes it.
Bytes ExchangeContact();

Bytes StoreContactGroup();
Bytes ExchangeContactGroup();

/// What an export writes of a contact that is empty but for its id: the constants.
Bytes PlainContact(std::uint32_t id);

/// A contact's membership in groups as it travels.
Bytes ExchangeMembership(std::uint32_t contact, const std::vector<std::uint32_t>& groups);

/// A picture as it travels, zero behind its data.
Bytes ExchangePicture(std::uint32_t id, std::uint32_t length, const Bytes& data);

/// A text that fills `size` bytes and has no NUL.
std::u16string FullText(std::size_t size);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_CONTACT_RECORDS_H
