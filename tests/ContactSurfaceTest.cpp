// Named contact surfaces: one push per node whatever the facets meeting
// there, the nodes a surface acts on, Coulomb friction with a stick state
// on an incline, and momentum between two plies.
#include "ContactSurface.h"
#include "Model.h"
#include "Node.h"
#include "QuietModel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace {

// A fan of `facets` facets around node 2 at the origin in the plane z = 0,
// normals up, and node 1 held at (x, y, -depth) below it.
std::string fanDeck(int facets, double x, double y, double depth, const std::string& surface) {
    std::ostringstream d;
    d.precision(17);
    d << "TITLE\nCONTROLS\nRUN FROM 0 TO 1\nSTEP 0.001\nPRINT EVERY 1\n"
      << "CONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\n"
      << "CONTACT_SURFACES\n"
      << surface << "\nNODES\n"
      << "1 X " << x << " Y " << y << " Z " << -depth << " CONSTRAINT FIXED\n"
      << "2 X 0 Y 0 Z 0 CONSTRAINT FIXED\n";
    for (int i = 0; i < facets; ++i) {
        const double a = 2.0 * M_PI * i / facets;
        d << 3 + i << " X " << std::cos(a) << " Y " << std::sin(a) << " Z 0 CONSTRAINT FIXED\n";
    }
    d << "ELEMENTS TYPE CONTACT_FACET\n";
    for (int i = 0; i < facets; ++i)
        d << i + 1 << " NODES 2 " << 3 + i << " " << 3 + (i + 1) % facets << " SURFACE TOOL\n";
    return d.str();
}

// Contact force on node 1 after one increment.
Node::Vec3 pushOnNode1(const std::string& name, const std::string& deck) {
    contact_test::QuietModel m(name, deck);
    double candidate = 1e15;
    m->step(candidate);
    return m->getNodeMap().at(1)->getContactForce();
}

} // namespace

TEST(ContactSurface, PushIsTheSameInAFacetOnAnEdgeAndOnVerticesOfAnyValence) {
    const double depth = 0.01;
    struct Case {
        int facets;
        double x, y;
        const char* where;
    };
    // Inside a facet, on the edge from the centre to node 3 (shared by two
    // facets), on the centre vertex (shared by all), on a rim vertex (two).
    const Case cases[] = {{6, 0.3, 0.1, "face"},     {6, 0.5, 0.0, "edge"},       {3, 0.0, 0.0, "3-vertex"},
                          {6, 0.0, 0.0, "6-vertex"}, {64, 0.0, 0.0, "64-vertex"}, {64, 1.0, 0.0, "rim"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.where);
        // SOLID with a stiffness: FACTOR x depth along the normal.
        const auto solid = pushOnNode1(
            "surface_solid", fanDeck(c.facets, c.x, c.y, depth, "TOOL TYPE SOLID T 0.5 FACTOR 100"));
        EXPECT_NEAR(solid[2], 100.0 * depth, 1e-12);
        EXPECT_NEAR(std::hypot(solid[0], solid[1]), 0.0, 1e-12);
        // SHELL of thickness 0.1: FACTOR (T/2 - d) / (T/2), pushed down (the node is below).
        const auto shell = pushOnNode1(
            "surface_shell", fanDeck(c.facets, c.x, c.y, depth, "TOOL TYPE SHELL T 0.1 FACTOR 100"));
        EXPECT_NEAR(shell[2], -100.0 * (0.05 - depth) / 0.05, 1e-9);
    }
    // PENALTY s: stiffness s m / dt^2 with the node's own mass; node 1 has
    // the token mass of a node without elements (1e-15) and dt = 0.001.
    const auto penalty =
        pushOnNode1("surface_penalty", fanDeck(64, 0.0, 0.0, depth, "TOOL TYPE SOLID T 0.5 PENALTY 0.2"));
    EXPECT_NEAR(penalty[2], 0.2 * 1e-15 / 1e-6 * depth, 1e-20);
    // Deeper than the reach T along any direction: not caught.
    const auto deep =
        pushOnNode1("surface_deep", fanDeck(6, 0.3, 0.1, 0.6, "TOOL TYPE SOLID T 0.5 FACTOR 100"));
    EXPECT_EQ(deep[2], 0.0);
    // Below the plane but beyond the rim of the open fan: no solid there.
    const auto beyond =
        pushOnNode1("surface_beyond_rim", fanDeck(6, 1.3, 0.05, 0.1, "TOOL TYPE SOLID T 0.5 FACTOR 100"));
    EXPECT_EQ(beyond[2], 0.0);
}

// (A pair that names only the surface's own nodes is the golden deck
// decks/malformed/surface_on_own_nodes.)
TEST(ContactSurface, ActsOnlyOnTheNodesOfItsPair) {
    // Named by its elements' nodes, node 1 is pushed; left out, it is not.
    std::string deck = fanDeck(6, 0.3, 0.1, 0.01, "TOOL TYPE SOLID FACTOR 100 ON ELEMENTS 7");
    deck += "ELEMENTS TYPE ROD_2\n7 NODES 1 2 MATERIAL STEEL D 0.01\nMATERIALS TYPE ELASTIC\n"
            "STEEL E 1E3 NU 0.3 RHO 1\n";
    EXPECT_NEAR(pushOnNode1("surface_pair_rod", deck)[2], 1.0, 1e-12);
    // A pair of node 9 only leaves node 1 alone.
    const std::string other = fanDeck(6, 0.3, 0.1, 0.01, "TOOL TYPE SOLID FACTOR 100 ON NODES 9");
    EXPECT_EQ(pushOnNode1("surface_pair_other", other + "NODES\n9 X 5 Y 5 Z 5\n")[2], 0.0);
}

namespace {

// A rod of two nodes lying on a plane inclined at atan(0.5) about the y axis,
// the plane's two facets held fixed, under gravity; run until t_end.
std::string inclineDeck(double mu, double end) {
    const double s = 1.0 / std::sqrt(5.0), c = 2.0 / std::sqrt(5.0); // sin, cos of atan(0.5)
    std::ostringstream d;
    d.precision(17);
    // The rod's axis runs along y (across the slope), so it slides as a block.
    d << "TITLE\nCONTROLS\nRUN FROM 0 TO " << end << "\nSTEP 0\nPRINT EVERY 0.1\n"
      << "CONSTRAINTS TYPE BOUNDARY_CONDITION\nFIXED VX 0 VY 0 VZ 0\nLOADS\nGRAVITY AZ -9.81\n"
      << "MATERIALS TYPE ELASTIC\nSTEEL E 2E8 NU 0.3 RHO 7850\n"
      << "CONTACT_SURFACES\nPLANE TYPE SOLID T 0.01 PENALTY 0.1 FRICTION " << mu
      << "\nNODES\n"
      // Rod nodes touching the plane, 1 mm above it.
      << "1 X 0 Y -0.05 Z 0.0 LOAD GRAVITY\n2 X 0 Y 0.05 Z 0.0 LOAD GRAVITY\n";
    // Plane through the origin with normal (s, 0, c): points (-c u, y, s u).
    const double u0 = -1.0, u1 = 1.0;
    d << "3 X " << -c * u0 << " Y -1 Z " << s * u0 << " CONSTRAINT FIXED\n"
      << "4 X " << -c * u1 << " Y -1 Z " << s * u1 << " CONSTRAINT FIXED\n"
      << "5 X " << -c * u1 << " Y 1 Z " << s * u1 << " CONSTRAINT FIXED\n"
      << "6 X " << -c * u0 << " Y 1 Z " << s * u0 << " CONSTRAINT FIXED\n"
      << "ELEMENTS TYPE ROD_2\n1 NODES 1 2 MATERIAL STEEL D 0.01\n"
      << "ELEMENTS TYPE CONTACT_FACET\n2 NODES 3 5 4 SURFACE PLANE\n3 NODES 3 6 5 SURFACE PLANE\n";
    return d.str();
}

// Distance the rod has travelled down the slope at the end of the run.
double slideAfterRun(const std::string& name, double mu, double end, double* endTime) {
    contact_test::QuietModel m(name, inclineDeck(mu, end));
    double candidate = 1e15;
    while (m->getCurrentTime() < end) {
        m->step(candidate);
        m->advanceTime();
    }
    *endTime = m->getCurrentTime();
    const auto& n = m->getNodeMap().at(1);
    const double s = 1.0 / std::sqrt(5.0), c = 2.0 / std::sqrt(5.0);
    // Down the slope: (c, 0, -s), for the plane's normal (s, 0, c).
    return c * n->getX_pos() - s * n->getZ_pos();
}

} // namespace

TEST(ContactSurface, CoulombFrictionHoldsOnAnInclineBelowItsAngleAndSlidesAboveIt) {
    const double g = 9.81, s = 1.0 / std::sqrt(5.0), c = 2.0 / std::sqrt(5.0);
    double t = 0.0;
    // tan = 0.5 < mu = 0.6: the rod sticks. It rocks on the stick spring by
    // a few times m g sin / k = dt^2 g sin / PENALTY (about 2e-5 here) but
    // does not creep: a creep of 0.4e-3 per second would show after 1 s.
    const double held = slideAfterRun("surface_incline_stick", 0.6, 1.0, &t);
    EXPECT_LT(std::fabs(held), 1e-4);
    // mu = 0.3: it slides with a = g (sin - mu cos), s = a t^2 / 2.
    const double slid = slideAfterRun("surface_incline_slip", 0.3, 0.2, &t);
    const double expected = 0.5 * g * (s - 0.3 * c) * t * t;
    EXPECT_NEAR(slid, expected, 0.02 * expected);
}

TEST(ContactSurface, TwoPliesPressedTogetherAndPulledApartConserveMomentum) {
    // Ply A (SURFACE PLY, a SHELL slab 0.2 thick) and ply B touching it;
    // B is pressed down and pulled along x, A pulled the other way, by equal
    // and opposite loads, so the total momentum must stay zero.
    const std::string deck = "TITLE\nCONTROLS\nRUN FROM 0 TO 1\nSTEP 0\nPRINT EVERY 1\n"
                             "LOADS\nDOWN FX 0.02 FZ -0.05\nUP FX -0.02 FZ 0.05\n"
                             "MATERIALS TYPE HYPERTEXTILE\n"
                             "FABRIC RHO 1E-3 KELONGWARP 10 KELONGWEFT 10 KSHEAR 0.1 WARPORI 1 0 0 "
                             "WEFTORI 0 1 0\n"
                             "CONTACT_SURFACES\nPLY TYPE SHELL T 0.2 PENALTY 0.2 FRICTION 0.3\n"
                             "NODES\n1 X 0 Y 0 Z 0 LOAD UP\n2 X 1 Y 0 Z 0 LOAD UP\n3 X 1 Y 1 Z 0 LOAD UP\n"
                             "4 X 0 Y 1 Z 0 LOAD UP\n5 X 0.2 Y 0.2 Z 0.1 LOAD DOWN\n"
                             "6 X 0.8 Y 0.2 Z 0.1 LOAD DOWN\n7 X 0.8 Y 0.8 Z 0.1 LOAD DOWN\n"
                             "8 X 0.2 Y 0.8 Z 0.1 LOAD DOWN\n"
                             "ELEMENTS TYPE MEMBRANE_3\n1 NODES 1 2 3 MATERIAL FABRIC T 0.01 SURFACE PLY\n"
                             "2 NODES 1 3 4 MATERIAL FABRIC T 0.01 SURFACE PLY\n"
                             "3 NODES 5 6 7 MATERIAL FABRIC T 0.01\n4 NODES 5 7 8 MATERIAL FABRIC T 0.01\n";
    contact_test::QuietModel m("surface_plies", deck);
    double candidate = 1e15;
    double largest = 0.0;
    int pushedSteps = 0;
    for (int k = 0; k < 3000; ++k) {
        m->step(candidate);
        pushedSteps += m->getContactSurfaces().front()->getNumberOfContacts() > 0;
        m->advanceTime();
        double p[3] = {0, 0, 0}, scale = 0.0;
        for (const auto& n : m->getNodes()) {
            const auto v = n->getVel();
            for (int r = 0; r < 3; ++r) {
                p[r] += n->getMass() * v[r];
                scale += n->getMass() * std::fabs(v[r]);
            }
        }
        if (scale > 0.0)
            largest = std::max(largest, std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]) / scale);
    }
    EXPECT_GT(pushedSteps, 100); // the plies did touch
    EXPECT_LT(largest, 1e-12);
}
