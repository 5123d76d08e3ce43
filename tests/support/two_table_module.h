// A module of two tables, entries and groups, that follows the common procedure, as the tests of that procedure see it:
// its names, its records, and where it departs from the others. Everything is written by hand, nothing taken from the
// agent.
#ifndef QV_TESTS_SUPPORT_TWO_TABLE_MODULE_H
#define QV_TESTS_SUPPORT_TWO_TABLE_MODULE_H

#include <functional>
#include <memory>

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// What a run does to the outside, as RunEvents tells it, but for the anchor's file.
struct TwoTableSteps {
  std::vector<std::string> full_export;         ///< In mode 4, with entry 3 and group 7 in the store.
  std::vector<std::string> incremental_export;  ///< Of the same store, against empty snapshots.
  std::vector<std::string> replacing_recover;   ///< Of entry 2 in group 5, and that group, into an empty store.
  /// Of entries 2, 60 and 3 and group 50 into a store of entries and groups 1, 2 and 3, with entry 60 and group 50 new,
  /// entry 2 modified, and entry 1 and groups 2 and 1 deleted.
  std::vector<std::string> incremental_recover;
};

struct TwoTableModule {
  const char* name;
  std::int32_t id;
  std::string anchor_key;
  std::array<const char16_t*, 2> tables, logs;  ///< Of the entries, and of the groups.
  const char16_t* changes;
  const char16_t* id_map;
  std::map<std::u16string, Bytes> more_files = {};  ///< What a recover needs besides.
  std::function<std::unique_ptr<ScriptedRecordStore>(const std::set<std::u16string>& missing, std::uintptr_t address)>
      make_store;

  // Exchange records that say no more than who they are, and which group they are in.
  Bytes (*entry)(std::uint32_t id, std::uint32_t group);
  Bytes (*group)(std::uint32_t id);
  std::size_t group_place = 0;  ///< Where an entry in the store says which group it is in.

  std::array<std::size_t, 2> read_batches = {50, 50};  ///< Records asked for in one call.
  bool is_told = true;  ///< What a run came to. Otherwise no failure ends one: all steps are taken.
  bool negative_counts_are_none = false;
  bool only_replacing_empties = false;  ///< Otherwise all modes but 3 and 5 empty the store.
  bool adds_locally = false;            ///< Otherwise a local recover applies a change list.

  TwoTableSteps steps = {};
};
void PrintTo(const TwoTableModule& module, std::ostream* out);

TwoTableModule Schedule();
TwoTableModule CallFilter();
TwoTableModule Tasks();
TwoTableModule Agenda();

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_TWO_TABLE_MODULE_H
