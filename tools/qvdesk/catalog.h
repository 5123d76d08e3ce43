// All that the desktop knows of the modules, collected from the agent's own tables: their names, their files, the forms
// of these and the words for their results. What is shown, encoded, explained or documented comes from here.
#ifndef QV_TOOLS_QVDESK_CATALOG_H
#define QV_TOOLS_QVDESK_CATALOG_H

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "entry/module_table.h"
#include "layout/record_layout.h"
#include "sync/form_rules.h"
#include "sync/module_names.h"
#include "sync/procedure.h"
#include "sync/result_words.h"
#include "tools/qvdesk/whole_file_layout.h"

namespace qvdesk {

struct Column;  // telling_columns.h
/// The columns of the table view of a file in `directory`.
using ChooseColumns = std::vector<Column>(const qv::layout::RecordLayout& layout,
                                          const std::filesystem::path& directory);

/// The columns of a form whose texts are too many for a line.
struct ChosenColumns {
  const qv::layout::RecordLayout* form = nullptr;
  ChooseColumns* choose = nullptr;
};

/// A call on a store, in words.
struct CallWords {
  const char* when;
  const char* function;
  const char* arguments;
  const char* success;
  const char16_t* entry_point = nullptr;  ///< The function's name where the agent has it.
};

/// What is asked of a store by a module that has steps of its own only.
struct OwnCalls {
  const char* introduction;
  std::span<const CallWords> calls;  ///< In the order in which they are made.
};

/// A module, as the agent has it. What its names leave out it does without: an anchor, a change list, an id map.
struct Module {
  std::int32_t id;
  const qv::ModuleNames& names;
  const qv::ModuleFacts* facts = nullptr;  ///< Null for a module that follows no procedure.
  std::span<const qv::StepWords> step_words = {};
  std::span<const qv::RuleWords> rules = {};  ///< Of its forms, as far as the layouts cannot say them.
  const char16_t* config_file = nullptr;      ///< What travels before the tables, in the exchange directory.
  std::span<const qv::layout::RecordLayout> config_sections = {};  ///< None: the configuration is one block.
  const char16_t* message_file = nullptr;  ///< What travels beside the tables, one for each message: u"%d.eml".
  ChosenColumns columns = {};
  OwnCalls own_calls = {};                          ///< Of a module without facts.
  std::span<const RecordsOfAFile> whole_file = {};  ///< Its tables are one file of just so many records.
  const char* only_failure = nullptr;               ///< What its result 1 means, when that is whatever failed.
  const char* counted = nullptr;  ///< Its results are no codes but how many of these a recover handed over: "message".
};

std::span<const Module> Modules();
/// Of a number in the agent's module table.
const Module& ModuleOf(std::int32_t id);

/// By name, without regard to case, or by number. Throws UsageError that lists the names.
const qv::ModuleRow& ParseModule(const std::string& text);
/// The same for several: each once, in the order in which they are named.
std::vector<const qv::ModuleRow*> ParseModules(const std::vector<std::string>& texts);
const qv::ModuleRow& RowOf(std::int32_t id);

enum class FileKind : std::uint8_t { kTable, kSections, kBlock, kMessage, kChangeList, kIdMap, kSnapshot, kAnchors };

/// One kind of file that passes between handset and desktop, or that the handset keeps.
struct FileForm {
  std::string name;  ///< What --as and encode take. Of files that are numbered it has an N for the number: "N.eml".
  FileKind kind;
  const qv::layout::RecordLayout* layout;  ///< Null for what is not records back to back.
  const Module* module;                    ///< Null for a form that is the same in all modules.
  std::string path;  ///< On the handset: absolute, or a file name in the exchange directory. Empty for such a form.
  std::uint32_t incremental_stride = 0;  ///< As in qv::TableNames.
  ChooseColumns* columns = nullptr;      ///< Null: as of any form.
};

/// What the name of a kind is when no module is meant: "change-list".
std::string_view NameOf(FileKind kind);

/// The name of a numbered file: `pattern` is like u"%d.eml".
std::string NumberedName(std::u16string_view pattern, const std::string& number);

/// Every form: the modules' files by their names, then the kinds.
const std::vector<FileForm>& FileForms();
/// By a file's name, which may be a form's with a number for its N, directories in front of it ignored, without regard
/// to case; null when no form is called so.
const FileForm* FindForm(std::string_view file);
/// Whether an exchange directory can have a file of this name from the module, without regard to case.
bool IsExchanged(const Module& module, std::string_view name);
/// Throws UsageError that lists the forms.
const FileForm& ParseForm(const std::string& name);

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_CATALOG_H
