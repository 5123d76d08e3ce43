// MailStore.dll: a class whose members hand out lists and take them, ids that depend on what is there already, and
// messages that lie in files of their own.
#include "platform/mail_store.h"

#include <gmock/gmock.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "host/stores/mail_database.h"
#include "host/stores/store_library.h"
#include "modules/mail/mail_layout.h"
#include "tests/stores/library_file.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

using mail_store::CMailDBSync;
using mail_store::Node;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

struct MailStoreLibrary : LibraryFile {
  using LibraryFile::LibraryFile;

  QV_THISCALL CMailDBSync* (*const construct)(CMailDBSync*) = Find<decltype(mail_store::Construct)>("CMailDBSync");
  QV_THISCALL int (*const init)(CMailDBSync*) = Find<decltype(mail_store::InitCEDB)>("InitCEDB");
  QV_THISCALL int (*const close)(CMailDBSync*) = Find<decltype(mail_store::CloseCEDB)>("CloseCEDB");
  QV_THISCALL int (*const disconnect)(CMailDBSync*) = Find<decltype(mail_store::DisConnectDB)>("DisConnectDB");
  decltype(&mail_store::Sync_SetUserInfo) set_user = Find<decltype(mail_store::Sync_SetUserInfo)>("Sync_SetUserInfo");
  decltype(&mail_store::Sync_SetUIDLInfo) set_uidls = Find<decltype(mail_store::Sync_SetUIDLInfo)>("Sync_SetUIDLInfo");
  decltype(&mail_store::Sync_SetFilterInfo) set_filter =
      Find<decltype(mail_store::Sync_SetFilterInfo)>("Sync_SetFilterInfo");
  decltype(&mail_store::Sync_QueryHeaderByUserId) query =
      Find<decltype(mail_store::Sync_QueryHeaderByUserId)>("Sync_QueryHeaderByUserId");
  decltype(&mail_store::Sync_SetFolderInfo) set_folder =
      Find<decltype(mail_store::Sync_SetFolderInfo)>("Sync_SetFolderInfo");
  decltype(&mail_store::Sync_SetMailInfo) set_mail = Find<decltype(mail_store::Sync_SetMailInfo)>("Sync_SetMailInfo");
};

/// By table number.
constexpr const char* kGetMembers[stores::kMailTables] = {
    "Sync_GetUserInfo",   "Sync_GetConfigInfo", "Sync_GetFilterInfo",     "Sync_GetLinkManInfo",
    "Sync_GetFolderInfo", "Sync_GetUIDLInfo",   "Sync_GetMailHeaderInfo", "Sync_GetMailAddressInfo"};

const qv::layout::RecordLayout& FormOf(std::size_t table) {
  return stores::kMailKinds[table].layout;
}

const qv::layout::Slot& SlotOf(std::size_t table, std::string_view name) {
  for (const qv::layout::Field& field : FormOf(table).fields) {
    if (field.name == name) return field.store;
  }
  throw std::logic_error("the form has no such field");
}

/// A node, which is filled by the names of its form.
class NodeOf {
 public:
  explicit NodeOf(std::size_t table) : table_(table), bytes_(FormOf(table).store_size) {}

  NodeOf& Set(std::string_view field, std::uint32_t value) {
    qv::layout::StoreSlot(SlotOf(table_, field), bytes_.data(), value);
    return *this;
  }
  NodeOf& Set(std::string_view field, std::u16string_view text) {
    std::memcpy(&bytes_[SlotOf(table_, field).offset], text.data(), 2 * text.size());
    return *this;
  }
  NodeOf& Set(std::string_view field, const Record& bytes) {
    std::ranges::copy(bytes, bytes_.begin() + SlotOf(table_, field).offset);
    return *this;
  }
  NodeOf& LinkTo(NodeOf& next) {
    Node* const pointer = next.get();
    std::memcpy(&bytes_[bytes_.size() - sizeof(pointer)], &pointer, sizeof(pointer));
    return *this;
  }
  Node* get() { return bytes_.data(); }

 private:
  std::size_t table_;
  Record bytes_;
};

NodeOf Account(std::uint32_t id, std::u16string_view name, std::u16string_view address = u"a@example.com") {
  return NodeOf(stores::kMailAccounts).Set("account_id", id).Set("text_1", name).Set("text_2", address);
}
NodeOf Config(std::uint32_t account, std::uint32_t setting) {
  return NodeOf(stores::kMailConfigs).Set("account_id", account).Set("setting_1", setting);
}
NodeOf Folder(std::uint32_t id, std::u16string_view name) {
  return NodeOf(stores::kMailFolders).Set("folder_id", id).Set("name", name);
}
NodeOf Filter(std::uint32_t id, std::uint32_t folder, std::u16string_view name) {
  return NodeOf(stores::kMailFilters).Set("filter_id", id).Set("folder_id", folder).Set("text_1", name);
}
NodeOf FilterContact(std::u16string_view name) {
  return NodeOf(stores::kMailFilterContacts).Set("filter_id", 99).Set("text_1", name);
}
NodeOf Uidl(std::u16string_view uidl) {
  return NodeOf(stores::kMailUidls).Set("uidl", uidl);
}
NodeOf Header(std::uint32_t id, std::uint32_t folder) {
  return NodeOf(stores::kMailMessages).Set("message_id", id).Set("folder_id", folder).Set("account_id", 77);
}
NodeOf Address(std::u16string_view name) {
  return NodeOf(stores::kMailAddresses).Set("message_id", 99).Set("text_1", name);
}

class MailDatabaseTest : public StoreTest {
 protected:
  MailDatabaseTest() {
    library_.construct(object_);
    EXPECT_EQ(library_.init(object_), 0);
  }
  ~MailDatabaseTest() override {
    EXPECT_EQ(library_.close(object_), 0);
    EXPECT_EQ(library_.disconnect(object_), 0);
    EXPECT_EQ(object_->virtual_table->scalar_deleting_destructor(object_, 1), object_);
    EXPECT_EQ(handset::TakeCensus(), handset::Census{});
  }

  int SetUser(NodeOf user, NodeOf config = NodeOf(stores::kMailConfigs)) const {
    int id = 0;
    EXPECT_EQ(library_.set_user(object_, user.get(), config.get(), &id), 0);
    return id;
  }
  int SetFolder(NodeOf folder, int account = 1) const {
    int id = 0;
    EXPECT_EQ(library_.set_folder(object_, folder.get(), account, &id), 0);
    return id;
  }
  long SetFilter(NodeOf filter, Node* contacts = nullptr, int account = 1) const {
    return library_.set_filter(object_, filter.get(), contacts, account, 0);
  }
  long SetMail(NodeOf header, std::string body = "", Node* addresses = nullptr) const {
    return library_.set_mail(object_, header.get(), addresses, static_cast<long>(body.size()), body.data());
  }
  /// An account 1 with a folder 3.
  void PutAccountAndFolder() const {
    ASSERT_EQ(SetUser(Account(1, u"Work")), 1);
    ASSERT_EQ(SetFolder(Folder(3, u"Inbox")), 3);
  }

  long Get(std::size_t table, long* head, long* count) const {
    return library_.Find<mail_store::Get>(kGetMembers[table])(object_, head, count);
  }
  /// The nodes without their pointers; the list is given back.
  static std::vector<Record> Take(Node* head, std::size_t table) {
    std::vector<Record> records;
    while (head != nullptr) {
      Node* const node = head;
      records.emplace_back(node, node + FormOf(table).store_size);
      EXPECT_EQ(handset::BlockSize(node), FormOf(table).store_size);
      std::memcpy(&head, node + FormOf(table).store_size - sizeof(head), sizeof(head));
      std::fill_n(records.back().end() - sizeof(head), sizeof(head), std::uint8_t{0});
      coredll::free(node);
    }
    return records;
  }
  std::vector<Record> List(std::size_t table) const {
    long head = 0, count = 77;
    EXPECT_EQ(Get(table, &head, &count), 0);
    std::vector<Record> records = Take(reinterpret_cast<Node*>(head), table);
    EXPECT_EQ(records.size(), static_cast<std::size_t>(count));
    return records;
  }
  std::vector<std::uint32_t> NumbersOf(std::size_t table, std::string_view field) const {
    std::vector<std::uint32_t> numbers;
    for (const Record& record : List(table)) {
      numbers.push_back(qv::layout::LoadSlot(SlotOf(table, field), record.data()));
    }
    return numbers;
  }

  static bool HasFile(const char16_t* path) { return std::filesystem::exists(handset::HostPath(path)); }
  static std::string File(const char16_t* path) {
    std::ifstream stream(handset::HostPath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  static void Set(const std::string& setting, std::int64_t value) { stores::Database().SetSetting(setting, value); }

  MailStoreLibrary library_{QV_MAIL_STORE};
  CMailDBSync* const object_ = static_cast<CMailDBSync*>(coredll::malloc(sizeof(CMailDBSync)));
};

TEST_F(MailDatabaseTest, AnAccountThatIsThereKeepsItsIdAndBecomesAsItComes) {
  EXPECT_EQ(SetUser(Account(7, u"Work").Set("text_3", u"old")), 7);
  EXPECT_EQ(SetUser(Account(9, u"Work").Set("text_3", u"new")), 7);
  EXPECT_EQ(SetUser(Account(9, u"Work", u"b@example.com")), 9);
  EXPECT_EQ(SetUser(Account(10, u"work")), 10);
  EXPECT_EQ(Shell("SELECT id, text_3 FROM mail_accounts"), "7|new\n9|\n10|\n");
}

TEST_F(MailDatabaseTest, ANewAccountGetsTheLowestFreeIdWhenItsOwnIsTaken) {
  EXPECT_EQ(SetUser(Account(1, u"A")), 1);
  EXPECT_EQ(SetUser(Account(3, u"B")), 3);
  EXPECT_EQ(SetUser(Account(3, u"C")), 2);
  EXPECT_EQ(SetUser(Account(0, u"D")), 4);
}

TEST_F(MailDatabaseTest, ASettingGivesTheNextAccountItsId) {
  Set("next_mail_account_id", 100);
  EXPECT_EQ(SetUser(Account(1, u"A")), 100);
  EXPECT_EQ(SetUser(Account(1, u"B")), 1);
  EXPECT_EQ(SetUser(Account(5, u"A")), 100);
}

TEST_F(MailDatabaseTest, ThereAreTwoHundredAndFiftyFiveAccountsAtMost) {
  Shell(
      "WITH n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 255)"
      " INSERT INTO mail_accounts (id, text_1) SELECT i, i FROM n");
  NodeOf user = Account(5, u"One more");
  NodeOf config(stores::kMailConfigs);
  int id = 77;
  EXPECT_EQ(library_.set_user(object_, user.get(), config.get(), &id), -4);
  EXPECT_EQ(List(stores::kMailAccounts).size(), 255u);
}

TEST_F(MailDatabaseTest, AConfigurationFollowsItsAccountAndReplacesTheOneBefore) {
  SetUser(Account(1, u"A"), Config(1, 10));
  EXPECT_EQ(SetUser(Account(1, u"B"), Config(1, 20)), 2);
  SetUser(Account(9, u"A"), Config(9, 11));
  EXPECT_EQ(Shell("SELECT account_id, setting_1 FROM mail_configs ORDER BY account_id"), "1|11\n2|20\n");
}

TEST_F(MailDatabaseTest, AnEmptyConfigurationIsNone) {
  SetUser(Account(1, u"A"));
  EXPECT_THAT(List(stores::kMailConfigs), IsEmpty());
  SetUser(Account(1, u"A"), Config(1, 10));
  SetUser(Account(1, u"A"));
  EXPECT_THAT(NumbersOf(stores::kMailConfigs, "setting_1"), ElementsAre(10));
}

TEST_F(MailDatabaseTest, AUidlIsKeptOncePerAccount) {
  SetUser(Account(1, u"A")), SetUser(Account(2, u"B"));
  NodeOf first = Uidl(u"UID1"), second = Uidl(u"UID2"), third = Uidl(u"UID1");
  second.LinkTo(third);
  first.LinkTo(second);
  EXPECT_EQ(library_.set_uidls(object_, first.get(), 1), 0);
  EXPECT_EQ(library_.set_uidls(object_, third.get(), 2), 0);
  EXPECT_EQ(Shell("SELECT account_id, uidl FROM mail_uidls ORDER BY id"), "1|UID1\n1|UID2\n2|UID1\n");
}

TEST_F(MailDatabaseTest, AFilterHasItsContactsAndReplacesTheOneOfItsName) {
  PutAccountAndFolder();
  NodeOf anna = FilterContact(u"Anna"), tom = FilterContact(u"Tom");
  anna.LinkTo(tom);
  EXPECT_EQ(SetFilter(Filter(5, 3, u"Friends"), anna.get()), 0);
  EXPECT_EQ(SetFilter(Filter(5, 0, u"Friends"), tom.get()), 0);
  EXPECT_EQ(Shell("SELECT id, account_id, folder_id FROM mail_filters"), "1|1|0\n5|1|3\n");
  EXPECT_EQ(Shell("SELECT filter_id, text_1 FROM mail_filter_contacts ORDER BY id"), "5|Anna\n5|Tom\n1|Tom\n");
  EXPECT_EQ(SetFilter(Filter(8, 3, u"Friends").Set("flag_1", 1), tom.get()), 0);
  EXPECT_EQ(Shell("SELECT id, flag_1 FROM mail_filters"), "1|0\n5|1\n");
  EXPECT_EQ(Shell("SELECT filter_id, text_1 FROM mail_filter_contacts ORDER BY id"), "1|Tom\n5|Tom\n");
}

TEST_F(MailDatabaseTest, AFolderKeepsItsIdByItsNameWithinItsAccount) {
  SetUser(Account(1, u"A")), SetUser(Account(2, u"B"));
  EXPECT_EQ(SetFolder(Folder(3, u"收件箱")), 3);
  EXPECT_EQ(SetFolder(Folder(8, u"收件箱").Set("kind", 5)), 3);
  EXPECT_EQ(SetFolder(Folder(3, u"收件箱"), 2), 1);
  EXPECT_EQ(SetFolder(Folder(4, u"Sent"), 2), 4);
  EXPECT_EQ(Shell("SELECT id, account_id, kind FROM mail_folders"), "1|2|0\n3|1|5\n4|2|0\n");
}

TEST_F(MailDatabaseTest, AMessageLiesInItsFolderAndItsFile) {
  PutAccountAndFolder();
  NodeOf first = Address(u"Anna"), second = Address(u"Tom");
  first.LinkTo(second);
  EXPECT_EQ(SetMail(Header(300, 3), std::string("To: a\r\n\r\n\0b", 11), first.get()), 0);
  EXPECT_EQ(Shell("SELECT id, folder_id, account_id FROM mail_messages"), "300|3|1\n");
  EXPECT_EQ(Shell("SELECT message_id, text_1 FROM mail_addresses"), "300|Anna\n300|Tom\n");
  EXPECT_EQ(File(u"\\dbdata\\mail\\file\\300.eml"), std::string("To: a\r\n\r\n\0b", 11));
}

TEST_F(MailDatabaseTest, AMessageWhoseIdIsTakenGetsOneThatNoneHadYet) {
  PutAccountAndFolder();
  EXPECT_EQ(SetMail(Header(5, 3), "first"), 0);
  NodeOf address = Address(u"Anna");
  EXPECT_EQ(SetMail(Header(5, 3), "second", address.get()), 0);
  EXPECT_EQ(SetMail(Header(0, 3), "third"), 0);
  EXPECT_THAT(NumbersOf(stores::kMailMessages, "message_id"), ElementsAre(5, 6, 7));
  EXPECT_THAT(NumbersOf(stores::kMailAddresses, "message_id"), ElementsAre(6));
  EXPECT_EQ(File(u"\\dbdata\\mail\\file\\5.eml"), "first");
  EXPECT_EQ(File(u"\\dbdata\\mail\\file\\6.eml"), "second");
  EXPECT_EQ(File(u"\\dbdata\\mail\\file\\7.eml"), "third");
}

TEST_F(MailDatabaseTest, OneOnTheCardLiesThere) {
  PutAccountAndFolder();
  EXPECT_EQ(SetMail(Header(5, 3).Set("on_card", 1), "card"), 0);
  EXPECT_EQ(File(u"\\SD\\mail\\file\\5.eml"), "card");
  EXPECT_FALSE(HasFile(u"\\dbdata\\mail\\file\\5.eml"));
}

TEST_F(MailDatabaseTest, AMessageWithoutABodyHasNoFileAndOneWithAnEmptyBodyHas) {
  PutAccountAndFolder();
  EXPECT_EQ(SetMail(Header(5, 3)), 0);
  EXPECT_TRUE(HasFile(u"\\dbdata\\mail\\file\\5.eml"));
  Shell("DELETE FROM mail_messages");
  NodeOf header = Header(5, 3);
  EXPECT_EQ(library_.set_mail(object_, header.get(), nullptr, 0, nullptr), 0);
  EXPECT_FALSE(HasFile(u"\\dbdata\\mail\\file\\5.eml"));
}

TEST_F(MailDatabaseTest, AMessageWhoseFileCannotBeWrittenIsNotStored) {
  PutAccountAndFolder();
  NodeOf address = Address(u"Anna");
  handset::FailCallOf("CreateFileW", 1);
  EXPECT_EQ(SetMail(Header(5, 3), "body", address.get()), -4);
  handset::FailCallOf("WriteFile", 1, handset::Fault::kCutShort);
  EXPECT_EQ(SetMail(Header(5, 3), "body", address.get()), -4);
  EXPECT_THAT(List(stores::kMailMessages), IsEmpty());
  EXPECT_THAT(List(stores::kMailAddresses), IsEmpty());
  EXPECT_FALSE(HasFile(u"\\dbdata\\mail\\file\\5.eml"));
}

TEST_F(MailDatabaseTest, OfAnAccountItsOwnHeadersAreFound) {
  PutAccountAndFolder();
  SetUser(Account(2, u"Home"));
  ASSERT_EQ(SetFolder(Folder(4, u"Inbox"), 2), 4);
  SetMail(Header(1, 3)), SetMail(Header(2, 4)), SetMail(Header(3, 3));
  Node* headers = nullptr;
  ASSERT_EQ(library_.query(object_, &headers, 1), 0);
  std::vector<std::uint32_t> ids;
  for (const Record& header : Take(headers, stores::kMailMessages)) {
    ids.push_back(qv::layout::LoadSlot(qv::mail::kMessageId, header.data()));
  }
  EXPECT_THAT(ids, ElementsAre(1, 3));
}

TEST_F(MailDatabaseTest, EveryNodeComesBackByteForByte) {
  for (std::size_t table = 0; table < stores::kMailTables; ++table) {
    const stores::KindDescription& kind = stores::kMailKinds[table];
    stores::Database database;
    stores::RecordStore store(database, kind);
    std::vector<Record> given;
    for (int i = 0; i < 20; ++i) {
      Record record = RandomRecord(kind.layout, random_);
      const std::uint32_t id = store.Insert(record.data());
      if (kind.says_id) PutId(kind.layout, id, record);
      given.push_back(record);
    }
    EXPECT_EQ(List(table), given) << kind.table;
  }
}

TEST_F(MailDatabaseTest, DatesNarrowTextsAndSignedNumbersAreReadable) {
  SetUser(Account(1, u"Work"), Config(1, 0));
  ASSERT_EQ(SetFolder(Folder(3, u"Inbox").Set("text_1", Record{'a', 0xC4, 0xE3, 0xBA, 0xC3})), 3);
  // 5 January 2006, 09:03:07.
  const Record date = {0xD6, 0x07, 1, 0, 0, 0, 5, 0, 9, 0, 3, 0, 7, 0, 0, 0};
  Record on_thursday = date;
  on_thursday[4] = 4;
  ASSERT_EQ(SetMail(Header(5, 3).Set("date_1", date).Set("date_2", on_thursday)), 0);
  ASSERT_EQ(SetMail(Header(6, 3)), 0);
  EXPECT_EQ(Shell("SELECT text_1 FROM mail_folders"), "a你好\n");
  EXPECT_EQ(Shell("SELECT date_1, hex(date_2) FROM mail_messages"),
            "2006-01-05 09:03:07|D6070100040005000900030007\n|\n");
  Shell("UPDATE mail_configs SET account_id = -2; UPDATE mail_folders SET text_1 = '好'");
  Shell("UPDATE mail_messages SET date_1 = '2026-11-21 20:15', date_2 = '2026-11'");
  EXPECT_THAT(NumbersOf(stores::kMailConfigs, "account_id"), ElementsAre(0xFFFFFFFE));
  EXPECT_EQ(Shell("SELECT account_id FROM mail_configs"), "-2\n");
  const Record folder = List(stores::kMailFolders)[0];
  EXPECT_THAT(Record(&folder[80], &folder[83]), ElementsAre(0xBA, 0xC3, 0));
  const Record header = List(stores::kMailMessages)[0];
  EXPECT_THAT(Record(&header[290], &header[306]),
              ElementsAre(0xEA, 0x07, 11, 0, 0, 0, 21, 0, 20, 0, 15, 0, 0, 0, 0, 0));
  EXPECT_THAT(Record(&header[306], &header[322]), ElementsAre(0xEA, 0x07, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(MailDatabaseTest, WhatBelongsToARowGoesWithItInTheShellToo) {
  PutAccountAndFolder();
  SetUser(Account(1, u"Work"), Config(1, 10));
  NodeOf uidl = Uidl(u"UID1"), contact = FilterContact(u"Anna"), address = Address(u"Tom");
  ASSERT_EQ(library_.set_uidls(object_, uidl.get(), 1), 0);
  ASSERT_EQ(SetFilter(Filter(5, 3, u"Friends"), contact.get()), 0);
  ASSERT_EQ(SetMail(Header(5, 3), "body", address.get()), 0);
  Shell("DELETE FROM mail_accounts");
  for (std::size_t table = 0; table < stores::kMailTables; ++table) EXPECT_THAT(List(table), IsEmpty()) << table;
}

TEST_F(MailDatabaseTest, AFilterGoesWithItsFolderAndOneOfTheWholeAccountStays) {
  PutAccountAndFolder();
  NodeOf anna = FilterContact(u"Anna"), tom = FilterContact(u"Tom");
  ASSERT_EQ(SetFilter(Filter(5, 3, u"Friends"), anna.get()), 0);
  ASSERT_EQ(SetFilter(Filter(6, 0, u"Friends"), tom.get()), 0);
  Shell("DELETE FROM mail_folders WHERE id = 3");
  EXPECT_EQ(Shell("SELECT id, folder_id FROM mail_filters"), "6|0\n");
  EXPECT_EQ(Shell("SELECT filter_id, text_1 FROM mail_filter_contacts"), "6|Tom\n");
}

TEST_F(MailDatabaseTest, EachMemberRefusesAsItsSettingSays) {
  PutAccountAndFolder();
  long head = 77, count = 77;
  for (std::size_t table = 0; table < stores::kMailTables; ++table) {
    Set(std::string(kGetMembers[table]) + "_refusal", -502);
    EXPECT_EQ(Get(table, &head, &count), -502);
  }
  for (const char* const member : {"SetUserInfo", "SetUIDLInfo", "SetFilterInfo", "SetFolderInfo", "SetMailInfo"}) {
    Set(std::string("Sync_") + member + "_refusal", 9);
  }
  Set("Sync_QueryHeaderByUserId_refusal", 9);
  NodeOf user = Account(2, u"A"), config = Config(2, 1), uidl = Uidl(u"UID1"), folder = Folder(4, u"Sent");
  int id = 77;
  Node* headers = nullptr;
  EXPECT_EQ(library_.set_user(object_, user.get(), config.get(), &id), -9);
  EXPECT_EQ(library_.set_uidls(object_, uidl.get(), 1), -9);
  EXPECT_EQ(SetFilter(Filter(1, 0, u"F")), -9);
  EXPECT_EQ(library_.query(object_, &headers, 1), -9);
  EXPECT_EQ(library_.set_folder(object_, folder.get(), 1, &id), -9);
  EXPECT_EQ(SetMail(Header(1, 3)), -9);
  EXPECT_EQ(head, 77);
  EXPECT_EQ(id, 77);
  EXPECT_EQ(headers, nullptr);
  EXPECT_EQ(Shell("SELECT (SELECT count(*) FROM mail_accounts), (SELECT count(*) FROM mail_folders),"
                  " (SELECT count(*) FROM mail_messages)"),
            "1|1|0\n");
}

TEST_F(MailDatabaseTest, UnknownIdsAreRefused) {
  PutAccountAndFolder();
  NodeOf uidl = Uidl(u"UID1"), folder = Folder(4, u"Sent");
  int id = 77;
  Node* headers = nullptr;
  for (const int unknown : {0, 2, -1, 257}) {
    EXPECT_EQ(library_.set_uidls(object_, uidl.get(), unknown), -3);
    EXPECT_EQ(SetFilter(Filter(1, 0, u"F"), nullptr, unknown), -3);
    EXPECT_EQ(library_.query(object_, &headers, unknown), -3);
    EXPECT_EQ(library_.set_folder(object_, folder.get(), unknown, &id), -3);
  }
  EXPECT_EQ(SetFilter(Filter(1, 9, u"F")), -3);
  EXPECT_EQ(SetMail(Header(1, 9), "body"), -3);
  EXPECT_FALSE(HasFile(u"\\dbdata\\mail\\file\\1.eml"));
}

TEST_F(MailDatabaseTest, NullPointersAndImpossibleSizesAreRefused) {
  PutAccountAndFolder();
  NodeOf user = Account(2, u"A"), config = Config(2, 1), folder = Folder(4, u"Sent"), header = Header(1, 3);
  long number = 0;
  int id = 0;
  char body = 'x';
  for (std::size_t table = 0; table < stores::kMailTables; ++table) {
    EXPECT_EQ(Get(table, nullptr, &number), -1);
    EXPECT_EQ(Get(table, &number, nullptr), -1);
    EXPECT_EQ(library_.Find<mail_store::Get>(kGetMembers[table])(nullptr, &number, &number), -1);
  }
  EXPECT_EQ(library_.set_user(object_, nullptr, config.get(), &id), -1);
  EXPECT_EQ(library_.set_user(object_, user.get(), nullptr, &id), -1);
  EXPECT_EQ(library_.set_user(object_, user.get(), config.get(), nullptr), -1);
  EXPECT_EQ(library_.set_user(nullptr, user.get(), config.get(), &id), -1);
  EXPECT_EQ(library_.set_uidls(object_, nullptr, 1), -1);
  EXPECT_EQ(library_.set_filter(object_, nullptr, nullptr, 1, 0), -1);
  EXPECT_EQ(library_.query(object_, nullptr, 1), -1);
  EXPECT_EQ(library_.set_folder(object_, nullptr, 1, &id), -1);
  EXPECT_EQ(library_.set_folder(object_, folder.get(), 1, nullptr), -1);
  EXPECT_EQ(library_.set_mail(object_, nullptr, nullptr, 1, &body), -1);
  EXPECT_EQ(library_.set_mail(object_, header.get(), nullptr, 1, nullptr), -1);
  EXPECT_EQ(library_.set_mail(object_, header.get(), nullptr, -1, &body), -6);
  EXPECT_EQ(library_.construct(nullptr), nullptr);
  EXPECT_EQ(Shell("SELECT count(*) FROM mail_accounts"), "1\n");
  EXPECT_EQ(Shell("SELECT count(*) FROM mail_messages"), "0\n");
}

TEST_F(MailDatabaseTest, WithoutMemoryNoPartOfAListIsHandedOut) {
  PutAccountAndFolder();
  for (std::uint32_t id = 1; id <= 3; ++id) SetMail(Header(id, 3));
  const unsigned before = handset::TakeCensus().blocks;
  long head = 77, count = 77;
  handset::FailCallOf("malloc", 3);
  EXPECT_EQ(Get(stores::kMailMessages, &head, &count), -7);
  EXPECT_EQ(head, 77);
  EXPECT_EQ(handset::TakeCensus().blocks, before);
}

TEST_F(MailDatabaseTest, OutsideItsSessionItAnswersNothing) {
  long head = 0, count = 0;
  ASSERT_EQ(library_.close(object_), 0);
  EXPECT_EQ(Get(stores::kMailAccounts, &head, &count), -5);
  ASSERT_EQ(library_.init(object_), 0);
  EXPECT_EQ(Get(stores::kMailAccounts, &head, &count), 0);
}

TEST_F(MailDatabaseTest, ADatabaseThatCannotBeOpenedIsANumber) {
  ASSERT_EQ(library_.close(object_), 0);
  std::filesystem::remove(handset::HostPath(stores::kDatabasePath));
  std::filesystem::create_directory(handset::HostPath(stores::kDatabasePath));
  EXPECT_EQ(library_.init(object_), -4);
}

TEST_F(MailDatabaseTest, AnObjectOfTheCallersOwnMemoryIsNotFreed) {
  CMailDBSync object;
  EXPECT_EQ(library_.construct(&object), &object);
  EXPECT_EQ(object.virtual_table->scalar_deleting_destructor(&object, 0), &object);
}

}  // namespace
