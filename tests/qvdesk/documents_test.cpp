// The generated documents must be those that the code generates now, and one that people write must leave nothing out.
#include <nlohmann/json.hpp>
#include <set>

#include "tests/qvdesk/desk.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

void CollectKeys(const json& value, std::set<std::string>& keys) {
  if (!value.is_structured()) return;
  for (const auto& [key, inner] : value.items()) {
    if (value.is_object()) keys.insert(key);
    CollectKeys(inner, keys);
  }
}

class Documents : public desk::DeskTest {
 protected:
  void ExpectCurrent(const std::string& document, const std::string& file) const {
    EXPECT_TRUE(Done({"describe", document}) == desk::Contents(desk::fs::path(QV_SOURCE_DIR) / file))
        << file << " is not what the code says. If the change is meant: qvdesk describe " << document << " > " << file;
  }
};

TEST_F(Documents, FormatsAreAsTheLayoutsSay) {
  ExpectCurrent("formats", "docs/FORMATS.md");
}
TEST_F(Documents, WhatFollowsFromARuleHasRulesBelowIt) {
  const std::string formats = Done({"describe", "formats"});
  unsigned tables = 0;
  for (std::size_t begin = formats.find("\n#"), end; begin != std::string::npos; begin = end) {
    end = formats.find("\n#", begin + 1);
    const std::string section = formats.substr(begin, end - begin);
    const std::size_t last_row = section.rfind(", by a rule |");
    if (last_row == std::string::npos) continue;
    ++tables;
    EXPECT_NE(section.find("\nRules:\n", last_row), std::string::npos) << section;
  }
  EXPECT_GE(tables, 5u);
}

TEST_F(Documents, TheClockStandsPartByPartWithItsPlacesInTheStore) {
  EXPECT_THAT(
      Done({"describe", "formats"}),
      AllOf(
          HasSubstr("#### alarm\n\n6 of 404 bytes each, the first at 0; in the store's structure 344 bytes each, the "
                    "first at 0.\n"),
          HasSubstr("#### clock name\n\n9 of 76 bytes each, the first at 2424; in the store's structure 30 bytes each, "
                    "the first at 2064.\n"),
          HasSubstr("|  | 4 | number, by a rule | repeat_flags | 8 |\n"),
          HasSubstr("| 164 | 240 | text | text_3 | 132 |\n")));
}

TEST_F(Documents, ResultsOfTheSettingsAreSaidInWords) {
  EXPECT_THAT(Done({"describe", "results"}),
              AllOf(HasSubstr("### 14 personal-settings\n\n1 is whatever failed: the store library could not be"),
                    HasSubstr("### 15 browser-settings\n\n1 is whatever failed: the store library could not be"),
                    HasSubstr("### 16 clock-settings\n\nNo result has a step's flag.\n"),
                    HasSubstr("| 8 | recover | clock settings: the store refused the clock; nothing was applied |\n")));
}

TEST_F(Documents, CallsAreAsTheFactsSay) {
  ExpectCurrent("calls", "docs/CALLS.md");
}
TEST_F(Documents, ResultsAreAsTheModulesSay) {
  ExpectCurrent("results", "docs/RESULTS.md");
}
TEST_F(Documents, NoLayoutChangesUnseen) {
  ExpectCurrent("layouts", "tests/golden/layouts.txt");
}

TEST_F(Documents, BackupsTellsOfEveryKeyThatProgramsMayFind) {
  CreatePhone("3", "3");
  const std::string phone = Phone().string(), backup = At("backup").string();
  std::set<std::string> keys;
  CollectKeys(json::parse(Done({"backup", backup, "contacts", "e-mail", "--handset", phone, "--json"})), keys);
  CollectKeys(json::parse(desk::Contents(At("backup") / "manifest.json")), keys);
  CollectKeys(json::parse(Done({"verify", backup, "--json"})), keys);
  CollectKeys(json::parse(Done({"compare", backup, backup, "--restored", "--json"})), keys);
  CollectKeys(json::parse(Done({"restore", backup, "--handset", phone, "--json"})), keys);
  EXPECT_GT(keys.size(), 25u);
  const std::string document = desk::Contents(desk::fs::path(QV_SOURCE_DIR) / "docs" / "BACKUP.md");
  for (const std::string& key : keys) EXPECT_THAT(document, testing::HasSubstr("`" + key + "`"));
}

}  // namespace
