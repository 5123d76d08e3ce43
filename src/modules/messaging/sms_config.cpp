// The sections both ways, entry by entry.
#include "modules/messaging/sms_config.h"

#include <algorithm>
#include <cstring>

#include "layout/bytes.h"
#include "platform/file.h"

namespace qv::sms {
namespace {

// SmsStore.dll. The arrays that it hands out are the caller's to free.
using GetConfigFunction = std::uint32_t(ConfigBlock* config);
using SetConfigFunction = std::uint32_t(const ConfigBlock* config);

/// What the file begins with: for each section its count, and a zero.
constexpr std::size_t kHeaderSize = 8 * kSections;

constexpr std::int32_t kMostEntries = 0x0FFFFFFF;

/// A configuration from the store.
class StoreConfig {
 public:
  StoreConfig() = default;
  ~StoreConfig() {
    for (std::size_t i = 0; i < kSections; ++i) Release(i);
  }
  StoreConfig(const StoreConfig&) = delete;
  StoreConfig& operator=(const StoreConfig&) = delete;

  /// kEntryPointMissing, kReadFailed; the latter also for entries that are not where they are said to be.
  Result Get(const Library& store) {
    auto* const get = store.Resolve<GetConfigFunction>(u"Sync_GetSMSConfig");
    if (get == nullptr) return Result::kEntryPointMissing;
    if (get(&block_) != 0) {
      block_ = {};  // What a store leaves behind when it fails is its own.
      return Result::kReadFailed;
    }
    for (const ConfigSection& section : block_.sections) {
      if (section.count > 0 && section.entries == nullptr) return Result::kReadFailed;
    }
    return Result::kOk;
  }

  std::int32_t Count(std::size_t section) const { return block_.sections[section].count; }
  const std::uint8_t* Entries(std::size_t section) const {
    return static_cast<const std::uint8_t*>(block_.sections[section].entries);
  }

  void Release(std::size_t section) {
    coredll::free(block_.sections[section].entries);
    block_.sections[section].entries = nullptr;
  }

 private:
  ConfigBlock block_ = {};
};

Result WriteSection(File& file, const layout::RecordLayout& layout, const std::uint8_t* entries, std::int32_t count) {
  for (std::int32_t i = 0; i < count; ++i) {
    std::uint8_t exchange[kMostSectionExchangeSize];
    layout::ToExchange(layout, entries, exchange);
    if (!file.Write(exchange, layout.exchange_size)) return Result::kFileFailed;
    entries += layout.store_size;
  }
  return Result::kOk;
}

/// Reads at most `count` entries; the first that is not whole ends them. `entries` has what was read.
Result ReadSection(File& file, const layout::RecordLayout& layout, std::int32_t count, List<std::uint8_t>& entries) {
  if (count <= 0) return Result::kOk;
  const auto wanted = static_cast<std::size_t>(count);
  if (count > kMostEntries || !entries.Resize(wanted, layout.store_size)) return Result::kNoMemory;
  std::size_t read = 0;
  for (; read < wanted; ++read) {
    std::uint8_t exchange[kMostSectionExchangeSize];
    std::size_t got = 0;
    if (!file.Read(exchange, layout.exchange_size, got)) return Result::kFileUnreadable;
    if (got < layout.exchange_size) break;
    layout::ToStore(layout, exchange, entries.data() + read * layout.store_size);
  }
  (void)entries.Resize(read * layout.store_size);
  return Result::kOk;
}

}  // namespace

std::uint32_t FolderMap::Name::Hash() const {
  std::uint32_t hash = 0;
  for (const char16_t character : characters) hash = HashWord(hash ^ character);
  return hash;
}

FolderMap::Folder FolderMap::FolderOf(const std::uint8_t* record) {
  Folder folder = {.incoming_id = layout::LoadSlot(kFolderId, record), .handset_id = 0, .name = {}};
  for (std::size_t i = 0; i < std::size(folder.name.characters); ++i) {
    const auto character = static_cast<char16_t>(layout::LoadNumber(record + kFolderName.offset + 2 * i, 2));
    if (character == u'\0') break;
    folder.name.characters[i] = character;
  }
  return folder;
}

bool FolderMap::Add(const std::uint8_t* folder) {
  return folders_.Append(FolderOf(folder));
}

bool FolderMap::FindAmong(const std::uint8_t* folders, std::size_t count) {
  IndexedList<Folder, Name, NameOf> present;
  for (std::size_t i = 0; i < count; ++i) {
    if (!present.Append(FolderOf(folders + i * kSectionLayouts[kFolders].store_size))) return false;
  }
  for (Folder& folder : folders_) {
    const std::size_t position = present.Find(folder.name);
    if (position != present.kAbsent) folder.handset_id = present[position].incoming_id;
  }
  return true;
}

std::uint32_t FolderMap::Translate(std::uint32_t incoming_id) const {
  const std::size_t position = folders_.Find({incoming_id});
  if (position == folders_.kAbsent || folders_[position].handset_id == 0) return kFallbackFolder;
  return folders_[position].handset_id;
}

Result ExportConfig(const Library& store, const char16_t* path) {
  StoreConfig config;
  if (const Result got = config.Get(store); IsFailure(got)) return got;
  File file = File::CreateAlways(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  std::uint8_t header[kHeaderSize] = {};
  for (std::size_t i = 0; i < kSections; ++i) {
    layout::StoreNumber(header + 8 * i, 4, static_cast<std::uint32_t>(config.Count(i)));
  }
  if (!file.Write(header, sizeof(header))) return Result::kFileFailed;
  for (std::size_t i = 0; i < kSections; ++i) {
    const Result written = WriteSection(file, kSectionLayouts[i], config.Entries(i), config.Count(i));
    if (IsFailure(written)) return written;
    config.Release(i);
  }
  return Result::kOk;
}

Result ApplyConfig(const Library& store, const char16_t* path, FolderMap& folders) {
  auto* const set = store.Resolve<SetConfigFunction>(u"Sync_SetSMSConfig");
  if (set == nullptr) return Result::kEntryPointMissing;
  File file = File::OpenExisting(path);
  if (!file.IsOpen()) return Result::kFileFailed;
  std::uint8_t header[kHeaderSize];
  std::size_t got = 0;
  if (!file.Read(header, sizeof(header), got)) return Result::kFileUnreadable;
  if (got < sizeof(header)) return Result::kOk;

  List<std::uint8_t> entries[kSections];
  ConfigBlock config = {};
  for (std::size_t i = 0; i < kSections; ++i) {
    const auto count = static_cast<std::int32_t>(layout::LoadNumber(header + 8 * i, 4));
    const Result read = ReadSection(file, kSectionLayouts[i], count, entries[i]);
    if (IsFailure(read)) return read;
    config.sections[i].count = static_cast<std::int32_t>(entries[i].size() / kSectionLayouts[i].store_size);
    config.sections[i].entries = entries[i].data();
  }
  for (std::size_t i = 0; i < entries[kFolders].size(); i += kSectionLayouts[kFolders].store_size) {
    if (!folders.Add(entries[kFolders].data() + i)) return Result::kNoMemory;
  }
  (void)set(&config);
  return Result::kOk;
}

Result LearnFolders(const Library& store, FolderMap& folders) {
  StoreConfig config;
  if (const Result got = config.Get(store); IsFailure(got)) return got;
  for (std::size_t i = 0; i < kSections; ++i) {
    if (i != kFolders) config.Release(i);
  }
  const auto count = static_cast<std::size_t>(std::max(config.Count(kFolders), 0));
  return folders.FindAmong(config.Entries(kFolders), count) ? Result::kOk : Result::kNoMemory;
}

}  // namespace qv::sms
