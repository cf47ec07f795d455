// Whole runs of shell decks: a clamped strip under a ramped tip force settles
// on the deflection and root stress of beam theory, read back from the result
// files.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace {

namespace fs = std::filesystem;
using testutil::contains;

// Strip of tools/cantilever_deck.py's defaults: mm, N, MPa.
constexpr double L = 100.0, B = 10.0, t = 4.0, P = 30.0, E = 210000.0;
constexpr double I = B * t * t * t / 12.0;

double beamDeflection(double x) {
    return P * x * x * (3.0 * L - x) / (6.0 * E * I);
}

fs::path makeDeck(const std::string& name, const std::string& options) {
    const fs::path dir = testutil::scratchDir(name);
    const fs::path deck = dir / (name + ".txt");
    const auto r = testutil::runCommand(std::string(DRAPEX_SYSTEM_PYTHON) + " '" + DRAPEX_ROOT +
                                        "/tools/cantilever_deck.py' '" + deck.string() + "' " + options);
    EXPECT_EQ(r.status, 0) << r.err;
    return deck;
}

// Result file N of a deck, counted from the last one written (0 = last).
fs::path resultFromEnd(const fs::path& deck, int back) {
    const std::string stem = deck.stem().string();
    const fs::path dir = deck.parent_path() / ("Results_" + stem);
    int count = 0;
    while (fs::exists(dir / (stem + "_" + std::to_string(count) + ".vtk")))
        ++count;
    return dir / (stem + "_" + std::to_string(count - 1 - back) + ".vtk");
}

TEST(ShellCantilever, CoarseStripSettlesOnTheBeamDeflectionAndRootStress) {
    const int nx = 10, ny = 1;
    const fs::path deck = makeDeck("shell_cantilever", "--nx 10 --ny 1 --end 0.015 --prints 15");
    const auto run = testutil::runDrapex(deck);
    ASSERT_FALSE(contains(run.err, "Exception")) << run.err;
    ASSERT_TRUE(contains(run.out, " Exit Drapex"));

    const auto last = readback::readVtk(resultFromEnd(deck, 0));
    const auto before = readback::readVtk(resultFromEnd(deck, 1));
    ASSERT_EQ(last.points.size(), std::size_t((nx + 1) * (ny + 1) + 1));
    ASSERT_EQ(last.cells.size(), std::size_t(2 * nx * ny));
    auto node = [&](int i, int j) { return i * (ny + 1) + j + 1; };

    // Clamped edge in place; free edge down by P L^3 / (3 E I), level across.
    for (int j = 0; j <= ny; ++j) {
        EXPECT_EQ(last.points[node(0, j)][2], 0.0);
        EXPECT_EQ(last.points[node(0, j)][0], 0.0);
    }
    const double tip = last.points[node(nx, 0)][2];
    EXPECT_NEAR(tip, -beamDeflection(L), 0.025 * beamDeflection(L));
    EXPECT_NEAR(last.points[node(nx, ny)][2], tip, 1e-3 * std::fabs(tip));
    // The TIP tracker's last row holds the same free-edge z values and their sum.
    const auto rows = testutil::readLines(deck.parent_path() / "TIP.csv");
    ASSERT_GE(rows.size(), 3u);
    double z[3];
    ASSERT_EQ(std::sscanf(rows.back().c_str(), "%*f, %lf, %lf, %lf", &z[0], &z[1], &z[2]), 3);
    EXPECT_NEAR(z[0], tip, 1e-5);
    EXPECT_NEAR(z[2], z[0] + z[1], 1e-5);
    // Settled: the last two prints agree.
    EXPECT_NEAR(before.points[node(nx, 0)][2], tip, 1e-3 * std::fabs(tip));
    // Deflected shape along the strip.
    for (int i : {3, 5, 8}) {
        const double x = L * i / nx;
        EXPECT_NEAR(last.points[node(i, 0)][2], -beamDeflection(x), 0.05 * beamDeflection(x)) << x;
    }

    // Element 1 (nodes at x = 0, 10, 10; first edge along x) carries the
    // bending stress of the moment at its centroid at the first point,
    // z = 0.7746 t/2: the upper fibre of the hogging strip is in tension.
    const double xc = 20.0 / 3.0, z0 = 0.5 * t * 0.774596669241483;
    const double sigma = P * (L - xc) * z0 / I;
    EXPECT_NEAR(last.scalars.at("S11")[0], sigma, 0.02 * sigma);
    EXPECT_NEAR(last.scalars.at("E11")[0], sigma / E, 0.03 * sigma / E); // plane stress, nearly uniaxial
    EXPECT_EQ(last.scalars.at("S33")[0], 0.0);
}

} // namespace
