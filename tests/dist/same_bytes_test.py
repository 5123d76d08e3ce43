# The same sources give the same handset libraries, byte for byte, wherever they are built.
"""Usage: same_bytes_test.py SOURCE_TREE DIST [unittest options]"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from unittest_result import write_result


class SameBytesTest(unittest.TestCase):
    def build_again(self, preset):
        with tempfile.TemporaryDirectory() as directory:
            for command in (["cmake", "--preset", preset, "-B", directory], ["cmake", "--build", directory, "--target", "qv_rapi"]):
                run = subprocess.run(command, cwd=SOURCE_TREE, capture_output=True, text=True)
                self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
            return pathlib.Path(directory, "src", "QV_RAPI.dll").read_bytes()

    def test_x86(self):
        self.assertEqual(self.build_again("wince-x86"), (DIST / "wince-x86" / "QV_RAPI.dll").read_bytes())

    def test_arm(self):
        self.assertEqual(self.build_again("wince-armv4"), (DIST / "wince-armv4" / "QV_RAPI.dll").read_bytes())


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    SOURCE_TREE, DIST = (pathlib.Path(sys.argv.pop(1)) for _ in range(2))
    program = unittest.main(exit=False)
    write_result(program.result)
    sys.exit(not program.result.wasSuccessful())
