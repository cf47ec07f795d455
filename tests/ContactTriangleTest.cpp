// The contact triangle: gap and penalty force of a node above a shell face or
// below a solid one with the reaction shared among the face's nodes, the
// limits of the face, its local frame, and the friction history. Deck-line
// mistakes are whole decks under decks/malformed; the result cells are
// checked by the deck tests.
#include "ContactTriangle.h"
#include "ContactFixtures.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace contact_test;

namespace {

// The unit right triangle (0,0,0) (1,0,0) (0,1,0): its local frame is the
// global one, so local and global forces coincide.
struct UnitTriangle : ::testing::Test {
    NodeSet s;
    std::shared_ptr<Node> a = s.add(0, 0, 0), b = s.add(1, 0, 0), c = s.add(0, 1, 0);
    std::shared_ptr<ContactTriangle> make(const std::string& text) { return s.make<ContactTriangle>(text); }
};

} // namespace

TEST_F(UnitTriangle, ShellNodeAboveGetsGapAndPenaltyForce) {
    auto slave = s.add(0.25, 0.25, 0.3);
    s.rebin();
    auto t = make("NODES 1 2 3 T 1.0 FACTOR 10");
    ASSERT_TRUE(t->checkContact(slave));
    EXPECT_NEAR(t->getGap(), -0.2, 1e-15);
    t->computeContactForces();
    // fn = FACTOR gap / (T/2) = -4; the node is pushed out along +e3 and the
    // reaction is shared by N = (0.5, 0.25, 0.25).
    expectForce(slave, 0, 0, 4);
    expectForce(a, 0, 0, -2);
    expectForce(b, 0, 0, -1);
    expectForce(c, 0, 0, -1);
    // From below the mid-surface the node is pushed the other way.
    s.clearForces();
    s.moveTo(slave, 0.25, 0.25, -0.3);
    s.rebin();
    t->computeContactForces();
    EXPECT_NEAR(t->getGap(), 0.2, 1e-15);
    expectForce(slave, 0, 0, -4);
    expectForce(a, 0, 0, 2);
}

TEST_F(UnitTriangle, FaceLimitsEdgesAndVertices) {
    auto far = s.add(0.25, 0.25, 0.51);
    auto outside = s.add(0.6, 0.6, 0.1); // N1 = -0.2
    auto onEdge = s.add(0.5, 0.5, 0.1);  // on edge 2-3, N1 = 0
    auto wide = s.add(0.25, 2.25, 0.1);  // y beyond 1 + T
    auto vertex = s.add(0, 0, 0.3);      // over node 1: N = (1, 0, 0)
    s.rebin();
    auto t = make("NODES 1 2 3 T 1.0 FACTOR 10");
    EXPECT_FALSE(t->checkContact(far));
    EXPECT_FALSE(t->checkContact(outside));
    EXPECT_TRUE(t->checkContact(onEdge));
    EXPECT_FALSE(t->checkContact(wide));
    EXPECT_TRUE(t->checkContact(vertex));
    t->computeContactForces();
    expectForce(vertex, 0, 0, 4);
    for (const auto& n : {far, outside, wide})
        expectForce(n, 0, 0, 0);
    // The edge node (N = 0, 0.5, 0.5, gap -0.4) and the vertex node share the reaction.
    for (const auto& n : {a, b, c})
        expectForce(n, 0, 0, -4);

    // A shell without thickness touches nothing (it would give FACTOR 0 / 0).
    s.clearForces();
    auto inPlane = s.add(0.25, 0.25, 0);
    s.rebin();
    auto flat = make("NODES 1 2 3 T 0");
    EXPECT_FALSE(flat->checkContact(inPlane));
    flat->computeContactForces();
    EXPECT_EQ(inPlane->getZContactForce(), 0.0);
}

TEST_F(UnitTriangle, SolidIsOneSidedAndNoTriangleTouchesItsOwnNodes) {
    auto above = s.add(0.25, 0.25, 0.01);
    auto below = s.add(0.3, 0.25, -0.01);
    s.rebin();
    auto t = make("NODES 1 2 3 TYPE SOLID T 2.0 FACTOR 10");
    EXPECT_FALSE(t->checkContact(above));
    EXPECT_FALSE(t->checkContact(a));
    t->computeContactForces();
    EXPECT_NEAR(t->getGap(), -0.01, 1e-15);
    // fn = FACTOR gap = -0.1 pushes the node along +e3; nothing else moves.
    expectForce(above, 0, 0, 0);
    expectForce(below, 0, 0, 0.1);
    EXPECT_NEAR(a->getZContactForce() + b->getZContactForce() + c->getZContactForce(), -0.1, 1e-15);
}

TEST(ContactTriangleMechanics, NodeOnASharedEdgeIsNotLostToRounding) {
    // The centre of this quad lies on its diagonal, yet its computed area
    // coordinates are -5.6e-17 in one triangle and -2.4e-16 in the other.
    NodeSet s;
    s.add(39.78571429, 39.5, -1);
    s.add(60.21428571, 39.5, -1);
    s.add(60.21428571, 60.5, -1);
    s.add(39.78571429, 60.5, -1);
    auto centre = s.add(50, 50, -0.6);
    s.rebin();
    EXPECT_TRUE(s.make<ContactTriangle>("NODES 1 2 3 T 1.0 FACTOR 10")->checkContact(centre));
    EXPECT_TRUE(s.make<ContactTriangle>("NODES 1 3 4 T 1.0 FACTOR 10")->checkContact(centre));
}

TEST(ContactTriangleMechanics, TiltedTriangleUsesItsLocalFrame) {
    // The unit-triangle case rotated by 30 degrees about x, then 45 about z, then shifted.
    const double c1 = std::cos(M_PI / 6), s1 = std::sin(M_PI / 6), c2 = std::cos(M_PI / 4);
    NodeSet s;
    auto place = [&](double x, double y, double z) {
        const double y1 = c1 * y - s1 * z, z1 = s1 * y + c1 * z;
        return s.add(c2 * (x - y1) + 3, c2 * (x + y1) - 2, z1 + 1);
    };
    auto a = place(0, 0, 0);
    place(1, 0, 0);
    place(0, 1, 0);
    auto slave = place(0.25, 0.25, 0.3);
    s.rebin();
    auto t = s.make<ContactTriangle>("NODES 1 2 3 T 1.0 FACTOR 10");
    t->computeContactForces();
    EXPECT_NEAR(t->getGap(), -0.2, 1e-12);
    const double n[3] = {-c2 * -s1, c2 * -s1, c1}; // the rotated e_z
    expectForce(slave, 4 * n[0], 4 * n[1], 4 * n[2]);
    expectForce(a, -2 * n[0], -2 * n[1], -2 * n[2]);
}

namespace {
// One node in contact with the unit triangle, moved step by step.
struct FrictionRun {
    NodeSet s;
    std::shared_ptr<Node> slave;
    std::shared_ptr<ContactTriangle> t;

    FrictionRun(const std::string& deck, double z) {
        s.add(0, 0, 0);
        s.add(1, 0, 0);
        s.add(0, 1, 0);
        slave = s.add(0.2, 0.2, z);
        t = s.make<ContactTriangle>(deck);
    }
    void stepTo(double x, double y) {
        s.clearForces();
        slave->setX_pos(x);
        slave->setY_pos(y);
        s.rebin();
        t->updateLocalCoordinateSystem();
        t->computeContactForces();
    }
};
} // namespace

TEST(ContactTriangleFriction, HalvedOnFirstSlipAndOnReversal) {
    // SHELL, node above: fn = 10 (-0.2) / 0.5 = -4; mu |fn| = 2 against the slip.
    FrictionRun r("NODES 1 2 3 T 1.0 FACTOR 10 FRICTION 0.5", 0.3);
    const double h = 1.0 / std::sqrt(2.0);
    const struct {
        double x, y, fx, fy;
    } steps[] = {{0.2, 0.2, 0, 0},  // first contact: recorded, no friction
                 {0.3, 0.2, -1, 0}, // first slip: half
                 {0.4, 0.2, -2, 0}, // same direction: full
                 {0.3, 0.2, 1, 0},  // reversal: half
                 {0.2, 0.2, 2, 0},  // continued: full
                 {0.2, 0.3, 0, -2}, // a turn of exactly 90 degrees: acos(0) < 1.5708, full
                 {0.3, 0.2, -h, h}, // a turn of 135 degrees: half, against (1, -1)/sqrt(2)
                 {0.3, 0.2, 0, 0}}; // no slip: no friction
    for (const auto& st : steps) {
        SCOPED_TRACE(testing::Message() << st.x << " " << st.y);
        r.stepTo(st.x, st.y);
        expectForce(r.slave, st.fx, st.fy, 4);
    }
    EXPECT_EQ(r.t->getFrictionHistory().size(), 1u);
    double fx = 0; // the triangle's nodes take the reaction
    for (auto& n : r.s.list)
        fx += n->getXContactForce();
    EXPECT_NEAR(fx, 0.0, 1e-14);
}

TEST(ContactTriangleFriction, OpposesTheSlipFromBothSidesAndForSolid) {
    // From below; SOLID (fn = 10 (-0.1) = -1, mu |fn| = 0.5); without FRICTION
    // no history is kept and no tangential force arises.
    FrictionRun below("NODES 1 2 3 T 1.0 FACTOR 10 FRICTION 0.5", -0.3);
    FrictionRun solid("NODES 1 2 3 TYPE SOLID FACTOR 10 FRICTION 0.5", -0.1);
    FrictionRun none("NODES 1 2 3 T 1.0 FACTOR 10", 0.3);
    for (double d : {0.2, 0.3, 0.4}) {
        below.stepTo(0.2, d);
        solid.stepTo(d, 0.2);
        none.stepTo(d, 0.2);
    }
    expectForce(below.slave, 0, -2.0, -4);
    expectForce(solid.slave, -0.5, 0, 1.0);
    expectForce(none.slave, 0, 0, 4);
    EXPECT_TRUE(none.t->getFrictionHistory().empty());
}
