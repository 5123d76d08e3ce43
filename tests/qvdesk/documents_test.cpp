// The generated documents must be those that the code generates now, and one that people write must leave nothing out.
#include <nlohmann/json.hpp>
#include <set>

#include "tests/qvdesk/desk.h"

namespace {

using nlohmann::json;

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
