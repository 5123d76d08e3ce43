// Stores are called by address, so each described entry point gets a function of its own with just as many parameters
// as it has arguments; all of them end up in one place, which knows the arguments' order. They are noexcept: nothing
// may be thrown through the agent.
#include "tests/support/scripted_record_store.h"

#include <cstring>
#include <span>
#include <stdexcept>
#include <utility>

namespace qv_test {
namespace {

/// No system maps anything below it, so that null and what is near it is no address.
constexpr std::uint32_t kFirstPage = 0x1000;

struct Binding {
  ScriptedRecordStore* store = nullptr;
  const ScriptedEntryPoint* entry_point = nullptr;
};

}  // namespace

/// One call, its arguments told apart by what they are.
class ScriptedRecordStore::Call {
 public:
  Call(const ScriptedStoreFacts& facts, const ScriptedEntryPoint& entry_point, std::span<const std::uint32_t> words)
      : facts_(facts), entry_point_(entry_point), words_(words) {}

  const ScriptedEntryPoint& entry_point() const { return entry_point_; }
  bool Has(Argument argument) const { return std::ranges::count(entry_point_.arguments, argument) != 0; }

  std::uint32_t Number(Argument argument, std::uint32_t otherwise = 0) const {
    const auto at = std::ranges::find(entry_point_.arguments, argument) - entry_point_.arguments.begin();
    const auto i = static_cast<std::size_t>(at);
    return i < words_.size() ? words_[i] : otherwise;
  }

  template <typename Value>
  Value* Place(Argument argument) const {
    auto* const place = reinterpret_cast<Value*>(std::uintptr_t{Number(argument)});
    EXPECT_GE(Number(argument), kFirstPage) << entry_point_.told << " was handed no address";
    ExpectAligned(entry_point_.told, place);
    return place;
  }

  std::uint32_t Table() const { return Number(Argument::kTable, entry_point_.table); }
  /// Of the records that it is about: one, unless it says how many.
  std::uint32_t Count() const { return Number(Argument::kCount, 1); }
  std::vector<std::uint32_t> Ids() const {
    if (IsToldByTheRecord()) return {IdInTheRecord()};
    if (!Has(Argument::kIds)) return {Number(Argument::kId)};
    const auto* const ids = Place<const std::uint32_t>(Argument::kIds);
    return {ids, ids + Count()};
  }

  /// The arguments as `calls` tells them.
  std::string Told() const {
    const bool has_table = Has(Argument::kTable);
    std::string told;
    if (has_table) told += " " + std::to_string(Table());
    if (entry_point_.role == StoreRole::kList) told += " room " + std::to_string(*Place<std::uint32_t>(kRoom));
    if (IsToldByTheRecord()) told += " " + std::to_string(IdInTheRecord());
    if (Has(Argument::kId)) told += (has_table ? " id " : " ") + std::to_string(Number(Argument::kId));
    if (Has(Argument::kIds)) {
      told += " " + IdList(Place<const std::uint32_t>(Argument::kIds), Count());
    } else if (Has(Argument::kCount)) {
      told += " " + std::to_string(Count());
    }
    if (Has(Argument::kGroup)) told += " group " + std::to_string(Number(Argument::kGroup));
    return told;
  }

 private:
  static constexpr Argument kRoom = Argument::kCountPlace;

  bool IsToldByTheRecord() const {
    return entry_point_.role == StoreRole::kUpdate && !Has(Argument::kId) && !Has(Argument::kIds);
  }
  std::uint32_t IdInTheRecord() const {
    const std::size_t offset = facts_.tables.at(Table()).id_offset.value();
    std::uint32_t id = 0;
    std::memcpy(&id, Place<const std::uint8_t>(Argument::kRecords) + offset, sizeof(id));
    return id;
  }

  const ScriptedStoreFacts& facts_;
  const ScriptedEntryPoint& entry_point_;
  std::span<const std::uint32_t> words_;
};

/// The functions whose addresses libraries hand out, each bound to an entry point of a store while that is there.
struct Trampolines {
  static constexpr std::size_t kMost = 64;
  static constexpr std::size_t kMostArguments = 5;
  static inline std::array<Binding, kMost> bindings;

  template <std::size_t kNumber, typename... Words>
  static std::uint32_t Enter(Words... words) noexcept {
    const auto [store, entry_point] = bindings[kNumber];
    if (store == nullptr) {
      ADD_FAILURE() << "a store that is gone was called";
      return 0xFFFFFFFF;
    }
    const std::array<std::uint32_t, sizeof...(Words)> all = {words...};
    return store->Answer({store->facts_, *entry_point, all});
  }

  using Addresses = std::array<coredll::FARPROC, kMostArguments + 1>;
  /// By number of arguments.
  template <std::size_t kNumber>
  static Addresses AddressesOf() {
    using Word = std::uint32_t;
    return {AddressOf(&Enter<kNumber>),
            AddressOf(&Enter<kNumber, Word>),
            AddressOf(&Enter<kNumber, Word, Word>),
            AddressOf(&Enter<kNumber, Word, Word, Word>),
            AddressOf(&Enter<kNumber, Word, Word, Word, Word>),
            AddressOf(&Enter<kNumber, Word, Word, Word, Word, Word>)};
  }
  template <std::size_t... kNumbers>
  static std::array<Addresses, kMost> All(std::index_sequence<kNumbers...> /*numbers*/) {
    return {AddressesOf<kNumbers>()...};
  }

  static coredll::FARPROC Bind(ScriptedRecordStore& store, const ScriptedEntryPoint& entry_point) {
    static const std::array<Addresses, kMost> kAddresses = All(std::make_index_sequence<kMost>());
    auto* const free = std::ranges::find(bindings, nullptr, &Binding::store);
    if (free == bindings.end()) throw std::length_error("too many scripted entry points at a time");
    *free = {&store, &entry_point};
    return kAddresses[static_cast<std::size_t>(free - bindings.begin())].at(entry_point.arguments.size());
  }

  static void Release(const ScriptedRecordStore& store) {
    std::ranges::replace_if(
        bindings, [&](const Binding& binding) { return binding.store == &store; }, Binding{});
  }
};

ScriptedRecordStore::ScriptedRecordStore(const ScriptedStoreFacts& facts, const std::set<std::u16string>& missing,
                                         std::uintptr_t missing_address, const handset::EntryPoints& own)
    : facts_(facts) {
  handset::EntryPoints all = own;
  for (const ScriptedEntryPoint& entry_point : facts.entry_points) {
    all[entry_point.name] = Trampolines::Bind(*this, entry_point);
  }
  Install(facts.library, std::move(all), missing, missing_address);
}

ScriptedRecordStore::~ScriptedRecordStore() {
  Trampolines::Release(*this);
}

std::optional<StoreRole> ScriptedRecordStore::RoleOf(const std::string& entry_point) const {
  for (const ScriptedEntryPoint& known : facts_.entry_points) {
    if (known.told == entry_point) return known.role;
  }
  return std::nullopt;
}

const ScriptedEntryPoint& ScriptedRecordStore::EntryPointFor(StoreRole role) const {
  const auto found = std::ranges::find(facts_.entry_points, role, &ScriptedEntryPoint::role);
  if (found == facts_.entry_points.end()) throw std::out_of_range("no scripted entry point for this");
  return *found;
}

void ScriptedRecordStore::Add(std::uint32_t table, std::uint32_t id, std::optional<ListTime> time, Bytes bytes) {
  const ScriptedTable& form = facts_.tables.at(table);
  if (bytes.empty()) {
    bytes.resize(form.record_size);
    if (form.id_offset) Put32(bytes, *form.id_offset, id);
  }
  EXPECT_EQ(bytes.size(), form.record_size) << "no record of table " << table;
  tables[table].push_back({id, time.value_or(facts_.list.old_time), std::move(bytes)});
}

ScriptedRecordStore::Record& ScriptedRecordStore::At(std::uint32_t table, std::uint32_t id) {
  for (Record& record : tables[table]) {
    if (record.id == id) return record;
  }
  static Record nowhere{0, 0, {}};
  ADD_FAILURE() << "the store was asked for record " << id << " of table " << table << ", which it has not";
  nowhere = {id, 0, Bytes(facts_.tables.at(table).record_size)};
  return nowhere;
}

std::vector<std::uint32_t> ScriptedRecordStore::Ids(std::uint32_t table) const {
  std::vector<std::uint32_t> ids;
  for (const Record& record : tables[table]) ids.push_back(record.id);
  return ids;
}

void ScriptedRecordStore::HandOut(const Record& record, std::uint32_t /*table*/, std::uint8_t* place) {
  std::ranges::copy(record.bytes, place);
}

void ScriptedRecordStore::TakeIn(Record& record, std::uint32_t table, const std::uint8_t* place) {
  record.bytes.assign(place, place + facts_.tables.at(table).record_size);
}

std::uint32_t ScriptedRecordStore::Answer(const Call& call) {
  const ScriptedEntryPoint& entry_point = call.entry_point();
  EXPECT_EQ(call.Number(Argument::kZero), 0u) << "of what is reserved in " << entry_point.told;
  if (entry_point.role == StoreRole::kCount && !call.Has(Argument::kCountPlace)) {
    Log(entry_point.told + call.Told());
    return claimed_count.value_or(static_cast<std::uint32_t>(tables[call.Table()].size()));
  }
  const auto chosen = successes.find(entry_point.told);
  const std::uint32_t success = chosen == successes.end() ? entry_point.success : chosen->second;
  if (const auto refusal = Begin(entry_point.told, call.Told(), success)) {
    // What is left in the room of a read that failed is no record.
    const std::size_t room = call.Count() * facts_.tables.at(call.Table()).record_size;
    if (entry_point.role == StoreRole::kRead) std::memset(call.Place<std::uint8_t>(Argument::kRecords), 0xEE, room);
    return *refusal;
  }
  Carry(call);
  return success;
}

void ScriptedRecordStore::Carry(const Call& call) {
  switch (call.entry_point().role) {
    case StoreRole::kCount:
      if (!Fills(call)) return;
      *call.Place<std::uint32_t>(Argument::kCountPlace) =
          claimed_count.value_or(static_cast<std::uint32_t>(tables[call.Table()].size()));
      return;
    case StoreRole::kList: return List(call);
    case StoreRole::kRead: return Read(call);
    case StoreRole::kInsert: return Insert(call);
    case StoreRole::kUpdate: return Update(call);
    case StoreRole::kDelete: return Delete(call);
    case StoreRole::kDeleteAll:
      for (auto& table : tables) table.clear();
      return;
  }
}

void ScriptedRecordStore::List(const Call& call) {
  if (!Fills(call)) return;
  const ListForm& form = facts_.list;
  const std::vector<Record>& records = tables[call.Table()];
  auto* const count = call.Place<std::uint32_t>(Argument::kCountPlace);
  auto* entry = call.Place<std::uint8_t>(Argument::kListEntries);
  const std::size_t listed = std::min<std::size_t>(*count, records.size());
  for (std::size_t i = 0; i < listed; ++i, entry += form.entry_size) {
    const Record& record = records[i];
    ASSERT_LE(form.time_offset + record.time.size(), form.entry_size) << "this store tells times in another form";
    std::memset(entry, 0xAA, form.entry_size);
    std::memcpy(entry, &record.id, sizeof(record.id));
    std::memcpy(entry + form.time_offset, record.time.data(), record.time.size());
  }
  *count = claimed_listed.value_or(static_cast<std::uint32_t>(listed));
}

void ScriptedRecordStore::Read(const Call& call) {
  if (!Fills(call)) return;
  const std::size_t size = facts_.tables.at(call.Table()).record_size;
  auto* place = call.Place<std::uint8_t>(Argument::kRecords);
  std::memset(place, 0xDD, used_room * size);
  for (const std::uint32_t id : call.Ids()) {
    HandOut(At(call.Table(), id), call.Table(), place);
    place += size;
  }
}

void ScriptedRecordStore::Insert(const Call& call) {
  const std::uint32_t table = call.Table();
  const auto* place = call.Place<const std::uint8_t>(Argument::kRecords);
  auto* new_id = call.Place<std::uint32_t>(Argument::kNewId);
  for (std::uint32_t i = 0; i < call.Count(); ++i, ++new_id) {
    EXPECT_EQ(*new_id, 0u) << "what a new id is preset to";
    tables[table].push_back({next_id++, facts_.list.new_time, Bytes(), call.Number(Argument::kGroup)});
    Record& record = tables[table].back();
    TakeIn(record, table, place);
    place += facts_.tables.at(table).record_size;
    if (Fills(call)) *new_id = record.id;
  }
}

void ScriptedRecordStore::Update(const Call& call) {
  const auto* place = call.Place<const std::uint8_t>(Argument::kRecords);
  for (const std::uint32_t id : call.Ids()) {
    Record& record = At(call.Table(), id);
    record.time = facts_.list.new_time;
    record.group = call.Number(Argument::kGroup);
    TakeIn(record, call.Table(), place);
    place += facts_.tables.at(call.Table()).record_size;
  }
}

void ScriptedRecordStore::Delete(const Call& call) {
  const std::vector<std::uint32_t> ids = call.Ids();
  const std::set<std::uint32_t> gone(ids.begin(), ids.end());
  std::erase_if(tables[call.Table()], [&](const Record& record) { return gone.contains(record.id); });
}

void ScriptedRecordStore::Log(std::string call) {
  calls.push_back(std::move(call));
  messages_at_last_call = handset::PostedMessages().size();
}

bool ScriptedRecordStore::Fills(const Call& call) const {
  return !fills_nothing.contains(call.entry_point().told);
}

std::optional<std::uint32_t> ScriptedRecordStore::Begin(const std::string& entry_point, const std::string& arguments,
                                                        std::uint32_t success) {
  Log(entry_point + arguments);
  std::uint32_t status = success;
  if (const auto told = statuses.find(entry_point); told != statuses.end()) status = told->second;
  if (++calls_with_status_ == fail_call) status = failing_status;
  if (status == success) return std::nullopt;
  failed_a_call = true;
  return status;
}

}  // namespace qv_test
