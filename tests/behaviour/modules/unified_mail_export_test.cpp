// Exports of the unified mail: mails with their items and texts, folders and rules, and what the store is asked. Nobody
// is told what came of a run, so what is seen of it are the files and the calls.
#include <numeric>

#include "tests/support/run_events.h"
#include "tests/support/scripted_unified_mail_store.h"

namespace qv_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr std::uint32_t kMostInACall = 0x0FFFFFFF;
constexpr char kStoredAnchor[] = "[ANCHORDATE]\r\nUNMAIL = 5";
constexpr char kMovedAnchor[] = "[ANCHORDATE]\r\nUNMAIL = 200612117210";

class UnifiedMailExportTest : public AgentTest {
 protected:
  /// An incremental export against a stored anchor and these snapshots.
  Answer ExportChanges(const Bytes& received_log = {}, const Bytes& sent_log = {}) {
    WriteText(kAnchorIni, kStoredAnchor);
    WriteFile(kReceivedLog, received_log);
    WriteFile(kSentLog, sent_log);
    return Export(5, 3, u"5");
  }

  /// What an export makes of one mail.
  Bytes Exported(const UnMail& mail, std::uint32_t table = 0) {
    for (auto& records : store_.tables) records.clear();
    store_.Add(table, 1, 1, mail);
    EXPECT_EQ(Export(5, 4).code, 0u);
    return ReadFile(kUnMailTable);
  }

  /// What one export makes of each of these mails, all of which are as large as it travels.
  std::vector<Bytes> ExportedAll(const std::vector<UnMail>& mails, std::size_t size) {
    store_.tables[0].clear();
    for (std::uint32_t i = 0; i < mails.size(); ++i) store_.Add(0, i + 1, 1, mails[i]);
    EXPECT_EQ(Export(5, 4).code, 0u);
    return Split(ReadFile(kUnMailTable), size);
  }

  /// The long text that an export makes of the store's. The number of its characters must be told.
  Bytes ExportedText(const UnMail& mail) {
    Bytes exported = Exported(mail);
    if (exported.size() < kUnMailSize) return {};
    EXPECT_EQ(Get32(exported, 628) * 2, exported.size() - kUnMailSize);
    return {exported.begin() + kUnMailSize, exported.end()};
  }

  /// A field of wide text made of a mail with this text in one of its fields.
  Bytes ExportedField(const UnMailText& field, std::string_view narrow) {
    UnMail mail = PlainStoreUnMail(1);
    std::copy(narrow.begin(), narrow.end(), mail.record.begin() + static_cast<std::ptrdiff_t>(field.store));
    return FieldAt(Exported(mail), field.exchange, field.exchange_size);
  }

  static Bytes FieldAt(const Bytes& bytes, std::size_t offset, std::size_t size) {
    if (bytes.size() < offset + size) return {};
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return {begin, begin + static_cast<std::ptrdiff_t>(size)};
  }

  static Bytes WideField(std::u16string_view text, std::size_t size) {
    Bytes field(size);
    PutText(field, 0, text);
    return field;
  }

  /// Fills the store with mails that say nothing but their ids.
  void AddPlain(std::uint32_t table, std::initializer_list<std::uint32_t> ids, std::uint64_t time = 1) {
    for (const std::uint32_t id : ids) store_.Add(table, id, time);
  }

  static Bytes PlainMails(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> tables_and_ids) {
    Bytes mails;
    for (const auto& [table, id] : tables_and_ids) Append(mails, PlainUnMail(table, id));
    return mails;
  }

  static void RemoveFile(std::u16string_view path) { std::filesystem::remove(handset::HostPath(path)); }

  ScriptedUnifiedMailStore store_;
};

// --- Mails ---

TEST_F(UnifiedMailExportTest, AMailTravelsFieldByField) {
  for (const std::uint32_t table : {0u, 1u}) EXPECT_EQ(Exported(StoreUnMail(), table), ExchangeUnMail(table));
}

TEST_F(UnifiedMailExportTest, AMailOfNothingIs880Bytes) {
  EXPECT_EQ(Exported(PlainStoreUnMail(7)), PlainUnMail(0, 7));
  EXPECT_EQ(Exported(PlainStoreUnMail(7), 1), PlainUnMail(1, 7));
}

TEST_F(UnifiedMailExportTest, AMailIsCalledWhatItSaysItself) {
  store_.Add(0, 9, 1, PlainStoreUnMail(7));
  Export(5, 1);
  EXPECT_EQ(ReadFile(kUnMailTable), PlainUnMail(0, 7));
  EXPECT_THAT(store_.CallsOf("GetRec"), ElementsAre("GetRec 0 id 9"));
}

TEST_F(UnifiedMailExportTest, TextsAreCutToTheFieldsOfTheTable) {
  EXPECT_EQ(Exported(FullStoreUnMail()), FullExchangeUnMail());
}

TEST_F(UnifiedMailExportTest, EachByteOfAMailGoesWhereItBelongsAndNowhereElse) {
  static constexpr CopiedBytes kCopied[] = {
      {0, 4, 0},   {6, 1, 620}, {8, 4, 20},  {12, 2, 24}, {14, 2, 28}, {16, 2, 32}, {18, 2, 36}, {20, 2, 40},
      {22, 2, 44}, {24, 2, 56}, {26, 2, 60}, {28, 2, 64}, {30, 2, 68}, {32, 2, 72}, {34, 2, 76},
  };
  const Bytes before = FullExchangeUnMail();
  std::vector<UnMail> turned(kChainHeads[0], FullStoreUnMail());
  for (std::size_t at = 0; at < turned.size(); ++at) turned[at].record[at] ^= 0x40;
  const std::vector<Bytes> exported = ExportedAll(turned, before.size());
  ASSERT_EQ(exported.size(), turned.size());
  for (std::size_t at = 0; at < turned.size(); ++at) {
    Bytes expected = WithByteTurned(before, kCopied, at);
    if (at == 4) expected[12] ^= 1;
    if (at == 5) expected[17] ^= 1;
    for (const UnMailText& text : kUnMailTexts) {
      const std::size_t character = at - text.store;
      if (at >= text.store && character < text.store_size && character < text.exchange_size / 2 - 1) {
        expected[text.exchange + 2 * character] ^= 0x40;
      }
    }
    ASSERT_EQ(exported[at], expected) << "store byte " << at;
  }
}

TEST_F(UnifiedMailExportTest, EachByteOfANodeGoesWhereItBelongsAndNowhereElse) {
  for (std::size_t chain = 0; chain < kUnMailChains; ++chain) {
    const std::size_t item = kUnMailSize + 182 * chain;
    const Bytes before = FullExchangeUnMail();
    std::vector<UnMail> turned(kNodeSizes[chain] - 4, FullStoreUnMail());
    for (std::size_t at = 0; at < turned.size(); ++at) turned[at].chains[chain][0][at] ^= 0x40;
    const std::vector<Bytes> exported = ExportedAll(turned, before.size());
    ASSERT_EQ(exported.size(), turned.size());
    for (std::size_t at = 0; at < turned.size(); ++at) {
      Bytes expected = before;
      if (chain == 3) {
        if (at < 8) expected[item + at] ^= 0x40;
        if (at >= 8 && at < 8 + 149) expected[item + 8 + 2 * (at - 8)] ^= 0x40;
      } else {
        if (at >= 4 && at < 4 + 24) expected[item + 2 * (at - 4)] ^= 0x40;
        if (at >= 29 && at < 29 + 64) expected[item + 50 + 2 * (at - 29)] ^= 0x40;
      }
      ASSERT_EQ(exported[at], expected) << "chain " << chain << ", byte " << at;
    }
  }
}

TEST_F(UnifiedMailExportTest, TheFlagWordIsTakenApart) {
  for (std::uint32_t bit = 0; bit < 16; ++bit) {
    for (const bool inverted : {false, true}) {
      UnMail mail = PlainStoreUnMail(1);
      const std::uint32_t word = inverted ? 0xFFFF & ~(1u << bit) : 1u << bit;
      Put16(mail.record, 4, static_cast<std::uint16_t>(word));
      Bytes expected = PlainUnMail(0, 1);
      // Bits 0, 1 and 2 alone, then 3, 4, 4 and 2 of them.
      Put8(expected, 4, word & 1);
      Put8(expected, 5, word >> 1 & 1);
      Put8(expected, 6, word >> 2 & 1);
      Put8(expected, 7, word >> 3 & 7);
      Put32(expected, 12, word >> 6 & 15);
      Put8(expected, 16, word >> 10 & 15);
      Put8(expected, 17, word >> 14 & 3);
      EXPECT_EQ(Exported(mail), expected) << "bit " << bit;
    }
  }
}

// --- Texts ---

TEST_F(UnifiedMailExportTest, ATextEndsAtItsNulOrWithItsField) {
  for (const UnMailText& field : kUnMailTexts) {
    SCOPED_TRACE(field.store);
    const std::size_t most = field.exchange_size / 2 - 1;
    EXPECT_EQ(ExportedField(field, ""), Bytes(field.exchange_size));
    EXPECT_EQ(ExportedField(field, std::string_view("ab\0cd", 5)), WideField(u"ab", field.exchange_size));
    for (const std::size_t length : {most - 1, most, most + 1, field.store_size}) {
      EXPECT_EQ(ExportedField(field, std::string(std::min(length, field.store_size), 'x')),
                WideField(std::u16string(std::min(length, most), u'x'), field.exchange_size))
          << length << " characters";
    }
  }
}

TEST_F(UnifiedMailExportTest, CharactersOfTwoBytesFillAField) {
  for (const UnMailText& field : kUnMailTexts) {
    SCOPED_TRACE(field.store);
    const std::size_t most = field.exchange_size / 2 - 1;
    std::string narrow;
    while (narrow.size() + 2 <= field.store_size) narrow += "\xCD\xF5";
    EXPECT_EQ(ExportedField(field, narrow),
              WideField(std::u16string(std::min(most, narrow.size() / 2), u'\u738B'), field.exchange_size));
    // One byte more, and the last character is cut in half by the end of the field: nothing is left of it.
    narrow = "a" + narrow.substr(0, narrow.size() - 2) + "\xCD";
    EXPECT_EQ(narrow.size(), field.store_size);
    EXPECT_EQ(
        ExportedField(field, narrow),
        WideField((u"a" + std::u16string(narrow.size() / 2 - 1, u'\u738B')).substr(0, most), field.exchange_size));
  }
}

TEST_F(UnifiedMailExportTest, ATextEndsBeforeWhatIsNoCharacter) {
  for (const UnMailText& field : kUnMailTexts) {
    EXPECT_EQ(ExportedField(field, "ab\xCD\xF5\xFF\xFF gone"), WideField(u"ab\u738B", field.exchange_size));
    EXPECT_EQ(ExportedField(field, std::string_view("ab\xCD\0gone", 8)), WideField(u"ab", field.exchange_size));
    EXPECT_EQ(ExportedField(field, "\xFF gone"), Bytes(field.exchange_size));
  }
}

// --- Items ---

TEST_F(UnifiedMailExportTest, ItemsTravelByKindInTheOrderOfTheirChains) {
  UnMail mail = PlainStoreUnMail(1);
  mail.chains[2] = {Node182("c1"), Node182("c2", "two")};
  mail.chains[0] = {Node182("a1", "one"), Node182("a2"), Node182("a3")};
  mail.chains[3] = {Node308(31, 32, "x"), Node308(33)};
  const SentUnMail expected = {
      .id = 1,
      .items_182 = {Item182(0, u"a1", u"one"), Item182(0, u"a2"), Item182(0, u"a3"), Item182(2, u"c1"),
                    Item182(2, u"c2", u"two")},
      .items_308 = {Item308(31, 32, u"x"), Item308(33)},
  };
  const Bytes exported = Exported(mail);
  EXPECT_EQ(exported, UnMailRecord(expected));
  EXPECT_EQ(FieldAt(exported, 600, 16), Words({3, 0, 2, 5}));
}

TEST_F(UnifiedMailExportTest, AnyChainMayBeAloneOrEmptyOrLong) {
  for (const std::size_t length : {0u, 1u, 2u, 1000u}) {
    for (std::uint16_t chain = 0; chain < kUnMailChains; ++chain) {
      SCOPED_TRACE(chain);
      UnMail mail = StoreUnMailWithText(1, "text");
      SentUnMail expected = {.id = 1, .text = u"text"};
      for (std::uint32_t i = 0; i < length; ++i) {
        mail.chains[chain].push_back(chain == 3 ? Node308(i) : Node182(std::to_string(i)));
        const std::string digits = std::to_string(i);
        const std::u16string text(digits.begin(), digits.end());
        if (chain == 3) {
          expected.items_308.push_back(Item308(i));
        } else {
          expected.items_182.push_back(Item182(chain, text));
        }
      }
      ASSERT_EQ(Exported(mail), UnMailRecord(expected)) << length << " nodes";
    }
  }
}

TEST_F(UnifiedMailExportTest, TextsOfItemsKeepToTheirFields) {
  const auto item_182 = [&](std::string_view first, std::string_view second) {
    UnMail mail = PlainStoreUnMail(1);
    Bytes node(100);
    std::copy(first.begin(), first.end(), node.begin() + 4);
    std::copy(second.begin(), second.end(), node.begin() + 29);
    mail.chains[1] = {node};
    const Bytes exported = Exported(mail);
    return exported.size() == kUnMailSize + 182 ? FieldAt(exported, kUnMailSize, 180) : Bytes();
  };
  const auto expected = [](std::u16string_view first, std::u16string_view second) {
    Bytes texts = WideField(first, 50);
    Append(texts, WideField(second, 130));
    return texts;
  };
  std::string twelve;
  std::string thirty_three;
  while (twelve.size() < 24) twelve += "\xCD\xF5";
  while (thirty_three.size() < 66) thirty_three += "\xCD\xF5";
  EXPECT_EQ(item_182(twelve + "x", thirty_three + "x"),
            expected(std::u16string(12, u'\u738B') + u"x", std::u16string(33, u'\u738B') + u"x"));
  EXPECT_EQ(item_182(twelve + "\xCD", thirty_three + "\xCD"),
            expected(std::u16string(12, u'\u738B'), std::u16string(33, u'\u738B')));
  EXPECT_EQ(item_182("a\xFF\xFFgone", "b\xFF\xFFgone"), expected(u"a", u"b"));

  const auto item_308 = [&](std::string_view text) {
    UnMail mail = PlainStoreUnMail(1);
    Bytes node(164);
    std::copy(text.begin(), text.end(), node.begin() + 8);
    mail.chains[3] = {node};
    return FieldAt(Exported(mail), kUnMailSize + 8, 300);
  };
  std::string full;
  while (full.size() < 152) full += "\xCD\xF5";
  EXPECT_EQ(item_308(full), WideField(std::u16string(76, u'\u738B'), 300));
  EXPECT_EQ(item_308("a" + full.substr(0, 151)), WideField(u"a" + std::u16string(75, u'\u738B'), 300));
  EXPECT_EQ(item_308("a\xFF\xFFgone"), WideField(u"a", 300));
}

// --- Long texts ---

TEST_F(UnifiedMailExportTest, ALongTextIsToldInCharacters) {
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, "a")), WideField(u"a", 2));
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, "\xCD\xF5")), WideField(u"\u738B", 2));
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, "a\xCD\xF5z")), WideField(u"a\u738Bz", 6));
  const std::string novel(70000, 'n');
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, novel)), WideField(std::u16string(70000, u'n'), 140000));
}

TEST_F(UnifiedMailExportTest, ALongTextEndsAtItsNulAndBeforeWhatIsNoCharacter) {
  EXPECT_THAT(ExportedText(StoreUnMailWithText(1, "")), IsEmpty());
  EXPECT_THAT(ExportedText(StoreUnMailWithText(1, std::string_view("\0ab", 3))), IsEmpty());
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, std::string_view("ab\0cd", 5))), WideField(u"ab", 4));
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, "ab\xCD")), WideField(u"ab", 4));
  EXPECT_EQ(ExportedText(StoreUnMailWithText(1, "ab\xFF\xFF gone")), WideField(u"ab", 4));
  EXPECT_THAT(ExportedText(StoreUnMailWithText(1, "\xFF\xFF")), IsEmpty());
}

TEST_F(UnifiedMailExportTest, ALongTextIsAsLongAsItSays) {
  UnMail mail = StoreUnMailWithText(1, "abcdef");
  Put32(mail.record, kUnMailTextLength, 3);
  EXPECT_EQ(ExportedText(mail), WideField(u"abc", 6));
  Put32(mail.record, kUnMailTextLength, 0);
  EXPECT_THAT(ExportedText(mail), IsEmpty());
  mail.text.reset();
  EXPECT_THAT(ExportedText(mail), IsEmpty());
}

TEST_F(UnifiedMailExportTest, EachByteOfALongTextTravels) {
  const std::string text = "abcdefghijklmnopqrst";
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::string turned = text;
    turned[at] = static_cast<char>(turned[at] ^ 0x40);
    EXPECT_EQ(ExportedText(StoreUnMailWithText(1, turned)),
              WideField(std::u16string(turned.begin(), turned.end()), 40));
  }
}

TEST_F(UnifiedMailExportTest, ATextThatIsNotWhereItIsSaidToBeEndsItsTable) {
  for (const std::uint32_t length : {1u, 1000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    for (auto& records : store_.tables) records.clear();
    UnMail mail = PlainStoreUnMail(2);
    Put32(mail.record, kUnMailTextLength, length);
    AddPlain(0, {1});
    store_.Add(0, 2, 1, mail);
    AddPlain(0, {3});
    AddPlain(1, {4});
    for (const bool incremental : {false, true}) {
      EXPECT_EQ((incremental ? ExportChanges() : Export(5, 1)).code, 0u);
      EXPECT_EQ(ReadFile(kUnMailTable), PlainMails({{0, 1}, {1, 4}})) << length << " bytes";
      EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0, 2, 1, 0, 3, 1, 0}));
    }
  }
}

TEST_F(UnifiedMailExportTest, ATextThatThereIsNoMemoryForEndsItsTable) {
  for (const std::uint32_t length : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    for (auto& records : store_.tables) records.clear();
    UnMail mail = StoreUnMailWithText(2, "text");
    Put32(mail.record, kUnMailTextLength, length);
    AddPlain(0, {1});
    store_.Add(0, 2, 1, mail);
    AddPlain(1, {4});
    EXPECT_EQ(Export(5, 1).code, 0u);
    EXPECT_EQ(ReadFile(kUnMailTable), PlainMails({{0, 1}, {1, 4}})) << length << " bytes";
  }
}

// --- Folders and rules ---

TEST_F(UnifiedMailExportTest, FoldersAndRulesAreWrittenWhole) {
  for (const std::size_t count : {0u, 1u, 29u, 30u}) {
    store_.folders = Folders(count * 10);
    store_.folder_rules = Rules(count);
    store_.sender_rules = Rules(30 - count, 0x90);
    for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 0xFFFFFFFFu}) {
      for (const auto* file : kUnMailRuleFiles) WriteFile(file, Bytes(5000, 0x77));
      EXPECT_EQ(Export(5, mode).code, 0u);
      EXPECT_EQ(ReadFile(kUnMailFolders), store_.folders);
      EXPECT_EQ(ReadFile(kUnMailFolderRules), store_.folder_rules);
      EXPECT_EQ(ReadFile(kUnMailSenderRules), store_.sender_rules);
    }
  }
}

TEST_F(UnifiedMailExportTest, NoMoreRulesAreTakenThanThereIsRoomFor) {
  store_.folder_rules = Rules(30);
  store_.sender_rules = Rules(30, 0x90);
  for (const std::uint32_t claim : {31u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_numbers = {{"GetAllSubFolderFilterRecs", claim}, {"GetAllSenderAppointRecs", claim}};
    EXPECT_EQ(Export(5, 1).code, 0u);
    EXPECT_EQ(ReadFile(kUnMailFolderRules), store_.folder_rules);
    EXPECT_EQ(ReadFile(kUnMailSenderRules), store_.sender_rules);
  }
}

TEST_F(UnifiedMailExportTest, RulesThatTheStoreCountsButDoesNotFillAreZero) {
  store_.folder_rules = Rules(2);
  store_.sender_rules = Rules(1, 0x90);
  store_.claimed_numbers = {{"GetAllSubFolderFilterRecs", 30}, {"GetAllSenderAppointRecs", 2}};
  Export(5, 1);
  Bytes folder_rules = Rules(2);
  folder_rules.resize(30 * kRuleSize);
  Bytes sender_rules = Rules(1, 0x90);
  sender_rules.resize(2 * kRuleSize);
  EXPECT_EQ(ReadFile(kUnMailFolderRules), folder_rules);
  EXPECT_EQ(ReadFile(kUnMailSenderRules), sender_rules);
}

TEST_F(UnifiedMailExportTest, FewerFoldersOrRulesThanThereAreAreTakenAtTheStoresWord) {
  store_.folders = Folders(3);
  store_.folder_rules = Rules(3);
  store_.sender_rules = Rules(3, 0x90);
  store_.claimed_numbers = {{"GetSubFolderList", 1}, {"GetAllSubFolderFilterRecs", 2}, {"GetAllSenderAppointRecs", 1}};
  EXPECT_EQ(Export(5, 1).code, 0u);
  EXPECT_EQ(ReadFile(kUnMailFolders), Folders(1));
  EXPECT_EQ(ReadFile(kUnMailFolderRules), Rules(2));
  EXPECT_EQ(ReadFile(kUnMailSenderRules), Rules(1, 0x90));
}

TEST_F(UnifiedMailExportTest, NoFoldersAreAnEmptyFile) {
  store_.has_no_folder_block = true;
  Export(5, 1);
  EXPECT_THAT(ReadFile(kUnMailFolders), IsEmpty()) << "a null block of none";
  RemoveFile(kUnMailFolders);
  store_.has_no_folder_block = false;
  store_.fills_nothing = {"GetSubFolderList"};
  Export(5, 1);
  EXPECT_THAT(ReadFile(kUnMailFolders), IsEmpty()) << "nothing filled in";
}

TEST_F(UnifiedMailExportTest, FoldersThatCannotBeThereAreNotWritten) {
  store_.folders = Folders(2);
  store_.has_no_folder_block = true;
  // Behind the last number, folders would have more bytes than 32 bits can say.
  for (const bool has_block : {false, true}) {
    store_.has_no_folder_block = !has_block;
    for (const std::uint32_t claim : {1u, 2u, 15790320u, 15790321u, 0x10000000u, 0x80000000u, 0xFFFFFFFFu}) {
      if (has_block && claim <= 15790320) continue;
      store_.claimed_numbers = {{"GetSubFolderList", claim}};
      EXPECT_EQ(Export(5, 1).code, 0u);
      EXPECT_FALSE(Exists(kUnMailFolders)) << claim << " folders";
      EXPECT_TRUE(Exists(kUnMailFolderRules));
    }
  }
}

TEST_F(UnifiedMailExportTest, EachListFailsAlone) {
  struct List {
    const char16_t* entry_point;
    const char* told;
    const char16_t* file;
  };
  static constexpr List kLists[] = {
      {u"UMAIL_GetSubFolderList", "GetSubFolderList", kUnMailFolders},
      {u"UMAIL_GetAllSubFolderFilterRecs", "GetAllSubFolderFilterRecs", kUnMailFolderRules},
      {u"UMAIL_GetAllSenderAppointRecs", "GetAllSenderAppointRecs", kUnMailSenderRules},
  };
  const auto expect_only_failing = [&](ScriptedUnifiedMailStore& store, const List& failing) {
    for (const auto* file : kUnMailRuleFiles) RemoveFile(file);
    WriteText(kAnchorIni, kStoredAnchor);
    store.folders = Folders(1);
    store.folder_rules = store.sender_rules = Rules(1);
    store.Add(0, 5);
    EXPECT_EQ(Export(5, 1).code, 0u);
    for (const auto* file : kUnMailRuleFiles) EXPECT_EQ(Exists(file), file != failing.file);
    EXPECT_EQ(ReadFile(kUnMailTable), PlainUnMail(0, 5));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({5, 1, 0}));
    EXPECT_EQ(ReadText(kAnchorIni), kMovedAnchor);
  };
  for (const List& list : kLists) {
    SCOPED_TRACE(list.told);
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      ScriptedUnifiedMailStore lacking({list.entry_point}, address);
      expect_only_failing(lacking, list);
    }
    for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
      ScriptedUnifiedMailStore failing;
      failing.statuses[list.told] = status;
      expect_only_failing(failing, list);
    }
  }
}

TEST_F(UnifiedMailExportTest, AListThatCannotBeWrittenHoldsNothingUp) {
  store_.folders = Folders(2);
  store_.folder_rules = store_.sender_rules = Rules(2);
  AddPlain(0, {5});
  for (const auto* unwritable : kUnMailRuleFiles) {
    for (const auto* file : kUnMailRuleFiles) RemoveFile(file);
    MakeDirectory(unwritable);
    EXPECT_EQ(Export(5, 1).code, 0u);
    for (const auto* file : kUnMailRuleFiles) EXPECT_TRUE(file == unwritable || !ReadFile(file).empty());
    EXPECT_EQ(ReadFile(kUnMailTable), PlainUnMail(0, 5));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({5, 1, 0}));
  }
}

// --- Full exports ---

TEST_F(UnifiedMailExportTest, TheModeSaysWhatIsRemembered) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u, 5u, 6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    for (auto& records : store_.tables) records.clear();
    AddPlain(0, {7, 3});
    AddPlain(1, {3});
    for (const auto* file : {kAnchorIni, kReceivedLog, kSentLog}) RemoveFile(file);
    WriteFile(kUnMailTable, Bytes(9999, 0x77));
    const Answer answer = Export(5, mode, u"77");
    const bool remembered = mode < 4 || mode >= 0x80000000;
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, remembered ? kNowAnchor : u"77");
    EXPECT_EQ(ReadFile(kUnMailTable), PlainMails({{0, 7}, {0, 3}, {1, 3}}));
    for (const auto* file : {kAnchorIni, kReceivedLog, kSentLog}) EXPECT_EQ(Exists(file), remembered);
    EXPECT_FALSE(Exists(kUnMailChanges));
    EXPECT_FALSE(Exists(kUnMailIdMap));
    if (!remembered) continue;
    EXPECT_EQ(ReadFile(kReceivedLog), Words({7, 1, 0, 3, 1, 0}));
    EXPECT_EQ(ReadFile(kSentLog), Words({3, 1, 0}));
    EXPECT_EQ(ReadText(kAnchorIni), kMovedAnchor);
  }
}

TEST_F(UnifiedMailExportTest, ALocalExportRemembersNothing) {
  AddPlain(1, {3});
  store_.folders = Folders(2);
  EXPECT_EQ(LocalExport(5), 0u);
  EXPECT_EQ(ReadFile(kUnMailTable), PlainUnMail(1, 3));
  EXPECT_EQ(ReadFile(kUnMailFolders), Folders(2));
  for (const auto* file : {kAnchorIni, kReceivedLog, kSentLog}) EXPECT_FALSE(Exists(file));
}

TEST_F(UnifiedMailExportTest, AFullExportGoesStepByStep) {
  AddPlain(0, {7, 3});
  AddPlain(1, {4});
  RunEvents events(store_);
  Export(5, 1);
  auto seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.starts_with("find "); });
  EXPECT_THAT(seen, ElementsAre("call GetSubFolderList", "create UnMailFolder.tbl",               //
                                "call GetAllSubFolderFilterRecs", "create UnMailFolderFilt.tbl",  //
                                "call GetAllSenderAppointRecs", "create UnMailSendFilt.tbl",      //
                                "open qvSyncAnchor.ini", "create qvSyncAnchor.ini",               //
                                "create UnMailinfo.tbl",                                          //
                                "call GetAllRecNum 0", "call GetAllidTime 0 room 2", "call GetRec 0 id 7",
                                "call GetRec 0 id 3",  //
                                "call GetAllRecNum 1", "call GetAllidTime 1 room 1", "call GetRec 1 id 4",
                                "create unmailrecv.log", "call GetAllRecNum 0", "call GetAllidTime 0 room 2",
                                "create unmailsend.log", "call GetAllRecNum 1", "call GetAllidTime 1 room 1"));
}

TEST_F(UnifiedMailExportTest, FilesAreOpenedForWritersAloneAndReadersBeside) {
  AddPlain(0, {7});
  EXPECT_THAT(DataOpeningsOf([&] { Export(5, 1); }),
              ElementsAre(Opening(kUnMailFolders, kWriter), Opening(kUnMailFolderRules, kWriter),
                          Opening(kUnMailSenderRules, kWriter), Opening(kUnMailTable, kWriter),
                          Opening(kReceivedLog, kWriter), Opening(kSentLog, kWriter)));
  EXPECT_THAT(DataOpeningsOf([&] { ExportChanges(); }),
              ElementsAre(Opening(kUnMailFolders, kWriter), Opening(kUnMailFolderRules, kWriter),
                          Opening(kUnMailSenderRules, kWriter), Opening(kUnMailTable, kWriter),
                          Opening(kUnMailChanges, kWriter), Opening(kReceivedLog, kReader),
                          Opening(kReceivedLog, kWriter), Opening(kSentLog, kWriter)))
      << "the snapshot of a table that is empty is not even looked at";
}

TEST_F(UnifiedMailExportTest, AnEmptyStoreLeavesEmptyFiles) {
  for (const auto* file : {kUnMailTable, kReceivedLog, kSentLog}) WriteFile(file, Bytes(24, 0x77));
  EXPECT_EQ(Export(5, 1).code, 0u);
  for (const auto* file : {kUnMailTable, kReceivedLog, kSentLog}) EXPECT_THAT(ReadFile(file), IsEmpty());
  EXPECT_THAT(store_.CallsOf("GetAllidTime"), IsEmpty());
}

TEST_F(UnifiedMailExportTest, OnlyOneMailIsHeldAtATime) {
  for (std::uint32_t id = 1; id <= 100; ++id) store_.Add(0, id, 1, StoreUnMailWithText(id, std::string(5000, 'x')));
  handset::ResetPeakMemory();
  EXPECT_EQ(Export(5, 1).code, 0u);
  EXPECT_LT(handset::PeakAllocatedBytes(), 60000u);
  EXPECT_EQ(handset::AllocatedBytes(), 0u);
  EXPECT_EQ(ReadFile(kUnMailTable).size(), 100 * (880 + 10000u));
}

// --- Incremental exports ---

TEST_F(UnifiedMailExportTest, WithoutItsAnchorAnIncrementalExportIsAFullOne) {
  AddPlain(0, {7});
  for (const char* const anchor : {"", "[ANCHORDATE]\r\nUNMAIL = 6", "[ANCHORDATE]\r\nUNMAIL = 55",
                                   "[ANCHORDATE]\r\nTASK = 5", "[ANCHORDATE]\r\nUNMAIL = 00000000000000"}) {
    WriteText(kAnchorIni, anchor);
    const bool is_none = std::string_view(anchor).ends_with("000");
    const Answer answer = Export(5, 3, is_none ? u"00000000000000" : u"5");
    EXPECT_EQ(answer.mode, 1u) << anchor;
    EXPECT_EQ(answer.anchor, kNowAnchor);
    EXPECT_FALSE(Exists(kUnMailChanges));
    EXPECT_EQ(ReadFile(kUnMailTable), PlainUnMail(0, 7));
  }
}

TEST_F(UnifiedMailExportTest, ChangesOfBothTablesStandInOneList) {
  // Of each table one mail is as it was, one newer, one older, one new, and two are gone.
  for (const std::uint32_t table : {0u, 1u}) {
    const std::uint32_t first = 100 * table;
    store_.Add(table, first + 1, 0x0000000200000001);
    store_.Add(table, first + 2, 0x0000000200000002);
    store_.Add(table, first + 3, 0x0000000100000001);
    store_.Add(table, first + 4, 9);
  }
  const auto snapshot = [](std::uint32_t first) {
    return Words({first + 6, 1, 1, first + 3, 1, 2, first + 2, 1, 2, first + 1, 1, 2, first + 5, 1, 1});
  };
  const Answer answer = ExportChanges(snapshot(0), snapshot(100));
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_EQ(ReadFile(kUnMailChanges), Words({0, 2,   2, 0, 3,   2, 0, 4,   1, 0, 6,   3, 0, 5,   3,  //
                                             1, 102, 2, 1, 103, 2, 1, 104, 1, 1, 106, 3, 1, 105, 3}));
  EXPECT_EQ(ReadFile(kUnMailTable), PlainMails({{0, 2}, {0, 3}, {0, 4}, {1, 102}, {1, 103}, {1, 104}}));
  EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 2, 2, 2, 2, 3, 1, 1, 4, 9, 0}));
  EXPECT_EQ(ReadFile(kSentLog), Words({101, 1, 2, 102, 2, 2, 103, 1, 1, 104, 9, 0}));
}

TEST_F(UnifiedMailExportTest, AnIncrementalExportGoesStepByStep) {
  AddPlain(0, {7, 3});
  AddPlain(1, {4});
  RunEvents events(store_);
  ExportChanges(Words({3, 1, 0}), Words({4, 1, 0}));
  auto seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.starts_with("find "); });
  seen.erase(seen.begin(), std::ranges::find(seen, "open qvSyncAnchor.ini"));
  EXPECT_THAT(seen, ElementsAre("open qvSyncAnchor.ini", "open qvSyncAnchor.ini", "create qvSyncAnchor.ini",
                                "create UnMailinfo.tbl", "create UnMailcmd.tbl",  //
                                "call GetAllRecNum 0", "call GetAllidTime 0 room 2", "open unmailrecv.log",
                                "call GetRec 0 id 7",  //
                                "call GetAllRecNum 1", "call GetAllidTime 1 room 1", "open unmailsend.log",
                                "create unmailrecv.log", "call GetAllRecNum 0", "call GetAllidTime 0 room 2",
                                "create unmailsend.log", "call GetAllRecNum 1", "call GetAllidTime 1 room 1"));
}

TEST_F(UnifiedMailExportTest, ChangedMailsTravelWithAllThatBelongsToThem) {
  store_.Add(0, 5, 1, StoreUnMail());
  store_.Add(1, 6, 1, StoreUnMail());
  ExportChanges(Words({5, 2, 0}));
  Bytes expected = ExchangeUnMail(0);
  Append(expected, ExchangeUnMail(1));
  EXPECT_EQ(ReadFile(kUnMailTable), expected);
}

TEST_F(UnifiedMailExportTest, WithoutChangesTheFilesAreEmpty) {
  AddPlain(0, {7});
  WriteFile(kUnMailTable, Bytes(100));
  WriteFile(kUnMailChanges, Bytes(100));
  ExportChanges(Words({7, 1, 0}));
  EXPECT_THAT(ReadFile(kUnMailTable), IsEmpty());
  EXPECT_THAT(ReadFile(kUnMailChanges), IsEmpty());
}

TEST_F(UnifiedMailExportTest, TheMailsOfAnEmptyTableDoNotCountAsDeleted) {
  AddPlain(1, {4});
  ExportChanges(Words({7, 1, 0}), Words({4, 1, 0, 5, 1, 0}));
  EXPECT_EQ(ReadFile(kUnMailChanges), Words({1, 5, 3}));
  EXPECT_THAT(ReadFile(kReceivedLog), IsEmpty());
}

TEST_F(UnifiedMailExportTest, ATableWithoutASnapshotIsLeftOut) {
  AddPlain(0, {7});
  AddPlain(1, {4});
  for (const auto* missing : {kReceivedLog, kSentLog}) {
    WriteText(kAnchorIni, kStoredAnchor);
    for (const auto* file : {kReceivedLog, kSentLog}) WriteFile(file, {});
    RemoveFile(missing);
    const Answer answer = Export(5, 3, u"5");
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.mode, 3u);
    const bool received = missing == kSentLog;
    EXPECT_EQ(ReadFile(kUnMailChanges), received ? Words({0, 7, 1}) : Words({1, 4, 1}));
    EXPECT_EQ(ReadFile(kUnMailTable), received ? PlainUnMail(0, 7) : PlainUnMail(1, 4));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({7, 1, 0}));
    EXPECT_EQ(ReadFile(kSentLog), Words({4, 1, 0}));
  }
}

TEST_F(UnifiedMailExportTest, SnapshotsMayBeLongAndEndInATornEntry) {
  Bytes snapshot;
  Bytes expected;
  for (std::uint32_t id = 1; id <= 2500; ++id) {
    Append(snapshot, Words({id, 1, 0}));
    if (id != 2400) Append(expected, Words({1, id, 3}));
  }
  snapshot.resize(snapshot.size() + 11, 0x77);
  AddPlain(1, {2400});
  ExportChanges({}, snapshot);
  EXPECT_EQ(ReadFile(kUnMailChanges), expected);
  EXPECT_THAT(ReadFile(kUnMailTable), IsEmpty());
}

TEST_F(UnifiedMailExportTest, WithoutItsChangeListAnIncrementalExportStillRemembers) {
  AddPlain(0, {7});
  MakeDirectory(kUnMailChanges);
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_THAT(ReadFile(kUnMailTable), IsEmpty());
  EXPECT_EQ(ReadFile(kReceivedLog), Words({7, 1, 0}));
  EXPECT_EQ(ReadText(kAnchorIni), kMovedAnchor);
}

TEST_F(UnifiedMailExportTest, WithoutItsTableAnExportStillRemembers) {
  AddPlain(0, {7});
  MakeDirectory(kUnMailTable);
  EXPECT_EQ(Export(5, 1).code, 0u);
  EXPECT_EQ(ReadFile(kReceivedLog), Words({7, 1, 0}));
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kReceivedLog), Words({7, 1, 0}));
  EXPECT_EQ(ReadText(kAnchorIni), kMovedAnchor);
  EXPECT_FALSE(Exists(kUnMailChanges)) << "changes without mails are of no use";
  EXPECT_THAT(store_.CallsOf("GetRec"), IsEmpty());
}

// --- Stores that fail, lack something, or say what cannot be ---

TEST_F(UnifiedMailExportTest, WhatTheStoreLacksEndsOnlyWhatNeedsIt) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const auto* name : {u"UMAIL_GetAllRecNum", u"UMAIL_GetAllidTime", u"UMAIL_GetRec"}) {
      for (const bool incremental : {false, true}) {
        ScriptedUnifiedMailStore lacking({name}, address);
        lacking.Add(0, 7);
        lacking.folders = Folders(1);
        EXPECT_EQ((incremental ? ExportChanges() : Export(5, 1)).code, 0u);
        EXPECT_EQ(ReadFile(kUnMailFolders), Folders(1));
        EXPECT_THAT(ReadFile(kUnMailTable), IsEmpty());
        if (incremental) {
          EXPECT_THAT(ReadFile(kUnMailChanges), IsEmpty());
        }
        const bool lists = name == std::u16string_view(u"UMAIL_GetRec");
        EXPECT_EQ(ReadFile(kReceivedLog), lists ? Words({7, 1, 0}) : Bytes());
        EXPECT_EQ(ReadText(kAnchorIni), kMovedAnchor);
      }
    }
  }
}

TEST_F(UnifiedMailExportTest, AnExportNeedsNothingThatWrites) {
  const ScriptedUnifiedMailStore lacking({u"UMAIL_AddOneRec", u"UMAIL_UpdateRec", u"UMAIL_DelRec", u"tag_UMAIL_DelRec",
                                          u"UMAIL_WriteFolderList", u"UMAIL_WriteAllSubFolderFilterRecs",
                                          u"UMAIL_WriteAllSenderAppointRecs"});
  EXPECT_EQ(Export(5, 1).code, 0u);
  for (const auto* file : kUnMailRuleFiles) EXPECT_TRUE(Exists(file));
  EXPECT_TRUE(Exists(kUnMailTable));
}

TEST_F(UnifiedMailExportTest, AFailingTableDoesNotHoldUpTheOther) {
  // The answering calls behind the lists': list, read twice, of each table; then list for each snapshot.
  const Bytes all = PlainMails({{0, 1}, {0, 2}, {1, 3}, {1, 4}});
  const Bytes kLeft[] = {PlainMails({{1, 3}, {1, 4}}),
                         PlainMails({{1, 3}, {1, 4}}),
                         PlainMails({{0, 1}, {1, 3}, {1, 4}}),
                         PlainMails({{0, 1}, {0, 2}}),
                         PlainMails({{0, 1}, {0, 2}}),
                         PlainMails({{0, 1}, {0, 2}, {1, 3}}),
                         all,
                         all};
  for (unsigned n = 1; n <= 8; ++n) {
    for (const bool incremental : {false, true}) {
      for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
        ScriptedUnifiedMailStore failing;
        for (const std::uint32_t id : {1u, 2u}) failing.Add(0, id);
        for (const std::uint32_t id : {3u, 4u}) failing.Add(1, id);
        failing.fail_call = 3 + n;
        failing.failing_status = status;
        EXPECT_EQ((incremental ? ExportChanges() : Export(5, 1)).code, 0u);
        EXPECT_TRUE(failing.failed_a_call);
        EXPECT_EQ(ReadFile(kUnMailTable), kLeft[n - 1]) << "call " << n;
        EXPECT_EQ(ReadFile(kReceivedLog), n == 7 ? Bytes() : Words({1, 1, 0, 2, 1, 0}));
        EXPECT_EQ(ReadFile(kSentLog), n == 8 ? Bytes() : Words({3, 1, 0, 4, 1, 0}));
      }
    }
  }
}

TEST_F(UnifiedMailExportTest, CountsThatCannotBeAreNoRecords) {
  AddPlain(0, {7});
  for (const std::uint32_t claim : {0u, kMostInACall + 1, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    store_.claimed_count = claim;
    for (const bool incremental : {false, true}) {
      EXPECT_EQ((incremental ? ExportChanges() : Export(5, 1)).code, 0u);
      EXPECT_THAT(ReadFile(kUnMailTable), IsEmpty()) << claim;
      EXPECT_THAT(ReadFile(kReceivedLog), IsEmpty());
      EXPECT_THAT(store_.CallsOf("GetRec"), IsEmpty());
    }
  }
}

TEST_F(UnifiedMailExportTest, MoreListedThanThereIsRoomForIsCut) {
  AddPlain(0, {7, 8});
  for (const std::uint32_t claim : {3u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    store_.claimed_listed = claim;
    EXPECT_EQ(Export(5, 1).code, 0u);
    EXPECT_EQ(ReadFile(kUnMailTable), PlainMails({{0, 7}, {0, 8}}));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({7, 1, 0, 8, 1, 0}));
  }
}

TEST_F(UnifiedMailExportTest, AMailTheStoreDoesNotFillIsZero) {
  store_.Add(0, 9, 1, StoreUnMail());
  store_.Add(0, 10, 1, StoreUnMail());
  store_.fills_nothing = {"GetRec"};
  Export(5, 1);
  EXPECT_EQ(ReadFile(kUnMailTable), PlainMails({{0, 0}, {0, 0}})) << "nor is anything left of an earlier one";
}

TEST_F(UnifiedMailExportTest, ATornMailIsTheLast) {
  store_.Add(0, 5, 1, StoreUnMail());
  AddPlain(0, {6});
  AddPlain(1, {7});
  const std::size_t size = ExchangeUnMail(0).size();
  for (const std::size_t space : {std::size_t{0}, std::size_t{1}, size - 1, size, size + 879, size + 880, size + 881}) {
    RemoveFile(kUnMailTable);
    handset::SetFreeSpace(space);
    EXPECT_EQ(Export(5, 4).code, 0u);
    EXPECT_EQ(ReadFile(kUnMailTable).size(), space) << "nothing follows it";
  }
  handset::SetFreeSpace(std::nullopt);
  // The same when there would be room for those behind it.
  const std::size_t kLeft[] = {size / 2, size + 440, size + 880 + 440};
  for (unsigned n = 1; n <= 3; ++n) {
    handset::FailCallOf("WriteFile", n, handset::Fault::kCutShort);
    EXPECT_EQ(Export(5, 4).code, 0u);
    EXPECT_EQ(ReadFile(kUnMailTable).size(), kLeft[n - 1]);
  }
}

TEST_F(UnifiedMailExportTest, TheTableIsCompleteBeforeTheSnapshotsAreRewritten) {
  AddPlain(0, {7});
  std::vector<unsigned> open_files;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && (call.path == kReceivedLog || call.path == kSentLog)) {
      open_files.push_back(handset::TakeCensus().files);
    }
  });
  Export(5, 1);
  handset::Observe({});
  EXPECT_THAT(open_files, ElementsAre(0u, 0u));
}

TEST_F(UnifiedMailExportTest, WithoutItsStoreNothingHappens) {
  for (const std::uintptr_t handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"UniMailStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    WriteText(kAnchorIni, kStoredAnchor);
    const auto before = AllFiles();
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      const Answer answer = Export(5, mode, u"77");
      EXPECT_EQ(answer.code, 0u);
      EXPECT_EQ(answer.returned, 0u);
      EXPECT_EQ(answer.mode, mode);
      EXPECT_EQ(answer.anchor, u"77");
    }
    EXPECT_EQ(LocalExport(5), 0u);
    EXPECT_EQ(AllFiles(), before);
  }
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(UnifiedMailExportTest, ADirectoryThatIsTooLongIsNone) {
  AddPlain(0, {7});
  const std::u16string longest = u"\\sync" + std::u16string(254, u'\\');
  const Answer answer = Export(5, 1, u"77", longest + u"\\");
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_THAT(AllFiles(), IsEmpty());
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_EQ(Export(5, 1, u"", longest).code, 0u);
  EXPECT_THAT(store_.calls, Not(IsEmpty()));
}

}  // namespace
}  // namespace qv_test
