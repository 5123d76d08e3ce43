// The exchange directory of the commands for the whole phone: one of their own, in which the files of one kind stand at
// a time, as a desktop's would.
#ifndef QV_TOOLS_QVDESK_EXCHANGE_FOLDER_H
#define QV_TOOLS_QVDESK_EXCHANGE_FOLDER_H

#include <filesystem>
#include <string>

#include "tools/qvdesk/manifest.h"

namespace qvdesk {

/// For help texts: which directory of the phone a command uses, and that what was in it goes.
std::string PassageHelp();

/// Made anew on the running handset, and gone at the end.
class ExchangeFolder {
 public:
  ExchangeFolder();
  ~ExchangeFolder();
  ExchangeFolder(const ExchangeFolder&) = delete;
  ExchangeFolder& operator=(const ExchangeFolder&) = delete;

  const std::u16string& OnHandset() const { return on_handset_; }

  void Empty() const;
  /// Copies all that is in it to a new folder of the host.
  void FetchTo(const std::filesystem::path& folder) const;
  /// Copies the files of a kind into it.
  void Put(const BackupKind& kind, const std::filesystem::path& backup) const;

 private:
  std::u16string on_handset_;
  std::filesystem::path on_host_;
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_EXCHANGE_FOLDER_H
