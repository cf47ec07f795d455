// Whole-deck checks of the discretisation: the shell cantilever's tip
// deflection converges on the Timoshenko beam at the rate its elements
// promise and its root carries the beam's bending stress, and constant-strain
// triangles reproduce a uniform strain state
// exactly on a distorted mesh (the patch test), membrane and shell.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using testutil::contains;

using readback::lastResult;

// Strip of tools/cantilever_deck.py's defaults: mm, N, MPa.
constexpr double L = 100.0, B = 10.0, t = 4.0, P = 30.0, E = 210000.0;
constexpr double I = B * t * t * t / 12.0;

// A strip deck of tools/cantilever_deck.py.
fs::path cantileverDeck(const std::string& name, const std::string& options) {
    const fs::path deck = testutil::scratchDir(name) / (name + ".txt");
    const auto gen = testutil::runCommand(std::string(DRAPEX_SYSTEM_PYTHON) + " '" + DRAPEX_ROOT +
                                          "/tools/cantilever_deck.py' '" + deck.string() + "' " + options);
    EXPECT_EQ(gen.status, 0) << gen.err;
    return deck;
}

// Settled free-edge deflection of tools/cantilever_deck.py's strip (100 x 10 x 4
// mm, 30 N, nu = 0) on nx x ny rectangles: the mean over the edge nodes and the
// last three prints (each TIP row ends with the sum over the edge); `last`
// receives the last result file.
double tipDeflection(int nx, int ny, readback::VtkResult* last = nullptr) {
    const std::string name = "convergence_" + std::to_string(nx) + "x" + std::to_string(ny);
    const fs::path deck =
        cantileverDeck(name, "--nu 0 --nx " + std::to_string(nx) + " --ny " + std::to_string(ny));
    EXPECT_EQ(testutil::runDrapex(deck).err, "");
    if (last) *last = readback::readVtk(lastResult(deck));
    const auto rows = testutil::readLines(deck.parent_path() / "TIP.csv");
    double sum = 0.0;
    for (std::size_t r = rows.size() - 3; r < rows.size(); ++r)
        sum -= std::stod(rows[r].substr(rows[r].rfind(',') + 1));
    return sum / (3 * (ny + 1));
}

TEST(MeshConvergence, ShellCantileverTipDeflectionConvergesQuadratically) {
    // With nu = 0 the Mindlin strip under a uniform edge shear is exactly a
    // Timoshenko beam (no anticlastic bending, no clamp boundary layer):
    // bending P L^3 / (3 E I) plus shear P L / (k G A), k = 5/6, G = E / 2.
    const double exact = P * L * L * L / (3.0 * E * I) + P * L / (5.0 / 6.0 * 0.5 * E * B * t);
    // 4 x 1, 8 x 2, 16 x 4 rectangles: the elements halve in both directions
    // (refining along the strip alone converges on the 2-across mesh, 2e-4 of
    // the deflection off the closed form).
    double d[3], e[3];
    readback::VtkResult finest;
    for (int k = 0; k < 3; ++k) {
        d[k] = tipDeflection(4 << k, 1 << k, k == 2 ? &finest : nullptr);
        e[k] = exact - d[k];
    }
    const double p12 = std::log2(e[0] / e[1]), p23 = std::log2(e[1] / e[2]);
    const double extrapolated = d[2] + (d[2] - d[1]) / 3.0; // Richardson, p = 2
    std::ostringstream note;
    note << "errors " << e[0] << " " << e[1] << " " << e[2] << " mm of " << exact << ", orders " << p12 << " "
         << p23 << ", extrapolated " << extrapolated;
    RecordProperty("convergence", note.str());
    SCOPED_TRACE(note.str());
    // Stiff, converging from below, monotone.
    EXPECT_GT(e[0], e[1]);
    EXPECT_GT(e[1], e[2]);
    EXPECT_GT(e[2], 0.0);
    // Rotations interpolate linearly, so the curvature is constant per element
    // and the deflection (curvature integrated against the lever arm) errs by
    // O(h^2). The band of 0.2 covers the higher-order terms of the coarse
    // meshes (1.91 and 1.92 observed) and the residual motion of the
    // one-across mesh after settling (1e-4 mm against its 1.3e-2 mm error).
    EXPECT_NEAR(p12, 2.0, 0.2);
    EXPECT_NEAR(p23, 2.0, 0.2);
    // The limit of the sequence is the closed form (within 1e-4 here).
    EXPECT_NEAR(extrapolated, exact, 5e-4 * exact);

    // Element 1 of the 16 x 4 mesh (nodes at x = 0, h, h; first edge along x)
    // carries the bending stress of the moment at its centroid at the first
    // point, z = 0.7746 t/2: the upper fibre of the hogging strip is in
    // tension, and with nu = 0 its strain is sigma / E (0.9 % above here).
    const double xc = 2.0 / 3.0 * L / 16, z0 = 0.5 * t * 0.774596669241483;
    const double sigma = P * (L - xc) * z0 / I;
    EXPECT_NEAR(finest.scalars.at("S11")[0], sigma, 0.02 * sigma);
    EXPECT_NEAR(finest.scalars.at("E11")[0], sigma / E, 0.03 * sigma / E);
    EXPECT_EQ(finest.scalars.at("S33")[0], 0.0);
}

// ---------------------------------------------------------------------------
// Patch test. The unit square, 4 x 4 cells, interior nodes moved off the grid
// by up to 0.22 h, the diagonals mixed and every third triangle starting from
// another vertex, so that the first edges, and with them the element axes,
// point every way. The boundary nodes move along straight lines to F X: their
// velocity is (F - I) X times a triangular pulse of unit area, zero after it
// (an amplitude is zero outside its table), so the boundary ends on the
// uniform field x = F X; damping lets the free interior nodes settle there.

constexpr int cells = 4;
using Mat2 = std::array<double, 4>; // row-major 2 x 2

struct Patch {
    std::vector<std::array<double, 2>> X; // initial positions, index = node number
    std::vector<std::array<int, 3>> tri;  // counter-clockwise seen from +z
    bool boundary(int id) const {
        const int i = (id - 1) % (cells + 1), j = (id - 1) / (cells + 1);
        return i == 0 || j == 0 || i == cells || j == cells;
    }
};

Patch distortedPatch() {
    Patch p;
    const double h = 1.0 / cells;
    p.X.push_back({0.0, 0.0});
    for (int j = 0; j <= cells; ++j)
        for (int i = 0; i <= cells; ++i) {
            const int id = static_cast<int>(p.X.size());
            const bool inside = i > 0 && j > 0 && i < cells && j < cells;
            p.X.push_back({h * (i + (inside ? 0.22 * std::sin(2.1 * id + 0.3) : 0.0)),
                           h * (j + (inside ? 0.22 * std::cos(1.7 * id + 1.1) : 0.0))});
        }
    auto id = [](int i, int j) { return j * (cells + 1) + i + 1; };
    for (int j = 0; j < cells; ++j)
        for (int i = 0; i < cells; ++i) {
            const int a = id(i, j), b = id(i + 1, j), c = id(i + 1, j + 1), d = id(i, j + 1);
            const bool alongAC = (i * 3 + j * 5) % 3 != 0;
            for (std::array<int, 3> t : alongAC ? std::array<std::array<int, 3>, 2>{{{a, b, c}, {a, c, d}}}
                                                : std::array<std::array<int, 3>, 2>{{{a, b, d}, {b, c, d}}}) {
                const int shift = static_cast<int>(p.tri.size()) % 3;
                p.tri.push_back({t[shift], t[(shift + 1) % 3], t[(shift + 2) % 3]});
            }
        }
    return p;
}

std::array<double, 2> apply(const Mat2& F, const std::array<double, 2>& x) {
    return {F[0] * x[0] + F[1] * x[1], F[2] * x[0] + F[3] * x[1]};
}

// Runs the patch under the final gradient F and returns the last result file.
readback::VtkResult runPatch(const std::string& name, const Patch& p, const Mat2& F,
                             const std::string& element, const std::string& materials, double pulse,
                             double end) {
    std::ostringstream deck;
    deck.precision(12);
    deck << "TITLE\n** Distorted patch driven to a uniform deformation gradient\nCONTROLS\nRUN FROM 0 TO "
         << 1.01 * end << "\nSTEP 0\nPRINT EVERY " << end / 4
         << "\nAMPLITUDES TYPE TABULAR\nPULSE VALUES 0 0 " << pulse / 2 << " " << 2 / pulse << " " << pulse
         << " 0\nCONSTRAINTS TYPE BOUNDARY_CONDITION\n";
    for (std::size_t n = 1; n < p.X.size(); ++n)
        if (p.boundary(static_cast<int>(n))) {
            const auto x = apply(F, p.X[n]);
            deck << "B" << n << " VX " << x[0] - p.X[n][0] << " VY " << x[1] - p.X[n][1]
                 << " VZ 0 AMPLITUDE PULSE\n";
        }
    deck << materials << "\nNODES\n";
    for (std::size_t n = 1; n < p.X.size(); ++n) {
        deck << n << " X " << p.X[n][0] << " Y " << p.X[n][1] << " Z 0";
        if (p.boundary(static_cast<int>(n))) deck << " CONSTRAINT B" << n;
        deck << "\n";
    }
    deck << "ELEMENTS TYPE " << element << "\n";
    for (std::size_t e = 0; e < p.tri.size(); ++e)
        deck << e + 1 << " NODES " << p.tri[e][0] << " " << p.tri[e][1] << " " << p.tri[e][2]
             << " MATERIAL M T 1\n";
    fs::path file;
    const auto run = testutil::runDeck(name, deck.str(), &file);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(contains(run.out, " Exit Drapex"));
    return readback::readVtk(lastResult(file));
}

// Every node sits at F X (positions have six significant digits).
void checkPositions(const Patch& p, const readback::VtkResult& r, const Mat2& F) {
    ASSERT_EQ(r.points.size(), p.X.size());
    for (std::size_t n = 1; n < p.X.size(); ++n) {
        const auto x = apply(F, p.X[n]);
        for (int k = 0; k < 2; ++k)
            EXPECT_NEAR(r.points[n][k], x[k], 1e-5) << "node " << n;
    }
}

TEST(PatchTest, DistortedOgdenMembraneCarriesTheUniformStressOfAGeneralGradient) {
    // Stretch, shear and a rotation at once: x = F X with F not symmetric.
    const Mat2 F = {1.20, 0.10, -0.05, 1.10};
    const Patch p = distortedPatch();
    // Neo-Hookean (Ogden, alpha 2, shear modulus mu = 1), mass 1 per area.
    // Lowest patch mode: omega ~ pi sqrt(2) c, c = sqrt(mu / rho) = 1 -> 4.4;
    // DAMPING 9 is about critical, so 6 time units after the pulse settle the
    // interior far below the six decimals the result files carry.
    const auto r =
        runPatch("patch_membrane", p, F, "MEMBRANE_3",
                 "MATERIALS TYPE HYPERELASTIC\nM RHO 1 TYPE OGDEN MU 1 ALPHA 2 DAMPING 9", 2.0, 8.0);
    checkPositions(p, r, F);

    // Closed form. C = F^T F has the principal stretches l1 <= l2 as the roots
    // of its eigenvalues; incompressibility gives l3 = 1 / (l1 l2) = 1 / det F.
    // Plane stress fixes the pressure at mu l3^2: sigma = mu (F F^T - l3^2 I).
    const double c00 = F[0] * F[0] + F[2] * F[2], c01 = F[0] * F[1] + F[2] * F[3],
                 c11 = F[1] * F[1] + F[3] * F[3];
    const double mean = 0.5 * (c00 + c11), radius = std::hypot(0.5 * (c00 - c11), c01);
    const double l1 = std::sqrt(mean - radius), l2 = std::sqrt(mean + radius);
    const double l3 = 1.0 / (F[0] * F[3] - F[1] * F[2]);
    const double s00 = F[0] * F[0] + F[1] * F[1] - l3 * l3, s11 = F[2] * F[2] + F[3] * F[3] - l3 * l3,
                 s01 = F[0] * F[2] + F[1] * F[3];
    for (std::size_t e = 0; e < p.tri.size(); ++e) {
        const std::string where = "element " + std::to_string(e + 1);
        // The Ogden membrane writes its stretches where the strains go.
        EXPECT_NEAR(r.scalars.at("E11")[e], l1, 2e-6) << where;
        EXPECT_NEAR(r.scalars.at("E22")[e], l2, 2e-6) << where;
        EXPECT_NEAR(r.scalars.at("E33")[e], l3, 2e-6) << where;
        // The stresses are in the element's axes: 1 along its deformed first
        // edge, 2 a quarter turn on (the normal is +z). The in-plane shear is
        // the vector's 4th entry, written under the label S23.
        const auto &A = p.X[p.tri[e][0]], &B = p.X[p.tri[e][1]];
        const auto a = apply(F, {B[0] - A[0], B[1] - A[1]});
        const double c = a[0] / std::hypot(a[0], a[1]), s = a[1] / std::hypot(a[0], a[1]);
        EXPECT_NEAR(r.scalars.at("S11")[e], c * c * s00 + 2 * c * s * s01 + s * s * s11, 5e-6) << where;
        EXPECT_NEAR(r.scalars.at("S22")[e], s * s * s00 - 2 * c * s * s01 + c * c * s11, 5e-6) << where;
        EXPECT_NEAR(r.scalars.at("S23")[e], c * s * (s11 - s00) + (c * c - s * s) * s01, 5e-6) << where;
        EXPECT_NEAR(r.scalars.at("S12")[e], 0.0, 0.0) << where;
    }
}

TEST(PatchTest, DistortedShellSumsTheLogStrainOfARotatingBiaxialStretch) {
    // F = lambda R(theta): a linear blend of I and lambda R stays a scaled
    // rotation, so along the straight boundary paths every edge of a
    // homogeneous patch turns by the same angle and stretches by the same
    // factor. The shell sums increments dl / l of the current length in axes
    // that turn with the element: ln(lambda) in both directions and no shear,
    // whatever the element's orientation (not lambda - 1 = 0.05).
    const double lambda = 1.05, theta = 0.2, eps = std::log(lambda);
    const Mat2 F = {lambda * std::cos(theta), -lambda * std::sin(theta), lambda * std::sin(theta),
                    lambda * std::cos(theta)};
    const Patch p = distortedPatch();
    // E 1000, mass 1 per area: shear wave speed ~ 20, lowest mode ~ 87 rad/s;
    // DAMPING 40 decays it by e^-20 in the time unit after the pulse. The pulse
    // is slow because each increment is linear in the step's motion: a turn of
    // d per step registers -d^2 / 2 of strain, -theta^2 (4/3) / (2 N) over the
    // N ~ 10700 steps of this triangular pulse, -2.5e-6 (-4.7e-5 at N = 535).
    const auto r = runPatch("patch_shell", p, F, "S3L_C0",
                            "MATERIALS TYPE ELASTIC\nM E 1000 NU 0.3 RHO 1 DAMPING 40", 2.0, 3.0);
    checkPositions(p, r, F);
    // Equal biaxial plane stress: sigma = E / (1 - nu) eps in any axes.
    const double sigma = 1000.0 / 0.7 * eps;
    for (std::size_t e = 0; e < p.tri.size(); ++e) {
        const std::string where = "element " + std::to_string(e + 1);
        EXPECT_NEAR(r.scalars.at("E11")[e], eps, 4e-6) << where;
        EXPECT_NEAR(r.scalars.at("E22")[e], eps, 4e-6) << where;
        EXPECT_NEAR(r.scalars.at("S11")[e], sigma, 6e-3) << where;
        EXPECT_NEAR(r.scalars.at("S22")[e], sigma, 6e-3) << where;
        // That step error is the same everywhere: the patch is uniform far tighter.
        EXPECT_NEAR(r.scalars.at("S11")[e], r.scalars.at("S11")[0], 3e-4) << where;
        EXPECT_NEAR(r.scalars.at("S22")[e], r.scalars.at("S22")[0], 3e-4) << where;
        // In-plane shear under the crossed label 23, transverse shears and the
        // thickness direction: all zero.
        EXPECT_NEAR(r.scalars.at("E23")[e], 0.0, 2e-6) << where;
        EXPECT_NEAR(r.scalars.at("S23")[e], 0.0, 5e-4) << where;
        for (const char* zero : {"E33", "E12", "E13", "S33", "S12", "S13"})
            EXPECT_NEAR(r.scalars.at(zero)[e], 0.0, 0.0) << where;
    }
}

} // namespace
