// The generated documents must be those that the code generates now.
#include "tests/qvdesk/desk.h"

namespace {

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
