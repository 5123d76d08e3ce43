// The C library's memory and string routines under the names by which the handset library's imports are resolved: it
// calls with 4-byte aligned stacks, which the host's own routines must never see. Not watched: they ask the system for
// nothing.
#include <cstddef>
#include <cstring>

#pragma GCC visibility push(default)

extern "C" {

void* coredll_memcpy(void* to, const void* from, std::size_t size) {
  return std::memcpy(to, from, size);
}

void* coredll_memmove(void* to, const void* from, std::size_t size) {
  return std::memmove(to, from, size);
}

void* coredll_memset(void* to, int byte, std::size_t size) {
  return std::memset(to, byte, size);
}

int coredll_memcmp(const void* left, const void* right, std::size_t size) {
  return std::memcmp(left, right, size);
}

std::size_t coredll_strlen(const char* text) {
  return std::strlen(text);
}

const char* coredll_strstr(const char* text, const char* part) {
  return std::strstr(text, part);
}

const char* coredll_strchr(const char* text, int character) {
  return std::strchr(text, character);
}

std::size_t coredll_wcslen(const char16_t* text) {
  std::size_t length = 0;
  while (text[length] != u'\0') ++length;
  return length;
}

}  // extern "C"

#pragma GCC visibility pop
