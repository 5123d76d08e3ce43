// "explain": a result code in words.
#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <memory>
#include <string>

#include "qv_rapi.h"
#include "tools/qvdesk/catalog.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/modes.h"
#include "tools/qvdesk/readings.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

struct Options {
  std::string code;
  std::string module;
  std::string direction;
  std::string mode;
};

std::uint32_t ParseCode(const std::string& text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const char* const begin = text.data() + (hexadecimal ? 2 : 0);
  const char* const end = text.data() + text.size();
  std::uint32_t code = 0;
  const auto [stop, error] = std::from_chars(begin, end, code, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end) {
    throw UsageError(
        fmt::format("code \"{}\": it is not a 32-bit number such as 268435712 or 0x10000100.", Visible(text)));
  }
  return code;
}

Run ParseRun(const Options& options) {
  Run run;
  if (!options.module.empty()) run.module = &ParseModule(options.module);
  if (!options.mode.empty()) run.mode = ParseMode(options.mode);
  for (const qv::Direction direction : {qv::Direction::kExport, qv::Direction::kRecover}) {
    if (options.direction == NameOf(direction)) run.direction = direction;
  }
  return run;
}

std::string DescribeEntryFlag(std::uint32_t flag) {
  switch (flag) {
    case qv::kExportFlag: return "reported by an export";
    case qv::kRecoverFlag: return "reported by a recover";
    case 0: return "no entry point's flag: what the exported functions return, or a result of the module itself";
    default: return "no entry point gives this flag";
  }
}

/// Modules whose answer may be any number, when none is named.
std::string Counted(const Run& run) {
  std::string text;
  for (const Module& module : Modules()) {
    if (run.module != nullptr || module.counted == nullptr) continue;
    text += fmt::format(", unless it is a number of {0}s (--module {1})", module.counted, RowOf(module.id).name);
  }
  return text;
}

/// A word on a module of which nobody hears anything, if the run is one of its; otherwise nothing.
std::string NotTold(const Run& run) {
  if (run.module == nullptr) return "";
  for (const qv::Direction direction : {qv::Direction::kExport, qv::Direction::kRecover}) {
    if (run.direction.value_or(direction) == direction && TellsFailures(*run.module, direction)) return "";
  }
  return fmt::format("{} {} 0 whatever happened", run.module->name,
                     run.direction ? fmt::format("{}s answer", NameOf(*run.direction)) : "answers");
}

int Explain(const Options& options) {
  const std::uint32_t code = ParseCode(options.code);
  const Run run = ParseRun(options);
  const CodeParts parts(code);
  fmt::print("0x{:08x}\n", code);
  if (code != 0) fmt::print("  0x{:08x}  {}\n", parts.entry_flag, DescribeEntryFlag(parts.entry_flag));
  const std::vector<Reading> readings = ReadingsOf(code, run);
  for (const Reading& reading : readings) fmt::print("  {}:\n    {}\n", reading.runs, Describe(reading, "    "));
  const std::string not_told = NotTold(run);
  if (!readings.empty()) {
    if (!not_told.empty()) fmt::print("  {}: look at the files and at the data\n", not_told);
    return kSuccess;
  }
  std::fflush(stdout);
  throw std::runtime_error(
      fmt::format("code 0x{:08x} is unknown: no module answers so{}{}{}. \"qvdesk describe results\" lists all "
                  "codes.",
                  code, run.module || run.direction || run.mode ? " in such a run" : "",
                  not_told.empty() ? "" : fmt::format(": {}", not_told), parts.entry_flag == 0 ? Counted(run) : ""));
}

}  // namespace

void AddExplain(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "explain",
      "Says a result code in words: which entry point reported it, in which step the run failed, why, and what to look "
      "at. The flag of a step means different things in different modules, directions and modes; without --module, "
      "--direction and --mode every possible reading is listed.");
  auto options = std::make_shared<Options>();
  command->add_option("CODE", options->code, "The code, decimal or as 0x11000100")->required();
  command->add_option("--module", options->module, "The module's name or number");
  command->add_option("--direction", options->direction, "What was run")->check(CLI::IsMember({"export", "recover"}));
  command->add_option("--mode", options->mode, "The mode it ran in: " + ModeWords() + " or a number");
  command->footer(
      "Examples:\n  qvdesk explain 0x11000100\n"
      "  qvdesk explain 0x23000007 --module schedule --mode incremental");
  command->callback([options, &status] { status = Explain(*options); });
}

}  // namespace qvdesk
