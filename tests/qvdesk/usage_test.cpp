// What the program says to those who do not know it yet, and to those who mistype.
#include "tests/qvdesk/desk.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class Usage : public desk::DeskTest {};

TEST_F(Usage, HelpNamesEveryCommandAndFirstSteps) {
  const desk::Outcome help = Run({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* const command :
       {"create", "export", "recover", "backup", "sync", "verify", "restore", "compare", "ask", "show", "encode",
        "explain", "modules", "describe", "picture", "First steps"}) {
    EXPECT_THAT(help.out, HasSubstr(command));
  }
}

TEST_F(Usage, EveryCommandHasHelpWithAnExample) {
  for (const char* const command : {"create", "export", "recover", "backup", "sync", "verify", "restore", "compare",
                                    "ask", "show", "encode", "explain", "modules", "describe", "picture"}) {
    const desk::Outcome help = Run({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_THAT(help.out, HasSubstr("Example")) << command;
    EXPECT_THAT(help.out, HasSubstr("qvdesk " + std::string(command))) << command;
  }
}

TEST_F(Usage, MistakesExitWithTwoAndExplainThemselvesOnStderr) {
  const std::vector<std::pair<std::vector<std::string>, const char*>> mistakes = {
      {{}, "subcommand is required"},
      {{"export"}, "MODULE is required"},
      {{"export", "schedule"}, "--handset is required"},
      {{"export", "shedule", "--handset", "x"}, "The modules are 1 to 16: contacts, schedule"},
      {{"export", "schedule", "--handset", "x", "--mode", "fast"}, "neither full, replace, incremental, plain nor a"},
      {{"export", "schedule", "--handset", "x", "--local", "--mode", "full"}, "excludes"},
      {{"explain", "12x"}, "it is not a 32-bit number such as 268435712"},
      {{"export", "schedule", "--handset", "x", "--anchor", "1"}, "read by incremental exports only"},
      {{"recover", "schedule", "--handset", "x", "--mode", "3", "--anchor", "1"}, "read by incremental exports only"},
      {{"show", "schedule.tbl", "--all-fields", "--format", "json"}, "excludes"},
      {{"show", "unknown.bin"}, "no file that handset and desktop exchange has this name. Say what it is with --as"},
      {{"show", "unknown.bin", "--as", "nothing"}, "The forms are: linkman.tbl"},
      {{"describe", "everything"}, "formats"},
      {{"backup", "folder"}, "--handset is required"},
      {{"restore", "folder", "--handset"}, "--handset"},
      {{"backup", "folder", "nothing", "--handset", "x"}, "The modules are 1 to 16: contacts, schedule"},
      {{"compare", "first"}, "SECOND is required"},
      {{"picture", "image.tbl", "3"}, "ID requires OUT"},
      {{"picture", "image.tbl", "anna", "anna.bmp"}, "Could not convert: ID = anna"},
  };
  for (const auto& [arguments, message] : mistakes) {
    const desk::Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2) << message;
    EXPECT_THAT(outcome.err, HasSubstr(message));
    EXPECT_THAT(outcome.out, IsEmpty());
  }
}

TEST_F(Usage, ModulesListsAllSixteenAndWhatTheyNeed) {
  const std::string modules = Done({"modules"});
  for (const char* const text : {"contacts", "contacts, groups, pictures", "clock-settings", "ContactStore.dll",
                                 "lkmcmd.tbl", "SchedStore.dll", "SCHEDULE", "schedcmd.tbl", "schegroup.log",
                                 "smsconf.tbl", "mmsconf.tbl", "CallLogStore.dll", "CardScanStore.dll", "QUCIKDAIL",
                                 "redblistconfig.tbl", "gmemo.log", "MailStore.dll", "maillinkman.tbl", "N.eml"}) {
    EXPECT_THAT(modules, HasSubstr(text));
  }
  EXPECT_EQ(std::count(modules.begin(), modules.end(), '\n'), 16 + 2);
}

}  // namespace
