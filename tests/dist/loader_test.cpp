// The loader reads files that may have been cut or damaged on their way: whatever they hold, it says what is wrong with
// which file and stays alive. The damage is done to the handset library that script/dist has placed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/loader/agent_library.h"
#include "host/loader/pe_format.h"
#include "host/loader/pe_image.h"
#include "host/loader/refusing_stream.h"

namespace loader {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char kFileName[] = "damaged.dll";

using Bytes = std::vector<std::uint8_t>;

void* FindAnything(const std::string& /*library*/, const std::string& /*name*/) {
  static int found;
  return &found;
}

/// What the loader says about a file; empty when it takes it. Its code never runs.
std::string Refusal(std::span<const std::uint8_t> file, const ImportResolver& resolve = FindAnything) {
  try {
    PeImage(file, kFileName, resolve);
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// The library's bytes, with a way to the fields that tests damage.
class Dll {
 public:
  explicit Dll(Bytes bytes) : bytes_(std::move(bytes)) {}

  const Bytes& Contents() const { return bytes_; }

  pe::FileHeader* Header() { return At<pe::FileHeader>(HeaderOffset()); }
  pe::OptionalHeader* Optional() { return At<pe::OptionalHeader>(HeaderOffset() + sizeof(pe::FileHeader)); }
  pe::SectionHeader* Section(std::size_t index) {
    return At<pe::SectionHeader>(SectionsOffset() + index * sizeof(pe::SectionHeader));
  }
  std::size_t HeadersEnd() { return SectionsOffset() + Header()->number_of_sections * sizeof(pe::SectionHeader); }

  pe::ImportDescriptor* Imports() { return Directory<pe::ImportDescriptor>(pe::kImportDirectory); }
  pe::ExportDirectory* Exports() { return Directory<pe::ExportDirectory>(pe::kExportDirectory); }
  pe::RelocationBlock* Relocations() { return Directory<pe::RelocationBlock>(pe::kRelocationDirectory); }
  std::uint16_t* RelocationEntry(std::size_t index) {
    return reinterpret_cast<std::uint16_t*>(Relocations() + 1) + index;
  }
  /// The words of a list in the image.
  std::uint32_t* Words(std::uint32_t address) { return At<std::uint32_t>(FileOffset(address)); }

  pe::SectionHeader* SectionOf(std::uint32_t address) {
    for (std::size_t i = 0; i < Header()->number_of_sections; ++i) {
      pe::SectionHeader* const section = Section(i);
      if (address - section->virtual_address < section->size_of_raw_data) return section;
    }
    throw std::logic_error("the file does not hold this address");
  }
  std::size_t FileOffset(std::uint32_t address) {
    const pe::SectionHeader& section = *SectionOf(address);
    return address - section.virtual_address + section.pointer_to_raw_data;
  }

 private:
  template <typename T>
  T* At(std::size_t offset) {
    if (offset + sizeof(T) > bytes_.size()) throw std::logic_error("the file does not hold this header");
    return reinterpret_cast<T*>(bytes_.data() + offset);
  }
  template <typename T>
  T* Directory(std::uint32_t index) {
    return At<T>(FileOffset(Optional()->directories[index].virtual_address));
  }
  std::size_t HeaderOffset() { return *At<std::uint32_t>(pe::kNewHeaderOffset) + sizeof(pe::kPeSignature); }
  std::size_t SectionsOffset() { return HeaderOffset() + sizeof(pe::FileHeader) + sizeof(pe::OptionalHeader); }

  Bytes bytes_;
};

Bytes HandsetLibrary() {
  std::ifstream stream(QV_HANDSET_LIBRARY, std::ios::binary);
  if (!stream) throw std::runtime_error(QV_HANDSET_LIBRARY " is missing: run script/dist");
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(PeImage, TakesTheHandsetLibraryAsItIs) {
  const Bytes file = HandsetLibrary();
  const PeImage image(file, kFileName, FindAnything);
  EXPECT_FALSE(image.Description().sections.empty());
  EXPECT_FALSE(image.Description().imports.empty());
  EXPECT_GT(image.Description().relocations, 0u);
  EXPECT_TRUE(image.Description().exports.contains("fnQV_ExportTabs"));
  EXPECT_NE(image.Export("fnQV_ExportTabs"), nullptr);
}

TEST(PeImage, PutsTheResolversAnswersWhereTheCodeLooksForThem) {
  Dll dll(HandsetLibrary());
  const std::uint32_t table = dll.Imports()->addresses;
  const PeImage image(dll.Contents(), kFileName, FindAnything);
  const auto* const base = static_cast<const std::uint8_t*>(image.Export("fnQV_ExportTabs")) -
                           image.Description().exports.at("fnQV_ExportTabs");
  const auto& imports = image.Description().imports;
  const auto is_of_first = [&](const auto& import) { return import.library == imports.at(0).library; };
  std::vector<void*> bound(static_cast<std::size_t>(std::ranges::count_if(imports, is_of_first)));
  std::memcpy(bound.data(), base + table, bound.size() * sizeof(void*));
  EXPECT_THAT(bound, testing::Each(FindAnything("", "")));
}

TEST(PeImage, RefusesAFileCutAnywhere) {
  const Bytes file = HandsetLibrary();
  for (std::size_t size = 0; size < file.size(); ++size) {
    // Of its own, so that reading past the cut is seen.
    const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
    ASSERT_THAT(Refusal(cut), StartsWith(kFileName)) << "cut to " << size << " bytes";
  }
}

TEST(PeImage, OutlivesAnyWordOfItsTablesChanged) {
  Dll dll(HandsetLibrary());
  std::vector<std::pair<std::size_t, std::size_t>> tables = {{0, dll.HeadersEnd()}};
  for (const auto index : {pe::kExportDirectory, pe::kImportDirectory, pe::kRelocationDirectory}) {
    const auto [address, size] = dll.Optional()->directories[index];
    tables.emplace_back(dll.FileOffset(address), size);
  }
  Bytes file = dll.Contents();
  for (const auto& [begin, size] : tables) {
    for (std::size_t at = begin; at + 1 < begin + size; ++at) {
      const std::array original = {file[at], file[at + 1]};
      for (const unsigned value : {0x0000u, 0x0001u, 0x0FFFu, 0x7FFFu, 0x8000u, 0xFFFFu}) {
        file[at] = static_cast<std::uint8_t>(value);
        file[at + 1] = static_cast<std::uint8_t>(value >> 8);
        const std::string refusal = Refusal(file);
        ASSERT_THAT(refusal, AnyOf(IsEmpty(), StartsWith(kFileName))) << "word " << value << " at " << at;
      }
      file[at] = original[0];
      file[at + 1] = original[1];
    }
  }
}

TEST(PeImage, RefusesAMissingImportByItsName) {
  const auto find_nothing = [](const std::string&, const std::string&) -> void* { return nullptr; };
  const Bytes file = HandsetLibrary();
  const std::string first = PeImage(file, kFileName, FindAnything).Description().imports.at(0).name;
  EXPECT_EQ(Refusal(file, find_nothing), std::string(kFileName) + ": there is no " + first + " in COREDLL.dll");
}

TEST(PeImage, RefusesALibraryOfWhichTheMailStoreLacksAMember) {
  const Bytes file = HandsetLibrary();
  const PeDescription library_as_it_is = PeImage(file, kFileName, FindAnything).Description();
  std::size_t members = 0;
  for (const auto& import : library_as_it_is.imports) {
    if (import.library != "MailStore.dll") continue;
    ++members;
    const auto find_all_others = [&](const std::string& library, const std::string& name) {
      return library == import.library && name == import.name ? nullptr : FindAnything(library, name);
    };
    EXPECT_EQ(Refusal(file, find_all_others),
              std::string(kFileName) + ": there is no " + import.name + " in MailStore.dll");
  }
  EXPECT_EQ(members, 18u);
}

TEST(PeImage, RefusesToFindAnExportThatIsNotThere) {
  const Bytes file = HandsetLibrary();
  const PeImage image(file, kFileName, FindAnything);
  EXPECT_THROW(image.Export("fnQV_NoSuchFunction"), std::runtime_error);
}

struct Damage {
  const char* name;
  std::function<void(Dll&)> done;
  const char* complaint;
};

void PrintTo(const Damage& damage, std::ostream* out) {
  *out << damage.name;
}

class DamagedDll : public testing::TestWithParam<Damage> {};

TEST_P(DamagedDll, IsRefusedForWhatIsWrongWithIt) {
  Dll dll(HandsetLibrary());
  GetParam().done(dll);
  EXPECT_EQ(Refusal(dll.Contents()), std::string(kFileName) + ": " + GetParam().complaint);
}

constexpr std::uint32_t kFarOutside = 0x7FFFF000;

const Damage kDamages[] = {
    {"OtherMachine", [](Dll& dll) { dll.Header()->machine = 0x1C0; }, "it is for another machine"},
    {"NoDll", [](Dll& dll) { dll.Header()->characteristics = 0x0102; }, "it is not a DLL"},
    {"OtherHeaderSize", [](Dll& dll) { dll.Header()->size_of_optional_header = 240; },
     "the optional header has another size"},
    {"MoreSections", [](Dll& dll) { dll.Header()->number_of_sections = 0xFFFF; }, "a section header lies outside"},
    {"SixtyFourBits", [](Dll& dll) { dll.Optional()->magic = 0x20B; }, "it is not PE32"},
    {"DesktopSubsystem", [](Dll& dll) { dll.Optional()->subsystem = 2; }, "it is not for Windows CE"},
    {"SmallAlignment", [](Dll& dll) { dll.Optional()->section_alignment = 0x200; },
     "its sections are not aligned to pages"},
    {"FewDirectories", [](Dll& dll) { dll.Optional()->number_of_directories = 2; },
     "it has another number of data directories"},
    {"HugeImage", [](Dll& dll) { dll.Optional()->size_of_image = 0xFFFFFFFF; }, "its image is too large, or empty"},
    {"EmptyImage", [](Dll& dll) { dll.Optional()->size_of_image = 0; }, "its image is too large, or empty"},
    {"SmallImage", [](Dll& dll) { dll.Optional()->size_of_image = pe::kPageSize; }, "a section lies outside the image"},
    {"EntryOutsideCode", [](Dll& dll) { dll.Optional()->address_of_entry_point = dll.Section(1)->virtual_address; },
     "its start-up routine lies outside its code"},
    {"SectionOffPage", [](Dll& dll) { ++dll.Section(0)->virtual_address; }, "a section does not begin at a page"},
    {"SectionsOverlap", [](Dll& dll) { dll.Section(1)->virtual_address = dll.Section(0)->virtual_address; },
     "its sections overlap, or are out of order"},
    {"SectionOutsideFile", [](Dll& dll) { dll.Section(0)->pointer_to_raw_data = 0xFFFFFFFF; },
     "the file ends within a section"},
    {"EndlessSection", [](Dll& dll) { dll.Section(0)->virtual_size = 0xFFFFFFFF; }, "a section lies outside the image"},
    {"WritableCode", [](Dll& dll) { dll.Section(0)->characteristics |= pe::kSectionWritable; },
     "a section is both writable and executable"},
    {"NoRelocations", [](Dll& dll) { dll.Optional()->directories[pe::kRelocationDirectory].size = 0; },
     "it has no base relocations"},
    {"RelocationsOutside", [](Dll& dll) { dll.Optional()->directories[pe::kRelocationDirectory].size = 0xFFFFFFFF; },
     "its base relocations lie outside"},
    {"RelocationOfUnknownType", [](Dll& dll) { *dll.RelocationEntry(0) = 0x1000; },
     "a base relocation is of an unknown type"},
    {"RelocationPageOutside", [](Dll& dll) { dll.Relocations()->page = kFarOutside; },
     "a base relocation lies outside"},
    {"RelocationAcrossTheEnd",
     [](Dll& dll) {
       dll.Relocations()->page = dll.Optional()->size_of_image - pe::kPageSize;
       *dll.RelocationEntry(0) = 0x3FFD;
     },
     "a base relocation lies outside"},
    {"EmptyRelocationBlock", [](Dll& dll) { dll.Relocations()->block_size = 0; },
     "a base relocation block has an impossible size"},
    {"EndlessRelocationBlock", [](Dll& dll) { dll.Relocations()->block_size = 0xFFFFFFFE; },
     "a base relocation block has an impossible size"},
    {"ImportsOutside",
     [](Dll& dll) { dll.Optional()->directories[pe::kImportDirectory].virtual_address = kFarOutside; },
     "an import descriptor lies outside"},
    {"NoImportLookupTable", [](Dll& dll) { dll.Imports()->names = 0; }, "it has no import lookup table"},
    {"ImportByNumber", [](Dll& dll) { *dll.Words(dll.Imports()->names) = pe::kImportByOrdinal | 1; },
     "it imports by number"},
    {"ImportNameOutside", [](Dll& dll) { *dll.Words(dll.Imports()->names) = kFarOutside; },
     "the name of an import lies outside"},
    {"ImportAddressesOutside", [](Dll& dll) { dll.Imports()->addresses = kFarOutside; },
     "the import address table lies outside"},
    {"ExportsOutside",
     [](Dll& dll) { dll.Optional()->directories[pe::kExportDirectory].virtual_address = kFarOutside; },
     "the export directory lies outside"},
    {"ExportOutsideCode", [](Dll& dll) { *dll.Words(dll.Exports()->functions) = dll.Imports()->names; },
     "the export fnQV_CheckMutex lies outside its code"},
    {"ForwardedExport", [](Dll& dll) { *dll.Words(dll.Exports()->functions) = dll.Exports()->library_name; },
     "it forwards an export"},
    {"ForwardedExportBesideCode",
     [](Dll& dll) {
       pe::SectionHeader* const section = dll.SectionOf(dll.Exports()->library_name);
       section->characteristics &= ~pe::kSectionWritable;
       section->characteristics |= pe::kSectionExecutable;
       *dll.Words(dll.Exports()->functions) = dll.Exports()->library_name;
     },
     "it forwards an export"},
    {"ExportWithoutFunction", [](Dll& dll) { dll.Exports()->number_of_functions = 0; }, "an export has no function"},
    {"ExportNameTwice",
     [](Dll& dll) {
       std::uint32_t* const names = dll.Words(dll.Exports()->names);
       names[1] = names[0];
     },
     "it exports a name twice"},
};

INSTANTIATE_TEST_SUITE_P(PeImage, DamagedDll, testing::ValuesIn(kDamages),
                         [](const auto& test) { return std::string(test.param.name); });

/// What opening a file as an agent says.
std::string RefusalToOpen(const std::filesystem::path& file) {
  try {
    AgentLibrary::Open(file);
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// The same of a file of its own with these contents.
std::string RefusalToOpen(const Bytes& contents) {
  const auto file = std::filesystem::path(testing::TempDir()) / kFileName;
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(contents.data()), static_cast<std::streamsize>(contents.size()));
  return RefusalToOpen(file);
}

TEST(AgentLibrary, RunsTheHandsetLibraryOnTheSimulatedHandset) {
  const auto agent = AgentLibrary::Open(QV_HANDSET_LIBRARY);
  EXPECT_TRUE(agent->IsHandsetBuild());
  EXPECT_EQ(agent->Export<decltype(qv_ExportTabs)>("qv_ExportTabs")(0, u"\\"), 0u);
  EXPECT_THROW(agent->Symbol("fnQV_NoSuchFunction"), std::runtime_error);
}

TEST(AgentLibrary, OpensTheHostsSharedObject) {
  const auto agent = AgentLibrary::Open(QV_HOST_LIBRARY);
  EXPECT_FALSE(agent->IsHandsetBuild());
  EXPECT_EQ(agent->Export<decltype(qv_ExportTabs)>("qv_ExportTabs")(0, u"\\"), 0u);
  EXPECT_THROW(agent->Symbol("fnQV_NoSuchFunction"), std::runtime_error);
}

TEST(AgentLibrary, NamesTheFileThatItCannotOpen) {
  const Bytes text = {'t', 'e', 'x', 't'};
  const Bytes elf_magic = {0x7F, 'E', 'L', 'F'};
  Dll library(HandsetLibrary());
  *library.Words(library.Imports()->library_name) = 0x58585858;
  for (const Bytes& contents : {Bytes(), text, elf_magic, library.Contents()}) {
    EXPECT_THAT(RefusalToOpen(contents), HasSubstr(kFileName));
  }
}

TEST(AgentLibrary, SaysWhyItCannotReadWhichFile) {
  EXPECT_EQ(RefusalToOpen("/no/such/library.dll"), "/no/such/library.dll: No such file or directory");
  EXPECT_EQ(RefusalToOpen("/proc/self"), "/proc/self: Is a directory");
  // Opens, but has nothing where reading begins.
  EXPECT_EQ(RefusalToOpen("/proc/self/mem"), "/proc/self/mem: Input/output error");
}

/// Calls every method but Write and Release; returns what they answer, but for AddRef, which counts.
std::vector<std::int32_t> CallTheOtherMethods(IRAPIStream& stream) {
  stream.AddRef();
  return {stream.QueryInterface(nullptr, nullptr),
          stream.Read(nullptr, 0, nullptr),
          stream.Seek(0, 0, nullptr),
          stream.SetSize(0),
          stream.CopyTo(nullptr, 0, nullptr, nullptr),
          stream.Commit(0),
          stream.Revert(),
          stream.LockRegion(0, 0, 0),
          stream.UnlockRegion(0, 0, 0),
          stream.Stat(nullptr, 0),
          stream.Clone(nullptr),
          stream.SetRapiStat(0, 0),
          stream.GetRapiStat(0, nullptr)};
}

TEST(RefusingStream, ImplementsNothingBesideWriteAndRelease) {
  struct Stream final : RefusingStream {
    std::int32_t QV_STDCALL Write(const void*, std::uint32_t, std::uint32_t*) override { return 0; }
    std::uint32_t QV_STDCALL Release() override { return 0; }
  } stream;
  constexpr auto kNotImplemented = static_cast<std::int32_t>(0x80004001);
  EXPECT_THAT(CallTheOtherMethods(stream), testing::Each(kNotImplemented));
}

TEST(RefusingStream, TellsWhichMethodIsCalled) {
  struct Stream final : RefusingStream {
    std::int32_t QV_STDCALL Write(const void*, std::uint32_t, std::uint32_t*) override { return 0; }
    std::uint32_t QV_STDCALL Release() override { return 0; }
    std::int32_t Refuse(const char* method) override { return refused.emplace_back(method), 7; }
    std::vector<std::string> refused;
  } stream;
  EXPECT_THAT(CallTheOtherMethods(stream), testing::Each(7));
  EXPECT_THAT(stream.refused,
              testing::ElementsAre("AddRef", "QueryInterface", "Read", "Seek", "SetSize", "CopyTo", "Commit", "Revert",
                                   "LockRegion", "UnlockRegion", "Stat", "Clone", "SetRapiStat", "GetRapiStat"));
}

}  // namespace
}  // namespace loader
