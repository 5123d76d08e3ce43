// Writes the e-mail database into its tables, and copies the messages' files beside them.
#include "layout/bytes.h"
#include "modules/mail/mail.h"
#include "modules/mail/mail_database.h"
#include "modules/mail/message_file.h"
#include "modules/mail/node_list.h"
#include "platform/file.h"
#include "platform/memory.h"
#include "sync/exchange_directory.h"

namespace qv::mail {
namespace {

struct Kind {
  const TableNames& table;
  mail_store::Get* fetch;
};

constexpr Kind kKinds[] = {
    {kUserTable, mail_store::Sync_GetUserInfo},         {kConfigTable, mail_store::Sync_GetConfigInfo},
    {kFilterTable, mail_store::Sync_GetFilterInfo},     {kContactTable, mail_store::Sync_GetLinkManInfo},
    {kFolderTable, mail_store::Sync_GetFolderInfo},     {kUidlTable, mail_store::Sync_GetUIDLInfo},
    {kHeaderTable, mail_store::Sync_GetMailHeaderInfo}, {kAddressTable, mail_store::Sync_GetMailAddressInfo},
};

class MailExport {
 public:
  Result Run(const void* directory) {
    if (!database_.IsThere() || !record_.Resize(kLargestRecord)) return Result::kOk;
    if (directory_.Assign(directory) != Result::kOk) return Result::kOk;
    for (const Kind& kind : kKinds) ExportTable(kind);
    return Result::kOk;
  }

 private:
  /// What the library says of the list is not looked at: one that is not there is an empty one.
  void ExportTable(const Kind& kind) {
    const layout::RecordLayout& form = *kind.table.layout;
    NodeList nodes(form);
    long head = 0;
    long count = 0;
    (void)kind.fetch(database_.get(), &head, &count);
    nodes.Adopt(reinterpret_cast<Node*>(head));

    File file = File::CreateAlways(directory_ / kind.table.exchange_file);
    if (!file.IsOpen()) return;
    for (const Node* node = nodes.first(); node != nullptr; node = nodes.NextOf(node)) {
      layout::ToExchange(form, node, record_.data());
      const bool is_header = &form == &kHeaderLayout;
      if (is_header) PutPath(PathOnHandset(node));
      if (!file.Write(record_.data(), form.exchange_size)) return;
      if (is_header) CopyMessage(node);
    }
  }

  static MessageFile PathOnHandset(const Node* header) {
    const bool on_card = layout::LoadSlot(kMessageOnCard, header) != 0;
    return {on_card ? kMessagePathOnCard : kMessagePath, layout::LoadSlot(kMessageId, header)};
  }

  void PutPath(const char16_t* path) {
    std::uint8_t* field = record_.data() + kRecordMessagePath.offset;
    for (; *path != u'\0'; ++path, field += 2) layout::StoreNumber(field, 2, *path);
  }

  /// A message whose file is not there leaves its header without one.
  void CopyMessage(const Node* header) {
    const MessageFile name(kMessageFile, layout::LoadSlot(kMessageId, header));
    (void)coredll::CopyFileW(PathOnHandset(header), directory_ / name, false);
  }

  MailDatabase database_;
  ExchangeDirectory directory_;
  List<std::uint8_t> record_;
};

}  // namespace

Result Export(const void* directory) {
  return MailExport().Run(directory);
}

}  // namespace qv::mail
