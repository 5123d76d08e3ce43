// Looks a code up in the modules' own words.
#include "tools/qvdesk/readings.h"

#include <fmt/format.h>

#include <algorithm>

#include "qv_rapi.h"
#include "tools/qvdesk/modes.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

using qv::Direction;
using qv::Modes;
using qv::StepWords;
using qv::SyncMode;

constexpr Direction kDirections[] = {Direction::kExport, Direction::kRecover};

/// In words, a mode stands for all that a module treats like it.
constexpr SyncMode kModeClasses[] = {SyncMode::kIncremental, SyncMode::kFull};

const qv::CodeWords* FindWords(std::uint32_t code) {
  const auto found = std::ranges::find(qv::kCodeWords, qv::Result{code}, &qv::CodeWords::code);
  return found == std::end(qv::kCodeWords) ? nullptr : &*found;
}

const StepWords* FindStep(std::span<const StepWords> steps, std::uint32_t flag, Direction direction, SyncMode mode) {
  const auto found = std::ranges::find_if(steps, [&](const StepWords& step) {
    return step.flag == qv::StepFlag{flag} && step.direction == direction && Applies(step.modes, mode);
  });
  return found == steps.end() ? nullptr : &*found;
}

/// The steps in words; std::nullopt when a flag has no meaning in such a run.
std::optional<std::string> StepsInWords(const CodeParts& parts, std::span<const StepWords> steps, Direction direction,
                                        SyncMode mode) {
  std::string words;
  for (const std::uint32_t flag : {parts.step_flag, parts.nested_flag}) {
    if (flag == 0) continue;
    const StepWords* const step = FindStep(steps, flag, direction, mode);
    if (step == nullptr) return std::nullopt;
    words += (words.empty() ? "" : ": ") + std::string(step->step);
  }
  return words;
}

Reading AnyFailureOf(const std::string& runs, const Module& module) {
  return {.runs = runs, .what = module.only_failure};
}

/// `steps`: "exporting the entries"; empty without a step.
Reading ReadingOf(const std::string& runs, const std::string& steps, const qv::CodeWords& words) {
  return {.runs = runs,
          .what = steps.empty() ? words.what : fmt::format("failed while {}: {}", steps, words.what),
          .advice = words.advice,
          .is_success = words.code == qv::Result::kOk};
}

/// The readings in one module and direction; modes that read the same are one reading.
void AddReadings(const CodeParts& parts, const Module& module, Direction direction, const Run& run,
                 const qv::CodeWords& words, std::vector<Reading>& readings) {
  const std::string where = fmt::format("{}, {}", RowOf(module.id).name, NameOf(direction));
  if (module.only_failure != nullptr && words.code == qv::Result::kStoreNotLoaded) {
    readings.push_back(AnyFailureOf(where, module));
    return;
  }
  if (run.mode) {
    if (const auto steps = StepsInWords(parts, module.step_words, direction, *run.mode)) {
      readings.push_back(ReadingOf(fmt::format("{}, mode {}", where, Describe(*run.mode)), *steps, words));
    }
    return;
  }
  const auto incremental = StepsInWords(parts, module.step_words, direction, kModeClasses[0]);
  const auto other = StepsInWords(parts, module.step_words, direction, kModeClasses[1]);
  const auto add = [&](Modes modes, const std::string& steps) {
    readings.push_back(ReadingOf(fmt::format("{}, {}", where, NameOf(modes)), steps, words));
  };
  if (incremental && incremental == other) return add(Modes::kAny, *incremental);
  if (incremental) add(Modes::kIncremental, *incremental);
  if (other) add(Modes::kOtherThanIncremental, *other);
}

bool FitsEntry(const CodeParts& parts, Direction direction, const Run& run) {
  return (!run.direction || *run.direction == direction) &&
         (parts.entry_flag == 0 || parts.entry_flag == EntryFlagOf(direction));
}

bool ComesFrom(qv::Directions directions, Direction direction) {
  return directions == qv::Directions::kBoth ||
         directions == (direction == Direction::kExport ? qv::Directions::kExport : qv::Directions::kRecover);
}

/// Whether an entry point of the direction tells of a module's failures at all, and with such a flag. The return value
/// of one that adds the flag to its answer carries none.
bool IsReported(const qv::ModuleRow& row, Direction direction, std::uint32_t entry_flag) {
  const bool exporting = direction == Direction::kExport;
  const auto tells = [&](qv::Report report) {
    return report == qv::Report::kKept || (report == qv::Report::kRaw && entry_flag == 0);
  };
  return tells(exporting ? row.desktop_export : row.desktop_recover) ||
         tells(exporting ? row.local_export : row.local_recover);
}

/// Of a module whose results are no codes. Only a recover hands anything over.
std::vector<Reading> CountsOf(std::uint32_t result, const Module& module, const Run& run) {
  std::vector<Reading> readings;
  const CodeParts parts(result);
  for (const Direction direction : kDirections) {
    if (!FitsEntry(parts, direction, run)) continue;
    const std::string runs = fmt::format("{}, {}", run.module->name, NameOf(direction));
    if (result == 0) {
      readings.push_back(ReadingOf(runs, "", *FindWords(0)));
    } else if (parts.entry_flag == 0 && direction == Direction::kRecover) {
      readings.push_back({.runs = runs,
                          .what = fmt::format("success: {} handed to the store", CountOf(result, module.counted)),
                          .is_success = true});
    }
  }
  return readings;
}

}  // namespace

const char* NameOf(Direction direction) {
  return direction == Direction::kExport ? "export" : "recover";
}

const char* NameOf(qv::Directions directions) {
  switch (directions) {
    case qv::Directions::kBoth: return "export, recover";
    case qv::Directions::kExport: return NameOf(Direction::kExport);
    case qv::Directions::kRecover: return NameOf(Direction::kRecover);
    case qv::Directions::kNone: break;
  }
  return "none";
}

const char* NameOf(Modes modes) {
  switch (modes) {
    case Modes::kIncremental: return "incremental mode";
    case Modes::kOtherThanIncremental: return "any other mode than incremental";
    default: return "any mode";
  }
}

std::uint32_t EntryFlagOf(Direction direction) {
  return direction == Direction::kExport ? qv::kExportFlag : qv::kRecoverFlag;
}

bool TellsFailures(const qv::ModuleRow& row, Direction direction) {
  return IsReported(row, direction, 0);
}

std::vector<Reading> ReadingsOf(std::uint32_t result, const Run& run) {
  if (run.module != nullptr) {
    const Module& module = ModuleOf(run.module->id);
    if (module.counted != nullptr) return CountsOf(result, module, run);
  }
  const CodeParts parts(result);
  std::vector<Reading> readings;
  const qv::CodeWords* const words = FindWords(parts.code);
  if (words == nullptr || (parts.code == 0 && result != 0)) return readings;
  const bool without_step = parts.step_flag == 0 && parts.nested_flag == 0;
  for (const Direction direction : kDirections) {
    if (!FitsEntry(parts, direction, run) || !ComesFrom(words->directions, direction)) continue;
    if (run.module != nullptr && result != 0 && !IsReported(*run.module, direction, parts.entry_flag)) continue;
    if (without_step && run.module == nullptr) {
      readings.push_back(ReadingOf(fmt::format("any module, {}", NameOf(direction)), "", *words));
      continue;
    }
    for (const Module& module : Modules()) {
      if (module.counted != nullptr || (run.module != nullptr && run.module->id != module.id)) continue;
      AddReadings(parts, module, direction, run, *words, readings);
    }
  }
  return readings;
}

std::string Describe(const Reading& reading, const std::string& indent) {
  if (reading.advice.empty()) return reading.what;
  return fmt::format("{}\n{}({})", reading.what, indent, reading.advice);
}

}  // namespace qvdesk
