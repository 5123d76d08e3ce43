// A simulated handset with an agent on it: what every command that talks to a handset begins with.
#ifndef QV_TOOLS_QVDESK_PHONE_H
#define QV_TOOLS_QVDESK_PHONE_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/loader/agent_library.h"
#include "qv_rapi.h"

namespace qvdesk {

struct PhoneOptions {
  std::filesystem::path handset;
  std::filesystem::path library;  ///< Empty: the agent of the build tree that this program lies in.
};

/// Adds --handset, which is required, and --library.
void AddPhoneOptions(CLI::App& command, PhoneOptions& options);

/// Starts this process's handset on a directory, with the build tree's stand-in stores in its ROM.
void StartHandset(const std::filesystem::path& directory);

/// What a call answered: the function's return value, and what it wrote to the stream.
struct Answer {
  std::uint32_t returned;
  std::vector<std::uint8_t> written;

  /// The i-th u32 of the stream; throws std::runtime_error when the agent wrote less.
  std::uint32_t Word(std::size_t i) const;
};

class Phone {
 public:
  /// Throws std::runtime_error when the directory is no handset or the library cannot be opened.
  explicit Phone(const PhoneOptions& options);

  /// Calls an export as RAPI's stream mode does.
  Answer Call(const std::string& function, std::span<const std::uint8_t> input = {}) const;

  const loader::AgentLibrary& Agent() const { return *agent_; }

 private:
  std::unique_ptr<loader::AgentLibrary> agent_;
};

}  // namespace qvdesk

#endif  // QV_TOOLS_QVDESK_PHONE_H
