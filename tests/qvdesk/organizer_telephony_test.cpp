// Cards, memos, quick dials and the call filter at the desktop's end: the sample phone's data shown, encoded, edited,
// and carried to a second phone.
#include <map>

#include "tests/qvdesk/two_phones.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct Module : desk::Module {
  const char* main_records;  ///< In the database.
  const char* text;          ///< A column of theirs.
};

const Module kCards = {{"card-reader", {"cardreader.tbl"}}, "cards", "text_1"};
const Module kMemos = {{"graphic-memo", {"gmemoinfo.tbl"}}, "memos", "text_1"};
const Module kQuickDials = {{"quick-dial", {"Quickinfo.tbl"}}, "quick_dials", "text_1"};
const Module kCallFilter = {
    {"call-filter", {"redblistinfo.tbl", "redblistgroup.tbl", "redblistconfig.tbl"}}, "call_filter_entries", "text_1"};
const Module* const kModules[] = {&kCards, &kMemos, &kQuickDials, &kCallFilter};

class OrganizerTelephony : public desk::TwoPhones {
 protected:
  OrganizerTelephony() { CreatePhone("0"); }

  /// Without data of these kinds.
  void CreateSecondPhone() const {
    CreateSecond({"--cards", "0", "--memos", "0", "--quick-dials", "0", "--filters", "0"});
  }
  /// Entries of the call filter with their groups' names instead of the ids.
  static json WithGroupNames(json entries, const json& groups) {
    for (auto& entry : entries) {
      for (const auto& group : groups) {
        if (group["group_id"] == entry["group_id"]) entry["group_name"] = group["name"];
      }
      entry.erase("entry_id");
      entry.erase("group_id");
    }
    return entries;
  }
};

TEST_F(OrganizerTelephony, CreateSaysWhatIsOnThePhone) {
  EXPECT_THAT(
      Done({"create", At("other").string(), "--cards", "3", "--memos", "4", "--quick-dials", "5", "--filters", "6"}),
      HasSubstr("3 cards, 4 memos, 5 quick dials and 6 call filter entries"));
}

TEST_F(OrganizerTelephony, SampleCardsTellWhoIsWho) {
  ExportOf(kCards);
  EXPECT_THAT(ShowText("cardreader.tbl"),
              AllOf(HasSubstr("Anna Müller"), HasSubstr("王建国"), HasSubstr("东方贸易有限公司"), HasSubstr("经理"),
                    HasSubstr("+86 138"), HasSubstr("10 records"), Not(HasSubstr("text_12"))));
  for (const json& card : Records("cardreader.tbl")) EXPECT_NE(card["text_12"], "") << card;
}

TEST_F(OrganizerTelephony, SampleMemosHaveTwoTimes) {
  ExportOf(kMemos);
  EXPECT_THAT(ShowText("gmemoinfo.tbl"), AllOf(HasSubstr("time_1"), HasSubstr("2025-"), HasSubstr("厨房平面图")));
  for (const json& memo : Records("gmemoinfo.tbl")) EXPECT_LE(memo["time_1"], memo["time_2"]);
}

TEST_F(OrganizerTelephony, SampleQuickDialsAreTheKeysFromTwoToNine) {
  ExportOf(kQuickDials);
  const json entries = Records("Quickinfo.tbl");
  ASSERT_EQ(entries.size(), 8u);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i]["value_132"], i + 2);
    EXPECT_EQ(entries[i]["entry_id_repeated"], entries[i]["entry_id"]);
    EXPECT_NE(entries[i]["number"], "");
  }
}

TEST_F(OrganizerTelephony, SampleCallFilterHasThreeGroupsTheFixedOneAmongThem) {
  ExportOf(kCallFilter);
  const json groups = Records("redblistgroup.tbl");
  ASSERT_EQ(groups.size(), 3u);
  EXPECT_EQ(groups[2]["group_id"], 7);
  EXPECT_EQ(groups[2]["time_1"], json({2026, 1, 5, 22, 0, 0, 0}));
  EXPECT_EQ(groups[2]["time_2"], json({2026, 1, 6, 7, 0, 0, 0}));
  EXPECT_EQ(groups[0]["days"], "01010101010101");
  EXPECT_EQ(groups[2]["days"], "00000000000000");
  std::map<int, int> entries;
  for (const json& entry : Records("redblistinfo.tbl")) ++entries[int{entry["group_id"]}];
  EXPECT_EQ(entries, (std::map<int, int>{{1, 4}, {2, 4}, {7, 4}}));
}

TEST_F(OrganizerTelephony, TheConfigurationIsATableOfOneRecord) {
  ExportOf(kCallFilter);
  EXPECT_EQ(desk::fs::file_size(Sync("redblistconfig.tbl")), 700u);
  EXPECT_THAT(ShowText("redblistconfig.tbl"), AllOf(HasSubstr("Office"), HasSubstr("+86 10 55501000"),
                                                    HasSubstr("1 record of"), Not(HasSubstr("number_4"))));
  EXPECT_EQ(Records("redblistconfig.tbl")[0]["count"], 3);
}

TEST_F(OrganizerTelephony, ATimeThatWasNeverSetIsNotShown) {
  ExportOf(kCallFilter);
  EXPECT_EQ(Records("redblistgroup.tbl")[0]["time_8"], json({1601, 1, 1, 0, 0, 0, 0}));
  const std::string fields = Done({"show", Sync("redblistgroup.tbl").string(), "--all-fields"});
  EXPECT_THAT(fields, AllOf(HasSubstr("time_2               2026-01-06 07:00:00\n"), Not(HasSubstr("1601"))));
}

TEST_F(OrganizerTelephony, WhatIsNoTimeOfSevenIsRefused) {
  desk::Write(At("in.json"), R"([{"time":[2006,1,5,9,3,7]}])");
  const desk::Outcome outcome = Run({"encode", "redblistinfo.tbl", At("in.json").string(), At("out").string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("hour, minute, second and milliseconds as [2026, 3, 4, 10, 0, 0, 0]"));
}

TEST_F(OrganizerTelephony, EveryTableComesBackByteForByte) {
  for (const Module* const module : kModules) {
    ExportOf(*module);
    ExpectRoundTrips(*module);
  }
}

TEST_F(OrganizerTelephony, DamagedTablesAreShownAsFarAsTheyGo) {
  for (const Module* const module : kModules) {
    ExportOf(*module);
    for (const char* const table : module->tables) {
      const auto records = Records(table).size();
      const auto record_size = desk::fs::file_size(Sync(table)) / records;
      desk::fs::resize_file(Sync(table), desk::fs::file_size(Sync(table)) - record_size + 3);
      const desk::Outcome outcome = Run({"show", Sync(table).string()});
      EXPECT_EQ(outcome.status, 1) << table;
      EXPECT_THAT(outcome.out, HasSubstr(std::to_string(records) + " record")) << table;
      EXPECT_THAT(outcome.err, HasSubstr("the file ends inside the record: 3 of " + std::to_string(record_size)));
    }
  }
}

TEST_F(OrganizerTelephony, EditsInTheShellAreInTheNextIncrementalExport) {
  for (const Module* const module : kModules) {
    ExportOf(*module);
    const std::string table = module->main_records;
    Edit("UPDATE " + table + " SET " + module->text + " = 'Edited' WHERE id = 3; DELETE FROM " + table +
         " WHERE id = 1");
    ASSERT_EQ(Export({"--mode", "incremental"}).status, 0) << module->name;
    EXPECT_THAT(ShowText(module->tables[0]), AllOf(HasSubstr("Edited"), HasSubstr("1 record of"))) << module->name;
  }
}

TEST_F(OrganizerTelephony, CardsMemosAndQuickDialsReachASecondPhoneAsTheyWere) {
  CreateSecondPhone();
  for (const Module* const module : {&kCards, &kMemos, &kQuickDials}) {
    ExportOf(*module);
    CarryToSecondPhone(*module);
    const char* const table = module->tables[0];
    // A card says when the phone that it lies on last changed it.
    const auto comparable = [&](const json& records) {
      return module == &kCards ? Without(records, {"time"}) : records;
    };
    EXPECT_EQ(comparable(Records(Second(table))), comparable(Records(table))) << table;
    EXPECT_GT(Records(Second(table)).size(), 0u);
  }
}

TEST_F(OrganizerTelephony, TheCallFilterReachesASecondPhoneWithItsEntriesInTheirGroups) {
  CreateSecondPhone();
  ExportOf(kCallFilter);
  CarryToSecondPhone(kCallFilter);
  const json groups = Records("redblistgroup.tbl"), second_groups = Records(Second("redblistgroup.tbl"));
  EXPECT_EQ(Without(second_groups, {"group_id"}), Without(groups, {"group_id"}));
  EXPECT_EQ(WithGroupNames(Records(Second("redblistinfo.tbl")), second_groups),
            WithGroupNames(Records("redblistinfo.tbl"), groups));
  EXPECT_EQ(Records(Second("redblistconfig.tbl")), Records("redblistconfig.tbl"));
}

TEST_F(OrganizerTelephony, TheFixedGroupOfAPhoneIsUpdatedInPlace) {
  ExportOf(kCallFilter);
  json groups = Records("redblistgroup.tbl");
  groups[2]["name"] = "Siesta";
  EncodeTo("redblistgroup.tbl", json::array({groups[2]}).dump(), Sync("redblistgroup.tbl"));
  EncodeTo("redblistinfo.tbl", "[]", Sync("redblistinfo.tbl"));
  ASSERT_EQ(Recover().status, 0);
  EXPECT_EQ(Records("redblistmap.tbl"), json::parse(R"([{"table":1,"new_id":0,"incoming_id":7}])"));
  ExportOf(kCallFilter);
  EXPECT_EQ(Records("redblistgroup.tbl"), groups);
}

TEST_F(OrganizerTelephony, AConfigurationFromTheDesktopReplacesThePhones) {
  ExportOf(kCallFilter);
  EncodeTo("redblistconfig.tbl", R"([{"count":1,"number_1":"110","value_of_1":9,"short_text_1":"Guard"}])",
           Sync("redblistconfig.tbl"));
  ASSERT_EQ(Recover({"--mode", "replace"}).status, 0);
  ExportOf(kCallFilter);
  EXPECT_THAT(ShowText("redblistconfig.tbl"), AllOf(HasSubstr("Guard"), Not(HasSubstr("Office"))));
}

}  // namespace
