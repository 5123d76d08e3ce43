// Module 14: six profiles and the display, in a file each. What it has in common with the other settings is in
// settings_modules_test.cpp.
#include "tests/support/run_events.h"
#include "tests/support/scripted_settings_stores.h"
#include "tests/support/turned_bytes.h"

namespace qv_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char16_t kProfileFile[] = u"\\sync\\personinfo.tbl";
constexpr char16_t kDisplayFile[] = u"\\sync\\dispinfo.tbl";
constexpr std::size_t kProfileSize = ScriptedProfileStore::kProfileSize;
constexpr std::size_t kProfileRecordSize = 3168;
constexpr std::size_t kDisplaySize = ScriptedProfileStore::kDisplaySize;
constexpr std::size_t kDisplayRecordSize = 68;

constexpr std::uint32_t kNotDone = 0x10000001;
constexpr std::uint32_t kNotRecovered = 0x20000001;

// --- A profile and a display, byte by byte. ---

/// Where the six texts lie, each with room for 260 characters.
constexpr std::size_t kStoreTexts[] = {0, 520, 1044, 1564, 2084, 2604};
constexpr std::size_t kExchangeTexts[] = {0, 520, 1042, 1562, 2084, 2604};
constexpr std::u16string_view kTexts[] = {u"Im Freien",           u"\\Storage\\ring\u00F6n.mid", u"",
                                          u"\u738B \xD83D\xDE00", u"Kalender.wav\t\r",           u"x"};

Bytes StoreProfile() {
  Bytes r(kProfileSize, 0xFF);
  for (std::size_t i = 0; i < 6; ++i) PutTextWithEnd(r, kStoreTexts[i], kTexts[i]);
  Put32(r, 1040, 0xA1A2A3A4);  // Of this and the next value the low half travels.
  Put32(r, 3124, 0xB1B28384);
  for (std::uint8_t i = 0; i < 6; ++i) Put32(r, 3128 + 4u * i, 0xC1C2C390u + i);  // The low byte.
  return r;
}

Bytes ExchangeProfile(std::uint8_t unused = 0) {
  Bytes r(kProfileRecordSize, unused);
  for (std::size_t i = 0; i < 6; ++i) PutTextWithEnd(r, kExchangeTexts[i], kTexts[i]);
  Put16(r, 1040, 0xA3A4);
  Put16(r, 2082, 0x8384);
  for (std::uint8_t i = 0; i < 6; ++i) Put8(r, 3124u + i, static_cast<std::uint8_t>(0x90 + i));
  return r;
}

/// Numbers widen without their sign.
Bytes RecoveredProfile() {
  Bytes r(kProfileSize);
  for (std::size_t i = 0; i < 6; ++i) PutTextWithEnd(r, kStoreTexts[i], kTexts[i]);
  Put32(r, 1040, 0xA3A4);
  Put32(r, 3124, 0x8384);
  for (std::uint8_t i = 0; i < 6; ++i) Put32(r, 3128 + 4u * i, 0x90u + i);
  return r;
}

/// Eleven numbers; of the fourth to the eighth the low byte travels.
Bytes StoreDisplay() {
  return Words({0x11121314, 0x21222324, 0x31323334, 0x41424384, 0x51525385, 0x61626386, 0x71727387, 0x81828388,
                0x91929394, 0xA1A2A3A4, 0xB1B2B3B4});
}

Bytes ExchangeDisplay(std::uint8_t unused = 0) {
  Bytes r(kDisplayRecordSize, unused);
  Put32(r, 0, 0x11121314);
  Put32(r, 4, 0x21222324);
  Put32(r, 8, 0x31323334);
  for (std::uint8_t i = 0; i < 5; ++i) Put8(r, 12u + i, static_cast<std::uint8_t>(0x84 + i));
  Put32(r, 20, 0x91929394);
  Put32(r, 24, 0xA1A2A3A4);
  Put32(r, 28, 0xB1B2B3B4);
  return r;
}

Bytes RecoveredDisplay() {
  return Words({0x11121314, 0x21222324, 0x31323334, 0x84, 0x85, 0x86, 0x87, 0x88, 0x91929394, 0xA1A2A3A4, 0xB1B2B3B4});
}

// Store, byte count, exchange. A text that fills its field loses its last character.
constexpr CopiedBytes kProfileBytes[] = {
    {0, 518, 0},     {520, 518, 520},   {1040, 2, 1040},   {1044, 518, 1042}, {1564, 518, 1562},
    {3124, 2, 2082}, {2084, 518, 2084}, {2604, 518, 2604}, {3128, 1, 3124},   {3132, 1, 3125},
    {3136, 1, 3126}, {3140, 1, 3127},   {3144, 1, 3128},   {3148, 1, 3129},
};
constexpr CopiedBytes kDisplayBytes[] = {
    {0, 4, 0},   {4, 4, 4},   {8, 4, 8},   {12, 1, 12}, {16, 1, 13}, {20, 1, 14},
    {24, 1, 15}, {28, 1, 16}, {32, 4, 20}, {36, 4, 24}, {40, 4, 28},
};

std::string ProfileName(int index) {
  return "profile " + std::to_string(index);
}

/// A profile that says its number.
Bytes NumberedProfile(std::uint32_t index) {
  Bytes r(kProfileSize);
  Put32(r, 1040, index);
  return r;
}
Bytes NumberedProfileRecord(std::uint32_t index) {
  Bytes r(kProfileRecordSize);
  Put32(r, 1040, index);
  return r;
}

class PersonalSettingsTest : public AgentTest {
 protected:
  std::vector<Bytes> ExportedProfiles() {
    EXPECT_EQ(LocalExport(14), 0u);
    return Split(ReadFile(kProfileFile), kProfileRecordSize);
  }
  Bytes ExportedDisplay() {
    EXPECT_EQ(LocalExport(14), 0u);
    return ReadFile(kDisplayFile);
  }
  /// What becomes of these tables in the store.
  void Recover14(const Bytes& profiles, const Bytes& display = ExchangeDisplay()) {
    WriteFile(kProfileFile, profiles);
    WriteFile(kDisplayFile, display);
    EXPECT_EQ(Recover(14, 1).code, 0u);
  }

  ScriptedProfileStore store_;
};

// --- Export ---

TEST_F(PersonalSettingsTest, AnExportWritesTheSixProfilesInOrder) {
  for (std::uint32_t index = 1; index <= 6; ++index) {
    store_.structures[ProfileName(static_cast<int>(index))] = NumberedProfile(index);
  }
  store_.structures["profile 0"] = store_.structures["profile 7"] = StoreProfile();
  EXPECT_THAT(ExportedProfiles(),
              ElementsAre(NumberedProfileRecord(1), NumberedProfileRecord(2), NumberedProfileRecord(3),
                          NumberedProfileRecord(4), NumberedProfileRecord(5), NumberedProfileRecord(6)));
}

TEST_F(PersonalSettingsTest, AProfileAndADisplayTravelWhole) {
  store_.structures = {{"profile 5", StoreProfile()}, {"display", StoreDisplay()}};
  EXPECT_EQ(ExportedProfiles().at(4), ExchangeProfile());
  EXPECT_EQ(ExportedDisplay(), ExchangeDisplay());
}

TEST_F(PersonalSettingsTest, EachByteOfAProfileGoesWhereItBelongsAndNowhereElse) {
  const Bytes full(kProfileSize, 0x11);
  store_.structures["profile 1"] = full;
  const Bytes before = ExportedProfiles().at(0);
  for (std::size_t first = 0; first < kProfileSize; first += 6) {
    for (std::size_t i = 0; i < 6 && first + i < kProfileSize; ++i) {
      store_.structures[ProfileName(static_cast<int>(i + 1))] = WithOneTurned(full, first + i);
    }
    const std::vector<Bytes> after = ExportedProfiles();
    for (std::size_t i = 0; i < 6 && first + i < kProfileSize; ++i) {
      ASSERT_EQ(after.at(i), WithByteTurned(before, kProfileBytes, first + i)) << "store byte " << first + i;
    }
  }
}

TEST_F(PersonalSettingsTest, EachByteOfTheDisplayGoesWhereItBelongsAndNowhereElse) {
  const Bytes full(kDisplaySize, 0x11);
  store_.structures["display"] = full;
  const Bytes before = ExportedDisplay();
  for (std::size_t i = 0; i < kDisplaySize; ++i) {
    store_.structures["display"] = WithOneTurned(full, i);
    EXPECT_EQ(ExportedDisplay(), WithByteTurned(before, kDisplayBytes, i)) << "store byte " << i;
  }
}

TEST_F(PersonalSettingsTest, WhatTheStoreDoesNotFillIsZero) {
  store_.structures = {{"profile 2", StoreProfile()}};
  EXPECT_THAT(ExportedProfiles(),
              ElementsAre(Bytes(kProfileRecordSize), ExchangeProfile(), Bytes(kProfileRecordSize),
                          Bytes(kProfileRecordSize), Bytes(kProfileRecordSize), Bytes(kProfileRecordSize)));
  EXPECT_EQ(ExportedDisplay(), Bytes(kDisplayRecordSize));
}

TEST_F(PersonalSettingsTest, AnExportLooksUpBothEntryPointsBeforeItMakesAFile) {
  RunEvents events(store_);
  EXPECT_EQ(Export(14, 1).code, 0u);
  EXPECT_THAT(
      events.Take(),
      ElementsAre("find fnModelSetting_Backup", "find fnDispSetting_Backup", "create personinfo.tbl",
                  "call fnModelSetting_Backup 1", "call fnModelSetting_Backup 2", "call fnModelSetting_Backup 3",
                  "call fnModelSetting_Backup 4", "call fnModelSetting_Backup 5", "call fnModelSetting_Backup 6",
                  "create dispinfo.tbl", "call fnDispSetting_Backup"));
}

TEST_F(PersonalSettingsTest, EachRecordIsWrittenAtOnceBeforeTheNextIsAskedFor) {
  std::vector<std::pair<std::uint32_t, std::size_t>> writes;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "WriteFile") writes.emplace_back(call.size, store_.calls.size());
  });
  EXPECT_EQ(Export(14, 1).code, 0u);
  handset::Observe({});
  using Writes = std::vector<std::pair<std::uint32_t, std::size_t>>;
  EXPECT_EQ(writes, (Writes{{3168, 1}, {3168, 2}, {3168, 3}, {3168, 4}, {3168, 5}, {3168, 6}, {68, 7}}));
}

TEST_F(PersonalSettingsTest, AStoreWithoutProfilesIsNotExported) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    const ScriptedProfileStore lacking({u"fnModelSetting_Backup"}, address);
    EXPECT_EQ(LocalExport(14), kNotDone);
    EXPECT_THAT(lacking.calls, IsEmpty());
    EXPECT_THAT(AllFiles(), IsEmpty());
  }
}

TEST_F(PersonalSettingsTest, AStoreWithoutADisplayGivesItsProfilesAllTheSame) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
    ScriptedProfileStore lacking({u"fnDispSetting_Backup"}, address);
    lacking.structures["profile 6"] = StoreProfile();
    WriteFile(kProfileFile, {});
    EXPECT_EQ(LocalExport(14), kNotDone);
    EXPECT_EQ(Split(ReadFile(kProfileFile), kProfileRecordSize).at(5), ExchangeProfile());
    EXPECT_FALSE(Exists(kDisplayFile));
  }
}

TEST_F(PersonalSettingsTest, WithoutTheFileForProfilesTheStoreIsNotAsked) {
  MakeDirectory(kProfileFile);
  EXPECT_EQ(LocalExport(14), kNotDone);
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_FALSE(Exists(kDisplayFile));
}

TEST_F(PersonalSettingsTest, WithoutTheFileForTheDisplayTheProfilesAreThere) {
  MakeDirectory(kDisplayFile);
  store_.structures["profile 1"] = StoreProfile();
  EXPECT_EQ(LocalExport(14), kNotDone);
  EXPECT_EQ(Split(ReadFile(kProfileFile), kProfileRecordSize).at(0), ExchangeProfile());
  EXPECT_THAT(store_.CallsOf("fnDispSetting_Backup"), IsEmpty());
}

TEST_F(PersonalSettingsTest, AFullDiskEndsTheExport) {
  handset::SetFreeSpace(2 * kProfileRecordSize + 100);
  EXPECT_EQ(LocalExport(14), kNotDone);
  EXPECT_THAT(store_.calls,
              ElementsAre("fnModelSetting_Backup 1", "fnModelSetting_Backup 2", "fnModelSetting_Backup 3"));
  WriteFile(kProfileFile, {});
  handset::SetFreeSpace(6 * kProfileRecordSize + kDisplayRecordSize - 1);
  EXPECT_EQ(LocalExport(14), kNotDone);
}

// --- Recover ---

TEST_F(PersonalSettingsTest, WhatADesktopLeavesInUnusedBytesIsNotRead) {
  for (const std::uint8_t unused : Bytes{0x00, 0xFF}) {
    store_.structures.clear();
    Recover14(ExchangeProfile(unused), ExchangeDisplay(unused));
    EXPECT_THAT(store_.structures, ElementsAre(testing::Pair("display", RecoveredDisplay()),
                                               testing::Pair("profile 1", RecoveredProfile())));
  }
}

TEST_F(PersonalSettingsTest, EachByteOfAProfileRecordGoesWhereItBelongsAndNowhereElse) {
  const std::vector<CopiedBytes> copied = TheOtherWay(kProfileBytes);
  const Bytes full(kProfileRecordSize, 0x11);
  Recover14(full);
  const Bytes before = store_.structures["profile 1"];
  for (std::size_t first = 0; first < kProfileRecordSize; first += 6) {
    Bytes table;
    for (std::size_t i = 0; i < 6; ++i) Append(table, WithOneTurned(full, first + i));
    Recover14(table);
    for (std::size_t i = 0; i < 6; ++i) {
      ASSERT_EQ(store_.structures[ProfileName(static_cast<int>(i + 1))], WithByteTurned(before, copied, first + i))
          << "exchange byte " << first + i;
    }
  }
}

TEST_F(PersonalSettingsTest, EachByteOfTheDisplayRecordGoesWhereItBelongsAndNowhereElse) {
  const std::vector<CopiedBytes> copied = TheOtherWay(kDisplayBytes);
  const Bytes full(kDisplayRecordSize, 0x11);
  Recover14({}, full);
  const Bytes before = store_.structures["display"];
  for (std::size_t i = 0; i < kDisplayRecordSize; ++i) {
    Recover14({}, WithOneTurned(full, i));
    EXPECT_EQ(store_.structures["display"], WithByteTurned(before, copied, i)) << "exchange byte " << i;
  }
}

TEST_F(PersonalSettingsTest, ARecoverDeletesEachFileOnceItWasApplied) {
  Bytes profiles;
  for (std::uint32_t index = 1; index <= 6; ++index) Append(profiles, NumberedProfileRecord(index));
  WriteFile(kProfileFile, profiles);
  WriteFile(kDisplayFile, ExchangeDisplay());
  RunEvents events(store_);
  EXPECT_EQ(Recover(14, 1).code, 0u);
  EXPECT_THAT(
      events.Take(),
      ElementsAre("find fnModelSetting_Restore", "find fnDispSetting_Restore", "open personinfo.tbl",
                  "call fnModelSetting_Restore 1", "call fnModelSetting_Restore 2", "call fnModelSetting_Restore 3",
                  "call fnModelSetting_Restore 4", "call fnModelSetting_Restore 5", "call fnModelSetting_Restore 6",
                  "delete personinfo.tbl", "open dispinfo.tbl", "call fnDispSetting_Restore", "delete dispinfo.tbl"));
  for (std::uint32_t index = 1; index <= 6; ++index) {
    EXPECT_EQ(store_.structures[ProfileName(static_cast<int>(index))], NumberedProfile(index));
  }
}

TEST_F(PersonalSettingsTest, ATableOfFewerProfilesRestoresThoseThatAreWholeAndThenTheDisplay) {
  const std::size_t kSize = kProfileRecordSize;
  for (std::size_t whole = 0; whole <= 6; ++whole) {
    for (const std::size_t more : {std::size_t{0}, std::size_t{1}, kSize / 2, kSize - 2, kSize - 1}) {
      store_.calls.clear();
      store_.structures.clear();
      Recover14(Bytes(whole * kSize + more, 0x11));
      ASSERT_EQ(store_.calls.size(), whole + 1) << more;
      for (std::size_t i = 1; i <= whole; ++i) {
        EXPECT_EQ(store_.calls[i - 1], "fnModelSetting_Restore " + std::to_string(i));
      }
      EXPECT_EQ(store_.calls.back(), "fnDispSetting_Restore");
      EXPECT_EQ(store_.structures["display"], RecoveredDisplay());
      EXPECT_THAT(AllFiles(), IsEmpty());
    }
  }
}

TEST_F(PersonalSettingsTest, ProfilesBehindTheSixthAreNotRead) {
  Recover14(Bytes(9 * kProfileRecordSize));
  EXPECT_EQ(store_.calls.size(), 7u);
  EXPECT_FALSE(store_.structures.contains("profile 7"));
}

TEST_F(PersonalSettingsTest, ADisplayRecordCutShortIsZeroBehindItsEnd) {
  for (std::size_t size = 0; size <= kDisplayRecordSize; ++size) {
    Bytes expected = RecoveredDisplay();
    const std::vector<CopiedBytes> copied = TheOtherWay(kDisplayBytes);
    for (const CopiedBytes& field : copied) {
      for (std::size_t i = 0; i < field.size; ++i) {
        if (field.from + i >= size) expected.at(field.to + i) = 0;
      }
    }
    Bytes cut = ExchangeDisplay(0xFF);
    cut.resize(size);
    Recover14({}, cut);
    EXPECT_EQ(store_.structures["display"], expected) << size << " bytes";
    EXPECT_FALSE(Exists(kDisplayFile));
  }
}

TEST_F(PersonalSettingsTest, WithoutEitherEntryPointNothingIsRestored) {
  for (const auto* name : {u"fnModelSetting_Restore", u"fnDispSetting_Restore"}) {
    for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{0xFFFFFFFF}}) {
      const ScriptedProfileStore lacking({name}, address);
      WriteFile(kProfileFile, ExchangeProfile());
      WriteFile(kDisplayFile, ExchangeDisplay());
      EXPECT_EQ(Recover(14, 1).code, kNotRecovered);
      EXPECT_THAT(lacking.calls, IsEmpty());
      EXPECT_EQ(AllFiles().size(), 2u);
    }
  }
}

TEST_F(PersonalSettingsTest, WithoutProfilesTheDisplayIsNotRestoredEither) {
  WriteFile(kDisplayFile, ExchangeDisplay());
  EXPECT_EQ(Recover(14, 1).code, kNotRecovered);
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_TRUE(Exists(kDisplayFile));
}

TEST_F(PersonalSettingsTest, WithoutADisplayTheProfilesAreRestoredAllTheSame) {
  WriteFile(kProfileFile, ExchangeProfile());
  EXPECT_EQ(Recover(14, 1).code, kNotRecovered);
  EXPECT_THAT(store_.calls, ElementsAre("fnModelSetting_Restore 1"));
  EXPECT_FALSE(Exists(kProfileFile));
}

TEST_F(PersonalSettingsTest, ProfilesThatCannotBeReadToTheirEndAreNotRestoredInPart) {
  WriteFile(kProfileFile, Bytes(3 * kProfileRecordSize));
  WriteFile(kDisplayFile, ExchangeDisplay());
  bool failed = true;
  for (unsigned time = 1; failed; ++time) {
    handset::Observe([&](const handset::Call& call) {
      if (call.function == "CreateFileW" && call.path == kProfileFile) handset::FailCallOf("ReadFile", time);
      if (call.function == "DeleteFileW") handset::FailCall(0);  // There are no more reads of it.
    });
    const std::uint32_t code = Recover(14, 1).code;
    handset::Observe({});
    failed = handset::FaultHappened();
    EXPECT_EQ(code, failed ? kNotRecovered : 0u) << time;
    EXPECT_EQ(Exists(kProfileFile), failed) << time;
    EXPECT_EQ(store_.calls.empty(), failed) << time;
  }
}

TEST_F(PersonalSettingsTest, ADisplayThatCannotBeReadIsNotRestored) {
  WriteFile(kProfileFile, {});
  WriteFile(kDisplayFile, ExchangeDisplay());
  handset::FailCallOf("ReadFile", 2);
  EXPECT_EQ(Recover(14, 1).code, kNotRecovered);
  EXPECT_TRUE(handset::FaultHappened());
  EXPECT_THAT(store_.calls, IsEmpty());
  EXPECT_TRUE(Exists(kDisplayFile));
}

TEST_F(PersonalSettingsTest, FilesThatCannotBeDeletedAreNoFailure) {
  WriteFile(kProfileFile, ExchangeProfile());
  WriteFile(kDisplayFile, ExchangeDisplay());
  handset::FailCallOf("DeleteFileW", 1);
  EXPECT_EQ(Recover(14, 1).code, 0u);
  EXPECT_TRUE(Exists(kProfileFile));
  EXPECT_FALSE(Exists(kDisplayFile));
}

TEST_F(PersonalSettingsTest, WhatTheStoreAnswersIsNotLookedAt) {
  for (const std::uint32_t answer : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    store_.answer = answer;
    store_.calls.clear();
    EXPECT_EQ(LocalExport(14), 0u);
    EXPECT_EQ(Recover(14, 1).code, 0u);
    EXPECT_EQ(store_.calls.size(), 14u);
  }
}

}  // namespace
}  // namespace qv_test
