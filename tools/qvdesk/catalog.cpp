// The one list of built modules, and what follows from it.
#include "tools/qvdesk/catalog.h"

#include <algorithm>
#include <iterator>

#include "modules/calendar/agenda.h"
#include "modules/calendar/schedule.h"
#include "modules/calendar/tasks.h"
#include "modules/contacts/contacts.h"
#include "modules/messaging/call_history.h"
#include "modules/messaging/mms.h"
#include "modules/messaging/sms.h"
#include "modules/messaging/unified_mail.h"
#include "modules/organizer/card_reader.h"
#include "modules/organizer/graphic_memo.h"
#include "modules/telephony/call_filter.h"
#include "modules/telephony/quick_dial.h"
#include "sync/anchor_file.h"
#include "sync/file_forms.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/telling_columns.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

/// In the order of their numbers. A new module is one line here.
constexpr BuiltModule kBuiltModules[] = {
    {.id = 1,
     .names = qv::contacts::kNames,
     .facts = &qv::contacts::kFacts,
     .step_words = qv::contacts::kStepWords,
     .rules = qv::contacts::kRules,
     .main_columns = ContactColumns},
    {2, qv::schedule::kNames, &qv::schedule::kFacts, qv::schedule::kStepWords},
    {3, qv::tasks::kNames, &qv::tasks::kFacts, {}},
    {4, qv::agenda::kNames, &qv::agenda::kFacts, qv::agenda::kStepWords, qv::agenda::kRules},
    {5, qv::unified_mail::kNames, &qv::unified_mail::kFacts, {}, qv::unified_mail::kRules},
    {.id = 7,
     .names = qv::card_reader::kNames,
     .facts = &qv::card_reader::kFacts,
     .step_words = qv::OneTableStepWords(qv::card_reader::kFacts),
     .main_columns = CardColumns},
    {.id = 8,
     .names = qv::sms::kNames,
     .facts = &qv::sms::kFacts,
     .step_words = qv::OneTableStepWords(qv::sms::kFacts),
     .rules = qv::sms::kRules,
     .config_file = qv::sms::kConfigFile,
     .config_sections = qv::sms::kSectionLayouts},
    {.id = 9,
     .names = qv::call_history::kNames,
     .facts = &qv::call_history::kFacts,
     .step_words = qv::OneTableStepWords(qv::call_history::kFacts),
     .rules = qv::call_history::kRules},
    {10, qv::quick_dial::kNames, &qv::quick_dial::kFacts, qv::OneTableStepWords(qv::quick_dial::kFacts)},
    {11, qv::call_filter::kNames, &qv::call_filter::kFacts, qv::call_filter::kStepWords, qv::call_filter::kRules},
    {.id = 12,
     .names = qv::mms::kNames,
     .facts = &qv::mms::kFacts,
     .step_words = qv::OneTableStepWords(qv::mms::kFacts),
     .config_file = qv::mms::kConfigFile},
    {13, qv::graphic_memo::kNames, &qv::graphic_memo::kFacts, qv::OneTableStepWords(qv::graphic_memo::kFacts)},
};

constexpr FileKind kBookkeepingKinds[] = {FileKind::kChangeList, FileKind::kIdMap, FileKind::kSnapshot,
                                          FileKind::kAnchors};

const qv::layout::RecordLayout* BookkeepingLayout(FileKind kind) {
  switch (kind) {
    case FileKind::kChangeList: return &qv::kChangeLayout;
    case FileKind::kIdMap: return &qv::kIdMapLayout;
    case FileKind::kSnapshot: return &qv::kSnapshotLayout;
    default: return nullptr;
  }
}

std::string FileName(std::string_view path) {
  return std::string(path.substr(path.find_last_of("\\/") + 1));
}

void AddFile(std::vector<FileForm>& forms, FileKind kind, const qv::layout::RecordLayout* layout,
             const BuiltModule* module, const char16_t* path) {
  const std::string utf8 = ToUtf8(path);
  forms.push_back({FileName(utf8), kind, layout, module, utf8});
}

std::vector<FileForm> CollectForms() {
  std::vector<FileForm> forms;
  for (const BuiltModule& module : kBuiltModules) {
    for (const qv::TableNames& table : module.names.tables) {
      if (table.exchange_file == nullptr) continue;
      AddFile(forms, FileKind::kTable, table.layout, &module, table.exchange_file);
      forms.back().incremental_stride = table.incremental_stride;
      if (&table == module.names.tables.data()) forms.back().columns = module.main_columns;
    }
    if (module.config_file != nullptr) {
      const FileKind kind = module.config_sections.empty() ? FileKind::kBlock : FileKind::kSections;
      AddFile(forms, kind, nullptr, &module, module.config_file);
    }
    AddFile(forms, FileKind::kChangeList, &qv::kChangeLayout, &module, module.names.change_list);
    AddFile(forms, FileKind::kIdMap, &qv::kIdMapLayout, &module, module.names.id_map);
    for (const qv::TableNames& table : module.names.tables) {
      if (table.snapshot_log == nullptr) continue;
      AddFile(forms, FileKind::kSnapshot, &qv::kSnapshotLayout, &module, table.snapshot_log);
    }
  }
  AddFile(forms, FileKind::kAnchors, nullptr, nullptr, qv::kAnchorFile);
  for (const FileKind kind : kBookkeepingKinds) {
    forms.push_back({std::string(NameOf(kind)), kind, BookkeepingLayout(kind), nullptr, ""});
  }
  return forms;
}

}  // namespace

std::span<const BuiltModule> BuiltModules() {
  return kBuiltModules;
}

const BuiltModule* FindBuiltModule(std::int32_t id) {
  const auto found = std::ranges::find(kBuiltModules, id, &BuiltModule::id);
  return found == std::end(kBuiltModules) ? nullptr : &*found;
}

const qv::ModuleRow& RowOf(std::int32_t id) {
  return *std::ranges::find(qv::kModuleTable, id, &qv::ModuleRow::id);
}

const qv::ModuleRow& ParseModule(const std::string& text) {
  std::string names;
  for (const qv::ModuleRow& row : qv::kModuleTable) {
    if (SameWithoutCase(text, row.name) || text == std::to_string(row.id)) return row;
    names += std::string(names.empty() ? "" : ", ") + row.name;
  }
  throw UsageError("module \"" + Visible(text) + "\": there is none of this name or number. The modules are 1 to " +
                   std::to_string(std::size(qv::kModuleTable)) + ": " + names + ".");
}

std::string_view NameOf(FileKind kind) {
  switch (kind) {
    case FileKind::kTable: return "table";
    case FileKind::kSections: return "sections";
    case FileKind::kBlock: return "block";
    case FileKind::kChangeList: return "change-list";
    case FileKind::kIdMap: return "id-map";
    case FileKind::kSnapshot: return "snapshot";
    default: return "anchors";
  }
}

const std::vector<FileForm>& FileForms() {
  static const std::vector<FileForm> forms = CollectForms();
  return forms;
}

const FileForm* FindForm(std::string_view file) {
  const std::string name = FileName(file);
  for (const FileForm& form : FileForms()) {
    if (SameWithoutCase(form.name, name)) return &form;
  }
  return nullptr;
}

const FileForm& ParseForm(const std::string& name) {
  if (const FileForm* const form = FindForm(name)) return *form;
  std::string names;
  for (const FileForm& form : FileForms()) names += (names.empty() ? "" : ", ") + form.name;
  throw UsageError("form \"" + Visible(name) + "\": there is none of this name. The forms are: " + names + ".");
}

}  // namespace qvdesk
