// Records of the plain modules, byte by byte: what an export makes of them, and what a recover hands to the store.
#include <random>

#include "tests/behaviour/modules/plain_module_test.h"

namespace qv_test {
namespace {

using TimeNumbers = std::array<std::uint32_t, 6>;

// --- Fields ---

class PlainModuleRecordsTest : public PlainModuleTest {
 protected:
  /// A field as seen by one direction.
  struct Passage {
    std::size_t from, from_size, to, to_size;
    std::size_t passing;  ///< Bytes that get across when the field is filled to its brim.
  };

  std::vector<Passage> Passages(bool exporting) const {
    std::vector<Passage> passages;
    for (const TravellingField& field : module_.fields) {
      if (field.IsConverted() || (field.how == Travels::kAgain && !exporting)) continue;
      Passage passage = {field.store, field.store_size, field.exchange, field.exchange_size, 0};
      if (!exporting) passage = {field.exchange, field.exchange_size, field.store, field.store_size, 0};
      passage.passing = std::min(passage.from_size, passage.to_size);
      if (field.how == Travels::kText) passage.passing = std::min(passage.from_size, passage.to_size - 2);
      passages.push_back(passage);
    }
    return passages;
  }

  bool IsConverted(std::size_t offset, bool exporting) const {
    return std::ranges::any_of(module_.fields, [&](const TravellingField& field) {
      const std::size_t begin = exporting ? field.store : field.exchange;
      const std::size_t size = exporting ? field.store_size : field.exchange_size;
      return field.IsConverted() && begin <= offset && offset < begin + size;
    });
  }

  /// A record whose texts have no end, and others of which one byte is another: every byte in turn but those that are
  /// converted, which are those of `blank`.
  std::vector<Bytes> FilledRecords(const Bytes& blank, bool exporting) const {
    Bytes filled = blank;
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < filled.size(); ++i) {
      if (IsConverted(i, exporting)) continue;
      filled[i] = 0x91;
      offsets.push_back(i);
    }
    std::vector<Bytes> records = {filled};
    for (const std::size_t offset : offsets) {
      records.push_back(filled);
      records.back()[offset] = 0xD1;
    }
    return records;
  }

  /// What such a record becomes.
  Bytes Arrived(const Bytes& record, Bytes blank, bool exporting) const {
    for (const Passage& passage : Passages(exporting)) {
      for (std::size_t i = 0; i < passage.passing; ++i) blank[passage.to + i] = record[passage.from + i];
    }
    return blank;
  }

  Bytes RandomExchangeRecord();
  Bytes AfterARoundTrip(const Bytes& record) const;

  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_()) % bound; }
  std::mt19937 random_{20061211};
};

INSTANTIATE_TEST_SUITE_P(Modules, PlainModuleRecordsTest,
                         testing::Values(CallHistory(), CardReader(), QuickDial(), GraphicMemo()), NameOfModule);

TEST_P(PlainModuleRecordsTest, ARecordIsExportedFieldByField) {
  EXPECT_EQ(Exported(module_.in_store), module_.exported);
}

TEST_P(PlainModuleRecordsTest, ARecordReachesTheStoreFieldByField) {
  EXPECT_EQ(Recovered(module_.exported), module_.recovered);
  EXPECT_EQ(Recovered(module_.noisy), module_.recovered);
  EXPECT_EQ(Recovered(module_.plain(5)), module_.recovered_plain(5));
}

TEST_P(PlainModuleRecordsTest, ARecoveredRecordIsExportedAgain) {
  EXPECT_EQ(Exported(module_.recovered), module_.exported);
}

TEST_P(PlainModuleRecordsTest, EachByteOfAStoreRecordGoesWhereItBelongsAndNowhereElse) {
  const std::vector<Bytes> records = FilledRecords(module_.recovered_plain(0), true);
  for (std::uint32_t i = 0; i < records.size(); ++i) store_.Add(i, std::nullopt, records[i]);
  ASSERT_EQ(ExportIn(4).code, 0u);
  const std::vector<Bytes> exported = Split(ReadFile(module_.table), ExchangeSize());
  ASSERT_EQ(exported.size(), records.size());
  const Bytes blank = Exported(module_.recovered_plain(0));
  for (std::size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(exported[i], Arrived(records[i], blank, true)) << "variation " << i;
  }
}

TEST_P(PlainModuleRecordsTest, EachByteOfAnExchangeRecordGoesWhereItBelongsAndNowhereElse) {
  const std::vector<Bytes> records = FilledRecords(module_.plain(0), false);
  Bytes table;
  for (const Bytes& record : records) Append(table, record);
  WriteFile(module_.table, table);
  ASSERT_EQ(RecoverIn(4).code, 0u);
  ASSERT_EQ(store_.records.size(), records.size());
  for (std::size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(store_.records[i].bytes, Arrived(records[i], module_.recovered_plain(0), false)) << "variation " << i;
  }
}

TEST_P(PlainModuleRecordsTest, ARecordTheStoreDoesNotFillIsBlank) {
  store_.Add(9, std::nullopt, module_.in_store);
  store_.fills_nothing = {Told(StoreRole::kRead)};
  EXPECT_EQ(ExportIn(1).code, 0u);
  EXPECT_EQ(ReadFile(module_.table), module_.exported_blank);
}

TEST_P(PlainModuleRecordsTest, ATextEndsAtItsNul) {
  for (const TravellingField& field : module_.fields) {
    if (field.how != Travels::kText) continue;
    Bytes record(StoreSize(), 0xFF);
    Put16(record, field.store, u'1');
    Put16(record, field.store + 2, 0);
    const Bytes exported = Exported(record);
    Bytes text(field.exchange_size);
    text[0] = '1';
    const auto begin = exported.begin() + static_cast<std::ptrdiff_t>(field.exchange);
    EXPECT_EQ(Bytes(begin, begin + static_cast<std::ptrdiff_t>(field.exchange_size)), text);
  }
}

TEST_P(PlainModuleRecordsTest, ATornRecordIsUsedAsReadTheRestBeingZero) {
  const Bytes& whole = module_.noisy;
  for (std::size_t size = 1; size < whole.size(); ++size) {
    const Bytes torn(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    Bytes filled = torn;
    filled.resize(whole.size());
    ASSERT_EQ(Recovered(torn), Recovered(filled)) << size << " bytes";
  }
}

TEST_P(PlainModuleRecordsTest, NothingOfTheRecordBeforeIsLeftInATornOne) {
  Bytes table = module_.noisy;
  Append(table, {2});
  WriteFile(module_.table, table);
  EXPECT_EQ(RecoverIn(4).code, 0u);
  ASSERT_EQ(store_.records.size(), 2u);
  Bytes torn(ExchangeSize());
  torn[0] = 2;
  const Bytes second = store_.records[1].bytes;
  EXPECT_EQ(second, Recovered(torn));
}

// --- Round trips ---

/// Every byte anything, but for times, which are some.
Bytes PlainModuleRecordsTest::RandomExchangeRecord() {
  Bytes record(ExchangeSize());
  for (std::uint8_t& byte : record) byte = static_cast<std::uint8_t>(Below(256));
  for (const TravellingField& field : module_.fields) {
    if (field.how == Travels::kText) {
      const auto room = static_cast<std::uint32_t>(field.exchange_size / 2);
      const std::u16string text(Below(room), static_cast<char16_t>(1 + Below(0xFFFF)));
      if (Below(5) != 0) PutTextWithEnd(record, field.exchange, text);
    } else if (field.how == Travels::kDigits || field.how == Travels::kFileTime) {
      const TimeNumbers time = {1980 + Below(100), 1 + Below(12), 1 + Below(28), Below(24), Below(60), Below(60)};
      for (std::size_t i = 0; i < time.size(); ++i) Put32(record, field.exchange + 4 * i, time[i]);
    }
  }
  return record;
}

/// What an exchange record looks like when it was applied and exported again. What does not return: the bytes of no
/// field, what follows a text's NUL, a text's last character, and of an id that stands twice the one that a recover
/// does not look at.
Bytes PlainModuleRecordsTest::AfterARoundTrip(const Bytes& record) const {
  Bytes back(record.size());
  for (const TravellingField& field : module_.fields) {
    const std::size_t begin = field.how == Travels::kAgain ? module_.incoming_id_at : field.exchange;
    const bool is_text = field.how == Travels::kText;
    const std::size_t size = is_text ? std::min(field.exchange_size, field.store_size) - 2 : field.exchange_size;
    for (std::size_t i = 0; i < size; i += is_text ? 2 : 1) {
      if (is_text && record[begin + i] == 0 && record[begin + i + 1] == 0) break;
      back[field.exchange + i] = record[begin + i];
      if (is_text) back[field.exchange + i + 1] = record[begin + i + 1];
    }
  }
  return back;
}

TEST_P(PlainModuleRecordsTest, WhatIsRecoveredIsExportedAlike) {
  Bytes table;
  Bytes expected;
  for (int i = 0; i < 120; ++i) {
    const Bytes record = RandomExchangeRecord();
    Append(table, record);
    Append(expected, AfterARoundTrip(record));
  }
  WriteFile(module_.table, table);
  ASSERT_EQ(RecoverIn(2).code, 0u);
  ASSERT_EQ(ExportIn(2).code, 0u);
  EXPECT_EQ(ReadFile(module_.table), expected);
  // What returned once returns for good.
  ASSERT_EQ(RecoverIn(2).code, 0u);
  ASSERT_EQ(ExportIn(2).code, 0u);
  EXPECT_EQ(ReadFile(module_.table), expected);
}

TEST_P(PlainModuleRecordsTest, ARecoveredStoreHasNoChangesToExport) {
  WriteFile(module_.table, Plain({1, 2, 3}));
  const Answer recovered = RecoverIn(1);
  ASSERT_EQ(recovered.code, 0u);
  const Answer exported = ExportIn(3, recovered.anchor);
  EXPECT_EQ(exported.code, 0u);
  EXPECT_EQ(exported.mode, 3u);
  EXPECT_TRUE(ReadFile(module_.changes).empty());
  EXPECT_TRUE(ReadFile(module_.table).empty());
}

// --- Times ---

class TimeFieldTest : public PlainModuleTest {
 protected:
  /// What an export makes of these bytes in a record's time.
  TimeNumbers ExportedTime(const TravellingField& field, const Bytes& stored) {
    Bytes record = module_.recovered_plain(1);
    std::ranges::copy(stored, record.begin() + static_cast<std::ptrdiff_t>(field.store));
    const Bytes exported = Exported(record);
    TimeNumbers time;
    for (std::size_t i = 0; i < time.size(); ++i) time[i] = Get32(exported, field.exchange + 4 * i);
    return time;
  }

  /// The bytes that a recover makes of a time.
  Bytes RecoveredTime(const TravellingField& field, const TimeNumbers& time) {
    Bytes record = module_.plain(1);
    for (std::size_t i = 0; i < time.size(); ++i) Put32(record, field.exchange + 4 * i, time[i]);
    const Bytes recovered = Recovered(record);
    const auto begin = recovered.begin() + static_cast<std::ptrdiff_t>(field.store);
    return {begin, begin + static_cast<std::ptrdiff_t>(field.store_size)};
  }

  std::vector<TravellingField> FieldsOf(Travels how) const {
    std::vector<TravellingField> fields;
    std::ranges::copy_if(module_.fields, std::back_inserter(fields), [how](const auto& f) { return f.how == how; });
    EXPECT_FALSE(fields.empty());
    return fields;
  }
};

/// FILETIMEs in the store.
class FileTimeFieldTest : public TimeFieldTest {};
INSTANTIATE_TEST_SUITE_P(Modules, FileTimeFieldTest, testing::Values(CardReader(), GraphicMemo()), NameOfModule);

TEST_P(FileTimeFieldTest, AFileTimeIsToldInSixNumbers) {
  const std::pair<Bytes, TimeNumbers> kTimes[] = {
      {Words({0, 0}), {1601, 1, 1, 0, 0, 0}},
      {Words({9999999, 0}), {1601, 1, 1, 0, 0, 0}},
      {Words({10000000, 0}), {1601, 1, 1, 0, 0, 1}},
      {Words({0x4DB83A10, 0x01C60E66}), {2005, 12, 31, 23, 59, 58}},
      {Words({0x4776F470, 0x01C71CF2}), {2006, 12, 11, 7, 2, 10}},  // 999 milliseconds later, which do not count.
      {Words({0xFFFFFFFF, 0x7FFFFFFF}), {30828, 9, 14, 2, 48, 5}},
  };
  for (const TravellingField& field : FieldsOf(Travels::kFileTime)) {
    for (const auto& [stored, numbers] : kTimes) EXPECT_EQ(ExportedTime(field, stored), numbers);
  }
}

TEST_P(FileTimeFieldTest, AFileTimeThatDoesNotExistIsSixZeros) {
  for (const TravellingField& field : FieldsOf(Travels::kFileTime)) {
    for (const std::uint32_t high : {0x80000000u, 0xFFFFFFFFu}) {
      EXPECT_EQ(ExportedTime(field, Words({0x4776F470, high})), TimeNumbers());
    }
  }
}

TEST_P(FileTimeFieldTest, SixNumbersAreAWholeSecond) {
  for (const TravellingField& field : FieldsOf(Travels::kFileTime)) {
    EXPECT_EQ(RecoveredTime(field, {1601, 1, 1, 0, 0, 1}), Words({10000000, 0}));
    EXPECT_EQ(RecoveredTime(field, {2005, 12, 31, 23, 59, 58}), Words({0x4DB81300, 0x01C60E66}));
    EXPECT_EQ(RecoveredTime(field, {2006, 12, 11, 7, 2, 10}), Words({0x46DE8500, 0x01C71CF2}));
    EXPECT_EQ(RecoveredTime(field, {2007, 3, 5, 9, 4, 0}), Words({0x36AB0000, 0x01C75F05}));
  }
}

TEST_P(FileTimeFieldTest, NumbersThatAreNoTimeAreTheFileTimeZero) {
  const TimeNumbers kNoTimes[] = {
      {},
      {2006, 0, 11, 7, 2, 10},
      {2006, 13, 11, 7, 2, 10},
      {2006, 12, 0, 7, 2, 10},
      {2006, 2, 30, 7, 2, 10},
      {1600, 12, 11, 7, 2, 10},
      {2006, 12, 11, 24, 2, 10},
      {2006, 12, 11, 7, 60, 10},
      {2006, 12, 11, 7, 2, 60},
  };
  for (const TravellingField& field : FieldsOf(Travels::kFileTime)) {
    for (const TimeNumbers& numbers : kNoTimes) EXPECT_EQ(RecoveredTime(field, numbers), Bytes(8));
  }
}

/// 14 digits in the store.
class DigitsFieldTest : public TimeFieldTest {
 protected:
  TimeNumbers ExportedDigits(std::u16string_view digits) {
    const TravellingField field = FieldsOf(Travels::kDigits).front();
    Bytes stored(field.store_size);
    PutText(stored, 0, digits);
    return ExportedTime(field, stored);
  }

  std::u16string RecoveredDigits(const TimeNumbers& time) {
    const Bytes recovered = RecoveredTime(FieldsOf(Travels::kDigits).front(), time);
    std::u16string digits;
    for (std::size_t i = 0; i < recovered.size(); i += 2) {
      digits.push_back(static_cast<char16_t>(recovered[i] | recovered[i + 1] << 8));
    }
    EXPECT_EQ(digits.back(), u'\0');
    digits.pop_back();
    return digits;
  }
};
INSTANTIATE_TEST_SUITE_P(Modules, DigitsFieldTest, testing::Values(CallHistory(), QuickDial()), NameOfModule);

TEST_P(DigitsFieldTest, EachDigitHasItsPlace) {
  struct Digit {
    std::size_t part;
    std::uint32_t worth;
  };
  static constexpr Digit kDigits[14] = {{0, 1000}, {0, 100}, {0, 10}, {0, 1},  {1, 10}, {1, 1},  {2, 10},
                                        {2, 1},    {3, 10},  {3, 1},  {4, 10}, {4, 1},  {5, 10}, {5, 1}};
  for (std::size_t i = 0; i < 14; ++i) {
    std::u16string digits(14, u'0');
    digits[i] = u'7';
    TimeNumbers expected = {};
    expected.at(kDigits[i].part) = 7 * kDigits[i].worth;
    EXPECT_EQ(ExportedDigits(digits), expected) << "digit " << i;
  }
}

TEST_P(DigitsFieldTest, DigitsAreNotJudgedAsADate) {
  EXPECT_EQ(ExportedDigits(u"99999999999999"), (TimeNumbers{9999, 99, 99, 99, 99, 99}));
  EXPECT_EQ(ExportedDigits(u"20060230246161"), (TimeNumbers{2006, 2, 30, 24, 61, 61}));
}

TEST_P(DigitsFieldTest, LessThanFourteenDigitsAreSixZeros) {
  for (const std::u16string_view digits :
       {u"", u"2", u"2006121107021", u"2006-12-11 07:", u"200612110702 0", u"/0061211070210", u"2006121107021:",
        u"2006121107021\u0660", u"\uFF12006121107021", u"2006121107021\u0130", u"-2006121107021"}) {
    EXPECT_EQ(ExportedDigits(digits), TimeNumbers()) << testing::PrintToString(std::u16string(digits));
  }
}

TEST_P(DigitsFieldTest, WhatFollowsTheFourteenIsNotLookedAt) {
  EXPECT_EQ(ExportedDigits(u"20060105090307x"), (TimeNumbers{2006, 1, 5, 9, 3, 7}));
  EXPECT_EQ(ExportedDigits(u"200601050903078"), (TimeNumbers{2006, 1, 5, 9, 3, 7}));
}

TEST_P(DigitsFieldTest, ATimeIsWrittenInFourteenDigits) {
  EXPECT_EQ(RecoveredDigits({2007, 3, 5, 9, 4, 0}), u"20070305090400");
  EXPECT_EQ(RecoveredDigits({2006, 12, 31, 23, 59, 58}), u"20061231235958");
  EXPECT_EQ(RecoveredDigits({7, 1, 2, 3, 4, 5}), u"00070102030405");
  EXPECT_EQ(RecoveredDigits({9999, 99, 99, 99, 99, 99}), u"99999999999999");
  EXPECT_EQ(RecoveredDigits({}), u"00000000000000");
}

TEST_P(DigitsFieldTest, NumbersTooWideForTheirPlaceAreCutToFourteenCharacters) {
  EXPECT_EQ(RecoveredDigits({12345, 1, 2, 3, 4, 5}), u"12345010203040");
  EXPECT_EQ(RecoveredDigits({2006, 123, 5, 9, 3, 7}), u"20061230509030");
  EXPECT_EQ(RecoveredDigits({2006, 1, 5, 9, 3, 789}), u"20060105090378");
  EXPECT_EQ(RecoveredDigits({0x7FFFFFFF, 0x7FFFFFFF, 0, 0, 0, 0}), u"21474836472147");
  EXPECT_EQ(RecoveredDigits({0xFFFFFFFF, 0xFFFFFFFF, 1, 1, 1, 1}), u"-0001-01010101");
  EXPECT_EQ(RecoveredDigits({0x80000000, 0x80000000, 0, 0, 0, 0}), u"-2147483648-21");
}

}  // namespace
}  // namespace qv_test
