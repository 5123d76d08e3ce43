// The handset's directory, the agent's library, and the stream between the agent and us.
#include "tools/qvdesk/phone.h"

#include <fmt/format.h>

#include <stdexcept>

#include "host/handset/handset.h"
#include "host/stores/database.h"
#include "layout/bytes.h"

namespace qvdesk {
namespace {

constexpr std::int32_t kNotImplemented = static_cast<std::int32_t>(0x80004001);
constexpr std::int32_t kNoInterface = static_cast<std::int32_t>(0x80004002);

/// Collects what the agent writes. It lives on the caller's stack, so the counted references only have to be counted.
class AnswerStream final : public IRAPIStream {
 public:
  std::int32_t QV_STDCALL QueryInterface(const void*, void**) override { return kNoInterface; }
  std::uint32_t QV_STDCALL AddRef() override { return ++references_; }
  std::uint32_t QV_STDCALL Release() override { return --references_; }
  std::int32_t QV_STDCALL Read(void*, std::uint32_t, std::uint32_t*) override { return kNotImplemented; }
  std::int32_t QV_STDCALL Write(const void* buffer, std::uint32_t size, std::uint32_t* written) override {
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    written_.insert(written_.end(), bytes, bytes + size);
    if (written != nullptr) *written = size;
    return 0;
  }
  std::int32_t QV_STDCALL Seek(std::int64_t, std::uint32_t, std::uint64_t*) override { return kNotImplemented; }
  std::int32_t QV_STDCALL SetSize(std::uint64_t) override { return kNotImplemented; }
  std::int32_t QV_STDCALL CopyTo(void*, std::uint64_t, std::uint64_t*, std::uint64_t*) override {
    return kNotImplemented;
  }
  std::int32_t QV_STDCALL Commit(std::uint32_t) override { return kNotImplemented; }
  std::int32_t QV_STDCALL Revert() override { return kNotImplemented; }
  std::int32_t QV_STDCALL LockRegion(std::uint64_t, std::uint64_t, std::uint32_t) override { return kNotImplemented; }
  std::int32_t QV_STDCALL UnlockRegion(std::uint64_t, std::uint64_t, std::uint32_t) override { return kNotImplemented; }
  std::int32_t QV_STDCALL Stat(void*, std::uint32_t) override { return kNotImplemented; }
  std::int32_t QV_STDCALL Clone(void**) override { return kNotImplemented; }
  std::int32_t QV_STDCALL SetRapiStat(std::uint32_t, std::uint32_t) override { return kNotImplemented; }
  std::int32_t QV_STDCALL GetRapiStat(std::uint32_t, std::uint32_t*) override { return kNotImplemented; }

  bool WasReleased() const { return references_ == 0; }
  std::vector<std::uint8_t> TakeWritten() { return std::move(written_); }

 private:
  std::uint32_t references_ = 1;
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
    throw std::runtime_error(
        fmt::format("--handset {}: the directory is no handset, its database is missing. Make one: qvdesk create DIR",
                    options.handset.string()));
  }
  agent_ = loader::AgentLibrary::Open(options.library.empty() ? BesideProgram(QV_AGENT_PATH) : options.library);
}

Answer Phone::Call(const std::string& function, std::span<const std::uint8_t> input) const {
  std::vector<std::uint8_t> block(input.begin(), input.end());
  AnswerStream stream;
  const auto size = static_cast<std::uint32_t>(block.size());
  std::uint8_t* const data = block.empty() ? nullptr : block.data();
  auto* const entry = agent_->Export<RapiFunction>(function);
  const std::uint32_t returned = entry(size, data, nullptr, nullptr, &stream);
  if (!stream.WasReleased()) throw std::runtime_error(function + " did not release the stream");
  return {returned, stream.TakeWritten()};
}

}  // namespace qvdesk
