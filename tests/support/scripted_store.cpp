// The common part of all scripted stores.
#include "tests/support/scripted_store.h"

#include <gtest/gtest.h>

namespace qv_test {

std::vector<std::string> ScriptedStore::CallsOf(const std::string& entry_point) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.substr(0, call.find(' ')) == entry_point) found.push_back(call);
  }
  return found;
}

void ScriptedStore::Install(std::u16string_view library, handset::EntryPoints entry_points,
                            const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  for (const std::u16string& name : missing) {
    EXPECT_EQ(entry_points.erase(name), 1u) << "the store never had what it is to lack";
    if (missing_address != 0) entry_points[name] = reinterpret_cast<coredll::FARPROC>(missing_address);
  }
  library_ = library;
  handset::InstallLibrary(library, std::move(entry_points));
}

std::string IdList(const void* ids, std::size_t count, std::size_t stride) {
  std::string list = "[";
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t id = 0;
    std::memcpy(&id, static_cast<const std::uint8_t*>(ids) + i * stride, sizeof(id));
    list += (i == 0 ? "" : " ") + std::to_string(id);
  }
  return list + "]";
}

void ExpectAligned(const char* what, const void* block, std::size_t alignment) {
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u)
      << what << " is not on a multiple of " << alignment;
}

}  // namespace qv_test
