// docs/RESULTS.md.
#include <fmt/format.h>

#include "qv_rapi.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/describe.h"
#include "tools/qvdesk/readings.h"

namespace qvdesk {
namespace {

using qv::Result;

constexpr char kIntroduction[] =
    "# Results\n\n"
    "Every number that an export or a recover can be answered with. `qvdesk explain CODE` puts one into words.\n"
    "Made by `qvdesk describe results` from the agent's own tables; do not edit.\n\n"
    "A result is three parts joined by OR: the flag of the entry point, the flag of the step that failed, and the\n"
    "code. Success is 0, without any flag.\n\n";

std::uint32_t NumberOf(Result code) {
  return static_cast<std::uint32_t>(code);
}

std::string EntryFlags() {
  std::string text = "## Entry points\n\n| Flag | Direction | Reported by |\n|---|---|---|\n";
  const auto row = [&](qv::Direction direction, const char* functions) {
    text += fmt::format("| 0x{:08x} | {} | {} |\n", EntryFlagOf(direction), NameOf(direction), functions);
  };
  row(qv::Direction::kExport, "the stream's answer of `fnQV_ExportTabs`; the value returned by `qv_ExportTabs`");
  row(qv::Direction::kRecover, "the stream's answer of `fnQV_RecovTabs`; the value returned by `qv_RecovTabs`");
  return text + "\nThe values returned by the `fnQV_` functions carry no such flag.\n\n";
}

std::string Codes() {
  std::string text = "## Codes\n\n| Code | Reported by | Meaning | What to look at |\n|---:|---|---|---|\n";
  for (const qv::CodeWords& words : qv::kCodeWords) {
    if (words.directions == qv::Directions::kNone) continue;
    text += fmt::format("| {} | {} | {} | {} |\n", NumberOf(words.code), NameOf(words.directions), words.what,
                        words.advice);
  }
  return text + "\n";
}

std::string WithoutStep() {
  std::string text =
      "## Codes without a step's flag\n\n"
      "What fails before the first step, or outside of all steps, is reported without a step's flag:\n\n"
      "| Code | Reported by | When |\n|---:|---|---|\n";
  const auto row = [&](Result code, qv::Directions directions, const char* when) {
    text += fmt::format("| {} | {} | {} |\n", NumberOf(code), NameOf(directions), when);
  };
  row(Result::kStoreNotLoaded, qv::Directions::kBoth, "the store library could not be loaded");
  row(Result::kEntryPointMissing, qv::Directions::kRecover, "emptying the store: it cannot be asked to");
  row(Result::kSyncInfoFailed, qv::Directions::kRecover, "emptying the store: it cannot say which records to delete");
  row(Result::kWipeFailed, qv::Directions::kRecover, "emptying the store: it refused");
  row(Result::kEntryPointMissing, qv::Directions::kBoth,
      "messages: the store cannot be asked for its configuration, or to take one; in modules with one table: to list "
      "or read its records");
  row(Result::kSyncInfoFailed, qv::Directions::kExport, "modules with one table: the store cannot list its records");
  row(Result::kReadFailed, qv::Directions::kBoth,
      "messages: the configuration cannot be read from the store; modules with one table: an export cannot read a "
      "record");
  row(Result::kInsertFailed, qv::Directions::kRecover, "multimedia messages: the store refused the configuration");
  row(Result::kNoMemory, qv::Directions::kBoth,
      "there was no memory for the anchor, or for the messages' configuration");
  row(Result::kNoMemory, qv::Directions::kRecover, "emptying the store: there was no memory for the records to delete");
  row(Result::kFileFailed, qv::Directions::kBoth, "the exchange directory's path is too long");
  row(Result::kFileFailed, qv::Directions::kExport, "an exchange table or the change list cannot be created");
  row(Result::kFileFailed, qv::Directions::kBoth,
      "messages: the configuration cannot be opened, created or written whole");
  row(Result::kFileUnreadable, qv::Directions::kRecover, "messages: the configuration cannot be read");
  row(Result::kEntryPointMissing, qv::Directions::kBoth,
      "clock settings: the store cannot be asked for the clock, or to take one");
  row(Result::kReadFailed, qv::Directions::kExport, "clock settings: the store did not give the clock");
  row(Result::kUpdateFailed, qv::Directions::kRecover,
      "clock settings: the store refused the clock; nothing was applied");
  row(Result::kNoMemory, qv::Directions::kBoth, "clock settings: there was no memory for the clock");
  row(Result::kFileFailed, qv::Directions::kBoth,
      "clock settings: the file cannot be opened, created or written whole");
  row(Result::kFileUnreadable, qv::Directions::kRecover,
      "clock settings: the file cannot be read, or has a name with an index above 8");
  return text + "\n";
}

const char* Describe(qv::Report report) {
  switch (report) {
    case qv::Report::kKept: return "with flag";
    case qv::Report::kRaw: return "without flag";
    default: return "always 0";
  }
}

std::string Reports() {
  std::string text =
      "## What each entry point reports\n\n"
      "| Module | Name | Data | `fnQV_ExportTabs` | `fnQV_RecovTabs` | `qv_ExportTabs` | `qv_RecovTabs` |\n"
      "|---:|---|---|---|---|---|---|\n";
  for (const qv::ModuleRow& row : qv::kModuleTable) {
    text +=
        fmt::format("| {} | {} | {} | {} | {} | {} | {} |\n", row.id, row.name, row.data, Describe(row.desktop_export),
                    Describe(row.desktop_recover), Describe(row.local_export), Describe(row.local_recover));
  }
  return text +
         "\n## Steps, by module\n\n"
         "The flags from 0x01000000 up are an enumeration, not bits: the same flag names different steps in different\n"
         "modules, directions and modes. 0x00100000 and 0x00200000 come alone or joined to one of them.\n\n";
}

std::string Steps(const Module& module) {
  std::string text = fmt::format("### {} {}\n\n", module.id, RowOf(module.id).name);
  if (module.counted != nullptr) {
    return text + fmt::format(
                      "No failure is reported. Where the table above says \"without flag\" the answer is how many "
                      "{}s a recover handed to the store, whatever the store said of them.\n",
                      module.counted);
  }
  if (!TellsFailures(RowOf(module.id), qv::Direction::kExport) &&
      !TellsFailures(RowOf(module.id), qv::Direction::kRecover)) {
    return text + "No failure is reported: every answer is 0. What was exported or applied tells how far a run came.\n";
  }
  if (module.only_failure != nullptr) return text + fmt::format("1 is whatever failed: {}.\n", module.only_failure);
  if (module.step_words.empty()) return text + "No result has a step's flag.\n";
  text += "| Flag | Direction | Modes | Failed while |\n|---|---|---|---|\n";
  for (const qv::StepWords& step : module.step_words) {
    text += fmt::format("| 0x{:08x} | {} | {} | {} |\n", static_cast<std::uint32_t>(step.flag), NameOf(step.direction),
                        NameOf(step.modes), step.step);
  }
  return text;
}

}  // namespace

std::string DescribeResults() {
  std::string text = kIntroduction + EntryFlags() + Codes() + WithoutStep() + Reports();
  bool first = true;
  for (const Module& module : Modules()) {
    text += fmt::format("{}{}", first ? "" : "\n", Steps(module));
    first = false;
  }
  return text;
}

}  // namespace qvdesk
