// Rigid bodies in whole runs: a prescribed rotation carries every member
// rigidly; a free body under a force and a moment accelerates as F/M and
// M/J with its members' masses (also those mass scaling gives them); a free
// tool pressed onto supported rods comes to rest where the contact reactions
// balance its load. Bad body lines are under decks/malformed.
#include "RigidBody.h"
#include "Node.h"
#include "QuietModel.h"
#include "ResultReadBack.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using contact_test::QuietModel;

void runTo(Model& model, double endTime) {
    double candidate = 90000.0;
    while (model.getCurrentTime() < endTime) {
        model.step(candidate, true);
        model.advanceTime(true);
    }
}

} // namespace

// A tetrahedron of four members turned about the tilted axis (1, 2, 2)/3 at
// the rate 3 f(t), f a ramp to 1 at t = 0.5: every member stays where the
// reference node's accumulated rotation puts it (so the distances hold), and
// the angle is the integral of the rate, 0.75 + 3 (t - 0.5) past the ramp.
TEST(RigidBodyTest, PrescribedRotationCarriesEveryNodeRigidly) {
    QuietModel model("rigid_spin", R"(TITLE
CONTROLS
RUN FROM 0 TO 1
STEP 0.001
AMPLITUDES TYPE TABULAR
RAMP VALUES 0 0 0.5 1 2 1
CONSTRAINTS TYPE BOUNDARY_CONDITION
SPIN VX 0.2 VY 0 VZ 0 VRX 1 VRY 2 VRZ 2 AMPLITUDE RAMP
RIGID_BODIES
TOOL REFERENCE 5 NODES 1 TO 5
NODES
1 X 1 Y 0 Z 0
2 X 0 Y 1 Z 0
3 X -1 Y -1 Z 0.5
4 X 0.3 Y 0.2 Z 1
5 X 0.1 Y 0.1 Z 0.1 CONSTRAINT SPIN
ELEMENTS TYPE CONTACT_TRIANGLE
1 NODES 1 2 3
2 NODES 1 2 4
)");
    const auto& map = model->getNodeMap();
    const Node& ref = *map.at(5);
    Node::Vec3 rest[4];
    for (int i = 0; i < 4; ++i)
        rest[i] = map.at(i + 1)->getPos();
    for (double until : {0.3, 1.0}) {
        runTo(*model, until);
        const double t = model->getCurrentTime();
        const Node::Vec3 turned = ref.getRot(), x0 = ref.getPos(), w = ref.getRotVel();
        const double angle = std::sqrt(turned[0] * turned[0] + turned[1] * turned[1] + turned[2] * turned[2]);
        const double integral = t < 0.5 ? 3.0 * t * t : 0.75 + 3.0 * (t - 0.5);
        // The update moves with the velocity of the step before: within two steps of the integral.
        EXPECT_NEAR(angle, integral, 2.0 * 3.0 * 0.001);
        EXPECT_NEAR(turned[0] / angle, 1.0 / 3.0, 1e-12);
        EXPECT_NEAR(turned[1] / angle, 2.0 / 3.0, 1e-12);
        EXPECT_NEAR(x0[0] - 0.1, 0.2 * angle / 3.0, 1e-12);
        for (int i = 0; i < 4; ++i) {
            const Node& n = *map.at(i + 1);
            const Node::Vec3 r = {rest[i][0] - 0.1, rest[i][1] - 0.1, rest[i][2] - 0.1};
            const Node::Vec3 expected = testutil::rotate(turned, r), x = n.getPos(), v = n.getVel();
            for (int k = 0; k < 3; ++k)
                EXPECT_NEAR(x[k], x0[k] + expected[k], 1e-10) << "node " << i + 1 << " at t " << t;
            const double wr[3] = {w[1] * expected[2] - w[2] * expected[1],
                                  w[2] * expected[0] - w[0] * expected[2],
                                  w[0] * expected[1] - w[1] * expected[0]};
            for (int k = 0; k < 3; ++k)
                EXPECT_NEAR(v[k], ref.getVel()[k] + wr[k], 1e-10);
        }
    }
}

// A body of MASS 1 and INERTIA 1 1 0.5 with a rod of mass 1 between its two
// members (lumped 0.5 at each, 1 m from the reference node, and m L^2/12 of
// rod inertia at each end): M = 2, Jzz = 0.5 + 1 + 2/3. Pushed by F = (3, 0, 6)
// and turned by Mz = 1.3 from rest, the central difference gives exactly
// u = a (t + dt)^2 / 2 and θ = α (t + dt)^2 / 2; the rod between two members
// is not strained; the kinetic energy is the body's, counted once.
const std::string freeBody = R"(TITLE
CONTROLS
RUN FROM 0 TO 1
STEP 0.001
LOADS
PUSH FX 3 FZ 6 MZ 1.3
MATERIALS TYPE ELASTIC
STEEL E 1E5 NU 0.3 RHO 100
RIGID_BODIES
BLOCK REFERENCE 1 NODES 2 3 MASS 1 INERTIA 1 1 0.5
NODES
1 X 0 Y 0 Z 0 LOAD PUSH
2 X 1 Y 0 Z 0
3 X -1 Y 0 Z 0
ELEMENTS TYPE ROD_2
1 NODES 2 3 MATERIAL STEEL D 0.07978845608
)";

TEST(RigidBodyTest, FreeBodyAcceleratesAsForceOverMassAndMomentOverInertia) {
    QuietModel model("rigid_free", freeBody);
    const auto& map = model->getNodeMap();
    const double M = 2.0, Jzz = 0.5 + 1.0 + 2.0 / 3.0, dt = 0.001;
    EXPECT_NEAR(model->getRigidBodies().front()->getMass(), M, 1e-9);
    runTo(*model, 0.8);
    const double t = model->getCurrentTime() - dt, s = (t + dt) * (t + dt) / 2.0;
    const Node& ref = *map.at(1);
    EXPECT_NEAR(ref.getX_pos(), 3.0 / M * s, 1e-9);
    EXPECT_NEAR(ref.getZ_pos(), 6.0 / M * s, 1e-9);
    const double theta = 1.3 / Jzz * s;
    EXPECT_NEAR(ref.getZ_rot(), theta, 1e-9);
    for (int i : {2, 3}) {
        const Node& n = *map.at(i);
        const double side = i == 2 ? 1.0 : -1.0;
        EXPECT_NEAR(n.getX_pos(), ref.getX_pos() + side * std::cos(theta), 1e-9);
        EXPECT_NEAR(n.getY_pos(), ref.getY_pos() + side * std::sin(theta), 1e-9);
        EXPECT_NEAR(n.getZ_pos(), ref.getZ_pos(), 1e-12);
    }
    const Node::Vec3 v = ref.getVel();
    const double vz = 6.0 / M * (t + dt / 2.0);
    EXPECT_NEAR(v[2], vz, 1e-9);
    // The node's kinetic energy is taken at the whole step: v - a dt / 2.
    const double vxWhole = 3.0 / M * t, vzWhole = 6.0 / M * t;
    EXPECT_NEAR(model->getKineticEnergy(), 0.5 * M * (vxWhole * vxWhole + vzWhole * vzWhole), 1e-6);
    EXPECT_NEAR(model->getInternalEnergy(), 0.0, 1e-9);
}

// Mass scaling to 0.1 multiplies the rod's mass by (0.1 / (L / c))^2 =
// (0.1 sqrt(1000) / 2)^2 = 2.5: the body takes its members' new mass.
TEST(RigidBodyTest, BodyTakesTheMassThatScalingGivesItsMembers) {
    std::string deck = freeBody;
    deck.replace(deck.find("STEP 0.001"), 10, "STEP 0.001\nMASS SCALING 0.1");
    QuietModel model("rigid_scaled", deck);
    EXPECT_NEAR(model->getRigidBodies().front()->getMass(), 1.0 + 2.5, 1e-9);
    EXPECT_NEAR(model->getNodeMap().at(1)->getMass(), 1.0 + 2.5, 1e-9);
}

// A triangular SOLID tool of MASS 1 on its own reference node, free in
// every direction, is pressed by a load ramped to 30 onto the tops of three
// vertical rods (EA = 1000, L = 1, log strain, A L constant) that sit
// symmetrically under it. At rest each rod carries 10: 1000 ln(λ)/λ = -10,
// and each top sinks 1E-3 into the tool (FACTOR 1E4). The tracker of the
// reference node's contact force reads the summed reactions, its force
// tracker the balance (0), its position tracker the stroke.
TEST(RigidBodyTest, FreeToolComesToRestWhereTheContactReactionsBalanceItsLoad) {
    const std::string deck = R"(TITLE
CONTROLS
RUN FROM 0 TO 1.5005
STEP 0.001
PRINT EVERY 0.1
AMPLITUDES TYPE TABULAR
RAMP VALUES 0 0 0.3 1 10 1
CONSTRAINTS TYPE BOUNDARY_CONDITION
BASE VX 0 VY 0 VZ 0
GUIDE VX 0 VY 0
LOADS
PRESS FZ -30 AMPLITUDE RAMP
MATERIALS TYPE ELASTIC
POST E 1E5 NU 0.3 RHO 100 DAMPING 20
RIGID_BODIES
TOOL REFERENCE 10 NODES 7 TO 9 MASS 1 INERTIA 1 1 1
NODES
1 X 0.000000 Y 0.500000 Z 0 CONSTRAINT GUIDE
2 X 0.000000 Y 0.500000 Z -1 CONSTRAINT BASE
3 X -0.433013 Y -0.250000 Z 0 CONSTRAINT GUIDE
4 X -0.433013 Y -0.250000 Z -1 CONSTRAINT BASE
5 X 0.433013 Y -0.250000 Z 0 CONSTRAINT GUIDE
6 X 0.433013 Y -0.250000 Z -1 CONSTRAINT BASE
7 X 1.732051 Y -1.000000 Z 0
8 X -1.732051 Y -1.000000 Z 0
9 X 0.000000 Y 2.000000 Z 0
10 X 0 Y 0 Z 2 LOAD PRESS
ELEMENTS TYPE ROD_2
1 NODES 2 1 MATERIAL POST D 0.1128379
2 NODES 4 3 MATERIAL POST D 0.1128379
3 NODES 6 5 MATERIAL POST D 0.1128379
ELEMENTS TYPE CONTACT_TRIANGLE
4 NODES 7 8 9 T 0.5 FACTOR 1E4 TYPE SOLID
TRACKERS TYPE NODE
STROKE NODES 10 DIRECTION Z TYPE POSITION
REACTION NODES 10 DIRECTION Z TYPE CONTACTFORCE
BALANCE NODES 10 DIRECTION Z TYPE FORCE
)";
    testutil::fs::path path;
    const auto run = testutil::runDeck("rigid_press", deck, &path);
    ASSERT_EQ(run.err, "");
    const auto dir = path.parent_path();
    double lambda = 0.99; // Newton on g(λ) = ln λ / λ + 0.01
    for (int i = 0; i < 20; ++i)
        lambda -= (std::log(lambda) / lambda + 0.01) / ((1.0 - std::log(lambda)) / (lambda * lambda));
    const double stroke = 2.0 - ((1.0 - lambda) + 10.0 / 1e4);
    EXPECT_NEAR(readback::lastRow(dir / "REACTION.csv").at(1), 30.0, 0.03);
    EXPECT_NEAR(readback::lastRow(dir / "BALANCE.csv").at(1), 0.0, 0.03);
    EXPECT_NEAR(readback::lastRow(dir / "STROKE.csv").at(1), stroke, 1e-5); // six digits written
}
