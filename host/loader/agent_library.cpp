// Opens either kind of file as an agent. A handset library gets its imports from the simulated handset, whose functions
// are in this process under the linker names that platform/coredll.h gives them.
#include "host/loader/agent_library.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "host/loader/pe_image.h"

namespace loader {
namespace {

class SharedObject final : public AgentLibrary {
 public:
  explicit SharedObject(const std::filesystem::path& file)
      : name_(file.string()), library_(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(name_ + ": " + dlerror());
  }

  void* Symbol(const std::string& name) const override {
    void* const symbol = dlsym(library_.get(), name.c_str());
    if (symbol == nullptr) throw std::runtime_error(name_ + ": it does not export " + name);
    return symbol;
  }

  bool IsHandsetBuild() const override { return false; }

 private:
  struct Close {
    void operator()(void* library) const { dlclose(library); }
  };

  std::string name_;
  std::unique_ptr<void, Close> library_;
};

/// The class's member that a decorated name means: "?InitCEDB@CMailDBSync@@QAEHXZ" is InitCEDB, and "??0CMailDBSync@@
/// QAE@XZ", a constructor, has the class's name.
std::string MemberOf(const std::string& decorated) {
  const std::size_t begin = decorated.starts_with("??0") ? 3 : 1;
  const std::size_t end = decorated.find('@');
  return decorated.starts_with('?') && end > begin ? decorated.substr(begin, end - begin) : "";
}

void* ResolveImport(const std::string& library, const std::string& name) {
  if (library == "COREDLL.dll") return dlsym(RTLD_DEFAULT, ("coredll_" + name).c_str());
  if (library == "MailStore.dll") return dlsym(RTLD_DEFAULT, ("mailstore_" + MemberOf(name)).c_str());
  return nullptr;
}

class HandsetLibrary final : public AgentLibrary {
 public:
  HandsetLibrary(const std::vector<std::uint8_t>& file, const std::string& name) : image_(file, name, ResolveImport) {
    image_.Start();
  }

  void* Symbol(const std::string& name) const override { return image_.Export(name); }
  bool IsHandsetBuild() const override { return true; }

 private:
  PeImage image_;
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Not by a std::ifstream, which opens directories too and then does not say why it cannot read them.
std::vector<std::uint8_t> ReadFile(const std::filesystem::path& file) {
  const std::unique_ptr<std::FILE, CloseFile> stream(std::fopen(file.c_str(), "rb"));
  std::vector<std::uint8_t> bytes;
  if (stream != nullptr) {
    for (int byte; (byte = std::getc(stream.get())) != EOF;) bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  if (stream == nullptr || std::ferror(stream.get()) != 0) {
    throw std::system_error(errno, std::generic_category(), file.string());
  }
  return bytes;
}

}  // namespace

std::unique_ptr<AgentLibrary> AgentLibrary::Open(const std::filesystem::path& file) {
  constexpr std::string_view kElfMagic = "\177ELF";
  const std::vector<std::uint8_t> bytes = ReadFile(file);
  if (bytes.size() >= kElfMagic.size() && std::memcmp(bytes.data(), kElfMagic.data(), kElfMagic.size()) == 0) {
    return std::make_unique<SharedObject>(file);
  }
  return std::make_unique<HandsetLibrary>(bytes, file.string());
}

}  // namespace loader
