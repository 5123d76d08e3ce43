// Copies paths that callers hand over, and joins file names to them.
#include "sync/exchange_directory.h"

#include "layout/bytes.h"

namespace qv {

Result ExchangeDirectory::Assign(const void* text) {
  return layout::CopyWideText(text, text_, kDirectoryCapacity) ? Result::kOk : Result::kFileFailed;
}

ExchangeDirectory::Path::Path(const ExchangeDirectory& directory, const char16_t* file) {
  std::size_t length = 0;
  for (const char16_t* from = directory.text_; *from != u'\0'; ++from) text_[length++] = *from;
  text_[length++] = u'\\';
  layout::CopyWideText(file, text_ + length, kFileCapacity);
}

}  // namespace qv
