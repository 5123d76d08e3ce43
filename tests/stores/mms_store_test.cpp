// MmsStore.dll: messages of any length in blocks of the handset's memory, and a configuration that is one.
#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <string>

#include "host/stores/mms_database.h"
#include "host/stores/store_library.h"
#include "tests/stores/library_file.h"
#include "tests/stores/store_test.h"

namespace {

struct Entry {
  char* text;
  std::uint32_t id;
  std::uint32_t value;
  std::uint8_t* data;
  std::int32_t data_length;
};

struct MmsStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  Status (*const count)() = Find<Status()>("mms_Sync_GetAllRecvNum");
  Status (*const list)(std::uint32_t*,
                       qv::SyncInfoEntry*) = Find<Status(std::uint32_t*, qv::SyncInfoEntry*)>("mms_Sync_getAllidTime");
  Status (*const read)(std::uint32_t, Ids, Entry*) = Find<Status(std::uint32_t, Ids, Entry*)>("mms_Sync_Read");
  Status (*const insert)(const Entry*, std::uint32_t*) = Find<Status(const Entry*, std::uint32_t*)>("mms_Sync_Insert");
  Status (*const update)(std::uint32_t, const Entry*) = Find<Status(std::uint32_t, const Entry*)>("mms_Sync_Update");
  Status (*const del)(std::uint32_t, Ids) = Find<Status(std::uint32_t, Ids)>("mms_SC_Sync_Del");
  Status (*const del_all)() = Find<Status()>("mms_Sync_DelAll");
  Status (*const get_config)(std::uint8_t**,
                             std::uint32_t*) = Find<Status(std::uint8_t**, std::uint32_t*)>("mms_Sync_GetConfig");
  Status (*const set_config)(const std::uint8_t*,
                             std::uint32_t) = Find<Status(const std::uint8_t*, std::uint32_t)>("mms_Sync_SetConfig");
};

/// A message as the agent hands it over: each part a block of just its size, none for nothing.
class GivenEntry : public Entry {
 public:
  GivenEntry(const std::string& given_text, std::uint32_t given_value, const std::string& given_data)
      : Entry{.text = Block(given_text),
              .id = 0,
              .value = given_value,
              .data = reinterpret_cast<std::uint8_t*>(Block(given_data)),
              .data_length = static_cast<std::int32_t>(given_data.size())} {}
  ~GivenEntry() {
    coredll::free(text);
    coredll::free(data);
  }
  GivenEntry(const GivenEntry&) = delete;
  GivenEntry& operator=(const GivenEntry&) = delete;

 private:
  static char* Block(const std::string& bytes) {
    if (bytes.empty()) return nullptr;
    auto* const block = static_cast<char*>(coredll::malloc(bytes.size()));
    std::memcpy(block, bytes.data(), bytes.size());
    return block;
  }
};

class MmsStoreTest : public StoreTest {
 protected:
  std::uint32_t Insert(const std::string& text, std::uint32_t value, const std::string& data) const {
    GivenEntry entry(text, value, data);
    std::uint32_t id = 0;
    EXPECT_EQ(library_.insert(&entry, &id), stores::kDone);
    return id;
  }
  /// "text/value/data" of a message, whose blocks are given back.
  std::string Read(std::uint32_t id) const {
    Entry entry = {};
    EXPECT_EQ(library_.read(1, &id, &entry), stores::kDone);
    EXPECT_EQ(entry.id, id);
    std::string message = std::string(entry.text) + "/" + std::to_string(entry.value) + "/";
    if (entry.data != nullptr) message.append(entry.data, entry.data + entry.data_length);
    coredll::free(entry.text);
    coredll::free(entry.data);
    return message;
  }
  std::string Config() const {
    std::uint8_t* block = nullptr;
    std::uint32_t size = 77;
    EXPECT_EQ(library_.get_config(&block, &size), stores::kDone);
    EXPECT_EQ(block == nullptr, size == 0);
    std::string config(block, block + size);
    coredll::free(block);
    return config;
  }

  MmsStoreLibrary library_{QV_MMS_STORE};
};

TEST_F(MmsStoreTest, AMessageIsAsLongAsItsBlocks) {
  const std::uint32_t id = Insert("Greetings", 7, std::string("\0\xFF\n", 3));
  EXPECT_EQ(Read(id), "Greetings/7/" + std::string("\0\xFF\n", 3));
  GivenEntry entry("你好", 8, "x");
  ASSERT_EQ(library_.update(id, &entry), stores::kDone);
  EXPECT_EQ(Read(id), "你好/8/x");
}

TEST_F(MmsStoreTest, EmptyPartsAreKeptAsSuch) {
  EXPECT_EQ(Read(Insert("", 0xFFFFFFFF, "")), "/4294967295/");
}

TEST_F(MmsStoreTest, TextOfAnyCodePageComesBack) {
  EXPECT_EQ(Read(Insert("\xC4\xE3\xBA\xC3", 0, "")), "\xC4\xE3\xBA\xC3/0/");
}

TEST_F(MmsStoreTest, WhatWasReadCanBeInsertedAgain) {
  std::uint32_t id = Insert("Again", 1, "data");
  Entry entry = {};
  ASSERT_EQ(library_.read(1, &id, &entry), stores::kDone);
  ASSERT_EQ(library_.insert(&entry, &id), stores::kDone);
  EXPECT_EQ(Read(id), "Again/1/data");
  coredll::free(entry.text);
  coredll::free(entry.data);
}

TEST_F(MmsStoreTest, ANegativeLengthIsNoData) {
  GivenEntry entry("t", 0, "");
  entry.data_length = -5;
  std::uint32_t id = 0;
  ASSERT_EQ(library_.insert(&entry, &id), stores::kDone);
  EXPECT_EQ(Read(id), "t/0/");
}

TEST_F(MmsStoreTest, MessagesAreCountedListedAndDeleted) {
  for (int i = 0; i < 3; ++i) Insert("t", 0, "d");
  const std::array<std::uint32_t, 2> doomed = {1, 3};
  ASSERT_EQ(library_.del(2, doomed.data()), stores::kDone);
  std::array<qv::SyncInfoEntry, 4> info{};
  std::uint32_t count = info.size();
  ASSERT_EQ(library_.list(&count, info.data()), stores::kDone);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(info[0].id, 2u);
  ASSERT_EQ(library_.del_all(), stores::kDone);
  EXPECT_EQ(library_.count(), 0u);
}

TEST_F(MmsStoreTest, AnUpdateMovesTheTime) {
  const std::uint32_t id = Insert("t", 0, "d");
  stores::Database database;
  stores::MmsDatabase mms(database);
  const stores::FileTime before = TimeOf(SyncInfoOf(mms.Messages())[0]);
  GivenEntry same("t", 0, "d");
  ASSERT_EQ(library_.update(id, &same), stores::kDone);
  EXPECT_GT(TimeOf(SyncInfoOf(mms.Messages())[0]), before);
}

TEST_F(MmsStoreTest, AnUnknownIdAmongThoseToReadHandsOutNothing) {
  const std::array<std::uint32_t, 2> ids = {Insert("t", 0, "d"), 99};
  std::array<Entry, 2> entries;
  EXPECT_EQ(library_.read(2, ids.data(), entries.data()), stores::kUnknownRecord);
  EXPECT_EQ(entries[0].text, nullptr);
  EXPECT_EQ(handset::TakeCensus().blocks, 0u);
}

TEST_F(MmsStoreTest, WithoutMemoryNothingIsHandedOut) {
  const std::uint32_t id = Insert("t", 0, "d");
  library_.set_config(reinterpret_cast<const std::uint8_t*>("c"), 1);
  Entry entry;
  for (const unsigned call : {1u, 2u}) {
    handset::FailCallOf("malloc", call);
    EXPECT_EQ(library_.read(1, &id, &entry), stores::kNoMemory);
  }
  std::uint8_t* block = nullptr;
  std::uint32_t size = 0;
  handset::FailCallOf("malloc", 1);
  EXPECT_EQ(library_.get_config(&block, &size), stores::kNoMemory);
  EXPECT_EQ(handset::TakeCensus().blocks, 0u);
}

TEST_F(MmsStoreTest, TheConfigurationIsOneBlockThatIsReplaced) {
  EXPECT_EQ(Config(), "");
  for (const std::string& block : {std::string("one\0two", 7), std::string("three"), std::string()}) {
    ASSERT_EQ(library_.set_config(reinterpret_cast<const std::uint8_t*>(block.data()), block.size()), stores::kDone);
    EXPECT_EQ(Config(), block);
  }
  EXPECT_EQ(library_.set_config(nullptr, 0), stores::kDone);
  EXPECT_EQ(library_.set_config(nullptr, 1), stores::kNullPointer);
}

TEST_F(MmsStoreTest, UnknownIdsAndNullPointersAreRefused) {
  GivenEntry entry("t", 0, "d");
  std::uint32_t number = 9;
  EXPECT_EQ(library_.update(9, &entry), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(1, &number), stores::kUnknownRecord);
  EXPECT_EQ(library_.insert(nullptr, &number), stores::kNullPointer);
  EXPECT_EQ(library_.insert(&entry, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.update(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.list(&number, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.read(1, nullptr, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.del(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.get_config(nullptr, &number), stores::kNullPointer);
  GivenEntry lengthy("t", 0, "");
  lengthy.data_length = 4;
  EXPECT_EQ(library_.insert(&lengthy, &number), stores::kNullPointer);
}

}  // namespace
