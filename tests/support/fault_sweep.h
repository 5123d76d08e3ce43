// Fail call 1, 2, 3, ... until nothing fails any more: of the platform, and of the store. Each failure must come out as
// its documented code with the flag of its step, leave nothing open, and cost nothing of what the desktop placed. A
// module says what its files and entry points are called, and where it departs from the order of the others; its runs
// and their steps are made from that. A disk that is full at any write is among the transfers cut short: a full disk is
// no failed call to this system, it takes fewer bytes than it was given.
#ifndef QV_TESTS_SUPPORT_FAULT_SWEEP_H
#define QV_TESTS_SUPPORT_FAULT_SWEEP_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

// --- The flags of steps ---

/// Of no step of its own: the step that reads a snapshot has it in addition until it closes the file.
constexpr std::uint32_t kSnapshotRead = 0x100000;
constexpr std::uint32_t kChangeListApplied = 0x200000;
constexpr std::uint32_t kMainTableExported = 0x1000000;
constexpr std::uint32_t kGroupTableExported = 0x2000000;
/// Of a recover in most modules and modes.
constexpr std::uint32_t kMainTableApplied = 0x3000000;
constexpr std::uint32_t kGroupTableApplied = 0x4000000;
constexpr std::uint32_t kSnapshotWritten = 0x5000000;
constexpr std::uint32_t kIdMapWritten = 0x6000000;
/// In place of a flag: this very call may fail without a word, and begins nothing.
constexpr std::uint32_t kUnreported = 0xFFFFFFFE;
/// In place of a flag: no step from this call on until the next one begins, as at the start of a run.
constexpr std::uint32_t kNoStep = 0xFFFFFFFF;

// --- What a module says ---

/// A platform call by name: the file that it concerns, without its directory, or the entry point that is looked up.
struct PlatformCall {
  std::string function;
  std::u16string name;
  unsigned time = 1;  ///< The how many-th such call of the run it is.
};
PlatformCall Opens(std::u16string_view file, unsigned time = 1);  ///< Or creates it.
PlatformCall Deletes(std::u16string_view file);
PlatformCall LooksUp(std::u16string_view entry_point, unsigned time = 1);

/// A call that begins a step.
struct StepBegin {
  PlatformCall call;
  std::uint32_t flag;  ///< What failures carry from this call on; 0 for a step without a flag.
  std::set<std::uint32_t> modes = {1, 2, 3, 4, 5};
  std::uint32_t no_memory = 16;    ///< What an allocation that fails in it comes out as, besides the flag.
  bool is_behind_changes = false;  ///< The change list is deleted by then.
};

/// A table of the module as it travels. Files are given by their paths.
struct SweptTable {
  const char16_t* file;
  /// None of a table whose changes are not followed.
  const char16_t* snapshot_log = nullptr;
  /// What the desktop sends.
  Bytes sent;
  /// The flag of the table's export, and the call that begins that; without one it has no flag.
  std::uint32_t exported = 0;
  std::optional<PlatformCall> export_begin = std::nullopt;
  /// The flag of the table's recover, which begins with opening it; and of an incremental one.
  std::uint32_t inserted = kMainTableApplied;
  std::uint32_t applied = inserted;
};

/// What the sweep must know of a module. What is not said is as in the plain modules of one table.
struct SweptModule {
  std::int32_t id;
  std::string anchor_key;
  /// The main table first.
  std::vector<SweptTable> tables;
  const char16_t* change_list;
  Bytes changes;
  const char16_t* id_map;
  /// A run may go on without an id map; else the flag that it is written under.
  std::uint32_t id_map_written = kUnreported;
  /// The file with the configuration that the desktop sends, if there is one.
  const char16_t* config_file = nullptr;
  Bytes config = {};

  /// What empties the store, where one entry point does.
  std::u16string delete_all = {};
  /// The store with enough of everything that no buffer takes it whole: 70 records.
  std::function<std::unique_ptr<ScriptedStore>()> make_store;

  // Departures.

  /// Whether the desktop is told what came of a run; else it hears of success.
  bool exports_are_told = true;
  bool recovers_are_told = true;
  /// No failure ends a run: it costs what its own step does, and all else is done. A recover deletes what the desktop
  /// sent in any case.
  bool goes_on = false;

  /// Steps besides the tables', such as a configuration's.
  std::vector<StepBegin> more_export_steps = {};
  std::vector<StepBegin> more_recover_steps = {};
  /// What an allocation of a recover after the anchor and outside of all steps comes out as: the change list itself.
  std::uint32_t early_allocation = kChangeListApplied | 32;
  /// Entry points whose look-up nobody misses.
  std::set<std::u16string> unreported = {};
  /// The codes of entry points that have no role, or another code than theirs; 0 for a failure that is not reported.
  std::map<std::string, std::uint32_t> store_codes = {};
  /// The same in a step without a flag.
  std::map<std::string, std::uint32_t> unflagged_store_codes = {};
};

// --- What is made of it ---

/// One kind of run, and what each failure in it must come out as.
struct FaultScript {
  const char* name;
  bool exporting;
  std::uint32_t mode;
  SweptModule module;
  std::vector<StepBegin> steps;
  /// Files and entry points whose failing calls nobody hears of.
  std::set<std::u16string> unreported;
  std::uint32_t early_allocation;
};
void PrintTo(const FaultScript& script, std::ostream* out);

/// All runs of a module: full, replacing, incremental and plain exports, and the same recovers and a local one.
std::vector<FaultScript> ScriptsOf(const SweptModule& module);

/// Instantiate it with the scripts of a module, named by NameOfScript.
class FaultSweepTest : public AgentTest, public testing::WithParamInterface<FaultScript> {
 protected:
  FaultSweepTest();

  void FailEachPlatformCall();
  void CutEachTransferShort();
  void FailEachStoreCall();
  void FailToLoadTheStore();

 private:
  /// What became of each file, by its name, and how often the store was told what.
  using Deeds = std::map<std::string, std::string>;

  static std::unique_ptr<ScriptedStore> Prepare();
  Answer Perform();
  /// One call fails, the next in the next run, until nothing is left to fail. Answers how many did.
  unsigned FailEach(handset::Fault fault, const std::function<void(unsigned n)>& fail_call);
  static void ExpectAnswer(const Answer& answer, std::uint32_t result);
  void ExpectFailure(const Answer& answer, std::uint32_t result, bool is_behind_changes = false);
  static Deeds DeedsOf(const ScriptedStore& store);
  /// Of a module that goes on: all was done but what the failure excuses.
  void ExpectTheRestWasDone(const ScriptedStore& store, const std::set<std::string>& excused) const;

  Deeds all_deeds_;  ///< Of a run in which nothing fails.
};

std::string NameOfScript(const testing::TestParamInfo<FaultScript>& info);

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_FAULT_SWEEP_H
