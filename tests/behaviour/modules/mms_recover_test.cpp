// Recovers of the multimedia messages, where they are not those of any plain module: texts and data, the configuration,
// and the change list that stays.
#include <random>

#include "tests/support/mms_records.h"
#include "tests/support/scripted_mms_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Far less than any of the lengths that are made up, far more than a run needs beside its messages.
constexpr std::uint64_t kLittleMemory = 8192;

class MmsRecoverTest : public AgentTest {
 protected:
  static void Place(const Bytes& table, const Bytes& config = {}) {
    WriteFile(kMmsConfig, config);
    WriteFile(kMmsTable, table);
  }

  /// What an inserting recover hands to the store for a table.
  std::vector<MmsEntry> Recovered(const Bytes& table) {
    store_.records.clear();
    Place(table);
    EXPECT_EQ(Recover(12, 4).code, 0u);
    std::vector<MmsEntry> entries;
    for (const std::uint32_t id : store_.Ids()) entries.push_back(store_.EntryOf(id));
    return entries;
  }

  Answer RecoverChanges(const Bytes& changes, const Bytes& table = {}) {
    Place(table);
    WriteFile(kMmsChanges, changes);
    return Recover(12, 3);
  }

  /// A message that says more than there is must not be applied, and not even be made room for.
  void ExpectRefused(const Bytes& record) {
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      store_.records.clear();
      store_.calls.clear();
      Bytes table = MmsRecord(7, "before");
      Append(table, record);
      Place(table);
      WriteFile(kMmsChanges, Words({0, 7, 1, 0, 8, 1}));
      handset::ResetPeakMemory();
      EXPECT_EQ(Recover(12, mode).code, 0x23000200u) << "mode " << mode;
      EXPECT_LT(handset::PeakAllocatedBytes(), kLittleMemory);
      EXPECT_EQ(store_.records.size(), 1u) << "what came before it stays inserted";
      EXPECT_TRUE(Exists(kMmsTable));
      EXPECT_TRUE(Exists(kMmsChanges));
      EXPECT_FALSE(Exists(kMmsLog));
    }
  }

  ScriptedMmsStore store_;
};

// --- Messages ---

TEST_F(MmsRecoverTest, AMessageReachesTheStoreFieldByField) {
  const Bytes table = {0,    0,    0,    0,     // says nothing
                       5,    0,    0,    0,     // text length
                       0xA3, 0xA2, 0xA1, 0xE4,  // id
                       0xB3, 0xB2, 0xB1, 0xF4,  // value
                       0,    0,    0,    0,     // says nothing
                       3,    0,    0,    0,     // data length
                       'H',  'e',  'l',  'l',  'o', 0xFF, 0x00, 0x80};
  const MmsEntry expected = {"Hello", 0xE4A1A2A3, 0xF4B1B2B3, Bytes{0xFF, 0x00, 0x80}, 3};
  EXPECT_THAT(Recovered(table), ElementsAre(expected)) << "in blocks of just the sizes, without a terminator";
  Bytes noisy = table;
  Put32(noisy, 0, 0xFFFFFFFF);
  Put32(noisy, 16, 0xFFFFFFFF);
  EXPECT_THAT(Recovered(noisy), ElementsAre(expected));
}

TEST_F(MmsRecoverTest, APartOfNoLengthIsANullPointer) {
  EXPECT_THAT(Recovered(MmsRecord(7, "", {}, 8)), ElementsAre(MmsEntry{std::nullopt, 7, 8, std::nullopt, 0}));
  EXPECT_THAT(Recovered(MmsRecord(7, "t")), ElementsAre(MmsEntry{"t", 7, 0, std::nullopt, 0}));
  EXPECT_THAT(Recovered(MmsRecord(7, "", {9})), ElementsAre(MmsEntry{std::nullopt, 7, 0, Bytes{9}, 1}));
}

TEST_F(MmsRecoverTest, DataOfNegativeLengthIsAbsent) {
  for (const std::uint32_t length : {0xFFFFFFFFu, 0x80000000u}) {
    Bytes table = MmsHead(1, 7, 0, length);
    table.push_back('t');
    Append(table, MmsRecord(8, "next"));
    EXPECT_THAT(Recovered(table), ElementsAre(MmsEntry{"t", 7, 0, std::nullopt, static_cast<std::int32_t>(length)},
                                              MmsEntry{"next", 8, 0, std::nullopt, 0}));
  }
}

TEST_F(MmsRecoverTest, ATextIsTakenWithAllItsBytes) {
  const std::string text("a\0b\xFF\0", 5);
  EXPECT_THAT(Recovered(MmsRecord(7, text)), ElementsAre(MmsEntry{text, 7, 0, std::nullopt, 0}));
}

TEST_F(MmsRecoverTest, MessagesOfAnyLengthFollowEachOther) {
  const std::string novel(70000, 'n');
  const Bytes film(300000, 0x5A);
  Bytes table = MmsRecord(1, novel, film, 11);
  Append(table, MmsRecord(2));
  Append(table, MmsRecord(3, "x", {1}));
  EXPECT_THAT(Recovered(table),
              ElementsAre(MmsEntry{novel, 1, 11, film, 300000}, MmsEntry{std::nullopt, 2, 0, std::nullopt, 0},
                          MmsEntry{"x", 3, 0, Bytes{1}, 1}));
}

TEST_F(MmsRecoverTest, AShortHeaderIsUsedAsRead) {
  for (std::size_t size = 1; size < 24; ++size) {
    Bytes head = MmsHead(0, 0xE4A1A2A3, 0xF4B1B2B3, 0);
    Put32(head, 0, 0xFFFFFFFF);
    Put32(head, 16, 0xFFFFFFFF);
    head.resize(size);
    Bytes table = MmsRecord(1, "before", {1, 2});
    Append(table, head);
    head.resize(24);
    EXPECT_THAT(Recovered(table), ElementsAre(MmsEntry{"before", 1, 0, Bytes{1, 2}, 2},
                                              MmsEntry{std::nullopt, Get32(head, 8), Get32(head, 12), std::nullopt, 0}))
        << size << " bytes";
  }
}

TEST_F(MmsRecoverTest, AShortHeaderHasNothingBehindIt) {
  for (std::size_t size = 5; size < 24; ++size) {
    Bytes head = MmsHead(1, 8, 0, 0);
    head.resize(size);
    ExpectRefused(head);
  }
  for (std::size_t size = 21; size < 24; ++size) {
    Bytes head = MmsHead(0, 8, 0, 0xFFFFFFFF);  // Which is not negative any more.
    head.resize(size);
    ExpectRefused(head);
  }
}

TEST_F(MmsRecoverTest, TextOrDataBeyondTheFileIsRefused) {
  const auto record = [](std::uint32_t text_length, std::uint32_t data_length, std::size_t rest) {
    Bytes bytes = MmsHead(text_length, 8, 0, data_length);
    bytes.resize(24 + rest, 0x77);
    return bytes;
  };
  ExpectRefused(record(1, 0, 0));
  ExpectRefused(record(0, 1, 0));
  ExpectRefused(record(5, 0, 4));
  ExpectRefused(record(0, 5, 4));
  ExpectRefused(record(2, 3, 4));
  ExpectRefused(record(3, 2, 4));
  ExpectRefused(record(30000, 1, 30000));
  ExpectRefused(record(1, 30000, 30000));
  ExpectRefused(record(30001, 0, 30000));
  ExpectRefused(record(0x7FFFFFFF, 0, 4));
  ExpectRefused(record(0xFFFFFFFF, 0, 4));
  ExpectRefused(record(0xFFFFFFFF, 0xFFFFFFFF, 4));
  ExpectRefused(record(0, 0x7FFFFFFF, 4));
  // Together four bytes more than 32 bits can say, and four bytes there are.
  ExpectRefused(record(0xFFFFFFFF, 5, 4));
  ExpectRefused(record(0x80000001, 0x7FFFFFFF, 4));
  ExpectRefused(record(0x80000005, 0x7FFFFFFF, 4));
  ExpectRefused(record(0xFFFFFFE8, 24, 30));
}

TEST_F(MmsRecoverTest, AMessageMayEndWithTheFile) {
  Bytes table = MmsHead(2, 8, 0, 3);
  Append(table, {'a', 'b', 1, 2, 3});
  EXPECT_THAT(Recovered(table), ElementsAre(MmsEntry{"ab", 8, 0, Bytes{1, 2, 3}, 3}));
}

TEST_F(MmsRecoverTest, TheMemoryOfOneMessageIsEnough) {
  Bytes table;
  for (std::uint32_t id = 1; id <= 50; ++id) Append(table, MmsRecord(id, std::string(20000, 't'), Bytes(30000, 1)));
  Place(table);
  handset::ResetPeakMemory();
  EXPECT_EQ(Recover(12, 4).code, 0u);
  EXPECT_LT(handset::PeakAllocatedBytes(), 50000 + kLittleMemory);
  EXPECT_EQ(store_.records.size(), 50u);
  EXPECT_EQ(handset::AllocatedBytes(), 0u);
}

TEST_F(MmsRecoverTest, WhatIsExportedAndRecoveredIsExportedAlike) {
  std::mt19937 random(20061211);
  const auto pick = [&](std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); };
  std::vector<MmsEntry> expected;
  for (std::uint32_t id = 1; id <= 120; ++id) {
    MmsEntry entry = {
        .text = {}, .id = id, .value = static_cast<std::uint32_t>(random()), .data = {}, .data_length = 0};
    if (pick(4) != 0) {
      entry.text.emplace();
      for (std::uint32_t length = 1 + pick(200); length != 0; --length) {
        entry.text->push_back(static_cast<char>(1 + pick(255)));
      }
    }
    if (pick(4) != 0) {
      entry.data.emplace();
      for (std::uint32_t length = 1 + pick(200); length != 0; --length) {
        entry.data->push_back(static_cast<std::uint8_t>(pick(256)));
      }
      entry.data_length = static_cast<std::int32_t>(entry.data->size());
    } else {
      entry.data_length = -static_cast<std::int32_t>(pick(3));
    }
    store_.AddEntry(id, id, entry);
    expected.push_back(entry);
  }
  store_.config = Bytes{1, 0, 2};
  EXPECT_EQ(Export(12, 1).code, 0u);
  EXPECT_EQ(Recover(12, 2).code, 0u);
  EXPECT_THAT(store_.told_configs, ElementsAre(*store_.config));
  ASSERT_EQ(store_.records.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(store_.EntryOf(store_.Ids()[i]), expected[i]);
}

// --- Configuration ---

TEST_F(MmsRecoverTest, TheConfigurationIsHandedOverWholeAndThenDeleted) {
  const Bytes large(100000, 0x77);
  for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 4u, 0xFFFFFFFFu}) {
    for (const Bytes& config : {Bytes{0x00, 0xFF, 0x0D, 0x0A, 0x1A}, Bytes{0}, large}) {
      store_.told_configs.clear();
      Place({}, config);
      WriteFile(kMmsChanges, {});
      EXPECT_EQ(Recover(12, mode).code, 0u);
      EXPECT_THAT(store_.told_configs, ElementsAre(config));
      EXPECT_FALSE(Exists(kMmsConfig));
    }
  }
}

TEST_F(MmsRecoverTest, AnEmptyConfigurationIsHandedOverWithSizeZero) {
  Place({});
  EXPECT_EQ(Recover(12, 4).code, 0u);
  EXPECT_THAT(store_.calls, ElementsAre("SetConfig null 0"));
  EXPECT_FALSE(Exists(kMmsConfig));
}

TEST_F(MmsRecoverTest, AFailedConfigurationEndsTheRecoverWithoutAFlag) {
  const auto recover_fails = [&](std::uint32_t code) {
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      std::filesystem::remove(handset::HostPath(kAnchorIni));
      WriteFile(kMmsTable, MmsRecord(7));
      WriteFile(kMmsChanges, Words({0, 7, 3}));
      EXPECT_EQ(Recover(12, mode).code, code);
      EXPECT_TRUE(Exists(kMmsTable));
      EXPECT_TRUE(Exists(kMmsChanges));
      EXPECT_EQ(Exists(kAnchorIni), mode != 4) << "the anchor has moved by then";
    }
  };
  recover_fails(0x20000100);
  EXPECT_THAT(store_.calls, IsEmpty());
  WriteFile(kMmsConfig, {1, 2, 3});
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const ScriptedMmsStore lacking({u"mms_Sync_SetConfig"}, address);
    recover_fails(0x20000002);
    EXPECT_THAT(lacking.calls, IsEmpty());
  }
  ScriptedMmsStore refusing;
  for (const std::uint32_t status : {1u, 0xFFFFFFFFu}) {
    refusing.statuses["SetConfig"] = status;
    recover_fails(0x20000007);
  }
  refusing.calls.clear();
  for (const char* const function : {"GetFileSize", "ReadFile"}) {
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == kMmsConfig) handset::FailCallOf(function, 1);
    });
    recover_fails(0x20000200);
    EXPECT_TRUE(handset::FaultHappened());
  }
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW" && call.path == kMmsConfig) handset::FailCallOf("realloc", 1);
  });
  recover_fails(0x20000010);
  handset::Observe({});
  EXPECT_THAT(refusing.calls, IsEmpty());
  EXPECT_TRUE(Exists(kMmsConfig));
}

// --- Inserting recovers ---

TEST_F(MmsRecoverTest, AnInsertingRecoverLeavesChangeListsAlone) {
  store_.Add(1);
  for (const std::uint32_t mode : {1u, 4u}) {
    Place({});
    WriteFile(kMmsChanges, Words({0, 1, 3}));
    WriteFile(kOtherChanges, Words({0, 1, 3}));
    EXPECT_EQ(Recover(12, mode).code, 0u);
    EXPECT_TRUE(Exists(kMmsChanges));
    EXPECT_TRUE(Exists(kOtherChanges));
    EXPECT_THAT(store_.Ids(), ElementsAre(1));
  }
}

// --- Change lists ---

TEST_F(MmsRecoverTest, ChangedMessagesReachTheStoreWithTextAndData) {
  store_.Add(3);
  Bytes table = MmsRecord(3, "three", {3, 3}, 33);
  Append(table, MmsRecord(99, "passed over", {9, 9, 9}));
  Append(table, MmsRecord(60, "sixty"));
  EXPECT_EQ(RecoverChanges(Words({0, 60, 1, 0, 3, 2}), table).code, 0u);
  EXPECT_THAT(store_.Ids(), ElementsAre(3, 1000));
  EXPECT_EQ(store_.EntryOf(3), (MmsEntry{"three", 3, 33, Bytes{3, 3}, 2}));
  EXPECT_EQ(store_.EntryOf(1000), (MmsEntry{"sixty", 60, 0, std::nullopt, 0}));
}

TEST_F(MmsRecoverTest, ItsChangeListStaysAndTheShortMessagesGoes) {
  const Bytes changes = Words({0, 60, 1});
  WriteText(kOtherChanges, "left behind");
  EXPECT_EQ(RecoverChanges(changes, MmsRecord(60)).code, 0u);
  EXPECT_EQ(ReadFile(kMmsChanges), changes);
  EXPECT_FALSE(Exists(kOtherChanges));
  EXPECT_FALSE(Exists(kMmsTable));
  EXPECT_FALSE(Exists(kMmsConfig));
  EXPECT_EQ(RecoverChanges(changes, MmsRecord(60)).code, 0u) << "nor need there be one";
}

TEST_F(MmsRecoverTest, AMessageThatIsPassedOverMustBeWholeToo) {
  Bytes table = MmsHead(5, 99, 0, 0);
  EXPECT_EQ(RecoverChanges(Words({0, 60, 1}), table).code, 0x23000200u);
}

// --- Failures ---

TEST_F(MmsRecoverTest, AMissingChangeListIsFlaggedAsSuch) {
  Place(MmsRecord(1));
  WriteFile(kOtherChanges, Words({0, 1, 1}));
  EXPECT_EQ(Recover(12, 3).code, 0x20200100u);
  EXPECT_THAT(store_.calls, ElementsAre("SetConfig null 0"));
  EXPECT_TRUE(Exists(kMmsTable));
  EXPECT_TRUE(Exists(kOtherChanges));
}

TEST_F(MmsRecoverTest, ARefusedMessageKeepsTheShortMessagesChangeList) {
  const Bytes table = MmsRecord(8, "eight", {8});
  WriteText(kOtherChanges, "kept");
  store_.statuses["Insert"] = 0x80000000;
  EXPECT_EQ(RecoverChanges(Words({0, 8, 1}), table).code, 0x23000007u);
  store_.statuses["Update"] = 1;
  EXPECT_EQ(RecoverChanges(Words({0, 8, 2}), table).code, 0x23000008u);
  EXPECT_TRUE(Exists(kOtherChanges));
}

TEST_F(MmsRecoverTest, ARecoverNeedsNoConfigurationOfTheStore) {
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const ScriptedMmsStore lacking({u"mms_Sync_GetConfig"}, address);
    Place({});
    EXPECT_EQ(Recover(12, 1).code, 0u);
    EXPECT_EQ(RecoverChanges({}).code, 0u);
  }
}

TEST_F(MmsRecoverTest, AnUnreadableFileIsNotTakenForItsEnd) {
  const auto fails = [&](const char* function, unsigned time, const char16_t* file, std::uint32_t mode) {
    Place(MmsRecord(1, "text", {1, 2, 3}));
    WriteFile(kMmsChanges, Words({0, 1, 1}));
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == file) handset::FailCallOf(function, time);
    });
    const Answer answer = Recover(12, mode);
    handset::Observe({});
    EXPECT_TRUE(handset::FaultHappened());
    EXPECT_TRUE(Exists(kMmsTable));
    return answer.code;
  };
  for (const std::uint32_t mode : {1u, 3u}) {
    EXPECT_EQ(fails("GetFileSize", 1, kMmsTable, mode), 0x23000200u);
    // The header, the text, the data.
    for (const unsigned time : {1u, 2u, 3u}) EXPECT_EQ(fails("ReadFile", time, kMmsTable, mode), 0x23000200u);
  }
  EXPECT_EQ(fails("ReadFile", 1, kMmsChanges, 3), 0x20200200u);
  EXPECT_THAT(store_.records, IsEmpty());
}

}  // namespace
}  // namespace qv_test
