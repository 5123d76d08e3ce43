// The platform converts text that ends with a NUL and is aligned, which text in a record need not be.
#include "layout/narrow_text.h"

#include <algorithm>
#include <cstring>

#include "layout/bytes.h"
#include "platform/coredll.h"

namespace qv::layout {

void PutWideText(const std::uint8_t* narrow, std::size_t size, std::uint8_t* wide, std::size_t wide_size) {
  char text[kMostNarrowText + 1] = {};
  std::memcpy(text, narrow, size);
  char16_t converted[kMostNarrowText] = {};
  const std::size_t room = std::min(wide_size / sizeof(char16_t) - 1, kMostNarrowText);
  (void)coredll::mbstowcs(converted, text, room);  // What it says of a character it cannot convert, it has cut there.
  for (std::size_t i = 0; i < room && converted[i] != u'\0'; ++i) StoreNumber(wide + 2 * i, 2, converted[i]);
}

void PutNarrowText(const std::uint8_t* wide, std::size_t wide_size, std::uint8_t* narrow, std::size_t size) {
  char16_t text[kMostNarrowText + 1] = {};  // A character is one byte at least.
  const std::size_t length = std::min(wide_size / sizeof(char16_t), kMostNarrowText);
  for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<char16_t>(LoadNumber(wide + 2 * i, 2));
  char converted[kMostNarrowText] = {};
  (void)coredll::wcstombs(converted, text, size - 1);
  std::copy_n(converted, size - 1, narrow);
}

}  // namespace qv::layout
