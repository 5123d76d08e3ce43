// MmsStore.dll as a scripted store: it hands out messages, and its configuration, in blocks of the handset's memory for
// the agent to free, and records what it is handed byte by byte.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_MMS_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_MMS_STORE_H

#include "tests/support/scripted_record_store.h"

namespace qv_test {

/// A message as it passes between the agent and the store. Without text or data the pointer to it is null.
struct MmsEntry {
  std::optional<std::string> text;
  std::uint32_t id = 0;
  std::uint32_t value = 0;
  std::optional<Bytes> data;
  std::int32_t data_length = 0;
  bool operator==(const MmsEntry&) const = default;
};
void PrintTo(const MmsEntry& entry, std::ostream* out);

class ScriptedMmsStore final : public ScriptedTableStore {
 public:
  explicit ScriptedMmsStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedMmsStore() override;

  /// Adds a message as if it had come in.
  void Add(std::uint32_t id, std::uint64_t time = 1, std::optional<std::string> text = "",
           std::optional<Bytes> data = std::nullopt);
  /// The same of a message whose parts do not fit together.
  void AddEntry(std::uint32_t id, std::uint64_t time, MmsEntry entry);
  /// What is handed out of a message, the text with a NUL behind it; or what was handed in, the whole of the blocks.
  const MmsEntry& EntryOf(std::uint32_t id) { return entries_[At(id).id]; }

  /// The configuration; without one, a null block.
  std::optional<Bytes> config;
  /// What it says the configuration's size is.
  std::optional<std::uint32_t> claimed_config_size;
  /// What it was told to take for its configuration. It keeps its own all the same.
  std::vector<Bytes> told_configs;

  // Calls are told without "mms_" and "Sync_", those for the configuration as "GetConfig", and "SetConfig 3", or
  // "SetConfig null 0" without a block.

 private:
  friend struct MmsEntryPoints;

  void HandOut(const Record& record, std::uint32_t table, std::uint8_t* place) override;
  void TakeIn(Record& record, std::uint32_t table, const std::uint8_t* place) override;

  /// By the ids of the messages; those of messages that are gone may stay. A message without one is its bytes.
  std::map<std::uint32_t, MmsEntry> entries_;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_MMS_STORE_H
