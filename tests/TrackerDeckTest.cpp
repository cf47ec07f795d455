// A whole run with node trackers on free nodes under acceleration loads: the
// rows follow the central difference in closed form. (The value each TYPE and
// DIRECTION reads is TrackerTest; the file layout, the totals and the rows'
// agreement with the result files are the TIP.csv, STRESS.csv and bar_2.vtk
// blocks of docs/outputs.md; bad tracker lines are under decks/malformed; a
// contact element tracked is in the contact deck test.)
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <string>

namespace {

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
)";

} // namespace

TEST(TrackerDeckTest, NodeHistoriesFollowTheCentralDifferenceMotion) {
    std::filesystem::path deck;
    ASSERT_EQ(testutil::runDeck("trk_free_nodes", freeNodesDeck, &deck).err, "");
    const auto position = readback::csvRows(deck.parent_path() / "TIP.csv");
    const auto velocity = readback::csvRows(deck.parent_path() / "V1.csv");
    const auto acceleration = readback::csvRows(deck.parent_path() / "A1.csv");
    ASSERT_EQ(position.size(), 3u);
    ASSERT_EQ(velocity.size(), 3u);
    ASSERT_EQ(acceleration.size(), 3u);

    // Constant acceleration a from rest with step dt: after k updates the
    // central difference gives u = a (k dt)^2 / 2 and v = a (k - 1/2) dt; the
    // row printed at time t follows the update of that step, k = t/dt + 1.
    const double dt = 0.25, z0[3] = {1.5, -0.5, 0.25}, a[3] = {5.0, -1.0, 0.0};
    for (int r = 0; r < 3; ++r) {
        SCOPED_TRACE("row " + std::to_string(r));
        const double t = 0.5 * r + dt;
        EXPECT_DOUBLE_EQ(position[r][0], 0.5 * r);
        for (int n = 0; n < 3; ++n) {
            EXPECT_NEAR(position[r][1 + n], z0[n] + 0.5 * a[n] * t * t, 1e-9);
            EXPECT_NEAR(acceleration[r][1 + n], a[n], 1e-9);
        }
        // The columns follow the order of the tracker's list: node 2, node 1.
        EXPECT_NEAR(velocity[r][1], a[1] * (t - 0.5 * dt), 1e-9);
        EXPECT_NEAR(velocity[r][2], a[0] * (t - 0.5 * dt), 1e-9);
    }
}
