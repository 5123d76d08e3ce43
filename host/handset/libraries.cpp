// Libraries: tables of functions that a test installs, and shared objects found where the handset keeps its libraries.
// A library's handle is the handset's own, not the host's, so that one used after it was freed is noticed.
#include "host/handset/libraries.h"

#include <dlfcn.h>

#include <memory>
#include <unordered_map>
#include <utility>
#include <variant>

#include "host/handset/faults.h"
#include "host/handset/paths.h"
#include "host/handset/unicode.h"

namespace handset {
namespace {

using coredll::FARPROC;
using coredll::HMODULE;

constexpr std::u16string_view kSystemDirectory = u"Windows";

// Where entry points come from: a table or a shared object. Sharing it tells whether two libraries are the same.
struct Image {
  std::shared_ptr<const EntryPoints> entry_points;
  std::shared_ptr<void> shared_object;
  bool operator==(const Image&) const = default;
};

struct Library {
  Image image;
  unsigned references = 0;
};

using Installed = std::variant<std::shared_ptr<const EntryPoints>, HMODULE>;

std::filesystem::path rom_directory;
std::map<std::u16string, Installed> installed;  // By InstalledKey.
std::unordered_map<HMODULE, Library> loaded;
std::map<std::u16string, Image> imported_files;  // By the name of the library, so that each is opened once.
std::uintptr_t last_handle = 0x1000'0000;

// One key for each way to spell a name: a bare one stays apart from a path of one name in the root.
std::u16string InstalledKey(std::u16string_view name) {
  if (IsBareName(name)) return FoldCase(name);
  std::u16string key;
  for (const std::u16string_view part : PathNames(name)) (key += u'\\') += FoldCase(part);
  return key;
}

// The library's file: the handset's, or else the ROM's. Empty when neither has it.
std::filesystem::path FindLibraryFile(std::u16string_view name) {
  auto names = PathNames(name);
  if (names.empty()) return {};
  if (IsBareName(name)) names.insert(names.begin(), kSystemDirectory);
  if (auto file = Resolve(names); IsFile(file)) return file;
  if (rom_directory.empty()) return {};
  auto file = ResolveUnder(rom_directory, names);
  return IsFile(file) ? file : std::filesystem::path();
}

HMODULE AddReference(const Image& image) {
  for (auto& [handle, library] : loaded) {
    if (library.image != image) continue;
    ++library.references;
    return handle;
  }
  last_handle += 0x1'0000;
  const auto handle = reinterpret_cast<HMODULE>(last_handle);
  loaded.emplace(handle, Library{image, 1});
  return handle;
}

// Nothing but the last error when there is no such file, or it is no library.
Image OpenFile(std::u16string_view name) {
  const std::filesystem::path file = FindLibraryFile(name);
  if (file.empty()) return Fail<Image>(Error::kLibraryNotFound, {});
  void* shared_object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (shared_object == nullptr) return Fail<Image>(Error::kNotALibrary, {});
  return {nullptr, std::shared_ptr<void>(shared_object, dlclose)};
}

HMODULE LoadFile(std::u16string_view name) {
  const Image image = OpenFile(name);
  return image.shared_object == nullptr ? nullptr : AddReference(image);
}

HMODULE Load(std::u16string_view name) {
  const auto found = installed.find(InstalledKey(name));
  if (found == installed.end()) return LoadFile(name);
  if (const HMODULE* answer = std::get_if<HMODULE>(&found->second)) return *answer;
  return AddReference({std::get<0>(found->second), nullptr});
}

FARPROC FindEntryPoint(const Image& image, std::u16string_view name) {
  if (image.entry_points == nullptr) {
    return reinterpret_cast<FARPROC>(dlsym(image.shared_object.get(), Utf8(name).c_str()));
  }
  const auto found = image.entry_points->find(std::u16string(name));
  return found == image.entry_points->end() ? nullptr : found->second;
}

const Image& ImportedFile(const std::u16string& name) {
  const auto found = imported_files.find(name);
  return found != imported_files.end() ? found->second : imported_files.emplace(name, OpenFile(name)).first->second;
}

}  // namespace

FARPROC ImportOf(std::u16string_view library, std::u16string_view name) {
  const auto found = installed.find(InstalledKey(library));
  const auto* table = found == installed.end() ? nullptr : std::get_if<0>(&found->second);
  const Image image = table == nullptr ? ImportedFile(std::u16string(library)) : Image{*table, nullptr};
  const bool is_there = image.entry_points != nullptr || image.shared_object != nullptr;
  const FARPROC function = is_there ? FindEntryPoint(image, name) : nullptr;
  if (function == nullptr) Die("the agent needs " + Utf8(name) + " of " + Utf8(library) + ", which is not there");
  return function;
}

void InstallLibrary(std::u16string_view name, EntryPoints entry_points) {
  installed[InstalledKey(name)] = std::make_shared<const EntryPoints>(std::move(entry_points));
}

void InstallLibraryHandle(std::u16string_view name, HMODULE handle) {
  installed[InstalledKey(name)] = handle;
}

void SetRom(const std::filesystem::path& rom) {
  rom_directory = rom.empty() ? rom : std::filesystem::absolute(rom);
}

unsigned CountLoadedLibraries() {
  unsigned references = 0;
  for (const auto& [handle, library] : loaded) references += library.references;
  return references;
}

void ResetLibraries() {
  installed.clear();
  loaded.clear();
  imported_files.clear();
}

}  // namespace handset

namespace coredll {

using namespace handset;

HMODULE LoadLibraryW(const char16_t* name) {
  return PlatformCall({"LoadLibraryW", View(name), 0}, nullptr, [&] { return Load(View(name)); });
}

FARPROC GetProcAddressW(HMODULE library, const char16_t* name) {
  return PlatformCall({"GetProcAddressW", View(name), 0}, nullptr, [&]() -> FARPROC {
    const auto found = loaded.find(library);
    if (found == loaded.end()) return Fail(Error::kInvalidHandle, nullptr);
    const FARPROC entry_point = FindEntryPoint(found->second.image, View(name));
    return entry_point != nullptr ? entry_point : Fail(Error::kEntryPointNotFound, nullptr);
  });
}

BOOL FreeLibrary(HMODULE library) {
  return PlatformCall({"FreeLibrary", {}, 0}, kFalse, [&] {
    if (library == nullptr) return kFalse;
    const auto found = loaded.find(library);
    if (found == loaded.end()) return Fail(Error::kInvalidHandle, kFalse);
    if (--found->second.references == 0) loaded.erase(found);
    return kTrue;
  });
}

}  // namespace coredll
