// SmsStore.dll: messages, their times as text, and a configuration whose folders keep their ids by name.
#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <string>

#include "host/stores/sms_database.h"
#include "host/stores/store_library.h"
#include "modules/messaging/sms_config.h"
#include "tests/stores/library_file.h"
#include "tests/stores/store_test.h"

namespace {

using qv::sms::ConfigBlock;
using testing::ElementsAre;
using testing::Pair;

/// An entry of the list of messages.
struct ListEntry {
  std::uint32_t id;
  char16_t modified[16];
};

struct SmsStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Ids = const std::uint32_t*;

  using LibraryFile::LibraryFile;

  Status (*const count)() = Find<Status()>("Sync_GetAllRecNum");
  Status (*const list)(std::uint32_t*, void*) = Find<Status(std::uint32_t*, void*)>("Sync_GetAllidTime");
  Status (*const read)(std::uint32_t, Ids, void*) = Find<Status(std::uint32_t, Ids, void*)>("Sync_Read");
  Status (*const insert)(const void*, std::uint32_t*) = Find<Status(const void*, std::uint32_t*)>("Sync_Insert");
  Status (*const update)(std::uint32_t, const void*) = Find<Status(std::uint32_t, const void*)>("Sync_Update");
  Status (*const del)(std::uint32_t, Ids) = Find<Status(std::uint32_t, Ids)>("Sync_Del");
  Status (*const del_all)() = Find<Status()>("Sync_DelAll");
  Status (*const get_config)(ConfigBlock*) = Find<Status(ConfigBlock*)>("Sync_GetSMSConfig");
  Status (*const set_config)(const ConfigBlock*) = Find<Status(const ConfigBlock*)>("Sync_SetSMSConfig");
};

using Sections = std::array<Record, qv::sms::kSections>;

std::size_t SizeOf(std::size_t section) {
  return qv::sms::kSectionLayouts[section].store_size;
}

class SmsStoreTest : public StoreTest {
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
  std::vector<ListEntry> List(std::uint32_t room) const {
    std::vector<ListEntry> entries(room);
    EXPECT_EQ(library_.list(&room, entries.data()), stores::kDone);
    entries.resize(room);
    return entries;
  }

  std::uint32_t SetConfig(Sections sections) const {
    ConfigBlock config = {};
    for (std::size_t i = 0; i < sections.size(); ++i) {
      config.sections[i] = {static_cast<std::int32_t>(sections[i].size() / SizeOf(i)), sections[i].data()};
    }
    return library_.set_config(&config);
  }
  /// Gives the arrays back, as a caller must.
  Sections GetConfig() const {
    ConfigBlock config = {};
    EXPECT_EQ(library_.get_config(&config), stores::kDone);
    Sections sections;
    for (std::size_t i = 0; i < sections.size(); ++i) {
      const auto* const entries = static_cast<const std::uint8_t*>(config.sections[i].entries);
      sections[i].assign(entries, entries + config.sections[i].count * static_cast<std::int32_t>(SizeOf(i)));
      coredll::free(config.sections[i].entries);
    }
    return sections;
  }

  static void AppendFolder(std::uint32_t id, std::u16string_view name, Record& folders) {
    Record folder(SizeOf(qv::sms::kFolders));
    qv::layout::StoreSlot(qv::sms::kFolderId, folder.data(), id);
    std::memcpy(folder.data() + qv::sms::kFolderName.offset, name.data(), name.size() * sizeof(name[0]));
    folders.insert(folders.end(), folder.begin(), folder.end());
  }
  /// The desktop's ids count from 50.
  void SetFolders(std::initializer_list<std::u16string_view> names) const {
    Sections sections;
    std::uint32_t id = 50;
    for (const std::u16string_view name : names) AppendFolder(id++, name, sections[qv::sms::kFolders]);
    EXPECT_EQ(SetConfig(sections), stores::kDone);
  }
  std::vector<std::pair<std::uint32_t, std::u16string>> Folders() const {
    const Record records = GetConfig()[qv::sms::kFolders];
    std::vector<std::pair<std::uint32_t, std::u16string>> folders;
    for (std::size_t i = 0; i < records.size(); i += SizeOf(qv::sms::kFolders)) {
      std::u16string name(qv::sms::kFolderName.size / 2, u'\0');
      std::memcpy(name.data(), &records[i + qv::sms::kFolderName.offset], qv::sms::kFolderName.size);
      folders.emplace_back(qv::layout::LoadSlot(qv::sms::kFolderId, &records[i]), name.c_str());
    }
    return folders;
  }

  const qv::layout::RecordLayout& layout_ = stores::kSmsKind.layout;
  SmsStoreLibrary library_{QV_SMS_STORE};
};

TEST_F(SmsStoreTest, MessagesAreInsertedReadUpdatedAndDeleted) {
  Record record = RandomRecord(layout_, random_);
  const std::uint32_t id = Insert(record);
  PutId(layout_, id, record);
  EXPECT_EQ(Read(id), record);
  record = RandomRecord(layout_, random_);
  ASSERT_EQ(library_.update(id, record.data()), stores::kDone);
  PutId(layout_, id, record);
  EXPECT_EQ(Read(id), record);
  ASSERT_EQ(library_.del(1, &id), stores::kDone);
  EXPECT_EQ(library_.count(), 0u);
}

TEST_F(SmsStoreTest, TheListTellsTimesAsFourteenDigits) {
  constexpr stores::FileTime kTime = 127'809'253'870'000'000;  // 2006-01-05 09:03:07
  stores::Database database;
  stores::SmsDatabase(database).Messages().Insert(Record(layout_.store_size).data(), kTime + 9'999'999);
  const std::vector<ListEntry> entries = List(5);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].id, 1u);
  EXPECT_EQ(std::u16string(entries[0].modified), u"20060105090307");
}

TEST_F(SmsStoreTest, EachChangeShowsInTheList) {
  const Record record(layout_.store_size);
  const std::uint32_t id = Insert(record);
  std::u16string last = List(1)[0].modified;
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(library_.update(id, record.data()), stores::kDone);
    EXPECT_GT(std::u16string(List(1)[0].modified), last);
    last = List(1)[0].modified;
  }
}

TEST_F(SmsStoreTest, TheListStopsWhereTheRoomEnds) {
  for (int i = 0; i < 3; ++i) Insert(Record(layout_.store_size));
  EXPECT_EQ(List(2).size(), 2u);
}

TEST_F(SmsStoreTest, AnEmptyConfigurationHasNoArrays) {
  ConfigBlock config = {};
  ASSERT_EQ(library_.get_config(&config), stores::kDone);
  for (const auto& [count, entries] : config.sections) {
    EXPECT_EQ(count, 0);
    EXPECT_EQ(entries, nullptr);
  }
}

TEST_F(SmsStoreTest, TheConfigurationComesBackInOrderAndReplacesTheOneBefore) {
  for (const std::size_t entries : {3u, 1u}) {
    Sections sections;
    for (std::size_t i = 0; i < sections.size(); ++i) {
      if (i == qv::sms::kFolders) continue;  // has ids of its own
      for (std::size_t k = 0; k < entries; ++k) {
        Record record = NamedBits(qv::sms::kSectionLayouts[i]);
        for (std::uint8_t& byte : record) byte = static_cast<std::uint8_t>(byte & random_());
        sections[i].insert(sections[i].end(), record.begin(), record.end());
      }
    }
    ASSERT_EQ(SetConfig(sections), stores::kDone);
    EXPECT_EQ(GetConfig(), sections);
  }
  EXPECT_EQ(handset::TakeCensus().blocks, 0u);
}

TEST_F(SmsStoreTest, FoldersKeepTheirIdsByName) {
  SetFolders({u"Inbox", u"家人", u"Kept"});
  EXPECT_THAT(Folders(), ElementsAre(Pair(1, u"Inbox"), Pair(2, u"家人"), Pair(3, u"Kept")));
  SetFolders({u"Kept", u"New", u"Inbox", u"inbox"});
  EXPECT_THAT(Folders(), ElementsAre(Pair(1, u"Inbox"), Pair(3, u"Kept"), Pair(4, u"New"), Pair(5, u"inbox")));
}

TEST_F(SmsStoreTest, FoldersOfOneNameAreFoldersOfTheirOwn) {
  SetFolders({u"A", u"A"});
  SetFolders({u"A", u"A", u"A"});
  EXPECT_THAT(Folders(), ElementsAre(Pair(1, u"A"), Pair(2, u"A"), Pair(3, u"A")));
}

TEST_F(SmsStoreTest, DelAllLeavesTheConfiguration) {
  SetFolders({u"Inbox"});
  Insert(Record(layout_.store_size));
  ASSERT_EQ(library_.del_all(), stores::kDone);
  EXPECT_EQ(library_.count(), 0u);
  EXPECT_THAT(Folders(), ElementsAre(Pair(1, u"Inbox")));
}

TEST_F(SmsStoreTest, AConfigurationThatIsNotThereChangesNothing) {
  SetFolders({u"Inbox"});
  ConfigBlock config = {};
  config.sections[qv::sms::kFolders].count = -1;
  EXPECT_EQ(library_.set_config(&config), stores::kOutOfBounds);
  config.sections[qv::sms::kFolders].count = 1;
  EXPECT_EQ(library_.set_config(&config), stores::kOutOfBounds);
  EXPECT_EQ(library_.set_config(nullptr), stores::kNullPointer);
  EXPECT_THAT(Folders(), ElementsAre(Pair(1, u"Inbox")));
}

TEST_F(SmsStoreTest, WithoutMemoryNoPartOfTheConfigurationIsHandedOut) {
  Sections sections;
  AppendFolder(1, u"Inbox", sections[qv::sms::kFolders]);
  sections[0].resize(SizeOf(0));
  ASSERT_EQ(SetConfig(sections), stores::kDone);
  handset::FailCallOf("malloc", 2);
  ConfigBlock config = {};
  EXPECT_EQ(library_.get_config(&config), stores::kNoMemory);
  EXPECT_EQ(config.sections[0].entries, nullptr);
  EXPECT_EQ(handset::TakeCensus().blocks, 0u);
}

TEST_F(SmsStoreTest, UnknownIdsAndNullPointersAreRefused) {
  Record record(layout_.store_size);
  const std::uint32_t unknown = 9;
  std::uint32_t number = 1;
  EXPECT_EQ(library_.read(1, &unknown, record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.update(unknown, record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(1, &unknown), stores::kUnknownRecord);
  EXPECT_EQ(library_.list(nullptr, record.data()), stores::kNullPointer);
  EXPECT_EQ(library_.list(&number, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.read(1, nullptr, record.data()), stores::kNullPointer);
  EXPECT_EQ(library_.insert(nullptr, &number), stores::kNullPointer);
  EXPECT_EQ(library_.insert(record.data(), nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.update(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.del(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.get_config(nullptr), stores::kNullPointer);
}

}  // namespace
