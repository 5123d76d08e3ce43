// A ContactStore.dll in memory for behaviour tests: it keeps records as bytes, knows of their fields no more than the
// name that it is asked to find, logs what it is asked, and fails where it is told to.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_CONTACT_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_CONTACT_STORE_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/agent_test.h"
#include "tests/support/scripted_store.h"

namespace qv_test {

class ScriptedContactStore final : public ScriptedStore {
 public:
  static constexpr std::size_t kRecordSize = 2744;     ///< Of contacts and of groups.
  static constexpr std::size_t kMembershipSize = 408;  ///< Contact id, group count, a hundred group ids.
  static constexpr std::size_t kPictureSize = 8200;    ///< Id, 16-bit length, data, two bytes of padding.
  static constexpr std::size_t kPictureDataSize = 8192;

  /// Installs itself as ContactStore.dll on the running handset; `missing` names entry points that it lacks
  /// (u"DTP_PIMReadman"), or has at the address `missing_address`.
  explicit ScriptedContactStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedContactStore() override;

  std::optional<StoreRole> RoleOf(const std::string& entry_point) const override;

  // --- What it holds ---

  /// Year, month, day, hour, minute, second.
  using Time = std::array<std::uint16_t, 6>;
  struct Record {
    std::uint32_t id;
    Time time;
    Bytes bytes;
  };
  /// 0 contacts, 1 groups.
  std::vector<Record> tables[2];
  /// The groups of a contact.
  std::map<std::uint32_t, std::vector<std::uint32_t>> groups_of;
  struct Picture {
    std::uint16_t length;  ///< What it says its length is.
    Bytes data;            ///< What it fills of the data.
  };
  std::map<std::uint32_t, Picture> pictures;

  /// Adds a record as if the handset's user had made it, but for the id and the time inside its bytes: those are the
  /// caller's.
  void Add(std::uint32_t table, std::uint32_t id, const Time& time = kOldTime, Bytes bytes = {});
  /// Null without one.
  Record* Find(std::uint32_t table, std::uint32_t id);
  /// A record that must be there: the test fails otherwise.
  Record& At(std::uint32_t table, std::uint32_t id);
  std::vector<std::uint32_t> Ids(std::uint32_t table) const;

  static constexpr Time kOldTime = {2006, 1, 2, 3, 4, 5};
  /// The time of records that the agent adds or updates.
  static constexpr Time kNewTime = {2006, 12, 11, 7, 2, 10};
  // The FILETIMEs that these are, low word and high word.
  static constexpr std::uint32_t kOldLow = 0x30A84080;
  static constexpr std::uint32_t kOldHigh = 0x01C60F49;
  static constexpr std::uint32_t kNewLow = 0x46DE8500;
  static constexpr std::uint32_t kNewHigh = 0x01C71CF2;
  /// The ids of what is added next.
  std::uint32_t next_id = 1000;
  std::uint32_t next_picture_id = 5000;

  // --- What it was asked ---

  // Calls are told by the entry point's name without "DTP_" and "PIM": "Initialize 0", "UnInitialize",
  // "GetAllManNum", "GetAllmanSyncid", "GetAllGroupNum", "GetAllgroupSyncid"; with the ids that it was given in
  // brackets "Readman [5 6]", "Readgroup [5]", "QueryManAttachGroup [5 6]", "DeleteMan [5]", "DeleteGroup [5]",
  // "UpdateMan [5]", "UpdateGroup [5]"; with the picture's id "DownloadingImage 7", "LoadingImage 7",
  // "DeleteImage 7"; with the number of records "AddManToUnGroup 3", "AddGroup 3", "PhoneAddToGroups 2",
  // "ModifyManToGroup 2"; with the name "FindmanSyncidByName Anna", "FindgroupSyncidByName Family".

  /// The room that each list of records was offered, in its count: contacts, groups.
  std::vector<std::int32_t> offered_rooms[2];
  /// The bytes of what the agent handed over, record by record in the order of the calls, whatever became of it.
  std::vector<Bytes> added[2];
  std::vector<Bytes> updated[2];
  std::vector<Bytes> added_memberships;
  std::vector<Bytes> modified_memberships;
  std::vector<Bytes> loaded_pictures;

  // --- How it departs from the truth ---

  /// Entry points that answer this instead of doing their work: statuses["Readman"].
  std::map<std::string, std::int32_t> statuses;
  /// Single calls that do: refusals["LoadingImage"][2] is for the second one.
  std::map<std::string, std::map<unsigned, std::int32_t>> refusals;

  /// Entry points that answer success, do their work, and leave alone what they were to fill.
  std::set<std::string> fills_nothing;
  /// What it counts, by table, and how many records it says it listed.
  std::optional<std::int32_t> claimed_count[2];
  std::optional<std::int32_t> claimed_listed[2];
  /// How many groups it says a contact has; it fills those that it has.
  std::map<std::uint32_t, std::uint32_t> claimed_group_counts;
  /// The contact id that it leaves in a membership query, by the one that it was asked for.
  std::map<std::uint32_t, std::uint32_t> renamed_contacts;
  /// A store may list all it has without a look at the room.
  bool heeds_room = true;
  /// What a name look-up answers for "found".
  std::int32_t found_flag = 1;

 private:
  friend struct ContactEntryPoints;
  /// Logs a call, its arguments given, and says what it answers: 0 for it to do its work.
  std::int32_t Begin(const std::string& entry_point, const std::string& arguments = {});
  unsigned counted_calls_ = 0;
  std::map<std::string, unsigned> calls_by_name_;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_CONTACT_STORE_H
