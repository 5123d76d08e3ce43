// Entries in the order they came, with an index that finds the first one of a key as fast among 100,000 as among 100.
#ifndef QV_SYNC_INDEXED_LIST_H
#define QV_SYNC_INDEXED_LIST_H

#include <algorithm>
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

  /// False without memory; the list is as it was. The entry is indexed when it is first looked for, so that a list read
  /// whole is indexed once.
  [[nodiscard]] bool Append(const Entry& entry) { return MakeSlots(entries_.size() + 1) && entries_.Append(entry); }

  /// Room for `count` entries in all.
  [[nodiscard]] bool Reserve(std::size_t count) { return MakeSlots(count) && entries_.Reserve(count); }

  /// The position of the first entry with this key, or kAbsent.
  std::size_t Find(const Key& key) const {
    if (entries_.empty()) return kAbsent;
    IndexNewEntries();
    const std::uint32_t position = slots_[SlotOf(key)];
    return position == kEmpty ? kAbsent : position;
  }

  std::size_t size() const { return entries_.size(); }
  const Entry& operator[](std::size_t position) const { return entries_[position]; }
  Entry* begin() { return entries_.begin(); }  // Keys must stay what they are.
  Entry* end() { return entries_.end(); }
  const Entry* begin() const { return entries_.begin(); }
  const Entry* end() const { return entries_.end(); }

 private:
  static constexpr std::uint32_t kEmpty = std::uint32_t(-1);
  static constexpr std::size_t kFirstSlots = 16;

  /// Slots for `count` entries, at least half of them empty. The index begins anew in a larger table.
  bool MakeSlots(std::size_t count) {
    if (2 * count <= slots_.size()) return true;
    if (!slots_.Resize(std::bit_ceil(std::max(2 * count, kFirstSlots)))) return false;
    indexed_ = 0;
    return true;
  }

  /// The slot that holds the key, or the empty one where it belongs.
  std::size_t SlotOf(const Key& key) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = key.Hash() & mask;
    while (slots_[slot] != kEmpty && !(key_of(entries_[slots_[slot]]) == key)) slot = (slot + 1) & mask;
    return slot;
  }

  void IndexNewEntries() const {
    if (indexed_ == 0) std::fill(slots_.begin(), slots_.end(), kEmpty);
    for (; indexed_ < entries_.size(); ++indexed_) {
      std::uint32_t& slot = slots_[SlotOf(key_of(entries_[indexed_]))];
      if (slot == kEmpty) slot = static_cast<std::uint32_t>(indexed_);
    }
  }

  List<Entry> entries_;
  mutable List<std::uint32_t> slots_;  ///< Positions of entries, by hash of their keys.
  mutable std::size_t indexed_ = 0;    ///< How many entries the slots know.
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
