// Numbers in record buffers, little-endian and byte by byte: no field is ever assumed to be aligned, because the ARM
// handset cannot load a word from an odd address.
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

}  // namespace qv::layout

#endif  // QV_LAYOUT_BYTES_H
