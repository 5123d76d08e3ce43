// The scripted store's entry points. They are noexcept: nothing may be thrown through the agent.
#include "tests/support/scripted_contact_store.h"

#include <algorithm>
#include <cstring>

namespace qv_test {
namespace {

ScriptedContactStore* g_store = nullptr;

constexpr std::int32_t kRefused = -1;
constexpr std::size_t kMostGroups = 100;
/// Where a record's name lies, and how many characters it has room for.
constexpr std::size_t kName = 18;
constexpr std::size_t kNameLength = 31;

/// Contacts and groups have the same entry points, differently spelt.
struct Names {
  const char* count;
  const char* list;
  const char* read;
  const char* erase;
  const char* add;
  const char* update;
  const char* find;
};
constexpr Names kNames[] = {
    {"GetAllManNum", "GetAllmanSyncid", "Readman", "DeleteMan", "AddManToUnGroup", "UpdateMan", "FindmanSyncidByName"},
    {"GetAllGroupNum", "GetAllgroupSyncid", "Readgroup", "DeleteGroup", "AddGroup", "UpdateGroup",
     "FindgroupSyncidByName"},
};

std::vector<Bytes> RecordsOf(const void* records, std::int32_t count, std::size_t size) {
  const auto* const first = static_cast<const std::uint8_t*>(records);
  return Split({first, first + static_cast<std::size_t>(count) * size}, size);
}

void Append(std::vector<Bytes>& records, const std::vector<Bytes>& more) {
  records.insert(records.end(), more.begin(), more.end());
}

/// A text at any address: up to its NUL, which a caller's has and a full one in a record has not.
std::u16string TextAt(const void* text, std::size_t most = std::u16string::npos) {
  std::u16string read;
  for (const auto* from = static_cast<const std::uint8_t*>(text); read.size() < most; from += 2) {
    const auto character = static_cast<char16_t>(from[0] | from[1] << 8);
    if (character == 0) break;
    read += character;
  }
  return read;
}

/// All that entry points take but names is read and written in whole words.
template <typename... Blocks>
void ExpectWords(const Blocks*... blocks) {
  for (const void* const block : {static_cast<const void*>(blocks)...}) {
    ExpectAligned("a block handed to the contact store", block);
  }
}

std::string Plain(const std::u16string& text) {
  std::string plain;
  for (const char16_t character : text) plain += character < 0x80 ? static_cast<char>(character) : '?';
  return plain;
}

}  // namespace

struct ContactEntryPoints {
  static std::int32_t Initialize(std::uint32_t reserved) noexcept {
    return g_store->Begin("Initialize", std::to_string(reserved));
  }

  static std::int32_t UnInitialize() noexcept { return g_store->Begin("UnInitialize"); }

  template <int kTable>
  static std::int32_t Count(std::int32_t* count) noexcept {
    ExpectWords(count);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].count); status != 0) return status;
    *count = g_store->claimed_count[kTable].value_or(static_cast<std::int32_t>(g_store->tables[kTable].size()));
    return 0;
  }

  template <int kTable>
  static std::int32_t List(std::int32_t* count, std::uint8_t* entries) noexcept {
    ExpectWords(count, entries);
    g_store->offered_rooms[kTable].push_back(*count);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].list); status != 0) return status;
    const auto& records = g_store->tables[kTable];
    const auto room = static_cast<std::size_t>(std::max(*count, 0));
    const std::size_t listed = g_store->heeds_room ? std::min(room, records.size()) : records.size();
    for (std::size_t i = 0; i < listed; ++i) {
      std::memcpy(entries + 16 * i, &records[i].id, 4);
      std::memcpy(entries + 16 * i + 4, records[i].time.data(), 12);
    }
    *count = g_store->claimed_listed[kTable].value_or(static_cast<std::int32_t>(listed));
    return 0;
  }

  template <int kTable>
  static std::int32_t Read(const std::uint32_t* ids, std::int32_t count, std::uint8_t* records) noexcept {
    ExpectWords(ids, records);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].read, IdList(ids, static_cast<std::size_t>(count)));
        status != 0)
      return status;
    if (g_store->fills_nothing.contains(kNames[kTable].read)) return 0;
    for (std::int32_t i = 0; i < count; ++i, records += ScriptedContactStore::kRecordSize) {
      const auto* const record = g_store->Find(kTable, ids[i]);
      if (record == nullptr) return kRefused;
      std::copy(record->bytes.begin(), record->bytes.end(), records);
    }
    return 0;
  }

  template <int kTable>
  static std::int32_t Delete(const std::uint32_t* ids, std::int32_t count) noexcept {
    ExpectWords(ids);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].erase, IdList(ids, static_cast<std::size_t>(count)));
        status != 0) {
      return status;
    }
    std::erase_if(g_store->tables[kTable],
                  [&](const auto& record) { return std::find(ids, ids + count, record.id) != ids + count; });
    return 0;
  }

  template <int kTable>
  static std::int32_t Add(const void* records, std::int32_t count, std::uint32_t* new_ids) noexcept {
    ExpectWords(records, new_ids);
    const std::vector<Bytes> added = RecordsOf(records, count, ScriptedContactStore::kRecordSize);
    Append(g_store->added[kTable], added);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].add, std::to_string(count)); status != 0) {
      return status;
    }
    for (const Bytes& bytes : added) {
      if (!g_store->fills_nothing.contains(kNames[kTable].add)) *new_ids++ = g_store->next_id;
      g_store->Add(kTable, g_store->next_id++, ScriptedContactStore::kNewTime, bytes);
    }
    return 0;
  }

  template <int kTable>
  static std::int32_t Update(const std::uint32_t* ids, std::int32_t count, const void* records) noexcept {
    ExpectWords(ids, records);
    const std::vector<Bytes> updated = RecordsOf(records, count, ScriptedContactStore::kRecordSize);
    Append(g_store->updated[kTable], updated);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].update, IdList(ids, static_cast<std::size_t>(count)));
        status != 0) {
      return status;
    }
    for (const Bytes& bytes : updated) {
      auto* const record = g_store->Find(kTable, *ids);
      if (record == nullptr) return kRefused;
      *record = {*ids++, ScriptedContactStore::kNewTime, bytes};
    }
    return 0;
  }

  template <int kTable>
  static std::int32_t FindByName(const void* name, std::int32_t* found, std::uint32_t* id) noexcept {
    ExpectAligned("a name", name, 2);
    ExpectWords(found, id);
    const std::u16string wanted = TextAt(name);
    if (const std::int32_t status = g_store->Begin(kNames[kTable].find, Plain(wanted)); status != 0) return status;
    if (g_store->fills_nothing.contains(kNames[kTable].find)) return 0;
    *found = 0;
    for (const auto& record : g_store->tables[kTable]) {
      if (TextAt(record.bytes.data() + kName, kNameLength) != wanted) continue;
      *found = g_store->found_flag;
      *id = record.id;
      break;
    }
    return 0;
  }

  static std::int32_t QueryMemberships(std::int32_t count, std::uint8_t* records) noexcept {
    ExpectWords(records);
    const std::int32_t status = g_store->Begin(
        "QueryManAttachGroup", IdList(records, static_cast<std::size_t>(count), ScriptedContactStore::kMembershipSize));
    if (status != 0 || g_store->fills_nothing.contains("QueryManAttachGroup")) return status;
    for (std::int32_t i = 0; i < count; ++i, records += ScriptedContactStore::kMembershipSize) {
      std::uint32_t contact = 0;
      std::memcpy(&contact, records, 4);
      const auto groups = g_store->groups_of.find(contact);
      std::uint32_t filled = 0;
      if (groups != g_store->groups_of.end()) {
        filled = static_cast<std::uint32_t>(std::min(groups->second.size(), kMostGroups));
        std::memcpy(records + 8, groups->second.data(), 4 * filled);
      }
      const auto claimed = g_store->claimed_group_counts.find(contact);
      const std::uint32_t said = claimed == g_store->claimed_group_counts.end() ? filled : claimed->second;
      std::memcpy(records + 4, &said, 4);
      const auto renamed = g_store->renamed_contacts.find(contact);
      if (renamed != g_store->renamed_contacts.end()) std::memcpy(records, &renamed->second, 4);
    }
    return 0;
  }

  static std::int32_t AddMemberships(std::int32_t count, const void* records) noexcept {
    return Apply("PhoneAddToGroups", count, records, false, g_store->added_memberships);
  }

  static std::int32_t ModifyMemberships(std::int32_t count, const void* records) noexcept {
    return Apply("ModifyManToGroup", count, records, true, g_store->modified_memberships);
  }

  static std::int32_t DownloadPicture(std::uint32_t id, std::uint8_t* picture) noexcept {
    ExpectWords(picture);
    if (const std::int32_t status = g_store->Begin("DownloadingImage", std::to_string(id)); status != 0) return status;
    if (g_store->fills_nothing.contains("DownloadingImage")) return 0;
    const auto known = g_store->pictures.find(id);
    if (known == g_store->pictures.end()) return kRefused;
    // What a store leaves where no one is to look.
    std::memset(picture, 0xEE, 4);
    std::memset(picture + ScriptedContactStore::kPictureSize - 2, 0xEE, 2);
    const auto& [length, data] = known->second;
    std::memcpy(picture + 4, &length, 2);
    std::copy_n(data.begin(), std::min(data.size(), ScriptedContactStore::kPictureDataSize), picture + 6);
    return 0;
  }

  static std::int32_t LoadPicture(std::uint8_t* picture, std::uint32_t* new_id) noexcept {
    ExpectWords(picture, new_id);
    const Bytes bytes(picture, picture + ScriptedContactStore::kPictureSize);
    g_store->loaded_pictures.push_back(bytes);
    const std::int32_t status = g_store->Begin("LoadingImage", std::to_string(Get32(bytes, 0)));
    if (status != 0) return status;
    std::memset(picture, 0xEE, ScriptedContactStore::kPictureSize);  // A store may work in the caller's buffer.
    const auto length = static_cast<std::uint16_t>(Get32(bytes, 4));
    g_store->pictures[g_store->next_picture_id] = {length, Bytes(bytes.begin() + 6, bytes.end() - 2)};
    if (!g_store->fills_nothing.contains("LoadingImage")) *new_id = g_store->next_picture_id;
    ++g_store->next_picture_id;
    return 0;
  }

  static std::int32_t DeletePicture(std::uint32_t id) noexcept {
    if (const std::int32_t status = g_store->Begin("DeleteImage", std::to_string(id)); status != 0) return status;
    return g_store->pictures.erase(id) != 0 ? 0 : kRefused;
  }

 private:
  static std::int32_t Apply(const char* entry_point, std::int32_t count, const void* records, bool replaces,
                            std::vector<Bytes>& handed_over) noexcept {
    ExpectWords(records);
    const std::vector<Bytes> memberships = RecordsOf(records, count, ScriptedContactStore::kMembershipSize);
    Append(handed_over, memberships);
    if (const std::int32_t status = g_store->Begin(entry_point, std::to_string(count)); status != 0) return status;
    for (const Bytes& membership : memberships) {
      auto& groups = g_store->groups_of[Get32(membership, 0)];
      if (replaces) groups.clear();
      const std::uint32_t said = Get32(membership, 4);
      EXPECT_LE(said, kMostGroups) << "more groups than a membership record holds";
      for (std::size_t i = 0; i < std::min<std::size_t>(said, kMostGroups); ++i) {
        groups.push_back(Get32(membership, 8 + 4 * i));
      }
    }
    return 0;
  }
};

ScriptedContactStore::ScriptedContactStore(const std::set<std::u16string>& missing, std::uintptr_t missing_address) {
  using Points = ContactEntryPoints;
  handset::EntryPoints all = {
      {u"DTP_Initialize", AddressOf(&Points::Initialize)},
      {u"DTP_UnInitialize", AddressOf(&Points::UnInitialize)},
      {u"DTP_PIMGetAllManNum", AddressOf(&Points::Count<0>)},
      {u"DTP_PIMGetAllGroupNum", AddressOf(&Points::Count<1>)},
      {u"DTP_PIMGetAllmanSyncid", AddressOf(&Points::List<0>)},
      {u"DTP_PIMGetAllgroupSyncid", AddressOf(&Points::List<1>)},
      {u"DTP_PIMReadman", AddressOf(&Points::Read<0>)},
      {u"DTP_PIMReadgroup", AddressOf(&Points::Read<1>)},
      {u"DTP_PIMDeleteMan", AddressOf(&Points::Delete<0>)},
      {u"DTP_PIMDeleteGroup", AddressOf(&Points::Delete<1>)},
      {u"DTP_PIMAddManToUnGroup", AddressOf(&Points::Add<0>)},
      {u"DTP_PIMAddGroup", AddressOf(&Points::Add<1>)},
      {u"DTP_PIMUpdateMan", AddressOf(&Points::Update<0>)},
      {u"DTP_PIMUpdateGroup", AddressOf(&Points::Update<1>)},
      {u"DTP_PIMFindmanSyncidByName", AddressOf(&Points::FindByName<0>)},
      {u"DTP_PIMFindgroupSyncidByName", AddressOf(&Points::FindByName<1>)},
      {u"DTP_PIMQueryManAttachGroup", AddressOf(&Points::QueryMemberships)},
      {u"DTP_PIMPhoneAddToGroups", AddressOf(&Points::AddMemberships)},
      {u"DTP_PIMModifyManToGroup", AddressOf(&Points::ModifyMemberships)},
      {u"DTP_DownloadingImage", AddressOf(&Points::DownloadPicture)},
      {u"DTP_LoadingImage", AddressOf(&Points::LoadPicture)},
      {u"DTP_DeleteImage", AddressOf(&Points::DeletePicture)},
  };
  g_store = this;
  Install(u"ContactStore.dll", std::move(all), missing, missing_address);
}

ScriptedContactStore::~ScriptedContactStore() {
  g_store = nullptr;
}

std::optional<StoreRole> ScriptedContactStore::RoleOf(const std::string& entry_point) const {
  for (const Names& names : kNames) {
    if (entry_point == names.count) return StoreRole::kCount;
    if (entry_point == names.list) return StoreRole::kList;
    if (entry_point == names.read) return StoreRole::kRead;
    if (entry_point == names.add) return StoreRole::kInsert;
    if (entry_point == names.update) return StoreRole::kUpdate;
    if (entry_point == names.erase) return StoreRole::kDelete;
  }
  return std::nullopt;
}

void ScriptedContactStore::Add(std::uint32_t table, std::uint32_t id, const Time& time, Bytes bytes) {
  bytes.resize(kRecordSize);
  tables[table].push_back({id, time, std::move(bytes)});
}

ScriptedContactStore::Record* ScriptedContactStore::Find(std::uint32_t table, std::uint32_t id) {
  for (Record& record : tables[table]) {
    if (record.id == id) return &record;
  }
  return nullptr;
}

ScriptedContactStore::Record& ScriptedContactStore::At(std::uint32_t table, std::uint32_t id) {
  if (Record* const record = Find(table, id)) return *record;
  ADD_FAILURE() << "the store has no record " << id << " in table " << table;
  static Record nowhere;
  nowhere = {id, {}, Bytes(kRecordSize)};
  return nowhere;
}

std::vector<std::uint32_t> ScriptedContactStore::Ids(std::uint32_t table) const {
  std::vector<std::uint32_t> ids;
  for (const Record& record : tables[table]) ids.push_back(record.id);
  return ids;
}

std::int32_t ScriptedContactStore::Begin(const std::string& entry_point, const std::string& arguments) {
  calls.push_back(arguments.empty() ? entry_point : entry_point + " " + arguments);
  if (!entry_point.ends_with("Initialize")) ++counted_calls_;
  const unsigned nth = ++calls_by_name_[entry_point];
  std::int32_t status = 0;
  if (const auto told = statuses.find(entry_point); told != statuses.end()) status = told->second;
  if (const auto told = refusals.find(entry_point); told != refusals.end() && told->second.contains(nth)) {
    status = told->second.at(nth);
  }
  if (fail_call != 0 && counted_calls_ == fail_call && !entry_point.ends_with("Initialize")) status = kRefused;
  failed_a_call = failed_a_call || status != 0;
  return status;
}

}  // namespace qv_test
