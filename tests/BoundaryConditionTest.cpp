#include "BoundaryCondition.h"
#include "AmpTabular.h"
#include "ConstraintLibrary.h"
#include "Node.h"
#include "TestUtil.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testutil::ramp;
using testutil::tokens;

std::shared_ptr<Constraint> condition(std::initializer_list<const char*> texts) {
    auto c = ConstraintLibrary::getConstraintOstrel("BOUNDARY_CONDITION");
    c->parseOstrel(tokens(texts), ramp());
    return c;
}

} // namespace

TEST(BoundaryConditionTest, ZeroVelocityHoldsTheDisplacementExactly) {
    auto c = condition({"VX", "0", "VRZ", "0"});
    Node n;
    n.setConstraint(c);
    n.addMass(2.0);
    n.determineMassMatrix();
    n.setInitialConditions();
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

TEST(BoundaryConditionTest, VelocityFollowsTheAmplitude) {
    auto c = condition({"VX", "2", "AMPLITUDE", "RAMP"});
    Node n;
    n.setConstraint(c);
    n.addMass(1.0);
    n.determineMassMatrix();
    n.setInitialConditions();
    EXPECT_EQ(n.getX_vel(), 0.0);
    const double dt = 0.01;
    double expectedDisplacement = 0.0;
    for (int step = 0; step < 100; ++step) {
        const double t = step * dt;
        n.computeNewPosition(dt, t);
        EXPECT_NEAR(n.getX_vel(), 2.0 * t, 1e-12);
        EXPECT_NEAR(n.getDisplacement()[0], expectedDisplacement, 1e-12);
        // The prescribed velocity acts on the displacement from the next step on.
        expectedDisplacement += dt * 2.0 * t;
    }
}

TEST(BoundaryConditionTest, AccelerationIsScaledAndVelocityWins) {
    auto c = condition({"AX", "4", "AY", "-3", "VY", "1.5", "AMPLITUDE", "RAMP"});
    Node n;
    c->applyAccelerationConditions(&n, 0.5);
    EXPECT_DOUBLE_EQ(n.getX_acc(), 2.0);
    EXPECT_EQ(n.getY_acc(), 0.0);
    n.setZ_acc(7.0);
    n.setX_vel(3.0);
    c->applyVelocityConditions(&n, 0.5);
    EXPECT_DOUBLE_EQ(n.getY_vel(), 0.75);
    EXPECT_EQ(n.getX_vel(), 3.0);
    c->applyAccelerationConditions(&n, 0.5);
    EXPECT_EQ(n.getZ_acc(), 7.0);
}

TEST(BoundaryConditionTest, RotationalComponents) {
    auto c = condition({"VRX", "1", "ARY", "2", "ARZ", "-1"});
    Node n;
    n.setX_rot_acc(5.0);
    c->applyAccelerationConditions(&n, 0.0);
    EXPECT_EQ(n.getX_rot_acc(), 0.0);
    EXPECT_EQ(n.getY_rot_acc(), 2.0);
    EXPECT_EQ(n.getZ_rot_acc(), -1.0);
    c->applyVelocityConditions(&n, 0.0);
    EXPECT_EQ(n.getX_rot_vel(), 1.0);
    EXPECT_EQ(n.getY_rot_vel(), 0.0);
}
