// Result codes in words.
#include "tests/qvdesk/desk.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Explain : public desk::DeskTest {
 protected:
  std::string Words(const std::vector<std::string>& arguments) const {
    std::vector<std::string> all = {"explain"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return Done(all);
  }
};

TEST_F(Explain, ZeroIsSuccess) {
  EXPECT_THAT(Words({"0"}), HasSubstr("success"));
}

TEST_F(Explain, CodeWithoutStepReadsTheSameInAnyModule) {
  EXPECT_THAT(Words({"0x10000001"}), HasSubstr("any module, export:\n    the store library could not be loaded"));
  EXPECT_THAT(Words({"268435457"}), HasSubstr("reported by an export"));
}

TEST_F(Explain, ExportStepIsNamedAndTheOtherDirectionIsNotOffered) {
  const std::string words = Words({"0x12000006"});
  EXPECT_THAT(words, HasSubstr("schedule, export, any mode"));
  EXPECT_THAT(words, HasSubstr("failed while exporting the groups: the store could not read a record"));
  EXPECT_THAT(words, Not(HasSubstr("recover")));
}

TEST_F(Explain, SnapshotFlagIsNestedUnderTheStepAndMeansAnIncrementalExport) {
  const std::string words = Words({"0x11100100"});
  EXPECT_THAT(words, HasSubstr("schedule, export, incremental mode"));
  EXPECT_THAT(words, HasSubstr("failed while exporting the entries: reading the table's snapshot log: a file"));
}

TEST_F(Explain, RecoverStepsReadDifferentlyByMode) {
  const std::string all = Words({"0x23000007"});
  EXPECT_THAT(all, HasSubstr("incremental mode:\n    failed while inserting and updating the groups"));
  EXPECT_THAT(all, HasSubstr("any other mode than incremental:\n    failed while inserting the entries"));
  const std::string incremental = Words({"0x23000007", "--module", "2", "--mode", "incremental"});
  EXPECT_THAT(incremental, HasSubstr("inserting and updating the groups"));
  EXPECT_THAT(incremental, Not(HasSubstr("inserting the entries")));
  EXPECT_THAT(Words({"0x23000007", "--mode", "plain"}), HasSubstr("inserting the entries"));
}

TEST_F(Explain, ChangeListFlagStandsAlone) {
  EXPECT_THAT(Words({"0x20200009"}), HasSubstr("failed while applying the change list's deletions: the store refused"));
}

TEST_F(Explain, CodeWithoutEntryFlagListsBothDirections) {
  const std::string words = Words({"0x5000100"});
  EXPECT_THAT(words, HasSubstr("schedule, export, any mode:\n    failed while rewriting the snapshot logs"));
  EXPECT_THAT(words, HasSubstr("schedule, recover, any mode:\n    failed while rewriting the snapshot logs"));
  EXPECT_THAT(Words({"0x5000100", "--direction", "recover"}), Not(HasSubstr("export, any")));
}

TEST_F(Explain, UnknownCodesAreSaidToBeUnknown) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"77"},
                                             {"0x1f000100"},
                                             {"0x40000001"},
                                             {"0x30000001"},
                                             {"0x10000000"},
                                             {"0x13000100"},
                                             {"0x10000001", "--direction", "recover"},
                                             {"0x11000007"},
                                             {"0x1800000A"},
                                             {"0x10000003"},
                                             {"0x10000040"},
                                             {"0x22000006"},
                                             {"0x10001000"},
                                             {"8192"},
                                             {"0x20200009", "--module", "schedule", "--mode", "full"}}) {
    std::vector<std::string> all = {"explain"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const desk::Outcome outcome = Run(all);
    EXPECT_EQ(outcome.status, 1) << arguments[0];
    EXPECT_THAT(outcome.err, HasSubstr("is unknown")) << arguments[0];
  }
}

TEST_F(Explain, StepsOfContactsReadInTheirOwnWords) {
  EXPECT_THAT(Words({"0x18000006"}),
              AllOf(HasSubstr("contacts, export, any mode:\n    failed while exporting who belongs to which group"),
                    Not(HasSubstr("schedule"))));
  EXPECT_THAT(Words({"0x2b000007"}), HasSubstr("failed while inserting the pictures: the store refused to insert"));
  EXPECT_THAT(Words({"0x2a000008"}), HasSubstr("failed while applying who belongs to which group"));
  EXPECT_THAT(Words({"0x24000004"}), HasSubstr("contacts, recover, any mode:\n    failed while applying the groups"));
  EXPECT_THAT(Words({"0x20000005", "--module", "contacts"}), HasSubstr("the store could not list its record ids"));
}

TEST_F(Explain, ReasonsOfTheContactsStoreAreGivenByTheirNumbers) {
  EXPECT_THAT(Words({"0x2300000a", "--module", "contacts"}),
              AllOf(HasSubstr("failed while applying the contacts"), HasSubstr("for its reason -502")));
  EXPECT_THAT(Words({"0x2400000b", "--module", "contacts"}), HasSubstr("for its reason -503"));
}

TEST_F(Explain, SameFlagReadsDifferentlyInEachModule) {
  EXPECT_THAT(Words({"0x11000006"}),
              AllOf(HasSubstr("contacts, export, any mode:\n    failed while exporting the cont"),
                    HasSubstr("schedule, export, any mode:\n    failed while exporting the ent")));
}

TEST_F(Explain, CodeThatOnlyOneDirectionCanGiveIsNotOfferedForTheOther) {
  const std::string insert = Words({"7"});
  EXPECT_THAT(insert, HasSubstr("any module, recover:\n    the store refused to insert"));
  EXPECT_THAT(insert, Not(HasSubstr("export:")));
}

TEST_F(Explain, EntryPointsThatReportNothingAreNotOffered) {
  EXPECT_EQ(Run({"explain", "1", "--module", "tasks"}).status, 1);
  EXPECT_THAT(Words({"0", "--module", "tasks"}), HasSubstr("success"));
  EXPECT_THAT(Words({"0", "--module", "browser-settings"}), Not(HasSubstr("whatever happened")));
  EXPECT_THAT(Words({"1", "--module", "e-mail"}), Not(HasSubstr("export:")));
  EXPECT_EQ(Run({"explain", "0x20000001", "--module", "e-mail"}).status, 1);
  EXPECT_THAT(Words({"0x20000001", "--module", "personal-settings"}), HasSubstr("personal-settings, recover:"));
  EXPECT_THAT(Words({"0x10000001", "--module", "browser-settings"}), HasSubstr("browser-settings, export:"));
}

TEST_F(Explain, AModuleThatReportsNothingIsSaidToDoSo) {
  EXPECT_THAT(Words({"0", "--module", "tasks"}),
              AllOf(HasSubstr("tasks, export"), HasSubstr("tasks, recover"),
                    HasSubstr("  tasks answers 0 whatever happened: look at the files and at the data\n")));
  EXPECT_THAT(Words({"0", "--module", "unified-mail", "--direction", "recover"}),
              AllOf(HasSubstr("unified-mail recovers answer 0 whatever happened"), Not(HasSubstr("export"))));
  EXPECT_THAT(Run({"explain", "0x10000007", "--module", "5"}).err,
              HasSubstr("in such a run: unified-mail answers 0 whatever happened"));
  const std::string results = Done({"describe", "results"});
  EXPECT_THAT(results, AllOf(HasSubstr("### 3 tasks\n\nNo failure is reported: every answer is 0."),
                             HasSubstr("### 5 unified-mail\n\nNo failure is reported: every answer is 0.")));
}

TEST_F(Explain, StepsOfTheAgendaReadTheSameInEveryMode) {
  EXPECT_THAT(Words({"0x23000007", "--module", "agenda"}),
              HasSubstr("agenda, recover, any mode:\n    failed while applying the entries: the store refused"));
  EXPECT_THAT(Words({"0x12000006", "--module", "agenda"}), HasSubstr("failed while exporting the groups"));
}

TEST_F(Explain, SettingsHaveOneCodeForWhateverFailed) {
  EXPECT_THAT(
      Words({"0x20000001", "--module", "personal-settings"}),
      HasSubstr("personal-settings, recover:\n    the store library could not be loaded or lacks an entry point"));
  EXPECT_EQ(Run({"explain", "0x11000100", "--module", "clock-settings"}).status, 1);
}

}  // namespace
