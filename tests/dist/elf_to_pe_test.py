# The converter that makes the handset library for ARM: what it wrote is compared with what independent readers find in
# the file it was given and in the one it made; and a file that it cannot be sure of, it must refuse and say why.
"""Usage: elf_to_pe_test.py DIRECTORY_OF_CONVERTER QV_RAPI.elf QV_RAPI.dll [unittest options]"""

import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

import pefile

from unittest_result import write_result

IMAGE_BASE = 0x10000000
CODE, READ_ONLY, WRITABLE, ZEROS = 0x60000020, 0x40000040, 0xC0000040, 0xC0000080
FLAGS = {".text": CODE, ".rdata": READ_ONLY, ".edata": READ_ONLY, ".idata": WRITABLE, ".data": WRITABLE, ".bss": ZEROS}


def readelf(*options, file=None):
    """What binutils, which has nothing to do with the converter, read in the ELF file."""
    command = ["arm-none-eabi-readelf", "--wide", *options, str(file or ELF)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def elf_sections(kinds="PROGBITS"):
    """(name, address, place in the file, size) of what is loaded."""
    line = re.compile(rf"\] (\.\S+) +(?:{kinds}) +(\w{{8}}) (\w{{6}}) (\w{{6}}) \w\w +\w*A")
    return [(name, *(int(number, 16) for number in numbers)) for name, *numbers in line.findall(readelf("-S"))]


def elf_entry():
    return int(re.search(r"Entry point address: +0x(\w+)", readelf("-h"))[1], 16)


def elf_absolute_words():
    """The addresses of words that the linker was told to fill with an address, by the section they are in."""
    words = {}
    for part in readelf("-r").split("Relocation section '.rel")[1:]:
        name = part[:part.index("'")]
        words[name] = {int(place, 16) for place in re.findall(r"^(\w{8})  \w{8} R_ARM_ABS32 ", part, re.MULTILINE)}
    return words


def elf_functions():
    return {name: int(value, 16)
            for value, name in re.findall(r": (\w{8}) +\d+ FUNC +GLOBAL +\S+ +\d+ (\S+)$", readelf("-s"), re.MULTILINE)}


class ConvertedLibraryTest(unittest.TestCase):
    def setUp(self):
        self.elf = ELF.read_bytes()
        self.pe = pefile.PE(data=DLL.read_bytes())

    def test_the_reader_has_no_complaint(self):
        self.assertEqual(self.pe.get_warnings(), [])

    def test_the_headers_say_what_the_image_is(self):
        header, optional = self.pe.FILE_HEADER, self.pe.OPTIONAL_HEADER
        self.assertEqual((header.Machine, header.Characteristics, header.TimeDateStamp), (0x1C0, 0x210E, 0))
        self.assertEqual(optional.AddressOfEntryPoint, elf_functions()["AgentStartUp"])
        self.assertEqual((optional.ImageBase, optional.SectionAlignment, optional.FileAlignment),
                         (IMAGE_BASE, 0x1000, 0x200))
        self.assertEqual(optional.BaseOfCode, 0x1000)
        last = self.pe.sections[-1]
        self.assertEqual(optional.SizeOfImage, (last.VirtualAddress + last.Misc_VirtualSize + 0xFFF) & ~0xFFF)
        code = [section.SizeOfRawData for section in self.pe.sections if section.Characteristics & 0x20]
        self.assertEqual(optional.SizeOfCode, sum(code))
        data = [section.SizeOfRawData for section in self.pe.sections if section.Characteristics & 0x40]
        self.assertEqual(optional.SizeOfInitializedData, sum(data))

    def test_the_code_is_for_the_oldest_processor(self):
        self.assertIn("  Tag_CPU_arch: v4T\n", readelf("-A"))

    def test_the_sections_are_those_of_the_elf_file(self):
        found = [(section.Name.rstrip(b"\0").decode(), section.VirtualAddress, section.Misc_VirtualSize,
                  section.Characteristics) for section in self.pe.sections[:-1]]
        self.assertEqual(found, [(name, address, size, FLAGS[name])
                                 for name, address, _, size in elf_sections("PROGBITS|NOBITS")])
        reloc = self.pe.sections[-1]
        self.assertEqual((reloc.Name, reloc.Characteristics), (b".reloc\0\0", 0x42000040))

    def test_their_contents_are_too_but_for_the_moved_addresses(self):
        moved = {entry.rva for block in self.pe.DIRECTORY_ENTRY_BASERELOC for entry in block.entries if entry.type == 3}
        for name, address, place, size in elf_sections():
            wanted = bytearray(self.elf[place:place + size])
            for word in moved:
                if address <= word < address + size:
                    value, = struct.unpack_from("<I", wanted, word - address)
                    struct.pack_into("<I", wanted, word - address, value + IMAGE_BASE)
            self.assertEqual(self.pe.get_data(address, size), bytes(wanted), name)

    def test_the_fixups_are_the_linkers_absolute_words(self):
        wanted = set.union(*(words for name, words in elf_absolute_words().items() if name in (".text", ".rdata", ".data")))
        self.assertGreater(len(wanted), 500)
        entries = [entry for block in self.pe.DIRECTORY_ENTRY_BASERELOC for entry in block.entries]
        self.assertEqual({entry.rva for entry in entries if entry.type == 3}, wanted)
        self.assertEqual({entry.type for entry in entries} - {0, 3}, set())

    def test_no_section_that_is_loaded_is_relocated_unseen(self):
        names = {name for name, *_ in elf_sections()}
        self.assertEqual({name for name in elf_absolute_words() if name in names}, names)

    def test_the_exports_are_the_functions_of_those_names(self):
        functions = elf_functions()
        symbols = self.pe.DIRECTORY_ENTRY_EXPORT.symbols
        self.assertEqual(self.pe.DIRECTORY_ENTRY_EXPORT.struct.NumberOfFunctions, len(symbols))
        self.assertEqual({symbol.name.decode(): symbol.address for symbol in symbols},
                         {symbol.name.decode(): functions[symbol.name.decode()] for symbol in symbols})
        names = [symbol.name for symbol in symbols]
        self.assertEqual(names, sorted(names))

    def test_each_import_has_a_thunk_that_goes_where_its_address_will_be(self):
        functions = elf_functions()
        for library in self.pe.DIRECTORY_ENTRY_IMPORT:
            for entry in library.imports:
                name = entry.name.decode()
                if name.startswith("?"):
                    name = "mailstore_" + re.match(r"\?+0?(\w+)@", name)[1]
                code = struct.unpack("<4I", self.pe.get_data(functions[name], 16))
                # ldr ip, [pc, #4]; ldr ip, [ip]; bx ip; the address
                self.assertEqual(code, (0xE59FC004, 0xE59CC000, 0xE12FFF1C, entry.address), name)

    def test_names_and_addresses_of_imports_are_parallel(self):
        for library in self.pe.DIRECTORY_ENTRY_IMPORT:
            count = len(library.imports)
            lists = [self.pe.get_data(start, 4 * count + 4) for start in
                     (library.struct.OriginalFirstThunk, library.struct.FirstThunk)]
            self.assertEqual(lists[0], lists[1])
            self.assertEqual(lists[0][-4:], bytes(4))

    def test_converting_again_gives_the_same_bytes(self):
        self.assertEqual(convert(self.elf), (DLL.read_bytes(), ""))


# One that has what the agent has not: data that changes, and zeros.
SMALL_LIBRARY = """
  .include "platform/wince/armv4_tables.inc"
  import_library coredll, "COREDLL.dll"
  import coredll, free, "free"
  export_directory "SMALL.dll", 1
  export AgentStartUp

  .text
  .global AgentStartUp
  .type AgentStartUp, %function
AgentStartUp:
  ldr r0, 1f
  b free
1:
  .word changing

  .data
changing:
  .word zeros + 4, 7

  .bss
zeros:
  .space 0x1234
"""


def link(directory, source):
    """The ELF file of a library in assembler, linked as the handset library is."""
    assembler, elf = pathlib.Path(directory, "small.s"), pathlib.Path(directory, "small.elf")
    assembler.write_text(source)
    tree = TOOLS.parent / "src"
    subprocess.run(["arm-none-eabi-gcc", "-march=armv4t", f"-I{tree}", "-nostdlib", "-Wl,--emit-relocs,--gc-sections",
                    "-Wl,--build-id=none,--no-warn-rwx-segments", f"-Wl,--script={tree}/platform/wince/armv4.ld",
                    assembler, "-o", elf], check=True)
    return elf


class SmallLibraryTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = directory.name

    def test_data_and_zeros_become_sections(self):
        library, _ = convert(link(self.directory, SMALL_LIBRARY).read_bytes())
        pe = pefile.PE(data=library)
        # So small a library is padding for the most part.
        self.assertEqual([told for told in pe.get_warnings() if "Byte 0x00 makes up" not in told], [])
        found = {section.Name.rstrip(b"\0").decode(): (
            section.VirtualAddress, section.Misc_VirtualSize, section.PointerToRawData, section.SizeOfRawData,
            section.Characteristics) for section in pe.sections}
        self.assertEqual(found[".text"], (0x1000, 0x1C, 0x400, 0x200, CODE))
        self.assertEqual(found[".data"], (0x2000, 8, 0x600, 0x200, WRITABLE))
        self.assertEqual(found[".bss"], (0x3000, 0x1234, 0, 0, ZEROS))
        self.assertEqual(found[".edata"][:3], (0x5000, 0x49, 0x800))
        self.assertEqual((pe.OPTIONAL_HEADER.SizeOfUninitializedData, pe.OPTIONAL_HEADER.BaseOfData), (0x1400, 0x2000))
        self.assertEqual(pe.get_data(0x2000, 8), struct.pack("<2I", 0x10003004, 7))
        entries = [entry for block in pe.DIRECTORY_ENTRY_BASERELOC for entry in block.entries]
        self.assertEqual({entry.rva for entry in entries if entry.type == 3}, {0x1008, 0x1018, 0x2000})

    def test_relocated_zeros_are_refused(self):
        elf = Damaged(link(self.directory, SMALL_LIBRARY))
        elf.put("<I", elf.relocation(".data", ABS32), elf.get(".bss", 3))
        elf.header(".rel.data", 7, elf.index[".bss"])
        elf.rename(".rel.data", ".rel.bss")
        self.assertEqual(convert(elf.bytes), (None, ".bss has no words to relocate"))

    def test_static_objects_that_nobody_would_construct_are_refused(self):
        for section in (".init_array", ".preinit_array", ".fini_array", ".ctors", ".dtors.00001"):
            with self.subTest(section):
                source = f'{SMALL_LIBRARY}  .section {section}, "aw"\n  .word AgentStartUp\n'
                told = convert(link(self.directory, source).read_bytes())
                self.assertEqual(told, (None, "there is no place for section .init_array"))

    def test_any_damage_is_refused_or_gives_a_library_that_can_be_read(self):
        sys.path.insert(0, str(TOOLS))
        import elf_to_pe
        elf = Damaged(link(self.directory, SMALL_LIBRARY))
        whole, refused = bytes(elf.bytes), 0
        for place in elf.words():
            word, = struct.unpack_from("<I", whole, place)
            for value in {0, 1, word + 1, word - 1, word ^ 0x80000000, word + 0x1000, 0x7FFFFFFF, 0xFFFFFFFF} - {word}:
                with self.subTest(place=place, value=value):
                    elf.put("<I", place, value & 0xFFFFFFFF)
                    try:
                        pefile.PE(data=elf_to_pe.convert(bytes(elf.bytes)))
                    except elf_to_pe.Refused:
                        refused += 1
            elf.put("<I", place, word)
        self.assertGreater(refused, 500)


def convert(contents):
    """The converter's output for these contents, None when there is none, and its complaint."""
    with tempfile.TemporaryDirectory() as directory:
        source, target = pathlib.Path(directory, "in.elf"), pathlib.Path(directory, "out.dll")
        source.write_bytes(contents)
        run = subprocess.run([sys.executable, CONVERTER, source, target], capture_output=True, text=True)
        complaint = run.stderr.removeprefix(f"{source}: ").strip()
        if run.returncode == 0:
            return target.read_bytes(), complaint
        assert not target.exists(), "a refused file leaves a library behind"
        return None, complaint


class Damaged:
    """An ELF file, with a way to what is damaged in it."""

    def __init__(self, file=None):
        self.bytes = bytearray((file or ELF).read_bytes())
        self.headers, = struct.unpack_from("<I", self.bytes, 32)
        names = readelf("-S", file=file)
        self.index = {name: int(number) for number, name in re.findall(r"\[ *(\d+)\] (\.\S+)", names)}

    def put(self, form, offset, value):
        struct.pack_into(form, self.bytes, offset, value)

    def header(self, section, field, value):
        """Sets a word of a section's header: 0 name, 1 type, 2 flags, 3 address, 4 offset, 5 size, ..."""
        self.put("<I", self.headers + 40 * self.index[section] + 4 * field, value)

    def get(self, section, field):
        return struct.unpack_from("<I", self.bytes, self.headers + 40 * self.index[section] + 4 * field)[0]

    def rename(self, section, name):
        """Gives a section this name, which is put behind a copy of the others at the file's end."""
        start, size = self.get(".shstrtab", 4), self.get(".shstrtab", 5)
        self.header(".shstrtab", 4, len(self.bytes))
        self.header(".shstrtab", 5, size + len(name) + 1)
        self.header(section, 0, size)
        self.bytes += self.bytes[start:start + size] + name.encode() + b"\0"

    def relocations(self, section, kind):
        """Where in the file the section's relocations of this kind are."""
        start, size = self.get(".rel" + section, 4), self.get(".rel" + section, 5)
        return [at for at in range(start, start + size, 8) if self.bytes[at + 4] == kind]

    def relocation(self, section, kind):
        return self.relocations(section, kind)[0]

    def put_symbol(self, kind, form, field, value):
        """Sets what is at byte `field` of the symbol that the first relocation of this kind is against."""
        symbol = struct.unpack_from("<I", self.bytes, self.relocation(".text", kind) + 4)[0] >> 8
        self.put(form, self.get(".symtab", 4) + 16 * symbol + field, value)

    def words(self):
        """Where in the file the words of the headers, the symbols and the relocations are."""
        yield from range(0, 52, 4)
        yield from range(self.headers, self.headers + 40 * (max(self.index.values()) + 1), 4)
        for name in self.index:
            if name == ".symtab" or name.startswith(".rel"):
                yield from range(self.get(name, 4), self.get(name, 4) + self.get(name, 5), 4)


# Relocation types: an address, and the distances of calls and of jumps.
ABS32, CALL, JUMP24 = 2, 28, 29
# Where in a symbol its name is, and the section that it is in.
NAME, SECTION = 0, 14


def with_header(section, field, value):
    return lambda elf: elf.header(section, field, value)


def with_bytes(form, offset, value):
    return lambda elf: elf.put(form, offset, value)


def retype(elf):
    elf.put("<B", elf.relocation(".text", ABS32) + 4, 43)  # R_ARM_MOVW_ABS_NC: half an address in an instruction


def with_symbol(kind, form, field, value):
    return lambda elf: elf.put_symbol(kind, form, field, value)


def with_symbol_name(old, new):
    def replace(elf):
        assert len(old) == len(new) and old + b"\0" in elf.bytes
        elf.bytes = elf.bytes.replace(old + b"\0", new + b"\0")
    return replace


def forget_symbol(elf):
    elf.put("<I", elf.relocation(".text", ABS32) + 4, 0xFFFFFF02)


def move_relocation(by):
    def move(elf):
        place = elf.relocation(".text", ABS32)
        elf.put("<I", place, struct.unpack_from("<I", elf.bytes, place)[0] + by)
    return move


def repeat_relocation(elf):
    first, second = elf.relocations(".text", ABS32)[:2]
    elf.bytes[second:second + 8] = elf.bytes[first:first + 8]


def forget_addresses(elf):
    for section in (".text", ".rdata"):
        for at in elf.relocations(section, ABS32):
            elf.bytes[at + 4] = 0


def misdirect(section):
    def put(elf):
        place, = struct.unpack_from("<I", elf.bytes, elf.relocation(section, ABS32))
        elf.put("<I", elf.get(section, 4) + place - elf.get(section, 3), 0x00F00000)
    return put


DAMAGES = {
    "no ELF": (with_bytes("<B", 0, 0), "it is no ELF file"),
    "64 bits": (with_bytes("<B", 4, 2), "it is not 32-bit little-endian"),
    "big-endian": (with_bytes("<B", 5, 2), "it is not 32-bit little-endian"),
    "an object": (with_bytes("<H", 16, 1), "it is no linked executable"),
    "another machine": (with_bytes("<H", 18, 3), "it is not for ARM"),
    "big-endian code": (with_bytes("<I", 36, 0x05800000), "it is of another ABI: flags 0x5800000"),
    "hard floating point": (with_bytes("<I", 36, 0x05000400), "it is of another ABI: flags 0x5000400"),
    "another ABI": (with_bytes("<I", 36, 0x04000000), "it is of another ABI: flags 0x4000000"),
    "entry in data": (with_bytes("<I", 24, 0x100000), "its entry point lies outside its code"),
    "Thumb entry": (lambda elf: elf.put("<I", 24, elf_entry() + 1), "its entry point lies outside its code"),
    "section headers outside": (with_bytes("<I", 32, 0x7FFFFFFF), "a section header lies outside the file"),
    "section headers of another size": (with_bytes("<H", 46, 64), "section headers have another size"),
    "names in no section": (with_bytes("<H", 50, 999), "the section names lie in a section that is not there"),
    "name outside": (with_header(".text", 0, 0xFFFFFF), "a section's name lies outside its table"),
    "unknown section": (lambda elf: elf.header(".debug_frame", 2, 2), "there is no place for section .debug_frame"),
    "constructors": (with_header(".rdata", 1, 14), ".rdata is of another type"),
    "executable data": (with_header(".rdata", 2, 6), ".rdata mixes code and data"),
    "writable code": (with_header(".text", 2, 7), ".text is writable"),
    "section off its page": (with_header(".text", 3, 0x1004), ".text does not begin at a page"),
    "overlapping sections": (lambda elf: elf.header(".edata", 3, elf.get(".rdata", 3)), " overlaps what comes before it"),
    "section over the headers": (with_header(".text", 3, 0), ".text overlaps what comes before it"),
    "section outside": (with_header(".text", 5, 0x7FFFFFFF), "a section lies outside the file"),
    "image too large": (with_header(".idata", 3, 0x10000000), "the image is too large"),
    "two sections of one name": (lambda elf: elf.rename(".edata", ".idata"), "it has two sections of one name"),
    "no exports": (with_header(".edata", 2, 0), "it lacks code, exports or imports"),
    "addends apart": (with_header(".rel.text", 1, 4), ".rel.text is of an unknown form"),
    "relocations as mere bytes": (with_header(".rel.text", 1, 1), ".rel.text is of an unknown form"),
    "relocations of nothing": (with_header(".rel.rdata", 7, 0), ".rel.rdata relocates nothing"),
    "relocations under another name": (lambda elf: (elf.rename(".rel.text", ".text.rel"), elf.header(".rel.text", 1, 1)),
                                       "it was linked without --emit-relocs"),
    "relocations of another size": (with_header(".rel.text", 9, 12), ".rel.text has entries of another size"),
    "relocations of no section": (with_header(".rel.text", 7, 999),
                                  "relocated words lie in a section that is not there"),
    "no symbols": (with_header(".symtab", 1, 1), "it has 0 symbol tables"),
    "unknown relocation": (retype, "is of the unknown type 43"),
    "relocation outside": (move_relocation(0x1000000), "lies outside .text"),
    "relocation off its word": (move_relocation(2), "is of no whole word"),
    "undefined symbol": (with_symbol(ABS32, "<H", SECTION, 0), "which is in no section"),
    "absolute symbol": (with_symbol(ABS32, "<H", SECTION, 0xFFF1), "which is in no section"),
    "call of an undefined symbol": (with_symbol(CALL, "<H", SECTION, 0), "which is in no section"),
    "jump to an absolute symbol": (with_symbol(JUMP24, "<H", SECTION, 0xFFF1), "which is in no section"),
    "symbol that is not loaded": (lambda elf: elf.put_symbol(ABS32, "<H", SECTION, elf.index[".symtab"]),
                                  "leads out of the image"),
    "symbol in a section that is not there": (with_symbol(ABS32, "<H", SECTION, 999),
                                              "symbols lie in a section that is not there"),
    "symbol's name outside": (with_symbol(ABS32, "<I", NAME, 0xFFFFFF), "a symbol's name lies outside its table"),
    "symbols' names in no section": (with_header(".symtab", 6, 999),
                                     "the symbols' names lie in a section that is not there"),
    "Thumb code": (with_symbol_name(b"$a", b"$t"), "it holds Thumb code, or the linker's own veneers: $t"),
    "a veneer": (with_symbol_name(b"AgentStartUp", b"Agent_veneer"), "the linker's own veneers: Agent_veneer"),
    "a change to Thumb": (with_symbol_name(b"AgentStartUp", b"Age_from_arm"), "the linker's own veneers: Age_from_arm"),
    "missing symbol": (forget_symbol, "is against a symbol that is not there"),
    "word relocated twice": (repeat_relocation, "a word is relocated twice"),
    "nothing to move": (forget_addresses, "nothing in it has to be moved"),
    "address outside": (misdirect(".text"), "leads out of the image"),
    "export outside": (misdirect(".edata"), "leads out of the image"),
    "import outside": (misdirect(".idata"), "leads out of the image"),
    "addresses in an empty section": (with_header(".rdata", 5, 0), "leads out of the image"),
}


class DamagedElfTest(unittest.TestCase):
    def test_each_damage_is_refused_for_what_it_is(self):
        for name, (damage, complaint) in DAMAGES.items():
            with self.subTest(name):
                elf = Damaged()
                damage(elf)
                library, told = convert(elf.bytes)
                self.assertIsNone(library)
                self.assertIn(complaint, told)
                self.assertNotIn("Traceback", told)

    def test_a_file_cut_anywhere_is_refused_with_a_reason(self):
        contents = ELF.read_bytes()
        for size in [*range(0, 64), *range(64, len(contents), len(contents) // 40)]:
            with self.subTest(size=size):
                library, told = convert(contents[:size])
                self.assertIsNone(library)
                self.assertRegex(told, r"^[a-z][^\n]*$")

    def test_a_missing_file_is_named(self):
        run = subprocess.run([sys.executable, CONVERTER, "/no/such.elf", "/no/such.dll"], capture_output=True, text=True)
        self.assertNotEqual(run.returncode, 0)
        self.assertEqual(run.stderr, "/no/such.elf: No such file or directory\n")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    TOOLS, ELF, DLL = (pathlib.Path(sys.argv.pop(1)) for _ in range(3))
    CONVERTER = TOOLS / "elf_to_pe.py"
    program = unittest.main(exit=False)
    write_result(program.result)
    sys.exit(not program.result.wasSuccessful())
