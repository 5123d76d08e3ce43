// Module 1, the contacts: contacts in groups, each with at most one picture, kept by ContactStore.dll. Two tables as in
// other modules, and two further ones, which have steps of their own: memberships and pictures.
#ifndef QV_MODULES_CONTACTS_CONTACTS_H
#define QV_MODULES_CONTACTS_CONTACTS_H

#include "modules/contacts/contacts_layout.h"
#include "platform/memory.h"
#include "sync/form_rules.h"
#include "sync/procedure.h"

namespace qv::contacts {

/// The table that a change list names for a contact whose picture changed. Pictures have no ids of a desktop's there,
/// and no place in kTables by this number.
inline constexpr std::uint32_t kPictureChanges = 2;

inline constexpr char16_t kMembershipFile[] = u"groupattach.tbl";
inline constexpr char16_t kPictureFile[] = u"image.tbl";

inline constexpr TableNames kTables[] = {
    {.exchange_file = u"linkman.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\linkman.log", .layout = &kContactLayout},
    {.exchange_file = u"groupmgr.tbl", .snapshot_log = u"\\dbdata\\sysconfig\\lkmgroup.log", .layout = &kGroupLayout},
    {.exchange_file = kMembershipFile, .layout = &kMembershipLayout},
    {.exchange_file = kPictureFile, .layout = &kPictureLayout},
};

inline constexpr ModuleNames kNames = {
    .store_library = u"ContactStore.dll",
    .anchor_key = u"LINKMAN",
    .change_list = u"lkmcmd.tbl",
    .id_map = u"lkmmap.tbl",
    .tables = kTables,
    .initialize = u"DTP_Initialize",
    .uninitialize = u"DTP_UnInitialize",
};

/// How many records the handset may hold, by table number; an export carries no more groups than these.
inline constexpr std::uint32_t kMostRecords[] = {3000, 100};

/// The handset id, in the id map, of a record that was not taken.
inline constexpr std::uint32_t kRefused = 0xFFFFFFFF;

// What the store answers when it refuses; its reasons are its own.
inline constexpr std::int32_t kStoreRefused502 = -502;
inline constexpr std::int32_t kStoreRefused503 = -503;
inline constexpr std::int32_t kPictureSkipped = -503;
inline constexpr std::int32_t kNoRoomForPictures = -504;

inline constexpr StepFlag kMembershipsExported{0x8000000};
inline constexpr StepFlag kPicturesExported{0x9000000};
inline constexpr StepFlag kContactsApplied{0x3000000};
inline constexpr StepFlag kGroupsApplied{0x4000000};
inline constexpr StepFlag kIdMapWritten{0x6000000};
inline constexpr StepFlag kMembershipsApplied{0xA000000};
inline constexpr StepFlag kPicturesApplied{0xB000000};

inline constexpr SyncInfoForm kSyncInfo = {16, 4, SyncInfoForm::Time::kSixWords};

inline constexpr RecordTableFacts kTableFacts[] = {
    {.calls = {.count = {u"DTP_PIMGetAllManNum", {Argument::kCountPlace}},
               .list = {u"DTP_PIMGetAllmanSyncid", {Argument::kCountPlace, Argument::kEntries}},
               .read = {u"DTP_PIMReadman", {Argument::kIds, Argument::kCount, Argument::kRecords}},
               .insert = {u"DTP_PIMAddManToUnGroup", {Argument::kRecords, Argument::kCount, Argument::kNewId}},
               .update = {u"DTP_PIMUpdateMan", {Argument::kIds, Argument::kCount, Argument::kRecords}}},
     .sync_info = kSyncInfo,
     .counts_are_signed = true,
     .lists_none_when_empty = true,
     .read_batch = 400},
    // An export does not count the groups: their list has a room of its own.
    {.calls = {.count = {u"DTP_PIMGetAllGroupNum", {Argument::kCountPlace}},
               .list = {u"DTP_PIMGetAllgroupSyncid", {Argument::kCountPlace, Argument::kEntries}},
               .read = {u"DTP_PIMReadgroup", {Argument::kIds, Argument::kCount, Argument::kRecords}},
               .insert = {u"DTP_PIMAddGroup", {Argument::kRecords, Argument::kCount, Argument::kNewId}},
               .update = {u"DTP_PIMUpdateGroup", {Argument::kIds, Argument::kCount, Argument::kRecords}}},
     .sync_info = kSyncInfo,
     .uncounted_room = kMostRecords[kGroupTable],
     .counts_are_signed = true,
     .lists_none_when_empty = true},
};

/// Records are deleted table by table, each with an entry point of its own.
inline constexpr ModuleFacts kFacts = {
    .names = kNames,
    .tables = kTableFacts,
    .erase = {},
    .erase_all = {},
    .emptied_by = EmptiedBy::kAllButAdding,
    .creates_tables_first = true,
    // The desktop must learn which contacts were refused, and which were merged with others.
    .id_map_written = kIdMapWritten,
};

inline constexpr StepWords kStepWords[] = {
    {Direction::kExport, Modes::kIncremental, StepFlag::kSnapshotRead, "reading the table's snapshot log"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable0Exported, "exporting the contacts"},
    {Direction::kExport, Modes::kAny, StepFlag::kTable1Exported, "exporting the groups"},
    {Direction::kExport, Modes::kAny, kMembershipsExported, "exporting who belongs to which group"},
    {Direction::kExport, Modes::kAny, kPicturesExported, "exporting the pictures"},
    {Direction::kExport, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
    {Direction::kRecover, Modes::kIncremental, StepFlag::kChangeListApplied, "applying the change list's deletions"},
    {Direction::kRecover, Modes::kAny, kPicturesApplied, "inserting the pictures"},
    {Direction::kRecover, Modes::kAny, kGroupsApplied, "applying the groups"},
    {Direction::kRecover, Modes::kAny, kContactsApplied, "applying the contacts"},
    {Direction::kRecover, Modes::kAny, kMembershipsApplied, "applying who belongs to which group"},
    {Direction::kRecover, Modes::kAny, StepFlag::kSnapshotWritten, "rewriting the snapshot logs"},
    {Direction::kRecover, Modes::kAny, kIdMapWritten, "writing the id map"},
};

// What a recover chooses where the contact had nothing chosen, and what it does not take. Of a type or flag 0 that it
// chooses 128 is left, which an export takes for a plain value.
inline constexpr const char* kNumberNotRestored[] = {"number_type_", "default_number"};
inline constexpr const char* kFlagsNotRestored[] = {"first_flag", "second_flag", "chosen_flag"};
inline constexpr const char* kDatesNotRestored[] = {"first_date_", "second_date_"};

/// What the fields that no table can say follow from, for those who read the forms.
inline constexpr RuleWords kRules[] = {
    {&kContactLayout, "first_date_mark, second_date_mark: an export writes 14; a recover does not read them."},
    {&kContactLayout,
     "default_number: an export looks for the first number_type above 128, writes its number (1 to 8) here, and the "
     "type without the 128; 0 when there is none. A recover adds 128 to the type of this number or, when the field is "
     "not 1 to 8, to that of the first number that has a text.",
     kNumberNotRestored},
    {&kContactLayout,
     "chosen_flag: an export that finds first_flag above 128 writes 1 here, and the flag without the 128; second_flag "
     "travels as it is. A recover adds 128 to the first flag for 1 and to the second for 2; for anything else to the "
     "first if text_860 is not empty, or else to the second if text_990 is not empty.",
     kFlagsNotRestored},
    {&kContactLayout,
     "The dates: an export copies them. A recover takes neither when the first date's year is 1900, its month is 1 or "
     "its day is 1.",
     kDatesNotRestored},
    {&kContactLayout,
     "The reminders: the store has 100 for on and 0 for off; an export writes 1 for anything above 0. A recover sets "
     "each only when its date's year, month and day are not 0."},
    {&kContactLayout, "The store record also has the byte 17, the kind: 1 for a contact."},
    {&kGroupLayout, "The store record also has the byte 17, the kind: 2 for a group."},
    {&kMembershipLayout, "A contact in no group has no record."},
    {&kChangeLayout,
     "In a recover an entry of table 2, new or modified, says that the picture of the contact of this id changed."},
    {&kIdMapLayout,
     "Pictures are not listed. A contact or group stands under table 0 also when the handset did not insert it: with "
     "the "
     "id of the record that already had its name, or with 4294967295 when the handset is full."},
    {&kPictureLayout, "A picture longer than 8192 bytes is exported as 8192, and ends a recover."},
};

/// Results as in kStepWords; without a flag, of an export kFileFailed when a file cannot be created, and of a recover
/// kEntryPointMissing, kSyncInfoFailed, kWipeFailed and kNoMemory when the store could not be emptied.
class ContactsHandler {
 public:
  ContactsHandler(const ModuleFacts& facts, const ModuleCall& call)
      : call_(call), procedure_(facts, call, contacts_, &groups_) {}

  Result Export(SyncMode& mode, char16_t* anchor);
  Result Recover(SyncMode mode, char16_t* anchor);

 private:
  Result ExportTables(SyncMode mode);
  Result ExportContacts(File* change_list, SyncInfoList& listed, List<std::uint32_t>& pictures);
  Result ExportGroups(File* change_list);
  Result ExportMemberships(std::span<const std::uint32_t> contacts);
  Result ExportPictures(std::span<const std::uint32_t> pictures);

  Result EmptyStore();
  Result ApplyChangeList();
  Result ApplyTables(bool incremental);
  Result ApplyPictures();
  Result ApplyTable(const RecordTable& table, const Applying& applying);
  Result ApplyMemberships(const Applying& applying);

  const ModuleCall& call_;
  PlainTable contacts_{call_, kMainTable, kTableFacts[kMainTable]};
  PlainTable groups_{call_, kGroupTable, kTableFacts[kGroupTable]};
  Procedure procedure_;
  ChangeList changes_;
  IdMap new_pictures_;  ///< Under kPictureChanges. They are no business of the desktop's, so they have a map of their
                        ///< own.
};

}  // namespace qv::contacts

#endif  // QV_MODULES_CONTACTS_CONTACTS_H
