// UniMailStore.dll: mails of two tables with chains of nodes and long texts, and folders and rules as whole lists.
#include <gmock/gmock.h>

#include <array>
#include <bit>
#include <deque>
#include <string>

#include "host/stores/store_library.h"
#include "host/stores/unified_mail_database.h"
#include "tests/stores/library_file.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

using stores::kMailsReceived;
using stores::kMailsSent;
using testing::ElementsAre;
using testing::IsEmpty;

struct UnifiedMailStoreLibrary : LibraryFile {
  using Status = std::uint32_t;
  using Number = std::uint32_t;
  using Ids = const std::uint32_t*;
  using GetList = Status(Number*, std::uint8_t*);
  using SetList = Status(Number, const std::uint8_t*);

  using LibraryFile::LibraryFile;

  Number (*const count)(std::uint8_t) = Find<Number(std::uint8_t)>("UMAIL_GetAllRecNum");
  Status (*const list)(std::uint8_t, Number*, void*) = Find<Status(std::uint8_t, Number*, void*)>("UMAIL_GetAllidTime");
  Status (*const read)(std::uint8_t, Number, void*) = Find<Status(std::uint8_t, Number, void*)>("UMAIL_GetRec");
  Status (*const insert)(const void*, Number*,
                         std::uint8_t) = Find<Status(const void*, Number*, std::uint8_t)>("UMAIL_AddOneRec");
  Status (*const update)(const void*, Number,
                         std::uint8_t) = Find<Status(const void*, Number, std::uint8_t)>("UMAIL_UpdateRec");
  Status (*const del_one)(Number, std::uint8_t) = Find<Status(Number, std::uint8_t)>("UMAIL_DelRec");
  Status (*const del)(Ids, Number, std::uint8_t) = Find<Status(Ids, Number, std::uint8_t)>("tag_UMAIL_DelRec");
  Status (*const get_folders)(Number*,
                              std::uint8_t**) = Find<Status(Number*, std::uint8_t**)>("UMAIL_GetSubFolderList");
  SetList* const set_folders = Find<SetList>("UMAIL_WriteFolderList");
};

/// Get and set of the two lists of rules.
constexpr std::array<std::array<const char*, 2>, 2> kRuleLists = {{
    {"UMAIL_GetAllSubFolderFilterRecs", "UMAIL_WriteAllSubFolderFilterRecs"},
    {"UMAIL_GetAllSenderAppointRecs", "UMAIL_WriteAllSenderAppointRecs"},
}};

constexpr std::size_t kRecordSize = 776;
constexpr std::size_t kChains[] = {752, 756, 760, 764};  ///< Of kinds 0 to 2, and of the longer items.
constexpr std::size_t kNextAt[] = {96, 96, 96, 160};
constexpr char kNiHao[] = "\xC4\xE3\xBA\xC3";  ///< 你好 in the handset's code page.

constexpr std::size_t kTextAt = 768;
constexpr std::size_t kTextLengthAt = 772;

std::uint32_t AddressOf(const void* place) {
  return std::bit_cast<std::uint32_t>(place);
}

/// A record with what it points at.
class Mail {
 public:
  Mail() : record_(kRecordSize) {}
  Mail(const Mail&) = delete;
  Mail& operator=(const Mail&) = delete;

  Mail& Put(std::size_t offset, std::string_view bytes) {
    std::ranges::copy(bytes, record_.begin() + static_cast<std::ptrdiff_t>(offset));
    return *this;
  }
  Mail& PutNumber(std::size_t offset, std::uint32_t number) {
    qv::layout::StoreNumber(&record_[offset], 4, number);
    return *this;
  }
  /// A node at the end of a chain, with a text at each of these offsets in it.
  Mail& Add(std::size_t chain, std::initializer_list<std::pair<std::size_t, std::string_view>> texts) {
    Record& node = nodes_.emplace_back(kNextAt[chain] + 4);
    for (const auto& [offset, text] : texts) {
      std::ranges::copy(text, node.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    std::uint8_t*& link = links_[chain];
    qv::layout::StoreNumber(link == nullptr ? &record_[kChains[chain]] : link, 4, AddressOf(node.data()));
    link = &node[kNextAt[chain]];
    return *this;
  }
  Mail& SetText(std::string_view text) {
    text_ = text;
    return PutNumber(kTextAt, AddressOf(text_.data()))
        .PutNumber(kTextLengthAt, static_cast<std::uint32_t>(text.size()));
  }
  const std::uint8_t* data() const { return record_.data(); }

 private:
  Record record_;
  std::deque<Record> nodes_;
  std::uint8_t* links_[4] = {};
  std::string text_;
};

class UnifiedMailStoreTest : public StoreTest {
 protected:
  std::uint32_t Insert(const Mail& mail, std::uint8_t table = kMailsReceived) const {
    std::uint32_t id = 0;
    EXPECT_EQ(library_.insert(mail.data(), &id, table), stores::kDone);
    return id;
  }
  Record Read(std::uint32_t id, std::uint8_t table = kMailsReceived) const {
    Record record(kRecordSize, 0xEE);
    EXPECT_EQ(library_.read(table, id, record.data()), stores::kDone);
    return record;
  }
  static std::uint32_t NumberAt(const Record& record, std::size_t offset) {
    return qv::layout::LoadNumber(&record[offset], 4);
  }
  /// The texts that begin at this offset in the nodes of a chain.
  static std::vector<std::string> Chain(const Record& record, std::size_t chain, std::size_t offset) {
    std::vector<std::string> texts;
    for (std::uint32_t address = NumberAt(record, kChains[chain]); address != 0;) {
      const auto* const node = std::bit_cast<const std::uint8_t*>(address);
      texts.emplace_back(reinterpret_cast<const char*>(node + offset));
      address = qv::layout::LoadNumber(node + kNextAt[chain], 4);
    }
    return texts;
  }
  static std::string TextOf(const Record& record) {
    const auto* const text = std::bit_cast<const char*>(NumberAt(record, kTextAt));
    return {text, NumberAt(record, kTextLengthAt)};
  }
  stores::FileTime Time() const {
    stores::Database database;
    return TimeOf(SyncInfoOf(stores::UnifiedMailDatabase(database).Tables()[kMailsReceived])[0]);
  }
  Record GetFolders() const {
    std::uint8_t* folders = nullptr;
    std::uint32_t count = 77;
    EXPECT_EQ(library_.get_folders(&count, &folders), stores::kDone);
    EXPECT_EQ(folders == nullptr, count == 0);
    const Record records(folders, folders + count * std::size_t{272});
    coredll::free(folders);
    return records;
  }

  UnifiedMailStoreLibrary library_{QV_UNIFIED_MAIL_STORE};
};

TEST_F(UnifiedMailStoreTest, AMailComesBackWithItsChainsAndItsText) {
  Mail mail;
  mail.PutNumber(4, 0x00C3FFFF).PutNumber(8, 0xFEDCBA98).Put(12, "\xD6\x07\x01").Put(36, "Anna");
  mail.Put(86, "b").Put(216, "c").Put(418, "d").Put(548, "e");
  mail.Add(0, {{4, "To 1"}, {29, "to1@example.com"}}).Add(2, {{4, "Bcc"}}).Add(0, {{4, "To 2"}});
  mail.Add(3, {{8, "Picture"}}).Add(3, {{8, "Sound"}});
  mail.SetText("A text of some length");
  const Record read = Read(Insert(mail));
  const Record sent(mail.data(), mail.data() + 752);
  EXPECT_EQ(NumberAt(read, 0), 1u);
  EXPECT_EQ(Record(read.begin() + 4, read.begin() + 752), Record(sent.begin() + 4, sent.end()));
  EXPECT_THAT(Chain(read, 0, 4), ElementsAre("To 1", "To 2"));
  EXPECT_THAT(Chain(read, 0, 29), ElementsAre("to1@example.com", ""));
  EXPECT_THAT(Chain(read, 1, 4), IsEmpty());
  EXPECT_THAT(Chain(read, 2, 4), ElementsAre("Bcc"));
  EXPECT_THAT(Chain(read, 3, 8), ElementsAre("Picture", "Sound"));
  EXPECT_EQ(TextOf(read), "A text of some length");
}

TEST_F(UnifiedMailStoreTest, AnUpdateReplacesAll) {
  Mail before, after;
  before.Put(36, "before").Add(0, {{4, "x"}}).Add(3, {{8, "y"}}).SetText("long text");
  after.Put(36, "after").Add(1, {{4, "z"}});
  const std::uint32_t id = Insert(before);
  ASSERT_EQ(library_.update(after.data(), id, kMailsReceived), stores::kDone);
  const Record read = Read(id);
  EXPECT_STREQ(reinterpret_cast<const char*>(&read[36]), "after");
  EXPECT_THAT(Chain(read, 0, 4), IsEmpty());
  EXPECT_THAT(Chain(read, 1, 4), ElementsAre("z"));
  EXPECT_THAT(Chain(read, 3, 8), IsEmpty());
  EXPECT_EQ(TextOf(read), "");
}

TEST_F(UnifiedMailStoreTest, ATextKeepsEachByteWhateverTheyAre) {
  for (const std::string& text : {std::string("Dear\0\0\0\0", 8), std::string("\xFF\xC3(\x80"),
                                  std::string(100'000, 'x'), std::string(kNiHao), std::string()}) {
    EXPECT_EQ(TextOf(Read(Insert(Mail().SetText(text)))), text);
  }
  EXPECT_EQ(Shell("SELECT id, typeof(text) FROM unified_mails_received WHERE id < 4"), "1|blob\n2|blob\n3|text\n");
  EXPECT_EQ(Shell("SELECT text FROM unified_mails_received WHERE id = 4"), "你好\n");
}

TEST_F(UnifiedMailStoreTest, TheTablesAreApart) {
  Insert(Mail().Put(36, "received"));
  Insert(Mail().Put(36, "received too"));
  Insert(Mail().Put(36, "sent"), kMailsSent);
  EXPECT_EQ(library_.count(kMailsReceived), 2u);
  EXPECT_EQ(library_.count(kMailsSent), 1u);
  EXPECT_EQ(Read(1, kMailsSent)[36], 's');
  std::array<qv::SyncInfoEntry, 4> info{};
  std::uint32_t count = info.size();
  ASSERT_EQ(library_.list(kMailsReceived, &count, info.data()), stores::kDone);
  EXPECT_EQ(count, 2u);
  EXPECT_NEAR(static_cast<double>(TimeOf(info[1]) - Now()), 0, kMinute);
  ASSERT_EQ(library_.del_one(1, kMailsReceived), stores::kDone);
  const std::uint32_t second = 2, first = 1;
  ASSERT_EQ(library_.del(&second, 1, kMailsReceived), stores::kDone);
  EXPECT_EQ(library_.count(kMailsReceived), 0u);
  ASSERT_EQ(library_.del(&first, 1, kMailsSent), stores::kDone);
  EXPECT_EQ(library_.count(kMailsSent), 0u);
}

TEST_F(UnifiedMailStoreTest, ItemsAreRowsOfTheirMail) {
  Insert(Mail().Add(0, {{4, "To"}}).Add(2, {{4, "Bcc"}, {29, "b@c"}}).Add(3, {{0, "\x05"}, {8, "File"}}));
  EXPECT_EQ(Shell("SELECT * FROM unified_mails_received_items_182"), "1|1|0|To|\n1|2|2|Bcc|b@c\n");
  EXPECT_EQ(Shell("SELECT * FROM unified_mails_received_items_308"), "1|1|5|0|File\n");
  const stores::FileTime before = Time();
  Shell("INSERT INTO unified_mails_received_items_182 VALUES (1, 3, 1, '你好', ''), (1, 4, 7, 'no kind', '')");
  EXPECT_GT(Time(), before);
  const Record read = Read(1);
  EXPECT_THAT(Chain(read, 0, 4), ElementsAre("To"));
  EXPECT_THAT(Chain(read, 1, 4), ElementsAre(kNiHao));
  Shell("DELETE FROM unified_mails_received");
  EXPECT_EQ(Shell("SELECT count(*) FROM unified_mails_received_items_182"), "0\n");
}

TEST_F(UnifiedMailStoreTest, ATextWrittenInTheShellIsRead) {
  Insert(Mail());
  Shell("UPDATE unified_mails_received SET text = '你好', text_1 = '你好'");
  const Record read = Read(1);
  EXPECT_EQ(TextOf(read), kNiHao);
  EXPECT_STREQ(reinterpret_cast<const char*>(&read[36]), kNiHao);
}

TEST_F(UnifiedMailStoreTest, ATimeThatIsGivenIsTheMailsWhateverBelongsToIt) {
  stores::Database database;
  stores::UnifiedMailDatabase mails(database);
  const stores::UnifiedMail mail = {
      .record = Record(kRecordSize), .items_182 = Record(102), .items_308 = Record(164), .text = "text"};
  mails.Insert(kMailsReceived, mail, 77);
  EXPECT_EQ(Time(), 77);
}

TEST_F(UnifiedMailStoreTest, FoldersAreReplacedAsAWhole) {
  EXPECT_THAT(GetFolders(), IsEmpty());
  for (const std::uint32_t count : {40u, 1u, 0u}) {
    Record folders(count * std::size_t{272});
    for (std::uint8_t& byte : folders) byte = static_cast<std::uint8_t>(random_());
    ASSERT_EQ(library_.set_folders(count, folders.data()), stores::kDone);
    EXPECT_EQ(GetFolders(), folders);
  }
  EXPECT_EQ(handset::TakeCensus().blocks, 0u);
}

TEST_F(UnifiedMailStoreTest, RulesAreReplacedAsAWholeAndAtMostThirty) {
  for (const auto& [get, set] : kRuleLists) {
    const auto get_rules = library_.Find<UnifiedMailStoreLibrary::GetList>(get);
    const auto set_rules = library_.Find<UnifiedMailStoreLibrary::SetList>(set);
    Record rules(2820), read(2820);
    for (std::uint8_t& byte : rules) byte = static_cast<std::uint8_t>(random_());
    std::uint32_t count = 0;
    ASSERT_EQ(set_rules(30, rules.data()), stores::kDone);
    ASSERT_EQ(get_rules(&count, read.data()), stores::kDone);
    EXPECT_EQ(count, 30u);
    EXPECT_EQ(read, rules);
    EXPECT_EQ(set_rules(31, rules.data()), stores::kOutOfBounds);
    EXPECT_EQ(set_rules(0xFFFFFFFF, rules.data()), stores::kOutOfBounds);
    EXPECT_EQ(set_rules(1, nullptr), stores::kNullPointer);
    EXPECT_EQ(get_rules(nullptr, read.data()), stores::kNullPointer);
    EXPECT_EQ(get_rules(&count, nullptr), stores::kNullPointer);
  }
  Shell("INSERT INTO unified_mail_folder_rules DEFAULT VALUES");
  std::uint32_t count = 0;
  Record read(2820);
  ASSERT_EQ(library_.Find<UnifiedMailStoreLibrary::GetList>(kRuleLists[0][0])(&count, read.data()), stores::kDone);
  EXPECT_EQ(count, 30u);
}

TEST_F(UnifiedMailStoreTest, AChainInACircleIsRefused) {
  Record node(100);
  qv::layout::StoreNumber(&node[96], 4, AddressOf(node.data()));
  std::uint32_t id = 0;
  Mail mail;
  mail.PutNumber(kChains[1], AddressOf(node.data()));
  EXPECT_EQ(library_.insert(mail.data(), &id, kMailsReceived), stores::kOutOfBounds);
  EXPECT_EQ(library_.count(kMailsReceived), 0u);
}

TEST_F(UnifiedMailStoreTest, ACallThatFailsInBetweenChangesNothing) {
  const std::uint32_t id = Insert(Mail().Put(36, "before").Add(0, {{4, "To"}}));
  Shell(
      "CREATE TRIGGER full BEFORE INSERT ON unified_mails_received_items_308 BEGIN "
      "SELECT RAISE(ABORT, 'full'); END");
  Mail after;
  after.Put(36, "after").Add(0, {{4, "x"}}).Add(3, {{8, "y"}});
  EXPECT_EQ(library_.update(after.data(), id, kMailsReceived), stores::kDatabaseFailed);
  std::uint32_t new_id = 0;
  EXPECT_EQ(library_.insert(after.data(), &new_id, kMailsReceived), stores::kDatabaseFailed);
  EXPECT_EQ(library_.count(kMailsReceived), 1u);
  const Record read = Read(id);
  EXPECT_EQ(read[36], 'b');
  EXPECT_THAT(Chain(read, 0, 4), ElementsAre("To"));
}

TEST_F(UnifiedMailStoreTest, ASettingRefusesInserts) {
  stores::Database().SetSetting(stores::kUnifiedMailAddRefusal, 77);
  std::uint32_t id = 0;
  EXPECT_EQ(library_.insert(Mail().data(), &id, kMailsSent), 77u);
  EXPECT_EQ(library_.count(kMailsSent), 0u);
}

TEST_F(UnifiedMailStoreTest, WithoutMemoryNoFoldersAreHandedOut) {
  const Record folder(272);
  ASSERT_EQ(library_.set_folders(1, folder.data()), stores::kDone);
  handset::FailCallOf("malloc", 1);
  std::uint32_t count = 0;
  std::uint8_t* folders = nullptr;
  EXPECT_EQ(library_.get_folders(&count, &folders), stores::kNoMemory);
}

TEST_F(UnifiedMailStoreTest, WhatCannotBeMeantIsRefused) {
  Record record(kRecordSize);
  const std::uint32_t unknown = 9;
  std::uint32_t number = 1;
  EXPECT_EQ(library_.count(2), 0u);
  EXPECT_EQ(library_.insert(record.data(), &number, 2), stores::kUnknownTable);
  EXPECT_EQ(library_.update(record.data(), 1, 2), stores::kUnknownTable);
  EXPECT_EQ(library_.read(2, 1, record.data()), stores::kUnknownTable);
  EXPECT_EQ(library_.del_one(1, 2), stores::kUnknownTable);
  EXPECT_EQ(library_.read(kMailsSent, unknown, record.data()), stores::kUnknownRecord);
  EXPECT_EQ(library_.update(record.data(), unknown, kMailsSent), stores::kUnknownRecord);
  EXPECT_EQ(library_.del_one(unknown, kMailsSent), stores::kUnknownRecord);
  EXPECT_EQ(library_.del(&unknown, 1, kMailsSent), stores::kUnknownRecord);
  EXPECT_EQ(library_.read(kMailsSent, 1, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.insert(nullptr, &number, kMailsSent), stores::kNullPointer);
  EXPECT_EQ(library_.insert(record.data(), nullptr, kMailsSent), stores::kNullPointer);
  EXPECT_EQ(library_.update(nullptr, 1, kMailsSent), stores::kNullPointer);
  EXPECT_EQ(library_.list(kMailsSent, nullptr, record.data()), stores::kNullPointer);
  EXPECT_EQ(library_.list(kMailsSent, &number, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.del(nullptr, 1, kMailsSent), stores::kNullPointer);
  EXPECT_EQ(library_.del(&unknown, 0xFFFFFFFF, kMailsSent), stores::kOutOfBounds);
  EXPECT_EQ(library_.get_folders(nullptr, nullptr), stores::kNullPointer);
  EXPECT_EQ(library_.set_folders(1, nullptr), stores::kNullPointer);
  Mail mail;
  mail.PutNumber(kTextLengthAt, 5);
  EXPECT_EQ(library_.insert(mail.data(), &number, kMailsSent), stores::kNullPointer);
  for (const std::uint32_t length : {0x01000001u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    mail.SetText("x").PutNumber(kTextLengthAt, length);
    EXPECT_EQ(library_.insert(mail.data(), &number, kMailsSent), stores::kOutOfBounds);
    EXPECT_EQ(library_.set_folders(length, record.data()), stores::kOutOfBounds);
  }
  EXPECT_EQ(library_.count(kMailsSent), 0u);
}

}  // namespace
