"""The helper scripts under tools/ on decks and results of real runs.

Run by CTest with /usr/bin/python3; DRAPEX is the built program. A test whose
libraries (matplotlib, vtk) or display cannot be had is skipped, saying why.
"""
import math
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from deck_blocks import read_blocks

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ROOT / "tools"
DRAPEX = os.environ.get("DRAPEX", str(ROOT / "build" / "drapex"))


def tool(name, *args):
    return subprocess.run([sys.executable, str(TOOLS / name), *map(str, args)], capture_output=True,
                          text=True, stdin=subprocess.DEVNULL)


def run_deck(deck):
    return subprocess.run([DRAPEX, deck.name], cwd=deck.parent, capture_output=True, text=True,
                          stdin=subprocess.DEVNULL)


def read_deck(deck):
    """Nodes {n: [x, y, z]}, elements {type: {n: [nodes]}}, constraint of each node."""
    nodes, words, elements, _ = read_blocks(deck)
    return (nodes, {kind: {n: ids for n, (ids, _) in per.items()} for kind, per in elements.items()},
            {n: w["CONSTRAINT"] for n, w in words.items() if "CONSTRAINT" in w})


def signed_area(nodes, t):
    a, b, c = (nodes[i] for i in t)
    return 0.5 * ((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]))


class Scratch(unittest.TestCase):
    def setUp(self):
        self.dir = pathlib.Path(tempfile.mkdtemp(prefix="drapex_tools_"))
        self.addCleanup(shutil.rmtree, self.dir, True)


class GenDeck(Scratch):
    def generate(self, name, *options):
        deck = self.dir / name
        r = tool("gendeck.py", *options, "-o", deck)
        self.assertEqual(r.returncode, 0, r.stderr)
        return deck, r

    def assert_numbered_without_gaps(self, nodes, elements):
        self.assertEqual(sorted(nodes), list(range(1, len(nodes) + 1)))
        numbers = [n for per_type in elements.values() for n in per_type]
        self.assertEqual(sorted(numbers), list(range(1, len(numbers) + 1)))
        for per_type in elements.values():
            for ids in per_type.values():
                self.assertTrue(all(i in nodes for i in ids))

    def test_rectangle_patterns_tile_the_sheet_with_upward_triangles(self):
        for pattern in ("right", "left", "alternate"):
            with self.subTest(pattern=pattern):
                deck, r = self.generate(pattern + ".txt", "--size", 3, 2, "--div", 3, 4, "--origin", 1, -1,
                                        0.5, "--pattern", pattern)
                self.assertEqual(r.stdout, f"{deck}: 20 nodes, 24 elements\n")
                nodes, elements, _ = read_deck(deck)
                self.assert_numbered_without_gaps(nodes, elements)
                areas = [signed_area(nodes, t) for t in elements["MEMBRANE_3"].values()]
                self.assertEqual(len(areas), 24)
                for a in areas:
                    self.assertAlmostEqual(a, 0.25, places=12)
                self.assertEqual(nodes[20], [4.0, 1.0, 0.5])

    def test_disc_is_an_inscribed_polygon_of_upward_triangles_clamped_on_its_rim(self):
        rings, radius = 5, 2.0
        deck, _ = self.generate("disc.txt", "--mesh", "disc", "--radius", radius, "--rings", rings,
                                "--clamp", "rim")
        nodes, elements, constraint = read_deck(deck)
        self.assert_numbered_without_gaps(nodes, elements)
        self.assertEqual(len(nodes), 1 + 3 * rings * (rings + 1))
        areas = [signed_area(nodes, t) for t in elements["MEMBRANE_3"].values()]
        self.assertEqual(len(areas), 6 * rings * rings)
        self.assertTrue(all(a > 0 for a in areas))
        sides = 6 * rings
        self.assertAlmostEqual(sum(areas), 0.5 * sides * radius ** 2 * math.sin(2 * math.pi / sides), 7)
        self.assertEqual(len(constraint), sides)
        for n, name in constraint.items():
            self.assertEqual(name, "CLAMP")
            self.assertAlmostEqual(math.hypot(*nodes[n][:2]), radius, 9)

    def test_tool_continues_the_numbering_below_the_sheet(self):
        deck, _ = self.generate("tool.txt", "--size", 4, 2, "--div", 4, 2, "--contact", "BASIC", "--clamp",
                                "left", "--pull", "right", 1, "-", 0, "--tool", "disc", "--tool-rings", 2,
                                "--tool-offset", 0.5, "--tool-velocity", 2)
        nodes, elements, constraint = read_deck(deck)
        self.assert_numbered_without_gaps(nodes, elements)
        self.assertEqual(len(nodes), 15 + 19)
        tool_faces = elements["CONTACT_TRIANGLE"]
        self.assertEqual((len(tool_faces), min(tool_faces)), (24, 17))
        for ids in tool_faces.values():
            self.assertGreater(signed_area(nodes, ids), 0)
            for i in ids:
                self.assertGreater(i, 15)
                self.assertEqual(nodes[i][2], -0.5)
                self.assertEqual(constraint[i], "TOOL")
        self.assertEqual(nodes[16], [2.0, 1.0, -0.5])  # centred under the sheet
        self.assertEqual((constraint[1], constraint[5], 3 in constraint), ("CLAMP", "PULL1", False))
        text = deck.read_text()
        for line in ("PULL1 VX 1 VZ 0 AMPLITUDE RAMP", "TOOL VX 0 VY 0 VZ 2 AMPLITUDE RAMP",
                     "1 NODES 1 2 7 MATERIAL SHEET T 1 CONTACT BASIC"):
            self.assertIn("\n" + line + "\n", text)

    def test_dome_is_a_spherical_cap_with_a_tracker_on_all_its_nodes(self):
        deck, _ = self.generate("dome.txt", "--size", 4, 4, "--div", 2, 2, "--tool", "disc", "--tool-radius",
                                3, "--tool-rings", 3, "--tool-cap", 1, "--tool-offset", 2, "--tool-tracker",
                                "PUNCH", "CONTACTFORCE", "Z")
        nodes, elements, _ = read_deck(deck)
        self.assertEqual(len(nodes), 9 + 37)
        # Cap of height 1 on a rim of radius 3: sphere radius (9 + 1) / 2 = 5.
        top, sphere = -1.0, 5.0
        self.assertAlmostEqual(nodes[10][2], top, 9)
        self.assertAlmostEqual(nodes[46][2], -2.0, 9)
        for n in range(10, 47):
            x = nodes[n]
            self.assertAlmostEqual(math.dist(x, [2, 2, top - sphere]), sphere, 8)
        self.assertTrue(all(signed_area(nodes, t) > 0 for t in elements["CONTACT_TRIANGLE"].values()))
        numbers = " ".join(str(n) for n in range(10, 47))
        self.assertIn(f"\nPUNCH NODES {numbers} DIRECTION Z TYPE CONTACTFORCE\n", deck.read_text())


class ToolOnARun(Scratch):
    """Runs a small deck whose tracker and result files the plotting tools read."""
    deck_text = ("TITLE\nCONTROLS\nRUN FROM 0 TO 0.0021\nSTEP 0\nPRINT EVERY 0.001\n"
                 "CONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\nPULL VX 1 VY 0 VZ 0\n"
                 "MATERIALS TYPE ELASTIC\nSTEEL E 2.1E11 NU 0.3 RHO 7850\n"
                 "NODES\n1 X 0 CONSTRAINT FIXED\n2 X 0.5 Y 0.1\n3 X 1 CONSTRAINT PULL\n"
                 "ELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL STEEL D 0.01\n2 NODES 2 3 MATERIAL STEEL D 0.01\n"
                 "TRACKERS TYPE NODE\nDISP NODES 3 DIRECTION X TYPE POSITION\n"
                 "FORCE NODES 3 DIRECTION X TYPE FORCE\n")

    def setUp(self):
        super().setUp()
        self.deck = self.dir / "rods.txt"
        self.deck.write_text(self.deck_text)
        self.assertEqual(run_deck(self.deck).stderr, "")
        self.results = self.dir / "Results_rods"

    def png_size(self, path):
        data = path.read_bytes()
        self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
        return int.from_bytes(data[16:20], "big"), int.from_bytes(data[20:24], "big")


class PlotTrackers(ToolOnARun):
    def setUp(self):
        if subprocess.run([sys.executable, "-c", "import matplotlib"], capture_output=True).returncode:
            self.skipTest("matplotlib cannot be imported (Debian: python3-matplotlib)")
        super().setUp()

    def test_history_and_curve_become_pngs(self):
        for args in ([self.dir / "DISP.csv", self.dir / "FORCE.csv"],
                     ["--x", self.dir / "DISP.csv", "--y", self.dir / "FORCE.csv"]):
            png = self.dir / "plot.png"
            r = tool("plot_trackers.py", *args, "-o", png)
            self.assertEqual(r.returncode, 0, r.stderr)
            self.assertGreater(png.stat().st_size, 1000)
            self.png_size(png)
            png.unlink()


class RenderVtk(ToolOnARun):
    def setUp(self):
        if subprocess.run([sys.executable, "-c", "import vtk"], capture_output=True).returncode:
            self.skipTest("vtk cannot be imported (Debian: python3-vtk9)")
        if not os.environ.get("DISPLAY") and not shutil.which("xvfb-run"):
            self.skipTest("no display and no xvfb-run (Debian: xvfb)")
        super().setUp()

    def test_folder_renders_its_last_file_at_the_requested_size(self):
        png = self.results / "last.png"
        # Rods have no yarns: --yarns draws lines of no length over them.
        r = tool("render_vtk.py", self.results, "--array", "E11", "--size", 320, 200, "--yarns", "-o", png)
        self.assertEqual(r.returncode, 0, r.stderr)
        self.assertIn("E11 of ", r.stdout)
        self.assertIn("_2.vtk", r.stdout)
        self.assertEqual(self.png_size(png), (320, 200))


if __name__ == "__main__":
    unittest.main()
