// Digits by position, both ways.
#include "layout/time_text.h"

#include "layout/bytes.h"

namespace qv::layout {
namespace {

constexpr std::size_t kDigitsOf[kTimeParts] = {4, 2, 2, 2, 2, 2};

}  // namespace

TimeOfSix ParseTimeText(const std::uint8_t* text) {
  TimeOfSix time = {};
  for (std::size_t part = 0; part < kTimeParts; ++part) {
    for (std::size_t i = 0; i < kDigitsOf[part]; ++i, text += 2) {
      const std::uint32_t character = LoadNumber(text, 2);
      if (character < '0' || character > '9') return {};
      time[part] = 10 * time[part] + (character - '0');
    }
  }
  return time;
}

void PutTimeText(const TimeOfSix& time, std::uint8_t* text) {
  const std::uint8_t* const end = text + 2 * kTimeDigits;
  const auto put = [&](std::uint32_t character) {
    if (text == end) return;
    StoreNumber(text, 2, character);
    text += 2;
  };
  for (std::size_t part = 0; part < kTimeParts; ++part) {
    constexpr std::size_t kMostDigits = 10;
    char digits[kMostDigits];
    const bool is_negative = static_cast<std::int32_t>(time[part]) < 0;
    std::uint32_t rest = is_negative ? 0 - time[part] : time[part];
    std::size_t count = 0;
    for (; rest != 0 || count < kDigitsOf[part]; rest /= 10) digits[count++] = static_cast<char>('0' + rest % 10);
    if (is_negative) put('-');
    while (count != 0) put(static_cast<unsigned char>(digits[--count]));
  }
}

TimeOfSix LoadTimeNumbers(const std::uint8_t* numbers) {
  TimeOfSix time;
  for (std::uint32_t& part : time) {
    part = LoadNumber(numbers, 4);
    numbers += 4;
  }
  return time;
}

void PutTimeNumbers(const TimeOfSix& time, std::uint8_t* numbers) {
  for (const std::uint32_t part : time) {
    StoreNumber(numbers, 4, part);
    numbers += 4;
  }
}

}  // namespace qv::layout
