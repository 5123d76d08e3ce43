// Mails whole, and their texts between the handset's code page and the database.
#include "host/stores/unified_mail_database.h"

#include "host/handset/unicode.h"
#include "layout/narrow_text.h"

namespace stores {
namespace {

using namespace qv::unified_mail;

/// In any code page: a UTF-16 unit becomes no more bytes.
constexpr std::size_t kMostBytesOfUnit = 4;

/// The nodes' fields, and the kind.
const qv::layout::RecordLayout& KindItemLayout() {
  static const std::vector<qv::layout::Field> fields = [] {
    std::vector<qv::layout::Field> all = {qv::layout::Both("kind", kKindOfItem, {})};
    all.insert(all.end(), kItem182Layout.fields.begin(), kItem182Layout.fields.end());
    return all;
  }();
  static const qv::layout::RecordLayout layout = {kItem182Layout.name, kKindItemSize, 0, fields};
  return layout;
}

std::string Utf8Of(const std::string& narrow) {
  std::u16string wide(narrow.size(), u'\0');
  wide.resize(qv::layout::Widen(narrow.c_str(), wide.data(), wide.size()));
  return handset::Utf8(wide);
}

std::string ReadText(const Query& query, int column) {
  if (!query.IsBlob(column)) return InCodePage(query.Text(column));
  const std::span<const std::uint8_t> bytes = query.Blob(column);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

std::string InCodePage(std::string_view utf8) {
  const std::u16string wide = handset::Utf16(utf8);
  std::string narrow(kMostBytesOfUnit * wide.size(), '\0');
  narrow.resize(qv::layout::Narrow(wide.c_str(), narrow.data(), narrow.size()));
  return narrow;
}

UnifiedMailDatabase::Parts::Parts(Database& database, const KindDescription& mails)
    : items_182(database, mails, std::string(mails.table) + "_items_182", "mail_id", KindItemLayout()),
      items_308(database, mails, std::string(mails.table) + "_items_308", "mail_id", kItem308Layout),
      read_text(database.Prepare(std::string("SELECT text FROM ") + mails.table + " WHERE id = ?")),
      write_text(database.Prepare(std::string("UPDATE ") + mails.table + " SET text = ?2 WHERE id = ?1")) {}

UnifiedMailDatabase::UnifiedMailDatabase(Database& database) : database_(database) {
  Transaction transaction(database);
  for (const KindDescription& kind : kUnifiedMailKinds) {
    mails_.emplace_back(database, kind);
    parts_.emplace_back(database, kind);
  }
  for (const KindDescription& kind : kUnifiedMailListKinds) lists_.emplace_back(database, kind);
  transaction.Commit();
}

UnifiedMail UnifiedMailDatabase::Read(std::size_t table, std::uint32_t id) const {
  const ReadTransaction transaction(database_);
  const Parts& parts = parts_[table];
  UnifiedMail mail = {.record = std::vector<std::uint8_t>(kMailStoreSize),
                      .items_182 = parts.items_182.Read(id),
                      .items_308 = parts.items_308.Read(id)};
  mails_[table].Read({&id, 1}, mail.record.data());
  Query query(parts.read_text);
  query.Bind(1, std::int64_t{id});
  if (query.Step()) mail.text = ReadText(query, 0);
  return mail;
}

void UnifiedMailDatabase::WriteParts(std::size_t table, std::uint32_t id, const UnifiedMail& mail) {
  Parts& parts = parts_[table];
  parts.items_182.Replace(id, mail.items_182);
  parts.items_308.Replace(id, mail.items_308);
  Query query(parts.write_text);
  query.Bind(1, std::int64_t{id});
  const std::string utf8 = Utf8Of(mail.text);
  query.BindText(2, utf8, InCodePage(utf8) == mail.text, BytesOf(mail.text));
  query.Run();
}

std::uint32_t UnifiedMailDatabase::Insert(std::size_t table, const UnifiedMail& mail,
                                          std::optional<FileTime> modified) {
  Transaction transaction(database_);
  const std::uint32_t id = mails_[table].Insert(mail.record.data());
  WriteParts(table, id, mail);
  if (modified) mails_[table].SetModified(id, *modified);
  transaction.Commit();
  return id;
}

void UnifiedMailDatabase::Update(std::size_t table, std::uint32_t id, const UnifiedMail& mail) {
  Transaction transaction(database_);
  mails_[table].Update(id, mail.record.data());
  WriteParts(table, id, mail);
  transaction.Commit();
}

}  // namespace stores
