// Puts the platform's calls and the store's into one order.
#include "tests/support/run_events.h"

#include <utility>

namespace qv_test {

RunEvents::RunEvents(const ScriptedStore& store) : store_(store), calls_taken_(store.calls.size()) {
  handset::Observe([this](const handset::Call& call) { See(call); });
}

RunEvents::~RunEvents() {
  handset::Observe({});
}

std::vector<std::string> RunEvents::Take() {
  TakeStoreCalls();
  return std::exchange(seen_, {});
}

void RunEvents::See(const handset::Call& call) {
  TakeStoreCalls();
  std::string what;
  if (call.function == "DeleteFileW") what = "delete ";
  if (call.function == "GetProcAddressW") what = "find ";
  if (call.function == "CreateFileW") what = call.options[2] == 2 ? "create " : "open ";
  if (what.empty()) return;
  for (const char16_t character : call.path.substr(call.path.rfind(u'\\') + 1)) {
    what.push_back(static_cast<char>(character));
  }
  seen_.push_back(what);
}

void RunEvents::TakeStoreCalls() {
  for (; calls_taken_ < store_.calls.size(); ++calls_taken_) seen_.push_back("call " + store_.calls[calls_taken_]);
}

}  // namespace qv_test
