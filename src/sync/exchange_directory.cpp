// Copies paths that callers hand over, and joins file names to them.
#include "sync/exchange_directory.h"

#include <cstdint>

#include "layout/bytes.h"

namespace qv {

bool CopyWideText(const void* text, char16_t* buffer, std::size_t capacity) {
  const auto* bytes = static_cast<const std::uint8_t*>(text);
  for (std::size_t i = 0; i < capacity; ++i) {
    buffer[i] = bytes == nullptr ? u'\0' : static_cast<char16_t>(layout::LoadNumber(bytes + 2 * i, 2));
    if (buffer[i] == u'\0') return true;
  }
  buffer[capacity - 1] = u'\0';
  return false;
}

Result ExchangeDirectory::Assign(const void* text) {
  return CopyWideText(text, text_, kDirectoryCapacity) ? Result::kOk : Result::kFileFailed;
}

ExchangeDirectory::Path::Path(const ExchangeDirectory& directory, const char16_t* file) {
  std::size_t length = 0;
  for (const char16_t* from = directory.text_; *from != u'\0'; ++from) text_[length++] = *from;
  text_[length++] = u'\\';
  CopyWideText(file, text_ + length, kFileCapacity);
}

}  // namespace qv
