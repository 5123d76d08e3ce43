// "create": a directory becomes a handset with data on it.
#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <string>

#include "host/handset/handset.h"
#include "host/stores/database.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/phone.h"
#include "tools/qvdesk/sample_agenda.h"
#include "tools/qvdesk/sample_contacts.h"
#include "tools/qvdesk/sample_mail.h"
#include "tools/qvdesk/sample_messages.h"
#include "tools/qvdesk/sample_organizer.h"
#include "tools/qvdesk/sample_schedule.h"
#include "tools/qvdesk/sample_settings.h"
#include "tools/qvdesk/sample_tasks.h"
#include "tools/qvdesk/sample_telephony.h"
#include "tools/qvdesk/sample_unified_mail.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

struct Options {
  std::filesystem::path directory;
  SampleSchedule schedule{.entries = 100, .groups = 4};
  SampleTasks tasks{.tasks = 15, .groups = 3};
  SampleAgenda agenda{.entries = 15, .groups = 3};
  std::uint32_t contacts = 60;
  SampleMessages messages{.short_messages = 60, .multimedia_messages = 6, .calls = 40};
  std::uint32_t unified_mails = 12;
  std::uint32_t e_mails = 14;
  SampleOrganizer organizer{.cards = 10, .memos = 6};
  SampleTelephony telephony{.quick_dials = 8, .filters = 12};
  std::uint32_t seed = 1;
  bool empty = false;
};

/// What the model ships with, and a directory for the exchange.
constexpr std::u16string_view kDirectories[] = {u"\\Windows",
                                                u"\\dbdata\\sysconfig",
                                                u"\\dbdata\\mail\\file",
                                                u"\\systemdata\\App",
                                                u"\\systemdata\\Dll",
                                                u"\\systemdata\\SystemRing",
                                                u"\\systemdata\\GameRing",
                                                u"\\My Documents",
                                                u"\\Temp",
                                                u"\\sync"};

constexpr std::uint32_t kMailId = 4711;

void InsertSamples(const Options& options) {
  stores::Database database;
  if (options.empty) return;
  InsertSampleSchedule(database, options.schedule, options.seed);
  InsertSampleTasks(database, options.tasks, options.seed);
  InsertSampleAgenda(database, options.agenda, options.seed);
  InsertSampleContacts(database, options.contacts, options.seed);
  InsertSampleMessages(database, options.messages, options.seed);
  InsertSampleUnifiedMail(database, options.unified_mails, options.seed);
  InsertSampleMail(database, options.e_mails, options.seed);
  InsertSampleOrganizer(database, options.organizer, options.seed);
  InsertSampleTelephony(database, options.telephony, options.seed);
  InsertSampleSettings(database, options.seed);
  database.SetSetting(stores::kSystemMailId, kMailId);
}

std::string Describe(const Options& options) {
  if (options.empty) return "nothing on it";
  return fmt::format(
      "{} schedule entries in {} groups, {} tasks in {} groups, {} agenda entries in {} groups, {} contacts, {} short "
      "messages, {} multimedia messages, {} calls, {} unified mails, {} e-mails, {} cards, {} memos, {} quick dials "
      "and {} call filter entries",
      options.schedule.entries, options.schedule.groups, options.tasks.tasks, options.tasks.groups,
      options.agenda.entries, options.agenda.groups, options.contacts, options.messages.short_messages,
      options.messages.multimedia_messages, options.messages.calls, options.unified_mails, options.e_mails,
      options.organizer.cards, options.organizer.memos, options.telephony.quick_dials, options.telephony.filters);
}

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
  InsertSamples(options);
  fmt::print("{}: a handset with {}\n", name, Describe(options));
  fmt::print("  its database: {}\n", handset::HostPath(stores::kDatabasePath).string());
  return kSuccess;
}

}  // namespace

void AddCreate(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "create",
      "Makes a simulated handset: the directories of the phone's file system, an exchange directory \"\\sync\", and a "
      "store database with made-up data of each kind, settings and a system mail account. The database is SQLite: look "
      "at it and "
      "change it with the sqlite3 shell, which counts as an edit on the phone. The same seed makes the same data.");
  auto options = std::make_shared<Options>();
  constexpr std::uint32_t kMostGroups = 60000;   // Each has a 16-bit number of its own.
  constexpr std::uint32_t kMostQuickDials = 98;  // The keys 2 to 99.
  const auto add = [&](const char* name, std::uint32_t& value, const char* help) {
    return command->add_option(name, value, help)->capture_default_str();
  };
  command->add_option("DIR", options->directory, "The handset's directory: a new or an empty one")->required();
  add("--schedule-entries", options->schedule.entries, "Schedule entries");
  add("--schedule-groups", options->schedule.groups, "Groups that the schedule entries belong to")
      ->check(CLI::Range(0u, kMostGroups));
  add("--tasks", options->tasks.tasks, "Tasks");
  add("--task-groups", options->tasks.groups, "Groups that the tasks belong to")->check(CLI::Range(0u, kMostGroups));
  add("--agenda-entries", options->agenda.entries, "Agenda entries");
  add("--agenda-groups", options->agenda.groups, "Groups that the agenda entries belong to");
  add("--contacts", options->contacts, "Contacts; a few groups and pictures come along");
  add("--messages", options->messages.short_messages, "Short messages, in a few folders");
  add("--mms", options->messages.multimedia_messages, "Multimedia messages, each with a small picture");
  add("--calls", options->messages.calls, "Calls made, received and missed");
  add("--unified-mails", options->unified_mails, "Unified mails, received and sent; folders and rules come along");
  add("--e-mails", options->e_mails, "E-mails; two accounts with folders and filters come along");
  add("--cards", options->organizer.cards, "Business cards");
  add("--memos", options->organizer.memos, "Memos drawn by hand");
  add("--quick-dials", options->telephony.quick_dials, "Numbers behind the keys from 2 on")
      ->check(CLI::Range(0u, kMostQuickDials));
  add("--filters", options->telephony.filters,
      "Callers in the call filter; three groups and a configuration come along");
  add("--seed", options->seed, "Any number; another one makes other data");
  command->add_flag("--empty", options->empty,
                    "A handset without data, whatever the other options say: one to restore a backup to");
  command->footer(
      "Examples:\n  qvdesk create /tmp/phone --schedule-entries 1000 --seed 7\n"
      "  qvdesk create /tmp/other-phone --empty");
  command->callback([options, &status] { status = Create(*options); });
}

}  // namespace qvdesk
