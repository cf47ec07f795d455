// The contact examples run end to end; their result files are read back and
// checked against the balance of forces they are meant to show.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <sstream>

#include <algorithm>
#include <array>
#include <cmath>

using namespace testutil;

namespace {

const double pi = 3.14159265358979323846;

std::filesystem::path runExample(const std::string& name) {
    const std::string text =
        readFile(std::filesystem::path(DRAPEX_ROOT) / "examples" / name / (name + ".txt"));
    EXPECT_FALSE(text.empty());
    std::filesystem::path deck;
    const RunResult run = runDeck(name, text, &deck);
    EXPECT_TRUE(contains(run.out, " Exit Drapex"));
    EXPECT_EQ(run.err, "");
    return deck;
}

std::filesystem::path resultFile(const std::filesystem::path& deck, std::size_t k) {
    const std::string stem = deck.stem().string();
    return deck.parent_path() / ("Results_" + stem) / (stem + "_" + std::to_string(k) + ".vtk");
}

} // namespace

TEST(ContactExamplesTest, CrossingRodsPressEachOtherIntoEqualVees) {
    const auto deck = runExample("crossing_rods");
    const auto times = readback::logValues(deck.parent_path() / "crossing_rods.md", "Current time: ");
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
    const double area = pi * 0.004 * 0.004 / 4;
    const double lift = stress * area * dz / std::sqrt(dx * dx + dz * dz);
    EXPECT_NEAR(lift, 0.5 * 50 * (1 - gap / radius), 0.03 * lift);
    // Both wires carry the same tension.
    EXPECT_NEAR(vtk.scalars.at("S11")[15], stress, 1e-3 * stress);
}

namespace {

// Last row of a tracker file, split at the commas.
std::vector<double> lastRow(const std::filesystem::path& csv) {
    const auto lines = readLines(csv);
    std::vector<double> values;
    if (lines.size() < 2) return values;
    std::stringstream row(lines.back());
    std::string cell;
    while (std::getline(row, cell, ','))
        values.push_back(std::stod(cell));
    return values;
}

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
    const auto times = readback::logValues(deck.parent_path() / "sheet_on_tool.md", "Current time: ");
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
    const auto times = readback::logValues(deck.parent_path() / "draping.md", "Current time: ");
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
        EXPECT_GT(d, 3.0);
        EXPECT_NEAR(d, in[0], 0.15 * in[0]);
    }
    // The sheet pushes back on the punch.
    EXPECT_LT(lastRow(deck.parent_path() / "PUNCH.csv").back(), 0.0);
}
