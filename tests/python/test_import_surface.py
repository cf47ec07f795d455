"""tools/import_surface.py on small meshes written with meshio, and the
hemisphere example's generator that is built on it.

Run by CTest with /usr/bin/python3 (see test_tools.py); the tests skip,
saying why, where numpy or meshio cannot be imported.
"""
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from deck_blocks import read_blocks

try:
    import meshio
    import numpy as np
except ImportError:  # the skip below says so
    meshio = np = None

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools" / "import_surface.py"


def run(*args, cwd=None):
    return subprocess.run([sys.executable, str(TOOL), *map(str, args)], capture_output=True, text=True,
                          stdin=subprocess.DEVNULL, cwd=cwd)


def normal(nodes, ids):
    a, b, c = (np.array(nodes[i]) for i in ids)
    return np.cross(b - a, c - a)


def directed_edges(facets):
    return [(t[k], t[(k + 1) % 3]) for t in facets for k in range(3)]


def height_field(nx, ny, origin, size, bump):
    """Points and upward (counter-clockwise from +z) triangles of z = bump * sin(x) cos(y) over a grid."""
    points, tris = [], []
    for j in range(ny + 1):
        for i in range(nx + 1):
            x, y = origin[0] + size * i / nx, origin[1] + size * j / ny
            points.append((x, y, bump * math.sin(x) * math.cos(y)))
    for j in range(ny):
        for i in range(nx):
            a = j * (nx + 1) + i
            tris += [(a, a + 1, a + nx + 2), (a, a + nx + 2, a + nx + 1)]
    return np.array(points), np.array(tris)


@unittest.skipIf(meshio is None, "numpy and meshio (Debian's python3-meshio) are needed")
class ImportSurface(unittest.TestCase):
    def setUp(self):
        self.dir = pathlib.Path(tempfile.mkdtemp(prefix="drapex_import_"))
        self.addCleanup(shutil.rmtree, self.dir, True)

    def write(self, name, points, cells, **options):
        path = self.dir / name
        meshio.write(path, meshio.Mesh(np.asarray(points, dtype=float), cells), **options)
        return path

    def assert_refused(self, mesh, *words):
        """The import of `mesh` fails with one line naming the file and containing `words`, and leaves the
        output as it was and no temporary file."""
        out = self.dir / "out.txt"
        out.write_text("earlier blocks\n")
        before = sorted(p.name for p in self.dir.iterdir())
        r = run(mesh, "-o", out)
        self.assertNotEqual(r.returncode, 0)
        self.assertEqual(r.stdout, "")
        self.assertEqual(len(r.stderr.splitlines()), 1, r.stderr)
        self.assertTrue(r.stderr.startswith("import_surface: %s: " % mesh), r.stderr)
        for word in words:
            self.assertIn(word, r.stderr)
        self.assertEqual(out.read_text(), "earlier blocks\n")
        self.assertEqual(sorted(p.name for p in self.dir.iterdir()), before)
        return r.stderr

    def test_quads_are_split_and_placed_by_the_transform_keeping_their_orientation(self):
        # An open box (no bottom) of unit side, its faces outward: five quads.
        corners = np.array([[x, y, z] for z in (0, 1) for y in (0, 1) for x in (0, 1)], dtype=float)
        quads = np.array([[4, 5, 7, 6], [0, 1, 5, 4], [1, 3, 7, 5], [3, 2, 6, 7], [2, 0, 4, 6]])
        out = self.dir / "box.txt"
        r = run(self.write("box.obj", corners, [("quad", quads)]), "-o", out, "--scale", 10, "--rotate", 0, 0, 90,
                "--translate", 1, 2, 3)
        self.assertEqual(r.returncode, 0, r.stderr)
        nodes, _, elements, _ = read_blocks(out)
        # The eight corners, merged, where the transform puts them by hand.
        placed = sorted((1 - 10 * y, 2 + 10 * x, 3 + 10 * z) for x, y, z in corners)
        self.assertEqual(sorted(tuple(round(v, 9) for v in x) for x in nodes.values()), placed)
        facets = [ids for ids, _ in elements["CONTACT_FACET"].values()]
        self.assertEqual(len(facets), 10)
        centre, area = np.array([-4.0, 7.0, 8.0]), 0.0
        for ids in facets:
            n = normal(nodes, ids)
            area += 0.5 * np.linalg.norm(n)
            # outward: along the line from the box's centre to the facet's face centre
            outward = np.mean([nodes[i] for i in ids], axis=0) - centre
            axis = np.argmax(np.abs(outward))
            expected = np.zeros(3)
            expected[axis] = np.sign(outward[axis])
            np.testing.assert_allclose(n / np.linalg.norm(n), expected, atol=1e-12)
        self.assertAlmostEqual(area, 500.0, 9)

    def test_flipped_facets_are_turned_part_by_part_to_face_the_given_point(self):
        p1, t1 = height_field(6, 5, (0.0, 0.0), 3.0, 0.4)
        p2, t2 = height_field(4, 4, (5.0, 0.0), 2.0, 0.3)
        t2 = t2[:, [0, 2, 1]]  # the second part is written upside down as a whole,
        t1[[5, 7, 8, 30]] = t1[[5, 7, 8, 30]][:, [0, 2, 1]]  # and a few facets of each are turned over
        t2[[3, 5]] = t2[[3, 5]][:, [0, 2, 1]]
        points = np.vstack([p1, p2])
        tris = np.vstack([t1, t2 + len(p1)])
        mesh = self.write("patches.vtu", points, [("triangle", tris)])
        cases = (([], (+1, -1)), (["--facing", 4, 1, 50], (+1, +1)), (["--facing", 4, 1, 50, "--flip"], (-1, -1)))
        for options, signs in cases:
            with self.subTest(options=options):
                out = self.dir / "patches.txt"
                r = run(mesh, "-o", out, *options)
                self.assertEqual(r.returncode, 0, r.stderr)
                self.assertIn("(6 facets turned to match their neighbours", r.stdout)
                nodes, _, elements, other = read_blocks(out)
                self.assertEqual(other["CONTACT_SURFACES"], ["PATCHES"])
                facets = [ids for ids, _ in elements["CONTACT_FACET"].values()]
                self.assertEqual(len(facets), len(tris))
                edges = directed_edges(facets)
                self.assertEqual(len(set(edges)), len(edges))  # no edge run twice the same way
                for ids in facets:
                    second = nodes[ids[0]][0] > 4.0
                    self.assertEqual(np.sign(normal(nodes, ids)[2]), signs[second])

        # A blank of membranes carries its material, thickness and surface (its numbering and --facing are
        # those of the hemisphere deck's blank).
        out = self.dir / "blank.txt"
        r = run(mesh, "-o", out, "--blank", "membrane_3", "--material", "fabric", "--thickness", 0.5, "--surface",
                "ply", "--type", "SHELL", "--t", 0.5)
        self.assertEqual(r.returncode, 0, r.stderr)
        _, _, elements, other = read_blocks(out)
        self.assertEqual(sorted(elements), ["MEMBRANE_3"])
        self.assertEqual(other["CONTACT_SURFACES"], ["PLY TYPE SHELL T 0.5"])
        for ids, tail in elements["MEMBRANE_3"].values():
            self.assertEqual(tail, ["MATERIAL", "FABRIC", "T", "0.5", "SURFACE", "PLY"])

    def test_one_sided_and_non_manifold_surfaces_are_refused_naming_the_file_and_an_edge(self):
        # A Moebius strip of 12 segments: the strip's two edges swap after one turn round its centre line.
        n, points = 12, []
        for i in range(n):
            t = 2 * math.pi * i / n
            for side in (1, -1):
                r = 10 + side * 2 * math.cos(t / 2)
                points.append((r * math.cos(t), r * math.sin(t), side * 2 * math.sin(t / 2)))
        tris = []
        for i in range(n):
            a, b = 2 * i, 2 * i + 1
            c, d = ((2 * i + 2, 2 * i + 3) if i + 1 < n else (1, 0))
            tris += [(a, b, c), (b, d, c)]
        strip = self.write("strip.stl", points, [("triangle", np.array(tris))])
        self.assert_refused(strip, "cannot be oriented", "Moebius", "edge from (")

        fan = self.write("fan.obj", [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0, -1, 0), (0, 0, 1)],
                         [("triangle", np.array([[0, 1, 2], [1, 0, 3], [0, 1, 4]]))])
        message = self.assert_refused(fan, "edge from (0, 0, 0) to (1, 0, 0) is shared by 3 facets", "non-manifold")
        self.assertTrue(message.endswith("remove the extra facets)\n"), message)


@unittest.skipIf(meshio is None, "numpy and meshio (Debian's python3-meshio) are needed")
class HemisphereDeck(unittest.TestCase):
    def test_the_script_writes_the_coarse_deck_that_is_shipped(self):
        # The shipped deck runs in the result regression; here the script that
        # writes it must still write it, byte for byte.
        folder = pathlib.Path(tempfile.mkdtemp(prefix="drapex_hemisphere_"))
        self.addCleanup(shutil.rmtree, folder, True)
        script = ROOT / "examples" / "hemisphere" / "make_deck.py"
        r = subprocess.run([sys.executable, str(script), "--coarse", "-o", str(folder)], capture_output=True,
                           text=True, stdin=subprocess.DEVNULL)
        self.assertEqual(r.returncode, 0, r.stderr)
        def deck(path):  # the command line in the title names the output folder
            return [line for line in path.read_text().splitlines() if not line.startswith("** generated by")]
        self.assertEqual(deck(folder / "hemisphere_coarse.txt"),
                         deck(ROOT / "examples" / "hemisphere" / "hemisphere_coarse.txt"))


if __name__ == "__main__":
    unittest.main()
