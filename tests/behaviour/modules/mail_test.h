// What the e-mail database's tests have in common: a handset with a scripted MailStore.dll, the tables that a desktop
// sends, and the message files beside them.
#ifndef QV_TESTS_BEHAVIOUR_MODULES_MAIL_TEST_H
#define QV_TESTS_BEHAVIOUR_MODULES_MAIL_TEST_H

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/mail_records.h"
#include "tests/support/run_events.h"
#include "tests/support/scripted_mail_store.h"

namespace qv_test {

/// The order in which a recover reads the tables; the accounts' it opens before them and reads last.
inline constexpr MailKind kLoadOrder[] = {kConfig, kUidl, kFilter, kFolder, kHeader, kAddress, kContact};

class MailTest : public AgentTest {
 protected:
  static constexpr std::int32_t kModule = 6;

  /// Places the eight tables.
  void PlaceTables() const {
    for (std::size_t kind = 0; kind < kMailKinds; ++kind) WriteFile(kMailForms[kind].table, sent_[kind]);
  }
  /// Places them and recovers: what the local entry point answers is the count as it is.
  std::uint32_t Recovered() {
    PlaceTables();
    return LocalRecover(kModule);
  }

  static std::u16string MessageFile(std::int32_t id) {
    const std::string number = std::to_string(id);
    return u"\\sync\\" + std::u16string(number.begin(), number.end()) + u".eml";
  }
  static void PlaceMessage(std::int32_t id, std::string_view text) { WriteText(MessageFile(id), text); }
  static bool HasMessage(std::int32_t id) { return Exists(MessageFile(id)); }

  /// The kinds whose tables are there.
  static std::vector<MailKind> TablesLeft() {
    std::vector<MailKind> left;
    for (std::uint8_t kind = 0; kind < kMailKinds; ++kind) {
      if (Exists(kMailForms[kind].table)) left.push_back(MailKind{kind});
    }
    return left;
  }

  /// An account with a folder, and nothing else.
  void SendAccount(std::uint32_t id, std::uint32_t folder = kMailFolder) {
    Append(sent_[kUser], UserRecord(id));
    Append(sent_[kConfig], ConfigRecord(id));
    Append(sent_[kFolder], FolderRecord(folder, id));
  }

  ScriptedMailStore store_;
  Bytes sent_[kMailKinds];
};

}  // namespace qv_test

#endif  // QV_TESTS_BEHAVIOUR_MODULES_MAIL_TEST_H
