// "compare": two backups, record by record.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/kind_report.h"
#include "tools/qvdesk/manifest.h"
#include "tools/qvdesk/record_difference.h"
#include "tools/qvdesk/restored_fields.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

namespace fs = std::filesystem;

struct Options {
  fs::path first;
  fs::path second;
  KindOptions kinds;
  bool restored = false;

  SameRecord Same() const { return restored ? SameRecord::kByContent : SameRecord::kById; }
};

/// Files that say what happened in a run, and not what the phone holds.
bool IsOfTheRun(const FileForm* form) {
  return form != nullptr && (form->kind == FileKind::kChangeList || form->kind == FileKind::kIdMap);
}

const BackupFile* FileOf(const BackupKind& kind, const std::string& name) {
  const auto found = std::ranges::find(kind.files, name, &BackupFile::name);
  return found == kind.files.end() ? nullptr : &*found;
}

struct Sides {
  const BackupKind& first;
  const BackupKind& second;
};

bool HasRecords(const FileForm* form) {
  return form != nullptr && (form->layout != nullptr || form->kind == FileKind::kSections);
}

Difference CompareFile(const Sides& kinds, const std::string& name, const Options& options) {
  const BackupFile* const first = FileOf(kinds.first, name);
  const BackupFile* const second = FileOf(kinds.second, name);
  const FileForm* const form = FindForm(name);
  Difference difference;
  if (first == nullptr || second == nullptr) {
    first == nullptr ? difference.OnlySecond("the file") : difference.OnlyFirst("the file");
  } else if (first->sha256 == second->sha256) {
    difference.equal = first->records.value_or(1);
  } else if (HasRecords(form)) {
    const auto read = [&](const fs::path& backup, const BackupKind& kind) {
      return ReadRecords(*form, ReadWholeFile(backup / kind.module / name), options.Same());
    };
    difference = CompareRecords(read(options.first, kinds.first), read(options.second, kinds.second));
  } else {
    difference.Changed(fmt::format("its {} and {} bytes differ", first->size, second->size));
  }
  return difference;
}

bool IsMessage(const std::string& file) {
  const FileForm* const form = FindForm(file);
  return form != nullptr && form->kind == FileKind::kMessage;
}

/// By content: a message's number, which its file is called by, is the phone's own.
Difference CompareMessages(const Sides& kinds) {
  std::multimap<std::string, std::string> left_over;
  for (const BackupFile& file : kinds.second.files) {
    if (IsMessage(file.name)) left_over.emplace(file.sha256, file.name);
  }
  Difference difference;
  for (const BackupFile& file : kinds.first.files) {
    if (!IsMessage(file.name)) continue;
    const auto found = left_over.find(file.sha256);
    if (found == left_over.end()) {
      difference.OnlyFirst(file.name);
    } else {
      ++difference.equal;
      left_over.erase(found);
    }
  }
  for (const auto& [digest, name] : left_over) difference.OnlySecond(name);
  return difference;
}

/// The files of a kind that are compared one by one.
std::set<std::string> NamesIn(const Sides& kinds, const Options& options) {
  std::set<std::string> names;
  for (const BackupKind* const kind : {&kinds.first, &kinds.second}) {
    for (const BackupFile& file : kind->files) {
      if (IsOfTheRun(FindForm(file.name)) || (options.restored && IsMessage(file.name))) continue;
      names.insert(file.name);
    }
  }
  return names;
}

/// What came of a kind's files.
struct Findings {
  std::size_t records = 0;  ///< Equal ones.
  Json files = Json::array();
  std::vector<std::string> details = {};

  void Add(const std::string& name, const Difference& found) {
    records += found.equal;
    files.push_back({{"name", name},
                     {"equal", found.equal},
                     {"changed", found.changed},
                     {"only_first", found.only_first},
                     {"only_second", found.only_second},
                     {"details", found.details}});
    if (found.IsNone()) return;
    details.push_back(fmt::format("{}: {} equal, {} changed, {} only in the first, {} only in the second", name,
                                  found.equal, found.changed, found.only_first, found.only_second));
    for (const std::string& line : found.details) details.push_back("  " + line);
  }
};

/// What cannot be compared of a kind, because a backup or the restored phone does not have it.
struct LeftOut {
  std::vector<RecordFields> not_exported = {};
  std::vector<RecordFields> not_restored = {};
};

LeftOut LeftOutOf(const std::string& kind, const Options& options) {
  const Module& module = ModuleOf(ParseModule(kind).id);
  return {NotExported(module), options.restored ? NotRestored(module) : std::vector<RecordFields>()};
}

Json ToJson(const std::vector<RecordFields>& fields) {
  Json list = Json::array();
  for (const RecordFields& of : fields) list.push_back({{"record", of.record}, {"fields", of.names}});
  return list;
}

void Compare(const Sides& kinds, const Options& options, KindReport& report) {
  const std::string& name = kinds.first.module;
  Findings findings;
  for (const std::string& file : NamesIn(kinds, options)) findings.Add(file, CompareFile(kinds, file, options));
  if (options.restored && std::ranges::any_of(kinds.first.files, IsMessage, &BackupFile::name)) {
    findings.Add("messages (.eml)", CompareMessages(kinds));
  }
  const LeftOut left_out = LeftOutOf(name, options);
  const Json json = {{"same", findings.details.empty()},
                     {"files", findings.files},
                     {"not_exported", ToJson(left_out.not_exported)},
                     {"not_restored", ToJson(left_out.not_restored)}};
  if (findings.details.empty()) {
    report.Succeeded(name, "the same: " + CountOf(findings.records, "record"), json);
  } else {
    report.Failed(name, "they differ", json, findings.details);
  }
}

/// "  contacts, contact: modified_year, modified_month".
void AddLines(const std::string& kind, const std::vector<RecordFields>& fields, std::vector<std::string>& lines) {
  for (const RecordFields& of : fields) {
    lines.push_back(fmt::format("  {}, {}: {}", kind, of.record, fmt::join(of.names, ", ")));
  }
}

void TellWhatIsLeftOut(const Manifest& kinds, const Options& options, const KindReport& report) {
  std::vector<std::string> not_exported;
  std::vector<std::string> not_restored;
  for (const BackupKind& kind : kinds) {
    const LeftOut left_out = LeftOutOf(kind.module, options);
    AddLines(kind.module, left_out.not_exported, not_exported);
    AddLines(kind.module, left_out.not_restored, not_restored);
  }
  if (!not_exported.empty()) report.Conclude("Not compared, because no backup has it: when a record last changed.");
  for (const std::string& line : not_exported) report.Conclude(line);
  if (!options.restored) return;
  report.Conclude("Not compared, because a restore may not bring it back: ids, and what refers to them.");
  for (const std::string& line : not_restored) report.Conclude(line);
}

/// Why the two cannot be compared; nothing when they can. The digests by which files are compared must be theirs.
std::optional<Flaw> FlawOf(const Sides& kinds, const Options& options) {
  if (auto flaw = FlawOf(kinds.first, options.first, "the first backup")) return flaw;
  if (auto flaw = FlawOf(kinds.second, options.second, "the second backup")) return flaw;
  const bool first = kinds.first.HasOnlyChanges();
  if (first == kinds.second.HasOnlyChanges()) return std::nullopt;
  return Flaw{fmt::format("the {} backup has only changes", first ? "first" : "second")};
}

void CompareKind(const BackupKind& kind, const Manifest& second, const Options& options, KindReport& report) {
  const auto other = std::ranges::find(second, kind.module, &BackupKind::module);
  if (other == second.end()) return report.Failed(kind.module, "only in the first backup");
  const Sides kinds = {kind, *other};
  if (const auto flaw = FlawOf(kinds, options)) {
    return report.Failed(kind.module, flaw->what, {{"problems", flaw->problems}}, flaw->problems);
  }
  Compare(kinds, options, report);
}

int CompareAll(const Options& options) {
  const Manifest first = ChosenOf(ReadManifest(options.first), options.kinds.names);
  const Manifest second = ReadManifest(options.second);
  KindReport report(options.kinds.json);
  for (const BackupKind& kind : first) {
    report.Attempt(kind.module, [&] { CompareKind(kind, second, options, report); });
  }
  if (options.kinds.names.empty()) {
    for (const BackupKind& kind : second) {
      const bool is_in_both = std::ranges::find(first, kind.module, &BackupKind::module) != first.end();
      if (!is_in_both) report.Failed(kind.module, "only in the second backup");
    }
  }
  TellWhatIsLeftOut(first, options, report);
  return report.End("the same");
}

}  // namespace

void AddCompare(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "compare",
      "Compares two backups record by record. A record is looked for by its id, and what differs is shown field by "
      "field: the first backup's value, then the second's. With --restored a record is looked for by all that a "
      "restore brings back. Change lists and id maps, which tell of a run and not of the phone, are left out. At the "
      "end it says what could not be compared. The exit status is 1 when a kind differs.");
  auto options = std::make_shared<Options>();
  command->add_option("FIRST", options->first, "A backup")->required();
  command->add_option("SECOND", options->second, "Another one")->required();
  AddKindOptions(*command, options->kinds);
  command->add_flag("--restored", options->restored,
                    "The second backup is of a phone to which the first was restored: ids, which are each phone's own, "
                    "and what a restore does not bring back are left out and listed");
  command->footer(
      "Examples:\n  qvdesk compare /tmp/monday /tmp/wednesday contacts\n"
      "  qvdesk compare /tmp/monday /tmp/other-phones --restored");
  command->callback([options, &status] { status = CompareAll(*options); });
}

}  // namespace qvdesk
