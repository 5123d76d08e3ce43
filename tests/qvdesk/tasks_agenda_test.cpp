// Tasks and the agenda at the desktop's end: items with and without fields of their own, and the sample phone's data
// shown, edited, and carried there and back.
#include "tests/qvdesk/two_phones.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

const desk::Module kTasks = {"tasks", {"taskinfo.tbl", "taskgroup.tbl"}};
const desk::Module kAgenda = {"agenda", {"agenda.tbl", "agendagroup.tbl"}};

class TasksAgendaFiles : public desk::TwoPhones {
 protected:
  static std::size_t NumberAt(const std::string& bytes, std::size_t offset) {
    return static_cast<std::uint8_t>(bytes[offset]);
  }
};

constexpr char kEntry[] = R"([{"entry_id":7,"title":"议程","item":[{"byte_0":5,"value_12":9,"text":"ab"}],
                               "long_item":[{"type":2},{"type":9}]}])";

TEST_F(TasksAgendaFiles, AnAgendaEntryIsItsFixedPartItsItemsTheNumberOfTheLongOnesAndThese) {
  const std::string bytes = Encoded("agenda.tbl", kEntry);
  ASSERT_EQ(bytes.size(), 288u + 80 + 4 + 2 * 3928);
  EXPECT_EQ(NumberAt(bytes, 0), 7u);
  EXPECT_EQ(bytes.substr(8, 4), "\xAE\x8B\x0B\x7A");
  EXPECT_EQ(NumberAt(bytes, 247), 1u);
  EXPECT_EQ(NumberAt(bytes, 288), 5u);
  EXPECT_EQ(NumberAt(bytes, 288 + 12), 9u);
  EXPECT_EQ(bytes.substr(288 + 16, 4), std::string("a\0b\0", 4));
  EXPECT_EQ(bytes.substr(368, 4), std::string("\2\0\0\0", 4));
  EXPECT_EQ(NumberAt(bytes, 372), 2u);
  EXPECT_EQ(NumberAt(bytes, 372 + 3928), 9u);
}

TEST_F(TasksAgendaFiles, ItemsOfTheAgendaAreShownFieldByField) {
  const std::string bytes = Encoded("agenda.tbl", kEntry);
  const std::string shown = ShowJson(At("agenda.tbl"));
  const json entry = json::parse(shown)["records"][0];
  EXPECT_EQ(entry["item"][0]["text"], "ab");
  EXPECT_EQ(entry["long_item"][1]["type"], 9);
  EXPECT_EQ(entry["long_item"][1]["bytes_4"].get<std::string>().size(), 2u * 3924);
  EXPECT_THAT(Done({"show", At("agenda.tbl").string(), "--all-fields"}),
              AllOf(HasSubstr("  item[0].text         ab\n"), HasSubstr("  long_item[1].type    9\n"),
                    HasSubstr("  long_item[1].bytes_4 3924 bytes\n")));
  EXPECT_THAT(Done({"show", At("agenda.tbl").string()}), AllOf(HasSubstr("议程"), HasSubstr("1 record of")));
  EXPECT_TRUE(Encoded("agenda.tbl", shown) == bytes);
}

TEST_F(TasksAgendaFiles, AnEntryWithoutItemsEndsWithANumber) {
  EXPECT_EQ(Encoded("agenda.tbl", R"([{}])"), std::string(288 + 4, '\0'));
}

TEST_F(TasksAgendaFiles, WhatIsNoItemIsRefused) {
  EXPECT_THAT(EncodingError("agenda.tbl", R"([{"item":[{"texts":"a"}]}])"),
              HasSubstr("record 1: an item of \"item\": a agenda item has no field \"texts\""));
  EXPECT_THAT(EncodingError("agenda.tbl", R"([{"item":["a"]}])"), HasSubstr("an item of \"item\": a record is an obj"));
  EXPECT_THAT(EncodingError("agenda.tbl", R"([{"item":[{"byte_0":256}]}])"),
              HasSubstr("an item of \"item\": \"byte_0\" takes a number from 0 to 255, not 256"));
  EXPECT_THAT(EncodingError("agenda.tbl", R"([{"item_count":2,"item":[{}]}])"),
              HasSubstr("\"item_count\" is 2, but \"item\" has 1 items"));
  EXPECT_THAT(EncodingError("agenda.tbl", json::array({{{"long_item", json(51, json::object())}}}).dump()),
              HasSubstr("\"long_item\" takes an array of at most 50 items"));
  EXPECT_THAT(EncodingError("taskinfo.tbl", json::array({{{"item_6476", json(5, "")}}}).dump()),
              HasSubstr("\"item_6476\" takes an array of at most 4 items"));
}

TEST_F(TasksAgendaFiles, DamageInsideTheItemsIsSaidWhere) {
  const std::string bytes = Encoded("agenda.tbl", kEntry);
  EXPECT_THAT(Damage("agenda.tbl", bytes.substr(0, 287)), HasSubstr("287 of 288 bytes are there"));
  EXPECT_THAT(Damage("agenda.tbl", bytes.substr(0, 288 + 79)), HasSubstr("item 1 of 1 items \"item\": 79 of its 80"));
  EXPECT_THAT(Damage("agenda.tbl", bytes.substr(0, 288 + 80 + 3)),
              HasSubstr("inside the number of items \"long_item\": 3 of its 4 bytes are there"));
  EXPECT_THAT(Damage("agenda.tbl", bytes.substr(0, bytes.size() - 1)),
              HasSubstr("item 2 of 2 items \"long_item\": 3927 of its 3928 bytes are there"));
  std::string many = bytes;
  many[368] = 51;
  EXPECT_THAT(Damage("agenda.tbl", many), HasSubstr("claims 51 items \"long_item\", but at most 50 can be"));
  many[371] = '\xFF';
  EXPECT_THAT(Damage("agenda.tbl", many), HasSubstr("claims 4278190131 items \"long_item\""));
  many[247] = 21;
  EXPECT_THAT(Damage("agenda.tbl", many), HasSubstr("claims 21 items \"item\", but at most 20 can be"));
}

TEST_F(TasksAgendaFiles, ATaskIsItsFixedPartAndItsItemsOfThreeKinds) {
  const std::string item_80(160, 'a'), item_144(288, 'b'), item_6476(2 * 6476, 'c');
  const json task = {
      {"task_id", 7}, {"item_80", {item_80}}, {"item_144", {item_144, item_144}}, {"item_6476", {item_6476}}};
  const std::string bytes = Encoded("taskinfo.tbl", json::array({task}).dump());
  ASSERT_EQ(bytes.size(), 856u + 80 + 2 * 144 + 6476);
  EXPECT_EQ(NumberAt(bytes, 449), 1u);
  EXPECT_EQ(NumberAt(bytes, 456), 2u);
  EXPECT_EQ(NumberAt(bytes, 457), 1u);
  EXPECT_EQ(NumberAt(bytes, 856), 0xAAu);
  EXPECT_EQ(NumberAt(bytes, 936), 0xBBu);
  EXPECT_EQ(NumberAt(bytes, 936 + 2 * 144), 0xCCu);
  EXPECT_THAT(Damage("taskinfo.tbl", bytes.substr(0, bytes.size() - 1)),
              HasSubstr("inside item 1 of 1 items \"item_6476\": 6475 of its 6476 bytes are there"));
}

TEST_F(TasksAgendaFiles, ItemsWithFieldsAreDescribed) {
  EXPECT_THAT(Done({"describe", "formats"}),
              AllOf(HasSubstr("| long_item | fields, below | 3928 | in front of them | 4 | 50 |  |\n"),
                    HasSubstr("| item | fields, below | 80 | 247 | 1 | 20 | 204 |\n"),
                    HasSubstr("An item item, of 80 bytes, in the store 208:\n"),
                    HasSubstr("| 16 | 64 | text | text | 16 |\n")));
  EXPECT_THAT(Done({"describe", "layouts"}),
              AllOf(HasSubstr("count in front, 50 slots of \"agenda long item\" elsewhere in the store\n"),
                    HasSubstr("\nagenda item: store 208 bytes, exchange 80 bytes\n")));
}

/// A phone with sample tasks and agenda.
class TasksAgenda : public TasksAgendaFiles {
 protected:
  TasksAgenda() { CreatePhone("0"); }

  /// Records with their group's bytes instead of its id, and without their own.
  static json WithGroups(json records, const json& groups, const char* id) {
    for (auto& record : records) {
      for (const json& group : groups) {
        if (group["group_id"] == record["group_id"]) record["group"] = group["bytes_4"];
      }
      EXPECT_TRUE(record.contains("group"));
      record.erase("group_id");
      record.erase(id);
    }
    return records;
  }
  json TasksOf(const desk::fs::path& sync) const {
    return WithGroups(Records(sync / "taskinfo.tbl"), Records(sync / "taskgroup.tbl"), "task_id");
  }
  json AgendaOf(const desk::fs::path& sync) const {
    return WithGroups(Records(sync / "agenda.tbl"), Records(sync / "agendagroup.tbl"), "entry_id");
  }
};

TEST_F(TasksAgenda, CreateSaysWhatIsOnThePhone) {
  EXPECT_THAT(Done({"create", At("other").string(), "--tasks", "5", "--task-groups", "2", "--agenda-entries", "6",
                    "--agenda-groups", "1"}),
              HasSubstr("5 tasks in 2 groups, 6 agenda entries in 1 groups,"));
}

TEST_F(TasksAgenda, SampleTasksHaveItemsOfAllKindsAndGroups) {
  ExportOf(kTasks);
  EXPECT_THAT(ShowText("taskinfo.tbl"), AllOf(HasSubstr("item_80s"), HasSubstr("item_144s"), HasSubstr("item_6476s"),
                                              HasSubstr("15 records of")));
  EXPECT_THAT(ShowText("taskgroup.tbl"), HasSubstr("3 records of"));
}

TEST_F(TasksAgenda, SampleAgendaHasItemsOfBothKinds) {
  ExportOf(kAgenda);
  EXPECT_THAT(ShowText("agenda.tbl"), AllOf(HasSubstr("Weekly round"), HasSubstr("items"), HasSubstr("long_items"),
                                            HasSubstr("15 records of")));
  std::size_t items = 0, long_items = 0;
  for (const json& entry : Records("agenda.tbl")) {
    EXPECT_EQ(entry["item_count"], entry["item"].size());
    items += entry["item"].size();
    for (const json& item : entry["long_item"]) {
      ++long_items;
      EXPECT_TRUE(item["type"] >= 2 && item["type"] <= 9);
    }
  }
  EXPECT_GT(items, 5u);
  EXPECT_GT(long_items, 5u);
}

TEST_F(TasksAgenda, EveryFileOfAnExportComesBackByteForByte) {
  for (const desk::Module& module : {kTasks, kAgenda}) {
    ExportOf(module);
    ExpectRoundTrips(module);
  }
}

TEST_F(TasksAgenda, AllComesBackAsItWas) {
  ExportOf(kTasks);
  const json tasks = TasksOf(Sync(""));
  ASSERT_EQ(Recover().status, 0);
  EXPECT_EQ(Records("taskmap.tbl").size(), 15u + 3);
  ExportOf(kTasks);
  EXPECT_EQ(TasksOf(Sync("")), tasks);

  ExportOf(kAgenda);
  const json agenda = AgendaOf(Sync(""));
  ASSERT_EQ(Recover().status, 0);
  EXPECT_EQ(Records("agendamap.tbl").size(), 15u + 3);
  ExportOf(kAgenda);
  EXPECT_EQ(AgendaOf(Sync("")), agenda);
}

TEST_F(TasksAgenda, ASecondPhoneGetsAllAsItWas) {
  CreateSecond({"--tasks", "1", "--task-groups", "1", "--agenda-entries", "1", "--agenda-groups", "1"});
  ExportOf(kTasks);
  CarryToSecondPhone(kTasks);
  EXPECT_EQ(TasksOf(Second("")), TasksOf(Sync("")));
  ExportOf(kAgenda);
  CarryToSecondPhone(kAgenda);
  EXPECT_EQ(AgendaOf(Second("")), AgendaOf(Sync("")));
}

TEST_F(TasksAgenda, EditsInTheShellAreInTheNextIncrementalExport) {
  ExportOf(kTasks);
  Edit(
      "UPDATE tasks SET group_id = 2 WHERE id = 3; DELETE FROM tasks WHERE id = 1; "
      "UPDATE task_groups SET value_250 = 9 WHERE id = 1");
  ExportOf(kTasks, {"--mode", "incremental"});
  EXPECT_EQ(Without(Records("taskcmd.tbl"), {"reads"}),
            json::parse(R"([{"table":0,"id":3,"operation":2},{"table":0,"id":1,"operation":3},
                            {"table":1,"id":1,"operation":2}])"));
  EXPECT_EQ(Records("taskinfo.tbl").size(), 1u);

  ExportOf(kAgenda);
  Edit(
      "UPDATE agenda_entries SET title = 'Edited' WHERE id = 3; DELETE FROM agenda_groups WHERE id = 2; "
      "INSERT INTO agenda_long_items (entry_id, number, type) VALUES (5, 40, 3)");
  ExportOf(kAgenda, {"--mode", "incremental"});
  EXPECT_EQ(Without(Records("agendacmd.tbl"), {"reads"}),
            json::parse(R"([{"table":0,"id":3,"operation":2},{"table":0,"id":5,"operation":2},
                            {"table":1,"id":2,"operation":3}])"));
  const json entries = Records("agenda.tbl");
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]["title"], "Edited");
  EXPECT_EQ(entries[1]["long_item"].back()["type"], 3);
}

TEST_F(TasksAgenda, ChangesFromTheDesktopAreApplied) {
  ExportOf(kAgenda);
  EncodeTo("agendacmd.tbl", R"([{"table":1,"id":8001,"operation":"new"},{"id":9001,"operation":"new"},
                                {"id":4,"operation":"modified"},{"id":2,"operation":"deleted"}])",
           Sync("agendacmd.tbl"));
  EncodeTo("agendagroup.tbl", R"([{"group_id":8001}])", Sync("agendagroup.tbl"));
  EncodeTo("agenda.tbl", R"([{"entry_id":9001,"group_id":8001,"title":"New","long_item":[{"type":7}]},
                             {"entry_id":4,"title":"Changed"}])",
           Sync("agenda.tbl"));
  ASSERT_EQ(Recover({"--mode", "incremental"}).status, 0);
  EXPECT_EQ(Records("agendamap.tbl"), json::parse(R"([{"table":1,"new_id":4,"incoming_id":8001},
                                                      {"table":0,"new_id":16,"incoming_id":9001}])"));
  ExportOf(kAgenda);
  const json entries = Records("agenda.tbl");
  ASSERT_EQ(entries.size(), 15u);
  EXPECT_EQ(entries[2]["title"], "Changed");
  EXPECT_EQ(entries[14]["group_id"], 4);
  EXPECT_EQ(entries[14]["long_item"][0]["type"], 7);
}

TEST_F(TasksAgenda, AFailureOfTheAgendaIsToldInWordsAndOneOfTheTasksIsNot) {
  ExportOf(kAgenda);
  Edit("INSERT INTO settings VALUES ('agenda_add_refusal', 9), ('task_add_refusal', 9)");
  const desk::Outcome agenda = Recover();
  EXPECT_EQ(agenda.status, 1);
  EXPECT_THAT(agenda.out, HasSubstr("failed while applying the entries: the store refused to insert a record"));
  ExportOf(kTasks);
  const desk::Outcome tasks = Recover();
  EXPECT_EQ(tasks.status, 0);
  EXPECT_THAT(tasks.out, HasSubstr("This entry point reports success for the module whatever happened."));
  ExportOf(kTasks);
  EXPECT_EQ(Records("taskinfo.tbl").size(), 0u);
}

}  // namespace
