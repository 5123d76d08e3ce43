// "restore" and "verify": what is done with a backup.
#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <optional>
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
  std::vector<std::string> modules;
  bool json = false;
};

/// Changes are applied as changes; whole tables take the place of what the handset holds.
SyncMode ModeFor(const BackupKind& kind) {
  return kind.ran == SyncMode::kIncremental ? SyncMode::kIncremental : SyncMode::kReplace;
}

/// Nothing: the kind can be restored.
std::optional<std::string> ReasonAgainst(const BackupKind& kind, const std::vector<std::string>& problems) {
  if (!problems.empty()) return "damaged in the backup, not restored";
  if (!kind.succeeded) return "its backup failed, not restored";
  return std::nullopt;
}

Json ToJson(const ModuleRun& run) {
  const Reading outcome = run.Outcome();
  return {{"module", run.module.name}, {"mode", static_cast<std::int32_t>(run.mode)},
          {"code", run.code},          {"result", outcome.what},
          {"advice", outcome.advice},  {"succeeded", outcome.is_success},
          {"told", !run.IsDropped()}};
}

Json ToJson(const BackupKind& kind, const std::vector<std::string>& problems) {
  return {{"module", kind.module}, {"succeeded", kind.succeeded && problems.empty()}, {"problems", problems}};
}

void Recover(const Phone& phone, const BackupKind& kind, DesktopState& state, const ExchangeFolder& exchange,
             KindReport& report) {
  const qv::ModuleRow& module = ParseModule(kind.module);
  ModuleRun run{.direction = qv::Direction::kRecover,
                .module = module,
                .mode = ModeFor(kind),
                .directory = exchange.OnHandset(),
                .anchor = state.Anchor(module.name)};
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
  const Manifest chosen = ChosenOf(ReadManifest(options.backup), options.modules);
  const Phone phone(options.phone);
  DesktopState state(options.phone.handset);
  const ExchangeFolder exchange;
  KindReport report(options.json);
  for (const BackupKind& kind : chosen) {
    report.Attempt(kind.module, [&] {
      const std::vector<std::string> problems = Verify(kind, options.backup);
      if (const auto reason = ReasonAgainst(kind, problems)) {
        return report.Failed(kind.module, *reason, ToJson(kind, problems), problems);
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
  const std::vector<std::string> problems = Verify(kind, backup);
  const Json json = ToJson(kind, problems);
  if (!problems.empty()) {
    report.Failed(kind.module, "not as it was written", json, problems);
  } else if (!kind.succeeded) {
    report.Failed(kind.module, "its backup failed: " + kind.result, json);
  } else {
    report.Succeeded(kind.module, ContentsOf(kind), json);
  }
}

int VerifyAll(const Options& options) {
  KindReport report(options.json);
  for (const BackupKind& kind : ChosenOf(ReadManifest(options.backup), options.modules)) {
    report.Attempt(kind.module, [&] { VerifyOne(kind, options.backup, report); });
  }
  return report.End("whole");
}

void AddOptions(CLI::App& command, Options& options) {
  command.add_option("BACKUP", options.backup, "A folder made by \"qvdesk backup\" or \"qvdesk sync\"")->required();
  command.add_option("MODULE", options.modules, "Kinds of data by name or number; all of them when none is named");
  command.add_flag("--json", options.json, "The report as JSON");
}

}  // namespace

void AddRestore(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "restore",
      "Recovers a backup to a phone, every kind or those that are named: what the phone holds of a kind gives way to "
      "the backup's, but for e-mails, which are added. What \"sync\" wrote is applied as changes, and these name "
      "records by their ids on the phone that they come from: restore them to no other. A kind whose files are not as "
      "the manifest says is left alone. A kind that fails does not stop the others; it is named at the end, and the "
      "exit status is then 1.");
  auto options = std::make_shared<Options>();
  AddOptions(*command, *options);
  AddPhoneOptions(*command, options->phone);
  command->footer("Example:\n  qvdesk restore /tmp/monday contacts schedule --handset /tmp/other-phone");
  command->callback([options, &status] { status = Restore(*options); });
}

void AddVerify(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "verify",
      "Compares a backup's files with its manifest: each must be there with its size and its SHA-256, and no other. "
      "A kind that is not as it was written, or whose export had failed, is named at the end, and the exit status is "
      "then 1.");
  auto options = std::make_shared<Options>();
  AddOptions(*command, *options);
  command->footer("Example:\n  qvdesk verify /tmp/monday");
  command->callback([options, &status] { status = VerifyAll(*options); });
}

}  // namespace qvdesk
