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
  if (call.function == "CopyFileW") what = "copy ";
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

std::vector<Opening> OpeningsOf(const std::function<void()>& run) {
  std::vector<Opening> openings;
  handset::Observe([&](const handset::Call& call) {
    if (call.function == "CreateFileW") openings.emplace_back(call.path, call.options);
  });
  run();
  handset::Observe({});
  return openings;
}

std::vector<Opening> DataOpeningsOf(const std::function<void()>& run) {
  std::vector<Opening> openings = OpeningsOf(run);
  std::erase_if(openings, [](const Opening& opening) { return opening.first == kAnchorIni; });
  return openings;
}

}  // namespace qv_test
