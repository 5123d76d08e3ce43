// Recovers of the unified mail: what reaches the store of mails, folders and rules, and what becomes of the files.
// Nobody is told what came of a run.
#include <array>
#include <functional>
#include <random>

#include "tests/support/run_events.h"
#include "tests/support/scripted_unified_mail_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// Far less than any of the lengths that are made up, far more than a run needs beside its mails.
constexpr std::uint64_t kLittleMemory = 8192;

class UnifiedMailRecoverTest : public AgentTest {
 protected:
  /// What an inserting recover hands to the store for a table of mails.
  std::vector<UnMail> Recovered(const Bytes& mails) {
    Empty();
    WriteFile(kUnMailTable, mails);
    EXPECT_EQ(Recover(5, 4).code, 0u);
    EXPECT_FALSE(Exists(kUnMailTable));
    return store_.MailsOf(0);
  }

  Answer RecoverChanges(const Bytes& changes, const Bytes& mails = {}) {
    WriteFile(kUnMailTable, mails);
    WriteFile(kUnMailChanges, changes);
    return Recover(5, 3);
  }

  void Empty() {
    for (auto& records : store_.tables) records.clear();
    store_.astray.clear();
    store_.calls.clear();
    store_.next_id = 1000;
  }

  static Bytes PlainMails(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> tables_and_ids) {
    Bytes mails;
    for (const auto& [table, id] : tables_and_ids) Append(mails, PlainUnMail(table, id));
    return mails;
  }

  /// A mail that says more than there is must not be applied, nor anything behind it, and not even be made room for.
  void ExpectRefused(const Bytes& mail) {
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      Empty();
      Bytes mails = PlainUnMail(0, 7);
      Append(mails, mail);
      WriteFile(kUnMailTable, mails);
      WriteFile(kUnMailChanges, Words({0, 7, 1, 0, 8, 1}));
      std::filesystem::remove(handset::HostPath(kUnMailIdMap));
      EXPECT_LT(LargestBlockOf([&] { EXPECT_EQ(Recover(5, mode).code, 0u); }), kLittleMemory);
      EXPECT_THAT(store_.MailsOf(0), ElementsAre(PlainStoreUnMail(7))) << "what came before it stays inserted";
      EXPECT_FALSE(Exists(kUnMailTable));
      EXPECT_EQ(Exists(kUnMailChanges), mode != 3);
      if (mode == 4) continue;
      EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7}));
      EXPECT_EQ(ReadFile(kReceivedLog), Words({1000, 5, 6}));
    }
  }

  /// The largest block that is asked for while this runs, whether or not there is memory for it.
  static std::uint32_t LargestBlockOf(const std::function<void()>& run) {
    std::uint32_t largest = 0;
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "realloc" || call.function == "malloc") largest = std::max(largest, call.size);
    });
    run();
    handset::Observe({});
    return largest;
  }

  static void RemoveFile(std::u16string_view path) { std::filesystem::remove(handset::HostPath(path)); }

  ScriptedUnifiedMailStore store_;
};

/// The 8-bit text of a field of `size` bytes.
std::string NarrowField(const Bytes& record, std::size_t offset, std::size_t size) {
  const auto begin = record.begin() + static_cast<std::ptrdiff_t>(offset);
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

/// What becomes of a filled field of 8-bit text when byte `at` of what it was made from is turned over.
void TurnTextByte(Bytes& record, const UnMailText& text, std::size_t at) {
  if (at < text.exchange || at >= text.exchange + text.exchange_size) return;
  const std::size_t character = (at - text.exchange) / 2;
  if ((at - text.exchange) % 2 == 0) {
    if (character < text.store_size - 1) record[text.store + character] ^= 0x40;
  } else {  // Now a character that the handset's code page lacks, before which the text ends.
    for (std::size_t i = character; i < text.store_size; ++i) record[text.store + i] = 0;
  }
}

std::string Padded(std::string text, std::size_t size) {
  text.resize(size);
  return text;
}

// --- Mails ---

TEST_F(UnifiedMailRecoverTest, AMailReachesTheStoreFieldByField) {
  for (const Bytes& sent : {ExchangeUnMail(0), NoisyUnMail(0)}) {
    EXPECT_THAT(Recovered(sent), ElementsAre(RecoveredUnMail()));
    EXPECT_THAT(store_.calls, ElementsAre("AddOneRec 0"));
  }
}

TEST_F(UnifiedMailRecoverTest, AMailOfNothingHasNoChainsAndNoText) {
  EXPECT_THAT(Recovered(PlainUnMail(0, 7)), ElementsAre(PlainStoreUnMail(7)));
}

TEST_F(UnifiedMailRecoverTest, TextsAreCutToTheFieldsOfTheStore) {
  EXPECT_THAT(Recovered(FullSentUnMail()), ElementsAre(FullRecoveredUnMail()));
}

TEST_F(UnifiedMailRecoverTest, MailsOfAnySizeFollowEachOther) {
  Bytes mails = NoisyUnMail(0);
  Append(mails, PlainUnMail(0, 2));
  Append(mails, FullSentUnMail());
  Append(mails, UnMailRecord({.id = 4, .text = std::u16string(70000, u'x')}));
  Append(mails, PlainUnMail(0, 5));
  const UnMail novel = StoreUnMailWithText(4, Padded("xxxx", 70000));
  EXPECT_THAT(Recovered(mails),
              ElementsAre(RecoveredUnMail(), PlainStoreUnMail(2), FullRecoveredUnMail(), novel, PlainStoreUnMail(5)));
}

TEST_F(UnifiedMailRecoverTest, EachByteOfAMailGoesWhereItBelongsAndNowhereElse) {
  static constexpr CopiedBytes kCopied[] = {
      {0, 4, 0},   {20, 4, 8},  {24, 2, 12}, {28, 2, 14}, {32, 2, 16}, {36, 2, 18}, {40, 2, 20}, {44, 2, 22},
      {56, 2, 24}, {60, 2, 26}, {64, 2, 28}, {68, 2, 30}, {72, 2, 32}, {76, 2, 34}, {620, 1, 6},
  };
  const auto counts = [](std::size_t at) {
    return (at >= 612 && at < 616) || (at >= 628 && at < 632) || (at >= 836 && at < 840);
  };
  Bytes mails;
  std::vector<UnMail> expected;
  for (std::size_t at = 0; at < kUnMailSize; ++at) {
    if (counts(at) || at == 8) continue;
    Bytes turned = FullSentUnMail();
    turned[at] ^= 0x40;
    Append(mails, turned);
    expected.push_back(FullRecoveredUnMail());
    Bytes& record = expected.back().record;
    record = WithByteTurned(record, kCopied, at);
    for (const UnMailText& text : kUnMailTexts) TurnTextByte(record, text, at);
  }
  const std::vector<UnMail> recovered = Recovered(mails);
  ASSERT_EQ(recovered.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(recovered[i], expected[i]) << "mail " << i;
}

TEST_F(UnifiedMailRecoverTest, EachByteOfACountCounts) {
  for (const std::size_t count : {612u, 628u, 836u}) {
    for (std::size_t at = count; at < count + 4; ++at) {
      Bytes turned = FullSentUnMail();
      turned[at] ^= 0x40;
      EXPECT_THAT(Recovered(turned), IsEmpty()) << "byte " << at;
    }
  }
}

TEST_F(UnifiedMailRecoverTest, EachByteOfAnItemGoesWhereItBelongsAndNowhereElse) {
  for (std::size_t chain = 0; chain < kUnMailChains; ++chain) {
    const std::size_t begin = kUnMailSize + 182 * chain;
    Bytes mails;
    std::vector<UnMail> expected;
    for (std::size_t at = 0; at < (chain == 3 ? 308u : 182u); ++at) {
      Bytes turned = FullSentUnMail();
      turned[begin + at] ^= 0x40;
      Append(mails, turned);
      expected.push_back(FullRecoveredUnMail());
      std::vector<Bytes>& nodes = expected.back().chains[chain];
      if (chain == 3) {
        TurnTextByte(nodes[0], kItem308Text, at);
        if (at < 8) nodes[0][at] ^= 0x40;
      } else {
        for (const UnMailText& text : kItem182Texts) TurnTextByte(nodes[0], text, at);
        if (at >= 180) nodes.clear();  // Now of a kind that there is not.
      }
    }
    const std::vector<UnMail> recovered = Recovered(mails);
    ASSERT_EQ(recovered.size(), expected.size());
    for (std::size_t at = 0; at < expected.size(); ++at) {
      ASSERT_EQ(recovered[at], expected[at]) << "chain " << chain << ", byte " << at;
    }
  }
}

TEST_F(UnifiedMailRecoverTest, TheFlagWordIsPutTogether) {
  struct Part {
    std::size_t offset;
    std::uint32_t value, word;
  };
  // Of each value no more bits are taken than there are for it: 1, 1, 1, 3, 4, 4 and 2.
  static constexpr Part kParts[] = {
      {4, 1, 0x0001},  {4, 0xFE, 0},    {4, 0xFF, 0x0001},  {5, 1, 0x0002},     {5, 0xFE, 0},    {5, 0xFF, 0x0002},
      {6, 1, 0x0004},  {6, 0xFE, 0},    {6, 0xFF, 4},       {7, 1, 0x0008},     {7, 2, 0x0010},  {7, 4, 0x0020},
      {7, 8, 0},       {7, 0xF8, 0},    {7, 0xFF, 0x0038},  {12, 1, 0x0040},    {12, 2, 0x0080}, {12, 4, 0x0100},
      {12, 8, 0x0200}, {12, 16, 0},     {12, 0xFFF0, 0},    {12, 0xFF, 0x03C0}, {16, 1, 0x0400}, {16, 2, 0x0800},
      {16, 4, 0x1000}, {16, 8, 0x2000}, {16, 16, 0},        {16, 0xFF, 0x3C00}, {17, 1, 0x4000}, {17, 2, 0x8000},
      {17, 4, 0},      {17, 0xFC, 0},   {17, 0xFF, 0xC000},
  };
  for (const Part& part : kParts) {
    Bytes mail = PlainUnMail(0, 1);
    Put8(mail, part.offset, static_cast<std::uint8_t>(part.value));
    if (part.offset == 12) Put32(mail, 12, part.value);
    UnMail expected = PlainStoreUnMail(1);
    Put16(expected.record, 4, static_cast<std::uint16_t>(part.word));
    EXPECT_THAT(Recovered(mail), ElementsAre(expected)) << part.value << " at " << part.offset;
  }
  Bytes all = PlainUnMail(0, 1);
  for (const std::size_t at : {4u, 5u, 6u, 7u, 12u, 13u, 14u, 15u, 16u, 17u}) Put8(all, at, 0xFF);
  UnMail expected = PlainStoreUnMail(1);
  Put16(expected.record, 4, 0xFFFF);
  EXPECT_THAT(Recovered(all), ElementsAre(expected));
}

TEST_F(UnifiedMailRecoverTest, NumbersOfATimeHaveSixteenBits) {
  Bytes mail = PlainUnMail(0, 1);
  UnMail expected = PlainStoreUnMail(1);
  for (std::uint32_t i = 0; i < 6; ++i) {
    Put32(mail, 24 + 4 * i, 0xA1B2C3D0 + i);
    Put32(mail, 56 + 4 * i, 0xFFFF8000 + i);
    Put16(expected.record, 12 + 2 * i, static_cast<std::uint16_t>(0xC3D0 + i));
    Put16(expected.record, 24 + 2 * i, static_cast<std::uint16_t>(0x8000 + i));
  }
  EXPECT_THAT(Recovered(mail), ElementsAre(expected));
}

TEST_F(UnifiedMailRecoverTest, AMailCutShortIsUsedAsRead) {
  const Bytes whole = PlainUnMail(0, 8);
  for (std::size_t size = 1; size < kUnMailSize; size += size < 40 ? 1 : 7) {
    Bytes mail = FullSentUnMail();
    for (const std::size_t count : {612u, 628u, 836u}) Put32(mail, count, 0);
    mail.resize(size);
    Bytes mails = whole;
    Append(mails, mail);
    mail.resize(kUnMailSize);
    const std::vector<UnMail> as_if_zero = Recovered(mail);
    ASSERT_EQ(as_if_zero.size(), 1u);
    EXPECT_THAT(Recovered(mails), ElementsAre(PlainStoreUnMail(8), as_if_zero[0])) << size << " bytes";
  }
}

// --- Texts ---

TEST_F(UnifiedMailRecoverTest, ATextIsCutToWholeCharactersAndEnds) {
  for (const UnMailText& field : kUnMailTexts) {
    SCOPED_TRACE(field.store);
    const auto narrow = [&](std::u16string_view text) {
      Bytes mail = PlainUnMail(0, 1);
      PutText(mail, field.exchange, text);
      const std::vector<UnMail> recovered = Recovered(mail);
      return recovered.size() == 1 ? NarrowField(recovered[0].record, field.store, field.store_size) : std::string();
    };
    const std::size_t characters = field.exchange_size / 2;
    std::string full;
    while (full.size() + 2 < field.store_size) full += "\xCD\xF5";
    EXPECT_EQ(narrow(std::u16string(characters, u'\u738B')), Padded(full, field.store_size));
    EXPECT_EQ(narrow(u"a" + std::u16string(characters - 1, u'\u738B')),
              Padded(("a" + full).substr(0, (field.store_size - 2) / 2 * 2 + 1), field.store_size));
    EXPECT_EQ(narrow(u""), Padded("", field.store_size));
    EXPECT_EQ(narrow(std::u16string(characters, u'x')), Padded(std::string(characters, 'x'), field.store_size));
    EXPECT_EQ(narrow(std::u16string_view(u"ab\0cd", 5)), Padded("ab", field.store_size));
    EXPECT_EQ(narrow(u"a\u738B\uFFFFgone"), Padded("a\xCD\xF5", field.store_size)) << "not in the code page";
    EXPECT_EQ(narrow(u"\uFFFFgone"), Padded("", field.store_size));
  }
}

TEST_F(UnifiedMailRecoverTest, ATextOfAnItemIsCutToWholeCharactersAndEnds) {
  const auto node_182 = [&](std::u16string_view first, std::u16string_view second) {
    const std::vector<UnMail> recovered =
        Recovered(UnMailRecord({.items_182 = {Item182(2), Item182(1, first, second)}}));
    return recovered.size() == 1 && recovered[0].chains[1].size() == 1 ? recovered[0].chains[1][0] : Bytes();
  };
  std::string twelve;
  std::string thirty_three;
  while (twelve.size() < 24) twelve += "\xCD\xF5";
  while (thirty_three.size() < 66) thirty_three += "\xCD\xF5";
  EXPECT_EQ(node_182(std::u16string(24, u'\u738B'), std::u16string(64, u'\u738B')), Node182(twelve, thirty_three));
  EXPECT_EQ(node_182(u"a" + std::u16string(23, u'\u738B'), u"a" + std::u16string(63, u'\u738B')),
            Node182("a" + twelve.substr(0, 22), "a" + thirty_three.substr(0, 64)));
  EXPECT_EQ(node_182(std::u16string(24, u'x'), std::u16string(64, u'y')),
            Node182(std::string(24, 'x'), std::string(64, 'y')));
  EXPECT_EQ(node_182(u"a\uFFFFgone", u"\uFFFFgone"), Node182("a", ""));

  const auto node_308 = [&](std::u16string_view text) {
    const std::vector<UnMail> recovered = Recovered(UnMailRecord({.items_308 = {Item308(1, 2, text)}}));
    return recovered.size() == 1 && recovered[0].chains[3].size() == 1 ? recovered[0].chains[3][0] : Bytes();
  };
  std::string seventy_five;
  while (seventy_five.size() < 150) seventy_five += "\xCD\xF5";
  EXPECT_EQ(node_308(std::u16string(150, u'\u738B')), Node308(1, 2, seventy_five));
  EXPECT_EQ(node_308(u"a" + std::u16string(149, u'\u738B')), Node308(1, 2, "a" + seventy_five));
  EXPECT_EQ(node_308(std::u16string(150, u'x')), Node308(1, 2, std::string(150, 'x')));
  EXPECT_EQ(node_308(u"a\uFFFFgone"), Node308(1, 2, "a"));
}

// --- Items ---

TEST_F(UnifiedMailRecoverTest, ItemsGoToTheChainsOfTheirKinds) {
  const SentUnMail sent = {
      .id = 1,
      .items_182 = {Item182(2, u"c1"), Item182(0, u"a1"), Item182(3, u"lost"), Item182(1, u"b1"), Item182(0, u"a2"),
                    Item182(0xFFFF, u"lost"), Item182(256, u"lost"), Item182(2, u"c2"), Item182(0x8001, u"lost")},
      .items_308 = {Item308(31, 32, u"x"), Item308(33)},
  };
  UnMail expected = PlainStoreUnMail(1);
  expected.chains[0] = {Node182("a1"), Node182("a2")};
  expected.chains[1] = {Node182("b1")};
  expected.chains[2] = {Node182("c1"), Node182("c2")};
  expected.chains[3] = {Node308(31, 32, "x"), Node308(33)};
  EXPECT_THAT(Recovered(UnMailRecord(sent)), ElementsAre(expected));
}

TEST_F(UnifiedMailRecoverTest, TheCountsByKindSayNothing) {
  for (const std::uint32_t count : {0u, 1u, 9u, 0xFFFFFFFFu}) {
    Bytes mail = UnMailRecord({.id = 1, .items_182 = {Item182(1, u"b")}});
    for (const std::size_t at : {600u, 604u, 608u}) Put32(mail, at, count);
    UnMail expected = PlainStoreUnMail(1);
    expected.chains[1] = {Node182("b")};
    EXPECT_THAT(Recovered(mail), ElementsAre(expected));
  }
}

TEST_F(UnifiedMailRecoverTest, AnyNumberOfItemsMayCome) {
  for (const std::uint32_t count : {1u, 2u, 1000u}) {
    for (std::uint16_t chain = 0; chain < kUnMailChains; ++chain) {
      SentUnMail sent = {.id = 1, .text = u"text"};
      UnMail expected = StoreUnMailWithText(1, "text");
      for (std::uint32_t i = 0; i < count; ++i) {
        const std::string digits = std::to_string(i);
        if (chain == 3) {
          sent.items_308.push_back(Item308(i));
        } else {
          sent.items_182.push_back(Item182(chain, std::u16string(digits.begin(), digits.end())));
        }
        expected.chains[chain].push_back(chain == 3 ? Node308(i) : Node182(digits));
      }
      Bytes mails = UnMailRecord(sent);
      Append(mails, PlainUnMail(0, 2));
      ASSERT_THAT(Recovered(mails), ElementsAre(expected, PlainStoreUnMail(2))) << count << " in chain " << chain;
    }
  }
}

TEST_F(UnifiedMailRecoverTest, NegativeCountsAreNone) {
  for (const std::uint32_t count : {0xFFFFFFFFu, 0x80000000u}) {
    for (const std::size_t at : {612u, 628u, 836u}) {
      Bytes mails = PlainUnMail(0, 1);
      Put32(mails, at, count);
      Append(mails, PlainUnMail(0, 2));
      EXPECT_THAT(Recovered(mails), ElementsAre(PlainStoreUnMail(1), PlainStoreUnMail(2))) << "at " << at;
    }
  }
}

TEST_F(UnifiedMailRecoverTest, MoreThanTheFileHoldsIsRefused) {
  // Items of 182 bytes, of 308 bytes, characters, and the bytes that there are.
  const auto mail = [](std::uint32_t items_182, std::uint32_t items_308, std::uint32_t characters, std::size_t rest) {
    Bytes bytes = PlainUnMail(0, 8);
    Put32(bytes, 612, items_182);
    Put32(bytes, 836, items_308);
    Put32(bytes, 628, characters);
    bytes.resize(kUnMailSize + rest);
    return bytes;
  };
  ExpectRefused(mail(1, 0, 0, 0));
  ExpectRefused(mail(0, 1, 0, 0));
  ExpectRefused(mail(0, 0, 1, 0));
  ExpectRefused(mail(1, 0, 0, 181));
  ExpectRefused(mail(0, 1, 0, 307));
  ExpectRefused(mail(0, 0, 1, 1));
  ExpectRefused(mail(2, 0, 0, 363));
  ExpectRefused(mail(1, 1, 1, 491));
  ExpectRefused(mail(6, 0, 0, 880));
  for (const std::uint32_t count : {2000000000u, 0x7FFFFFFFu}) {
    ExpectRefused(mail(count, 0, 0, 1000));
    ExpectRefused(mail(0, count, 0, 1000));
    ExpectRefused(mail(0, 0, count, 1000));
    ExpectRefused(mail(count, count, count, 1000));
  }
  // In 32 bits these are 108 and 304 bytes, and all parts of the last together none.
  ExpectRefused(mail(23598722, 0, 0, 1000));
  ExpectRefused(mail(0, 13944700, 0, 1000));
  ExpectRefused(mail(2, 2, 0x7FFFFE16, 1000));
}

TEST_F(UnifiedMailRecoverTest, WhatWasReadIsNotLeftInTheFile) {
  // Of the file as a whole the last mail's text would be a small part.
  Bytes mails;
  for (std::uint32_t id = 1; id <= 50; ++id) Append(mails, PlainUnMail(0, id));
  for (std::uint32_t id = 51; id <= 100; ++id) {
    Append(mails, UnMailRecord({.id = id, .items_182 = {Item182(0)}, .text = std::u16string(400, u'x')}));
  }
  const std::size_t whole = mails.size();
  for (const std::size_t last_size : {std::size_t{0}, kUnMailSize, kUnMailSize + 500}) {
    mails.resize(whole);
    Append(mails, PlainUnMail(0, 101));
    Put32(mails, whole + 628, 15000);
    mails.resize(whole + last_size);
    EXPECT_LT(LargestBlockOf([&] { EXPECT_EQ(Recovered(mails).size(), 100u); }), kLittleMemory);
  }
}

TEST_F(UnifiedMailRecoverTest, WhatTheFileJustHoldsIsTaken) {
  const SentUnMail sent = {.id = 8, .items_182 = {Item182(0)}, .items_308 = {Item308(1)}, .text = u"z"};
  UnMail expected = StoreUnMailWithText(8, "z");
  expected.chains[0] = {Node182()};
  expected.chains[3] = {Node308(1)};
  EXPECT_THAT(Recovered(UnMailRecord(sent)), ElementsAre(expected));
}

TEST_F(UnifiedMailRecoverTest, AMailWhosePartsAreCutOffIsNotApplied) {
  const Bytes whole = UnMailRecord({.id = 8, .items_182 = {Item182(0)}, .items_308 = {Item308(1)}, .text = u"long"});
  const std::size_t behind_items_182 = kUnMailSize + 182;
  const std::size_t behind_items_308 = behind_items_182 + 308;
  for (const std::size_t size :
       {kUnMailSize, kUnMailSize + 1, behind_items_182 - 1, behind_items_182, behind_items_182 + 1,
        behind_items_308 - 1, behind_items_308, behind_items_308 + 1, whole.size() - 2, whole.size() - 1}) {
    ExpectRefused({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
  }
}

// --- Long texts ---

TEST_F(UnifiedMailRecoverTest, OfALongTextTheFirstFourBytesAreConverted) {
  struct Text {
    std::u16string_view wide;
    std::string_view narrow;  ///< As long as the text has characters.
  };
  static constexpr Text kTexts[] = {
      {u"a", {"a", 1}},
      {u"abc", {"abc", 3}},
      {u"abcd", {"abcd", 4}},
      {u"abcde", {"abcd\0", 5}},
      {u"abcdefgh", {"abcd\0\0\0\0", 8}},
      // A character is not split: not by the fourth byte, and not by the end of the text, which has a byte for each.
      {u"\u738B\u90AE\u4EF6\u738B", {"\xCD\xF5\xD3\xCA", 4}},
      {u"a\u738B\u90AE\u4EF6", {"a\xCD\xF5\0", 4}},
      {u"abc\u738B\u90AE", {"abc\0\0", 5}},
      {u"\u738B", {"\0", 1}},
      {u"\u738B\u90AE", {"\xCD\xF5", 2}},
      {u"\u738B\u90AE\u4EF6", {"\xCD\xF5\0", 3}},
      {{u"a\0bcd", 5}, {"a\0\0\0\0", 5}},
      {{u"\0", 1}, {"\0", 1}},
      {u"ab\uFFFFcd", {"ab\0\0\0", 5}},
      {u"\uFFFF", {"\0", 1}},
      {u"abcd\uFFFF", {"abcd\0", 5}},
  };
  for (const Text& text : kTexts) {
    Bytes mails = UnMailRecord({.id = 1, .text = std::u16string(text.wide)});
    Append(mails, PlainUnMail(0, 2));
    EXPECT_THAT(Recovered(mails), ElementsAre(StoreUnMailWithText(1, text.narrow), PlainStoreUnMail(2)));
  }
}

TEST_F(UnifiedMailRecoverTest, ALongTextsLengthIsThatOfItsBlock) {
  for (std::uint32_t length = 1; length < 300; length += length < 10 ? 1 : 37) {
    const std::vector<UnMail> recovered = Recovered(UnMailRecord({.text = std::u16string(length, u'x')}));
    ASSERT_EQ(recovered.size(), 1u);
    ASSERT_TRUE(recovered[0].text.has_value());
    EXPECT_EQ(recovered[0].text->size(), length);
    EXPECT_EQ(Get32(recovered[0].record, kUnMailTextLength), length);
  }
}

TEST_F(UnifiedMailRecoverTest, TheEndOfALongTextIsNotLookedAt) {
  for (std::size_t at = 0; at < 24; ++at) {
    Bytes mail = UnMailRecord({.id = 1, .text = u"abcdefghijkl"});
    mail[kUnMailSize + at] ^= 0x40;
    std::string expected = "abcd";
    if (at < 8 && at % 2 == 0) expected[at / 2] = static_cast<char>(expected[at / 2] ^ 0x40);
    if (at < 8 && at % 2 == 1) expected.resize(at / 2);
    EXPECT_THAT(Recovered(mail), ElementsAre(StoreUnMailWithText(1, Padded(expected, 12)))) << "byte " << at;
  }
}

// --- Tables ---

TEST_F(UnifiedMailRecoverTest, AMailGoesToTheTableThatItNames) {
  WriteFile(kUnMailTable, PlainMails({{1, 5}, {0, 6}, {2, 7}, {1, 8}, {255, 9}}));
  EXPECT_EQ(Recover(5, 1).code, 0u);
  EXPECT_THAT(store_.calls,
              ElementsAre("AddOneRec 1", "AddOneRec 0", "AddOneRec 2", "AddOneRec 1", "AddOneRec 255", "GetAllRecNum 0",
                          "GetAllidTime 0 room 1", "GetAllRecNum 1", "GetAllidTime 1 room 2"));
  EXPECT_EQ(ReadFile(kUnMailIdMap), Words({1, 1000, 5, 0, 1001, 6, 2, 1002, 7, 1, 1003, 8, 255, 1004, 9}));
  EXPECT_EQ(ReadFile(kReceivedLog), Words({1001, 5, 6}));
  EXPECT_EQ(ReadFile(kSentLog), Words({1000, 5, 6, 1003, 5, 6}));
}

TEST_F(UnifiedMailRecoverTest, TheStoreKnowsATableByOneByte) {
  WriteFile(kUnMailTable, PlainMails({{0x100, 10}, {0xFFFFFF01, 11}}));
  EXPECT_EQ(Recover(5, 1).code, 0u);
  EXPECT_THAT(store_.CallsOf("AddOneRec"), ElementsAre("AddOneRec 0", "AddOneRec 1"));
  EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 10, 1, 1001, 11}));
}

// --- Folders and rules ---

TEST_F(UnifiedMailRecoverTest, FoldersAndRulesAreHandedOverWholeAndThenDeleted) {
  for (const std::size_t count : {0u, 1u, 29u, 30u}) {
    for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 5u, 0xFFFFFFFFu}) {
      Empty();
      store_.folders = Folders(7);
      store_.folder_rules = store_.sender_rules = Rules(7);
      WriteFile(kUnMailFolders, Folders(count * 10));
      WriteFile(kUnMailFolderRules, Rules(count));
      WriteFile(kUnMailSenderRules, Rules(30 - count, 0x90));
      EXPECT_EQ(Recover(5, mode).code, 0u);
      EXPECT_EQ(store_.folders, Folders(count * 10));
      EXPECT_EQ(store_.folder_rules, Rules(count));
      EXPECT_EQ(store_.sender_rules, Rules(30 - count, 0x90));
      ASSERT_GE(store_.calls.size(), 3u);
      EXPECT_EQ(store_.calls[0], "WriteFolderList " + std::to_string(count * 10));
      EXPECT_EQ(store_.calls[1], "WriteAllSubFolderFilterRecs " + std::to_string(count));
      EXPECT_EQ(store_.calls[2], "WriteAllSenderAppointRecs " + std::to_string(30 - count));
      for (const auto* file : kUnMailRuleFiles) EXPECT_FALSE(Exists(file));
    }
  }
}

TEST_F(UnifiedMailRecoverTest, NoMoreThanThirtyRulesAreTaken) {
  for (const std::size_t more : {1u, 93u, 94u, 95u, 5000u}) {
    Bytes rules = Rules(30);
    rules.resize(rules.size() + more, 0x77);
    WriteFile(kUnMailFolderRules, rules);
    WriteFile(kUnMailSenderRules, rules);
    Empty();
    EXPECT_EQ(Recover(5, 4).code, 0u);
    EXPECT_THAT(store_.calls, ElementsAre("WriteAllSubFolderFilterRecs 30", "WriteAllSenderAppointRecs 30"));
    EXPECT_EQ(store_.folder_rules, Rules(30));
    EXPECT_EQ(store_.sender_rules, Rules(30));
  }
}

TEST_F(UnifiedMailRecoverTest, ATornFolderOrRuleIsIgnored) {
  for (const std::size_t whole : {0u, 1u, 2u}) {
    for (const std::size_t torn : {1u, 50u, 93u}) {
      Bytes folders = Folders(whole);
      Bytes rules = Rules(whole);
      folders.resize(folders.size() + torn + (torn == 93 ? 178 : 0), 0x77);
      rules.resize(rules.size() + torn, 0x77);
      WriteFile(kUnMailFolders, folders);
      WriteFile(kUnMailFolderRules, rules);
      WriteFile(kUnMailSenderRules, rules);
      Empty();
      Recover(5, 4);
      const std::string number = " " + std::to_string(whole);
      EXPECT_THAT(store_.calls, ElementsAre("WriteFolderList" + number, "WriteAllSubFolderFilterRecs" + number,
                                            "WriteAllSenderAppointRecs" + number));
      EXPECT_EQ(store_.folders, Folders(whole));
      EXPECT_EQ(store_.folder_rules, Rules(whole));
    }
  }
}

TEST_F(UnifiedMailRecoverTest, AMissingFileLeavesTheStoresFoldersOrRules) {
  for (const auto* missing : kUnMailRuleFiles) {
    Empty();
    for (const auto* file : kUnMailRuleFiles) {
      if (file != missing) WriteFile(file, {});
    }
    Recover(5, 4);
    std::vector<std::string> expected;
    if (missing != kUnMailFolders) expected.emplace_back("WriteFolderList 0");
    if (missing != kUnMailFolderRules) expected.emplace_back("WriteAllSubFolderFilterRecs 0");
    if (missing != kUnMailSenderRules) expected.emplace_back("WriteAllSenderAppointRecs 0");
    EXPECT_THAT(store_.calls, ElementsAreArray(expected));
  }
}

TEST_F(UnifiedMailRecoverTest, EachListFailsAlone) {
  struct List {
    const char16_t* entry_point;
    std::string call;
  };
  const List kLists[] = {{u"UMAIL_WriteFolderList", "WriteFolderList 1"},
                         {u"UMAIL_WriteAllSubFolderFilterRecs", "WriteAllSubFolderFilterRecs 1"},
                         {u"UMAIL_WriteAllSenderAppointRecs", "WriteAllSenderAppointRecs 1"}};
  const auto recover_with = [&](ScriptedUnifiedMailStore& store) {
    WriteFile(kUnMailFolders, Folders(1));
    WriteFile(kUnMailFolderRules, Rules(1));
    WriteFile(kUnMailSenderRules, Rules(1));
    WriteFile(kUnMailTable, PlainUnMail(0, 5));
    EXPECT_EQ(Recover(5, 1).code, 0u);
    for (const auto* file : kUnMailRuleFiles) EXPECT_FALSE(Exists(file));
    EXPECT_EQ(store.Ids(0).size(), 1u);
    EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 5}));
  };
  for (const List& failing : kLists) {
    std::vector<std::string> others;
    for (const List& list : kLists) {
      if (list.call != failing.call) others.push_back(list.call);
    }
    for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
      ScriptedUnifiedMailStore lacking({failing.entry_point}, address);
      recover_with(lacking);
      lacking.calls.resize(2);
      EXPECT_THAT(lacking.calls, ElementsAreArray(others));
    }
    for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
      ScriptedUnifiedMailStore refusing;
      refusing.statuses[failing.call.substr(0, failing.call.find(' '))] = status;
      recover_with(refusing);
      refusing.calls.resize(3);
      EXPECT_THAT(refusing.calls, ElementsAre(kLists[0].call, kLists[1].call, kLists[2].call));
    }
  }
}

TEST_F(UnifiedMailRecoverTest, AListThatCannotBeReadIsNotHandedOver) {
  for (const auto* unreadable : kUnMailRuleFiles) {
    for (const char* const function : {"ReadFile", "GetFileSize", "realloc"}) {
      if (function == std::string_view("GetFileSize") && unreadable != kUnMailFolders) continue;  // They need not ask.
      Empty();
      WriteFile(kUnMailFolders, Folders(1));
      WriteFile(kUnMailFolderRules, Rules(1));
      WriteFile(kUnMailSenderRules, Rules(1));
      handset::Observe([&](const handset::Call& call) {
        if (call.function == "CreateFileW" && call.path == unreadable) handset::FailCallOf(function, 1);
      });
      EXPECT_EQ(Recover(5, 4).code, 0u);
      handset::Observe({});
      EXPECT_TRUE(handset::FaultHappened()) << function;
      std::vector<std::string> expected;
      if (unreadable != kUnMailFolders) expected.emplace_back("WriteFolderList 1");
      if (unreadable != kUnMailFolderRules) expected.emplace_back("WriteAllSubFolderFilterRecs 1");
      if (unreadable != kUnMailSenderRules) expected.emplace_back("WriteAllSenderAppointRecs 1");
      EXPECT_THAT(store_.calls, ElementsAreArray(expected));
      for (const auto* file : kUnMailRuleFiles) EXPECT_FALSE(Exists(file)) << "deleted whatever came of it";
    }
  }
}

// --- Inserting recovers ---

TEST_F(UnifiedMailRecoverTest, TheModeSaysWhatIsEmptiedAndRemembered) {
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u, 5u, 6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(mode);
    Empty();
    store_.Add(0, 1);
    store_.Add(1, 2);
    for (const auto* file : {kAnchorIni, kReceivedLog, kSentLog, kUnMailIdMap}) RemoveFile(file);
    WriteFile(kUnMailTable, PlainMails({{0, 7}, {1, 8}}));
    WriteFile(kUnMailChanges, Words({0, 1, 3}));
    const Answer answer = Recover(5, mode, u"77");
    const bool remembered = mode < 4 || mode >= 0x80000000;
    EXPECT_EQ(answer.code, 0u);
    EXPECT_EQ(answer.returned, 0u);
    EXPECT_EQ(answer.mode, mode);
    EXPECT_EQ(answer.anchor, remembered ? kNowAnchor : u"77");
    EXPECT_EQ(store_.Ids(0).size(), mode == 2 ? 1u : 2u);
    EXPECT_EQ(store_.Ids(1).size(), mode == 2 ? 1u : 2u);
    EXPECT_FALSE(Exists(kUnMailTable));
    EXPECT_EQ(ReadFile(kUnMailChanges), Words({0, 1, 3}));
    for (const auto* file : {kAnchorIni, kReceivedLog, kSentLog, kUnMailIdMap}) EXPECT_EQ(Exists(file), remembered);
    if (!remembered) continue;
    EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nUNMAIL = 200612117210");
    EXPECT_EQ(ReadFile(kReceivedLog), mode == 2 ? Words({1000, 5, 6}) : Words({1, 1, 0, 1000, 5, 6}));
    EXPECT_EQ(ReadFile(kSentLog), mode == 2 ? Words({1001, 5, 6}) : Words({2, 1, 0, 1001, 5, 6}));
    EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7, 1, 1001, 8}));
  }
}

TEST_F(UnifiedMailRecoverTest, ALocalRecoverInsertsAndRemembersNothing) {
  store_.Add(0, 1);
  WriteFile(kUnMailTable, PlainMails({{0, 7}, {1, 8}}));
  WriteFile(kUnMailChanges, Words({0, 1, 3}));
  WriteFile(kUnMailFolders, Folders(2));
  EXPECT_EQ(LocalRecover(5), 0u);
  EXPECT_THAT(store_.Ids(0), ElementsAre(1, 1000));
  EXPECT_THAT(store_.Ids(1), ElementsAre(1001));
  EXPECT_EQ(store_.folders, Folders(2));
  EXPECT_TRUE(Exists(kUnMailChanges));
  for (const auto* file : {kAnchorIni, kReceivedLog, kSentLog, kUnMailIdMap, kUnMailTable, kUnMailFolders}) {
    EXPECT_FALSE(Exists(file));
  }
}

TEST_F(UnifiedMailRecoverTest, AReplacingRecoverGoesStepByStep) {
  for (const std::uint32_t id : {3u, 1u}) store_.Add(0, id);
  store_.Add(1, 2);
  WriteFile(kUnMailTable, PlainMails({{0, 7}, {1, 8}}));
  for (const auto* file : kUnMailRuleFiles) WriteFile(file, {});
  RunEvents events(store_);
  EXPECT_EQ(Recover(5, 2).code, 0u);
  auto seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.starts_with("find "); });
  EXPECT_THAT(seen,
              ElementsAre("open qvSyncAnchor.ini", "create qvSyncAnchor.ini",                                     //
                          "open UnMailFolder.tbl", "call WriteFolderList 0",                                      //
                          "open UnMailFolderFilt.tbl", "call WriteAllSubFolderFilterRecs 0",                      //
                          "open UnMailSendFilt.tbl", "call WriteAllSenderAppointRecs 0",                          //
                          "delete UnMailFolder.tbl", "delete UnMailFolderFilt.tbl", "delete UnMailSendFilt.tbl",  //
                          "call GetAllRecNum 0", "call GetAllidTime 0 room 2", "call DelRec 0 id 3",
                          "call DelRec 0 id 1",                                                                    //
                          "call GetAllRecNum 1", "call GetAllidTime 1 room 1", "call DelRec 1 id 2",               //
                          "open UnMailinfo.tbl", "call AddOneRec 0", "call AddOneRec 1", "delete UnMailinfo.tbl",  //
                          "create unmailrecv.log", "call GetAllRecNum 0", "call GetAllidTime 0 room 1",            //
                          "create unmailsend.log", "call GetAllRecNum 1", "call GetAllidTime 1 room 1",            //
                          "create taskmap.tbl"));
}

TEST_F(UnifiedMailRecoverTest, FilesAreOpenedForWritersAloneAndReadersBeside) {
  WriteFile(kUnMailTable, PlainUnMail(0, 7));
  WriteFile(kUnMailChanges, {});
  for (const auto* file : kUnMailRuleFiles) WriteFile(file, {});
  EXPECT_THAT(DataOpeningsOf([&] { Recover(5, 3); }),
              ElementsAre(Opening(kUnMailFolders, kReader), Opening(kUnMailFolderRules, kReader),
                          Opening(kUnMailSenderRules, kReader), Opening(kUnMailChanges, kReader),
                          Opening(kUnMailTable, kReader), Opening(kReceivedLog, kWriter), Opening(kSentLog, kWriter),
                          Opening(kUnMailIdMap, kWriter)));
}

TEST_F(UnifiedMailRecoverTest, WithoutATableARecoverStillRemembers) {
  store_.Add(0, 1);
  EXPECT_EQ(Recover(5, 1).code, 0u);
  EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0}));
  EXPECT_THAT(ReadFile(kSentLog), IsEmpty());
  EXPECT_THAT(ReadFile(kUnMailIdMap), IsEmpty());
  WriteFile(kUnMailTable, {});
  EXPECT_EQ(Recover(5, 1).code, 0u);
  EXPECT_FALSE(Exists(kUnMailTable));
}

TEST_F(UnifiedMailRecoverTest, OnlyOneMailIsHeldAtATime) {
  Bytes mails;
  for (std::uint32_t id = 1; id <= 100; ++id) {
    Append(mails, UnMailRecord({.id = id, .items_182 = {Item182(0), Item182(1)}, .text = std::u16string(2500, u'x')}));
  }
  WriteFile(kUnMailTable, mails);
  handset::ResetPeakMemory();
  EXPECT_EQ(Recover(5, 1).code, 0u);
  EXPECT_EQ(store_.Ids(0).size(), 100u);
  EXPECT_LT(handset::PeakAllocatedBytes(), 16384u);
  EXPECT_EQ(handset::AllocatedBytes(), 0u);
}

TEST_F(UnifiedMailRecoverTest, ANewIdThatTheStoreDoesNotTellIsZero) {
  store_.fills_nothing = {"AddOneRec"};
  WriteFile(kUnMailTable, PlainMails({{0, 7}, {1, 8}}));
  Recover(5, 1);
  EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 0, 7, 1, 0, 8}));
}

TEST_F(UnifiedMailRecoverTest, ARefusedMailEndsTheTable) {
  for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
    ScriptedUnifiedMailStore refusing;
    refusing.fail_call = 2;
    refusing.failing_status = status;
    WriteFile(kUnMailTable, PlainMails({{0, 7}, {0, 8}, {1, 9}}));
    EXPECT_EQ(Recover(5, 1).code, 0u);
    EXPECT_TRUE(refusing.failed_a_call);
    EXPECT_EQ(refusing.CallsOf("AddOneRec").size(), 2u);
    EXPECT_FALSE(Exists(kUnMailTable));
    EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7}));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({1000, 5, 6}));
  }
}

TEST_F(UnifiedMailRecoverTest, AStoreThatTakesNoMailsLosesNothingElse) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    ScriptedUnifiedMailStore lacking({u"UMAIL_AddOneRec"}, address);
    lacking.Add(0, 1);
    WriteFile(kUnMailTable, PlainUnMail(0, 7));
    WriteFile(kUnMailFolders, Folders(1));
    EXPECT_EQ(Recover(5, 1).code, 0u);
    EXPECT_EQ(lacking.folders, Folders(1));
    EXPECT_FALSE(Exists(kUnMailTable));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0}));
    EXPECT_THAT(ReadFile(kUnMailIdMap), IsEmpty());
  }
}

TEST_F(UnifiedMailRecoverTest, AnInsertingRecoverNeedsNothingElse) {
  ScriptedUnifiedMailStore lacking({u"UMAIL_UpdateRec", u"UMAIL_DelRec", u"tag_UMAIL_DelRec", u"UMAIL_GetRec",
                                    u"UMAIL_GetSubFolderList", u"UMAIL_GetAllSubFolderFilterRecs",
                                    u"UMAIL_GetAllSenderAppointRecs"});
  WriteFile(kUnMailTable, PlainMails({{0, 7}, {1, 8}}));
  EXPECT_EQ(Recover(5, 1).code, 0u);
  EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7, 1, 1001, 8}));
  EXPECT_EQ(ReadFile(kReceivedLog), Words({1000, 5, 6}));
}

// --- Emptying the store ---

TEST_F(UnifiedMailRecoverTest, AFailedDeleteEndsTheEmptyingOnly) {
  const std::vector<std::string> kDeletes = {"DelRec 0 id 3", "DelRec 0 id 1", "DelRec 1 id 2", "DelRec 1 id 4"};
  // The calls that answer: the list of table 0, two deletes, the list of table 1, two deletes.
  const std::ptrdiff_t kDone[] = {0, 1, 2, 2, 3, 4};
  for (unsigned n = 1; n <= 6; ++n) {
    for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
      ScriptedUnifiedMailStore failing;
      for (const std::uint32_t id : {3u, 1u}) failing.Add(0, id);
      for (const std::uint32_t id : {2u, 4u}) failing.Add(1, id);
      failing.fail_call = n;
      failing.failing_status = status;
      WriteFile(kUnMailTable, PlainMails({{0, 7}, {1, 8}}));
      EXPECT_EQ(Recover(5, 2).code, 0u);
      EXPECT_TRUE(failing.failed_a_call);
      EXPECT_THAT(failing.CallsOf("DelRec"), ElementsAreArray(kDeletes.begin(), kDeletes.begin() + kDone[n - 1]))
          << "call " << n;
      EXPECT_THAT(failing.CallsOf("AddOneRec"), ElementsAre("AddOneRec 0", "AddOneRec 1"));
      EXPECT_FALSE(Exists(kUnMailTable));
      EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7, 1, 1001, 8}));
      EXPECT_EQ(ReadFile(kReceivedLog).size(), 12 * failing.Ids(0).size());
      EXPECT_EQ(ReadFile(kSentLog).size(), 12 * failing.Ids(1).size());
    }
  }
}

TEST_F(UnifiedMailRecoverTest, AStoreThatCannotBeEmptiedIsAddedTo) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const auto* name : {u"UMAIL_DelRec", u"UMAIL_GetAllRecNum", u"UMAIL_GetAllidTime"}) {
      ScriptedUnifiedMailStore lacking({name}, address);
      lacking.Add(0, 1);
      lacking.Add(1, 2);
      WriteFile(kUnMailTable, PlainUnMail(0, 7));
      EXPECT_EQ(Recover(5, 2).code, 0u);
      EXPECT_THAT(lacking.Ids(0), ElementsAre(1, 1000));
      EXPECT_THAT(lacking.Ids(1), ElementsAre(2));
      EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7}));
      const bool lists = name == std::u16string_view(u"UMAIL_DelRec");
      EXPECT_EQ(ReadFile(kReceivedLog), lists ? Words({1, 1, 0, 1000, 5, 6}) : Bytes());
    }
  }
}

TEST_F(UnifiedMailRecoverTest, AStoreIsEmptiedOfAnyNumberOfMails) {
  for (std::uint32_t id = 1; id <= 500; ++id) store_.Add(id % 2, id);
  EXPECT_EQ(Recover(5, 2).code, 0u);
  for (const auto& records : store_.tables) EXPECT_THAT(records, IsEmpty());
}

TEST_F(UnifiedMailRecoverTest, AnEmptyTableDoesNotEndTheEmptying) {
  store_.Add(1, 2);
  EXPECT_EQ(Recover(5, 2).code, 0u);
  EXPECT_THAT(store_.Ids(1), IsEmpty());
}

TEST_F(UnifiedMailRecoverTest, NumbersOfMailsThatCannotBeEmptyNothing) {
  for (const std::uint32_t claim : {0u, 0x10000000u, 2000000000u, 0xFFFFFFFFu}) {
    Empty();
    store_.Add(0, 1);
    store_.claimed_count = claim;
    EXPECT_EQ(Recover(5, 2).code, 0u);
    EXPECT_THAT(store_.Ids(0), ElementsAre(1));
  }
}

// --- Change lists ---

TEST_F(UnifiedMailRecoverTest, AChangeListSaysWhatBecomesOfEachMail) {
  for (const std::uint32_t id : {1u, 2u, 3u, 4u}) {
    store_.Add(0, id);
    store_.Add(1, id);
  }
  const Bytes changes = Words({0, 2, 3, 1, 4, 3, 0, 7, 1, 0, 3, 2, 1, 3, 2, 1, 9, 1, 0, 4, 3, 2, 1, 3, 1, 1, 3});
  Bytes mails = NoisyUnMail(0);  // Not in the list: passed over with all its parts.
  for (const auto& [table, id] :
       std::initializer_list<std::pair<std::uint32_t, std::uint32_t>>{{1, 9}, {0, 9}, {1, 7}, {1, 3}, {0, 7}, {0, 3}}) {
    Append(mails, UnMailRecord({.table = table, .id = id, .items_182 = {Item182(1, u"x")}, .text = u"abc"}));
  }
  store_.next_id = 1000;
  const Answer answer = RecoverChanges(changes, mails);
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.mode, 3u);
  EXPECT_EQ(answer.anchor, kNowAnchor);
  EXPECT_THAT(store_.calls, ElementsAre("tag_DelRec 0 [2 4]", "tag_DelRec 1 [4 1]", "AddOneRec 1", "UpdateRec 1 id 3",
                                        "AddOneRec 0", "UpdateRec 0 id 3", "GetAllRecNum 0", "GetAllidTime 0 room 3",
                                        "GetAllRecNum 1", "GetAllidTime 1 room 3"));
  const auto mail = [](std::uint32_t id) {
    UnMail expected = StoreUnMailWithText(id, "abc");
    expected.chains[1] = {Node182("x")};
    return expected;
  };
  EXPECT_THAT(store_.MailsOf(0), ElementsAre(PlainStoreUnMail(1), mail(3), mail(7)));
  EXPECT_THAT(store_.MailsOf(1), ElementsAre(PlainStoreUnMail(2), mail(3), mail(9)));
  EXPECT_EQ(ReadFile(kUnMailIdMap), Words({1, 1000, 9, 0, 1001, 7}));
  EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0, 3, 5, 6, 1001, 5, 6}));
  EXPECT_EQ(ReadFile(kSentLog), Words({2, 1, 0, 3, 5, 6, 1000, 5, 6}));
  EXPECT_EQ(ReadText(kAnchorIni), "[ANCHORDATE]\r\nUNMAIL = 200612117210");
  for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_FALSE(Exists(file));
}

TEST_F(UnifiedMailRecoverTest, AnUpdatedMailReachesTheStoreFieldByField) {
  store_.Add(1, kUnMailId);
  RecoverChanges(Words({1, kUnMailId, 2}), NoisyUnMail(1));
  EXPECT_THAT(store_.MailsOf(1), ElementsAre(RecoveredUnMail()));
}

TEST_F(UnifiedMailRecoverTest, AnIncrementalRecoverGoesStepByStep) {
  store_.Add(0, 1);
  WriteFile(kUnMailFolders, {});
  WriteFile(kUnMailTable, PlainUnMail(0, 7));
  WriteFile(kUnMailChanges, Words({0, 1, 3, 0, 7, 1}));
  RunEvents events(store_);
  Recover(5, 3);
  auto seen = events.Take();
  std::erase_if(seen, [](const std::string& event) { return event.starts_with("find "); });
  EXPECT_THAT(seen, ElementsAre("open qvSyncAnchor.ini", "create qvSyncAnchor.ini",                            //
                                "open UnMailFolder.tbl", "call WriteFolderList 0",                             //
                                "open UnMailFolderFilt.tbl", "open UnMailSendFilt.tbl",                        //
                                "delete UnMailFolder.tbl", "delete UnMailFolderFilt.tbl",                      //
                                "delete UnMailSendFilt.tbl",                                                   //
                                "open UnMailcmd.tbl", "call tag_DelRec 0 [1]",                                 //
                                "open UnMailinfo.tbl", "call AddOneRec 0",                                     //
                                "delete UnMailcmd.tbl", "delete UnMailinfo.tbl",                               //
                                "create unmailrecv.log", "call GetAllRecNum 0", "call GetAllidTime 0 room 1",  //
                                "create unmailsend.log", "call GetAllRecNum 1", "create taskmap.tbl"));
}

TEST_F(UnifiedMailRecoverTest, WithoutAChangeListNoMailIsApplied) {
  store_.Add(0, 1);
  WriteFile(kUnMailTable, PlainMails({{0, 1}, {0, 7}}));
  WriteFile(kUnMailFolders, Folders(1));
  EXPECT_EQ(Recover(5, 3).code, 0u);
  EXPECT_THAT(store_.calls,
              ElementsAre("WriteFolderList 1", "GetAllRecNum 0", "GetAllidTime 0 room 1", "GetAllRecNum 1"));
  EXPECT_FALSE(Exists(kUnMailTable));
  EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0}));
  EXPECT_THAT(ReadFile(kUnMailIdMap), IsEmpty());
}

TEST_F(UnifiedMailRecoverTest, AChangeListThatCannotBeReadIsAsGoodAsNone) {
  for (const char* const function : {"ReadFile", "realloc"}) {
    Empty();
    store_.Add(0, 1);
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == kUnMailChanges) handset::FailCallOf(function, 1);
    });
    EXPECT_EQ(RecoverChanges(Words({0, 1, 3, 0, 7, 1}), PlainUnMail(0, 7)).code, 0u);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened()) << function;
    EXPECT_THAT(store_.Ids(0), ElementsAre(1));
    for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_FALSE(Exists(file));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0}));
  }
}

TEST_F(UnifiedMailRecoverTest, AnEmptyChangeListAppliesNothing) {
  EXPECT_EQ(RecoverChanges({}, PlainMails({{0, 7}, {1, 8}})).code, 0u);
  EXPECT_THAT(store_.calls, ElementsAre("GetAllRecNum 0", "GetAllRecNum 1"));
  EXPECT_FALSE(Exists(kUnMailTable));
}

TEST_F(UnifiedMailRecoverTest, WithoutATableTheDeletionsAreStillMade) {
  store_.Add(0, 1);
  WriteFile(kUnMailChanges, Words({0, 1, 3, 0, 7, 1}));
  EXPECT_EQ(Recover(5, 3).code, 0u);
  EXPECT_THAT(store_.Ids(0), IsEmpty());
  EXPECT_FALSE(Exists(kUnMailChanges));
}

TEST_F(UnifiedMailRecoverTest, OfAChangeListTheFirstWordOnAMailCounts) {
  store_.Add(0, 5);
  RecoverChanges(Words({1, 5, 1, 0, 5, 2, 0, 5, 1, 0, 6, 4, 0, 6, 1, 0, 7, 0, 0, 7, 1}),
                 PlainMails({{0, 5}, {0, 6}, {0, 7}, {0, 5}}));
  EXPECT_THAT(store_.CallsOf("UpdateRec"), ElementsAre("UpdateRec 0 id 5", "UpdateRec 0 id 5"));
  EXPECT_THAT(store_.CallsOf("AddOneRec"), IsEmpty());
}

TEST_F(UnifiedMailRecoverTest, AMailsTableIsTheOneThatTheListNames) {
  store_.Add(0, 6);
  RecoverChanges(Words({2, 5, 1, 0, 6, 2, 2, 8, 2, 255, 7, 1, 0x100, 9, 1}),
                 PlainMails({{2, 5}, {0, 5}, {2, 6}, {0, 6}, {2, 8}, {255, 7}, {0, 7}, {0, 9}}));
  EXPECT_THAT(store_.CallsOf("AddOneRec"), ElementsAre("AddOneRec 2", "AddOneRec 255"));
  EXPECT_THAT(store_.CallsOf("UpdateRec"), ElementsAre("UpdateRec 0 id 6", "UpdateRec 2 id 8"));
  EXPECT_EQ(ReadFile(kUnMailIdMap), Words({2, 1000, 5, 255, 1001, 7}));
}

TEST_F(UnifiedMailRecoverTest, DeletionsFromOtherTablesAreIgnored) {
  store_.Add(0, 1);
  store_.Add(1, 1);
  RecoverChanges(Words({2, 1, 3, 0x100, 1, 3, 0x10001, 1, 3, 0xFFFFFFFF, 1, 3}));
  EXPECT_THAT(store_.CallsOf("tag_DelRec"), IsEmpty());
  RecoverChanges(Words({2, 1, 3, 1, 1, 3}));
  EXPECT_THAT(store_.CallsOf("tag_DelRec"), ElementsAre("tag_DelRec 1 [1]"));
}

TEST_F(UnifiedMailRecoverTest, AnyNumberOfDeletionsIsMadeAtOnce) {
  Bytes changes;
  for (std::uint32_t id = 1; id <= 1001; ++id) {
    store_.Add(0, id);
    store_.Add(1, id);
    Append(changes, Words({0, id, 3, 1, id, 3}));
  }
  changes.resize(changes.size() + 11, 1);  // What is not whole is not there.
  RecoverChanges(changes);
  EXPECT_EQ(store_.CallsOf("tag_DelRec").size(), 2u);
  for (const auto& records : store_.tables) EXPECT_THAT(records, IsEmpty());
}

TEST_F(UnifiedMailRecoverTest, WhenDeletionsFailTheMailsAreStillApplied) {
  for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
    Empty();
    store_.Add(0, 1);
    store_.Add(1, 2);
    store_.statuses["tag_DelRec"] = status;
    EXPECT_EQ(RecoverChanges(Words({0, 1, 3, 1, 2, 3, 0, 7, 1}), PlainUnMail(0, 7)).code, 0u);
    EXPECT_EQ(store_.CallsOf("tag_DelRec").front(), "tag_DelRec 0 [1]");
    EXPECT_THAT(store_.Ids(0), ElementsAre(1, 1000));
    EXPECT_EQ(ReadFile(kReceivedLog), Words({1, 1, 0, 1000, 5, 6}));
    for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_FALSE(Exists(file));
  }
}

TEST_F(UnifiedMailRecoverTest, AStoreThatCannotDeleteListsStillGetsTheMails) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const Bytes& deletions : {Words({0, 1, 3}), Words({1, 1, 3}), Bytes()}) {
      ScriptedUnifiedMailStore lacking({u"tag_UMAIL_DelRec"}, address);
      lacking.Add(0, 1);
      lacking.Add(0, 5);
      Bytes changes = deletions;
      Append(changes, Words({0, 7, 1, 0, 5, 2}));
      EXPECT_EQ(RecoverChanges(changes, PlainMails({{0, 7}, {0, 5}})).code, 0u);
      EXPECT_THAT(lacking.Ids(0), ElementsAre(1, 5, 1000));
      EXPECT_THAT(lacking.CallsOf("DelRec"), IsEmpty()) << "which is not for this";
      EXPECT_THAT(lacking.CallsOf("UpdateRec"), ElementsAre("UpdateRec 0 id 5"));
      for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_FALSE(Exists(file));
    }
  }
}

TEST_F(UnifiedMailRecoverTest, AnIncrementalRecoverNeedsInsertAndUpdate) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const auto* name : {u"UMAIL_AddOneRec", u"UMAIL_UpdateRec"}) {
      ScriptedUnifiedMailStore lacking({name}, address);
      lacking.Add(0, 1);
      lacking.Add(0, 5);
      EXPECT_EQ(RecoverChanges(Words({0, 1, 3, 0, 7, 1, 0, 5, 2}), PlainMails({{0, 7}, {0, 5}})).code, 0u);
      EXPECT_THAT(lacking.calls,
                  ElementsAre("tag_DelRec 0 [1]", "GetAllRecNum 0", "GetAllidTime 0 room 1", "GetAllRecNum 1"));
      for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_FALSE(Exists(file));
      EXPECT_EQ(ReadFile(kReceivedLog), Words({5, 1, 0}));
    }
  }
}

TEST_F(UnifiedMailRecoverTest, ARefusedUpdateEndsTheTable) {
  for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
    Empty();
    store_.Add(0, 5);
    store_.statuses["UpdateRec"] = status;
    RecoverChanges(Words({0, 7, 1, 0, 5, 2, 0, 8, 1}), PlainMails({{0, 7}, {0, 5}, {0, 8}}));
    EXPECT_EQ(store_.CallsOf("AddOneRec").size(), 1u);
    EXPECT_EQ(ReadFile(kUnMailIdMap), Words({0, 1000, 7}));
    for (const auto* file : {kUnMailTable, kUnMailChanges}) EXPECT_FALSE(Exists(file));
  }
}

// --- Failures ---

TEST_F(UnifiedMailRecoverTest, AnUnreadableTableEndsWhereItIs) {
  // A mail of all kinds of parts, and another. Each of the reads but the last, which meets the end of the file.
  const auto fail = [&](const char* function, unsigned time, std::uint32_t mode) {
    Empty();
    Bytes mails = UnMailRecord({.id = 7,
                                .items_182 = {Item182(0), Item182(1)},
                                .items_308 = {Item308(1)},
                                .text = std::u16string(1000, u'x')});
    Append(mails, PlainUnMail(0, 8));
    WriteFile(kUnMailTable, mails);
    WriteFile(kUnMailChanges, Words({0, 7, 1, 0, 8, 1}));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == kUnMailTable) handset::FailCallOf(function, time);
      if (call.function == "DeleteFileW" && call.path == kUnMailTable) handset::FailCall(0);
    });
    EXPECT_EQ(Recover(5, mode).code, 0u);
    handset::Observe({});
    EXPECT_FALSE(Exists(kUnMailTable));
    return handset::FaultHappened();
  };
  for (const std::uint32_t mode : {1u, 3u}) {
    for (const char* const function : {"GetFileSize", "ReadFile", "realloc"}) {
      unsigned time = 1;
      for (; fail(function, time, mode); ++time) {
        const std::vector<std::uint32_t> ids = store_.Ids(0);
        // Without memory for the map an inserted mail stays, and is the last.
        const std::size_t unmapped = function == std::string_view("realloc") ? 1 : 0;
        const std::size_t mapped = ReadFile(kUnMailIdMap).size() / 12;
        EXPECT_LE(ids.size(), mapped + unmapped);
        EXPECT_LE(mapped, ids.size());
        EXPECT_LE(ids.size(), 2u);
        EXPECT_EQ(ReadFile(kReceivedLog).size(), 12 * ids.size());
      }
      EXPECT_GT(time, 1u) << function;
    }
  }
}

TEST_F(UnifiedMailRecoverTest, NoTableDoesHarm) {
  std::mt19937 engine(20061211);
  const auto below = [&](std::uint32_t bound) { return static_cast<std::uint32_t>(engine()) % bound; };
  for (unsigned run = 0; run < 300; ++run) {
    Bytes mails = NoisyUnMail(below(3));
    Append(mails, FullSentUnMail());
    Append(mails, PlainUnMail(1, 2));
    for (std::uint32_t i = below(8); i != 0; --i) {
      Put8(mails, below(static_cast<std::uint32_t>(mails.size())), static_cast<std::uint8_t>(below(256)));
    }
    if (below(2) == 0) Put32(mails, std::array{612u, 628u, 836u}[below(3)], below(12));
    if (below(2) == 0) mails.resize(below(static_cast<std::uint32_t>(mails.size())));
    const std::size_t size = mails.size();
    EXPECT_LT(LargestBlockOf([&] { (void)Recovered(mails); }), kLittleMemory);
    // No mail came of fewer bytes than its fixed part has.
    EXPECT_LE(store_.CallsOf("AddOneRec").size(), size / kUnMailSize + 1) << "run " << run;
  }
}

TEST_F(UnifiedMailRecoverTest, WithoutItsStoreNothingHappens) {
  for (const std::uintptr_t handle : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    handset::InstallLibraryHandle(u"UniMailStore.dll", reinterpret_cast<coredll::HMODULE>(handle));
    for (const auto* file : kUnMailRuleFiles) WriteFile(file, {});
    WriteFile(kUnMailTable, PlainUnMail(0, 1));
    WriteFile(kUnMailChanges, Words({0, 1, 3}));
    const auto before = AllFiles();
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      const Answer answer = Recover(5, mode, u"77");
      EXPECT_EQ(answer.code, 0u);
      EXPECT_EQ(answer.returned, 0u);
      EXPECT_EQ(answer.mode, mode);
      EXPECT_EQ(answer.anchor, u"77");
    }
    EXPECT_EQ(LocalRecover(5), 0u);
    EXPECT_EQ(AllFiles(), before);
  }
}

TEST_F(UnifiedMailRecoverTest, ADirectoryThatIsTooLongIsNone) {
  WriteFile(kUnMailTable, PlainUnMail(0, 1));
  const auto before = AllFiles();
  const std::u16string longest = u"\\sync" + std::u16string(254, u'\\');
  const Answer answer = Recover(5, 1, u"77", longest + u"\\");
  EXPECT_EQ(answer.code, 0u);
  EXPECT_EQ(answer.anchor, u"77");
  EXPECT_EQ(AllFiles(), before);
  EXPECT_THAT(store_.calls, IsEmpty());
}

}  // namespace
}  // namespace qv_test
