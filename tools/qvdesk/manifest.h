// What a backup says of itself: a folder with a sub-folder for each kind of data, and beside them manifest.json, whose
// keys docs/BACKUP.md explains to other programs.
#ifndef QV_TOOLS_QVDESK_MANIFEST_H
#define QV_TOOLS_QVDESK_MANIFEST_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "sync/sync_mode.h"
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
  bool reports_failures = true;  ///< Otherwise the handset reports success whatever happened.
  std::vector<BackupFile> files;

  /// And not all that the handset held.
  bool HasOnlyChanges() const { return ran == qv::SyncMode::kIncremental; }
};

using Manifest = std::vector<BackupKind>;

/// Of one export, whose files lie in `folder` now. One that left no file failed, whatever the handset says of it.
/// Throws std::runtime_error when they cannot be read.
BackupKind Describe(const ModuleRun& run, const std::filesystem::path& folder);
/// Of one that could not be made or fetched.
BackupKind DescribeFailed(const ModuleRun& run, const std::string& why);

Json ToJson(const BackupKind& kind);
Json ToJson(const Manifest& manifest);

void WriteManifest(const Manifest& manifest, const std::filesystem::path& backup);
/// Throws std::runtime_error for a folder that is no backup, and for a manifest that WriteManifest cannot have written.
Manifest ReadManifest(const std::filesystem::path& backup);

/// Why a kind of a backup is not to be used.
struct Flaw {
  std::string what;                        ///< "damaged in the backup".
  std::vector<std::string> problems = {};  ///< What is wrong with its files, a line for each.
};

/// Nothing: the kind's export succeeded, and its files are as they were written. `which` names the backup to people.
std::optional<Flaw> FlawOf(const BackupKind& kind, const std::filesystem::path& backup,
                           const std::string& which = "the backup");

/// "60 records in 3 files", for people. A change list's entries are no records: "2 records, 3 changes in 2 files".
std::string ContentsOf(const BackupKind& kind);

/// The kinds that were asked for by name or number, each once; all of them when none was. Throws UsageError for one
/// that the backup does not have.
Manifest ChosenOf(const Manifest& manifest, const std::vector<std::string>& names);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_MANIFEST_H
