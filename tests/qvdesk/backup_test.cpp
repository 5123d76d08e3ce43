// A backup as a desktop may find it: named in other ways, half of it changes, tampered with, or written by another
// program. Of the kinds of data a few do: they stand for records, sections, numbered files and settings.
#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/qvdesk/desk.h"

namespace {

using desk::fs::path;
using nlohmann::json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Words = std::vector<std::string>;

class Backup : public desk::DeskTest {
 protected:
  Backup() {
    CreatePhone();
    Done(Command("backup", At("monday"), {"schedule", "e-mail", "card-reader", "sms", "browser-settings"}));
  }

  /// A command for the folder and the phone.
  Words Command(const char* command, const path& folder, const Words& more = {}) const {
    Words words = {command, folder.string(), "--handset", Phone().string()};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  desk::Outcome VerifyMonday() const { return Run({"verify", At("monday").string()}); }
  desk::Outcome CompareMondayWith(const path& other, const Words& more = {}) const {
    Words words = {"compare", At("monday").string(), other.string()};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  }

  static json ManifestOf(const path& backup) { return json::parse(desk::Contents(backup / "manifest.json")); }
  static json& KindIn(json& document, const std::string& module) {
    return *std::ranges::find_if(document["kinds"], [&](const json& kind) { return kind["module"] == module; });
  }
  /// What "verify" says of Monday when its manifest is another.
  std::string ErrorAfter(const std::function<void(json&)>& edit) const {
    const std::string before = desk::Contents(At("monday") / "manifest.json");
    json manifest = json::parse(before);
    edit(manifest);
    desk::Write(At("monday") / "manifest.json", manifest.dump());
    const desk::Outcome outcome = VerifyMonday();
    desk::Write(At("monday") / "manifest.json", before);
    EXPECT_EQ(outcome.status, 1) << outcome.out;
    return outcome.err;
  }
  /// What "verify" says of Monday when a short message table's number is another.
  std::string ErrorWith(const char* key, const json& number) const {
    return ErrorAfter([&](json& manifest) {
      json& kind = KindIn(manifest, "sms");
      (kind.contains(key) ? kind : kind["files"][0])[key] = number;
    });
  }

  /// Without the ends of its lines, which depend on their words.
  std::string HelpOf(const char* command) const {
    std::istringstream help(Done({command, "--help"}));
    std::string text;
    for (std::string word; help >> word;) text += word + " ";
    return text;
  }
};

TEST_F(Backup, KindThatIsNamedTwiceIsTakenOnce) {
  const Words twice = {"sms", "8", "SMS"};
  EXPECT_THAT(Done(Command("sync", At("tuesday"), twice)), EndsWith("tuesday: manifest.json\n"));
  EXPECT_EQ(ManifestOf(At("tuesday"))["kinds"].size(), 1u);
  Done({"verify", At("tuesday").string()});
  const json restored = json::parse(Done(Command("restore", At("monday"), {"e-mail", "6", "--json"})));
  EXPECT_EQ(restored["kinds"].size(), 1u);
  const json compared = json::parse(CompareMondayWith(At("monday"), {"e-mail", "6", "--json"}).out);
  EXPECT_EQ(compared["kinds"].size(), 1u);
}

TEST_F(Backup, FolderMayBeNamedWithASlashBehindIt) {
  Done(Command("backup", At("tuesday") / "", {"sms"}));
  Done({"verify", At("tuesday").string()});
  EXPECT_FALSE(desk::fs::exists(At("tuesday") / ".unfinished"));
  EXPECT_FALSE(desk::fs::exists(At("tuesday.unfinished")));
}

TEST_F(Backup, SyncOfAKindThatKnowsNoChangesIsABackupOfIt) {
  Done(Command("sync", At("tuesday"), {"e-mail", "browser-settings", "sms"}));
  json manifest = ManifestOf(At("tuesday"));
  for (const char* const whole : {"e-mail", "browser-settings"}) {
    EXPECT_EQ(KindIn(manifest, whole)["asked"], 1) << whole;
    EXPECT_EQ(KindIn(manifest, whole)["ran"], 1) << whole;
  }
  EXPECT_EQ(KindIn(manifest, "sms")["ran"], 3);
  EXPECT_THAT(Done(Command("restore", At("tuesday"), {"browser-settings"})), HasSubstr("replace (2)"));
  EXPECT_EQ(CompareMondayWith(At("tuesday"), {"e-mail", "browser-settings"}).status, 0);
}

TEST_F(Backup, ChangesAreCountedApartFromRecordsAndSectionsHaveRecords) {
  Edit("UPDATE schedule_entries SET text_1 = 'Moved' WHERE id = 3; DELETE FROM cards WHERE id = 2;");
  EXPECT_THAT(Done(Command("sync", At("tuesday"), {"schedule", "card-reader"})),
              AllOf(HasSubstr("schedule          ok     1 record, 1 change in 3 files\n"),
                    HasSubstr("card-reader       ok     0 records, 1 change in 2 files\n")));
  Edit("DELETE FROM sms_messages;");
  EXPECT_THAT(Done(Command("backup", At("after"), {"sms"})), HasSubstr("sms               ok     8 records in 2"));
  json manifest = ManifestOf(At("after"));
  EXPECT_EQ(KindIn(manifest, "sms")["files"][0]["name"], "smsconf.tbl");
  EXPECT_EQ(KindIn(manifest, "sms")["files"][0]["records"], 8);
}

TEST_F(Backup, TextThatIsNoUtf8DoesNotCostTheManifest) {
  const path library =
      At("no\xff"
         "agent");
  desk::fs::copy(QV_STORE_LIBRARY, library);
  const desk::Outcome outcome = Run(Command("backup", At("tuesday"), {"sms", "mms", "--library", library.string()}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "qvdesk: not backed up: sms, mms\n");
  json manifest = ManifestOf(At("tuesday"));
  EXPECT_THAT(KindIn(manifest, "sms")["result"].get<std::string>(),
              EndsWith("no\xef\xbf\xbd"
                       "agent: it does not export fnQV_ExportTabs"));
}

TEST_F(Backup, StateFileWithAnAnchorThatNoRequestHoldsIsNamedWithTheWayOut) {
  for (const char* const command : {"sync", "restore"}) {
    desk::Write(At("phone.desktop.json"), R"({"anchors": {"sms": ")" + std::string(20, '1') + "\"}}");
    const desk::Outcome outcome = Run(Command(command, At(command[0] == 's' ? "tuesday" : "monday")));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("phone.desktop.json: it does not hold"), HasSubstr("Delete it")));
  }
  desk::Write(At("phone.desktop.json"), R"({"anchors": {"sms": ")" + std::string(19, '1') + "\"}}");
  Done(Command("sync", At("tuesday"), {"sms"}));
}

TEST_F(Backup, ManifestThatListsSomethingTwiceOrNothingIsRefused) {
  EXPECT_THAT(ErrorAfter([](json& manifest) { manifest["kinds"].push_back(KindIn(manifest, "sms")); }),
              HasSubstr("it is not a backup's manifest: sms is listed twice"));
  EXPECT_THAT(ErrorAfter([](json& manifest) {
                json& files = KindIn(manifest, "sms")["files"];
                files.push_back(files[1]);
                files[2]["name"] = "SMSINFO.TBL";
              }),
              HasSubstr("SMSINFO.TBL is listed twice"));
  EXPECT_THAT(ErrorAfter([](json& manifest) { manifest["kinds"] = json::array(); }),
              HasSubstr("it has no kinds of data"));
}

TEST_F(Backup, ManifestThatNamesAFileOfNoOrAnotherKindIsRefused) {
  for (const char* const name : {"../../other", "../sms/smsinfo.tbl", "cardreader.tbl", "smsinfo.log", "1.eml"}) {
    EXPECT_THAT(ErrorAfter([&](json& manifest) { KindIn(manifest, "sms")["files"][0]["name"] = name; }),
                HasSubstr(std::string(name) + " is no file of sms"));
  }
  for (const char* const module : {"tasks", "unified-mail"}) {  // Which have id maps of one name.
    EXPECT_THAT(ErrorAfter([&](json& manifest) {
                  json& kind = KindIn(manifest, "sms");
                  kind["module"] = module;
                  kind["files"] = json::array({kind["files"][0]});
                  kind["files"][0]["name"] = "taskmap.tbl";
                }),
                HasSubstr(std::string("not whole: ") + module));
  }
}

TEST_F(Backup, ManifestWithANumberThatIsNoneIsRefused) {
  EXPECT_THAT(ErrorWith("bytes", -1), HasSubstr("\"bytes\" is -1, no number from 0 to "));
  EXPECT_THAT(ErrorWith("records", 1e30), HasSubstr("\"records\" is 1e+30, no number from 0 to 4294967295"));
  EXPECT_THAT(ErrorWith("code", 0x100000000), HasSubstr("\"code\" is 4294967296, no number from 0 to 4294967295"));
  EXPECT_THAT(ErrorWith("asked", 0), HasSubstr("\"asked\" is 0, no number from 1 to 4"));
  EXPECT_THAT(ErrorWith("ran", 5), HasSubstr("\"ran\" is 5, no number from 1 to 4"));
  EXPECT_THAT(ErrorWith("ran", "3"), HasSubstr("\"ran\" is \"3\", no number from 1 to 4"));
}

TEST_F(Backup, KindWithoutFilesIsDamagedAndEmptiesNoStore) {
  json manifest = ManifestOf(At("monday"));
  KindIn(manifest, "card-reader")["files"] = json::array();
  desk::Write(At("monday") / "manifest.json", manifest.dump());
  desk::fs::remove_all(At("monday") / "card-reader");
  EXPECT_THAT(VerifyMonday().out, HasSubstr("card-reader       FAILED damaged in the backup\n    it has no files"));
  EXPECT_THAT(Run(Command("restore", At("monday"), {"card-reader"})).out,
              HasSubstr("FAILED not restored: damaged in the backup\n    it has no files"));
  EXPECT_THAT(Done(Command("backup", At("after"), {"card-reader"})), HasSubstr("10 records"));
}

TEST_F(Backup, SymbolicLinksAreNotFollowed) {
  desk::fs::rename(At("monday") / "sms", At("elsewhere"));
  desk::fs::create_directory_symlink(At("elsewhere"), At("monday") / "sms");
  desk::fs::rename(At("monday") / "card-reader" / "cardreader.tbl", At("cards"));
  desk::fs::create_symlink(At("cards"), At("monday") / "card-reader" / "cardreader.tbl");
  EXPECT_THAT(VerifyMonday().out,
              AllOf(HasSubstr("    sms is a symbolic link\n"), HasSubstr("    cardreader.tbl is a symbolic link\n")));
  EXPECT_EQ(Run(Command("restore", At("monday"), {"sms", "card-reader"})).err,
            "qvdesk: not restored: sms, card-reader\n");
  EXPECT_EQ(CompareMondayWith(At("monday")).err, "qvdesk: not the same: card-reader, sms\n");
}

TEST_F(Backup, CompareTrustsNoManifest) {
  desk::fs::copy(At("monday"), At("tuesday"), desk::fs::copy_options::recursive);
  std::string bytes = desk::Contents(At("tuesday") / "sms" / "smsinfo.tbl");
  bytes.back() ^= 1;
  desk::Write(At("tuesday") / "sms" / "smsinfo.tbl", bytes);
  const desk::Outcome second = CompareMondayWith(At("tuesday"));
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.out,
              HasSubstr("sms               FAILED damaged in the second backup\n    smsinfo.tbl has other contents\n"));
  EXPECT_EQ(second.err, "qvdesk: not the same: sms\n");
  EXPECT_THAT(Run({"compare", At("tuesday").string(), At("monday").string()}).out,
              HasSubstr("sms               FAILED damaged in the first backup\n"));
}

TEST_F(Backup, ChangesAreNotComparedWithTheWhole) {
  Done(Command("sync", At("tuesday"), {"sms", "browser-settings"}));
  const desk::Outcome second = CompareMondayWith(At("tuesday"), {"sms", "browser-settings"});
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.out, AllOf(HasSubstr("sms               FAILED the second backup has only changes\n"),
                                HasSubstr("browser-settings  ok ")));
  EXPECT_THAT(Run({"compare", At("tuesday").string(), At("monday").string(), "sms"}).out,
              HasSubstr("FAILED the first backup has only changes\n"));
}

TEST_F(Backup, KindsOfOneBackupOnlyAreNamed) {
  Done(Command("backup", At("tuesday"), {"card-reader", "contacts"}));
  const desk::Outcome all = CompareMondayWith(At("tuesday"));
  EXPECT_THAT(all.out, AllOf(HasSubstr("sms               FAILED only in the first backup\n"),
                             HasSubstr("contacts          FAILED only in the second backup\n")));
  EXPECT_THAT(all.err, StartsWith("qvdesk: not the same: schedule, "));
  EXPECT_THAT(all.err, EndsWith(", contacts\n"));
  EXPECT_EQ(CompareMondayWith(At("tuesday"), {"card-reader"}).status, 0);
}

TEST_F(Backup, CompareSaysWhatNoBackupHasOnlyWhereThereIsSuch) {
  EXPECT_THAT(CompareMondayWith(At("monday")).out, Not(HasSubstr("Not compared")));
  Done(Command("backup", At("tuesday"), {"contacts"}));
  EXPECT_THAT(Done({"compare", At("tuesday").string(), At("tuesday").string()}),
              HasSubstr("Not compared, because no backup has it: when a record last changed.\n  contacts, contact: "));
}

TEST_F(Backup, ReportsForProgramsHaveOneShape) {
  desk::Write(Phone() / "Windows" / "CardScanStore.dll", "no library");
  const std::string broken = At("broken").string();
  const std::vector<Words> commands = {Command("backup", At("broken"), {"card-reader", "sms"}),
                                       {"verify", broken},
                                       {"compare", broken, At("monday").string(), "card-reader", "sms"},
                                       Command("restore", At("broken"))};
  for (Words command : commands) {
    command.push_back("--json");
    const json report = json::parse(Run(command).out);
    EXPECT_EQ(report["succeeded"], false) << command[0];
    ASSERT_EQ(report["kinds"].size(), 2u) << command[0];
    const json failed = report["kinds"][0], succeeded = report["kinds"][1];
    EXPECT_EQ(failed.value("module", json()), "card-reader") << command[0];
    EXPECT_EQ(failed.value("succeeded", json()), false) << command[0];
    EXPECT_THAT(failed.value("result", ""), HasSubstr("library")) << command[0];
    EXPECT_EQ(succeeded.value("module", json()), "sms") << command[0];
    EXPECT_EQ(succeeded.value("succeeded", json()), true) << command[0];
    EXPECT_THAT(succeeded.value("result", ""), Not(IsEmpty())) << command[0];
  }
}

TEST_F(Backup, HelpSaysWhatACommandDoesToThePhone) {
  for (const char* const command : {"backup", "sync", "restore"}) {
    EXPECT_THAT(HelpOf(command), HasSubstr("uses and empties \\sync\\whole on the phone")) << command;
  }
  EXPECT_THAT(HelpOf("sync"), HasSubstr("since the last backup, sync, export, recover or restore of it"));
  EXPECT_THAT(HelpOf("recover"), HasSubstr("(one of contacts, tasks, agenda, card-reader, quick-dial, graphic-memo "
                                           "does so in every mode but incremental and 5)"));
}

}  // namespace
