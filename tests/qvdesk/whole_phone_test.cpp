// The whole phone in one command: backed up, checked, synchronised, restored and compared, also when something fails or
// the program is killed. Of the kinds of data those count that "create" fills.
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/qvdesk/desk.h"
#include "tests/qvdesk/killed_run.h"

namespace {

using desk::fs::path;
using nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

using Words = std::vector<std::string>;

class WholePhone : public desk::DeskTest {
 protected:
  WholePhone() {
    CreatePhone("12", "8");
    const json report = json::parse(Run(Command("backup", At("monday"), Phone(), {"--json"})).out);
    for (const json& kind : report["kinds"]) {
      if (kind["succeeded"]) kinds_.push_back(kind["module"]);
    }
    EXPECT_THAT(kinds_, IsSupersetOf({"contacts", "schedule", "e-mail", "card-reader", "sms", "call-history",
                                      "quick-dial", "call-filter", "mms", "graphic-memo", "personal-settings",
                                      "browser-settings", "clock-settings"}));
  }

  /// A command for the folder and the phone.
  static Words Command(const char* command, const path& folder, const path& phone, const Words& more = {}) {
    Words words = {command, folder.string(), "--handset", phone.string()};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  /// Of those kinds of data.
  Words OfKinds(Words command) const {
    command.insert(command.end(), kinds_.begin(), kinds_.end());
    return command;
  }

  /// An empty phone to which the backup is restored, and a backup of that.
  path RestoredTo(const std::string& name, const path& backup) const {
    Done({"create", At(name).string(), "--empty"});
    Done(OfKinds(Command("restore", backup, At(name))));
    path again = At(name) += ".backup";
    Done(OfKinds(Command("backup", again, At(name))));
    return again;
  }

  desk::Outcome Compare(const path& first, const path& second, const Words& more = {}) const {
    Words words = {"compare", first.string(), second.string()};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  }

  static json ManifestOf(const path& backup) { return json::parse(desk::Contents(backup / "manifest.json")); }
  static json KindOf(const json& document, const std::string& module) {
    for (const json& kind : document["kinds"]) {
      if (kind["module"] == module) return kind;
    }
    return {};
  }

  void EditOf(const path& phone, const std::string& sql) const {
    const std::string database = (phone / "Windows" / "handset.db").string();
    ASSERT_EQ(std::system((QV_SQLITE_SHELL " " + database + " \"" + sql + "\"").c_str()), 0);
  }

  Words kinds_;
};

TEST_F(WholePhone, BackupHasAFolderAKindAndAManifest) {
  const json manifest = ManifestOf(At("monday"));
  EXPECT_EQ(manifest["kinds"].size(), 16u);
  const json schedule = KindOf(manifest, "schedule");
  EXPECT_EQ(schedule["ran"], 1);
  EXPECT_EQ(schedule["code"], 0);
  EXPECT_EQ(schedule["result"], "success");
  EXPECT_THAT(schedule["anchor"].get<std::string>(), StartsWith("2"));  // A year.
  const json table = schedule["files"][0];
  EXPECT_EQ(table["name"], "schedule.tbl");
  EXPECT_EQ(table["records"], 12);
  const path file = At("monday") / "schedule" / "schedule.tbl";
  EXPECT_EQ(table["bytes"], desk::fs::file_size(file));
  const std::string check =
      "echo '" + table["sha256"].get<std::string>() + "  " + file.string() + "' | sha256sum --check --status";
  EXPECT_EQ(std::system(check.c_str()), 0);
  for (const std::string& kind : kinds_) EXPECT_FALSE(desk::fs::is_empty(At("monday") / kind)) << kind;
}

TEST_F(WholePhone, BackupIsNotPutOverAnother) {
  const desk::Outcome outcome = Run(Command("backup", At("monday"), Phone()));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("it is there already"));
  Done({"verify", At("monday").string(), "schedule"});
}

TEST_F(WholePhone, LinesArePlainWhereNobodyWatches) {
  const desk::Outcome outcome = Run(Command("backup", At("plain"), Phone(), {"schedule", "e-mail"}));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, AllOf(StartsWith("  schedule          ok     14 records in 2 files\n  e-mail "),
                                 HasSubstr("as far as can be told")));
  EXPECT_EQ(outcome.err, "");
}

TEST_F(WholePhone, FailedKindIsNamedAndTheOthersAreBackedUp) {
  desk::Write(Phone() / "Windows" / "CardScanStore.dll", "no library");
  const desk::Outcome outcome = Run(Command("backup", At("again"), Phone(), {"card-reader", "sms"}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("  card-reader       FAILED 0x"), HasSubstr("  sms               ok ")));
  EXPECT_THAT(outcome.out, Not(HasSubstr("\\u000a")));
  EXPECT_EQ(outcome.err, "qvdesk: not backed up: card-reader\n");
  EXPECT_EQ(KindOf(ManifestOf(At("again")), "card-reader")["succeeded"], false);

  const desk::Outcome verified = Run({"verify", At("again").string()});
  EXPECT_THAT(verified.err, HasSubstr("not whole: card-reader"));
  const desk::Outcome restored = Run(Command("restore", At("again"), Phone()));
  EXPECT_THAT(restored.out,
              AllOf(HasSubstr("not restored: its export for the backup failed: "), HasSubstr("sms               ok ")));
  EXPECT_EQ(restored.err, "qvdesk: not restored: card-reader\n");
}

TEST_F(WholePhone, VerifyNamesEachDamage) {
  const path sms = At("monday") / "sms", mail = At("monday") / "e-mail";
  desk::fs::resize_file(sms / "smsinfo.tbl", 100);
  std::string bytes = desk::Contents(mail / "1.eml");
  bytes[0] ^= 1;
  desk::Write(mail / "1.eml", bytes);
  desk::fs::remove(mail / "mailhead.tbl");
  desk::Write(mail / "99.eml", "stray");
  const desk::Outcome outcome = Run({"verify", At("monday").string(), "sms", "e-mail", "schedule"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "qvdesk: not whole: sms, e-mail\n");
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("    smsinfo.tbl has 100 bytes instead of "),
                                 HasSubstr("    1.eml has other "), HasSubstr("    mailhead.tbl is missing"),
                                 HasSubstr("    99.eml is not of the backup"), HasSubstr("  schedule          ok ")));
  const json report = json::parse(Run({"verify", At("monday").string(), "e-mail", "--json"}).out);
  EXPECT_EQ(report["succeeded"], false);
  EXPECT_EQ(report["kinds"][0]["problems"].size(), 3u);
}

TEST_F(WholePhone, TornKindIsNotRestoredAndTheOthersAre) {
  desk::fs::resize_file(At("monday") / "sms" / "smsinfo.tbl", 100);
  Edit("DELETE FROM sms_messages; DELETE FROM cards;");
  const desk::Outcome outcome = Run(Command("restore", At("monday"), Phone(), {"sms", "card-reader"}));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("sms               FAILED not restored: damaged in the backup\n    smsinfo.tbl"));
  EXPECT_EQ(outcome.err, "qvdesk: not restored: sms\n");
  Done(Command("backup", At("after"), Phone(), {"sms", "card-reader"}));
  EXPECT_EQ(KindOf(ManifestOf(At("after")), "sms")["files"][1]["records"], 0);
  EXPECT_EQ(Compare(At("monday"), At("after"), {"card-reader", "--restored"}).status, 0);
}

TEST_F(WholePhone, SyncBringsWhatChangedSinceTheAnchorsThatWereKept) {
  Edit("UPDATE schedule_entries SET text_1 = 'Moved' WHERE id = 3; DELETE FROM cards WHERE id = 2;");
  Done(OfKinds(Command("sync", At("tuesday"), Phone())));
  const json manifest = ManifestOf(At("tuesday"));
  for (const char* const module : {"schedule", "card-reader", "sms"}) {
    EXPECT_EQ(KindOf(manifest, module)["ran"], 3) << module;
  }
  const auto records = [&](const std::string& module, const std::string& file) {
    const json parsed = json::parse(Done({"show", (At("tuesday") / module / file).string(), "--format", "json"}));
    return parsed["records"];
  };
  EXPECT_EQ(records("schedule", "schedule.tbl").size(), 1u);
  EXPECT_EQ(records("schedule", "schedule.tbl")[0]["text_1"], "Moved");
  EXPECT_EQ(records("card-reader", "cardcmd.tbl")[0]["id"], 2);
  EXPECT_EQ(records("sms", "smscmd.tbl").size(), 0u);
}

TEST_F(WholePhone, SyncWithoutAnAnchorIsAFullExportAndSaysSo) {
  desk::fs::remove(At("phone.desktop.json"));
  EXPECT_THAT(Done(Command("sync", At("tuesday"), Phone(), {"schedule"})),
              HasSubstr("14 records in 2 files, full (1): the handset does not know our anchor"));
}

TEST_F(WholePhone, ChangesAreRestoredAsChanges) {
  Edit("UPDATE schedule_entries SET text_1 = 'Moved' WHERE id = 3;");
  Done(Command("sync", At("tuesday"), Phone(), {"schedule"}));
  Edit("UPDATE schedule_entries SET text_1 = 'Moved back' WHERE id = 3;");
  EXPECT_THAT(Done(Command("restore", At("tuesday"), Phone())), HasSubstr("incremental (3)"));
  Done(Command("backup", At("after"), Phone(), {"schedule"}));
  const desk::Outcome outcome = Compare(At("monday"), At("after"), {"schedule"});
  EXPECT_THAT(outcome.out, HasSubstr("schedule.tbl: 11 equal, 1 changed, 0 only in the first, 0 only in the second"));
  EXPECT_THAT(outcome.out, HasSubstr(" | \"Moved\"\n"));
}

TEST_F(WholePhone, CompareFindsRecordsByTheirIds) {
  Edit(
      "UPDATE cards SET text_1 = 'Renamed' WHERE id = 4; DELETE FROM cards WHERE id = 2;"
      "INSERT INTO cards (text_1) VALUES ('Met today'); UPDATE sms_folders SET name = 'Old' WHERE id = 4;");
  Done(OfKinds(Command("backup", At("tuesday"), Phone())));
  const desk::Outcome outcome = Compare(At("monday"), At("tuesday"), kinds_);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "qvdesk: not the same: card-reader, sms\n");
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("cardreader.tbl: 8 equal, 1 changed, 1 only in the first, 1 only in the second"),
                    HasSubstr("card_id 4: text_1: "), HasSubstr(" | \"Renamed\""),
                    HasSubstr("only in the first: business card, card_id 2"),
                    HasSubstr("configuration folder, folder_id 4: name: \"家人\" | \"Old\"")));
  EXPECT_EQ(Compare(At("monday"), At("monday"), kinds_).status, 0);
}

TEST_F(WholePhone, TwoPhonesRestoredFromOneBackupAreEqual) {
  const path first = RestoredTo("first", At("monday"));
  const path second = RestoredTo("second", At("monday"));
  for (const path& restored : {first, second}) {
    Words options = kinds_;
    options.push_back("--restored");
    const desk::Outcome outcome = Compare(At("monday"), restored, options);
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  }
  Words but_for_times = kinds_;
  std::erase(but_for_times, "card-reader");  // Its cards tell when they were restored.
  const desk::Outcome outcome = Compare(first, second, but_for_times);
  EXPECT_EQ(outcome.status, 0) << outcome.out;
}

TEST_F(WholePhone, PhoneThatHeldOtherDataIsEqualToo) {
  Done({"create", At("first").string(), "--seed", "7", "--e-mails", "0", "--schedule-entries", "30"});
  EditOf(At("first"), "DELETE FROM mail_accounts;");
  Done(OfKinds(Command("restore", At("monday"), At("first"))));
  Done(OfKinds(Command("backup", At("after"), At("first"))));
  Words options = kinds_;
  options.push_back("--restored");
  const desk::Outcome outcome = Compare(At("monday"), At("after"), options);
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_EQ(Compare(At("monday"), At("after"), {"schedule"}).status, 1) << "the ids are new ones";
}

TEST_F(WholePhone, CompareOfARestoredPhoneSeesWhatIsMissingThere) {
  Done({"create", At("first").string(), "--empty"});
  Done(OfKinds(Command("restore", At("monday"), At("first"))));
  EditOf(At("first"),
         "UPDATE contacts SET name = 'Other' WHERE id = 3; DELETE FROM mail_messages WHERE id = 5;"
         "UPDATE alarms SET text_1 = 'Late' WHERE id = 2; INSERT INTO memos (text_1) VALUES ('More');");
  Done(OfKinds(Command("backup", At("after"), At("first"))));
  Words options = kinds_;
  options.push_back("--restored");
  const desk::Outcome outcome = Compare(At("monday"), At("after"), options);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "qvdesk: not the same: contacts, e-mail, graphic-memo, clock-settings\n");
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("linkman.tbl: 7 equal, 0 changed, 1 only in the first, 1 only in the second"),
                    HasSubstr("messages (.eml): "),
                    HasSubstr("gmemoinfo.tbl: 6 equal, 0 changed, 0 only in the first, "
                              "1 only in the second")));
}

TEST_F(WholePhone, CompareListsWhatItLeavesOut) {
  const std::string listed =
      Done({"compare", At("monday").string(), At("monday").string(), "contacts", "e-mail", "quick-dial", "--restored"});
  EXPECT_THAT(listed,
              AllOf(HasSubstr("contacts, contact: modified_year, modified_month"),
                    HasSubstr("contacts, contact: first_date_year, "), HasSubstr("value_3516"),
                    HasSubstr("e-mail, mail header: path"), HasSubstr("quick-dial, quick dial entry: entry_id_")));
  const std::string by_id = Done({"compare", At("monday").string(), At("monday").string(), "contacts"});
  EXPECT_THAT(by_id, AllOf(HasSubstr("modified_year"), Not(HasSubstr("first_date_year"))));
  const json kinds = json::parse(
      Done({"compare", At("monday").string(), At("monday").string(), "card-reader", "--restored", "--json"}))["kinds"];
  EXPECT_EQ(kinds[0]["not_restored"], json::parse(R"([{"record": "business card", "fields": ["time"]}])"));
  EXPECT_EQ(kinds[0]["not_exported"], json::array());
  EXPECT_EQ(kinds[0]["same"], true);
}

TEST_F(WholePhone, WhatIsNoBackupIsRefused) {
  desk::fs::create_directory(At("nothing"));
  EXPECT_THAT(Run({"verify", At("nothing").string()}).err, HasSubstr("it is no backup, for it has no manifest.json"));
  desk::Write(At("nothing") / "manifest.json", R"({"backup": 1, "kinds": [{"module": "sms"}]})");
  EXPECT_THAT(Run({"verify", At("nothing").string()}).err, HasSubstr("it is not a backup's manifest"));
  EXPECT_EQ(Run({"verify", At("monday").string(), "no-kind"}).status, 2);
}

TEST_F(WholePhone, EmptyPhoneHasNoRecords) {
  EXPECT_THAT(Done({"create", At("first").string(), "--empty"}), HasSubstr("a handset with nothing on it"));
  const json report = json::parse(Done(OfKinds(Command("backup", At("empty"), At("first"), {"--json"}))));
  for (const json& kind : report["kinds"]) {
    for (const json& file : kind["files"]) {
      const bool is_always_there =
          kind["module"].get<std::string>().ends_with("-settings") || file["name"] == "redblistconfig.tbl";
      EXPECT_TRUE(is_always_there || file.value("records", 0) == 0) << file;
    }
  }
}

/// A backup's files; the manifest without the anchors, which are times.
std::map<std::string, std::string> FilesOf(const path& backup) {
  std::map<std::string, std::string> files;
  for (const auto& entry : desk::fs::recursive_directory_iterator(backup)) {
    if (entry.is_regular_file()) files[entry.path().lexically_relative(backup).string()] = desk::Contents(entry.path());
  }
  json manifest = json::parse(files.at("manifest.json"));
  for (json& kind : manifest["kinds"]) kind.erase("anchor");
  files["manifest.json"] = manifest.dump();
  return files;
}

/// A phone on which little is, because it is backed up a hundred times.
class KilledBackup : public desk::DeskTest {
 protected:
  KilledBackup() {
    Done({"create", Phone().string(), "--contacts", "3", "--e-mails", "2"});
    setenv("ASAN_OPTIONS", "detect_leaks=0",
           1);  // Which other tests look for: the search traces too, and only one can.
  }
  ~KilledBackup() override { unsetenv("ASAN_OPTIONS"); }

  /// Records of several tables, snapshot logs, an anchor, and files of their own.
  Words Backup() const { return {"backup", Folder().string(), "--handset", Phone().string(), "contacts", "e-mail"}; }
  desk::KilledRun RunAndKill(unsigned n) const {
    Words command = Backup();
    command.insert(command.begin(), QV_DESK);
    return desk::RunAndKill(command, n);
  }
  path Folder() const { return At("backup"); }
};

TEST_F(KilledBackup, RunAgainIsAsIfItNeverWas) {
  constexpr unsigned kPoints = 50;
  const unsigned changes = RunAndKill(0).changes;
  ASSERT_GT(changes, kPoints);
  const auto expected = FilesOf(Folder());
  unsigned run_again = 0;
  for (unsigned i = 0; i < kPoints; ++i) {
    const unsigned n = 1 + i * (changes - 1) / (kPoints - 1);
    SCOPED_TRACE(n);
    desk::fs::remove_all(Folder());
    ASSERT_TRUE(RunAndKill(n).killed);
    // It is there whole or not at all.
    if (!desk::fs::exists(Folder())) {
      ++run_again;
      Done(Backup());
    }
    ASSERT_TRUE(FilesOf(Folder()) == expected);
    ASSERT_FALSE(desk::fs::exists(Folder() += ".unfinished"));
    ASSERT_TRUE(json::accept(desk::Contents(At("phone.desktop.json"))));
  }
  EXPECT_GE(run_again, kPoints * 3 / 4);  // The others came after the folder.
}

}  // namespace
