// Sections as whole lists of records, and the folders' ids through a change of them.
#include "host/stores/sms_database.h"

#include <algorithm>
#include <map>
#include <string>

#include "layout/bytes.h"

namespace stores {
namespace {

std::u16string FolderNameOf(const std::uint8_t* folder) {
  std::u16string name;
  for (std::size_t i = 0; i < qv::sms::kFolderName.size; i += sizeof(char16_t)) {
    const auto character = static_cast<char16_t>(qv::layout::LoadNumber(folder + qv::sms::kFolderName.offset + i, 2));
    if (character == u'\0') break;
    name += character;
  }
  return name;
}

void ForEachRecord(std::span<const std::uint8_t> records, std::size_t size, auto&& take) {
  for (; records.size() >= size; records = records.subspan(size)) take(records.data());
}

}  // namespace

SmsDatabase::SmsDatabase(Database& database) : database_(database), messages_(database, kSmsKind) {
  for (const KindDescription& kind : kSmsSectionKinds) sections_.emplace_back(database, kind);
}

std::vector<std::uint8_t> SmsDatabase::Section(std::size_t section) const {
  return sections_[section].ReadAll();
}

void SmsDatabase::ReplaceSection(std::size_t section, std::span<const std::uint8_t> records) {
  section == qv::sms::kFolders ? ReplaceFolders(records) : sections_[section].ReplaceAll(records);
}

void SmsDatabase::ReplaceFolders(std::span<const std::uint8_t> records) {
  Transaction transaction(database_);
  RecordStore& store = sections_[qv::sms::kFolders];
  const std::size_t size = store.Kind().layout.store_size;
  std::multimap<std::u16string, std::uint32_t> present;  // Equal names keep the order of their ids.
  ForEachRecord(Section(qv::sms::kFolders), size, [&](const std::uint8_t* folder) {
    present.emplace(FolderNameOf(folder), qv::layout::LoadSlot(qv::sms::kFolderId, folder));
  });
  ForEachRecord(records, size, [&](const std::uint8_t* folder) {
    const auto same = present.lower_bound(FolderNameOf(folder));
    if (same == present.end() || same->first != FolderNameOf(folder)) {
      store.Insert(folder);
    } else {
      store.Update(same->second, folder);
      present.erase(same);
    }
  });
  for (const auto& [name, id] : present) store.Delete({&id, 1});
  transaction.Commit();
}

}  // namespace stores
