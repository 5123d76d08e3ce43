# What the build says of the handset library's size, and that it stops where the handset would.
"""Usage: library_figures_test.py DIRECTORY_OF_TOOLS QV_RAPI.elf QV_RAPI.dll [unittest options]"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from unittest_result import write_result


class LibraryFiguresTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.library = pathlib.Path(directory.name, "QV_RAPI.dll")
        self.library.write_bytes(DLL.read_bytes())
        self.stack_usage = pathlib.Path(directory.name, "stack.su")

    def figures(self, *frames, for_phone=True):
        self.stack_usage.write_text("".join(f"{frame}\n" for frame in frames))
        command = [sys.executable, TOOLS / "library_figures.py", self.library, self.stack_usage]
        command += ["--elf", ELF] if for_phone else []
        run = subprocess.run(command, capture_output=True, text=True)
        return run.returncode, run.stdout, run.stderr

    def test_the_size_is_told_as_a_whole_and_by_section(self):
        _, told, _ = self.figures()
        self.assertRegex(told, rf"^QV_RAPI.dll: {len(DLL.read_bytes())} bytes of less than 98304: \.text \d+, \.rdata \d+")

    def test_large_functions_and_data_are_told_by_name(self):
        _, told, _ = self.figures()
        self.assertRegex(told, r"(?m)^   code +\d{4}  qv::.*\(.*\)")
        self.assertRegex(told, r"(?m)^   data +\d{4}  qv::.*kContactFields$")

    def test_stack_frames_above_a_kilobyte_are_told(self):
        code, told, complaint = self.figures("a.cpp:1:2:Small\t1024\tstatic", "a.cpp:3:4:Large\t4096\tstatic")
        self.assertIn("  stack   4096  a.cpp:3:4:Large\n", told)
        self.assertNotIn("Small", told)
        self.assertEqual((code, complaint), (0, ""))

    def test_a_frame_above_four_kilobytes_fails(self):
        code, _, complaint = self.figures("a.cpp:3:4:Huge\t4097\tstatic")
        self.assertEqual(code, 1)
        self.assertIn("the stack frame of a.cpp:3:4:Huge is larger than 4096 bytes", complaint)

    def test_a_frame_of_no_fixed_size_fails(self):
        code, _, complaint = self.figures("a.cpp:3:4:Growing\t16\tdynamic")
        self.assertEqual(code, 1)
        self.assertIn("the stack frame of a.cpp:3:4:Growing", complaint)

    def test_a_phones_library_of_96_kilobytes_fails(self):
        self.grow_to(96 * 1024 - 1)
        self.assertEqual(self.figures()[0], 0)
        self.grow_to(96 * 1024)
        code, _, complaint = self.figures()
        self.assertEqual(code, 1)
        self.assertIn("it is not smaller than 98304 bytes", complaint)

    def test_a_library_for_the_emulator_may_be_larger_but_not_its_frames(self):
        self.grow_to(96 * 1024)
        code, told, complaint = self.figures(for_phone=False)
        self.assertRegex(told, r"^QV_RAPI.dll: 98304 bytes: \.text \d+, \.rdata \d+")
        self.assertEqual((code, complaint), (0, ""))
        code, _, complaint = self.figures("a.cpp:3:4:Huge\t4097\tstatic", for_phone=False)
        self.assertEqual(code, 1)
        self.assertIn("the stack frame of a.cpp:3:4:Huge", complaint)

    def grow_to(self, size):
        self.library.write_bytes(DLL.read_bytes().ljust(size, b"\0"))


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    TOOLS, ELF, DLL = (pathlib.Path(sys.argv.pop(1)) for _ in range(3))
    program = unittest.main(exit=False)
    write_result(program.result)
    sys.exit(not program.result.wasSuccessful())
