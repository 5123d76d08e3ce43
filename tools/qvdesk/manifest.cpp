// Making, writing, reading and checking the manifest.
#include "tools/qvdesk/manifest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

#include "tools/qvdesk/digest.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/section_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

namespace fs = std::filesystem;

constexpr char kBackup[] = "backup";
constexpr int kVersion = 1;

std::vector<fs::path> FilesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
  std::ranges::sort(files);
  return files;
}

std::optional<std::size_t> RecordsOf(const fs::path& file) {
  const FileForm* const form = FindForm(file.filename().string());
  if (form == nullptr) return std::nullopt;
  if (form->layout != nullptr) return ParseRecords(*form->layout, ReadWholeFile(file)).records.size();
  if (form->kind != FileKind::kSections) return std::nullopt;
  const std::vector<std::uint8_t> bytes = ReadWholeFile(file);
  std::size_t records = 0;
  for (const RecordFile& section : ParseSections(form->module->config_sections, bytes).sections) {
    records += section.records.size();
  }
  return records;
}

/// Throws std::runtime_error for what is no whole number from `least` to `most`.
template <typename Number>
Number NumberIn(const Json& json, const char* key, Number least = 0, Number most = std::numeric_limits<Number>::max()) {
  const Json& value = json.at(key);
  if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least || value.get<std::uint64_t>() > most) {
    throw std::runtime_error(fmt::format("\"{}\" is {}, no number from {} to {}", key, value.dump(), least, most));
  }
  return value.get<Number>();
}

qv::SyncMode ModeIn(const Json& json, const char* key) {
  return qv::SyncMode{NumberIn<std::uint8_t>(json, key, static_cast<std::uint8_t>(qv::SyncMode::kFull),
                                             static_cast<std::uint8_t>(qv::SyncMode::kPlainCopy))};
}

BackupFile FileFromJson(const Json& json, const qv::ModuleRow& module) {
  BackupFile file = {json.at("name"), NumberIn<std::uintmax_t>(json, "bytes"), json.at("sha256"), std::nullopt};
  if (json.contains("records")) file.records = NumberIn<std::size_t>(json, "records");
  // Least of all has it one that leads elsewhere.
  if (!IsExchanged(ModuleOf(module.id), file.name)) {
    throw std::runtime_error(fmt::format("{} is no file of {}", file.name, module.name));
  }
  return file;
}

std::vector<BackupFile> FilesFromJson(const Json& list, const qv::ModuleRow& module) {
  std::vector<BackupFile> files;
  std::set<std::string> names;  // A handset knows no case.
  for (const Json& json : list) {
    files.push_back(FileFromJson(json, module));
    const std::string& name = files.back().name;
    if (!names.insert(Lowercase(name)).second) throw std::runtime_error(name + " is listed twice");
  }
  return files;
}

BackupKind KindFromJson(const Json& json) {
  const qv::ModuleRow& module = ParseModule(json.at("module"));
  return {.module = module.name,
          .asked = ModeIn(json, "asked"),
          .ran = ModeIn(json, "ran"),
          .anchor = json.at("anchor"),
          .code = NumberIn<std::uint32_t>(json, "code"),
          .result = json.at("result"),
          .advice = json.at("advice"),
          .succeeded = json.at("succeeded"),
          .reports_failures = json.at("reports_failures"),
          .files = FilesFromJson(json.at("files"), module)};
}

Manifest ManifestFromJson(const Json& json) {
  if (json.at(kBackup) != kVersion) throw std::runtime_error("it is of another version");
  Manifest manifest;
  for (const Json& kind : json.at("kinds")) {
    manifest.push_back(KindFromJson(kind));
    const std::string& module = manifest.back().module;
    if (std::ranges::count(manifest, module, &BackupKind::module) > 1) {
      throw std::runtime_error(module + " is listed twice");
    }
  }
  if (manifest.empty()) throw std::runtime_error("it has no kinds of data");
  return manifest;
}

/// What is wrong with a file, but for its contents.
std::optional<std::string> ProblemOf(const BackupFile& file, const fs::path& path) {
  if (fs::is_symlink(path)) return file.name + " is a symbolic link";
  if (!fs::is_regular_file(path)) return file.name + " is missing";
  if (fs::file_size(path) == file.size) return std::nullopt;
  return fmt::format("{} has {} bytes instead of {}", file.name, fs::file_size(path), file.size);
}

/// What is wrong with the files of a kind, a line for each: missing, of another size or content, or not in the
/// manifest. A link may lead to what changes.
std::vector<std::string> ProblemsOf(const BackupKind& kind, const fs::path& folder) {
  if (fs::is_symlink(folder)) return {kind.module + " is a symbolic link"};
  if (kind.succeeded && kind.files.empty()) return {"it has no files, and every export leaves one"};
  std::vector<std::string> problems;
  std::set<fs::path> known;
  std::vector<fs::path> present;
  std::vector<const BackupFile*> expected;
  for (const BackupFile& file : kind.files) {
    const fs::path path = folder / file.name;
    known.insert(path);
    if (const auto problem = ProblemOf(file, path)) {
      problems.push_back(*problem);
    } else {
      present.push_back(path);
      expected.push_back(&file);
    }
  }
  const std::vector<std::string> digests = Sha256Of(present);
  for (std::size_t i = 0; i < present.size(); ++i) {
    if (digests[i] != expected[i]->sha256) problems.push_back(expected[i]->name + " has other contents");
  }
  if (!fs::is_directory(folder)) return problems;
  for (const fs::path& file : FilesIn(folder)) {
    if (!known.contains(file)) problems.push_back(file.filename().string() + " is not of the backup");
  }
  return problems;
}

}  // namespace

BackupKind Describe(const ModuleRun& run, const fs::path& folder) {
  const std::vector<fs::path> files = FilesIn(folder);
  const Reading outcome = run.Outcome();
  if (files.empty() && outcome.is_success) return DescribeFailed(run, "the handset reports success, but wrote no file");
  BackupKind kind = {.module = run.module.name,
                     .asked = run.mode,
                     .ran = run.mode_after,
                     .anchor = run.AnchorCounts() ? run.anchor_after : "",
                     .code = run.code,
                     .result = outcome.what,
                     .advice = outcome.advice,
                     .succeeded = outcome.is_success,
                     .reports_failures = !run.IsDropped(),
                     .files = {}};
  const std::vector<std::string> digests = Sha256Of(files);
  for (std::size_t i = 0; i < files.size(); ++i) {
    kind.files.push_back({files[i].filename().string(), fs::file_size(files[i]), digests[i], RecordsOf(files[i])});
  }
  return kind;
}

BackupKind DescribeFailed(const ModuleRun& run, const std::string& why) {
  return {.module = run.module.name,
          .asked = run.mode,
          .ran = run.mode_after,
          .anchor = "",
          .code = run.code,
          .result = why,
          .advice = "",
          .succeeded = false,
          .reports_failures = !run.IsDropped(),
          .files = {}};
}

Json ToJson(const BackupKind& kind) {
  Json files = Json::array();
  for (const BackupFile& file : kind.files) {
    Json json = {{"name", file.name}, {"bytes", file.size}, {"sha256", file.sha256}};
    if (file.records) json["records"] = *file.records;
    files.push_back(json);
  }
  return {{"module", kind.module},
          {"asked", static_cast<std::int32_t>(kind.asked)},
          {"ran", static_cast<std::int32_t>(kind.ran)},
          {"anchor", kind.anchor},
          {"code", kind.code},
          {"result", kind.result},
          {"advice", kind.advice},
          {"succeeded", kind.succeeded},
          {"reports_failures", kind.reports_failures},
          {"files", files}};
}

Json ToJson(const Manifest& manifest) {
  Json kinds = Json::array();
  for (const BackupKind& kind : manifest) kinds.push_back(ToJson(kind));
  return {{kBackup, kVersion}, {"kinds", kinds}};
}

void WriteManifest(const Manifest& manifest, const fs::path& backup) {
  const std::string text = ToIndentedText(ToJson(manifest)) + "\n";
  WriteWholeFile(backup / kManifestName, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

Manifest ReadManifest(const fs::path& backup) {
  const fs::path file = backup / kManifestName;
  if (!fs::exists(file)) {
    throw std::runtime_error(fmt::format("{}: it is no backup, for it has no {}", backup.string(), kManifestName));
  }
  try {
    return ManifestFromJson(Json::parse(ReadWholeFile(file)));
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{}: it is not a backup's manifest: {}", file.string(), error.what()));
  }
}

std::optional<Flaw> FlawOf(const BackupKind& kind, const fs::path& backup, const std::string& which) {
  std::vector<std::string> problems = ProblemsOf(kind, backup / kind.module);
  if (!problems.empty()) return Flaw{"damaged in " + which, std::move(problems)};
  if (!kind.succeeded) return Flaw{fmt::format("its export for {} failed: {}", which, kind.result)};
  return std::nullopt;
}

std::string ContentsOf(const BackupKind& kind) {
  std::size_t records = 0;
  std::size_t changes = 0;
  for (const BackupFile& file : kind.files) {
    const FileForm* const form = FindForm(file.name);
    const bool is_change_list = form != nullptr && form->kind == FileKind::kChangeList;
    (is_change_list ? changes : records) += file.records.value_or(0);
  }
  return fmt::format("{}{} in {}", CountOf(records, "record"),
                     kind.HasOnlyChanges() ? ", " + CountOf(changes, "change") : "",
                     CountOf(kind.files.size(), "file"));
}

Manifest ChosenOf(const Manifest& manifest, const std::vector<std::string>& names) {
  if (names.empty()) return manifest;
  Manifest chosen;
  for (const qv::ModuleRow* const module : ParseModules(names)) {
    const auto found = std::ranges::find(manifest, module->name, &BackupKind::module);
    if (found == manifest.end()) throw UsageError(fmt::format("module {}: the backup does not have it.", module->name));
    chosen.push_back(*found);
  }
  return chosen;
}

}  // namespace qvdesk
