// Watching and breaking the seam. One fault can wait at a time, because a test that fails two calls at once cannot tell
// which of them the agent answered.
#include "host/handset/faults.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace handset {
namespace {

// What can fail. CloseHandle, FreeLibrary and free are not here: a resource that could not be given back would count as
// left behind through no fault of the agent.
// clang-format off
constexpr std::string_view kFallible[] = {
    "CreateFileW", "ReadFile", "WriteFile", "GetFileSize", "DeleteFileW", "CopyFileW", "FindFirstFileW", "FindNextFileW", "GetDiskFreeSpaceExW",
    "LoadLibraryW", "GetProcAddressW", "SystemTimeToFileTime", "FileTimeToSystemTime",
    "FindWindowW", "PostMessageW", "CreateSemaphoreW", "SetSystemMemoryDivision",
    "malloc", "realloc",
    "wcstombs", "mbstowcs"};
// clang-format on

bool CanFail(std::string_view function) {
  return std::ranges::find(kFallible, function) != std::end(kFallible);
}

struct PendingFault {
  unsigned calls_left = 0;    // 1: the next call that counts fails; 0: none waits.
  std::string_view function;  // Empty: calls of any function count.
  Fault fault = Fault::kFail;
};

PendingFault pending;
std::string_view faulted_function;
std::shared_ptr<const std::function<void(const Call&)>> observer;  // Null: nobody watches.
bool observer_runs = false;

void Arm(unsigned n, std::string_view function, Fault fault) {
  if (n > 0) faulted_function = {};
  pending = {n, function, fault};
}

bool IsDue(const Call& call) {
  if (pending.calls_left == 0 || observer_runs) return false;
  if (pending.function.empty() ? !CanFail(call.function) : call.function != pending.function) return false;
  return --pending.calls_left == 0;
}

}  // namespace

void Watch(const Call& call) {
  if (!observer || observer_runs) return;
  const auto running = observer;  // Held, because the observer may set another one.
  observer_runs = true;
  (*running)(call);
  observer_runs = false;
}

bool Passes(const Call& call, std::uint32_t* cuttable) {
  Watch(call);
  if (!IsDue(call)) return true;
  faulted_function = call.function;
  if (pending.fault == Fault::kFail || cuttable == nullptr) return false;
  *cuttable -= *cuttable / 2;
  return true;
}

void ResetFaults() {
  pending = {};
  faulted_function = {};
  observer = nullptr;
}

void Observe(std::function<void(const Call&)> new_observer) {
  observer = new_observer ? std::make_shared<const std::function<void(const Call&)>>(std::move(new_observer)) : nullptr;
}

void FailCall(unsigned n, Fault fault) {
  Arm(n, {}, fault);
}

void FailCallOf(std::string_view function, unsigned n, Fault fault) {
  const auto* known = std::ranges::find(kFallible, function);
  if (known == std::end(kFallible)) throw std::invalid_argument("no function that can fail: " + std::string(function));
  Arm(n, *known, fault);  // The table's name, which outlives the caller's.
}

bool FaultHappened() {
  return !faulted_function.empty();
}

std::string_view FaultedFunction() {
  return faulted_function;
}

}  // namespace handset
