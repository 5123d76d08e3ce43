// What no compiler checks of the modules' facts.
#include <gtest/gtest.h>

#include "modules/calendar/schedule.h"
#include "modules/messaging/call_history.h"
#include "modules/messaging/mms.h"
#include "modules/messaging/sms.h"
#include "modules/organizer/card_reader.h"
#include "modules/organizer/graphic_memo.h"
#include "modules/telephony/call_filter.h"
#include "modules/telephony/quick_dial.h"

namespace qv {
namespace {

/// The contacts convert their records themselves.
constexpr const ModuleFacts* kModules[] = {
    &schedule::kFacts,   &card_reader::kFacts, &sms::kFacts, &call_history::kFacts,
    &quick_dial::kFacts, &call_filter::kFacts, &mms::kFacts, &graphic_memo::kFacts,
};

TEST(ModuleFactsTest, AFormWithFieldsByRuleHasTheFunctionsThatKnowTheRule) {
  for (const ModuleFacts* const facts : kModules) {
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

}  // namespace
}  // namespace qv
