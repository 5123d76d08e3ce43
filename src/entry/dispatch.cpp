// The only place that knows every module.
#include "entry/dispatch.h"

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
#include "modules/settings/browser_settings.h"
#include "modules/settings/clock_settings.h"
#include "modules/settings/personal_settings.h"
#include "modules/telephony/call_filter.h"
#include "modules/telephony/quick_dial.h"

namespace qv {
namespace {

/// How a module's handler is run. `facts` are the row's.
struct Operations {
  Result (*export_data)(const ModuleFacts* facts, SyncMode& mode, char16_t* anchor, const void* directory);
  Result (*recover_data)(const ModuleFacts* facts, SyncMode mode, char16_t* anchor, const void* directory);
};

/// Makes the handler for one call, within which its store stays loaded, and runs it. One function for both directions,
/// because making a handler is more code than running it.
template <typename Handler>
Result RunHandler(Direction direction, const ModuleFacts& facts, SyncMode& mode, char16_t* anchor,
                  const void* directory) {
  ModuleCall call(facts.names);
  if (const Result begun = call.Begin(directory); IsFailure(begun)) return begun;
  Handler handler(facts, call);
  return direction == Direction::kExport ? handler.Export(mode, anchor) : handler.Recover(mode, anchor);
}

template <typename Handler>
constexpr Operations kHandledBy = {
    [](const ModuleFacts* facts, SyncMode& mode, char16_t* anchor, const void* directory) {
      return RunHandler<Handler>(Direction::kExport, *facts, mode, anchor, directory);
    },
    [](const ModuleFacts* facts, SyncMode mode, char16_t* anchor, const void* directory) {
      return RunHandler<Handler>(Direction::kRecover, *facts, mode, anchor, directory);
    },
};

/// A module to which mode and anchor mean nothing.
template <Result (*export_all)(const void* directory), Result (*recover_all)(const void* directory)>
constexpr Operations kWholes = {
    [](const ModuleFacts*, SyncMode&, char16_t*, const void* directory) { return export_all(directory); },
    [](const ModuleFacts*, SyncMode, char16_t*, const void* directory) { return recover_all(directory); },
};

struct Row {
  std::int32_t id;
  Operations operations;
  const ModuleFacts* facts = nullptr;
};

/// In the order of kModuleTable.
constexpr Row kRows[] = {
    {1, kHandledBy<contacts::ContactsHandler>, &contacts::kFacts},
    {2, kHandledBy<PlainHandler>, &schedule::kFacts},
    {3, kHandledBy<PlainHandler>, &tasks::kFacts},
    {4, kHandledBy<TableHandler<agenda::EntryTable>>, &agenda::kFacts},
    {5, kHandledBy<unified_mail::UnifiedMailHandler>, &unified_mail::kFacts},
    {6, kWholes<mail::Export, mail::Recover>},
    {7, kHandledBy<PlainHandler>, &card_reader::kFacts},
    {8, kHandledBy<sms::SmsHandler>, &sms::kFacts},
    {9, kHandledBy<PlainHandler>, &call_history::kFacts},
    {10, kHandledBy<PlainHandler>, &quick_dial::kFacts},
    {11, kHandledBy<call_filter::CallFilterHandler>, &call_filter::kFacts},
    {12, kHandledBy<mms::MmsHandler>, &mms::kFacts},
    {13, kHandledBy<PlainHandler>, &graphic_memo::kFacts},
    {14, kWholes<settings::ExportPersonal, settings::RecoverPersonal>},
    {15, kWholes<settings::ExportBrowser, settings::RecoverBrowser>},
    {16, kWholes<settings::ExportClock, settings::RecoverClock>},
};

consteval bool IsInOrder() {
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    if (kRows[i].id != kModuleTable[i].id) return false;
  }
  return std::size(kRows) == std::size(kModuleTable);
}
static_assert(IsInOrder());

consteval bool PlainModulesAreComplete() {
  for (const Row& row : kRows) {
    const bool is_plain = row.operations.export_data == kHandledBy<PlainHandler>.export_data;
    if (is_plain && !IsComplete(*row.facts)) return false;
  }
  return true;
}
static_assert(PlainModulesAreComplete());

const Row& RowOf(const ModuleRow& module) {
  return kRows[&module - kModuleTable];
}

}  // namespace

const ModuleRow* FindModule(std::int32_t module_id) {
  for (const ModuleRow& module : kModuleTable) {
    if (module.id == module_id) return &module;
  }
  return nullptr;
}

Result ExportModule(const ModuleRow& module, SyncMode& mode, char16_t* anchor, const void* directory) {
  const Row& row = RowOf(module);
  return row.operations.export_data(row.facts, mode, anchor, directory);
}

Result RecoverModule(const ModuleRow& module, SyncMode mode, char16_t* anchor, const void* directory) {
  const Row& row = RowOf(module);
  return row.operations.recover_data(row.facts, mode, anchor, directory);
}

}  // namespace qv
