// Exports of the short messages, where they are not those of any plain module: the fields, the configuration, and the
// times of the snapshot.
#include <algorithm>
#include <map>
#include <numeric>

#include "tests/support/run_events.h"
#include "tests/support/scripted_sms_store.h"
#include "tests/support/sms_records.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Times as FILETIMEs: the low word, then the high one.
constexpr std::uint32_t kLow20060105 = 0xD7EDD780;  // 5 January 2006, 09:03:07
constexpr std::uint32_t kHigh20060105 = 0x01C611D6;

class SmsExportTest : public AgentTest {
 protected:
  /// An incremental export against a stored anchor and this snapshot.
  Answer ExportChanges(const Bytes& log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nSMS = 5");
    WriteFile(kSmsLog, log);
    return Export(8, 3, u"5");
  }

  static std::vector<std::uint32_t> IdsIn(const Bytes& table) {
    std::vector<std::uint32_t> ids;
    for (std::size_t i = 0; i < table.size(); i += kSmsRecordSize) ids.push_back(Get32(table, i));
    return ids;
  }

  /// The record that an export makes of a stored one.
  Bytes Exported(const Bytes& record) {
    store_.records.clear();
    store_.Add(9, ScriptedSmsStore::kOldTime, record);
    EXPECT_EQ(Export(8, 4).code, 0u);
    return ReadFile(kSmsTable);
  }

  /// The entry that an export makes of a section's.
  Bytes ExportedEntry(std::size_t section, const Bytes& entry) {
    store_.sections = {};
    store_.sections[section] = entry;
    EXPECT_EQ(Export(8, 4).code, 0u);
    const Bytes file = ReadFile(kSmsConfig);
    return {file.begin() + 40, file.end()};
  }

  ScriptedSmsStore store_;
};

// --- Records ---

TEST_F(SmsExportTest, AMessageTravelsFieldByField) {
  store_.Add(kMessageId, ScriptedSmsStore::kOldTime, StoreShortMessage());
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsTable), ExchangeShortMessage());
}

TEST_F(SmsExportTest, EachByteOfAMessageGoesWhereItBelongsAndNowhereElse) {
  // Store, byte count, exchange. Of the two times nothing is a digit here.
  static constexpr CopiedBytes kCopied[] = {
      {0, 4, 0},       {4, 2, 4},       {6, 1, 12},       {8, 4, 8},       {12, 4, 16},
      {46, 66, 84},    {112, 80, 152},  {222, 1340, 234}, {1564, 1, 1576}, {1566, 1, 1577},
      {1568, 1, 1578}, {1572, 4, 1580}, {1576, 1, 1584},  {1578, 1, 1585},
  };
  const Bytes full(1600, 0x11);
  const Bytes before = Exported(full);
  ASSERT_EQ(before.size(), kSmsRecordSize);
  store_.records.clear();
  for (std::uint32_t i = 0; i < full.size(); ++i) {
    Bytes changed = full;
    changed[i] ^= 0x40;
    store_.Add(i, ScriptedSmsStore::kOldTime, changed);
  }
  EXPECT_EQ(Export(8, 4).code, 0u);
  const Bytes table = ReadFile(kSmsTable);
  ASSERT_EQ(table.size(), 1600 * kSmsRecordSize);
  for (std::size_t i = 0; i < full.size(); ++i) {
    const auto begin = table.begin() + static_cast<std::ptrdiff_t>(i * kSmsRecordSize);
    ASSERT_EQ(Bytes(begin, begin + kSmsRecordSize), WithByteTurned(before, kCopied, i)) << "store byte " << i;
  }
}

TEST_F(SmsExportTest, EachDigitOfATimeHasItsPlace) {
  struct Digit {
    std::size_t part;
    std::uint32_t worth;
  };
  static constexpr Digit kDigits[14] = {{0, 1000}, {0, 100}, {0, 10}, {0, 1},  {1, 10}, {1, 1},  {2, 10},
                                        {2, 1},    {3, 10},  {3, 1},  {4, 10}, {4, 1},  {5, 10}, {5, 1}};
  const std::pair<std::size_t, std::size_t> kTimes[] = {{16, 20}, {192, 52}};
  for (const auto& [text, numbers] : kTimes) {
    for (std::size_t i = 0; i < 14; ++i) {
      Bytes record(1600);
      PutText(record, text, u"00000000000000");
      Put16(record, text + 2 * i, u'7');
      Bytes expected(1624);
      Put32(expected, numbers + 4 * kDigits[i].part, 7 * kDigits[i].worth);
      EXPECT_EQ(Exported(record), expected) << "digit " << i << " of the text at " << text;
    }
  }
}

TEST_F(SmsExportTest, ATimeIsNotJudged) {
  Bytes record(1600);
  PutText(record, 16, u"99999999999999");
  PutText(record, 192, u"20060230246161");
  Bytes expected(1624);
  const std::uint32_t kNumbers[] = {9999, 99, 99, 99, 99, 99, 0, 0, 2006, 2, 30, 24, 61, 61};
  for (std::size_t i = 0; i < 14; ++i) Put32(expected, 20 + 4 * i, kNumbers[i]);
  EXPECT_EQ(Exported(record), expected);
}

TEST_F(SmsExportTest, ATimeOfLessThanFourteenDigitsIsSixZeros) {
  for (const std::u16string_view text :
       {u"", u"2", u"2006121107021", u"2006-12-11 07:", u"200612110702 0", u"/0061211070210", u"2006121107021:",
        u"2006121107021\u0660", u"\uFF12006121107021", u"2006121107021\u0130"}) {
    Bytes record(1600);
    PutText(record, 16, text);
    PutText(record, 192, text);
    EXPECT_EQ(Exported(record), Bytes(1624)) << testing::PrintToString(std::u16string(text));
  }
}

TEST_F(SmsExportTest, WhatFollowsTheFourteenDigitsIsNotLookedAt) {
  Bytes record(1600);
  PutText(record, 16, u"20060105090307x");
  Bytes expected(1624);
  const std::uint32_t kNumbers[] = {2006, 1, 5, 9, 3, 7};
  for (std::size_t i = 0; i < 6; ++i) Put32(expected, 20 + 4 * i, kNumbers[i]);
  EXPECT_EQ(Exported(record), expected);
}

TEST_F(SmsExportTest, AMessageTheStoreDoesNotFillIsEmpty) {
  store_.Add(9, ScriptedSmsStore::kOldTime, StoreShortMessage());
  store_.fills_nothing = {"Read"};
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsTable), Bytes(1624));
}

// --- Configuration ---

TEST_F(SmsExportTest, TheConfigurationTravelsFieldByField) {
  store_.sections = StoreSmsSections();
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsConfig), SmsConfigFile(ExchangeSmsSections()));
}

TEST_F(SmsExportTest, EachByteOfASectionGoesWhereItBelongsAndNowhereElse) {
  // Store, byte count, table. The second section's time has no digits here.
  static const std::vector<CopiedBytes> kCopied[kSmsSections] = {
      {{0, 4, 0}, {4, 200, 4}},
      {{0, 66, 4}, {66, 80, 72}, {146, 2, 154}},
      {{0, 4, 4}, {4, 2, 8}, {6, 2, 10}, {8, 66, 12}, {74, 82, 80}},
      {{0, 4, 0}, {4, 80, 4}, {84, 1, 86}, {86, 1, 87}, {88, 1, 88}},
      {{0, 4, 4}, {4, 2, 10}, {6, 2, 16}, {8, 1, 8}, {12, 4, 12}, {16, 80, 86}, {96, 66, 18}},
  };
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    const Bytes full(ScriptedSmsStore::kSectionSizes[section], 0x11);
    const Bytes before = ExportedEntry(section, full);
    ASSERT_EQ(before.size(), kSmsSectionSizes[section]);
    Bytes table;
    for (std::size_t i = 0; i < full.size(); ++i) {
      Append(table, full);
      table[i * full.size() + i] ^= 0x40;
    }
    const Bytes entries = ExportedEntry(section, table);
    ASSERT_EQ(entries.size(), full.size() * before.size());
    for (std::size_t i = 0; i < full.size(); ++i) {
      const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(i * before.size());
      ASSERT_EQ(Bytes(begin, begin + static_cast<std::ptrdiff_t>(before.size())),
                WithByteTurned(before, kCopied[section], i))
          << "section " << section + 1 << ", store byte " << i;
    }
  }
}

TEST_F(SmsExportTest, TheTimeOfTheSecondSectionIsReadAsAMessagesIs) {
  const std::pair<std::u16string_view, std::array<std::uint32_t, 6>> kTimes[] = {
      {u"20060105090307", {2006, 1, 5, 9, 3, 7}},
      {u"99999999999999", {9999, 99, 99, 99, 99, 99}},
      {u"20060105090307x", {2006, 1, 5, 9, 3, 7}},
      {u"2006010509030", {}},
      {u"2006010509030x", {}},
      {u"", {}},
  };
  for (const auto& [text, numbers] : kTimes) {
    Bytes entry(178);
    PutText(entry, 148, text);
    Bytes expected(188);
    for (std::size_t i = 0; i < 6; ++i) Put32(expected, 156 + 4 * i, numbers[i]);
    EXPECT_EQ(ExportedEntry(1, entry), expected) << testing::PrintToString(std::u16string(text));
  }
}

TEST_F(SmsExportTest, SectionsFollowEachOtherWithAllTheirEntries) {
  SmsSections expected;
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    for (std::size_t i = 0; i < 2 * section + 1; ++i) {
      Append(store_.sections[section], StoreSmsSections()[section]);
      Append(expected[section], ExchangeSmsSections()[section]);
    }
  }
  EXPECT_EQ(Export(8, 1).code, 0u);
  const Bytes file = ReadFile(kSmsConfig);
  EXPECT_EQ(file, SmsConfigFile(expected));
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 40), Words({1, 0, 3, 0, 5, 0, 7, 0, 9, 0}));
}

TEST_F(SmsExportTest, AnEmptyConfigurationIsItsHeader) {
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsConfig), Bytes(40));
  store_.null_sections = {0, 1, 2, 3, 4};
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsConfig), Bytes(40));
  store_.sections = StoreSmsSections();
  store_.fills_nothing = {"GetSMSConfig"};
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsConfig), Bytes(40));
}

TEST_F(SmsExportTest, ASectionOfNegativeCountHasNoEntries) {
  store_.sections = StoreSmsSections();
  store_.claimed_section_counts = {{0, -1}, {4, INT32_MIN}};
  EXPECT_EQ(Export(8, 1).code, 0u);
  SmsSections expected = ExchangeSmsSections();
  expected[0].clear();
  expected[4].clear();
  Bytes file = SmsConfigFile(expected);
  Put32(file, 0, 0xFFFFFFFF);
  Put32(file, 32, 0x80000000);
  EXPECT_EQ(ReadFile(kSmsConfig), file);
}

TEST_F(SmsExportTest, EachSectionIsReleasedWhenItIsWritten) {
  store_.sections = StoreSmsSections();
  std::map<std::uint32_t, std::uint64_t> bytes_at_write;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile" && call.path == kSmsConfig) bytes_at_write[call.size] = handset::AllocatedBytes();
  });
  EXPECT_EQ(Export(8, 1).code, 0u);
  handset::Observe({});
  const std::uint64_t whole = bytes_at_write[40];
  EXPECT_EQ(bytes_at_write[208], whole);
  EXPECT_EQ(bytes_at_write[188], whole - 204);
  EXPECT_EQ(bytes_at_write[200], whole - 204 - 178);
  EXPECT_EQ(bytes_at_write[128], whole - 204 - 178 - 156);
  EXPECT_EQ(bytes_at_write[204], whole - 204 - 178 - 156 - 92);
}

// --- Full exports ---

TEST_F(SmsExportTest, AllMessagesAreReadAtOnce) {
  std::string read = "Read [";
  for (std::uint32_t id = 1; id <= 1000; ++id) {
    store_.Add(id);
    read += (id == 1 ? "" : " ") + std::to_string(id);
  }
  EXPECT_EQ(Export(8, 4).code, 0u);
  EXPECT_THAT(store_.CallsOf("Read"), ElementsAre(read + "]"));
  EXPECT_THAT(store_.CallsOf("GetAllidTime"), ElementsAre("GetAllidTime room 1000"));
  std::vector<std::uint32_t> ids(1000);
  std::iota(ids.begin(), ids.end(), 1);
  EXPECT_EQ(IdsIn(ReadFile(kSmsTable)), ids);
}

TEST_F(SmsExportTest, TheAnchorGoesFirstAndTheSnapshotLast) {
  store_.Add(7);
  RunEvents events(store_);
  EXPECT_EQ(Export(8, 2).code, 0u);
  const std::vector<std::string> seen = events.Take();
  const auto at = [&](const char* what) { return std::find(seen.begin(), seen.end(), what) - seen.begin(); };
  EXPECT_LT(at("create qvSyncAnchor.ini"), at("delete smsinfo.tbl"));
  ASSERT_GE(seen.size(), 6u);
  EXPECT_THAT(std::vector<std::string>(seen.end() - 6, seen.end()),
              ElementsAre("create smsinfo.tbl", "create smsinfo.log", "find Sync_GetAllRecNum",
                          "find Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 1"));
}

TEST_F(SmsExportTest, AMessageTimeThatDoesNotExistIsZeroInTheSnapshot) {
  const std::u16string_view kTimes[] = {
      u"20060230000000", u"20061301000000", u"20060100000000", u"20060001000000", u"20060101240000", u"20060101006000",
      u"20060101000060", u"00000000000000", u"16001231235959", u"2006010509030",  u"2006010509030x", u"",
  };
  for (const std::u16string_view time : kTimes) store_.Add(1, time);
  EXPECT_EQ(Export(8, 1).code, 0u);
  Bytes expected;
  for (std::size_t i = 0; i < std::size(kTimes); ++i) Append(expected, Words({1, 0, 0}));
  EXPECT_EQ(ReadFile(kSmsLog), expected);
}

TEST_F(SmsExportTest, AMessageTimeBecomesAFileTimeAsItStands) {
  store_.Add(1, u"16010101000001");
  store_.Add(2, u"20040229000000");
  store_.Add(3, u"2006121107021099");
  EXPECT_EQ(Export(8, 1).code, 0u);
  EXPECT_EQ(ReadFile(kSmsLog), Words({1, 0x00989680, 0, 2, 0xF9514000, 0x01C3FE56, 3, 0x46DE8500, 0x01C71CF2}));
}

// --- Incremental exports ---

TEST_F(SmsExportTest, AMessageWithoutATimeIsNotModifiedByKeepingNone) {
  store_.Add(1, u"");
  store_.Add(2, u"20060230000000");
  store_.Add(3, u"");
  EXPECT_EQ(ExportChanges(Words({1, 0, 0, 2, 0, 0, 3, kLow20060105, kHigh20060105})).code, 0u);
  EXPECT_EQ(ReadFile(kSmsChanges), Words({0, 3, 2}));
}

TEST_F(SmsExportTest, AChangeMadeAfterAnExportIsInTheNext) {
  store_.Add(1);
  store_.Add(2);
  const Answer first = Export(8, 1);
  store_.At(2).time = u"20060102030406";
  const Answer second = Export(8, 3, first.anchor);
  EXPECT_EQ(second.mode, 3u);
  EXPECT_EQ(ReadFile(kSmsChanges), Words({0, 2, 2}));
  const Answer third = Export(8, 3, second.anchor);
  EXPECT_EQ(third.mode, 3u);
  EXPECT_THAT(ReadFile(kSmsChanges), IsEmpty());
}

// --- Failures ---

TEST_F(SmsExportTest, AFailedConfigurationEndsTheExportWithTheTableGone) {
  const auto export_fails = [&](std::uint32_t code) {
    for (const std::uint32_t mode : {1u, 3u, 4u}) {
      WriteText(kSmsTable, "old");
      WriteText(kAnchorIni, "[ANCHORDATE]\r\nSMS = 5");
      EXPECT_EQ(Export(8, mode, u"5").code, code);
      EXPECT_FALSE(Exists(kSmsTable));
      EXPECT_FALSE(Exists(kSmsChanges));
      EXPECT_FALSE(Exists(kSmsLog));
      EXPECT_EQ(ReadText(kAnchorIni), mode == 4 ? "[ANCHORDATE]\r\nSMS = 5" : "[ANCHORDATE]\r\nSMS = 200612117210");
    }
  };
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const ScriptedSmsStore lacking({u"Sync_GetSMSConfig"}, address);
    export_fails(0x10000002);
    EXPECT_THAT(lacking.calls, IsEmpty());
  }
  ScriptedSmsStore failing;
  failing.sections = StoreSmsSections();
  failing.statuses["GetSMSConfig"] = 0xFFFFFFFF;
  export_fails(0x10000006);
  EXPECT_FALSE(Exists(kSmsConfig));
  failing.statuses.clear();
  for (std::size_t section = 0; section < kSmsSections; ++section) {
    failing.null_sections = {section};
    export_fails(0x10000006);
    EXPECT_FALSE(Exists(kSmsConfig));
  }
  failing.null_sections.clear();
  MakeDirectory(kSmsConfig);
  export_fails(0x10000100);
}

TEST_F(SmsExportTest, AFullDiskIsFlaggedOnlyAtTheMessages) {
  store_.sections = StoreSmsSections();
  store_.Add(1);
  store_.Add(2);
  constexpr std::uint64_t kConfigSize = 40 + 208 + 188 + 200 + 128 + 204;
  const std::pair<std::uint64_t, std::uint32_t> kFreeSpaces[] = {
      {0, 0x10000100},
      {39, 0x10000100},
      {40, 0x10000100},
      {40 + 208 + 187, 0x10000100},
      {40 + 208 + 188 + 199, 0x10000100},
      {40 + 208 + 188 + 200 + 127, 0x10000100},
      {kConfigSize - 1, 0x10000100},
      {kConfigSize, 0x11000100},
      {kConfigSize + 1624 + 1623, 0x11000100},
      {kConfigSize + 2 * 1624, 0},
  };
  for (const auto& [bytes, code] : kFreeSpaces) {
    for (const auto* file : {kSmsConfig, kSmsTable}) std::filesystem::remove(handset::HostPath(file));
    handset::SetFreeSpace(bytes);
    EXPECT_EQ(Export(8, 4).code, code) << bytes << " bytes free";
  }
}

TEST_F(SmsExportTest, ATableThatCannotBeCreatedIsFlaggedTheSecondTimeOnly) {
  store_.Add(1);
  handset::FailCallOf("CreateFileW", 2);  // After the configuration.
  EXPECT_EQ(Export(8, 4).code, 0x10000100u);
  handset::FailCallOf("CreateFileW", 3);
  EXPECT_EQ(Export(8, 4).code, 0x11000100u);
  unsigned time = 0;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == kSmsTable && ++time == 2) handset::FailCallOf("CreateFileW", 1);
  });
  EXPECT_EQ(ExportChanges().code, 0x11000100u);
  handset::Observe({});
}

TEST_F(SmsExportTest, ACountWhoseListIsMoreThanThereIsMemoryIsAMemoryFailure) {
  for (const std::uint32_t count : {20000000u, 0x071C71C8u}) {
    store_.claimed_count = count;
    EXPECT_EQ(Export(8, 1).code, 0x10000010u);
    EXPECT_EQ(ExportChanges().code, 0x10000010u);
  }
  EXPECT_THAT(store_.CallsOf("GetAllidTime"), IsEmpty());
}

}  // namespace
}  // namespace qv_test
