// Fail call 1, 2, 3, ... until nothing fails any more: of the platform, and of the store. Each failure must come out as
// its documented code with the flag of its step, leave nothing open, and cost nothing of what the desktop placed.
#ifndef QV_TESTS_SUPPORT_FAULT_SWEEP_H
#define QV_TESTS_SUPPORT_FAULT_SWEEP_H

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

/// The platform call that begins a step, by name: the file that CreateFileW opens, without its directory, or the entry
/// point that GetProcAddressW looks up.
struct StepBegin {
  std::string function;
  std::u16string name;
  unsigned time;       ///< The how many-th such call of the run it is.
  std::uint32_t flag;  ///< What failures carry from this call on; 0 for a step without a flag.
};

/// A flag that a step has in addition until it closes its file.
constexpr std::uint32_t kSnapshotRead = 0x100000;
/// In place of a flag: this very call may fail without a word, and begins nothing.
constexpr std::uint32_t kUnreported = 0xFFFFFFFE;
/// In place of a flag: no step from this call on until the next one begins, as at the start of a run.
constexpr std::uint32_t kNoStep = 0xFFFFFFFF;

/// One kind of run, and what each failure in it must come out as.
struct FaultScript {
  const char* name;
  std::int32_t module_id;
  bool exporting;
  std::uint32_t mode;
  /// In their order.
  std::vector<StepBegin> steps;
  /// Files and entry points whose failing calls nobody hears of.
  std::set<std::u16string> unreported;
  /// What an allocation after the anchor and outside of all steps comes out as.
  std::uint32_t early_allocation = 0;
  /// The code of a failing store entry point in a step of this flag; 0 when it is not reported.
  std::function<std::uint32_t(const std::string& entry_point, std::uint32_t step)> store_code;
  /// Makes the store, and the handset's files, the same each time: an anchor "5", and for a recover the desktop's
  /// files.
  std::function<std::unique_ptr<ScriptedStore>()> prepare;
  /// What a failed recover must leave in the exchange directory.
  std::vector<const char16_t*> desktop_files;
};

void PrintTo(const FaultScript& script, std::ostream* out);

/// Instantiate it with the scripts of a module, named by NameOfScript.
class FaultSweepTest : public AgentTest, public testing::WithParamInterface<FaultScript> {
 protected:
  void FailEachPlatformCall(handset::Fault fault);
  void FailEachStoreCall();

 private:
  static std::unique_ptr<ScriptedStore> Prepare();
  Answer Perform();
  void ExpectFailure(const Answer& answer, std::uint32_t result);
};

std::string NameOfScript(const testing::TestParamInfo<FaultScript>& info);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_FAULT_SWEEP_H
