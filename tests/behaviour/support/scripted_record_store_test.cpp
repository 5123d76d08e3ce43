// What tests of modules build on: that a described store is called, lists its records and answers as its description
// says.
#include "tests/support/scripted_record_store.h"

#include <gtest/gtest-spi.h>

namespace qv_test {
namespace {

using enum Argument;
using testing::ElementsAre;

class ScriptedRecordStoreTest : public AgentTest {
 protected:
  /// Calls an entry point as the agent would.
  template <typename... Words>
  static std::uint32_t CallStore(const char16_t* entry_point, Words... words) {
    const coredll::HMODULE library = coredll::LoadLibraryW(u"Store.dll");
    const coredll::FARPROC address = coredll::GetProcAddressW(library, entry_point);
    const std::uint32_t answer = reinterpret_cast<std::uint32_t (*)(Words...)>(address)(words...);
    coredll::FreeLibrary(library);
    return answer;
  }

  static ScriptedStoreFacts Facts(const ListForm& list, const std::vector<ScriptedEntryPoint>& entry_points) {
    return {.library = u"Store.dll", .tables = {{8, 4}, {12}}, .list = list, .entry_points = entry_points};
  }
};

TEST_F(ScriptedRecordStoreTest, AListLiesInTheFormOfItsStore) {
  const coredll::SYSTEMTIME system_time = {2006, 12, 1, 11, 7, 2, 10, 9};
  const std::array<std::uint16_t, 6> six_words = {2006, 12, 11, 7, 2, 10};
  constexpr std::uint32_t kUnused = 0xAAAAAAAA;
  const struct {
    ListForm form;
    ListTime time;
    std::vector<std::uint32_t> entry;
  } kRows[] = {
      {kFileTimeIn16Bytes, 0x0000000200000001, {7, kUnused, 1, 2}},
      {kFileTimeIn12Bytes, 0x0000000200000001, {7, 1, 2}},
      {kSystemTimeIn20Bytes, system_time, {7, 0x000C07D6, 0x000B0001, 0x00020007, 0x0009000A}},
      {kTextIn36Bytes, u"12", {7, 0x00320031, 0xAAAA0000, kUnused, kUnused, kUnused, kUnused, kUnused, kUnused}},
      {kSixWordsIn16Bytes, six_words, {7, 0x000C07D6, 0x0007000B, 0x000A0002}},
  };
  for (const auto& [form, time, entry] : kRows) {
    const ScriptedStoreFacts facts = Facts(form, {{u"L", "List", StoreRole::kList, {kListEntries, kCountPlace}}});
    ScriptedTableStore store(facts);
    store.Add(7, time);
    store.Add(8, time);
    std::vector<std::uint32_t> entries(entry.size());
    std::uint32_t count = 1;
    EXPECT_EQ(CallStore(u"L", entries.data(), &count), 0u);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(entries, entry);
    EXPECT_THAT(store.calls, ElementsAre("List room 1"));
  }
}

TEST_F(ScriptedRecordStoreTest, ArgumentsAreToldApartByTheirPlaces) {
  const ScriptedStoreFacts facts =
      Facts(kFileTimeIn16Bytes, {{u"R", "Read", StoreRole::kRead, {kZero, kIds, kCount, kTable, kRecords}},
                                 {u"I", "Insert", StoreRole::kInsert, {kNewId, kGroup, kRecords, kTable}},
                                 {u"U", "Update", StoreRole::kUpdate, {kRecords, kId, kTable}},
                                 {u"D", "Del", StoreRole::kDelete, {kIds, kTable, kCount}}});
  ScriptedRecordStore store(facts);
  store.Add(1, 5, 1, Words({50, 51, 52}));
  store.Add(1, 6, 1, Words({60, 61, 62}));
  const std::uint32_t ids[] = {6, 5};
  std::uint32_t records[6] = {};
  EXPECT_EQ(CallStore(u"R", 0u, ids, 2u, 1u, records), 0u);
  EXPECT_THAT(records, ElementsAre(60, 61, 62, 50, 51, 52));
  std::uint32_t new_id = 0;
  EXPECT_EQ(CallStore(u"I", &new_id, 7u, records, 0u), 0u);
  EXPECT_EQ(new_id, 1000u);
  EXPECT_EQ(store.At(0, 1000).bytes, Words({60, 61}));
  EXPECT_EQ(store.At(0, 1000).group, 7u);
  EXPECT_EQ(CallStore(u"U", records, 5u, 1u), 0u);
  EXPECT_EQ(store.At(1, 5).bytes, Words({60, 61, 62}));
  EXPECT_EQ(CallStore(u"D", ids, 1u, 1u), 0u);
  EXPECT_THAT(store.Ids(1), ElementsAre(5));
  EXPECT_THAT(store.calls, ElementsAre("Read 1 [6 5]", "Insert 0 group 7", "Update 1 id 5", "Del 1 [6]"));
}

TEST_F(ScriptedRecordStoreTest, AStoreMayTakeSeveralRecordsAndHaveEntryPointsForEachTable) {
  const ScriptedStoreFacts facts =
      Facts(kFileTimeIn16Bytes,
            {{.name = u"C", .told = "Count", .role = StoreRole::kCount, .arguments = {kCountPlace}, .table = 1},
             {.name = u"I",
              .told = "Insert",
              .role = StoreRole::kInsert,
              .arguments = {kRecords, kCount, kNewId},
              .table = 1},
             {.name = u"U",
              .told = "Update",
              .role = StoreRole::kUpdate,
              .arguments = {kIds, kCount, kRecords},
              .table = 1}});
  ScriptedRecordStore store(facts);
  std::uint32_t records[] = {1, 2, 3, 4, 5, 6};
  std::uint32_t ids[2] = {};
  std::uint32_t count = 0;
  EXPECT_EQ(CallStore(u"I", records, 2u, ids), 0u);
  EXPECT_THAT(ids, ElementsAre(1000, 1001));
  EXPECT_EQ(CallStore(u"C", &count), 0u);
  EXPECT_EQ(count, 2u);
  std::swap(ids[0], ids[1]);
  EXPECT_EQ(CallStore(u"U", ids, 2u, records), 0u);
  EXPECT_EQ(store.At(1, 1001).bytes, Words({1, 2, 3}));
  EXPECT_EQ(store.At(1, 1000).bytes, Words({4, 5, 6}));
  EXPECT_THAT(store.calls, ElementsAre("Insert 2", "Count", "Update [1001 1000]"));
}

TEST_F(ScriptedRecordStoreTest, ARecordMaySayItselfWhomAnUpdateIsAbout) {
  const ScriptedStoreFacts facts = {.library = u"Store.dll",
                                    .tables = {{.record_size = 8, .id_offset = 4}},
                                    .list = kFileTimeIn16Bytes,
                                    .entry_points = {{u"U", "Update", StoreRole::kUpdate, {kRecords}}}};
  ScriptedTableStore store(facts);
  store.Add(7);
  store.Add(8);
  const std::uint32_t record[] = {70, 8};
  EXPECT_EQ(CallStore(u"U", record), 0u);
  EXPECT_EQ(store.At(7).bytes, Words({0, 7}));
  EXPECT_EQ(store.At(8).bytes, Words({70, 8}));
  EXPECT_THAT(store.calls, ElementsAre("Update 8"));
}

TEST_F(ScriptedRecordStoreTest, SuccessIsWhatTheDescriptionOrTheTestSays) {
  const ScriptedStoreFacts facts = Facts(kFileTimeIn16Bytes, {{u"D", "DelAll", StoreRole::kDeleteAll, {}, 2}});
  ScriptedTableStore store(facts);
  const auto delete_all = [&] {
    store.Add(1);
    return CallStore(u"D");
  };
  EXPECT_EQ(delete_all(), 2u);
  EXPECT_THAT(store.records, testing::IsEmpty());
  store.successes["DelAll"] = 1;
  EXPECT_EQ(delete_all(), 1u);
  EXPECT_THAT(store.records, testing::IsEmpty());
  EXPECT_FALSE(store.failed_a_call);
  store.statuses["DelAll"] = 0;
  EXPECT_EQ(delete_all(), 0u);
  EXPECT_THAT(store.records, testing::SizeIs(1));
  EXPECT_TRUE(store.failed_a_call);
}

TEST_F(ScriptedRecordStoreTest, TheCallThatFailsAnswersWhatTheTestSays) {
  const ScriptedStoreFacts facts = Facts(
      kFileTimeIn16Bytes, {{u"C", "Count", StoreRole::kCount, {}}, {u"D", "DelAll", StoreRole::kDeleteAll, {}, 1}});
  ScriptedTableStore store(facts);
  store.fail_call = 2;
  store.failing_status = 0;
  EXPECT_EQ(CallStore(u"C"), 0u) << "a count is no status";
  EXPECT_EQ(CallStore(u"D"), 1u);
  EXPECT_EQ(CallStore(u"D"), 0u);
  EXPECT_EQ(CallStore(u"D"), 1u);
}

TEST_F(ScriptedRecordStoreTest, AFailedReadLeavesNoRecordBehind) {
  const ScriptedStoreFacts facts = Facts(kFileTimeIn16Bytes, {{u"R", "Read", StoreRole::kRead, {kIds, kRecords}}});
  ScriptedTableStore store(facts);
  store.statuses["Read"] = 1;
  const std::uint32_t id = 1;
  std::uint32_t record[3] = {};
  EXPECT_EQ(CallStore(u"R", &id, record), 1u);
  EXPECT_THAT(record, ElementsAre(0xEEEEEEEE, 0xEEEEEEEE, 0));
}

TEST_F(ScriptedRecordStoreTest, MisuseFailsTheTest) {
  const ScriptedStoreFacts facts = Facts(kFileTimeIn16Bytes, {{u"D", "Del", StoreRole::kDelete, {kId, kZero}},
                                                              {u"R", "Read", StoreRole::kRead, {kIds, kRecords}}});
  ScriptedTableStore store(facts);
  store.Add(1);
  const std::uint32_t id = 1;
  const std::uint32_t unknown = 2;
  std::uint32_t record[3] = {};
  auto* const askew = reinterpret_cast<std::uint8_t*>(record) + 2;
  EXPECT_NONFATAL_FAILURE(CallStore(u"R", &unknown, record), "which it has not");
  EXPECT_NONFATAL_FAILURE(CallStore(u"R", &id, askew), "not on a multiple of 4");
  EXPECT_NONFATAL_FAILURE(CallStore(u"D", 1u, 1u), "reserved");
}

TEST_F(ScriptedRecordStoreTest, TwoLibrariesAreCalledSideBySide) {
  ScriptedStoreFacts facts = Facts(kFileTimeIn16Bytes, {{u"D", "DelAll", StoreRole::kDeleteAll, {}, 1}});
  ScriptedStoreFacts others = facts;
  others.library = u"Other.dll";
  const ScriptedTableStore store(facts);
  const ScriptedTableStore other(others);
  EXPECT_EQ(CallStore(u"D"), 1u);
  EXPECT_THAT(store.calls, ElementsAre("DelAll"));
  EXPECT_THAT(other.calls, testing::IsEmpty());
}

}  // namespace
}  // namespace qv_test
