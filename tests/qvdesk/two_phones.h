// What tests of a module's files at the desktop's end share: its data shown, encoded, and carried to a second phone.
#ifndef QV_TESTS_QVDESK_TWO_PHONES_H
#define QV_TESTS_QVDESK_TWO_PHONES_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/qvdesk/desk.h"

namespace desk {

struct Module {
  const char* name;
  std::vector<const char*> tables;
};

class TwoPhones : public DeskTest {
 protected:
  using json = nlohmann::json;

  void ExportOf(const Module& module, const std::vector<std::string>& more = {}) {
    module_ = module.name;
    const Outcome outcome = Export(more);
    ASSERT_EQ(outcome.status, 0) << outcome.out;
  }
  std::string ShowText(const char* table) const { return Done({"show", Sync(table).string()}); }
  std::string ShowJson(const fs::path& file) const { return Done({"show", file.string(), "--format", "json"}); }
  json Records(const fs::path& file) const { return json::parse(ShowJson(file))["records"]; }
  json Records(const char* table) const { return Records(Sync(table)); }
  void EncodeTo(const char* form, const std::string& text, const fs::path& to) const {
    Write(At("in.json"), text);
    Done({"encode", form, At("in.json").string(), to.string()});
  }
  /// The file's bytes.
  std::string Encoded(const char* form, const std::string& text) const {
    EncodeTo(form, text, At(form));
    return Contents(At(form));
  }
  std::string EncodingError(const char* form, const std::string& text) const {
    Write(At("in.json"), text);
    const Outcome outcome = Run({"encode", form, At("in.json").string(), At("out").string()});
    EXPECT_EQ(outcome.status, 1);
    return outcome.err;
  }
  /// What is wrong with a file of these bytes.
  std::string Damage(const char* form, const std::string& bytes) const {
    Write(At(form), bytes);
    const Outcome outcome = Run({"show", At(form).string()});
    EXPECT_EQ(outcome.status, 1);
    return outcome.err;
  }
  /// That the module's tables, which have records, can be shown and encoded as they were.
  void ExpectRoundTrips(const Module& module) const {
    for (const char* const table : module.tables) {
      EXPECT_GT(fs::file_size(Sync(table)), 0u) << table;
      EXPECT_TRUE(Encoded(table, ShowJson(Sync(table))) == Contents(Sync(table))) << table;
    }
  }

  fs::path Second(const char* table) const { return At("second") / "sync" / table; }
  void CreateSecond(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"create", At("second").string()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Done(arguments);
  }
  /// What the first phone exported becomes the second one's, which then exports it again.
  void CarryToSecondPhone(const Module& module) const {
    for (const char* const table : module.tables) fs::copy(Sync(table), Second(table));
    for (const char* const direction : {"recover", "export"}) {
      const Outcome outcome = Run({direction, module.name, "--handset", At("second").string()});
      ASSERT_EQ(outcome.status, 0) << module.name << outcome.out;
    }
  }
  /// Records without what a phone gives anew.
  static json Without(json records, std::initializer_list<const char*> fields) {
    for (auto& record : records) {
      for (const char* const field : fields) record.erase(field);
    }
    return records;
  }
};

}  // namespace desk

#endif  // QV_TESTS_QVDESK_TWO_PHONES_H
