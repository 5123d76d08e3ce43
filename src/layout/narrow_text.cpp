// The platform's conversions, made to say how far they came.
#include "layout/narrow_text.h"

#include <algorithm>

#include "layout/bytes.h"
#include "platform/coredll.h"

namespace qv::layout {
namespace {

constexpr auto kUnconvertible = static_cast<std::size_t>(-1);

/// What `convert` makes of a text in the most room in which it succeeds: it stops when there is none left, so that in
/// less of it the character that it cannot convert is never reached.
template <typename Convert>
std::size_t ConvertAsFarAsPossible(Convert convert, std::size_t room) {
  const std::size_t converted = convert(room);
  if (converted != kUnconvertible) return converted;
  std::size_t succeeds = 0;
  for (std::size_t fails = room + 1; fails - succeeds > 1;) {
    const std::size_t middle = succeeds + (fails - succeeds) / 2;
    (convert(middle) != kUnconvertible ? succeeds : fails) = middle;
  }
  const std::size_t done = succeeds != 0 ? convert(succeeds) : 0;
  return done != kUnconvertible ? done : 0;
}

}  // namespace

std::size_t Narrow(const char16_t* wide, char* narrow, std::size_t room) {
  return ConvertAsFarAsPossible([&](std::size_t size) { return coredll::wcstombs(narrow, wide, size); }, room);
}

std::size_t Widen(const char* narrow, char16_t* wide, std::size_t room) {
  return ConvertAsFarAsPossible([&](std::size_t size) { return coredll::mbstowcs(wide, narrow, size); }, room);
}

void PutNarrowText(const std::uint8_t* wide, std::size_t wide_size, std::uint8_t* narrow, std::size_t narrow_size) {
  char16_t text[kMostWideText + 1] = {};
  for (std::size_t i = 0; i < wide_size / 2; ++i) text[i] = static_cast<char16_t>(LoadNumber(wide + 2 * i, 2));
  char converted[kMostNarrowText];
  std::copy_n(converted, Narrow(text, converted, narrow_size - 1), narrow);
}

void PutWideText(const std::uint8_t* narrow, std::size_t narrow_size, std::uint8_t* wide, std::size_t wide_size) {
  char text[kMostNarrowText + 1] = {};
  std::copy_n(narrow, narrow_size, text);
  char16_t converted[kMostNarrowText];
  const std::size_t length = Widen(text, converted, wide_size / 2 - 1);
  for (std::size_t i = 0; i < length; ++i) StoreNumber(wide + 2 * i, 2, converted[i]);
}

}  // namespace qv::layout
