// Exports of the multimedia messages, where they are not those of any plain module: texts and data, the configuration,
// and what the store is asked for them.
#include "tests/support/mms_records.h"
#include "tests/support/scripted_mms_store.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MmsExportTest : public AgentTest {
 protected:
  /// An incremental export against a stored anchor and this snapshot.
  Answer ExportChanges(const Bytes& log = {}) {
    WriteText(kAnchorIni, "[ANCHORDATE]\r\nMMS = 5");
    WriteFile(kMmsLog, log);
    return Export(12, 3, u"5");
  }

  /// What an export makes of one message.
  Bytes Exported(const MmsEntry& entry) {
    store_.records.clear();
    store_.AddEntry(1, 1, entry);
    EXPECT_EQ(Export(12, 4).code, 0u);
    return ReadFile(kMmsTable);
  }

  ScriptedMmsStore store_;
};

// --- Messages ---

TEST_F(MmsExportTest, AMessageTravelsFieldByField) {
  const Bytes expected = {0,    0,    0,    0,     // always
                          5,    0,    0,    0,     // text length
                          0xA3, 0xA2, 0xA1, 0xE4,  // id
                          0xB3, 0xB2, 0xB1, 0xF4,  // value
                          0,    0,    0,    0,     // always
                          3,    0,    0,    0,     // data length
                          'H',  'e',  'l',  'l',  'o', 0xFF, 0x00, 0x80};
  EXPECT_EQ(Exported({"Hello", 0xE4A1A2A3, 0xF4B1B2B3, Bytes{0xFF, 0x00, 0x80}, 3}), expected);
}

TEST_F(MmsExportTest, AMessageOfNothingIsTwentyFourBytes) {
  const Bytes expected = {0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(Exported({"", 7, 8, std::nullopt, 0}), expected);
  EXPECT_EQ(Exported({"", 7, 8, Bytes{}, 0}), expected);
  EXPECT_EQ(Exported({std::nullopt, 7, 8, std::nullopt, 0}), expected) << "no text is an empty one";
}

TEST_F(MmsExportTest, ATextIsAsLongAsItsBytesBeforeTheNul) {
  EXPECT_EQ(Exported({"a", 7, 0, std::nullopt, 0}), MmsRecord(7, "a"));
  EXPECT_EQ(Exported({std::string("ab\0cd", 5), 7, 0, std::nullopt, 0}), MmsRecord(7, "ab"));
  EXPECT_EQ(Exported({"\x80\xFF\xC3\xA4", 7, 0, std::nullopt, 0}), MmsRecord(7, "\x80\xFF\xC3\xA4"));
  const std::string novel(70000, 'n');
  EXPECT_EQ(Exported({novel, 7, 0, std::nullopt, 0}), MmsRecord(7, novel));
}

TEST_F(MmsExportTest, DataIsAsLongAsItSays) {
  EXPECT_EQ(Exported({"", 7, 0, Bytes{9}, 1}), MmsRecord(7, "", {9}));
  EXPECT_EQ(Exported({"t", 7, 0, Bytes{1, 2, 3}, 2}), MmsRecord(7, "t", {1, 2}));
  EXPECT_EQ(Exported({"t", 7, 0, Bytes{1, 2, 3}, 0}), MmsRecord(7, "t"));
  const Bytes film(300000, 0x5A);
  EXPECT_EQ(Exported({"t", 7, 0, film, 300000}), MmsRecord(7, "t", film));
}

TEST_F(MmsExportTest, DataOfNegativeLengthIsAbsent) {
  for (const std::optional<Bytes>& data : {std::optional<Bytes>(), std::optional<Bytes>(Bytes{1, 2, 3})}) {
    Bytes expected = Words({0, 1, 7, 0, 0, 0xFFFFFFFF});
    expected.push_back('t');
    EXPECT_EQ(Exported({"t", 7, 0, data, -1}), expected);
    Put32(expected, 20, 0x80000000);
    EXPECT_EQ(Exported({"t", 7, 0, data, INT32_MIN}), expected);
  }
}

TEST_F(MmsExportTest, DataThatIsNotWhereItIsSaidToBeIsAFailedRead) {
  for (const std::int32_t length : {1, 1000, INT32_MAX}) {
    store_.records.clear();
    store_.Add(1, 1, "text", Bytes{1});
    store_.AddEntry(2, 1, {"text", 2, 0, std::nullopt, length});
    EXPECT_EQ(Export(12, 1).code, 0x10000006u);
    EXPECT_EQ(ExportChanges().code, 0x10000006u);
  }
}

TEST_F(MmsExportTest, AMessageTheStoreDoesNotFillIsEmpty) {
  store_.Add(9, 1, "text", Bytes{1, 2});
  store_.fills_nothing = {"Read"};
  EXPECT_EQ(Export(12, 1).code, 0u);
  EXPECT_EQ(ReadFile(kMmsTable), Bytes(24));
}

// --- Configuration ---

TEST_F(MmsExportTest, TheConfigurationIsSavedWhole) {
  store_.config = Bytes{0x00, 0xFF, 0x0D, 0x0A, 0x1A, 0x80};
  for (const std::uint32_t mode : {0u, 1u, 2u, 4u}) {
    WriteText(kMmsConfig, "an older and longer one");
    EXPECT_EQ(Export(12, mode).code, 0u);
    EXPECT_EQ(ReadFile(kMmsConfig), *store_.config);
  }
  std::filesystem::remove(handset::HostPath(kMmsConfig));
  EXPECT_EQ(ExportChanges().code, 0u);
  EXPECT_EQ(ReadFile(kMmsConfig), *store_.config);
  store_.config = Bytes(100000, 0x77);
  EXPECT_EQ(Export(12, 1).code, 0u);
  EXPECT_EQ(ReadFile(kMmsConfig), *store_.config);
}

TEST_F(MmsExportTest, AConfigurationOfNothingIsAnEmptyFile) {
  const auto is_empty = [&] {
    WriteText(kMmsConfig, "old");
    EXPECT_EQ(Export(12, 1).code, 0u);
    return ReadFile(kMmsConfig).empty();
  };
  EXPECT_TRUE(is_empty()) << "a null block of size 0";
  store_.config = Bytes{};
  EXPECT_TRUE(is_empty()) << "a block of size 0";
  store_.config = Bytes{1, 2, 3};
  store_.claimed_config_size = 0;
  EXPECT_TRUE(is_empty()) << "a block that counts for nothing";
  store_.fills_nothing = {"GetConfig"};
  EXPECT_TRUE(is_empty()) << "nothing filled in";
}

TEST_F(MmsExportTest, AFailedConfigurationEndsTheExportWithoutAFlag) {
  const auto export_fails = [&](std::uint32_t code) {
    for (const std::uint32_t mode : {1u, 2u, 3u, 4u}) {
      WriteText(kMmsTable, "old");
      WriteText(kAnchorIni, "[ANCHORDATE]\r\nMMS = 5");
      EXPECT_EQ(Export(12, mode, u"5").code, code);
      EXPECT_EQ(ReadText(kMmsTable), "old");
      EXPECT_FALSE(Exists(kMmsChanges));
      EXPECT_FALSE(Exists(kMmsLog));
      EXPECT_EQ(ReadText(kAnchorIni), mode == 4 ? "[ANCHORDATE]\r\nMMS = 5" : "[ANCHORDATE]\r\nMMS = 200612117210");
    }
  };
  for (const auto address : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
    const ScriptedMmsStore lacking({u"mms_Sync_GetConfig"}, address);
    export_fails(0x10000002);
    EXPECT_THAT(lacking.calls, IsEmpty());
  }
  ScriptedMmsStore failing;
  failing.statuses["GetConfig"] = 0xFFFFFFFF;
  export_fails(0x10000006);
  failing.statuses.clear();
  for (const std::uint32_t size : {1u, 6u, 0xFFFFFFFFu}) {
    failing.claimed_config_size = size;
    export_fails(0x10000006);
  }
  EXPECT_FALSE(Exists(kMmsConfig));
  failing.claimed_config_size.reset();
  failing.config = Bytes{1, 2, 3};
  MakeDirectory(kMmsConfig);
  export_fails(0x10000100);
}

TEST_F(MmsExportTest, AConfigurationThatDoesNotFitCarriesNoFlag) {
  store_.config = Bytes{1, 2, 3};
  for (const std::uint64_t space : {0u, 2u}) {
    handset::SetFreeSpace(space);
    EXPECT_EQ(Export(12, 4).code, 0x10000100u);
    EXPECT_FALSE(Exists(kMmsTable));
  }
}

// --- Full exports ---

TEST_F(MmsExportTest, MessagesAreReadFiftyAtATime) {
  Bytes expected;
  std::string reads[3] = {"Read [", "Read [", "Read ["};
  for (std::uint32_t id = 1; id <= 101; ++id) {
    const std::string text(id, 'x');
    store_.Add(id, 1, text, Bytes(id % 7, 0x11));
    Append(expected, MmsRecord(id, text, Bytes(id % 7, 0x11)));
    std::string& read = reads[(id - 1) / 50];
    read += (read.back() == '[' ? "" : " ") + std::to_string(id);
  }
  EXPECT_EQ(Export(12, 4).code, 0u);
  EXPECT_THAT(store_.CallsOf("Read"), ElementsAre(reads[0] + "]", reads[1] + "]", "Read [101]"));
  EXPECT_THAT(store_.CallsOf("GetAllidTime"), ElementsAre("GetAllidTime room 101"));
  EXPECT_EQ(ReadFile(kMmsTable), expected);
}

TEST_F(MmsExportTest, NoMoreThanOneReadsBlocksAreHeld) {
  for (std::uint32_t id = 1; id <= 200; ++id) store_.Add(id, 1, std::string(499, 'x'), Bytes(500, 0x11));
  handset::ResetPeakMemory();
  EXPECT_EQ(Export(12, 4).code, 0u);
  EXPECT_LT(handset::PeakAllocatedBytes(), 50 * 1000u + 8192u);
  EXPECT_EQ(handset::AllocatedBytes(), 0u);
}

// --- Incremental exports ---

TEST_F(MmsExportTest, ChangedMessagesTravelWithTextAndData) {
  store_.Add(5, 2, "as it was");
  store_.Add(9, 4, "new");
  store_.Add(2, 4, "modified", Bytes{1, 2});
  EXPECT_EQ(ExportChanges(Words({2, 2, 0, 5, 2, 0})).code, 0u);
  Bytes expected = MmsRecord(9, "new");
  Append(expected, MmsRecord(2, "modified", {1, 2}));
  EXPECT_EQ(ReadFile(kMmsTable), expected);
}

// --- Failures ---

TEST_F(MmsExportTest, ATableThatCannotBeWrittenCarriesNoFlag) {
  store_.Add(1, 1, "text", Bytes{1, 2, 3});
  store_.Add(2, 1, "text", Bytes{1, 2, 3});
  for (const unsigned time : {2u, 3u}) {  // The first is the configuration.
    handset::FailCallOf("CreateFileW", time);
    EXPECT_EQ(Export(12, 4).code, 0x10000100u);
    EXPECT_TRUE(handset::FaultHappened());
  }
  for (const std::uint64_t space : {0u, 23u, 24u, 27u, 28u, 30u, 31u, 61u}) {
    std::filesystem::remove(handset::HostPath(kMmsTable));
    handset::SetFreeSpace(space);
    EXPECT_EQ(Export(12, 4).code, 0x10000100u) << space << " bytes free";
  }
  std::filesystem::remove(handset::HostPath(kMmsTable));
  handset::SetFreeSpace(62);
  EXPECT_EQ(Export(12, 4).code, 0u);
}

TEST_F(MmsExportTest, AStoreFailureCarriesNoFlagButTheSnapshots) {
  // The answering calls: get the configuration, list messages, read them twice, list them for the snapshot.
  const std::uint32_t kCodes[] = {0x10000006, 0x10000005, 0x10000006, 0x10000006, 0x15000005};
  for (unsigned n = 1; n <= 5; ++n) {
    for (const bool incremental : {false, true}) {
      ScriptedMmsStore failing;
      failing.config = Bytes{1};
      for (std::uint32_t id = 1; id <= 60; ++id) failing.Add(id, 1, "text", Bytes{1, 2, 3});
      failing.fail_call = n;
      EXPECT_EQ((incremental ? ExportChanges() : Export(12, 1)).code, kCodes[n - 1]) << "call " << n;
    }
  }
}

}  // namespace
}  // namespace qv_test
