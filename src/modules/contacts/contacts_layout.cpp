// The contacts' field tables. The store names few of its texts, so a field without a known meaning is named after its
// place in the exchange record.
#include "modules/contacts/contacts_layout.h"

#include <algorithm>

namespace qv::contacts {
namespace {

using namespace layout;

constexpr Slot kKind = U8(17);

constexpr Slot kFirstNumber = Text(382, 66);  // The others follow it.
constexpr Slot kFirstStoreType = U8(1388);    // One byte a number.
constexpr Slot kFirstExchangeType = U8(672);  // Likewise.
constexpr Slot kDefaultNumber = U32(856);     // Counted from 1; 0: none.
constexpr Slot kFirstFlag = U8(1386);
constexpr Slot kSecondFlag = U8(1387);
constexpr Slot kExchangeFirstFlag = U8(1120);
constexpr Slot kExchangeSecondFlag = U8(1121);
constexpr Slot kAfterFlags = U8(1122);            // Padding.
constexpr Slot kChosenFlag = U32(1124);           // 1 or 2; 0: none.
constexpr Slot kFirstFlagText = Text(122, 130);   // What the first flag is about,
constexpr Slot kSecondFlagText = Text(252, 130);  // and the second.
constexpr Slot kFirstDateMark = U32(140);
constexpr Slot kSecondDateMark = U32(3104);
constexpr Slot kFirstReminder = U32(2736);
constexpr Slot kSecondReminder = U32(2740);
constexpr Slot kExchangeFirstReminder = Bits(3592, 4, 1, 1);
constexpr Slot kExchangeSecondReminder = Bits(3592, 4, 0, 0);

/// Year, month and day of a date; hour, minute and second follow.
struct Date {
  Slot year, month, day;
};
constexpr Date kFirstDate = {U32(112), U32(116), U32(120)};
constexpr Date kSecondDate = {U32(3076), U32(3080), U32(3084)};
constexpr Slot kStoreDates = Bytes(1084, 24);  // Both.

constexpr Field kContactFields[] = {
    Both("contact_id", kRecordId, kRecordId),
    Both("name", kStoreName, Text(4, 62)),
    Both("text_66", Text(80, 42), Text(66, 42)),
    Both("value_108", U8(2288), U32(108)),
    Both("first_date_year", U16(1084), kFirstDate.year),
    Both("first_date_month", U16(1086), kFirstDate.month),
    Both("first_date_day", U16(1088), kFirstDate.day),
    Both("first_date_hour", U16(1090), U32(124)),
    Both("first_date_minute", U16(1092), U32(128)),
    Both("first_date_second", U16(1094), U32(132)),
    ExchangeUnused(136, 4),
    ByModule("first_date_mark", {}, kFirstDateMark),
    Both("number_1", kFirstNumber, Text(144, 66)),
    Both("number_2", Text(448, 66), Text(210, 66)),
    Both("number_3", Text(514, 66), Text(276, 66)),
    Both("number_4", Text(580, 66), Text(342, 66)),
    Both("number_5", Text(646, 66), Text(408, 66)),
    Both("number_6", Text(712, 66), Text(474, 66)),
    Both("number_7", Text(778, 66), Text(540, 66)),
    Both("number_8", Text(844, 66), Text(606, 66)),
    Both("number_type_1", kFirstStoreType, kFirstExchangeType),
    Both("number_type_2", U8(1389), U8(673)),
    Both("number_type_3", U8(1390), U8(674)),
    Both("number_type_4", U8(1391), U8(675)),
    Both("number_type_5", U8(1392), U8(676)),
    Both("number_type_6", U8(1393), U8(677)),
    Both("number_type_7", U8(1394), U8(678)),
    Both("number_type_8", U8(1395), U8(679)),
    Both("number_text_1", Text(2552, 22), Text(680, 22)),
    Both("number_text_2", Text(2574, 22), Text(702, 22)),
    Both("number_text_3", Text(2596, 22), Text(724, 22)),
    Both("number_text_4", Text(2618, 22), Text(746, 22)),
    Both("number_text_5", Text(2640, 22), Text(768, 22)),
    Both("number_text_6", Text(2662, 22), Text(790, 22)),
    Both("number_text_7", Text(2684, 22), Text(812, 22)),
    Both("number_text_8", Text(2706, 22), Text(834, 22)),
    ByModule("default_number", {}, kDefaultNumber),
    Both("text_860", kFirstFlagText, Text(860, 130)),
    Both("text_990", kSecondFlagText, Text(990, 130)),
    Both("first_flag", kFirstFlag, kExchangeFirstFlag),
    Both("second_flag", kSecondFlag, kExchangeSecondFlag),
    ExchangeUnused(1122, 2),
    ByModule("chosen_flag", {}, kChosenFlag),
    Both("text_1128", Text(976, 66), Text(1128, 98)),
    Both("text_1226", Text(1042, 42), Text(1226, 42)),
    Both("text_1268", Text(1108, 258), Text(1268, 258)),
    Both("second_address_text_1", Text(1582, 34), Text(1526, 34)),
    Both("second_address_text_2", Text(1616, 34), Text(1560, 34)),
    Both("second_address_text_3", Text(1650, 34), Text(1594, 34)),
    Both("second_address_street", Text(1684, 66), Text(1628, 98)),
    Both("second_address_postal", Text(1750, 18), Text(1726, 18)),
    Both("first_address_text_1", Text(1396, 34), Text(1744, 34)),
    Both("first_address_text_2", Text(1430, 34), Text(1778, 34)),
    Both("first_address_text_3", Text(1464, 34), Text(1812, 34)),
    Both("first_address_street", Text(1498, 66), Text(1846, 98)),
    Both("first_address_postal", Text(1564, 18), Text(1944, 18)),
    Both("value_1962", U8(2289), U16(1962)),
    Both("text_1964", Text(2026, 258), Text(1964, 512)),
    Both("text_2476", Text(2290, 258), Text(2476, 512)),
    Both("text_2988", Text(1366, 10), Text(2988, 10)),
    Both("text_2998", Text(1376, 10), Text(2998, 10)),
    Both("text_3008", Text(910, 66), Text(3008, 66)),
    ExchangeUnused(3074, 2),
    Both("second_date_year", U16(1096), kSecondDate.year),
    Both("second_date_month", U16(1098), kSecondDate.month),
    Both("second_date_day", U16(1100), kSecondDate.day),
    Both("second_date_hour", U16(1102), U32(3088)),
    Both("second_date_minute", U16(1104), U32(3092)),
    Both("second_date_second", U16(1106), U32(3096)),
    ExchangeUnused(3100, 4),
    ByModule("second_date_mark", {}, kSecondDateMark),
    Both("picture_id", kStorePicture, U32(3108)),
    Both("text_3112", Text(1768, 258), Text(3112, 402)),
    Both("value_3514", U8(16), U16(3514)),
    ExportOnly("value_3516", U32(2548), U8(3516)),
    ExchangeUnused(3517, 43),
    // A desktop tells when it changed a contact; the store tells the agent in its list of records.
    RecoverOnly("modified_year", U16(4), U32(3560)),
    RecoverOnly("modified_month", U16(6), U32(3564)),
    RecoverOnly("modified_day", U16(8), U32(3568)),
    RecoverOnly("modified_hour", U16(10), U32(3572)),
    RecoverOnly("modified_minute", U16(12), U32(3576)),
    RecoverOnly("modified_second", U16(14), U32(3580)),
    ByModule("kind", kKind, {}),
    ExchangeUnused(3584, 8),
    ByModule("first_date_reminder", kFirstReminder, kExchangeFirstReminder),
    ByModule("second_date_reminder", kSecondReminder, kExchangeSecondReminder),
    ExchangeUnusedBits(3592, 4, 31, 2),
    StoreUnused(2728, 8),
};

constexpr Field kGroupFields[] = {
    Both("group_id", kRecordId, kRecordId),
    Both("name", kStoreName, Text(4, 42)),
    Both("text_46", Text(1366, 10), Text(46, 10)),
    Both("text_56", Text(1376, 10), Text(56, 10)),
    Both("text_66", Text(2026, 258), Text(66, 512)),
    Both("text_578", Text(2290, 258), Text(578, 512)),
    Both("text_1090", Text(1768, 258), Text(1090, 402)),
    Both("value_1492", U8(16), U32(1492)),
    ExchangeUnused(1496, 36),
    ByModule("kind", kKind, {}),
    StoreUnused(4, 12),
    StoreUnused(80, 1286),
    StoreUnused(1386, 382),
    StoreUnused(2284, 6),
    StoreUnused(2548, 196),
};

constexpr Field kMembershipFields[] = {
    Both("contact_id", kRecordId, kRecordId),
    Both("group_count", kMembershipCount, kMembershipCount),
};

constexpr ItemRun kMembershipItems[] = {
    {.name = "group_id",
     .count = kMembershipCount,
     .item = U32(0),
     .store_offset = kMembershipGroups.offset,
     .slots = kMostGroupsOfContact},
};

constexpr Field kPictureFields[] = {
    Both("picture_id", kRecordId, kRecordId),
    Both("length", kStorePictureLength, kExchangePictureLength),
    Both("data", Bytes(6, kMostPictureBytes), Bytes(8, kMostPictureBytes)),
    StoreUnused(8198, 2),
    ExchangeUnused(8200, 36),
};

/// The slot of a number, a type byte: the first one's, moved on.
constexpr Slot Following(const Slot& first, std::uint32_t position) {
  Slot slot = first;
  slot.offset = static_cast<std::uint16_t>(first.offset + position * first.size);
  return slot;
}

bool IsEmpty(const Slot& text, const std::uint8_t* record) {
  return record[text.offset] == 0 && record[text.offset + 1] == 0;
}

// Marks. A store adds one to a byte that is below it, and a byte that equals it is taken for a plain value.

bool IsMarked(const Slot& byte, const std::uint8_t* record) {
  return LoadSlot(byte, record) > kMark;
}

void AddMark(const Slot& byte, std::uint8_t* record) {
  StoreSlot(byte, record, LoadSlot(byte, record) + kMark);
}

bool IsOn(const Slot& reminder, const std::uint8_t* store) {
  return static_cast<std::int32_t>(LoadSlot(reminder, store)) > 0;
}

bool IsComplete(const Date& date, const std::uint8_t* exchange) {
  return LoadSlot(date.year, exchange) != 0 && LoadSlot(date.month, exchange) != 0 && LoadSlot(date.day, exchange) != 0;
}

void PutReminder(const Date& date, const Slot& from, const std::uint8_t* exchange, const Slot& to,
                 std::uint8_t* store) {
  if (IsComplete(date, exchange)) StoreSlot(to, store, LoadSlot(from, exchange) != 0 ? kReminderOn : 0);
}

// The derived fields of a contact, in a record whose table fields are filled. A flag or type byte above 128 is the
// chosen one in the store; the exchange record says which one in a field of its own.

void TakeDefaultNumber(std::uint8_t* exchange) {
  for (std::uint32_t i = 0; i < kNumbers; ++i) {
    const Slot type = Following(kFirstExchangeType, i);
    if (!IsMarked(type, exchange)) continue;
    StoreSlot(type, exchange, LoadSlot(type, exchange) % kMark);
    StoreSlot(kDefaultNumber, exchange, i + 1);
    return;
  }
}

void TakeReminders(const std::uint8_t* store, std::uint8_t* exchange) {
  StoreSlot(kExchangeFirstReminder, exchange, IsOn(kFirstReminder, store));
  StoreSlot(kExchangeSecondReminder, exchange, IsOn(kSecondReminder, store));
}

void MarkDefaultNumber(const std::uint8_t* exchange, std::uint8_t* store) {
  const std::uint32_t chosen = LoadSlot(kDefaultNumber, exchange);
  if (chosen >= 1 && chosen <= kNumbers) return AddMark(Following(kFirstStoreType, chosen - 1), store);
  for (std::uint32_t i = 0; i < kNumbers; ++i) {
    if (!IsEmpty(Following(kFirstNumber, i), store)) return AddMark(Following(kFirstStoreType, i), store);
  }
}

void MarkChosenFlag(const std::uint8_t* exchange, std::uint8_t* store) {
  const std::uint32_t chosen = LoadSlot(kChosenFlag, exchange);
  if (chosen == 1) return AddMark(kFirstFlag, store);
  if (chosen == 2) return AddMark(kSecondFlag, store);
  if (!IsEmpty(kFirstFlagText, store)) return AddMark(kFirstFlag, store);
  if (!IsEmpty(kSecondFlagText, store)) return AddMark(kSecondFlag, store);
}

void DropUnwantedDates(const std::uint8_t* exchange, std::uint8_t* store) {
  // The first date decides about both, and one in January or on the first of a month is not taken: desktops send such
  // dates for "none", and handsets have always read them so.
  constexpr std::uint32_t kNoYear = 1900;
  const bool wanted = LoadSlot(kFirstDate.year, exchange) != kNoYear && LoadSlot(kFirstDate.month, exchange) != 1 &&
                      LoadSlot(kFirstDate.day, exchange) != 1;
  if (!wanted) std::fill_n(store + kStoreDates.offset, kStoreDates.size, std::uint8_t{0});
}

void PutReminders(const std::uint8_t* exchange, std::uint8_t* store) {
  PutReminder(kFirstDate, kExchangeFirstReminder, exchange, kFirstReminder, store);
  PutReminder(kSecondDate, kExchangeSecondReminder, exchange, kSecondReminder, store);
}

}  // namespace

constinit const RecordLayout kContactLayout = TiledLayout<kStoreSize, kContactExchangeSize>("contact", kContactFields);
constinit const RecordLayout kGroupLayout = TiledLayout<kStoreSize, kGroupExchangeSize>("contact group", kGroupFields);
constinit const RecordLayout kMembershipLayout =
    TiledLayout<kMembershipStoreSize, kMembershipExchangeSize>("membership", kMembershipFields, kMembershipItems);
constinit const RecordLayout kPictureLayout =
    TiledLayout<kPictureStoreSize, kPictureExchangeSize>("contact picture", kPictureFields);

void ContactToExchange(const std::uint8_t* store, std::uint8_t* exchange) {
  // Desktops expect this constant behind both dates.
  constexpr std::uint32_t kDateMark = 14;
  ToExchange(kContactLayout, store, exchange);
  StoreSlot(kFirstDateMark, exchange, kDateMark);
  StoreSlot(kSecondDateMark, exchange, kDateMark);
  TakeDefaultNumber(exchange);
  TakeChosenFlag(exchange);
  TakeReminders(store, exchange);
}

void ContactToStore(const std::uint8_t* exchange, std::uint8_t* store) {
  ToStore(kContactLayout, exchange, store);
  StoreSlot(kKind, store, kContactKind);
  DropUnwantedDates(exchange, store);
  MarkChosenFlag(exchange, store);
  MarkDefaultNumber(exchange, store);
  PutReminders(exchange, store);
}

void GroupToExchange(const std::uint8_t* store, std::uint8_t* exchange) {
  ToExchange(kGroupLayout, store, exchange);
}

void GroupToStore(const std::uint8_t* exchange, std::uint8_t* store) {
  ToStore(kGroupLayout, exchange, store);
  StoreSlot(kKind, store, kGroupKind);
}

void PictureToExchange(const std::uint8_t* store, std::uint8_t* exchange) {
  ToExchange(kPictureLayout, store, exchange);
  const std::uint32_t length = LoadSlot(kExchangePictureLength, exchange);
  StoreSlot(kExchangePictureLength, exchange, std::min<std::uint32_t>(length, kMostPictureBytes));
}

std::uint8_t* AppendMembership(const std::uint8_t* store, std::uint8_t* end) {
  ToExchange(kMembershipLayout, store, end);
  const std::size_t groups = LoadSlot(kMembershipCount, end);
  if (groups == 0) return end;
  return std::copy_n(store + kMembershipGroups.offset, 4 * groups, end + kMembershipExchangeSize);
}

void TakeChosenFlag(std::uint8_t* exchange) {
  const std::uint32_t first = LoadSlot(kExchangeFirstFlag, exchange);
  if (IsMarked(kExchangeFirstFlag, exchange)) {
    StoreSlot(kExchangeFirstFlag, exchange, first % kMark);
    StoreSlot(kChosenFlag, exchange, 1);
  } else if (IsMarked(kAfterFlags, exchange)) {
    // Not the second flag: the byte behind it, which an export clears. Desktops know handsets that choose the first
    // flag or none.
    StoreSlot(kExchangeSecondFlag, exchange, first % kMark);
    StoreSlot(kChosenFlag, exchange, 2);
  }
}

}  // namespace qv::contacts
