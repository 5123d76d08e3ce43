// A module of one table that follows the common procedure, as the tests of that procedure see it: its names, its
// records, and where it departs from the others. Everything is written by hand, nothing taken from the agent.
#ifndef QV_TESTS_SUPPORT_PLAIN_MODULE_H
#define QV_TESTS_SUPPORT_PLAIN_MODULE_H

#include <functional>
#include <memory>

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// How a field travels.
enum class Travels : std::uint8_t {
  kBytes,     ///< As its bytes.
  kAgain,     ///< Likewise, but a recover goes by the other copy.
  kLowByte,   ///< Only its low byte does.
  kText,      ///< Up to its NUL.
  kDigits,    ///< A time: 14 digits in the store, six numbers in the exchange record.
  kFileTime,  ///< A time: a FILETIME in the store, six numbers in the exchange record.
  kOther,     ///< In a way that the module's own tests know.
};

struct TravellingField {
  Travels how;
  std::size_t store, store_size;
  std::size_t exchange, exchange_size;

  /// Whether the bytes of one side say nothing of the other's without being understood.
  bool IsConverted() const { return how == Travels::kDigits || how == Travels::kFileTime || how == Travels::kOther; }
};

/// What a run does to the outside, as RunEvents tells it, but for the anchor's file.
struct PlainModuleSteps {
  std::vector<std::string> full_export;         ///< In mode 4, with record 7 in the store.
  std::vector<std::string> incremental_export;  ///< Against an empty snapshot, with record 7 in the store.
  std::vector<std::string> replacing_recover;   ///< Of records 7 and 8, into an empty store.
  /// Of records 3, 60 and 99 into a store of 1, 2, 3 and 4, with 60 new, 3 modified, 2 and 4 deleted.
  std::vector<std::string> incremental_recover;
};

/// What became of a file of an earlier run.
enum class Earlier : std::uint8_t { kKept, kEmptied, kDeleted };

/// The store's configuration, which some modules send along in a file of its own.
struct PlainModuleConfig {
  const char16_t* file;
  Bytes empty;                 ///< What the file holds of a store that has none.
  const char16_t* set;         ///< The entry point that only a recover needs.
  unsigned calls_of_recovers;  ///< So many entry points are called for it, before those for the records.
};

struct PlainModule {
  const char* name;
  std::int32_t id;
  std::string anchor_key;
  const char16_t* table;
  const char16_t* changes;
  const char16_t* id_map;
  const char16_t* log;
  std::optional<PlainModuleConfig> config = std::nullopt;
  std::function<std::unique_ptr<ScriptedTableStore>(const std::set<std::u16string>& missing, std::uintptr_t address)>
      make_store;

  // Records.
  std::vector<TravellingField> fields;  ///< None where the module's own tests know them all.
  std::size_t exported_id_at = 0;       ///< Where an export says who an exchange record is.
  std::size_t incoming_id_at;           ///< Where a recover looks for it.
  std::uint32_t sample_id;
  Bytes in_store, exported, noisy, recovered;  ///< The sample in all its forms.
  Bytes exported_blank;                        ///< What an export makes of a record of zeros.
  Bytes (*plain)(std::uint32_t id);            ///< An exchange record that says no more than who it is.
  Bytes (*recovered_plain)(std::uint32_t id);  ///< What a recover makes of it.

  // The store.
  std::array<std::uint32_t, 2> old_time, new_time;  ///< Of its list's form, as FILETIMEs: low word, high word.
  std::vector<std::uint32_t> successes = {0};       ///< What it means success by.
  std::vector<std::uint32_t> failures = {1, 0x80000000, 0xFFFFFFFF};
  bool negative_counts_are_none = false;

  // Exports.
  std::size_t read_batch = 0;            ///< Records asked for in one call; 0: all.
  std::uint32_t write_flag = 0x1000000;  ///< Of records that cannot be written.
  Earlier table_of_failed_full_export = Earlier::kKept;
  Earlier table_of_failed_incremental_export = Earlier::kKept;
  Earlier table_without_entry_point = Earlier::kKept;  ///< Or without a change list.
  Earlier changes_without_entry_point = Earlier::kEmptied;
  Earlier table_of_empty_store = Earlier::kEmptied;  ///< In an incremental export.

  // Recovers.
  bool only_replacing_empties = false;  ///< Otherwise all modes but 3 and 5 empty the store.
  bool deletes_from_any_table = true;   ///< Whatever table the change list says.
  bool changes_any_table = false;       ///< Inserts and updates whatever table it says.
  bool keeps_change_list = false;

  PlainModuleSteps steps;
};
void PrintTo(const PlainModule& module, std::ostream* out);

PlainModule CallHistory();
PlainModule CardReader();
PlainModule QuickDial();
PlainModule GraphicMemo();
PlainModule Mms();
PlainModule Sms();

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_PLAIN_MODULE_H
