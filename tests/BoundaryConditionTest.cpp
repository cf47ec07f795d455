#include "BoundaryCondition.h"
#include "ConstraintLibrary.h"
#include "Node.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

namespace {

// A node of mass 2 under a boundary condition, ready to integrate.
Node constrained(const std::string& text) {
    auto c = ConstraintLibrary::getConstraintOstrel("BOUNDARY_CONDITION");
    c->parseOstrel(testutil::tokens(text), testutil::ramp());
    Node n;
    n.setConstraint(c);
    n.addMass(2.0);
    n.determineMassMatrix();
    n.setInitialConditions();
    return n;
}

} // namespace

TEST(BoundaryConditionTest, ZeroVelocityHoldsTheDisplacementExactly) {
    Node n = constrained("VX 0 VRZ 0");
    for (int step = 0; step < 50; ++step) {
        n.addExternalForce(10.0, -4.0, 0.0);
        n.addInternalMoment(0.0, 0.0, 3.0);
        n.computeNewPosition(1e-3, step * 1e-3);
        EXPECT_EQ(n.getX_acc(), 0.0);
        EXPECT_EQ(n.getX_vel(), 0.0);
        EXPECT_EQ(n.getDisplacement()[0], 0.0);
        EXPECT_EQ(n.getDisplacement()[5], 0.0);
        n.clearNodalForces();
    }
    // The free y component moved under its force: F t^2 / (2m) with the
    // half-step start of the central difference.
    EXPECT_NEAR(n.getDisplacement()[1], -4.0 / 2.0 * 0.05 * 0.05 / 2.0, 1e-6);
}

// The initial conditions set the velocity at time 0; each step moves the node
// with the velocity it had before the step, then sets the new one.
TEST(BoundaryConditionTest, PrescribedVelocityFollowsTheAmplitudeAndMovesTheNodeFromTheNextStep) {
    for (bool ramped : {true, false}) {
        SCOPED_TRACE(ramped ? "ramp" : "constant");
        Node n = ramped ? constrained("VX 2 AMPLITUDE RAMP") : constrained("VX 2");
        auto v = [&](double t) { return ramped ? 2.0 * t : 2.0; };
        const double dt = 0.01;
        double expectedDisplacement = 0.0, previous = v(0.0);
        EXPECT_EQ(n.getX_vel(), previous);
        for (int step = 0; step < 100; ++step) {
            const double t = step * dt;
            n.computeNewPosition(dt, t);
            expectedDisplacement += dt * previous;
            previous = v(t);
            EXPECT_NEAR(n.getX_vel(), previous, 1e-12);
            EXPECT_NEAR(n.getDisplacement()[0], expectedDisplacement, 1e-12);
        }
    }
}

TEST(BoundaryConditionTest, AccelerationIsScaledAndVelocityWinsOnEveryComponent) {
    auto c = ConstraintLibrary::getConstraintOstrel("BOUNDARY_CONDITION");
    c->parseOstrel(testutil::tokens("AX 4 AY -3 VY 1.5 VRX 1 ARY 2 AMPLITUDE RAMP"), testutil::ramp());
    Node n;
    n.setZ_acc(7.0);
    n.setX_vel(3.0);
    n.setX_rot_acc(5.0);
    c->applyAccelerationConditions(&n, 0.5);
    EXPECT_DOUBLE_EQ(n.getX_acc(), 2.0);
    EXPECT_EQ(n.getY_acc(), 0.0);
    EXPECT_EQ(n.getZ_acc(), 7.0);
    EXPECT_EQ(n.getX_rot_acc(), 0.0);
    EXPECT_DOUBLE_EQ(n.getY_rot_acc(), 1.0);
    c->applyVelocityConditions(&n, 0.5);
    EXPECT_DOUBLE_EQ(n.getY_vel(), 0.75);
    EXPECT_EQ(n.getX_vel(), 3.0);
    EXPECT_DOUBLE_EQ(n.getX_rot_vel(), 0.5);
    EXPECT_EQ(n.getY_rot_vel(), 0.0);
}
