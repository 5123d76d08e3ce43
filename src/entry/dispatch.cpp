// The only place that knows every module.
#include "entry/dispatch.h"

#include <iterator>

#include "modules/calendar/schedule.h"
#include "modules/contacts/contacts.h"
#include "modules/messaging/call_history.h"
#include "modules/messaging/mms.h"
#include "modules/messaging/sms.h"
#include "modules/organizer/card_reader.h"
#include "modules/organizer/graphic_memo.h"
#include "modules/telephony/call_filter.h"
#include "modules/telephony/quick_dial.h"

namespace qv {
namespace {

using ExportFunction = Result(SyncMode& mode, char16_t* anchor, const void* directory);
using RecoverFunction = Result(SyncMode mode, char16_t* anchor, const void* directory);

struct Operations {
  ExportFunction* export_data;
  RecoverFunction* recover_data;
};

/// A module whose handler is made for one call, within which its store stays loaded.
template <const ModuleNames& names, typename Handler, const auto&... facts>
constexpr Operations kHandledBy = {
    [](SyncMode& mode, char16_t* anchor, const void* directory) {
      ModuleCall call(names);
      if (const Result begun = call.Begin(directory); IsFailure(begun)) return begun;
      return Handler(facts..., call).Export(mode, anchor);
    },
    [](SyncMode mode, char16_t* anchor, const void* directory) {
      ModuleCall call(names);
      if (const Result begun = call.Begin(directory); IsFailure(begun)) return begun;
      return Handler(facts..., call).Recover(mode, anchor);
    },
};

/// A module that is its facts.
template <const ModuleFacts& facts>
requires(IsComplete(facts)) constexpr Operations kPlain = kHandledBy<facts.names, PlainHandler, facts>;

/// A module that this build lacks answers like one whose store library does not load.
template <Result not_loaded>
constexpr Operations kNotBuilt = {
    [](SyncMode&, char16_t*, const void*) { return not_loaded; },
    [](SyncMode, char16_t*, const void*) { return not_loaded; },
};

struct Row {
  std::int32_t id;
  Operations operations;
};

/// In the order of kModuleTable. Tasks and the e-mail database answer 0 also when their store does not load.
constexpr Row kRows[] = {
    {1, kHandledBy<contacts::kNames, contacts::ContactsHandler>},
    {2, kPlain<schedule::kFacts>},
    {3, kNotBuilt<Result::kOk>},              // tasks
    {4, kNotBuilt<Result::kStoreNotLoaded>},  // agenda
    {5, kNotBuilt<Result::kStoreNotLoaded>},  // unified mail
    {6, kNotBuilt<Result::kOk>},              // e-mail database
    {7, kPlain<card_reader::kFacts>},
    {8, kHandledBy<sms::kNames, sms::SmsHandler>},
    {9, kPlain<call_history::kFacts>},
    {10, kPlain<quick_dial::kFacts>},
    {11, kHandledBy<call_filter::kNames, call_filter::CallFilterHandler>},
    {12, kHandledBy<mms::kNames, mms::MmsHandler>},
    {13, kPlain<graphic_memo::kFacts>},
    {14, kNotBuilt<Result::kStoreNotLoaded>},  // personal settings
    {15, kNotBuilt<Result::kStoreNotLoaded>},  // browser settings
    {16, kNotBuilt<Result::kStoreNotLoaded>},  // clock settings
};

consteval bool IsInOrder() {
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    if (kRows[i].id != kModuleTable[i].id) return false;
  }
  return std::size(kRows) == std::size(kModuleTable);
}
static_assert(IsInOrder());

const Operations& OperationsOf(const ModuleRow& module) {
  return kRows[&module - kModuleTable].operations;
}

}  // namespace

const ModuleRow* FindModule(std::int32_t module_id) {
  for (const ModuleRow& module : kModuleTable) {
    if (module.id == module_id) return &module;
  }
  return nullptr;
}

Result ExportModule(const ModuleRow& module, SyncMode& mode, char16_t* anchor, const void* directory) {
  return OperationsOf(module).export_data(mode, anchor, directory);
}

Result RecoverModule(const ModuleRow& module, SyncMode mode, char16_t* anchor, const void* directory) {
  return OperationsOf(module).recover_data(mode, anchor, directory);
}

}  // namespace qv
