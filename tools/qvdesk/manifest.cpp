// Making, writing, reading and checking the manifest.
#include "tools/qvdesk/manifest.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

#include "tools/qvdesk/digest.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/modes.h"
#include "tools/qvdesk/record_file.h"
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
  if (form == nullptr || form->layout == nullptr) return std::nullopt;
  return ParseRecords(*form->layout, ReadWholeFile(file)).records.size();
}

BackupFile FileFromJson(const Json& json) {
  BackupFile file = {json.at("name"), json.at("bytes"), json.at("sha256"), std::nullopt};
  if (json.contains("records")) file.records = json.at("records").get<std::size_t>();
  // A name that leads elsewhere is none of ours.
  if (fs::path(file.name).filename() != file.name) throw std::runtime_error(Visible(file.name) + " is no file's name");
  return file;
}

BackupKind KindFromJson(const Json& json) {
  BackupKind kind = {.module = ParseModule(json.at("module")).name,
                     .asked = qv::SyncMode{json.at("asked").get<std::int32_t>()},
                     .ran = qv::SyncMode{json.at("ran").get<std::int32_t>()},
                     .anchor = json.at("anchor"),
                     .code = json.at("code"),
                     .result = json.at("result"),
                     .advice = json.at("advice"),
                     .succeeded = json.at("succeeded"),
                     .is_told = json.at("told"),
                     .files = {}};
  for (const Json& file : json.at("files")) kind.files.push_back(FileFromJson(file));
  return kind;
}

}  // namespace

BackupKind Describe(const ModuleRun& run, const fs::path& folder) {
  const std::vector<fs::path> files = FilesIn(folder);
  const Reading outcome = run.Outcome();
  if (files.empty() && outcome.is_success) return DescribeBroken(run, "the handset reports success, but wrote no file");
  BackupKind kind = {.module = run.module.name,
                     .asked = run.mode,
                     .ran = run.mode_after,
                     .anchor = run.AnchorCounts() ? run.anchor_after : "",
                     .code = run.code,
                     .result = outcome.what,
                     .advice = outcome.advice,
                     .succeeded = outcome.is_success,
                     .is_told = !run.IsDropped(),
                     .files = {}};
  const std::vector<std::string> digests = Sha256Of(files);
  for (std::size_t i = 0; i < files.size(); ++i) {
    kind.files.push_back({files[i].filename().string(), fs::file_size(files[i]), digests[i], RecordsOf(files[i])});
  }
  return kind;
}

BackupKind DescribeBroken(const ModuleRun& run, const std::string& why) {
  return {.module = run.module.name,
          .asked = run.mode,
          .ran = run.mode_after,
          .anchor = "",
          .code = run.code,
          .result = why,
          .advice = "",
          .succeeded = false,
          .is_told = !run.IsDropped(),
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
          {"told", kind.is_told},
          {"files", files}};
}

Json ToJson(const Manifest& manifest) {
  Json kinds = Json::array();
  for (const BackupKind& kind : manifest) kinds.push_back(ToJson(kind));
  return {{kBackup, kVersion}, {"kinds", kinds}};
}

void WriteManifest(const Manifest& manifest, const fs::path& backup) {
  const std::string text = ToJson(manifest).dump(2) + "\n";
  WriteWholeFile(backup / kManifestName, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

Manifest ReadManifest(const fs::path& backup) {
  const fs::path file = backup / kManifestName;
  if (!fs::exists(file)) {
    throw std::runtime_error(fmt::format("{}: it is no backup, for it has no {}", backup.string(), kManifestName));
  }
  try {
    const Json json = Json::parse(ReadWholeFile(file));
    if (json.at(kBackup) != kVersion) throw std::runtime_error("it is of another version");
    Manifest manifest;
    for (const Json& kind : json.at("kinds")) manifest.push_back(KindFromJson(kind));
    return manifest;
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{}: it is not a backup's manifest: {}", file.string(), error.what()));
  }
}

std::vector<std::string> Verify(const BackupKind& kind, const fs::path& backup) {
  const fs::path folder = backup / kind.module;
  std::vector<std::string> problems;
  std::set<fs::path> known;
  std::vector<fs::path> present;
  std::vector<const BackupFile*> expected;
  for (const BackupFile& file : kind.files) {
    const fs::path path = folder / file.name;
    known.insert(path);
    if (!fs::is_regular_file(path)) {
      problems.push_back(file.name + " is missing");
    } else if (fs::file_size(path) != file.size) {
      problems.push_back(fmt::format("{} has {} bytes instead of {}", file.name, fs::file_size(path), file.size));
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

std::string ContentsOf(const BackupKind& kind) {
  std::size_t records = 0;
  for (const BackupFile& file : kind.files) records += file.records.value_or(0);
  return fmt::format("{} in {}", CountOf(records, "record"), CountOf(kind.files.size(), "file"));
}

Manifest ChosenOf(const Manifest& manifest, const std::vector<std::string>& names) {
  if (names.empty()) return manifest;
  Manifest chosen;
  for (const std::string& name : names) {
    const char* const module = ParseModule(name).name;
    const auto found = std::ranges::find(manifest, module, &BackupKind::module);
    if (found == manifest.end()) throw UsageError(fmt::format("module {}: the backup does not have it.", module));
    chosen.push_back(*found);
  }
  return chosen;
}

}  // namespace qvdesk
