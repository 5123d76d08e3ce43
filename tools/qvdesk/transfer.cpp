// "export" and "recover": one call of the agent, and its answer in words.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/handset/handset.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/desktop_state.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/modes.h"
#include "tools/qvdesk/module_run.h"
#include "tools/qvdesk/phone.h"
#include "tools/qvdesk/progress.h"
#include "tools/qvdesk/readings.h"
#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::Direction;
using qv::SyncMode;

struct Options {
  PhoneOptions phone;
  std::string module;
  std::string mode = "full";
  std::string directory = "\\sync";
  std::optional<std::string> anchor;
  bool local = false;
};

void PrintMode(const ModuleRun& run) {
  if (run.mode_after == run.mode) {
    fmt::print("  mode       {}\n", Describe(run.mode));
    return;
  }
  fmt::print("  mode       asked {}, ran {}\n", Describe(run.mode), Describe(run.mode_after));
  fmt::print(
      "             The anchor \"{}\" is not the one that the handset last handed out for this module, so it cannot\n"
      "             tell what changed since: it exported everything. The desktop must replace, not merge.\n",
      Visible(run.anchor));
}

void KeepAnchor(const ModuleRun& run, DesktopState& state) {
  if (run.AnchorCounts()) {
    state.SetAnchor(run.module.name, run.anchor_after);
    state.Save();
    fmt::print("  anchor     {}, kept in {} for the next incremental export\n", Visible(run.anchor_after),
               state.File().string());
  } else if (run.anchor_after.empty() || !qv::IsRemembered(run.mode_after)) {
    fmt::print("  anchor     unchanged: such a run is not remembered\n");
  } else if (!run.HandedOutAnchor()) {
    fmt::print("  anchor     unchanged: the handset handed out none\n");
  } else {
    fmt::print("  anchor     {}, not kept because the run failed\n", Visible(run.anchor_after));
  }
}

void PrintResult(const ModuleRun& run) {
  fmt::print("  result     0x{:08x} {}\n", run.code, run.Result("             "));
  if (run.IsDropped()) fmt::print("             This entry point reports success for the module whatever happened.\n");
}

std::string DescribeRecords(const ModuleRun& run, const std::filesystem::path& file) {
  const FileForm* const form = FindForm(file.filename().string());
  if (form == nullptr || form->layout == nullptr) return "";
  const std::vector<std::uint8_t> bytes = ReadWholeFile(file);
  const bool apart = run.direction == Direction::kRecover && run.mode == SyncMode::kIncremental;
  const RecordFile records = ParseRecords(*form->layout, bytes, apart ? form->incremental_stride : 0);
  return fmt::format("{:>8} records{}", records.records.size(), records.damage ? ", damaged: " + *records.damage : "");
}

void PrintFiles(const ModuleRun& run) {
  const std::filesystem::path directory = handset::HostPath(run.directory);
  fmt::print("  files in {}\n", Visible(ToUtf8(run.directory)));
  if (!std::filesystem::is_directory(directory)) {
    fmt::print("    The handset has no such directory.\n");
    return;
  }
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.is_regular_file()) files.insert(entry.path());
  }
  if (files.empty()) fmt::print("    none\n");
  std::size_t messages = 0;
  std::uintmax_t message_bytes = 0;
  for (const std::filesystem::path& file : files) {
    const std::uintmax_t size = std::filesystem::file_size(file);
    if (const FileForm* const form = FindForm(file.filename().string()); form && form->kind == FileKind::kMessage) {
      ++messages;
      message_bytes += size;
    } else {
      fmt::print("    {:<20} {:>10} bytes {}\n", Visible(file.filename().string()), size, DescribeRecords(run, file));
    }
  }
  if (messages != 0) fmt::print("    {:<20} {:>10} bytes {:>8} files\n", "messages (.eml)", message_bytes, messages);
}

void PrintMessages() {
  std::string numbers;
  for (const handset::PostedMessage& posted : handset::PostedMessages()) {
    numbers += fmt::format(" 0x{:x}", posted.message);
  }
  fmt::print("  messages   {} posted to all windows, so that programs reload their data:\n            {}\n",
             handset::PostedMessages().size(), numbers);
}

int Transact(Direction direction, const Options& options) {
  const qv::ModuleRow& module = ParseModule(options.module);
  const SyncMode mode = ParseMode(options.mode);
  if (options.anchor && (direction != Direction::kExport || mode != SyncMode::kIncremental)) {
    throw UsageError("--anchor: it is read by incremental exports only, with --mode incremental.");
  }
  const Phone phone(options.phone);
  DesktopState state(options.phone.handset);
  ModuleRun run{.direction = direction,
                .module = module,
                .mode = mode,
                .directory = ToUtf16(options.directory),
                .anchor = options.anchor.value_or(state.Anchor(module.name)),
                .local = options.local};
  if (options.local) {
    run.mode = run.mode_after = direction == Direction::kExport ? SyncMode::kPlainCopy : SyncMode::kLocalRecover;
  }
  {
    const Progress progress(fmt::format("{} {}", module.name, NameOf(direction)));
    run.Make(phone);
  }
  const bool is_success = run.IsSuccess();
  fmt::print("{} {}: {}\n", module.name, NameOf(direction), is_success ? "success" : "failure");
  PrintMode(run);
  KeepAnchor(run, state);
  PrintResult(run);
  PrintFiles(run);
  if (direction == Direction::kRecover) PrintMessages();
  if (is_success) return kSuccess;
  std::fflush(stdout);
  throw std::runtime_error(fmt::format("the {} of module {} failed with 0x{:08x}, see \"result\" above",
                                       NameOf(direction), module.name, run.code));
}

/// The modules of which more recovers empty the store than those in replace mode.
std::vector<const char*> OftenEmptied() {
  std::vector<const char*> names;
  for (const Module& module : Modules()) {
    const bool often = module.facts != nullptr && module.facts->emptied_by == qv::EmptiedBy::kAllButAdding;
    if (often) names.push_back(RowOf(module.id).name);
  }
  return names;
}

void AddOptions(CLI::App& command, Options& options) {
  command.add_option("MODULE", options.module, "The module's name or number, as \"qvdesk modules\" lists them")
      ->required();
  AddPhoneOptions(command, options.phone);
  CLI::Option* const mode =
      command
          .add_option(
              "--mode", options.mode,
              fmt::format("full (1): all records; replace (2): as full, and a recover empties the store first (one of "
                          "{} does so in every mode but incremental and 5); incremental (3): what changed since the "
                          "last synchronisation; plain (4): all records, and nothing is remembered; or any other "
                          "number, as a desktop may send it",
                          fmt::join(OftenEmptied(), ", ")))
          ->capture_default_str();
  command.add_option("--directory", options.directory, "The exchange directory on the handset, which must be there")
      ->capture_default_str();
  CLI::Option* const anchor = command.add_option(
      "--anchor", options.anchor,
      "The anchor to present instead of the one kept from the last successful run; read by incremental exports only");
  command
      .add_flag(
          "--local", options.local,
          "Run it as a program on the handset does, with qv_ExportTabs or qv_RecovTabs: a plain copy without anchor")
      ->excludes(mode)
      ->excludes(anchor);
}

}  // namespace

void AddExport(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "export",
      "Has the handset write a module's data as exchange tables into the exchange directory, and prints the answer in "
      "words. The anchor that comes back is kept in DIR.desktop.json and presented at the next incremental export: "
      "only a desktop with the handset's last anchor gets the changes alone.");
  auto options = std::make_shared<Options>();
  AddOptions(*command, *options);
  command->footer(
      "Examples:\n  qvdesk export schedule --handset /tmp/phone\n"
      "  qvdesk export schedule --handset /tmp/phone --mode incremental");
  command->callback([options, &status] { status = Transact(Direction::kExport, *options); });
}

void AddRecover(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "recover",
      "Has the handset apply the exchange tables in the exchange directory to a module's store, and prints the answer "
      "in words. Applied tables are deleted; an id map tells under which ids the records now live. In incremental mode "
      "a change list beside the tables says what is new, modified or deleted.");
  auto options = std::make_shared<Options>();
  AddOptions(*command, *options);
  command->footer(
      "Examples:\n  qvdesk recover schedule --handset /tmp/phone --mode replace\n"
      "  qvdesk recover schedule --handset /tmp/phone --local");
  command->callback([options, &status] { status = Transact(Direction::kRecover, *options); });
}

}  // namespace qvdesk
