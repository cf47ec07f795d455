// Whole runs with TRACKERS blocks: the CSV histories read back and compared
// with closed-form motion and with the result files of the same run (bad
// tracker lines are under decks/malformed; a contact element tracked is in the
// contact deck test).
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testutil::runDeck;

std::string uniqueName(const std::string& prefix) {
    return prefix + "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
}

using readback::csvRows;

// Three free nodes (no element, so the acceleration loads act alone):
// node 1 accelerates at 2 + 3e-15/1e-15 = 5 in z, node 2 at -1, node 3 not.
const char* const freeNodesDeck = R"(TITLE
free nodes pulled by acceleration loads
CONTROLS
RUN FROM 0.0 TO 1.0
STEP 0.25
PRINT EVERY 0.5
LOADS
UP AZ 2.0 FZ 3e-15
DOWN AZ -1.0
NODES
1 X 0.0 Y 0.0 Z 1.5 LOAD UP
2 X 1.0 Y 0.0 Z -0.5 LOAD DOWN
3 X 2.0 Y 0.0 Z 0.25
TRACKERS TYPE NODE
tip nodes 1 2 3 direction z type position
V1 TYPE VELOCITY NODES 2 1 DIRECTION Z
A1 DIRECTION Z NODES 1 2 3 TYPE ACCELERATION
F1 NODES 1 DIRECTION Z TYPE FORCE
)";

TEST(TrackerDeckTest, NodeHistoriesFollowTheCentralDifferenceMotionAndTheResultFiles) {
    fs::path deck;
    const auto run = runDeck(uniqueName("trk"), freeNodesDeck, &deck);
    ASSERT_EQ(run.err, "");
    const fs::path dir = deck.parent_path();
    const std::string stem = deck.stem().string();

    // Constant acceleration a from rest with step dt: after k updates the
    // central difference gives u = a (k dt)^2 / 2 and v = a (k - 1/2) dt; the
    // row printed at time t follows the update of that step, k = t/dt + 1.
    const double dt = 0.25, z0[3] = {1.5, -0.5, 0.25}, a[3] = {5.0, -1.0, 0.0};
    const double times[3] = {0.0, 0.5, 1.0};

    std::string header;
    const auto position = csvRows(dir / "TIP.csv", &header);
    EXPECT_EQ(header, "Time , Node 1, Node 2, Node 3, Total ");
    ASSERT_EQ(position.size(), 3u);
    for (int r = 0; r < 3; ++r) {
        SCOPED_TRACE("row " + std::to_string(r));
        const auto& row = position[r];
        ASSERT_EQ(row.size(), 5u);
        EXPECT_DOUBLE_EQ(row[0], times[r]);
        const double t = times[r] + dt;
        const auto points =
            readback::readVtk(dir / ("Results_" + stem) / (stem + "_" + std::to_string(r) + ".vtk")).points;
        ASSERT_EQ(points.size(), 4u);
        double sum = 0;
        for (int n = 0; n < 3; ++n) {
            EXPECT_NEAR(row[1 + n], z0[n] + 0.5 * a[n] * t * t, 1e-9);
            EXPECT_NEAR(row[1 + n], points[n + 1][2], 1e-5 * std::fabs(points[n + 1][2]));
            sum += row[1 + n];
        }
        EXPECT_NEAR(row[4], sum, 1e-5 * std::fabs(sum));
    }

    std::string velocityHeader;
    const auto velocity = csvRows(dir / "V1.csv", &velocityHeader);
    EXPECT_EQ(velocityHeader, "Time , Node 2, Node 1, Total ");
    ASSERT_EQ(velocity.size(), 3u);
    for (int r = 0; r < 3; ++r) {
        const double t = times[r] + dt;
        EXPECT_NEAR(velocity[r][1], a[1] * (t - 0.5 * dt), 1e-9);
        EXPECT_NEAR(velocity[r][2], a[0] * (t - 0.5 * dt), 1e-9);
        EXPECT_NEAR(velocity[r][3], (a[0] + a[1]) * (t - 0.5 * dt), 1e-9);
    }

    const auto acceleration = csvRows(dir / "A1.csv");
    ASSERT_EQ(acceleration.size(), 3u);
    for (const auto& row : acceleration) {
        ASSERT_EQ(row.size(), 5u);
        EXPECT_NEAR(row[1], 5.0, 1e-9);
        EXPECT_NEAR(row[2], -1.0, 1e-9);
        EXPECT_EQ(row[3], 0.0);
        EXPECT_NEAR(row[4], 4.0, 1e-9);
    }

    // The nodal force still holds the load when the row is written.
    const auto force = csvRows(dir / "F1.csv");
    ASSERT_EQ(force.size(), 3u);
    for (const auto& row : force)
        EXPECT_NEAR(row[1], 3e-15, 1e-24);
}

// Two soft rods in a row, their ends pulled apart by acceleration loads: the
// elastic forces are negligible (E = 1e-9), so each end follows a t^2/2 and
// the logarithmic strain of a rod is ln(L/L0) with L from that motion.
const char* const rodDeck = R"(TITLE
rod strains tracked
CONTROLS
RUN FROM 0.0 TO 1.0
STEP 0.25
PRINT EVERY 0.5
LOADS
LEFT AX -0.5
RIGHT AX 1.0
MATERIALS TYPE ELASTIC
SOFT E 1e-9 NU 0.3 RHO 1.0
NODES
1 X 0.0 LOAD LEFT
2 X 1.0
3 X 2.0 LOAD RIGHT
ELEMENTS TYPE ROD_2
1 NODES 1 2 MATERIAL SOFT D 0.1
2 NODES 2 3 MATERIAL SOFT D 0.1
TRACKERS TYPE ELEMENT
EPS ELEMENTS 1 2 COMPONENT C11 TYPE STRAIN
)";

TEST(TrackerDeckTest, RodStrainHistoryIsTheLogarithmicStrainOfTheMotion) {
    fs::path deck;
    const auto run = runDeck(uniqueName("trk"), rodDeck, &deck);
    ASSERT_EQ(run.err, "");

    // Strains are computed at the start of a step, from the positions after
    // k = t/dt updates: u = a t^2 / 2 at the row's own time t.
    std::string header;
    const auto rows = csvRows(deck.parent_path() / "EPS.csv", &header);
    EXPECT_EQ(header, "Time , Node 1, Node 2, Total ");
    ASSERT_EQ(rows.size(), 3u);
    const double times[3] = {0.0, 0.5, 1.0};
    for (int r = 0; r < 3; ++r) {
        const double t = times[r];
        const double first = std::log(1.0 + 0.5 * 0.5 * t * t), second = std::log(1.0 + 0.5 * 1.0 * t * t);
        ASSERT_EQ(rows[r].size(), 4u);
        EXPECT_NEAR(rows[r][1], first, 2e-6);
        EXPECT_NEAR(rows[r][2], second, 2e-6);
        EXPECT_NEAR(rows[r][3], float(rows[r][1]) + float(rows[r][2]), 1e-5);
    }
}

} // namespace
