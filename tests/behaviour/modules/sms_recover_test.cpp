// Recovers of the short messages, where they are not those of any plain module: the fields, the configuration, and
// which folders the messages end up in.
#include <algorithm>
#include <random>
#include <utility>

#include "tests/support/run_events.h"
#include "tests/support/scripted_sms_store.h"
#include "tests/support/sms_records.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SmsRecoverTest : public AgentTest {
 protected:
  static void Place(const Bytes& messages, const SmsSections& sections = {}) {
    WriteFile(kSmsConfig, SmsConfigFile(sections));
    WriteFile(kSmsTable, messages);
  }

  static void PlaceChanges(const Bytes& changes, const Bytes& messages = {}, const SmsSections& sections = {}) {
    WriteFile(kSmsChanges, changes);
    Place(messages, sections);
  }

  static SmsSections Folders(const Bytes& folders) {
    SmsSections sections;
    sections[kSmsFolders] = folders;
    return sections;
  }

  /// What the store gets of one message.
  Bytes Recovered(const Bytes& message) {
    store_.records.clear();
    Place(message);
    EXPECT_EQ(Recover(8, 4).code, 0u);
    EXPECT_EQ(store_.records.size(), 1u);
    return store_.records.empty() ? Bytes() : store_.records[0].bytes;
  }

  /// What the store gets of one entry of the configuration.
  Bytes RecoveredEntry(std::size_t section, const Bytes& entry) {
    SmsSections sections;
    sections[section] = entry;
    Place({}, sections);
    EXPECT_EQ(Recover(8, 4).code, 0u);
    return store_.told_sections[section];
  }

  /// The folder that a message for folder `id` ends up in.
  std::uint32_t FolderOf(std::uint32_t id, const Bytes& sent_folders) {
    store_.records.clear();
    Place(PlainShortMessage(1, id), Folders(sent_folders));
    EXPECT_EQ(Recover(8, 4).code, 0u);
    return Get32(store_.records.at(0).bytes, 8);
  }

  ScriptedSmsStore store_;
};

// --- Records ---

TEST_F(SmsRecoverTest, AMessageReachesTheStoreFieldByField) {
  for (const Bytes& incoming : {ExchangeShortMessage(), NoisyShortMessage()}) {
    EXPECT_EQ(Recovered(incoming), RecoveredShortMessage());
  }
}

TEST_F(SmsRecoverTest, EachByteOfAMessageGoesWhereItBelongsAndNowhereElse) {
  // Exchange, byte count, store.
  static constexpr CopiedBytes kCopied[] = {
      {4, 2, 4},       {12, 1, 6},      {16, 4, 12},     {84, 64, 46},    {152, 78, 112},  {234, 1340, 222},
      {1576, 1, 1564}, {1577, 1, 1566}, {1578, 1, 1568}, {1580, 4, 1572}, {1584, 1, 1576}, {1585, 1, 1578},
  };
  Bytes full(1624, 0x11);
  const auto is_time = [](std::size_t i) { return (i >= 20 && i < 44) || (i >= 52 && i < 76); };
  for (std::size_t i = 0; i < full.size(); ++i) {
    if (is_time(i)) full[i] = 0;
  }
  const Bytes before = Recovered(full);
  Bytes table;
  for (std::size_t i = 0; i < full.size(); ++i) {
    Bytes changed = full;
    if (!is_time(i)) changed[i] ^= 0x40;
    Append(table, changed);
  }
  store_.records.clear();
  Place(table);
  EXPECT_EQ(Recover(8, 4).code, 0u);
  ASSERT_EQ(store_.records.size(), full.size());
  for (std::size_t i = 0; i < full.size(); ++i) {
    ASSERT_EQ(store_.records[i].bytes, WithByteTurned(before, kCopied, i)) << "exchange byte " << i;
  }
}

TEST_F(SmsRecoverTest, ATextThatFillsItsFieldIsCutForItsNul) {
  Bytes record(1624);
  PutText(record, 84, std::u16string(34, u'a'));
  PutText(record, 152, std::u16string(41, u'b'));
  PutText(record, 234, std::u16string(671, u'c'));
  Bytes expected = RecoveredPlainShortMessage();
  PutText(expected, 46, std::u16string(32, u'a'));
  PutText(expected, 112, std::u16string(39, u'b'));
  PutText(expected, 222, std::u16string(670, u'c'));
  EXPECT_EQ(Recovered(record), expected);
}

struct TimeText {
  std::array<std::int32_t, 6> numbers;
  std::u16string_view text;
};

constexpr TimeText kTimeTexts[] = {
    {{2006, 1, 5, 9, 3, 7}, u"20060105090307"},
    {{2006, 12, 11, 17, 22, 10}, u"20061211172210"},
    {{0, 0, 0, 0, 0, 0}, u"00000000000000"},
    {{7, 1, 2, 3, 4, 5}, u"00070102030405"},
    {{9999, 99, 99, 99, 99, 99}, u"99999999999999"},
    // Numbers too wide for their place push the others out at the end.
    {{12345, 12, 31, 23, 59, 58}, u"12345123123595"},
    {{2006, 100, 1, 2, 3, 4}, u"20061000102030"},
    {{2006, 1, 1, 2, 3, 456}, u"20060101020345"},
    {{INT32_MAX, INT32_MAX, 0, 0, 0, 0}, u"21474836472147"},
    {{-1, 1, 2, 3, 4, 5}, u"-0001010203040"},
    {{2006, -5, 1, 2, 3, 4}, u"2006-050102030"},
    {{2006, 1, 2, 3, 4, -5}, u"200601020304-0"},
    {{INT32_MIN, INT32_MIN, 0, 0, 0, 0}, u"-2147483648-21"},
};

TEST_F(SmsRecoverTest, ATimeIsFourteenDigitsOfText) {
  for (const TimeText& time : kTimeTexts) {
    for (const auto& [numbers, text] : {std::pair{20u, 16u}, std::pair{52u, 192u}}) {
      Bytes record(1624);
      for (std::size_t i = 0; i < 6; ++i) {
        Put32(record, numbers + 4 * i, static_cast<std::uint32_t>(time.numbers[i]));
      }
      Bytes expected = RecoveredPlainShortMessage();
      PutText(expected, text, time.text);
      EXPECT_EQ(Recovered(record), expected) << testing::PrintToString(std::u16string(time.text));
    }
  }
}

TEST_F(SmsRecoverTest, AMessagesTimeIsPaddedAndAnAnchorIsNot) {
  handset::SetLocalTime(coredll::SYSTEMTIME{2006, 1, 4, 5, 9, 3, 7, 0});
  Bytes record(1624);
  const std::uint32_t kNumbers[] = {2006, 1, 5, 9, 3, 7};
  for (std::size_t i = 0; i < 6; ++i) Put32(record, 20 + 4 * i, kNumbers[i]);
  Place(record);
  EXPECT_EQ(Recover(8, 1).anchor, u"200615937");
  Bytes expected = RecoveredPlainShortMessage();
  PutText(expected, 16, u"20060105090307");
  EXPECT_EQ(store_.records.at(0).bytes, expected);
}

TEST_F(SmsRecoverTest, ATornMessageIsUsedAsReadTheRestBeingZero) {
  for (const std::size_t size : {1u, 4u, 7u, 20u, 41u, 44u, 100u, 151u, 500u, 1575u, 1583u, 1585u, 1586u, 1623u}) {
    SCOPED_TRACE(size);
    Bytes torn = NoisyShortMessage();
    torn.resize(size);
    Bytes behind_another = PlainShortMessage(1);
    Append(behind_another, torn);
    const Bytes from_torn = Recovered(torn);
    torn.resize(1624);
    EXPECT_EQ(from_torn, Recovered(torn));
    store_.records.clear();
    Place(behind_another);
    EXPECT_EQ(Recover(8, 4).code, 0u);
    ASSERT_EQ(store_.records.size(), 2u);
    EXPECT_EQ(store_.records[1].bytes, from_torn);
  }
}

// --- Configuration ---

TEST_F(SmsRecoverTest, TheConfigurationReachesTheStoreFieldByField) {
  for (const SmsSections& incoming : {ExchangeSmsSections(), NoisySmsSections()}) {
    Place({}, incoming);
    EXPECT_EQ(Recover(8, 1).code, 0u);
    EXPECT_THAT(store_.CallsOf("SetSMSConfig"), testing::Each("SetSMSConfig 1 1 1 1 1"));
    for (std::size_t i = 0; i < kSmsSections; ++i) {
      EXPECT_EQ(store_.told_sections[i], RecoveredSmsSections()[i]) << "section " << i + 1;
    }
  }
}

TEST_F(SmsRecoverTest, EachByteOfASectionGoesWhereItBelongsAndNowhereElse) {
  // Table, byte count, store.
  static const std::vector<CopiedBytes> kCopied[kSmsSections] = {
      {{0, 4, 0}, {4, 198, 4}},
      {{4, 64, 0}, {72, 78, 66}, {154, 2, 146}},
      {{4, 4, 0}, {8, 2, 4}, {10, 2, 6}, {12, 64, 8}, {80, 80, 74}},
      {{0, 4, 0}, {4, 78, 4}, {86, 1, 84}, {87, 1, 86}, {88, 1, 88}},
      {{4, 4, 0}, {8, 1, 8}, {10, 2, 4}, {12, 4, 12}, {16, 2, 6}, {18, 66, 96}, {86, 78, 16}},
  };
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    Bytes full(kSmsSectionSizes[section], 0x11);
    const auto is_time = [&](std::size_t i) { return section == 1 && i >= 156 && i < 180; };
    if (section == 1) std::fill_n(full.begin() + 156, 24, std::uint8_t{0});
    const Bytes before = RecoveredEntry(section, full);
    ASSERT_EQ(before.size(), ScriptedSmsStore::kSectionSizes[section]);
    Bytes table;
    for (std::size_t i = 0; i < full.size(); ++i) {
      Bytes changed = full;
      if (!is_time(i)) changed[i] ^= 0x40;
      Append(table, changed);
    }
    const Bytes entries = RecoveredEntry(section, table);
    ASSERT_EQ(entries.size(), full.size() * before.size());
    for (std::size_t i = 0; i < full.size(); ++i) {
      const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(i * before.size());
      ASSERT_EQ(Bytes(begin, begin + static_cast<std::ptrdiff_t>(before.size())),
                WithByteTurned(before, kCopied[section], i))
          << "section " << section + 1 << ", table byte " << i;
    }
  }
}

TEST_F(SmsRecoverTest, TheTimeOfTheSecondSectionIsWrittenAsAMessagesIs) {
  for (const TimeText& time : kTimeTexts) {
    Bytes entry(188);
    for (std::size_t i = 0; i < 6; ++i) Put32(entry, 156 + 4 * i, static_cast<std::uint32_t>(time.numbers[i]));
    Bytes expected(178);
    PutText(expected, 148, time.text);
    EXPECT_EQ(RecoveredEntry(1, entry), expected) << testing::PrintToString(std::u16string(time.text));
  }
}

TEST_F(SmsRecoverTest, EachSectionBringsAllItsEntries) {
  SmsSections sent, expected;
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    for (std::size_t i = 0; i < 3 * (kSmsSections - section); ++i) {
      Append(sent[section], ExchangeSmsSections()[section]);
      Append(expected[section], RecoveredSmsSections()[section]);
    }
  }
  Place({}, sent);
  EXPECT_EQ(Recover(8, 1).code, 0u);
  EXPECT_EQ(store_.told_sections, expected);
  EXPECT_THAT(store_.CallsOf("SetSMSConfig"), ElementsAre("SetSMSConfig 15 12 9 6 3"));
}

TEST_F(SmsRecoverTest, ThePaddingOfTheHeaderSaysNothing) {
  Bytes config = SmsConfigFile(ExchangeSmsSections());
  for (std::size_t i = 4; i < 40; i += 8) Put32(config, i, 0xFFFFFFFF);
  Place({});
  WriteFile(kSmsConfig, config);
  EXPECT_EQ(Recover(8, 1).code, 0u);
  EXPECT_EQ(store_.told_sections, RecoveredSmsSections());
}

TEST_F(SmsRecoverTest, AConfigurationShorterThanItsHeaderChangesNothingAndTheRecoverGoesOn) {
  store_.sections[kSmsFolders] = StoreSmsFolder(7, u"Inbox");
  for (std::size_t size = 0; size < 40; ++size) {
    store_.records.clear();
    store_.calls.clear();
    Place(PlainShortMessage(2, 7));
    WriteFile(kSmsConfig, Bytes(size, 1));
    EXPECT_EQ(Recover(8, 1).code, 0u);
    EXPECT_THAT(store_.CallsOf("SetSMSConfig"), IsEmpty());
    EXPECT_THAT(store_.CallsOf("GetSMSConfig"), testing::SizeIs(1));
    ASSERT_EQ(store_.records.size(), 1u);
    EXPECT_EQ(store_.records[0].bytes, RecoveredPlainShortMessage(1)) << "no folder is known by name";
    EXPECT_FALSE(Exists(kSmsConfig));
    EXPECT_TRUE(Exists(kAnchorIni));
  }
}

TEST_F(SmsRecoverTest, AConfigurationCutShortBringsTheEntriesThatAreWhole) {
  SmsSections sections;
  SmsSections expected_sections;
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    for (int i = 0; i < 2; ++i) {
      Append(sections[section], ExchangeSmsSections()[section]);
      Append(expected_sections[section], RecoveredSmsSections()[section]);
    }
  }
  const Bytes whole = SmsConfigFile(sections);
  for (std::size_t size = 40; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    WriteFile(kSmsTable, {});
    WriteFile(kSmsConfig, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    SmsSections expected = expected_sections;
    std::string call = "SetSMSConfig";
    std::size_t rest = size - 40;
    for (std::size_t section = 0; section < kSmsSections; ++section) {
      const std::size_t entries = std::min<std::size_t>(rest / kSmsSectionSizes[section], 2);
      rest = entries == 2 ? rest - 2 * kSmsSectionSizes[section] : 0;
      expected[section].resize(entries * ScriptedSmsStore::kSectionSizes[section]);
      call += " " + std::to_string(entries);
    }
    store_.calls.clear();
    ASSERT_EQ(Recover(8, 4).code, 0u);
    ASSERT_EQ(store_.CallsOf("SetSMSConfig"), std::vector<std::string>{call});
    ASSERT_EQ(store_.told_sections, expected);
  }
}

TEST_F(SmsRecoverTest, ASectionOfNoneOrFewerIsEmpty) {
  for (const std::uint32_t none : {0u, 0xFFFFFFFFu, 0x80000000u}) {
    Bytes config = SmsConfigHeader({none, 1, none, none, 1});
    Append(config, ExchangeSmsSections()[1]);
    Append(config, ExchangeSmsSections()[4]);
    Place({});
    WriteFile(kSmsConfig, config);
    store_.calls.clear();
    EXPECT_EQ(Recover(8, 4).code, 0u);
    EXPECT_THAT(store_.CallsOf("SetSMSConfig"), ElementsAre("SetSMSConfig 0 1 0 0 1"));
    EXPECT_EQ(store_.told_sections[1], RecoveredSmsSections()[1]);
    EXPECT_EQ(store_.told_sections[4], RecoveredSmsSections()[4]);
  }
}

TEST_F(SmsRecoverTest, AnAbsurdSectionIsAMemoryFailureThatTouchesNothing) {
  for (const std::uint32_t count : {2000000000u, 0x10000000u, 0x0FFFFFFFu, 0x7FFFFFFFu, 0x00FFFFFFu, 0x01414142u}) {
    for (std::size_t section = 0; section < kSmsSections; ++section) {
      std::array<std::uint32_t, kSmsSections> counts = {};
      if (section != 0) counts[0] = 1;
      counts[section] = count;
      Bytes config = SmsConfigHeader(counts);
      Append(config, Bytes(1000));
      WriteFile(kSmsConfig, config);
      WriteFile(kSmsTable, PlainShortMessage(1));
      const Answer answer = Recover(8, 2, u"77");
      EXPECT_EQ(answer.code, 0x20000010u) << count << " in section " << section + 1;
      EXPECT_EQ(answer.anchor, u"77");
      EXPECT_FALSE(Exists(kAnchorIni));
      EXPECT_EQ(ReadFile(kSmsConfig), config);
    }
  }
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(SmsRecoverTest, TheStoreIsToldTheEntriesThatThereAre) {
  Bytes config = SmsConfigHeader({100000, 3, 0, 0, 0});
  Append(config, ExchangeSmsSections()[0]);
  Place({});
  WriteFile(kSmsConfig, config);
  EXPECT_EQ(Recover(8, 4).code, 0u);
  EXPECT_THAT(store_.CallsOf("SetSMSConfig"), ElementsAre("SetSMSConfig 1 0 0 0 0"));
  EXPECT_EQ(store_.told_sections[0], RecoveredSmsSections()[0]);
}

TEST_F(SmsRecoverTest, AStoreThatRefusesTheConfigurationGetsTheMessages) {
  store_.statuses["SetSMSConfig"] = 0xFFFFFFFF;
  Place(PlainShortMessage(1), ExchangeSmsSections());
  EXPECT_EQ(Recover(8, 1).code, 0u);
  EXPECT_EQ(store_.records.size(), 1u);
}

// --- Folders ---

TEST_F(SmsRecoverTest, AMessageGoesToTheFolderOfItsName) {
  store_.sections[kSmsFolders] = StoreSmsFolder(30, u"Archive");
  Append(store_.sections[kSmsFolders], StoreSmsFolder(10, u"Inbox"));
  Append(store_.sections[kSmsFolders], StoreSmsFolder(20, u"Sent"));
  Bytes sent = ExchangeSmsFolder(1, u"Sent");
  Append(sent, ExchangeSmsFolder(2, u"Inbox"));
  Append(sent, ExchangeSmsFolder(3, u"Drafts"));
  Append(sent, ExchangeSmsFolder(0xFFFFFFFF, u"Archive"));
  EXPECT_EQ(FolderOf(1, sent), 20u);
  EXPECT_EQ(FolderOf(2, sent), 10u);
  EXPECT_EQ(FolderOf(3, sent), 1u) << "there is no such folder";
  EXPECT_EQ(FolderOf(0xFFFFFFFF, sent), 30u);
  EXPECT_EQ(FolderOf(4, sent), 1u) << "no such folder was sent";
  EXPECT_EQ(FolderOf(10, sent), 1u) << "the handset's ids say nothing";
  EXPECT_EQ(FolderOf(0, sent), 1u);
  EXPECT_EQ(FolderOf(1, {}), 1u);
}

TEST_F(SmsRecoverTest, TheWholeRecordComesThroughWithItsNewFolder) {
  store_.sections[kSmsFolders] = StoreSmsFolder(0xC1C2C3C4, u"Inbox");
  Place(NoisyShortMessage(), Folders(ExchangeSmsFolder(kMessageFolder, u"Inbox")));
  EXPECT_EQ(Recover(8, 4).code, 0u);
  EXPECT_EQ(store_.records.at(0).bytes, RecoveredShortMessage(0xC1C2C3C4));
}

TEST_F(SmsRecoverTest, AFolderIsFoundByItsExactName) {
  store_.sections[kSmsFolders] = StoreSmsFolder(10, u"Inbox");
  for (const std::u16string_view other :
       {u"inbox", u"INBOX", u"Inbo", u"Inbox2", u" Inbox", u"Inbox ", u"\u0130nbox", u""}) {
    EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, other)), 1u) << testing::PrintToString(std::u16string(other));
  }
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, u"Inbox")), 10u);
  store_.sections[kSmsFolders] = StoreSmsFolder(10, u"");
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, u"")), 10u) << "no name is a name";
}

TEST_F(SmsRecoverTest, WhatFollowsANamesNulSaysNothing) {
  Bytes folder = StoreSmsFolder(10, u"Inbox");
  PutText(folder, 16, u"rubbish");
  store_.sections[kSmsFolders] = folder;
  Bytes sent = ExchangeSmsFolder(5, u"Inbox");
  PutText(sent, 16, u"other rubbish");
  EXPECT_EQ(FolderOf(5, sent), 10u);
}

TEST_F(SmsRecoverTest, ALongNameIsComparedToItsLastCharacter) {
  std::u16string name(39, u'x');
  store_.sections[kSmsFolders] = StoreSmsFolder(10, name);
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, name)), 10u);
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, name + u'y')), 10u) << "a name has room for 39 characters";
  name.back() = u'y';
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, name)), 1u);
}

TEST_F(SmsRecoverTest, TheFirstFolderOfANameOrIdCounts) {
  store_.sections[kSmsFolders] = StoreSmsFolder(10, u"Inbox");
  Append(store_.sections[kSmsFolders], StoreSmsFolder(20, u"Inbox"));
  Append(store_.sections[kSmsFolders], StoreSmsFolder(30, u"Sent"));
  Bytes sent = ExchangeSmsFolder(5, u"Inbox");
  Append(sent, ExchangeSmsFolder(5, u"Sent"));
  Append(sent, ExchangeSmsFolder(6, u"Nowhere"));
  Append(sent, ExchangeSmsFolder(6, u"Sent"));
  Append(sent, ExchangeSmsFolder(7, u"Inbox"));
  EXPECT_EQ(FolderOf(5, sent), 10u);
  EXPECT_EQ(FolderOf(6, sent), 1u) << "the first folder of this id is nowhere";
  EXPECT_EQ(FolderOf(7, sent), 10u) << "two folders sent may be one here";
}

TEST_F(SmsRecoverTest, AHandsetFolderOfIdZeroIsNone) {
  store_.sections[kSmsFolders] = StoreSmsFolder(0, u"Inbox");
  Append(store_.sections[kSmsFolders], StoreSmsFolder(20, u"Inbox"));
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, u"Inbox")), 1u) << "the first of the name counts";
}

TEST_F(SmsRecoverTest, AFolderThatIsNotWholeIsUnknown) {
  store_.sections[kSmsFolders] = StoreSmsFolder(10, u"Inbox");
  Append(store_.sections[kSmsFolders], StoreSmsFolder(20, u"Sent"));
  Bytes folders = ExchangeSmsFolder(5, u"Inbox");
  Append(folders, ExchangeSmsFolder(6, u"Sent"));
  Bytes messages = PlainShortMessage(1, 5);
  Append(messages, PlainShortMessage(2, 6));
  Place(messages);
  Bytes config = SmsConfigFile(Folders(folders));
  config.pop_back();
  WriteFile(kSmsConfig, config);
  EXPECT_EQ(Recover(8, 4).code, 0u);
  EXPECT_EQ(Get32(store_.records.at(0).bytes, 8), 10u);
  EXPECT_EQ(Get32(store_.records.at(1).bytes, 8), 1u);
}

TEST_F(SmsRecoverTest, HundredsOfFoldersAreFound) {
  Bytes folders;
  Bytes messages;
  for (std::uint32_t i = 0; i < 400; ++i) {
    const std::u16string name = u"Folder " + std::u16string(1 + i % 30, static_cast<char16_t>(u'A' + i / 30));
    Append(store_.sections[kSmsFolders], StoreSmsFolder(10000 - i, name));
    Append(folders, ExchangeSmsFolder(500 + i, name));
    Append(messages, PlainShortMessage(i, 500 + i));
  }
  Place(messages, Folders(folders));
  EXPECT_EQ(Recover(8, 4).code, 0u);
  ASSERT_EQ(store_.records.size(), 400u);
  for (std::uint32_t i = 0; i < 400; ++i) ASSERT_EQ(Get32(store_.records[i].bytes, 8), 10000 - i);
}

TEST_F(SmsRecoverTest, AHandsetWithoutFoldersKeepsMessagesInFolderOne) {
  for (const std::int32_t count : {0, -1, INT32_MIN}) {
    store_.sections = StoreSmsSections();
    store_.claimed_section_counts[kSmsFolders] = count;
    EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, u"Archive \u738B")), 1u);
  }
  store_.claimed_section_counts.clear();
  EXPECT_EQ(FolderOf(5, ExchangeSmsFolder(5, u"Archive \u738B")), 0x41424344u);
}

TEST_F(SmsRecoverTest, ChangesFindTheirFoldersToo) {
  store_.sections[kSmsFolders] = StoreSmsFolder(10, u"Inbox");
  store_.Add(2);
  Bytes messages = PlainShortMessage(1, 5);
  Append(messages, PlainShortMessage(2, 5));
  PlaceChanges(Words({0, 1, 1, 0, 2, 2}), messages, Folders(ExchangeSmsFolder(5, u"Inbox")));
  EXPECT_EQ(Recover(8, 3).code, 0u);
  EXPECT_EQ(store_.At(1000).bytes, RecoveredPlainShortMessage(10));
  EXPECT_EQ(store_.At(2).bytes, RecoveredPlainShortMessage(10));
}

// --- Insertion ---

TEST_F(SmsRecoverTest, TheAnchorMovesWhenTheFoldersAreKnown) {
  Place(PlainShortMessage(2));
  RunEvents events(store_);
  EXPECT_EQ(Recover(8, 2).code, 0u);
  std::vector<std::string> seen = events.Take();
  const auto anchor = std::ranges::find_if(seen, [](const auto& event) { return event.ends_with("qvSyncAnchor.ini"); });
  seen.erase(anchor, seen.end());
  EXPECT_THAT(seen, ElementsAre("find Sync_SetSMSConfig", "open smsconf.tbl", "call SetSMSConfig 0 0 0 0 0",
                                "find Sync_GetSMSConfig", "call GetSMSConfig"));
}

// --- Change lists ---

TEST_F(SmsRecoverTest, AnyNumberOfDeletionsIsOneCall) {
  for (const std::uint32_t count : {1u, 2u, 199u, 200u, 201u, 400u, 10000u}) {
    store_.records.clear();
    store_.calls.clear();
    store_.Add(0xFFFFFFFF);
    Bytes changes;
    std::string call = "Del [";
    for (std::uint32_t id = 1; id <= count; ++id) {
      store_.Add(id);
      Append(changes, Words({0, id, 3}));
      call += (id == 1 ? "" : " ") + std::to_string(id);
    }
    PlaceChanges(changes);
    EXPECT_EQ(Recover(8, 3).code, 0u);
    EXPECT_EQ(store_.CallsOf("Del"), std::vector<std::string>{call + "]"});
    EXPECT_EQ(store_.records.size(), 1u);
  }
}

TEST_F(SmsRecoverTest, WithoutDeletionsTheStoreIsNotAskedToDelete) {
  store_.Add(1);
  for (const Bytes& changes : {Bytes(), Words({0, 5, 1}), Words({0, 5, 2})}) {
    PlaceChanges(changes);
    EXPECT_EQ(Recover(8, 3).code, 0u);
    EXPECT_THAT(store_.CallsOf("Del"), IsEmpty());
  }
}

TEST_F(SmsRecoverTest, ATornMessageOfAChangeIsUsedAsRead) {
  store_.Add(9);
  Bytes messages = PlainShortMessage(9);
  Put32(messages, 16, 0x11223344);
  messages.resize(18);
  PlaceChanges(Words({0, 9, 2}), messages);
  EXPECT_EQ(Recover(8, 3).code, 0u);
  Bytes expected = RecoveredPlainShortMessage();
  Put16(expected, 12, 0x3344);
  EXPECT_EQ(store_.At(9).bytes, expected);
}

TEST_F(SmsRecoverTest, FilesAreOpenedAsTheirOtherUsersExpect) {
  PlaceChanges({});
  EXPECT_THAT(DataOpeningsOf([&] { EXPECT_EQ(Recover(8, 3).code, 0u); }),
              ElementsAre(Opening(kSmsConfig, kReader), Opening(kSmsChanges, kReader), Opening(kSmsTable, kReader),
                          Opening(kSmsLog, kWriter), Opening(kSmsIdMap, kWriter)));
}

// --- Failures ---

TEST_F(SmsRecoverTest, WithoutAConfigurationNothingIsTouched) {
  store_.Add(1);
  WriteFile(kSmsTable, PlainShortMessage(1));
  WriteFile(kSmsChanges, Words({0, 1, 3}));
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSMS = 5");
  WriteText(kSmsLog, "old");
  const auto before = AllFiles();
  for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
    const Answer answer = Recover(8, mode, u"77");
    EXPECT_EQ(answer.code, 0x20000100u);
    EXPECT_EQ(answer.anchor, u"77");
    EXPECT_THAT(store_.calls, IsEmpty());
    EXPECT_EQ(AllFiles(), before);
  }
}

TEST_F(SmsRecoverTest, AFailedConfigurationTouchesNothing) {
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nSMS = 5");
  PlaceChanges(Words({0, 1, 3}), PlainShortMessage(1), ExchangeSmsSections());
  const auto before = AllFiles();
  const auto recover_fails = [&](std::uint32_t code) {
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      const Answer answer = Recover(8, mode, u"77");
      EXPECT_EQ(answer.code, code) << mode;
      EXPECT_EQ(answer.anchor, u"77");
      EXPECT_EQ(AllFiles(), before);
    }
  };
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const ScriptedSmsStore without_set({u"Sync_SetSMSConfig"}, address);
    recover_fails(0x20000002);
    EXPECT_THAT(without_set.calls, IsEmpty());
    const ScriptedSmsStore without_get({u"Sync_GetSMSConfig"}, address);
    recover_fails(0x20000002);
    EXPECT_THAT(without_get.calls, testing::Each("SetSMSConfig 1 1 1 1 1"));
    EXPECT_THAT(without_get.calls, testing::SizeIs(4));
  }
  ScriptedSmsStore failing;
  failing.sections = StoreSmsSections();
  failing.statuses["GetSMSConfig"] = 1;
  recover_fails(0x20000006);
  failing.statuses.clear();
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    failing.null_sections = {section};
    recover_fails(0x20000006);
  }
  EXPECT_EQ(failing.told_sections, RecoveredSmsSections()) << "the configuration was applied by then";
}

TEST_F(SmsRecoverTest, TheConfigurationsEntryPointIsMissedBeforeItsFile) {
  const ScriptedSmsStore lacking({u"Sync_SetSMSConfig"});
  EXPECT_EQ(Recover(8, 1).code, 0x20000002u);
}

TEST_F(SmsRecoverTest, AnUnreadableConfigurationIsNotTakenForAShortOne) {
  Place(PlainShortMessage(1), ExchangeSmsSections());
  const auto before = AllFiles();
  for (unsigned n = 1; n <= 6; ++n) {
    handset::FailCallOf("ReadFile", n);  // The header, then an entry of each section.
    EXPECT_EQ(Recover(8, 1).code, 0x20000200u) << n;
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_EQ(AllFiles(), before);
  }
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(SmsRecoverTest, ASectionWithoutMemoryIsReported) {
  Place(PlainShortMessage(1), ExchangeSmsSections());
  bool fails = false;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "ReadFile" && call.path == kSmsConfig && !fails) {
      fails = true;
      handset::FailCallOf("realloc", 1);
    }
  });
  EXPECT_EQ(Recover(8, 1).code, 0x20000010u);
  handset::Observe({});
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_FALSE(Exists(kAnchorIni));
}

TEST_F(SmsRecoverTest, OfTwoThingsWrongTheFirstIsReported) {
  const ScriptedSmsStore lacking({u"Sync_Insert", u"Sync_Del"});
  WriteFile(kSmsConfig, Bytes(40));
  EXPECT_EQ(Recover(8, 1).code, 0x23000100u) << "an insertion opens its table first";
  WriteFile(kSmsConfig, Bytes(40));
  EXPECT_EQ(Recover(8, 3).code, 0x20200100u) << "so do the deletions";
  const ScriptedSmsStore without_insert({u"Sync_Insert"});
  WriteFile(kSmsConfig, Bytes(40));
  WriteFile(kSmsChanges, {});
  EXPECT_EQ(Recover(8, 3).code, 0x23000002u) << "but changes look their entry points up first";
  const ScriptedSmsStore without_update({u"Sync_Update"});
  WriteFile(kSmsConfig, Bytes(40));
  EXPECT_EQ(Recover(8, 3).code, 0x23000002u);
}

TEST_F(SmsRecoverTest, WhatRanBeforeAMissingEntryPointHasRun) {
  ScriptedSmsStore lacking({u"Sync_Insert"});
  lacking.Add(1);
  PlaceChanges(Words({0, 1, 3}));
  EXPECT_EQ(Recover(8, 3).code, 0x23000002u);
  EXPECT_THAT(lacking.records, IsEmpty());
  lacking.Add(1);
  Place({});
  EXPECT_EQ(Recover(8, 2).code, 0x23000002u);
  EXPECT_THAT(lacking.records, IsEmpty());
}

TEST_F(SmsRecoverTest, AnUnreadableTableIsNotTakenForItsEnd) {
  store_.Add(2);
  const auto first_read_fails = [](std::u16string_view path) {
    handset::Observe([path](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == path) handset::FailCallOf("ReadFile", 1);
    });
  };
  for (const std::uint32_t mode : {1u, 3u, 4u}) {
    PlaceChanges(Words({0, 1, 1}), PlainShortMessage(1));
    first_read_fails(kSmsTable);
    EXPECT_EQ(Recover(8, mode).code, 0x23000200u);
    EXPECT_TRUE(Exists(kSmsTable));
    EXPECT_TRUE(Exists(kSmsChanges));
  }
  PlaceChanges(Words({0, 2, 3}), PlainShortMessage(1));
  first_read_fails(kSmsChanges);
  EXPECT_EQ(Recover(8, 3).code, 0x20200200u);
  handset::Observe({});
  EXPECT_EQ(store_.records.size(), 1u) << "nothing was deleted";
  EXPECT_TRUE(Exists(kSmsTable));
  EXPECT_TRUE(Exists(kSmsChanges));
}

// --- There and back ---

class SmsRoundTripTest : public SmsRecoverTest {
 protected:
  static constexpr std::uint32_t kMessages = 300;
  static constexpr std::uint32_t kNewIds = 100000;  ///< Of what is recovered.
  static constexpr std::uint32_t kFolders = 12;
  static constexpr std::uint32_t kFolderIds = 100;       ///< Of the first folder, in the first store.
  static constexpr std::uint32_t kOtherFolderIds = 500;  ///< In the second.

  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_()) % bound; }

  Bytes RandomBytes(std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(Below(256));
    return bytes;
  }

  /// A text with rubbish behind its NUL, that fills its field now and then.
  void PutRandomText(Bytes& record, std::size_t offset, std::uint32_t characters) {
    const std::uint32_t length = Below(5) == 0 ? characters : Below(characters);
    for (std::uint32_t i = 0; i < characters; ++i) {
      const auto character = static_cast<std::uint16_t>(i == length ? 0 : 1 + Below(0xFFFF));
      Put16(record, offset + 2 * i, character);
    }
  }

  /// 14 digits, or now and then too few.
  void PutRandomTime(Bytes& record, std::size_t offset) {
    const std::uint32_t digits = Below(6) == 0 ? Below(14) : 14;
    for (std::uint32_t i = 0; i < 15; ++i) {
      Put16(record, offset + 2 * i, static_cast<std::uint16_t>(i < digits ? u'0' + Below(10) : 0));
    }
  }

  Bytes RandomMessage(std::uint32_t id) {
    Bytes r = RandomBytes(1600);
    Put32(r, 0, id);
    Put32(r, 8, kFolderIds + Below(kFolders));
    PutRandomTime(r, 16);
    PutRandomText(r, 46, 33);
    PutRandomText(r, 112, 40);
    PutRandomTime(r, 192);
    PutRandomText(r, 222, 671);
    return r;
  }

  void FillStore() {
    store_.next_id = kNewIds;
    for (std::uint32_t i = 0; i < kMessages; ++i) store_.Add(20 + 7 * i, u"20060105090307", RandomMessage(20 + 7 * i));
    for (std::uint32_t i = 0; i < kFolders; ++i) {
      Append(store_.sections[kSmsFolders], StoreSmsFolder(kFolderIds + i, u"Folder " + std::u16string(1 + i, u'x')));
    }
    for (int i = 0; i < 20; ++i) {
      SmsSections entry = {RandomBytes(204), RandomBytes(178), RandomBytes(156), {}, RandomBytes(164)};
      PutRandomText(entry[0], 4, 100);
      PutRandomText(entry[1], 0, 33);
      PutRandomText(entry[1], 66, 40);
      PutRandomTime(entry[1], 148);
      PutRandomText(entry[2], 8, 33);
      PutRandomText(entry[2], 74, 41);
      PutRandomText(entry[4], 16, 40);
      PutRandomText(entry[4], 96, 34);
      for (std::size_t section = 0; section < kSmsSections; ++section) {
        Append(store_.sections[section], entry[section]);
      }
    }
  }

  /// Another handset: the same folders, in another order and under other ids.
  void RenumberFolders() {
    store_.sections[kSmsFolders].clear();
    for (std::uint32_t i = kFolders; i-- > 0;) {
      const std::u16string name = u"Folder " + std::u16string(1 + i, u'x');
      Append(store_.sections[kSmsFolders], StoreSmsFolder(kOtherFolderIds + i, name));
    }
  }

  /// A text that filled its field has lost a character to its NUL.
  static void CutText(Bytes& record, std::size_t offset, std::size_t characters) {
    Put16(record, offset + 2 * characters, 0);
  }

  std::mt19937 engine_{20061211};
};

TEST_F(SmsRoundTripTest, WhatWasRecoveredIsExportedAgain) {
  FillStore();
  ASSERT_EQ(Export(8, 2).code, 0u);
  Bytes messages = ReadFile(kSmsTable);
  ASSERT_EQ(messages.size(), kMessages * kSmsRecordSize);
  RenumberFolders();
  ASSERT_EQ(Recover(8, 2).code, 0u);
  ASSERT_EQ(store_.records.size(), kMessages);
  for (auto& message : store_.records) Put32(message.bytes, 0, message.id);  // As a handset's store does.
  ASSERT_EQ(Export(8, 2).code, 0u);

  const Bytes again = ReadFile(kSmsTable);
  ASSERT_EQ(again.size(), messages.size());
  for (std::uint32_t i = 0; i < kMessages; ++i) {
    const auto at = static_cast<std::ptrdiff_t>(i * kSmsRecordSize);
    Bytes expected(messages.begin() + at, messages.begin() + at + kSmsRecordSize);
    Put32(expected, 0, kNewIds + i);
    Put32(expected, 8, Get32(expected, 8) - kFolderIds + kOtherFolderIds);
    CutText(expected, 84, 32);
    CutText(expected, 152, 39);
    ASSERT_EQ(Bytes(again.begin() + at, again.begin() + at + kSmsRecordSize), expected) << "message " << i;
  }
}

TEST_F(SmsRoundTripTest, AConfigurationComesBackButForCutTexts) {
  FillStore();
  ASSERT_EQ(Export(8, 4).code, 0u);
  Bytes expected = ReadFile(kSmsConfig);
  ASSERT_EQ(Recover(8, 4).code, 0u);
  store_.sections = store_.told_sections;
  ASSERT_EQ(Export(8, 4).code, 0u);
  std::size_t entry = 40;
  for (int i = 0; i < 20; ++i, entry += 208) {
    CutText(expected, entry + 4, 99);
  }
  for (int i = 0; i < 20; ++i, entry += 188) {
    CutText(expected, entry + 4, 32);
    CutText(expected, entry + 72, 39);
  }
  for (int i = 0; i < 20; ++i, entry += 200) {
    CutText(expected, entry + 12, 32);
    CutText(expected, entry + 80, 40);
  }
  entry += 128 * kFolders;
  for (int i = 0; i < 20; ++i, entry += 204) {
    CutText(expected, entry + 86, 39);
  }
  ASSERT_EQ(entry, expected.size());
  EXPECT_EQ(ReadFile(kSmsConfig), expected);
}

TEST_F(SmsRoundTripTest, ARecoveredStoreHasNoChangesToExport) {
  FillStore();
  ASSERT_EQ(Export(8, 1).code, 0u);
  const Answer recovered = Recover(8, 1);
  ASSERT_EQ(recovered.code, 0u);
  const Answer exported = Export(8, 3, recovered.anchor);
  EXPECT_EQ(exported.code, 0u);
  EXPECT_EQ(exported.mode, 3u);
  EXPECT_THAT(ReadFile(kSmsTable), IsEmpty());
  EXPECT_THAT(ReadFile(kSmsChanges), IsEmpty());
}

}  // namespace
}  // namespace qv_test
