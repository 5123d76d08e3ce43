// One way to any build of the agent: the host's shared object, or the handset library itself, mapped into this process.
#ifndef QV_HOST_LOADER_AGENT_LIBRARY_H
#define QV_HOST_LOADER_AGENT_LIBRARY_H

#include <filesystem>
#include <memory>
#include <string>

#include "qv_rapi.h"

namespace loader {

/// An opened agent. Its functions are called on this process's simulated handset (host/handset/handset.h).
class AgentLibrary {
 public:
  virtual ~AgentLibrary() = default;

  /// Opens a build of the agent by what the file is: an ELF shared object, or a Windows CE DLL, whose start-up
  /// routine is then run. Throws std::runtime_error that says what is wrong with which file.
  static std::unique_ptr<AgentLibrary> Open(const std::filesystem::path& file);

  /// The address of an exported name; throws std::runtime_error when the library does not export it.
  virtual void* Symbol(const std::string& name) const = 0;

  /// Whether the handset's own code runs, which sanitizers do not see inside.
  virtual bool IsHandsetBuild() const = 0;

  template <typename Function>
  Function* Export(const std::string& name) const {
    return reinterpret_cast<Function*>(Symbol(name));
  }
};

}  // namespace loader

#endif  // QV_HOST_LOADER_AGENT_LIBRARY_H
