// A store's entry points as facts: a name, and the arguments in their order. Stores do the same few things and differ
// in what they call them, and in what they want to be told.
#ifndef QV_SYNC_STORE_FUNCTION_H
#define QV_SYNC_STORE_FUNCTION_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/library.h"

namespace qv {

/// One argument. All are words: numbers, or addresses.
enum class Argument : std::uint8_t {
  kNone,
  kTable,       ///< The table's number.
  kCount,       ///< How many records.
  kCountPlace,  ///< Where the room is said, and the number of what is there expected.
  kEntries,     ///< The list to fill.
  kId,
  kIds,
  kRecords,  ///< One record or several.
  kNewId,    ///< Where the id of an inserted record is expected.
  kGroup,    ///< The group of a record, or what the store takes in its place.
  kZero,     ///< A word that the store has no use for yet.
};

/// The numbers that an entry point means success by.
struct SuccessNumbers {
  std::uint32_t least = 0;
  std::uint32_t most = 0;
};

struct EntryPoint {
  static constexpr std::size_t kMostArguments = 4;
  const char16_t* name = nullptr;
  std::array<Argument, kMostArguments> arguments = {};
  SuccessNumbers success = {};

  constexpr bool Takes(Argument argument) const {
    return std::find(arguments.begin(), arguments.end(), argument) != arguments.end();
  }
};

/// What the arguments of one call are; those that the entry point does not take are not looked at.
struct Arguments {
  std::uint32_t table = 0;
  std::uint32_t count = 0;
  std::uint32_t* count_place = nullptr;
  void* entries = nullptr;
  std::uint32_t id = 0;
  const std::uint32_t* ids = nullptr;
  const void* records = nullptr;
  std::uint32_t* new_id = nullptr;
  std::uint32_t group = 0;
};

class StoreFunction {
 public:
  /// False when the store lacks it.
  [[nodiscard]] bool LookUp(const Library& store, const EntryPoint& entry_point) {
    entry_point_ = &entry_point;
    function_ = store.Resolve<void()>(entry_point.name);
    return function_ != nullptr;
  }

  /// What the store answered.
  std::uint32_t Answer(const Arguments& arguments) const;
  /// Whether it answered with success.
  [[nodiscard]] bool operator()(const Arguments& arguments) const {
    const std::uint32_t answer = Answer(arguments);
    return entry_point_->success.least <= answer && answer <= entry_point_->success.most;
  }

 private:
  const EntryPoint* entry_point_ = nullptr;
  void (*function_)() = nullptr;
};

}  // namespace qv

#endif  // QV_SYNC_STORE_FUNCTION_H
