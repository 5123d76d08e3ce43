// The only place that knows every module.
#include "entry/dispatch.h"

#include <iterator>

#include "modules/calendar/schedule.h"
#include "modules/contacts/contacts.h"
#include "modules/messaging/call_history.h"
#include "modules/messaging/mms.h"
#include "modules/messaging/sms.h"

namespace qv {
namespace {

using ExportFunction = Result(SyncMode& mode, char16_t* anchor, const void* directory);
using RecoverFunction = Result(SyncMode mode, char16_t* anchor, const void* directory);

struct Operations {
  ExportFunction* export_data;
  RecoverFunction* recover_data;
};

template <typename Handler>
constexpr Operations kHandledBy = {
    [](SyncMode& mode, char16_t* anchor, const void* directory) { return Handler().Export(mode, anchor, directory); },
    [](SyncMode mode, char16_t* anchor, const void* directory) { return Handler().Recover(mode, anchor, directory); },
};

/// A module that this build lacks answers like one whose store library does not load.
template <Result not_loaded>
constexpr Operations kNotBuilt = {
    [](SyncMode&, char16_t*, const void*) { return not_loaded; },
    [](SyncMode, char16_t*, const void*) { return not_loaded; },
};

/// In the order of kModuleTable. Tasks and the e-mail database answer 0 also when their store does not load.
constexpr Operations kOperations[] = {
    kHandledBy<contacts::ContactsHandler>,
    kHandledBy<schedule::ScheduleHandler>,
    kNotBuilt<Result::kOk>,              // tasks
    kNotBuilt<Result::kStoreNotLoaded>,  // agenda
    kNotBuilt<Result::kStoreNotLoaded>,  // unified mail
    kNotBuilt<Result::kOk>,              // e-mail database
    kNotBuilt<Result::kStoreNotLoaded>,  // card reader
    kHandledBy<sms::SmsHandler>,
    kHandledBy<call_history::CallHistoryHandler>,
    kNotBuilt<Result::kStoreNotLoaded>,  // quick dial
    kNotBuilt<Result::kStoreNotLoaded>,  // call filter
    kHandledBy<mms::MmsHandler>,
    kNotBuilt<Result::kStoreNotLoaded>,  // graphic memo
    kNotBuilt<Result::kStoreNotLoaded>,  // personal settings
    kNotBuilt<Result::kStoreNotLoaded>,  // browser settings
    kNotBuilt<Result::kStoreNotLoaded>,  // clock settings
};
static_assert(std::size(kOperations) == std::size(kModuleTable));

const Operations& OperationsOf(const ModuleRow& module) {
  return kOperations[&module - kModuleTable];
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
