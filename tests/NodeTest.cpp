#include "Node.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// A node with its mass and a diagonal rotational inertia, ready to integrate.
Node node(double mass, double j0 = 0.0, double j1 = 0.0, double j2 = 0.0, double damping = 0.0) {
    Node n;
    n.addMass(mass);
    if (j0 > 0.0) {
        TNT::Array2D<double> J(3, 3, 0.0);
        J[0][0] = j0;
        J[1][1] = j1;
        J[2][2] = j2;
        n.addInertia(J);
    }
    if (damping > 0.0) n.setRayleighDamping(damping);
    n.determineMassMatrix();
    n.setInitialConditions();
    return n;
}

} // namespace

TEST(NodeUpdate, DampingActsOnTranslationsOnly) {
    Node n = node(1.0, 2.0, 2.0, 2.0, 10.0);
    n.setX_vel(1.0);
    n.setX_rot_vel(1.0);
    // Two force-free steps: the first sets the damping's velocity copy.
    n.computeNewPosition(0.01, 0.0);
    n.computeNewPosition(0.01, 0.01);
    EXPECT_LT(n.getX_vel(), 1.0);
    EXPECT_DOUBLE_EQ(n.getX_rot_vel(), 1.0);
    // A moment about x alone: a = M / J, undamped.
    n.addInternalMoment(4.0, 0.0, 0.0);
    n.computeNewPosition(0.01, 0.02);
    EXPECT_DOUBLE_EQ(n.getX_rot_acc(), 2.0);
}

TEST(NodeUpdate, GyroscopicTermCouplesRotations) {
    Node n = node(1.0, 1.0, 2.0, 3.0);
    n.setX_rot_vel(1.0);
    n.setY_rot_vel(1.0);
    n.computeNewPosition(1e-3, 0.0);
    // J dw/dt = -w x (J w) with w = (1, 1, 0): w x Jw = (0, 0, 1), so dw_z/dt = -1/3.
    EXPECT_NEAR(n.getZ_rot_acc(), -1.0 / 3.0, 1e-15);
    EXPECT_NEAR(n.getX_rot_acc(), 0.0, 1e-15);
}

TEST(NodeMass, NodeWithoutElementsGetsTinyMassAndInertiaAndASingularInertiaIsReported) {
    Node n = node(0.0);
    EXPECT_DOUBLE_EQ(n.getMass(), 1e-15);
    EXPECT_DOUBLE_EQ(n.getInertia()[1][1], 1e-15);
    EXPECT_DOUBLE_EQ(n.getInverseInertia()[2][2], 1e15);

    Node singular;
    singular.setNumber(4);
    TNT::Array2D<double> J(3, 3, 0.0);
    J[0][0] = 1.0;
    singular.addInertia(J);
    try {
        singular.determineMassMatrix();
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Rotational inertia of node 4 is singular");
    }
}
