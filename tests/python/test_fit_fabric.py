"""tools/fit_fabric.py on the curves that Drapex made from known coefficients."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DATA = ROOT / "examples" / "fabric_calibration"
sys.path.insert(0, str(ROOT / "tools"))
import fit_fabric  # noqa: E402


class FitFabricTest(unittest.TestCase):
    def test_fit_recovers_the_coefficients_the_curves_were_made_with(self):
        try:
            import matplotlib  # noqa: F401
        except ImportError:
            matplotlib = None
        with tempfile.TemporaryDirectory() as tmp:
            png = pathlib.Path(tmp) / "fit.png"
            args = [sys.executable, str(ROOT / "tools" / "fit_fabric.py"), "--frame", DATA / "picture_frame.csv",
                    "--warp", DATA / "tensile_warp.csv", "--name", "SHEET", "--rho", "1e-07"]
            run = subprocess.run(list(map(str, args + (["--png", png] if matplotlib else []))),
                                 capture_output=True, text=True)
            self.assertEqual(run.returncode, 0, run.stderr)
            words = run.stdout.split()
            self.assertEqual(words[:3], ["SHEET", "RHO", "1e-07"])
            value = lambda key, n: [float(v) for v in words[words.index(key) + 1:words.index(key) + 1 + n]]
            for got, true in zip(value("KELONGWARP", 2), [50, 2000]):
                self.assertAlmostEqual(got / true, 1.0, delta=0.005)
            self.assertEqual(value("KELONGWEFT", 2), value("KELONGWARP", 2))
            for got, true in zip(value("KSHEAR", 3), [0.1, 0.2, 1.0]):
                self.assertAlmostEqual(got / true, 1.0, delta=0.04)
            if matplotlib:
                self.assertGreater(png.stat().st_size, 10000)

    def test_exact_curves_give_the_coefficients_back_and_bad_files_a_message(self):
        gammas = [2.0 * i for i in range(1, 25)]
        force = [sum(r * c for r, c in zip(row, [0.3, -0.1, 2.0]))
                 for row in fit_fabric.shear_basis(gammas, 3, 2.0)]
        for got, true in zip(fit_fabric.fit_shear(gammas, force, 3, 2.0), [0.3, -0.1, 2.0]):
            self.assertAlmostEqual(got, true, places=9)
        with tempfile.TemporaryDirectory() as tmp:
            bad = pathlib.Path(tmp) / "bad.csv"
            bad.write_text("angle,force\n1,0.1\n2,oops\n")
            with self.assertRaisesRegex(fit_fabric.FitError, r"bad.csv, line 3: expected two numbers"):
                fit_fabric.read_curve(bad)


if __name__ == "__main__":
    unittest.main()
