// The contact examples run end to end; their result files are read back and
// checked against the balance of forces they are meant to show.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

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
