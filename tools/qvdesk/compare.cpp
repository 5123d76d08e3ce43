// "compare": two backups, record by record.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/kind_report.h"
#include "tools/qvdesk/manifest.h"
#include "tools/qvdesk/record_file.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

namespace fs = std::filesystem;
using qv::layout::Field;
using qv::layout::Form;
using qv::layout::RecordLayout;

struct Options {
  fs::path left;
  fs::path right;
  std::vector<std::string> modules;
  bool ignore_ids = false;
  bool json = false;
};

/// A difference of texts this long tells no more when it is shown whole.
constexpr std::size_t kMostShown = 40;
constexpr std::size_t kMostDetails = 8;

bool IsId(std::string_view name) {
  return name == "id" || name.ends_with("_id");
}

/// A record as its fields, without what only helps people read them.
Json FieldsOf(const RecordLayout& layout, const RecordView& record, bool ignore_ids) {
  Json fields = ToJson(layout, record);
  fields.erase("reads");
  if (!ignore_ids) return fields;
  for (const Field& field : layout.fields) {
    if (IsId(field.name)) fields.erase(field.name);
  }
  return fields;
}

/// What tells a record from the others of its file: its ids, or all of it when these do not count.
std::string KeyOf(const RecordLayout& layout, const Json& fields, bool ignore_ids) {
  if (ignore_ids) return fields.dump();
  std::string key;
  for (const Field& field : layout.fields) {
    if (IsId(field.name) && fields.contains(field.name)) {
      key = fmt::format("{} {}", field.name, fields[field.name].dump());
      break;
    }
  }
  return key;
}

struct Difference {
  std::size_t records = 0;  ///< Equal ones.
  std::size_t only_left = 0;
  std::size_t only_right = 0;
  std::size_t changed = 0;
  std::vector<std::string> details = {};

  bool IsNone() const { return only_left + only_right + changed == 0; }
  void Tell(const std::string& line) {
    if (details.size() < kMostDetails) details.push_back(line);
  }
};

std::string ChangedFields(const Json& left, const Json& right) {
  std::string text;
  for (const auto& [name, value] : left.items()) {
    if (right.contains(name) && right[name] == value) continue;
    const std::string other = right.contains(name) ? right[name].dump() : "nothing";
    text += fmt::format("{}{}: {} | {}", text.empty() ? "" : ", ", name, CutTo(value.dump(), kMostShown),
                        CutTo(other, kMostShown));
  }
  return text;
}

using Records = std::multimap<std::string, Json>;

Records RecordsOf(const RecordLayout& layout, const std::vector<std::uint8_t>& bytes, bool ignore_ids) {
  Records records;
  for (const RecordView& record : ParseRecords(layout, bytes).records) {
    const Json fields = FieldsOf(layout, record, ignore_ids);
    records.emplace(KeyOf(layout, fields, ignore_ids), fields);
  }
  return records;
}

/// Records of one key are paired in their order.
Difference CompareRecords(const Records& left, Records right) {
  Difference difference;
  for (const auto& [key, fields] : left) {
    const auto found = right.find(key);
    if (found == right.end()) {
      ++difference.only_left;
      difference.Tell("only in the first: " + CutTo(key, 2 * kMostShown));
      continue;
    }
    if (found->second == fields) {
      ++difference.records;
    } else {
      ++difference.changed;
      difference.Tell(key + ": " + ChangedFields(fields, found->second));
    }
    right.erase(found);
  }
  difference.only_right = right.size();
  for (const auto& [key, fields] : right) difference.Tell("only in the second: " + CutTo(key, 2 * kMostShown));
  return difference;
}

/// Files that say what happened in a run, and not what the phone holds.
bool IsOfTheRun(const FileForm* form) {
  return form != nullptr && (form->kind == FileKind::kChangeList || form->kind == FileKind::kIdMap);
}

const BackupFile* FileOf(const BackupKind& kind, const std::string& name) {
  const auto found = std::ranges::find(kind.files, name, &BackupFile::name);
  return found == kind.files.end() ? nullptr : &*found;
}

struct Sides {
  const BackupKind& left;
  const BackupKind& right;
};

Difference CompareFile(const Sides& kinds, const std::string& name, const Options& options) {
  const BackupFile* const left = FileOf(kinds.left, name);
  const BackupFile* const right = FileOf(kinds.right, name);
  Difference difference;
  const FileForm* const form = FindForm(name);
  if (left == nullptr || right == nullptr) {
    ++(left == nullptr ? difference.only_right : difference.only_left);
    difference.Tell(fmt::format("the file is only in the {}", left == nullptr ? "second" : "first"));
  } else if (left->sha256 != right->sha256 && form != nullptr && form->layout != nullptr) {
    const auto read = [&](const fs::path& backup, const BackupKind& kind) {
      return RecordsOf(*form->layout, ReadWholeFile(backup / kind.module / name), options.ignore_ids);
    };
    difference = CompareRecords(read(options.left, kinds.left), read(options.right, kinds.right));
  } else if (left->sha256 != right->sha256) {
    ++difference.changed;
    difference.Tell(fmt::format("its {} and {} bytes differ", left->size, right->size));
  } else {
    difference.records = left->records.value_or(1);
  }
  return difference;
}

void Compare(const Sides& kinds, const Options& options, KindReport& report) {
  std::set<std::string> names;
  for (const BackupKind* const kind : {&kinds.left, &kinds.right}) {
    for (const BackupFile& file : kind->files) {
      if (!IsOfTheRun(FindForm(file.name))) names.insert(file.name);
    }
  }
  Json files = Json::array();
  std::vector<std::string> details;
  std::size_t records = 0;
  for (const std::string& name : names) {
    const Difference found = CompareFile(kinds, name, options);
    records += found.records;
    files.push_back({{"name", name},
                     {"equal", found.records},
                     {"changed", found.changed},
                     {"only_first", found.only_left},
                     {"only_second", found.only_right},
                     {"details", found.details}});
    if (found.IsNone()) continue;
    details.push_back(fmt::format("{}: {} equal, {} changed, {} only in the first, {} only in the second", name,
                                  found.records, found.changed, found.only_left, found.only_right));
    for (const std::string& line : found.details) details.push_back("  " + line);
  }
  const Json json = {{"module", kinds.left.module}, {"same", details.empty()}, {"files", files}};
  if (details.empty()) {
    report.Succeeded(kinds.left.module, "the same: " + CountOf(records, "record"), json);
  } else {
    report.Failed(kinds.left.module, "they differ", json, details);
  }
}

/// Fields of the stores that no exchange file tells.
std::string NotCarried(const BuiltModule& module) {
  std::string names;
  for (const qv::TableNames& table : module.names.tables) {
    if (table.layout == nullptr) continue;
    for (const Field& field : table.layout->fields) {
      const bool is_told = field.exchange.form != Form::kNone && field.carried != qv::layout::Carried::kRecoverOnly;
      if (is_told || field.store.form == Form::kNone || field.store.form == Form::kUnused) continue;
      if (field.carried == qv::layout::Carried::kByModule) continue;  // Other fields tell it.
      names += fmt::format("{}{} of the {}", names.empty() ? "" : ", ", field.name, table.layout->name);
    }
  }
  return names;
}

void TellWhatIsNotCompared(const Manifest& kinds, const Options& options, const KindReport& report) {
  report.Conclude(
      "Not compared, because the files do not carry it: the ids of messages' files and the times of last change" +
      std::string(options.ignore_ids ? "; and ids, as was asked" : "") + ".");
  for (const BackupKind& kind : kinds) {
    const BuiltModule* const module = FindBuiltModule(ParseModule(kind.module).id);
    const std::string fields = module == nullptr ? "" : NotCarried(*module);
    if (!fields.empty()) report.Conclude(fmt::format("  {}: {}", kind.module, fields));
  }
}

int CompareAll(const Options& options) {
  const Manifest left = ChosenOf(ReadManifest(options.left), options.modules);
  const Manifest right = ReadManifest(options.right);
  KindReport report(options.json);
  for (const BackupKind& kind : left) {
    const auto other = std::ranges::find(right, kind.module, &BackupKind::module);
    if (other == right.end()) {
      report.Failed(kind.module, "only in the first backup", {{"module", kind.module}, {"same", false}});
    } else {
      Compare({kind, *other}, options, report);
    }
  }
  TellWhatIsNotCompared(left, options, report);
  return report.End("the same");
}

}  // namespace

void AddCompare(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "compare",
      "Compares two backups record by record: a record is looked for by its id, and what differs is shown field by "
      "field. Change lists and id maps are left out. At the end it says what no backup carries. The exit status is 1 "
      "when a kind differs.");
  auto options = std::make_shared<Options>();
  command->add_option("FIRST", options->left, "A backup")->required();
  command->add_option("SECOND", options->right, "Another one")->required();
  command->add_option("MODULE", options->modules,
                      "Kinds of data by name or number; all of the first when none is named");
  command->add_flag("--ignore-ids", options->ignore_ids,
                    "For two phones: ids are each phone's own, so records are looked for by all the rest");
  command->add_flag("--json", options->json, "The report as JSON");
  command->footer("Example:\n  qvdesk compare /tmp/monday /tmp/tuesday contacts");
  command->callback([options, &status] { status = CompareAll(*options); });
}

}  // namespace qvdesk
