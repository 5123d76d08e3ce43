// Module 15: the browser's settings, a record of the structure's own form. What it has in common with the other
// settings is in settings_modules_test.cpp.
#include "tests/support/run_events.h"
#include "tests/support/scripted_settings_stores.h"
#include "tests/support/turned_bytes.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char16_t kFile[] = u"\\sync\\iesetinfo.tbl";
constexpr std::size_t kSize = ScriptedBrowserStore::kBrowserSize;

constexpr std::uint32_t kNotDone = 0x10000001;

/// Two texts with room for 512 characters, and seven numbers. What lies behind the texts is `behind`.
Bytes Browser(std::uint8_t behind) {
  Bytes r(2048, behind);
  PutTextWithEnd(r, 0, u"http://wap.example.com/\u4E0A\u7F51");
  PutTextWithEnd(r, 1024, u"\\Storage\\cache");
  Append(r, Words({0xA1A2A3A4, 0xB1B2B3B4, 0xC1C2C3C4, 0xD1D2D3D4, 0xE1E2E3E4, 0xF1F2F3F4, 0x81828384}));
  return r;
}

// Of either side to the other. A text that fills its field loses its last character.
constexpr CopiedBytes kBytes[] = {{0, 1022, 0}, {1024, 1022, 1024}, {2048, 28, 2048}};

class BrowserSettingsTest : public AgentTest {
 protected:
  Bytes Exported(const Bytes& structure) {
    store_.structures["browser"] = structure;
    EXPECT_EQ(LocalExport(15), 0u);
    return ReadFile(kFile);
  }
  Bytes Recovered(const Bytes& file) {
    WriteFile(kFile, file);
    store_.structures.clear();
    Recover(15, 1);
    EXPECT_FALSE(Exists(kFile));
    return store_.structures["browser"];
  }

  ScriptedBrowserStore store_;
};

TEST_F(BrowserSettingsTest, TheSettingsTravelFieldByField) {
  EXPECT_EQ(Exported(Browser(0xFF)), Browser(0));
  EXPECT_EQ(Recovered(Browser(0xFF)), Browser(0));
}

TEST_F(BrowserSettingsTest, EachByteGoesWhereItBelongsAndNowhereElse) {
  const Bytes full(kSize, 0x11);
  const Bytes exported = Exported(full);
  const Bytes recovered = Recovered(full);
  for (std::size_t i = 0; i < kSize; ++i) {
    ASSERT_EQ(Exported(WithOneTurned(full, i)), WithByteTurned(exported, kBytes, i)) << "store byte " << i;
    ASSERT_EQ(Recovered(WithOneTurned(full, i)), WithByteTurned(recovered, kBytes, i)) << "exchange byte " << i;
  }
}

TEST_F(BrowserSettingsTest, WhatTheStoreDoesNotFillIsZero) {
  EXPECT_EQ(Exported({}), Bytes(kSize));
}

TEST_F(BrowserSettingsTest, ARecordCutShortIsZeroBehindItsEnd) {
  Bytes full(kSize, 0x11);
  for (const std::size_t last : {1022u, 2046u}) Put16(full, last, 0);
  for (std::size_t size = 0; size <= kSize; ++size) {
    Bytes cut = full;
    cut.resize(size);
    Bytes expected = cut;
    expected.resize(kSize);
    ASSERT_EQ(Recovered(cut), expected) << size << " bytes";
  }
}

TEST_F(BrowserSettingsTest, WhatFollowsTheRecordIsNotRead) {
  Bytes file = Browser(0);
  Append(file, Browser(0x11));
  EXPECT_EQ(Recovered(file), Browser(0));
}

TEST_F(BrowserSettingsTest, AnExportMakesItsFileOnceTheStoreCanBeAsked) {
  RunEvents events(store_);
  EXPECT_EQ(Export(15, 1).code, 0u);
  EXPECT_THAT(events.Take(), ElementsAre("find fnIESetting_Backup", "create iesetinfo.tbl", "call fnIESetting_Backup"));
}

TEST_F(BrowserSettingsTest, ARecoverDeletesTheFileOnceItWasApplied) {
  WriteFile(kFile, Browser(0));
  RunEvents events(store_);
  Recover(15, 1);
  EXPECT_THAT(events.Take(), ElementsAre("open iesetinfo.tbl", "find fnIESetting_Restore", "call fnIESetting_Restore",
                                         "delete iesetinfo.tbl"));
}

TEST_F(BrowserSettingsTest, TheRecordIsWrittenAtOnce) {
  std::vector<std::uint32_t> writes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile") writes.push_back(call.size);
  });
  EXPECT_EQ(LocalExport(15), 0u);
  handset::Observe({});
  EXPECT_THAT(writes, ElementsAre(2076));
}

TEST_F(BrowserSettingsTest, AStoreThatCannotGiveSettingsIsNotExported) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    const ScriptedBrowserStore lacking({u"fnIESetting_Backup"}, address);
    EXPECT_EQ(LocalExport(15), kNotDone);
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(BrowserSettingsTest, AStoreThatCannotTakeSettingsLeavesTheFile) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    const ScriptedBrowserStore lacking({u"fnIESetting_Restore"}, address);
    WriteFile(kFile, Browser(0));
    EXPECT_EQ(Recover(15, 1).code, 0u);
    EXPECT_TRUE(Exists(kFile));
    EXPECT_THAT(lacking.calls, IsEmpty());
  }
}

TEST_F(BrowserSettingsTest, WithoutAFileTheStoreIsNotCalled) {
  Recover(15, 1);
  EXPECT_THAT(store_.calls, IsEmpty());
  MakeDirectory(kFile);
  EXPECT_EQ(LocalExport(15), kNotDone);
  EXPECT_THAT(store_.calls, IsEmpty());
}

TEST_F(BrowserSettingsTest, AFullDiskIsReported) {
  handset::SetFreeSpace(kSize - 1);
  EXPECT_EQ(LocalExport(15), kNotDone);
}

TEST_F(BrowserSettingsTest, NoCallerHearsWhatCameOfARecover) {
  WriteFile(kFile, Browser(0));
  EXPECT_EQ(Recover(15, 1).code, 0u);
  EXPECT_EQ(Recover(15, 1).code, 0u) << "without a file";
  EXPECT_EQ(LocalRecover(15), 0u);
}

TEST_F(BrowserSettingsTest, WhatTheStoreAnswersIsNotLookedAt) {
  for (const std::uint32_t answer : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    store_.answer = answer;
    EXPECT_EQ(Exported(Browser(0)), Browser(0));
    EXPECT_EQ(Recovered(Browser(0)), Browser(0));
  }
}

}  // namespace
}  // namespace qv_test
