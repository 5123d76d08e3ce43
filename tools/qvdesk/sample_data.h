// What the makers of sample data share: dice that fall the same everywhere, records that are filled by field names.
#ifndef QV_TOOLS_QVDESK_SAMPLE_DATA_H
#define QV_TOOLS_QVDESK_SAMPLE_DATA_H

#include <chrono>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/stores/record_store.h"
#include "layout/record_layout.h"

namespace qvdesk {

/// The day on which the sample data was last touched; the schedule begins with it.
inline constexpr auto kSampleDay = std::chrono::sys_days(std::chrono::January / 5 / 2026);

/// The same numbers from the same seed with every compiler.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine_(seed) {}

  /// 0 to sides - 1.
  std::uint32_t Roll(std::size_t sides) { return static_cast<std::uint32_t>(engine_() % sides); }
  bool OneIn(std::size_t sides) { return Roll(sides) == 0; }
  template <typename T>
  const T& Pick(std::span<const T> from) {
    return from[Roll(from.size())];
  }
  std::string_view Pick(std::span<const std::string_view> from) { return Pick<std::string_view>(from); }

 private:
  std::mt19937 engine_;
};

/// Midnight of a day.
stores::FileTime FileTimeOf(std::chrono::sys_days day);

/// Some time in the half year before kSampleDay, to the second.
stores::FileTime ModifiedTime(Dice& dice);

/// A time as records of texts tell it: 14 digits.
std::string TimeText(stores::FileTime time);

/// A telephone number with these first digits.
std::string NumberIn(std::string_view area, Dice& dice);

/// The name of number `i` of things that are taken by turns from a list: what comes round again is numbered.
std::string NameByTurns(std::string_view name, std::size_t names, std::uint32_t i);

/// A store record that is filled field by field, by the names of its layout.
class RecordBuilder {
 public:
  explicit RecordBuilder(const qv::layout::RecordLayout& layout) : layout_(layout), record_(layout.store_size) {}

  void Set(std::string_view field, std::uint32_t value);
  /// Of 8 bits where the field is. Throws std::logic_error when the text does not fit.
  void Set(std::string_view field, std::string_view text);
  void SetDate(const std::string& prefix, std::chrono::sys_days day);
  void SetTime(const std::string& prefix, std::uint32_t minutes);
  /// A FILETIME.
  void SetFileTime(std::string_view field, stores::FileTime time);
  /// A SYSTEMTIME, to the second; without the day of the week, which databases do without.
  void SetSystemTime(std::string_view field, stores::FileTime time);
  /// Puts UTF-16 into a field of bytes, from this byte of it on. Throws std::logic_error when the text does not fit.
  void SetWideText(std::string_view field, std::size_t at, std::string_view text);
  /// An item that has a form of its own, in its slot.
  void SetItem(std::size_t run, std::size_t position, const RecordBuilder& item);
  /// Items of made-up bytes.
  void SetItems(std::size_t run, const char* count_field, std::uint32_t count, Dice& dice);

  const std::uint8_t* data() const { return record_.data(); }
  const std::vector<std::uint8_t>& bytes() const { return record_; }

 private:
  const qv::layout::Slot& SlotOf(std::string_view name) const;

  const qv::layout::RecordLayout& layout_;
  std::vector<std::uint8_t> record_;
};

/// Records back to back.
void Append(const RecordBuilder& record, std::vector<std::uint8_t>& records);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_SAMPLE_DATA_H
