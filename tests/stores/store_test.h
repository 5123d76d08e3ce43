// A handset of its own for each test of the stores.
#ifndef QV_TESTS_STORES_STORE_TEST_H
#define QV_TESTS_STORES_STORE_TEST_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <random>
#include <vector>

#include "host/handset/handset.h"
#include "host/stores/record_store.h"
#include "tests/stores/sample_records.h"

/// Starts the handset in an empty directory, which goes with it.
class FreshHandset {
 public:
  FreshHandset() {
    std::string name = (std::filesystem::temp_directory_path() / "stores_test.XXXXXX").string();
    root_ = ::mkdtemp(name.data());
    handset::Start(root_);
  }
  ~FreshHandset() { std::filesystem::remove_all(root_); }
  FreshHandset(const FreshHandset&) = delete;
  FreshHandset& operator=(const FreshHandset&) = delete;

  const std::filesystem::path& Root() const { return root_; }

 private:
  std::filesystem::path root_;
};

inline std::vector<qv::SyncInfoEntry> SyncInfoOf(const stores::RecordStore& store) {
  std::vector<qv::SyncInfoEntry> entries(store.Count());
  entries.resize(store.SyncInfo(entries));
  return entries;
}

inline std::vector<std::uint32_t> IdsOf(const stores::RecordStore& store) {
  std::vector<std::uint32_t> ids;
  for (const qv::SyncInfoEntry& entry : SyncInfoOf(store)) ids.push_back(entry.id);
  return ids;
}

inline stores::FileTime TimeOf(const qv::SyncInfoEntry& entry) {
  return static_cast<stores::FileTime>(std::uint64_t{entry.time_high} << 32 | entry.time_low);
}

inline Record ReadOne(const stores::RecordStore& store, std::uint32_t id) {
  Record record(store.Kind().layout.store_size, 0xEE);
  store.Read({&id, 1}, record.data());
  return record;
}

/// The present, give or take the test's own time.
inline stores::FileTime Now() {
  constexpr stores::FileTime kUnixEpoch = 116'444'736'000'000'000;
  return kUnixEpoch + static_cast<stores::FileTime>(::time(nullptr)) * 10'000'000;
}
inline constexpr stores::FileTime kMinute = 600'000'000;

class StoreTest : public testing::Test {
 protected:
  FreshHandset handset_;
  std::mt19937 random_{1};
};

#endif  // QV_TESTS_STORES_STORE_TEST_H
