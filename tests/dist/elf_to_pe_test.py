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
CODE, READ_ONLY, WRITABLE = 0x60000020, 0x40000040, 0xC0000040
FLAGS = {".text": CODE, ".rdata": READ_ONLY, ".edata": READ_ONLY, ".idata": WRITABLE, ".data": WRITABLE}


def readelf(*options):
    """What binutils, which has nothing to do with the converter, read in the ELF file."""
    command = ["arm-none-eabi-readelf", "--wide", *options, str(ELF)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def elf_sections():
    """(name, address, place in the file, size) of what is loaded."""
    line = re.compile(r"\] (\.\S+) +PROGBITS +(\w{8}) (\w{6}) (\w{6}) \w\w +\w*A")
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
        self.assertEqual(optional.AddressOfEntryPoint, elf_entry())
        self.assertEqual((optional.ImageBase, optional.SectionAlignment, optional.FileAlignment),
                         (IMAGE_BASE, 0x1000, 0x200))
        self.assertEqual(optional.BaseOfCode, 0x1000)
        last = self.pe.sections[-1]
        self.assertEqual(optional.SizeOfImage, (last.VirtualAddress + last.Misc_VirtualSize + 0xFFF) & ~0xFFF)
        code = [section.SizeOfRawData for section in self.pe.sections if section.Characteristics & 0x20]
        self.assertEqual(optional.SizeOfCode, sum(code))
        data = [section.SizeOfRawData for section in self.pe.sections if section.Characteristics & 0x40]
        self.assertEqual(optional.SizeOfInitializedData, sum(data))

    def test_the_sections_are_those_of_the_elf_file(self):
        found = [(section.Name.rstrip(b"\0").decode(), section.VirtualAddress, section.Misc_VirtualSize,
                  section.Characteristics) for section in self.pe.sections[:-1]]
        self.assertEqual(found, [(name, address, size, FLAGS[name]) for name, address, _, size in elf_sections()])
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
    """The ELF file, with a way to what is damaged in it."""

    def __init__(self):
        self.bytes = bytearray(ELF.read_bytes())
        self.headers, = struct.unpack_from("<I", self.bytes, 32)
        names = readelf("-S")
        self.index = {name: int(number) for number, name in re.findall(r"\[ *(\d+)\] (\.\S+)", names)}

    def put(self, form, offset, value):
        struct.pack_into(form, self.bytes, offset, value)

    def header(self, section, field, value):
        """Sets a word of a section's header: 0 name, 1 type, 2 flags, 3 address, 4 offset, 5 size, ..."""
        self.put("<I", self.headers + 40 * self.index[section] + 4 * field, value)

    def get(self, section, field):
        return struct.unpack_from("<I", self.bytes, self.headers + 40 * self.index[section] + 4 * field)[0]

    def relocation(self, section, kind):
        """Where in the file the section's first relocation of this kind is."""
        start, size = self.get(".rel" + section, 4), self.get(".rel" + section, 5)
        return next(at for at in range(start, start + size, 8) if self.bytes[at + 4] == kind)


def with_header(section, field, value):
    return lambda elf: elf.header(section, field, value)


def with_bytes(form, offset, value):
    return lambda elf: elf.put(form, offset, value)


def retype(elf):
    elf.put("<B", elf.relocation(".text", 2) + 4, 43)  # R_ARM_MOVW_ABS_NC: half an address in an instruction


def undefine(elf):
    place = elf.relocation(".text", 2)
    symbol = struct.unpack_from("<I", elf.bytes, place + 4)[0] >> 8
    elf.put("<H", elf.get(".symtab", 4) + 16 * symbol + 14, 0)


def make_absolute(elf):
    place = elf.relocation(".text", 2)
    symbol = struct.unpack_from("<I", elf.bytes, place + 4)[0] >> 8
    elf.put("<H", elf.get(".symtab", 4) + 16 * symbol + 14, 0xFFF1)


def forget_symbol(elf):
    elf.put("<I", elf.relocation(".text", 2) + 4, 0xFFFFFF02)


def move_relocation(by):
    def move(elf):
        place = elf.relocation(".text", 2)
        elf.put("<I", place, struct.unpack_from("<I", elf.bytes, place)[0] + by)
    return move


def repeat_relocation(elf):
    first = elf.relocation(".text", 2)
    start, size = elf.get(".rel.text", 4), elf.get(".rel.text", 5)
    second = next(at for at in range(first + 8, start + size, 8) if elf.bytes[at + 4] == 2)
    elf.bytes[second:second + 8] = elf.bytes[first:first + 8]


def misdirect(elf):
    place, = struct.unpack_from("<I", elf.bytes, elf.relocation(".text", 2))
    elf.put("<I", elf.get(".text", 4) + place - elf.get(".text", 3), 0x00F00000)


DAMAGES = {
    "no ELF": (with_bytes("<B", 0, 0), "it is no ELF file"),
    "64 bits": (with_bytes("<B", 4, 2), "it is not 32-bit little-endian"),
    "big-endian": (with_bytes("<B", 5, 2), "it is not 32-bit little-endian"),
    "an object": (with_bytes("<H", 16, 1), "it is no linked executable"),
    "another machine": (with_bytes("<H", 18, 3), "it is not for ARM"),
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
    "no exports": (with_header(".edata", 2, 0), "it lacks code, exports or imports"),
    "addends apart": (with_header(".rel.text", 1, 4), ".rel.text is of the unknown form RELA"),
    "relocations of another size": (with_header(".rel.text", 9, 12), ".rel.text has entries of another size"),
    "relocations of no section": (with_header(".rel.text", 7, 999),
                                  "relocated words lie in a section that is not there"),
    "no symbols": (with_header(".symtab", 1, 1), "it has 0 symbol tables"),
    "unknown relocation": (retype, "is of the unknown type 43"),
    "relocation outside": (move_relocation(0x1000000), "lies outside .text"),
    "relocation off its word": (move_relocation(2), "is of no whole word"),
    "undefined symbol": (undefine, "which is in no section"),
    "absolute symbol": (make_absolute, "which is in no section"),
    "missing symbol": (forget_symbol, "is against a symbol that is not there"),
    "word relocated twice": (repeat_relocation, "a word is relocated twice"),
    "address outside": (misdirect, "leads out of the image"),
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
