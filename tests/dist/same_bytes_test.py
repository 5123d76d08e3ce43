# The same sources give the same handset libraries, byte for byte, wherever they are built.
"""Usage: same_bytes_test.py SOURCE_TREE DIST [unittest options]"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from unittest_result import write_result


def copy_of_sources(directory):
    def not_a_source(folder, _):
        return {"build", "dist", ".git"} if pathlib.Path(folder) == SOURCE_TREE else set()
    return shutil.copytree(SOURCE_TREE, pathlib.Path(directory, "elsewhere"), ignore=not_a_source)


class SameBytesTest(unittest.TestCase):
    def build_elsewhere(self, preset):
        with tempfile.TemporaryDirectory() as directory:
            tree = copy_of_sources(directory)
            for command in (["cmake", "--preset", preset], ["cmake", "--build", "--preset", preset, "--target", "qv_rapi"]):
                run = subprocess.run(command, cwd=tree, capture_output=True, text=True)
                self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
            return pathlib.Path(tree, "build", preset, "src", "QV_RAPI.dll").read_bytes()

    def test_x86(self):
        self.assertEqual(self.build_elsewhere("wince-x86"), (DIST / "wince-x86" / "QV_RAPI.dll").read_bytes())

    def test_arm(self):
        self.assertEqual(self.build_elsewhere("wince-armv4"), (DIST / "wince-armv4" / "QV_RAPI.dll").read_bytes())


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    SOURCE_TREE, DIST = (pathlib.Path(sys.argv.pop(1)) for _ in range(2))
    program = unittest.main(exit=False)
    write_result(program.result)
    sys.exit(not program.result.wasSuccessful())
