#include "ContactLine.h"
#include "ContactFixtures.h"
#include "ElementLibrary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using contact_test::NodeSet;
using contact_test::tokens;

namespace {

const std::vector<std::shared_ptr<Material>> no_materials_;
const std::vector<std::shared_ptr<Load>> no_loads_;

std::shared_ptr<ContactLine> parseLine(NodeSet& s, const std::vector<Token>& t, int number = 1) {
    auto line = std::make_shared<ContactLine>();
    line->setNumber(number);
    line->parseOstrel(t, s.list, s.map, no_materials_, no_loads_);
    return line;
}

std::shared_ptr<ContactLine> makeLine(NodeSet& s, const std::string& text) {
    auto line = parseLine(s, tokens(text));
    line->setInitialConditions();
    return line;
}

std::string parseError(NodeSet& s, const std::string& text) {
    try {
        parseLine(s, tokens(text))->setInitialConditions();
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "no error";
}

void expectForce(const std::shared_ptr<Node>& n, double fx, double fy, double fz, double tol = 1e-12) {
    EXPECT_NEAR(n->getXContactForce(), fx, tol) << "node " << n->getNumber();
    EXPECT_NEAR(n->getYContactForce(), fy, tol) << "node " << n->getNumber();
    EXPECT_NEAR(n->getZContactForce(), fz, tol) << "node " << n->getNumber();
}

// A unit segment along x from the origin.
struct UnitLine : ::testing::Test {
    NodeSet s;
    std::shared_ptr<Node> a = s.add(0, 0, 0), b = s.add(1, 0, 0);
};

} // namespace

TEST(ContactLineParse, ErrorMessagesAreExact) {
    NodeSet s;
    s.add(0, 0, 0);
    s.add(1, 0, 0);
    EXPECT_EQ(parseError(s, "NODES 1 X"), "Not enough nodes inputs for Element Contact Line");
    EXPECT_EQ(parseError(s, "NODES 1"), "Not enough nodes inputs for Element Contact Line");
    EXPECT_EQ(parseError(s, "NODES 1 99"), "Node 99 is not found");
    EXPECT_EQ(parseError(s, "NODES 1 2 R WIDE"), "Input R is not recognized");
    EXPECT_EQ(parseError(s, "NODES 1 2 TYPE SHELL"), "Input TYPE is not recognized");
    EXPECT_EQ(parseError(s, "NODES 1 2 FRICTION"), "Input FRICTION is not recognized");
    EXPECT_EQ(parseError(s, "R 0.5"), "Nodes are not set for element number 1");
}

TEST(ContactLineParse, DefaultsAndKeywords) {
    NodeSet s;
    s.add(0, 0, 0);
    s.add(1, 0, 0);
    auto plain = makeLine(s, "NODES 1 2");
    EXPECT_EQ(plain->getRadius(), 0.1);
    EXPECT_EQ(plain->getFactor(), 10.0);
    EXPECT_EQ(plain->getFriction(), 0.0);
    auto full = makeLine(s, "FRICTION 0.2 R 0.25 NODES 2 1 FACTOR 50");
    EXPECT_EQ(full->getRadius(), 0.25);
    EXPECT_EQ(full->getFactor(), 50.0);
    EXPECT_EQ(full->getFriction(), 0.2);
    EXPECT_EQ(full->getNode(0)->getNumber(), 2);
    EXPECT_EQ(full->getNode(1)->getNumber(), 1);
}

TEST(ContactLineParse, TakesTheTokenListAStructuralElementHandsOver) {
    // A rod of diameter 0.002 hands over its radius as six-decimal text, and
    // a diameter of 0.0000008 becomes a radius of zero.
    NodeSet s;
    s.add(0, 0, 0);
    s.add(1, 0, 0);
    std::vector<Token> t{Token("NODES"),
                         Token(std::to_string(1)),
                         Token(std::to_string(2)),
                         Token("R"),
                         Token(std::to_string(0.002 * 0.5)),
                         Token("FACTOR"),
                         Token(std::to_string(7.5))};
    auto line = parseLine(s, t, -1);
    line->setInitialConditions();
    EXPECT_EQ(line->getNumber(), -1);
    EXPECT_DOUBLE_EQ(line->getRadius(), 0.001);
    EXPECT_EQ(line->getFactor(), 7.5);
    std::vector<Token> tiny{Token("NODES"), Token("1"), Token("2"), Token("R"),
                            Token(std::to_string(0.0000008 * 0.5))};
    EXPECT_EQ(parseLine(s, tiny)->getRadius(), 0.0);
}

TEST(ContactLineParse, RegistersWithItsNodesOnce) {
    NodeSet s;
    auto a = s.add(0, 0, 0);
    auto b = s.add(1, 0, 0);
    auto c = s.add(2, 0, 0);
    auto line = parseLine(s, tokens("NODES 1 2"));
    EXPECT_TRUE(a->contactLineList().empty()); // parsing alone leaves the nodes alone
    line->setInitialConditions();
    line->setInitialConditions();
    ASSERT_EQ(a->contactLineList().size(), 1u);
    EXPECT_EQ(a->contactLineList()[0], line.get());
    EXPECT_EQ(b->contactLineList().size(), 1u);
    EXPECT_TRUE(a->contactLineCheck(b));
    EXPECT_FALSE(a->contactLineCheck(c));
}

TEST(ContactLineParse, MadeByTheFactoryAndWrittenAsLine) {
    auto e = ElementLibrary::getElementOstrel("CONTACT_LINE");
    ASSERT_NE(std::dynamic_pointer_cast<ContactLine>(e), nullptr);
    NodeSet s;
    s.add(0, 0, 0);
    s.add(1, 0, 0);
    e->parseOstrel(tokens("NODES 2 1"), s.list, s.map, no_materials_, no_loads_);
    EXPECT_EQ(e->printVTK(0, 0), "3\n");
    EXPECT_EQ(e->printVTK(1, 0), "2\t2\t1\n");
    EXPECT_EQ(e->printVTK(100, 5), "0.0");
    EXPECT_EQ(e->printVTK(200, 0), "0.0");
    EXPECT_EQ(e->printVTK(201, 0), "0.0");
    EXPECT_EQ(e->checkTimestep(2.5), 2.5);
    EXPECT_THROW(ElementLibrary::getElementOstrel("CONTACT_LINES"), std::invalid_argument);
}

TEST_F(UnitLine, NodeExactlyAtTheRadiusGetsZeroForce) {
    auto n = s.add(0.5, 0, 0.5);
    s.linkChain();
    auto line = makeLine(s, "NODES 1 2 R 0.5 FACTOR 10");
    ASSERT_TRUE(line->checkContact(n));
    line->computeContactForces();
    for (auto& node : s.list)
        expectForce(node, 0, 0, 0, 0.0);
}

TEST_F(UnitLine, NodeOnTheAxisGetsTheFullFactor) {
    auto n = s.add(0.5, 0, 0);
    s.linkChain();
    auto line = makeLine(s, "NODES 1 2 R 0.5 FACTOR 10");
    line->computeContactForces();
    const double fz = n->getZContactForce(), fy = n->getYContactForce();
    EXPECT_NEAR(std::sqrt(fz * fz + fy * fy), 10.0, 1e-12);
    EXPECT_EQ(n->getXContactForce(), 0.0);
    expectForce(n, 0, 0, 10); // a segment along x pushes its axis nodes along +z
    expectForce(a, 0, 0, -5);
    expectForce(b, 0, 0, -5);
}

TEST_F(UnitLine, ForceFallsLinearlyAndIsSharedBySegmentPosition) {
    auto n = s.add(0.25, 0.3, 0);
    s.linkChain();
    auto line = makeLine(s, "NODES 1 2 R 0.5 FACTOR 10");
    line->computeContactForces();
    // f = 10 (1 - 0.3/0.5) = 4 along +y, split 0.75 / 0.25.
    expectForce(n, 0, 4, 0);
    expectForce(a, 0, -3, 0);
    expectForce(b, 0, -1, 0);
    EXPECT_NEAR(line->getContactParameters()[0], 0.25, 1e-15);
    EXPECT_NEAR(line->getContactParameters()[2], 0.3, 1e-15);
}

TEST_F(UnitLine, NodeBeyondAnEndIsMeasuredToThatEndButSharedByTheRawPosition) {
    auto n = s.add(1.2, 0, 0.1);
    s.linkChain();
    auto line = makeLine(s, "NODES 1 2 R 0.5 FACTOR 10");
    line->computeContactForces();
    const double d = std::sqrt(0.2 * 0.2 + 0.1 * 0.1);
    const double f = 10 * (1 - d / 0.5);
    const double ux = 0.2 / d, uz = 0.1 / d;
    EXPECT_NEAR(line->getContactParameters()[0], 1.2, 1e-14);
    expectForce(n, f * ux, 0, f * uz);
    expectForce(a, 0.2 * f * ux, 0, 0.2 * f * uz); // -(1 - s) with s = 1.2
    expectForce(b, -1.2 * f * ux, 0, -1.2 * f * uz);
}

TEST_F(UnitLine, NodesOutsideTheRadiusOrTheBoxAreLeftAlone) {
    auto far = s.add(0.5, 0, 0.51);
    auto sideways = s.add(0.5, 0.6, 0); // outside the y box
    auto behind = s.add(-0.6, 0, 0);    // outside the x range
    s.linkChain();
    auto line = makeLine(s, "NODES 1 2 R 0.5 FACTOR 10");
    line->computeContactForces();
    for (auto& node : s.list)
        expectForce(node, 0, 0, 0, 0.0);
    EXPECT_FALSE(line->checkContact(far));
    EXPECT_FALSE(line->checkContact(sideways));
    EXPECT_FALSE(line->checkContact(behind));
}

TEST(ContactLineMechanics, CrossingSegmentsArePushedApartOnce) {
    NodeSet s;
    auto a = s.add(0, 0, 0), b = s.add(1, 0, 0);
    auto c = s.add(0.25, -1, 0.3), d = s.add(0.25, 1, 0.3);
    s.linkChain();
    auto first = makeLine(s, "NODES 1 2 R 0.5 FACTOR 10");
    auto second = makeLine(s, "NODES 3 4 R 0.35 FACTOR 20");
    ASSERT_TRUE(first->checkContact(second.get()));
    EXPECT_NEAR(first->getContactParameters()[0], 0.25, 1e-15);
    EXPECT_NEAR(first->getContactParameters()[1], 0.5, 1e-15);
    EXPECT_NEAR(first->getContactParameters()[2], 0.3, 1e-15);
    EXPECT_NEAR(first->getDirection()[2], 1.0, 1e-15);

    // Both nodes of the second line are candidates of the first; the pair is
    // still pushed once: f = 10 (1 - 0.3/0.5) = 4 along +z.
    first->computeContactForces();
    expectForce(a, 0, 0, -3);
    expectForce(b, 0, 0, -1);
    expectForce(c, 0, 0, 2);
    expectForce(d, 0, 0, 2);

    // The second line acts with its own radius and factor on the same pair:
    // f = 20 (1 - 0.3/0.35), at t = 0.5 on itself and s = 0.25 on the first.
    s.clearForces();
    second->computeContactForces();
    const double f = 20 * (1 - 0.3 / 0.35);
    expectForce(a, 0, 0, -0.75 * f);
    expectForce(b, 0, 0, -0.25 * f);
    expectForce(c, 0, 0, 0.5 * f);
    expectForce(d, 0, 0, 0.5 * f);
}

TEST(ContactLineMechanics, LinesSharingANodeNeverTouch) {
    NodeSet s;
    s.add(0, 0, 0);
    s.add(1, 0, 0);
    s.add(0.5, 0.05, 0.01);
    s.linkChain();
    auto first = makeLine(s, "NODES 1 2 R 0.5");
    auto second = makeLine(s, "NODES 1 3 R 0.5");
    auto third = makeLine(s, "NODES 3 2 R 0.5");
    EXPECT_FALSE(first->checkContact(second.get()));
    EXPECT_FALSE(first->checkContact(third.get()));
    EXPECT_FALSE(first->checkContact(first.get()));
}

TEST(ContactLineMechanics, SegmentsMissingEachOtherOrParallelDoNotTouch) {
    NodeSet s;
    s.add(0, 0, 0);
    s.add(1, 0, 0);
    s.add(1.2, -1, 0.1); // crosses the line's extension: s = 1.2
    s.add(1.2, 1, 0.1);
    s.add(0, 0.1, 0.1); // parallel
    s.add(1, 0.1, 0.1);
    s.add(0.5, 0.2, 0.2); // crossing beyond the other's end: t < 0
    s.add(0.5, 2, 0.2);
    s.linkChain();
    auto line = makeLine(s, "NODES 1 2 R 0.5");
    EXPECT_FALSE(line->checkContact(makeLine(s, "NODES 3 4").get()));
    EXPECT_FALSE(line->checkContact(makeLine(s, "NODES 5 6").get()));
    EXPECT_FALSE(line->checkContact(makeLine(s, "NODES 7 8").get()));
}

TEST(ContactLineMechanics, SkewSegmentsShareTheForceAlongBothLines) {
    // (0,0,0)-(2,0,0) against (0.6,-0.6,0.2)-(1.6,0.4,0.2): the common normal is
    // e_z, the closest points are at s = 0.6 and t = 0.6, d = 0.2.
    NodeSet s;
    auto a = s.add(0, 0, 0), b = s.add(2, 0, 0);
    auto c = s.add(0.6, -0.6, 0.2), d = s.add(1.6, 0.4, 0.2);
    s.linkChain();
    auto first = makeLine(s, "NODES 1 2 R 0.4 FACTOR 8");
    auto second = makeLine(s, "NODES 3 4");
    first->computeContactForces();
    const double t = 0.6, sPos = 0.6, f = 8 * (1 - 0.2 / 0.4);
    EXPECT_NEAR(first->getContactParameters()[0], sPos, 1e-14);
    EXPECT_NEAR(first->getContactParameters()[1], t, 1e-14);
    EXPECT_NEAR(first->getContactParameters()[2], 0.2, 1e-14);
    expectForce(a, 0, 0, -(1 - sPos) * f);
    expectForce(b, 0, 0, -sPos * f);
    expectForce(c, 0, 0, (1 - t) * f);
    expectForce(d, 0, 0, t * f);
}
