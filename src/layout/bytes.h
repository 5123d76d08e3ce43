// Numbers and characters in buffers of any alignment, little-endian and byte by byte, because the ARM handset cannot
// load a word from an odd address.
#ifndef QV_LAYOUT_BYTES_H
#define QV_LAYOUT_BYTES_H

#include <cstddef>
#include <cstdint>

namespace qv::layout {

constexpr std::uint32_t LoadNumber(const std::uint8_t* bytes, std::size_t size) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value |= std::uint32_t{bytes[i]} << (8 * i);
  return value;
}

constexpr void StoreNumber(std::uint8_t* bytes, std::size_t size, std::uint32_t value) {
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

/// An address as the number that it is in a record, or to a store.
inline std::uint32_t AddressOf(const void* place) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
}

/// Copies UTF-16LE text, at most `capacity` - 1 characters and the NUL. Null counts as empty. False when it was longer.
inline bool CopyWideText(const void* text, char16_t* buffer, std::size_t capacity) {
  const auto* bytes = static_cast<const std::uint8_t*>(text);
  for (std::size_t i = 0; i < capacity; ++i) {
    buffer[i] = bytes == nullptr ? u'\0' : static_cast<char16_t>(LoadNumber(bytes + 2 * i, 2));
    if (buffer[i] == u'\0') return true;
  }
  buffer[capacity - 1] = u'\0';
  return false;
}

}  // namespace qv::layout

#endif  // QV_LAYOUT_BYTES_H
