"""The vectors of the result files of a whole run, read with VTK's own legacy
reader (as ParaView reads it) and with meshio: both must read them alike and
give the contact forces that carry a sheet at rest. (Their closed-form values
under motion are checked in ResultFieldsTest.cpp, their layout word for word in
docs/outputs.md.) Run by CTest with /usr/bin/python3; DRAPEX is the built
program.
"""
import math
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DRAPEX = os.environ.get("DRAPEX", str(ROOT / "build" / "drapex"))
POINT_VECTORS = ("DISPLACEMENT", "VELOCITY", "CONTACT_FORCE")
CELL_VECTORS = ("WARP", "WEFT")


def read_with_vtk(path):
    """Point and cell arrays by name, as lists of tuples."""
    import vtk
    reader = vtk.vtkUnstructuredGridReader()
    reader.SetFileName(str(path))
    reader.ReadAllScalarsOn()
    reader.Update()
    grid = reader.GetOutput()

    def arrays(data):
        out = {}
        for i in range(data.GetNumberOfArrays()):
            a = data.GetArray(i)
            out[a.GetName()] = [a.GetTuple(k) for k in range(a.GetNumberOfTuples())]
        return out
    return arrays(grid.GetPointData()), arrays(grid.GetCellData())


def read_with_meshio(path):
    import meshio
    mesh = meshio.read(str(path))
    cells = {name: [tuple(v) for block in blocks for v in (block if block.ndim > 1 else block[:, None])]
             for name, blocks in mesh.cell_data.items()}
    return {name: [tuple(v) for v in values] for name, values in mesh.point_data.items()}, cells


class ResultVectors(unittest.TestCase):
    def setUp(self):
        for module, package in (("vtk", "python3-vtk9"), ("meshio", "python3-meshio")):
            try:
                __import__(module)
            except ImportError:
                self.skipTest(f"{module} cannot be imported (Debian: {package})")
        self.dir = pathlib.Path(tempfile.mkdtemp(prefix="drapex_fields_"))
        self.addCleanup(shutil.rmtree, self.dir, ignore_errors=True)

    def run_deck(self, deck):
        r = subprocess.run([DRAPEX, deck.name], cwd=deck.parent, capture_output=True, text=True,
                           stdin=subprocess.DEVNULL)
        self.assertEqual(r.stderr, "")
        self.assertIn("Solving took", r.stdout)

    def both_readers(self, path):
        """The arrays of one file, after checking that the two readers agree on them."""
        points, cells = read_with_vtk(path)
        m_points, m_cells = read_with_meshio(path)
        for name in POINT_VECTORS:
            self.assertEqual(len(points[name]), len(m_points[name]))
            for a, b in zip(points[name], m_points[name]):
                self.assertEqual(a, b)
        for name in CELL_VECTORS:
            self.assertEqual(cells[name], m_cells[name])
        return points, cells

    def test_sheet_resting_on_a_tool_is_carried_by_its_weight(self):
        # A 9 x 9 textile sheet (rho 1e-6 per unit area, g 9810) falls 1 mm
        # onto a fixed tool and settles by 0.1 s: the contact forces on the sheet's 16
        # nodes add up to its weight, as its tracker on all of them says, those
        # on the tool's nodes to the opposite. The yarns of the flat sheet stay
        # within a degree of x and y; the tool's contact triangles have none.
        deck = self.dir / "rest.txt"
        gen = subprocess.run(
            [sys.executable, str(ROOT / "tools" / "gendeck.py"), "--size", "9", "9", "--div", "3", "3",
             "--material", "textile", "--rho", "1e-6", "--kwarp", "10", "--kweft", "10", "--damping", "300",
             "--gravity", "-9810", "--tool", "rect", "--tool-size", "12", "10", "--tool-div", "1", "1",
             "--tool-offset", "1", "--tool-factor", "1", "--end", "0.1005", "--print", "0.05", "--node-tracker",
             "SUPPORT", "all", "CONTACTFORCE", "Z", "-o", str(deck)],
            capture_output=True, text=True)
        self.assertEqual(gen.returncode, 0, gen.stderr)
        self.run_deck(deck)
        self.assertEqual(len(list((self.dir / "Results_rest").glob("rest_*.vtk"))), 3)
        points, cells = self.both_readers(self.dir / "Results_rest" / "rest_2.vtk")
        weight = 1e-6 * 81.0 * 9810.0
        force = points["CONTACT_FORCE"]
        self.assertEqual(len(force), 1 + 16 + 4)
        sheet = sum(f[2] for f in force[1:17])
        tool = sum(f[2] for f in force[17:])
        self.assertAlmostEqual(sheet / weight, 1.0, delta=1e-3)
        self.assertAlmostEqual(tool / weight, -1.0, delta=1e-3)
        support = [float(c) for c in (self.dir / "SUPPORT.csv").read_text().splitlines()[-1].split(",")]
        self.assertEqual(len(support), 1 + 16 + 1)
        self.assertAlmostEqual(support[-1] / sheet, 1.0, delta=1e-5)
        self.assertAlmostEqual(sum(math.hypot(f[0], f[1]) for f in force), 0.0, delta=1e-9)
        self.assertEqual(len(cells["WARP"]), 18 + 2)
        for warp, weft in zip(cells["WARP"][:18], cells["WEFT"][:18]):
            for got, want in ((warp, (1.0, 0.0, 0.0)), (weft, (0.0, 1.0, 0.0))):
                self.assertAlmostEqual(math.hypot(*got), 1.0, delta=1e-9)
                for a, b in zip(got, want):
                    self.assertAlmostEqual(a, b, delta=0.02)
        self.assertEqual(cells["WARP"][18:], [(0.0, 0.0, 0.0)] * 2)


if __name__ == "__main__":
    unittest.main()
