// The handset's directory, the agent's library, and the stream between the agent and us.
#include "tools/qvdesk/phone.h"

#include <fmt/format.h>

#include <stdexcept>

#include "host/handset/handset.h"
#include "host/loader/refusing_stream.h"
#include "host/stores/database.h"
#include "layout/bytes.h"

namespace qvdesk {
namespace {

/// Collects what the agent writes. It lives on the caller's stack, so that its release only has to be noticed.
class CollectingStream final : public loader::RefusingStream {
 public:
  std::uint32_t QV_STDCALL Release() override {
    was_released_ = true;
    return 0;
  }
  std::int32_t QV_STDCALL Write(const void* buffer, std::uint32_t size, std::uint32_t* written) override {
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    written_.insert(written_.end(), bytes, bytes + size);
    if (written != nullptr) *written = size;
    return 0;
  }

  bool WasReleased() const { return was_released_; }
  std::vector<std::uint8_t> TakeWritten() { return std::move(written_); }

 private:
  bool was_released_ = false;
  std::vector<std::uint8_t> written_;
};

std::filesystem::path BesideProgram(const char* relative) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / relative).lexically_normal();
}

}  // namespace

void AddPhoneOptions(CLI::App& command, PhoneOptions& options) {
  command.add_option("--handset", options.handset, "The simulated handset: a directory made by \"qvdesk create\"")
      ->required()
      ->type_name("DIR");
  command
      .add_option("--library", options.library,
                  "The agent to run: the handset's own DLL (dist/wince-x86/QV_RAPI.dll) or a build for this machine, "
                  "which is the default")
      ->type_name("FILE");
}

void StartHandset(const std::filesystem::path& directory) {
  handset::SetRom(BesideProgram(QV_ROM_PATH));
  handset::Start(std::filesystem::absolute(directory).lexically_normal());
}

std::uint32_t Answer::Word(std::size_t i) const {
  if (written.size() < 4 * (i + 1)) {
    throw std::runtime_error(
        fmt::format("the agent wrote {} bytes to the stream, too few for its answer", written.size()));
  }
  return qv::layout::LoadNumber(&written[4 * i], 4);
}

Phone::Phone(const PhoneOptions& options) {
  if (!std::filesystem::is_directory(options.handset)) {
    throw std::runtime_error(fmt::format("--handset {0}: there is no such directory. Make a handset: qvdesk create {0}",
                                         options.handset.string()));
  }
  StartHandset(options.handset);
  if (!std::filesystem::exists(handset::HostPath(stores::kDatabasePath))) {
    throw std::runtime_error(fmt::format(
        "--handset {}: the directory is not a handset: its database is missing. Make one: qvdesk create DIR",
        options.handset.string()));
  }
  agent_ = loader::AgentLibrary::Open(options.library.empty() ? BesideProgram(QV_AGENT_PATH) : options.library);
}

Answer Phone::Call(const std::string& function, std::span<const std::uint8_t> input) const {
  std::vector<std::uint8_t> block(input.begin(), input.end());
  CollectingStream stream;
  const auto size = static_cast<std::uint32_t>(block.size());
  std::uint8_t* const data = block.empty() ? nullptr : block.data();
  auto* const entry = agent_->Export<RapiFunction>(function);
  const std::uint32_t returned = entry(size, data, nullptr, nullptr, &stream);
  if (!stream.WasReleased()) throw std::runtime_error(function + " did not release the stream");
  return {returned, stream.TakeWritten()};
}

}  // namespace qvdesk
