#include "Node.h"
#include "Constraint.h"

#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {
// Holds every velocity component that is marked, like a fixed support.
class HoldVelocity : public Constraint {
public:
    explicit HoldVelocity(int component, double value = 0.0) : k(component), v(value) {}
    void applyAccelerationConditions(Node* node, double) override { set(node, false); }
    void applyVelocityConditions(Node* node, double) override { set(node, true); }
    void parseOstrel(std::vector<Token>, const std::vector<std::shared_ptr<Amplitude>>&) override {}
    void setInitialConditions() override {}

private:
    void set(Node* node, bool velocity) {
        if (k == 0) velocity ? node->setX_vel(v) : node->setX_acc(0.0);
        if (k == 2) velocity ? node->setZ_vel(v) : node->setZ_acc(0.0);
    }
    int k;
    double v;
};

Node freeNode(double mass) {
    Node n;
    n.addMass(mass);
    n.determineMassMatrix();
    n.setInitialConditions();
    return n;
}
} // namespace

TEST(NodeUpdate, FreeNodeUnderConstantForceFollowsTheClosedForm) {
    const double m = 2.0, F = 3.0, dt = 1e-3;
    Node n = freeNode(m);
    const int steps = 500;
    for (int k = 0; k < steps; ++k) {
        n.addExternalForce(F, -F, 0.0);
        n.computeNewPosition(dt, k * dt);
        n.clearNodalForces();
    }
    // The half-step start makes the displacement exact: u = F t^2 / (2m).
    const double t = steps * dt;
    EXPECT_NEAR(n.getX_pos(), F * t * t / (2 * m), 1e-12);
    EXPECT_NEAR(n.getY_pos(), -F * t * t / (2 * m), 1e-12);
    EXPECT_NEAR(n.getX_vel(), F / m * (t - 0.5 * dt), 1e-12);
    EXPECT_DOUBLE_EQ(n.getZ_pos(), 0.0);
}

TEST(NodeUpdate, FirstVelocityIncrementIsHalfAStep) {
    Node n = freeNode(1.0);
    n.addExternalForce(4.0, 0.0, 0.0);
    n.computeNewPosition(0.1, 0.0);
    EXPECT_DOUBLE_EQ(n.getX_vel(), 0.5 * 0.1 * 4.0);
    EXPECT_DOUBLE_EQ(n.getX_acc(), 4.0);
    EXPECT_DOUBLE_EQ(n.getX_pos(), 0.1 * 0.5 * 0.1 * 4.0);
}

TEST(NodeUpdate, DampingActsOnTranslationsOnly) {
    Node n;
    n.addMass(1.0);
    TNT::Array2D<double> J(3, 3, 0.0);
    J[0][0] = J[1][1] = J[2][2] = 2.0;
    n.addInertia(J);
    n.setRayleighDamping(10.0);
    n.determineMassMatrix();
    n.setInitialConditions();
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
    Node n;
    n.addMass(1.0);
    TNT::Array2D<double> J(3, 3, 0.0);
    J[0][0] = 1.0;
    J[1][1] = 2.0;
    J[2][2] = 3.0;
    n.addInertia(J);
    n.determineMassMatrix();
    n.setInitialConditions();
    n.setX_rot_vel(1.0);
    n.setY_rot_vel(1.0);
    n.computeNewPosition(1e-3, 0.0);
    // J dw/dt = -w x (J w) with w = (1, 1, 0): w x Jw = (0, 0, 1), so dw_z/dt = -1/3.
    EXPECT_NEAR(n.getZ_rot_acc(), -1.0 / 3.0, 1e-15);
    EXPECT_NEAR(n.getX_rot_acc(), 0.0, 1e-15);
}

TEST(NodeUpdate, PrescribedZeroVelocityHoldsTheComponentExactly) {
    Node n;
    n.addMass(1.0);
    n.setConstraint(std::make_shared<HoldVelocity>(0));
    n.determineMassMatrix();
    n.setInitialConditions();
    for (int k = 0; k < 100; ++k) {
        n.addExternalForce(5.0, 0.0, 1.0);
        n.computeNewPosition(0.01, k * 0.01);
        n.clearNodalForces();
    }
    EXPECT_EQ(n.getX_pos(), 0.0);
    EXPECT_EQ(n.getX_vel(), 0.0);
    EXPECT_GT(n.getZ_pos(), 0.0);
}

TEST(NodeUpdate, PrescribedVelocityActsOnTheDisplacementFromTheNextStep) {
    Node n;
    n.addMass(1.0);
    n.setConstraint(std::make_shared<HoldVelocity>(2, 2.0));
    n.determineMassMatrix();
    n.setInitialConditions();
    EXPECT_DOUBLE_EQ(n.getZ_vel(), 2.0);
    for (int k = 0; k < 10; ++k)
        n.computeNewPosition(0.1, k * 0.1);
    EXPECT_NEAR(n.getZ_pos(), 2.0, 1e-12);
}

TEST(NodeMass, NodeWithoutElementsGetsTinyMassAndInertia) {
    Node n;
    n.determineMassMatrix();
    n.setInitialConditions();
    EXPECT_DOUBLE_EQ(n.getMass(), 1e-15);
    EXPECT_DOUBLE_EQ(n.getInertia()[1][1], 1e-15);
    EXPECT_DOUBLE_EQ(n.getInverseInertia()[2][2], 1e15);
}

TEST(NodeMass, SingularInertiaIsReportedInsteadOfUsed) {
    Node n;
    n.setNumber(4);
    TNT::Array2D<double> J(3, 3, 0.0);
    J[0][0] = 1.0;
    n.addInertia(J);
    try {
        n.determineMassMatrix();
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Rotational inertia of node 4 is singular");
    }
}

TEST(NodeForces, PositiveForceKeepsOnlyPositiveComponents) {
    Node n;
    n.addInternalForce(-3.0, 2.0, 0.0);
    n.addContactForce(1.0, -1.0, 0.0);
    EXPECT_DOUBLE_EQ(n.getPositiveForce()[0], 1.0);
    EXPECT_DOUBLE_EQ(n.getPositiveForce()[1], 2.0);
    EXPECT_DOUBLE_EQ(n.getXForce(), -2.0);
    EXPECT_DOUBLE_EQ(n.getXContactForce(), 1.0);
    n.clearNodalForces();
    EXPECT_DOUBLE_EQ(n.getYForce(), 0.0);
}
