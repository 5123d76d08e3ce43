// A MmsStore.dll in memory for behaviour tests: it hands out blocks of the handset's memory for the agent to free,
// records what it is handed byte by byte, logs what it is asked, and fails where it is told to.
#ifndef QV_TESTS_SUPPORT_SCRIPTED_MMS_STORE_H
#define QV_TESTS_SUPPORT_SCRIPTED_MMS_STORE_H

#include "tests/support/scripted_table_store.h"

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
  /// Installs itself as MmsStore.dll on the running handset; `missing` names entry points that it lacks, or has at the
  /// address `missing_address`.
  explicit ScriptedMmsStore(const std::set<std::u16string>& missing = {}, std::uintptr_t missing_address = 0);
  ~ScriptedMmsStore() override;
  ScriptedMmsStore(const ScriptedMmsStore&) = delete;
  ScriptedMmsStore& operator=(const ScriptedMmsStore&) = delete;

  struct Message {
    std::uint32_t id;
    std::uint64_t time;
    /// What is handed out, the text with a NUL behind it; or what was handed in, the whole of the blocks.
    MmsEntry entry;
  };
  std::vector<Message> messages;

  /// Adds a message as if it had come in.
  void Add(std::uint32_t id, std::uint64_t time = 1, std::optional<std::string> text = "",
           std::optional<Bytes> data = std::nullopt);
  /// A message that must be there: the test fails otherwise.
  Message& At(std::uint32_t id);
  std::vector<std::uint32_t> Ids() const;

  /// The configuration; without one, a null block.
  std::optional<Bytes> config;
  /// What it says the configuration's size is.
  std::optional<std::uint32_t> claimed_config_size;
  /// What it was told to take for its configuration. It keeps its own all the same.
  std::vector<Bytes> told_configs;

  // Calls are told without "mms_" and "Sync_": "GetAllRecvNum", "GetAllidTime room 3", "Read [5 6]", "Insert",
  // "Update 5", "Del [5 6]", "DelAll", "GetConfig", and "SetConfig 3", or "SetConfig null 0" without a block. Where it
  // fails, what it was to fill is full of rubbish.

 private:
  friend struct MmsEntryPoints;
};

}  // namespace qv_test

#endif  // QV_TESTS_SUPPORT_SCRIPTED_MMS_STORE_H
