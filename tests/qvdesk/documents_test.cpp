// The generated documents must be those that the code generates now.
#include "tests/qvdesk/desk.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

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

}  // namespace
