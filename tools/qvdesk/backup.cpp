// "backup" and "sync": every kind of data into a folder, all of it or what changed.
#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/desktop_state.h"
#include "tools/qvdesk/exchange_folder.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/kind_report.h"
#include "tools/qvdesk/manifest.h"
#include "tools/qvdesk/modes.h"
#include "tools/qvdesk/progress.h"

namespace qvdesk {
namespace {

namespace fs = std::filesystem;
using qv::SyncMode;

struct Options {
  PhoneOptions phone;
  fs::path folder;
  KindOptions kinds;
  SyncMode mode;
};

std::vector<const qv::ModuleRow*> ChosenModules(const std::vector<std::string>& names) {
  std::vector<const qv::ModuleRow*> modules = ParseModules(names);
  if (!names.empty()) return modules;
  for (const qv::ModuleRow& module : qv::kModuleTable) modules.push_back(&module);
  return modules;
}

/// A kind that knows no changes is exported whole in any mode: asked for changes, it would pass for them.
SyncMode ModeFor(const qv::ModuleRow& module, SyncMode mode) {
  return ModuleOf(module.id).names.change_list == nullptr ? SyncMode::kFull : mode;
}

/// A backup appears whole or not at all: it is made beside its place, and what a run that was killed left there goes.
class NewBackup {
 public:
  explicit NewBackup(const fs::path& folder) : folder_(folder), unfinished_(Beside(folder, ".unfinished")) {
    if (fs::exists(folder) && !(fs::is_directory(folder) && fs::is_empty(folder))) {
      throw std::runtime_error(fmt::format("{}: it is there already. Name a new folder.", folder.string()));
    }
    fs::remove_all(unfinished_);
    fs::create_directories(unfinished_);
  }

  fs::path FolderOf(const std::string& module) const { return unfinished_ / module; }
  void Finish(const Manifest& manifest) const {
    WriteManifest(manifest, unfinished_);
    if (fs::exists(folder_)) fs::remove(folder_);
    fs::rename(unfinished_, folder_);
  }

 private:
  fs::path folder_;
  fs::path unfinished_;
};

BackupKind Export(const Phone& phone, const ExchangeFolder& exchange, ModuleRun& run, const fs::path& folder) try {
  exchange.Empty();
  {
    const Progress progress(fmt::format("{} export", run.module.name));
    run.Make(phone);
  }
  exchange.FetchTo(folder);
  return Describe(run, folder);
} catch (const std::exception& error) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);  // A part of the files would be taken for all.
  return DescribeFailed(run, error.what());
}

std::string WhatCameOf(const BackupKind& kind) {
  std::string what = ContentsOf(kind);
  if (kind.ran != kind.asked) what += fmt::format(", {}: the handset does not know our anchor", Describe(kind.ran));
  return kind.reports_failures ? what : what + kAsFarAsCanBeTold;
}

void Tell(const BackupKind& kind, KindReport& report) {
  if (kind.succeeded) {
    report.Succeeded(kind.module, WhatCameOf(kind), ToJson(kind));
  } else {
    report.Failed(kind.module, kind.code == 0 ? kind.result : fmt::format("0x{:08x} {}", kind.code, kind.result),
                  ToJson(kind), LinesOf(kind.advice));
  }
}

int BackUp(const Options& options) {
  const std::vector<const qv::ModuleRow*> modules = ChosenModules(options.kinds.names);
  const Phone phone(options.phone);
  DesktopState state(options.phone.handset);
  const NewBackup backup(options.folder);
  const ExchangeFolder exchange;
  KindReport report(options.kinds.json);
  Manifest manifest;
  for (const qv::ModuleRow* const module : modules) {
    ModuleRun run{.direction = qv::Direction::kExport,
                  .module = *module,
                  .mode = ModeFor(*module, options.mode),
                  .directory = exchange.OnHandset(),
                  .anchor = state.Anchor(module->name)};
    const BackupKind& kind = manifest.emplace_back(Export(phone, exchange, run, backup.FolderOf(module->name)));
    if (!kind.anchor.empty()) state.SetAnchor(module->name, kind.anchor);
    Tell(kind, report);
  }
  backup.Finish(manifest);
  state.Save();  // Behind the backup: an anchor without what it stands for would lose changes.
  report.Conclude(fmt::format("{}: {}", options.folder.string(), kManifestName));
  return report.End("backed up");
}

void AddOptions(CLI::App& command, Options& options) {
  command.add_option("FOLDER", options.folder, "Where it goes: a new folder")->required();
  AddKindOptions(command, options.kinds);
  AddPhoneOptions(command, options.phone);
}

}  // namespace

void AddBackup(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "backup",
      "Exports every kind of data, each into a sub-folder of its own, and writes manifest.json beside them: module, "
      "mode, anchor, result, and of each file its size, its records and its SHA-256. A kind that fails does not stop "
      "the others; it is named at the end, and the exit status is then 1. The folder appears when all of it is there." +
          PassageHelp());
  auto options = std::make_shared<Options>();
  options->mode = SyncMode::kFull;
  AddOptions(*command, *options);
  command->footer("Example:\n  qvdesk backup /tmp/monday --handset /tmp/phone");
  command->callback([options, &status] { status = BackUp(*options); });
}

void AddSync(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "sync",
      "As \"backup\", but of each kind only what changed since the last backup, sync, export, recover or restore of "
      "it: a change list and the new and modified records. The anchors kept in DIR.desktop.json are presented; a kind "
      "whose anchor the handset does not know is exported whole. The kinds that know no changes, e-mail and settings, "
      "are exported whole always." +
          PassageHelp());
  auto options = std::make_shared<Options>();
  options->mode = SyncMode::kIncremental;
  AddOptions(*command, *options);
  command->footer("Example:\n  qvdesk sync /tmp/tuesday --handset /tmp/phone");
  command->callback([options, &status] { status = BackUp(*options); });
}

}  // namespace qvdesk
