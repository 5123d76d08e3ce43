// Exports of the e-mail database: the bytes of each table, the message files, and what the library is asked.
#include "tests/behaviour/modules/mail_test.h"

namespace qv_test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char16_t kMessageDirectory[] = u"\\dbdata\\mail\\file";
constexpr char16_t kCardDirectory[] = u"\\SD\\mail\\file";

class MailExportTest : public MailTest {
 protected:
  MailExportTest() {
    MakeDirectory(kMessageDirectory);
    MakeDirectory(kCardDirectory);
  }

  /// Exports, which tells nobody what came of it, and gives a kind's table.
  Bytes Exported(MailKind kind) {
    EXPECT_EQ(LocalExport(kModule), 0u);
    return ReadFile(kMailForms[kind].table);
  }

  /// The sample of each kind.
  void FillTheStore() {
    for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) store_.lists[kind] = {ExportedNode(MailKind{kind})};
  }
  /// That the tables of all kinds but this one hold their samples.
  static void ExpectTheOtherSamples(MailKind kind) {
    for (std::uint8_t other = 0; other < kMailKinds; ++other) {
      if (other == kind) continue;
      EXPECT_EQ(ReadFile(kMailForms[other].table), ExportedRecord(MailKind{other})) << kMailForms[other].name;
    }
  }
};

class MailFormExportTest : public MailExportTest, public testing::WithParamInterface<MailKind> {};

TEST_P(MailFormExportTest, EachFieldLiesAtItsPlaceAndAllElseIsZero) {
  store_.lists[GetParam()] = {ExportedNode(GetParam())};
  EXPECT_EQ(Exported(GetParam()), ExportedRecord(GetParam()));
}

TEST_P(MailFormExportTest, EachByteOfANodeReachesTheRecordAtItsPlaceOrNotAtAll) {
  const MailKind kind = GetParam();
  const Bytes node = ExportedNode(kind);
  for (std::size_t at = 0; at < node.size(); ++at) {
    store_.lists[kind].push_back(node);
    store_.lists[kind].back()[at] ^= 0x40;
  }
  const std::vector<Bytes> records = Split(Exported(kind), kMailForms[kind].record_size);
  ASSERT_THAT(records, SizeIs(node.size()));
  const std::vector<CopiedBytes> carried = CarriedToRecord(kind);
  for (std::size_t at = 0; at < node.size(); ++at) {
    Bytes expected = WithByteTurned(ExportedRecord(kind), carried, at);
    if (kind == kHeader) {
      static const std::map<std::size_t, std::u16string> kPaths = {{4, u"\\dbdata\\mail\\file\\81.eml"},
                                                                   {5, u"\\dbdata\\mail\\file\\16401.eml"},
                                                                   {6, u"\\dbdata\\mail\\file\\4194321.eml"},
                                                                   {7, u"\\dbdata\\mail\\file\\1073741841.eml"},
                                                                   {848, u"\\SD\\mail\\file\\17.eml"}};
      const auto path = kPaths.find(at);
      if (path != kPaths.end()) {
        std::fill(expected.begin() + kHeaderPath, expected.end(), std::uint8_t{0});
        PutText(expected, kHeaderPath, path->second);
      }
    }
    ASSERT_EQ(records[at], expected) << "byte " << at << " of the node";
  }
}

TEST_P(MailFormExportTest, TextsEndAtTheirNul) {
  const MailKind kind = GetParam();
  const MailForm& form = kMailForms[kind];
  Bytes node(kMailNodeSizes[kind]);
  Bytes expected(form.record_size);
  for (const MailText& text : form.texts) {
    PutUsedText(node, text.node, u"to\u0100");
    PutText(expected, text.record, u"to\u0100");
  }
  if (form.narrow_text.node_size != 0) {
    constexpr char kUsed[] = "to\0old";
    std::copy_n(kUsed, sizeof(kUsed), node.begin() + static_cast<std::ptrdiff_t>(form.narrow_text.node));
    PutText(expected, form.narrow_text.record, u"to");
  }
  if (kind == kHeader) PutText(expected, kHeaderPath, u"\\dbdata\\mail\\file\\0.eml");
  store_.lists[kind] = {node};
  EXPECT_EQ(Exported(kind), expected);
}

TEST_P(MailFormExportTest, RecordsComeInTheOrderOfTheList) {
  const MailKind kind = GetParam();
  const MailForm& form = kMailForms[kind];
  const MailText& text = form.texts[0];
  std::u16string order;
  for (const char16_t name : {u'c', u'a', u'b', u'a'}) {
    store_.lists[kind].emplace_back(kMailNodeSizes[kind]);
    PutText(store_.lists[kind].back(), text.node, {&name, 1});
  }
  for (const Bytes& record : Split(Exported(kind), form.record_size)) {
    order += static_cast<char16_t>(record[text.record]);
  }
  EXPECT_EQ(order, u"caba");
  for (std::uint8_t other = 0; other < kMailKinds; ++other) {
    if (other == kind) continue;
    EXPECT_THAT(ReadFile(kMailForms[other].table), IsEmpty()) << kMailForms[other].name;
  }
}

TEST_P(MailFormExportTest, EachRecordIsWrittenAtOnce) {
  const MailForm& form = kMailForms[GetParam()];
  store_.lists[GetParam()].assign(3, Bytes(kMailNodeSizes[GetParam()]));
  std::vector<std::uint32_t> sizes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile") sizes.push_back(call.size);
  });
  Exported(GetParam());
  handset::Observe({});
  EXPECT_THAT(sizes, ElementsAreArray(std::vector(3, static_cast<std::uint32_t>(form.record_size))));
}

TEST_P(MailFormExportTest, ATableThatIsThereIsMadeAnew) {
  FillTheStore();
  WriteFile(kMailForms[GetParam()].table, Bytes(20'000, 0x55));
  EXPECT_EQ(Exported(GetParam()), ExportedRecord(GetParam()));
}

TEST_P(MailFormExportTest, ATableThatCannotBeMadeIsPassedOver) {
  FillTheStore();
  WriteText(u"\\dbdata\\mail\\file\\17.eml", "text");
  MakeDirectory(kMailForms[GetParam()].table);
  EXPECT_EQ(LocalExport(kModule), 0u);
  ExpectTheOtherSamples(GetParam());
  EXPECT_EQ(HasMessage(17), GetParam() != kHeader);
}

TEST_P(MailFormExportTest, ATableThatCannotBeWrittenEndsThere) {
  const MailKind kind = GetParam();
  FillTheStore();
  for (const std::uint32_t id : {17u, 18u, 19u}) {
    const std::string number = std::to_string(id);
    WriteText(u"\\dbdata\\mail\\file\\" + std::u16string(number.begin(), number.end()) + u".eml", "text");
  }
  for (const handset::Fault fault : {handset::Fault::kFail, handset::Fault::kCutShort}) {
    store_.lists[kind].assign(3, ExportedNode(kind));
    if (kind == kHeader) {
      for (std::uint8_t i = 0; i < 3; ++i) Put32(store_.lists[kind][i], 4, 17u + i);
    }
    handset::FailCallOf("WriteFile", kind + 2u, fault);
    Exported(kind);
    ASSERT_TRUE(handset::FaultHappened());
    const Bytes table = ReadFile(kMailForms[kind].table);
    const std::size_t half = fault == handset::Fault::kFail ? 0 : kMailForms[kind].record_size / 2;
    EXPECT_EQ(table.size(), kMailForms[kind].record_size + half);
    EXPECT_EQ(
        Split(Bytes(table.begin(), table.end() - static_cast<std::ptrdiff_t>(half)), kMailForms[kind].record_size),
        std::vector<Bytes>{ExportedRecord(kind)});
    EXPECT_FALSE(HasMessage(18)) << "the message of a record that is not there";
    store_.lists[kind] = {ExportedNode(kind)};
    ExpectTheOtherSamples(kind);
  }
}

TEST_P(MailFormExportTest, AListThatTheLibraryDoesNotGiveIsAnEmptyTable) {
  static const char* const kGetters[] = {"GetUser",   "GetConfig", "GetFilter",     "GetLinkMan",
                                         "GetFolder", "GetUIDL",   "GetMailHeader", "GetMailAddress"};
  const char* const getter = kGetters[GetParam()];
  FillTheStore();
  store_.statuses[getter] = -5;
  EXPECT_THAT(Exported(GetParam()), IsEmpty()) << "refused";
  store_.statuses.clear();
  store_.fills_nothing = {getter};
  EXPECT_THAT(Exported(GetParam()), IsEmpty()) << "not filled in";
  ExpectTheOtherSamples(GetParam());
  store_.fills_nothing.clear();
  store_.complaints[getter] = -5;
  EXPECT_EQ(Exported(GetParam()), ExportedRecord(GetParam())) << "a list is a list, whatever else is said";
}

INSTANTIATE_TEST_SUITE_P(Kinds, MailFormExportTest,
                         testing::Values(kUser, kConfig, kFilter, kContact, kFolder, kUidl, kHeader, kAddress),
                         [](const auto& kind) { return std::string(kMailForms[kind.param].name); });

TEST_F(MailExportTest, AConfigurationsAccountKeepsItsSign) {
  const std::pair<std::uint16_t, std::uint32_t> kAccounts[] = {
      {0x7FFF, 0x00007FFF}, {0x8000, 0xFFFF8000}, {0xFFFE, 0xFFFFFFFE}, {0x0080, 0x00000080}};
  for (const auto& [account, exported] : kAccounts) {
    Bytes node(552);
    Put16(node, 4, account);
    store_.lists[kConfig] = {node};
    EXPECT_EQ(Get32(Exported(kConfig), 4), exported);
  }
}

TEST_F(MailExportTest, OtherNumbersAreWidenedWithZeros) {
  for (const MailKind kind : {kUser, kFilter, kContact, kFolder, kUidl, kHeader}) {
    store_.lists[kind] = {Bytes(kMailNodeSizes[kind], 0xFF)};
  }
  store_.lists[kHeader] = {HeaderNode(17)};
  Put16(store_.lists[kHeader][0], 8, 0xFFFE);  // account, folder
  EXPECT_EQ(Get32(Exported(kUser), 0), 0xFFu);
  const Bytes filter = ReadFile(kMailForms[kFilter].table);
  EXPECT_EQ(Get32(filter, 0), 0xFFu);
  EXPECT_EQ(Get32(filter, 4), 0xFFu);
  EXPECT_EQ(Get32(filter, 672), 0xFFu);
  EXPECT_EQ(Get32(filter, 676), 0xFFu);
  EXPECT_EQ(Get32(ReadFile(kMailForms[kContact].table), 4), 0xFFu);
  EXPECT_EQ(Get32(ReadFile(kMailForms[kFolder].table), 0), 0xFFu);
  EXPECT_EQ(Get32(ReadFile(kMailForms[kFolder].table), 4), 0xFFu);
  EXPECT_EQ(Get32(ReadFile(kMailForms[kUidl].table), 4), 0xFFFFu);
  EXPECT_EQ(Get32(ReadFile(kMailForms[kHeader].table), 4), 0xFFu);
  EXPECT_EQ(Get32(ReadFile(kMailForms[kHeader].table), 8), 0xFEu);
}

/// An 8-bit text of a node, and what of it reaches the records.
struct NarrowSample {
  const char* name;
  std::string bytes;
  std::u16string text;
};

const NarrowSample kNarrowSamples[] = {
    {"Chinese", "a\xD6\xD0\xCE\xC4z", u"a\u4E2D\u6587z"},
    {"Empty", "", u""},
    {"CutWithinACharacter", std::string(255, 'x') + "\xD6", std::u16string(255, u'x')},
    {"ChineseCutWithinACharacter", "a\xD6\xD0" + std::string(252, 'x') + "\xD6",
     u"a\u4E2D" + std::u16string(252, u'x')},
    {"EndsWithinACharacter", "ab\xD6", u"ab"},
    {"Undecodable",
     "ab\xFF\xFF"
     "cd",
     u"ab"},
    {"UndecodableAtOnce", "\xFF\xFF", u""},
    {"Full", std::string(256, 'x'), std::u16string(256, u'x')},
};

TEST_F(MailExportTest, EightBitTextsBecomeWideUpToWhereTheyCan) {
  for (const NarrowSample& sample : kNarrowSamples) {
    for (const MailKind kind : {kFolder, kHeader}) {
      const MailText& at = kMailForms[kind].narrow_text;
      Bytes node(kMailNodeSizes[kind]);
      // Bytes that the text is not to run into.
      std::fill_n(node.begin() + static_cast<std::ptrdiff_t>(at.node), 259, std::uint8_t{'#'});
      std::copy_n(sample.bytes.c_str(), std::min<std::size_t>(sample.bytes.size() + 1, 256),
                  node.begin() + static_cast<std::ptrdiff_t>(at.node));
      store_.lists[kind] = {node};
      Bytes expected(kMailForms[kind].record_size);
      PutText(expected, at.record, sample.text.substr(0, at.record_size / 2 - 1));
      if (kind == kHeader) PutText(expected, kHeaderPath, u"\\dbdata\\mail\\file\\0.eml");
      EXPECT_EQ(Exported(kind), expected) << sample.name << ", " << kMailForms[kind].name;
    }
  }
}

TEST_F(MailExportTest, AMessagesFileIsNamedByItsIdAndItsPlace) {
  struct Sample {
    std::uint32_t id;
    std::uint8_t card;
    const char16_t* path;
  };
  constexpr Sample kSamples[] = {{0, 0, u"\\dbdata\\mail\\file\\0.eml"},
                                 {255, 1, u"\\SD\\mail\\file\\255.eml"},
                                 {256, 0, u"\\dbdata\\mail\\file\\256.eml"},
                                 {65536, 0x80, u"\\SD\\mail\\file\\65536.eml"},
                                 {0xFFFFFFFF, 0, u"\\dbdata\\mail\\file\\-1.eml"},
                                 {0x7FFFFFFF, 255, u"\\SD\\mail\\file\\2147483647.eml"},
                                 {0x80000000, 0, u"\\dbdata\\mail\\file\\-2147483648.eml"}};
  for (const Sample& sample : kSamples) {
    store_.lists[kHeader].push_back(HeaderNode(sample.id, sample.card));
    WriteText(sample.path, std::string(3, static_cast<char>('a' + store_.lists[kHeader].size())));
  }
  const std::vector<Bytes> records = Split(Exported(kHeader), 1940);
  ASSERT_THAT(records, SizeIs(std::size(kSamples)));
  for (std::size_t i = 0; i < records.size(); ++i) {
    Bytes expected(550);
    PutText(expected, 0, kSamples[i].path);
    EXPECT_EQ(Bytes(records[i].begin() + kHeaderPath, records[i].end()), expected);
    EXPECT_EQ(ReadText(MessageFile(static_cast<std::int32_t>(kSamples[i].id))), ReadText(kSamples[i].path));
  }
}

TEST_F(MailExportTest, MessageFilesAreCopiedWholeOverWhatIsThere) {
  store_.lists[kHeader] = {HeaderNode(1), HeaderNode(2, 1), HeaderNode(3), HeaderNode(4)};
  Bytes large(300'000);
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  WriteFile(u"\\dbdata\\mail\\file\\1.eml", large);
  WriteText(u"\\dbdata\\mail\\file\\2.eml", "of the memory");
  WriteText(u"\\SD\\mail\\file\\2.eml", "of the card");
  WriteText(u"\\dbdata\\mail\\file\\3.eml", "");
  WriteText(u"\\sync\\2.eml", "an older one, which is longer");
  WriteText(u"\\sync\\3.eml", "an older one");
  WriteText(u"\\sync\\4.eml", "an older one whose message has no file");
  const Bytes table = Exported(kHeader);
  EXPECT_EQ(ReadFile(MessageFile(1)), large);
  EXPECT_EQ(ReadText(MessageFile(2)), "of the card");
  EXPECT_EQ(ReadText(MessageFile(3)), "");
  EXPECT_EQ(ReadText(MessageFile(4)), "an older one whose message has no file");
  EXPECT_THAT(table, SizeIs(4 * 1940));
  EXPECT_EQ(ReadText(u"\\dbdata\\mail\\file\\2.eml"), "of the memory") << "the handset keeps its own";
}

TEST_F(MailExportTest, AMessageWithoutItsFileIsAHeaderAlone) {
  store_.lists[kHeader] = {HeaderNode(1), HeaderNode(2), HeaderNode(3, 1)};
  WriteText(u"\\dbdata\\mail\\file\\2.eml", "text");
  WriteText(u"\\dbdata\\mail\\file\\3.eml", "not where its header says");
  EXPECT_THAT(Exported(kHeader), SizeIs(3 * 1940));
  EXPECT_FALSE(HasMessage(1));
  EXPECT_TRUE(HasMessage(2));
  EXPECT_FALSE(HasMessage(3));
}

TEST_F(MailExportTest, OneMessageThatCannotBeCopiedDoesNotStopTheOthers) {
  store_.lists[kHeader] = {HeaderNode(1), HeaderNode(2), HeaderNode(3)};
  for (const char16_t* file : {u"1", u"2", u"3"}) {
    WriteText(std::u16string(kMessageDirectory) + u"\\" + file + u".eml", "text");
  }
  handset::FailCallOf("CopyFileW", 2);
  EXPECT_THAT(Exported(kHeader), SizeIs(3 * 1940));
  EXPECT_TRUE(HasMessage(1));
  EXPECT_FALSE(HasMessage(2));
  EXPECT_TRUE(HasMessage(3));
}

TEST_F(MailExportTest, TablesAreWrittenOneByOneEachBeforeTheNextListIsFetched) {
  FillTheStore();
  store_.lists[kHeader].push_back(HeaderNode(18, 1));
  RunEvents events(store_);
  EXPECT_EQ(LocalExport(kModule), 0u);
  EXPECT_THAT(events.Take(),
              ElementsAre("call CMailDBSync", "call InitCEDB", "call GetUser", "create mailuser.tbl", "call GetConfig",
                          "create mailconfig.tbl", "call GetFilter", "create mailfilter.tbl", "call GetLinkMan",
                          "create maillinkman.tbl", "call GetFolder", "create mailfolder.tbl", "call GetUIDL",
                          "create mailuidl.tbl", "call GetMailHeader", "create mailhead.tbl", "copy 17.eml",
                          "copy 18.eml", "call GetMailAddress", "create mailaddress.tbl", "call CloseCEDB",
                          "call DisConnectDB", "call Delete 1"));
}

TEST_F(MailExportTest, EachListIsReleasedBeforeTheNextIsFetched) {
  for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) {
    store_.lists[kind].assign(20, ExportedNode(MailKind{kind}));
  }
  EXPECT_EQ(LocalExport(kModule), 0u);
  const unsigned before = store_.blocks_at_last.at("GetUser");
  EXPECT_LT(before, 10u);
  EXPECT_EQ(store_.blocks_at_last.at("CloseCEDB"), 1u) << "the object itself";
  for (const char* getter :
       {"GetConfig", "GetFilter", "GetLinkMan", "GetFolder", "GetUIDL", "GetMailHeader", "GetMailAddress"}) {
    EXPECT_EQ(store_.blocks_at_last.at(getter), before) << getter;
  }
}

TEST_F(MailExportTest, TablesAreOpenedToReadersByADoubledSeparator) {
  EXPECT_THAT(OpeningsOf([&] { LocalExport(kModule); }),
              ElementsAre(Opening(u"\\sync\\\\mailuser.tbl", kWriter), Opening(u"\\sync\\\\mailconfig.tbl", kWriter),
                          Opening(u"\\sync\\\\mailfilter.tbl", kWriter), Opening(u"\\sync\\\\maillinkman.tbl", kWriter),
                          Opening(u"\\sync\\\\mailfolder.tbl", kWriter), Opening(u"\\sync\\\\mailuidl.tbl", kWriter),
                          Opening(u"\\sync\\\\mailhead.tbl", kWriter), Opening(u"\\sync\\\\mailaddress.tbl", kWriter)));
}

TEST_F(MailExportTest, MessagesAreCopiedFromWhereTheirHeadersSayReplacingOthers) {
  store_.lists[kHeader] = {HeaderNode(1), HeaderNode(2, 1)};
  std::vector<std::pair<std::u16string, std::uint32_t>> copies;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CopyFileW") copies.emplace_back(call.path, call.options[0]);
  });
  Exported(kHeader);
  handset::Observe({});
  EXPECT_THAT(copies,
              ElementsAre(std::pair(u"\\dbdata\\mail\\file\\1.eml", 0u), std::pair(u"\\SD\\mail\\file\\2.eml", 0u)));
}

TEST_F(MailExportTest, EveryModeExportsTheSameAndAnswersModeAndAnchorAsReceived) {
  FillTheStore();
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nLINKMAN = 5");
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) WriteFile(kMailForms[kind].table, {});
    const Answer answer = Export(kModule, mode, u"2006121071010");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, u"2006121071010");
    for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) {
      EXPECT_EQ(ReadFile(kMailForms[kind].table), ExportedRecord(MailKind{kind}));
    }
  }
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nLINKMAN = 5");
  EXPECT_THAT(AllFiles(), SizeIs(9)) << "eight tables and the anchors";
  EXPECT_THAT(handset::PostedMessages(), IsEmpty());
}

TEST_F(MailExportTest, TheLibraryIsNotLoadedByNameAndNothingIsPrinted) {
  FillTheStore();
  std::vector<std::string> functions;
  handset::Observe([&](const handset::Call& call) { functions.emplace_back(call.function); });
  LocalExport(kModule);
  handset::Observe({});
  EXPECT_THAT(functions,
              Each(testing::Not(testing::AnyOf("LoadLibraryW", "GetProcAddressW", "FreeLibrary", "printf"))));
}

TEST_F(MailExportTest, WhatOpeningAndClosingTheDatabaseAnswerIsNotLookedAt) {
  FillTheStore();
  store_.statuses = {{"InitCEDB", -1}, {"CloseCEDB", -1}, {"DisConnectDB", -1}};
  EXPECT_EQ(Exported(kUser), ExportedRecord(kUser));
  EXPECT_EQ(store_.calls.back(), "Delete 1");
}

TEST_F(MailExportTest, TenThousandNodesTravel) {
  for (std::uint32_t number = 1; number <= 10'000; ++number) {
    store_.lists[kUidl].emplace_back(kMailNodeSizes[kUidl]);
    Put32(store_.lists[kUidl].back(), kUidlNumber, number);
  }
  const std::vector<Bytes> records = Split(Exported(kUidl), 132);
  ASSERT_THAT(records, SizeIs(10'000));
  for (std::uint32_t i = 0; i < 10'000; ++i) ASSERT_EQ(Get32(records[i], kUidlNumber), i + 1);
}

TEST_F(MailExportTest, ADirectoryMayHave259CharactersAndNoMore) {
  const std::u16string longest = u"\\" + std::u16string(128, u'a') + u"\\" + std::u16string(129, u'b');
  ASSERT_EQ(longest.size(), 259u);
  MakeDirectory(longest);
  MakeDirectory(longest + u"b");
  FillTheStore();
  WriteText(u"\\dbdata\\mail\\file\\17.eml", "text");
  EXPECT_EQ(Export(kModule, 1, u"7", longest).code, 0u);
  for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) {
    const std::u16string name = kMailForms[kind].table;
    EXPECT_EQ(ReadFile(longest + name.substr(name.rfind(u'\\'))), ExportedRecord(MailKind{kind}));
  }
  EXPECT_EQ(ReadText(longest + u"\\17.eml"), "text");
  const auto before = AllFiles();
  store_.calls.clear();
  const Answer answer = Export(kModule, 1, u"7", longest + u"b");
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.anchor, u"7");
  EXPECT_EQ(AllFiles(), before);
  EXPECT_THAT(store_.calls, testing::Not(testing::Contains("GetUser")));
}

TEST_F(MailExportTest, ADirectoryThatIsMissingOrNullHarmsNothing) {
  FillTheStore();
  EXPECT_EQ(LocalExport(kModule, u"\\nowhere"), 0u);
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_EQ(LocalExport(kModule, nullptr), 0u);
  EXPECT_EQ(ReadFile(u"\\mailuser.tbl"), ExportedRecord(kUser));
}

}  // namespace
}  // namespace qv_test
