// The plain modules.
#include "tests/support/plain_module.h"

#include "tests/support/call_records.h"
#include "tests/support/card_records.h"
#include "tests/support/dial_records.h"
#include "tests/support/memo_records.h"
#include "tests/support/mms_records.h"
#include "tests/support/scripted_call_store.h"
#include "tests/support/scripted_card_store.h"
#include "tests/support/scripted_dial_store.h"
#include "tests/support/scripted_memo_store.h"
#include "tests/support/scripted_mms_store.h"
#include "tests/support/scripted_sms_store.h"
#include "tests/support/sms_records.h"

namespace qv_test {
namespace {

using enum Travels;

template <typename Store>
std::unique_ptr<ScriptedTableStore> MakeStore(const std::set<std::u16string>& missing, std::uintptr_t address) {
  return std::make_unique<Store>(missing, address);
}

// The times of records that a test adds, and of those that the agent writes, in lists of FILETIMEs.
constexpr std::array<std::uint32_t, 2> kOldFileTime = {1, 0};
constexpr std::array<std::uint32_t, 2> kNewFileTime = {5, 6};
// In lists of text.
constexpr std::array<std::uint32_t, 2> kOldTextTime = {0x30A84080, 0x01C60F49};  // 2 January 2006 03:04:05.
constexpr std::array<std::uint32_t, 2> kNewTextTime = {0x46DE8500, 0x01C71CF2};  // 11 December 2006 07:02:10.

Bytes BlankCall() {
  Bytes r(208);
  Put8(r, 40, 80);  // A type of 0.
  return r;
}

/// 1 January 1601, as numbers: what the FILETIME 0 is.
void PutFirstDay(Bytes& r, std::size_t offset) {
  Put32(r, offset, 1601);
  Put32(r, offset + 4, 1);
  Put32(r, offset + 8, 1);
}

Bytes BlankCard() {
  Bytes r(956);
  PutFirstDay(r, 920);
  return r;
}

Bytes BlankMemo() {
  Bytes r(1224);
  PutFirstDay(r, 8);
  PutFirstDay(r, 40);
  return r;
}

PlainModuleSteps CallHistorySteps() {
  return {
      .full_export = {"create callinfo.tbl", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                      "find EXPCALLHISTORY_Sync_GetAllidTime", "find EXPCALLHISTORY_Sync_Read", "create callinfo.tbl",
                      "call GetAllRecNum", "call GetAllidTime room 1", "call Read [7]"},
      .incremental_export = {"create callinfo.tbl", "create callcmd.tbl", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                             "find EXPCALLHISTORY_Sync_GetAllidTime", "find EXPCALLHISTORY_Sync_Read",
                             "create callinfo.tbl", "call GetAllRecNum", "call GetAllidTime room 1",
                             "open recordcall.log", "call Read [7]", "create recordcall.log",
                             "find EXPCALLHISTORY_Sync_GetAllRecNum", "find EXPCALLHISTORY_Sync_GetAllidTime",
                             "call GetAllRecNum", "call GetAllidTime room 1"},
      .replacing_recover = {"find EXPCALLHISTORY_Sync_DelAll", "call DelAll", "open callinfo.tbl",
                            "find EXPCALLHISTORY_Sync_Insert", "call Insert", "call Insert", "delete callinfo.tbl",
                            "create recordcall.log", "find EXPCALLHISTORY_Sync_GetAllRecNum",
                            "find EXPCALLHISTORY_Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 2",
                            "create callmap.tbl"},
      .incremental_recover = {"open callcmd.tbl", "find EXPCALLHISTORY_Sync_Del", "call Del [2 4]", "open callinfo.tbl",
                              "find EXPCALLHISTORY_Sync_Insert", "find EXPCALLHISTORY_Sync_Update", "call Update 3",
                              "call Insert", "delete callcmd.tbl", "delete callinfo.tbl", "create recordcall.log",
                              "find EXPCALLHISTORY_Sync_GetAllRecNum", "find EXPCALLHISTORY_Sync_GetAllidTime",
                              "call GetAllRecNum", "call GetAllidTime room 3", "create callmap.tbl"},
  };
}

PlainModuleSteps CardReaderSteps() {
  return {
      .full_export = {"find CR_Initialize", "call Initialize 0", "find CR_Sync_GetAllRecNum",
                      "find CR_Sync_GetAllidTime", "find CR_Sync_Read", "call GetAllRecNum", "call GetAllidTime room 1",
                      "call Read [7]", "create cardreader.tbl", "find CR_UnInitialize", "call UnInitialize"},
      .incremental_export = {"find CR_Initialize", "call Initialize 0", "create cardcmd.tbl",
                             "find CR_Sync_GetAllRecNum", "find CR_Sync_GetAllidTime", "find CR_Sync_Read",
                             "call GetAllRecNum", "call GetAllidTime room 1", "open cardreader.log", "call Read [7]",
                             "create cardreader.tbl", "create cardreader.log", "find CR_Sync_GetAllRecNum",
                             "find CR_Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 1",
                             "find CR_UnInitialize", "call UnInitialize"},
      .replacing_recover = {"find CR_Initialize", "call Initialize 0", "find CR_Sync_DeleteAllCardRecord",
                            "call DelAll", "open cardreader.tbl", "find CR_Sync_Insert", "call Insert", "call Insert",
                            "delete cardreader.tbl", "create cardreader.log", "find CR_Sync_GetAllRecNum",
                            "find CR_Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 2",
                            "create cardmap.tbl", "find CR_UnInitialize", "call UnInitialize"},
      .incremental_recover = {"find CR_Initialize",
                              "call Initialize 0",
                              "open cardcmd.tbl",
                              "find CR_Sync_Del",
                              "call Del [2 4]",
                              "open cardreader.tbl",
                              "find CR_Sync_Insert",
                              "find CR_Sync_Update",
                              "call Update 3",
                              "call Insert",
                              "delete cardcmd.tbl",
                              "delete cardreader.tbl",
                              "create cardreader.log",
                              "find CR_Sync_GetAllRecNum",
                              "find CR_Sync_GetAllidTime",
                              "call GetAllRecNum",
                              "call GetAllidTime room 3",
                              "create cardmap.tbl",
                              "find CR_UnInitialize",
                              "call UnInitialize"},
  };
}

PlainModuleSteps QuickDialSteps() {
  return {
      .full_export = {"delete Quickinfo.tbl", "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read",
                      "call GetAllRecNum", "call GetAllidTime room 1", "call Read [7]", "create Quickinfo.tbl"},
      .incremental_export = {"delete Quickinfo.tbl", "create Quickcmd.tbl", "find Sync_GetAllRecNum",
                             "find Sync_GetAllidTime", "find Sync_Read", "call GetAllRecNum",
                             "call GetAllidTime room 1", "open quickinfo.log", "call Read [7]", "create Quickinfo.tbl",
                             "create quickinfo.log", "find Sync_GetAllRecNum", "find Sync_GetAllidTime",
                             "call GetAllRecNum", "call GetAllidTime room 1"},
      .replacing_recover = {"find Sync_DelAll", "call DelAll", "open Quickinfo.tbl", "find Sync_Insert", "call Insert",
                            "call Insert", "delete Quickinfo.tbl", "create quickinfo.log", "find Sync_GetAllRecNum",
                            "find Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 2",
                            "create Quickmap.tbl"},
      .incremental_recover = {"open Quickcmd.tbl", "find Sync_Del", "call Del [2 4]", "open Quickinfo.tbl",
                              "find Sync_Insert", "find Sync_Update", "call Update 3", "call Insert",
                              "delete Quickcmd.tbl", "delete Quickinfo.tbl", "create quickinfo.log",
                              "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "call GetAllRecNum",
                              "call GetAllidTime room 3", "create Quickmap.tbl"},
  };
}

PlainModuleSteps GraphicMemoSteps() {
  return {
      .full_export = {"find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "find DrawInfo_Read",
                      "create gmemoinfo.tbl", "call GetAllRecNum 0", "call GetAllidTime 0 room 1", "call Read 0 [7]",
                      "create gmemoinfo.tbl"},
      .incremental_export = {"find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "find DrawInfo_Read",
                             "create gmemocmd.tbl", "call GetAllRecNum 0", "call GetAllidTime 0 room 1",
                             "open gmemo.log", "call Read 0 [7]", "create gmemoinfo.tbl", "create gmemo.log",
                             "find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "call GetAllRecNum 0",
                             "call GetAllidTime 0 room 1"},
      .replacing_recover = {"find DrawInfo_DelAll", "call DelAll", "open gmemoinfo.tbl", "find DrawInfo_Insert",
                            "call Insert 0", "call Insert 0", "delete gmemoinfo.tbl", "create gmemo.log",
                            "find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "call GetAllRecNum 0",
                            "call GetAllidTime 0 room 2", "create gmemomap.tbl"},
      .incremental_recover = {"open gmemocmd.tbl", "find DrawInfo_Sync_Del", "call Del 0 [2 4]", "open gmemoinfo.tbl",
                              "find DrawInfo_Insert", "find DrawInfo_Update", "call Update 0 id 3", "call Insert 0",
                              "delete gmemocmd.tbl", "delete gmemoinfo.tbl", "create gmemo.log",
                              "find DrawInfo_GetAllRecNum", "find DrawInfo_GetAllidTime", "call GetAllRecNum 0",
                              "call GetAllidTime 0 room 3", "create gmemomap.tbl"},
  };
}

PlainModuleSteps MmsSteps() {
  return {
      .full_export = {"find mms_Sync_GetConfig", "call GetConfig", "create mmsconf.tbl", "create mmsinfo.tbl",
                      "find mms_Sync_GetAllRecvNum", "find mms_Sync_getAllidTime", "find mms_Sync_Read",
                      "create mmsinfo.tbl", "call GetAllRecvNum", "call GetAllidTime room 1", "call Read [7]"},
      .incremental_export = {"find mms_Sync_GetConfig", "call GetConfig", "create mmsconf.tbl", "create mmsinfo.tbl",
                             "create mmscmd.tbl", "find mms_Sync_GetAllRecvNum", "find mms_Sync_getAllidTime",
                             "find mms_Sync_Read", "create mmsinfo.tbl", "call GetAllRecvNum",
                             "call GetAllidTime room 1", "open mmsinfo.log", "call Read [7]", "create mmsinfo.log",
                             "find mms_Sync_GetAllRecvNum", "find mms_Sync_getAllidTime", "call GetAllRecvNum",
                             "call GetAllidTime room 1"},
      .replacing_recover = {"open mmsconf.tbl", "find mms_Sync_SetConfig", "call SetConfig null 0",
                            "delete mmsconf.tbl", "find mms_Sync_DelAll", "call DelAll", "open mmsinfo.tbl",
                            "find mms_Sync_Insert", "call Insert", "call Insert", "delete mmsinfo.tbl",
                            "create mmsinfo.log", "find mms_Sync_GetAllRecvNum", "find mms_Sync_getAllidTime",
                            "call GetAllRecvNum", "call GetAllidTime room 2", "create mmsmap.tbl"},
      .incremental_recover = {"open mmsconf.tbl",
                              "find mms_Sync_SetConfig",
                              "call SetConfig null 0",
                              "delete mmsconf.tbl",
                              "open mmscmd.tbl",
                              "find mms_SC_Sync_Del",
                              "call Del [2 4]",
                              "open mmsinfo.tbl",
                              "find mms_Sync_Insert",
                              "find mms_Sync_Update",
                              "call Update 3",
                              "call Insert",
                              "delete smscmd.tbl",
                              "delete mmsinfo.tbl",
                              "create mmsinfo.log",
                              "find mms_Sync_GetAllRecvNum",
                              "find mms_Sync_getAllidTime",
                              "call GetAllRecvNum",
                              "call GetAllidTime room 3",
                              "create mmsmap.tbl"},
  };
}

PlainModuleSteps SmsSteps() {
  return {
      .full_export = {"delete smsinfo.tbl", "find Sync_GetSMSConfig", "call GetSMSConfig", "create smsconf.tbl",
                      "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read", "create smsinfo.tbl",
                      "call GetAllRecNum", "call GetAllidTime room 1", "call Read [7]", "create smsinfo.tbl"},
      .incremental_export = {"delete smsinfo.tbl", "find Sync_GetSMSConfig", "call GetSMSConfig", "create smsconf.tbl",
                             "find Sync_GetAllRecNum", "find Sync_GetAllidTime", "find Sync_Read", "create smscmd.tbl",
                             "create smsinfo.tbl", "call GetAllRecNum", "call GetAllidTime room 1", "open smsinfo.log",
                             "call Read [7]", "create smsinfo.tbl", "create smsinfo.log", "find Sync_GetAllRecNum",
                             "find Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 1"},
      .replacing_recover = {"find Sync_SetSMSConfig", "open smsconf.tbl", "call SetSMSConfig 0 0 0 0 0",
                            "find Sync_GetSMSConfig", "call GetSMSConfig", "delete smsconf.tbl", "find Sync_DelAll",
                            "call DelAll", "open smsinfo.tbl", "find Sync_Insert", "call Insert", "call Insert",
                            "delete smsinfo.tbl", "create smsinfo.log", "find Sync_GetAllRecNum",
                            "find Sync_GetAllidTime", "call GetAllRecNum", "call GetAllidTime room 2",
                            "create smsmap.tbl"},
      .incremental_recover = {"find Sync_SetSMSConfig", "open smsconf.tbl",   "call SetSMSConfig 0 0 0 0 0",
                              "find Sync_GetSMSConfig", "call GetSMSConfig",  "delete smsconf.tbl",
                              "open smscmd.tbl",        "find Sync_Del",      "call Del [2 4]",
                              "find Sync_Insert",       "find Sync_Update",   "open smsinfo.tbl",
                              "call Update 3",          "call Insert",        "delete smscmd.tbl",
                              "delete smsinfo.tbl",     "create smsinfo.log", "find Sync_GetAllRecNum",
                              "find Sync_GetAllidTime", "call GetAllRecNum",  "call GetAllidTime room 3",
                              "create smsmap.tbl"},
  };
}

}  // namespace

void PrintTo(const PlainModule& module, std::ostream* out) {
  *out << module.name;
}

PlainModule CallHistory() {
  return {.name = "CallHistory",
          .id = 9,
          .anchor_key = "RECORDCALL",
          .table = kCallTable,
          .changes = kCallChanges,
          .id_map = kCallIdMap,
          .log = kCallLog,
          .make_store = MakeStore<ScriptedCallStore>,
          .fields = {{kBytes, 160, 4, 0, 4},
                     {kDigits, 0, 30, 4, 24},
                     {kBytes, 164, 4, 36, 4},
                     {kOther, 168, 2, 40, 1},  // The type.
                     {kLowByte, 170, 2, 41, 1},
                     {kText, 30, 62, 42, 62},
                     {kText, 92, 68, 104, 66},
                     {kLowByte, 172, 2, 170, 1},
                     {kLowByte, 174, 2, 171, 1}},
          .incoming_id_at = 0,
          .sample_id = kCallId,
          .in_store = StoreCall(),
          .exported = ExchangeCall(),
          .noisy = NoisyCall(),
          .recovered = RecoveredCall(),
          .exported_blank = BlankCall(),
          .plain = PlainCall,
          .recovered_plain = RecoveredPlainCall,
          .old_time = kOldFileTime,
          .new_time = kNewFileTime,
          .read_batch = 50,
          .write_flag = 0,
          .table_of_failed_full_export = Earlier::kEmptied,
          .table_of_failed_incremental_export = Earlier::kEmptied,
          .table_without_entry_point = Earlier::kEmptied,
          .only_replacing_empties = true,
          .deletes_from_any_table = false,
          .steps = CallHistorySteps()};
}

PlainModule CardReader() {
  return {.name = "CardReader",
          .id = 7,
          .anchor_key = "CARDREADER",
          .table = kCardTable,
          .changes = kCardChanges,
          .id_map = kCardIdMap,
          .log = kCardLog,
          .make_store = MakeStore<ScriptedCardStore>,
          .fields = {{kBytes, 0, 4, 0, 4},
                     {kText, 12, 62, 4, 62},
                     {kText, 74, 10, 66, 10},
                     {kText, 84, 130, 76, 130},
                     {kText, 214, 66, 206, 66},
                     {kText, 280, 66, 272, 66},
                     {kText, 346, 66, 338, 66},
                     {kText, 412, 66, 404, 66},
                     {kText, 478, 66, 470, 66},
                     {kText, 544, 42, 536, 42},
                     {kText, 586, 66, 578, 66},
                     {kText, 652, 18, 644, 18},
                     {kText, 670, 258, 662, 258},
                     {kFileTime, 4, 8, 920, 24}},
          .incoming_id_at = 0,
          .sample_id = kCardId,
          .in_store = StoreCard(),
          .exported = ExchangeCard(),
          .noisy = NoisyCard(),
          .recovered = RecoveredCard(),
          .exported_blank = BlankCard(),
          .plain = PlainCard,
          .recovered_plain = RecoveredPlainCard,
          .old_time = kOldFileTime,
          .new_time = kNewFileTime,
          .successes = {1, 2},
          .failures = {0, 3, 0x80000000, 0xFFFFFFFF},
          .negative_counts_are_none = true,
          .steps = CardReaderSteps()};
}

PlainModule QuickDial() {
  return {.name = "QuickDial",
          .id = 10,
          .anchor_key = "QUCIKDAIL",
          .table = kDialTable,
          .changes = kDialChanges,
          .id_map = kDialIdMap,
          .log = kDialLog,
          .make_store = MakeStore<ScriptedDialStore>,
          .fields = {{kBytes, 140, 4, 136, 4},
                     {kAgain, 140, 4, 0, 4},
                     {kText, 0, 62, 4, 62},
                     {kText, 62, 66, 66, 66},
                     {kBytes, 128, 2, 132, 2},
                     {kLowByte, 132, 4, 134, 1},
                     {kLowByte, 136, 2, 135, 1},
                     {kBytes, 144, 4, 140, 4},
                     {kDigits, 148, 30, 144, 24},
                     {kBytes, 178, 2, 176, 2}},
          .incoming_id_at = 136,
          .sample_id = kDialId,
          .in_store = StoreDial(),
          .exported = ExchangeDial(),
          .noisy = NoisyDial(),
          .recovered = RecoveredDial(),
          .exported_blank = Bytes(216),
          .plain = PlainDial,
          .recovered_plain = RecoveredPlainDial,
          .old_time = kOldTextTime,
          .new_time = kNewTextTime,
          .table_of_failed_full_export = Earlier::kDeleted,
          .table_of_failed_incremental_export = Earlier::kDeleted,
          .table_without_entry_point = Earlier::kDeleted,
          .steps = QuickDialSteps()};
}

PlainModule GraphicMemo() {
  return {.name = "GraphicMemo",
          .id = 13,
          .anchor_key = "GMEMO",
          .table = kMemoTable,
          .changes = kMemoChanges,
          .id_map = kMemoIdMap,
          .log = kMemoLog,
          .make_store = MakeStore<ScriptedMemoStore>,
          .fields = {{kBytes, 0, 4, 0, 4},
                     {kLowByte, 4, 4, 4, 1},
                     {kLowByte, 8, 4, 5, 1},
                     {kLowByte, 12, 4, 6, 1},
                     {kFileTime, 16, 8, 8, 24},
                     {kFileTime, 24, 8, 40, 24},
                     {kText, 32, 126, 72, 126},
                     {kText, 158, 48, 198, 48},
                     {kText, 206, 206, 246, 206},
                     {kBytes, 412, 4, 452, 4},
                     {kText, 416, 204, 456, 204},
                     {kText, 620, 512, 660, 512},
                     {kBytes, 1132, 16, 1172, 16}},
          .incoming_id_at = 0,
          .sample_id = kMemoId,
          .in_store = StoreMemo(),
          .exported = ExchangeMemo(),
          .noisy = NoisyMemo(),
          .recovered = RecoveredMemo(),
          .exported_blank = BlankMemo(),
          .plain = PlainMemo,
          .recovered_plain = RecoveredPlainMemo,
          .old_time = kOldFileTime,
          .new_time = kNewFileTime,
          .table_of_failed_full_export = Earlier::kEmptied,
          .changes_without_entry_point = Earlier::kKept,
          .table_of_empty_store = Earlier::kKept,
          .steps = GraphicMemoSteps()};
}

// The messages of the sample have neither text nor data: those are not of one size, and the module's own tests know
// them.
PlainModule Mms() {
  constexpr std::uint32_t kId = 0xE4A1A2A3;
  constexpr std::uint32_t kValue = 0xF4B1B2B3;
  return {.name = "Mms",
          .id = 12,
          .anchor_key = "MMS",
          .table = kMmsTable,
          .changes = kMmsChanges,
          .id_map = kMmsIdMap,
          .log = kMmsLog,
          .config = PlainModuleConfig{kMmsConfig, {}, u"mms_Sync_SetConfig", 1},
          .make_store = MakeStore<ScriptedMmsStore>,
          .fields = {},
          .exported_id_at = 8,
          .incoming_id_at = 8,
          .sample_id = kId,
          .in_store = Words({0, kId, kValue, 0, 0}),
          .exported = Words({0, 0, kId, kValue, 0, 0}),
          .noisy = Words({0xFFFFFFFF, 0, kId, kValue, 0xFFFFFFFF, 0}),
          .recovered = Words({0, kId, kValue, 0, 0}),
          .exported_blank = Bytes(24),
          .plain = [](std::uint32_t id) { return MmsRecord(id); },
          .recovered_plain =
              [](std::uint32_t id) {
                return Words({0, id, 0, 0, 0});
              },
          .old_time = kOldFileTime,
          .new_time = kNewFileTime,
          .read_batch = 50,
          .write_flag = 0,
          .table_of_failed_full_export = Earlier::kEmptied,
          .table_of_failed_incremental_export = Earlier::kEmptied,
          .table_without_entry_point = Earlier::kEmptied,
          .only_replacing_empties = true,
          .deletes_from_any_table = false,
          .keeps_change_list = true,
          .steps = MmsSteps()};
}

PlainModule Sms() {
  return {.name = "Sms",
          .id = 8,
          .anchor_key = "SMS",
          .table = kSmsTable,
          .changes = kSmsChanges,
          .id_map = kSmsIdMap,
          .log = kSmsLog,
          .config = PlainModuleConfig{kSmsConfig, Bytes(40), u"Sync_SetSMSConfig", 2},
          .make_store = MakeStore<ScriptedSmsStore>,
          .fields = {},
          .incoming_id_at = 0,
          .sample_id = kMessageId,
          .in_store = StoreShortMessage(),
          .exported = ExchangeShortMessage(),
          .noisy = NoisyShortMessage(),
          .recovered = RecoveredShortMessage(),
          .exported_blank = Bytes(1624),
          .plain = [](std::uint32_t id) { return PlainShortMessage(id); },
          .recovered_plain = [](std::uint32_t /*id*/) { return RecoveredPlainShortMessage(); },
          .old_time = kOldTextTime,
          .new_time = kNewTextTime,
          .table_of_failed_full_export = Earlier::kEmptied,
          .table_of_failed_incremental_export = Earlier::kEmptied,
          .table_without_entry_point = Earlier::kDeleted,
          .changes_without_entry_point = Earlier::kKept,
          .only_replacing_empties = true,
          .changes_any_table = true,
          .steps = SmsSteps()};
}

}  // namespace qv_test
