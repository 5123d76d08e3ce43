# Nobody constructs static objects on the handset: a library for x86 with one that needs it must not come into being. The
# converter's own tests have the same for ARM.
"""Usage: static_object_test.py SOURCE_TREE [unittest options]"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from unittest_result import write_result

LIBRARY = """
extern "C" int AgentStartUp() { return 1; }
int Answer() { return 42; }
int answer = %s;
"""


class StaticObjectTest(unittest.TestCase):
    def link(self, initializer):
        """What the linker complains of, empty when it made the library."""
        with tempfile.TemporaryDirectory() as directory:
            source = pathlib.Path(directory, "library.cpp")
            source.write_text(LIBRARY % initializer)
            run = subprocess.run(
                ["i686-w64-mingw32-g++-win32", "-O0", "-shared", "-nostdlib", "-Wl,--gc-sections",
                 "-Wl,--entry,_AgentStartUp", SOURCE_TREE / "src/platform/wince/x86.ld", source,
                 "-o", pathlib.Path(directory, "library.dll")], capture_output=True, text=True)
            self.assertEqual(run.returncode == 0, run.stderr == "", run.stderr)
            return run.stderr

    def test_constants_are_linked(self):
        self.assertEqual(self.link("42"), "")

    def test_an_object_that_needs_constructing_is_refused(self):
        self.assertIn("a static object needs constructing, and nobody does that", self.link("Answer()"))


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    SOURCE_TREE = pathlib.Path(sys.argv.pop(1))
    program = unittest.main(exit=False)
    write_result(program.result)
    sys.exit(not program.result.wasSuccessful())
