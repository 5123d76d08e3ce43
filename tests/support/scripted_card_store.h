// CardScanStore.dll as a scripted store: business cards, and a session.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_CARD_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_CARD_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// Calls are told without "CR_" and "Sync_", what empties the store as "DelAll", the session's as "Initialize 0" and
/// "UnInitialize".
class ScriptedCardStore final : public ScriptedTableStore {
 public:
  explicit ScriptedCardStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedCardStore() override;

  /// What the session's entry points answer.
  std::uint32_t session_answer = 0;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_CARD_STORE_H
