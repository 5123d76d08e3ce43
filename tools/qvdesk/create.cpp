// "create": a directory becomes a handset with data on it.
#include <fmt/format.h>

#include <filesystem>
#include <memory>

#include "host/handset/handset.h"
#include "host/stores/database.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/phone.h"
#include "tools/qvdesk/sample_contacts.h"
#include "tools/qvdesk/sample_messages.h"
#include "tools/qvdesk/sample_schedule.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

struct Options {
  std::filesystem::path directory;
  SampleSize size{.records = 100, .groups = 4, .seed = 1};
  std::uint32_t contacts = 60;
  SampleMessages messages{.short_messages = 60, .multimedia_messages = 6, .calls = 40};
};

/// What the model ships with, and a directory for the exchange.
constexpr std::u16string_view kDirectories[] = {u"\\Windows",
                                                u"\\dbdata\\sysconfig",
                                                u"\\systemdata\\App",
                                                u"\\systemdata\\Dll",
                                                u"\\systemdata\\SystemRing",
                                                u"\\systemdata\\GameRing",
                                                u"\\My Documents",
                                                u"\\Temp",
                                                u"\\sync"};

constexpr std::uint32_t kMailId = 4711;

int Create(const Options& options) {
  const std::string name = options.directory.string();
  if (std::filesystem::exists(options.directory)) {
    if (!std::filesystem::is_directory(options.directory)) throw std::runtime_error(name + ": it is not a directory");
    if (!std::filesystem::is_empty(options.directory)) {
      throw std::runtime_error(name + ": the directory is not empty. Name a new one, or delete it first.");
    }
  }
  std::filesystem::create_directories(options.directory);
  StartHandset(options.directory);
  for (const std::u16string_view directory : kDirectories) {
    std::filesystem::create_directories(handset::HostPath(directory));
  }
  stores::Database database;
  InsertSampleSchedule(database, options.size);
  InsertSampleContacts(database, options.contacts, options.size.seed);
  InsertSampleMessages(database, options.messages, options.size.seed);
  database.SetSetting(stores::kSystemMailId, kMailId);
  fmt::print(
      "{}: a handset with {} schedule entries in {} groups, {} contacts, {} short messages, {} multimedia messages "
      "and {} calls\n",
      name, options.size.records, options.size.groups, options.contacts, options.messages.short_messages,
      options.messages.multimedia_messages, options.messages.calls);
  fmt::print("  its database: {}\n", handset::HostPath(stores::kDatabasePath).string());
  return kSuccess;
}

}  // namespace

void AddCreate(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "create",
      "Makes a simulated handset: the directories of the phone's file system, an exchange directory \"\\sync\", and a "
      "store database with a made-up schedule, made-up contacts, messages and calls, and a system mail account. The "
      "database is SQLite: "
      "look at it and change it with the sqlite3 shell, which counts as an edit on the phone. The same seed makes the "
      "same data.");
  auto options = std::make_shared<Options>();
  constexpr std::uint32_t kMostGroups = 60000;  // Each has a 16-bit number of its own.
  command->add_option("DIR", options->directory, "The handset's directory: a new or an empty one")->required();
  command->add_option("--records", options->size.records, "Schedule entries")->capture_default_str();
  command->add_option("--groups", options->size.groups, "Groups that the schedule entries belong to")
      ->check(CLI::Range(0u, kMostGroups))
      ->capture_default_str();
  command->add_option("--contacts", options->contacts, "Contacts; a few groups and pictures come along")
      ->capture_default_str();
  command->add_option("--messages", options->messages.short_messages, "Short messages, in a few folders")
      ->capture_default_str();
  command->add_option("--mms", options->messages.multimedia_messages, "Multimedia messages, each with a small picture")
      ->capture_default_str();
  command->add_option("--calls", options->messages.calls, "Calls made, received and missed")->capture_default_str();
  command->add_option("--seed", options->size.seed, "Any number; another one makes other data")->capture_default_str();
  command->footer("Example:\n  qvdesk create /tmp/phone --records 1000 --seed 7");
  command->callback([options, &status] { status = Create(*options); });
}

}  // namespace qvdesk
