// A Windows CE DLL for this machine in this process: mapped, moved to where it lies, and joined to the functions it
// imports. The file is not trusted; the code in it is, once Start is called.
#ifndef QV_HOST_LOADER_PE_IMAGE_H
#define QV_HOST_LOADER_PE_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/loader/pe_format.h"

namespace loader {

/// Answers an import of a DLL with its address; null refuses the DLL.
using ImportResolver = std::function<void*(const std::string& library, const std::string& name)>;

/// What was found in a file, for whoever wants to look.
struct PeDescription {
  struct Section {
    std::string name;
    std::uint32_t address;  ///< Relative to the image, as all addresses here.
    std::uint32_t size;
    bool writable;
    bool executable;
  };
  struct Import {
    std::string library;
    std::string name;
  };
  std::vector<Section> sections;
  std::vector<Import> imports;
  std::map<std::string, std::uint32_t> exports;
  std::size_t relocations = 0;
};

class PeImage {
 public:
  /// Maps the DLL with these contents; `name` is what errors call it. No code of the DLL runs yet. Throws
  /// std::runtime_error for anything that is damaged, or that a handset library has no need of: a library for another
  /// machine, imports by number, forwarded exports, relocations other than of 32-bit addresses, sections that are both
  /// writable and executable.
  PeImage(std::span<const std::uint8_t> file, std::string name, const ImportResolver& resolve);
  PeImage(const PeImage&) = delete;
  PeImage& operator=(const PeImage&) = delete;
  /// Tells a started DLL that it is unloaded, and unmaps it.
  ~PeImage();

  /// Runs the DLL's start-up routine; throws std::runtime_error when it refuses.
  void Start();

  /// The address of an exported function; throws std::runtime_error when there is none of this name.
  void* Export(const std::string& name) const;

  const PeDescription& Description() const { return description_; }

 private:
  struct Unmap {
    std::size_t size;
    void operator()(std::uint8_t* image) const;
  };

  [[noreturn]] void Fail(const std::string& problem) const;
  void Require(bool holds, const char* problem) const;

  template <typename T>
  T Read(std::span<const std::uint8_t> bytes, std::uint32_t offset, const char* what) const;
  template <typename T>
  T ReadImage(std::uint32_t address, const char* what) const;
  std::string ReadText(std::uint32_t address, const char* what) const;
  void Write(std::uint32_t address, std::uint32_t value, const char* what);
  std::span<std::uint8_t> Image() const { return {image_.get(), image_.get_deleter().size}; }

  void ReadHeaders(std::span<const std::uint8_t> file);
  void MapSections(std::span<const std::uint8_t> file);
  void MapSection(std::span<const std::uint8_t> file, const pe::SectionHeader& section);
  void Relocate();
  void RelocatePage(const pe::RelocationBlock& block, std::uint32_t entries);
  void BindImports(const ImportResolver& resolve);
  void BindLibrary(const pe::ImportDescriptor& descriptor, const ImportResolver& resolve);
  void FindExports();
  void Protect() const;

  bool IsCode(std::uint32_t address) const;
  int CallEntryPoint(std::uint32_t reason) const;

  std::string name_;
  pe::OptionalHeader header_ = {};
  std::vector<pe::SectionHeader> sections_;
  std::unique_ptr<std::uint8_t, Unmap> image_;
  PeDescription description_;
  bool started_ = false;
};

}  // namespace loader

#endif  // QV_HOST_LOADER_PE_IMAGE_H
