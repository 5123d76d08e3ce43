// Creating a handset and asking it questions.
#include <map>

#include "tests/qvdesk/desk.h"

namespace {

using testing::HasSubstr;

/// Those with sample data.
constexpr const char* kModules[] = {"contacts",   "schedule",    "card-reader", "sms",          "call-history",
                                    "quick-dial", "call-filter", "mms",         "graphic-memo", "e-mail"};

class Handset : public desk::DeskTest {
 protected:
  std::string Ask(std::vector<std::string> question) const {
    question.insert(question.begin(), "ask");
    question.insert(question.end(), {"--handset", Phone().string()});
    return Done(question);
  }
};

TEST_F(Handset, SameSeedMakesTheSameTablesAndAnotherSeedOthers) {
  std::map<std::string, std::vector<std::string>> tables;
  for (const char* const seed : {"5", "5", "6"}) {
    desk::fs::remove_all(Phone());
    Done({"create", Phone().string(), "--schedule-entries", "20", "--contacts", "20", "--seed", seed});
    for (const char* const module : kModules) {
      EXPECT_EQ(Run({"export", module, "--handset", Phone().string()}).status, 0);
    }
    for (const char* const table : {"schedule.tbl", "linkman.tbl", "groupattach.tbl", "image.tbl", "smsinfo.tbl",
                                    "mmsinfo.tbl", "callinfo.tbl", "cardreader.tbl", "gmemoinfo.tbl", "Quickinfo.tbl",
                                    "redblistinfo.tbl", "redblistgroup.tbl", "mailhead.tbl", "mailuidl.tbl"}) {
      tables[table].push_back(desk::Contents(Sync(table)));
    }
  }
  for (const auto& [table, contents] : tables) {
    EXPECT_TRUE(contents[0] == contents[1]) << table;
    EXPECT_FALSE(contents[0] == contents[2]) << table;
  }
}

TEST_F(Handset, DirectoryThatIsNotEmptyIsRefusedAndLeftAlone) {
  desk::fs::create_directory(Phone());
  desk::Write(Phone() / "precious", "data");
  const desk::Outcome outcome = Run({"create", Phone().string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("the directory is not empty"));
  EXPECT_EQ(std::distance(desk::fs::directory_iterator(Phone()), {}), 1);
}

TEST_F(Handset, FileInItsPlaceIsRefused) {
  desk::Write(Phone(), "a file");
  EXPECT_THAT(Run({"create", Phone().string()}).err, HasSubstr("it is not a directory"));
}

TEST_F(Handset, EmptyHandsetAndOneWithoutGroupsCanBeExported) {
  std::vector<std::string> create = {"create", Phone().string()};
  for (const char* const kind : {"--schedule-entries", "--schedule-groups", "--contacts", "--messages", "--mms",
                                 "--calls", "--e-mails", "--cards", "--memos", "--quick-dials", "--filters"}) {
    create.insert(create.end(), {kind, "0"});
  }
  Done(create);
  for (const char* const module : kModules) {
    EXPECT_EQ(Run({"export", module, "--handset", Phone().string()}).status, 0);
  }
  for (const char* const table : {"schedule.tbl", "linkman.tbl", "groupmgr.tbl", "groupattach.tbl", "image.tbl",
                                  "smsinfo.tbl", "mmsinfo.tbl", "callinfo.tbl", "cardreader.tbl", "gmemoinfo.tbl",
                                  "Quickinfo.tbl", "redblistinfo.tbl", "redblistgroup.tbl", "mailhead.tbl"}) {
    EXPECT_EQ(desk::fs::file_size(Sync(table)), 0u) << table;
  }
}

TEST_F(Handset, AnswersItsQuestions) {
  CreatePhone();
  EXPECT_THAT(Ask({"model"}), HasSubstr("yes"));
  EXPECT_THAT(Ask({"sync-running"}), HasSubstr("no"));
  EXPECT_THAT(Ask({"sync-running", "--with-program", "App_SyncK9"}), HasSubstr("yes"));
  EXPECT_THAT(Ask({"running", "1"}), HasSubstr("no"));
  EXPECT_THAT(Ask({"running", "1", "--with-program", "abc.exe"}), HasSubstr("yes"));
  EXPECT_THAT(Ask({"free-space", "\\sync"}), HasSubstr("bytes are free"));
  EXPECT_THAT(Ask({"store-space", "16"}), HasSubstr("yes"));
  EXPECT_THAT(Ask({"mail-id"}), HasSubstr("4711"));
  EXPECT_THAT(Ask({"notify-call-filter"}), HasSubstr("nobody was told"));
  EXPECT_THAT(Ask({"notify-call-filter", "--with-window", "PhoneServerWindow"}), HasSubstr("message 0x981, 32"));
}

TEST_F(Handset, AnotherModelIsToldApart) {
  CreatePhone();
  desk::fs::remove(Phone() / "systemdata" / "GameRing");
  EXPECT_THAT(Ask({"model"}), HasSubstr("no"));
}

TEST_F(Handset, FreeSpaceOfAPathThatIsNotThereIsAFailure) {
  CreatePhone();
  const desk::Outcome outcome = Run({"ask", "free-space", "\\nowhere", "--handset", Phone().string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("the handset has no path \"\\nowhere\""));
}

TEST_F(Handset, FreeSpaceSaysThatItsPathIsNotTheRoot) {
  EXPECT_THAT(Done({"ask", "free-space", "--help"}), HasSubstr("not '\\' itself"));
}

TEST_F(Handset, WhatIsNoHandsetIsRefusedWithTheWayToMakeOne) {
  EXPECT_THAT(Run({"ask", "model", "--handset", Phone().string()}).err, HasSubstr("Make a handset: qvdesk create"));
  desk::fs::create_directory(Phone());
  const desk::Outcome outcome = Run({"ask", "model", "--handset", Phone().string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("the directory is not a handset"));
}

TEST_F(Handset, LibraryThatIsNoneIsNamedInTheError) {
  CreatePhone();
  desk::Write(At("bad.dll"), "not a library");
  const desk::Outcome outcome =
      Run({"ask", "model", "--handset", Phone().string(), "--library", At("bad.dll").string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("bad.dll"));
}

}  // namespace
