// Entries in the order they came, with an index that finds the first one of a key as fast among 100,000 as among 100.
#ifndef QV_SYNC_INDEXED_LIST_H
#define QV_SYNC_INDEXED_LIST_H

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/memory.h"

namespace qv {

/// Key is what entries are found by: equality-comparable, with a Hash() of its own. `key_of` takes it from an entry.
template <typename Entry, typename Key, Key (*key_of)(const Entry&)>
class IndexedList {
 public:
  static constexpr std::size_t kAbsent = std::size_t(-1);

  /// False without memory; the list is as it was.
  [[nodiscard]] bool Append(const Entry& entry) {
    if (!GrowIndex(entries_.size() + 1) || !entries_.Append(entry)) return false;
    Enter(entries_.size() - 1);
    return true;
  }

  /// Room for `count` entries in all.
  [[nodiscard]] bool Reserve(std::size_t count) { return entries_.Reserve(count) && GrowIndex(count); }

  /// The position of the first entry with this key, or kAbsent.
  std::size_t Find(const Key& key) const {
    if (slots_.empty()) return kAbsent;
    const std::uint32_t position = slots_[SlotOf(key)];
    return position == kEmpty ? kAbsent : position;
  }

  std::size_t size() const { return entries_.size(); }
  const Entry& operator[](std::size_t position) const { return entries_[position]; }
  const Entry* begin() const { return entries_.begin(); }
  const Entry* end() const { return entries_.end(); }

 private:
  static constexpr std::uint32_t kEmpty = std::uint32_t(-1);
  static constexpr std::size_t kFirstSlots = 16;

  /// The slot that holds the key, or the empty one where it belongs. At least half of the slots are empty.
  std::size_t SlotOf(const Key& key) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = key.Hash() & mask;
    while (slots_[slot] != kEmpty && !(key_of(entries_[slots_[slot]]) == key)) slot = (slot + 1) & mask;
    return slot;
  }

  void Enter(std::size_t position) {
    std::uint32_t& slot = slots_[SlotOf(key_of(entries_[position]))];
    if (slot == kEmpty) slot = static_cast<std::uint32_t>(position);
  }

  bool GrowIndex(std::size_t count) {
    if (2 * count <= slots_.size()) return true;
    if (!slots_.Resize(std::bit_ceil(std::max(2 * count, kFirstSlots)))) return false;
    std::fill(slots_.begin(), slots_.end(), kEmpty);
    for (std::size_t position = 0; position < entries_.size(); ++position) Enter(position);
    return true;
  }

  List<Entry> entries_;
  List<std::uint32_t> slots_;
};

/// Spreads neighbouring ids over the whole word.
constexpr std::uint32_t HashWord(std::uint32_t word) {
  word ^= word >> 16;
  word *= 0x85EBCA6Bu;
  word ^= word >> 13;
  word *= 0xC2B2AE35u;
  return word ^ word >> 16;
}

/// A record of a module: its table and its id there.
struct RecordKey {
  std::uint32_t table;
  std::uint32_t id;

  bool operator==(const RecordKey&) const = default;
  constexpr std::uint32_t Hash() const { return HashWord(id + table * 0x9E3779B1u); }
};

}  // namespace qv

#endif  // QV_SYNC_INDEXED_LIST_H
