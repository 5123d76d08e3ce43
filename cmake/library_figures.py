#!/usr/bin/env python3
"""Prints how large a handset library and its parts are, and refuses one that outgrows the handset.

The library for ARM is what phones get: it must stay small, and the ELF file that it was made from tells the sizes of
its functions and data. The library for x86 is for the emulator, which has room; its linker's file knows no such sizes.
"""
import argparse
import pathlib
import struct
import subprocess
import sys

from elf_to_pe import Elf

WORTH_TELLING = 1024
TOO_LARGE_FOR_A_PHONE = 96 * 1024
# A handset's stack grows when the page behind its end is touched; a frame that reaches beyond that page may not find it.
LARGEST_FRAME = 4096

FUNCTION, OBJECT = 2, 1


def plain(names):
    """Names as in the source."""
    filtered = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True)
    return filtered.stdout.splitlines()


def print_figures(what, figures):
    for (_, size), name in zip(figures, plain([name for name, _ in figures])):
        print(f"{what:>7} {size:6}  {name}")


def large(figures):
    return sorted((figure for figure in set(figures) if figure[1] > WORTH_TELLING), key=lambda figure: -figure[1])


def symbols(elf, kind):
    return [(name, size) for name, _, size, info, *_ in elf.symbols() if info & 0xF == kind]


def frames(stack_usage):
    """(function, bytes) of each frame; one whose size is not fixed counts as too large."""
    for file in stack_usage:
        for line in file.read_text(encoding="utf-8").splitlines():
            function, size, kind = line.split("\t")
            yield function, int(size) if kind == "static" else sys.maxsize


def section_sizes(library):
    """(name, bytes in memory) of each section of a PE file."""
    header, = struct.unpack_from("<I", library, 0x3C)
    count, = struct.unpack_from("<H", library, header + 6)
    optional_size, = struct.unpack_from("<H", library, header + 20)
    table = header + 24 + optional_size
    for name, size in struct.iter_unpack("<8sI28x", library[table:table + 40 * count]):
        yield name.rstrip(b"\0").decode(), size


def main(library, elf_file, stack_usage):
    contents = library.read_bytes()
    limit = f" of less than {TOO_LARGE_FOR_A_PHONE}" if elf_file else ""
    print(f"{library.name}: {len(contents)} bytes{limit}:",
          ", ".join(f"{name} {size}" for name, size in section_sizes(contents)))
    if elf_file:
        elf = Elf(elf_file.read_bytes())
        print_figures("code", large(symbols(elf, FUNCTION)))
        print_figures("data", large(symbols(elf, OBJECT)))
    stack = large(frames(stack_usage))
    print_figures("stack", stack)

    problems = [f"the stack frame of {function} is larger than {LARGEST_FRAME} bytes"
                for function, frame in stack if frame > LARGEST_FRAME]
    if elf_file and len(contents) >= TOO_LARGE_FOR_A_PHONE:
        problems.append(f"it is not smaller than {TOO_LARGE_FOR_A_PHONE} bytes")
    return "\n".join(f"{library}: {problem}" for problem in problems) or None


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("library", type=pathlib.Path, metavar="LIBRARY.dll")
    parser.add_argument("--elf", type=pathlib.Path, metavar="LIBRARY.elf",
                        help="what the library for ARM was made from")
    parser.add_argument("stack_usage", nargs="+", type=pathlib.Path, metavar="STACK_USAGE.su",
                        help="what the compiler says of the functions' stack frames")
    arguments = parser.parse_args()
    sys.exit(main(arguments.library, arguments.elf, arguments.stack_usage))
