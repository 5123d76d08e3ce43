// ProfileSettings.dll, BrowserSettings.dll and AlarmStore.dll: structures that are always there, by value and by
// pointer, and the tables that they are kept in.
#include <algorithm>
#include <array>
#include <cstring>

#include "host/stores/settings_kinds.h"
#include "host/stores/store_library.h"
#include "tests/stores/library_file.h"
#include "tests/stores/shell.h"
#include "tests/stores/store_test.h"

namespace {

using Status = std::uint32_t;

// As C has them; what is in them does not matter here.
struct Profile {
  std::array<std::uint32_t, 788> words;
};
struct Display {
  std::array<std::uint32_t, 11> words;
};

struct ProfileSettings : LibraryFile {
  ProfileSettings() : LibraryFile(QV_PROFILE_SETTINGS) {}

  Status (*const back_up)(int, Profile*) = Find<Status(int, Profile*)>("fnModelSetting_Backup");
  Status (*const restore)(int, Profile) = Find<Status(int, Profile)>("fnModelSetting_Restore");
  Status (*const back_up_display)(Display*) = Find<Status(Display*)>("fnDispSetting_Backup");
  Status (*const restore_display)(Display) = Find<Status(Display)>("fnDispSetting_Restore");
};

struct BrowserSettings : LibraryFile {
  BrowserSettings() : LibraryFile(QV_BROWSER_SETTINGS) {}

  Status (*const back_up)(void*) = Find<Status(void*)>("fnIESetting_Backup");
  Status (*const restore)(const void*) = Find<Status(const void*)>("fnIESetting_Restore");
};

struct AlarmStore : LibraryFile {
  AlarmStore() : LibraryFile(QV_ALARM_STORE) {}

  Status (*const get)(void*) = Find<Status(void*)>("Sync_GetClockInfo");
  Status (*const update)(const void*) = Find<Status(const void*)>("Sync_UpdateClockInfo");
};

constexpr std::size_t kBrowserSize = 2076;
constexpr std::size_t kClockSize = 2336;
constexpr std::size_t kNameAt = 2064;
constexpr Status kClockDone = 1;

class SettingsStoreTest : public StoreTest {
 protected:
  Record Noise(std::size_t size) {
    Record record(size);
    for (std::uint8_t& byte : record) byte = static_cast<std::uint8_t>(random_());
    return record;
  }
  template <typename Structure>
  Structure Any() {
    Structure structure;
    std::memcpy(&structure, Noise(sizeof(structure)).data(), sizeof(structure));
    return structure;
  }
  /// Whose last two bytes say nothing.
  Record AnyClock() {
    Record clock = Noise(kClockSize);
    clock[kClockSize - 2] = clock[kClockSize - 1] = 0;
    return clock;
  }

  static Profile BackUp(const ProfileSettings& settings, int index) {
    Profile profile;
    profile.words.fill(0xEEEEEEEE);
    EXPECT_EQ(settings.back_up(index, &profile), stores::kDone);
    return profile;
  }
  static Display BackUpDisplay(const ProfileSettings& settings) {
    Display display;
    display.words.fill(0xEEEEEEEE);
    EXPECT_EQ(settings.back_up_display(&display), stores::kDone);
    return display;
  }
  static Record BackUpBrowser(const BrowserSettings& settings) {
    Record browser(kBrowserSize, 0xEE);
    EXPECT_EQ(settings.back_up(browser.data()), stores::kDone);
    return browser;
  }
  static Record GetClock(const AlarmStore& store) {
    Record clock(kClockSize, 0xEE);
    EXPECT_EQ(store.get(clock.data()), kClockDone);
    return clock;
  }
};

TEST_F(SettingsStoreTest, WhatWasNeverSetIsZero) {
  const ProfileSettings profiles;
  for (int index = 1; index <= 6; ++index) EXPECT_EQ(BackUp(profiles, index).words, Profile{}.words);
  EXPECT_EQ(BackUpDisplay(profiles).words, Display{}.words);
  EXPECT_EQ(BackUpBrowser(BrowserSettings()), Record(kBrowserSize));
  EXPECT_EQ(GetClock(AlarmStore()), Record(kClockSize));
}

TEST_F(SettingsStoreTest, EachProfileHasAPlaceOfItsOwn) {
  const ProfileSettings settings;
  std::array<Profile, 7> profiles;
  for (int round = 0; round < 2; ++round) {
    for (int index = 6; index >= 1; --index) {
      Profile& profile = profiles.at(static_cast<std::size_t>(index));
      profile = Any<Profile>();
      ASSERT_EQ(settings.restore(index, profile), stores::kDone);
    }
    const Display display = Any<Display>();
    ASSERT_EQ(settings.restore_display(display), stores::kDone);
    for (int index = 1; index <= 6; ++index) {
      EXPECT_EQ(BackUp(settings, index).words, profiles.at(static_cast<std::size_t>(index)).words) << index;
    }
    EXPECT_EQ(BackUpDisplay(settings).words, display.words);
  }
}

TEST_F(SettingsStoreTest, AProfileThatThereIsNotIsRefused) {
  const ProfileSettings settings;
  for (const int index : {0, 7, -1}) {
    Profile profile = Any<Profile>();
    EXPECT_EQ(settings.restore(index, profile), stores::kUnknownRecord);
    EXPECT_EQ(settings.back_up(index, &profile), stores::kUnknownRecord);
  }
  EXPECT_EQ(Shell("SELECT count(*) FROM profiles"), "0\n");
}

TEST_F(SettingsStoreTest, TheBrowsersSettingsAreReplaced) {
  const BrowserSettings settings;
  for (int round = 0; round < 2; ++round) {
    const Record browser = Noise(kBrowserSize);
    ASSERT_EQ(settings.restore(browser.data()), stores::kDone);
    EXPECT_EQ(BackUpBrowser(settings), browser);
  }
}

TEST_F(SettingsStoreTest, TheClockIsReplacedWhole) {
  const AlarmStore store;
  for (int round = 0; round < 2; ++round) {
    const Record clock = AnyClock();
    ASSERT_EQ(store.update(clock.data()), kClockDone);
    EXPECT_EQ(GetClock(store), clock);
  }
  EXPECT_EQ(Shell("SELECT min(id), max(id), count(*) FROM alarms"), "1|6|6\n");
  EXPECT_EQ(Shell("SELECT min(id), max(id), count(*) FROM clock_names"), "0|8|9\n");
}

TEST_F(SettingsStoreTest, TheClocksUnusedBytesAreZero) {
  const AlarmStore store;
  ASSERT_EQ(store.update(Record(kClockSize, 0xFF).data()), kClockDone);
  EXPECT_EQ(GetClock(store)[kClockSize - 2], 0);
  EXPECT_EQ(GetClock(store)[kClockSize - 1], 0);
}

TEST_F(SettingsStoreTest, SettingsOutliveTheirLibrary) {
  const Profile profile = Any<Profile>();
  const Record browser = Noise(kBrowserSize);
  const Record clock = AnyClock();
  ProfileSettings().restore(3, profile);
  BrowserSettings().restore(browser.data());
  AlarmStore().update(clock.data());
  EXPECT_EQ(BackUp(ProfileSettings(), 3).words, profile.words);
  EXPECT_EQ(BackUpBrowser(BrowserSettings()), browser);
  EXPECT_EQ(GetClock(AlarmStore()), clock);
}

TEST_F(SettingsStoreTest, StructuresMayLieAtOddAddresses) {
  const Record clock = AnyClock();
  Record place(kClockSize + 1);
  std::ranges::copy(clock, place.begin() + 1);
  const AlarmStore store;
  ASSERT_EQ(store.update(place.data() + 1), kClockDone);
  std::ranges::fill(place, std::uint8_t{0});
  ASSERT_EQ(store.get(place.data() + 1), kClockDone);
  EXPECT_EQ(Record(place.begin() + 1, place.end()), clock);
}

TEST_F(SettingsStoreTest, AnEditInTheShellIsReadByTheNextCall) {
  const ProfileSettings profiles;
  const BrowserSettings browser;
  const AlarmStore alarms;
  BackUp(profiles, 1);
  BackUpBrowser(browser);
  GetClock(alarms);
  Shell("INSERT INTO profiles (id, text_1, value_1, setting_6) VALUES (2, 'Hi', 513, 4)");
  Shell("INSERT INTO display_settings (id, value_10) VALUES (1, 77)");
  Shell("INSERT INTO browser_settings (id, text_2, value_7) VALUES (1, 'Hi', 88)");
  Shell("INSERT INTO alarms (id, repeat_flags, text_3) VALUES (6, 256, 'Hi')");
  Shell("INSERT INTO clock_names (id, name) VALUES (0, 'Hi'), (8, 'Hi')");

  Profile profile = {};
  std::memcpy(&profile, u"Hi", 4);
  profile.words[1040 / 4] = 513;
  profile.words[3148 / 4] = 4;
  EXPECT_EQ(BackUp(profiles, 2).words, profile.words);
  EXPECT_EQ(BackUpDisplay(profiles).words[10], 77u);
  Record expected(kBrowserSize);
  std::memcpy(&expected[1024], u"Hi", 4);
  expected[2072] = 88;
  EXPECT_EQ(BackUpBrowser(browser), expected);
  expected.assign(kClockSize, 0);
  expected[5 * 344 + 9] = 1;
  for (const std::size_t text : {5u * 344 + 132, 2064u, 2064u + 8 * 30}) std::memcpy(&expected[text], u"Hi", 4);
  EXPECT_EQ(GetClock(alarms), expected);
}

TEST_F(SettingsStoreTest, TextsAndFlagsShowInTheShell) {
  Record clock(kClockSize);
  clock[2 * 344 + 8] = 0x15;
  std::memcpy(&clock[2 * 344 + 20], u"Frühschicht", 22);
  std::memcpy(&clock[kNameAt + 4 * 30], u"北京", 4);
  ASSERT_EQ(AlarmStore().update(clock.data()), kClockDone);
  EXPECT_EQ(Shell("SELECT repeat_flags, text_1 FROM alarms WHERE id = 3"), "21|Frühschicht\n");
  EXPECT_EQ(Shell("SELECT name FROM clock_names WHERE id = 4"), "北京\n");
}

TEST_F(SettingsStoreTest, AClockThatCannotBeTakenWholeIsNotTakenInPart) {
  const AlarmStore store;
  const Record before = AnyClock();
  ASSERT_EQ(store.update(before.data()), kClockDone);
  Shell("CREATE TRIGGER refuse BEFORE UPDATE ON clock_names WHEN NEW.id = 8 BEGIN SELECT raise(ABORT, 'no'); END");
  EXPECT_EQ(static_cast<std::int32_t>(store.update(AnyClock().data())), -4);
  EXPECT_EQ(GetClock(store), before);
}

TEST_F(SettingsStoreTest, NullPointersAreRefused) {
  const ProfileSettings profiles;
  EXPECT_EQ(profiles.back_up(1, nullptr), stores::kNullPointer);
  EXPECT_EQ(profiles.back_up_display(nullptr), stores::kNullPointer);
  const BrowserSettings browser;
  EXPECT_EQ(browser.back_up(nullptr), stores::kNullPointer);
  EXPECT_EQ(browser.restore(nullptr), stores::kNullPointer);
  const AlarmStore alarms;
  EXPECT_EQ(static_cast<std::int32_t>(alarms.get(nullptr)), -1);
  EXPECT_EQ(static_cast<std::int32_t>(alarms.update(nullptr)), -1);
}

TEST_F(SettingsStoreTest, ADatabaseThatCannotBeOpenedFailsTheCall) {
  std::filesystem::create_directories(handset::HostPath(stores::kDatabasePath));
  Profile profile = {};
  EXPECT_EQ(ProfileSettings().back_up(1, &profile), stores::kDatabaseFailed);
  EXPECT_EQ(ProfileSettings().restore_display({}), stores::kDatabaseFailed);
  Record record(kClockSize);
  EXPECT_EQ(BrowserSettings().restore(record.data()), stores::kDatabaseFailed);
  EXPECT_EQ(static_cast<std::int32_t>(AlarmStore().get(record.data())), -4);
}

}  // namespace
