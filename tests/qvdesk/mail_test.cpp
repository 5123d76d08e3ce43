// E-mail at the desktop's end: eight tables shown and encoded, messages as files of their own, and the sample phone's
// mail there and back, to the same phone and to another one.
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/qvdesk/desk.h"

namespace {

using desk::fs::path;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kTables[] = {"mailuser.tbl",   "mailconfig.tbl", "mailfilter.tbl", "maillinkman.tbl",
                                   "mailfolder.tbl", "mailuidl.tbl",   "mailhead.tbl",   "mailaddress.tbl"};

class MessageFile : public desk::DeskTest {
 protected:
  std::string Show(const std::string& contents, const std::vector<std::string>& more = {}) const {
    desk::Write(At("17.eml"), contents);
    std::vector<std::string> arguments = {"show", At("17.eml").string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Done(arguments);
  }
  json Json(const std::string& contents) const { return json::parse(Show(contents, {"--format", "json"})); }
};

TEST_F(MessageFile, HeaderFieldsAreUnfoldedAndTheTextFollows) {
  EXPECT_EQ(Show("From: Anna <anna@example.com>\r\nTo: Tom,\r\n\t Li\r\nX:\r\n\r\nHello,\r\n\r\n你好\r\n"),
            "From:          Anna <anna@example.com>\n"
            "To:            Tom, Li\n"
            "X:             \n"
            "\n"
            "Hello,\n\n你好\n"
            "3 header fields, 71 bytes\n");
}

TEST_F(MessageFile, LinesMayEndWithALineFeedAlone) {
  EXPECT_EQ(Show("A: 1\n\nx\ny"), "A:             1\n\nx\ny\n1 header field, 9 bytes\n");
}

TEST_F(MessageFile, WhatIsNoHeaderIsText) {
  EXPECT_EQ(Show(" folded\nA: 1\n"), "\n folded\nA: 1\n0 header fields, 13 bytes\n");
  EXPECT_EQ(Show("A: 1\nno field\n"), "A:             1\n\nno field\n1 header field, 14 bytes\n");
  EXPECT_EQ(Show("a b: 1\n"), "\na b: 1\n0 header fields, 7 bytes\n");
  EXPECT_EQ(Show(": 1\n"), "\n: 1\n0 header fields, 4 bytes\n");
  EXPECT_EQ(Show("A: 1"), "A:             1\n1 header field, 4 bytes\n");
  EXPECT_EQ(Show(""), "0 header fields, 0 bytes\n");
}

TEST_F(MessageFile, NoiseIsMadeVisible) {
  const std::string shown = Show(std::string("A: \x1B[2J\r\n\r\n\0\x1B[31m\r\xFF\r\n", 22));
  EXPECT_THAT(shown, HasSubstr("A:             \\u001b[2J\n"));
  EXPECT_THAT(shown, HasSubstr("\n\\u0000\\u001b[31m\\u000d\uFFFD\n"));
}

TEST_F(MessageFile, OfALongTextTheBeginningIsShown) {
  std::string text(16383, 'x');
  text += "好y";
  const std::string shown = Show("A: 1\r\n\r\n" + text);
  EXPECT_THAT(shown, HasSubstr(std::string(16383, 'x') + "\n… and 4 bytes more, which --format json gives\n"));
  EXPECT_EQ(Json("A: 1\r\n\r\n" + text)["text"], text);
  EXPECT_THAT(Show("A: 1\r\n\r\n" + std::string(16384, 'x')), Not(HasSubstr("…")));
}

TEST_F(MessageFile, JsonHasAllOfIt) {
  EXPECT_EQ(Json("A: 1\r\n 2\r\nA: 3\r\n\r\nx\x1B\r\n"),
            json({{"form", "N.eml"},
                  {"header", {{{"name", "A"}, {"value", "1 2"}}, {{"name", "A"}, {"value", "3"}}}},
                  {"text", "x\x1B\r\n"}}));
  EXPECT_EQ(Json("\r\n\xC4\xE3")["text"], json({{"hex", "c4e3"}}));
}

TEST_F(MessageFile, ItsNameIsANumber) {
  desk::Write(At("note.eml"), "A: 1\n");
  EXPECT_EQ(Run({"show", At("note.eml").string()}).status, 2);
  EXPECT_THAT(Done({"show", At("note.eml").string(), "--as", "N.eml"}), HasSubstr("1 header field"));
  desk::fs::rename(At("note.eml"), At("4294967295.EML"));
  EXPECT_THAT(Done({"show", At("4294967295.EML").string()}), HasSubstr("1 header field"));
}

TEST_F(MessageFile, ItIsNotEncoded) {
  desk::Write(At("in.json"), "[]");
  const desk::Outcome outcome = Run({"encode", "17.eml", At("in.json").string(), At("out").string()});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("a message is a file of text"));
}

TEST_F(MessageFile, ACountIsExplainedForTheModuleThatAnswersIt) {
  EXPECT_THAT(Done({"explain", "7", "--module", "e-mail"}),
              AllOf(HasSubstr("e-mail, recover:\n    success: 7 messages handed to the store"),
                    Not(HasSubstr("export:")), Not(HasSubstr("refused"))));
  EXPECT_THAT(Done({"explain", "0", "--module", "6"}), HasSubstr("e-mail, export:\n    success"));
  EXPECT_EQ(Run({"explain", "7", "--module", "e-mail", "--direction", "export"}).status, 1);
  EXPECT_EQ(Run({"explain", "0x10000100", "--module", "e-mail"}).status, 1);
  EXPECT_THAT(Run({"explain", "77"}).err, HasSubstr("unless it is a number of messages (--module e-mail)"));
}

/// A phone with the sample mail, exported.
class Mail : public desk::DeskTest {
 protected:
  Mail() {
    module_ = "e-mail";
    CreatePhone();
    EXPECT_EQ(Export().status, 0);
  }

  json Records(const path& file) const {
    return json::parse(Done({"show", file.string(), "--format", "json"}))["records"];
  }
  path Other() const { return At("other"); }
  /// A phone without messages that has the files of the exchange.
  void CreateOther() const {
    Done({"create", Other().string(), "--e-mails", "0", "--schedule-entries", "0", "--contacts", "0"});
    for (const auto& file : desk::fs::directory_iterator(Phone() / "sync")) {
      desk::fs::copy(file.path(), Other() / "sync" / file.path().filename());
    }
  }
  std::string RecoverOther(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"recover", "e-mail", "--handset", Other().string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Done(arguments);
  }
  static std::set<std::string> Names(const path& directory) {
    std::set<std::string> names;
    for (const auto& file : desk::fs::directory_iterator(directory)) names.insert(file.path().filename());
    return names;
  }
  /// The messages by what tells them apart.
  json Messages(const path& phone) const {
    json messages = Records(phone / "sync" / "mailhead.tbl");
    for (json& message : messages) message.erase("path");
    return messages;
  }
};

TEST_F(Mail, EveryTableIsShown) {
  const std::map<std::string, std::vector<std::string>> expected = {
      {"mailuser.tbl", {"Work", "kim@home.example", "2 records"}},
      {"mailconfig.tbl", {"Sent from my phone, Kim", "2 records"}},
      {"mailfilter.tbl", {"Advertising", "rehearsal", "6 records"}},
      {"maillinkman.tbl", {"Tom Smith", "李明", "4 records"}},
      {"mailfolder.tbl", {"Inbox", "项目 (projects)", "12 records"}},
      {"mailuidl.tbl", {".6", "10 records"}},
      {"mailhead.tbl", {"2025-", "Rehearsal", "周六的晚饭", "bytes", "not there", "14 records"}},
      {"mailaddress.tbl", {"Anna Müller", "28 records"}},
  };
  for (const auto& [table, texts] : expected) {
    const std::string shown = Done({"show", Sync(table).string()});
    for (const std::string& text : texts) EXPECT_THAT(shown, HasSubstr(text)) << table;
  }
}

TEST_F(Mail, EveryTableComesBackByteForByte) {
  for (const char* const table : kTables) {
    desk::Write(At("in.json"), Done({"show", Sync(table).string(), "--format", "json"}));
    Done({"encode", table, At("in.json").string(), At(table).string()});
    EXPECT_GT(desk::fs::file_size(At(table)), 0u) << table;
    EXPECT_TRUE(desk::Contents(At(table)) == desk::Contents(Sync(table))) << table;
  }
}

TEST_F(Mail, DamagedTablesAreShownAsFarAsTheyGo) {
  for (const char* const table : kTables) {
    desk::fs::resize_file(Sync(table), desk::fs::file_size(Sync(table)) - 1);
    const desk::Outcome outcome = Run({"show", Sync(table).string()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("the file ends inside the record")) << table;
    EXPECT_THAT(outcome.out, HasSubstr("records of the form")) << table;
  }
}

TEST_F(Mail, AnExportSaysWhatItMade) {
  const desk::Outcome outcome = Export({"--mode", "incremental"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("mode       incremental"), HasSubstr("unchanged: the handset handed out none"),
                    HasSubstr("messages (.eml)"), HasSubstr("13 files"), Not(HasSubstr("1.eml"))));
}

TEST_F(Mail, OneMessageIsOnTheCardAndOneHasLostItsFile) {
  const json messages = Records(Sync("mailhead.tbl"));
  EXPECT_EQ(messages[0]["path"], "\\dbdata\\mail\\file\\1.eml");
  EXPECT_EQ(messages[1]["path"], "\\SD\\mail\\file\\2.eml");
  EXPECT_TRUE(desk::fs::exists(Phone() / "SD" / "mail" / "file" / "2.eml"));
  EXPECT_TRUE(desk::fs::exists(Sync("2.eml")));
  EXPECT_FALSE(desk::fs::exists(Sync("3.eml")));
  EXPECT_THAT(Done({"show", Sync("6.eml").string()}),
              AllOf(HasSubstr("To:            Kim <kim@home.example>, Tom Smith <tom@example.org>, 李明"),
                    HasSubstr("\nPlease bring the red folder.\n")));
}

TEST_F(Mail, OnTheSamePhoneARecoverAddsNothing) {
  const json before = Records(Sync("mailhead.tbl"));
  const std::set<std::string> files = Names(Phone() / "dbdata" / "mail" / "file");
  EXPECT_THAT(Recover({"--local"}).out, HasSubstr("result     0x00000000 success\n"));
  EXPECT_TRUE(desk::fs::is_empty(Phone() / "sync"));
  ASSERT_EQ(Export().status, 0);
  EXPECT_EQ(Records(Sync("mailhead.tbl")), before);
  EXPECT_EQ(Names(Phone() / "dbdata" / "mail" / "file"), files);
  EXPECT_EQ(Records(Sync("mailfilter.tbl")).size(), 6u);
  EXPECT_EQ(Records(Sync("mailuidl.tbl")).size(), 10u);
}

TEST_F(Mail, OnAnotherPhoneAllMessagesArrive) {
  CreateOther();
  EXPECT_THAT(RecoverOther({"--local"}), AllOf(HasSubstr("e-mail recover: success"),
                                               HasSubstr("0x0000000e success: 14 messages handed to the store")));
  EXPECT_TRUE(desk::fs::is_empty(Other() / "sync"));
  Done({"export", "e-mail", "--handset", Other().string()});
  EXPECT_EQ(Messages(Other()), Messages(Phone()));
  std::set<std::string> files = Names(Phone() / "dbdata" / "mail" / "file");
  files.insert("2.eml");  // The card does not travel.
  EXPECT_EQ(Names(Other() / "dbdata" / "mail" / "file"), files);
  for (const std::string& file : files) {
    const path card = file == "2.eml" ? "SD" : "dbdata";
    EXPECT_EQ(desk::Contents(Other() / "dbdata" / "mail" / "file" / file),
              desk::Contents(Phone() / card / "mail" / "file" / file));
  }
}

TEST_F(Mail, ADesktopIsToldNothingOfThem) {
  CreateOther();
  EXPECT_THAT(RecoverOther(), HasSubstr("This entry point reports success for the module whatever happened."));
}

TEST_F(Mail, AnAccountThatGetsAnotherIdArrivesWithoutItsMessages) {
  CreateOther();
  const std::string database = (Other() / "Windows" / "handset.db").string();
  ASSERT_EQ(std::system((QV_SQLITE_SHELL " " + database +
                         " \"DELETE FROM mail_accounts; INSERT INTO settings VALUES ('next_mail_account_id', 9)\"")
                            .c_str()),
            0);
  EXPECT_THAT(RecoverOther({"--local"}), HasSubstr("success: 10 messages handed to the store"));
  Done({"export", "e-mail", "--handset", Other().string()});
  std::map<int, int> folders, messages;
  for (const json& folder : Records(Other() / "sync" / "mailfolder.tbl")) ++folders[folder["account_id"]];
  for (const json& message : Messages(Other())) ++messages[message["account_id"]];
  EXPECT_EQ(folders, (std::map<int, int>{{2, 6}, {9, 6}}));
  EXPECT_EQ(messages, (std::map<int, int>{{2, 10}}));
}

TEST_F(Mail, CreateMakesAsManyAsItIsAsked) {
  EXPECT_THAT(Done({"create", At("more").string(), "--e-mails", "1"}), HasSubstr(" 1 e-mails,"));
  EXPECT_EQ(Names(At("more") / "dbdata" / "mail" / "file"), (std::set<std::string>{"1.eml"}));
}

}  // namespace
