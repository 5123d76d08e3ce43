// What only the call history does: types that are one byte in an exchange record, and files that an export makes before
// it looks at the store. All else is in the tests of the plain modules.
#include "tests/support/call_records.h"
#include "tests/support/scripted_call_store.h"

namespace qv_test {
namespace {

using testing::IsEmpty;

class CallHistoryTest : public AgentTest {
 protected:
  /// The record that an export makes of a stored one.
  Bytes Exported(const Bytes& record) {
    store_.records.clear();
    store_.Add(9, 1, record);
    EXPECT_EQ(Export(9, 4).code, 0u);
    return ReadFile(kCallTable);
  }

  static Bytes CallOfType(std::uint32_t type) {
    Bytes record(180);
    Put16(record, 168, static_cast<std::uint16_t>(type));
    return record;
  }

  ScriptedCallStore store_;
};

// --- Types ---

TEST_F(CallHistoryTest, EachTypeOfTheRangeHasItsByte) {
  Bytes expected;
  for (std::uint32_t i = 0; i < 256; ++i) {
    store_.Add(i, 1, CallOfType(46000 + i));
    Bytes exchange(208);
    Put8(exchange, 40, static_cast<std::uint8_t>(i));
    Append(expected, exchange);
  }
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_EQ(ReadFile(kCallTable), expected);
}

TEST_F(CallHistoryTest, ATypeOutsideTheRangeIsTheLowByteOfItAnd80) {
  const std::pair<std::uint16_t, std::uint8_t> kTypes[] = {{45999, 255},  {46256, 0}, {0, 80},     {1, 81},
                                                           {175, 255},    {176, 0},   {65535, 79}, {0xB300, 80},
                                                           {0xB4AF, 255}, {0xB4B0, 0}};
  for (const auto& [type, byte] : kTypes) EXPECT_EQ(Exported(CallOfType(type)).at(40), byte) << type;
}

TEST_F(CallHistoryTest, EachByteOfATypeIsCountedFrom46000) {
  Bytes table;
  for (std::uint32_t i = 0; i < 256; ++i) {
    Bytes record = PlainCall(i);
    Put8(record, 40, static_cast<std::uint8_t>(i));
    Append(table, record);
  }
  WriteFile(kCallTable, table);
  EXPECT_EQ(Recover(9, 4).code, 0u);
  ASSERT_EQ(store_.records.size(), 256u);
  for (std::uint32_t i = 0; i < 256; ++i) {
    Bytes expected = RecoveredPlainCall(i);
    Put16(expected, 168, static_cast<std::uint16_t>(46000 + i));
    EXPECT_EQ(store_.records[i].bytes, expected);
  }
}

TEST_F(CallHistoryTest, ATypeOutsideTheRangeComesBackWithinIt) {
  for (const std::uint32_t type : {0u, 45999u, 46256u, 65535u}) {
    store_.records.clear();
    store_.Add(1, 1, CallOfType(type));
    EXPECT_EQ(Export(9, 1).code, 0u);
    EXPECT_EQ(Recover(9, 2).code, 0u);
    const Bytes& back = store_.records.at(0).bytes;
    const int returned = back[168] | back[169] << 8;
    EXPECT_NE(returned, static_cast<int>(type));
    EXPECT_GE(returned, 46000);
    EXPECT_LE(returned, 46255);
  }
}

// --- Exports ---

TEST_F(CallHistoryTest, ATableThatCannotBeCreatedCarriesNoFlag) {
  store_.Add(1);
  for (const unsigned time : {1u, 2u}) {
    handset::FailCallOf("CreateFileW", time);
    EXPECT_EQ(Export(9, 4).code, 0x10000100u);
    EXPECT_TRUE(handset::FaultHappened());
  }
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(CallHistoryTest, TheTableIsMadeBeforeTheChangeListAndBothBeforeTheStoreIsLookedAt) {
  const ScriptedCallStore lacking({u"EXPCALLHISTORY_Sync_GetAllRecNum"});
  WriteText(kAnchorIni, "[ANCHORDATE]\r\nRECORDCALL = 5");
  MakeDirectory(kCallChanges);
  EXPECT_EQ(Export(9, 3, u"5").code, 0x10000100u);
  EXPECT_THAT(ReadFile(kCallTable), IsEmpty());
  EXPECT_EQ(Export(9, 1, u"", u"\\nowhere").code, 0x10000100u) << "not 2";
}

TEST_F(CallHistoryTest, AReadMayUseTheRoomForAHundredCalls) {
  store_.Add(1, 1, StoreCall());
  store_.used_room = 100;
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_EQ(ReadFile(kCallTable), ExchangeCall());
}

TEST_F(CallHistoryTest, ExactlyFiftyCallsAreOneRead) {
  for (std::uint32_t id = 1; id <= 50; ++id) store_.Add(id);
  EXPECT_EQ(Export(9, 4).code, 0u);
  EXPECT_EQ(store_.CallsOf("Read").size(), 1u);
}

}  // namespace
}  // namespace qv_test
