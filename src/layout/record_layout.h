// A record form as a table of fields, and the one interpreter that converts records by it. The same table gives the
// dump of an exchange file, the columns of a stand-in store and docs/FORMATS.
#ifndef QV_LAYOUT_RECORD_LAYOUT_H
#define QV_LAYOUT_RECORD_LAYOUT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "layout/file_time.h"
#include "layout/narrow_text.h"
#include "layout/time_text.h"

namespace qv::layout {

#if defined(QV_WINCE)
/// What a field, a run of items or a form is called. No code on the handset asks: its library leaves the names out.
struct Name {
  constexpr Name(const char* /*name*/) {}
};
#else
using Name = const char*;
#endif

/// How a value lies in its slot.
enum class Form : std::uint8_t {
  kNone,         ///< The field does not exist on this side.
  kUnused,       ///< Written as zero, never read.
  kNumber,       ///< Unsigned little-endian number of 1 to 4 bytes; a narrower target takes its low bytes.
  kSigned,       ///< Such a number that keeps its sign in a wider target.
  kBits,         ///< `width` bits from bit `shift` of such a number; fields may share the number.
  kTruth,        ///< A number that carries 1 when it is not zero.
  kText,         ///< UTF-16LE up to its NUL, zero-filled; a copy keeps the last character for the NUL.
  kNarrowText,   ///< Text in the system's 8-bit code page up to its NUL, zero-filled; wide on the exchange side.
  kRawText,      ///< Text whose bytes are carried as they stand, those behind the NUL included.
  kBytes,        ///< Carried as they stand.
  kTimeText,     ///< UTF-16LE, 14 digits and a NUL: year, month, day, hour, minute, second.
  kFileTime,     ///< A FILETIME: two words, the low one first.
  kSystemTime,   ///< A SYSTEMTIME, of which the six are carried as they stand.
  kTimeNumbers,  ///< The same six as 32-bit numbers, or seven: the last are the milliseconds of a FILETIME.
};

struct Slot {
  Form form = Form::kNone;
  std::uint8_t shift = 0;
  std::uint8_t width = 0;  ///< In bits; 0: the slot is whole bytes.
  std::uint16_t offset = 0;
  std::uint16_t size = 0;
};

constexpr Slot U8(std::uint16_t offset) {
  return {Form::kNumber, 0, 0, offset, 1};
}
constexpr Slot U16(std::uint16_t offset) {
  return {Form::kNumber, 0, 0, offset, 2};
}
constexpr Slot S16(std::uint16_t offset) {
  return {Form::kSigned, 0, 0, offset, 2};
}
constexpr Slot U32(std::uint16_t offset) {
  return {Form::kNumber, 0, 0, offset, 4};
}
/// Bits high..low of the `size`-byte number at `offset`.
constexpr Slot Bits(std::uint16_t offset, std::uint16_t size, std::uint8_t high, std::uint8_t low) {
  return {Form::kBits, low, static_cast<std::uint8_t>(high - low + 1), offset, size};
}
constexpr Slot UnusedBits(std::uint16_t offset, std::uint16_t size, std::uint8_t high, std::uint8_t low) {
  return {Form::kUnused, low, static_cast<std::uint8_t>(high - low + 1), offset, size};
}
constexpr Slot Truth(std::uint16_t offset, std::uint16_t size) {
  return {Form::kTruth, 0, 0, offset, size};
}
/// `size` is in bytes, the NUL's two included.
constexpr Slot Text(std::uint16_t offset, std::uint16_t size) {
  return {Form::kText, 0, 0, offset, size};
}
/// At most kMostNarrowText bytes.
constexpr Slot NarrowText(std::uint16_t offset, std::uint16_t size) {
  return {Form::kNarrowText, 0, 0, offset, size};
}
constexpr Slot RawText(std::uint16_t offset, std::uint16_t size) {
  return {Form::kRawText, 0, 0, offset, size};
}
constexpr Slot Bytes(std::uint16_t offset, std::uint16_t size) {
  return {Form::kBytes, 0, 0, offset, size};
}
constexpr Slot TimeText(std::uint16_t offset) {
  return {Form::kTimeText, 0, 0, offset, kTimeTextSize};
}
constexpr Slot FileTime(std::uint16_t offset) {
  return {Form::kFileTime, 0, 0, offset, kFileTimeSize};
}
constexpr Slot SystemTime(std::uint16_t offset) {
  return {Form::kSystemTime, 0, 0, offset, kSystemTimeSize};
}
constexpr Slot TimeNumbers(std::uint16_t offset) {
  return {Form::kTimeNumbers, 0, 0, offset, 4 * kTimeParts};
}
/// With milliseconds.
constexpr Slot TimeOfSeven(std::uint16_t offset) {
  return {Form::kTimeNumbers, 0, 0, offset, 4 * (kTimeParts + 1)};
}
constexpr Slot Unused(std::uint16_t offset, std::uint16_t size) {
  return {Form::kUnused, 0, 0, offset, size};
}

/// Which way a row is carried.
enum class Carried : std::uint8_t {
  kBothWays,
  kRepeated,     ///< The exchange side repeats what another row carries, so a recover does not read it.
  kExportOnly,   ///< A recover leaves the store side zero.
  kRecoverOnly,  ///< An export leaves the exchange side zero.
  kByModule,     ///< By a function of the module, beside its table: the value follows from other fields.
};

struct Field {
  [[no_unique_address]] Name name;  ///< Column and key name: lower case, words joined by "_"; "" for unused room.
  Slot store;
  Slot exchange;
  Carried carried = Carried::kBothWays;
  bool ends_when_zero = false;  ///< When the value is zero the rows after this one are not carried: they stay zero.
};

constexpr Field Both(Name name, Slot store, Slot exchange) {
  return {name, store, exchange};
}
constexpr Field Repeated(Name name, Slot store, Slot exchange) {
  return {name, store, exchange, Carried::kRepeated};
}
constexpr Field ExportOnly(Name name, Slot store, Slot exchange) {
  return {name, store, exchange, Carried::kExportOnly};
}
constexpr Field RecoverOnly(Name name, Slot store, Slot exchange) {
  return {name, store, exchange, Carried::kRecoverOnly};
}
/// Either side may be missing: {}.
constexpr Field ByModule(Name name, Slot store, Slot exchange) {
  return {name, store, exchange, Carried::kByModule};
}
constexpr Field EndsWhenZero(Name name, Slot store, Slot exchange) {
  return {name, store, exchange, Carried::kBothWays, true};
}
constexpr Field StoreUnused(std::uint16_t offset, std::uint16_t size) {
  return {"", Unused(offset, size), {}};
}
constexpr Field StoreUnusedBits(std::uint16_t offset, std::uint16_t size, std::uint8_t high, std::uint8_t low) {
  return {"", UnusedBits(offset, size, high, low), {}};
}
constexpr Field ExchangeUnused(std::uint16_t offset, std::uint16_t size) {
  return {"", {}, Unused(offset, size)};
}
constexpr Field ExchangeUnusedBits(std::uint16_t offset, std::uint16_t size, std::uint8_t high, std::uint8_t low) {
  return {"", {}, UnusedBits(offset, size, high, low)};
}
/// A field of a form that has no store side: a change record, an id map entry.
constexpr Field FileOnly(Name name, Slot exchange) {
  return {name, {}, exchange};
}

/// Of items that do not lie in the store record, and of those that the store has no fixed room for.
inline constexpr std::uint16_t kElsewhere = 0xFFFF;
inline constexpr std::uint32_t kAnyNumber = 0xFFFFFFFF;

/// Items of one size that follow the fixed part in an exchange file and lie in slots of the store record.
struct ItemRun {
  [[no_unique_address]] Name name;
  Slot count;                  ///< Where the fixed part holds their count: a number.
  Slot item;                   ///< The one field of an item in the file, at its offset 0.
  std::uint16_t store_offset;  ///< Where the store record's slots begin; kElsewhere: they are not in it.
  std::uint32_t slots;     ///< How many the store has room for; kAnyNumber: that is not fixed, and they lie elsewhere.
  bool is_signed = false;  ///< A count below 0 is as good as 0.
  /// How an item is converted; null: it lies the same on both sides.
  const struct RecordLayout* layout = nullptr;
  /// The count is a number of 4 bytes in front of the items, and `count` none.
  bool is_counted_in_front = false;
};

/// Most bytes of an item that is converted between file and store record.
inline constexpr std::uint32_t kMostItemSize = 128;

struct RecordLayout {
  [[no_unique_address]] Name name;
  std::uint32_t store_size;     ///< 0 when the form exists in files only.
  std::uint32_t exchange_size;  ///< The fixed part; the items follow it in the order of `items`.
  std::span<const Field> fields;
  std::span<const ItemRun> items = {};
};

/// Whether the store record has slots for the items.
constexpr bool LiesInRecord(const ItemRun& run) {
  return run.slots != kAnyNumber && run.store_offset != kElsewhere;
}

/// Bytes from one slot of the items to the next.
constexpr std::uint32_t StoreItemSize(const ItemRun& run) {
  return run.layout != nullptr ? run.layout->store_size : run.item.size;
}

constexpr bool IsNumeric(Form form) {
  return form == Form::kNumber || form == Form::kSigned || form == Form::kBits || form == Form::kTruth;
}

/// The largest number that a slot of numeric form holds: all its bits set.
constexpr std::uint32_t LargestNumber(const Slot& slot) {
  const unsigned width = slot.width != 0 ? slot.width : slot.size * 8u;
  return width < 32 ? (1u << width) - 1 : ~0u;
}

/// The number in a slot of numeric form: as it lies there, or widened with its sign.
std::uint32_t LoadSlot(const Slot& slot, const std::uint8_t* record);
/// Puts a number's low bits into such a slot; fields that share its bytes keep theirs.
void StoreSlot(const Slot& slot, std::uint8_t* record, std::uint32_t value);

/// Fills the exchange record's fixed part. A count beyond its slots becomes the number of slots: the record carries the
/// items there are.
void ToExchange(const RecordLayout& layout, const std::uint8_t* store, std::uint8_t* exchange);
/// Fills the store record from the fixed part, with empty item slots.
void ToStore(const RecordLayout& layout, const std::uint8_t* exchange, std::uint8_t* store);

/// Of a run whose count stands in the fixed part.
inline std::uint32_t ItemCount(const ItemRun& run, const std::uint8_t* exchange) {
  const std::uint32_t count = LoadSlot(run.count, exchange);
  return run.is_signed && static_cast<std::int32_t>(count) < 0 ? 0 : count;
}

namespace internal {

/// Claims a slot's bits in `claimed`; false when one is taken already or lies outside. Plain pointers, here and in
/// IsFull: a compiler counts its steps, and the largest records have more bytes than it would take through a span.
constexpr bool Claim(const Slot& slot, std::span<std::uint8_t> claimed) {
  if (slot.form == Form::kNone) return true;
  if (std::size_t{slot.offset} + slot.size > claimed.size()) return false;
  std::uint8_t* const begin = claimed.data() + slot.offset;
  if (slot.width == 0) {
    for (std::uint8_t* byte = begin; byte != begin + slot.size; ++byte) {
      if (*byte != 0) return false;
      *byte = 0xFF;
    }
    return true;
  }
  const std::uint32_t end = slot.shift + slot.width;
  if (end > slot.size * 8u) return false;
  for (std::uint32_t bit = slot.shift; bit < end; ++bit) {
    const auto mask = static_cast<std::uint8_t>(1u << (bit % 8));
    std::uint8_t& byte = begin[bit / 8];
    if ((byte & mask) != 0) return false;
    byte = static_cast<std::uint8_t>(byte | mask);
  }
  return true;
}

/// Whether a slot is a number that LoadSlot and StoreSlot take.
constexpr bool IsNumber(const Slot& slot) {
  return IsNumeric(slot.form) && slot.size >= 1 && slot.size <= 4;
}

/// Whether the interpreter can carry the one side to the other: numbers to numbers, text to text, what is carried as it
/// stands to as much room, and times to numbers, to six from a text.
constexpr bool SidesFit(const Field& field) {
  const Slot& store = field.store;
  const Slot& exchange = field.exchange;
  if (store.form == Form::kNone || exchange.form == Form::kNone || field.carried == Carried::kByModule) return true;
  switch (store.form) {
    case Form::kNumber:
    case Form::kSigned:
    case Form::kBits:
    case Form::kTruth: return IsNumber(store) && IsNumber(exchange);
    case Form::kText: return exchange.form == Form::kText && IsWideText(store.size) && IsWideText(exchange.size);
    case Form::kNarrowText: return exchange.form == Form::kText && IsNarrowText(store.size, exchange.size);
    case Form::kRawText:
    case Form::kBytes: return exchange.form == store.form && exchange.size == store.size;
    case Form::kFileTime: return exchange.form == Form::kTimeNumbers;
    case Form::kTimeText:
    case Form::kSystemTime: return exchange.form == Form::kTimeNumbers && exchange.size == 4 * kTimeParts;
    default: return false;
  }
}

/// Whether a row of the fixed part is the run's count, unless that stands elsewhere.
constexpr bool IsCounted(const ItemRun& run, std::span<const Field> fields) {
  if (run.is_counted_in_front) return run.count.form == Form::kNone;
  for (const Field& field : fields) {
    const Slot& slot = field.exchange;
    if (slot.form == run.count.form && slot.offset == run.count.offset && slot.size == run.count.size) return true;
  }
  return false;
}

/// Whether the items' own layout is that of items of their size.
constexpr bool ItemsFit(const ItemRun& run) {
  if (run.layout == nullptr) return true;
  return run.layout->exchange_size == run.item.size && (!LiesInRecord(run) || run.item.size <= kMostItemSize);
}

constexpr bool IsFull(std::span<const std::uint8_t> claimed) {
  const std::uint8_t* const end = claimed.data() + claimed.size();
  for (const std::uint8_t* byte = claimed.data(); byte != end; ++byte) {
    if (*byte != 0xFF) return false;
  }
  return true;
}

}  // namespace internal

/// True when the rows cover each side of the record to the last bit, none of them twice, and each row's sides fit. A
/// row that only repeats another claims its exchange slot but not the store slot it reads. Each run of items has a row
/// that counts it.
template <std::size_t store_size, std::size_t exchange_size>
consteval bool Tiles(std::span<const Field> fields, std::span<const ItemRun> items = {}) {
  std::array<std::uint8_t, store_size> store{};
  std::array<std::uint8_t, exchange_size> exchange{};
  for (const Field& field : fields) {
    if (field.carried != Carried::kRepeated && !internal::Claim(field.store, store)) return false;
    if (!internal::Claim(field.exchange, exchange) || !internal::SidesFit(field)) return false;
  }
  for (const ItemRun& run : items) {
    if (!internal::IsCounted(run, fields) || !internal::ItemsFit(run)) return false;
    if (!LiesInRecord(run)) continue;
    const std::uint32_t size = StoreItemSize(run) * run.slots;
    if (size > 0xFFFF || !internal::Claim(Bytes(run.store_offset, static_cast<std::uint16_t>(size)), store))
      return false;
  }
  return internal::IsFull(store) && internal::IsFull(exchange);
}

namespace internal {

/// Never defined: a layout that calls it does not compile.
void RowsDoNotTileTheRecord();

}  // namespace internal

/// The layout of these rows, which must tile its records.
template <std::size_t store_size, std::size_t exchange_size>
consteval RecordLayout TiledLayout(Name name, std::span<const Field> fields, std::span<const ItemRun> items = {}) {
  if (!Tiles<store_size, exchange_size>(fields, items)) internal::RowsDoNotTileTheRecord();
  return {name, store_size, exchange_size, fields, items};
}

}  // namespace qv::layout

#endif  // QV_LAYOUT_RECORD_LAYOUT_H
