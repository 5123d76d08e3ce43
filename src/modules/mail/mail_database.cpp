// Construction and destruction as the library's own callers do both. What opening and closing answer is of no interest:
// a database that did not open gives empty lists.
#include "modules/mail/mail_database.h"

#include "platform/coredll.h"

namespace qv::mail {

MailDatabase::MailDatabase()
    : object_(static_cast<mail_store::CMailDBSync*>(coredll::malloc(sizeof(mail_store::CMailDBSync)))) {
  static_assert(sizeof(mail_store::CMailDBSync) == 2 * sizeof(void*), "the library's constructor counts on two words");
  if (!IsThere()) return;
  mail_store::Construct(object_);
  (void)mail_store::InitCEDB(object_);
}

MailDatabase::~MailDatabase() {
  constexpr int kFreeMemory = 1;
  if (!IsThere()) return;
  (void)mail_store::CloseCEDB(object_);
  (void)mail_store::DisConnectDB(object_);
  object_->virtual_table->scalar_deleting_destructor(object_, kFreeMemory);
}

}  // namespace qv::mail
