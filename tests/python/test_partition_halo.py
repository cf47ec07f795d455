"""bench/partition_halo.py on a strip small enough to count by hand.

Skipped, saying so, where METIS's programs (Debian package metis) are missing.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOL = ROOT / "bench" / "partition_halo.py"

# Two 50 x 100 cells, each cut into two triangles (nodes 1-3 along y = 0,
# 4-6 along y = 100), and a tool triangle far below that is left out.
STRIP = """NODES
1 X 0 Y 0 Z 0
2 X 50 Y 0 Z 0
3 X 100 Y 0 Z 0
4 X 0 Y 100 Z 0
5 X 50 Y 100 Z 0
6 X 100 Y 100 Z 0
7 X 0 Y 0 Z -500
8 X 100 Y 0 Z -500
9 X 0 Y 100 Z -500
ELEMENTS TYPE MEMBRANE_3
1 NODES 1 2 5 MATERIAL SHEET T 1
2 NODES 1 5 4 MATERIAL SHEET T 1
3 NODES 2 3 6 MATERIAL SHEET T 1
4 NODES 2 6 5 MATERIAL SHEET T 1
ELEMENTS TYPE CONTACT_TRIANGLE
5 NODES 7 8 9 T 1
"""


@unittest.skipIf(shutil.which("gpmetis") is None or shutil.which("m2gmetis") is None,
                 "METIS is not installed (Debian package metis)")
class PartitionHaloTest(unittest.TestCase):
    def test_two_parts_of_a_strip_share_the_middle_line(self):
        # The dual graph is the chain 2-1-4-3: the one balanced cut of a
        # single edge splits the cells, and nodes 2 and 5 are the halo. Part 0
        # owns both; each crossing is 48 bytes of force and 48 of position
        # each way: 192 bytes per part, 0.0192 us; messages: one per phase
        # and the step's allreduce, 3 x 2 us; elements 2 x 0.21 us. The
        # redundant update: 192 bytes, one message and the allreduce. Within
        # 60 mm part 0 sees nodes 3 and 6 besides its own, part 1 nodes 1 and 4.
        with tempfile.TemporaryDirectory() as work:
            deck = pathlib.Path(work) / "strip.txt"
            deck.write_text(STRIP)
            ran = subprocess.run([sys.executable, str(TOOL), "--deck", str(deck), "--parts", "2", "--reach", "60"],
                                 capture_output=True, text=True, stdin=subprocess.DEVNULL)
        self.assertEqual(ran.returncode, 0, ran.stderr)
        self.assertIn("strip.txt: 4 elements, 9 nodes", ran.stdout)
        self.assertIn("| 2 | 2 | 2 / 2 | 1 | 0.2 | 6.0 | 0.4 | 14.331 | 9.570 | 2 / 2 | 14.377 |", ran.stdout)
        self.assertIn("at every part count tried", ran.stdout)


if __name__ == "__main__":
    unittest.main()
