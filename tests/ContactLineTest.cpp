#include "ContactLine.h"
#include "ContactFixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <stdexcept>

using namespace contact_test;

namespace {

// A unit segment along x from the origin.
struct UnitLine : ::testing::Test {
    NodeSet s;
    std::shared_ptr<Node> a = s.add(0, 0, 0), b = s.add(1, 0, 0);
    std::shared_ptr<ContactLine> make(const std::string& text) { return s.make<ContactLine>(text); }
};

} // namespace

TEST_F(UnitLine, ForceFallsLinearlyFromFactorOnTheAxisToZeroAtTheRadius) {
    auto n = s.add(0.5, 0, 0.5);
    s.rebin();
    auto line = make("NODES 1 2 R 0.5 FACTOR 10");
    ASSERT_TRUE(line->checkContact(n));
    line->computeContactForces();
    for (auto& node : s.list)
        expectForce(node, 0, 0, 0, 0.0);
    // On the axis: FACTOR, along +z for a segment along x.
    s.moveTo(n, 0.5, 0, 0);
    line->computeContactForces();
    expectForce(n, 0, 0, 10);
    expectForce(a, 0, 0, -5);
    expectForce(b, 0, 0, -5);
    // At d = 0.3 and s = 0.25: f = 10 (1 - 0.3/0.5) = 4 along +y, split 0.75 / 0.25.
    s.clearForces();
    s.moveTo(n, 0.25, 0.3, 0);
    s.rebin();
    line->computeContactForces();
    expectForce(n, 0, 4, 0);
    expectForce(a, 0, -3, 0);
    expectForce(b, 0, -1, 0);
}

TEST_F(UnitLine, NodeBeyondAnEndIsMeasuredToThatEndButSharedByTheRawPosition) {
    auto n = s.add(1.2, 0, 0.1);
    s.rebin();
    auto line = make("NODES 1 2 R 0.5 FACTOR 10");
    line->computeContactForces();
    const double d = std::sqrt(0.2 * 0.2 + 0.1 * 0.1), f = 10 * (1 - d / 0.5), ux = 0.2 / d, uz = 0.1 / d;
    EXPECT_NEAR(line->getContactParameters()[0], 1.2, 1e-14);
    expectForce(n, f * ux, 0, f * uz);
    expectForce(a, 0.2 * f * ux, 0, 0.2 * f * uz); // -(1 - s) with s = 1.2
    expectForce(b, -1.2 * f * ux, 0, -1.2 * f * uz);
}

TEST_F(UnitLine, NodesOutsideTheRadiusOrTheBoxAndLinesOfNoRadiusAreLeftAlone) {
    auto far = s.add(0.5, 0, 0.51);
    auto sideways = s.add(0.5, 0.6, 0); // outside the y box
    auto behind = s.add(-0.6, 0, 0);    // outside the x range
    s.rebin();
    auto line = make("NODES 1 2 R 0.5 FACTOR 10");
    line->computeContactForces();
    for (auto& node : s.list)
        expectForce(node, 0, 0, 0, 0.0);
    for (const auto& node : {far, sideways, behind})
        EXPECT_FALSE(line->checkContact(node.get()));
    // A line of no radius (a rod thinner than the six decimals of its radius
    // text) touches nothing, not even a node on its axis.
    auto onAxis = s.add(0.5, 0, 0);
    s.rebin();
    auto thin = make("NODES 1 2 R 0");
    EXPECT_FALSE(thin->checkContact(onAxis));
    thin->computeContactForces();
    EXPECT_EQ(onAxis->getZContactForce(), 0.0);
}

TEST(ContactLineMechanics, CrossingSegmentsArePushedApartOnce) {
    // The lines reach each other's nodes along x (0 and 0.25 lie in both x
    // ranges), so both searches find the pair; the line registered first acts,
    // with its own radius and factor, and the other leaves the pair alone.
    for (bool firstRegisteredFirst : {true, false}) {
        NodeSet s;
        auto a = s.add(0, 0, 0), b = s.add(1, 0, 0);
        auto c = s.add(0.25, -1, 0.3), d = s.add(0.25, 1, 0.3);
        std::shared_ptr<ContactLine> first, second;
        if (firstRegisteredFirst) first = s.make<ContactLine>("NODES 1 2 R 0.5 FACTOR 10");
        second = s.make<ContactLine>("NODES 3 4 R 0.35 FACTOR 20");
        if (!firstRegisteredFirst) first = s.make<ContactLine>("NODES 1 2 R 0.5 FACTOR 10");
        ASSERT_TRUE(first->checkContact(second.get()));
        EXPECT_NEAR(first->getContactParameters()[0], 0.25, 1e-15);
        EXPECT_NEAR(first->getContactParameters()[1], 0.5, 1e-15);
        EXPECT_NEAR(first->getContactParameters()[2], 0.3, 1e-15);
        EXPECT_NEAR(first->getDirection()[2], 1.0, 1e-15);
        ASSERT_TRUE(first->findsLine(*second) && second->findsLine(*first));
        first->computeContactForces();
        second->computeContactForces();
        // f = 10 (1 - 0.3/0.5) = 4 along +z from the first line, or
        // 20 (1 - 0.3/0.35) from the second, at s = 0.25 and t = 0.5.
        const double f = firstRegisteredFirst ? 4.0 : 20 * (1 - 0.3 / 0.35);
        expectForce(a, 0, 0, -0.75 * f);
        expectForce(b, 0, 0, -0.25 * f);
        expectForce(c, 0, 0, 0.5 * f);
        expectForce(d, 0, 0, 0.5 * f);
    }
}

TEST(ContactLineMechanics, ACrossingActsOnceWhateverItsAngleAboutZ) {
    // Two lines of half-length 2 crossing at right angles over the z axis,
    // 0.3 apart, R 0.5, FACTOR 10, turned together about z: whichever line's
    // search finds the pair (the first at 0 and 30 degrees, the second at 60
    // and 90, both at 45), each node takes half of f = 10 (1 - 0.3/0.5) = 4.
    for (double degrees : {0.0, 30.0, 45.0, 60.0, 90.0}) {
        const double c = std::cos(degrees * M_PI / 180), sn = std::sin(degrees * M_PI / 180);
        NodeSet s;
        auto a0 = s.add(-2 * c, -2 * sn, 0), a1 = s.add(2 * c, 2 * sn, 0);
        auto b0 = s.add(2 * sn, -2 * c, 0.3), b1 = s.add(-2 * sn, 2 * c, 0.3);
        auto lower = s.make<ContactLine>("NODES 1 2 R 0.5 FACTOR 10");
        auto upper = s.make<ContactLine>("NODES 3 4 R 0.5 FACTOR 10");
        EXPECT_EQ(lower->findsLine(*upper), degrees <= 45.0) << degrees;
        EXPECT_EQ(upper->findsLine(*lower), degrees >= 45.0) << degrees;
        lower->computeContactForces();
        upper->computeContactForces();
        for (const auto& n : {a0, a1})
            expectForce(n, 0, 0, -2.0);
        for (const auto& n : {b0, b1})
            expectForce(n, 0, 0, 2.0);
    }
}

TEST(ContactLineMechanics, SharedNodesMissesAndParallelsDoNotTouch) {
    NodeSet s;
    for (auto p : std::vector<std::array<double, 3>>{{0, 0, 0},
                                                     {1, 0, 0},
                                                     {0.5, 0.05, 0.01}, // near, but sharing node 1
                                                     {1.2, -1, 0.1},    // crossing the extension, s = 1.2
                                                     {1.2, 1, 0.1},
                                                     {0, 0.1, 0.1}, // parallel
                                                     {1, 0.1, 0.1},
                                                     {0.5, 0.2, 0.2}, // crossing beyond its own end, t < 0
                                                     {0.5, 2, 0.2}})
        s.add(p[0], p[1], p[2]);
    s.rebin();
    auto line = s.make<ContactLine>("NODES 1 2 R 0.5");
    EXPECT_FALSE(line->checkContact(line.get()));
    for (const char* other : {"NODES 1 3", "NODES 3 2", "NODES 4 5", "NODES 6 7", "NODES 8 9"})
        EXPECT_FALSE(line->checkContact(s.make<ContactLine>(other).get())) << other;
}

TEST(ContactLineMechanics, SkewSegmentsShareTheForceAlongBothLines) {
    // (0,0,0)-(2,0,0) against (0.6,-0.6,0.2)-(1.6,0.4,0.2): the common normal is
    // e_z, the closest points are at s = 0.6 and t = 0.6, d = 0.2.
    NodeSet s;
    auto a = s.add(0, 0, 0), b = s.add(2, 0, 0);
    auto c = s.add(0.6, -0.6, 0.2), d = s.add(1.6, 0.4, 0.2);
    s.rebin();
    auto first = s.make<ContactLine>("NODES 1 2 R 0.4 FACTOR 8");
    auto second = s.make<ContactLine>("NODES 3 4");
    first->computeContactForces();
    const double t = 0.6, sPos = 0.6, f = 8 * (1 - 0.2 / 0.4);
    const double expected[3] = {sPos, t, 0.2};
    for (int k = 0; k < 3; ++k)
        EXPECT_NEAR(first->getContactParameters()[k], expected[k], 1e-14);
    expectForce(a, 0, 0, -(1 - sPos) * f);
    expectForce(b, 0, 0, -sPos * f);
    expectForce(c, 0, 0, (1 - t) * f);
    expectForce(d, 0, 0, t * f);
}
