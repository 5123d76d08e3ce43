// A loaded library that unloads itself, and typed access to its entry points.
#ifndef QV_PLATFORM_LIBRARY_H
#define QV_PLATFORM_LIBRARY_H

#include "platform/coredll.h"

namespace qv {

class Library {
 public:
  explicit Library(const char16_t* name) : handle_(coredll::LoadLibraryW(name)) {}
  ~Library() {
    if (IsLoaded()) coredll::FreeLibrary(handle_);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  bool IsLoaded() const { return IsValue(handle_); }
  /// The platform found no such library. (Not the opposite of IsLoaded: see IsValue.)
  bool IsMissing() const { return handle_ == nullptr; }

  /// The entry point of that name, or null. Looked up at each call: steps do not keep entry points.
  template <typename Function>
  Function* Resolve(const char16_t* name) const {
    if (!IsLoaded()) return nullptr;
    const coredll::FARPROC address = coredll::GetProcAddressW(handle_, name);
    return IsValue(reinterpret_cast<void*>(address)) ? reinterpret_cast<Function*>(address) : nullptr;
  }

 private:
  /// The platform answers 0, and sometimes all ones, for what is not there.
  static bool IsValue(const void* pointer) { return pointer != nullptr && pointer != coredll::INVALID_HANDLE_VALUE; }

  coredll::HMODULE handle_;
};

}  // namespace qv

#endif  // QV_PLATFORM_LIBRARY_H
