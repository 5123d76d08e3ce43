// Messages and calls at the desktop's end: times, blocks and configurations shown and encoded, and the sample phone's
// data there and back.
#include <nlohmann/json.hpp>
#include <set>

#include "tests/qvdesk/desk.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class MessageFiles : public desk::DeskTest {
 protected:
  void Encode(const std::string& form, const std::string& text) const {
    desk::Write(At("in.json"), text);
    Done({"encode", form, At("in.json").string(), At(form).string()});
  }
  std::string EncodingError(const std::string& form, const std::string& text) const {
    desk::Write(At("in.json"), text);
    const desk::Outcome outcome = Run({"encode", form, At("in.json").string(), At("out").string()});
    EXPECT_EQ(outcome.status, 1);
    return outcome.err;
  }
  std::string Show(const std::string& form, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"show", At(form).string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Done(arguments);
  }
  json Json(const std::string& form) const { return json::parse(Show(form, {"--format", "json"})); }
};

TEST_F(MessageFiles, TimesAreSixNumbersInJsonAndReadAsATime) {
  Encode("callinfo.tbl", R"([{"call_id":1,"time":[2006,1,5,9,3,7],"number":"110"},{"call_id":2,"number":"120"}])");
  EXPECT_THAT(Show("callinfo.tbl"), HasSubstr("2006-01-05 09:03:07"));
  EXPECT_THAT(Show("callinfo.tbl"), Not(HasSubstr("0000-00-00")));
  EXPECT_THAT(Show("callinfo.tbl", {"--all-fields"}), HasSubstr("2006-01-05 09:03:07"));
  EXPECT_EQ(Json("callinfo.tbl")["records"][0]["time"], json({2006, 1, 5, 9, 3, 7}));
  EXPECT_EQ(Json("callinfo.tbl")["records"][1]["time"], json({0, 0, 0, 0, 0, 0}));
}

TEST_F(MessageFiles, WhatIsNoTimeIsRefused) {
  for (const char* const time : {"[2006,1,5]", "\"2006\"", "[2006,1,5,9,3,-7]", "[2006,1,5,9,3,4294967296]"}) {
    EXPECT_THAT(EncodingError("callinfo.tbl", R"([{"time":)" + std::string(time) + "}]"),
                HasSubstr("\"time\" takes year, month, day, hour, minute and second as [2026,"));
  }
}

TEST_F(MessageFiles, BlocksAreHexAndTextIsText) {
  Encode("mmsinfo.tbl", R"([{"message_id":1,"text":"你好","data":"00ff10"},{"message_id":2}])");
  EXPECT_EQ(desk::fs::file_size(At("mmsinfo.tbl")), 24u + 6 + 3 + 24);
  EXPECT_THAT(Show("mmsinfo.tbl"), AllOf(HasSubstr("你好"), HasSubstr("3 bytes"), HasSubstr("2 records")));
  const json records = Json("mmsinfo.tbl")["records"];
  EXPECT_EQ(records[0]["text"], "你好");
  EXPECT_EQ(records[0]["text_length"], 6);
  EXPECT_EQ(records[0]["data"], "00ff10");
  EXPECT_EQ(records[1]["text"], "");
  EXPECT_EQ(records[1]["data"], "");
}

TEST_F(MessageFiles, TextThatNobodyCanReadIsItsLengthAndHex) {
  Encode("mmsinfo.tbl", R"([{"text":{"hex":"c4e3"}},{"text":"a\u0007b"}])");
  EXPECT_THAT(Show("mmsinfo.tbl"), AllOf(HasSubstr("2 bytes"), HasSubstr("3 bytes")));
  EXPECT_EQ(Json("mmsinfo.tbl")["records"][0]["text"], json({{"hex", "c4e3"}}));
  EXPECT_EQ(Json("mmsinfo.tbl")["records"][1]["text"], json({{"hex", "610762"}}));
}

TEST_F(MessageFiles, BlocksThatAreNoneAreRefused) {
  EXPECT_THAT(EncodingError("mmsinfo.tbl", R"([{"data":[1,2]}])"), HasSubstr("\"data\" takes a string of hexadecimal"));
  EXPECT_THAT(EncodingError("mmsinfo.tbl", R"([{"text":5}])"), HasSubstr("\"text\" takes a string, or {\"hex\""));
  EXPECT_THAT(EncodingError("mmsinfo.tbl", R"([{"text":"abc","text_length":2}])"), HasSubstr("has 3 bytes; leave it"));
}

TEST_F(MessageFiles, ALengthBelowZeroComesBackAsItWas) {
  Encode("mmsinfo.tbl", R"([{"data_length":4294967291,"text":"a"}])");
  const std::string bytes = desk::Contents(At("mmsinfo.tbl"));
  EXPECT_EQ(bytes.substr(20),
            "\xFB\xFF\xFF\xFF"
            "a");
  Encode("mmsinfo.tbl", Show("mmsinfo.tbl", {"--format", "json"}));
  EXPECT_EQ(desk::Contents(At("mmsinfo.tbl")), bytes);
}

TEST_F(MessageFiles, AFileThatEndsInsideABlockSaysWhere) {
  Encode("mmsinfo.tbl", R"([{"text":"abcdef"}])");
  desk::fs::resize_file(At("mmsinfo.tbl"), 27);
  const desk::Outcome outcome = Run({"show", At("mmsinfo.tbl").string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("the file ends inside \"text\": 3 of its 6 bytes are there"));
}

constexpr char kConfig[] = R"({"sections":[{"name":"configuration folder","records":[
    {"folder_id":5,"name":"Inbox"},{"folder_id":6,"name":"家人"}]},
    {"name":"configuration section 2","records":[{"text_4":"110","time":[2006,1,5,9,3,7]}]}]})";

TEST_F(MessageFiles, SectionsAreShownOneByOne) {
  Encode("smsconf.tbl", kConfig);
  EXPECT_EQ(desk::fs::file_size(At("smsconf.tbl")), 40u + 188 + 2 * 128);
  EXPECT_THAT(
      Show("smsconf.tbl"),
      AllOf(HasSubstr("configuration section 1: 0 records\n"), HasSubstr("configuration section 2: 1 record\n"),
            HasSubstr("2006-01-05 09:03:07"), HasSubstr("configuration folder: 2 records\n"), HasSubstr("家人")));
  const json sections = Json("smsconf.tbl")["sections"];
  ASSERT_EQ(sections.size(), 5u);
  EXPECT_EQ(sections[3]["records"][1]["folder_id"], 6);
}

TEST_F(MessageFiles, SectionsComeBackByteForByte) {
  Encode("smsconf.tbl", kConfig);
  const std::string bytes = desk::Contents(At("smsconf.tbl"));
  Encode("smsconf.tbl", Show("smsconf.tbl", {"--format", "json"}));
  EXPECT_EQ(desk::Contents(At("smsconf.tbl")), bytes);
}

TEST_F(MessageFiles, DamagedSectionsAreShownAsFarAsTheyGo) {
  Encode("smsconf.tbl", kConfig);
  const std::string bytes = desk::Contents(At("smsconf.tbl"));
  const std::vector<std::pair<std::string, const char*>> damaged = {
      {bytes.substr(0, 39), "the file ends inside its header: 39 of 40 bytes are there"},
      {bytes.substr(0, bytes.size() - 1), "inside the section \"configuration folder\": 1 of 2 records are there"},
      {bytes + "xy", "2 bytes lie behind the last section"},
  };
  for (const auto& [contents, damage] : damaged) {
    desk::Write(At("smsconf.tbl"), contents);
    const desk::Outcome outcome = Run({"show", At("smsconf.tbl").string()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr(damage));
    EXPECT_THAT(outcome.out, HasSubstr("configuration section 1"));
  }
}

TEST_F(MessageFiles, SectionsThatAreNoneAreRefused) {
  EXPECT_THAT(EncodingError("smsconf.tbl", R"([{"name":"folders","records":[]}])"),
              HasSubstr("\"folders\": there is no such section"));
  EXPECT_THAT(EncodingError("smsconf.tbl", R"([{"name":"configuration folder"}])"), HasSubstr("has no list"));
  EXPECT_THAT(EncodingError("smsconf.tbl", R"([{"name":"configuration folder","records":[{"nome":"x"}]}])"),
              HasSubstr("section \"configuration folder\", record 1: a configuration folder has no field \"nome\""));
}

TEST_F(MessageFiles, ABlockOfAFileIsHexAndItsLength) {
  Encode("mmsconf.tbl", R"({"hex":"0001ff"})");
  EXPECT_EQ(desk::Contents(At("mmsconf.tbl")), std::string("\0\1\xFF", 3));
  EXPECT_THAT(Show("mmsconf.tbl"), HasSubstr("3 bytes"));
  EXPECT_EQ(Json("mmsconf.tbl")["hex"], "0001ff");
  EXPECT_THAT(EncodingError("mmsconf.tbl", "[]"), HasSubstr("expected {\"hex\""));
}

/// A phone with the sample messages and calls.
class Messages : public MessageFiles {
 protected:
  Messages() { CreatePhone(); }

  void Use(const char* module) { module_ = module; }
  json Records(const char* file) const {
    return json::parse(Done({"show", Sync(file).string(), "--format", "json"}))["records"];
  }
  void EncodeForPhone(const std::string& form, const std::string& text) const {
    Encode(form, text);
    desk::fs::rename(At(form), Sync(form));
  }
  /// The records without what a recover changes.
  static json Without(json records, std::initializer_list<const char*> fields) {
    for (auto& record : records) {
      for (const char* const field : fields) record.erase(field);
    }
    return records;
  }
  void ExpectRoundTrip(const char* file) const {
    Encode(file, Done({"show", Sync(file).string(), "--format", "json"}));
    EXPECT_GT(desk::fs::file_size(At(file)), 0u) << file;
    EXPECT_TRUE(desk::Contents(At(file)) == desk::Contents(Sync(file))) << file;
  }
};

TEST_F(Messages, CreateSaysWhatIsOnThePhone) {
  EXPECT_THAT(Done({"create", At("other").string(), "--messages", "7", "--mms", "2", "--calls", "5"}),
              HasSubstr("7 short messages, 2 multimedia messages, 5 calls,"));
}

TEST_F(Messages, SampleMessagesAreInSeveralFoldersAndLanguages) {
  Use("sms");
  ASSERT_EQ(Export().status, 0);
  EXPECT_THAT(Done({"show", Sync("smsinfo.tbl").string()}),
              AllOf(HasSubstr("Lunch"), HasSubstr("吃饭"), HasSubstr("60 records")));
  EXPECT_THAT(Done({"show", Sync("smsconf.tbl").string()}), AllOf(HasSubstr("Inbox"), HasSubstr("家人")));
  std::set<int> folders;
  for (const json& message : Records("smsinfo.tbl")) folders.insert(int{message["folder_id"]});
  EXPECT_EQ(folders, (std::set{1, 2, 3, 4, 5}));
}

TEST_F(Messages, EveryFileOfAnExportComesBackByteForByte) {
  for (const char* const module : {"sms", "mms", "call-history"}) {
    Use(module);
    ASSERT_EQ(Export().status, 0);
  }
  for (const char* const file : {"smsinfo.tbl", "smsconf.tbl", "mmsinfo.tbl", "mmsconf.tbl", "callinfo.tbl"}) {
    ExpectRoundTrip(file);
  }
}

TEST_F(Messages, AllComesBackAsItWas) {
  const std::vector<std::pair<const char*, const char*>> tables = {
      {"sms", "smsinfo.tbl"}, {"mms", "mmsinfo.tbl"}, {"call-history", "callinfo.tbl"}};
  for (const auto& [module, table] : tables) {
    Use(module);
    ASSERT_EQ(Export().status, 0);
    const json before = Without(Records(table), {"message_id", "call_id"});
    const desk::Outcome outcome = Recover({"--mode", "replace"});
    ASSERT_EQ(outcome.status, 0) << outcome.out;
    ASSERT_EQ(Export().status, 0);
    EXPECT_EQ(Without(Records(table), {"message_id", "call_id"}), before) << module;
  }
}

TEST_F(Messages, EditsInTheShellAreInTheNextIncrementalExport) {
  const std::vector<std::array<const char*, 4>> edits = {
      {"sms", "UPDATE sms_messages SET body = 'Edited' WHERE id = 3", "smsinfo.tbl", "Edited"},
      {"mms", "UPDATE mms_messages SET text = 'Edited' WHERE id = 3", "mmsinfo.tbl", "Edited"},
      {"call-history", "UPDATE calls SET name = 'Edited' WHERE id = 3", "callinfo.tbl", "Edited"}};
  for (const auto& [module, sql, table, text] : edits) {
    Use(module);
    ASSERT_EQ(Export().status, 0);
    Edit(sql);
    ASSERT_EQ(Export({"--mode", "incremental"}).status, 0);
    EXPECT_THAT(Done({"show", Sync(table).string()}), AllOf(HasSubstr(text), HasSubstr("1 record of"))) << module;
  }
}

TEST_F(Messages, ARecoverPutsMessagesIntoTheFoldersOfTheSameName) {
  Use("sms");
  ASSERT_EQ(Export().status, 0);
  EncodeForPhone("smsconf.tbl", R"([{"name":"configuration folder","records":[
      {"folder_id":71,"name":"Inbox"},{"folder_id":1,"name":"家人"},{"folder_id":73,"name":"From the desktop"}]}])");
  EncodeForPhone("smscmd.tbl", R"([{"id":9001,"operation":"new"},{"id":9002,"operation":"new"},
                                   {"id":9003,"operation":"new"},{"id":9004,"operation":"new"}])");
  EncodeForPhone("smsinfo.tbl", R"([{"message_id":9001,"folder_id":71,"body":"a"},
      {"message_id":9002,"folder_id":1,"body":"b"},{"message_id":9003,"folder_id":73,"body":"c"},
      {"message_id":9004,"folder_id":99,"body":"d"}])");
  const desk::Outcome outcome = Recover({"--mode", "incremental"});
  ASSERT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_EQ(Records("smsmap.tbl").size(), 4u);
  ASSERT_EQ(Export().status, 0);
  std::vector<int> folders;
  for (const json& message : Records("smsinfo.tbl")) {
    if (int{message["message_id"]} > 60) folders.push_back(message["folder_id"]);
  }
  EXPECT_EQ(folders, (std::vector{1, 4, 6, 1}));
}

}  // namespace
