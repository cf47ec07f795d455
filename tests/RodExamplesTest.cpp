// The rod examples run end to end; their result files are read back and
// compared with closed-form answers.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testutil;

namespace {

const double pi = 3.14159265358979323846;

// Runs a copy of an example deck in a scratch directory and returns the deck path.
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

TEST(RodExamplesTest, BarPulledAtOneEndStretchesUniformly) {
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
        for (const char* name : {"E22", "E33", "E12", "E13", "E23", "S22", "S33", "S12", "S13", "S23"})
            EXPECT_EQ(vtk.scalars.at(name)[e], 0.0);
    }
}

TEST(RodExamplesTest, HangingChainSettlesIntoEquilibrium) {
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
    const double A0 = pi * 0.004 * 0.004 / 4.0;
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
