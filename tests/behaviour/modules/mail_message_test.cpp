// Recovers of filters and messages: which folders have filters, what makes a message one that is there already, what
// becomes of its file, and what is said of it all.

#include "tests/behaviour/modules/mail_test.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

/// One account with one folder, which keep their ids.
class MailMessageTest : public MailTest {
 protected:
  MailMessageTest() { SendAccount(kMailAccount); }

  void SendMessage(std::uint32_t id, const std::optional<std::string>& text = std::nullopt) {
    Append(sent_[kHeader], HeaderRecord(id, kMailFolder, kMailAccount));
    if (text) PlaceMessage(static_cast<std::int32_t>(id), *text);
  }

  /// The body that the only message was handed over with.
  std::optional<Bytes> BodyOfTheMessage() const {
    EXPECT_THAT(store_.CallsOf("SetMail"), SizeIs(1));
    return store_.handed_over.back().body;
  }
};

// --- Filters ---

TEST_F(MailMessageTest, FoldersOfTwoKindsHaveTheirFiltersApplied) {
  sent_[kFolder].clear();
  for (const std::uint8_t kind : {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}, std::uint8_t{4},
                                  std::uint8_t{5}, std::uint8_t{6}, std::uint8_t{0x85}, std::uint8_t{255}}) {
    Append(sent_[kFolder], FolderRecord(10u + kind, kMailAccount, kind));
    Append(sent_[kFilter], FilterRecord(kind, kMailAccount, (10u + kind) & 0xFF));
    Append(sent_[kHeader], HeaderRecord(100u + kind, (10u + kind) & 0xFF, kMailAccount));
  }
  EXPECT_EQ(Recovered(), 9u) << "messages are in folders of all kinds";
  EXPECT_THAT(store_.CallsOf("SetFilter"), ElementsAre("SetFilter 0 of 5", "SetFilter 5 of 5"));
}

TEST_F(MailMessageTest, AFilterHasContactsWhenItsFlagIsOne) {
  for (const std::uint8_t flag : {std::uint8_t{1}, std::uint8_t{0}, std::uint8_t{2}, std::uint8_t{0x81}}) {
    Append(sent_[kFilter], FilterRecord(7, kMailAccount, kMailFolder, flag));
    Append(sent_[kFilter], FilterRecord(8, kMailAccount, 0, flag));
  }
  Append(sent_[kFilter], FilterRecord(9, kMailAccount, kMailFolder, 1));
  for (const std::uint32_t filter : {7u, 8u, 7u}) Append(sent_[kContact], ContactRecord(filter));
  Recovered();
  EXPECT_THAT(store_.CallsOf("SetFilter"),
              ElementsAre("SetFilter 8 of 5", "SetFilter 8 of 5", "SetFilter 8 of 5", "SetFilter 8 of 5",
                          "SetFilter 7 with [7 7] of 5", "SetFilter 7 of 5", "SetFilter 7 of 5", "SetFilter 7 of 5",
                          "SetFilter 9 of 5"))
      << "an account's filters are handed over without contacts, one without contacts with none";
}

TEST_F(MailMessageTest, FiltersOfUnknownOwnersAreLeftOut) {
  Append(sent_[kFilter], FilterRecord(1, 6, 0));
  Append(sent_[kFilter], FilterRecord(2, kMailAccount, 4));
  Append(sent_[kFilter], FilterRecord(3, 6, kMailFolder));
  Recovered();
  EXPECT_THAT(store_.CallsOf("SetFilter"), IsEmpty());
  EXPECT_THAT(TablesLeft(), IsEmpty());
}

TEST_F(MailMessageTest, AFolderZeroTakesNoFilterThatTheAccountTookBefore) {
  Append(sent_[kFolder], FolderRecord(0, kMailAccount));
  Append(sent_[kFilter], FilterRecord(1, kMailAccount, 0));
  Recovered();
  EXPECT_THAT(store_.CallsOf("SetFilter"), ElementsAre("SetFilter 1 of 5"));
}

// --- Bodies ---

TEST_F(MailMessageTest, TheWholeFileIsHandedOverAndDeleted) {
  std::string text(70'001, '\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i * 7 + i / 256);
  SendMessage(17, text);
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(BodyOfTheMessage(), Bytes(text.begin(), text.end()));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_F(MailMessageTest, AnEmptyFileIsAFile) {
  SendMessage(17, "");
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(BodyOfTheMessage(), Bytes());
  EXPECT_FALSE(HasMessage(17));
}

TEST_F(MailMessageTest, AMissingFileIsNoBody) {
  SendMessage(17);
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(BodyOfTheMessage(), std::nullopt);
}

TEST_F(MailMessageTest, AFileMayHave64Megabytes) {
  constexpr std::size_t kSize = 64u << 20;
  SendMessage(17, "begins");
  std::filesystem::resize_file(handset::HostPath(MessageFile(17)), kSize);
  EXPECT_EQ(Recovered(), 1u);
  Bytes text(kSize);
  std::copy_n("begins", 6, text.begin());
  EXPECT_TRUE(BodyOfTheMessage() == text) << "they are too long to show";
  EXPECT_FALSE(HasMessage(17));
}

TEST_F(MailMessageTest, AFileThatMemoryCannotHoldIsKeptAndItsMessageNotHandedOver) {
  for (const std::uint64_t size : {0x2800'0000ull, 0xFFFF'FFFEull, 0xFFFF'FFFFull, 0x1'0000'0002ull}) {
    SendMessage(17, "");
    SendMessage(18, "text");
    std::filesystem::resize_file(handset::HostPath(MessageFile(17)), size);
    EXPECT_EQ(Recovered(), 1u) << size;
    EXPECT_THAT(store_.MessagesSet(), ElementsAre(18));
    EXPECT_TRUE(HasMessage(17));
    EXPECT_FALSE(HasMessage(18));
    EXPECT_THAT(TablesLeft(), IsEmpty());
    sent_[kHeader].clear();
    store_.handed_over.clear();
  }
}

TEST_F(MailMessageTest, AFileThatIsInUseOrNoFileIsKeptAndItsMessageNotHandedOver) {
  SendMessage(17, "text");
  SendMessage(18);
  MakeDirectory(MessageFile(18));
  const coredll::HANDLE in_use =
      coredll::CreateFileW(u"\\sync\\17.eml", coredll::GENERIC_READ, 0, nullptr, coredll::OPEN_EXISTING, 0, nullptr);
  EXPECT_EQ(Recovered(), 0u);
  coredll::CloseHandle(in_use);
  EXPECT_THAT(store_.CallsOf("SetMail"), IsEmpty());
  EXPECT_EQ(ReadText(MessageFile(17)), "text");
  EXPECT_TRUE(HasMessage(18));
  EXPECT_THAT(TablesLeft(), IsEmpty());
}

TEST_F(MailMessageTest, AFileThatEndsBeforeItsSizeIsKeptAndItsMessageNotHandedOver) {
  SendMessage(17, "a text that is cut");
  PlaceTables();
  handset::Observe([](const handset::Call& call) {
    const bool reads_message = call.function == "ReadFile" && call.path.ends_with(u".eml");
    if (reads_message) std::filesystem::resize_file(handset::HostPath(call.path), 6);
  });
  EXPECT_EQ(LocalRecover(kModule), 0u);
  handset::Observe({});
  EXPECT_THAT(store_.CallsOf("SetMail"), IsEmpty());
  EXPECT_EQ(ReadText(MessageFile(17)), "a text");
}

TEST_F(MailMessageTest, FilesOfNoMessageAreKept) {
  SendMessage(17, "text");
  Append(sent_[kHeader], HeaderRecord(18, 4, kMailAccount));
  Append(sent_[kHeader], HeaderRecord(19, kMailFolder, 6));
  for (const std::int32_t id : {18, 19, 20}) PlaceMessage(id, "text");
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_FALSE(HasMessage(17));
  for (const std::int32_t id : {18, 19, 20}) EXPECT_TRUE(HasMessage(id));
}

TEST_F(MailMessageTest, AMessageThatTheLibraryRefusesCountsAndItsFileIsGone) {
  SendMessage(17, "text");
  SendMessage(18, "text");
  store_.refusals["SetMail"][1] = -1;
  EXPECT_EQ(Recovered(), 2u);
  EXPECT_FALSE(HasMessage(17));
  EXPECT_FALSE(HasMessage(18));
}

// --- Messages that are there already ---

const HeaderKey kKey = {u"anna@example.org", {2006, 12, 1, 11, 7, 2, 10, 500}, u"A subject"};

class MailDuplicateTest : public MailMessageTest {
 protected:
  /// Whether a message with this key is one of those that the library has.
  bool IsDuplicate(const HeaderKey& key, const std::vector<HeaderKey>& present) {
    ScriptedMailStore::Nodes& nodes = store_.present_headers[kMailAccount];
    nodes.clear();
    for (const HeaderKey& there : present) {
      nodes.push_back(HeaderNode(1));
      PutKeyIntoNode(nodes.back(), there);
    }
    sent_[kHeader].clear();
    SendMessage(17, "text");
    PutKeyIntoRecord(sent_[kHeader], key);
    const std::uint32_t messages = Recovered();
    EXPECT_FALSE(HasMessage(17)) << "its file goes either way";
    return messages == 0;
  }
};

TEST_F(MailDuplicateTest, AMessageThatIsThereIsNotHandedOverAndItsFileIsDeleted) {
  EXPECT_TRUE(IsDuplicate(kKey, {kKey}));
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetFolder 3 of 5 as 0"));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_F(MailDuplicateTest, BothTextsAndTheDateToTheSecondMakeAMessage) {
  HeaderKey other = kKey;
  other.date.wDayOfWeek = 5;
  other.date.wMilliseconds = 1;
  EXPECT_TRUE(IsDuplicate(kKey, {other}));
  for (std::uint16_t coredll::SYSTEMTIME::*part :
       {&coredll::SYSTEMTIME::wYear, &coredll::SYSTEMTIME::wMonth, &coredll::SYSTEMTIME::wDay,
        &coredll::SYSTEMTIME::wHour, &coredll::SYSTEMTIME::wMinute, &coredll::SYSTEMTIME::wSecond}) {
    for (const int change : {1, 0x100, 0x8000}) {
      other = kKey;
      other.date.*part = static_cast<std::uint16_t>(other.date.*part + change);
      EXPECT_FALSE(IsDuplicate(kKey, {other})) << change;
    }
  }
  for (std::u16string HeaderKey::*text : {&HeaderKey::text_1, &HeaderKey::text_2}) {
    for (const std::u16string& changed :
         {std::u16string(), (kKey.*text) + u"x", (kKey.*text).substr(1), u"B" + kKey.*text, kKey.*text + u"\u0100"}) {
      other = kKey;
      other.*text = changed;
      EXPECT_FALSE(IsDuplicate(kKey, {other}));
      EXPECT_FALSE(IsDuplicate(other, {kKey}));
    }
    other = kKey;
    other.*text = kKey.*text;
    for (char16_t& character : other.*text) character = static_cast<char16_t>(character | 0x4E00);
    EXPECT_FALSE(IsDuplicate(other, {kKey})) << "characters have two bytes";
  }
}

TEST_F(MailDuplicateTest, AnyOfThemMayBeIt) {
  HeaderKey other_text = kKey, other_date = kKey, other_subject = kKey;
  other_text.text_1 = u"other";
  other_date.date.wSecond = 11;
  other_subject.text_2 = u"other";
  EXPECT_TRUE(IsDuplicate(kKey, {other_text, other_date, other_subject, kKey}));
  EXPECT_TRUE(IsDuplicate(kKey, {kKey, other_text, other_date, other_subject}));
  EXPECT_FALSE(IsDuplicate(kKey, {other_text, other_date, other_subject}));
}

TEST_F(MailDuplicateTest, TextsMayBeEmptyOrFillTheirFields) {
  HeaderKey key = {u"", {}, u""};
  EXPECT_TRUE(IsDuplicate(key, {key}));
  key = {std::u16string(64, u'a'), kKey.date, std::u16string(100, u'b')};
  EXPECT_TRUE(IsDuplicate(key, {key})) << "to the NUL";
  HeaderKey full = key;
  full.text_1 += u'a';
  EXPECT_FALSE(IsDuplicate(key, {full}));
  EXPECT_FALSE(IsDuplicate(full, {full})) << "what comes keeps the last character for the NUL";
  EXPECT_TRUE(IsDuplicate(full, {key}));
}

TEST_F(MailDuplicateTest, WhatLiesBehindATextsNulIsNoPartOfIt) {
  Bytes there = HeaderNode(1);
  std::fill(there.begin() + 384, there.begin() + 716, std::uint8_t{'x'});
  PutKeyIntoNode(there, kKey);
  Put16(there, 384 + 2 * kKey.text_1.size(), 0);
  Put16(there, 514 + 2 * kKey.text_2.size(), 0);
  store_.present_headers[kMailAccount] = {there};
  SendMessage(17);
  PutKeyIntoRecord(sent_[kHeader], kKey);
  EXPECT_EQ(Recovered(), 0u);
}

TEST_F(MailDuplicateTest, WithoutMemoryForAnIndexAMessageIsFoundAllTheSame) {
  handset::Observe([this](const handset::Call& call) {
    const bool indexes = call.function == "realloc" && store_.calls.back().starts_with("QueryHeader");
    if (indexes) handset::FailCall(1);
  });
  HeaderKey other_text = kKey, other_date = kKey, other_subject = kKey;
  other_text.text_1 = u"other";
  other_date.date.wSecond = 11;
  other_subject.text_2 = u"other";
  EXPECT_FALSE(IsDuplicate(kKey, {other_text}));
  EXPECT_FALSE(IsDuplicate(kKey, {other_date}));
  EXPECT_FALSE(IsDuplicate(kKey, {other_subject}));
  EXPECT_TRUE(IsDuplicate(kKey, {other_text, other_date, other_subject, kKey}));
  EXPECT_EQ(handset::FaultedFunction(), "realloc");
  handset::Observe({});
}

TEST_F(MailDuplicateTest, AHeaderWithoutAnyNulIsReadNoFurtherThanItsTexts) {
  store_.present_headers[kMailAccount].assign(3, Bytes(kMailNodeSizes[kHeader], 0xFF));
  SendMessage(17);
  EXPECT_EQ(Recovered(), 1u);
}

TEST_F(MailDuplicateTest, OnlyWhatWasThereBeforeCounts) {
  SendMessage(17, "text");
  SendMessage(18, "text");
  EXPECT_EQ(Recovered(), 2u) << "two alike";
  EXPECT_THAT(store_.CallsOf("QueryHeaderByUserId"), SizeIs(1));
}

TEST_F(MailDuplicateTest, AMessageIsLookedForInAllFoldersOfItsAccount) {
  Bytes there = HeaderNode(1);
  Put8(there, 9, 77);
  store_.present_headers[kMailAccount] = {there};
  store_.present_headers[6] = {HeaderNode(2)};
  Append(sent_[kFolder], FolderRecord(4, kMailAccount));
  for (const std::uint32_t folder : {3u, 4u}) Append(sent_[kHeader], HeaderRecord(10 + folder, folder, kMailAccount));
  EXPECT_EQ(Recovered(), 0u);
}

TEST_F(MailDuplicateTest, MessagesOfOtherAccountsDoNotCount) {
  store_.present_headers[6] = {HeaderNode(1)};
  SendMessage(17);
  EXPECT_EQ(Recovered(), 1u);
}

TEST_F(MailDuplicateTest, WithoutTheListNoMessageIsThereAlready) {
  store_.statuses["QueryHeaderByUserId"] = -1;
  EXPECT_FALSE(IsDuplicate(kKey, {kKey}));
  store_.statuses.clear();
  store_.fills_nothing = {"QueryHeaderByUserId"};
  EXPECT_FALSE(IsDuplicate(kKey, {kKey}));
  store_.fills_nothing.clear();
  store_.complaints["QueryHeaderByUserId"] = -1;
  EXPECT_TRUE(IsDuplicate(kKey, {kKey})) << "a list is a list, whatever else is said";
}

TEST_F(MailDuplicateTest, TheListIsFetchedForAnAccountWithoutFoldersTooAndReleased) {
  sent_[kFolder].clear();
  store_.present_headers[kMailAccount].assign(5, HeaderNode(1));
  EXPECT_EQ(Recovered(), 0u);
  EXPECT_THAT(store_.calls, ElementsAre("CMailDBSync", "InitCEDB", "SetUser 5 as 0", "QueryHeaderByUserId 5",
                                        "CloseCEDB", "DisConnectDB", "Delete 1"));
}

TEST_F(MailDuplicateTest, NothingOfADuplicateIsRead) {
  SendMessage(17, "text");
  store_.present_headers[kMailAccount] = {HeaderNode(1)};
  PlaceTables();
  for (const Opening& opening : OpeningsOf([&] { LocalRecover(kModule); })) {
    EXPECT_EQ(opening.first.find(u".eml"), std::u16string::npos);
  }
}

TEST_F(MailDuplicateTest, ThousandsAreToldApart) {
  for (std::uint16_t i = 0; i < 2'000; ++i) {
    HeaderKey key = kKey;
    key.date.wYear = i;
    store_.present_headers[kMailAccount].push_back(HeaderNode(i));
    PutKeyIntoNode(store_.present_headers[kMailAccount].back(), key);
    key.date.wYear = static_cast<std::uint16_t>(i + 1'000);
    Bytes header = HeaderRecord(i, kMailFolder, kMailAccount);
    PutKeyIntoRecord(header, key);
    Append(sent_[kHeader], header);
  }
  EXPECT_EQ(Recovered(), 1'000u);
  EXPECT_EQ(store_.MessagesSet().front(), 1'000u);
}

// --- What is said ---

/// The text in GBK, with "went wrong," behind it, and a number.
std::string Trace(const std::string& what, const char* id) {
  return what + "\xB3\xF6\xB4\xED\xC1\xCB\xA3\xAC" + id;
}

TEST_F(MailMessageTest, EachRefusalIsTracedInTheCodePageAndTheRestGoesOn) {
  sent_[kUidl] = UidlRecord(kMailAccount);
  Append(sent_[kFilter], FilterRecord(8, kMailAccount, 0));
  Append(sent_[kFilter], FilterRecord(7, kMailAccount, kMailFolder));
  SendMessage(17);
  const std::pair<const char*, std::string> kTraces[] = {
      {"SetUIDL", Trace("UIDL", "5")},
      {"SetFilter", Trace("Filter", "5") + Trace("Sync_SetFilterInfo", "5")},
      {"SetFolder", Trace("Folder", "5")},
      {"SetMail", Trace("\xCC\xED\xBC\xD3MAILInfo", "5")}};
  std::string all;
  for (const auto& [member, trace] : kTraces) {
    store_.handed_over.clear();
    store_.statuses = {{member, -7}};
    const std::size_t before = handset::PrintedText().size();
    EXPECT_EQ(Recovered(), 1u);
    EXPECT_EQ(handset::PrintedText().substr(before), trace);
    EXPECT_THAT(store_.handed_over, SizeIs(6)) << member;
    EXPECT_THAT(TablesLeft(), IsEmpty());
  }
  store_.statuses = {{"SetUIDL", -1}, {"SetFilter", -1}, {"SetFolder", -2'147'483'647 - 1}, {"SetMail", -1}};
  const std::size_t before = handset::PrintedText().size();
  Recovered();
  EXPECT_EQ(handset::PrintedText().substr(before), Trace("UIDL", "5") + Trace("Filter", "5") + Trace("Folder", "5") +
                                                       Trace("Sync_SetFilterInfo", "5") +
                                                       Trace("\xCC\xED\xBC\xD3MAILInfo", "5"));
}

TEST_F(MailMessageTest, OnlyNegativeAnswersAreRefusals) {
  sent_[kUidl] = UidlRecord(kMailAccount);
  Append(sent_[kFilter], FilterRecord(7, kMailAccount, kMailFolder));
  SendMessage(17);
  for (const char* member : {"SetUser", "SetUIDL", "SetFilter", "SetFolder", "SetMail"}) store_.complaints[member] = 1;
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(handset::PrintedText(), "");
}

TEST_F(MailMessageTest, TracesNameTheNewAccount) {
  SendMessage(17);
  sent_[kUidl] = UidlRecord(kMailAccount);
  Append(sent_[kFilter], FilterRecord(8, kMailAccount, 0));
  Append(sent_[kFilter], FilterRecord(7, kMailAccount, kMailFolder));
  for (const char* member : {"SetUIDL", "SetFilter", "SetFolder", "SetMail"}) store_.statuses[member] = -1;
  store_.account_id = [](const Bytes&) { return 100; };
  Recovered();
  EXPECT_EQ(handset::PrintedText(), Trace("UIDL", "100") + Trace("Filter", "100") + Trace("Folder", "100") +
                                        Trace("Sync_SetFilterInfo", "100") + Trace("\xCC\xED\xBC\xD3MAILInfo", "100"));
  store_.account_id = [](const Bytes&) { return -3; };
  const std::size_t before = handset::PrintedText().size();
  Recovered();
  EXPECT_EQ(handset::PrintedText().substr(before), Trace("UIDL", "-3") + Trace("Filter", "-3") + Trace("Folder", "-3"));
}

TEST_F(MailMessageTest, ARefusedAccountIsPassedOverWithAllThatIsItsWithoutAWord) {
  SendAccount(6);
  sent_[kUidl] = UidlRecord(kMailAccount);
  Append(sent_[kFilter], FilterRecord(8, kMailAccount, 0));
  SendMessage(17, "text");
  Append(sent_[kHeader], HeaderRecord(18, kMailFolder, 6));
  store_.refusals["SetUser"][1] = -1;
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_THAT(store_.CallsThatSet(), ElementsAre("SetUser 5 as 0", "SetUser 6 as 0", "SetFolder 3 of 6 as 0",
                                                 "SetMail 18 with [] without file"));
  EXPECT_EQ(handset::PrintedText(), "");
  EXPECT_TRUE(HasMessage(17));
  EXPECT_THAT(TablesLeft(), IsEmpty());
}

TEST_F(MailMessageTest, ARefusedFoldersMessagesGoToTheIdThatItHasAllTheSame) {
  SendMessage(17);
  store_.folder_id = [](const Bytes&) { return 8; };
  store_.complaints["SetFolder"] = -1;
  Recovered();
  EXPECT_EQ(store_.NodesSet(kHeader).at(0)[9], 8);
  store_.handed_over.clear();
  store_.statuses["SetFolder"] = -1;
  Recovered();
  EXPECT_EQ(store_.NodesSet(kHeader).at(0)[9], 0);
}

// --- What is answered ---

TEST_F(MailMessageTest, EveryModeAppliesTheSameAndAnswersModeAndAnchorAsReceived) {
  SendMessage(17);
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nLINKMAN = 5");
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    store_.handed_over.clear();
    PlaceTables();
    const Answer answer = Recover(kModule, mode, u"2006121071010");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, u"2006121071010");
    EXPECT_THAT(store_.CallsThatSet(),
                ElementsAre("SetUser 5 as 0", "SetFolder 3 of 5 as 0", "SetMail 17 with [] without file"));
  }
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nLINKMAN = 5");
  EXPECT_THAT(AllFiles(), SizeIs(1));
  EXPECT_THAT(handset::PostedMessages(), SizeIs(10 * 9)) << "every window is told";
}

TEST_F(MailMessageTest, ADirectoryMayHave259CharactersAndNoMore) {
  const std::u16string longest = u"\\" + std::u16string(128, u'a') + u"\\" + std::u16string(129, u'b');
  const auto place = [&](const std::u16string& directory) {
    MakeDirectory(directory);
    for (std::size_t kind = 0; kind < kMailKinds; ++kind) {
      const std::u16string name = kMailForms[kind].table;
      WriteFile(directory + name.substr(name.rfind(u'\\')), sent_[kind]);
    }
    WriteText(directory + u"\\-2147483648.eml", "text");
  };
  SendMessage(0x80000000);
  place(longest);
  EXPECT_EQ(LocalRecover(kModule, longest.c_str()), 1u);
  EXPECT_EQ(BodyOfTheMessage(), Bytes({'t', 'e', 'x', 't'}));
  EXPECT_THAT(AllFiles(), IsEmpty());
  place(longest + u"b");
  const auto before = AllFiles();
  EXPECT_EQ(LocalRecover(kModule, (longest + u"b").c_str()), 0u);
  EXPECT_EQ(AllFiles(), before);
  EXPECT_THAT(store_.handed_over, SizeIs(3));
}

TEST_F(MailMessageTest, ANullDirectoryIsTheRoot) {
  SendMessage(17);
  for (std::size_t kind = 0; kind < kMailKinds; ++kind) {
    const std::u16string name = kMailForms[kind].table;
    WriteFile(name.substr(name.rfind(u'\\')), sent_[kind]);
  }
  WriteText(u"\\17.eml", "text");
  EXPECT_EQ(LocalRecover(kModule, nullptr), 1u);
  EXPECT_EQ(BodyOfTheMessage(), Bytes({'t', 'e', 'x', 't'}));
  EXPECT_THAT(AllFiles(), IsEmpty());
}

TEST_F(MailMessageTest, AnAccountsListsAreReleasedBeforeTheNextAccountAndTheTablesBeforeTheDatabaseIsClosed) {
  Append(sent_[kUidl], UidlRecord(kMailAccount));
  for (const std::uint32_t folder : {0u, 3u}) Append(sent_[kFilter], FilterRecord(7, kMailAccount, folder, 1));
  Append(sent_[kContact], ContactRecord(7));
  Append(sent_[kAddress], AddressRecord(17));
  SendMessage(17, "text");
  SendMessage(18, "text");
  Append(sent_[kConfig], ConfigRecord(6));
  store_.present_headers[kMailAccount].assign(5, HeaderNode(1));
  Bytes users = std::exchange(sent_[kUser], UserRecord(6));
  Recovered();
  const unsigned before = store_.blocks_at_last.at("SetUser");
  Append(users, UserRecord(6));
  sent_[kUser] = users;
  Recovered();
  EXPECT_EQ(store_.calls.at(store_.calls.size() - 5), "SetUser 6 as 0");
  EXPECT_EQ(store_.blocks_at_last.at("SetUser"), before);
  EXPECT_EQ(store_.blocks_at_last.at("CloseCEDB"), 1u) << "the object itself";
}

TEST_F(MailMessageTest, WhatOpeningAndClosingTheDatabaseAnswerIsNotLookedAt) {
  SendMessage(17);
  store_.statuses = {{"InitCEDB", -1}, {"CloseCEDB", -1}, {"DisConnectDB", -1}};
  EXPECT_EQ(Recovered(), 1u);
  EXPECT_EQ(store_.calls.back(), "Delete 1");
}

TEST_F(MailMessageTest, TenThousandAccountsOfAbsurdIdsAreApplied) {
  for (Bytes& table : sent_) table.clear();
  for (std::uint32_t i = 0; i < 10'000; ++i) {
    const std::uint32_t id = i * 0x9E3779B9;
    Append(sent_[kUser], UserRecord(id));
    Append(sent_[kConfig], ConfigRecord(id & 0xFF));
    Append(sent_[kUidl], UidlRecord(id));
  }
  EXPECT_EQ(Recovered(), 0u);
  EXPECT_THAT(store_.CallsOf("SetUser"), SizeIs(10'000));
  for (const auto& handed : store_.handed_over) {
    if (handed.call.starts_with("SetUser ")) {
      ASSERT_EQ(handed.first.at(0)[4], handed.second.at(0)[4]);
    } else {
      for (const Bytes& uidl : handed.first) ASSERT_EQ(uidl[5], 0);
    }
  }
  EXPECT_THAT(TablesLeft(), IsEmpty());
}

}  // namespace
}  // namespace qv_test
