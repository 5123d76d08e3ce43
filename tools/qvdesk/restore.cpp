// "restore" and "verify": what is done with a backup.
#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/desktop_state.h"
#include "tools/qvdesk/exchange_folder.h"
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
  fs::path backup;
  KindOptions kinds;
};

/// Changes are applied as changes; whole tables take the place of what the handset holds.
SyncMode ModeFor(const BackupKind& kind) {
  return kind.HasOnlyChanges() ? SyncMode::kIncremental : SyncMode::kReplace;
}

Json ToJson(const ModuleRun& run) {
  const Reading outcome = run.Outcome();
  return {{"mode", static_cast<std::int32_t>(run.mode)},
          {"code", run.code},
          {"result", outcome.what},
          {"advice", outcome.advice},
          {"reports_failures", !run.IsDropped()}};
}

void Recover(const Phone& phone, const BackupKind& kind, DesktopState& state, const ExchangeFolder& exchange,
             KindReport& report) {
  const qv::ModuleRow& module = ParseModule(kind.module);
  ModuleRun run{.direction = qv::Direction::kRecover,
                .module = module,
                .mode = ModeFor(kind),
                .directory = exchange.OnHandset(),
                .anchor = ""};  // Which only exports read.
  {
    const Progress progress(fmt::format("{} recover", module.name));
    run.Make(phone);
  }
  if (run.AnchorCounts()) state.SetAnchor(module.name, run.anchor_after);
  if (const Reading outcome = run.Outcome(); !outcome.is_success) {
    report.Failed(module.name, fmt::format("0x{:08x} {}", run.code, outcome.what), ToJson(run),
                  LinesOf(outcome.advice));
    return;
  }
  const char* const doubt = run.IsDropped() ? kAsFarAsCanBeTold : "";
  report.Succeeded(module.name, fmt::format("{}, {}{}", ContentsOf(kind), Describe(run.mode), doubt), ToJson(run));
}

int Restore(const Options& options) {
  const Manifest chosen = ChosenOf(ReadManifest(options.backup), options.kinds.names);
  const Phone phone(options.phone);
  DesktopState state(options.phone.handset);
  const ExchangeFolder exchange;
  KindReport report(options.kinds.json);
  for (const BackupKind& kind : chosen) {
    report.Attempt(kind.module, [&] {
      if (const auto flaw = FlawOf(kind, options.backup)) {
        return report.Failed(kind.module, "not restored: " + flaw->what, {{"problems", flaw->problems}},
                             flaw->problems);
      }
      exchange.Empty();
      exchange.Put(kind, options.backup);
      Recover(phone, kind, state, exchange, report);
    });
  }
  state.Save();
  return report.End("restored");
}

void VerifyOne(const BackupKind& kind, const fs::path& backup, KindReport& report) {
  if (const auto flaw = FlawOf(kind, backup)) {
    report.Failed(kind.module, flaw->what, {{"problems", flaw->problems}}, flaw->problems);
  } else {
    report.Succeeded(kind.module, ContentsOf(kind), {{"problems", Json::array()}});
  }
}

int VerifyAll(const Options& options) {
  KindReport report(options.kinds.json);
  for (const BackupKind& kind : ChosenOf(ReadManifest(options.backup), options.kinds.names)) {
    report.Attempt(kind.module, [&] { VerifyOne(kind, options.backup, report); });
  }
  return report.End("whole");
}

void AddOptions(CLI::App& command, Options& options) {
  command.add_option("BACKUP", options.backup, "A folder made by \"qvdesk backup\" or \"qvdesk sync\"")->required();
  AddKindOptions(command, options.kinds);
}

}  // namespace

void AddRestore(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "restore",
      "Recovers a backup to a phone, every kind or those that are named: what the phone holds of a kind gives way to "
      "the backup's, but for e-mails, which are added. What \"sync\" wrote is applied as changes, and these name "
      "records by the ids that they have on the phone now: restore them only to the phone they come from, and not "
      "after a whole backup was restored to it, which gives new ids. A kind whose files are not as the manifest says "
      "is left alone. A kind that fails does not stop the others; it is named at the end, and the exit status is then "
      "1." +
          PassageHelp());
  auto options = std::make_shared<Options>();
  AddOptions(*command, *options);
  AddPhoneOptions(*command, options->phone);
  command->footer("Example:\n  qvdesk restore /tmp/monday contacts schedule --handset /tmp/other-phone");
  command->callback([options, &status] { status = Restore(*options); });
}

void AddVerify(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "verify",
      "Compares a backup's files with its manifest: each must be there, itself and no symbolic link, with its size and "
      "its SHA-256, and no other in the folder of its kind. A kind that is not as it was written, or whose export had "
      "failed, is named at the end, and the exit status is then 1.");
  auto options = std::make_shared<Options>();
  AddOptions(*command, *options);
  command->footer("Example:\n  qvdesk verify /tmp/monday");
  command->callback([options, &status] { status = VerifyAll(*options); });
}

}  // namespace qvdesk
