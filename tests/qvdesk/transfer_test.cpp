// Exports and recovers as a desktop runs them, one process each.
#include <pty.h>

#include <nlohmann/json.hpp>

#include "tests/qvdesk/desk.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Transfer : public desk::DeskTest {
 protected:
  Transfer() { CreatePhone(); }

  /// The exported entries without their ids, which a recover gives anew.
  nlohmann::json Entries() const {
    auto entries = nlohmann::json::parse(Done({"show", Sync("schedule.tbl").string(), "--format", "json"}))["records"];
    for (auto& entry : entries) {
      entry.erase("entry_id");
      entry.erase("group_id");
    }
    return entries;
  }

  desk::fs::path State() const { return At("phone.desktop.json"); }
};

TEST_F(Transfer, FullExportWritesTheTablesAndSaysSo) {
  const desk::Outcome outcome = Export();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("schedule export: success"), HasSubstr("full (1)"), HasSubstr("12 records"),
                                 HasSubstr("2 records"), HasSubstr("schedulegroup.tbl")));
  EXPECT_EQ(outcome.err, "");
}

TEST_F(Transfer, AnchorIsKeptAndMakesTheNextExportIncremental) {
  EXPECT_EQ(Export().status, 0);
  EXPECT_THAT(desk::Contents(State()), HasSubstr("\"schedule\": \"2"));
  const desk::Outcome outcome = Export({"--mode", "incremental"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("mode       incremental (3)"), Not(HasSubstr("ran full"))));
  EXPECT_EQ(desk::fs::file_size(Sync("schedule.tbl")), 0u);
}

TEST_F(Transfer, DirectorySpelledWithASlashIsTheSameHandset) {
  EXPECT_EQ(Export().status, 0);
  const desk::Outcome outcome = Run({"export", "2", "--handset", Phone().string() + "/", "--mode", "3"});
  EXPECT_THAT(outcome.out, Not(HasSubstr("ran full")));
}

TEST_F(Transfer, DesktopWithoutTheAnchorGetsAFullExportAndIsToldWhy) {
  EXPECT_EQ(Export().status, 0);
  desk::fs::remove(State());
  const desk::Outcome outcome = Export({"--mode", "incremental"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("asked incremental (3), ran full (1)"),
                                 HasSubstr("The anchor \"00000000000000\" is not")));
  EXPECT_THAT(Export({"--mode", "incremental", "--anchor", "20061"}).out, HasSubstr("The anchor \"20061\" is not"));
  EXPECT_THAT(Export({"--mode", "incremental", "--anchor", ""}).out, HasSubstr("The anchor \"\" is not"));
}

TEST_F(Transfer, PlainCopyIsNotRemembered) {
  const desk::Outcome outcome = Export({"--mode", "plain"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("not remembered"));
  EXPECT_FALSE(desk::fs::exists(State()));
}

TEST_F(Transfer, LocalExportIsAPlainCopyThroughTheHandsetsOwnFunction) {
  const desk::Outcome outcome = Export({"--local"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("plain (4)"), HasSubstr("12 records")));
  EXPECT_FALSE(desk::fs::exists(State()));
}

TEST_F(Transfer, FailedExportExitsWithOneExplainsItselfAndKeepsNoAnchor) {
  const desk::Outcome outcome = Export({"--directory", "\\nowhere"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("0x10000100"), HasSubstr("a file could not be opened"),
                                 HasSubstr("no such directory"), HasSubstr("not kept because the run failed")));
  EXPECT_THAT(outcome.err, HasSubstr("failed with 0x10000100"));
  EXPECT_FALSE(desk::fs::exists(State()));
}

TEST_F(Transfer, ModuleWhoseResultIsDroppedSaysThatSuccessMeansNothing) {
  const desk::Outcome outcome = Run({"export", "tasks", "--handset", Phone().string()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("reports success for the module whatever happened"));
}

TEST_F(Transfer, AnchorThatWasNotHandedOutIsNotKept) {
  EXPECT_THAT(Run({"export", "browser-settings", "--handset", Phone().string()}).out,
              HasSubstr("the handset handed out none"));
  const std::vector<std::string> presented = {"export", "browser-settings", "--handset", Phone().string(), "--mode",
                                              "3",      "--anchor",         "20061"};
  EXPECT_THAT(Run(presented).out, HasSubstr("anchor     unchanged: the handset handed out none"));
  EXPECT_FALSE(desk::fs::exists(State()));
}

TEST_F(Transfer, RecoverInReplaceModeGivesBackTheSameEntriesAndPostsNineMessages) {
  EXPECT_EQ(Export().status, 0);
  const nlohmann::json before = Entries();
  const desk::Outcome outcome = Recover({"--mode", "replace"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("schedmap.tbl"), HasSubstr("14 records"), HasSubstr("9 posted"), HasSubstr("0x7ed")));
  EXPECT_EQ(Export().status, 0);
  EXPECT_EQ(before.size(), 12u);
  EXPECT_EQ(Entries(), before);
}

TEST_F(Transfer, IncrementalRecoverAppliesWhatTheDesktopEncoded) {
  EXPECT_EQ(Export().status, 0);
  desk::Write(At("changes"), R"([{"table":0,"id":900,"operation":"new"},{"table":0,"id":1,"operation":3}])");
  desk::Write(At("entries"), R"([{"entry_id":900,"text_1":"New entry"}])");
  desk::Write(At("groups"), "[]");
  Done({"encode", "schedcmd.tbl", At("changes").string(), Sync("schedcmd.tbl").string()});
  Done({"encode", "schedule.tbl", At("entries").string(), Sync("schedule.tbl").string()});
  Done({"encode", "schedulegroup.tbl", At("groups").string(), Sync("schedulegroup.tbl").string()});
  const desk::Outcome outcome = Recover({"--mode", "incremental"});
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
  EXPECT_THAT(Done({"show", Sync("schedmap.tbl").string()}), AllOf(HasSubstr("900"), HasSubstr("1 record of")));
  EXPECT_EQ(Export().status, 0);
  const std::string entries = Done({"show", Sync("schedule.tbl").string()});
  EXPECT_THAT(entries, AllOf(HasSubstr("New entry"), HasSubstr("12 records")));
}

/// The group table as the desktop lays it out, or not; the answer is what an export then shows of the groups.
class IncrementalGroups : public Transfer {
 protected:
  std::string RecoverGroups(const std::vector<std::string>& encoding) const {
    EXPECT_EQ(Export().status, 0);
    desk::Write(At("changes"), R"([{"table":1,"id":900,"operation":1},{"table":1,"id":901,"operation":1}])");
    desk::Write(At("groups"), R"([{"group_id":900,"name":"Chess"},{"group_id":901,"name":"Choir"}])");
    desk::Write(Sync("schedule.tbl"), "");
    Done({"encode", "schedcmd.tbl", At("changes").string(), Sync("schedcmd.tbl").string()});
    std::vector<std::string> arguments = {"encode", "schedulegroup.tbl", At("groups").string(),
                                          Sync("schedulegroup.tbl").string()};
    arguments.insert(arguments.end(), encoding.begin(), encoding.end());
    const desk::Outcome encoded = Run(arguments);
    EXPECT_EQ(encoded.status, 0);
    EXPECT_EQ(encoded.err.find("--for-incremental") == std::string::npos, !encoding.empty()) << encoded.err;
    EXPECT_EQ(Recover({"--mode", "incremental"}).status, 0);
    EXPECT_EQ(Export().status, 0);
    return Done({"show", Sync("schedulegroup.tbl").string()});
  }
};

TEST_F(IncrementalGroups, AllArriveWhenTheyWereEncodedForIt) {
  EXPECT_THAT(RecoverGroups({"--for-incremental"}), AllOf(HasSubstr("Chess"), HasSubstr("Choir")));
}

TEST_F(IncrementalGroups, OnlyTheFirstArrivesOtherwiseAndANoteSaysSo) {
  EXPECT_THAT(RecoverGroups({}), AllOf(HasSubstr("Chess"), Not(HasSubstr("Choir"))));
}

TEST_F(Transfer, TablesLeftByAFailedIncrementalRecoverAreCountedAsItReadThem) {
  desk::Write(At("groups"), R"([{"group_id":900},{"group_id":901}])");
  Done({"encode", "schedulegroup.tbl", At("groups").string(), Sync("schedulegroup.tbl").string(), "--for-incremental"});
  const desk::Outcome outcome = Recover({"--mode", "incremental"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("       2 records"), Not(HasSubstr("damaged"))));
}

TEST_F(Transfer, RecoverWithoutTablesFailsInWords) {
  const desk::Outcome outcome = Recover();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("0x24000100"), HasSubstr("failed while inserting the groups")));
}

TEST_F(Transfer, TextsThatNoRequestHoldsAreUsageErrors) {
  const desk::Outcome anchor = Export({"--mode", "incremental", "--anchor", std::string(20, '1')});
  EXPECT_EQ(anchor.status, 2);
  EXPECT_THAT(anchor.err, HasSubstr("--anchor has 20 characters; a request holds at most 19"));
  const desk::Outcome outcome = Export({"--directory", "\\" + std::string(259, 'd')});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("--directory has 260 characters; a request holds at most 259"));
}

TEST_F(Transfer, DamagedStateFileIsNamedWithTheWayOut) {
  desk::Write(State(), "{\"anchors\": {\"schedule\": 5}}");
  const desk::Outcome outcome = Export();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("phone.desktop.json"), HasSubstr("Delete it")));
}

TEST_F(Transfer, ProgressShowsOnATerminalOnlyAndIsClearedAtItsEnd) {
  int terminal = -1;
  const std::string phone = Phone().string();
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    execl(QV_DESK, QV_DESK, "export", "schedule", "--handset", phone.c_str(), nullptr);
    _exit(99);
  }
  std::string seen;
  char buffer[512];
  for (ssize_t got; (got = read(terminal, buffer, sizeof(buffer))) > 0;)
    seen.append(buffer, static_cast<std::size_t>(got));
  close(terminal);
  waitpid(child, nullptr, 0);
  EXPECT_THAT(seen, AllOf(HasSubstr("schedule export: \\"), HasSubstr(" files, "), HasSubstr(" KB written"),
                          HasSubstr("\r\033[Kschedule export: success")));
  EXPECT_THAT(Export().err, Not(HasSubstr("files")));
}

/// The agent's builds, each over the stand-in stores: what the behaviour tests' scripted stores cannot show.
class EachBuild : public Transfer, public testing::WithParamInterface<const char*> {
 protected:
  desk::Outcome ExportBy(const std::string& mode) const { return Export(Arguments(mode)); }
  desk::Outcome RecoverBy(const std::string& mode) const { return Recover(Arguments(mode)); }

 private:
  static std::vector<std::string> Arguments(const std::string& mode) {
    std::vector<std::string> arguments = {"--mode", mode};
    if (*GetParam() != '\0') arguments.insert(arguments.end(), {"--library", GetParam()});
    return arguments;
  }
};

TEST_P(EachBuild, EditsMadeInTheShellAreInTheNextIncrementalExport) {
  ASSERT_EQ(ExportBy("full").status, 0);
  Edit("UPDATE schedule_entries SET text_1 = 'Moved' WHERE id = 3; DELETE FROM schedule_entries WHERE id = 5;");
  const desk::Outcome outcome = ExportBy("incremental");
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto changes = nlohmann::json::parse(Done({"show", Sync("schedcmd.tbl").string(), "--format", "json"}));
  ASSERT_EQ(changes["records"].size(), 2u);
  EXPECT_EQ(changes["records"][0]["id"], 3);
  EXPECT_EQ(changes["records"][0]["operation"], 2);
  EXPECT_EQ(changes["records"][1]["id"], 5);
  EXPECT_EQ(changes["records"][1]["operation"], 3);
  EXPECT_EQ(Entries().at(0).at("text_1"), "Moved");
}

TEST_P(EachBuild, AWholeScheduleComesBackAsItWas) {
  ASSERT_EQ(ExportBy("full").status, 0);
  const auto before = Entries();
  const desk::Outcome outcome = RecoverBy("replace");
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_FALSE(desk::fs::exists(Sync("schedule.tbl")));
  ASSERT_EQ(ExportBy("full").status, 0);
  EXPECT_EQ(Entries(), before);
}

INSTANTIATE_TEST_SUITE_P(Agent, EachBuild, testing::Values("", QV_SOURCE_DIR "/dist/wince-x86/QV_RAPI.dll"),
                         [](const auto& agent) { return *agent.param == '\0' ? "HostBuild" : "HandsetLibrary"; });

}  // namespace
