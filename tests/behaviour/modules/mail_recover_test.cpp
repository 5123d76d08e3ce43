// Recovers of the e-mail database: the nodes that the library is handed, in which order and under which ids, and what
// becomes of the tables and message files.
#include "tests/behaviour/modules/mail_test.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

class MailRecoverTest : public MailTest {};

class MailFormRecoverTest : public MailRecoverTest, public testing::WithParamInterface<MailKind> {
 protected:
  /// Places the sample of each kind.
  void SendSamples() {
    for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) sent_[kind] = RecoveredRecord(MailKind{kind});
  }
};

TEST_P(MailFormRecoverTest, EachFieldLiesAtItsPlaceAndAllElseIsZero) {
  SendSamples();
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(store_.NodesSet(GetParam()), std::vector<Bytes>{RecoveredNode(GetParam())});
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUIDL [5] of 5", "SetFolder 3 of 5 as 0",
                                                 "SetFilter 7 with [7] of 5", "SetMail 17 with [17] without file"));
}

TEST_P(MailFormRecoverTest, EachByteOfARecordReachesTheNodeAtItsPlaceOrNotAtAll) {
  const MailKind kind = GetParam();
  const MailForm& form = kMailForms[kind];
  SendSamples();
  sent_[kind].clear();
  std::vector<std::size_t> turned;
  for (std::size_t at = 0; at < form.record_size; ++at) {
    if (std::find(form.keys.begin(), form.keys.end(), at) != form.keys.end()) continue;
    Bytes record = RecoveredRecord(kind);
    record[at] ^= 0x40;
    Append(sent_[kind], record);
    turned.push_back(at);
  }
  // Each account takes a configuration; what is not an account's own is left out, so that it comes once.
  if (kind == kUser || kind == kConfig) {
    for (const MailKind other : {kUser, kConfig}) {
      for (std::size_t i = 1; i < turned.size() && other != kind; ++i) Append(sent_[other], RecoveredRecord(other));
    }
    for (const MailKind other : {kUidl, kFilter, kFolder, kHeader, kAddress, kContact}) sent_[other].clear();
  }
  if (kind == kFolder) sent_[kHeader].clear();
  Recovered();
  const ScriptedMailStore::Nodes nodes = store_.NodesSet(kind);
  ASSERT_THAT(nodes, SizeIs(turned.size()));
  const std::vector<CopiedBytes> carried = CarriedToNode(kind);
  const MailText& narrow = form.narrow_text;
  for (std::size_t i = 0; i < turned.size(); ++i) {
    const std::size_t at = turned[i];
    Bytes expected = WithByteTurned(RecoveredNode(kind), carried, at);
    const std::size_t character = (at - narrow.record) / 2;
    if (at >= narrow.record && character + 1 < narrow.node_size && (at - narrow.record) % 2 == 1) {
      // A character that the code page lacks ends the text.
      std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(narrow.node + character), narrow.node_size - character,
                  std::uint8_t{0});
    }
    ASSERT_EQ(nodes[i], expected) << "byte " << at << " of the record";
  }
}

TEST_P(MailFormRecoverTest, TextsEndAtTheirNul) {
  const MailForm& form = kMailForms[GetParam()];
  SendSamples();
  Bytes& record = sent_[GetParam()];
  Bytes expected = RecoveredNode(GetParam());
  const auto empty = [&](std::size_t at, std::size_t size) {
    std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(at), size, std::uint8_t{0});
  };
  for (const MailText& text : form.texts) {
    PutUsedText(record, text.record, u"to\u0100");
    empty(text.node, text.node_size);
    PutText(expected, text.node, u"to\u0100");
  }
  if (form.narrow_text.node_size != 0) {
    PutUsedText(record, form.narrow_text.record, u"to");
    empty(form.narrow_text.node, form.narrow_text.node_size);
    Put8(expected, form.narrow_text.node, 't');
    Put8(expected, form.narrow_text.node + 1, 'o');
  }
  Recovered();
  EXPECT_EQ(store_.NodesSet(GetParam()), std::vector<Bytes>{expected});
}

TEST_P(MailFormRecoverTest, ATableMayBeCutAnywhere) {
  const MailKind kind = GetParam();
  const std::size_t size = kMailForms[kind].record_size;
  for (const std::size_t cut : {std::size_t{0}, std::size_t{1}, std::size_t{5}, std::size_t{10}, std::size_t{72},
                                size / 2, size - 10, size - 1, size, size + 1, size + 5, 2 * size - 1}) {
    SCOPED_TRACE(cut);
    store_.handed_over.clear();
    SendSamples();
    Bytes table = RecoveredRecord(kind);
    Append(table, RecoveredRecord(kind));
    table.resize(cut);
    sent_[kind] = table;
    Recovered();
    EXPECT_THAT(TablesLeft(), IsEmpty());
    const ScriptedMailStore::Nodes cut_nodes = store_.NodesSet(kind);
    // The same with the missing bytes as zeros; of a configuration, without the record.
    store_.handed_over.clear();
    SendSamples();
    sent_[kind] = table;
    sent_[kind].resize(kind == kConfig ? cut / size * size : (cut + size - 1) / size * size);
    Recovered();
    EXPECT_EQ(cut_nodes, store_.NodesSet(kind));
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, MailFormRecoverTest,
                         testing::Values(kUser, kConfig, kFilter, kContact, kFolder, kUidl, kHeader, kAddress),
                         [](const auto& kind) { return std::string(kMailForms[kind.param].name); });

TEST_F(MailRecoverTest, WideTextsBecomeEightBitUpToWhereTheyCan) {
  struct Sample {
    std::u16string text;
    std::string bytes;
  };
  std::u16string chinese(128, u'\u4E2D');
  std::string chinese_bytes;
  for (int i = 0; i < 127; ++i) chinese_bytes += "\xD6\xD0";
  const Sample kSamples[] = {{u"a\u4E2D\u6587z", "a\xD6\xD0\xCE\xC4z"},
                             {u"ab\u0E01cd", "ab"},
                             {u"\u0E01", ""},
                             {u"", ""},
                             {chinese, chinese_bytes},
                             {u"a" + chinese, "a" + chinese_bytes},
                             {u"ab" + chinese, "ab" + chinese_bytes.substr(2)},
                             {std::u16string(254, u'x') + u"\u4E2D", std::string(254, 'x')},
                             {std::u16string(253, u'x') + u"\u4E2D", std::string(253, 'x') + "\xD6\xD0"},
                             {std::u16string(255, u'x'), std::string(255, 'x')}};
  for (const Sample& sample : kSamples) {
    SendAccount(kMailAccount);
    sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
    for (const MailKind kind : {kFolder, kHeader})
      PutText(sent_[kind], kMailForms[kind].narrow_text.record, sample.text);
    Recovered();
    for (const auto& [node, kind] :
         {std::pair(store_.NodesSet(kFolder).back(), kFolder), std::pair(store_.NodesSet(kHeader).back(), kHeader)}) {
      const auto text = node.begin() + static_cast<std::ptrdiff_t>(kMailForms[kind].narrow_text.node);
      Bytes expected(256);
      std::copy(sample.bytes.begin(), sample.bytes.end(), expected.begin());
      EXPECT_EQ(Bytes(text, text + 256), expected) << sample.bytes;
    }
    for (Bytes& table : sent_) table.clear();
  }
}

TEST_F(MailRecoverTest, AMessageIsOnTheStorageCardNoMore) {
  SendAccount(kMailAccount);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  PutText(sent_[kHeader], kHeaderPath, u"\\SD\\mail\\file\\17.eml");
  Recovered();
  EXPECT_EQ(store_.NodesSet(kHeader).at(0)[848], 0);
}

TEST_F(MailRecoverTest, TablesAreReadAndDeletedOneByOneAndThenAppliedAccountByAccount) {
  for (const std::uint32_t account : {5u, 6u}) {
    SendAccount(account);
    Append(sent_[kUidl], UidlRecord(account));
    Append(sent_[kFilter], FilterRecord(8, account, 0));
    Append(sent_[kFilter], FilterRecord(7, account, kMailFolder));
    Append(sent_[kHeader], HeaderRecord(10 + account, kMailFolder, account));
    PlaceMessage(static_cast<std::int32_t>(10 + account), "text");
  }
  PlaceTables();
  RunEvents events(store_);
  EXPECT_EQ(LocalRecover(kModule), 2u);
  EXPECT_THAT(events.Take(),
              ElementsAre("call CMailDBSync", "call InitCEDB",  //
                          "open mailuser.tbl",                  //
                          "open mailconfig.tbl", "delete mailconfig.tbl", "open mailuidl.tbl", "delete mailuidl.tbl",
                          "open mailfilter.tbl", "delete mailfilter.tbl", "open mailfolder.tbl",
                          "delete mailfolder.tbl", "open mailhead.tbl", "delete mailhead.tbl", "open mailaddress.tbl",
                          "delete mailaddress.tbl", "open maillinkman.tbl", "delete maillinkman.tbl",  //
                          "call SetUser 5 as 0", "call SetUIDL [5] of 5", "call SetFilter 8 of 5",
                          "call QueryHeaderByUserId 5", "call SetFolder 3 of 5 as 0", "call SetFilter 7 of 5",
                          "open 15.eml", "call SetMail 15 with [] of 4 bytes", "delete 15.eml",  //
                          "call SetUser 6 as 0", "call SetUIDL [6] of 6", "call SetFilter 8 of 6",
                          "call QueryHeaderByUserId 6", "call SetFolder 3 of 6 as 0", "call SetFilter 7 of 6",
                          "open 16.eml", "call SetMail 16 with [] of 4 bytes", "delete 16.eml",  //
                          "delete mailuser.tbl", "call CloseCEDB", "call DisConnectDB", "call Delete 1"));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_F(MailRecoverTest, FilesAreOpenedToReadersTheTablesByADoubledSeparator) {
  SendAccount(kMailAccount);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  PlaceTables();
  EXPECT_THAT(OpeningsOf([&] { LocalRecover(kModule); }),
              ElementsAre(Opening(u"\\sync\\\\mailuser.tbl", kReader), Opening(u"\\sync\\\\mailconfig.tbl", kReader),
                          Opening(u"\\sync\\\\mailuidl.tbl", kReader), Opening(u"\\sync\\\\mailfilter.tbl", kReader),
                          Opening(u"\\sync\\\\mailfolder.tbl", kReader), Opening(u"\\sync\\\\mailhead.tbl", kReader),
                          Opening(u"\\sync\\\\mailaddress.tbl", kReader),
                          Opening(u"\\sync\\\\maillinkman.tbl", kReader), Opening(u"\\sync\\17.eml", kReader)));
}

TEST_F(MailRecoverTest, WithoutTheAccountsTableNothingIsTouched) {
  SendAccount(kMailAccount);
  PlaceMessage(17, "text");
  PlaceTables();
  std::filesystem::remove(handset::HostPath(kMailForms[kUser].table));
  const auto before = AllFiles();
  EXPECT_EQ(LocalRecover(kModule), 0u);
  EXPECT_EQ(AllFiles(), before);
  EXPECT_THAT(store_.calls, ElementsAre("CMailDBSync", "InitCEDB", "CloseCEDB", "DisConnectDB", "Delete 1"));
}

TEST_F(MailRecoverTest, OfTablesBeforeAMissingOneNothingIsLeft) {
  for (std::size_t missing = 0; missing < std::size(kLoadOrder); ++missing) {
    SendAccount(kMailAccount);
    sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
    PlaceMessage(17, "text");
    PlaceTables();
    std::filesystem::remove(handset::HostPath(kMailForms[kLoadOrder[missing]].table));
    EXPECT_EQ(LocalRecover(kModule), 0u);
    std::vector<MailKind> left = {kUser};
    for (std::size_t later = missing + 1; later < std::size(kLoadOrder); ++later) left.push_back(kLoadOrder[later]);
    EXPECT_THAT(TablesLeft(), testing::UnorderedElementsAreArray(left)) << kMailForms[kLoadOrder[missing]].name;
    EXPECT_THAT(store_.handed_over, IsEmpty());
    EXPECT_TRUE(HasMessage(17));
  }
}

TEST_F(MailRecoverTest, TheOrderOfRecordsInATableIsKept) {
  SendAccount(kMailAccount);
  Append(sent_[kFolder], FolderRecord(9, kMailAccount));
  for (const std::uint8_t mark : {std::uint8_t{3}, std::uint8_t{1}, std::uint8_t{2}}) {
    Append(sent_[kUidl], UidlRecord(kMailAccount, mark));
    Append(sent_[kFilter], FilterRecord(mark, kMailAccount, 0));
    Append(sent_[kFilter], FilterRecord(10u + mark, kMailAccount, 9, 1));
    Append(sent_[kContact], ContactRecord(12, mark));
    Append(sent_[kHeader], HeaderRecord(20u + mark, 9, kMailAccount));
    Append(sent_[kAddress], AddressRecord(21, mark));
  }
  EXPECT_EQ(Recovered(), 3u);
  EXPECT_THAT(store_.CallsThatSet(),
              ElementsAre("SetUser 5 as 0", "SetUIDL [5 5 5] of 5", "SetFilter 3 of 5", "SetFilter 1 of 5",
                          "SetFilter 2 of 5", "SetFolder 3 of 5 as 0", "SetFolder 9 of 5 as 0", "SetFilter 13 of 5",
                          "SetFilter 11 of 5", "SetFilter 12 with [12 12 12] of 5", "SetMail 23 with [] without file",
                          "SetMail 21 with [21 21 21] without file", "SetMail 22 with [] without file"));
  const auto marks = [](const ScriptedMailStore::Nodes& nodes, std::size_t at) {
    std::vector<int> found;
    for (const Bytes& node : nodes) found.push_back(node[at]);
    return found;
  };
  EXPECT_THAT(marks(store_.handed_over[1].first, 6), ElementsAre(3, 1, 2));
  EXPECT_THAT(marks(store_.handed_over[9].second, 200), ElementsAre(3, 1, 2));
  EXPECT_THAT(marks(store_.handed_over[11].second, 200), ElementsAre(3, 1, 2));
}

TEST_F(MailRecoverTest, FoldersAndHeadersAreHandedOverInTheirListsAllElseAlone) {
  SendAccount(kMailAccount);
  Append(sent_[kFolder], FolderRecord(9, kMailAccount));
  Append(sent_[kUser], UserRecord(6));
  for (int i = 0; i < 2; ++i) {
    Append(sent_[kConfig], ConfigRecord(kMailAccount));
    Append(sent_[kFilter], FilterRecord(7, kMailAccount, 0));
    Append(sent_[kHeader], HeaderRecord(17, 9, kMailAccount));
  }
  Recovered();
  std::vector<bool> have_next;
  for (const auto& handed : store_.handed_over) {
    EXPECT_THAT(handed.first, SizeIs(1));
    have_next.push_back(handed.has_next);
  }
  EXPECT_THAT(store_.CallsThatSet(),
              ElementsAre("SetUser 5 as 0", "SetFilter 7 of 5", "SetFilter 7 of 5", "SetFolder 3 of 5 as 0",
                          "SetFolder 9 of 5 as 0", "SetMail 17 with [] without file", "SetMail 17 with [] without file",
                          "SetUser 6 as 0"));
  EXPECT_THAT(have_next, ElementsAre(false, false, false, true, false, true, false, false));
  EXPECT_THAT(store_.handed_over[0].second, SizeIs(1));
}

// --- Configurations ---

/// The marks of the configurations that the accounts were given.
std::vector<int> ConfigMarks(const ScriptedMailStore& store) {
  std::vector<int> marks;
  for (const auto& handed : store.handed_over) {
    if (handed.call.starts_with("SetUser ")) marks.push_back(handed.second.at(0)[6]);
  }
  return marks;
}

TEST_F(MailRecoverTest, EachConfigurationIsUsedOnceTheFirstFirst) {
  for (const std::uint32_t account : {5u, 6u, 5u, 5u, 6u}) Append(sent_[kUser], UserRecord(account));
  Append(sent_[kConfig], ConfigRecord(7, 1));
  Append(sent_[kConfig], ConfigRecord(5, 2));
  Append(sent_[kConfig], ConfigRecord(5, 3));
  Append(sent_[kConfig], ConfigRecord(6, 4));
  Recovered();
  EXPECT_THAT(ConfigMarks(store_), ElementsAre(2, 4, 3, 0, 0));
  EXPECT_EQ(store_.handed_over[3].second, std::vector<Bytes>{Bytes(552)}) << "an account without one has a zero one";
}

TEST_F(MailRecoverTest, AccountsBehindTheLastConfigurationArePassedOver) {
  for (const std::uint32_t account : {5u, 6u, 7u}) Append(sent_[kUser], UserRecord(account));
  for (const std::uint32_t account : {6u, 5u}) Append(sent_[kConfig], ConfigRecord(account));
  Append(sent_[kFolder], FolderRecord(1, 7));
  EXPECT_EQ(Recovered(), 0u);
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUser 6 as 0"));
  EXPECT_THAT(TablesLeft(), IsEmpty());
}

TEST_F(MailRecoverTest, WithoutAnyConfigurationNoAccountIsApplied) {
  SendAccount(kMailAccount);
  sent_[kConfig].clear();
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  PlaceMessage(17, "text");
  EXPECT_EQ(Recovered(), 0u);
  EXPECT_THAT(store_.handed_over, IsEmpty());
  EXPECT_THAT(TablesLeft(), IsEmpty());
  EXPECT_TRUE(HasMessage(17));
}

TEST_F(MailRecoverTest, ACutConfigurationIsNone) {
  for (const std::uint32_t account : {5u, 6u}) Append(sent_[kUser], UserRecord(account));
  for (const std::uint32_t account : {5u, 6u}) Append(sent_[kConfig], ConfigRecord(account, 1));
  sent_[kConfig].pop_back();
  Recovered();
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0"));
}

// --- Ids ---

TEST_F(MailRecoverTest, AnAccountsIdIsOneByteWhereOthersAreLookedUp) {
  Append(sent_[kUser], UserRecord(0x105));
  for (const std::uint32_t account : {0x105u, 0xFFFFFF05u, 5u}) {
    const auto mark = static_cast<std::uint8_t>(account == 5 ? 9 : 1);
    Append(sent_[kConfig], ConfigRecord(account, mark));
    Append(sent_[kUidl], UidlRecord(account, mark));
    Append(sent_[kFilter], FilterRecord(mark, account, 0));
    Append(sent_[kFolder], FolderRecord(mark, account));
    Append(sent_[kHeader], HeaderRecord(20u + mark, 9, account));
  }
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUIDL [5] of 5", "SetFilter 9 of 5",
                                                 "SetFolder 9 of 5 as 0", "SetMail 29 with [] without file"));
  EXPECT_THAT(ConfigMarks(store_), ElementsAre(9));
}

TEST_F(MailRecoverTest, AFoldersIdIsOneByteWhereOthersAreLookedUp) {
  SendAccount(kMailAccount, 0x103);
  for (const std::uint32_t folder : {0x103u, 3u}) {
    Append(sent_[kFilter], FilterRecord(folder, kMailAccount, folder));
    Append(sent_[kHeader], HeaderRecord(folder, folder, kMailAccount));
  }
  Append(sent_[kFilter], FilterRecord(9, kMailAccount, 0x100));  // For no whole account either.
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetFolder 3 of 5 as 0", "SetFilter 3 of 5",
                                                 "SetMail 3 with [] without file"));
}

TEST_F(MailRecoverTest, AFiltersIdIsOneByteWhereItsContactsAreLookedUp) {
  SendAccount(kMailAccount);
  sent_[kFilter] = FilterRecord(0x107, kMailAccount, kMailFolder, 1);
  Append(sent_[kContact], ContactRecord(0x107, 1));
  Append(sent_[kContact], ContactRecord(7, 2));
  Recovered();
  const auto& handed = store_.handed_over.back();
  EXPECT_EQ(handed.call, "SetFilter 7 with [7] of 5");
  EXPECT_EQ(handed.second.at(0)[200], 2);
}

TEST_F(MailRecoverTest, AddressesAreLookedUpByTheLowByteOfTheMessagesId) {
  SendAccount(kMailAccount);
  for (const std::uint32_t id : {5u, 255u, 256u, 261u, 0xFFFFFF00u, 0x80000105u}) {
    Append(sent_[kHeader], HeaderRecord(id, kMailFolder, kMailAccount));
  }
  for (const std::uint32_t id : {5u, 255u, 256u, 261u, 0xFFFFFF00u}) Append(sent_[kAddress], AddressRecord(id));
  EXPECT_EQ(Recovered(), 6u);
  std::vector<std::string> calls = store_.CallsThatSet();
  calls.erase(calls.begin(), calls.begin() + 2);
  EXPECT_THAT(calls,
              ElementsAre("SetMail 5 with [5] without file", "SetMail 255 with [255] without file",
                          "SetMail 256 with [] without file", "SetMail 261 with [5] without file",
                          "SetMail 4294967040 with [] without file", "SetMail 2147483909 with [5] without file"));
}

TEST_F(MailRecoverTest, AMessagesFileIsNamedByItsIdAsASignedNumber) {
  SendAccount(kMailAccount);
  for (const std::int32_t id : {0, 1'000'000, 2'147'483'647, -1, -2'147'483'647 - 1}) {
    Append(sent_[kHeader], HeaderRecord(static_cast<std::uint32_t>(id), kMailFolder, kMailAccount));
    PlaceMessage(id, std::to_string(id));
  }
  EXPECT_EQ(Recovered(), 5u);
  for (const auto& handed : store_.handed_over) {
    if (!handed.body) continue;
    const auto id = static_cast<std::int32_t>(Get32(handed.first.at(0), 4));
    EXPECT_EQ(std::string(handed.body->begin(), handed.body->end()), std::to_string(id));
    EXPECT_FALSE(HasMessage(id));
  }
}

TEST_F(MailRecoverTest, AnAccountUnderANewIdHasNeitherFoldersFiltersNorMessages) {
  SendAccount(kMailAccount);
  sent_[kUidl] = UidlRecord(kMailAccount);
  Append(sent_[kFilter], FilterRecord(8, kMailAccount, 0));
  Append(sent_[kFilter], FilterRecord(7, kMailAccount, kMailFolder));
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  PlaceMessage(17, "text");
  store_.account_id = [](const Bytes&) { return 9; };
  EXPECT_EQ(Recovered(), 0u);
  EXPECT_THAT(store_.CallsThatSet(),
              ElementsAre("SetUser 5 as 0", "SetUIDL [5] of 9", "SetFilter 8 of 9", "SetFolder 3 of 9 as 0"));
  EXPECT_EQ(store_.NodesSet(kFolder).at(0)[5], 9) << "the folder's account";
  EXPECT_EQ(Get32(store_.NodesSet(kFilter).at(0), 460) & 0xFF, 5u) << "the filter's account";
  EXPECT_THAT(store_.CallsOf("QueryHeaderByUserId"), IsEmpty());
  EXPECT_THAT(TablesLeft(), IsEmpty());
  EXPECT_TRUE(HasMessage(17));
}

TEST_F(MailRecoverTest, UnderANewIdAnAccountTakesWhatBearsThatId) {
  for (const std::uint32_t account : {5u, 9u}) {
    SendAccount(account);
    Append(sent_[kFilter], FilterRecord(account, account, kMailFolder));
    Append(sent_[kHeader], HeaderRecord(10 + account, kMailFolder, account));
  }
  PlaceMessage(19, "text");
  store_.account_id = [](const Bytes& user) { return user[4] == 5 ? 9 : 20; };
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.CallsThatSet(),
              ElementsAre("SetUser 5 as 0", "SetFolder 3 of 9 as 0", "SetFilter 9 of 9",
                          "SetMail 19 with [] of 4 bytes", "SetUser 9 as 0", "SetFolder 3 of 20 as 0"));
  EXPECT_EQ(store_.NodesSet(kHeader).at(0)[8], 9);
}

TEST_F(MailRecoverTest, AHeaderIsOnlySearchedForAndComesAgainWhereItsIdsAreMetAgain) {
  for (int i = 0; i < 2; ++i) {
    SendAccount(kMailAccount);
    Append(sent_[kFilter], FilterRecord(7, kMailAccount, kMailFolder));
  }
  sent_[kUidl] = UidlRecord(kMailAccount);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  PlaceMessage(17, "text");
  EXPECT_EQ(Recovered(), 4u);
  EXPECT_THAT(
      store_.CallsThatSet(),
      ElementsAre("SetUser 5 as 0", "SetUIDL [5] of 5", "SetFolder 3 of 5 as 0", "SetFilter 7 of 5", "SetFilter 7 of 5",
                  "SetMail 17 with [] of 4 bytes", "SetFolder 3 of 5 as 0",
                  "SetMail 17 with [] without file",  //
                  "SetUser 5 as 0", "SetUIDL [5] of 5", "SetFolder 3 of 5 as 0", "SetMail 17 with [] without file",
                  "SetFolder 3 of 5 as 0", "SetMail 17 with [] without file"));
}

TEST_F(MailRecoverTest, AnIdThatDoesNotFitAByteIsHandedOverWholeAndKeptInABytesRoom) {
  SendAccount(kMailAccount);
  sent_[kUidl] = UidlRecord(kMailAccount);
  Append(sent_[kHeader], HeaderRecord(17, kMailFolder, 0x2C));
  store_.account_id = [](const Bytes&) { return 0x12C; };
  EXPECT_EQ(Recovered(), 1u) << "300 is 44 in a byte";
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUIDL [5] of 300", "SetFolder 3 of 300 as 0",
                                                 "SetMail 17 with [] without file"));
  EXPECT_EQ(store_.NodesSet(kHeader).at(0)[8], 0x2C);
}

TEST_F(MailRecoverTest, AnAccountWhoseIdTheLibraryDoesNotGiveHasTheIdZero) {
  SendAccount(kMailAccount);
  sent_[kUidl] = UidlRecord(kMailAccount);
  store_.account_id = [](const Bytes&) { return std::nullopt; };
  Recovered();
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUIDL [5] of 0", "SetFolder 3 of 0 as 0"));
  EXPECT_EQ(store_.NodesSet(kFolder).at(0)[5], 0);
}

TEST_F(MailRecoverTest, TheAccountZeroIsAnAccountLikeOthers) {
  SendAccount(0);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, 0);
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.CallsOf("QueryHeaderByUserId"), ElementsAre("QueryHeaderByUserId 0"));
}

TEST_F(MailRecoverTest, WhatIsInAFolderGoesToItsNewId) {
  SendAccount(kMailAccount);
  sent_[kFilter] = FilterRecord(7, kMailAccount, kMailFolder);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  for (const std::optional<int> id :
       {std::optional(8), std::optional(0x103), std::optional(-1), std::optional(3), std::optional<int>()}) {
    store_.handed_over.clear();
    store_.folder_id = [&](const Bytes&) { return id; };
    EXPECT_EQ(Recovered(), 1u);
    const auto expected = static_cast<std::uint8_t>(id.value_or(0));
    EXPECT_EQ(store_.NodesSet(kFilter).at(0)[672], expected);
    EXPECT_EQ(store_.NodesSet(kHeader).at(0)[9], expected);
    EXPECT_EQ(store_.NodesSet(kFolder).at(0)[4], kMailFolder) << "the folder itself keeps its own";
  }
}

TEST_F(MailRecoverTest, AFoldersNewIdIsNotTheNextOnes) {
  SendAccount(kMailAccount);
  Append(sent_[kFolder], FolderRecord(4, kMailAccount));
  store_.folder_id = [](const Bytes& folder) { return folder[4] == 3 ? std::optional(30) : std::nullopt; };
  Recovered();
  EXPECT_THAT(store_.CallsOf("SetFolder"), ElementsAre("SetFolder 3 of 5 as 0", "SetFolder 4 of 5 as 0"));
}

// --- The id 100 ---

TEST_F(MailRecoverTest, UnderTheId100FoldersAndMessagesKeepTheirAccount) {
  SendAccount(kMailAccount);
  sent_[kFilter] = FilterRecord(7, kMailAccount, kMailFolder);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, kMailAccount);
  store_.account_id = [](const Bytes&) { return 100; };
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.calls, testing::Not(testing::Contains(testing::StartsWith("QueryHeader"))));
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetFolder 3 of 100 as 0", "SetFilter 7 of 100",
                                                 "SetMail 17 with [] without file"));
  EXPECT_EQ(store_.NodesSet(kFolder).at(0)[5], 5);
  EXPECT_EQ(store_.NodesSet(kHeader).at(0)[8], 5);
}

TEST_F(MailRecoverTest, TheAccount100IsFoundUnder100) {
  SendAccount(100);
  sent_[kHeader] = HeaderRecord(17, kMailFolder, 100);
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.CallsOf("QueryHeaderByUserId"), IsEmpty()) << "100 tells no account from another";
}

TEST_F(MailRecoverTest, Once100WasSeenItIsAskedForAndNoLaterIdIsTrusted) {
  for (const std::uint32_t account : {4u, 5u, 6u, 7u, 8u}) {
    SendAccount(account);
    Append(sent_[kHeader], HeaderRecord(10 + account, kMailFolder, account));
  }
  // 5 is the first to get 100; then one keeps its id, one gets another, and one is given none.
  store_.account_id = [](const Bytes& user) {
    static const std::map<int, int> kIds = {{4, 4}, {5, 100}, {6, 6}, {7, 70}};
    const auto id = kIds.find(user[4]);
    return id == kIds.end() ? std::nullopt : std::optional(id->second);
  };
  EXPECT_EQ(Recovered(), 5u);
  EXPECT_THAT(store_.CallsOf("SetUser"), ElementsAre("SetUser 4 as 0", "SetUser 5 as 0", "SetUser 6 as 100",
                                                     "SetUser 7 as 100", "SetUser 8 as 100"));
  EXPECT_THAT(store_.CallsOf("QueryHeaderByUserId"), ElementsAre("QueryHeaderByUserId 4"));
  EXPECT_THAT(store_.CallsOf("SetFolder"),
              ElementsAre("SetFolder 3 of 4 as 0", "SetFolder 3 of 100 as 0", "SetFolder 3 of 6 as 0",
                          "SetFolder 3 of 70 as 0", "SetFolder 3 of 100 as 0"));
  std::vector<int> folder_accounts, message_accounts;
  for (const Bytes& folder : store_.NodesSet(kFolder)) folder_accounts.push_back(folder[5]);
  for (const Bytes& header : store_.NodesSet(kHeader)) message_accounts.push_back(header[8]);
  EXPECT_THAT(folder_accounts, ElementsAre(4, 5, 6, 7, 8));
  EXPECT_THAT(message_accounts, ElementsAre(4, 5, 6, 70, 8));
}

TEST_F(MailRecoverTest, The100OfARefusedAccountIsSeenToo) {
  SendAccount(5);
  SendAccount(6);
  store_.account_id = [](const Bytes& user) { return user[4] == 5 ? std::optional(100) : std::nullopt; };
  store_.complaints["SetUser"] = -1;
  EXPECT_EQ(Recovered(), 0u);
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUser 6 as 100"));
}

TEST_F(MailRecoverTest, The100IsForgottenBetweenRecovers) {
  for (int i = 0; i < 2; ++i) {
    SendAccount(kMailAccount);
    store_.account_id = [](const Bytes&) { return 100; };
    Recovered();
    for (Bytes& table : sent_) table.clear();
  }
  EXPECT_THAT(store_.CallsOf("SetUser"), ElementsAre("SetUser 5 as 0", "SetUser 5 as 0"));
}

}  // namespace
}  // namespace qv_test
