// A store library as a file that is opened and asked for its entry points.
#ifndef QV_TESTS_STORES_LIBRARY_FILE_H
#define QV_TESTS_STORES_LIBRARY_FILE_H

#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <string>

/// A library file open with local symbols, until the end of its life.
class LibraryFile {
 public:
  explicit LibraryFile(const std::string& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(dlerror());
  }

  template <typename Function>
  Function* Find(const char* name) const {
    void* const symbol = dlsym(handle_.get(), name);
    if (symbol == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(symbol);
  }

 private:
  struct Closer {
    void operator()(void* handle) const { dlclose(handle); }
  };
  std::unique_ptr<void, Closer> handle_;
};

#endif  // QV_TESTS_STORES_LIBRARY_FILE_H
