// What every scripted store library offers to tests that do not care which one it is, and what all of them are made of.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_STORE_H

#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/handset/handset.h"

namespace qv_test {

/// What an entry point is for.
enum class StoreRole : std::uint8_t { kCount, kList, kRead, kInsert, kUpdate, kDelete, kDeleteAll };

class ScriptedStore {
 public:
  virtual ~ScriptedStore() = default;
  ScriptedStore(const ScriptedStore&) = delete;
  ScriptedStore& operator=(const ScriptedStore&) = delete;

  /// The name that the agent loads it by.
  const std::u16string& library() const { return library_; }
  /// The role of an entry point as calls tell it; none for one that only this store has.
  virtual std::optional<StoreRole> RoleOf(const std::string& /*entry_point*/) const { return std::nullopt; }

  /// Each call in order: the entry point, then what it was asked.
  std::vector<std::string> calls;
  /// The calls of one entry point.
  std::vector<std::string> CallsOf(const std::string& entry_point) const;

  /// The n-th call that answers a status fails (1 is the first); 0 for none.
  unsigned fail_call = 0;
  bool failed_a_call = false;

 protected:
  ScriptedStore() = default;

  /// Makes a library of these entry points. `missing` are taken out, or moved to `missing_address`.
  void Install(std::u16string_view library, handset::EntryPoints entry_points, const std::set<std::u16string>& missing,
               std::uintptr_t missing_address);

 private:
  std::u16string library_;
};

/// An entry point's address as a library knows it.
template <typename Function>
coredll::FARPROC AddressOf(Function* entry_point) {
  return reinterpret_cast<coredll::FARPROC>(entry_point);
}

/// A copy in a block of the agent's. Tries twice: running out of memory is the handset's failure, not the store's.
template <typename Byte>
Byte* NewBlock(const Byte* bytes, std::size_t size) {
  void* block = coredll::malloc(size);
  if (block == nullptr) block = coredll::malloc(size);
  if (size != 0) std::memcpy(block, bytes, size);
  return static_cast<Byte*>(block);
}

/// `count` ids, one every `stride` bytes: "[5 6]".
std::string IdList(const void* ids, std::size_t count, std::size_t stride = 4);

/// Blocks handed to a store must lie where a handset's processor can read whole words of them, texts where it can read
/// characters.
void ExpectAligned(const char* what, const void* block, std::size_t alignment = 4);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_STORE_H
