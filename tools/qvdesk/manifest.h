// What a backup says of itself: a folder with a sub-folder for each kind of data, and beside them manifest.json.
#ifndef QV_TOOLS_QVDESK_MANIFEST_H
#define QV_TOOLS_QVDESK_MANIFEST_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/qvdesk/field_value.h"
#include "tools/qvdesk/module_run.h"

namespace qvdesk {

inline constexpr char kManifestName[] = "manifest.json";

struct BackupFile {
  std::string name;
  std::uintmax_t size = 0;
  std::string sha256;
  std::optional<std::size_t> records;  ///< Nothing for a file that is not records.
};

/// One kind of data in a backup: how its export went, and the files that it gave.
struct BackupKind {
  std::string module;  ///< Its name, which is also its sub-folder's.
  qv::SyncMode asked{};
  qv::SyncMode ran{};
  std::string anchor;  ///< Handed out by the export; empty when there is none to present.
  std::uint32_t code = 0;
  std::string result;  ///< In words.
  std::string advice;  ///< What to look at when it failed; may be empty.
  bool succeeded = false;
  bool is_told = true;  ///< Otherwise the handset reports success whatever happened.
  std::vector<BackupFile> files;
};

using Manifest = std::vector<BackupKind>;

/// Of one export, whose files lie in `folder` now. One that left no file failed, whatever the handset says of it.
/// Throws std::runtime_error when they cannot be read.
BackupKind Describe(const ModuleRun& run, const std::filesystem::path& folder);
/// Of one that could not be made or fetched.
BackupKind DescribeBroken(const ModuleRun& run, const std::string& why);

Json ToJson(const BackupKind& kind);
Json ToJson(const Manifest& manifest);

void WriteManifest(const Manifest& manifest, const std::filesystem::path& backup);
/// Throws std::runtime_error for a folder that is no backup.
Manifest ReadManifest(const std::filesystem::path& backup);

/// What is wrong with the files of a kind, a line for each: missing, of another size or content, or not in the
/// manifest. Nothing: they are as they were written.
std::vector<std::string> Verify(const BackupKind& kind, const std::filesystem::path& backup);

/// "60 records in 3 files", for people.
std::string ContentsOf(const BackupKind& kind);

/// The kinds that were asked for by name or number; all of them when none was. Throws UsageError for one that the
/// backup does not have.
Manifest ChosenOf(const Manifest& manifest, const std::vector<std::string>& names);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_MANIFEST_H
