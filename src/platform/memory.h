// Growable lists over the platform's malloc, and what the stores allocate by it. Allocation can fail, and every caller
// has to look.
#ifndef QV_PLATFORM_MEMORY_H
#define QV_PLATFORM_MEMORY_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "platform/coredll.h"

namespace qv {

template <typename T>
class List {
  static_assert(std::is_trivially_copyable_v<T>, "items are moved by realloc");

 public:
  List() = default;
  ~List() { coredll::free(items_); }
  List(const List&) = delete;
  List& operator=(const List&) = delete;

  /// Changes the size; new items have no defined content. False, and nothing changed, without memory.
  [[nodiscard]] bool Resize(std::size_t size) {
    if (size > capacity_ && !Reserve(size)) return false;
    size_ = size;
    return true;
  }

  /// As above for `count` times `size`, which is more than there is when the product is more than a size can say.
  [[nodiscard]] bool Resize(std::size_t count, std::size_t size) {
    return (size == 0 || count <= std::size_t(-1) / size) && Resize(count * size);
  }

  [[nodiscard]] bool Append(const T& item) { return Append(std::span<const T>(&item, 1)); }

  [[nodiscard]] bool Append(std::span<const T> items) {
    if (items.size() > capacity_ - size_ && !Reserve(std::max(size_ + items.size(), GrownCapacity()))) return false;
    std::copy(items.begin(), items.end(), items_ + size_);
    size_ += items.size();
    return true;
  }

  [[nodiscard]] bool Reserve(std::size_t capacity) {
    if (capacity > std::size_t(-1) / sizeof(T)) return false;
    void* const grown = coredll::realloc(items_, capacity * sizeof(T));
    if (grown == nullptr) return false;
    items_ = static_cast<T*>(grown);
    capacity_ = capacity;
    return true;
  }

  void Clear() { size_ = 0; }
  /// Not by copies of an empty item, which would lie on the stack.
  void Zero() {
    std::fill_n(reinterpret_cast<unsigned char*>(items_), size_ * sizeof(T), static_cast<unsigned char>(0));
  }

  std::span<const T> items() const { return {items_, size_}; }
  T* data() { return items_; }
  const T* data() const { return items_; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T& operator[](std::size_t i) { return items_[i]; }
  const T& operator[](std::size_t i) const { return items_[i]; }
  T* begin() { return items_; }
  T* end() { return items_ + size_; }
  const T* begin() const { return items_; }
  const T* end() const { return items_ + size_; }

 private:
  std::size_t GrownCapacity() const { return std::max<std::size_t>(capacity_ + capacity_ / 2, 16); }

  T* items_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

/// A block that a store allocated and left to the agent.
class StoreBlock {
 public:
  StoreBlock() = default;
  ~StoreBlock() { coredll::free(bytes_); }
  StoreBlock(const StoreBlock&) = delete;
  StoreBlock& operator=(const StoreBlock&) = delete;

  /// Where the store says where it is.
  std::uint8_t** place() { return &bytes_; }
  const std::uint8_t* bytes() const { return bytes_; }
  /// What a store leaves behind when it fails is its own.
  void Forget() { bytes_ = nullptr; }

 private:
  std::uint8_t* bytes_ = nullptr;
};

}  // namespace qv

#endif  // QV_PLATFORM_MEMORY_H
