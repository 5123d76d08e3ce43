// The common part of the entry points of scripted stores with one table.
#include "tests/support/scripted_table_store.h"

#include <algorithm>
#include <cstring>

namespace qv_test {

std::vector<std::string> ScriptedTableStore::CallsOf(const std::string& entry_point) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.substr(0, call.find(' ')) == entry_point) found.push_back(call);
  }
  return found;
}

void ScriptedTableStore::Install(std::u16string_view library, handset::EntryPoints entry_points,
                                 const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  for (const std::u16string& name : missing) {
    EXPECT_EQ(entry_points.erase(name), 1u) << "the store never had what it is to lack";
    if (missing_address != 0) entry_points[name] = reinterpret_cast<coredll::FARPROC>(missing_address);
  }
  handset::InstallLibrary(library, std::move(entry_points));
}

std::uint32_t ScriptedTableStore::Begin(const std::string& entry_point, const std::string& arguments) {
  calls.push_back(entry_point + arguments);
  std::uint32_t status = 0;
  if (const auto told = statuses.find(entry_point); told != statuses.end()) status = told->second;
  if (++calls_with_status_ == fail_call) status = 0xFFFFFFFF;
  failed_a_call = failed_a_call || status != 0;
  return status;
}

std::uint32_t ScriptedTableStore::List(const std::vector<Listed>& records, std::uint32_t* count,
                                       std::uint32_t* entries) {
  ExpectAligned("the count's place", count);
  ExpectAligned("the list", entries);
  if (const std::uint32_t status = Begin("GetAllidTime", " room " + std::to_string(*count)); status != 0) return status;
  if (fills_nothing.contains("GetAllidTime")) return 0;
  const std::size_t listed = std::min<std::size_t>(*count, records.size());
  for (std::size_t i = 0; i < listed; ++i) {
    const std::uint32_t words[] = {records[i].id, 0xAAAAAAAA, static_cast<std::uint32_t>(records[i].time),
                                   static_cast<std::uint32_t>(records[i].time >> 32)};
    std::memcpy(entries + 4 * i, words, sizeof(words));
  }
  *count = claimed_listed.value_or(static_cast<std::uint32_t>(listed));
  return 0;
}

std::string ScriptedTableStore::IdList(std::uint32_t count, const std::uint32_t* ids) {
  ExpectAligned("the list of ids", ids);
  std::string list = " [";
  for (std::uint32_t i = 0; i < count; ++i) list += (i == 0 ? "" : " ") + std::to_string(ids[i]);
  return list + "]";
}

void ScriptedTableStore::ExpectAligned(const char* what, const void* buffer) {
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % 4, 0u) << what << " is not on a multiple of 4";
}

}  // namespace qv_test
