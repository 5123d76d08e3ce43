// The parts of a PE32 file that a loader reads, as they lie in the file: little-endian, every field at its natural
// alignment. Names are those of the format's own documentation.
#ifndef QV_HOST_LOADER_PE_FORMAT_H
#define QV_HOST_LOADER_PE_FORMAT_H

#include <cstdint>

namespace loader::pe {

inline constexpr std::uint16_t kDosMagic = 0x5A4D;       // "MZ"
inline constexpr std::uint32_t kPeSignature = 0x4550;    // "PE\0\0"
inline constexpr std::uint32_t kNewHeaderOffset = 0x3C;  ///< Where the file says at which offset the signature is.

// The machine whose code this process runs.
#if defined(__arm__)
inline constexpr std::uint16_t kMachine = 0x1C0;
#else
inline constexpr std::uint16_t kMachine = 0x14C;
#endif
inline constexpr std::uint16_t kFileDll = 0x2000;
inline constexpr std::uint16_t kMagicPe32 = 0x10B;
inline constexpr std::uint16_t kSubsystemWindowsCe = 9;
inline constexpr std::uint32_t kPageSize = 0x1000;

struct FileHeader {
  std::uint16_t machine;
  std::uint16_t number_of_sections;
  std::uint32_t time_date_stamp;
  std::uint32_t pointer_to_symbol_table;
  std::uint32_t number_of_symbols;
  std::uint16_t size_of_optional_header;
  std::uint16_t characteristics;
};
static_assert(sizeof(FileHeader) == 20);

struct DataDirectory {
  std::uint32_t virtual_address;
  std::uint32_t size;
};

inline constexpr std::uint32_t kExportDirectory = 0;
inline constexpr std::uint32_t kImportDirectory = 1;
inline constexpr std::uint32_t kRelocationDirectory = 5;
inline constexpr std::uint32_t kDirectories = 16;

struct OptionalHeader {
  std::uint16_t magic;
  std::uint8_t linker_version[2];
  std::uint32_t size_of_code;
  std::uint32_t size_of_initialized_data;
  std::uint32_t size_of_uninitialized_data;
  std::uint32_t address_of_entry_point;
  std::uint32_t base_of_code;
  std::uint32_t base_of_data;
  std::uint32_t image_base;
  std::uint32_t section_alignment;
  std::uint32_t file_alignment;
  std::uint16_t operating_system_version[2];
  std::uint16_t image_version[2];
  std::uint16_t subsystem_version[2];
  std::uint32_t win32_version_value;
  std::uint32_t size_of_image;
  std::uint32_t size_of_headers;
  std::uint32_t check_sum;
  std::uint16_t subsystem;
  std::uint16_t dll_characteristics;
  std::uint32_t stack_and_heap_sizes[4];
  std::uint32_t loader_flags;
  std::uint32_t number_of_directories;
  DataDirectory directories[kDirectories];
};
static_assert(sizeof(OptionalHeader) == 224);

inline constexpr std::uint32_t kSectionExecutable = 0x20000000;
inline constexpr std::uint32_t kSectionWritable = 0x80000000;

struct SectionHeader {
  char name[8];  ///< Filled up with NULs, of which there may be none.
  std::uint32_t virtual_size;
  std::uint32_t virtual_address;
  std::uint32_t size_of_raw_data;
  std::uint32_t pointer_to_raw_data;
  std::uint32_t unused[3];
  std::uint32_t characteristics;
};
static_assert(sizeof(SectionHeader) == 40);

/// The list of these ends with one whose name is 0.
struct ImportDescriptor {
  std::uint32_t names;  ///< Import lookup table: words that lead to a hint (16 bits) and a name; 0 ends it.
  std::uint32_t time_date_stamp;
  std::uint32_t forwarder_chain;
  std::uint32_t library_name;
  std::uint32_t addresses;  ///< Import address table, parallel to `names`.
};
static_assert(sizeof(ImportDescriptor) == 20);
inline constexpr std::uint32_t kImportByOrdinal = 0x80000000;

struct ExportDirectory {
  std::uint32_t characteristics;
  std::uint32_t time_date_stamp;
  std::uint32_t version;
  std::uint32_t library_name;
  std::uint32_t ordinal_base;
  std::uint32_t number_of_functions;
  std::uint32_t number_of_names;
  std::uint32_t functions;
  std::uint32_t names;
  std::uint32_t ordinals;  ///< Parallel to `names`: 16-bit indices into `functions`.
};
static_assert(sizeof(ExportDirectory) == 40);

/// Followed by 16-bit entries up to block_size: four bits of type, twelve of offset in the page.
struct RelocationBlock {
  std::uint32_t page;
  std::uint32_t block_size;
};
inline constexpr std::uint32_t kRelocationAbsolute = 0;  ///< Fills up a block.
inline constexpr std::uint32_t kRelocationHighLow = 3;   ///< A 32-bit address.

}  // namespace loader::pe

#endif  // QV_HOST_LOADER_PE_FORMAT_H
