// The example decks run end to end (shortened where they are long); their
// result and tracker files are read back and compared with the closed forms,
// kinematics, equilibrium and balance of forces they are meant to show.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

using namespace testutil;
using readback::lastResult;
using readback::lastRow;
using readback::printTimes;
using readback::resultFile;

namespace {

// Runs a copy of an example deck in a scratch directory, its end time
// replaced by `end` when given, and returns the deck path.
fs::path runExample(const std::string& name, const std::string& end = "") {
    std::string text = readFile(fs::path(DRAPEX_ROOT) / "examples" / name / (name + ".txt"));
    EXPECT_FALSE(text.empty());
    if (!end.empty()) text = withEndTime(text, end);
    fs::path deck;
    const RunResult run = runDeck(name, text, &deck);
    EXPECT_TRUE(contains(run.out, "Solving took")) << run.err;
    EXPECT_EQ(run.err, "");
    return deck;
}

// Centroid of a cell from a list of points.
std::array<double, 2> centroid(const readback::VtkResult& r, const std::vector<int>& c) {
    double x = 0, y = 0;
    for (int n : c) {
        x += r.points[n][0] / c.size();
        y += r.points[n][1] / c.size();
    }
    return {x, y};
}

} // namespace

TEST(MembraneExamples, PictureFrameShearsTheFabricAsTheFrameKinematicsDictate) {
    double t = 0;
    const fs::path deck = runExample("picture_frame", "0.8");
    const auto vtk = readback::readVtk(lastResult(deck, &t));
    ASSERT_EQ(vtk.points.size(), 358u);
    ASSERT_EQ(vtk.cells.size(), 772u);

    // Pinned corner fixed; the pulled corner has moved along the diagonal by
    // the time integral of 20 mm/s under a 0.3 s ramp.
    EXPECT_EQ(vtk.points[1], (std::array<double, 3>{0.0, 0.0, 0.0}));
    const double pulled = (vtk.points[289][0] - 100.0) * std::sqrt(2.0);
    EXPECT_NEAR(pulled, 20.0 * (t - 0.15), 0.01);
    EXPECT_NEAR(vtk.points[289][0], vtk.points[289][1], 1e-4);

    // Rigid hinged frame of side L: diagonal d = 2 L cos(theta / 2), shear
    // angle gamma = 90 deg - theta; corner (L, 0) at L (cos, sin)(gamma / 2).
    const double L = 100.0, d = std::sqrt(2.0) * L + pulled;
    const double gamma = M_PI / 2 - 2.0 * std::acos(d / (2.0 * L));
    EXPECT_NEAR(vtk.points[17][0], L * std::cos(gamma / 2), 0.02);
    EXPECT_NEAR(vtk.points[17][1], L * std::sin(gamma / 2), 0.02);
    EXPECT_NEAR(vtk.points[273][0], L * std::sin(gamma / 2), 0.02);
    const double degrees = gamma * 180.0 / M_PI;
    for (std::size_t e = 0; e < 512; ++e) {
        ASSERT_EQ(vtk.cellTypes[e], 5);
        EXPECT_NEAR(vtk.scalars.at("E23")[e], degrees, 0.1) << "element " << e + 1;
        // Yarns along the frame bars keep their length.
        EXPECT_LT(std::fabs(vtk.scalars.at("E11")[e]), 2e-3);
        EXPECT_LT(std::fabs(vtk.scalars.at("E22")[e]), 2e-3);
        EXPECT_EQ(vtk.points[vtk.cells[e][0]][2], 0.0);
    }

    // The shear tracker holds the same angle twice; the corner is pulled back.
    const auto shear = lastRow(deck.parent_path() / "SHEAR.csv");
    ASSERT_EQ(shear.size(), 4u);
    EXPECT_NEAR(shear[3], 2.0 * degrees, 0.2);
    EXPECT_LT(lastRow(deck.parent_path() / "PULLX.csv").back(), 0.0);
}

TEST(MembraneExamples, BiasExtensionForms3ZonesAndBalancesTheEdgeForces) {
    const fs::path deck = runExample("bias_extension", "0.6");
    const auto vtk = readback::readVtk(lastResult(deck));
    // The first file still holds the reference positions: the pull starts
    // from rest.
    const auto start =
        readback::readVtk(deck.parent_path() / "Results_bias_extension" / "bias_extension_0.vtk");
    ASSERT_EQ(vtk.points.size(), 562u);
    ASSERT_EQ(vtk.cells.size(), 1024u);
    const auto& gamma = vtk.scalars.at("E23");

    // The mesh, the yarns and the loading are symmetric about the strip's
    // long axis; the shear field is too.
    std::map<std::pair<long, long>, double> byCentroid;
    for (std::size_t e = 0; e < vtk.cells.size(); ++e) {
        const auto c = centroid(start, vtk.cells[e]);
        byCentroid[{std::lround(c[0] * 1000), std::lround(c[1] * 1000)}] = gamma[e];
    }
    double centre = 0, nearClamp = 0;
    int centreCount = 0, clampCount = 0;
    for (const auto& [key, g] : byCentroid) {
        const auto mirror = byCentroid.find({100000 - key.first, key.second});
        ASSERT_NE(mirror, byCentroid.end());
        EXPECT_NEAR(g, mirror->second, 1e-3);
        const double x = key.first / 1000.0, y = key.second / 1000.0;
        if (std::fabs(x - 50) < 10 && std::fabs(y - 100) < 10) centre += g, ++centreCount;
        if ((y < 5 || y > 195) && std::fabs(x - 50) < 30) nearClamp += std::fabs(g), ++clampCount;
    }
    centre /= centreCount;
    nearClamp /= clampCount;
    // Central zone: close to the pure trellising of inextensible yarns,
    // gamma = 90 deg - 2 acos((L - W + u) / (sqrt 2 (L - W))), a little below
    // it because the yarns stretch; no shear along the clamped edges.
    const double u = vtk.points[561][1] - 200.0;
    const double ideal = 90.0 - 2.0 * std::acos((100.0 + u) / (std::sqrt(2.0) * 100.0)) * 180.0 / M_PI;
    EXPECT_GT(u, 5.0);
    EXPECT_LT(centre, ideal);
    EXPECT_GT(centre, 0.8 * ideal);
    EXPECT_LT(nearClamp, 0.05 * centre);
    // The strip necks at mid-height.
    EXPECT_LT(vtk.points[289][0] - vtk.points[273][0], 96.0);

    // Quasi-static: the pulled edge and the clamped edge carry equal and
    // opposite forces.
    const double pull = lastRow(deck.parent_path() / "PULL.csv").back();
    const double clamp = lastRow(deck.parent_path() / "CLAMP.csv").back();
    EXPECT_LT(pull, 0.0);
    EXPECT_NEAR(pull + clamp, 0.0, 0.03 * clamp);
}

TEST(MembraneExamples, InflatedOgdenDiscObeysLaplaceLawAtThePole) {
    double t = 0;
    const fs::path deck = runExample("ogden_inflation", "0.06");
    const auto vtk = readback::readVtk(lastResult(deck, &t));
    ASSERT_EQ(vtk.points.size(), 470u);
    ASSERT_EQ(vtk.cells.size(), 864u);
    const double p = 0.01 * t / 0.1;

    // Pole curvature from the sphere through the pole and ring 3 (18 nodes
    // from node 20 on, radius 12.5 in the reference).
    const double z0 = vtk.points[1][2];
    double r = 0, dz = 0;
    for (int n = 20; n < 38; ++n) {
        r += std::hypot(vtk.points[n][0], vtk.points[n][1]) / 18;
        dz += (z0 - vtk.points[n][2]) / 18;
    }
    const double radius = (r * r + dz * dz) / (2 * dz);
    EXPECT_GT(z0, 15.0);

    // The six pole triangles are in equibiaxial tension: Ogden stretches in
    // E11, E22, lambda3 = 1/(lambda1 lambda2) in E33 (the thickness ratio).
    const double mu[3] = {0.63, 0.0012, -0.01}, alpha[3] = {1.3, 5.0, -2.0};
    for (int e = 0; e < 6; ++e) {
        const double l1 = vtk.scalars.at("E11")[e], l2 = vtk.scalars.at("E22")[e],
                     l3 = vtk.scalars.at("E33")[e];
        EXPECT_NEAR(l1, l2, 2e-3);
        EXPECT_NEAR(l3, 1.0 / (l1 * l2), 2e-6);
        // Principal Cauchy stresses sigma_a = sum mu_i (lambda_a^alpha_i -
        // lambda3^alpha_i); their mean is the mean of S11 and S22.
        double mean = 0;
        for (int i = 0; i < 3; ++i)
            mean +=
                mu[i] * (0.5 * (std::pow(l1, alpha[i]) + std::pow(l2, alpha[i])) - std::pow(l3, alpha[i]));
        const double sigma = 0.5 * (vtk.scalars.at("S11")[e] + vtk.scalars.at("S22")[e]);
        EXPECT_NEAR(sigma, mean, 1e-3 * mean);
        // Laplace: p = 2 sigma t / R with the current thickness t = lambda3 t0.
        EXPECT_NEAR(2.0 * sigma * l3 * 1.0 / radius, p, 0.01 * p);
    }

    // The rim carries the pressure: its forces sum to p times the area of the
    // 72-sided polygon the disc is meshed as.
    const double area = 0.5 * 72 * 50.0 * 50.0 * std::sin(2 * M_PI / 72);
    EXPECT_NEAR(lastRow(deck.parent_path() / "RIM.csv").back(), p * area, 0.01 * p * area);
    EXPECT_NEAR(lastRow(deck.parent_path() / "POLE.csv").back(), z0, 1e-3);
}

TEST(ContactExamplesTest, CrossingRodsPressEachOtherIntoEqualVees) {
    const auto deck = runExample("crossing_rods");
    const auto times = printTimes(deck);
    ASSERT_EQ(times.size(), 20u);
    const double radius = 0.002;
    // Wire A: nodes 1..10 along x, middle segment 5-6; wire B: nodes 11..20
    // along y, middle segment 15-16, driven ends 11 and 20.
    for (std::size_t k = 0; k < times.size(); ++k) {
        const auto vtk = readback::readVtk(resultFile(deck, k));
        ASSERT_EQ(vtk.points.size(), 21u);
        const double gap = vtk.points[15][2] - vtk.points[5][2];
        EXPECT_GT(gap, 0.9 * radius) << "print " << k; // never through each other
    }

    const auto vtk = readback::readVtk(resultFile(deck, times.size() - 1));
    const auto& p = vtk.points;
    EXPECT_NEAR(p[11][2], -0.004, 2e-5);
    EXPECT_NEAR(p[20][2], -0.004, 2e-5);
    EXPECT_NEAR(p[5][2], p[6][2], 1e-7);
    EXPECT_NEAR(p[15][2], p[16][2], 1e-7);
    // Equal wires take equal shares of the 6 mm pushed beyond contact.
    const double sagA = -p[5][2], sagB = p[15][2] - p[11][2];
    EXPECT_NEAR(sagA, 0.003, 1e-4);
    EXPECT_NEAR(sagB, sagA, 1e-5);
    const double gap = p[15][2] - p[5][2];
    EXPECT_GT(gap, 0.95 * radius);
    EXPECT_LT(gap, radius);

    // Node 6 of A: the slanted rods 6-10 carry the tension S11 A; its vertical
    // part balances half of the pair's contact force 50 (1 - d/R).
    const double dx = p[10][0] - p[6][0], dz = p[10][2] - p[6][2];
    const double stress = vtk.scalars.at("S11")[6]; // rod 7, nodes 7-8
    const double area = M_PI * 0.004 * 0.004 / 4;
    const double lift = stress * area * dz / std::sqrt(dx * dx + dz * dz);
    EXPECT_NEAR(lift, 0.5 * 50 * (1 - gap / radius), 0.03 * lift);
    // Both wires carry the same tension.
    EXPECT_NEAR(vtk.scalars.at("S11")[15], stress, 1e-3 * stress);
}

namespace {

using Point = std::array<double, 3>;

double dot(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Point minus(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

// Depth of a point below the faces of the given triangles (the largest
// distance behind a face whose normal projection holds the point), 0 if none.
double depthBelow(const Point& p, const std::vector<std::array<Point, 3>>& faces, double reach) {
    double depth = 0;
    for (const auto& f : faces) {
        const Point a = minus(f[1], f[0]), b = minus(f[2], f[0]);
        Point n = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        const double length = std::sqrt(dot(n, n));
        for (double& c : n)
            c /= length;
        const Point q = minus(p, f[0]);
        const double d = dot(q, n);
        if (d >= 0 || d < -reach) continue;
        const double aa = dot(a, a), ab = dot(a, b), bb = dot(b, b), qa = dot(q, a), qb = dot(q, b);
        const double det = aa * bb - ab * ab, u = (bb * qa - ab * qb) / det, v = (aa * qb - ab * qa) / det;
        if (u >= 0 && v >= 0 && u + v <= 1) depth = std::max(depth, -d);
    }
    return depth;
}

} // namespace

TEST(ContactExamplesTest, SheetComesToRestOnTheToolCarryingItsWeight) {
    const auto deck = runExample("sheet_on_tool");
    const auto times = printTimes(deck);
    ASSERT_EQ(times.size(), 20u);
    // The tool's contact triangles are 2 thick around z = -1.5: their upper
    // surface is at z = -0.5, half a millimetre below the sheet's start.
    const double surface = -0.5, thickness = 2.0;
    for (std::size_t k = 10; k < times.size(); ++k) {
        const auto vtk = readback::readVtk(resultFile(deck, k));
        ASSERT_EQ(vtk.points.size(), 186u);
        for (int i = 1; i <= 121; ++i) { // the sheet
            EXPECT_GT(vtk.points[i][2], surface - 0.01 * thickness) << "print " << k << " node " << i;
            EXPECT_LT(vtk.points[i][2], surface + 0.01 * thickness) << "print " << k << " node " << i;
        }
    }
    // At rest the tool carries the sheet's weight: 1e-7 t/mm2 x 100 mm x 100 mm x 9810 mm/s2.
    const double weight = 1e-7 * 100 * 100 * 9810;
    const auto row = lastRow(deck.parent_path() / "TOOLLOAD.csv");
    ASSERT_EQ(row.size(), 64u + 2u);
    EXPECT_NEAR(-row.back(), weight, 0.02 * weight);
    const auto kinetic = readback::logValues(deck.parent_path() / "sheet_on_tool.md", "Kinetic energy: ");
    EXPECT_LT(kinetic.back(), 1e-5);
}

TEST(ContactExamplesTest, DomePunchDrapesTheSheetWithoutPiercingIt) {
    const auto deck = runExample("draping");
    const auto times = printTimes(deck);
    ASSERT_EQ(times.size(), 10u);
    const int sheetNodes = 441, centre = 221;
    for (std::size_t k = 0; k < times.size(); ++k) {
        const auto vtk = readback::readVtk(resultFile(deck, k));
        ASSERT_EQ(vtk.points.size(), 569u);
        // The punch's faces are the cells on its own nodes.
        std::vector<std::array<Point, 3>> faces;
        double top = -1e9;
        for (const auto& cell : vtk.cells)
            if (cell.size() == 3 && cell[0] > sheetNodes)
                faces.push_back({vtk.points[cell[0]], vtk.points[cell[1]], vtk.points[cell[2]]});
        for (int i = sheetNodes + 1; i < 569; ++i)
            top = std::max(top, vtk.points[i][2]);
        ASSERT_EQ(faces.size(), 216u);
        double deepest = 0;
        for (int i = 1; i <= sheetNodes; ++i)
            deepest = std::max(deepest, depthBelow(vtk.points[i], faces, 1.0));
        EXPECT_LT(deepest, 0.01) << "print " << k;
        // Once the punch has reached the sheet and the start-up has passed,
        // the centre rides on its top.
        if (k >= 5) {
            EXPECT_NEAR(vtk.points[centre][2], top, 0.05) << "print " << k;
        }
    }
    // The edges, held only in z, are drawn in alike on all four sides.
    const auto vtk = readback::readVtk(resultFile(deck, times.size() - 1));
    const double in[4] = {vtk.points[11][1], 100 - vtk.points[431][1], vtk.points[211][0],
                          100 - vtk.points[231][0]};
    for (double d : in) {
        EXPECT_NEAR(d, 5.2, 0.3);
        EXPECT_NEAR(d, in[0], 0.05 * in[0]);
    }
    // The sheet pushes back on the punch.
    EXPECT_LT(lastRow(deck.parent_path() / "PUNCH.csv").back(), 0.0);
    // Quasi-static: at the end the kinetic energy (column 3 of the energy
    // history) is under a tenth of the internal energy (column 4).
    const auto energy = lastRow(deck.parent_path() / (deck.stem().string() + "_energy.csv"));
    ASSERT_GE(energy.size(), 5u);
    EXPECT_GT(energy[4], 0.0);
    EXPECT_LT(energy[3], 0.1 * energy[4]);
}

TEST(RodExamples, BarPulledAtOneEndStretchesUniformly) {
    const auto deck = runExample("rod_bar");
    const auto times = readback::logValues(deck.parent_path() / "rod_bar.md", "Current time: ");
    ASSERT_EQ(times.size(), 11u);
    const double t = times.back();
    const auto vtk = readback::readVtk(resultFile(deck, times.size() - 1));
    ASSERT_EQ(vtk.points.size(), 12u);
    ASSERT_EQ(vtk.cells.size(), 10u);

    // Fixed end: exactly where it started.
    EXPECT_EQ(vtk.points[1][0], 0.0);
    EXPECT_EQ(vtk.points[1][1], 0.0);
    // Pulled end: the time integral of 1 m/s times the ramp 0 -> 1 over 2 ms,
    // one step (about 2e-5 s) late.
    const double pulled = 0.001 + (t - 0.002);
    const double u = vtk.points[11][0] - 1.0;
    EXPECT_NEAR(u, pulled, 4e-5);
    EXPECT_EQ(vtk.points[11][1], 0.0);
    EXPECT_EQ(vtk.points[11][2], 0.0);
    // Quasi-static: every node moved in proportion to its distance from the
    // fixed end, and every rod has the same logarithmic strain.
    for (int i = 1; i <= 11; ++i)
        EXPECT_NEAR(vtk.points[i][0], 0.1 * (i - 1) * (1.0 + u), 2e-5) << i;
    for (int e = 0; e < 10; ++e) {
        const double strain = vtk.scalars.at("E11")[e];
        EXPECT_NEAR(strain, std::log(1.0 + u), 5e-5) << e;
        EXPECT_NEAR(vtk.scalars.at("S11")[e], 2.1e11 * strain, 2e-4 * 2.1e11 * strain) << e;
    }
}

TEST(RodExamples, HangingChainSettlesIntoEquilibrium) {
    const auto deck = runExample("hanging_chain");
    const auto log = deck.parent_path() / "hanging_chain.md";
    const auto kinetic = readback::logValues(log, "Kinetic energy: ");
    ASSERT_GT(kinetic.size(), 20u);
    EXPECT_GT(*std::max_element(kinetic.begin(), kinetic.end()), 1e-4);
    EXPECT_LT(kinetic.back(), 1e-6);

    const auto vtk = readback::readVtk(resultFile(deck, kinetic.size() - 1));
    ASSERT_EQ(vtk.points.size(), 14u);
    ASSERT_EQ(vtk.cells.size(), 12u);
    const auto& p = vtk.points;

    // Symmetric about x = 0.5, with its lowest point in the middle.
    for (int i = 1; i <= 13; ++i) {
        EXPECT_NEAR(p[i][0] + p[14 - i][0], 1.0, 2e-6) << i;
        EXPECT_NEAR(p[i][2], p[14 - i][2], 2e-6) << i;
        EXPECT_EQ(p[i][1], 0.0);
    }
    EXPECT_NEAR(p[7][2], -0.265, 0.005);

    // Rod forces N = sigma A with A = A0 L0 / L.
    const double A0 = M_PI * 0.004 * 0.004 / 4.0;
    const double L0 = std::sqrt(1.0 / 144.0 + 0.05 * 0.05);
    double N[12], ex[12], ez[12];
    for (int e = 0; e < 12; ++e) {
        const double dx = p[e + 2][0] - p[e + 1][0], dz = p[e + 2][2] - p[e + 1][2];
        const double L = std::hypot(dx, dz);
        N[e] = vtk.scalars.at("S11")[e] * A0 * L0 / L;
        ex[e] = dx / L;
        ez[e] = dz / L;
        EXPECT_GT(N[e], 0.0);
    }
    // The horizontal pull is the same in every rod.
    for (int e = 1; e < 12; ++e)
        EXPECT_NEAR(N[e] * ex[e], N[0] * ex[0], 1e-3 * N[0] * ex[0]) << e;
    // Each free node's weight hangs on the vertical components of its rods.
    const double weight = 1200.0 * A0 * L0 * 9.81;
    for (int e = 0; e < 11; ++e)
        EXPECT_NEAR(N[e + 1] * ez[e + 1] - N[e] * ez[e], weight, 5e-3 * weight) << e;
}
