// A store library in memory for behaviour tests, made from a description of its entry points: it keeps records as
// bytes, knows nothing of their fields, logs what it is asked, and fails where it is told to.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_RECORD_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_RECORD_STORE_H

#include <algorithm>
#include <array>
#include <concepts>
#include <map>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

/// When a record changed, in the bytes in which its store's list says so.
class ListTime {
 public:
  // Implicit, so that tests can name the time itself.
  /// A FILETIME.
  constexpr ListTime(std::uint64_t file_time) {
    for (; size_ < 8; file_time >>= 8) bytes_[size_++] = static_cast<std::uint8_t>(file_time);
  }
  /// Text, with a NUL behind it unless it fills its 16 characters.
  template <std::convertible_to<std::u16string_view> Text>
  constexpr ListTime(const Text& text) {
    const std::u16string_view characters = text;
    for (const char16_t character : characters) Append(character);
    if (characters.size() < 16) Append(0);
  }
  /// Year, month, day, hour, minute, second.
  constexpr ListTime(const std::array<std::uint16_t, 6>& words) {
    for (const std::uint16_t word : words) Append(word);
  }
  constexpr ListTime(const coredll::SYSTEMTIME& time) {
    for (const std::uint16_t word : {time.wYear, time.wMonth, time.wDayOfWeek, time.wDay, time.wHour, time.wMinute,
                                     time.wSecond, time.wMilliseconds}) {
      Append(word);
    }
  }

  const std::uint8_t* data() const { return bytes_.data(); }
  std::size_t size() const { return size_; }

 private:
  constexpr void Append(std::uint16_t word) {
    bytes_.at(size_++) = static_cast<std::uint8_t>(word);
    bytes_.at(size_++) = static_cast<std::uint8_t>(word >> 8);
  }

  std::array<std::uint8_t, 32> bytes_{};
  std::size_t size_ = 0;
};

/// How a store lists its records: the id at 0 of each entry, and behind it the time.
struct ListForm {
  std::size_t entry_size;
  std::size_t time_offset;
  ListTime old_time;  ///< Of records that a test adds without saying when.
  ListTime new_time;  ///< Of records that the agent inserts or updates.
};
inline constexpr ListForm kFileTimeIn16Bytes = {16, 8, 1, 0x0000000600000005};
inline constexpr ListForm kFileTimeIn12Bytes = {12, 4, 1, 0x0000000600000005};
inline constexpr ListForm kSystemTimeIn20Bytes = {20, 4, coredll::SYSTEMTIME{2006, 1, 1, 2, 3, 4, 5, 0}, kNow};
inline constexpr ListForm kTextIn36Bytes = {36, 4, u"20060102030405", u"20061211070210"};
inline constexpr ListForm kSixWordsIn16Bytes = {16, 4, std::array<std::uint16_t, 6>{2006, 1, 2, 3, 4, 5},
                                                std::array<std::uint16_t, 6>{2006, 12, 11, 7, 2, 10}};

/// One argument of an entry point. All are words: numbers, or addresses.
enum class Argument : std::uint8_t {
  kTable,
  kCount,
  kCountPlace,
  kListEntries,
  kId,  ///< An update without it, and without kIds, goes by the id in the record.
  kIds,
  kRecords,
  kNewId,  ///< Of several records, as many.
  kGroup,
  kZero,  ///< Reserved; the store insists.
};

struct ScriptedEntryPoint {
  const char16_t* name;
  const char* told;  ///< What `calls`, `statuses` and the like call it.
  StoreRole role;
  /// In their order. What counts without a place for the count answers the count, all others a status.
  std::vector<Argument> arguments;
  std::uint32_t success = 0;  ///< What it answers when all went well.
  std::uint32_t table = 0;    ///< The one it serves, unless it is told which.
};

struct ScriptedTable {
  std::size_t record_size;
  /// Where a record says who it is; nowhere: one that a test adds without bytes is all zero.
  std::optional<std::size_t> id_offset = std::nullopt;
};

struct ScriptedStoreFacts {
  const char16_t* library;
  std::vector<ScriptedTable> tables;
  ListForm list;
  std::vector<ScriptedEntryPoint> entry_points;
};

class ScriptedRecordStore : public ScriptedStore {
 public:
  /// Installs itself on the running handset; `missing` names entry points that it lacks, or has at the address
  /// `missing_address`. `own` are what it has besides the described ones. `facts` must outlive the store.
  explicit ScriptedRecordStore(const ScriptedStoreFacts& facts, const std::set<std::u16string>& missing = {},
                               std::uintptr_t missing_address = 0, const handset::EntryPoints& own = {});
  ~ScriptedRecordStore() override;

  std::optional<StoreRole> RoleOf(const std::string& entry_point) const override;
  /// The first entry point for this. There must be one.
  const ScriptedEntryPoint& EntryPointFor(StoreRole role) const;
  const ListForm& list_form() const { return facts_.list; }

  // --- What it holds ---

  struct Record {
    std::uint32_t id;
    ListTime time;
    Bytes bytes;
    std::uint32_t group = 0;  ///< What the insert or update that wrote it said beside the record.
  };
  std::vector<Record> tables[2];

  /// Adds a record as if the handset's user had made it.
  void Add(std::uint32_t table, std::uint32_t id, std::optional<ListTime> time = std::nullopt, Bytes bytes = {});
  /// A record that must be there: the test fails otherwise.
  Record& At(std::uint32_t table, std::uint32_t id);
  std::vector<std::uint32_t> Ids(std::uint32_t table) const;
  /// What records that the agent inserts are called, from here on.
  std::uint32_t next_id = 1000;

  // --- What it was asked ---

  // Calls are told as "Read [5 6]", "List room 3", "Insert", "Update 5", "Del [5 6]", "DelAll", by the names in the
  // description; several records at once as "Insert 2", "Update [5 6]"; with the table where the store is told it:
  // "Read 0 [5 6]", "Update 0 id 5"; and with the group: "Insert 0 group 7".

  /// Data-changed messages that were out when the store was last called.
  std::size_t messages_at_last_call = 0;

  // --- How it departs from the truth ---

  /// Entry points that answer this instead of doing their work: statuses["Read"].
  std::map<std::string, std::uint32_t> statuses;
  /// What entry points answer when all went well, where a test wants another answer than the description says.
  std::map<std::string, std::uint32_t> successes;
  /// What the call that `fail_call` names answers.
  std::uint32_t failing_status = 0xFFFFFFFF;
  /// Entry points that answer success, do their work, and leave alone what they were to fill.
  std::set<std::string> fills_nothing;
  /// A read leaves its traces in the room for so many records, whatever it was asked for.
  std::size_t used_room = 0;
  /// What it counts, and how many records it says it listed.
  std::optional<std::uint32_t> claimed_count;
  std::optional<std::uint32_t> claimed_listed;

 protected:
  /// Logs a call, its arguments given, and says what it answers instead of doing its work, if anything.
  std::optional<std::uint32_t> Begin(const std::string& entry_point, const std::string& arguments = {},
                                     std::uint32_t success = 0);

  /// A record leaves the store, and comes in: as its bytes, in a store whose records are no more than those.
  virtual void HandOut(const Record& record, std::uint32_t table, std::uint8_t* place);
  virtual void TakeIn(Record& record, std::uint32_t table, const std::uint8_t* place);

 private:
  class Call;
  friend struct Trampolines;

  /// Answers a call of a described entry point.
  std::uint32_t Answer(const Call& call);
  void Carry(const Call& call);
  void List(const Call& call);
  void Read(const Call& call);
  void Insert(const Call& call);
  void Update(const Call& call);
  void Delete(const Call& call);
  void Log(std::string call);
  bool Fills(const Call& call) const;

  const ScriptedStoreFacts& facts_;
  unsigned calls_with_status_ = 0;
};

/// A store of one table, which tests need not name.
class ScriptedTableStore : public ScriptedRecordStore {
 public:
  using ScriptedRecordStore::ScriptedRecordStore;

  std::vector<Record>& records = tables[0];
  void Add(std::uint32_t id, std::optional<ListTime> time = std::nullopt, Bytes bytes = {}) {
    ScriptedRecordStore::Add(0, id, time, std::move(bytes));
  }
  Record& At(std::uint32_t id) { return ScriptedRecordStore::At(0, id); }
  std::vector<std::uint32_t> Ids() const { return ScriptedRecordStore::Ids(0); }
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_RECORD_STORE_H
