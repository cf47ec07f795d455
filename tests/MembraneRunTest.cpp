// Whole runs of membrane decks: results read back from the VTK files.
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace testutil;

TEST(MembraneRun, UniformPressureAcceleratesAFreeSheetAsARigidBody) {
    // Two triangles, density 1e-3 per unit area, pressure 2e-3 along +z:
    // every node accelerates at p / rho = 2 and the sheet stays unstrained.
    // The file written at step k holds the positions after step k + 1:
    // z = (p / rho) ((k + 1) dt)^2 / 2.
    fs::path deck;
    const RunResult r = runDeck("membrane_pressure", R"(TITLE
CONTROLS
RUN FROM 0 TO 0.004
STEP 0.001
PRINT EVERY 0.001
LOADS
PUSH P 0.002
MATERIALS TYPE HYPERELASTIC
RUBBER RHO 0.001 TYPE OGDEN MU 1 ALPHA 2
NODES
1 X 0 Y 0 Z 0
2 X 2 Y 0 Z 0
3 X 2 Y 1 Z 0
4 X 0 Y 1 Z 0
ELEMENTS TYPE MEMBRANE_3
1 NODES 1 2 3 MATERIAL RUBBER T 0.1 LOAD PUSH
2 NODES 1 3 4 MATERIAL RUBBER T 0.1 LOAD PUSH
)",
                                &deck);
    ASSERT_TRUE(contains(r.out, "Solving took")) << r.err;
    const fs::path results = deck.parent_path() / "Results_membrane_pressure";
    for (int k = 0; k <= 4; ++k) {
        const auto vtk = readback::readVtk(results / ("membrane_pressure_" + std::to_string(k) + ".vtk"));
        ASSERT_EQ(vtk.points.size(), 5u);
        const double dt = 0.001, z = 0.5 * 2.0 * std::pow((k + 1) * dt, 2);
        const double xy[4][2] = {{0, 0}, {2, 0}, {2, 1}, {0, 1}};
        for (int n = 1; n <= 4; ++n) {
            EXPECT_NEAR(vtk.points[n][2], z, 1e-5 * z) << "file " << k << " node " << n;
            EXPECT_DOUBLE_EQ(vtk.points[n][0], xy[n - 1][0]);
            EXPECT_DOUBLE_EQ(vtk.points[n][1], xy[n - 1][1]);
        }
        for (const char* s : {"S11", "S22", "S12"})
            EXPECT_EQ(vtk.scalars.at(s), (std::vector<double>{0, 0}));
        // Ogden strains are the principal stretches (1, 1, 1).
        EXPECT_EQ(vtk.scalars.at("E33"), (std::vector<double>{1, 1}));
    }
    const std::string text = readFile(results / "membrane_pressure_4.vtk");
    EXPECT_TRUE(contains(text, "SCALARS S11 FLOAT\nLOOKUP_TABLE default \n0.0\t0.0\t\n"));
    EXPECT_TRUE(contains(text, "SCALARS E11 FLOAT\nLOOKUP_TABLE default \n1.000000\t1.000000\t\n"));
}
