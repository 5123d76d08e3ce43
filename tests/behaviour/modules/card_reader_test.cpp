// What only the card reader does: its session with the store, counts with a sign, and a table that is made with its
// first records. All else is in the tests of the plain modules.
#include "tests/support/card_records.h"
#include "tests/support/scripted_card_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CardReaderTest : public AgentTest {
 protected:
  Answer ExportChanges(const Bytes& log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nCARDREADER = 5");
    WriteFile(kCardLog, log);
    return Export(7, 3, u"5");
  }

  ScriptedCardStore store_;
};

// --- The session ---

TEST_F(CardReaderTest, EachRunIsASession) {
  WriteFile(kCardTable, {});
  WriteFile(kCardChanges, {});
  const auto expect_session = [&](const Answer& answer) {
    EXPECT_EQ(answer.code, 0u);
    ASSERT_GE(store_.calls.size(), 2u);
    EXPECT_EQ(store_.calls.front(), "Initialize 0");
    EXPECT_EQ(store_.calls.back(), "UnInitialize");
    EXPECT_THAT(store_.CallsOf("Initialize"), testing::SizeIs(1));
    EXPECT_THAT(store_.CallsOf("UnInitialize"), testing::SizeIs(1));
    store_.calls.clear();
  };
  expect_session(Recover(7, 3));
  expect_session(Export(7, 1));
  expect_session(ExportChanges());
  expect_session(Recover(7, 1));
}

TEST_F(CardReaderTest, AFailedRunEndsItsSession) {
  EXPECT_EQ(Recover(7, 5).code, 0x23000100u);
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "UnInitialize"));
  store_.calls.clear();
  EXPECT_EQ(Export(7, 1, u"", std::u16string(260, u'\\')).code, 0x10000100u);
  EXPECT_THAT(store_.calls, ElementsAre("Initialize 0", "UnInitialize"));
}

TEST_F(CardReaderTest, WhatTheSessionAnswersIsNotLookedAt) {
  store_.Add(1, std::nullopt, StoreCard());
  for (const std::uint32_t answer : {0u, 1u, 3u, 0xFFFFFFFFu}) {
    store_.session_answer = answer;
    EXPECT_EQ(Export(7, 1).code, 0u);
    EXPECT_EQ(ReadFile(kCardTable), ExchangeCard());
  }
}

TEST_F(CardReaderTest, AStoreNeedsNoSession) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    for (const std::set<std::u16string>& missing :
         {std::set<std::u16string>{u"CR_Initialize"}, {u"CR_UnInitialize"}, {u"CR_Initialize", u"CR_UnInitialize"}}) {
      ScriptedCardStore lacking(missing, address);
      lacking.Add(1, std::nullopt, StoreCard());
      EXPECT_EQ(Export(7, 1).code, 0u);
      EXPECT_EQ(ReadFile(kCardTable), ExchangeCard());
      EXPECT_EQ(lacking.CallsOf("Initialize").size(), missing.contains(u"CR_Initialize") ? 0u : 1u);
      EXPECT_EQ(lacking.CallsOf("UnInitialize").size(), missing.contains(u"CR_UnInitialize") ? 0u : 1u);
    }
  }
}

// --- Counts ---

TEST_F(CardReaderTest, ACountBelowOneIsAnEmptyStore) {
  store_.Add(1);
  for (const std::uint32_t count : {0u, 0xFFFFFFFFu, 0x80000000u}) {
    store_.calls.clear();
    store_.claimed_count = count;
    WriteText(kCardTable, "old");
    EXPECT_EQ(Export(7, 1).code, 0u);
    EXPECT_THAT(ReadFile(kCardTable), IsEmpty());
    EXPECT_THAT(ReadFile(kCardLog), IsEmpty());
    WriteText(kCardTable, "old");
    EXPECT_EQ(ExportChanges(Words({1, 1, 0})).code, 0u);
    EXPECT_THAT(ReadFile(kCardTable), IsEmpty());
    EXPECT_THAT(ReadFile(kCardChanges), IsEmpty());
    EXPECT_THAT(ReadFile(kCardLog), IsEmpty());
    EXPECT_THAT(store_.CallsOf("GetAllidTime"), IsEmpty());
  }
}

TEST_F(CardReaderTest, AListOfLessThanOneIsAnEmptyTable) {
  store_.Add(1);
  for (const std::uint32_t listed : {0u, 0xFFFFFFFFu, 0x80000000u}) {
    store_.claimed_listed = listed;
    WriteText(kCardTable, "old");
    EXPECT_EQ(Export(7, 1).code, 0u);
    EXPECT_THAT(ReadFile(kCardTable), IsEmpty());
    EXPECT_THAT(ReadFile(kCardLog), IsEmpty());
    EXPECT_EQ(ExportChanges(Words({1, 1, 0})).code, 0u);
    EXPECT_EQ(ReadFile(kCardChanges), Words({0, 1, 3}));
    EXPECT_THAT(ReadFile(kCardTable), IsEmpty());
  }
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
}

// --- The table ---

TEST_F(CardReaderTest, ATableThatCannotBeCreatedIsFlaggedWhenRecordsGoIntoIt) {
  MakeDirectory(kCardTable);
  EXPECT_EQ(Export(7, 1).code, 0x10000100u) << "of an empty store";
  EXPECT_EQ(ExportChanges().code, 0x10000100u) << "of an empty store";
  store_.Add(1);
  EXPECT_EQ(ExportChanges(Words({1, 1, 0})).code, 0x10000100u) << "without changes";
  store_.claimed_listed = 0;
  EXPECT_EQ(Export(7, 1).code, 0x10000100u) << "of an empty list";
  EXPECT_THAT(store_.CallsOf("Read"), IsEmpty());
  store_.claimed_listed.reset();
  EXPECT_EQ(Export(7, 1).code, 0x11000100u);
  EXPECT_EQ(ExportChanges().code, 0x11000100u);
}

TEST_F(CardReaderTest, AnAllocationThatFailsCarriesNoFlag) {
  store_.Add(1);
  // The list, the records, one exchange record.
  for (const unsigned time : {1u, 2u, 3u}) {
    handset::Observe([&](const handset::Call& call) {
      const bool is_count = call.function == "GetProcAddressW" && call.path == u"CR_Sync_GetAllRecNum";
      if (is_count) handset::FailCallOf("realloc", time);
    });
    EXPECT_EQ(Export(7, 4).code, 0x10000010u) << time;
    EXPECT_TRUE(handset::FaultHappened());
  }
  handset::Observe({});
  EXPECT_FALSE(Exists(kCardTable));
}

TEST_F(CardReaderTest, ASuccessOfEitherNumberMayFollowOneOfTheOther) {
  for (const std::uint32_t id : {1u, 2u}) store_.Add(id);
  store_.successes = {{"GetAllidTime", 2}, {"Read", 1}, {"Insert", 2}, {"Update", 1}, {"Del", 2}};
  EXPECT_EQ(Export(7, 1).code, 0u);
  WriteFile(kCardTable, TableOf(PlainCard, {2, 60}));
  WriteFile(kCardChanges, Words({0, 1, 3, 0, 2, 2, 0, 60, 1}));
  EXPECT_EQ(Recover(7, 3).code, 0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(2, 1000));
}

}  // namespace
}  // namespace qv_test
