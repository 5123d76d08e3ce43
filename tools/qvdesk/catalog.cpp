// The one list of modules, and what follows from it.
#include "tools/qvdesk/catalog.h"

#include <algorithm>
#include <iterator>

#include "modules/calendar/agenda.h"
#include "modules/calendar/schedule.h"
#include "modules/calendar/tasks.h"
#include "modules/contacts/contacts.h"
#include "modules/mail/mail.h"
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
#include "tools/qvdesk/mail_calls.h"
#include "tools/qvdesk/settings_calls.h"
#include "tools/qvdesk/telling_columns.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

constexpr char kAnySettingsFailure[] =
    "the store library could not be loaded or lacks an entry point, a file could not be opened, read or written, or "
    "memory was short";

constexpr RecordsOfAFile kClockFile[] = {
    {"alarm", &qv::settings::kAlarmLayout, qv::settings::kAlarmCount},
    {"clock_name", &qv::settings::kClockNameLayout, qv::settings::kClockNameCount},
};

/// In the order of their numbers. A new module is one line here.
constexpr Module kModules[] = {
    {.id = 1,
     .names = qv::contacts::kNames,
     .facts = &qv::contacts::kFacts,
     .step_words = qv::contacts::kStepWords,
     .rules = qv::contacts::kRules,
     .columns = {&qv::contacts::kContactLayout, ContactColumns}},
    {2, qv::schedule::kNames, &qv::schedule::kFacts, qv::schedule::kStepWords},
    {3, qv::tasks::kNames, &qv::tasks::kFacts, {}},
    {4, qv::agenda::kNames, &qv::agenda::kFacts, qv::agenda::kStepWords, qv::agenda::kRules},
    {.id = 5,
     .names = qv::unified_mail::kNames,
     .facts = &qv::unified_mail::kFacts,
     .rules = qv::unified_mail::kRules,
     .columns = {&qv::unified_mail::kMailLayout, UnifiedMailColumns}},
    {.id = 6,
     .names = qv::mail::kNames,
     .rules = qv::mail::kRules,
     .message_file = qv::mail::kMessageFile,
     .columns = {&qv::mail::kHeaderLayout, MessageColumns},
     .own_calls = kMailCalls,
     .counted = "message"},
    {.id = 7,
     .names = qv::card_reader::kNames,
     .facts = &qv::card_reader::kFacts,
     .step_words = qv::OneTableStepWords(qv::card_reader::kFacts),
     .rules = qv::card_reader::kRules,
     .columns = {&qv::card_reader::kCardLayout, CardColumns}},
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
    {.id = 14,
     .names = qv::settings::kPersonalModule,
     .rules = qv::settings::kPersonalRules,
     .own_calls = kPersonalCalls,
     .only_failure = kAnySettingsFailure},
    {.id = 15,
     .names = qv::settings::kBrowserModule,
     .rules = qv::settings::kBrowserRules,
     .own_calls = kBrowserCalls,
     .only_failure = kAnySettingsFailure},
    {.id = 16,
     .names = qv::settings::kClockModule,
     .rules = qv::settings::kClockRules,
     .own_calls = kClockCalls,
     .whole_file = kClockFile},
};

constexpr FileKind kBookkeepingKinds[] = {FileKind::kChangeList, FileKind::kIdMap, FileKind::kSnapshot,
                                          FileKind::kAnchors};

/// Stands for the number in a numbered file's name, at its beginning.
constexpr char kNumber[] = "N";

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

/// `path`: null for what a module does without.
void AddFile(std::vector<FileForm>& forms, FileKind kind, const qv::layout::RecordLayout* layout, const Module* module,
             const char16_t* path) {
  if (path == nullptr) return;
  const std::string utf8 = ToUtf8(path);
  const bool is_kept_on_handset = kind == FileKind::kSnapshot || kind == FileKind::kAnchors;
  forms.push_back({FileName(utf8), kind, layout, module, is_kept_on_handset ? utf8 : FileName(utf8)});
}

void AddTable(std::vector<FileForm>& forms, const Module& module, const qv::TableNames& table) {
  if (table.exchange_file == nullptr) return;
  AddFile(forms, FileKind::kTable, table.layout, &module, table.exchange_file);
  forms.back().incremental_stride = table.incremental_stride;
  if (table.layout == module.columns.form) forms.back().columns = module.columns.choose;
}

void AddTables(std::vector<FileForm>& forms, const Module& module) {
  if (module.whole_file.empty()) {
    for (const qv::TableNames& table : module.names.tables) AddTable(forms, module, table);
    return;
  }
  const char16_t* const file = module.names.tables.front().exchange_file;
  AddFile(forms, FileKind::kTable, &WholeFileLayout(RowOf(module.id).name, module.whole_file), &module, file);
}

void AddMessageFile(std::vector<FileForm>& forms, const Module& module) {
  if (module.message_file == nullptr) return;
  const std::string name = NumberedName(module.message_file, kNumber);
  forms.push_back({name, FileKind::kMessage, nullptr, &module, name});
}

std::vector<FileForm> CollectForms() {
  std::vector<FileForm> forms;
  for (const Module& module : kModules) {
    AddTables(forms, module);
    AddFile(forms, module.config_sections.empty() ? FileKind::kBlock : FileKind::kSections, nullptr, &module,
            module.config_file);
    AddMessageFile(forms, module);
    AddFile(forms, FileKind::kChangeList, &qv::kChangeLayout, &module, module.names.change_list);
    AddFile(forms, FileKind::kIdMap, &qv::kIdMapLayout, &module, module.names.id_map);
    for (const qv::TableNames& table : module.names.tables) {
      AddFile(forms, FileKind::kSnapshot, &qv::kSnapshotLayout, &module, table.snapshot_log);
    }
  }
  AddFile(forms, FileKind::kAnchors, nullptr, nullptr, qv::kAnchorFile);
  for (const FileKind kind : kBookkeepingKinds) {
    forms.push_back({std::string(NameOf(kind)), kind, BookkeepingLayout(kind), nullptr, ""});
  }
  return forms;
}

bool IsNumber(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

/// A numbered file's name begins with its number.
bool IsOf(const FileForm& form, std::string_view name) {
  if (SameWithoutCase(form.name, name)) return true;
  const std::string_view rest = std::string_view(form.name).substr(1);
  return form.kind == FileKind::kMessage && name.size() > rest.size() &&
         IsNumber(name.substr(0, name.size() - rest.size())) &&
         SameWithoutCase(name.substr(name.size() - rest.size()), rest);
}

}  // namespace

std::span<const Module> Modules() {
  return kModules;
}

const Module& ModuleOf(std::int32_t id) {
  return *std::ranges::find(kModules, id, &Module::id);
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

std::vector<const qv::ModuleRow*> ParseModules(const std::vector<std::string>& texts) {
  std::vector<const qv::ModuleRow*> rows;
  for (const std::string& text : texts) {
    const qv::ModuleRow* const row = &ParseModule(text);
    if (std::ranges::find(rows, row) == rows.end()) rows.push_back(row);
  }
  return rows;
}

std::string_view NameOf(FileKind kind) {
  switch (kind) {
    case FileKind::kTable: return "table";
    case FileKind::kSections: return "sections";
    case FileKind::kBlock: return "block";
    case FileKind::kMessage: return "message";
    case FileKind::kChangeList: return "change-list";
    case FileKind::kIdMap: return "id-map";
    case FileKind::kSnapshot: return "snapshot";
    default: return "anchors";
  }
}

std::string NumberedName(std::u16string_view pattern, const std::string& number) {
  std::string name = ToUtf8(pattern);
  const std::string place = "%d";
  return name.replace(name.find(place), place.size(), number);
}

const std::vector<FileForm>& FileForms() {
  static const std::vector<FileForm> forms = CollectForms();
  return forms;
}

const FileForm* FindForm(std::string_view file) {
  const std::string name = FileName(file);
  for (const FileForm& form : FileForms()) {
    if (IsOf(form, name)) return &form;
  }
  return nullptr;
}

bool IsExchanged(const Module& module, std::string_view name) {
  return std::ranges::any_of(FileForms(), [&](const FileForm& form) {
    return form.module == &module && form.kind != FileKind::kSnapshot && IsOf(form, name);
  });
}

const FileForm& ParseForm(const std::string& name) {
  if (const FileForm* const form = FindForm(name)) return *form;
  std::string names;
  for (const FileForm& form : FileForms()) names += (names.empty() ? "" : ", ") + form.name;
  throw UsageError("form \"" + Visible(name) + "\": there is none of this name. The forms are: " + names + ".");
}

}  // namespace qvdesk
