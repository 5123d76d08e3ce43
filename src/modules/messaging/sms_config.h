// The configuration of the short messages: five sections of entries, the folders among them. It travels before the
// messages, because these are put into folders by its names.
#ifndef QV_MODULES_MESSAGING_SMS_CONFIG_H
#define QV_MODULES_MESSAGING_SMS_CONFIG_H

#include <cstdint>

#include "modules/messaging/sms_layout.h"
#include "platform/library.h"
#include "platform/memory.h"
#include "sync/indexed_list.h"
#include "sync/result.h"

namespace qv::sms {

/// What the store fills and takes.
struct ConfigSection {
  std::int32_t count;
  void* entries;
};
struct ConfigBlock {
  ConfigSection sections[kSections];
};
static_assert(sizeof(ConfigBlock) == 40);

/// Which folder of the handset's stands for each folder of the desktop's: the one of the same name.
class FolderMap {
 public:
  /// What messages go to that no folder can be found for.
  static constexpr std::uint32_t kFallbackFolder = 1;

  /// A folder that the desktop sent, as a store record of the folder section. False without memory.
  [[nodiscard]] bool Add(const std::uint8_t* folder);
  /// Looks the folders up among the handset's, `count` store records. False without memory.
  [[nodiscard]] bool FindAmong(const std::uint8_t* folders, std::size_t count);
  /// The handset's folder for one of the desktop's.
  std::uint32_t Translate(std::uint32_t incoming_id) const;

 private:
  struct Name {
    char16_t characters[kFolderName.size / sizeof(char16_t)];
    bool operator==(const Name&) const = default;
    std::uint32_t Hash() const;
  };
  struct Id {
    std::uint32_t id;
    bool operator==(const Id&) const = default;
    std::uint32_t Hash() const { return HashWord(id); }
  };
  struct Folder {
    std::uint32_t incoming_id;
    std::uint32_t handset_id;  ///< 0 until found.
    Name name;
  };
  static Folder FolderOf(const std::uint8_t* record);
  static Name NameOf(const Folder& folder) { return folder.name; }
  static Id IncomingIdOf(const Folder& folder) { return {folder.incoming_id}; }

  IndexedList<Folder, Id, IncomingIdOf> folders_;
};

/// Writes the store's configuration to a file. kEntryPointMissing, kReadFailed, kFileFailed.
Result ExportConfig(const Library& store, const char16_t* path);

/// Hands the file's configuration to the store and collects its folders; a file that is too short for its header
/// changes nothing. Whether the store takes it is not looked at. kEntryPointMissing, kFileFailed, kFileUnreadable,
/// kNoMemory.
Result ApplyConfig(const Library& store, const char16_t* path, FolderMap& folders);

/// Finds the handset's folders. kEntryPointMissing, kReadFailed, kNoMemory.
Result LearnFolders(const Library& store, FolderMap& folders);

}  // namespace qv::sms

#endif  // QV_MODULES_MESSAGING_SMS_CONFIG_H
