// What no compiler checks of the modules' facts.
#include <gtest/gtest.h>

#include <string>

#include "modules/calendar/agenda.h"
#include "modules/calendar/schedule.h"
#include "modules/calendar/tasks.h"
#include "modules/contacts/contacts.h"
#include "modules/messaging/call_history.h"
#include "modules/messaging/mms.h"
#include "modules/messaging/sms.h"
#include "modules/messaging/unified_mail.h"
#include "modules/organizer/card_reader.h"
#include "modules/organizer/graphic_memo.h"
#include "modules/telephony/call_filter.h"
#include "modules/telephony/quick_dial.h"
#include "sync/anchor_file.h"

namespace qv {
namespace {

constexpr const ModuleFacts* kModules[] = {
    &contacts::kFacts,     &schedule::kFacts,    &tasks::kFacts, &agenda::kFacts,
    &unified_mail::kFacts, &card_reader::kFacts, &sms::kFacts,   &call_history::kFacts,
    &quick_dial::kFacts,   &call_filter::kFacts, &mms::kFacts,   &graphic_memo::kFacts,
};

TEST(ModuleFactsTest, AFormWithFieldsByRuleHasTheFunctionsThatKnowTheRule) {
  for (const ModuleFacts* const facts : kModules) {
    if (facts == &contacts::kFacts) continue;  // They convert their records themselves.
    for (std::size_t i = 0; i < facts->tables.size(); ++i) {
      for (const layout::Field& field : facts->names.tables[i].layout->fields) {
        if (field.carried != layout::Carried::kByModule) continue;
        EXPECT_NE(facts->tables[i].to_exchange, nullptr) << field.name;
        EXPECT_NE(facts->tables[i].to_store, nullptr) << field.name;
      }
    }
  }
}

TEST(ModuleFactsTest, ACallThatIsToldTheGroupKnowsWhereItStands) {
  for (const ModuleFacts* const facts : kModules) {
    for (const RecordTableFacts& table : facts->tables) {
      for (const EntryPoint* const call : {&table.calls.insert, &table.calls.update}) {
        if (call->Takes(Argument::kGroup)) {
          EXPECT_NE(table.group_argument.form, layout::Form::kNone);
        }
      }
    }
  }
}

TEST(ModuleFactsTest, AListsEntriesHaveRoomForWhatIsMadeOfThem) {
  for (const ModuleFacts* const facts : kModules) {
    for (const RecordTableFacts& table : facts->tables) {
      EXPECT_TRUE(HasRoom(table.sync_info)) << table.sync_info.entry_size;
    }
  }
}

/// Keys are found wherever they stand in the section, its header included.
TEST(ModuleFactsTest, NoAnchorKeyIsFoundWithinAnotherOrInTheSectionsHeader) {
  const std::u16string header = u"[" + std::u16string(kAnchorSection) + u"]";
  for (const ModuleFacts* const facts : kModules) {
    const std::u16string key = facts->names.anchor_key;
    EXPECT_EQ(header.find(key), std::u16string::npos) << testing::PrintToString(key);
    for (const ModuleFacts* const other : kModules) {
      const std::u16string other_key = other->names.anchor_key;
      EXPECT_EQ(other_key.find(key) != std::u16string::npos, facts == other)
          << testing::PrintToString(key) << " in " << testing::PrintToString(other_key);
    }
  }
}

}  // namespace
}  // namespace qv
