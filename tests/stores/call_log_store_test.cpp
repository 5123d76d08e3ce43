// CallLogStore.dll: one table of calls, whose entry points pass everything on to the record store.
#include <array>

#include "host/stores/message_kinds.h"
#include "host/stores/store_library.h"
#include "tests/stores/library_file.h"
#include "tests/stores/store_test.h"

namespace {

struct CallLogStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  Status (*const count)() = Find<Status()>("EXPCALLHISTORY_Sync_GetAllRecNum");
  Status (*const list)(std::uint32_t*, qv::SyncInfoEntry*) =
      Find<Status(std::uint32_t*, qv::SyncInfoEntry*)>("EXPCALLHISTORY_Sync_GetAllidTime");
  Status (*const read)(std::uint32_t, Ids, void*) = Find<Status(std::uint32_t, Ids, void*)>("EXPCALLHISTORY_Sync_Read");
  Status (*const insert)(const void*,
                         std::uint32_t*) = Find<Status(const void*, std::uint32_t*)>("EXPCALLHISTORY_Sync_Insert");
  Status (*const update)(std::uint32_t,
                         const void*) = Find<Status(std::uint32_t, const void*)>("EXPCALLHISTORY_Sync_Update");
  Status (*const del)(std::uint32_t, Ids) = Find<Status(std::uint32_t, Ids)>("EXPCALLHISTORY_Sync_Del");
  Status (*const del_all)() = Find<Status()>("EXPCALLHISTORY_Sync_DelAll");
};

class CallLogStoreTest : public StoreTest {
 protected:
  std::uint32_t Insert(const Record& record) const {
    std::uint32_t id = 0;
    EXPECT_EQ(library_.insert(record.data(), &id), stores::kDone);
    return id;
  }
  Record Read(std::uint32_t id) const {
    Record record(layout_.store_size);
    EXPECT_EQ(library_.read(1, &id, record.data()), stores::kDone);
    return record;
  }
  Record WithId(std::uint32_t id, Record record) const {
    PutId(layout_, id, record);
    return record;
  }

  const qv::layout::RecordLayout& layout_ = stores::kCallKinds[0].layout;
  CallLogStoreLibrary library_{QV_CALL_LOG_STORE};
};

TEST_F(CallLogStoreTest, CallsAreInsertedReadAndUpdated) {
  const Record first = RandomRecord(layout_, random_);
  const std::uint32_t id = Insert(first);
  EXPECT_EQ(Read(id), WithId(id, first));
  const Record second = RandomRecord(layout_, random_);
  ASSERT_EQ(library_.update(id, second.data()), stores::kDone);
  EXPECT_EQ(Read(id), WithId(id, second));
}

TEST_F(CallLogStoreTest, CallsAreCountedListedAndDeleted) {
  for (int i = 0; i < 3; ++i) Insert(RandomRecord(layout_, random_));
  const std::array<std::uint32_t, 2> doomed = {1, 3};
  ASSERT_EQ(library_.del(2, doomed.data()), stores::kDone);
  std::array<qv::SyncInfoEntry, 4> info{};
  std::uint32_t count = info.size();
  ASSERT_EQ(library_.list(&count, info.data()), stores::kDone);
  EXPECT_EQ(count, library_.count());
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(info[0].id, 2u);
  ASSERT_EQ(library_.del_all(), stores::kDone);
  EXPECT_EQ(library_.count(), 0u);
}

TEST_F(CallLogStoreTest, UnknownIdsAndNullPointersAreRefused) {
  const Record record(layout_.store_size);
  const std::uint32_t unknown = 9;
  std::uint32_t id = 0;
  EXPECT_EQ(library_.update(unknown, record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(1, &unknown), stores::kUnknownRecord);
  EXPECT_EQ(library_.insert(nullptr, &id), stores::kNullPointer);
  EXPECT_EQ(library_.insert(record.data(), nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.read(1, nullptr, nullptr), stores::kNullPointer);
}

}  // namespace
