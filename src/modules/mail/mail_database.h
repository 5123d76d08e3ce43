// The e-mail database, open as long as this lives: the life of the one object that the agent makes of another library's
// class.
#ifndef QV_MODULES_MAIL_MAIL_DATABASE_H
#define QV_MODULES_MAIL_MAIL_DATABASE_H

#include "platform/mail_store.h"

namespace qv::mail {

class MailDatabase {
 public:
  MailDatabase();
  ~MailDatabase();
  MailDatabase(const MailDatabase&) = delete;
  MailDatabase& operator=(const MailDatabase&) = delete;

  /// False when there was no memory for the object: then no member may be called.
  bool IsThere() const { return object_ != nullptr; }
  /// What the members are called with.
  mail_store::CMailDBSync* get() const { return object_; }

 private:
  mail_store::CMailDBSync* object_;
};

}  // namespace qv::mail

#endif  // QV_MODULES_MAIL_MAIL_DATABASE_H
