// Loads a PE32 file the way the handset does. Nothing that the file says is used before it is checked, and every
// address in it is checked again where it is followed, because relocations and imports are written into the image as it
// says.
#include "host/loader/pe_image.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace loader {
namespace {

constexpr std::uint32_t kProcessDetach = 0;
constexpr std::uint32_t kProcessAttach = 1;

/// The address space of a process on the handset.
constexpr std::uint32_t kLargestImage = 32 << 20;

bool Fits(std::uint32_t offset, std::uint32_t size, std::size_t room) {
  return offset <= room && size <= room - offset;
}

constexpr std::uint32_t PageEnd(std::uint32_t address) {
  return (address + pe::kPageSize - 1) & ~(pe::kPageSize - 1);
}

/// How far a section reaches: a file may leave out the size in memory.
std::uint32_t SizeInMemory(const pe::SectionHeader& section) {
  return section.virtual_size != 0 ? section.virtual_size : section.size_of_raw_data;
}

}  // namespace

void PeImage::Unmap::operator()(std::uint8_t* image) const {
  munmap(image, size);
}

PeImage::PeImage(std::span<const std::uint8_t> file, std::string name, const ImportResolver& resolve)
    : name_(std::move(name)), image_(nullptr, Unmap{0}) {
  ReadHeaders(file);
  MapSections(file);
  Relocate();
  BindImports(resolve);
  FindExports();
  Protect();
}

PeImage::~PeImage() {
  if (started_) CallEntryPoint(kProcessDetach);
}

void PeImage::Start() {
  Require(CallEntryPoint(kProcessAttach) != 0, "its start-up routine refuses");
  started_ = true;
}

void* PeImage::Export(const std::string& name) const {
  const auto found = description_.exports.find(name);
  if (found == description_.exports.end()) Fail("it does not export " + name);
  return image_.get() + found->second;
}

void PeImage::Fail(const std::string& problem) const {
  throw std::runtime_error(name_ + ": " + problem);
}

void PeImage::Require(bool holds, const char* problem) const {
  if (!holds) Fail(problem);
}

template <typename T>
T PeImage::Read(std::span<const std::uint8_t> bytes, std::uint32_t offset, const char* what) const {
  static_assert(std::is_trivially_copyable_v<T>);
  if (!Fits(offset, sizeof(T), bytes.size())) Fail(std::string(what) + " lies outside");
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof(T));
  return value;
}

template <typename T>
T PeImage::ReadImage(std::uint32_t address, const char* what) const {
  return Read<T>(Image(), address, what);
}

std::string PeImage::ReadText(std::uint32_t address, const char* what) const {
  std::string text;
  while (const char c = ReadImage<char>(address++, what)) text += c;
  return text;
}

void PeImage::Write(std::uint32_t address, std::uint32_t value, const char* what) {
  if (!Fits(address, sizeof(value), Image().size())) Fail(std::string(what) + " lies outside");
  std::memcpy(image_.get() + address, &value, sizeof(value));
}

void PeImage::ReadHeaders(std::span<const std::uint8_t> file) {
  Require(Read<std::uint16_t>(file, 0, "the DOS header") == pe::kDosMagic, "it is not an executable file");
  auto offset = Read<std::uint32_t>(file, pe::kNewHeaderOffset, "the DOS header");
  // Past this, sums of offset and header sizes do not overflow.
  Require(Fits(offset, sizeof(pe::kPeSignature) + sizeof(pe::FileHeader), file.size()), "the PE header lies outside");
  Require(Read<std::uint32_t>(file, offset, "the PE header") == pe::kPeSignature, "it is not a PE file");
  offset += sizeof(pe::kPeSignature);

  const auto file_header = Read<pe::FileHeader>(file, offset, "the file header");
  Require(file_header.machine == pe::kMachine, "it is for another machine");
  Require((file_header.characteristics & pe::kFileDll) != 0, "it is not a DLL");
  Require(file_header.size_of_optional_header == sizeof(header_), "the optional header has another size");
  offset += sizeof(file_header);

  header_ = Read<pe::OptionalHeader>(file, offset, "the optional header");
  Require(header_.magic == pe::kMagicPe32, "it is not PE32");
  Require(header_.subsystem == pe::kSubsystemWindowsCe, "it is not for Windows CE");
  Require(header_.section_alignment == pe::kPageSize, "its sections are not aligned to pages");
  Require(header_.number_of_directories == pe::kDirectories, "it has another number of data directories");
  Require(header_.size_of_image != 0 && header_.size_of_image <= kLargestImage, "its image is too large, or empty");
  offset += sizeof(header_);

  for (unsigned i = 0; i < file_header.number_of_sections; ++i, offset += sizeof(pe::SectionHeader)) {
    sections_.push_back(Read<pe::SectionHeader>(file, offset, "a section header"));
  }
}

void PeImage::MapSections(std::span<const std::uint8_t> file) {
  // The system chooses the address, not the file: so the image never lands on what is mapped already, such as
  // AddressSanitizer's shadow memory, and its relocations are always put to the test.
  const std::size_t size = PageEnd(header_.size_of_image);
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  Require(memory != MAP_FAILED, "there is no memory for its image");
  image_ = {static_cast<std::uint8_t*>(memory), Unmap{size}};

  std::uint32_t end = pe::kPageSize;  // of what comes before: the headers have the first page
  for (const pe::SectionHeader& section : sections_) {
    Require(section.virtual_address >= end, "its sections overlap, or are out of order");
    MapSection(file, section);
    end = PageEnd(section.virtual_address + SizeInMemory(section));
  }
  Require(IsCode(header_.address_of_entry_point), "its start-up routine lies outside its code");
}

/// What the file does not hold of a section stays zero.
void PeImage::MapSection(std::span<const std::uint8_t> file, const pe::SectionHeader& section) {
  const std::uint32_t size = SizeInMemory(section);
  const bool writable = (section.characteristics & pe::kSectionWritable) != 0;
  const bool executable = (section.characteristics & pe::kSectionExecutable) != 0;
  Require(section.virtual_address % pe::kPageSize == 0, "a section does not begin at a page");
  Require(size != 0 && Fits(section.virtual_address, size, Image().size()), "a section lies outside the image");
  Require(Fits(section.pointer_to_raw_data, section.size_of_raw_data, file.size()), "the file ends within a section");
  Require(!writable || !executable, "a section is both writable and executable");

  std::copy_n(file.data() + section.pointer_to_raw_data, std::min(section.size_of_raw_data, size),
              image_.get() + section.virtual_address);
  description_.sections.push_back({std::string(section.name, strnlen(section.name, sizeof(section.name))),
                                   section.virtual_address, size, writable, executable});
}

void PeImage::Relocate() {
  const auto [begin, size] = header_.directories[pe::kRelocationDirectory];
  Require(size != 0, "it has no base relocations");
  Require(Fits(begin, size, Image().size()), "its base relocations lie outside");
  for (std::uint32_t address = begin; address != begin + size;) {
    const auto block = ReadImage<pe::RelocationBlock>(address, "a base relocation block");
    Require(
        block.block_size >= sizeof(block) && block.block_size % 2 == 0 && block.block_size <= begin + size - address,
        "a base relocation block has an impossible size");
    RelocatePage(block, address + sizeof(block));
    address += block.block_size;
  }
}

void PeImage::RelocatePage(const pe::RelocationBlock& block, std::uint32_t entries) {
  const std::uint32_t distance = reinterpret_cast<std::uintptr_t>(image_.get()) - header_.image_base;
  Require(block.page < Image().size(), "a base relocation lies outside");
  for (std::uint32_t i = 0; i < (block.block_size - sizeof(block)) / 2; ++i) {
    const auto entry = ReadImage<std::uint16_t>(entries + 2 * i, "a base relocation");
    const std::uint32_t type = entry >> 12;
    if (type == pe::kRelocationAbsolute) continue;
    Require(type == pe::kRelocationHighLow, "a base relocation is of an unknown type");
    const std::uint32_t address = block.page + (entry & 0xFFFu);
    Write(address, ReadImage<std::uint32_t>(address, "a base relocation") + distance, "a base relocation");
    ++description_.relocations;
  }
}

void PeImage::BindImports(const ImportResolver& resolve) {
  const auto [begin, size] = header_.directories[pe::kImportDirectory];
  if (size == 0) return;
  for (std::uint32_t address = begin;; address += sizeof(pe::ImportDescriptor)) {
    const auto descriptor = ReadImage<pe::ImportDescriptor>(address, "an import descriptor");
    if (descriptor.library_name == 0) return;
    BindLibrary(descriptor, resolve);
  }
}

void PeImage::BindLibrary(const pe::ImportDescriptor& descriptor, const ImportResolver& resolve) {
  const std::string library = ReadText(descriptor.library_name, "the name of an imported library");
  Require(descriptor.names != 0, "it has no import lookup table");
  for (std::uint32_t slot = 0;; slot += sizeof(std::uint32_t)) {
    const auto entry = ReadImage<std::uint32_t>(descriptor.names + slot, "an import");
    if (entry == 0) return;
    Require((entry & pe::kImportByOrdinal) == 0, "it imports by number");
    const std::string name = ReadText(entry + sizeof(std::uint16_t), "the name of an import");
    void* const function = resolve(library, name);
    if (function == nullptr) Fail(("there is no " + name).append(" in ").append(library));
    Write(descriptor.addresses + slot, reinterpret_cast<std::uintptr_t>(function), "the import address table");
    description_.imports.push_back({library, name});
  }
}

void PeImage::FindExports() {
  const auto [begin, size] = header_.directories[pe::kExportDirectory];
  if (size == 0) return;
  const auto directory = ReadImage<pe::ExportDirectory>(begin, "the export directory");
  for (std::uint32_t i = 0; i < directory.number_of_names; ++i) {
    const std::string name =
        ReadText(ReadImage<std::uint32_t>(directory.names + 4 * i, "an export's name"), "an export's name");
    const auto index = ReadImage<std::uint16_t>(directory.ordinals + 2 * i, "an export's index");
    Require(index < directory.number_of_functions, "an export has no function");
    const auto address = ReadImage<std::uint32_t>(directory.functions + 4u * index, "an export's address");
    Require(address - begin >= size, "it forwards an export");  // To the one that a text in here names.
    if (!IsCode(address)) Fail("the export " + name + " lies outside its code");
    Require(description_.exports.emplace(name, address).second, "it exports a name twice");
  }
}

void PeImage::Protect() const {
  const auto protect = [this](std::uint32_t address, std::uint32_t size, int protection) {
    Require(mprotect(image_.get() + address, size, protection) == 0, "its memory cannot be protected");
  };
  protect(0, Image().size(), PROT_READ);
  for (const PeDescription::Section& section : description_.sections) {
    protect(section.address, section.size,
            PROT_READ | (section.writable ? PROT_WRITE : 0) | (section.executable ? PROT_EXEC : 0));
  }
  // What an ARM processor fetches as code need not be what was written there.
  auto* const image = reinterpret_cast<char*>(image_.get());
  __builtin___clear_cache(image, image + Image().size());
}

bool PeImage::IsCode(std::uint32_t address) const {
  return std::ranges::any_of(description_.sections, [address](const PeDescription::Section& section) {
    return section.executable && address >= section.address && address - section.address < section.size;
  });
}

int PeImage::CallEntryPoint(std::uint32_t reason) const {
  using EntryPoint = int(void* instance, std::uint32_t reason, void* reserved);
  void* const address = image_.get() + header_.address_of_entry_point;
  return reinterpret_cast<EntryPoint*>(address)(image_.get(), reason, nullptr);
}

}  // namespace loader
