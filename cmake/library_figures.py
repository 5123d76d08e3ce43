#!/usr/bin/env python3
"""Prints how large a handset library and its parts are, and refuses one that outgrows the handset.

Usage: library_figures.py LIBRARY.dll LIBRARY.elf STACK_USAGE...

The ELF file is what the library was made from; the others are what the compiler says of the functions' stack frames.
"""
import pathlib
import subprocess
import sys

from elf_to_pe import Elf

WORTH_TELLING = 1024
LARGEST_LIBRARY = 96 * 1024
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
        for line in pathlib.Path(file).read_text(encoding="utf-8").splitlines():
            function, size, kind = line.split("\t")
            yield function, int(size) if kind == "static" else sys.maxsize


def main(library, elf_file, stack_usage):
    elf = Elf(pathlib.Path(elf_file).read_bytes())
    size = pathlib.Path(library).stat().st_size
    print(f"{pathlib.Path(library).name}: {size} bytes of at most {LARGEST_LIBRARY}:",
          ", ".join(f"{section.name} {section.size}" for section in elf.image_sections()))
    stack = large(frames(stack_usage))
    print_figures("code", large(symbols(elf, FUNCTION)))
    print_figures("data", large(symbols(elf, OBJECT)))
    print_figures("stack", stack)

    problems = [f"the stack frame of {function} is larger than {LARGEST_FRAME} bytes"
                for function, frame in stack if frame > LARGEST_FRAME]
    if size > LARGEST_LIBRARY:
        problems.append(f"it is larger than {LARGEST_LIBRARY} bytes")
    return "\n".join(f"{library}: {problem}" for problem in problems) or None


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2], sys.argv[3:]))
