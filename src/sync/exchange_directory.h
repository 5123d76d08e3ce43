// The directory on the handset that holds the exchange files of one call.
#ifndef QV_SYNC_EXCHANGE_DIRECTORY_H
#define QV_SYNC_EXCHANGE_DIRECTORY_H

#include <cstddef>

#include "qv_rapi.h"
#include "sync/result.h"

namespace qv {

class ExchangeDirectory {
 public:
  /// Takes the caller's UTF-16LE text, wherever it lies; null counts as empty. kFileFailed when it is longer than the
  /// buffer: a cut path would name another directory.
  Result Assign(const void* text);

  /// "directory\file", built for one use: the text lives as long as the value.
  class Path {
   public:
    Path(const ExchangeDirectory& directory, const char16_t* file);
    operator const char16_t*() const { return text_; }  // NOLINT(google-explicit-constructor): it is a path's text

   private:
    /// Longest name of an exchange file, its NUL included.
    static constexpr std::size_t kFileCapacity = 32;
    char16_t text_[kDirectoryCapacity + kFileCapacity];
  };

  Path operator/(const char16_t* file) const { return {*this, file}; }

 private:
  char16_t text_[kDirectoryCapacity] = {};
};

}  // namespace qv

#endif  // QV_SYNC_EXCHANGE_DIRECTORY_H
