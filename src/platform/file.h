// An open file that closes itself, and the two ways in which the agent opens one.
#ifndef QV_PLATFORM_FILE_H
#define QV_PLATFORM_FILE_H

#include <cstddef>
#include <utility>

#include "platform/coredll.h"

namespace qv {

class File {
 public:
  enum class Sharing : coredll::DWORD { kNone = 0, kRead = coredll::FILE_SHARE_READ };

  /// A new or emptied file for writing.
  static File CreateAlways(const char16_t* path, Sharing sharing = Sharing::kRead) {
    return File(path, coredll::GENERIC_WRITE, sharing, coredll::CREATE_ALWAYS);
  }
  /// A file that is there, for reading.
  static File OpenExisting(const char16_t* path, Sharing sharing = Sharing::kRead) {
    return File(path, coredll::GENERIC_READ, sharing, coredll::OPEN_EXISTING);
  }

  /// No file.
  File() : handle_(coredll::INVALID_HANDLE_VALUE) {}
  ~File() {
    if (IsOpen()) coredll::CloseHandle(handle_);
  }
  File(const File&) = delete;
  File& operator=(File&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  void Close() { *this = File(); }
  bool IsOpen() const { return handle_ != coredll::INVALID_HANDLE_VALUE; }

  /// Reads `size` bytes, or as many as there are before the end of the file; `got` says how many. False when the medium
  /// failed, which must never pass for the end of the file.
  [[nodiscard]] bool Read(void* buffer, std::size_t size, std::size_t& got) {
    got = 0;
    while (got < size) {
      coredll::DWORD read = 0;
      auto* const place = static_cast<std::uint8_t*>(buffer) + got;
      if (coredll::ReadFile(handle_, place, static_cast<coredll::DWORD>(size - got), &read, nullptr) == 0) return false;
      if (read == 0) break;
      got += read;
    }
    return true;
  }

  /// False when it cannot be told, or is more than 32 bits can say.
  [[nodiscard]] bool Size(std::uint32_t& size) {
    coredll::DWORD high = 0;
    size = coredll::GetFileSize(handle_, &high);
    return size != coredll::INVALID_FILE_SIZE && high == 0;
  }

  /// One write call. False unless every byte was taken.
  [[nodiscard]] bool Write(const void* bytes, std::size_t size) {
    coredll::DWORD written = 0;
    return coredll::WriteFile(handle_, bytes, static_cast<coredll::DWORD>(size), &written, nullptr) != 0 &&
           written == size;
  }

 private:
  File(const char16_t* path, coredll::DWORD access, Sharing sharing, coredll::DWORD disposition)
      : handle_(coredll::CreateFileW(path, access, static_cast<coredll::DWORD>(sharing), nullptr, disposition,
                                     coredll::FILE_ATTRIBUTE_NORMAL, nullptr)) {}

  coredll::HANDLE handle_;
};

}  // namespace qv

#endif  // QV_PLATFORM_FILE_H
