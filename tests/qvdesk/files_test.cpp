// Files shown and encoded: every kind, both formats, and what is left of damaged ones.
#include <nlohmann/json.hpp>

#include "tests/qvdesk/desk.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Files : public desk::DeskTest {
 protected:
  Files() { CreatePhone("40"); }

  desk::fs::path Kept(const std::string& file) const { return Phone() / "dbdata" / "sysconfig" / file; }

  /// Makes all kinds of files: a recover for the id map, an export for the rest.
  void MakeFiles() const {
    EXPECT_EQ(Export().status, 0);
    EXPECT_EQ(Recover().status, 0);
    EXPECT_EQ(Export().status, 0);
    for (const char* const table : {"schedule.tbl", "schedulegroup.tbl"}) desk::fs::copy(Sync(table), At(table));
    EXPECT_EQ(Recover().status, 0);  // twice the records: an incremental export has something to say
    desk::fs::remove(Kept("schedule.log"));
    desk::Write(Kept("schedule.log"), std::string(12, '\1'));
    EXPECT_EQ(Export({"--mode", "incremental"}).status, 0);
  }

  std::string Json(const desk::fs::path& file) const { return Done({"show", file.string(), "--format", "json"}); }

  void ExpectRoundTrip(const desk::fs::path& file) const {
    desk::Write(At("shown.json"), Json(file));
    Done({"encode", file.filename().string(), At("shown.json").string(), At("encoded").string()});
    EXPECT_FALSE(desk::Contents(file).empty()) << file;
    EXPECT_TRUE(desk::Contents(file) == desk::Contents(At("encoded"))) << file;
  }

  desk::Outcome Show(const std::string& name, const std::string& contents, const std::string& format = "table") const {
    desk::Write(At(name), contents);
    return Run({"show", At(name).string(), "--format", format});
  }
};

TEST_F(Files, EveryFileThatTheAgentWroteComesBackByteForByte) {
  MakeFiles();
  for (const char* const file : {"schedule.tbl", "schedcmd.tbl", "schedmap.tbl"}) {
    ExpectRoundTrip(Sync(file));
  }
  for (const char* const file : {"schedule.log", "schegroup.log", "qvSyncAnchor.ini"}) ExpectRoundTrip(Kept(file));
  for (const char* const file : {"schedule.tbl", "schedulegroup.tbl"}) ExpectRoundTrip(At(file));
}

TEST_F(Files, TableShowsWhatTellsRecordsApart) {
  EXPECT_EQ(Export().status, 0);
  const std::string table = Done({"show", Sync("schedule.tbl").string()});
  EXPECT_THAT(table, AllOf(HasSubstr("entry_id"), HasSubstr("start"), HasSubstr("2026-"), HasSubstr("项目会议"),
                           HasSubstr("item_80s"), HasSubstr("40 records of the form \"schedule.tbl\"")));
  EXPECT_THAT(table, Not(HasSubstr("value_468")));
  EXPECT_THAT(Done({"show", Sync("schedulegroup.tbl").string()}), AllOf(HasSubstr("Work"), HasSubstr("Family")));
}

TEST_F(Files, AllFieldsShowsEachFieldOnALine) {
  EXPECT_EQ(Export().status, 0);
  const std::string text = Done({"show", Sync("schedule.tbl").string(), "--all-fields"});
  EXPECT_THAT(text, AllOf(HasSubstr("record 40\n"), HasSubstr("  value_468            0\n"), HasSubstr("item_80[0] ")));
}

TEST_F(Files, BookkeepingFilesReadInWords) {
  MakeFiles();
  EXPECT_THAT(Done({"show", Sync("schedcmd.tbl").string()}), AllOf(HasSubstr("new"), HasSubstr("deleted")));
  EXPECT_THAT(Done({"show", Sync("schedmap.tbl").string()}), HasSubstr("incoming_id"));
  EXPECT_THAT(Done({"show", Kept("schegroup.log").string()}), AllOf(HasSubstr("modified"), HasSubstr("UTC")));
  EXPECT_THAT(Done({"show", Kept("qvSyncAnchor.ini").string()}),
              AllOf(HasSubstr("[ANCHORDATE]"), HasSubstr("SCHEDULE")));
}

TEST_F(Files, JsonHoldsEveryFieldWithItsValueAndReadableTimes) {
  MakeFiles();
  const auto table = nlohmann::json::parse(Json(At("schedule.tbl")));
  EXPECT_EQ(table["form"], "schedule.tbl");
  EXPECT_EQ(table["records"].size(), 80u);
  const auto& record = table["records"][0];
  EXPECT_TRUE(record["text_1"].is_string());
  EXPECT_EQ(record["start_year"], 2026);
  EXPECT_EQ(record["item_80"].size(), record["item_80_count"]);
  const auto log = nlohmann::json::parse(Json(Kept("schegroup.log")));
  EXPECT_THAT(std::string(log["records"][0]["reads"]["modified"]), HasSubstr("UTC"));
  const auto changes = nlohmann::json::parse(Json(Sync("schedcmd.tbl")));
  EXPECT_EQ(changes["records"][0]["reads"]["operation"], "new");
}

TEST_F(Files, NameIsRecognisedWithoutCaseAndAnyOtherNeedsAs) {
  desk::Write(At("SCHEDCMD.TBL"), std::string(12, '\0'));
  EXPECT_THAT(Done({"show", At("SCHEDCMD.TBL").string()}), HasSubstr("none"));
  desk::Write(At("saved"), std::string(12, '\0'));
  EXPECT_THAT(Done({"show", At("saved").string(), "--as", "id-map"}),
              AllOf(HasSubstr("new_id"), HasSubstr("1 record of the form \"id-map\"")));
}

TEST_F(Files, TornTableShowsWhatIsThereAndSaysWhereItEnds) {
  EXPECT_EQ(Export().status, 0);
  const std::string groups = desk::Contents(Sync("schedulegroup.tbl"));
  const desk::Outcome outcome = Show("schedulegroup.tbl", groups.substr(0, 288 + 100));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("Work"));
  EXPECT_THAT(outcome.err, HasSubstr("offset 288, record 2: the file ends inside the record: 100 of 288 bytes"));
  EXPECT_EQ(nlohmann::json::parse(Show("schedulegroup.tbl", groups.substr(0, 388), "json").out)["records"].size(), 2u);
}

TEST_F(Files, TornItemsAndAbsurdCountsAreNamed) {
  std::string record(912, '\0');
  record[449] = 2;
  EXPECT_THAT(Show("schedule.tbl", record + std::string(100, 'x')).err,
              HasSubstr("offset 0, record 1: the file ends inside item 2 of 2 items \"item_80\": 20 of its 80 bytes"));
  record[456] = '\xff';
  EXPECT_THAT(Show("schedule.tbl", record).err, HasSubstr("claims 255 items \"item_144\", but at most 44 can be"));
}

TEST_F(Files, EveryPieceOfATableCanBeShown) {
  EXPECT_EQ(Export().status, 0);
  const std::string table = desk::Contents(Sync("schedule.tbl")).substr(0, 2000);
  for (std::size_t size = 0; size < table.size(); size += 97) {
    const desk::Outcome outcome = Show("schedule.tbl", table.substr(0, size), size % 2 == 0 ? "table" : "json");
    EXPECT_THAT(outcome.status, testing::AnyOf(0, 1)) << size;
  }
}

TEST_F(Files, ControlCharactersNeverReachTheTerminal) {
  std::string group(288, '\0');
  group[46] = 27;  // ESC
  group[48] = '[';
  group[50] = '\x9b';  // the one-character form of the same
  for (const char* const format : {"table", "json"}) {
    const desk::Outcome outcome = Show("schedulegroup.tbl", group, format);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, AllOf(HasSubstr("\\u001b[\\u009b"), Not(HasSubstr("\033")), Not(HasSubstr("\xc2\x9b"))));
  }
  ExpectRoundTrip(At("schedulegroup.tbl"));
}

TEST_F(Files, TextThatIsNoTextSurvivesAsBytes) {
  std::string group(288, '\0');
  group[46] = 'A';
  group[49] = '\xd8';  // an unpaired surrogate
  group[52] = 'B';     // behind the NUL
  const desk::Outcome outcome = Show("schedulegroup.tbl", group);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("A\xEF\xBF\xBD"));
  EXPECT_THAT(Json(At("schedulegroup.tbl")), HasSubstr("\"name\":{\"hex\":\"410000d8"));
  ExpectRoundTrip(At("schedulegroup.tbl"));
}

TEST_F(Files, EncodingRefusesWhatAFieldCannotHold) {
  const std::vector<std::pair<const char*, const char*>> mistakes = {
      {R"([{"entry_id": 1}, {"titel": "x"}])", "record 2: a schedule entry has no field \"titel\""},
      {R"([{"byte_447": 256}])", "\"byte_447\" takes a number from 0 to 255, not 256"},
      {R"([{"entry_id": -1}])", "\"entry_id\" takes a number from 0"},
      {R"([{"text_1": "1234567890123456789012345678901"}])", "\"text_1\" takes at most 30 characters"},
      {R"([{"text_1": 5}])", "\"text_1\" takes a string"},
      {R"([{"repeat_bytes_868": "00"}])", "takes 7 bytes in hexadecimal digits, not 1"},
      {R"([{"item_80": ["00"]}])", "takes 80 bytes"},
      {R"([{"item_80": [], "item_80_count": 3}])", "\"item_80_count\" is 3, but \"item_80\" has 0 items"},
      {R"([5])", "a record is an object"},
      {R"({"entries": []})", "expected a list under \"records\""},
      {"[", "parse error"},
  };
  for (const auto& [json, message] : mistakes) {
    desk::Write(At("in.json"), json);
    const desk::Outcome outcome = Run({"encode", "schedule.tbl", At("in.json").string(), At("out.tbl").string()});
    EXPECT_EQ(outcome.status, 1) << json;
    EXPECT_THAT(outcome.err, HasSubstr(message)) << json;
    EXPECT_FALSE(desk::fs::exists(At("out.tbl"))) << json;
  }
}

TEST_F(Files, RecordsForAnIncrementalRecoverLieApartAndComeBack) {
  desk::Write(At("in.json"), R"([{"group_id": 7, "name": "Chess"}, {"group_id": 8, "name": "Choir"}])");
  const std::string table = At("schedulegroup.tbl").string();
  Done({"encode", "schedulegroup.tbl", At("in.json").string(), table, "--for-incremental"});
  const std::string bytes = desk::Contents(table);
  EXPECT_EQ(bytes.size(), 2u * 10332);
  EXPECT_EQ(bytes[10332], 8);
  EXPECT_EQ(bytes.substr(288, 10332 - 288), std::string(10332 - 288, '\0'));
  EXPECT_THAT(Done({"show", table, "--for-incremental"}), AllOf(HasSubstr("Choir"), HasSubstr("2 records of")));
  desk::Write(table, bytes.substr(0, 10332 + 100));
  EXPECT_THAT(Run({"show", table, "--for-incremental"}).err, HasSubstr("offset 10332, record 2: the file ends inside"));
}

TEST_F(Files, FormsThatAreReadTheSameInEveryModeAreEncodedTheSame) {
  desk::Write(At("in.json"), R"([{"entry_id": 7}, {"entry_id": 8}])");
  const desk::Outcome outcome = Run({"encode", "schedule.tbl", At("in.json").string(), At("plain").string()});
  EXPECT_EQ(outcome.err, "");
  Done({"encode", "schedule.tbl", At("in.json").string(), At("option").string(), "--for-incremental"});
  EXPECT_TRUE(desk::Contents(At("plain")) == desk::Contents(At("option")));
}

TEST_F(Files, DeeplyNestedJsonIsRefused) {
  desk::Write(At("in.json"), std::string(200'000, '[') + std::string(200'000, ']'));
  const desk::Outcome outcome = Run({"encode", "schedule.tbl", At("in.json").string(), At("out").string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("in.json: lists and objects lie more than 16 deep within each other"));
}

TEST_F(Files, AnchorFileThatIsNotUtf8ComesBackByteForByte) {
  const desk::fs::path file = At("qvSyncAnchor.ini");
  desk::Write(file, "[ANCHORDATE]\r\nSCHEDULE = 2006\xff\r\n\xc0\xaf\r\n\r\nK\xc3\xa9Y = \xe9\x9b\xaa\r\n");
  EXPECT_THAT(Json(file), AllOf(HasSubstr("{\"hex\":\"c0af\"}"), HasSubstr("\"key\":\"K\xc3\xa9Y\"")));
  ExpectRoundTrip(file);
  EXPECT_THAT(Done({"show", file.string()}), HasSubstr("SCHEDULE = 2006\xEF\xBF\xBD"));
}

TEST_F(Files, AnchorLinesThatAreNoneAreNamed) {
  for (const char* const line : {"\"x\"", "{}", "{\"key\": \"K\"}", "{\"text\": 5}"}) {
    desk::Write(At("in.json"), R"({"lines": [{"text": "a"}, )" + std::string(line) + "]}");
    const desk::Outcome outcome = Run({"encode", "anchors", At("in.json").string(), At("out").string()});
    EXPECT_EQ(outcome.status, 1) << line;
    EXPECT_THAT(outcome.err, HasSubstr("in.json: line 2: takes {\"section\"}, {\"key\", \"value\"}")) << line;
  }
}

TEST_F(Files, WhatCannotBeReadIsNamedWithTheReason) {
  EXPECT_THAT(Run({"show", Phone().string(), "--as", "anchors"}).err, HasSubstr("phone: it cannot be read: Is a dir"));
  const desk::Outcome outcome = Run({"show", "/proc/self/mem", "--as", "anchors"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("/proc/self/mem: it cannot be read: Input/output error"));
}

TEST_F(Files, FileThatIsNotThereIsNamed) {
  const desk::Outcome outcome = Run({"show", At("schedule.tbl").string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("schedule.tbl: it cannot be opened: No such file"));
}

}  // namespace
