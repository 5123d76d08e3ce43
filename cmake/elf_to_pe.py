#!/usr/bin/env python3
"""Makes a Windows CE DLL for ARM out of an ELF file that was linked for it.

Usage: elf_to_pe.py INPUT.elf OUTPUT.dll

The ELF file is linked at address 0, its sections at pages of their own, its relocations kept, the import and export
tables in it as they have to be (src/platform/wince/armv4.ld). So addresses in it are relative ones already; what
remains is to write the headers, to move the image to its base, and to list the words that hold addresses. Whatever is
not known to come out right is refused.
"""
import re
import struct
import sys

PAGE = 0x1000
FILE_ALIGNMENT = 0x200
IMAGE_BASE = 0x10000000
HEADER_SIZE = 0x400

# Which sections there may be, and what the system makes of each: code, data, zeros; readable, writable, executable.
CODE, DATA, ZEROS = 0x20, 0x40, 0x80
READABLE, WRITABLE, EXECUTABLE = 0x40000000, 0x80000000, 0x20000000
SECTIONS = {
    ".text": CODE | READABLE | EXECUTABLE,
    ".rdata": DATA | READABLE,
    ".data": DATA | READABLE | WRITABLE,
    ".bss": ZEROS | READABLE | WRITABLE,
    ".edata": DATA | READABLE,
    ".idata": DATA | READABLE | WRITABLE,  # the system writes the functions' addresses into it
}
RELOC_FLAGS = 0x02000000 | DATA | READABLE  # discarded once it was used
DIRECTORIES = {".edata": 0, ".idata": 1, ".reloc": 5}
DIRECTORY_COUNT = 16

# ELF: section types, section flags, section indices of symbols that are in none, relocation types.
PROGBITS, SYMTAB, RELA, NOBITS, REL = 1, 2, 4, 8, 9
SHF_WRITE, SHF_ALLOC, SHF_EXECINSTR = 1, 2, 4
UNDEFINED, FIRST_RESERVED = 0, 0xFF00
R_NONE, R_ABS32, R_CALL, R_JUMP24, R_V4BX = 0, 2, 28, 29, 40
# Without a target: a tie between sections, and a mark on instructions.
MARKS = {R_NONE, R_V4BX}
# Distances within the image, which the linker has settled.
DISTANCES = {R_CALL, R_JUMP24}


class Refused(Exception):
    """The ELF file is damaged, or holds what this program does not know."""


def require(holds, problem):
    if not holds:
        raise Refused(problem)


def round_up(size, unit):
    return (size + unit - 1) // unit * unit


class Section:
    """One section of an ELF file, `data` as it lies there."""

    def __init__(self, elf, header):
        (self.name_offset, self.type, self.flags, self.address, self.offset, self.size,
         self.link, self.info, self.alignment, self.entry_size) = header
        self.name = ""
        self.data = b"" if self.type == NOBITS else elf.bytes(self.offset, self.size, "a section")

    def entries(self, form):
        """The section as a table."""
        size = struct.calcsize(form)
        require(self.entry_size == size and self.size % size == 0, f"{self.name} has entries of another size")
        return list(struct.iter_unpack(form, self.data))


class Elf:
    """An executable ELF file for ARM, little-endian, 32 bits; what else it may be is refused."""

    def __init__(self, contents):
        self._contents = contents
        require(self.bytes(0, 4, "the ELF header") == b"\x7fELF", "it is no ELF file")
        (ident, kind, machine, _, self.entry, _, section_offset, flags, _, _, _, section_size, section_count,
         names_index) = self.unpack("<16s2H5I6H", 0, "the ELF header")
        require(ident[4:6] == b"\x01\x01", "it is not 32-bit little-endian")
        require(kind == 2, "it is no linked executable")
        require(machine == 40, "it is not for ARM")
        require(flags & 0xFF000000 == 0x05000000 and not flags & 0x00800400, "it is of another ABI: "
                f"flags {flags:#x}")  # version 5, neither hard floating point nor big-endian data
        require(section_size == 40, "section headers have another size")
        self.sections = [Section(self, self.unpack("<10I", section_offset + 40 * i, "a section header"))
                         for i in range(section_count)]
        names = self.section(names_index, "the section names").data
        for section in self.sections:
            section.name = text(names, section.name_offset, "a section's name")

    def bytes(self, offset, size, what):
        require(offset + size <= len(self._contents), f"{what} lies outside the file")
        return self._contents[offset:offset + size]

    def unpack(self, form, offset, what):
        return struct.unpack(form, self.bytes(offset, struct.calcsize(form), what))

    def section(self, index, what):
        require(index < len(self.sections), f"{what} lie in a section that is not there")
        return self.sections[index]

    def symbols(self):
        """(name, value, size, info, other, section index) of each symbol."""
        tables = [section for section in self.sections if section.type == SYMTAB]
        require(len(tables) == 1, f"it has {len(tables)} symbol tables")
        names = self.section(tables[0].link, "the symbols' names").data
        return [(text(names, name, "a symbol's name"), *rest) for name, *rest in tables[0].entries("<3I2BH")]

    def image_sections(self):
        """What is loaded, in the order of its addresses."""
        loaded = [section for section in self.sections if section.flags & SHF_ALLOC and section.size]
        return sorted(loaded, key=lambda section: section.address)

    def has_address(self, address):
        """Is it of something in the image? A table's end counts."""
        return any(section.address <= address <= section.address + section.size for section in self.image_sections())


def text(table, offset, what):
    end = table.find(b"\0", offset)
    require(offset <= len(table) and end >= 0, f"{what} lies outside its table")
    return table[offset:end].decode("ascii", "replace")


def check_sections(elf):
    end = PAGE  # the headers have the first page
    for section in elf.image_sections():
        flags = SECTIONS.get(section.name)
        require(flags is not None, f"there is no place for section {section.name or '(without a name)'}")
        require(section.type == (NOBITS if flags & ZEROS else PROGBITS), f"{section.name} is of another type")
        require(bool(section.flags & SHF_EXECINSTR) == bool(flags & EXECUTABLE), f"{section.name} mixes code and data")
        require(not section.flags & SHF_WRITE or flags & WRITABLE, f"{section.name} is writable")
        require(section.address % PAGE == 0, f"{section.name} does not begin at a page")
        require(section.address >= end, f"{section.name} overlaps what comes before it")
        end = round_up(section.address + section.size, PAGE)
    require(end <= IMAGE_BASE, "the image is too large")
    names = [section.name for section in elf.image_sections()]
    require(len(set(names)) == len(names), "it has two sections of one name")
    require({".text", ".edata", ".idata"} <= set(names), "it lacks code, exports or imports")
    require(any(s.name == ".text" and s.address <= elf.entry < s.address + s.size and elf.entry % 4 == 0
                for s in elf.image_sections()), "its entry point lies outside its code")


def check_symbols(symbols):
    """Thumb code is called in other ways than ARM code is, and the linker's veneers hold addresses without telling."""
    for name, *_ in symbols:
        require(not re.search(r"^\$t(\.|$)|_veneer$|_from_(arm|thumb)$", name),
                f"it holds Thumb code, or the linker's own veneers: {name}")


def absolute_words(elf, relocations, symbols, target):
    """The places of `target` that hold addresses."""
    require(target.type != NOBITS, f"{target.name} has no words to relocate")
    for place, info in relocations.entries("<2I"):
        kind, symbol = info & 0xFF, info >> 8
        where = f"the relocation at {place:#x}"
        require(target.address <= place <= target.address + target.size, f"{where} lies outside {target.name}")
        require(symbol < len(symbols), f"{where} is against a symbol that is not there")
        if kind in MARKS:
            continue
        name, *_, section = symbols[symbol]
        require(UNDEFINED < section < FIRST_RESERVED, f"{where} is against {name or 'nothing'}, which is in no section")
        require(elf.section(section, "symbols").flags & SHF_ALLOC, f"{where} leads out of the image")
        if kind in DISTANCES:
            continue
        require(kind == R_ABS32, f"{where} is of the unknown type {kind}")
        require(place % 4 == 0 and place + 4 <= target.address + target.size, f"{where} is of no whole word")
        address, = struct.unpack_from("<I", target.data, place - target.address)
        require(elf.has_address(address), f"the word at {place:#x} leads out of the image")
        yield place


def fixups(elf):
    """The addresses of all words that move with the image. The tables hold relative addresses, which do not."""
    symbols = elf.symbols()
    check_symbols(symbols)
    relocated, found = set(), []
    for relocations in elf.sections:
        if relocations.type != REL and not relocations.name.startswith(".rel"):
            continue
        require(relocations.type == REL, f"{relocations.name} is of an unknown form")
        target = elf.section(relocations.info, "relocated words")
        require(relocations.name == ".rel" + target.name, f"{relocations.name} relocates {target.name or 'nothing'}")
        if target.flags & SHF_ALLOC:
            relocated.add(target.name)
            places = list(absolute_words(elf, relocations, symbols, target))
            found += places if target.name not in DIRECTORIES else []
    require({".text", ".edata", ".idata"} <= relocated, "it was linked without --emit-relocs")
    require(len(set(found)) == len(found), "a word is relocated twice")
    return sorted(found)


def image(elf, places):
    """The contents of the sections by their addresses, with the image at its base."""
    contents = {section.address: bytearray(section.data) for section in elf.image_sections()}
    for place in places:
        start = max(address for address in contents if address <= place)
        address, = struct.unpack_from("<I", contents[start], place - start)
        struct.pack_into("<I", contents[start], place - start, IMAGE_BASE + address)
    return contents


def relocation_blocks(places):
    """The .reloc section: for each page its address, the block's size, and 16 bits a word: type 3 and the offset."""
    blocks = b""
    for page in sorted({place // PAGE for place in places}):
        entries = [3 << 12 | place % PAGE for place in places if place // PAGE == page]
        entries += [0] * (len(entries) % 2)  # a block is whole words
        blocks += struct.pack(f"<2I{len(entries)}H", page * PAGE, 8 + 2 * len(entries), *entries)
    return blocks


def headers(entry, sections):
    """All headers. `sections`: name, address, size in memory, size in the file, place in the file, flags of each."""
    def total(kind):
        return sum(raw if kind != ZEROS else round_up(size, FILE_ALIGNMENT)
                   for _, _, size, raw, _, flags in sections if flags & kind)

    def first(kind):
        return min((address for _, address, _, _, _, flags in sections if flags & kind), default=0)

    directories = [(0, 0)] * DIRECTORY_COUNT
    for name, address, size, *_ in sections:
        if name in DIRECTORIES:
            directories[DIRECTORIES[name]] = (address, size)
    image_size = max(round_up(address + size, PAGE) for _, address, size, *_ in sections)
    dos = struct.pack("<2s58xI", b"MZ", 64)
    # ARM; no time stamp, so that the same sources give the same bytes; an executable 32-bit DLL without symbols.
    file_header = struct.pack("<2H3I2H", 0x1C0, len(sections), 0, 0, 0, 96 + 8 * DIRECTORY_COUNT, 0x210E)
    # Versions as in the x86 library: the system's and the subsystem's 4.10. Subsystem 9 is Windows CE.
    optional = struct.pack("<H2B9I6H4I2H6I", 0x10B, 0, 0, total(CODE), total(DATA), total(ZEROS), entry, first(CODE),
                           first(DATA), IMAGE_BASE, PAGE, FILE_ALIGNMENT, 4, 10, 0, 0, 4, 10, 0, image_size,
                           HEADER_SIZE, 0, 9, 0, 0x10000, 0x1000, 0x100000, 0x1000, 0, DIRECTORY_COUNT)
    optional += b"".join(struct.pack("<2I", *directory) for directory in directories)
    table = b"".join(struct.pack("<8s4I12xI", name.encode(), size, address, raw, place, flags)
                     for name, address, size, raw, place, flags in sections)
    return (dos + b"PE\0\0" + file_header + optional + table).ljust(HEADER_SIZE, b"\0")


def convert(contents):
    """The DLL's bytes for an ELF file's; Refused says what is wrong with it."""
    elf = Elf(contents)
    check_sections(elf)
    places = fixups(elf)
    parts = [(section.name, section.address, section.size, SECTIONS[section.name])
             for section in elf.image_sections()]
    data = image(elf, places)
    blocks = relocation_blocks(places)
    require(blocks, "nothing in it has to be moved")
    end = round_up(parts[-1][1] + parts[-1][2], PAGE)
    parts.append((".reloc", end, len(blocks), RELOC_FLAGS))
    data[end] = blocks

    sections, body = [], b""
    for name, address, size, flags in parts:
        raw = bytes(data[address]).ljust(round_up(len(data[address]), FILE_ALIGNMENT), b"\0")
        sections.append((name, address, size, len(raw), HEADER_SIZE + len(body) if raw else 0, flags))
        body += raw
    return headers(elf.entry, sections) + body


def main(source, target):
    try:
        with open(source, "rb") as file:
            library = convert(file.read())
        with open(target, "wb") as file:
            file.write(library)
    except Refused as problem:
        sys.exit(f"{source}: {problem}")
    except OSError as problem:
        sys.exit(f"{problem.filename}: {problem.strerror}")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
